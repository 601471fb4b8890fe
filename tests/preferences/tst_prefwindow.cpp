// The settings window on a real X server: made once and raised afterwards,
// its title and minimum size, Ctrl+W, the first tab on reopening, and the
// login item's real state shown when it opens.

#include "LogTail.h"
#include "TestSupport.h"

#include "app/AppState.h"
#include "platform/login/AutostartLoginItem.h"
#include "settings/PrefState.h"
#include "settings/PreferencesStore.h"
#include "windows/QmlWindowBackend.h"
#include "windows/WindowController.h"

#include <QFile>
#include <QGuiApplication>
#include <QQuickItem>
#include <QQuickView>
#include <QSettings>
#include <QTest>

#include <optional>

using TestSupport::ScratchHome;

class TestPrefWindow : public QObject {
    Q_OBJECT

    std::optional<ScratchHome> m_home;
    QmlWindowBackend *m_backend = nullptr;
    LogTail m_log;

    QList<QWindow *> settingsWindows() const
    {
        QList<QWindow *> windows;
        for (QWindow *window : QGuiApplication::topLevelWindows()) {
            if (window->title() == QLatin1String("Settings"))
                windows << window;
        }
        return windows;
    }
    QQuickItem *rootOf(QQuickView *view) const { return view->rootObject(); }

private Q_SLOTS:
    void initTestCase()
    {
        m_home.emplace();
        auto backend = std::make_unique<QmlWindowBackend>();
        m_backend = backend.get();
        WindowController::setBackend(std::move(backend));
    }

    void init()
    {
        PreferencesStore::instance().clear();
        QFile::remove(AutostartLoginItem::entryPath());
        m_log.newMessages();
    }

    void cleanupTestCase() { WindowController::setBackend(nullptr); }

    void madeOnceAndRaised()
    {
        QVERIFY(settingsWindows().isEmpty());
        WindowController::showPrefView();
        QQuickView *window = m_backend->preferencesWindow();
        QVERIFY(QTest::qWaitForWindowExposed(window));
        QCOMPARE(window->status(), QQuickView::Ready);
        QCOMPARE(window->title(), QStringLiteral("Settings"));
        QCOMPARE(window->minimumSize(), QSize(480, 400));
        QVERIFY(window->width() >= 480 && window->height() >= 400);
        QCOMPARE(rootOf(window)->property("currentIndex").toInt(), 0);

        // Asked again (the menu, a second start of Narv): the same window, in
        // front and with the keyboard.
        window->resize(700, 650);
        rootOf(window)->setProperty("currentIndex", 2);
        WindowController::showPrefView();
        QCOMPARE(settingsWindows(), QList<QWindow *>{window});
        QCOMPARE(m_backend->preferencesWindow(), window);
        QVERIFY(QTest::qWaitForWindowActive(window));
        QTRY_COMPARE(window->size(), QSize(700, 650));
        QCOMPARE(rootOf(window)->property("currentIndex").toInt(), 2);
        QCOMPARE(m_log.newMessages().count(QStringLiteral("create preferences window")), 1);
    }

    void closesWithCtrlWAndReopensOnTheFirstTab()
    {
        WindowController::showPrefView();
        QQuickView *window = m_backend->preferencesWindow();
        QVERIFY(QTest::qWaitForWindowActive(window));
        rootOf(window)->setProperty("currentIndex", 3);
        QTest::keyClick(window, Qt::Key_W, Qt::ControlModifier);
        QTRY_VERIFY(!window->isVisible());

        WindowController::showPrefView();
        QVERIFY(QTest::qWaitForWindowExposed(window));
        QCOMPARE(m_backend->preferencesWindow(), window);
        QCOMPARE(rootOf(window)->property("currentIndex").toInt(), 0);
        window->close();
    }

    void showsTheLoginItemAsTheDesktopHasIt_data()
    {
        QTest::addColumn<bool>("stored");
        QTest::addColumn<QString>("entry"); // null: no entry
        QTest::addColumn<bool>("shown");

        QTest::newRow("entry removed behind Narv's back") << true << QString() << false;
        QTest::newRow("entry added behind Narv's back") << false << QStringLiteral("") << true;
        QTest::newRow("entry switched off in GNOME")
            << true << QStringLiteral("X-GNOME-Autostart-enabled=false\n") << false;
        QTest::newRow("entry hidden") << true << QStringLiteral("Hidden=true\n") << false;
        QTest::newRow("in step") << true << QStringLiteral("X-GNOME-Autostart-enabled=true\n")
                                 << true;
    }

    void showsTheLoginItemAsTheDesktopHasIt()
    {
        QFETCH(bool, stored);
        QFETCH(QString, entry);
        QFETCH(bool, shown);

        QSettings file(PreferencesStore::instance().filePath(), QSettings::IniFormat);
        PreferencesStore::instance().setBool(QString::fromLatin1(PrefState::launchAtLoginKey),
                                             stored);
        if (!entry.isNull())
            QVERIFY(TestSupport::writeFile(
                AutostartLoginItem::entryPath(),
                "[Desktop Entry]\nType=Application\nName=Narv\nExec=narv\n" + entry.toUtf8()));
        m_log.newMessages();

        WindowController::showPrefView();
        QQuickView *window = m_backend->preferencesWindow();
        QVERIFY(QTest::qWaitForWindowExposed(window));
        auto *box = rootOf(window)->findChild<QQuickItem *>(QStringLiteral("launchAtLogin"));
        QVERIFY(box);
        QTRY_COMPARE(box->property("checked").toBool(), shown);
        file.sync();
        QCOMPARE(file.value(QString::fromLatin1(PrefState::launchAtLoginKey)).toString(),
                 shown ? QStringLiteral("true") : QStringLiteral("false"));
        // Recorded, not acted on: the entry is as it was.
        QCOMPARE(QFile::exists(AutostartLoginItem::entryPath()), !entry.isNull());
        const bool logged = m_log.newMessages()
                                .filter(QStringLiteral("launch at login: the setting says"))
                                .size() == 1;
        QCOMPARE(logged, stored != shown);
        window->close();
        QTRY_VERIFY(!window->isVisible());
    }
};

QTEST_MAIN(TestPrefWindow)

#include "tst_prefwindow.moc"
