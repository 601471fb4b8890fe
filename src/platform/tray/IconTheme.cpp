#include "IconTheme.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>
#include <QStandardPaths>

namespace {
const QString hicolor = QStringLiteral("hicolor");

// The keys of one [group] of an ini-style file (index.theme, kdeglobals,
// GTK's settings.ini); empty when the file or the group is missing. QSettings
// would read "\" and "%" as escapes and "," as a list where these files mean
// none of that.
QHash<QString, QString> iniGroup(const QString &path, const QString &group)
{
    QHash<QString, QString> values;
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly | QIODevice::Text))
        return values;
    const QString header = u'[' + group + u']';
    bool inside = false;
    while (!file.atEnd()) {
        const QString line = QString::fromUtf8(file.readLine()).trimmed();
        if (line.startsWith(u'[')) {
            inside = line == header;
            continue;
        }
        const qsizetype equals = line.indexOf(u'=');
        if (inside && equals > 0 && !line.startsWith(u'#') && !line.startsWith(u';'))
            values.insert(line.left(equals).trimmed(), line.mid(equals + 1).trimmed());
    }
    return values;
}

// The key's value in the first configuration folder (the user's first)
// whose file of one of these names sets it, without the quotes some settings
// tools put around it; empty when none does.
QString configValue(const QStringList &names, const QString &group, const QString &key)
{
    for (const QString &folder :
         QStandardPaths::standardLocations(QStandardPaths::GenericConfigLocation)) {
        for (const QString &name : names) {
            QString value = iniGroup(folder + u'/' + name, group).value(key);
            if (value.size() >= 2 && value.startsWith(u'"') && value.endsWith(u'"'))
                value = value.mid(1, value.size() - 2);
            if (!value.isEmpty())
                return value;
        }
    }
    return {};
}

QStringList commaList(const QString &value)
{
    static const QRegularExpression comma(QStringLiteral("\\s*,\\s*"));
    return value.trimmed().split(comma, Qt::SkipEmptyParts);
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
        const QString theme = configValue({QStringLiteral("kdeglobals")}, QStringLiteral("Icons"),
                                          QStringLiteral("Theme"));
        return theme.isEmpty() ? QStringLiteral("breeze") : theme;
    }
    // GNOME keeps its choice in dconf, which only GTK itself reads; what the
    // settings tools also write into settings.ini is the best we can see.
    const QString theme = configValue(
        {QStringLiteral("gtk-3.0/settings.ini"), QStringLiteral("gtk-4.0/settings.ini")},
        QStringLiteral("Settings"), QStringLiteral("gtk-icon-theme-name"));
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
    QHash<QString, QString> index;
    for (const QString &base : std::as_const(m_baseFolders)) {
        const QString path = base + u'/' + name + QStringLiteral("/index.theme");
        if (QFileInfo::exists(path)) {
            index = iniGroup(path, QStringLiteral("Icon Theme"));
            break;
        }
    }
    if (index.isEmpty())
        return; // not installed
    m_themes.append(name);
    const QStringList subfolders = commaList(index.value(QStringLiteral("Directories"))) +
                                   commaList(index.value(QStringLiteral("ScaledDirectories")));
    for (const QString &subfolder : subfolders) {
        for (const QString &base : std::as_const(m_baseFolders)) {
            const QString folder = base + u'/' + name + u'/' + subfolder;
            if (QFileInfo(folder).isDir())
                m_iconFolders.append(folder);
        }
    }
    // hicolor comes after every other theme, whoever names it.
    for (const QString &parent : commaList(index.value(QStringLiteral("Inherits")))) {
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
