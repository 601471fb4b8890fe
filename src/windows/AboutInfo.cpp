#include "windows/AboutInfo.h"

#include "app/AppInfo.h"
#include "app/Localized.h"

QString AboutInfo::name() const
{
    return AppInfo::name();
}

QString AboutInfo::versionLine() const
{
    return NARV_TR("Version %1 (%2)").arg(AppInfo::version(), AppInfo::build());
}

QString AboutInfo::copyright() const
{
    return AppInfo::copyright();
}

QString AboutInfo::releaseNotesLink() const
{
    return AppInfo::releaseNotesLink();
}
