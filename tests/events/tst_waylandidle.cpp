// The Wayland idle source, on ext-idle-notify-v1 and on org_kde_kwin_idle,
// against a small compositor of the test's own (fake_compositor) over a real
// Wayland socket. Which source a session gets is checked on real shells.

#include "LogTail.h"

#include "platform/events/WaylandIdleActivitySource.h"

#include <QProcess>
#include <QTest>

#include <csignal>

class TestWaylandIdle : public QObject {
    Q_OBJECT

    std::optional<TestSupport::ScratchHome> m_home;
    QProcess m_compositor;

private Q_SLOTS:
    void initTestCase()
    {
        m_home.emplace();
        qputenv("XDG_RUNTIME_DIR", m_home->path().toUtf8());
    }

    void idledAndResumedBecomeActivity_data()
    {
        QTest::addColumn<QString>("option");
        QTest::newRow("ext-idle-notify-v1") << QString();
        QTest::newRow("org_kde_kwin_idle") << QStringLiteral("--kde-idle");
    }

    // Until the compositor says otherwise the user counts as active. A second
    // without input (what the source asks for) brings idled, activity too: the
    // last input was a second ago. Input brings resumed, then idled again.
    // The compositor's going away is said once, not at each wake-up (the closed
    // socket stays readable, so a notifier left on would fire at each round).
    void idledAndResumedBecomeActivity()
    {
        QFETCH(QString, option);
        m_compositor.kill(); // the one before, if its case failed
        m_compositor.waitForFinished();
        m_compositor.start(QStringLiteral(NARV_FAKE_COMPOSITOR), {option});
        QVERIFY(QTest::qWaitFor([this] { return m_compositor.canReadLine(); }, 20000));
        qputenv("WAYLAND_DISPLAY", m_compositor.readLine().trimmed().mid(6)); // "ready SOCKET"
        auto source = WaylandIdleActivitySource::open();
        QVERIFY(source);
        QCOMPARE(source->protocol(), QString::fromLatin1(QTest::currentDataTag()));
        QList<bool> active; // isUserActive() at each activity
        connect(source.get(), &InputActivitySource::activity,
                [&] { active.append(source->isUserActive()); });
        QVERIFY(source->start());
        QTRY_COMPARE(active, QList<bool>({true, false}));
        ::kill(pid_t(m_compositor.processId()), SIGUSR1);
        QTRY_COMPARE(active, QList<bool>({true, false, true, false}));

        const int before = LogTail::count("lost the Wayland compositor");
        m_compositor.kill();
        QTRY_COMPARE(LogTail::count("lost the Wayland compositor"), before + 1);
        for (int round = 0; round < 50; ++round)
            QCoreApplication::processEvents();
        QCOMPARE(LogTail::count("lost the Wayland compositor"), before + 1);
    }
};

QTEST_GUILESS_MAIN(TestWaylandIdle)
#include "tst_waylandidle.moc"
