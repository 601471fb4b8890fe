#include "platform/views/ViewsHost.h"

#include "Module.h"
#include "app/AppInfo.h"
#include "app/AppState.h"
#include "app/Localized.h"
#include "app/Log.h"
#include "app/TicktackState.h"
#include "platform/login/LoginItemBackend.h"
#include "platform/update/UpdateModule.h"
#include "platform/update/UpdatePresenter.h"
#include "platform/views/MessageChannel.h"
#include "platform/views/ViewsModule.h"
#include "services/LoginItem.h"
#include "settings/PrefState.h"
#include "settings/PromptState.h"
#include "windows/CountdownCommand.h"
#include "windows/QmlWindowBackend.h"

#include <QEvent>
#include <QGuiApplication>
#include <QQuickView>
#include <QTimer>
#include <QUrl>
#include <QWindow>

#include <cstdlib>
#include <memory>

ViewsHost::ViewsHost(MessageChannel &channel, QmlWindowBackend &windows, QObject *parent)
    : QObject(parent), m_channel(channel), m_windows(windows)
{
    connect(&m_channel, &MessageChannel::received, this, &ViewsHost::onReceived);
    qApp->installEventFilter(this);
}

bool ViewsHost::eventFilter(QObject *watched, QEvent *event)
{
    if ((event->type() == QEvent::Show || event->type() == QEvent::Hide) && watched->isWindowType())
        reportSoon();
    return QObject::eventFilter(watched, event);
}

void ViewsHost::onReceived(const QVariantList &message)
{
    ++m_read;
    const QString name = message.value(0).toString();
    const QVariant value = message.value(1);
    if (name == QLatin1String("prompt")) {
        AppState::promptState()->setPrompt(value.toString());
    } else if (name == QLatin1String("showSkipButton")) {
        AppState::promptState()->setShowSkipButton(value.toBool());
    } else if (name == QLatin1String("showPostponeButton")) {
        AppState::promptState()->setShowPostponeButton(value.toBool());
    } else if (name == QLatin1String("breakTime")) {
        AppState::breakState()->setTimeString(value.toString());
    } else if (name == QLatin1String("breakTimesUp")) {
        AppState::breakState()->setTimesUp(value.toBool());
    } else if (name == QLatin1String("prepareBreak")) {
        m_windows.prepareBreak();
    } else if (name == QLatin1String("showBreak")) {
        m_windows.showBreak();
    } else if (name == QLatin1String("closeBreak")) {
        m_windows.closeBreak();
    } else if (name == QLatin1String("showAbout")) {
        m_windows.showAbout();
    } else if (name == QLatin1String("showHistory")) {
        m_windows.showHistory();
    } else if (name == QLatin1String("showPrefView")) {
        // Taken by Qt's Wayland platform when the window is activated.
        if (!value.toString().isEmpty())
            qputenv("XDG_ACTIVATION_TOKEN", value.toString().toUtf8());
        // Made here, in a new process: where the user last had it, as large.
        if (!m_preferences) {
            m_preferences = m_windows.preferencesWindow();
            if (const QRect geometry = message.value(2).toRect(); geometry.isValid())
                m_preferences->setGeometry(geometry);
        }
        m_windows.showPrefView();
    } else if (name == QLatin1String("showWaterView")) {
        // Where the user last put the panel, in an earlier window process.
        m_water = m_windows.waterWindow();
        if (value.typeId() == QMetaType::QPoint)
            m_water->setPosition(value.toPoint());
        m_windows.showWaterView();
    } else if (name == QLatin1String("closeWaterView")) {
        m_windows.closeWaterView();
    } else if (name == QLatin1String("showUpdate")) {
        AppcastItem item;
        item.title = message.value(1).toString();
        item.version = message.value(2).toString();
        item.shortVersion = message.value(3).toString();
        item.releaseNotesLink = message.value(4).toUrl();
        item.downloadLink = message.value(5).toUrl();
        if (UpdatePresenter *window = updateWindow())
            window->showUpdate(item);
    } else if (name == QLatin1String("showUpToDate")) {
        if (UpdatePresenter *window = updateWindow())
            window->showUpToDate();
    } else if (name == QLatin1String("showFailure")) {
        if (UpdatePresenter *window = updateWindow())
            window->showFailure(value.toString());
    } else {
        LOG_ERROR(QStringLiteral("the counting process sent an unknown message: ") + name);
    }
    reportSoon();
}

// Not UpdateModule::window(): builds without the update check have none,
// and this module must load in those too.
UpdatePresenter *ViewsHost::updateWindow()
{
    using Get = UpdatePresenter *(*)();
    const auto get = reinterpret_cast<Get>(Module::loadAndSay(
        UpdateModule::windowModule, UpdateModule::windowEntry, QStringLiteral("update window")));
    return get ? get() : nullptr;
}

// Once the events of this turn of the loop are handled: a break opens a
// window on every screen, which is one report, not one for each.
void ViewsHost::reportSoon()
{
    if (m_reportPending)
        return;
    m_reportPending = true;
    QTimer::singleShot(0, this, &ViewsHost::report);
}

void ViewsHost::report()
{
    m_reportPending = false;
    bool breakShown = false;
    for (const QQuickView *window : m_windows.breakWindows())
        breakShown = breakShown || window->isVisible();
    bool anyShown = false;
    for (const QWindow *window : QGuiApplication::topLevelWindows())
        anyShown = anyShown || window->isVisible();
    QVariantList report{QStringLiteral("windows"), m_read, breakShown,
                        m_windows.isWaterViewVisible(), anyShown};
    report << (m_water ? QVariant(m_water->position()) : QVariant())
           << (m_preferences ? QVariant(m_preferences->geometry()) : QVariant());
    m_channel.send(report);
}

extern "C" Q_DECL_EXPORT int narv_views_run(int &argc, char **argv)
{
    bool ok = false;
    const int fd = qEnvironmentVariableIntValue("NARV_VIEWS_FD", &ok);
    qunsetenv("NARV_VIEWS_FD");
    if (!ok) {
        LOG_ERROR(QStringLiteral("the window process has no line to the counting process"));
        return EXIT_FAILURE;
    }
    QGuiApplication app(argc, argv);
    QGuiApplication::setApplicationDisplayName(AppInfo::name());
    QGuiApplication::setQuitOnLastWindowClosed(false);
    loadTranslations();
    const std::unique_ptr<LoginItem> loginItem = LoginItemBackend::create();

    MessageChannel channel(fd);
    QObject::connect(&channel, &MessageChannel::closed, &app, &QCoreApplication::quit);
    auto *windows = new QmlWindowBackend;
    // What the views ask of the countdown goes to the counting process; a
    // skipped break's windows close here at once.
    CountdownCommands::setSender([&channel, windows](CountdownCommand command) {
        if (command == CountdownCommand::closeBreak)
            windows->closeBreak();
        channel.send({QStringLiteral("command"), int(command)});
    });
    // No countdown runs here: a new work time restarts the one there.
    PrefState *pref = AppState::prefState();
    QObject::disconnect(pref, &PrefState::workTimeSet, nullptr, nullptr);
    QObject::connect(pref, &PrefState::workTimeSet, pref,
                     [] { CountdownCommands::send(CountdownCommand::restartWork); });
    // The windows go before the application object does.
    WindowController controller{std::unique_ptr<WindowBackend>(windows)};
    ViewsHost host(channel, *windows);
    const int code = app.exec();
    CountdownCommands::setSender({});
    return code;
}
