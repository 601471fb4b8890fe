// The feedback mail: the way picked from what the session offers, and what it
// is handed. xdg-email and xdg-open are stand-in scripts, the Email portal a
// stand-in on the private bus (dbus-run-session); each writes down its input.

#include "TestSupport.h"

#include "MailComposers.h"
#include "app/Log.h"

#include <QDBusConnection>
#include <QDBusMetaType>
#include <QDBusObjectPath>
#include <QDBusUnixFileDescriptor>
#include <QTest>

using namespace Qt::StringLiterals;
using MailComposers::Session;
Q_DECLARE_METATYPE(Session)

// Plays the Email portal as well.
class TestMail : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.portal.Email")
    TestSupport::ScratchHome m_home;
    QTemporaryDir m_bin;        // the scripts, and "handed", the last one's input
    QStringList m_portalHanded; // the attachment as the file its descriptor is open on

public Q_SLOTS:
    Q_SCRIPTABLE QDBusObjectPath ComposeEmail(const QString &, const QVariantMap &options)
    {
        QList<QDBusUnixFileDescriptor> fds;
        options.value(u"attachment_fds"_s).value<QDBusArgument>() >> fds;
        for (const char *key : {"address", "addresses", "subject", "body"})
            m_portalHanded += options.value(QLatin1String(key)).toStringList();
        m_portalHanded +=
            QFile::symLinkTarget(u"/proc/self/fd/%1"_s.arg(fds.value(0).fileDescriptor()));
        return QDBusObjectPath(u"/org/freedesktop/portal/desktop/request/1"_s);
    }

private Q_SLOTS:
    void initTestCase()
    {
        qDBusRegisterMetaType<QList<QDBusUnixFileDescriptor>>();
        logger(); // today's log, the attachment
        for (const QString &name :
             {m_bin.filePath(u"xdg-email"_s), m_bin.filePath(u"xdg-open"_s)}) {
            QVERIFY(TestSupport::writeFile(name, "#!/bin/sh\nprintf '%s\\0' \"${0##*/}\" \"$@\" "
                                                 ">\"$0.t\"; mv \"$0.t\" \"${0%/*}/handed\"\n"));
            QVERIFY(QFile::setPermissions(name, QFile::ExeOwner | QFile::ReadOwner));
        }
        QDBusConnection bus = QDBusConnection::connectToBus(QDBusConnection::SessionBus, u"p"_s);
        QVERIFY(bus.registerObject(u"/org/freedesktop/portal/desktop"_s, this,
                                   QDBusConnection::ExportScriptableSlots));
        QVERIFY(bus.registerService(u"org.freedesktop.portal.Desktop"_s));
    }

    void handedTheDraft_data()
    {
        QTest::addColumn<Session>("session");
        QTest::addColumn<QString>("handed"); // "|" between the items
        const QString email = m_bin.filePath(u"xdg-email"_s);
        const QString open = m_bin.filePath(u"xdg-open"_s);
        QTest::newRow("portal") << Session{true, true, email, open}
                                << u"a@b.c|a@b.c|Hi|1+1=2 & 100%\n|LOG"_s;
        QTest::newRow("xdg-email") << Session{false, false, email, open}
                                   << u"xdg-email|--utf8|--subject|Hi|--body|1+1=2 & 100%\n|"
                                      "--attach|LOG|a@b.c"_s;
        // A link carries no file; xdg-email in a sandbox could not reach the log.
        QTest::newRow("xdg-open")
            << Session{true, false, email, open}
            << u"xdg-open|mailto:a@b.c?subject=Hi&body=1%2B1%3D2%20%26%20100%25%0A"_s;
    }

    void handedTheDraft()
    {
        QFETCH(Session, session);
        QFETCH(QString, handed);
        const QString file = m_bin.filePath(u"handed"_s);
        QFile::remove(file);
        const auto composer = MailComposers::forSession(session);
        QVERIFY(composer);
        composer->compose(u"a@b.c"_s, u"Hi"_s, u"1+1=2 & 100%\n"_s, Logger::logfilePath());
        const auto received = [&] {
            const QByteArray args = TestSupport::readFile(file);
            return args.isEmpty() ? m_portalHanded
                                  : QString::fromUtf8(args.chopped(1)).split(u'\0');
        };
        handed.replace(u"LOG"_s, Logger::logfilePath());
        QTRY_COMPARE_WITH_TIMEOUT(received(), handed.split(u'|'), 10000);
    }
};

QTEST_GUILESS_MAIN(TestMail)
#include "tst_mail.moc"
