// The update check: how versions compare, and an appcast this test serves on
// 127.0.0.1, checked on schedule: a newer release shows the window, a malformed
// feed only reaches the log. And no schedule while the setting is off.

#include "LogTail.h"
#include "TestSupport.h"

#include "AppcastUpdateChecker.h"
#include "NetworkFeedFetcher.h"
#include "UpdateWindow.h"
#include "app/AppState.h"
#include "settings/PrefState.h"
#include "settings/PreferencesStore.h"

#include <QGuiApplication>
#include <QNetworkProxy>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTest>

// Answers every GET with `body`.
class FeedServer : public QTcpServer {
public:
    explicit FeedServer(const QByteArray &body)
    {
        listen(QHostAddress::LocalHost);
        connect(this, &QTcpServer::newConnection, this, [this, body] {
            while (QTcpSocket *socket = nextPendingConnection()) {
                connect(socket, &QTcpSocket::readyRead, socket, [socket, body] {
                    if (!socket->peek(1 << 16).contains("\r\n\r\n"))
                        return;
                    socket->write(
                        "HTTP/1.1 200 OK\r\nContent-Length: " + QByteArray::number(body.size()) +
                        "\r\nConnection: close\r\n\r\n" + body);
                    socket->disconnectFromHost();
                });
            }
        });
    }
    QUrl feed() const { return QUrl(QStringLiteral("http://127.0.0.1:%1/a").arg(serverPort())); }
};

QByteArray item(const QByteArray &version, const QByteArray &extra = {})
{
    return "<item><title>Narv " + version +
           "</title><sparkle:releaseNotesLink>https://narv.app/notes/" + version +
           "</sparkle:releaseNotesLink><enclosure url=\"https://narv.app/narv-" + version +
           ".tar.gz\" sparkle:version=\"" + version + "\" " + extra + "/></item>\n";
}

class TestUpdate : public QObject {
    Q_OBJECT
    TestSupport::ScratchHome m_home;

    std::unique_ptr<AppcastUpdateChecker> checker(const QUrl &feed)
    {
        auto c = std::make_unique<AppcastUpdateChecker>(
            feed, PreferencesStore::instance(), *AppState::prefState(),
            [] { return std::make_unique<NetworkFeedFetcher>(); });
        c->showOutcomes([] { return UpdateWindow::ensure(); });
        return c;
    }

private Q_SLOTS:
    void initTestCase()
    {
        // The feed is on this machine: a proxy from the environment must not get it.
        QNetworkProxy::setApplicationProxy(QNetworkProxy::NoProxy);
        logger();
    }

    void versions()
    {
        // Each pair older first, or equal.
        const struct {
            const char *a, *b;
            int order;
        } pairs[] = {
            {"0.9.3", "0.10.0", -1}, {"1.0-beta", "1.0", -1}, {"1.0b1", "1.0b2", -1},
            {"9", "12", -1},         {"1.0", "1.0.0", 0},     {" 2.0 ", "2.0", 0},
        };
        for (const auto &p : pairs) {
            const int there = Appcast::compareVersions(QLatin1String(p.a), QLatin1String(p.b));
            const int back = Appcast::compareVersions(QLatin1String(p.b), QLatin1String(p.a));
            QVERIFY2(qBound(-1, there, 1) == p.order && qBound(-1, back, 1) == -p.order, p.a);
        }
    }

    void scheduledCheck_data()
    {
        QTest::addColumn<QByteArray>("items");
        QTest::addColumn<QString>("shown"); // the window's message; empty: no window
        // The one for another system, though newer, is not offered.
        QTest::newRow("newer") << item("0.2.0") + item("0.9.0", "sparkle:os=\"macos\"") +
                                      item("0.1.0")
                               << QStringLiteral("Version 0.2.0 is out; you have 0.1.0.");
        QTest::newRow("malformed") << item("0.2.0") + "</channel>" << QString();
    }

    void scheduledCheck()
    {
        QFETCH(QByteArray, items);
        QFETCH(QString, shown);
        if (UpdateWindow::instance())
            UpdateWindow::instance()->hide();
        FeedServer server("<?xml version=\"1.0\"?><rss version=\"2.0\" xmlns:sparkle=\"http://"
                          "www.andymatuschak.org/xml-namespaces/sparkle\"><channel>" +
                          items + "</channel></rss>");
        const auto c = checker(server.feed());
        const int failures = LogTail::count(" warning app.narv.Narv : update check failed: ");
        c->checkInBackground();
        QTRY_VERIFY_WITH_TIMEOUT(!c->isChecking(), 20000);
        UpdateWindow *window = UpdateWindow::instance();
        QCOMPARE(window && window->isVisible() ? window->message() : QString(), shown);
        if (shown.isEmpty())
            QCOMPARE(LogTail::count(" warning app.narv.Narv : update check failed: "),
                     failures + 1);
        else
            QCOMPARE(window->links(), QStringLiteral("<a href=\"https://narv.app/notes/0.2.0\">"
                                                     "Release Notes</a> &nbsp;·&nbsp; <a href=\""
                                                     "https://narv.app/narv-0.2.0.tar.gz\">"
                                                     "Download</a>"));
    }

    void noScheduleWhileOff()
    {
        PreferencesStore::instance().clear();
        const auto c = checker(QUrl(QStringLiteral("http://127.0.0.1:9/")));
        c->start();
        // Never checked yet: in a few minutes, not at once.
        QVERIFY(c->scheduledInMs() > 60 * 1000);
        AppState::prefState()->setAutoCheckUpdate(false);
        QVERIFY(!c->isScheduled());
        c->checkInBackground();
        QVERIFY(!c->isChecking());
    }
};

int main(int argc, char **argv)
{
    QGuiApplication app(argc, argv);
    TestUpdate test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_update.moc"
