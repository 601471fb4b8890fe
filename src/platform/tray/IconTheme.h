#pragma once

#include <QHash>
#include <QString>
#include <QStringList>

// Whether the desktop's icon theme has an icon of a given name, the way icon
// themes are laid out on disk: the theme's folder in each base folder, the
// subfolders its index.theme lists, the themes it inherits, then hicolor, then
// the icons lying loose in the base folders (/usr/share/pixmaps). Only the
// name counts, not the sizes: panels pick the size.
//
// The counting process has no QtGui, so no platform theme tells it which
// theme the desktop uses; sessionThemeName() reads what the desktops write.
class IconTheme {
public:
    // `name` and the themes it inherits, looked up under `baseFolders` (in
    // that order: the first index.theme found describes a theme).
    IconTheme(const QString &name, const QStringList &baseFolders);

    // The session's theme in the session's base folders, read on first use
    // and kept: a theme changed while we run shows after a restart.
    static const IconTheme &current();

    // KDE (XDG_CURRENT_DESKTOP names it): kdeglobals' [Icons] Theme, else
    // "breeze". Elsewhere GTK's gtk-icon-theme-name from gtk-3.0/settings.ini,
    // then gtk-4.0, else "Adwaita".
    static QString sessionThemeName();
    // ~/.icons, $XDG_DATA_HOME/icons, each of $XDG_DATA_DIRS' icons, /usr/share/pixmaps.
    static QStringList sessionBaseFolders();

    // The freedesktop icon name standing for one of the menu's symbols
    // ("stop.circle": "media-playback-stop"); empty when there is none.
    static QString symbolName(const QString &symbol);

    // The theme, what it inherits (depth first, each once), and hicolor last.
    QStringList themes() const { return m_themes; }
    bool has(const QString &iconName) const;

private:
    void addTheme(const QString &name);

    QStringList m_baseFolders;
    QStringList m_themes;
    QStringList m_iconFolders; // every listed subfolder of every theme that exists, in order
    mutable QHash<QString, bool> m_found; // icon name -> has it
};
