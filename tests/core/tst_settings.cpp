// Settings against a real settings file in a scratch home: defaults, values the
// program did not write, lists, dates as text, changes made by another process,
// and the side effects of the settings that have one.

#include "LogTail.h"
#include "TestSupport.h"

#include "app/AppState.h"
#include "app/Clock.h"
#include "app/TickSource.h"
#include "app/TicktackController.h"
#include "settings/BreakStyle.h"
#include "settings/DateText.h"
#include "settings/PrefState.h"
#include "settings/PrefStyleState.h"
#include "settings/PrefWaterState.h"
#include "settings/PreferencesStore.h"
#include "settings/Settings.h"
#include "statusbar/StatusBarController.h"

#include <QDirIterator>
#include <QJsonArray>
#include <QJsonDocument>
#include <QRegularExpression>
#include <QScopeGuard>
#include <QSignalSpy>
#include <QTest>

#include <cstdio>

using TestSupport::ScratchHome;

namespace {

QDateTime local(int y, int mo, int d, int h, int mi, int s = 0)
{
    return QDateTime(QDate(y, mo, d), QTime(h, mi, s));
}

} // namespace

class TestSettings : public QObject {
    Q_OBJECT

    std::optional<ScratchHome> m_home;
    ManualTickSource m_ticks;
    PreferencesStore &store() { return PreferencesStore::instance(); }
    PrefState *pref() { return AppState::prefState(); }

    void writeSettingsFile(const QByteArray &text)
    {
        QVERIFY(TestSupport::writeFile(m_home->settingsFile(), text));
        store().reload();
    }

private Q_SLOTS:
    void initTestCase()
    {
        m_home.emplace();
        TicktackController::setTimer(&m_ticks);
        QCOMPARE(store().filePath(), m_home->settingsFile());
    }

    void init()
    {
        store().clear();
        AppState::setManualPause(false);
    }

    void cleanup() { Clock::setNowSource({}); }

    // The README's table of settings has the same keys as the program's (a
    // list kept per style as "<prefix>N"), and no file but the table spells one.
    void keysDeclaredOnceAndDocumented()
    {
        const QString readme =
            QString::fromUtf8(TestSupport::readFile(QStringLiteral(NARV_SOURCE_DIR "/README.md")));
        const qsizetype start = readme.indexOf(QLatin1String("| Key | Default | Meaning |"));
        QVERIFY(start >= 0);
        static const QRegularExpression row(QStringLiteral("^\\| (`[^|]+`) \\|"),
                                            QRegularExpression::MultilineOption);
        static const QRegularExpression quoted(QStringLiteral("`([^`]+)`"));
        QSet<QString> documented, declared;
        const QString table =
            readme.mid(start, readme.indexOf(QLatin1String("\n\n"), start) - start);
        for (const QRegularExpressionMatch &line : row.globalMatch(table))
            for (const QRegularExpressionMatch &name : quoted.globalMatch(line.captured(1)))
                documented.insert(name.captured(1));
        for (const SettingEntry &entry : settingsTable)
            declared.insert(QString::fromLatin1(entry.key) + (entry.type == SettingType::textList
                                                                  ? QStringLiteral("N")
                                                                  : QString()));
        QCOMPARE(declared, documented);

        QDirIterator files(
            QStringLiteral(NARV_SOURCE_DIR "/src"),
            {QStringLiteral("*.cpp"), QStringLiteral("*.h"), QStringLiteral("*.qml")}, QDir::Files,
            QDirIterator::Subdirectories);
        int read = 0;
        while (files.hasNext()) {
            const QString path = files.next();
            if (path.endsWith(QLatin1String("/settings/Settings.h")))
                continue;
            const QByteArray text = TestSupport::readFile(path);
            ++read;
            for (const SettingEntry &entry : settingsTable)
                QVERIFY2(!text.contains('"' + QByteArray(entry.key)),
                         qPrintable(path + QStringLiteral(" spells ") + QLatin1String(entry.key)));
        }
        QVERIFY(read > 50);
    }

    // Read as the defaults, and never written back by reading.
    void badAndForeignValuesReadAsDefaults()
    {
        writeSettingsFile("[General]\n"
                          "pref.work.time=abc\n"
                          "pref.break.time=12.5\n"
                          "show_time_in_status_bar=maybe\n"
                          "force_long_break=2\n"
                          "last_weakup_timestamp=yesterday\n"
                          "break_prompt_text=\"a\", \"b\"\n"
                          "break_style=7\n"
                          "break_prompt_list_0=@ByteArray(xyz)\n"
                          "pref.short.break.times=@Variant(\\0\\0\\0\\x7f\\0\\0\\0\\0)\n");
        const QByteArray before = TestSupport::readFile(m_home->settingsFile());
        PrefState *p = pref();
        QCOMPARE(p->workTime(), 25);
        QCOMPARE(p->breakTime(), 300);
        QCOMPARE(p->showTime(), true);
        QCOMPARE(p->forceLongBreak(), false);
        QCOMPARE(p->lastWeakupTimestamp(), 0.0);
        QCOMPARE(p->breakPrompt(), PrefState::defaultBreakPrompt());
        QCOMPARE(p->styleState()->breakStyle(), BreakStyle::default_);
        QCOMPARE(p->styleState()->promptList(), BreakStyles::prompts(BreakStyle::default_));
        QCOMPARE(p->shortBreakTimes(), 4);
        QCOMPARE(p->customBreakPrompt(), false); // not in the file
        QVERIFY(p->isNewDay());
        QCOMPARE(TestSupport::readFile(m_home->settingsFile()), before);
        QVERIFY(!store().contains(QStringLiteral("custom_break_prompt")));
    }

    void handWrittenValuesAreRead()
    {
        writeSettingsFile("[General]\n"
                          "pref.work.time= 30\n"
                          "show_time_in_status_bar=False\n"
                          "last_weakup_timestamp=1763800000.5\n"
                          "break_prompt_text=\"Stand up, stretch\"\n"
                          "break_style=2\n");
        PrefState *p = pref();
        QCOMPARE(p->workTime(), 30);
        QCOMPARE(p->showTime(), false);
        QCOMPARE(p->lastWeakupTimestamp(), 1763800000.5);
        QCOMPARE(p->breakPrompt(), QStringLiteral("Stand up, stretch"));
        QCOMPARE(p->styleState()->breakStyle(), BreakStyle::struggle);
    }

    void stringListsRoundTripThroughTheFile_data()
    {
        QTest::addColumn<QStringList>("list");
        QTest::newRow("empty") << QStringList{};
        QTest::newRow("commas, quotes, at-signs, lines") << QStringList{
            QStringLiteral("a, b"), QStringLiteral("\"q\""), QStringLiteral("@Invalid()"),
            QStringLiteral("two\nlines"), QStringLiteral(" padded ")};
    }

    void stringListsRoundTripThroughTheFile()
    {
        QFETCH(QStringList, list);
        const QString key = QStringLiteral("break_prompt_list_0");
        store().setStringList(key, list);
        QCOMPARE(store().stringList(key), std::optional<QStringList>(list));
        // A fresh process parses the file instead of seeing this process's cache.
        const auto child =
            TestSupport::runChild(QStringLiteral("read-list"), m_home->path(), {key});
        QCOMPARE(child.exitCode, 0);
        QStringList back;
        for (const auto &v : QJsonDocument::fromJson(child.out).array())
            back.append(v.toString());
        QCOMPARE(back, list);
    }

    void externalEditsAreNoticed()
    {
        pref()->setBreakTime(120);
        QSignalSpy workSpy(pref(), &PrefState::breakTimeChanged);
        QSignalSpy storeSpy(&store(), &PreferencesStore::changed);

        // Editors replace the file (write elsewhere, rename over it).
        QByteArray text = TestSupport::readFile(m_home->settingsFile());
        text.replace("pref.break.time=120", "pref.break.time=45");
        const QString elsewhere = m_home->settingsFile() + QStringLiteral(".new");
        QVERIFY(TestSupport::writeFile(elsewhere, text));
        QVERIFY(::rename(qPrintable(elsewhere), qPrintable(m_home->settingsFile())) == 0);
        QTRY_COMPARE_WITH_TIMEOUT(pref()->breakTime(), 45, 5000);
        QTRY_VERIFY_WITH_TIMEOUT(workSpy.count() >= 1, 5000);
        QVERIFY(storeSpy.contains(QVariantList{QStringLiteral("pref.break.time")}));

        // And a second edit, in place this time, is still seen after the rename
        // dropped the file from the watcher (a new size: the same second's
        // modification time does not hide it).
        text.replace("pref.break.time=45", "pref.break.time=600");
        QVERIFY(TestSupport::writeFile(m_home->settingsFile(), text));
        QTRY_COMPARE_WITH_TIMEOUT(pref()->breakTime(), 600, 5000);
    }

    // Hand-edited text that reads as a number but is no moment: the epoch,
    // said in the log, as text that does not read at all.
    void unreadableMomentsReadAsTheEpoch_data()
    {
        QTest::addColumn<QString>("text");
        QTest::newRow("not a number") << QStringLiteral("nan");
        QTest::newRow("beyond any date") << QStringLiteral("1e300");
    }

    void unreadableMomentsReadAsTheEpoch()
    {
        QFETCH(QString, text);
        store().setString(QString::fromLatin1(PrefState::lastWeakupTimestampKey), text);
        store().setString(QString::fromLatin1(PrefWaterState::intervalStartKey), text);
        const int warnings = LogTail::count("which is no moment in time");

        QCOMPARE(pref()->lastWeakupTimestamp(), 0.0);
        QVERIFY(pref()->isNewDay());
        QCOMPARE(AppState::waterState()->intervalStartDate().toMSecsSinceEpoch(), 0);
        QCOMPARE(DateText::toDate(text).toMSecsSinceEpoch(), 0);
        QVERIFY(LogTail::count("which is no moment in time") >= warnings + 2);
    }

    void newDayFollowsTheCalendarDay()
    {
        PrefState *p = pref();
        QVERIFY(p->isNewDay()); // never locked

        QDateTime now = local(2026, 11, 22, 0, 1);
        Clock::setNowSource([&now] { return now; });

        p->setLastWeakupTimestamp(local(2026, 11, 21, 23, 59).toSecsSinceEpoch());
        QVERIFY(p->isNewDay()); // two minutes earlier, but yesterday

        p->setLastWeakupTimestamp(local(2026, 11, 22, 0, 0, 30).toSecsSinceEpoch());
        now = local(2026, 11, 22, 23, 59);
        QVERIFY(!p->isNewDay()); // almost a day earlier, but today

        now = local(2026, 11, 22, 8, 15, 30).addMSecs(125);
        p->updateWeakupTimestamp();
        QCOMPARE(p->lastWeakupTimestamp(), double(now.toMSecsSinceEpoch()) / 1000.0);
        QVERIFY(!p->isNewDay());
        now = now.addDays(1);
        QVERIFY(p->isNewDay());
    }

    // A settings folder that cannot be written (a file stands where it should
    // be, which stops root too): changes still hold for this run, and the
    // warning is said once, not at every change.
    void unwritableFolderWarnsOnceAndKeepsChanges()
    {
        const QString dir = QFileInfo(m_home->settingsFile()).absolutePath();
        QVERIFY(QDir(dir).removeRecursively());
        QVERIFY(TestSupport::writeFile(dir, "a file, not a folder"));
        const auto restore = qScopeGuard([dir] {
            QFile::remove(dir);
            QDir().mkpath(dir);
        });
        const QByteArray warning = "warning app.narv.Narv : settings: cannot write ";
        const int before = LogTail::count(warning);

        QVERIFY(!store().checkWritable());
        pref()->setWorkTime(40);
        pref()->setShowTime(false);
        QVERIFY(!store().checkWritable());
        QCOMPARE(pref()->workTime(), qint64(40));
        QCOMPARE(pref()->showTime(), false);
        QCOMPARE(LogTail::count(warning), before + 1);
    }
    void showTimeRefreshesTheTitle()
    {
        StatusBarController::item();
        AppState::setWorking(true);
        QCOMPARE(StatusBarController::title(), QStringLiteral("25:00"));
        pref()->setShowTime(false);
        QCOMPARE(StatusBarController::title(), QString());
        m_ticks.advance(1);
        QCOMPARE(StatusBarController::title(), QString());
        pref()->setShowTime(true);
        QCOMPARE(StatusBarController::title(), QStringLiteral("24:59"));

        // Edited in the file (by hand, or by the window process): the title
        // follows when the file is read again, and stays so while it ticks.
        QVERIFY(TestSupport::writeFile(m_home->settingsFile(),
                                       "[General]\nshow_time_in_status_bar=false\n"));
        store().reload();
        QCOMPARE(StatusBarController::title(), QString());
        m_ticks.advance(1);
        QCOMPARE(StatusBarController::title(), QString());
        QVERIFY(TestSupport::writeFile(m_home->settingsFile(),
                                       "[General]\nshow_time_in_status_bar=true\n"));
        store().reload();
        QCOMPARE(StatusBarController::title(), QStringLiteral("24:58"));

        // A value that is not a boolean is said once, not at every tick.
        QVERIFY(TestSupport::writeFile(m_home->settingsFile(),
                                       "[General]\nshow_time_in_status_bar=maybe\n"));
        store().reload();
        const QByteArray warning = "\"show_time_in_status_bar\" holds \"maybe\"";
        const int said = LogTail::count(warning);
        QVERIFY(said >= 1);
        m_ticks.advance(3);
        QCOMPARE(StatusBarController::title(), QStringLiteral("24:55"));
        QCOMPARE(LogTail::count(warning), said);
    }

    // Each style keeps its own list, the built-in texts until edited.
    void styleListsPerStyle()
    {
        PrefStyleState *style = pref()->styleState();
        style->setBreakStyle(BreakStyle::relaxation);
        QCOMPARE(style->promptList(), BreakStyles::prompts(BreakStyle::relaxation));
        style->setPromptList({QStringLiteral("mine")});
        style->setBreakStyle(BreakStyle::struggle);
        QCOMPARE(style->promptListKey(), QStringLiteral("break_prompt_list_2"));
        QCOMPARE(style->promptList(), BreakStyles::prompts(BreakStyle::struggle));
        style->setBreakStyle(BreakStyle::relaxation);
        QCOMPARE(style->promptList(), QStringList{QStringLiteral("mine")});
    }
};

int main(int argc, char **argv)
{
    const int child = TestSupport::runChildMode(
        argc, argv,
        {{"read-list", [&] {
              QCoreApplication app(argc, argv);
              ScratchHome home;
              const auto list = PreferencesStore::instance().stringList(QString::fromUtf8(argv[3]));
              if (!list)
                  return 2;
              QTextStream(stdout) << QJsonDocument(QJsonArray::fromStringList(*list)).toJson();
              return 0;
          }}});
    if (child >= 0)
        return child;
    QCoreApplication app(argc, argv);
    TestSettings test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_settings.moc"
