// The water panel as the user sees it, drawn offscreen by Qt Quick Test
// (tst_waterview.qml): the tally rows, the countdown, the chips and the two
// buttons, on the real water settings in a scratch home and a clock the test
// sets.

#include "LogTail.h"
#include "TestSupport.h"

#include "app/AppState.h"
#include "app/Clock.h"
#include "app/DelayedTask.h"
#include "app/Log.h"
#include "settings/PrefWaterState.h"
#include "settings/PreferencesStore.h"
#include "windows/WindowController.h"

#include <QQmlEngine>
#include <QQuickWindow>
#include <QSGRendererInterface>
#include <QtQuickTest>

#include <functional>
#include <optional>

void qml_register_types_Narv_Water();

namespace {

// Counts the panel's requests to go; the window itself is the window
// backend's business (tst_waterwindow).
class RecordingWindows : public WindowBackend {
public:
    explicit RecordingWindows(std::function<void()> closed) : m_closed(std::move(closed)) {}
    void showBreak() override {}
    void closeBreak() override {}
    void showAbout() override {}
    void showPrefView() override {}
    void closeWaterView() override { m_closed(); }

private:
    std::function<void()> m_closed;
};

} // namespace

// What the QML test asks of the program around the panel.
class Fixture : public QObject {
    Q_OBJECT
    Q_PROPERTY(int closed READ closed NOTIFY closedChanged)
public:
    Fixture()
    {
        m_home.emplace();
        WindowController::setBackend(std::make_unique<RecordingWindows>([this] {
            ++m_closed;
            Q_EMIT closedChanged();
        }));
        Clock::setNowSource([this] { return m_now; });
    }

    int closed() const { return m_closed; }

    // Nothing stored, 10:00 on a Monday, nothing asked of the windows.
    Q_INVOKABLE void reset()
    {
        AppState::waterState()->cancel();
        PreferencesStore::instance().clear();
        m_now = QDateTime(QDate(2026, 11, 23), QTime(10, 0));
        m_closed = 0;
        Q_EMIT closedChanged();
        m_log.newMessages();
    }

    Q_INVOKABLE void setTime(int h, int m, int s)
    {
        m_now = QDateTime(m_now.date(), QTime(h, m, s));
    }
    Q_INVOKABLE double nowSeconds() const { return m_now.toMSecsSinceEpoch() / 1000.0; }

    // Whether the job that opens the panel is armed, and in how many seconds it is due.
    Q_INVOKABLE bool jobArmed() const
    {
        DelayedTask *job = AppState::waterState()->workItem();
        return job && job->isPending();
    }
    Q_INVOKABLE double secondsToJob() const
    {
        return m_now.msecsTo(AppState::waterState()->workItemDue()) / 1000.0;
    }

    // The messages logged since reset().
    Q_INVOKABLE QStringList logMessages() { return m_log.newMessages(); }

Q_SIGNALS:
    void closedChanged();

private:
    std::optional<TestSupport::ScratchHome> m_home;
    QDateTime m_now;
    int m_closed = 0;
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
