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

using TestSupport::readFile;

class TestLogin : public QObject {
    Q_OBJECT

    std::optional<TestSupport::ScratchHome> m_home;

private Q_SLOTS:
    void initTestCase() { m_home.emplace(); }

    void entryIsWrittenAndRemoved()
    {
        AutostartLoginItem item(QStringLiteral("/home/a$b/\"x\"/narv"));
        const QString path = AutostartLoginItem::entryPath();
        QCOMPARE(path, m_home->path() + QStringLiteral("/config/autostart/app.narv.Narv.desktop"));
        QString error;
        QVERIFY(item.setEnabled(true, &error));
        QVERIFY(item.setEnabled(true, &error)); // twice is the same entry
        const QByteArray text = readFile(path);
        QVERIFY(text.startsWith("[Desktop Entry]\n"));
        // Quoted as the shell would read it.
        QVERIFY(text.contains("\nExec=\"/home/a\\$b/\\\"x\\\"/narv\"\n"));
        QCOMPARE(text.count("Exec="), 1);
        const QString validator =
            QStandardPaths::findExecutable(QStringLiteral("desktop-file-validate"));
        if (!validator.isEmpty())
            QCOMPARE(QProcess::execute(validator, {path}), 0);

        QVERIFY(item.setEnabled(false, &error));
        QVERIFY(!QFile::exists(path));
        QVERIFY(item.setEnabled(false, &error)); // nothing to remove is fine
    }

    // The setting drives the entry; when the desktop refuses, or offers no
    // login item, the setting keeps its value and the log says so.
    void settingDrivesTheEntryAndKeepsItsValueOnFailure()
    {
        const QByteArray warning = "warning app.narv.Narv : SMAppService error: \n";
        PrefState *pref = AppState::prefState();
        {
            AutostartLoginItem item(QStringLiteral("/usr/bin/narv"));
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
            QCOMPARE(readFile(Logger::logfilePath()).count(warning), 1);
            QFile::remove(folder);
        }
        QVERIFY(!LoginItem::current());
        pref->setLaunchAtLogin(false);
        QCOMPARE(pref->launchAtLogin(), false);
        QCOMPARE(readFile(Logger::logfilePath()).count(warning), 2);
    }
};

QTEST_GUILESS_MAIN(TestLogin)
#include "tst_login.moc"
