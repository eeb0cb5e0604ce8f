#include "ui/settings/SettingRows.h"

#include "core/app/Translate.h"
#include "core/model/FileSortTypes.h"

// Labels and headings are translated in the context "SettingRows" when they are shown.
#define LABEL(text) QT_TRANSLATE_NOOP("SettingRows", text)

namespace {

constexpr Translator tr("SettingRows");

using Owner = SettingRow::Owner;
using Section = SettingsSection;

// Raw values of the choices that other rows depend on.
constexpr int fixedZoom = int(ImageDisplayScaling::percentage);
constexpr int otherApplication = int(OpenImageDestination::other);

SettingRow row(SettingsSection section, const char *group, Owner owner, const char *property, const char *label)
{
    SettingRow row;
    row.section = section;
    row.group = group;
    row.owner = owner;
    row.property = property;
    row.label = label;
    return row;
}

QList<SettingRow> makeRows()
{
    const char *application = LABEL("Application");
    const char *opening = LABEL("Opening Images");
    const char *videos = LABEL("Videos");
    const char *sidebar = LABEL("Sidebar");
    const char *thumbnails = LABEL("Thumbnails");
    const char *appearance = LABEL("Thumbnail Appearance");
    const char *preview = LABEL("Preview");
    const char *updates = LABEL("Updates");
    const char *quickview = LABEL("Quick View");
    const char *imageWindows = LABEL("Image Windows");
    const char *slideshow = LABEL("Slideshow");
    const Owner app = Owner::app;
    const Owner show = Owner::slideshow;

    return {
        row(Section::general, application, app, "hideOnDeactivate",
            LABEL("Hide Pixcove when another application becomes active")),
        row(Section::general, application, app, "detailedLogging", LABEL("Detailed logging (for bug reports)")),
        row(Section::general, opening, app, "openImageDestination", LABEL("Open images in")),
        row(Section::general, opening, app, "openImageCustomApp", LABEL("Application"))
            .when("openImageDestination", otherApplication),
        row(Section::general, videos, app, "alwaysUseThirdPartyVideoPlayer",
            LABEL("Always play videos with the VLC player")),
        row(Section::general, updates, app, "automaticallyChecksForUpdates", LABEL("Check for updates automatically")),
        row(Section::general, updates, app, "updateCheckFrequency", LABEL("Check")),
        row(Section::browser, sidebar, app, "sidebarAllowsKeyboardControl",
            LABEL("Arrow keys move through the sidebar")),
        row(Section::browser, sidebar, app, "sidebarAutoexpandOnSelection",
            LABEL("Expand a folder when it is selected")),
        row(Section::browser, sidebar, app, "sidebarRenameOnlyOnEnter",
            LABEL("Rename folders only with the Enter key")),
        row(Section::browser, thumbnails, app, "thumbnailsRenameOnlyOnEnter",
            LABEL("Rename files only with the Enter key")),
        row(Section::browser, thumbnails, app, "thumbnailsAutoselectFirstItem",
            LABEL("Select the first item when a folder opens")),
        row(Section::browser, thumbnails, app, "thumbnailsAutoselectNextItemAfterMove",
            LABEL("Select the next item after moving one away")),
        row(Section::browser, appearance, app, "thumbnailsHaveOutline", LABEL("Outline thumbnails")),
        row(Section::browser, appearance, app, "thumbnailOutlineColor", LABEL("Outline colour"))
            .when("thumbnailsHaveOutline"),
        row(Section::browser, appearance, app, "thumbnailOutlineThickness", LABEL("Outline thickness"))
            .when("thumbnailsHaveOutline")
            .range(1, 10, 1, LABEL(" pt")),
        row(Section::browser, appearance, app, "thumbnailsHaveShadow", LABEL("Shadow under thumbnails")),
        row(Section::browser, appearance, app, "thumbnailsAlignToBottom", LABEL("Align thumbnails to the bottom")),
        row(Section::browser, appearance, app, "thumbnailTextColor", LABEL("Text colour")),
        row(Section::browser, appearance, app, "thumbnailBackgroundColor", LABEL("Background colour")),
        row(Section::browser, preview, app, "thumbnailsPreviewPauseWhenLosingKey",
            LABEL("Pause videos when the window is in the background")),
        row(Section::browser, preview, app, "thumbnailsPreviewAllowsKeyboardControl",
            LABEL("Keys control the preview's video")),
        row(Section::imageViewing, quickview, app, "quickviewImageScaling", LABEL("Scaling")),
        row(Section::imageViewing, quickview, app, "quickviewImageScalingPercentage", LABEL("Zoom"))
            .when("quickviewImageScaling", fixedZoom),
        row(Section::imageViewing, quickview, app, "quickviewRetainZoomBetweenItems",
            LABEL("Keep the zoom from one item to the next")),
        row(Section::imageViewing, quickview, app, "quickviewBackgroundColor", LABEL("Background")),
        row(Section::imageViewing, quickview, app, "quickviewScreen", LABEL("Screen")),
        row(Section::imageViewing, quickview, app, "quickviewTransitionDuration", LABEL("Transition"))
            .range(0, 5, 0.1, LABEL(" s")),
        row(Section::imageViewing, quickview, app, "quickviewAutohide",
            LABEL("Hide the quick view when Pixcove is in the background")),
        row(Section::imageViewing, quickview, app, "quickviewOpensOnLaunch", LABEL("Open the quick view at start")),
        row(Section::imageViewing, quickview, app, "quickviewAutoplayVideo", LABEL("Play videos at once")),
        row(Section::imageViewing, quickview, app, "quickviewMuteVideo", LABEL("Mute videos")),
        row(Section::imageViewing, imageWindows, app, "imageWindowImageScaling", LABEL("Scaling")),
        row(Section::imageViewing, imageWindows, app, "imageWindowImageScalingPercentage", LABEL("Zoom"))
            .when("imageWindowImageScaling", fixedZoom),
        row(Section::imageViewing, slideshow, show, "interval", LABEL("Show each picture for"))
            .range(0.1, 3600, 0.5, LABEL(" s")),
        row(Section::imageViewing, slideshow, show, "transitionStyle", LABEL("Transition")),
        row(Section::imageViewing, slideshow, show, "transitionDuration", LABEL("Transition duration"))
            .range(0, 10, 0.1, LABEL(" s")),
        row(Section::imageViewing, slideshow, show, "loop", LABEL("Start again after the last picture")),
        row(Section::imageViewing, slideshow, show, "shuffle", LABEL("Shuffle")),
        row(Section::imageViewing, slideshow, show, "infoVisibility", LABEL("File information")),
        row(Section::imageViewing, slideshow, app, "slideshowImageScaling", LABEL("Scaling")),
        row(Section::imageViewing, slideshow, app, "slideshowImageScalingPercentage", LABEL("Zoom"))
            .when("slideshowImageScaling", fixedZoom),
        row(Section::imageViewing, slideshow, app, "slideshowBackgroundColor", LABEL("Background")),
        row(Section::imageViewing, slideshow, app, "slideshowScreen", LABEL("Screen")),
        row(Section::imageViewing, slideshow, app, "slideshowBlackoutOtherScreens",
            LABEL("Black out the other screens")),
        row(Section::imageViewing, slideshow, app, "slideshowControlsVisibleOnStart",
            LABEL("Show the controls at start")),
        row(Section::imageViewing, slideshow, app, "slideshowFolderSearchDepth", LABEL("Subfolder levels"))
            .range(0, 20, 1),
        row(Section::imageViewing, slideshow, app, "slideshowSubfolderInclusionStyle", LABEL("Subfolders")),
        row(Section::imageViewing, slideshow, app, "slideshowIncludeVideos", LABEL("Include videos")),
        row(Section::imageViewing, slideshow, app, "slideshowAutoplayVideos", LABEL("Play videos at once"))
            .when("slideshowIncludeVideos"),
        row(Section::imageViewing, slideshow, app, "slideshowPreventNextWhileVideoPlays",
            LABEL("Wait for a video to end before the next picture"))
            .when("slideshowIncludeVideos"),
    };
}

} // namespace

QString SettingRow::translatedLabel() const
{
    return tr(label);
}

QString SettingRow::translatedGroup() const
{
    return tr(group);
}

QString SettingRow::translatedSuffix() const
{
    return suffix ? tr(suffix) : QString();
}

namespace SettingRows {

const QList<SettingRow> &all()
{
    static const QList<SettingRow> rows = makeRows();
    return rows;
}

const QStringList &editedElsewhere()
{
    static const QStringList names{
        // Sections of their own: Favorites, Hotkeys, and the reset button of General.
        QStringLiteral("favoriteApps"),
        QStringLiteral("favoriteFolders"),
        QStringLiteral("hotkeys"),
        QStringLiteral("alertsAndWarnings"),
        // Kept by the program, not chosen by the user.
        QStringLiteral("windowSettings"),
        QStringLiteral("slideshowSettings"),
        QStringLiteral("isFirstLaunch"),
        QStringLiteral("firstLaunchDate"),
        QStringLiteral("lastUpdateCheckDate"),
        QStringLiteral("settingsVersion"),
    };
    return names;
}

QString valueTitle(const QMetaEnum &valueSet, int raw)
{
    const QByteArray name = valueSet.enumName();
    if (name == "ImageDisplayScaling") {
        switch (ImageDisplayScaling(raw)) {
        case ImageDisplayScaling::percentage: return tr("Fixed Zoom");
        case ImageDisplayScaling::alwaysFit: return tr("Always Fit");
        case ImageDisplayScaling::shrinkToFit: return tr("Shrink Large Images to Fit");
        }
    } else if (name == "ImageScalePercentage") {
        return tr("%1%").arg(raw);
    } else if (name == "ScreenOption") {
        switch (ScreenOption(raw)) {
        case ScreenOption::activeScreen: return tr("The Screen in Use");
        case ScreenOption::alternateScreen: return tr("Another Screen");
        case ScreenOption::primaryScreen: return tr("The Main Screen");
        }
    } else if (name == "OpenImageDestination") {
        switch (OpenImageDestination(raw)) {
        case OpenImageDestination::pixcove: return tr("Pixcove");
        case OpenImageDestination::creator: return tr("The Application That Made the File");
        case OpenImageDestination::other: return tr("Another Application");
        }
    } else if (name == "SubfolderInclusionStyle") {
        switch (SubfolderInclusionStyle(raw)) {
        case SubfolderInclusionStyle::byFolder: return tr("Grouped by Folder");
        case SubfolderInclusionStyle::commingled: return tr("Commingled");
        }
    } else if (name == "SlideshowInfoVisibility") {
        switch (SlideshowInfoVisibility(raw)) {
        case SlideshowInfoVisibility::showNever: return tr("Never");
        case SlideshowInfoVisibility::showAutomatic: return tr("With the Controls");
        case SlideshowInfoVisibility::showAlways: return tr("Always");
        }
    } else if (name == "SlideshowTransitionStyle") {
        return slideshowTransitionStyleTitle(SlideshowTransitionStyle(raw));
    } else if (name == "UpdateCheckFrequency") {
        return updateCheckFrequencyTitle(UpdateCheckFrequency(raw));
    }
    const char *key = valueSet.valueToKey(raw);
    return key ? QString::fromLatin1(key) : QString::number(raw);
}

QString sectionTitle(SettingsSection section)
{
    switch (section) {
    case SettingsSection::general: return tr("General");
    case SettingsSection::browser: return tr("Browser");
    case SettingsSection::imageViewing: return tr("Image Viewing");
    case SettingsSection::favorites: return tr("Favorites");
    case SettingsSection::hotkeys: return tr("Hotkeys");
    }
    return {};
}

} // namespace SettingRows
