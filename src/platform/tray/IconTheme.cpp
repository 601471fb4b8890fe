#include "IconTheme.h"

#include <QDir>
#include <QFileInfo>
#include <QSettings>
#include <QStandardPaths>

namespace {
const QString hicolor = QStringLiteral("hicolor");

// The key ("group/key") of an ini-style file (kdeglobals, GTK's
// settings.ini, index.theme): QSettings takes the quotes some settings tools
// put around a value, and reads a comma list as a list.
QVariant iniValue(const QString &path, const QString &key)
{
    return QSettings(path, QSettings::IniFormat).value(key);
}

// The key's value in the first configuration folder (the user's first)
// whose file of one of these names sets it; empty when none does.
QString configValue(const QStringList &names, const QString &key)
{
    for (const QString &folder :
         QStandardPaths::standardLocations(QStandardPaths::GenericConfigLocation)) {
        for (const QString &name : names) {
            if (const QString value = iniValue(folder + u'/' + name, key).toString();
                !value.isEmpty())
                return value;
        }
    }
    return {};
}
} // namespace

IconTheme::IconTheme(const QString &name, const QStringList &baseFolders)
    : m_baseFolders(baseFolders)
{
    addTheme(name);
    addTheme(hicolor);
    // Last, the icons that lie loose in the base folders, in no theme.
    m_iconFolders.append(m_baseFolders);
}

const IconTheme &IconTheme::current()
{
    static const IconTheme theme(sessionThemeName(), sessionBaseFolders());
    return theme;
}

QString IconTheme::sessionThemeName()
{
    const QStringList desktops =
        qEnvironmentVariable("XDG_CURRENT_DESKTOP").split(u':', Qt::SkipEmptyParts);
    if (desktops.contains(QLatin1String("KDE"), Qt::CaseInsensitive)) {
        const QString theme =
            configValue({QStringLiteral("kdeglobals")}, QStringLiteral("Icons/Theme"));
        return theme.isEmpty() ? QStringLiteral("breeze") : theme;
    }
    // GNOME keeps its choice in dconf, which only GTK itself reads; what the
    // settings tools also write into settings.ini is the best we can see.
    const QString theme = configValue(
        {QStringLiteral("gtk-3.0/settings.ini"), QStringLiteral("gtk-4.0/settings.ini")},
        QStringLiteral("Settings/gtk-icon-theme-name"));
    return theme.isEmpty() ? QStringLiteral("Adwaita") : theme;
}

QStringList IconTheme::sessionBaseFolders()
{
    QStringList folders{QDir::homePath() + QStringLiteral("/.icons")};
    for (const QString &data :
         QStandardPaths::standardLocations(QStandardPaths::GenericDataLocation))
        folders.append(data + QStringLiteral("/icons"));
    folders.append(QStringLiteral("/usr/share/pixmaps"));
    folders.removeDuplicates();
    return folders;
}

QString IconTheme::symbolName(const QString &symbol)
{
    // The freedesktop icon names have no drop: ours is always used.
    static const QHash<QString, QString> names = {
        {QStringLiteral("stop.circle"), QStringLiteral("media-playback-stop")},
        {QStringLiteral("play.circle"), QStringLiteral("media-playback-start")},
        {QStringLiteral("gearshape.circle"), QStringLiteral("preferences-system")},
        {QStringLiteral("arrow.counterclockwise.icloud"), QStringLiteral("system-software-update")},
        {QStringLiteral("mail.stack"), QStringLiteral("mail-message-new")},
        {QStringLiteral("info.circle"), QStringLiteral("help-about")},
        {QStringLiteral("escape"), QStringLiteral("application-exit")},
    };
    return names.value(symbol);
}

void IconTheme::addTheme(const QString &name)
{
    // Seen already: also what stops themes that inherit each other.
    if (name.isEmpty() || m_themes.contains(name))
        return;
    // The first index.theme found describes the theme; its folders count in
    // every base folder, so that a user can add icons to a system theme.
    QString index;
    for (const QString &base : std::as_const(m_baseFolders)) {
        index = base + u'/' + name + QStringLiteral("/index.theme");
        if (QFileInfo::exists(index))
            break;
        index.clear();
    }
    const auto list = [&index](const char *key) {
        return iniValue(index, QStringLiteral("Icon Theme/") + QLatin1String(key)).toStringList();
    };
    if (index.isEmpty())
        return; // not installed
    m_themes.append(name);
    for (const QString &subfolder : list("Directories") + list("ScaledDirectories")) {
        for (const QString &base : std::as_const(m_baseFolders)) {
            const QString folder = base + u'/' + name + u'/' + subfolder;
            if (QFileInfo(folder).isDir())
                m_iconFolders.append(folder);
        }
    }
    // hicolor comes after every other theme, whoever names it.
    for (const QString &parent : list("Inherits")) {
        if (parent != hicolor)
            addTheme(parent);
    }
}

bool IconTheme::has(const QString &iconName) const
{
    if (iconName.isEmpty() || iconName.contains(u'/'))
        return false;
    if (const auto known = m_found.constFind(iconName); known != m_found.cend())
        return known.value();
    bool found = false;
    for (const QString &folder : m_iconFolders) {
        for (const char *extension : {".png", ".svg", ".xpm"})
            found = found || QFileInfo::exists(folder + u'/' + iconName + QLatin1String(extension));
    }
    m_found.insert(iconName, found);
    return found;
}
