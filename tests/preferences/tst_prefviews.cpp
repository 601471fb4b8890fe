// The settings window's tabs driven the way a user drives them: Qt Quick
// tests (tst_*.qml beside this file) click and type into PreferencesView and
// read what lands in the real settings file. Probe gives them the rest of the
// program to look at: the file read afresh, another program writing it, the
// log, the status menu's water item, the pending water reminder, the clock.

#include "FakeWindows.h"
#include "LogTail.h"
#include "TestSupport.h"

#include "app/AppState.h"
#include "app/Clock.h"
#include "app/DelayedTask.h"
#include "app/TickSource.h"
#include "app/TicktackController.h"
#include "platform/login/AutostartLoginItem.h"
#include "settings/BreakStyle.h"
#include "settings/PrefState.h"
#include "settings/PrefWaterState.h"
#include "settings/PreferencesStore.h"
#include "statusbar/StatusBarController.h"
#include "windows/QmlWindowBackend.h"

#include <QFile>
#include <QJSValue>
#include <QQmlEngine>
#include <QQuickWindow>
#include <QSGRendererInterface>
#include <QSettings>
#include <QtQuickTest>

#include <memory>
#include <optional>

using TestSupport::ScratchHome;

class Probe : public QObject {
    Q_OBJECT
public:
    // Back to a fresh install at 10:00 today, the reminder not armed, nothing
    // in the menu, the log read up to here.
    Q_INVOKABLE void reset()
    {
        setNow(QStringLiteral("10:00"));
        PreferencesStore::instance().clear();
        AppState::waterState()->cancel();
        StatusBarController::removeWaterItem();
        WindowController::closeWaterView();
        QFile::remove(AutostartLoginItem::entryPath());
        AppState::setManualPause(false);
        AppState::setWorking(true);
        logMessages();
    }

    // The value in the settings file as a fresh reader finds it; undefined
    // when the key is not there.
    Q_INVOKABLE QVariant stored(const QString &key) const
    {
        QSettings file(PreferencesStore::instance().filePath(), QSettings::IniFormat);
        if (!file.contains(key))
            return {};
        const QVariant value = file.value(key);
        // The file has text; lists come back as lists.
        return value.typeId() == QMetaType::QStringList ? value : QVariant(value.toString());
    }

    // Another program writes the settings file.
    Q_INVOKABLE void edit(const QString &key, const QVariant &value)
    {
        QVariant plain = value;
        if (plain.metaType() == QMetaType::fromType<QJSValue>())
            plain = plain.value<QJSValue>().toVariant();
        if (plain.typeId() == QMetaType::QVariantList)
            plain = plain.toStringList();
        QSettings file(PreferencesStore::instance().filePath(), QSettings::IniFormat);
        file.setValue(key, plain);
        file.sync();
    }

    // "Now" is today at hh:mm.
    Q_INVOKABLE void setNow(const QString &hhmm)
    {
        const QDateTime now(QDate::currentDate(), QTime::fromString(hhmm, QStringLiteral("hh:mm")));
        Clock::setNowSource([now] { return now; });
    }

    // Log messages written since the last call.
    Q_INVOKABLE QStringList logMessages() { return m_log.newMessages(); }

    // The status menu's water item; empty when there is none.
    Q_INVOKABLE QString waterItemTitle() const
    {
        const auto *item = StatusBarController::itemWithTag(StatusBarController::Tag::water);
        return item ? item->title : QString();
    }

    // The armed water reminder: when it is due ("hh:mm"), empty when none is.
    Q_INVOKABLE QString waterReminderDue() const
    {
        PrefWaterState *water = AppState::waterState();
        if (!water->workItem() || !water->workItem()->isPending())
            return QString();
        return water->workItemDue().toString(QStringLiteral("hh:mm"));
    }

    Q_INVOKABLE void showWaterView() { WindowController::showWaterView(); }
    Q_INVOKABLE bool waterViewVisible() const
    {
        return WindowController::backend()->isWaterViewVisible();
    }

    Q_INVOKABLE bool autostartEntryExists() const
    {
        return QFile::exists(AutostartLoginItem::entryPath());
    }

    Q_INVOKABLE QStringList builtInPrompts(int style, bool newDay = false) const
    {
        const BreakStyle chosen = BreakStyles::fromRawValue(style).value();
        return newDay ? BreakStyles::newDayPrompts(chosen) : BreakStyles::prompts(chosen);
    }

private:
    LogTail m_log;
};

class Setup : public QObject {
    Q_OBJECT
public Q_SLOTS:
    void applicationAvailable()
    {
        m_home.emplace();
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
    std::optional<ScratchHome> m_home;
    ManualTickSource m_ticks;
    std::optional<WindowsOf<QmlWindowBackend>> m_windows;
    std::optional<AutostartLoginItem> m_loginItem;
    Probe m_probe;
};

QUICK_TEST_MAIN_WITH_SETUP(prefviews, Setup)

#include "tst_prefviews.moc"
