// A missing icon font, or one that is no font (this program), stops Narv with its message.

#include "TestSupport.h"

#include "app/IconFont.h"

#include <QGuiApplication>
#include <QtTest>

#include <sys/resource.h>

class TestIconFont : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void registrationProblemsAreFatal()
    {
        for (const auto &[path, message] :
             {std::pair(QStringLiteral("/nonexistent/iconfont.ttf"),
                        "Can not found font named: iconfont"),
              std::pair(QCoreApplication::applicationFilePath(), "Register Iconfont failed: ")}) {
            const auto child = TestSupport::runChild(QStringLiteral("register"), {}, {path});
            QVERIFY2(child.status == QProcess::CrashExit || child.exitCode != 0, "it went on");
            QVERIFY2(child.err.contains(message), child.err.constData());
        }
    }
};

int main(int argc, char **argv)
{
    // Qt's messages must reach stderr even though it is a pipe in the child.
    qputenv("QT_FORCE_STDERR_LOGGING", "1");
    QGuiApplication app(argc, argv);
    const auto registerFont = [argv] {
        // The fatal paths abort on purpose; leave no core files behind.
        const rlimit noCore{0, 0};
        setrlimit(RLIMIT_CORE, &noCore);
        IconFont::setResourcePath(QString::fromLocal8Bit(argv[3]));
        return IconFont::name().isEmpty() ? 1 : 0;
    };
    const int child = TestSupport::runChildMode(argc, argv, {{"register", registerFont}});
    if (child >= 0)
        return child;
    TestIconFont test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_iconfont.moc"
