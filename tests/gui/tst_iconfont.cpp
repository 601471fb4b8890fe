// The icon font's registration and its fatal start-up paths, checked in a
// child process. The icons drawn from it are tst_tray's (the status item's
// emblem).

#include "TestSupport.h"

#include "app/IconFont.h"

#include <QGuiApplication>
#include <QtTest>

#include <sys/resource.h>

class TestIconFont : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void registrationProblemsAreFatal_data()
    {
        QTest::addColumn<QString>("path");
        QTest::addColumn<QString>("message"); // empty: the child must succeed
        // The control: the harness itself works, so a crash below is the font's doing.
        QTest::newRow("resource font") << IconFont::resourcePath() << QString();
        QTest::newRow("missing file") << m_dir.filePath(QStringLiteral("absent/iconfont.ttf"))
                                      << QStringLiteral("Can not found font named: iconfont");
        const QString junk = m_dir.filePath(QStringLiteral("not-a-font.ttf"));
        QVERIFY(TestSupport::writeFile(junk, QByteArray(4096, 'z')));
        QTest::newRow("not a font") << junk << QStringLiteral("Register Iconfont failed: ");
    }

    void registrationProblemsAreFatal()
    {
        QFETCH(QString, path);
        QFETCH(QString, message);
        const auto child = TestSupport::runChild(QStringLiteral("register"), m_dir.path(), {path});
        const QString errors = QString::fromLocal8Bit(child.err);
        if (message.isEmpty()) {
            QCOMPARE(child.status, QProcess::NormalExit);
            QVERIFY2(child.exitCode == 0, qPrintable(errors));
            return;
        }
        QVERIFY2(child.status == QProcess::CrashExit || child.exitCode != 0,
                 "registration went on despite the broken font");
        QVERIFY2(errors.contains(message), qPrintable(errors));
    }

private:
    QTemporaryDir m_dir;
};

namespace {
// Registers the font from the path given and exits 0 if that worked.
int registerChild(int argc, char **argv)
{
    // The fatal paths abort on purpose; leave no core files behind.
    const rlimit noCore{0, 0};
    setrlimit(RLIMIT_CORE, &noCore);
    QGuiApplication app(argc, argv);
    IconFont::setResourcePath(QString::fromLocal8Bit(argv[3]));
    return IconFont::name().isEmpty() ? 1 : 0;
}
} // namespace

int main(int argc, char **argv)
{
    // Qt's messages must reach stderr even though it is a pipe in the child.
    qputenv("QT_FORCE_STDERR_LOGGING", "1");
    const int child = TestSupport::runChildMode(
        argc, argv, {{"register", [&] { return registerChild(argc, argv); }}});
    if (child >= 0)
        return child;
    QGuiApplication app(argc, argv);
    TestIconFont test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_iconfont.moc"
