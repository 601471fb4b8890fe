// The water reminder's settings and schedule, with an injected clock.

#include "FakeWindows.h"
#include "LogTail.h"
#include "TestSupport.h"

#include "app/AppState.h"
#include "app/Clock.h"
#include "app/DelayedTask.h"
#include "settings/PrefWaterState.h"
#include "settings/PreferencesStore.h"
#include "statusbar/StatusBarController.h"

#include <QTest>

#include <cmath>

using TestSupport::ScratchHome;

namespace {
QDateTime at(int h, int m, int s = 0, int ms = 0)
{
    return QDateTime(QDate(2026, 11, 23), QTime(h, m, s, ms));
}
} // namespace

class TestWater : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        m_home.emplace();
        m_windows = &FakeWindows::install();
        m_windows->onCall = [this](const QString &call) {
            if (call == QLatin1String("showWaterView"))
                m_finishedWhenShown = AppState::waterState()->finished();
        };
        Clock::setNowSource([this] { return m_now; });
        // The armed job keeps its deadline on the monotonic clock; both clocks
        // are stepped together, from 10:00 on the test's day.
        Clock::setMonotonicSource([this] { return at(10, 0).msecsTo(m_now); });
    }

    void init()
    {
        PreferencesStore::instance().clear();
        m_now = at(10, 0);
        m_water.emplace(PreferencesStore::instance());
        m_windows->calls.clear();
        m_finishedWhenShown = -1;
    }

    // Moves both clocks to `moment` and lets the armed job see whether it is due,
    // as its timer does when it goes off.
    void stepTo(const QDateTime &moment)
    {
        m_now = moment;
        if (DelayedTask *job = m_water->workItem())
            job->checkDeadline();
    }

    void cleanup() { m_water.reset(); }

    // What the settings window does not show.
    void defaultsWithNothingStored()
    {
        QCOMPARE(m_water->finished(), 0);
        QCOMPARE(m_water->lastSelectedAmount(), 150);
        QCOMPARE(m_water->lastClickTimestamp(), 0.0);
        QVERIFY(m_water->isNewDay());
        QCOMPARE(m_water->remain(), 1500);
    }

    void workingHoursAreStrictAndDoNotWrap_data()
    {
        QTest::addColumn<QTime>("start");
        QTest::addColumn<QTime>("end");
        QTest::addColumn<QDateTime>("now");
        QTest::addColumn<bool>("inside");
        const QTime seven(7, 0), eight(20, 0);
        QTest::newRow("at the start") << seven << eight << at(7, 0) << false;
        QTest::newRow("a moment later") << seven << eight << at(7, 0, 0, 1) << true;
        QTest::newRow("midday") << seven << eight << at(12, 0) << true;
        QTest::newRow("just before the end") << seven << eight << at(19, 59, 59, 999) << true;
        QTest::newRow("at the end") << seven << eight << at(20, 0) << false;
        QTest::newRow("equal hours") << eight << eight << at(20, 0, 0, 1) << false;
        QTest::newRow("over midnight, late") << QTime(22, 0) << QTime(6, 0) << at(23, 0) << false;
        QTest::newRow("over midnight, early") << QTime(22, 0) << QTime(6, 0) << at(3, 0) << false;
    }

    // Outside the hours a schedule only logs, and drops a job armed earlier.
    void workingHoursAreStrictAndDoNotWrap()
    {
        QFETCH(QTime, start);
        QFETCH(QTime, end);
        QFETCH(QDateTime, now);
        QFETCH(bool, inside);
        m_water->schedule(); // at 10:00, inside the default hours
        QPointer<DelayedTask> earlier = m_water->workItem();
        QVERIFY(earlier && earlier->isPending());
        m_water->setLastClickTimestamp(123.0);
        // Stored on another day, with a fraction: only the time of day counts.
        m_water->setIntervalStartDate(QDateTime(QDate(2020, 1, 1), start).addMSecs(400));
        m_water->setIntervalEndDate(QDateTime(QDate(2021, 6, 1), end).addMSecs(400));
        m_now = now;
        QCOMPARE(m_water->inWorkTime(), inside);

        const int logged = LogTail::count(" info app.narv.Narv : Not in work time\n");
        m_water->schedule();
        QCOMPARE(LogTail::count(" info app.narv.Narv : Not in work time\n"),
                 logged + (inside ? 0 : 1));
        QVERIFY(earlier.isNull() || earlier->isCancelled());
        QCOMPARE(m_water->workItem() && m_water->workItem()->isPending(), inside);
        QCOMPARE(m_water->lastClickTimestamp() == 123.0, !inside);
        if (!inside) {
            stepTo(now.addDays(1));
            QCOMPARE(m_windows->count("showWaterView"), 0);
        }
    }

    void scheduleKeepsOneJobCountedFromTheLastCall()
    {
        m_water->schedule();
        QPointer<DelayedTask> first = m_water->workItem();
        QVERIFY(first);
        stepTo(at(10, 5));
        m_water->schedule();
        QVERIFY(first.isNull() || first->isCancelled());
        QVERIFY(m_water->workItem()->isPending());
        QCOMPARE(m_water->workItemDue(), at(10, 20));
        QCOMPARE(m_water->lastClickTimestamp(), at(10, 5).toMSecsSinceEpoch() / 1000.0);

        // The first job's deadline passes without a panel, even when its timer goes off.
        stepTo(at(10, 15));
        if (first)
            first->checkDeadline();
        QCOMPARE(m_windows->count("showWaterView"), 0);
        stepTo(at(10, 19, 59, 999));
        QCOMPARE(m_windows->count("showWaterView"), 0);
        stepTo(at(10, 20));
        QCOMPARE(m_windows->count("showWaterView"), 1);
        // The job does not arm itself again.
        QVERIFY(!m_water->workItem()->isPending());
        stepTo(at(10, 40));
        QCOMPARE(m_windows->count("showWaterView"), 1);
    }

    void aJobArmedBeforeTheEndStillOpensThePanel()
    {
        m_now = at(19, 50);
        m_water->schedule();
        QCOMPARE(m_water->workItemDue(), at(20, 5));
        stepTo(at(20, 4, 59, 999));
        QCOMPARE(m_windows->count("showWaterView"), 0);
        stepTo(at(20, 5));
        QVERIFY(!m_water->inWorkTime());
        QCOMPARE(m_windows->count("showWaterView"), 1);
    }

    void theModeDoesNotChangeTheDelay_data()
    {
        QTest::addColumn<int>("storedMode");
        QTest::newRow("interval") << 0;
        QTest::newRow("timing") << 1;
        QTest::newRow("unknown, read as interval") << 7;
    }

    void theModeDoesNotChangeTheDelay()
    {
        QFETCH(int, storedMode);
        PreferencesStore::instance().setInt(QString::fromLatin1(PrefWaterState::modeKey),
                                            storedMode);
        m_water->setSelectedInterval(45);
        m_water->schedule();
        QCOMPARE(m_water->workItemDue(), at(10, 45));
        stepTo(at(10, 44, 59));
        QCOMPARE(m_windows->count("showWaterView"), 0);
        stepTo(at(10, 45));
        QCOMPARE(m_windows->count("showWaterView"), 1);
    }

    // The callers that start a new day: the launch and the panel itself.
    void callersResetOnANewDay()
    {
        const double yesterday = at(18, 0).addDays(-1).toMSecsSinceEpoch() / 1000.0;
        m_water->setLastClickTimestamp(yesterday);
        m_water->setFinished(900);

        // Switched off, the launch leaves everything alone.
        WindowController::setup();
        QCOMPARE(m_water->finished(), 900);
        QVERIFY(!AppState::waterState()->workItem());

        m_water->setEnable(true);
        WindowController::setup();
        QCOMPARE(m_water->finished(), 0);
        QVERIFY(!m_water->isNewDay());
        QVERIFY(AppState::waterState()->workItem()->isPending());
        QCOMPARE(AppState::waterState()->workItemDue(), at(10, 15));
        AppState::waterState()->cancel();

        // The panel on a new day shows the day's tally from 0.
        m_water->setLastClickTimestamp(yesterday);
        m_water->setFinished(900);
        WindowController::showWaterView();
        QCOMPARE(m_windows->count("showWaterView"), 1);
        QCOMPARE(m_finishedWhenShown, 0);
        // The same day: the tally stays.
        m_water->setFinished(300);
        WindowController::showWaterView();
        QCOMPARE(m_finishedWhenShown, 300);
    }

    void dailyReset()
    {
        const QDateTime yesterday = at(18, 0).addDays(-1);
        m_water->setLastClickTimestamp(yesterday.toMSecsSinceEpoch() / 1000.0);
        m_water->setFinished(900);
        QVERIFY(m_water->isNewDay());
        QCOMPARE(m_water->finished(), 900); // reading does not reset
        // The status menu's water item follows every change of the tally.
        PrefWaterState *water = &*m_water;
        StatusBarController::setWaterSource({[] { return true; },
                                             [water] { return water->finishedPrecent(); },
                                             [] { return true; }});
        StatusBarController::insetWaterItem();
        m_water->setFinished(600);
        QCOMPARE(StatusBarController::itemWithTag(StatusBarController::Tag::water)->title,
                 QStringLiteral("Water (40% )"));
        m_water->reset();
        QCOMPARE(StatusBarController::itemWithTag(StatusBarController::Tag::water)->title,
                 QStringLiteral("Water (0% )"));
        StatusBarController::removeWaterItem();
        StatusBarController::setWaterSource({});
        QVERIFY(!m_water->isNewDay());
        QCOMPARE(m_water->finished(), 0);
        QCOMPARE(m_water->lastClickTimestamp(), m_now.toMSecsSinceEpoch() / 1000.0);
    }

    void tally()
    {
        m_water->setLastSelectedAmount(300);
        m_water->updateFinished();
        m_water->updateFinished();
        QCOMPARE(m_water->finished(), 600);
        QCOMPARE(m_water->remain(), 900);
        QCOMPARE(m_water->finishedPrecent(), 0.4f);
        m_water->setFinished(2000);
        QCOMPARE(m_water->remain(), -500);
        m_water->setTarget(0);
        QVERIFY(std::isinf(m_water->finishedPrecent()));
        m_water->setFinished(0);
        QVERIFY(std::isnan(m_water->finishedPrecent()));
    }

    void unreadableTimestampsStartANewDay_data()
    {
        QTest::addColumn<QString>("stored");
        QTest::addColumn<double>("read");
        QTest::newRow("text") << QStringLiteral("yesterday") << 0.0;
        QTest::newRow("not a number") << QStringLiteral("nan") << double(NAN);
        QTest::newRow("far future") << QStringLiteral("1e300") << 1e300;
    }

    void unreadableTimestampsStartANewDay()
    {
        QFETCH(QString, stored);
        QFETCH(double, read);
        PreferencesStore::instance().setString(
            QString::fromLatin1(PrefWaterState::lastClickTimestampKey), stored);
        m_water->setFinished(400);
        if (std::isnan(read))
            QVERIFY(std::isnan(m_water->lastClickTimestamp()));
        else
            QCOMPARE(m_water->lastClickTimestamp(), read);
        QVERIFY(m_water->isNewDay());
        QCOMPARE(m_water->finished(), 400);
    }

private:
    std::optional<ScratchHome> m_home;
    std::optional<PrefWaterState> m_water;
    FakeWindows *m_windows = nullptr;
    qint64 m_finishedWhenShown = -1; // ml, the tally when the panel last opened
    QDateTime m_now;
};

QTEST_GUILESS_MAIN(TestWater)
#include "tst_water.moc"
