// The D-Bus sources on private buses (see with-buses.sh): the screensaver
// services' ActiveChanged from each of the five names, a logind session's
// LockedHint on the stand-in system bus, and all of them together as GNOME and
// KDE send them, merged into one lock and one unlock that reach the handlers.
// Also Mutter's idle monitor turned into activity.

#include "TestSupport.h"

#include "app/AppState.h"
#include "app/Log.h"
#include "app/SystemEventController.h"
#include "app/TickSource.h"
#include "app/TicktackController.h"
#include "platform/events/DBusScreenLockSource.h"
#include "platform/events/EventSources.h"
#include "platform/events/MutterIdleActivitySource.h"
#include "settings/PrefState.h"
#include "settings/PreferencesStore.h"
#include "windows/WindowController.h"

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusContext>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QFile>
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
    bool lockedHint() const { return m_lockedHint; }
    void setLockedHint(bool value) { m_lockedHint = value; }

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

struct WindowCalls {
    int closed = 0;
};

class FakeWindows : public WindowBackend {
public:
    explicit FakeWindows(WindowCalls &calls) : m_calls(calls) {}
    void showBreak() override {}
    void closeBreak() override { ++m_calls.closed; }
    void showAbout() override {}
    void showPrefView() override {}

private:
    WindowCalls &m_calls;
};

} // namespace

class TestEventSources : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void cleanup();

    void eachScreenSaverAlone_data();
    void eachScreenSaverAlone();
    void logindAlone();
    void logindSessionById();
    void gnomeAndKdeTogether();
    void lockUndoneAtOnceIsSwallowed();
    void handlersSeeOneLockAndOneUnlock();

    void mutterIdleMonitor();

private:
    std::unique_ptr<DBusScreenLockSource> startedSource();
    // ActiveChanged(active) from `interface` on `path`, sent by the owner of `interface`.
    void screenSaverSays(const QString &interface, const QString &path, bool active);
    void logindSays(bool locked);
    // Waits long enough for any report to settle, then a little more.
    void settle() { QTest::qWait(DBusScreenLockSource::settleMs + 100); }
    int logCount(const QByteArray &line) const;

    std::optional<ScratchHome> m_home;
    QDBusConnection m_emitter{QString()};
    QDBusConnection m_logindBus{QString()};
    FakeLogindManager m_manager;
    FakeLogindSession m_session;
    ManualTickSource m_ticks;
    WindowCalls m_windows;
};

void TestEventSources::initTestCase()
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

    m_logindBus =
        QDBusConnection::connectToBus(QDBusConnection::SystemBus, QStringLiteral("fake-logind"));
    QVERIFY(m_logindBus.registerService(QStringLiteral("org.freedesktop.login1")));
    QVERIFY(m_logindBus.registerObject(QStringLiteral("/org/freedesktop/login1"), &m_manager,
                                       QDBusConnection::ExportAllSlots));
    QVERIFY(
        m_logindBus.registerObject(sessionPath, &m_session, QDBusConnection::ExportAllProperties));

    TicktackController::setTimer(&m_ticks);
    WindowController::setBackend(std::make_unique<FakeWindows>(m_windows));
}

void TestEventSources::cleanup()
{
    m_manager.knowsPid = true;
    m_manager.askedPids.clear();
    m_manager.askedIds.clear();
    m_session.setLockedHint(false);
}

std::unique_ptr<DBusScreenLockSource> TestEventSources::startedSource()
{
    auto source = std::make_unique<DBusScreenLockSource>(QDBusConnection::sessionBus(),
                                                         QDBusConnection::systemBus());
    source->start();
    // Listening to logind starts once the session is found.
    if (!QTest::qWaitFor([&] { return !source->sessionPath().isEmpty(); }, 10000))
        qWarning("the logind session was not found");
    return source;
}

void TestEventSources::screenSaverSays(const QString &interface, const QString &path, bool active)
{
    QDBusMessage signal =
        QDBusMessage::createSignal(path, interface, QStringLiteral("ActiveChanged"));
    signal << active;
    QVERIFY(m_emitter.send(signal));
}

void TestEventSources::logindSays(bool locked)
{
    m_session.setLockedHint(locked);
    QDBusMessage signal =
        QDBusMessage::createSignal(sessionPath, QStringLiteral("org.freedesktop.DBus.Properties"),
                                   QStringLiteral("PropertiesChanged"));
    signal << QStringLiteral("org.freedesktop.login1.Session")
           << QVariantMap{{QStringLiteral("LockedHint"), locked}} << QStringList();
    QVERIFY(m_logindBus.send(signal));
}

int TestEventSources::logCount(const QByteArray &line) const
{
    QFile log(Logger::logfilePath());
    if (!log.open(QIODevice::ReadOnly))
        return 0; // nothing logged yet
    return int(log.readAll().count(line));
}

void TestEventSources::eachScreenSaverAlone_data()
{
    QTest::addColumn<QString>("interface");
    QTest::addColumn<QString>("path");
    QTest::newRow("freedesktop") << QStringLiteral("org.freedesktop.ScreenSaver")
                                 << QStringLiteral("/org/freedesktop/ScreenSaver");
    QTest::newRow("gnome") << QStringLiteral("org.gnome.ScreenSaver")
                           << QStringLiteral("/org/gnome/ScreenSaver");
    QTest::newRow("cinnamon") << QStringLiteral("org.cinnamon.ScreenSaver")
                              << QStringLiteral("/org/cinnamon/ScreenSaver");
    QTest::newRow("mate") << QStringLiteral("org.mate.ScreenSaver")
                          << QStringLiteral("/org/mate/ScreenSaver");
    QTest::newRow("xfce") << QStringLiteral("org.xfce.ScreenSaver")
                          << QStringLiteral("/org/xfce/ScreenSaver");
}

void TestEventSources::eachScreenSaverAlone()
{
    QFETCH(QString, interface);
    QFETCH(QString, path);
    auto source = startedSource();
    QSignalSpy locked(source.get(), &ScreenLockSource::locked);
    QSignalSpy unlocked(source.get(), &ScreenLockSource::unlocked);

    screenSaverSays(interface, path, false); // not locked: nothing to report
    screenSaverSays(interface, path, true);
    QTRY_COMPARE(locked.count(), 1);
    screenSaverSays(interface, path, true); // some desktops say it twice
    settle();
    QCOMPARE(locked.count(), 1);
    QVERIFY(source->isLocked());
    QCOMPARE(unlocked.count(), 0);

    screenSaverSays(interface, path, false);
    QTRY_COMPARE(unlocked.count(), 1);
    QVERIFY(!source->isLocked());
    QCOMPARE(locked.count(), 1);
}

void TestEventSources::logindAlone()
{
    auto source = startedSource();
    QCOMPARE(source->sessionPath(), sessionPath);
    QCOMPARE(m_manager.askedPids, QList<uint>{uint(QCoreApplication::applicationPid())});
    QSignalSpy locked(source.get(), &ScreenLockSource::locked);
    QSignalSpy unlocked(source.get(), &ScreenLockSource::unlocked);

    logindSays(true);
    QTRY_COMPARE(locked.count(), 1);

    // Other properties of the session, and other interfaces, are not a lock state.
    QDBusMessage idle =
        QDBusMessage::createSignal(sessionPath, QStringLiteral("org.freedesktop.DBus.Properties"),
                                   QStringLiteral("PropertiesChanged"));
    idle << QStringLiteral("org.freedesktop.login1.Session")
         << QVariantMap{{QStringLiteral("IdleHint"), false}} << QStringList();
    QVERIFY(m_logindBus.send(idle));
    QDBusMessage other =
        QDBusMessage::createSignal(sessionPath, QStringLiteral("org.freedesktop.DBus.Properties"),
                                   QStringLiteral("PropertiesChanged"));
    other << QStringLiteral("org.example.Other")
          << QVariantMap{{QStringLiteral("LockedHint"), false}} << QStringList();
    QVERIFY(m_logindBus.send(other));
    settle();
    QCOMPARE(unlocked.count(), 0);

    // Told only that LockedHint changed, the source asks for it.
    m_session.setLockedHint(false);
    QDBusMessage invalidated =
        QDBusMessage::createSignal(sessionPath, QStringLiteral("org.freedesktop.DBus.Properties"),
                                   QStringLiteral("PropertiesChanged"));
    invalidated << QStringLiteral("org.freedesktop.login1.Session") << QVariantMap()
                << QStringList{QStringLiteral("LockedHint")};
    QVERIFY(m_logindBus.send(invalidated));
    QTRY_COMPARE(unlocked.count(), 1);
    QCOMPARE(locked.count(), 1);
}

void TestEventSources::logindSessionById()
{
    // Started by the user's service manager, Narv is in no session of its own.
    m_manager.knowsPid = false;
    qputenv("XDG_SESSION_ID", "c7");
    auto restore = qScopeGuard([] { qunsetenv("XDG_SESSION_ID"); });
    auto source = startedSource();
    QCOMPARE(m_manager.askedIds, QStringList{QStringLiteral("c7")});
    QCOMPARE(source->sessionPath(), sessionPath);
    QSignalSpy locked(source.get(), &ScreenLockSource::locked);
    logindSays(true);
    QTRY_COMPARE(locked.count(), 1);
}

void TestEventSources::gnomeAndKdeTogether()
{
    auto source = startedSource();
    QSignalSpy locked(source.get(), &ScreenLockSource::locked);
    QSignalSpy unlocked(source.get(), &ScreenLockSource::unlocked);

    for (int round = 0; round < 2; ++round) {
        // GNOME: its screensaver and logind. KDE: the freedesktop name on two paths.
        screenSaverSays(QStringLiteral("org.gnome.ScreenSaver"),
                        QStringLiteral("/org/gnome/ScreenSaver"), true);
        logindSays(true);
        screenSaverSays(QStringLiteral("org.freedesktop.ScreenSaver"),
                        QStringLiteral("/ScreenSaver"), true);
        screenSaverSays(QStringLiteral("org.freedesktop.ScreenSaver"),
                        QStringLiteral("/org/freedesktop/ScreenSaver"), true);
        QTRY_COMPARE(locked.count(), round + 1);
        settle();
        QCOMPARE(locked.count(), round + 1);

        logindSays(false);
        screenSaverSays(QStringLiteral("org.gnome.ScreenSaver"),
                        QStringLiteral("/org/gnome/ScreenSaver"), false);
        screenSaverSays(QStringLiteral("org.freedesktop.ScreenSaver"),
                        QStringLiteral("/ScreenSaver"), false);
        screenSaverSays(QStringLiteral("org.freedesktop.ScreenSaver"),
                        QStringLiteral("/org/freedesktop/ScreenSaver"), false);
        QTRY_COMPARE(unlocked.count(), round + 1);
        settle();
        QCOMPARE(unlocked.count(), round + 1);
        QCOMPARE(locked.count(), round + 1);
    }
}

void TestEventSources::lockUndoneAtOnceIsSwallowed()
{
    auto source = startedSource();
    QSignalSpy locked(source.get(), &ScreenLockSource::locked);
    QSignalSpy unlocked(source.get(), &ScreenLockSource::unlocked);
    screenSaverSays(QStringLiteral("org.mate.ScreenSaver"), QStringLiteral("/org/mate/ScreenSaver"),
                    true);
    screenSaverSays(QStringLiteral("org.mate.ScreenSaver"), QStringLiteral("/org/mate/ScreenSaver"),
                    false);
    settle();
    QCOMPARE(locked.count(), 0);
    QCOMPARE(unlocked.count(), 0);
    QVERIFY(!source->isLocked());
}

void TestEventSources::handlersSeeOneLockAndOneUnlock()
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
    const int locks = logCount("screen locked\n");
    const int unlocks = logCount("screen unlocked\n");
    const int starts = logCount("ticktack timer start 1500\n");

    logindSays(true);
    for (const QString &interface : DBusScreenLockSource::screenSaverInterfaces())
        screenSaverSays(interface, QStringLiteral("/ScreenSaver"), true);
    QTRY_VERIFY(!AppState::working());
    settle();
    QCOMPARE(logCount("screen locked\n"), locks + 1);
    QCOMPARE(weakup.count(), 1);
    QCOMPARE(m_windows.closed, 1);

    for (const QString &interface : DBusScreenLockSource::screenSaverInterfaces())
        screenSaverSays(interface, QStringLiteral("/ScreenSaver"), false);
    logindSays(false);
    QTRY_VERIFY(AppState::working());
    settle();
    QCOMPARE(logCount("screen unlocked\n"), unlocks + 1);
    QCOMPARE(logCount("ticktack timer start 1500\n"), starts + 1);
    QCOMPARE(weakup.count(), 1);
    QCOMPARE(m_windows.closed, 1);
}

void TestEventSources::mutterIdleMonitor()
{
    QDBusConnection bus =
        QDBusConnection::connectToBus(QDBusConnection::SessionBus, QStringLiteral("mutter"));
    QVERIFY(!MutterIdleActivitySource::isAvailable(QDBusConnection::sessionBus()));
    FakeMutter mutter;
    QVERIFY(
        bus.registerObject(MutterIdleActivitySource::path, &mutter,
                           QDBusConnection::ExportAllSlots | QDBusConnection::ExportAllSignals));
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

    MutterIdleActivitySource source(QDBusConnection::sessionBus());
    QSignalSpy activity(&source, &InputActivitySource::activity);
    QVERIFY(source.start());
    QTRY_COMPARE(mutter.idleIntervals, QList<qulonglong>{1000});
    QTRY_COMPARE(mutter.activeWatchesAdded, 1);
    QTest::qWait(100); // the replies carrying the watch ids
    QVERIFY(!source.isUserActive());
    QCOMPARE(activity.count(), 0);

    // The user comes back: activity, and the pulse runs while they stay.
    Q_EMIT mutter.WatchFired(mutter.activeWatch);
    QTRY_COMPARE(activity.count(), 1);
    QVERIFY(source.isUserActive());

    // Another client's watch is none of ours.
    Q_EMIT mutter.WatchFired(7);
    QTest::qWait(100);
    QCOMPARE(activity.count(), 1);

    // A second of idleness: the last input was just now; wait for the next.
    Q_EMIT mutter.WatchFired(mutter.idleWatch);
    QTRY_COMPARE(activity.count(), 2);
    QVERIFY(!source.isUserActive());
    QTRY_COMPARE(mutter.activeWatchesAdded, 2);
    QTest::qWait(100);
    Q_EMIT mutter.WatchFired(mutter.activeWatch);
    QTRY_COMPARE(activity.count(), 3);
    QVERIFY(source.isUserActive());

    // A restarted Mutter has forgotten the watches; they are added again.
    QVERIFY(bus.unregisterService(MutterIdleActivitySource::service));
    QVERIFY(bus.registerService(MutterIdleActivitySource::service));
    QTRY_COMPARE(mutter.idleIntervals.size(), 2);
    QTRY_COMPARE(mutter.activeWatchesAdded, 3);
    bus.unregisterService(MutterIdleActivitySource::service);
}

int main(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
    TestEventSources test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_eventsources.moc"
