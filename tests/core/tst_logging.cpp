// The log file: line format, metadata, levels, the daily file and its clean-up,
// the week-based year in its name, and what happens when things go wrong
// (in child processes: an unusable folder, logging while the logger is built,
// a fatal Qt message). And the facts about the program the log and the About
// box tell.

#include "TestSupport.h"

#include "app/AppInfo.h"
#include "app/Clock.h"
#include "app/FileLogHandler.h"
#include "app/Log.h"

#include <QCoreApplication>
#include <QDir>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>

#include <optional>
#include <thread>
#include <vector>

#include <unicode/locid.h>
#include <unicode/smpdtfmt.h>
#include <unicode/unistr.h>

namespace {

const QString timestamp = QStringLiteral(R"(\d{4}-\d{2}-\d{2}T\d{2}:\d{2}:\d{2}[+-]\d{4})");

QString hello()
{
    return QString(24, u'~') + QStringLiteral("hello ") + AppInfo::name() + QString(34, u'~');
}

// A line of the application logger without its timestamp.
QString appLine(const char *level, const QString &message)
{
    return QString::fromLatin1(level) + u' ' + AppInfo::identifier() + QStringLiteral(" : ") +
           message;
}

// The lines of a text without their leading timestamps; a line without one
// is kept whole, marked, so that a comparison shows it.
QStringList unstamped(const QString &text)
{
    static const QRegularExpression stamp(u'^' + timestamp + u' ');
    QStringList lines = text.split(u'\n', Qt::SkipEmptyParts);
    for (QString &line : lines) {
        const auto match = stamp.match(line);
        line = match.hasMatch() ? line.mid(match.capturedLength()) : "no timestamp: " + line;
    }
    return lines;
}

QStringList readLines(const QString &path)
{
    return unstamped(QString::fromUtf8(TestSupport::readFile(path)));
}

// ICU's own answer for the day, noon local time.
QString icuDateText(const QDate &day, const icu::SimpleDateFormat &format)
{
    icu::UnicodeString text;
    format.format(UDate(QDateTime(day, QTime(12, 0)).toMSecsSinceEpoch()), text);
    return QString(reinterpret_cast<const QChar *>(text.getBuffer()), text.length());
}

// The variables the cases change; each case starts with them as they were.
const char *const localeAndCache[] = {"LC_ALL", "LC_TIME", "LANG", "XDG_CACHE_HOME"};

// Sets an environment variable; an empty value unsets it.
void setEnv(const char *name, const QString &value)
{
    value.isEmpty() ? qunsetenv(name) : qputenv(name, value.toLocal8Bit());
}

// The test binary started as a child: "build" builds the process logger and
// logs once; "reentrant" logs from inside the build (the clock is asked while
// the logger is made); "fatal" routes Qt messages and ends with qFatal.
int childMain(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
    TestSupport::ScratchHome home;
    const QByteArray mode = argv[2];
    if (mode == "reentrant") {
        installQtMessageRouting();
        Clock::setNowSource([] {
            qWarning("asked for the time");
            LOG_INFO(QStringLiteral("logged while building"));
            return QDateTime::currentDateTime();
        });
    }
    if (mode == "fatal") {
        installQtMessageRouting();
        qDebug("routed debug");
        qWarning("routed warning");
        qFatal("fatal marker %d", 42);
    }
    LOG_INFO(QStringLiteral("child done"));
    return 0;
}

} // namespace

class TestLogging : public QObject {
    Q_OBJECT

    std::optional<QTemporaryDir> m_dir;
    QString m_folder; // "<temp>/Logs/", not created yet
    const QProcessEnvironment m_env = QProcessEnvironment::systemEnvironment();

    QString fileFor(const QDateTime &now) const
    {
        return m_folder + AppInfo::identifier() + u'.' + logDateText(now, "en_US") + ".log";
    }

private Q_SLOTS:
    void init()
    {
        m_dir.emplace();
        QVERIFY(m_dir->isValid());
        m_folder = m_dir->path() + QStringLiteral("/Logs/");
    }

    void cleanup()
    {
        Clock::setNowSource({});
        for (const char *name : localeAndCache)
            setEnv(name, m_env.value(QString::fromLatin1(name)));
    }

    void lineFormat_data()
    {
        QTest::addColumn<LogMetadata>("handlerMetadata");
        QTest::addColumn<LogMetadata>("callMetadata");
        QTest::addColumn<QString>("expected");

        QTest::newRow("call wins on a shared key, printed once")
            << LogMetadata{{"a", "handler"}, {"b", 2}} << LogMetadata{{"c", 3}, {"a", "call"}}
            << QStringLiteral("info test.label : a=call b=2 c=3 hello there");
        QTest::newRow("lists and maps")
            << LogMetadata{}
            << LogMetadata{{"list", QStringList{"p", "q"}},
                           {"map", QVariantMap{{"k", 1}, {"n", QVariantList{true, 2.5}}}},
                           {"empty", QVariantMap{}}}
            << QStringLiteral("info test.label : list=[p, q] map=[k: 1, n: [true, "
                              "2.5]] empty=[:] "
                              "hello there");
    }

    void lineFormat()
    {
        QFETCH(LogMetadata, handlerMetadata);
        QFETCH(LogMetadata, callMetadata);
        QFETCH(QString, expected);

        const QString path = m_dir->filePath("format.log");
        const auto logging = FileLogging::open(path);
        QVERIFY(logging);
        auto handler = logging->handler("test.label");
        handler->setMetadata(handlerMetadata);
        // The file handler prints its own label, not the logger's.
        const Logger logger("other.label", handler);
        logger.log(LogLevel::Info, "hello there", callMetadata, LogSource{"file.cpp", "fn", 12});

        QCOMPARE(readLines(path), QStringList({expected}));
        QCOMPARE(handler->metadata(),
                 handlerMetadata); // the call's metadata did not stick
    }

    // Built twice on one day, in a folder that is not there yet: one file,
    // the second run's lines after the first's, below info nothing.
    void levelFilterAndTheDailyFile()
    {
        const QDateTime now(QDate(2026, 11, 22), QTime(10, 0));
        m_folder = m_dir->path() + QStringLiteral("/deep/er/Logs/");
        const BuiltLogger built = buildLogger(m_folder, now, "en_US");
        QVERIFY2(built.error.isEmpty(), qPrintable(built.error));
        for (int level = int(LogLevel::Trace); level <= int(LogLevel::Critical); ++level)
            built.logger.log(LogLevel(level), "at " + logLevelText(LogLevel(level)));
        buildLogger(m_folder, now.addSecs(3600), "en_US").logger.info("second run");

        QCOMPARE(QDir(m_folder).entryList(QDir::Files), {"app.narv.Narv.20261122.log"});
        QCOMPARE(readLines(fileFor(now)),
                 QStringList({appLine("info", hello()), appLine("info", "at info"),
                              appLine("notice", "at notice"), appLine("warning", "at warning"),
                              appLine("error", "at error"), appLine("critical", "at critical"),
                              appLine("info", hello()), appLine("info", "second run")}));
    }

    void concurrentWritersKeepLinesWhole()
    {
        // Two FileLogging on one file stand for two processes; the long lines
        // would tear if a line took more than one write.
        const QString path = m_dir->filePath("busy.log");
        const auto first = FileLogging::open(path);
        const auto second = FileLogging::open(path);
        QVERIFY(first && second);
        const int threads = 4, perThread = 300;
        const QString filler(3000, u'x');
        std::vector<std::thread> workers;
        for (int t = 0; t < threads; ++t) {
            auto handler = (t % 2 ? *first : *second).handler("busy");
            workers.emplace_back([handler, t, &filler] {
                for (int i = 0; i < perThread; ++i)
                    handler->log(LogLevel::Info, QStringLiteral("%1-%2 ").arg(t).arg(i) + filler,
                                 {}, {}, {});
            });
        }
        for (auto &worker : workers)
            worker.join();

        const QStringList lines = readLines(path);
        QCOMPARE(lines.size(), threads * perThread);
        const QRegularExpression whole(QStringLiteral(R"(^info busy : \d-\d+ x{3000}$)"));
        for (const QString &line : lines)
            QVERIFY2(whole.match(line).hasMatch(), qPrintable(line.left(80)));
    }

    void cleanUpRemovesOnlyOldFilesOfThisApp()
    {
        const QDateTime now(QDate(2026, 11, 22), QTime(10, 0));
        const QString id = AppInfo::identifier();
        const QString today = id + u'.' + logDateText(now, "en_US");
        const QStringList removed{
            id + ".20261121.log",
            id + ".archive/" + id + ".20200101.log", // the relative path counts
            id + ".old.log/inside.txt",              // a folder with a matching name
        };
        const QStringList kept{
            today + ".log",
            "notes.txt",
            "other." + id + ".20200101.log",
            "old/" + id + ".20200101.log",
            id + ".archive/readme.txt",
        };
        for (const QString &name : removed + kept)
            TestSupport::writeFile(m_folder + name, "old\n");

        const BuiltLogger built = buildLogger(m_folder, now, "en_US");
        QVERIFY2(built.error.isEmpty(), qPrintable(built.error));
        for (const QString &name : removed)
            QVERIFY2(!QFileInfo::exists(m_folder + name), qPrintable(name));
        QVERIFY(!QFileInfo::exists(m_folder + id + ".old.log"));
        for (const QString &name : kept)
            QVERIFY2(QFileInfo::exists(m_folder + name), qPrintable(name));
        // Today's file keeps what it had in front of the new record.
        QVERIFY(TestSupport::readFile(fileFor(now)).startsWith("old\n"));
    }

    // The locale of the week comes from LC_ALL, LC_TIME, LANG in that order
    // (every day in each locale: everyDayAgreesWithIcu). 1 Jan 2021 is in
    // the old year's last week in Germany, in week 1 in the US.
    void weekBasedYear_data()
    {
        QTest::addColumn<QStringList>("lcAllTimeLang");
        QTest::addColumn<QString>("expected");
        const QString de = QStringLiteral("de_DE.UTF-8"), us = QStringLiteral("en_US.UTF-8");
        QTest::newRow("LC_ALL first") << QStringList{de, us, us} << "20200101";
        QTest::newRow("LC_TIME before LANG") << QStringList{"", de, us} << "20200101";
        QTest::newRow("LC_TIME before LANG, US") << QStringList{"", us, de} << "20210101";
        QTest::newRow("LANG alone") << QStringList{"", "", de} << "20200101";
    }

    void weekBasedYear()
    {
        QFETCH(QStringList, lcAllTimeLang);
        QFETCH(QString, expected);
        setEnv("LC_ALL", lcAllTimeLang[0]);
        setEnv("LC_TIME", lcAllTimeLang[1]);
        setEnv("LANG", lcAllTimeLang[2]);
        QCOMPARE(logDateText(QDateTime(QDate(2021, 1, 1), QTime(12, 0)), QString()), expected);
    }

    // Outside the last days of December and the first of January the date is
    // worked out without ICU (which would otherwise stay resident): the
    // shortcut gives ICU's answer on every day of several years, in locales
    // whose weeks start on different days and count the first week
    // differently, and with their own digits or calendar (file names keep
    // ASCII Gregorian dates).
    void everyDayAgreesWithIcu_data()
    {
        QTest::addColumn<QString>("locale");
        // Sunday and a first week of one day; Monday and four days (ISO);
        // Saturday; Monday and one day; the POSIX locale.
        for (const char *locale : {"en_US", "de_DE", "ar_EG", "ru_RU", "en_US_POSIX", "fa_IR"})
            QTest::newRow(locale) << QString::fromLatin1(locale);
    }

    void everyDayAgreesWithIcu()
    {
        QFETCH(QString, locale);
        icu::Locale l = icu::Locale::createFromName(locale.toLatin1().constData());
        UErrorCode status = U_ZERO_ERROR;
        l.setKeywordValue("calendar", "gregorian", status);
        l.setKeywordValue("numbers", "latn", status);
        const icu::SimpleDateFormat format(icu::UnicodeString(u"YYYYMMdd"), l, status);
        QVERIFY(U_SUCCESS(status));
        for (QDate day(2019, 12, 1); day <= QDate(2028, 1, 31); day = day.addDays(1)) {
            const QString expected = icuDateText(day, format);
            QCOMPARE(logDateText(QDateTime(day, QTime(12, 0)), locale), expected);
            // Away from the year's turn the week-based year is the calendar year.
            if ((day.month() != 1 || day.day() >= 7) && (day.month() != 12 || day.day() <= 25))
                QCOMPARE(expected.left(4).toInt(), day.year());
        }
    }

    void logfilePathFollowsCacheHomeAndClock()
    {
        setEnv("XDG_CACHE_HOME", m_dir->path());
        setEnv("LC_ALL", "de_DE.UTF-8");
        Clock::setNowSource([] { return QDateTime(QDate(2021, 1, 1), QTime(9, 0)); });
        QCOMPARE(Logger::logfilePath(), m_dir->path() + "/narv/Logs/app.narv.Narv.20200101.log");
        Clock::setNowSource([] { return QDateTime(QDate(2021, 1, 4), QTime(9, 0)); });
        QCOMPARE(Logger::logfilePath(), m_dir->path() + "/narv/Logs/app.narv.Narv.20210104.log");
        QVERIFY(!QFileInfo::exists(m_dir->path() + "/narv")); // nothing made on the way
    }

    void unusableFolderFallsBackToStdout()
    {
        // A plain file where the "narv" folder should be stops root as well.
        const QString blocker = m_dir->path() + "/cache/narv";
        TestSupport::writeFile(blocker, "old\n");
        const auto child = TestSupport::runChild("build", m_dir->path());
        QCOMPARE(child.status, QProcess::NormalExit);
        QCOMPARE(child.exitCode, 0);

        const QString out = QString::fromUtf8(child.out);
        const QString error = out.section(u'\n', 0, 0);
        QVERIFY2(error.startsWith("create logger error: ") && error.contains(blocker),
                 qPrintable(error));
        QCOMPARE(unstamped(out.section(u'\n', 1)),
                 QStringList({appLine("info", hello()), appLine("info", "child done")}));
    }

    void loggingWhileTheLoggerIsBuiltGoesToStderr()
    {
        const auto child = TestSupport::runChild("reentrant", m_dir->path());
        QCOMPARE(child.status, QProcess::NormalExit);
        QCOMPARE(child.exitCode, 0);

        const QStringList err = unstamped(QString::fromUtf8(child.err));
        QVERIFY2(err.contains(appLine("warning", "asked for the time")) &&
                     err.contains(appLine("info", "logged while building")),
                 qPrintable(err.join(u'\n')));
        // Once built, the logger works as usual.
        QCOMPARE(unstamped(QString::fromUtf8(child.out)),
                 QStringList({appLine("info", hello()), appLine("info", "child done")}));
    }

    void fatalMessageIsInTheFileBeforeTheAbort()
    {
        const auto child = TestSupport::runChild("fatal", m_dir->path());
        QCOMPARE(child.status, QProcess::CrashExit);

        const QDir folder(m_dir->path() + "/cache/narv/Logs");
        const QStringList files = folder.entryList(QDir::Files);
        QCOMPARE(files.size(), 1);
        QVERIFY(files[0].startsWith(AppInfo::identifier() + u'.') && files[0].endsWith(".log"));
        QCOMPARE(readLines(folder.filePath(files[0])),
                 QStringList({appLine("info", hello()), appLine("warning", "routed warning"),
                              appLine("critical", "fatal marker 42")}));
    }

    void versionTexts_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("version");
        QTest::newRow("major only") << QStringLiteral("12") << QStringLiteral("12.0.0");
        QTest::newRow("leading zero minor") << QStringLiteral("24.04") << QStringLiteral("24.4.0");
        QTest::newRow("kernel release")
            << QStringLiteral("6.1.0-18-amd64") << QStringLiteral("6.1.0");
        QTest::newRow("four parts") << QStringLiteral("1.2.3.4") << QStringLiteral("1.2.3");
        QTest::newRow("not a version") << QStringLiteral("rolling") << QStringLiteral("");
    }

    void versionTexts()
    {
        QFETCH(QString, text);
        QFETCH(QString, version);
        QCOMPARE(AppInfo::threePartVersion(text), version);
        QCOMPARE(AppInfo::osReleaseVersionId("ID=x\nVERSION_ID=\"" + text + "\"\n"), text);
    }

    void copyrightFollowsTheCalendarYear()
    {
        QDateTime now(QDate(2026, 12, 31), QTime(23, 59, 59));
        Clock::setNowSource([&now] { return now; });
        QVERIFY(AppInfo::copyright().startsWith(QStringLiteral("Copyright \u00A9 2026 ")));
        now = now.addSecs(2);
        QVERIFY(AppInfo::copyright().startsWith(QStringLiteral("Copyright \u00A9 2027 ")));
    }
};

int main(int argc, char **argv)
{
    const auto child = [&] { return childMain(argc, argv); };
    const int code = TestSupport::runChildMode(
        argc, argv, {{"build", child}, {"reentrant", child}, {"fatal", child}});
    if (code >= 0)
        return code;
    QCoreApplication app(argc, argv);
    TestLogging test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_logging.moc"
