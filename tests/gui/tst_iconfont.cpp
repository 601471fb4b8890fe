// The icon font: registration, the glyphs it must hold, the icons drawn from it,
// and the fatal start-up paths (checked in a child process).

#include "app/IconFont.h"

#include <QFontDatabase>
#include <QFontInfo>
#include <QFontMetrics>
#include <QGuiApplication>
#include <QProcess>
#include <QRawFont>
#include <QTemporaryDir>
#include <QtTest>

#include <sys/resource.h>

namespace {

// Given as the first argument, makes the test binary a child that registers the
// font from the path in the second argument and exits 0 if that worked.
constexpr auto kChildFlag = "--register-icon-font-from";

const QList<IconFont> kAllIcons = {IconFont::narv, IconFont::narvgun};

int runRegistrationChild(int argc, char **argv)
{
    // The fatal paths abort on purpose; leave no core files behind.
    const rlimit noCore{0, 0};
    setrlimit(RLIMIT_CORE, &noCore);
    QGuiApplication app(argc, argv);
    IconFont::setResourcePath(QString::fromLocal8Bit(argv[2]));
    return IconFont::name().isEmpty() ? 1 : 0;
}

struct Ink {
    int opaque = 0;    // pixels with full alpha
    int touched = 0;   // pixels with any alpha
    int onBorder = 0;  // touched pixels on the outermost ring
    int offColour = 0; // opaque pixels not in the colour asked for
    QRect bounds;
};

Ink inkOf(const QImage &image, const QColor &colour)
{
    Ink ink;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            const QRgb pixel = image.pixel(x, y);
            if (qAlpha(pixel) == 0) {
                continue;
            }
            ++ink.touched;
            ink.bounds |= QRect(x, y, 1, 1);
            if (qAlpha(pixel) == 255) {
                ++ink.opaque;
                ink.offColour += QColor(pixel) != colour ? 1 : 0;
            }
            if (x == 0 || y == 0 || x == image.width() - 1 || y == image.height() - 1) {
                ++ink.onBorder;
            }
        }
    }
    return ink;
}

} // namespace

Q_DECLARE_METATYPE(IconFont)

class TestIconFont : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void registrationProvidesBothGlyphs();
    void iconIsASquareFilledByTheGlyph_data();
    void iconIsASquareFilledByTheGlyph();
    void glyphsDrawDifferently();
    void registrationProblemsAreFatal_data();
    void registrationProblemsAreFatal();
};

void TestIconFont::registrationProvidesBothGlyphs()
{
    const QString family = IconFont::name();
    QCOMPARE(family, QStringLiteral("iconfont"));
    QVERIFY(QFontDatabase::families().contains(family));

    QFont font(family);
    font.setPixelSize(32);
    // The match must be the icon font itself, not a fallback family.
    QCOMPARE(QFontInfo(font).family(), family);

    const QFontMetrics metrics(font);
    const QRawFont raw = QRawFont::fromFont(font);
    QCOMPARE(raw.familyName(), family);
    for (const IconFont icon : kAllIcons) {
        const QChar glyph = icon.rawValue().front();
        QVERIFY2(metrics.inFont(glyph), qPrintable(QString::number(glyph.unicode(), 16)));
        QVERIFY2(raw.supportsCharacter(glyph), qPrintable(QString::number(glyph.unicode(), 16)));
    }
    // Only the icons: a letter or the next private-use point is not in the font.
    QVERIFY(!raw.supportsCharacter(QLatin1Char('A')));
    QVERIFY(!raw.supportsCharacter(QChar(char16_t(0xE64D))));
}

void TestIconFont::iconIsASquareFilledByTheGlyph_data()
{
    QTest::addColumn<IconFont>("icon");
    QTest::addColumn<qreal>("size");
    QTest::addColumn<int>("side");

    for (const IconFont icon : kAllIcons) {
        const QByteArray name = icon == IconFont::narv ? "narv" : "narvgun";
        QTest::newRow(name + " fractional 20.5") << icon << 20.5 << 21;
        QTest::newRow(name + " 64") << icon << 64.0 << 64;
    }
}

void TestIconFont::iconIsASquareFilledByTheGlyph()
{
    QFETCH(IconFont, icon);
    QFETCH(qreal, size);
    QFETCH(int, side);

    const QColor colour(30, 144, 255);
    const QImage image = IconFont::loadIcon(icon, size, colour);
    QCOMPARE(image.size(), QSize(side, side));
    QCOMPARE(image.format(), QImage::Format_ARGB32_Premultiplied);

    const Ink ink = inkOf(image, colour);
    QVERIFY(ink.opaque > 0);
    QCOMPARE(ink.offColour, 0);
    QVERIFY2(ink.touched < side * side, "the background must stay transparent");
    if (side >= 64) {
        // Both drawings keep a margin inside the em square: ink on the edge
        // means the glyph was placed or scaled wrongly and got cut off.
        QCOMPARE(ink.onBorder, 0);
        // ...and they span most of it, so the glyph is not drawn too small.
        const int extent = qMax(ink.bounds.width(), ink.bounds.height());
        QVERIFY2(extent >= side * 8 / 10, qPrintable(QString::number(extent)));
        // Neither drawing sits entirely in one half of the square.
        QVERIFY(ink.bounds.contains(QPoint(side / 2, side / 2)));
    }
}

void TestIconFont::glyphsDrawDifferently()
{
    const QImage narv = IconFont::loadIcon(IconFont::narv, 32);
    const QImage narvgun = IconFont::loadIcon(IconFont::narvgun, 32);
    int differing = 0;
    for (int y = 0; y < narv.height(); ++y) {
        for (int x = 0; x < narv.width(); ++x) {
            differing += qAlpha(narv.pixel(x, y)) != qAlpha(narvgun.pixel(x, y)) ? 1 : 0;
        }
    }
    // Not a pixel or two of noise: the silhouettes differ over a large part.
    QVERIFY2(differing > 32 * 32 / 10, qPrintable(QString::number(differing)));
}

void TestIconFont::registrationProblemsAreFatal_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QString>("message"); // empty: the child must succeed

    // Static: the files must outlive this function, the rows only name them.
    static QTemporaryDir dir;
    const auto write = [](const QString &path, const QByteArray &bytes) {
        QFile file(path);
        return file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size();
    };
    const QString junk = dir.filePath(QStringLiteral("not-a-font.ttf"));
    QVERIFY(write(junk, QByteArray(4096, 'z')));

    // The control: the harness itself works, so a crash below is the font's doing.
    QTest::newRow("resource font") << IconFont::resourcePath() << QString();
    QTest::newRow("missing file") << dir.filePath(QStringLiteral("absent/iconfont.ttf"))
                                  << QStringLiteral("Can not found font named: iconfont");
    QTest::newRow("not a font") << junk << QStringLiteral("Register Iconfont failed: ");
}

void TestIconFont::registrationProblemsAreFatal()
{
    QFETCH(QString, path);
    QFETCH(QString, message);

    QProcess child;
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("offscreen"));
    // Qt's messages must reach stderr even though it is a pipe here.
    env.insert(QStringLiteral("QT_FORCE_STDERR_LOGGING"), QStringLiteral("1"));
    child.setProcessEnvironment(env);
    child.start(QCoreApplication::applicationFilePath(), {QString::fromLatin1(kChildFlag), path});
    QVERIFY(child.waitForFinished(60000));
    const QString errors = QString::fromLocal8Bit(child.readAllStandardError());

    if (message.isEmpty()) {
        QCOMPARE(child.exitStatus(), QProcess::NormalExit);
        QVERIFY2(child.exitCode() == 0, qPrintable(errors));
        return;
    }
    QVERIFY2(child.exitStatus() == QProcess::CrashExit || child.exitCode() != 0,
             "registration went on despite the broken font");
    QVERIFY2(errors.contains(message), qPrintable(errors));
}

int main(int argc, char **argv)
{
    if (argc == 3 && qstrcmp(argv[1], kChildFlag) == 0) {
        return runRegistrationChild(argc, argv);
    }
    QGuiApplication app(argc, argv);
    TestIconFont test;
    QTEST_SET_MAIN_SOURCE_PATH
    return QTest::qExec(&test, argc, argv);
}

#include "tst_iconfont.moc"
