// The feedback mail on Linux: which way is picked, and what each way is handed.
// xdg-email is a stand-in script on PATH that records its arguments; the Email
// portal is a stand-in on a private session bus (run under dbus-run-session);
// mailto: links are caught with QDesktopServices::setUrlHandler.

#include "TestSupport.h"

#include "MailComposers.h"
#include "MailtoComposer.h"
#include "XdgEmailComposer.h"
#include "app/Log.h"
#include "statusbar/MenuAction.h"

#include <QDBusConnection>
#include <QDBusContext>
#include <QDBusMetaType>
#include <QDBusObjectPath>
#include <QDBusUnixFileDescriptor>
#include <QDesktopServices>
#include <QFile>
#include <QGuiApplication>
#include <QScopeGuard>
#include <QTest>
#include <QUrlQuery>

#include <unistd.h>

using MailComposers::Kind;
using TestSupport::ScratchHome;

namespace {

// Takes ComposeEmail calls as the portal would and keeps what they carried.
class FakeEmailPortal : public QObject, protected QDBusContext {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.portal.Email")
public:
    QVariantMap options;
    QByteArray attachment; // read through the descriptor the call carried
    int calls = 0;

public Q_SLOTS:
    Q_SCRIPTABLE QDBusObjectPath ComposeEmail(const QString &parentWindow,
                                              const QVariantMap &callOptions)
    {
        Q_UNUSED(parentWindow);
        ++calls;
        options = callOptions;
        QList<QDBusUnixFileDescriptor> fds;
        const auto fdArgument =
            callOptions.value(QStringLiteral("attachment_fds")).value<QDBusArgument>();
        fdArgument >> fds;
        if (!fds.isEmpty()) {
            QFile file;
            if (file.open(fds.first().fileDescriptor(), QIODevice::ReadOnly))
                attachment = file.readAll();
        }
        return QDBusObjectPath(QStringLiteral("/org/freedesktop/portal/desktop/request/1_1/t"));
    }
};

class UrlCatcher : public QObject {
    Q_OBJECT
public:
    QList<QUrl> urls;
public Q_SLOTS:
    void open(const QUrl &url) { urls.append(url); }
};

} // namespace

class TestMail : public QObject {
    Q_OBJECT

    std::optional<ScratchHome> m_home;
    QString m_log;

private Q_SLOTS:
    void initTestCase()
    {
        qDBusRegisterMetaType<QList<QDBusUnixFileDescriptor>>();
        m_home.emplace();
        logger(); // makes today's log, the attachment
        m_log = Logger::logfilePath();
        QVERIFY(QFile::exists(m_log));
    }

    void choice_data()
    {
        QTest::addColumn<bool>("sandboxed");
        QTest::addColumn<bool>("portal");
        QTest::addColumn<QString>("xdgEmail");
        QTest::addColumn<bool>("urls");
        QTest::addColumn<int>("kind");
        const QString xdg = QStringLiteral("/usr/bin/xdg-email");
        QTest::newRow("normal install") << false << false << xdg << true << int(Kind::xdgEmail);
        QTest::newRow("no xdg-utils") << false << false << QString() << true << int(Kind::mailto);
        QTest::newRow("flatpak") << true << true << xdg << true << int(Kind::portal);
        // xdg-email inside a sandbox cannot hand our files to the mail program.
        QTest::newRow("sandbox without portal")
            << true << false << xdg << true << int(Kind::mailto);
        QTest::newRow("nothing at all") << false << false << QString() << false << int(Kind::none);
    }

    void choice()
    {
        QFETCH(bool, sandboxed);
        QFETCH(bool, portal);
        QFETCH(QString, xdgEmail);
        QFETCH(bool, urls);
        QFETCH(int, kind);
        QCOMPARE(int(MailComposers::choose({sandboxed, portal, xdgEmail, urls})), kind);
        QCOMPARE(MailComposers::forSession({sandboxed, portal, xdgEmail, urls}) != nullptr,
                 kind != int(Kind::none));
    }

    void xdgEmailGetsTheDraft()
    {
        // A stand-in xdg-email first on PATH, recording its arguments NUL-separated.
        QTemporaryDir bin;
        const QString record = bin.filePath(QStringLiteral("args"));
        const QString script = bin.filePath(QStringLiteral("xdg-email"));
        QVERIFY(TestSupport::writeFile(
            script, "#!/bin/sh\nprintf '%s\\0' \"$@\" > \"$0.tmp\" && mv \"$0.tmp\" \"" +
                        record.toUtf8() + "\"\n"));
        QFile::setPermissions(script, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
        const QByteArray path = qgetenv("PATH");
        qputenv("PATH", bin.path().toUtf8() + ':' + path);
        const auto restorePath = qScopeGuard([&] { qputenv("PATH", path); });

        const MailComposers::Session session = MailComposers::currentSession();
        QCOMPARE(session.xdgEmail, script);
        QCOMPARE(MailComposers::choose(session), Kind::xdgEmail);

        MailComposers::install();
        MenuAction::didClickFeedback(nullptr);
        QTRY_VERIFY_WITH_TIMEOUT(QFile::exists(record), 10000);
        QFile args(record);
        QVERIFY(args.open(QIODevice::ReadOnly));
        QStringList received = QString::fromUtf8(args.readAll()).split(QChar(0));
        QCOMPARE(received.takeLast(), QString()); // after the last NUL
        QCOMPARE(received, (QStringList{QStringLiteral("--utf8"), QStringLiteral("--subject"),
                                        QStringLiteral("Narv Feedback"), QStringLiteral("--body"),
                                        MenuAction::feedbackBody(), QStringLiteral("--attach"),
                                        m_log, QStringLiteral("feedback@narv.app")}));

        // No log file (say, the cache folder is read-only): the draft goes without it.
        QCOMPARE(
            XdgEmailComposer::arguments(QStringLiteral("a@b.c"), QStringLiteral("s"),
                                        QStringLiteral("b"), QStringLiteral("/nonexistent/log")),
            (QStringList{QStringLiteral("--utf8"), QStringLiteral("--subject"), QStringLiteral("s"),
                         QStringLiteral("--body"), QStringLiteral("b"), QStringLiteral("a@b.c")}));
    }

    void mailtoLink()
    {
        UrlCatcher catcher;
        QDesktopServices::setUrlHandler(QStringLiteral("mailto"), &catcher, "open");
        MailtoComposer().compose(QStringLiteral("feedback@narv.app"),
                                 QStringLiteral("Narv Feedback"),
                                 QStringLiteral("a&b=c+d 100%\n\nend"), m_log);
        QDesktopServices::unsetUrlHandler(QStringLiteral("mailto"));
        QCOMPARE(catcher.urls.size(), 1);
        const QUrl url = catcher.urls.first();
        QCOMPARE(url.toString(QUrl::FullyEncoded),
                 QStringLiteral("mailto:feedback@narv.app?subject=Narv%20Feedback&body="
                                "a%26b%3Dc%2Bd%20100%25%0A%0Aend"));
        // A mail program reads it back as it was written.
        const QUrlQuery query(url);
        QCOMPARE(query.queryItemValue(QStringLiteral("body"), QUrl::FullyDecoded),
                 QStringLiteral("a&b=c+d 100%\n\nend"));
        // The attachment cannot travel; the log says where it is.
        QFile log(m_log);
        QVERIFY(log.open(QIODevice::ReadOnly));
        QVERIFY(log.readAll().contains("the feedback mail cannot carry the log; it is at " +
                                       m_log.toUtf8()));
    }

    void portalGetsTheLogFile()
    {
        if (!QDBusConnection::sessionBus().isConnected())
            QSKIP("no session bus (ctest runs this under dbus-run-session)");
        QDBusConnection portalBus =
            QDBusConnection::connectToBus(QDBusConnection::SessionBus, QStringLiteral("portal"));
        FakeEmailPortal portal;
        QVERIFY(portalBus.registerObject(QStringLiteral("/org/freedesktop/portal/desktop"), &portal,
                                         QDBusConnection::ExportScriptableSlots));
        QVERIFY(portalBus.registerService(QStringLiteral("org.freedesktop.portal.Desktop")));

        MenuAction::setMailService([] {
            return MailComposers::forSession({true, true, QString(), true});
        });
        MenuAction::didClickFeedback(nullptr);
        QTRY_COMPARE_WITH_TIMEOUT(portal.calls, 1, 10000);
        QCOMPARE(portal.options.value(QStringLiteral("address")).toString(),
                 QStringLiteral("feedback@narv.app"));
        QCOMPARE(portal.options.value(QStringLiteral("addresses")).toStringList(),
                 QStringList{QStringLiteral("feedback@narv.app")});
        QCOMPARE(portal.options.value(QStringLiteral("subject")).toString(),
                 QStringLiteral("Narv Feedback"));
        QCOMPARE(portal.options.value(QStringLiteral("body")).toString(),
                 MenuAction::feedbackBody());
        QFile log(m_log);
        QVERIFY(log.open(QIODevice::ReadOnly));
        const QByteArray expected = log.readAll();
        QVERIFY(!expected.isEmpty());
        QCOMPARE(portal.attachment.left(expected.size()), expected);
    }
};

int main(int argc, char **argv)
{
    QGuiApplication app(argc, argv);
    TestMail test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_mail.moc"
