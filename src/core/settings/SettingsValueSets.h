#pragma once

#include "core/model/FileSortTypes.h"

#include <QFlags>
#include <QObject>
#include <QString>
#include <QStringView>

#include <array>
#include <optional>

// The choices that the application and window settings hold. Raw values are what the settings
// file stores: never renumber them. The sort, filter and subfolder choices live in
// model/FileSortTypes.h with the folder collection that applies them.
//
// The single choices are meta-enums, so that the settings file's reader knows their names and
// members, and valueSetCount() their size. The rest of the program names them without the
// namespace.
namespace SettingsValueSets {
Q_NAMESPACE

// How an image is fitted into a viewer.
enum class ImageDisplayScaling : int {
    percentage = 0,
    alwaysFit = 1,
    shrinkToFit = 2,
};
Q_ENUM_NS(ImageDisplayScaling)

// A fixed zoom; the raw value is the percentage itself.
enum class ImageScalePercentage : int {
    scale200 = 200,
    scale150 = 150,
    scale100 = 100,
    scale50 = 50,
    scale25 = 25,
};
Q_ENUM_NS(ImageScalePercentage)

// Which screen a slideshow or the quick view opens on.
enum class ScreenOption : int {
    activeScreen = 0,
    alternateScreen = 1,
    primaryScreen = 2,
};
Q_ENUM_NS(ScreenOption)

// Where "Open" sends an image: this program, the application that made the file, or the
// application in `openImageCustomApp`.
enum class OpenImageDestination : int {
    pixcove = 0,
    creator = 1,
    other = 2,
};
Q_ENUM_NS(OpenImageDestination)

// Where the embedded preview sits in the browser.
enum class BrowserLayout : int {
    noPreview = 0,
    topPreview = 1,
    rightPreview = 2,
};
Q_ENUM_NS(BrowserLayout)

// Which counts the sidebar shows next to a folder (one choice, not a bit set).
enum class SidebarInfoOptions : int {
    none = 0,
    files = 1,
    folders = 2,
    filesAndFolders = 3,
    images = 4,
    imagesAndFolders = 5,
};
Q_ENUM_NS(SidebarInfoOptions)

enum class InspectorTab : int {
    general = 0,
    exif = 1,
    iptc = 2,
    gps = 3,
    tiff = 4,
};
Q_ENUM_NS(InspectorTab)

// When a slideshow shows the file's information.
enum class SlideshowInfoVisibility : int {
    showNever = 0,
    showAutomatic = 1,
    showAlways = 2,
};
Q_ENUM_NS(SlideshowInfoVisibility)

// How a slideshow passes from one picture to the next.
enum class SlideshowTransitionStyle : int {
    none = 0,
    crossfade = 1,
    slide = 2,
};
Q_ENUM_NS(SlideshowTransitionStyle)

// How often the updater reads the release feed on its own.
enum class UpdateCheckFrequency : int {
    hourly = 0,
    daily = 1,
    weekly = 2,
    monthly = 3,
};
Q_ENUM_NS(UpdateCheckFrequency)

} // namespace SettingsValueSets

using SettingsValueSets::BrowserLayout;
using SettingsValueSets::ImageDisplayScaling;
using SettingsValueSets::ImageScalePercentage;
using SettingsValueSets::InspectorTab;
using SettingsValueSets::OpenImageDestination;
using SettingsValueSets::ScreenOption;
using SettingsValueSets::SidebarInfoOptions;
using SettingsValueSets::SlideshowInfoVisibility;
using SettingsValueSets::SlideshowTransitionStyle;
using SettingsValueSets::UpdateCheckFrequency;

QString inspectorTabTitle(InspectorTab tab);
QString slideshowTransitionStyleTitle(SlideshowTransitionStyle style);
QString updateCheckFrequencyTitle(UpdateCheckFrequency frequency);

// The lines of information under a thumbnail. Any combination is valid, bits that this build
// does not know included: the set is stored as its integer and kept as it is.
enum class ThumbnailInfoOption : int {
    filename = 1 << 0,
    dimensions = 1 << 1,
    fileSize = 1 << 2,
    modificationDate = 1 << 3,
    kind = 1 << 4,
};
Q_DECLARE_FLAGS(ThumbnailInfoOptions, ThumbnailInfoOption)
Q_DECLARE_OPERATORS_FOR_FLAGS(ThumbnailInfoOptions)

// The properties the image information overlay shows; stored like ThumbnailInfoOptions.
enum class ImageInformationOverlayOption : int {
    filename = 1 << 0,
    dimensions = 1 << 1,
    fileSize = 1 << 2,
    date = 1 << 3,
    camera = 1 << 4,
    exposure = 1 << 5,
    location = 1 << 6,
};
Q_DECLARE_FLAGS(ImageInformationOverlayOptions, ImageInformationOverlayOption)
Q_DECLARE_OPERATORS_FOR_FLAGS(ImageInformationOverlayOptions)

// One-time alerts and warnings the user asked not to see again. The set is stored as an array of
// the cases' text raw values, so the bits below never reach the file.
enum class AlertsAndWarning : int {
    folderDepthWarning = 1 << 0,
};
Q_DECLARE_FLAGS(AlertsAndWarnings, AlertsAndWarning)
Q_DECLARE_OPERATORS_FOR_FLAGS(AlertsAndWarnings)
inline constexpr std::array allAlertsAndWarnings{AlertsAndWarning::folderDepthWarning};
QString alertsAndWarningRawValue(AlertsAndWarning warning);
std::optional<AlertsAndWarning> alertsAndWarningForRawValue(QStringView rawValue);

// The sections of the settings window, in their order; the last one shown is kept only while the
// program runs.
enum class SettingsSection : int {
    general = 0,
    browser = 1,
    imageViewing = 2,
    favorites = 3,
    hotkeys = 4,
};
