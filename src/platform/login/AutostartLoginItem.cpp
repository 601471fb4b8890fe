#include "platform/login/AutostartLoginItem.h"

#include "app/AppInfo.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>
#include <QStandardPaths>

namespace {
// Exec values quote arguments with double quotes and escape \ " ` $ inside them.
QString quoteExec(const QString &path)
{
    QString quoted = path;
    for (const char *c : {"\\", "\"", "`", "$"})
        quoted.replace(QLatin1String(c), QLatin1String("\\") + QLatin1String(c));
    if (quoted.contains(QLatin1Char(' ')) || quoted != path)
        return QLatin1Char('"') + quoted + QLatin1Char('"');
    return quoted;
}
} // namespace

AutostartLoginItem::AutostartLoginItem(QString executable) : m_executable(std::move(executable))
{
}

QString AutostartLoginItem::entryPath()
{
    return QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation) +
           QStringLiteral("/autostart/") + AppInfo::identifier() + QStringLiteral(".desktop");
}

QString AutostartLoginItem::currentExecutable()
{
    const QString appImage = qEnvironmentVariable("APPIMAGE");
    if (!appImage.isEmpty())
        return appImage;
    return QCoreApplication::applicationFilePath();
}

QString AutostartLoginItem::entryText() const
{
    return QStringLiteral("[Desktop Entry]\n"
                          "Type=Application\n"
                          "Name=%1\n"
                          "Comment=Break and water reminder\n"
                          "Exec=%2\n"
                          "Icon=%3\n"
                          "Terminal=false\n"
                          "NoDisplay=true\n"
                          "X-GNOME-Autostart-enabled=true\n")
        .arg(AppInfo::name(), quoteExec(m_executable), AppInfo::identifier());
}

bool AutostartLoginItem::setEnabled(bool enabled, QString *error)
{
    const QString path = entryPath();
    if (!enabled) {
        if (!QFileInfo::exists(path))
            return true;
        QFile file(path);
        if (file.remove())
            return true;
        *error = QStringLiteral("cannot remove %1: %2").arg(path, file.errorString());
        return false;
    }
    if (!QDir().mkpath(QFileInfo(path).absolutePath())) {
        *error = QStringLiteral("cannot create %1").arg(QFileInfo(path).absolutePath());
        return false;
    }
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly)) {
        *error = QStringLiteral("cannot write %1: %2").arg(path, file.errorString());
        return false;
    }
    file.write(entryText().toUtf8());
    if (!file.commit()) {
        *error = QStringLiteral("cannot write %1: %2").arg(path, file.errorString());
        return false;
    }
    return true;
}
