// The water panel as the user sees it, drawn offscreen by Qt Quick Test
// (tst_waterview.qml), on the real water settings in a scratch home and a
// clock the test sets.

#include "FakeWindows.h"
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

// What the QML test asks of the program around the panel, made with the
// application.
class Fixture : public QObject {
    Q_OBJECT
public:
    // Nothing stored, 10:00 on a Monday, nothing asked of the windows.
    Q_INVOKABLE void reset()
    {
        AppState::waterState()->cancel();
        PreferencesStore::instance().clear();
        setTime(10, 0, 0);
        m_windows->windows.calls.clear();
    }

    // Now is this time of that Monday; returns it in seconds since 1970.
    Q_INVOKABLE double setTime(int h, int m, int s)
    {
        const QDateTime now(QDate(2026, 11, 23), QTime(h, m, s));
        Clock::setNowSource([now] { return now; });
        return double(now.toSecsSinceEpoch());
    }

    // How often the panel asked to go; the window itself is tst_waterwindow's.
    Q_INVOKABLE int closed() const { return m_windows->windows.count("closeWaterView"); }

    // In how many seconds the job that opens the panel is due; -1: none armed.
    Q_INVOKABLE double secondsToJob() const
    {
        const DelayedTask *job = AppState::waterState()->workItem();
        if (!job || !job->isPending())
            return -1;
        return Clock::now().msecsTo(AppState::waterState()->workItemDue()) / 1000.0;
    }

public Q_SLOTS:
    void applicationAvailable()
    {
        volatile auto keepRegistration = &qml_register_types_Narv_Water;
        Q_UNUSED(keepRegistration);
        // As the program draws its windows.
        QQuickWindow::setGraphicsApi(QSGRendererInterface::Software);
        m_windows.emplace();
    }

    void qmlEngineAvailable(QQmlEngine *engine)
    {
        engine->addImportPath(QStringLiteral("qrc:/"));
        qmlRegisterSingletonInstance("WaterTest", 1, 0, "Fixture", this);
    }

private:
    TestSupport::ScratchHome m_home;
    std::optional<WindowsOf<FakeWindows>> m_windows;
};

QUICK_TEST_MAIN_WITH_SETUP(tst_waterview, Fixture)

#include "tst_waterview.moc"
