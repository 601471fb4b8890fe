#include "app/QuilloApp.h"

#include "app/AppDelegate.h"
#include "app/AppInfo.h"
#include "app/Localized.h"
#include "app/Log.h"
#include "app/LoginItem.h"
#include "platform/events/EventSources.h"
#include "platform/instance/SingleInstance.h"
#include "platform/login/LoginItemBackend.h"
#include "platform/mail/MailComposers.h"
#include "platform/tray/ClassicTray.h"
#include "platform/tray/TrayBackend.h"
#include "platform/update/UpdateCheck.h"
#include "platform/views/ViewsModule.h"
#include "windows/WindowController.h"

#include <QGuiApplication>
#include <QSocketNotifier>
#include <QTimer>

#include <csignal>
#include <memory>
#include <sys/socket.h>
#include <unistd.h>

namespace {
int g_signalFds[2] = {-1, -1};

void onSignal(int)
{
    const char byte = 1;
    [[maybe_unused]] auto n = ::write(g_signalFds[0], &byte, 1);
}

// SIGTERM (logout, systemd) and SIGINT (Ctrl+C in a terminal) end the event
// loop normally instead of killing the process mid-write.
void quitOnSignals(QCoreApplication &app)
{
    if (::socketpair(AF_UNIX, SOCK_STREAM, 0, g_signalFds) != 0)
        return;
    auto *notifier = new QSocketNotifier(g_signalFds[1], QSocketNotifier::Read, &app);
    QObject::connect(notifier, &QSocketNotifier::activated, &app, [notifier] {
        char byte = 0;
        [[maybe_unused]] auto n = ::read(g_signalFds[1], &byte, 1);
        notifier->setEnabled(false);
        LOG_INFO(QStringLiteral("quit on signal"));
        QCoreApplication::quit();
    });
    struct sigaction action {};
    action.sa_handler = onSignal;
    sigemptyset(&action.sa_mask);
    action.sa_flags = SA_RESTART;
    ::sigaction(SIGTERM, &action, nullptr);
    ::sigaction(SIGINT, &action, nullptr);
}
} // namespace

int QuilloApp::main(int argc, char **argv)
{
    installQtMessageRouting();
    QGuiApplication::setOrganizationName(QStringLiteral("narv"));
    QGuiApplication::setApplicationName(QStringLiteral("narv"));
    QGuiApplication::setApplicationVersion(AppInfo::version());
    QGuiApplication::setDesktopFileName(AppInfo::identifier());
    // A QGuiApplication, unless the classic tray icon will be wanted (no
    // StatusNotifierWatcher on the bus): it needs QtWidgets and a
    // QApplication, which the classic tray module brings.
    const bool classicTray = ClassicTray::wanted();
    QString classicTrayError;
    std::unique_ptr<QGuiApplication> application;
    if (classicTray)
        application = ClassicTray::createApplication(argc, argv, &classicTrayError);
    if (!application)
        application = std::make_unique<QGuiApplication>(argc, argv);
    QGuiApplication &app = *application;
    QGuiApplication::setApplicationDisplayName(AppInfo::name());
    // A tray program: closing its last window must not end it.
    QGuiApplication::setQuitOnLastWindowClosed(false);
    quitOnSignals(app);

    logger(); // the banner goes first
    if (!classicTrayError.isEmpty())
        LOG_ERROR(QStringLiteral("cannot load the classic tray icon (%1): Narv shows its status "
                                 "item only once a panel offers a StatusNotifierWatcher")
                      .arg(classicTrayError));

    SingleInstance instance;
    switch (instance.claim()) {
    case SingleInstance::Claim::First:
        break;
    case SingleInstance::Claim::HandedOver:
        LOG_INFO(QStringLiteral("Narv is already running; asked it to show its settings"));
        return 0;
    case SingleInstance::Claim::Failed:
        LOG_ERROR(
            QStringLiteral("Narv is already running but does not answer; not starting twice"));
        return 1;
    }
    QObject::connect(&instance, &SingleInstance::activated, &app,
                     [] { WindowController::showPrefView(); });

    // The desktop parts plug into the core here, before start-up runs.
    // [windows]
    // Loads the windows (and Qt Quick) when the first one is wanted.
    WindowController::setBackend(ViewsModule::windowBackend());
    // [statusbar]
    loadTranslations();
    TrayBackend::install();
    MailComposers::install();
    UpdateCheck::install();
    // [events]
    EventSources::install();
    const std::unique_ptr<LoginItem> loginItem = LoginItemBackend::create();
    LoginItems::setCurrent(loginItem.get());

    AppDelegate delegate;
    QTimer::singleShot(0, &app, [&delegate] { delegate.applicationDidFinishLaunching(); });
    const int code = app.exec();
    delegate.applicationWillTerminate();
    return code;
}
