// The settings window on a real X server: made once and raised afterwards,
// its title and minimum size, Ctrl+W, the first tab on reopening, the
// login item's real state shown when it opens, and its symbols and check
// boxes seen in a light and a dark palette.

#include "LogTail.h"
#include "TestSupport.h"

#include "app/AppState.h"
#include "platform/login/AutostartLoginItem.h"
#include "settings/PrefState.h"
#include "settings/PreferencesStore.h"
#include "windows/QmlWindowBackend.h"
#include "windows/WindowController.h"

#include <QFile>
#include <QGuiApplication>
#include <QPalette>
#include <QQuickItem>
#include <QQuickView>
#include <QScopeGuard>
#include <QSettings>
#include <QTest>

#include <cmath>
#include <optional>

using TestSupport::ScratchHome;

namespace {

// WCAG's relative luminance and contrast ratio.
double luminance(QRgb color)
{
    const auto channel = [](int value) {
        const double c = value / 255.0;
        return c <= 0.03928 ? c / 12.92 : std::pow((c + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * channel(qRed(color)) + 0.7152 * channel(qGreen(color)) +
           0.0722 * channel(qBlue(color));
}

double contrast(QRgb a, QRgb b)
{
    const double la = luminance(a);
    const double lb = luminance(b);
    return (std::max(la, lb) + 0.05) / (std::min(la, lb) + 0.05);
}

// The colour most pixels of the area have: what a thin symbol is drawn on.
QRgb mostCommon(const QImage &image, const QRect &area)
{
    QHash<QRgb, int> counts;
    for (int y = area.top(); y <= area.bottom(); ++y)
        for (int x = area.left(); x <= area.right(); ++x)
            ++counts[image.pixel(x, y) | 0xff000000];
    QRgb best = 0;
    int most = 0;
    for (auto it = counts.cbegin(); it != counts.cend(); ++it) {
        if (it.value() > most) {
            most = it.value();
            best = it.key();
        }
    }
    return best;
}

// The strongest contrast of any pixel of the area against `background`.
double strongest(const QImage &image, const QRect &area, QRgb background)
{
    double best = 1.0;
    for (int y = area.top(); y <= area.bottom(); ++y)
        for (int x = area.left(); x <= area.right(); ++x)
            best = std::max(best, contrast(image.pixel(x, y), background));
    return best;
}

void collect(QQuickItem *item, QList<QQuickItem *> &items)
{
    if (!item->isVisible())
        return;
    items << item;
    for (QQuickItem *child : item->childItems())
        collect(child, items);
}

// A dark desktop's palette: qt6ct's "darker" scheme.
QPalette darkPalette()
{
    QPalette palette;
    const auto set = [&palette](QPalette::ColorRole role, const char *color) {
        palette.setColor(QPalette::All, role, QColor(QLatin1String(color)));
    };
    set(QPalette::WindowText, "#ffffff");
    set(QPalette::Button, "#424245");
    set(QPalette::Light, "#979797");
    set(QPalette::Midlight, "#5e5c5b");
    set(QPalette::Dark, "#302f2e");
    set(QPalette::Mid, "#4a4947");
    set(QPalette::Text, "#ffffff");
    set(QPalette::BrightText, "#ffffff");
    set(QPalette::ButtonText, "#ffffff");
    set(QPalette::Base, "#3d3d3d");
    set(QPalette::Window, "#222020");
    set(QPalette::Shadow, "#e7e4e0");
    set(QPalette::Highlight, "#12608a");
    set(QPalette::HighlightedText, "#f9f9f9");
    set(QPalette::AlternateBase, "#5c5b5a");
    return palette;
}

} // namespace

class TestPrefWindow : public QObject {
    Q_OBJECT

    std::optional<ScratchHome> m_home;
    QmlWindowBackend *m_backend = nullptr;
    LogTail m_log;

    QList<QWindow *> settingsWindows() const
    {
        QList<QWindow *> windows;
        for (QWindow *window : QGuiApplication::topLevelWindows()) {
            if (window->title() == QLatin1String("Settings"))
                windows << window;
        }
        return windows;
    }
    QQuickItem *rootOf(QQuickView *view) const { return view->rootObject(); }

private Q_SLOTS:
    void initTestCase()
    {
        m_home.emplace();
        auto backend = std::make_unique<QmlWindowBackend>();
        m_backend = backend.get();
        WindowController::setBackend(std::move(backend));
    }

    void init()
    {
        PreferencesStore::instance().clear();
        QFile::remove(AutostartLoginItem::entryPath());
        m_log.newMessages();
    }

    void cleanupTestCase() { WindowController::setBackend(nullptr); }

    void madeOnceAndRaised()
    {
        QVERIFY(settingsWindows().isEmpty());
        WindowController::showPrefView();
        QQuickView *window = m_backend->preferencesWindow();
        QVERIFY(QTest::qWaitForWindowExposed(window));
        QCOMPARE(window->status(), QQuickView::Ready);
        QCOMPARE(window->title(), QStringLiteral("Settings"));
        QCOMPARE(window->minimumSize(), QSize(480, 400));
        QVERIFY(window->width() >= 480 && window->height() >= 400);
        QCOMPARE(rootOf(window)->property("currentIndex").toInt(), 0);

        // Asked again (the menu, a second start of Narv): the same window, in
        // front and with the keyboard.
        window->resize(700, 650);
        rootOf(window)->setProperty("currentIndex", 2);
        WindowController::showPrefView();
        QCOMPARE(settingsWindows(), QList<QWindow *>{window});
        QCOMPARE(m_backend->preferencesWindow(), window);
        QVERIFY(QTest::qWaitForWindowActive(window));
        QTRY_COMPARE(window->size(), QSize(700, 650));
        QCOMPARE(rootOf(window)->property("currentIndex").toInt(), 2);
        QCOMPARE(m_log.newMessages().count(QStringLiteral("create preferences window")), 1);
    }

    void closesWithCtrlWAndReopensOnTheFirstTab()
    {
        WindowController::showPrefView();
        QQuickView *window = m_backend->preferencesWindow();
        QVERIFY(QTest::qWaitForWindowActive(window));
        rootOf(window)->setProperty("currentIndex", 3);
        QTest::keyClick(window, Qt::Key_W, Qt::ControlModifier);
        QTRY_VERIFY(!window->isVisible());

        WindowController::showPrefView();
        QVERIFY(QTest::qWaitForWindowExposed(window));
        QCOMPARE(m_backend->preferencesWindow(), window);
        QCOMPARE(rootOf(window)->property("currentIndex").toInt(), 0);
        window->close();
    }

    // Every symbol (tab symbols, steppers, the prompt list's buttons) and
    // every check box's outline reaches a contrast of 3:1 against what it
    // sits on (WCAG's figure for graphical objects), in a light and then,
    // with the window open, a dark palette; the current tab is marked.
    void symbolsAndCheckBoxesStandOut_data()
    {
        QTest::addColumn<QPalette>("palette");
        QTest::newRow("light") << QGuiApplication::palette();
        QTest::newRow("dark") << darkPalette();
    }

    void symbolsAndCheckBoxesStandOut()
    {
        QFETCH(QPalette, palette);
        // A custom prompt: every check box and the prompt list show.
        PreferencesStore::instance().setBool(QStringLiteral("custom_break_prompt"), true);
        WindowController::showPrefView();
        QQuickView *window = m_backend->preferencesWindow();
        QVERIFY(QTest::qWaitForWindowExposed(window));
        const auto restore = qScopeGuard([window] {
            window->close();
            QGuiApplication::setPalette(QPalette());
        });
        QGuiApplication::setPalette(palette);
        const QColor windowColor = palette.color(QPalette::Window);
        // The window's background follows the new palette once it is drawn.
        QTRY_COMPARE(
            QColor(window->grabWindow().pixel(window->width() - 30, window->height() - 10)),
            windowColor);

        QStringList faults;
        int symbols = 0;
        int boxes = 0;
        for (int tab = 0; tab < 5; ++tab) {
            rootOf(window)->setProperty("currentIndex", tab);
            const QImage image = window->grabWindow().convertToFormat(QImage::Format_RGB32);
            QVERIFY(!image.isNull());
            const QRect inside = image.rect().adjusted(2, 2, -2, -2);
            QList<QQuickItem *> items;
            collect(window->contentItem(), items);
            for (QQuickItem *item : std::as_const(items)) {
                const QString name = QStringLiteral("tab %1, %2")
                                         .arg(tab)
                                         .arg(item->parentItem() && item->parentItem()->parentItem()
                                                  ? item->parentItem()->parentItem()->objectName()
                                                  : item->objectName());
                const QRect area = item->mapRectToScene(QRectF(0, 0, item->width(), item->height()))
                                       .toAlignedRect();
                if (!inside.contains(area))
                    continue; // scrolled out of sight
                if (qstrcmp(item->metaObject()->className(), "QQuickIconImage") == 0 &&
                    !item->property("source").toUrl().isEmpty()) {
                    ++symbols;
                    const double ratio = strongest(image, area, mostCommon(image, area));
                    if (ratio < 3.0)
                        faults << QStringLiteral("%1: symbol %2 at %3:1")
                                      .arg(name, item->property("source").toString())
                                      .arg(ratio, 0, 'f', 2);
                }
                if (item->inherits("QQuickCheckBox")) {
                    auto *box = item->property("indicator").value<QQuickItem *>();
                    if (!box || !box->isVisible())
                        continue;
                    ++boxes;
                    const QRect edge =
                        box->mapRectToScene(QRectF(0, 0, box->width(), box->height()))
                            .toAlignedRect();
                    // The left edge against the window beside it.
                    const QRgb beside = image.pixel(edge.left() - 3, edge.center().y());
                    const double ratio = strongest(
                        image, QRect(edge.left(), edge.top() + 3, 2, edge.height() - 6), beside);
                    if (ratio < 3.0)
                        faults << QStringLiteral("%1: check box %2 outline at %3:1")
                                      .arg(name, item->objectName())
                                      .arg(ratio, 0, 'f', 2);
                }
            }
            // The current tab's mark, against the tab.
            QList<QQuickItem *> shown;
            for (QQuickItem *item : std::as_const(items)) {
                if (item->objectName() == QLatin1String("currentMark"))
                    shown << item;
            }
            if (shown.size() != 1 || !shown[0]->parentItem()->property("checked").toBool()) {
                faults << QStringLiteral("tab %1: no mark on the current tab").arg(tab);
                continue;
            }
            const QRect mark = shown[0]
                                   ->mapRectToScene(QRectF(0, 0, shown[0]->width(), 2))
                                   .toAlignedRect()
                                   .adjusted(4, 0, -4, 0);
            const QRgb tabColor = image.pixel(mark.left(), mark.top() - 2);
            const double ratio = strongest(image, mark, tabColor);
            if (ratio < 3.0)
                faults << QStringLiteral("tab %1: the current tab's mark at %2:1")
                              .arg(tab)
                              .arg(ratio, 0, 'f', 2);
        }
        // Five tab symbols, four steppers of two, the list's buttons; nine
        // check boxes.
        QVERIFY2(symbols >= 5 + 8 + 2, qPrintable(QString::number(symbols)));
        QCOMPARE(boxes, 9);
        QVERIFY2(faults.isEmpty(), qPrintable(faults.join(u'\n')));
    }

    void showsTheLoginItemAsTheDesktopHasIt_data()
    {
        QTest::addColumn<bool>("stored");
        QTest::addColumn<QString>("entry"); // null: no entry
        QTest::addColumn<bool>("shown");

        QTest::newRow("entry removed behind Narv's back") << true << QString() << false;
        QTest::newRow("entry added behind Narv's back") << false << QStringLiteral("") << true;
        QTest::newRow("entry switched off in GNOME")
            << true << QStringLiteral("X-GNOME-Autostart-enabled=false\n") << false;
        QTest::newRow("entry hidden") << true << QStringLiteral("Hidden=true\n") << false;
        QTest::newRow("in step") << true << QStringLiteral("X-GNOME-Autostart-enabled=true\n")
                                 << true;
    }

    void showsTheLoginItemAsTheDesktopHasIt()
    {
        QFETCH(bool, stored);
        QFETCH(QString, entry);
        QFETCH(bool, shown);

        QSettings file(PreferencesStore::instance().filePath(), QSettings::IniFormat);
        PreferencesStore::instance().setBool(QString::fromLatin1(PrefState::launchAtLoginKey),
                                             stored);
        if (!entry.isNull())
            QVERIFY(TestSupport::writeFile(
                AutostartLoginItem::entryPath(),
                "[Desktop Entry]\nType=Application\nName=Narv\nExec=narv\n" + entry.toUtf8()));
        m_log.newMessages();

        WindowController::showPrefView();
        QQuickView *window = m_backend->preferencesWindow();
        QVERIFY(QTest::qWaitForWindowExposed(window));
        auto *box = rootOf(window)->findChild<QQuickItem *>(QStringLiteral("launchAtLogin"));
        QVERIFY(box);
        QTRY_COMPARE(box->property("checked").toBool(), shown);
        file.sync();
        QCOMPARE(file.value(QString::fromLatin1(PrefState::launchAtLoginKey)).toString(),
                 shown ? QStringLiteral("true") : QStringLiteral("false"));
        // Recorded, not acted on: the entry is as it was.
        QCOMPARE(QFile::exists(AutostartLoginItem::entryPath()), !entry.isNull());
        const bool logged = m_log.newMessages()
                                .filter(QStringLiteral("launch at login: the setting says"))
                                .size() == 1;
        QCOMPARE(logged, stored != shown);
        window->close();
        QTRY_VERIFY(!window->isVisible());
    }
};

QTEST_MAIN(TestPrefWindow)

#include "tst_prefwindow.moc"
