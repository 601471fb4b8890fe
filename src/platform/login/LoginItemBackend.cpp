#include "platform/login/LoginItemBackend.h"

#include "platform/login/AutostartLoginItem.h"
#include "platform/login/PortalLoginItem.h"

#include <QFileInfo>

bool LoginItemBackend::insideFlatpak()
{
    return QFileInfo::exists(QStringLiteral("/.flatpak-info"));
}

std::unique_ptr<LoginItem> LoginItemBackend::create()
{
    if (insideFlatpak())
        return std::make_unique<PortalLoginItem>();
    return std::make_unique<AutostartLoginItem>(AutostartLoginItem::currentExecutable());
}
