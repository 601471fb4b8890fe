// Settings against a real settings file in a scratch home: the documented keys,
// values the program did not write, lists, changes made by another process,
// and the side effects of the settings that have one.

#include "TestSupport.h"

#include "app/AppState.h"
#include "app/Clock.h"
#include "app/TickSource.h"
#include "app/TicktackController.h"
#include "settings/BreakStyle.h"
#include "settings/PrefState.h"
#include "settings/PrefStyleState.h"
#include "settings/PreferencesStore.h"
#include "settings/Settings.h"
#include "statusbar/StatusBarController.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QRegularExpression>
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

    ScratchHome m_home; // before anything reads the settings
    const QString m_file = m_home.path() + QStringLiteral("/config/narv/narv.conf");
    ManualTickSource m_ticks;
    PreferencesStore &store() { return PreferencesStore::instance(); }
    PrefState *pref() { return AppState::prefState(); }

    void writeSettingsFile(const QByteArray &text)
    {
        QVERIFY(TestSupport::writeFile(m_file, text));
        store().reload();
    }

private Q_SLOTS:
    void initTestCase()
    {
        TicktackController::setTimer(&m_ticks);
        QCOMPARE(store().filePath(), m_file);
    }

    void init()
    {
        store().clear();
        AppState::setManualPause(false);
    }

    void cleanup() { Clock::setNowSource({}); }

    // The README's table of settings has the same keys as the program's (a
    // list kept per style as "<prefix>N").
    void keysDocumented()
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
    }

    // Hand-written values are read (spaces, "False", a quoted comma), bad or
    // foreign ones as the defaults, and reading never writes the file back.
    void handWrittenValues()
    {
        writeSettingsFile("[General]\n"
                          "pref.work.time= 30\n"
                          "show_time_in_status_bar=False\n"
                          "last_weakup_timestamp=1763800000.5\n"
                          "break_prompt_text=\"Stand up, stretch\"\n"
                          "break_style=2\n"
                          "pref.break.time=12.5\n"
                          "force_long_break=2\n"
                          "break_prompt_list_2=@ByteArray(xyz)\n"
                          "pref.short.break.times=@Variant(\\0\\0\\0\\x7f\\0\\0\\0\\0)\n");
        const QByteArray before = TestSupport::readFile(m_file);
        PrefState *p = pref();
        QCOMPARE(p->workTime(), 30);
        QCOMPARE(p->showTime(), false);
        QCOMPARE(p->lastWeakupTimestamp(), 1763800000.5);
        QCOMPARE(p->breakPrompt(), QStringLiteral("Stand up, stretch"));
        QCOMPARE(p->styleState()->breakStyle(), BreakStyle::struggle);
        QCOMPARE(p->breakTime(), 300);
        QCOMPARE(p->forceLongBreak(), false);
        QCOMPARE(p->styleState()->promptList(), BreakStyles::prompts(BreakStyle::struggle));
        QCOMPARE(p->shortBreakTimes(), 4);
        QCOMPARE(TestSupport::readFile(m_file), before);
    }

    // Commas, quotes, at-signs and line breaks survive the file, read back by a
    // fresh process (not from this one's cache).
    void stringListsRoundTripThroughTheFile()
    {
        const QString key = QStringLiteral("break_prompt_list_0");
        const QStringList list{"a, b", "\"q\"", "@Invalid()", "two\nlines", " padded "};
        store().setStringList(key, list);
        const auto child = TestSupport::runChild(QStringLiteral("read-list"), m_home.path(), {key});
        QCOMPARE(child.exitCode, 0);
        QCOMPARE(QJsonDocument::fromJson(child.out).toVariant().toStringList(), list);
    }

    void externalEditsAreNoticed()
    {
        pref()->setBreakTime(120);
        QSignalSpy spy(pref(), &PrefState::breakTimeChanged);

        // Editors replace the file (write elsewhere, rename over it).
        QByteArray text = TestSupport::readFile(m_file);
        text.replace("pref.break.time=120", "pref.break.time=45");
        const QString elsewhere = m_file + QStringLiteral(".new");
        QVERIFY(TestSupport::writeFile(elsewhere, text));
        QVERIFY(::rename(qPrintable(elsewhere), qPrintable(m_file)) == 0);
        QTRY_COMPARE_WITH_TIMEOUT(pref()->breakTime(), 45, 5000);
        QTRY_VERIFY_WITH_TIMEOUT(spy.count() >= 1, 5000);

        // And a second edit, in place this time, is still seen after the rename
        // dropped the file from the watcher (a new size: the same second's
        // modification time does not hide it).
        text.replace("pref.break.time=45", "pref.break.time=600");
        QVERIFY(TestSupport::writeFile(m_file, text));
        QTRY_COMPARE_WITH_TIMEOUT(pref()->breakTime(), 600, 5000);
    }

    // A new day by the calendar, not by the hours since the last lock.
    void newDayFollowsTheCalendarDay()
    {
        QVERIFY(pref()->isNewDay()); // never locked
        QDateTime now = local(2026, 11, 22, 0, 1);
        Clock::setNowSource([&now] { return now; });
        pref()->setLastWeakupTimestamp(local(2026, 11, 21, 23, 59).toSecsSinceEpoch());
        QVERIFY(pref()->isNewDay()); // two minutes earlier, but yesterday
        pref()->setLastWeakupTimestamp(local(2026, 11, 22, 0, 0, 30).toSecsSinceEpoch());
        now = local(2026, 11, 22, 23, 59);
        QVERIFY(!pref()->isNewDay()); // almost a day earlier, but today
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
        // follows when the file is read again.
        QVERIFY(TestSupport::writeFile(m_file, "[General]\nshow_time_in_status_bar=false\n"));
        store().reload();
        QCOMPARE(StatusBarController::title(), QString());
        QVERIFY(TestSupport::writeFile(m_file, "[General]\nshow_time_in_status_bar=true\n"));
        store().reload();
        QCOMPARE(StatusBarController::title(), QStringLiteral("24:59"));
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
              const QJsonArray array = QJsonArray::fromStringList(list.value_or(QStringList()));
              QTextStream(stdout) << QJsonDocument(array).toJson();
              return list ? 0 : 2;
          }}});
    if (child >= 0)
        return child;
    QCoreApplication app(argc, argv);
    TestSettings test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_settings.moc"
