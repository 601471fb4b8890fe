#include "QuilloApp.h"

#include "AppDelegate.h"
#include "app/AppInfo.h"
#include "app/HeadsUp.h"
#include "app/Localized.h"
#include "app/Log.h"
#include "history/HistoryRecorder.h"
#include "platform/busy/BusySources.h"
#include "platform/control/ControlCommand.h"
#include "platform/control/ControlService.h"
#include "platform/events/EventSources.h"
#include "platform/instance/SingleInstance.h"
#include "platform/login/LoginItemBackend.h"
#include "platform/mail/MailComposers.h"
#include "platform/notify/SessionNotifier.h"
#include "platform/sound/BreakSounds.h"
#include "platform/tray/ClassicTray.h"
#include "platform/tray/TrayBackend.h"
#include "platform/update/UpdateCheck.h"
#include "platform/views/ViewsModule.h"
#include "platform/views/ViewsProcess.h"
#include "services/LoginItem.h"
#include "windows/WindowController.h"

#include <QCoreApplication>
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
    QCoreApplication::setOrganizationName(QStringLiteral("narv"));
    QCoreApplication::setApplicationName(QStringLiteral("narv"));
    QCoreApplication::setApplicationVersion(AppInfo::version());
    if (argc > 1 && qstrcmp(argv[1], ViewsModule::processOption) == 0)
        return ViewsModule::runProcess(argc, argv);
    if (argc > 2 && qstrcmp(argv[1], UpdateCheck::fetchOption) == 0)
        return UpdateCheck::runFetch(argc, argv);
    // `narv status`, `narv pause` ...: a client of the running Narv, which
    // neither logs nor counts.
    if (argc > 1)
        return ControlCommand::run(argc, argv);
    // Whose log this is, the running Narv's or this one's, is known once the
    // single instance is claimed.
    LogFile::wait();

    // A plain QCoreApplication, whose windows are drawn by a process of their
    // own, unless the classic tray icon will be wanted (no
    // StatusNotifierWatcher on the bus): it needs QtWidgets and a
    // QApplication, which the classic tray module brings, and which draws
    // the windows itself.
    const bool classicTray = ClassicTray::wanted();
    QString classicTrayError;
    std::unique_ptr<QCoreApplication> application;
    if (classicTray)
        application = ClassicTray::createApplication(argc, argv, &classicTrayError);
    const bool drawsWindows = application != nullptr;
    if (!application)
        application = std::make_unique<QCoreApplication>(argc, argv);
    QCoreApplication &app = *application;
    quitOnSignals(app);

    logger(); // the banner goes first
    if (!classicTrayError.isEmpty())
        LOG_ERROR(QStringLiteral("cannot load the classic tray icon (%1): Narv shows its status "
                                 "item only once a panel offers a StatusNotifierWatcher")
                      .arg(classicTrayError));

    SingleInstance instance;
    const SingleInstance::Claim claim = instance.claim();
    // A start that only hands over writes to the running Narv's file and
    // leaves the folder alone.
    if (claim == SingleInstance::Claim::First)
        LogFile::own();
    else
        LogFile::join({});
    switch (claim) {
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
    // Queued: the second start gets its answer before the settings window
    // is made, which on a busy machine takes longer than it waits.
    QObject::connect(
        &instance, &SingleInstance::activated, &app, [] { WindowController::showPrefView(); },
        Qt::QueuedConnection);

    // The desktop parts plug into the core here, before start-up runs.
    // [windows]
    // Loads the windows (and Qt Quick) when the first one is wanted, in this
    // process or in a process of their own.
    ViewsProcess *viewsProcess = nullptr;
    std::unique_ptr<WindowBackend> windowBackend;
    if (drawsWindows) {
        windowBackend = ViewsModule::windowBackend();
    } else {
        viewsProcess = new ViewsProcess;
        windowBackend.reset(viewsProcess);
    }
    // Goes before the application object does; the window process ends with
    // its line to this one.
    WindowController windows(std::move(windowBackend));
    // [statusbar]
    loadTranslations();
    TrayBackend::install();
    MailComposers::install();
    HeadsUp::install(std::make_unique<SessionNotifier>());
    BreakSounds::install();
    BusySources::install();
    UpdateCheck::install(viewsProcess);
    // [events]
    EventSources::install();
    const std::unique_ptr<LoginItem> loginItem = LoginItemBackend::create();
    // [history] after the lock source it watches, before the first work period
    HistoryRecorder::install(&app);

    AppDelegate delegate;
    QTimer::singleShot(0, &app, [&delegate, &app] {
        delegate.applicationDidFinishLaunching();
        ControlService::install(&app);
    });
    const int code = app.exec();
    delegate.applicationWillTerminate();
    return code;
}
