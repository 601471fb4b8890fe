// The counting process's side of the window process: the commands its views
// send back by number, and the process killed during a break. This program,
// run as `--views`, stands in for the window process over a real socket, with
// the real core in a scratch home. The window process before, during and
// after a break is tests/e2e/window_process.sh.

#include "FakeWindows.h"
#include "LogTail.h"

#include "app/AppState.h"
#include "app/TickSource.h"
#include "app/TicktackController.h"
#include "app/TicktackState.h"
#include "platform/views/MessageChannel.h"
#include "platform/views/ViewsProcess.h"
#include "settings/PrefState.h"
#include "settings/PreferencesStore.h"
#include "settings/PromptState.h"
#include "windows/CountdownCommand.h"

#include <QCoreApplication>
#include <QSettings>
#include <QTest>

#include <csignal>

namespace {
// The stand-in window process: answers every message with a report of its
// windows, as ViewsHost does. "showAbout" stands for a window whose views ask
// the counting process for something: a number that is no command, then, as
// the settings window does, a new work time written and "restartWork".
int standInWindowProcess()
{
    int argc = 1;
    char name[] = "views";
    char *argv[] = {name, nullptr};
    QCoreApplication app(argc, argv);
    MessageChannel channel(qEnvironmentVariableIntValue("NARV_VIEWS_FD"));
    quint64 read = 0;
    bool breakShown = false;
    QObject::connect(&channel, &MessageChannel::closed, &app, &QCoreApplication::quit);
    QObject::connect(&channel, &MessageChannel::received, [&](const QVariantList &message) {
        ++read;
        const QString what = message.value(0).toString();
        breakShown = what == QLatin1String("showBreak") ||
                     (breakShown && what != QLatin1String("closeBreak"));
        if (what == QLatin1String("showAbout")) {
            channel.send({QStringLiteral("command"), 0});
            QSettings settings(PreferencesStore::defaultFilePath(), QSettings::IniFormat);
            settings.setValue(QStringLiteral("pref.work.time"), 7);
            settings.sync();
            channel.send({QStringLiteral("command"), int(CountdownCommand::restartWork)});
        }
        channel.send({QStringLiteral("windows"), read, breakShown, false, breakShown});
    });
    return app.exec();
}
} // namespace

class TestViewsProcess : public QObject {
    Q_OBJECT

    TestSupport::ScratchHome m_home;
    ManualTickSource m_ticks;
    WindowsOf<ViewsProcess> m_windows;
    ViewsProcess &m_views = m_windows.windows;

private Q_SLOTS:
    void initTestCase() { TicktackController::setTimer(&m_ticks); }

    // In the window process a command is handed on, here it runs; a pause by
    // the user, which the window process cannot know of, holds. From the
    // window process it comes after the settings it wrote; a number outside
    // the table is no command.
    void commands()
    {
        QList<CountdownCommand> sent;
        CountdownCommands::setSender([&](CountdownCommand command) { sent.append(command); });
        TicktackController::stop();
        CountdownCommands::send(CountdownCommand::restartWork);
        CountdownCommands::setSender({});
        QVERIFY(!TicktackController::isRunning());
        QCOMPARE(sent, QList<CountdownCommand>{CountdownCommand::restartWork});
        CountdownCommands::send(CountdownCommand::restartWork);
        QVERIFY(TicktackController::isRunning());
        AppState::setManualPause(true);
        CountdownCommands::send(CountdownCommand::restartWork);
        QVERIFY(!TicktackController::isRunning());

        AppState::setManualPause(false);
        AppState::prefState()->setWorkTime(25); // the file exists and is watched
        TicktackController::stop();
        m_views.showAbout();
        QTRY_VERIFY2(TicktackController::isRunning(), "the views' command did not run here");
        QCOMPARE(TicktackController::remaining(AppState::workState()), 7 * 60);
        QCOMPARE(LogTail::count("the window process asked for an unknown command: 0"), 1);
        // Nothing left on the screen: the process ends.
        QTRY_COMPARE(LogTail::count("no window left: the window process ends"), 1);
    }

    // Killed during a break: the break ends and work runs again from its full
    // length; the next window has a process of its own.
    void killedDuringABreak()
    {
        AppState::prefState()->setWorkTime(2);
        AppState::promptState()->showBreak();
        const qint64 first = m_views.processId();
        QVERIFY(first > 0);
        QVERIFY(TicktackController::remaining(AppState::breakState()) > 0);
        QCOMPARE(::kill(pid_t(first), SIGKILL), 0);
        QTRY_COMPARE(TicktackController::remaining(AppState::workState()), 2 * 60);
        QCOMPARE(LogTail::count("the break windows went away with their process"), 1);
        m_views.showWaterView();
        QVERIFY(m_views.processId() > 0 && m_views.processId() != first);
    }
};

int main(int argc, char **argv)
{
    if (argc >= 2 && qstrcmp(argv[1], "--views") == 0)
        return standInWindowProcess();
    QCoreApplication app(argc, argv);
    TestViewsProcess test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_viewsprocess.moc"
