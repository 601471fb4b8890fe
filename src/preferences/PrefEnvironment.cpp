#include "preferences/PrefEnvironment.h"

#include "app/AppInfo.h"
#include "app/AppState.h"
#include "app/IconFont.h"
#include "app/Log.h"
#include "platform/login/AutostartLoginItem.h"
#include "platform/login/LoginItemBackend.h"
#include "settings/PreferencesStore.h"

#include <QFile>
#include <QQmlEngine>

PrefEnvironment *PrefEnvironment::create(QQmlEngine *, QJSEngine *)
{
    // The settings live as long as the process; the engine must never delete them.
    QQmlEngine::setObjectOwnership(AppState::prefState(), QQmlEngine::CppOwnership);
    QQmlEngine::setObjectOwnership(AppState::prefState()->styleState(), QQmlEngine::CppOwnership);
    QQmlEngine::setObjectOwnership(AppState::waterState(), QQmlEngine::CppOwnership);
    QQmlEngine::setObjectOwnership(PrefInterruptState::instance(), QQmlEngine::CppOwnership);
    return new PrefEnvironment;
}

PrefState *PrefEnvironment::prefState() const
{
    return AppState::prefState();
}

PrefStyleState *PrefEnvironment::styleState() const
{
    return AppState::prefState()->styleState();
}

PrefWaterState *PrefEnvironment::waterState() const
{
    return AppState::waterState();
}

PrefInterruptState *PrefEnvironment::interruptState() const
{
    return PrefInterruptState::instance();
}

QString PrefEnvironment::versionLine()
{
    return QStringLiteral("v") + AppInfo::version() + QLatin1Char('(') + AppInfo::build() +
           QLatin1Char(')');
}

QString PrefEnvironment::iconFontFamily()
{
    return IconFont::name();
}

QString PrefEnvironment::iconGlyph()
{
    return IconFont(IconFont::narv).rawValue();
}

std::optional<bool> PrefEnvironment::loginItemRegistered()
{
    if (LoginItemBackend::insideFlatpak())
        return std::nullopt;
    QFile entry(AutostartLoginItem::entryPath());
    if (!entry.open(QIODevice::ReadOnly | QIODevice::Text))
        return false;
    // Session settings switch an entry off rather than delete it: GNOME with
    // X-GNOME-Autostart-enabled=false, the others with Hidden=true.
    while (!entry.atEnd()) {
        const QString line = QString::fromUtf8(entry.readLine()).trimmed();
        const qsizetype eq = line.indexOf(QLatin1Char('='));
        if (eq < 0)
            continue;
        const QString key = line.left(eq).trimmed();
        const QString value = line.mid(eq + 1).trimmed().toLower();
        if (key == QLatin1String("Hidden") && value == QLatin1String("true"))
            return false;
        if (key == QLatin1String("X-GNOME-Autostart-enabled") && value == QLatin1String("false"))
            return false;
    }
    return true;
}

void PrefEnvironment::syncLoginItem()
{
    const std::optional<bool> registered = loginItemRegistered();
    PrefState *pref = AppState::prefState();
    if (!registered || *registered == pref->launchAtLogin())
        return;
    LOG_INFO(QStringLiteral("launch at login: the setting says %1 but the autostart entry %2; "
                            "the settings show the entry's state")
                 .arg(pref->launchAtLogin() ? QStringLiteral("on") : QStringLiteral("off"),
                      *registered ? QStringLiteral("is there")
                                  : QStringLiteral("is missing or switched off")));
    // Straight into the store: the setter would register or unregister the
    // login item, which is already in the state being recorded.
    PreferencesStore::instance().setBool(QString::fromLatin1(PrefState::launchAtLoginKey),
                                         *registered);
}
