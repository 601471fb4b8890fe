// Children report on standard error: standard output carries the log.
//
// The status menu as a model (the items as a panel reads them: e2e/bus_proxy.sh):
// the water item's title and its place at launch, the clicks reaching their
// targets, the translation tables; and the item's title and tooltip, which
// names the break's time and is told again only when the schedule moves.
// (The feedback mail, from the menu's action to the mail program: tst_mail.)

#include "FakeStatusItem.h"
#include "FakeWindows.h"
#include "LogTail.h"
#include "TestSupport.h"

#include "app/AppState.h"
#include "app/Clock.h"
#include "app/Localized.h"
#include "app/TickSource.h"
#include "app/TicktackController.h"
#include "settings/PrefState.h"
#include "settings/PreferencesStore.h"

#include <QScopeGuard>
#include <QTest>

#include <cmath>
#include <cstdio>
#include <limits>

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

// What the water source hands out; the tests change it between calls.
struct Water {
    bool enable = false;
    float finished = 0;
    bool inWorkTime = true;
};

Water &water()
{
    static Water w;
    return w;
}

void installWaterSource()
{
    StatusBarController::setWaterSource({[] { return water().enable; },
                                         [] { return water().finished; },
                                         [] { return water().inWorkTime; }});
}

} // namespace

class TestMenu : public QObject {
    Q_OBJECT

    std::optional<ScratchHome> m_home;
    ManualTickSource m_ticks;
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
        m_home.emplace();
        QCOMPARE(loadTranslations(QLocale(QLocale::English)), QStringList{QStringLiteral("en")});
        TicktackController::setTimer(&m_ticks);
        m_windows = &FakeWindows::install();
        WindowController::setUpdateChecker(std::make_unique<FakeUpdates>(m_windows->calls));
        FakeStatusItem::installFactory(&m_item);
        installWaterSource();
        AppState::setWorking(true);
        StatusBarController::item();
    }

    void init()
    {
        PreferencesStore::instance().clear();
        AppState::setManualPause(false);
        StatusBarController::removeWaterItem();
        water() = {};
        m_windows->calls.clear();
        *m_item = {};
    }

    void clicksReachTheirTargets()
    {
        // The header, a separator and an unknown id cannot be chosen.
        QVERIFY(!StatusBarController::activate(StatusBarController::menu().at(0).id));
        QVERIFY(!StatusBarController::activate(StatusBarController::menu().at(1).id));
        QVERIFY(!StatusBarController::activate(9999));
        QVERIFY(m_windows->calls.isEmpty());

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
        QTest::newRow("just under") << 0.999f << true << QStringLiteral("Water (99% )");
        // In float arithmetic 0.29 * 100 is 29; in double it would be 28.999...
        QTest::newRow("float arithmetic") << 0.29f << true << QStringLiteral("Water (29% )");
        QTest::newRow("toward zero") << -0.456f << true << QStringLiteral("Water (-45% )");
    }

    void waterTitle()
    {
        QFETCH(float, finished);
        QFETCH(bool, inWorkTime);
        QFETCH(QString, title);
        QCOMPARE(StatusBarController::waterTitle(finished, inWorkTime), title);
    }

    void unshowableFractionIsFatal_data()
    {
        QTest::addColumn<QString>("fraction");
        QTest::newRow("not a number") << QStringLiteral("nan");
        QTest::newRow("infinite") << QStringLiteral("inf");
        QTest::newRow("beyond 64 bits") << QStringLiteral("1e18");
    }

    void unshowableFractionIsFatal()
    {
        QFETCH(QString, fraction);
        const auto child =
            LogTail::runFatalChild(QStringLiteral("water-title"), m_home->path(), {fraction});
        QVERIFY(child.crashed);
        QVERIFY2(child.log.contains(" critical app.narv.Narv : Fatal error: water finishedPrecent"),
                 child.log.constData());
    }

    void toolTipNamesTheBreak()
    {
        // The C locale, whose short time format has seconds: the tooltip's
        // time is "HH:MM" all the same.
        QLocale::setDefault(QLocale::c());
        QDateTime now(QDate(2026, 3, 2), QTime(9, 0));
        Clock::setNowSource([&now] { return now; });
        const QLocale locale;
        const auto cleanUp = qScopeGuard([locale] {
            Clock::setNowSource({});
            QLocale::setDefault(locale);
            AppState::setManualPause(false);
        });
        // Each tick a second on the clock.
        const auto tick = [&](int n = 1) {
            for (int i = 0; i < n; ++i) {
                now = now.addSecs(1);
                m_ticks.advance();
            }
        };
        // A tick that comes `ms` late; the next one is on time again.
        const auto lateTick = [&](int ms) {
            now = now.addMSecs(ms);
            tick();
            now = now.addMSecs(-ms);
        };
        AppState::setWorking(true); // 25 minutes from 09:00
        QCOMPARE(m_item->toolTip, QStringLiteral("Next break at 09:25"));
        QCOMPARE(StatusBarController::toolTip(), m_item->toolTip);
        QCOMPARE(m_item->toolTipChanges, 1);

        // Ticks, on time or up to most of a second late, leave it alone.
        tick(30);
        lateTick(900);
        lateTick(-400); // early, as when the clock is set back a little
        tick(28);
        QCOMPARE(m_item->title, QStringLiteral("24:00"));
        QCOMPARE(m_item->toolTipChanges, 1);

        // Paused, the countdown stands still and so does its time.
        AppState::setManualPause(true);
        QCOMPARE(m_item->toolTip, QStringLiteral("24:00"));
        now = now.addSecs(10 * 60);
        AppState::setManualPause(false); // 09:11, a whole work period again
        QCOMPARE(m_item->toolTip, QStringLiteral("Next break at 09:36"));
        QCOMPARE(m_item->toolTipChanges, 3);

        // The machine slept between two ticks (no lock stopped the countdown):
        // the break comes that much later by the clock.
        now = now.addSecs(3600);
        tick();
        QCOMPARE(m_item->toolTip, QStringLiteral("Next break at 10:36"));

        // No time beside the icon: none in the tooltip either.
        AppState::prefState()->setShowTime(false);
        QCOMPARE(m_item->title, QString());
        QCOMPARE(m_item->toolTip, QString());
        tick(5);
        QCOMPARE(m_item->toolTip, QString());
        AppState::prefState()->setShowTime(true);
        QCOMPARE(m_item->title, QStringLiteral("24:54")); // shown again at once
        QCOMPARE(m_item->toolTip, QStringLiteral("Next break at 10:36"));

        // Time up: the break has come, there is nothing to announce.
        const int changes = m_item->toolTipChanges;
        tick(25 * 60 - 6);
        QVERIFY(m_item->title.isEmpty());
        QCOMPARE(m_item->toolTip, QString());
        QCOMPARE(m_item->toolTipChanges, changes + 1);
        QCOMPARE(m_windows->count("showBreak"), 1);
    }

    void translations()
    {
        // English is the base: the kept key reads as the word.
        QCOMPARE(localized("Wrok"), QStringLiteral("Work"));
        // Kept keys whose words fit another desktop read as this one's.
        QCOMPARE(localized("Restart timer after Mac awake"),
                 QStringLiteral("Restart timer after screen unlock"));
        QCOMPARE(localized("Out of hours"), QStringLiteral("Out of hours"));
        QCOMPARE(localized("not in any table"), QStringLiteral("not in any table"));

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
int waterTitleChild(int argc, char **argv)
{
    installQtMessageRouting();
    QCoreApplication app(argc, argv);
    ScratchHome home;
    logger();
    const float fraction = std::strtof(argv[3], nullptr);
    StatusBarController::waterTitle(fraction, true);
    return 0; // not reached when the stop works
}

int chineseMenuChild(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
    ScratchHome home;
    const QStringList loaded = loadTranslations(QLocale(QLocale::Chinese, QLocale::China));
    water() = {true, 0.125f, true}; // the water item is there from the launch
    installWaterSource();
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
            {"water-title", [&] { return waterTitleChild(argc, argv); }},
            {"chinese-menu", [&] { return chineseMenuChild(argc, argv); }},
        });
    if (child >= 0)
        return child;
    QCoreApplication app(argc, argv);
    TestMenu test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_menu.moc"
