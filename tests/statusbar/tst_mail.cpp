// The feedback mail on Linux: which way is picked, and what each way is handed.
// xdg-email is a stand-in script on PATH that records its arguments; the Email
// portal is a stand-in on a private session bus (run under dbus-run-session);
// xdg-open, which opens the mailto: link, is a stand-in script as well.

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
#include <QFile>
#include <QTemporaryDir>
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

// A stand-in for `name`, first on PATH while the returned guard lives, that
// records its arguments NUL-separated.
struct StandIn {
    QTemporaryDir bin;
    QString program;
    QString record;
    QByteArray path = qgetenv("PATH");

    explicit StandIn(const char *name)
        : program(bin.filePath(QLatin1String(name))), record(bin.filePath(QStringLiteral("args")))
    {
        TestSupport::writeFile(program,
                               "#!/bin/sh\nprintf '%s\\0' \"$@\" > \"$0.tmp\" && mv \"$0.tmp\" \"" +
                                   record.toUtf8() + "\"\n");
        QFile::setPermissions(program, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
        qputenv("PATH", bin.path().toUtf8() + ':' + path);
    }
    ~StandIn() { qputenv("PATH", path); }

    // What it was called with, once it has run.
    QStringList arguments() const
    {
        if (!QTest::qWaitFor([this] { return QFile::exists(record); }, 10000))
            return {QStringLiteral("(not run)")};
        QFile args(record);
        if (!args.open(QIODevice::ReadOnly))
            return {QStringLiteral("(unreadable)")};
        QStringList received = QString::fromUtf8(args.readAll()).split(QChar(0));
        received.removeLast(); // after the last NUL
        return received;
    }
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
        QTest::addColumn<QString>("xdgOpen");
        QTest::addColumn<int>("kind");
        const QString xdg = QStringLiteral("/usr/bin/xdg-email");
        const QString open = QStringLiteral("/usr/bin/xdg-open");
        QTest::newRow("normal install") << false << false << xdg << open << int(Kind::xdgEmail);
        QTest::newRow("xdg-open only") << false << false << QString() << open << int(Kind::mailto);
        QTest::newRow("flatpak") << true << true << xdg << open << int(Kind::portal);
        // xdg-email inside a sandbox cannot hand our files to the mail program.
        QTest::newRow("sandbox without portal")
            << true << false << xdg << open << int(Kind::mailto);
        QTest::newRow("nothing at all")
            << false << false << QString() << QString() << int(Kind::none);
    }

    void choice()
    {
        QFETCH(bool, sandboxed);
        QFETCH(bool, portal);
        QFETCH(QString, xdgEmail);
        QFETCH(QString, xdgOpen);
        QFETCH(int, kind);
        QCOMPARE(int(MailComposers::choose({sandboxed, portal, xdgEmail, xdgOpen})), kind);
        QCOMPARE(MailComposers::forSession({sandboxed, portal, xdgEmail, xdgOpen}) != nullptr,
                 kind != int(Kind::none));
    }

    void xdgEmailGetsTheDraft()
    {
        const StandIn xdgEmail("xdg-email");
        const MailComposers::Session session = MailComposers::currentSession();
        QCOMPARE(session.xdgEmail, xdgEmail.program);
        QCOMPARE(MailComposers::choose(session), Kind::xdgEmail);

        MailComposers::install();
        MenuAction::didClickFeedback(nullptr);
        QCOMPARE(xdgEmail.arguments(),
                 (QStringList{QStringLiteral("--utf8"), QStringLiteral("--subject"),
                              QStringLiteral("Narv Feedback"), QStringLiteral("--body"),
                              MenuAction::feedbackBody(), QStringLiteral("--attach"), m_log,
                              QStringLiteral("feedback@narv.app")}));
        QVERIFY(MenuAction::feedbackBody().startsWith("Please use Chinese or English in your mail, "
                                                      "if you can.\n\n\n\n\n\n\n\nApp version: v"));

        // No log file (say, the cache folder is read-only): the draft goes without it.
        QCOMPARE(
            XdgEmailComposer::arguments(QStringLiteral("a@b.c"), QStringLiteral("s"),
                                        QStringLiteral("b"), QStringLiteral("/nonexistent/log")),
            (QStringList{QStringLiteral("--utf8"), QStringLiteral("--subject"), QStringLiteral("s"),
                         QStringLiteral("--body"), QStringLiteral("b"), QStringLiteral("a@b.c")}));
    }

    void mailtoLink()
    {
        const StandIn xdgOpen("xdg-open");
        MailtoComposer(xdgOpen.program)
            .compose(QStringLiteral("feedback@narv.app"), QStringLiteral("Narv Feedback"),
                     QStringLiteral("a&b=c+d 100%\n\nend"), m_log);
        const QStringList opened = xdgOpen.arguments();
        QCOMPARE(opened.size(), 1);
        const QUrl url(opened.first(), QUrl::StrictMode);
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
        QDBusConnection portalBus =
            QDBusConnection::connectToBus(QDBusConnection::SessionBus, QStringLiteral("portal"));
        FakeEmailPortal portal;
        QVERIFY(portalBus.registerObject(QStringLiteral("/org/freedesktop/portal/desktop"), &portal,
                                         QDBusConnection::ExportScriptableSlots));
        QVERIFY(portalBus.registerService(QStringLiteral("org.freedesktop.portal.Desktop")));

        MenuAction::setMailService([] {
            return MailComposers::forSession({true, true, QString(), QString()});
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

QTEST_GUILESS_MAIN(TestMail)

#include "tst_mail.moc"
