// The update check against an appcast this test serves on 127.0.0.1: a newer
// release, the same one, a malformed feed, a missing one; what
// the window shows for each, on demand and on schedule; the schedule itself
// and the system profile in the request;
// a program whose update modules are missing, and a checker dropped mid-fetch.

#include "TestSupport.h"

#include "Appcast.h"
#include "AppcastUpdateChecker.h"
#include "NetworkFeedFetcher.h"
#include "UpdateWindow.h"
#include "app/AppInfo.h"
#include "app/AppState.h"
#include "app/Log.h"
#include "settings/PrefState.h"
#include "settings/PreferencesStore.h"

#include <QFile>
#include <QGuiApplication>
#include <QNetworkProxy>
#include <QSignalSpy>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTest>
#include <QUrlQuery>

using TestSupport::ScratchHome;

namespace {

// Answers every GET with one canned response and keeps the request targets.
class FeedServer : public QObject {
    Q_OBJECT
public:
    QByteArray status = "200 OK";
    QByteArray body;
    bool answers = true; // false: reads the request and never replies
    QStringList targets;
    int closed = 0; // connections the client closed or saw closed

    FeedServer()
    {
        m_server.listen(QHostAddress::LocalHost);
        connect(&m_server, &QTcpServer::newConnection, this, [this] {
            while (QTcpSocket *socket = m_server.nextPendingConnection()) {
                connect(socket, &QTcpSocket::readyRead, socket, [this, socket] {
                    m_requests[socket] += socket->readAll();
                    if (!m_requests[socket].contains("\r\n\r\n"))
                        return;
                    targets.append(QString::fromLatin1(m_requests[socket].split(' ').value(1)));
                    if (!answers)
                        return;
                    socket->write("HTTP/1.1 " + status +
                                  "\r\nContent-Type: application/rss+xml\r\n"
                                  "Content-Length: " +
                                  QByteArray::number(body.size()) +
                                  "\r\nConnection: close\r\n\r\n" + body);
                    socket->disconnectFromHost();
                });
                connect(socket, &QTcpSocket::disconnected, socket, [this, socket] {
                    ++closed;
                    socket->deleteLater();
                });
            }
        });
    }
    QUrl feed() const
    {
        return QUrl(QStringLiteral("http://127.0.0.1:%1/appcast.xml").arg(m_server.serverPort()));
    }

private:
    QTcpServer m_server;
    QHash<QTcpSocket *, QByteArray> m_requests;
};

QByteArray appcast(const QByteArray &items)
{
    return "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n"
           "<rss version=\"2.0\" xmlns:sparkle=\"http://www.andymatuschak.org/xml-namespaces/"
           "sparkle\">\n<channel>\n<title>Narv</title>\n" +
           items + "</channel>\n</rss>\n";
}

QByteArray item(const QByteArray &shortVersion, const QByteArray &build,
                const QByteArray &extra = {})
{
    return "<item><title>Narv " + shortVersion +
           "</title>\n<sparkle:releaseNotesLink>https://narv.app/release_note/" + shortVersion +
           "</sparkle:releaseNotesLink>\n<enclosure url=\"https://narv.app/download/narv-" +
           shortVersion + ".tar.gz\" sparkle:version=\"" + build +
           "\" sparkle:shortVersionString=\"" + shortVersion + "\" length=\"1\" " + extra +
           "/>\n</item>\n";
}

QByteArray logText()
{
    QFile log(Logger::logfilePath());
    return log.open(QIODevice::ReadOnly) ? log.readAll() : QByteArray();
}

} // namespace

class TestUpdate : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();

    void versions_data();
    void versions();
    void parsing();

    void outcomes_data();
    void outcomes();
    void restartDoesNotCheckAtOnce();
    void withoutTheModule();
    void droppedWhileFetching();

private:
    std::unique_ptr<AppcastUpdateChecker> checker(const QUrl &feed);
    PrefState *pref() { return AppState::prefState(); }

    std::optional<ScratchHome> m_home;
};

void TestUpdate::initTestCase()
{
    // The feed is on this machine: a proxy from the environment must not get it.
    QNetworkProxy::setApplicationProxy(QNetworkProxy::NoProxy);
    m_home.emplace();
    logger();
}

void TestUpdate::init()
{
    PreferencesStore::instance().clear();
    if (UpdateWindow::instance())
        UpdateWindow::instance()->hide();
}

std::unique_ptr<AppcastUpdateChecker> TestUpdate::checker(const QUrl &feed)
{
    // What the update modules' entry points give, linked in.
    auto c =
        std::make_unique<AppcastUpdateChecker>(feed, PreferencesStore::instance(), *pref(), [] {
            return std::make_unique<NetworkFeedFetcher>();
        });
    c->showOutcomes([] { return UpdateWindow::ensure(); });
    return c;
}

void TestUpdate::versions_data()
{
    QTest::addColumn<QString>("a");
    QTest::addColumn<QString>("b");
    QTest::addColumn<int>("order");
    QTest::newRow("equal") << "0.1.0"
                           << "0.1.0" << 0;
    QTest::newRow("missing parts are 0") << "1.0"
                                         << "1.0.0" << 0;
    QTest::newRow("numeric, not text") << "0.10.0"
                                       << "0.9.3" << 1;
    QTest::newRow("pre-release is older") << "1.0-beta"
                                          << "1.0" << -1;
    QTest::newRow("pre-releases") << "1.0b2"
                                  << "1.0b1" << 1;
    QTest::newRow("build numbers") << "12"
                                   << "9" << 1;
    QTest::newRow("whitespace") << " 2.0 "
                                << "2.0" << 0;
}

void TestUpdate::versions()
{
    QFETCH(QString, a);
    QFETCH(QString, b);
    QFETCH(int, order);
    QCOMPARE(qBound(-1, Appcast::compareVersions(a, b), 1), order);
    QCOMPARE(qBound(-1, Appcast::compareVersions(b, a), 1), -order);
}

void TestUpdate::parsing()
{
    QString error;
    const auto items = Appcast::parse(
        appcast(item("0.2.0", "5") + item("0.9.0", "9", "sparkle:os=\"macos\"") +
                "<item><title>beta</title><sparkle:channel>beta</sparkle:channel>"
                "<sparkle:version>20</sparkle:version></item>\n"
                // versions as elements, the download as the item's link
                "<item><title>Narv 0.3.0</title><link>https://narv.app/download/</link>"
                "<sparkle:version>7</sparkle:version>"
                "<sparkle:shortVersionString>0.3.0</sparkle:shortVersionString></item>\n"
                "<item><title>no version</title></item>\n"),
        &error);
    QVERIFY2(items, qPrintable(error));
    QCOMPARE(items->size(), 2);
    QCOMPARE(items->at(0).displayVersion(), QStringLiteral("0.2.0"));
    QCOMPARE(items->at(0).version, QStringLiteral("5"));
    QCOMPARE(items->at(0).releaseNotesLink,
             QUrl(QStringLiteral("https://narv.app/release_note/0.2.0")));
    QCOMPARE(items->at(0).downloadLink,
             QUrl(QStringLiteral("https://narv.app/download/narv-0.2.0.tar.gz")));
    QCOMPARE(items->at(1).downloadLink, QUrl(QStringLiteral("https://narv.app/download/")));

    const auto newest = Appcast::newestUpdate(*items, QStringLiteral("0.1.0"), QStringLiteral("1"));
    QVERIFY(newest);
    QCOMPARE(newest->displayVersion(), QStringLiteral("0.3.0"));
    QVERIFY(!Appcast::newestUpdate(*items, QStringLiteral("0.3.0"), QStringLiteral("7")));
    // Same version, a later build.
    QVERIFY(Appcast::newestUpdate(*items, QStringLiteral("0.3.0"), QStringLiteral("6")));

    QVERIFY(Appcast::parse(appcast(""), &error)->isEmpty());
    QVERIFY(!Appcast::parse("<rss><channel><item>", &error));
    QVERIFY2(error.contains(QStringLiteral("line")), qPrintable(error));
    QVERIFY(!Appcast::parse("<html><body>Not here</body></html>", &error));
    QCOMPARE(error, QStringLiteral("not an RSS feed"));
}

void TestUpdate::outcomes_data()
{
    QTest::addColumn<QByteArray>("status");
    QTest::addColumn<QByteArray>("body");
    QTest::addColumn<bool>("userInitiated");
    QTest::addColumn<QString>("heading"); // empty: no window
    QTest::addColumn<QString>("message");

    const QByteArray newer = appcast(item("0.2.0", "2") + item("0.1.0", "1"));
    const QByteArray same = appcast(item("0.1.0", "1"));
    const QByteArray broken = appcast(item("0.2.0", "2")).replace("</channel>", "");
    const QString available = QStringLiteral("A new version is available");
    const QString failed = QStringLiteral("The update check failed");
    QTest::newRow("newer, asked") << QByteArray("200 OK") << newer << true << available
                                  << QStringLiteral("Version 0.2.0 is out; you have 0.1.0.");
    QTest::newRow("newer, scheduled") << QByteArray("200 OK") << newer << false << available
                                      << QStringLiteral("Version 0.2.0 is out; you have 0.1.0.");
    QTest::newRow("same, asked") << QByteArray("200 OK") << same << true
                                 << QStringLiteral("You're up to date")
                                 << QStringLiteral("Narv 0.1.0 is the newest version available.");
    QTest::newRow("same, scheduled")
        << QByteArray("200 OK") << same << false << QString() << QString();
    QTest::newRow("malformed, asked") << QByteArray("200 OK") << broken << true << failed
                                      << QStringLiteral("The update feed is not a valid appcast: ");
    QTest::newRow("malformed, scheduled")
        << QByteArray("200 OK") << broken << false << QString() << QString();
    QTest::newRow("not found, asked")
        << QByteArray("404 Not Found") << QByteArray("gone") << true << failed << QString();
}

void TestUpdate::outcomes()
{
    QFETCH(QByteArray, status);
    QFETCH(QByteArray, body);
    QFETCH(bool, userInitiated);
    QFETCH(QString, heading);
    QFETCH(QString, message);

    FeedServer server;
    server.status = status;
    server.body = body;
    const auto c = checker(server.feed());
    QSignalSpy available(c.get(), &AppcastUpdateChecker::updateAvailable);
    QSignalSpy upToDate(c.get(), &AppcastUpdateChecker::upToDate);
    QSignalSpy failed(c.get(), &AppcastUpdateChecker::checkFailed);
    const qsizetype logBefore = logText().size();
    if (userInitiated)
        c->checkForUpdates();
    else
        c->checkInBackground();
    QVERIFY(c->isChecking());
    QTRY_VERIFY_WITH_TIMEOUT(!c->isChecking(), 20000);
    QCOMPARE(available.size() + upToDate.size() + failed.size(), 1);
    // The outcome carries who asked.
    const QList<QVariant> args = !available.isEmpty()  ? available.first()
                                 : !upToDate.isEmpty() ? upToDate.first()
                                                       : failed.first();
    QCOMPARE(args.last().toBool(), userInitiated);

    UpdateWindow *window = UpdateWindow::instance();
    const bool shown = window && window->isVisible();
    QCOMPARE(shown, !heading.isEmpty());
    if (shown) {
        QCOMPARE(window->heading(), heading);
        QVERIFY2(window->message().startsWith(message), qPrintable(window->message()));
        if (!available.isEmpty()) {
            QCOMPARE(window->links(),
                     QStringLiteral("<a href=\"https://narv.app/release_note/0.2.0\">Release "
                                    "Notes</a> &nbsp;·&nbsp; <a href=\"https://narv.app/download/"
                                    "narv-0.2.0.tar.gz\">Download</a>"));
        } else {
            QCOMPARE(window->links(), QString());
        }
    }
    // Failures always reach the log, shown or not.
    if (!failed.isEmpty())
        QVERIFY(
            logText().mid(logBefore).contains(" warning app.narv.Narv : update check failed: "));
    QVERIFY(c->lastCheck().isValid());
}

void TestUpdate::restartDoesNotCheckAtOnce()
{
    FeedServer server;
    server.body = appcast(item("0.1.0", "1"));
    {
        // Never checked: the first check waits a few minutes.
        const auto first = checker(server.feed());
        first->start();
        QVERIFY(first->isScheduled());
        // A very coarse timer: whole seconds, rounded either way.
        QVERIFY2(qAbs(first->scheduledInMs() - 300 * 1000) <= 2000,
                 qPrintable(QString::number(first->scheduledInMs())));
        first->checkForUpdates();
        QTRY_VERIFY_WITH_TIMEOUT(!first->isChecking(), 20000);
    }
    // The request carries the system profile.
    QCOMPARE(server.targets.size(), 1);
    const QUrl target(server.targets.first());
    QCOMPARE(target.path(), QStringLiteral("/appcast.xml"));
    const QUrlQuery query(target);
    QCOMPARE(query.toString(QUrl::FullyDecoded),
             QStringLiteral("appName=Narv&appVersion=%1&model=%2&osVersion=%3")
                 .arg(AppInfo::version(), AppInfo::model(), AppInfo::osVersion()));
    QVERIFY(!AppInfo::model().isEmpty());

    // Started again: the check just made counts, the next is 12 hours away.
    const auto second = checker(server.feed());
    second->start();
    QVERIFY2(second->scheduledInMs() > (43200 - 60) * 1000,
             qPrintable(QString::number(second->scheduledInMs())));
    QCOMPARE(server.targets.size(), 1);

    // Switched off: nothing is armed and a due check does nothing; on again re-arms.
    pref()->setAutoCheckUpdate(false);
    QVERIFY(!second->isScheduled());
    second->checkInBackground();
    QVERIFY(!second->isChecking());
    pref()->setAutoCheckUpdate(true);
    QVERIFY(second->isScheduled());
    QCOMPARE(server.targets.size(), 1);
}

void TestUpdate::withoutTheModule()
{
    // The fetcher cannot be made (the module is not installed): every check
    // fails at once, says so in the log, and the schedule goes on.
    int attempts = 0;
    AppcastUpdateChecker c(QUrl(QStringLiteral("http://127.0.0.1:9/appcast.xml")),
                           PreferencesStore::instance(), *pref(), [&attempts] {
                               ++attempts;
                               return std::unique_ptr<FeedFetcher>();
                           });
    // Nor is there a window to show it in: the failure the user asked for is
    // offered to it, the scheduled one is not.
    int presentations = 0;
    c.showOutcomes([&presentations]() -> UpdatePresenter * {
        ++presentations;
        return nullptr;
    });
    QSignalSpy failed(&c, &AppcastUpdateChecker::checkFailed);
    c.start();
    const qsizetype logBefore = logText().size();
    c.checkForUpdates();
    QVERIFY(!c.isChecking());
    QCOMPARE(failed.size(), 1);
    QCOMPARE(failed.first().value(0).toString(),
             QStringLiteral("the update check is not installed"));
    QCOMPARE(failed.first().value(1).toBool(), true);
    QVERIFY(logText().mid(logBefore).contains(
        " warning app.narv.Narv : update check failed: the update check is not installed"));
    QVERIFY(c.lastCheck().isValid());
    QVERIFY2(c.scheduledInMs() > (43200 - 60) * 1000,
             qPrintable(QString::number(c.scheduledInMs())));
    // Asked again, it tries again: a module installed meanwhile is found.
    c.checkInBackground();
    QCOMPARE(failed.size(), 2);
    QCOMPARE(attempts, 2);
    QCOMPARE(presentations, 1);
}

void TestUpdate::droppedWhileFetching()
{
    // A feed that never answers, and the checker destroyed meanwhile (the
    // program quits during a check): the fetch is dropped without reporting
    // into the destroyed checker.
    FeedServer server;
    server.answers = false;
    auto c = checker(server.feed());
    QSignalSpy failed(c.get(), &AppcastUpdateChecker::checkFailed);
    c->checkForUpdates();
    QTRY_COMPARE_WITH_TIMEOUT(server.targets.size(), 1, 20000);
    QVERIFY(c->isChecking());
    c.reset();
    // The fetch is dropped, closing its connection; whatever the dropped
    // reply still had queued runs meanwhile.
    QTRY_COMPARE_WITH_TIMEOUT(server.closed, 1, 20000);
    QCOMPARE(failed.size(), 0);
}

int main(int argc, char **argv)
{
    QGuiApplication app(argc, argv);
    TestUpdate test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_update.moc"
