// The line between the counting process and the window process, and the
// counting side's handling of the window process: a real socket pair, real
// child processes (this program run as `--views`, standing in for the window
// process) and the real core, in a scratch home. The window process before,
// during and after a break, and killed during one, is
// tests/e2e/window_process.sh.

#include "LogTail.h"
#include "TestSupport.h"

#include "app/AppState.h"
#include "app/TickSource.h"
#include "app/TicktackController.h"
#include "app/TicktackState.h"
#include "platform/views/MessageChannel.h"
#include "platform/views/ViewsProcess.h"
#include "settings/PrefState.h"
#include "settings/PreferencesStore.h"
#include "windows/CountdownCommand.h"

#include <QCoreApplication>
#include <QRegularExpression>
#include <QSettings>
#include <QSignalSpy>
#include <QTest>

#include <csignal>
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
        if (what == QLatin1String("showWaterView") || what == QLatin1String("showPrefView"))
            QDebug(&extra).noquote() << message.mid(1);
        record.write((what + u' ' + extra).trimmed().toUtf8() + '\n');
        record.flush();
        breakShown = what == QLatin1String("showBreak") ||
                     (breakShown && what != QLatin1String("closeBreak"));
        water = what == QLatin1String("showWaterView") ||
                (water && what != QLatin1String("closeWaterView"));
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
        return QString::fromUtf8(TestSupport::readFile(m_record)).split(u'\n', Qt::SkipEmptyParts);
    }

    // Whether the stand-in was sent a message of that name.
    bool saw(const char *name) const
    {
        const QRegularExpression line(QStringLiteral("^%1\\b").arg(QLatin1String(name)));
        return !recorded().filter(line).isEmpty();
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

        QSignalSpy closed(near, &MessageChannel::closed);
        delete far;
        QTRY_COMPARE(closed.size(), 1);
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
        CountdownCommands::setSender({});
        QVERIFY(!TicktackController::isRunning());
        QCOMPARE(sent, QList<CountdownCommand>{CountdownCommand::restartWork});

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
        // The states the views show go first.
        QTRY_VERIFY(saw("showWaterView"));
        QCOMPARE(recorded().first(), QStringLiteral("prompt"));

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

        // A new process, with the windows as the last one left them; a second
        // start's activation token goes with the settings, once.
        QFile::remove(m_record);
        views.showWaterView();
        QVERIFY(views.processId() != first);
        qputenv("XDG_ACTIVATION_TOKEN", "token-of-the-second-start");
        views.showPrefView();
        views.showPrefView();
        QTRY_COMPARE(recorded().filter(QStringLiteral("showPrefView")).size(), 2);
        const QStringList settings = recorded().filter(QStringLiteral("QRect(30,40 600x500)"));
        QCOMPARE(settings.size(), 2);
        QVERIFY(settings[0].contains(QStringLiteral("token-of-the-second-start")));
        QVERIFY(!settings[1].contains(QStringLiteral("token")));
        QCOMPARE(recorded().filter(QStringLiteral("QPoint(120,340)")).size(), 1);
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
