// The settings window's tabs driven the way a user drives them: Qt Quick
// tests (tst_*.qml beside this file) click and type into PreferencesView and
// read what lands in the real settings file. Probe gives them the rest of the
// program to look at: the file read afresh, another program writing it, the
// status menu's water item, the water panel and the pending water reminder.

#include "FakeWindows.h"
#include "TestSupport.h"

#include "app/AppState.h"
#include "app/Clock.h"
#include "app/DelayedTask.h"
#include "app/TickSource.h"
#include "app/TicktackController.h"
#include "platform/login/AutostartLoginItem.h"
#include "settings/PrefWaterState.h"
#include "settings/PreferencesStore.h"
#include "statusbar/StatusBarController.h"
#include "windows/QmlWindowBackend.h"

#include <QJSValue>
#include <QQmlEngine>
#include <QQuickWindow>
#include <QSGRendererInterface>
#include <QSettings>
#include <QtQuickTest>

#include <optional>

class Probe : public QObject {
    Q_OBJECT
public:
    // Back to a fresh install at 10:00 today, the reminder not armed, nothing
    // in the menu.
    Q_INVOKABLE void reset()
    {
        const QDateTime now(QDate::currentDate(), QTime(10, 0));
        Clock::setNowSource([now] { return now; });
        PreferencesStore::instance().clear();
        AppState::waterState()->cancel();
        StatusBarController::removeWaterItem();
        WindowController::closeWaterView();
        QFile::remove(AutostartLoginItem::entryPath());
        AppState::setManualPause(false);
        AppState::setWorking(true);
    }

    // The value in the settings file as a fresh reader finds it; undefined
    // when the key is not there. The file has text; lists come back as lists.
    Q_INVOKABLE QVariant stored(const QString &key) const
    {
        QSettings file(PreferencesStore::instance().filePath(), QSettings::IniFormat);
        const QVariant value = file.value(key);
        if (!value.isValid() || value.typeId() == QMetaType::QStringList)
            return value;
        return value.toString();
    }

    // Another program writes the settings file.
    Q_INVOKABLE void edit(const QString &key, const QJSValue &value)
    {
        QSettings file(PreferencesStore::instance().filePath(), QSettings::IniFormat);
        file.setValue(key, value.toVariant());
    }

    // The status menu's water item; empty when there is none.
    Q_INVOKABLE QString waterItemTitle() const
    {
        const auto *item = StatusBarController::itemWithTag(StatusBarController::Tag::water);
        return item ? item->title : QString();
    }

    // The armed water reminder: when it is due ("hh:mm"), empty when none is.
    Q_INVOKABLE QString waterReminderDue() const
    {
        const DelayedTask *job = AppState::waterState()->workItem();
        if (!job || !job->isPending())
            return QString();
        return AppState::waterState()->workItemDue().toString(QStringLiteral("hh:mm"));
    }

    Q_INVOKABLE bool autostartEntryExists() const
    {
        return QFile::exists(AutostartLoginItem::entryPath());
    }

    Q_INVOKABLE void showWaterView() { WindowController::showWaterView(); }
    Q_INVOKABLE bool waterViewVisible() const
    {
        return WindowController::backend()->isWaterViewVisible();
    }
};

class Setup : public QObject {
    Q_OBJECT
public Q_SLOTS:
    void applicationAvailable()
    {
        // Drawn the way Narv draws its windows.
        QQuickWindow::setGraphicsApi(QSGRendererInterface::Software);
        TicktackController::setTimer(&m_ticks);
        // The real window backend (the water panel is one of its windows) and
        // the real autostart entry, in the scratch home.
        m_windows.emplace();
        m_loginItem.emplace(QStringLiteral("/usr/bin/narv"));
        PrefWaterState *water = AppState::waterState();
        StatusBarController::setWaterSource({[water] { return water->enable(); },
                                             [water] { return water->finishedPrecent(); },
                                             [water] { return water->inWorkTime(); }});
        StatusBarController::item();
    }

    void qmlEngineAvailable(QQmlEngine *engine)
    {
        engine->addImportPath(QStringLiteral("qrc:/"));
        qmlRegisterSingletonInstance("NarvTest", 1, 0, "Probe", &m_probe);
    }

    // Before the application object goes.
    void cleanupTestCase()
    {
        m_loginItem.reset();
        m_windows.reset();
    }

private:
    TestSupport::ScratchHome m_home;
    ManualTickSource m_ticks;
    std::optional<WindowsOf<QmlWindowBackend>> m_windows;
    std::optional<AutostartLoginItem> m_loginItem;
    Probe m_probe;
};

QUICK_TEST_MAIN_WITH_SETUP(prefviews, Setup)

#include "tst_prefviews.moc"
