// The Wayland idle source, on ext-idle-notify-v1 and on org_kde_kwin_idle,
// against a small compositor of the test's own (fake_compositor) over a real
// Wayland socket, and how EventSources picks a source by the kind of session.

#include "LogTail.h"
#include "TestSupport.h"

#include "app/SystemEventController.h"
#include "platform/events/EventSources.h"
#include "platform/events/WaylandIdleActivitySource.h"

#include <QProcess>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

using TestSupport::ScratchHome;

class TestWaylandIdle : public QObject {
    Q_OBJECT

    std::optional<ScratchHome> m_home;
    QTemporaryDir m_runtime;
    QProcess m_compositor;

    // Starts the compositor and points WAYLAND_DISPLAY at it.
    bool startCompositor(const QStringList &args = {})
    {
        m_compositor.start(QStringLiteral(NARV_FAKE_COMPOSITOR), args);
        if (!m_compositor.waitForStarted(5000))
            return false;
        const QByteArray ready = readLine();
        if (!ready.startsWith("ready "))
            return false;
        qputenv("WAYLAND_DISPLAY", ready.mid(6));
        return true;
    }
    void say(const QByteArray &command) { m_compositor.write(command + '\n'); }
    QByteArray readLine()
    {
        for (int i = 0; i < 100 && !m_compositor.canReadLine(); ++i)
            m_compositor.waitForReadyRead(100);
        return m_compositor.readLine().trimmed();
    }

private Q_SLOTS:
    void initTestCase()
    {
        m_home.emplace();
        QVERIFY(m_runtime.isValid());
        qputenv("XDG_RUNTIME_DIR", m_runtime.path().toUtf8());
        qunsetenv("DISPLAY");
        qunsetenv("XDG_SESSION_TYPE");
    }

    void cleanup()
    {
        if (m_compositor.state() != QProcess::NotRunning) {
            m_compositor.closeWriteChannel();
            if (!m_compositor.waitForFinished(5000))
                m_compositor.kill();
        }
        m_compositor.waitForFinished(5000);
        qunsetenv("WAYLAND_DISPLAY");
    }

    void idledAndResumedBecomeActivity_data()
    {
        QTest::addColumn<QStringList>("compositorArgs");
        QTest::addColumn<QString>("protocol");
        QTest::newRow("ext-idle-notify-v1")
            << QStringList() << QStringLiteral("ext-idle-notify-v1");
        QTest::newRow("org_kde_kwin_idle")
            << QStringList{QStringLiteral("--kde-idle")} << QStringLiteral("org_kde_kwin_idle");
    }

    void idledAndResumedBecomeActivity()
    {
        QFETCH(QStringList, compositorArgs);
        QFETCH(QString, protocol);
        QVERIFY(startCompositor(compositorArgs));
        auto source = WaylandIdleActivitySource::open();
        QVERIFY(source);
        QCOMPARE(source->protocol(), protocol);
        QSignalSpy activity(source.get(), &InputActivitySource::activity);
        QVERIFY(source->start());
        QCOMPARE(readLine(), QByteArray("notification 1000"));
        // Until the compositor says otherwise the user counts as active.
        QVERIFY(source->isUserActive());
        QCOMPARE(activity.count(), 1);

        say("idled");
        QTRY_COMPARE(activity.count(), 2); // the last input was a second ago
        QVERIFY(!source->isUserActive());
        say("resumed");
        QTRY_COMPARE(activity.count(), 3);
        QVERIFY(source->isUserActive());
        say("idled");
        QTRY_VERIFY(!source->isUserActive());
        QCOMPARE(activity.count(), 4);

        // The compositor goes away: said once, not again on every wake-up (the
        // closed socket stays readable, so a notifier left on would fire at
        // each round of the loop).
        const int before = LogTail::count("lost the Wayland compositor");
        say("quit");
        QVERIFY(m_compositor.waitForFinished(5000));
        QTRY_COMPARE(LogTail::count("lost the Wayland compositor"), before + 1);
        for (int round = 0; round < 50; ++round)
            QCoreApplication::processEvents();
        QCOMPARE(LogTail::count("lost the Wayland compositor"), before + 1);
        QCOMPARE(activity.count(), 4);
    }

    void compositorWithoutTheProtocol()
    {
        QVERIFY(startCompositor({QStringLiteral("--without-idle-notify")}));
        const QByteArray neither = "does not offer ext-idle-notify-v1 or org_kde_kwin_idle";
        const int before = LogTail::count(neither);
        QVERIFY(!WaylandIdleActivitySource::open());
        QCOMPARE(LogTail::count(neither), before + 1);

        qputenv("WAYLAND_DISPLAY", "no-such-compositor");
        QVERIFY(!WaylandIdleActivitySource::open());
    }

    void sessionKindPicksTheSource()
    {
        // No session bus here, so no Mutter: a Wayland session gets ext-idle-notify-v1.
        QVERIFY(startCompositor());
        EventSources::install();
        QVERIFY(SystemEventController::screenLockSource());
        InputActivitySource *input = SystemEventController::inputActivitySource();
        QVERIFY(input);
        QCOMPARE(input->metaObject()->className(), "WaylandIdleActivitySource");
        QVERIFY(LogTail::text().contains(
            "mouse activity: ext-idle-notify-v1 (keys count as activity too)"));

        // An X11 session without a usable X server has nothing to offer.
        qunsetenv("WAYLAND_DISPLAY");
        qputenv("DISPLAY", ":987");
        EventSources::install();
        QVERIFY(!SystemEventController::inputActivitySource());
        qunsetenv("DISPLAY");
    }
};

int main(int argc, char **argv)
{
    // A session bus would bring Mutter into the choice; this test has none.
    qunsetenv("DBUS_SESSION_BUS_ADDRESS");
    qputenv("DBUS_SYSTEM_BUS_ADDRESS", "unix:path=/nonexistent/narv-test");
    QCoreApplication app(argc, argv);
    TestWaylandIdle test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_waylandidle.moc"
