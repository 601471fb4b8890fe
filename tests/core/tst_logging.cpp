// The log file: its line format, the daily file and its clean-up, the
// week-based year in its name, and, in child processes, a logger built in
// trouble and a fatal Qt message.

#include "LogTail.h"
#include "TestSupport.h"

#include "app/AppInfo.h"
#include "app/Clock.h"
#include "app/FileLogHandler.h"
#include "app/Log.h"

#include <QCoreApplication>
#include <QDir>
#include <QRegularExpression>
#include <QTest>

#include <unicode/locid.h>
#include <unicode/smpdtfmt.h>
#include <unicode/unistr.h>

namespace {

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
    static const QRegularExpression stamp(
        QStringLiteral(R"(^\d{4}-\d{2}-\d{2}T\d{2}:\d{2}:\d{2}[+-]\d{4} )"));
    QStringList lines = text.split(u'\n', Qt::SkipEmptyParts);
    for (QString &line : lines)
        line = stamp.match(line).hasMatch() ? line.section(u' ', 1) : "no timestamp: " + line;
    return lines;
}

// The variables the locale of the week comes from, in the order they count.
const char *const localeVariables[] = {"LC_ALL", "LC_TIME", "LANG"};

// The test binary as a child, Qt's messages routed: "fatal" ends with qFatal;
// "build" logs once, and so does its clock, asked while the logger is built.
int childMain(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
    TestSupport::ScratchHome home;
    installQtMessageRouting();
    if (QByteArray(argv[2]) == "fatal") {
        qDebug("routed debug");
        qWarning("routed warning");
        qFatal("fatal marker %d", 42);
    }
    Clock::setNowSource([] {
        qWarning("asked for the time");
        LOG_INFO(QStringLiteral("logged while building"));
        return QDateTime::currentDateTime();
    });
    LOG_INFO(QStringLiteral("child done"));
    return 0;
}

} // namespace

class TestLogging : public QObject {
    Q_OBJECT

    TestSupport::ScratchHome m_home;
    const QProcessEnvironment m_env = QProcessEnvironment::systemEnvironment();

private Q_SLOTS:
    void cleanup()
    {
        for (const char *name : localeVariables)
            qputenv(name, m_env.value(QString::fromLatin1(name)).toLocal8Bit());
    }

    // Built twice on one day, in a folder with other days' files: one file for
    // the day, the second run's lines after the first's, nothing below info,
    // and each line "<time> <level> <label> : <metadata> <message>".
    void lineFormatAndTheDailyFile()
    {
        const QDateTime now(QDate(2026, 11, 22), QTime(10, 0));
        const QString folder = m_home.path() + QStringLiteral("/Logs/");
        QVERIFY(TestSupport::writeFile(folder + "app.narv.Narv.20261121.log", "yesterday\n"));
        QVERIFY(TestSupport::writeFile(folder + "notes.txt", "not a log\n"));
        const BuiltLogger built = buildLogger(folder, now, "en_US");
        QVERIFY2(built.error.isEmpty(), qPrintable(built.error));
        built.logger.debug("left out");
        built.logger.log(LogLevel::Warning, "hello there",
                         {{"a", 1}, {"list", QStringList{"p", "q"}}});
        buildLogger(folder, now.addSecs(3600), "en_US").logger.info("second run");

        QCOMPARE(QDir(folder).entryList(QDir::Files),
                 QStringList({"app.narv.Narv.20261122.log", "notes.txt"}));
        QCOMPARE(unstamped(QString::fromUtf8(TestSupport::readFile(built.file))),
                 QStringList({appLine("info", hello()),
                              appLine("warning", "a=1 list=[p, q] hello there"),
                              appLine("info", hello()), appLine("info", "second run")}));
    }

    // The locale of the week comes from LC_ALL, LC_TIME, LANG in that order:
    // 1 Jan 2021 is in the old year's last week in Germany, in week 1 in the US.
    void weekBasedYearFollowsTheLocale_data()
    {
        QTest::addColumn<QStringList>("lcAllTimeLang");
        QTest::addColumn<QString>("expected");
        const QString de = QStringLiteral("de_DE.UTF-8"), us = QStringLiteral("en_US.UTF-8");
        QTest::newRow("LC_ALL first") << QStringList{de, us, us} << "20200101";
        QTest::newRow("LC_TIME before LANG") << QStringList{"", us, de} << "20210101";
        QTest::newRow("LANG alone") << QStringList{"", "", de} << "20200101";
    }

    void weekBasedYearFollowsTheLocale()
    {
        QFETCH(QStringList, lcAllTimeLang);
        QFETCH(QString, expected);
        for (int i = 0; i < 3; ++i)
            qputenv(localeVariables[i], lcAllTimeLang[i].toLocal8Bit());
        QCOMPARE(logDateText(QDateTime(QDate(2021, 1, 1), QTime(12, 0))), expected);
    }

    // Away from the year's turn the date is worked out without ICU: on every
    // day of several years it gives ICU's answer, in locales whose weeks start
    // on Sunday, Monday (ISO) and Saturday, and with their own digits and
    // calendar (file names keep ASCII Gregorian dates).
    void everyDayAgreesWithIcu_data()
    {
        QTest::addColumn<QString>("locale");
        for (const char *locale : {"en_US", "de_DE", "ar_EG", "ru_RU", "en_US_POSIX", "fa_IR"})
            QTest::newRow(locale) << QString::fromLatin1(locale);
    }

    void everyDayAgreesWithIcu()
    {
        QFETCH(QString, locale);
        const icu::Locale l((locale + "@calendar=gregorian;numbers=latn").toLatin1().constData());
        UErrorCode status = U_ZERO_ERROR;
        const icu::SimpleDateFormat format(icu::UnicodeString(u"YYYYMMdd"), l, status);
        QVERIFY(U_SUCCESS(status));
        for (QDate day(2019, 12, 1); day <= QDate(2028, 1, 31); day = day.addDays(1)) {
            const QDateTime noon(day, QTime(12, 0));
            icu::UnicodeString text;
            format.format(UDate(noon.toMSecsSinceEpoch()), text);
            QCOMPARE(logDateText(noon, locale),
                     QString(reinterpret_cast<const QChar *>(text.getBuffer()), text.length()));
        }
    }

    // The folder cannot be made (a plain file where "narv" should be stops root
    // too): a clear line, the records on standard output; those made during the
    // build on standard error, as waiting for the logger there would never end.
    void troubledBuildFallsBackToTheStreams()
    {
        const QString blocker = m_home.path() + "/cache/narv";
        QVERIFY(TestSupport::writeFile(blocker, "old\n"));
        const auto child = TestSupport::runChild("build", m_home.path());
        QCOMPARE(child.exitCode, 0);

        const QString out = QString::fromUtf8(child.out);
        const QString error = out.section(u'\n', 0, 0);
        QVERIFY2(error.startsWith("create logger error: ") && error.contains(blocker),
                 qPrintable(error));
        QCOMPARE(unstamped(out.section(u'\n', 1)),
                 QStringList({appLine("info", hello()), appLine("info", "child done")}));
        const QStringList err = unstamped(QString::fromUtf8(child.err));
        QVERIFY2(err.contains(appLine("warning", "asked for the time")) &&
                     err.contains(appLine("info", "logged while building")),
                 qPrintable(err.join(u'\n')));
    }

    // Qt's messages from debug up, routed: all but the debug line, and the
    // fatal one in the file before the abort.
    void fatalMessageIsInTheFileBeforeTheAbort()
    {
        const auto child = LogTail::runFatalChild("fatal", m_home.path());
        QVERIFY(child.crashed);
        QCOMPARE(unstamped(QString::fromUtf8(child.log)),
                 QStringList({appLine("info", hello()), appLine("warning", "routed warning"),
                              appLine("critical", "fatal marker 42")}));
    }
};

int main(int argc, char **argv)
{
    const auto child = [&] { return childMain(argc, argv); };
    const int code = TestSupport::runChildMode(argc, argv, {{"build", child}, {"fatal", child}});
    if (code >= 0)
        return code;
    QCoreApplication app(argc, argv);
    TestLogging test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_logging.moc"
