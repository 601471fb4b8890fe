// The D-Bus sources on private buses (see with-buses.sh): the screensaver
// services' ActiveChanged from each of the five names, a logind session's
// LockedHint on the stand-in system bus, and all of them together, merged into
// one lock and one unlock that reach the handlers.
// Also Mutter's idle monitor turned into activity.
// Each case waits for the report it expects and then compares everything
// reported so far: a report that should not have come shows as one too many.

#include "FakeWindows.h"
#include "LogTail.h"
#include "TestSupport.h"

#include "app/AppState.h"
#include "app/SystemEventController.h"
#include "app/TickSource.h"
#include "app/TicktackController.h"
#include "platform/events/DBusScreenLockSource.h"
#include "platform/events/EventSources.h"
#include "platform/events/MutterIdleActivitySource.h"
#include "settings/PrefState.h"
#include "settings/PreferencesStore.h"

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusContext>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QScopeGuard>
#include <QSignalSpy>
#include <QTest>

using TestSupport::ScratchHome;

namespace {

const QString sessionPath = QStringLiteral("/org/freedesktop/login1/session/_32");

class FakeLogindManager : public QObject, protected QDBusContext {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.login1.Manager")
public:
    bool knowsPid = true;
    QList<uint> askedPids;
    QStringList askedIds;

public Q_SLOTS:
    QDBusObjectPath GetSessionByPID(uint pid)
    {
        askedPids.append(pid);
        if (!knowsPid)
            sendErrorReply(QStringLiteral("org.freedesktop.login1.NoSessionForPID"),
                           QStringLiteral("PID %1 does not belong to any known session").arg(pid));
        return QDBusObjectPath(sessionPath);
    }
    QDBusObjectPath GetSession(const QString &id)
    {
        askedIds.append(id);
        return QDBusObjectPath(sessionPath);
    }
};

class FakeLogindSession : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.login1.Session")
    Q_PROPERTY(bool LockedHint READ lockedHint)
public:
    bool lockedHint() const
    {
        ++reads;
        return m_lockedHint;
    }
    void setLockedHint(bool value) { m_lockedHint = value; }
    mutable int reads = 0;

private:
    bool m_lockedHint = false;
};

class FakeMutter : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.gnome.Mutter.IdleMonitor")
public:
    QList<qulonglong> idleIntervals; // ms, one per AddIdleWatch
    uint idleWatch = 0;
    uint activeWatch = 0;
    int activeWatchesAdded = 0;

public Q_SLOTS:
    uint AddIdleWatch(qulonglong interval)
    {
        idleIntervals.append(interval);
        return idleWatch = ++m_lastId;
    }
    uint AddUserActiveWatch()
    {
        ++activeWatchesAdded;
        return activeWatch = ++m_lastId;
    }
    void RemoveWatch(uint) {}
    qulonglong GetIdletime() { return 0; }

Q_SIGNALS:
    void WatchFired(uint id);

private:
    uint m_lastId = 100;
};

// The screensaver services' path: the name's dots turned into slashes.
QString screenSaverPath(const QString &interface)
{
    return u'/' + QString(interface).replace(u'.', u'/');
}

} // namespace

class TestEventSources : public QObject {
    Q_OBJECT

    std::optional<ScratchHome> m_home;
    QDBusConnection m_emitter{QString()};
    QDBusConnection m_logindBus{QString()};
    FakeLogindManager m_manager;
    FakeLogindSession m_session;
    ManualTickSource m_ticks;
    FakeWindows *m_windows = nullptr;

    std::unique_ptr<DBusScreenLockSource> startedSource()
    {
        auto source = std::make_unique<DBusScreenLockSource>(QDBusConnection::sessionBus(),
                                                             QDBusConnection::systemBus());
        source->start();
        // Listening to logind starts once the session is found.
        if (!QTest::qWaitFor([&] { return !source->sessionPath().isEmpty(); }, 10000))
            qWarning("the logind session was not found");
        return source;
    }

    // ActiveChanged(active) from `interface` on `path`, sent by the owner of `interface`.
    void screenSaverSays(const QString &interface, const QString &path, bool active)
    {
        QDBusMessage signal =
            QDBusMessage::createSignal(path, interface, QStringLiteral("ActiveChanged"));
        signal << active;
        QVERIFY(m_emitter.send(signal));
    }

    void sessionPropertiesChanged(const QString &interface, const QVariantMap &changed,
                                  const QStringList &invalidated = {})
    {
        QDBusMessage signal = QDBusMessage::createSignal(
            sessionPath, QStringLiteral("org.freedesktop.DBus.Properties"),
            QStringLiteral("PropertiesChanged"));
        signal << interface << changed << invalidated;
        QVERIFY(m_logindBus.send(signal));
    }

    void logindSays(bool locked)
    {
        m_session.setLockedHint(locked);
        sessionPropertiesChanged(QStringLiteral("org.freedesktop.login1.Session"),
                                 {{QStringLiteral("LockedHint"), locked}});
    }

    // What `source` reports, in order: "lock" and "unlock".
    static std::shared_ptr<QStringList> reports(ScreenLockSource *source)
    {
        auto said = std::make_shared<QStringList>();
        connect(source, &ScreenLockSource::locked, source, [said] { said->append("lock"); });
        connect(source, &ScreenLockSource::unlocked, source, [said] { said->append("unlock"); });
        return said;
    }

private Q_SLOTS:
    void initTestCase()
    {
        m_home.emplace();
        QVERIFY2(QDBusConnection::sessionBus().isConnected(), "run me through with-buses.sh");
        QVERIFY(QDBusConnection::systemBus().isConnected());
        QVERIFY(qgetenv("DBUS_SYSTEM_BUS_ADDRESS") != qgetenv("DBUS_SESSION_BUS_ADDRESS"));

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
        QVERIFY(m_logindBus.registerObject(sessionPath, &m_session,
                                           QDBusConnection::ExportAllProperties));

        TicktackController::setTimer(&m_ticks);
        m_windows = &FakeWindows::install();
    }

    void cleanup()
    {
        m_manager.knowsPid = true;
        m_manager.askedPids.clear();
        m_manager.askedIds.clear();
        m_session.setLockedHint(false);
    }

    void eachScreenSaverAlone_data()
    {
        QTest::addColumn<QString>("interface");
        for (const char *name :
             {"org.freedesktop.ScreenSaver", "org.gnome.ScreenSaver", "org.cinnamon.ScreenSaver",
              "org.mate.ScreenSaver", "org.xfce.ScreenSaver"})
            QTest::newRow(name) << QString::fromLatin1(name);
    }

    void eachScreenSaverAlone()
    {
        QFETCH(QString, interface);
        const QString path = screenSaverPath(interface);
        auto source = startedSource();
        const auto said = reports(source.get());

        // A lock undone at once is swallowed; an unlock when not locked says
        // nothing.
        screenSaverSays(interface, path, true);
        screenSaverSays(interface, path, false);
        screenSaverSays(interface, path, false);
        screenSaverSays(interface, path, true);
        QTRY_COMPARE(said->size(), 1);
        QVERIFY(source->isLocked());
        screenSaverSays(interface, path, true); // some desktops say it twice
        screenSaverSays(interface, path, false);
        QTRY_VERIFY(!source->isLocked());
        QCOMPARE(*said, QStringList({"lock", "unlock"}));
    }

    void logind_data()
    {
        QTest::addColumn<bool>("byId");
        QTest::newRow("the session of the process") << false;
        // Started by the user's service manager, Narv is in no session of its own.
        QTest::newRow("XDG_SESSION_ID") << true;
    }

    void logind()
    {
        QFETCH(bool, byId);
        m_manager.knowsPid = !byId;
        if (byId)
            qputenv("XDG_SESSION_ID", "c7");
        auto restore = qScopeGuard([] { qunsetenv("XDG_SESSION_ID"); });
        auto source = startedSource();
        QCOMPARE(source->sessionPath(), sessionPath);
        if (byId)
            QCOMPARE(m_manager.askedIds, QStringList{QStringLiteral("c7")});
        else
            QCOMPARE(m_manager.askedPids, QList<uint>{uint(QCoreApplication::applicationPid())});
        const auto said = reports(source.get());

        logindSays(true);
        QTRY_COMPARE(*said, QStringList{"lock"});

        // Other properties of the session, and other interfaces, are not a
        // lock state; told only that LockedHint changed, the source asks for it.
        sessionPropertiesChanged(QStringLiteral("org.freedesktop.login1.Session"),
                                 {{QStringLiteral("IdleHint"), false}});
        sessionPropertiesChanged(QStringLiteral("org.example.Other"),
                                 {{QStringLiteral("LockedHint"), false}});
        const int reads = m_session.reads;
        sessionPropertiesChanged(QStringLiteral("org.freedesktop.login1.Session"), {},
                                 {QStringLiteral("LockedHint")});
        QTRY_COMPARE(m_session.reads, reads + 1);
        // Still locked: the read answered true. Now unlocked, read again.
        m_session.setLockedHint(false);
        sessionPropertiesChanged(QStringLiteral("org.freedesktop.login1.Session"), {},
                                 {QStringLiteral("LockedHint")});
        QTRY_COMPARE(*said, QStringList({"lock", "unlock"}));
        QCOMPARE(m_session.reads, reads + 2);
    }

    void handlersSeeOneLockAndOneUnlock()
    {
        PrefState *pref = AppState::prefState();
        pref->setRestartTimerAfterAwake(true);
        pref->setShowNewDayTip(true);
        SystemEventController::setScreenLockSource(std::make_unique<DBusScreenLockSource>(
            QDBusConnection::sessionBus(), QDBusConnection::systemBus()));
        AppState::setWorking(true);
        SystemEventController::setup();
        const auto *source =
            static_cast<DBusScreenLockSource *>(SystemEventController::screenLockSource());
        QTRY_VERIFY(!source->sessionPath().isEmpty());

        QSignalSpy weakup(pref, &PrefState::lastWeakupTimestampChanged);
        const int locks = LogTail::count("screen locked\n");
        const int unlocks = LogTail::count("screen unlocked\n");
        const int starts = LogTail::count("ticktack timer start 1500\n");

        logindSays(true);
        for (const QString &interface : DBusScreenLockSource::screenSaverInterfaces())
            screenSaverSays(interface, QStringLiteral("/ScreenSaver"), true);
        QTRY_VERIFY(!AppState::working());
        QCOMPARE(LogTail::count("screen locked\n"), locks + 1);
        QCOMPARE(weakup.count(), 1);
        QCOMPARE(m_windows->count("closeBreak"), 1);

        for (const QString &interface : DBusScreenLockSource::screenSaverInterfaces())
            screenSaverSays(interface, QStringLiteral("/ScreenSaver"), false);
        logindSays(false);
        QTRY_VERIFY(AppState::working());
        QCOMPARE(LogTail::count("screen unlocked\n"), unlocks + 1);
        QCOMPARE(LogTail::count("ticktack timer start 1500\n"), starts + 1);
        QCOMPARE(LogTail::count("screen locked\n"), locks + 1);
        QCOMPARE(weakup.count(), 1);
        QCOMPARE(m_windows->count("closeBreak"), 1);
    }

    void mutterIdleMonitor()
    {
        QDBusConnection bus =
            QDBusConnection::connectToBus(QDBusConnection::SessionBus, QStringLiteral("mutter"));
        QVERIFY(!MutterIdleActivitySource::isAvailable(QDBusConnection::sessionBus()));
        FakeMutter mutter;
        QVERIFY(bus.registerObject(MutterIdleActivitySource::path, &mutter,
                                   QDBusConnection::ExportAllSlots |
                                       QDBusConnection::ExportAllSignals));
        QVERIFY(bus.registerService(MutterIdleActivitySource::service));
        QVERIFY(MutterIdleActivitySource::isAvailable(QDBusConnection::sessionBus()));

        // GNOME on Wayland, and an X11 session whose X server cannot be used, get Mutter's.
        for (const char *wayland : {"wayland-7", ""}) {
            qputenv("WAYLAND_DISPLAY", wayland);
            qputenv("DISPLAY", ":987");
            EventSources::install();
            QVERIFY(SystemEventController::inputActivitySource());
            QCOMPARE(SystemEventController::inputActivitySource()->metaObject()->className(),
                     "MutterIdleActivitySource");
        }
        qunsetenv("WAYLAND_DISPLAY");
        qunsetenv("DISPLAY");

        // The replies with the watches' ids and the signals below come from one
        // connection, in order, so each signal finds its watch known.
        MutterIdleActivitySource source(QDBusConnection::sessionBus());
        QList<bool> active; // isUserActive() at each activity
        connect(&source, &InputActivitySource::activity, this,
                [&] { active.append(source.isUserActive()); });
        QVERIFY(source.start());
        QTRY_COMPARE(mutter.idleIntervals, QList<qulonglong>{1000});
        QTRY_COMPARE(mutter.activeWatchesAdded, 1);
        QVERIFY(!source.isUserActive());

        // The user comes back (activity, and the pulse runs while they stay);
        // another client's watch is none of ours; a second of idleness (the
        // last input was just now); back again.
        Q_EMIT mutter.WatchFired(mutter.activeWatch);
        Q_EMIT mutter.WatchFired(7);
        Q_EMIT mutter.WatchFired(mutter.idleWatch);
        QTRY_COMPARE(mutter.activeWatchesAdded, 2);
        Q_EMIT mutter.WatchFired(mutter.activeWatch);
        QTRY_COMPARE(active.size(), 3);
        QCOMPARE(active, QList<bool>({true, false, true}));

        // A restarted Mutter has forgotten the watches; they are added again.
        QVERIFY(bus.unregisterService(MutterIdleActivitySource::service));
        QVERIFY(bus.registerService(MutterIdleActivitySource::service));
        QTRY_COMPARE(mutter.idleIntervals.size(), 2);
        QTRY_COMPARE(mutter.activeWatchesAdded, 3);
        bus.unregisterService(MutterIdleActivitySource::service);
    }
};

QTEST_GUILESS_MAIN(TestEventSources)
#include "tst_eventsources.moc"
