#pragma once

#include "core/model/PXFileForward.h"
#include "core/settings/FileBookmark.h"
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
// Changes inside the slideshow settings count as changes of this object (willChange() and
// changed() pass them on) so that they are saved like any other field. The window settings in
// `windowSettings` are saved snapshots: a window's own object is a duplicate, and the list is
// replaced when a window closes, so their fields are not followed.
//
// `selectedSettingsSection` lives for the run only; `isFirstLaunch` and `firstLaunchDate` are kept
// for the application shell, which sets them.
class AppSettings : public ObservableSettings
{
    Q_OBJECT
    Q_PROPERTY(QList<WindowSettingsPtr> windowSettings READ windowSettings WRITE setWindowSettings NOTIFY
                   windowSettingsChanged)
    Q_PROPERTY(SlideshowSettingsPtr slideshowSettings READ slideshowSettings WRITE setSlideshowSettings NOTIFY
                   slideshowSettingsChanged)
    Q_PROPERTY(bool sidebarAllowsKeyboardControl READ sidebarAllowsKeyboardControl WRITE setSidebarAllowsKeyboardControl
                   NOTIFY sidebarAllowsKeyboardControlChanged)
    Q_PROPERTY(bool sidebarAutoexpandOnSelection READ sidebarAutoexpandOnSelection WRITE setSidebarAutoexpandOnSelection
                   NOTIFY sidebarAutoexpandOnSelectionChanged)
    Q_PROPERTY(bool sidebarRenameOnlyOnEnter READ sidebarRenameOnlyOnEnter WRITE setSidebarRenameOnlyOnEnter NOTIFY
                   sidebarRenameOnlyOnEnterChanged)
    Q_PROPERTY(bool thumbnailsRenameOnlyOnEnter READ thumbnailsRenameOnlyOnEnter WRITE setThumbnailsRenameOnlyOnEnter
                   NOTIFY thumbnailsRenameOnlyOnEnterChanged)
    Q_PROPERTY(bool thumbnailsAutoselectFirstItem READ thumbnailsAutoselectFirstItem WRITE
                   setThumbnailsAutoselectFirstItem NOTIFY thumbnailsAutoselectFirstItemChanged)
    Q_PROPERTY(bool thumbnailsAutoselectNextItemAfterMove READ thumbnailsAutoselectNextItemAfterMove WRITE
                   setThumbnailsAutoselectNextItemAfterMove NOTIFY thumbnailsAutoselectNextItemAfterMoveChanged)
    Q_PROPERTY(bool thumbnailsHaveOutline READ thumbnailsHaveOutline WRITE setThumbnailsHaveOutline NOTIFY
                   thumbnailsHaveOutlineChanged)
    Q_PROPERTY(QColor thumbnailOutlineColor READ thumbnailOutlineColor WRITE setThumbnailOutlineColor NOTIFY
                   thumbnailOutlineColorChanged)
    Q_PROPERTY(int thumbnailOutlineThickness READ thumbnailOutlineThickness WRITE setThumbnailOutlineThickness NOTIFY
                   thumbnailOutlineThicknessChanged)
    Q_PROPERTY(bool thumbnailsHaveShadow READ thumbnailsHaveShadow WRITE setThumbnailsHaveShadow NOTIFY
                   thumbnailsHaveShadowChanged)
    Q_PROPERTY(
        QColor thumbnailTextColor READ thumbnailTextColor WRITE setThumbnailTextColor NOTIFY thumbnailTextColorChanged)
    Q_PROPERTY(QColor thumbnailBackgroundColor READ thumbnailBackgroundColor WRITE setThumbnailBackgroundColor NOTIFY
                   thumbnailBackgroundColorChanged)
    Q_PROPERTY(bool thumbnailsAlignToBottom READ thumbnailsAlignToBottom WRITE setThumbnailsAlignToBottom NOTIFY
                   thumbnailsAlignToBottomChanged)
    Q_PROPERTY(bool thumbnailsPreviewPauseWhenLosingKey READ thumbnailsPreviewPauseWhenLosingKey WRITE
                   setThumbnailsPreviewPauseWhenLosingKey NOTIFY thumbnailsPreviewPauseWhenLosingKeyChanged)
    Q_PROPERTY(bool thumbnailsPreviewAllowsKeyboardControl READ thumbnailsPreviewAllowsKeyboardControl WRITE
                   setThumbnailsPreviewAllowsKeyboardControl NOTIFY thumbnailsPreviewAllowsKeyboardControlChanged)
    Q_PROPERTY(ImageDisplayScaling slideshowImageScaling READ slideshowImageScaling WRITE setSlideshowImageScaling
                   NOTIFY slideshowImageScalingChanged)
    Q_PROPERTY(ImageScalePercentage slideshowImageScalingPercentage READ slideshowImageScalingPercentage WRITE
                   setSlideshowImageScalingPercentage NOTIFY slideshowImageScalingPercentageChanged)
    Q_PROPERTY(QColor slideshowBackgroundColor READ slideshowBackgroundColor WRITE setSlideshowBackgroundColor NOTIFY
                   slideshowBackgroundColorChanged)
    Q_PROPERTY(bool slideshowControlsVisibleOnStart READ slideshowControlsVisibleOnStart WRITE
                   setSlideshowControlsVisibleOnStart NOTIFY slideshowControlsVisibleOnStartChanged)
    Q_PROPERTY(ScreenOption slideshowScreen READ slideshowScreen WRITE setSlideshowScreen NOTIFY slideshowScreenChanged)
    Q_PROPERTY(bool slideshowBlackoutOtherScreens READ slideshowBlackoutOtherScreens WRITE
                   setSlideshowBlackoutOtherScreens NOTIFY slideshowBlackoutOtherScreensChanged)
    Q_PROPERTY(int slideshowFolderSearchDepth READ slideshowFolderSearchDepth WRITE setSlideshowFolderSearchDepth NOTIFY
                   slideshowFolderSearchDepthChanged)
    Q_PROPERTY(SubfolderInclusionStyle slideshowSubfolderInclusionStyle READ slideshowSubfolderInclusionStyle WRITE
                   setSlideshowSubfolderInclusionStyle NOTIFY slideshowSubfolderInclusionStyleChanged)
    Q_PROPERTY(bool slideshowIncludeVideos READ slideshowIncludeVideos WRITE setSlideshowIncludeVideos NOTIFY
                   slideshowIncludeVideosChanged)
    Q_PROPERTY(bool slideshowAutoplayVideos READ slideshowAutoplayVideos WRITE setSlideshowAutoplayVideos NOTIFY
                   slideshowAutoplayVideosChanged)
    Q_PROPERTY(bool slideshowPreventNextWhileVideoPlays READ slideshowPreventNextWhileVideoPlays WRITE
                   setSlideshowPreventNextWhileVideoPlays NOTIFY slideshowPreventNextWhileVideoPlaysChanged)
    Q_PROPERTY(ImageDisplayScaling quickviewImageScaling READ quickviewImageScaling WRITE setQuickviewImageScaling
                   NOTIFY quickviewImageScalingChanged)
    Q_PROPERTY(ImageScalePercentage quickviewImageScalingPercentage READ quickviewImageScalingPercentage WRITE
                   setQuickviewImageScalingPercentage NOTIFY quickviewImageScalingPercentageChanged)
    Q_PROPERTY(bool quickviewAutohide READ quickviewAutohide WRITE setQuickviewAutohide NOTIFY quickviewAutohideChanged)
    Q_PROPERTY(bool quickviewAutoplayVideo READ quickviewAutoplayVideo WRITE setQuickviewAutoplayVideo NOTIFY
                   quickviewAutoplayVideoChanged)
    Q_PROPERTY(
        bool quickviewMuteVideo READ quickviewMuteVideo WRITE setQuickviewMuteVideo NOTIFY quickviewMuteVideoChanged)
    Q_PROPERTY(bool quickviewOpensOnLaunch READ quickviewOpensOnLaunch WRITE setQuickviewOpensOnLaunch NOTIFY
                   quickviewOpensOnLaunchChanged)
    Q_PROPERTY(QColor quickviewBackgroundColor READ quickviewBackgroundColor WRITE setQuickviewBackgroundColor NOTIFY
                   quickviewBackgroundColorChanged)
    Q_PROPERTY(ScreenOption quickviewScreen READ quickviewScreen WRITE setQuickviewScreen NOTIFY quickviewScreenChanged)
    Q_PROPERTY(bool quickviewRetainZoomBetweenItems READ quickviewRetainZoomBetweenItems WRITE
                   setQuickviewRetainZoomBetweenItems NOTIFY quickviewRetainZoomBetweenItemsChanged)
    Q_PROPERTY(double quickviewTransitionDuration READ quickviewTransitionDuration WRITE setQuickviewTransitionDuration
                   NOTIFY quickviewTransitionDurationChanged)
    Q_PROPERTY(OpenImageDestination openImageDestination READ openImageDestination WRITE setOpenImageDestination NOTIFY
                   openImageDestinationChanged)
    Q_PROPERTY(PXFilePtr openImageCustomApp READ openImageCustomApp WRITE setOpenImageCustomApp NOTIFY
                   openImageCustomAppChanged)
    Q_PROPERTY(ImageDisplayScaling imageWindowImageScaling READ imageWindowImageScaling WRITE setImageWindowImageScaling
                   NOTIFY imageWindowImageScalingChanged)
    Q_PROPERTY(ImageScalePercentage imageWindowImageScalingPercentage READ imageWindowImageScalingPercentage WRITE
                   setImageWindowImageScalingPercentage NOTIFY imageWindowImageScalingPercentageChanged)
    Q_PROPERTY(QList<FileBookmark> favoriteApps READ favoriteApps WRITE setFavoriteApps NOTIFY favoriteAppsChanged)
    Q_PROPERTY(
        QList<FileBookmark> favoriteFolders READ favoriteFolders WRITE setFavoriteFolders NOTIFY favoriteFoldersChanged)
    Q_PROPERTY(bool detailedLogging READ detailedLogging WRITE setDetailedLogging NOTIFY detailedLoggingChanged)
    Q_PROPERTY(bool isFirstLaunch READ isFirstLaunch WRITE setIsFirstLaunch NOTIFY isFirstLaunchChanged)
    Q_PROPERTY(QDateTime firstLaunchDate READ firstLaunchDate WRITE setFirstLaunchDate NOTIFY firstLaunchDateChanged)
    Q_PROPERTY(bool hideOnDeactivate READ hideOnDeactivate WRITE setHideOnDeactivate NOTIFY hideOnDeactivateChanged)
    Q_PROPERTY(double settingsVersion READ settingsVersion WRITE setSettingsVersion NOTIFY settingsVersionChanged)
    Q_PROPERTY(AlertsAndWarnings alertsAndWarnings READ alertsAndWarnings WRITE setAlertsAndWarnings NOTIFY
                   alertsAndWarningsChanged)
    Q_PROPERTY(bool alwaysUseThirdPartyVideoPlayer READ alwaysUseThirdPartyVideoPlayer WRITE
                   setAlwaysUseThirdPartyVideoPlayer NOTIFY alwaysUseThirdPartyVideoPlayerChanged)
    Q_PROPERTY(std::optional<SettingsSection> selectedSettingsSection READ selectedSettingsSection WRITE
                   setSelectedSettingsSection NOTIFY selectedSettingsSectionChanged)

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

    const QList<WindowSettingsPtr> &windowSettings() const { return m_windowSettings; }
    const SlideshowSettingsPtr &slideshowSettings() const { return m_slideshowSettings; }
    bool sidebarAllowsKeyboardControl() const { return m_sidebarAllowsKeyboardControl; }
    bool sidebarAutoexpandOnSelection() const { return m_sidebarAutoexpandOnSelection; }
    bool sidebarRenameOnlyOnEnter() const { return m_sidebarRenameOnlyOnEnter; }
    bool thumbnailsRenameOnlyOnEnter() const { return m_thumbnailsRenameOnlyOnEnter; }
    bool thumbnailsAutoselectFirstItem() const { return m_thumbnailsAutoselectFirstItem; }
    bool thumbnailsAutoselectNextItemAfterMove() const { return m_thumbnailsAutoselectNextItemAfterMove; }
    bool thumbnailsHaveOutline() const { return m_thumbnailsHaveOutline; }
    const QColor &thumbnailOutlineColor() const { return m_thumbnailOutlineColor; }
    int thumbnailOutlineThickness() const { return m_thumbnailOutlineThickness; }
    bool thumbnailsHaveShadow() const { return m_thumbnailsHaveShadow; }
    const QColor &thumbnailTextColor() const { return m_thumbnailTextColor; }
    const QColor &thumbnailBackgroundColor() const { return m_thumbnailBackgroundColor; }
    bool thumbnailsAlignToBottom() const { return m_thumbnailsAlignToBottom; }
    bool thumbnailsPreviewPauseWhenLosingKey() const { return m_thumbnailsPreviewPauseWhenLosingKey; }
    bool thumbnailsPreviewAllowsKeyboardControl() const { return m_thumbnailsPreviewAllowsKeyboardControl; }
    ImageDisplayScaling slideshowImageScaling() const { return m_slideshowImageScaling; }
    ImageScalePercentage slideshowImageScalingPercentage() const { return m_slideshowImageScalingPercentage; }
    const QColor &slideshowBackgroundColor() const { return m_slideshowBackgroundColor; }
    bool slideshowControlsVisibleOnStart() const { return m_slideshowControlsVisibleOnStart; }
    ScreenOption slideshowScreen() const { return m_slideshowScreen; }
    bool slideshowBlackoutOtherScreens() const { return m_slideshowBlackoutOtherScreens; }
    int slideshowFolderSearchDepth() const { return m_slideshowFolderSearchDepth; }
    SubfolderInclusionStyle slideshowSubfolderInclusionStyle() const { return m_slideshowSubfolderInclusionStyle; }
    bool slideshowIncludeVideos() const { return m_slideshowIncludeVideos; }
    bool slideshowAutoplayVideos() const { return m_slideshowAutoplayVideos; }
    bool slideshowPreventNextWhileVideoPlays() const { return m_slideshowPreventNextWhileVideoPlays; }
    ImageDisplayScaling quickviewImageScaling() const { return m_quickviewImageScaling; }
    ImageScalePercentage quickviewImageScalingPercentage() const { return m_quickviewImageScalingPercentage; }
    bool quickviewAutohide() const { return m_quickviewAutohide; }
    bool quickviewAutoplayVideo() const { return m_quickviewAutoplayVideo; }
    bool quickviewMuteVideo() const { return m_quickviewMuteVideo; }
    bool quickviewOpensOnLaunch() const { return m_quickviewOpensOnLaunch; }
    const QColor &quickviewBackgroundColor() const { return m_quickviewBackgroundColor; }
    ScreenOption quickviewScreen() const { return m_quickviewScreen; }
    bool quickviewRetainZoomBetweenItems() const { return m_quickviewRetainZoomBetweenItems; }
    double quickviewTransitionDuration() const { return m_quickviewTransitionDuration; }
    OpenImageDestination openImageDestination() const { return m_openImageDestination; }
    const PXFilePtr &openImageCustomApp() const { return m_openImageCustomApp; }
    ImageDisplayScaling imageWindowImageScaling() const { return m_imageWindowImageScaling; }
    ImageScalePercentage imageWindowImageScalingPercentage() const { return m_imageWindowImageScalingPercentage; }
    const QList<FileBookmark> &favoriteApps() const { return m_favoriteApps; }
    const QList<FileBookmark> &favoriteFolders() const { return m_favoriteFolders; }
    bool detailedLogging() const { return m_detailedLogging; }
    bool isFirstLaunch() const { return m_isFirstLaunch; }
    const QDateTime &firstLaunchDate() const { return m_firstLaunchDate; }
    bool hideOnDeactivate() const { return m_hideOnDeactivate; }
    double settingsVersion() const { return m_settingsVersion; }
    AlertsAndWarnings alertsAndWarnings() const { return m_alertsAndWarnings; }
    bool alwaysUseThirdPartyVideoPlayer() const { return m_alwaysUseThirdPartyVideoPlayer; }
    const std::optional<SettingsSection> &selectedSettingsSection() const { return m_selectedSettingsSection; }

    // Null entries, and a null slideshow settings object, are refused.
    void setWindowSettings(const QList<WindowSettingsPtr> &windowSettings);
    void setSlideshowSettings(const SlideshowSettingsPtr &slideshowSettings);
    void setSidebarAllowsKeyboardControl(bool sidebarAllowsKeyboardControl);
    void setSidebarAutoexpandOnSelection(bool sidebarAutoexpandOnSelection);
    void setSidebarRenameOnlyOnEnter(bool sidebarRenameOnlyOnEnter);
    void setThumbnailsRenameOnlyOnEnter(bool thumbnailsRenameOnlyOnEnter);
    void setThumbnailsAutoselectFirstItem(bool thumbnailsAutoselectFirstItem);
    void setThumbnailsAutoselectNextItemAfterMove(bool thumbnailsAutoselectNextItemAfterMove);
    void setThumbnailsHaveOutline(bool thumbnailsHaveOutline);
    void setThumbnailOutlineColor(const QColor &thumbnailOutlineColor);
    void setThumbnailOutlineThickness(int thumbnailOutlineThickness);
    void setThumbnailsHaveShadow(bool thumbnailsHaveShadow);
    void setThumbnailTextColor(const QColor &thumbnailTextColor);
    void setThumbnailBackgroundColor(const QColor &thumbnailBackgroundColor);
    void setThumbnailsAlignToBottom(bool thumbnailsAlignToBottom);
    void setThumbnailsPreviewPauseWhenLosingKey(bool thumbnailsPreviewPauseWhenLosingKey);
    void setThumbnailsPreviewAllowsKeyboardControl(bool thumbnailsPreviewAllowsKeyboardControl);
    void setSlideshowImageScaling(ImageDisplayScaling slideshowImageScaling);
    void setSlideshowImageScalingPercentage(ImageScalePercentage slideshowImageScalingPercentage);
    void setSlideshowBackgroundColor(const QColor &slideshowBackgroundColor);
    void setSlideshowControlsVisibleOnStart(bool slideshowControlsVisibleOnStart);
    void setSlideshowScreen(ScreenOption slideshowScreen);
    void setSlideshowBlackoutOtherScreens(bool slideshowBlackoutOtherScreens);
    void setSlideshowFolderSearchDepth(int slideshowFolderSearchDepth);
    void setSlideshowSubfolderInclusionStyle(SubfolderInclusionStyle slideshowSubfolderInclusionStyle);
    void setSlideshowIncludeVideos(bool slideshowIncludeVideos);
    void setSlideshowAutoplayVideos(bool slideshowAutoplayVideos);
    void setSlideshowPreventNextWhileVideoPlays(bool slideshowPreventNextWhileVideoPlays);
    void setQuickviewImageScaling(ImageDisplayScaling quickviewImageScaling);
    void setQuickviewImageScalingPercentage(ImageScalePercentage quickviewImageScalingPercentage);
    void setQuickviewAutohide(bool quickviewAutohide);
    void setQuickviewAutoplayVideo(bool quickviewAutoplayVideo);
    void setQuickviewMuteVideo(bool quickviewMuteVideo);
    void setQuickviewOpensOnLaunch(bool quickviewOpensOnLaunch);
    void setQuickviewBackgroundColor(const QColor &quickviewBackgroundColor);
    void setQuickviewScreen(ScreenOption quickviewScreen);
    void setQuickviewRetainZoomBetweenItems(bool quickviewRetainZoomBetweenItems);
    void setQuickviewTransitionDuration(double quickviewTransitionDuration);
    void setOpenImageDestination(OpenImageDestination openImageDestination);
    void setOpenImageCustomApp(const PXFilePtr &openImageCustomApp);
    void setImageWindowImageScaling(ImageDisplayScaling imageWindowImageScaling);
    void setImageWindowImageScalingPercentage(ImageScalePercentage imageWindowImageScalingPercentage);
    void setFavoriteApps(const QList<FileBookmark> &favoriteApps);
    void setFavoriteFolders(const QList<FileBookmark> &favoriteFolders);
    void setDetailedLogging(bool detailedLogging);
    void setIsFirstLaunch(bool isFirstLaunch);
    void setFirstLaunchDate(const QDateTime &firstLaunchDate);
    void setHideOnDeactivate(bool hideOnDeactivate);
    void setSettingsVersion(double settingsVersion);
    void setAlertsAndWarnings(AlertsAndWarnings alertsAndWarnings);
    void setAlwaysUseThirdPartyVideoPlayer(bool alwaysUseThirdPartyVideoPlayer);
    void setSelectedSettingsSection(const std::optional<SettingsSection> &selectedSettingsSection);

Q_SIGNALS:
    void windowSettingsChanged(const QList<WindowSettingsPtr> &windowSettings);
    void slideshowSettingsChanged(const SlideshowSettingsPtr &slideshowSettings);
    void sidebarAllowsKeyboardControlChanged(bool sidebarAllowsKeyboardControl);
    void sidebarAutoexpandOnSelectionChanged(bool sidebarAutoexpandOnSelection);
    void sidebarRenameOnlyOnEnterChanged(bool sidebarRenameOnlyOnEnter);
    void thumbnailsRenameOnlyOnEnterChanged(bool thumbnailsRenameOnlyOnEnter);
    void thumbnailsAutoselectFirstItemChanged(bool thumbnailsAutoselectFirstItem);
    void thumbnailsAutoselectNextItemAfterMoveChanged(bool thumbnailsAutoselectNextItemAfterMove);
    void thumbnailsHaveOutlineChanged(bool thumbnailsHaveOutline);
    void thumbnailOutlineColorChanged(const QColor &thumbnailOutlineColor);
    void thumbnailOutlineThicknessChanged(int thumbnailOutlineThickness);
    void thumbnailsHaveShadowChanged(bool thumbnailsHaveShadow);
    void thumbnailTextColorChanged(const QColor &thumbnailTextColor);
    void thumbnailBackgroundColorChanged(const QColor &thumbnailBackgroundColor);
    void thumbnailsAlignToBottomChanged(bool thumbnailsAlignToBottom);
    void thumbnailsPreviewPauseWhenLosingKeyChanged(bool thumbnailsPreviewPauseWhenLosingKey);
    void thumbnailsPreviewAllowsKeyboardControlChanged(bool thumbnailsPreviewAllowsKeyboardControl);
    void slideshowImageScalingChanged(ImageDisplayScaling slideshowImageScaling);
    void slideshowImageScalingPercentageChanged(ImageScalePercentage slideshowImageScalingPercentage);
    void slideshowBackgroundColorChanged(const QColor &slideshowBackgroundColor);
    void slideshowControlsVisibleOnStartChanged(bool slideshowControlsVisibleOnStart);
    void slideshowScreenChanged(ScreenOption slideshowScreen);
    void slideshowBlackoutOtherScreensChanged(bool slideshowBlackoutOtherScreens);
    void slideshowFolderSearchDepthChanged(int slideshowFolderSearchDepth);
    void slideshowSubfolderInclusionStyleChanged(SubfolderInclusionStyle slideshowSubfolderInclusionStyle);
    void slideshowIncludeVideosChanged(bool slideshowIncludeVideos);
    void slideshowAutoplayVideosChanged(bool slideshowAutoplayVideos);
    void slideshowPreventNextWhileVideoPlaysChanged(bool slideshowPreventNextWhileVideoPlays);
    void quickviewImageScalingChanged(ImageDisplayScaling quickviewImageScaling);
    void quickviewImageScalingPercentageChanged(ImageScalePercentage quickviewImageScalingPercentage);
    void quickviewAutohideChanged(bool quickviewAutohide);
    void quickviewAutoplayVideoChanged(bool quickviewAutoplayVideo);
    void quickviewMuteVideoChanged(bool quickviewMuteVideo);
    void quickviewOpensOnLaunchChanged(bool quickviewOpensOnLaunch);
    void quickviewBackgroundColorChanged(const QColor &quickviewBackgroundColor);
    void quickviewScreenChanged(ScreenOption quickviewScreen);
    void quickviewRetainZoomBetweenItemsChanged(bool quickviewRetainZoomBetweenItems);
    void quickviewTransitionDurationChanged(double quickviewTransitionDuration);
    void openImageDestinationChanged(OpenImageDestination openImageDestination);
    void openImageCustomAppChanged(const PXFilePtr &openImageCustomApp);
    void imageWindowImageScalingChanged(ImageDisplayScaling imageWindowImageScaling);
    void imageWindowImageScalingPercentageChanged(ImageScalePercentage imageWindowImageScalingPercentage);
    void favoriteAppsChanged(const QList<FileBookmark> &favoriteApps);
    void favoriteFoldersChanged(const QList<FileBookmark> &favoriteFolders);
    void detailedLoggingChanged(bool detailedLogging);
    void isFirstLaunchChanged(bool isFirstLaunch);
    void firstLaunchDateChanged(const QDateTime &firstLaunchDate);
    void hideOnDeactivateChanged(bool hideOnDeactivate);
    void settingsVersionChanged(double settingsVersion);
    void alertsAndWarningsChanged(AlertsAndWarnings alertsAndWarnings);
    void alwaysUseThirdPartyVideoPlayerChanged(bool alwaysUseThirdPartyVideoPlayer);
    void selectedSettingsSectionChanged(const std::optional<SettingsSection> &selectedSettingsSection);

private:
    void adoptSlideshowSettings(SlideshowSettingsPtr slideshowSettings);

    QList<WindowSettingsPtr> m_windowSettings;
    SlideshowSettingsPtr m_slideshowSettings;
    bool m_sidebarAllowsKeyboardControl = true;
    bool m_sidebarAutoexpandOnSelection = false;
    bool m_sidebarRenameOnlyOnEnter = false;
    bool m_thumbnailsRenameOnlyOnEnter = false;
    bool m_thumbnailsAutoselectFirstItem = false;
    bool m_thumbnailsAutoselectNextItemAfterMove = true;
    bool m_thumbnailsHaveOutline = true;
    QColor m_thumbnailOutlineColor = QColor(Qt::white);
    int m_thumbnailOutlineThickness = 2;
    bool m_thumbnailsHaveShadow = true;
    QColor m_thumbnailTextColor = QColor(Qt::white);
    QColor m_thumbnailBackgroundColor = QColor::fromRgbF(0.2f, 0.2f, 0.2f, 1.0f);
    bool m_thumbnailsAlignToBottom = true;
    bool m_thumbnailsPreviewPauseWhenLosingKey = true;
    bool m_thumbnailsPreviewAllowsKeyboardControl = false;
    ImageDisplayScaling m_slideshowImageScaling = ImageDisplayScaling::alwaysFit;
    ImageScalePercentage m_slideshowImageScalingPercentage = ImageScalePercentage::scale100;
    QColor m_slideshowBackgroundColor = QColor(Qt::black);
    bool m_slideshowControlsVisibleOnStart = true;
    ScreenOption m_slideshowScreen = ScreenOption::activeScreen;
    bool m_slideshowBlackoutOtherScreens = true;
    int m_slideshowFolderSearchDepth = 2;
    SubfolderInclusionStyle m_slideshowSubfolderInclusionStyle = SubfolderInclusionStyle::commingled;
    bool m_slideshowIncludeVideos = false;
    bool m_slideshowAutoplayVideos = true;
    bool m_slideshowPreventNextWhileVideoPlays = true;
    ImageDisplayScaling m_quickviewImageScaling = ImageDisplayScaling::shrinkToFit;
    ImageScalePercentage m_quickviewImageScalingPercentage = ImageScalePercentage::scale100;
    bool m_quickviewAutohide = true;
    bool m_quickviewAutoplayVideo = true;
    bool m_quickviewMuteVideo = true;
    bool m_quickviewOpensOnLaunch = false;
    QColor m_quickviewBackgroundColor = QColor(Qt::black);
    ScreenOption m_quickviewScreen = ScreenOption::alternateScreen;
    bool m_quickviewRetainZoomBetweenItems = false;
    double m_quickviewTransitionDuration = 0.2;
    OpenImageDestination m_openImageDestination = OpenImageDestination::pixcove;
    PXFilePtr m_openImageCustomApp;
    ImageDisplayScaling m_imageWindowImageScaling = ImageDisplayScaling::shrinkToFit;
    ImageScalePercentage m_imageWindowImageScalingPercentage = ImageScalePercentage::scale100;
    QList<FileBookmark> m_favoriteApps;
    QList<FileBookmark> m_favoriteFolders;
    bool m_detailedLogging = false;
    bool m_isFirstLaunch = true;
    QDateTime m_firstLaunchDate = QDateTime::currentDateTimeUtc();
    bool m_hideOnDeactivate = false;
    double m_settingsVersion = currentSettingsVersion;
    AlertsAndWarnings m_alertsAndWarnings;
    bool m_alwaysUseThirdPartyVideoPlayer = false;
    std::optional<SettingsSection> m_selectedSettingsSection = SettingsSection::general;
    QMetaObject::Connection m_slideshowWillChange;
    QMetaObject::Connection m_slideshowChanged;
};
