// The settings window on a real X server: its symbols and check boxes seen in
// a light and a dark palette. Opening it, its size, Ctrl+W and its place are
// tests/e2e/preferences_window.sh.

#include "FakeWindows.h"
#include "TestSupport.h"

#include "settings/PreferencesStore.h"
#include "windows/QmlWindowBackend.h"

#include <QGuiApplication>
#include <QPalette>
#include <QQuickItem>
#include <QQuickView>
#include <QScopeGuard>
#include <QTest>

#include <algorithm>
#include <cmath>

namespace {

// WCAG's relative luminance, plus the 0.05 of its contrast ratio.
double luminance(QRgb color)
{
    const auto channel = [](int value) {
        const double c = value / 255.0;
        return c <= 0.03928 ? c / 12.92 : std::pow((c + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * channel(qRed(color)) + 0.7152 * channel(qGreen(color)) +
           0.0722 * channel(qBlue(color)) + 0.05;
}

// The colour most pixels of the area have: what a thin symbol is drawn on.
QRgb mostCommon(const QImage &image, const QRect &area)
{
    QHash<QRgb, int> counts;
    for (int y = area.top(); y <= area.bottom(); ++y)
        for (int x = area.left(); x <= area.right(); ++x)
            ++counts[image.pixel(x, y)];
    return std::max_element(counts.cbegin(), counts.cend()).key();
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

    TestSupport::ScratchHome m_home;
    WindowsOf<QmlWindowBackend> m_windows;

private Q_SLOTS:

    // Every symbol (tab symbols, steppers, the prompt list's buttons), every
    // check box's outline and the current tab's mark reach a contrast of 3:1
    // against what they sit on (WCAG's figure for graphical objects), in a
    // light and then, with the window open, a dark palette.
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
        QQuickView *window = m_windows.windows.preferencesWindow();
        QVERIFY(QTest::qWaitForWindowExposed(window));
        const auto restore = qScopeGuard([window] {
            window->close();
            QGuiApplication::setPalette(QPalette());
        });
        QGuiApplication::setPalette(palette);
        // The window's background follows the new palette once it is drawn.
        QTRY_COMPARE(
            QColor(window->grabWindow().pixel(window->width() - 30, window->height() - 10)),
            palette.color(QPalette::Window));
        QStringList faults;
        int symbols = 0;
        int boxes = 0;
        int marks = 0;
        for (int tab = 0; tab < 7; ++tab) {
            window->rootObject()->setProperty("currentIndex", tab);
            const QImage image = window->grabWindow().convertToFormat(QImage::Format_RGB32);
            // The strongest contrast of a pixel of the area against `background`.
            const auto check = [&](const QString &what, const QRect &area, QRgb background) {
                const double back = luminance(background);
                double best = 1.0;
                for (int y = area.top(); y <= area.bottom(); ++y)
                    for (int x = area.left(); x <= area.right(); ++x)
                        best = std::max({best, luminance(image.pixel(x, y)) / back,
                                         back / luminance(image.pixel(x, y))});
                if (best < 3.0)
                    faults << QStringLiteral("tab %1: %2 at %3:1").arg(tab).arg(what).arg(best);
            };
            // Every visible item; the list grows as it is walked.
            QList<QQuickItem *> items{window->contentItem()};
            for (qsizetype i = 0; i < items.size(); ++i) {
                QQuickItem *item = items.at(i);
                items << item->childItems();
                const QRect area = item->mapRectToScene(item->boundingRect()).toAlignedRect();
                if (!item->isVisible())
                    continue;
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
                    const QRect edge = box->mapRectToScene(box->boundingRect()).toAlignedRect();
                    check(item->objectName(),
                          QRect(edge.left(), edge.top() + 3, 2, edge.height() - 6),
                          image.pixel(edge.left() - 3, edge.center().y()));
                }
            }
        }
        // One mark a tab; seven tab symbols, four steppers of two, the list's
        // buttons; nine check boxes, History's one and Interruptions' three.
        QCOMPARE(marks, 7);
        QVERIFY2(symbols >= 7 + 8 + 2, qPrintable(QString::number(symbols)));
        QCOMPARE(boxes, 13);
        QVERIFY2(faults.isEmpty(), qPrintable(faults.join(u'\n')));
    }
};

QTEST_MAIN(TestPrefWindow)

#include "tst_prefwindow.moc"
