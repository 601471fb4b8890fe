// The water reminder's settings and schedule, with an injected clock.

#include "FakeWindows.h"
#include "TestSupport.h"

#include "app/AppState.h"
#include "app/Clock.h"
#include "app/DelayedTask.h"
#include "settings/PrefWaterState.h"
#include "settings/PreferencesStore.h"

#include <QTest>

using TestSupport::ScratchHome;

namespace {
QDateTime at(int h, int m, int s = 0, int ms = 0)
{
    return QDateTime(QDate(2026, 11, 23), QTime(h, m, s, ms));
}

double seconds(const QDateTime &moment)
{
    return moment.toMSecsSinceEpoch() / 1000.0;
}
} // namespace

class TestWater : public QObject {
    Q_OBJECT

    ScratchHome m_home; // before anything reads the settings
    std::optional<PrefWaterState> m_water;
    WindowsOf<FakeWindows> m_windows;
    qint64 m_finishedWhenShown = -1; // ml, the tally when the panel last opened
    QDateTime m_now;

    int panels() const { return m_windows.windows.count("showWaterView"); }

    // Moves both clocks to `moment` and lets the armed job see whether it is
    // due, as its timer does when it goes off.
    void stepTo(const QDateTime &moment)
    {
        m_now = moment;
        if (DelayedTask *job = m_water->workItem())
            job->checkDeadline();
    }

private Q_SLOTS:
    void initTestCase()
    {
        m_windows.windows.onCall = [this](const QString &call) {
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
        m_windows.windows.calls.clear();
    }

    void cleanup() { m_water.reset(); }

    void workingHoursAreStrictAndDoNotWrap_data()
    {
        QTest::addColumn<QTime>("start");
        QTest::addColumn<QTime>("end");
        QTest::addColumn<QDateTime>("now");
        QTest::addColumn<bool>("inside");
        const QTime seven(7, 0), eight(20, 0);
        QTest::newRow("at the start") << seven << eight << at(7, 0) << false;
        QTest::newRow("a moment later") << seven << eight << at(7, 0, 0, 1) << true;
        QTest::newRow("just before the end") << seven << eight << at(19, 59, 59, 999) << true;
        QTest::newRow("at the end") << seven << eight << at(20, 0) << false;
        QTest::newRow("over midnight, late") << QTime(22, 0) << QTime(6, 0) << at(23, 0) << false;
        QTest::newRow("over midnight, early") << QTime(22, 0) << QTime(6, 0) << at(3, 0) << false;
    }

    // Outside the hours a schedule arms nothing, and drops a job armed earlier.
    void workingHoursAreStrictAndDoNotWrap()
    {
        QFETCH(QTime, start);
        QFETCH(QTime, end);
        QFETCH(QDateTime, now);
        QFETCH(bool, inside);
        m_water->schedule(); // at 10:00, inside the default hours
        QPointer<DelayedTask> earlier = m_water->workItem();
        QVERIFY(earlier && earlier->isPending());
        // Stored on another day, with a fraction: only the time of day counts.
        m_water->setIntervalStartDate(QDateTime(QDate(2020, 1, 1), start).addMSecs(400));
        m_water->setIntervalEndDate(QDateTime(QDate(2021, 6, 1), end).addMSecs(400));
        m_now = now;
        QCOMPARE(m_water->inWorkTime(), inside);
        m_water->schedule();
        QVERIFY(earlier.isNull() || earlier->isCancelled());
        QCOMPARE(m_water->workItem() && m_water->workItem()->isPending(), inside);
    }

    // One job, due one interval (minutes) after the last schedule.
    void scheduleKeepsOneJobCountedFromTheLastCall()
    {
        m_water->schedule();
        QPointer<DelayedTask> first = m_water->workItem();
        stepTo(at(10, 5));
        m_water->schedule();
        QVERIFY(first.isNull() || first->isCancelled());
        QCOMPARE(m_water->workItemDue(), at(10, 20));
        stepTo(at(10, 19, 59, 999));
        QCOMPARE(panels(), 0);
        stepTo(at(10, 20));
        QCOMPARE(panels(), 1);
        QVERIFY(!m_water->workItem()->isPending()); // it does not arm itself again
    }

    // The tally across a new day: reading leaves it, the launch (with the
    // reminder on) and the panel start the day from 0; the same day keeps it.
    void aNewDayStartsTheTallyAgain()
    {
        const QDateTime yesterday = at(8, 0).addDays(-1);
        m_water->setLastClickTimestamp(seconds(yesterday));
        m_water->setFinished(900);
        QVERIFY(m_water->isNewDay());
        QCOMPARE(m_water->finished(), 900);

        WindowController::setup(); // switched off: left alone
        QCOMPARE(m_water->finished(), 900);
        m_water->setEnable(true);
        WindowController::setup();
        QCOMPARE(m_water->finished(), 0);
        QVERIFY(!m_water->isNewDay());
        AppState::waterState()->cancel();

        m_water->setLastClickTimestamp(seconds(yesterday));
        m_water->setFinished(900);
        WindowController::showWaterView();
        QCOMPARE(m_finishedWhenShown, 0);
        m_water->setFinished(300);
        WindowController::showWaterView();
        QCOMPARE(m_finishedWhenShown, 300);
    }

    void drinksAddUpToTheTally()
    {
        QCOMPARE(m_water->lastSelectedAmount(), 150);
        m_water->setLastSelectedAmount(300);
        m_water->updateFinished();
        m_water->updateFinished();
        QCOMPARE(m_water->finished(), 600);
        QCOMPARE(m_water->remain(), 900);
        QCOMPARE(m_water->finishedPrecent(), 0.4f);
    }
};

QTEST_GUILESS_MAIN(TestWater)
#include "tst_water.moc"
