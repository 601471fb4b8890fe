// The date in the log file's name is the locale's week-based year, then month
// and day. Outside the last days of December and the first of January it is
// worked out without ICU (which would otherwise stay resident); this checks
// that the shortcut gives ICU's answer on every day of several years, in
// locales whose weeks start on different days and count the first week
// differently.

#include "app/FileLogHandler.h"

#include <QTest>

#include <unicode/locid.h>
#include <unicode/smpdtfmt.h>
#include <unicode/unistr.h>

namespace {

// ICU's own answer for the day, noon local time.
QString icuDateText(const QDate &day, const icu::SimpleDateFormat &format)
{
    icu::UnicodeString text;
    format.format(UDate(QDateTime(day, QTime(12, 0)).toMSecsSinceEpoch()), text);
    return QString(reinterpret_cast<const QChar *>(text.getBuffer()), text.length());
}

} // namespace

class TestLogDate : public QObject {
    Q_OBJECT

private Q_SLOTS:
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
        int shortcuts = 0;
        for (QDate day(2019, 12, 1); day <= QDate(2028, 1, 31); day = day.addDays(1)) {
            const QString expected = icuDateText(day, format);
            QCOMPARE(logDateText(QDateTime(day, QTime(12, 0)), locale), expected);
            const bool edge =
                (day.month() == 1 && day.day() < 7) || (day.month() == 12 && day.day() > 25);
            shortcuts += edge ? 0 : 1;
            // Away from the year's turn the week-based year is the calendar year.
            if (!edge)
                QCOMPARE(expected.left(4).toInt(), day.year());
        }
        QVERIFY(shortcuts > 2800);
    }

    // The days at the turn of a year where the week-based year differs.
    void yearTurnStillFollowsTheLocale()
    {
        // 2026-12-28 is a Monday: in ISO weeks (de_DE) 28 to 31 December
        // 2026 are still week 53 of 2026; 2027-01-01 is a Friday and belongs
        // to 2026's last week there too, but to 2027's first week in en_US.
        QCOMPARE(logDateText(QDateTime(QDate(2027, 1, 1), QTime(12, 0)), "de_DE"),
                 QStringLiteral("20260101"));
        QCOMPARE(logDateText(QDateTime(QDate(2027, 1, 1), QTime(12, 0)), "en_US"),
                 QStringLiteral("20270101"));
        // 2024-12-30 (a Monday) is in week 1 of 2025 everywhere here.
        QCOMPARE(logDateText(QDateTime(QDate(2024, 12, 30), QTime(12, 0)), "de_DE"),
                 QStringLiteral("20251230"));
    }
};

QTEST_GUILESS_MAIN(TestLogDate)
#include "tst_logdate.moc"
