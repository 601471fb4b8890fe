// The settings window on a real X server: the login item's real state shown
// when it opens, and its symbols and check boxes seen in a light and a dark
// palette. Opening it, its size, Ctrl+W and its place are
// tests/e2e/preferences_window.sh.

#include "FakeWindows.h"
#include "LogTail.h"
#include "TestSupport.h"

#include "app/AppState.h"
#include "platform/login/AutostartLoginItem.h"
#include "settings/PrefState.h"
#include "settings/PreferencesStore.h"
#include "windows/QmlWindowBackend.h"

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

QRect sceneRect(const QQuickItem *item)
{
    return item->mapRectToScene(QRectF(0, 0, item->width(), item->height())).toAlignedRect();
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
    const auto c = [](const char *name) { return QBrush(QColor(QLatin1String(name))); };
    // Window text, button, light, dark, mid, text, bright text, base, window.
    QPalette palette(c("#ffffff"), c("#424245"), c("#979797"), c("#302f2e"), c("#4a4947"),
                     c("#ffffff"), c("#ffffff"), c("#3d3d3d"), c("#222020"));
    palette.setBrush(QPalette::Midlight, c("#5e5c5b"));
    palette.setBrush(QPalette::Shadow, c("#e7e4e0"));
    palette.setBrush(QPalette::Highlight, c("#12608a"));
    palette.setBrush(QPalette::HighlightedText, c("#f9f9f9"));
    palette.setBrush(QPalette::AlternateBase, c("#5c5b5a"));
    return palette;
}

} // namespace

class TestPrefWindow : public QObject {
    Q_OBJECT

    std::optional<ScratchHome> m_home;
    WindowsOf<QmlWindowBackend> m_windows;
    LogTail m_log;

    // Shown through the controller, as the menu and a second start show it.
    QQuickView *show()
    {
        WindowController::showPrefView();
        QQuickView *window = m_windows.windows.preferencesWindow();
        return QTest::qWaitForWindowExposed(window) ? window : nullptr;
    }

private Q_SLOTS:
    void initTestCase() { m_home.emplace(); }

    void init()
    {
        PreferencesStore::instance().clear();
        QFile::remove(AutostartLoginItem::entryPath());
        m_log.newMessages();
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
        QQuickView *window = show();
        QVERIFY(window);
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
        for (int tab = 0; tab < 7; ++tab) {
            window->rootObject()->setProperty("currentIndex", tab);
            const QImage image = window->grabWindow().convertToFormat(QImage::Format_RGB32);
            const auto check = [&](const QString &what, const QRect &area, QRgb background) {
                const double ratio = strongest(image, area, background);
                if (ratio < 3.0)
                    faults << QStringLiteral("tab %1: %2 at %3:1").arg(tab).arg(what).arg(ratio);
            };
            QList<QQuickItem *> items;
            collect(window->contentItem(), items);
            int marks = 0;
            for (QQuickItem *item : std::as_const(items)) {
                const QRect area = sceneRect(item);
                // The current tab's mark, against the tab.
                if (item->objectName() == QLatin1String("currentMark")) {
                    ++marks;
                    QVERIFY(item->parentItem()->property("checked").toBool());
                    const QRect mark(area.left() + 4, area.top(), area.width() - 8, 2);
                    check(QStringLiteral("the mark"), mark,
                          image.pixel(mark.left(), mark.top() - 2));
                }
                if (!image.rect().adjusted(2, 2, -2, -2).contains(area))
                    continue; // scrolled out of sight
                if (qstrcmp(item->metaObject()->className(), "QQuickIconImage") == 0 &&
                    !item->property("source").toUrl().isEmpty()) {
                    ++symbols;
                    check(item->property("source").toString(), area, mostCommon(image, area));
                }
                auto *box = item->inherits("QQuickCheckBox")
                                ? item->property("indicator").value<QQuickItem *>()
                                : nullptr;
                if (box && box->isVisible()) {
                    ++boxes;
                    // The left edge against the window beside it.
                    const QRect edge = sceneRect(box);
                    check(item->objectName(),
                          QRect(edge.left(), edge.top() + 3, 2, edge.height() - 6),
                          image.pixel(edge.left() - 3, edge.center().y()));
                }
            }
            QCOMPARE(marks, 1);
        }
        // Seven tab symbols, four steppers of two, the list's buttons; nine
        // check boxes, History's one and Interruptions' three.
        QVERIFY2(symbols >= 7 + 8 + 2, qPrintable(QString::number(symbols)));
        QCOMPARE(boxes, 13);
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

        QQuickView *window = show();
        QVERIFY(window);
        auto *box = window->rootObject()->findChild<QQuickItem *>(QStringLiteral("launchAtLogin"));
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
