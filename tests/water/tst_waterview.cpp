// The water panel as the user sees it, drawn offscreen by Qt Quick Test
// (tst_waterview.qml): the tally rows, the countdown, the chips and the two
// buttons, on the real water settings in a scratch home and a clock the test
// sets.

#include "FakeWindows.h"
#include "LogTail.h"
#include "TestSupport.h"

#include "app/AppState.h"
#include "app/Clock.h"
#include "app/DelayedTask.h"
#include "settings/PrefWaterState.h"
#include "settings/PreferencesStore.h"

#include <QQmlEngine>
#include <QQuickWindow>
#include <QSGRendererInterface>
#include <QtQuickTest>

#include <optional>

void qml_register_types_Narv_Water();

// What the QML test asks of the program around the panel.
class Fixture : public QObject {
    Q_OBJECT
public:
    Fixture()
    {
        Clock::setNowSource([this] { return m_now; });
    }

    // Nothing stored, 10:00 on a Monday, nothing asked of the windows.
    Q_INVOKABLE void reset()
    {
        AppState::waterState()->cancel();
        PreferencesStore::instance().clear();
        m_now = QDateTime(QDate(2026, 11, 23), QTime(10, 0));
        m_windows.windows.calls.clear();
        m_log.newMessages();
    }

    Q_INVOKABLE void setTime(int h, int m, int s) { m_now.setTime(QTime(h, m, s)); }
    Q_INVOKABLE double nowSeconds() const { return m_now.toMSecsSinceEpoch() / 1000.0; }
    // How often the panel asked to go; the window itself is tst_waterwindow's.
    Q_INVOKABLE int closed() const { return m_windows.windows.count("closeWaterView"); }

    // In how many seconds the job that opens the panel is due; -1: none armed.
    Q_INVOKABLE double secondsToJob() const
    {
        const DelayedTask *job = AppState::waterState()->workItem();
        if (!job || !job->isPending())
            return -1;
        return m_now.msecsTo(AppState::waterState()->workItemDue()) / 1000.0;
    }

    Q_INVOKABLE QStringList logMessages() { return m_log.newMessages(); }

private:
    TestSupport::ScratchHome m_home;
    WindowsOf<FakeWindows> m_windows;
    QDateTime m_now;
    LogTail m_log;
};

class Setup : public QObject {
    Q_OBJECT
public Q_SLOTS:
    void applicationAvailable()
    {
        volatile auto keepRegistration = &qml_register_types_Narv_Water;
        Q_UNUSED(keepRegistration);
        // As the program draws its windows.
        QQuickWindow::setGraphicsApi(QSGRendererInterface::Software);
    }

    void qmlEngineAvailable(QQmlEngine *engine)
    {
        engine->addImportPath(QStringLiteral("qrc:/"));
        if (!m_fixture) {
            m_fixture = new Fixture;
            QQmlEngine::setObjectOwnership(m_fixture, QQmlEngine::CppOwnership);
            qmlRegisterSingletonInstance("WaterTest", 1, 0, "Fixture", m_fixture);
        }
    }

private:
    Fixture *m_fixture = nullptr;
};

QUICK_TEST_MAIN_WITH_SETUP(tst_waterview, Setup)

#include "tst_waterview.moc"
