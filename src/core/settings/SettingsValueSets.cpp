#include "core/settings/SettingsValueSets.h"

#include "core/app/Translate.h"

namespace {
constexpr Translator tr("SettingsValueSets");
} // namespace

QString inspectorTabTitle(InspectorTab tab)
{
    switch (tab) {
    case InspectorTab::general: return tr("General");
    case InspectorTab::exif: return tr("EXIF");
    case InspectorTab::iptc: return tr("IPTC");
    case InspectorTab::gps: return tr("GPS");
    case InspectorTab::tiff: return tr("TIFF");
    }
    return {};
}

QString slideshowTransitionStyleTitle(SlideshowTransitionStyle style)
{
    switch (style) {
    case SlideshowTransitionStyle::none: return tr("None");
    case SlideshowTransitionStyle::crossfade: return tr("Crossfade");
    case SlideshowTransitionStyle::slide: return tr("Slide");
    }
    return {};
}

QString updateCheckFrequencyTitle(UpdateCheckFrequency frequency)
{
    switch (frequency) {
    case UpdateCheckFrequency::hourly: return tr("Hourly");
    case UpdateCheckFrequency::daily: return tr("Daily");
    case UpdateCheckFrequency::weekly: return tr("Weekly");
    case UpdateCheckFrequency::monthly: return tr("Monthly");
    }
    return {};
}

QString alertsAndWarningRawValue(AlertsAndWarning warning)
{
    switch (warning) {
    case AlertsAndWarning::folderDepthWarning: return QStringLiteral("folderDepthWarning");
    }
    return {};
}

std::optional<AlertsAndWarning> alertsAndWarningForRawValue(QStringView rawValue)
{
    for (const AlertsAndWarning warning : allAlertsAndWarnings) {
        if (rawValue == alertsAndWarningRawValue(warning))
            return warning;
    }
    return std::nullopt;
}
