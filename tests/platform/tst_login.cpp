// Starting at login through an XDG autostart entry, in a scratch config folder.

#include "TestSupport.h"

#include "app/AppState.h"
#include "app/Log.h"
#include "platform/login/AutostartLoginItem.h"
#include "settings/PrefState.h"
#include "settings/PreferencesStore.h"

#include <QFile>
#include <QStandardPaths>
#include <QTest>

using TestSupport::ScratchHome;

using TestSupport::readFile;

class TestLogin : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        m_home.emplace();
        PreferencesStore::instance().clear();
    }

    void entryIsWrittenAndRemoved()
    {
        AutostartLoginItem item(QStringLiteral("/opt/My Apps/narv"));
        const QString path = AutostartLoginItem::entryPath();
        QCOMPARE(path, m_home->path() + QStringLiteral("/config/autostart/app.narv.Narv.desktop"));
        QString error;
        QVERIFY(item.setEnabled(true, &error));
        QVERIFY(item.setEnabled(true, &error)); // twice is the same entry
        const QByteArray text = readFile(path);
        QVERIFY(text.startsWith("[Desktop Entry]\n"));
        QVERIFY(text.contains("\nExec=\"/opt/My Apps/narv\"\n"));
        QVERIFY(text.contains("\nType=Application\n"));
        QCOMPARE(text.count("Exec="), 1);

        const QString validator =
            QStandardPaths::findExecutable(QStringLiteral("desktop-file-validate"));
        if (!validator.isEmpty()) {
            QProcess p;
            p.start(validator, {path});
            QVERIFY(p.waitForFinished());
            QVERIFY2(p.exitCode() == 0, p.readAllStandardOutput().constData());
        }

        QVERIFY(item.setEnabled(false, &error));
        QVERIFY(!QFile::exists(path));
        QVERIFY(item.setEnabled(false, &error)); // nothing to remove is fine
    }

    void execQuotesWhatTheShellWouldRead()
    {
        AutostartLoginItem plain(QStringLiteral("/usr/bin/narv"));
        QVERIFY(plain.entryText().contains(QStringLiteral("\nExec=/usr/bin/narv\n")));
        AutostartLoginItem odd(QStringLiteral("/home/a$b/\"x\"/narv"));
        QVERIFY(
            odd.entryText().contains(QStringLiteral("\nExec=\"/home/a\\$b/\\\"x\\\"/narv\"\n")));
    }

    void appImageIsWhatStartsAtLogin()
    {
        qputenv("APPIMAGE", "/home/me/Narv-x86_64.AppImage");
        QCOMPARE(AutostartLoginItem::currentExecutable(),
                 QStringLiteral("/home/me/Narv-x86_64.AppImage"));
        qunsetenv("APPIMAGE");
        QCOMPARE(AutostartLoginItem::currentExecutable(), QCoreApplication::applicationFilePath());
    }

    void settingDrivesTheEntryAndKeepsItsValueOnFailure()
    {
        AutostartLoginItem item(QStringLiteral("/usr/bin/narv"));
        LoginItems::setCurrent(&item);
        PrefState *pref = AppState::prefState();
        pref->setLaunchAtLogin(true);
        QVERIFY(QFile::exists(AutostartLoginItem::entryPath()));
        pref->setLaunchAtLogin(false);
        QVERIFY(!QFile::exists(AutostartLoginItem::entryPath()));

        // A file where the autostart folder should be: the desktop refuses.
        const QString folder = m_home->path() + QStringLiteral("/config/autostart");
        QDir(folder).removeRecursively();
        QVERIFY(TestSupport::writeFile(folder, {}));
        pref->setLaunchAtLogin(true);
        QCOMPARE(pref->launchAtLogin(), true);
        QVERIFY(readFile(Logger::logfilePath())
                    .contains("warning app.narv.Narv : SMAppService error: \n"));
        QFile::remove(folder);
        LoginItems::setCurrent(nullptr);
    }

private:
    std::optional<ScratchHome> m_home;
};

QTEST_GUILESS_MAIN(TestLogin)
#include "tst_login.moc"
