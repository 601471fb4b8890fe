// Facts about the program and the machine.

#include "app/AppInfo.h"
#include "app/Clock.h"

#include <QProcess>
#include <QTest>

class TestAppInfo : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void versionTexts_data();
    void versionTexts();
    void osReleaseParsing();
    void copyrightFollowsTheCalendarYear();
    void modelIsTheMachineName();
};

void TestAppInfo::versionTexts_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("version");
    QTest::newRow("major only") << QStringLiteral("12") << QStringLiteral("12.0.0");
    QTest::newRow("leading zero minor") << QStringLiteral("24.04") << QStringLiteral("24.4.0");
    QTest::newRow("three parts") << QStringLiteral("14.2.1") << QStringLiteral("14.2.1");
    QTest::newRow("kernel release") << QStringLiteral("6.1.0-18-amd64") << QStringLiteral("6.1.0");
    QTest::newRow("four parts") << QStringLiteral("1.2.3.4") << QStringLiteral("1.2.3");
    QTest::newRow("not a version") << QStringLiteral("rolling") << QString();
    QTest::newRow("empty") << QString() << QString();
}

void TestAppInfo::versionTexts()
{
    QFETCH(QString, text);
    QFETCH(QString, version);
    QCOMPARE(AppInfo::threePartVersion(text), version);
}

void TestAppInfo::osReleaseParsing()
{
    const QString debian = QStringLiteral("PRETTY_NAME=\"Debian GNU/Linux 12 (bookworm)\"\n"
                                          "NAME=\"Debian GNU/Linux\"\nVERSION_ID=\"12\"\n");
    QCOMPARE(AppInfo::osReleaseVersionId(debian), QStringLiteral("12"));
    QCOMPARE(AppInfo::osReleaseVersionId(QStringLiteral("ID=arch\nVERSION_ID=2024.05.01\n")),
             QStringLiteral("2024.05.01"));
    QCOMPARE(AppInfo::osReleaseVersionId(QStringLiteral("ID=arch\nBUILD_ID=rolling\n")), QString());
    // Whatever the system says, the answer has three numbers.
    QVERIFY(
        AppInfo::osVersion().contains(QRegularExpression(QStringLiteral("^\\d+\\.\\d+\\.\\d+$"))));
}

void TestAppInfo::copyrightFollowsTheCalendarYear()
{
    QDateTime now(QDate(2026, 12, 31), QTime(23, 59, 59));
    Clock::setNowSource([&now] { return now; });
    const QString before = AppInfo::copyright();
    now = now.addSecs(2);
    const QString after = AppInfo::copyright();
    Clock::setNowSource({});
    QVERIFY2(before.startsWith(QStringLiteral("Copyright \u00A9 2026 ")), qPrintable(before));
    QVERIFY2(after.startsWith(QStringLiteral("Copyright \u00A9 2027 ")), qPrintable(after));
    QVERIFY(after.endsWith(QLatin1Char('.')));
}

void TestAppInfo::modelIsTheMachineName()
{
    QProcess uname;
    uname.start(QStringLiteral("uname"), {QStringLiteral("-m")});
    QVERIFY(uname.waitForFinished());
    QCOMPARE(AppInfo::model(), QString::fromLatin1(uname.readAllStandardOutput().trimmed()));
}

QTEST_GUILESS_MAIN(TestAppInfo)
#include "tst_appinfo.moc"
