// The status menu as a model (as a panel reads it: tst_tray): the clicks
// reaching their targets, the water item's place and title, the translation
// tables; and the item's title and tooltip, which names the break's time and
// changes only when the schedule moves. Children report on standard error.

#include "FakeStatusItem.h"
#include "FakeWindows.h"
#include "TestSupport.h"

#include "app/AppState.h"
#include "app/Clock.h"
#include "app/Localized.h"
#include "app/TickSource.h"
#include "app/TicktackController.h"
#include "settings/PrefState.h"
#include "settings/PreferencesStore.h"

#include <QTest>

#include <cstdio>

using StatusBarController::MenuItem;
using StatusBarController::Tag;
using TestSupport::ScratchHome;

namespace {

class FakeUpdates : public UpdateChecker {
public:
    explicit FakeUpdates(QStringList &calls) : m_calls(calls) {}
    void checkForUpdates() override { m_calls.append(QStringLiteral("checkForUpdates")); }

private:
    QStringList &m_calls;
};

} // namespace

class TestMenu : public QObject {
    Q_OBJECT

    ScratchHome m_home;
    ManualTickSource m_ticks;
    QDateTime m_now; // what the clock says in toolTipNamesTheBreak
    FakeWindows *m_windows = nullptr;
    FakeStatusItem *m_item = nullptr;

    int indexOf(const QString &titlePrefix) const
    {
        const QList<MenuItem> &menu = StatusBarController::menu();
        for (int i = 0; i < menu.size(); ++i) {
            if (menu.at(i).title.startsWith(titlePrefix))
                return i;
        }
        return -1;
    }

private Q_SLOTS:
    void initTestCase()
    {
        QCOMPARE(loadTranslations(QLocale(QLocale::English)), QStringList{QStringLiteral("en")});
        TicktackController::setTimer(&m_ticks);
        m_windows = &FakeWindows::install();
        WindowController::setUpdateChecker(std::make_unique<FakeUpdates>(m_windows->calls));
        FakeStatusItem::installFactory(&m_item);
        AppState::setWorking(true);
        StatusBarController::item();
    }

    void init()
    {
        PreferencesStore::instance().clear();
        AppState::setManualPause(false);
        StatusBarController::removeWaterItem();
        m_windows->calls.clear();
        *m_item = {};
    }

    void clicksReachTheirTargets()
    {
        const auto click = [this](const QString &title) {
            const int index = indexOf(title);
            QVERIFY2(index >= 0, qPrintable(title));
            QVERIFY(StatusBarController::activate(StatusBarController::menu().at(index).id));
        };
        click(QStringLiteral("Settings"));
        click(QStringLiteral("Check for Updates"));
        click(QStringLiteral("About"));
        click(QStringLiteral("- Stop -"));
        QVERIFY(AppState::manualPause());
        click(QStringLiteral("- Work -"));
        QVERIFY(!AppState::manualPause());
        QCOMPARE(m_windows->calls,
                 (QStringList{QStringLiteral("showPrefView"), QStringLiteral("checkForUpdates"),
                              QStringLiteral("showAbout")}));

        // The water item comes in right below the start/stop item, as at launch.
        StatusBarController::insetWaterItem();
        QCOMPARE(indexOf(QStringLiteral("Water (")), int(Tag::water));
        QVERIFY(StatusBarController::activate(StatusBarController::itemWithTag(Tag::water)->id));
        QCOMPARE(m_windows->calls.last(), QStringLiteral("showWaterView"));
    }

    void waterTitle_data()
    {
        QTest::addColumn<float>("finished");
        QTest::addColumn<bool>("inWorkTime");
        QTest::addColumn<QString>("title");
        // The space before ")" inside working hours is kept on purpose.
        QTest::newRow("45, working") << 0.456f << true << QStringLiteral("Water (45% )");
        QTest::newRow("45, out of hours")
            << 0.456f << false << QStringLiteral("Water (45% Out of hours)");
        QTest::newRow("cut, not rounded") << 0.999f << true << QStringLiteral("Water (99% )");
    }

    void waterTitle()
    {
        QFETCH(float, finished);
        QFETCH(bool, inWorkTime);
        QFETCH(QString, title);
        QCOMPARE(StatusBarController::waterTitle(finished, inWorkTime), title);
    }

    void toolTipNamesTheBreak()
    {
        // The C locale, whose short time format has seconds: the tooltip's
        // time is "HH:MM" all the same.
        QLocale::setDefault(QLocale::c());
        m_now = QDateTime(QDate(2026, 3, 2), QTime(9, 0));
        Clock::setNowSource([this] { return m_now; });
        // Each tick a second on the clock.
        const auto tick = [&](int n = 1) {
            for (int i = 0; i < n; ++i) {
                m_now = m_now.addSecs(1);
                m_ticks.advance();
            }
        };
        AppState::setWorking(true); // 25 minutes from 09:00
        QCOMPARE(m_item->toolTip, QStringLiteral("Next break at 09:25"));
        QCOMPARE(StatusBarController::toolTip(), m_item->toolTip);

        // Ticks, on time or most of a second late, leave it alone.
        tick(59);
        m_now = m_now.addMSecs(900);
        tick();
        m_now = m_now.addMSecs(-900);
        QCOMPARE(m_item->title, QStringLiteral("24:00"));
        QCOMPARE(m_item->toolTipChanges, 1);

        // Paused, the countdown stands still and so does its time.
        AppState::setManualPause(true);
        QCOMPARE(m_item->toolTip, QStringLiteral("24:00"));
        m_now = m_now.addSecs(10 * 60);
        AppState::setManualPause(false); // 09:11, a whole work period again
        QCOMPARE(m_item->toolTip, QStringLiteral("Next break at 09:36"));

        // The machine slept between two ticks: the break comes that much later.
        m_now = m_now.addSecs(3600);
        tick();
        QCOMPARE(m_item->toolTip, QStringLiteral("Next break at 10:36"));

        // No time beside the icon, nor in the tooltip, tick after tick.
        AppState::prefState()->setShowTime(false);
        tick(5);
        QCOMPARE(m_item->title, QString());
        QCOMPARE(m_item->toolTip, QString());
        AppState::prefState()->setShowTime(true);
        QCOMPARE(m_item->title, QStringLiteral("24:54")); // shown again at once

        // Time up: the break has come, there is nothing to announce.
        tick(25 * 60 - 6);
        QVERIFY(m_item->title.isEmpty());
        QCOMPARE(m_item->toolTip, QString());
        QCOMPARE(m_windows->count("showBreak"), 1);
    }

    void translations()
    {
        // Kept keys whose words fit another desktop read as this one's.
        QCOMPARE(localized("Restart timer after Mac awake"),
                 QStringLiteral("Restart timer after screen unlock"));

        // In a process of its own: the menu is built once per process.
        QTemporaryDir home;
        const auto child = TestSupport::runChild(QStringLiteral("chinese-menu"), home.path());
        QCOMPARE(child.exitCode, 0);
        const QStringList lines = QString::fromUtf8(child.err).trimmed().split(u'\n');
        QCOMPARE(lines, (QStringList{
                            QStringLiteral("en zh_CN"),
                            QStringLiteral("- 停止 -|- 工作 -"),
                            QStringLiteral("喝水 (12% )|设置...|检查更新...|反馈...|关于...|退出"),
                            QStringLiteral("喝水 (45% 非工作时间)"),
                        }));
    }
};

namespace {
int chineseMenuChild(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
    ScratchHome home;
    const QStringList loaded = loadTranslations(QLocale(QLocale::Chinese, QLocale::China));
    // The water item is there from the launch.
    StatusBarController::setWaterSource(
        {[] { return true; }, [] { return 0.125f; }, [] { return true; }});
    AppState::setWorking(true);
    const QString stop = StatusBarController::pauseItemTitle();
    AppState::setWorking(false);
    const QString work = StatusBarController::pauseItemTitle();
    QStringList rest;
    for (const MenuItem &item : StatusBarController::menu().mid(3)) {
        if (!item.separator)
            rest.append(item.title);
    }
    std::fprintf(stderr, "%s\n%s|%s\n%s\n%s\n", qPrintable(loaded.join(u' ')), qPrintable(stop),
                 qPrintable(work), qPrintable(rest.join(u'|')),
                 qPrintable(StatusBarController::waterTitle(0.456f, false)));
    return 0;
}
} // namespace

int main(int argc, char **argv)
{
    const int child = TestSupport::runChildMode(
        argc, argv,
        {
            {"chinese-menu", [&] { return chineseMenuChild(argc, argv); }},
        });
    if (child >= 0)
        return child;
    QCoreApplication app(argc, argv);
    TestMenu test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_menu.moc"
