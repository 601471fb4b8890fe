// The D-Bus sources on private buses (see with-buses.sh): the screensaver
// services' ActiveChanged under each of the five names; a logind session's
// LockedHint on the stand-in system bus, alone and together with all of them,
// merged into one lock and one unlock for the handlers; Mutter's idle monitor.
// Each case waits for what it expects and then compares everything reported
// so far: a report that should not have come shows as one too many.

#include "LogTail.h"

#include "app/AppState.h"
#include "app/SystemEventController.h"
#include "platform/events/DBusScreenLockSource.h"
#include "platform/events/MutterIdleActivitySource.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QTest>

namespace {

const QString sessionPath = QStringLiteral("/org/freedesktop/login1/session/_32");

class FakeLogindManager : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.login1.Manager")
public Q_SLOTS:
    QDBusObjectPath GetSessionByPID(uint) { return QDBusObjectPath(sessionPath); }
};

class FakeMutter : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.gnome.Mutter.IdleMonitor")
public:
    qulonglong idleInterval = 0; // ms
    uint idleWatch = 0;
    uint activeWatch = 0;
    int added = 0; // watches of both kinds, each numbered by this count

public Q_SLOTS:
    uint AddIdleWatch(qulonglong interval)
    {
        idleInterval = interval;
        return idleWatch = ++added;
    }
    uint AddUserActiveWatch() { return activeWatch = ++added; }

Q_SIGNALS:
    void WatchFired(uint id);
};

} // namespace

class TestEventSources : public QObject {
    Q_OBJECT

    std::optional<TestSupport::ScratchHome> m_home;
    QDBusConnection m_emitter{QString()};
    QDBusConnection m_logindBus{QString()};
    FakeLogindManager m_manager;

    // ActiveChanged(active) from `interface` on `path`, sent by the owner of `interface`.
    void screenSaverSays(const QString &interface, const QString &path, bool active)
    {
        QDBusMessage signal =
            QDBusMessage::createSignal(path, interface, QStringLiteral("ActiveChanged"));
        signal << active;
        QVERIFY(m_emitter.send(signal));
    }

    void logindSays(bool locked)
    {
        QDBusMessage signal = QDBusMessage::createSignal(
            sessionPath, QStringLiteral("org.freedesktop.DBus.Properties"),
            QStringLiteral("PropertiesChanged"));
        signal << QStringLiteral("org.freedesktop.login1.Session")
               << QVariantMap{{QStringLiteral("LockedHint"), locked}} << QStringList();
        QVERIFY(m_logindBus.send(signal));
    }

private Q_SLOTS:
    void initTestCase()
    {
        m_home.emplace();
        QVERIFY2(QDBusConnection::sessionBus().isConnected(), "run me through with-buses.sh");
        // The services live on connections of their own, as they would in their own processes.
        m_emitter =
            QDBusConnection::connectToBus(QDBusConnection::SessionBus, QStringLiteral("emitter"));
        for (const QString &name : DBusScreenLockSource::screenSaverInterfaces())
            QVERIFY(m_emitter.registerService(name));
        m_logindBus = QDBusConnection::connectToBus(QDBusConnection::SystemBus,
                                                    QStringLiteral("fake-logind"));
        QVERIFY(m_logindBus.registerService(QStringLiteral("org.freedesktop.login1")));
        QVERIFY(m_logindBus.registerObject(QStringLiteral("/org/freedesktop/login1"), &m_manager,
                                           QDBusConnection::ExportAllSlots));
    }

    void eachScreenSaverAlone_data()
    {
        QTest::addColumn<QString>("interface");
        for (const QString &name : DBusScreenLockSource::screenSaverInterfaces())
            QTest::newRow(qPrintable(name)) << name;
    }

    // On the service's own path (the name's dots turned into slashes). A lock
    // undone at once is swallowed; an unlock when not locked, or a second lock,
    // says nothing.
    void eachScreenSaverAlone()
    {
        QFETCH(QString, interface);
        const QString path = u'/' + QString(interface).replace(u'.', u'/');
        QStringList said;
        DBusScreenLockSource source(QDBusConnection::sessionBus(), QDBusConnection::systemBus());
        connect(&source, &ScreenLockSource::locked, [&] { said.append("lock"); });
        connect(&source, &ScreenLockSource::unlocked, [&] { said.append("unlock"); });
        source.start();
        screenSaverSays(interface, path, true);
        screenSaverSays(interface, path, false);
        screenSaverSays(interface, path, false);
        screenSaverSays(interface, path, true);
        QTRY_COMPARE(said, QStringList{"lock"});
        screenSaverSays(interface, path, true);
        screenSaverSays(interface, path, false);
        QTRY_COMPARE(said, QStringList({"lock", "unlock"}));
    }

    // logind alone, then everything at once: each gives the handlers one lock
    // and one unlock.
    void handlersSeeOneLockAndOneUnlock()
    {
        SystemEventController::setScreenLockSource(std::make_unique<DBusScreenLockSource>(
            QDBusConnection::sessionBus(), QDBusConnection::systemBus()));
        SystemEventController::setup();
        const auto *source =
            static_cast<DBusScreenLockSource *>(SystemEventController::screenLockSource());
        QTRY_COMPARE(source->sessionPath(), sessionPath);
        const int locks = LogTail::count("screen locked\n");
        const int unlocks = LogTail::count("screen unlocked\n");
        logindSays(true);
        QTRY_VERIFY(!AppState::working());
        logindSays(false);
        QTRY_VERIFY(AppState::working());

        logindSays(true);
        for (const QString &interface : DBusScreenLockSource::screenSaverInterfaces())
            screenSaverSays(interface, QStringLiteral("/ScreenSaver"), true);
        QTRY_VERIFY(!AppState::working());
        for (const QString &interface : DBusScreenLockSource::screenSaverInterfaces())
            screenSaverSays(interface, QStringLiteral("/ScreenSaver"), false);
        logindSays(false);
        QTRY_VERIFY(AppState::working());
        QCOMPARE(LogTail::count("screen locked\n"), locks + 2);
        QCOMPARE(LogTail::count("screen unlocked\n"), unlocks + 2);
    }

    // The user comes back (activity, and the pulse runs while they stay);
    // another client's watch is none of ours; a second of idleness (the last
    // input was just now); back again. A restarted Mutter has forgotten the
    // watches; they are added again.
    void mutterIdleMonitor()
    {
        QDBusConnection bus =
            QDBusConnection::connectToBus(QDBusConnection::SessionBus, QStringLiteral("mutter"));
        FakeMutter mutter;
        QVERIFY(bus.registerObject(MutterIdleActivitySource::path, &mutter,
                                   QDBusConnection::ExportAllSlots |
                                       QDBusConnection::ExportAllSignals));
        QVERIFY(bus.registerService(MutterIdleActivitySource::service));
        MutterIdleActivitySource source(QDBusConnection::sessionBus());
        QList<bool> active; // isUserActive() at each activity
        connect(&source, &InputActivitySource::activity,
                [&] { active.append(source.isUserActive()); });
        QVERIFY(source.start());
        QTRY_COMPARE(mutter.added, 2);
        QCOMPARE(mutter.idleInterval, qulonglong(1000));
        Q_EMIT mutter.WatchFired(mutter.activeWatch);
        Q_EMIT mutter.WatchFired(70);
        Q_EMIT mutter.WatchFired(mutter.idleWatch);
        QTRY_COMPARE(mutter.added, 3);
        Q_EMIT mutter.WatchFired(mutter.activeWatch);
        QTRY_COMPARE(active, QList<bool>({true, false, true}));

        QVERIFY(bus.unregisterService(MutterIdleActivitySource::service));
        QVERIFY(bus.registerService(MutterIdleActivitySource::service));
        QTRY_COMPARE(mutter.added, 5);
    }
};

QTEST_GUILESS_MAIN(TestEventSources)
#include "tst_eventsources.moc"
