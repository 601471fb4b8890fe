// The line between the counting process and the window process, and the
// counting side's handling of the window process: a real socket pair, real
// child processes (this program run as `--views`, standing in for the window
// process: it does what it is told and reports its windows the way the real
// one does) and the real core, in a scratch home.

#include "LogTail.h"
#include "TestSupport.h"

#include "app/AppState.h"
#include "app/TickSource.h"
#include "app/TicktackController.h"
#include "app/TicktackState.h"
#include "platform/views/MessageChannel.h"
#include "platform/views/ViewsProcess.h"
#include "settings/PrefState.h"
#include "settings/PrefWaterState.h"
#include "settings/PreferencesStore.h"
#include "settings/PromptState.h"
#include "statusbar/StatusBarController.h"
#include "windows/CountdownCommand.h"
#include "windows/WindowController.h"

#include <QCoreApplication>
#include <QSettings>
#include <QSignalSpy>
#include <QTest>

#include <csignal>
#include <sys/socket.h>
#include <unistd.h>

using TestSupport::ScratchHome;

namespace {

// The stand-in window process. Shows and closes what it is told, answers
// every message with a report of its windows, as ViewsHost does, and keeps a
// list of the messages' names in $NARV_TEST_RECORD. "showAbout" stands for a
// window whose views ask the counting process for something: like the
// settings window, it writes a new work time and then sends the command
// "restartWork" (and shows nothing).
int standInWindowProcess()
{
    int argc = 1;
    char name[] = "views";
    char *argv[] = {name, nullptr};
    QCoreApplication app(argc, argv);
    MessageChannel channel(qEnvironmentVariableIntValue("NARV_VIEWS_FD"));
    QFile record(qEnvironmentVariable("NARV_TEST_RECORD"));
    if (!record.open(QIODevice::Append))
        return 2;
    quint64 read = 0;
    bool breakShown = false;
    bool water = false;
    QObject::connect(&channel, &MessageChannel::closed, &app, &QCoreApplication::quit);
    QObject::connect(&channel, &MessageChannel::received, [&](const QVariantList &message) {
        ++read;
        const QString what = message.value(0).toString();
        // With the window's place or the settings' activation token, when
        // they come with one.
        QString extra;
        const bool withArgument =
            what == QLatin1String("showWaterView") || what == QLatin1String("showPrefView");
        for (const QVariant &at : withArgument ? message.mid(1) : QVariantList()) {
            if (at.typeId() == QMetaType::QPoint)
                extra += QStringLiteral(" %1,%2").arg(at.toPoint().x()).arg(at.toPoint().y());
            else if (at.typeId() == QMetaType::QRect)
                extra += QStringLiteral(" %1,%2 %3x%4")
                             .arg(at.toRect().x())
                             .arg(at.toRect().y())
                             .arg(at.toRect().width())
                             .arg(at.toRect().height());
            else
                extra += u' ' + at.toString();
        }
        record.write((what + extra).toUtf8() + '\n');
        record.flush();
        if (what == QLatin1String("showBreak"))
            breakShown = true;
        else if (what == QLatin1String("closeBreak"))
            breakShown = false;
        else if (what == QLatin1String("showWaterView"))
            water = true;
        else if (what == QLatin1String("closeWaterView"))
            water = false;
        if (what == QLatin1String("showAbout")) {
            QSettings settings(PreferencesStore::defaultFilePath(), QSettings::IniFormat);
            settings.setValue(QStringLiteral("pref.work.time"), 7);
            settings.sync();
            channel.send({QStringLiteral("command"), int(CountdownCommand::restartWork)});
        }
        // The settings window as the user left it (it is never shown here).
        channel.send({QStringLiteral("windows"), read, breakShown, water, breakShown || water,
                      QPoint(120, 340), QRect(30, 40, 600, 500)});
    });
    return app.exec();
}

bool exists(qint64 pid)
{
    return pid > 0 && ::kill(pid_t(pid), 0) == 0;
}

} // namespace

class TestViewsProcess : public QObject {
    Q_OBJECT

    std::optional<ScratchHome> m_home;
    ManualTickSource m_ticks;
    QString m_record;

    QStringList recorded() const
    {
        QString text = QString::fromUtf8(TestSupport::readFile(m_record));
        QStringList lines = text.split(u'\n');
        lines.removeAll(QString());
        return lines;
    }

private Q_SLOTS:
    void initTestCase()
    {
        m_home.emplace();
        m_record = m_home->path() + QStringLiteral("/record");
        qputenv("NARV_TEST_RECORD", m_record.toUtf8());
        TicktackController::setTimer(&m_ticks);
    }

    void init()
    {
        QFile::remove(m_record);
        AppState::setManualPause(false);
    }

    // Messages go whole and in order, also more than the socket holds while
    // the other end reads nothing; a message too long for one packet is
    // refused and said; the other end's going is noticed.
    void channel()
    {
        int fds[2];
        QVERIFY(MessageChannel::makePair(fds));
        auto *near = new MessageChannel(fds[0]);
        auto *far = new MessageChannel(fds[1]);
        QList<QVariantList> got;
        connect(far, &MessageChannel::received, [&](const QVariantList &m) { got.append(m); });
        const QString text(2000, u'é');
        for (int i = 0; i < 500; ++i)
            near->send({QStringLiteral("n"), i, text});
        QVERIFY2(near->pending() > 0, "the socket took 1 MB at once; nothing was queued");
        QTRY_COMPARE_WITH_TIMEOUT(got.size(), 500, 10000);
        for (int i = 0; i < 500; ++i) {
            QCOMPARE(got[i].value(1).toInt(), i);
            QCOMPARE(got[i].value(2).toString(), text);
        }
        QCOMPARE(near->pending(), 0);

        near->send({QStringLiteral("long"), QString(40000, u'x')});
        QCOMPARE(LogTail::count("a message to the other process is too long"), 1);
        QCOMPARE(near->pending(), 0);

        QSignalSpy closed(near, &MessageChannel::closed);
        delete far;
        QTRY_COMPARE(closed.size(), 1);
        QVERIFY(!near->isOpen());
        near->send({QStringLiteral("after")}); // nothing to send it to, and no crash
        delete near;
    }

    // What the windows ask of the countdown: in the window process it is
    // handed on, in this one it runs; numbers outside the table are no command.
    void commands()
    {
        QList<CountdownCommand> sent;
        CountdownCommands::setSender([&](CountdownCommand command) { sent.append(command); });
        TicktackController::stop();
        CountdownCommands::send(CountdownCommand::restartWork);
        CountdownCommands::send(CountdownCommand::scheduleWater);
        CountdownCommands::setSender({});
        QVERIFY(!TicktackController::isRunning());
        QVERIFY(!AppState::waterState()->workItem());
        QCOMPARE(sent, (QList<CountdownCommand>{CountdownCommand::restartWork,
                                                CountdownCommand::scheduleWater}));

        CountdownCommands::send(CountdownCommand::restartWork);
        QVERIFY(TicktackController::isRunning());
        // Paused by the user: the window process cannot know, the command here does.
        AppState::setManualPause(true);
        CountdownCommands::send(CountdownCommand::restartWork);
        QVERIFY(!TicktackController::isRunning());

        QVERIFY(!CountdownCommands::fromRawValue(0));
        QVERIFY(!CountdownCommands::fromRawValue(int(CountdownCommand::postponeBreak) + 1));
    }

    // The window process: started by the first window and ended with the
    // last; the water panel and the settings window come back where the last
    // process had them; what its views ask for runs here; the settings take
    // the activation token along.
    void lifetime()
    {
        ViewsProcess views;
        TicktackController::stop();
        QVERIFY(!exists(views.processId()));

        views.showWaterView();
        const qint64 first = views.processId();
        QVERIFY(exists(first));
        QVERIFY(views.isWaterViewVisible());
        QTRY_VERIFY(recorded().contains(QStringLiteral("showWaterView")));
        QCOMPARE(recorded().mid(0, 4),
                 (QStringList{QStringLiteral("prompt"), QStringLiteral("showSkipButton"),
                              QStringLiteral("breakTime"), QStringLiteral("breakTimesUp")}));

        // The file exists and is watched before the window process writes it.
        AppState::prefState()->setWorkTime(25);
        TicktackController::stop();
        views.showAbout();
        QTRY_VERIFY2(TicktackController::isRunning(), "the views' command did not run here");
        // With the work time the window process wrote just before it.
        QCOMPARE(TicktackController::remaining(AppState::workState()), 7 * 60);

        const int ends = LogTail::count("no window left: the window process ends");
        views.closeWaterView();
        QVERIFY(!views.isWaterViewVisible());
        QTRY_VERIFY(!exists(first));
        QCOMPARE(LogTail::count("no window left: the window process ends"), ends + 1);

        QFile::remove(m_record);
        views.showWaterView();
        QVERIFY(views.processId() != first);
        QTRY_VERIFY(recorded().contains(QStringLiteral("showWaterView 120,340")));
        views.closeWaterView();
        const qint64 second = views.processId();
        QTRY_VERIFY(!exists(second));

        // A second start's activation token goes with the settings to the
        // window process, once; the window comes back as the user left it.
        qputenv("XDG_ACTIVATION_TOKEN", "token-of-the-second-start");
        views.showPrefView();
        views.showPrefView();
        QTRY_COMPARE(
            recorded().filter(QStringLiteral("showPrefView")),
            (QStringList{QStringLiteral("showPrefView token-of-the-second-start 30,40 600x500"),
                         QStringLiteral("showPrefView  30,40 600x500")}));
    }

    // Ten seconds before a break the window process is started and told to
    // get the break windows ready, and stays while the break is near (not
    // when work starts over, nor long after a paused countdown's break was
    // due), from the start of a period shorter than that;
    // the break countdown goes along; a window process that goes during the
    // break ends the break, and work starts again.
    void breaks()
    {
        ViewsProcess views;
        TicktackController::work(11);
        QVERIFY(!exists(views.processId()));
        m_ticks.advance();
        const qint64 pid = views.processId();
        QVERIFY2(exists(pid), "no window process ten seconds before the break");
        QTRY_VERIFY(recorded().contains(QStringLiteral("prepareBreak")));
        QTest::qWait(300);
        QVERIFY2(exists(pid), "the window process went with a break near");

        // Work starts over (a new work time): the break is not near any more.
        TicktackController::work(600);
        m_ticks.advance();
        QTRY_VERIFY2(!exists(pid), "the window process stays for a break that is not near");

        // The countdown stops near the break (a pause): the process goes
        // once the break is overdue.
        QFile::remove(m_record);
        TicktackController::work(5);
        QTRY_VERIFY(recorded().contains(QStringLiteral("prepareBreak")));
        const qint64 paused = views.processId();
        QTest::qWait(300); // its report of no window, while the break is still near
        TicktackController::stop();
        QTest::qWait(1000);
        QVERIFY(exists(paused));
        QTRY_VERIFY_WITH_TIMEOUT(
            !exists(paused),
            (ViewsProcess::breakLeadSeconds + ViewsProcess::breakGraceSeconds + 5) * 1000);

        QFile::remove(m_record);
        views.showBreak();
        const qint64 breakPid = views.processId();
        TicktackController::startBreak(30);
        m_ticks.advance();
        QTRY_COMPARE(recorded().count(QStringLiteral("breakTime")), 3);

        const int said =
            LogTail::count("the break windows went away with their process: the break ends");
        ::kill(pid_t(breakPid), SIGKILL);
        QTRY_COMPARE(
            LogTail::count("the break windows went away with their process: the break ends"),
            said + 1);
        QVERIFY(TicktackController::remaining(AppState::workState()) > 0);
        QVERIFY(!exists(views.processId()));

        // A work period shorter than the lead: ready from its start.
        QFile::remove(m_record);
        TicktackController::work(4);
        QTRY_VERIFY2(exists(views.processId()), "no window process for a break four seconds away");
        QTRY_VERIFY(recorded().contains(QStringLiteral("prepareBreak")));
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
