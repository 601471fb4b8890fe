#include "app/AppInfo.h"

#include "BuildConfig.h"
#include "app/Clock.h"

#include <QFile>
#include <QRegularExpression>

#include <sys/utsname.h>

QString AppInfo::name()
{
    return QStringLiteral(NARV_NAME);
}

QString AppInfo::version()
{
    return QStringLiteral(NARV_VERSION);
}

QString AppInfo::build()
{
    return QStringLiteral(NARV_BUILD_NUMBER);
}

QString AppInfo::identifier()
{
    return QStringLiteral(NARV_IDENTIFIER);
}

QString AppInfo::copyright()
{
    return QStringLiteral("Copyright \u00A9 %1 The Narv developers.")
        .arg(Clock::now().date().year());
}

QString AppInfo::releaseNotesLink()
{
    return QStringLiteral(NARV_RELEASE_NOTES_URL);
}

QString AppInfo::feedbackAddress()
{
    return QStringLiteral(NARV_FEEDBACK_ADDRESS);
}

QString AppInfo::updateFeed()
{
    return QStringLiteral(NARV_UPDATE_FEED);
}

QString AppInfo::model()
{
    utsname info{};
    if (uname(&info) != 0)
        return {};
    QString machine;
    for (char c : info.machine) {
        if (c == 0)
            continue;
        machine.append(QChar::fromLatin1(c));
    }
    return machine;
}

QString AppInfo::threePartVersion(const QString &text)
{
    static const QRegularExpression leading(QStringLiteral("^(\\d+)(?:\\.(\\d+))?(?:\\.(\\d+))?"));
    const auto match = leading.match(text.trimmed());
    if (!match.hasMatch())
        return {};
    auto part = [&](int i) { return match.captured(i).isEmpty() ? 0 : match.captured(i).toInt(); };
    return QStringLiteral("%1.%2.%3").arg(part(1)).arg(part(2)).arg(part(3));
}

QString AppInfo::osReleaseVersionId(const QString &osReleaseText)
{
    const auto lines = osReleaseText.split(QLatin1Char('\n'));
    for (const QString &line : lines) {
        if (!line.startsWith(QLatin1String("VERSION_ID=")))
            continue;
        QString value = line.mid(11).trimmed();
        if (value.size() >= 2 &&
            (value.startsWith(QLatin1Char('"')) || value.startsWith(QLatin1Char('\''))))
            value = value.mid(1, value.size() - 2);
        return value;
    }
    return {};
}

QString AppInfo::osVersion()
{
    for (const char *path : {"/etc/os-release", "/usr/lib/os-release"}) {
        QFile file(QString::fromLatin1(path));
        if (!file.open(QIODevice::ReadOnly))
            continue;
        const QString version =
            threePartVersion(osReleaseVersionId(QString::fromUtf8(file.readAll())));
        if (!version.isEmpty())
            return version;
    }
    utsname info{};
    if (uname(&info) == 0) {
        const QString kernel = threePartVersion(QString::fromLatin1(info.release));
        if (!kernel.isEmpty())
            return kernel;
    }
    return QStringLiteral("0.0.0");
}
