#pragma once

#include "core/model/PXFileForward.h"
#include "core/settings/FileBookmark.h"
#include "core/settings/HotkeyBindings.h"
#include "core/settings/ObservableSettings.h"
#include "core/settings/SettingsValueSets.h"
#include "core/settings/SlideshowSettings.h"
#include "core/settings/WindowSettings.h"

#include <QColor>
#include <QDateTime>
#include <QJsonObject>
#include <QList>

#include <memory>
#include <optional>

// Every application-wide preference, the saved settings of the main windows and the slideshow
// settings. One object lives in the SettingsManager; every part of the program reads its
// preferences here and follows the change signals of the fields it cares about, so a change
// made in the settings window takes effect at once everywhere. Main thread only.
//
// Changes inside the slideshow settings and inside each entry of `windowSettings` count as
// changes of this object (willChange() and changed() pass them on), so that they are saved like
// any other field. While main windows are open the list holds their own objects, so a window's
// sort, layout or place reaches the settings file with the next save, not only when the window
// closes.
//
// `selectedSettingsSection` lives for the run only; `isFirstLaunch` and `firstLaunchDate` are kept
// for the application shell, which sets them. The updater reads the release feed every
// `updateCheckFrequency` while `automaticallyChecksForUpdates` holds, and keeps the time of its last
// look in `lastUpdateCheckDate` (the start of 1970 before the first).
class AppSettings : public ObservableSettings
{
    Q_OBJECT
    // Null entries, and a null slideshow settings object, are refused.
    PIXCOVE_SETTING_WITH_SETTER(QList<WindowSettingsPtr>, windowSettings, setWindowSettings,
                                std::make_shared<WindowSettings>());
    PIXCOVE_SETTING_WITH_SETTER(SlideshowSettingsPtr, slideshowSettings, setSlideshowSettings,
                                std::make_shared<SlideshowSettings>());
    PIXCOVE_SETTING(bool, sidebarAllowsKeyboardControl, setSidebarAllowsKeyboardControl, true);
    PIXCOVE_SETTING(bool, sidebarAutoexpandOnSelection, setSidebarAutoexpandOnSelection, false);
    PIXCOVE_SETTING(bool, sidebarRenameOnlyOnEnter, setSidebarRenameOnlyOnEnter, false);
    PIXCOVE_SETTING(bool, thumbnailsRenameOnlyOnEnter, setThumbnailsRenameOnlyOnEnter, false);
    PIXCOVE_SETTING(bool, thumbnailsAutoselectFirstItem, setThumbnailsAutoselectFirstItem, false);
    PIXCOVE_SETTING(bool, thumbnailsAutoselectNextItemAfterMove, setThumbnailsAutoselectNextItemAfterMove, true);
    PIXCOVE_SETTING(bool, thumbnailsHaveOutline, setThumbnailsHaveOutline, true);
    PIXCOVE_SETTING(QColor, thumbnailOutlineColor, setThumbnailOutlineColor, Qt::white);
    PIXCOVE_SETTING(int, thumbnailOutlineThickness, setThumbnailOutlineThickness, 2);
    PIXCOVE_SETTING(bool, thumbnailsHaveShadow, setThumbnailsHaveShadow, true);
    PIXCOVE_SETTING(QColor, thumbnailTextColor, setThumbnailTextColor, Qt::white);
    PIXCOVE_SETTING(QColor, thumbnailBackgroundColor, setThumbnailBackgroundColor,
                    QColor::fromRgbF(0.2f, 0.2f, 0.2f, 1.0f));
    PIXCOVE_SETTING(bool, thumbnailsAlignToBottom, setThumbnailsAlignToBottom, true);
    PIXCOVE_SETTING(bool, thumbnailsPreviewPauseWhenLosingKey, setThumbnailsPreviewPauseWhenLosingKey, true);
    PIXCOVE_SETTING(bool, thumbnailsPreviewAllowsKeyboardControl, setThumbnailsPreviewAllowsKeyboardControl, false);
    PIXCOVE_SETTING(ImageDisplayScaling, slideshowImageScaling, setSlideshowImageScaling,
                    ImageDisplayScaling::alwaysFit);
    PIXCOVE_SETTING(ImageScalePercentage, slideshowImageScalingPercentage, setSlideshowImageScalingPercentage,
                    ImageScalePercentage::scale100);
    PIXCOVE_SETTING(QColor, slideshowBackgroundColor, setSlideshowBackgroundColor, Qt::black);
    PIXCOVE_SETTING(bool, slideshowControlsVisibleOnStart, setSlideshowControlsVisibleOnStart, true);
    PIXCOVE_SETTING(ScreenOption, slideshowScreen, setSlideshowScreen, ScreenOption::activeScreen);
    PIXCOVE_SETTING(bool, slideshowBlackoutOtherScreens, setSlideshowBlackoutOtherScreens, true);
    PIXCOVE_SETTING(int, slideshowFolderSearchDepth, setSlideshowFolderSearchDepth, 2);
    PIXCOVE_SETTING(SubfolderInclusionStyle, slideshowSubfolderInclusionStyle, setSlideshowSubfolderInclusionStyle,
                    SubfolderInclusionStyle::commingled);
    PIXCOVE_SETTING(bool, slideshowIncludeVideos, setSlideshowIncludeVideos, false);
    PIXCOVE_SETTING(bool, slideshowAutoplayVideos, setSlideshowAutoplayVideos, true);
    PIXCOVE_SETTING(bool, slideshowPreventNextWhileVideoPlays, setSlideshowPreventNextWhileVideoPlays, true);
    PIXCOVE_SETTING(ImageDisplayScaling, quickviewImageScaling, setQuickviewImageScaling,
                    ImageDisplayScaling::shrinkToFit);
    PIXCOVE_SETTING(ImageScalePercentage, quickviewImageScalingPercentage, setQuickviewImageScalingPercentage,
                    ImageScalePercentage::scale100);
    PIXCOVE_SETTING(bool, quickviewAutohide, setQuickviewAutohide, true);
    PIXCOVE_SETTING(bool, quickviewAutoplayVideo, setQuickviewAutoplayVideo, true);
    PIXCOVE_SETTING(bool, quickviewMuteVideo, setQuickviewMuteVideo, true);
    PIXCOVE_SETTING(bool, quickviewOpensOnLaunch, setQuickviewOpensOnLaunch, false);
    PIXCOVE_SETTING(QColor, quickviewBackgroundColor, setQuickviewBackgroundColor, Qt::black);
    PIXCOVE_SETTING(ScreenOption, quickviewScreen, setQuickviewScreen, ScreenOption::alternateScreen);
    PIXCOVE_SETTING(bool, quickviewRetainZoomBetweenItems, setQuickviewRetainZoomBetweenItems, false);
    PIXCOVE_SETTING(double, quickviewTransitionDuration, setQuickviewTransitionDuration, 0.2);
    PIXCOVE_SETTING(OpenImageDestination, openImageDestination, setOpenImageDestination, OpenImageDestination::pixcove);
    PIXCOVE_SETTING(PXFilePtr, openImageCustomApp, setOpenImageCustomApp);
    PIXCOVE_SETTING(ImageDisplayScaling, imageWindowImageScaling, setImageWindowImageScaling,
                    ImageDisplayScaling::shrinkToFit);
    PIXCOVE_SETTING(ImageScalePercentage, imageWindowImageScalingPercentage, setImageWindowImageScalingPercentage,
                    ImageScalePercentage::scale100);
    PIXCOVE_SETTING(QList<FileBookmark>, favoriteApps, setFavoriteApps);
    PIXCOVE_SETTING(QList<FileBookmark>, favoriteFolders, setFavoriteFolders);
    PIXCOVE_SETTING(bool, detailedLogging, setDetailedLogging, false);
    PIXCOVE_SETTING(bool, isFirstLaunch, setIsFirstLaunch, true);
    PIXCOVE_SETTING(QDateTime, firstLaunchDate, setFirstLaunchDate, QDateTime::currentDateTimeUtc());
    PIXCOVE_SETTING(bool, hideOnDeactivate, setHideOnDeactivate, false);
    PIXCOVE_SETTING(bool, automaticallyChecksForUpdates, setAutomaticallyChecksForUpdates, true);
    PIXCOVE_SETTING(UpdateCheckFrequency, updateCheckFrequency, setUpdateCheckFrequency, UpdateCheckFrequency::daily);
    PIXCOVE_SETTING(QDateTime, lastUpdateCheckDate, setLastUpdateCheckDate, QDateTime::fromSecsSinceEpoch(0, Qt::UTC));
    PIXCOVE_SETTING(double, settingsVersion, setSettingsVersion, currentSettingsVersion);
    PIXCOVE_SETTING(AlertsAndWarnings, alertsAndWarnings, setAlertsAndWarnings);
    PIXCOVE_SETTING(bool, alwaysUseThirdPartyVideoPlayer, setAlwaysUseThirdPartyVideoPlayer, false);
    // The keys the user chose for commands; left out of the file while there are none, and read
    // forgivingly: a bad binding is dropped with a log line, never the file.
    PIXCOVE_SETTING(HotkeyBindings, hotkeys, setHotkeys);
    PIXCOVE_UNSAVED_SETTING(std::optional<SettingsSection>, selectedSettingsSection, setSelectedSettingsSection,
                            SettingsSection::general);

public:
    // The version this build reads and writes.
    static constexpr double currentSettingsVersion = 3.0;

    // The defaults: one default window, default slideshow settings, first launch now.
    explicit AppSettings(QObject *parent = nullptr);

    // The JSON object of the settings file, without `selectedSettingsSection`. Fails (with the
    // reason) only for a value that could not be read back.
    std::optional<QJsonObject> toJson(QString *error) const;
    // Decodes the settings file's object: every key read if present, strictly typed; the first
    // bad key fails the whole object. Logs the version change: a debug line for an older file,
    // an error for a newer one. The result always holds the current version.
    static std::unique_ptr<AppSettings> fromJson(const QJsonObject &json, QString *error);

private:
    // Passes on the changes inside the slideshow settings held now.
    void followSlideshowSettings();
    // Passes on the changes inside the window settings listed now, and no longer those of
    // entries that left the list.
    void followWindowSettings();

    QMetaObject::Connection m_slideshowWillChange;
    QMetaObject::Connection m_slideshowChanged;
    QList<QMetaObject::Connection> m_windowConnections;
};
