#include "core/shell/BuildConfiguration.h"

#include "pixcove_build_config.h"

namespace BuildConfiguration {

QString version()
{
    return QStringLiteral(PIXCOVE_CONFIG_VERSION);
}

QString buildNumber()
{
    return QStringLiteral(PIXCOVE_CONFIG_BUILD_NUMBER);
}

QString websiteLink()
{
    return QStringLiteral(PIXCOVE_CONFIG_WEBSITE_URL);
}

QString releaseNotesLink()
{
    return QStringLiteral(PIXCOVE_CONFIG_RELEASE_NOTES_URL);
}

QString bugReportLink()
{
    return QStringLiteral(PIXCOVE_CONFIG_BUG_REPORT_URL);
}

QString bugReportAuth()
{
    return QStringLiteral(PIXCOVE_CONFIG_BUG_REPORT_AUTH);
}

QString appcastLink()
{
    return QStringLiteral(PIXCOVE_CONFIG_APPCAST_URL);
}

} // namespace BuildConfiguration
