#include "core/settings/AppSettings.h"

#include "core/app/Log.h"
#include "core/settings/SettingsCoding.h"

AppSettings::AppSettings(QObject *parent)
    : ObservableSettings(parent)
    , m_windowSettings{std::make_shared<WindowSettings>()}
{
    adoptSlideshowSettings(std::make_shared<SlideshowSettings>());
}

void AppSettings::adoptSlideshowSettings(SlideshowSettingsPtr slideshowSettings)
{
    disconnect(m_slideshowWillChange);
    disconnect(m_slideshowChanged);
    m_slideshowSettings = std::move(slideshowSettings);
    m_slideshowWillChange =
        connect(m_slideshowSettings.get(), &ObservableSettings::willChange, this, &ObservableSettings::willChange);
    m_slideshowChanged =
        connect(m_slideshowSettings.get(), &ObservableSettings::changed, this, &ObservableSettings::changed);
}

std::optional<QJsonObject> AppSettings::toJson(QString *error) const
{
    SettingsWriter writer;
    writer.writeList(QStringLiteral("windowSettings"), m_windowSettings,
                     [](const WindowSettingsPtr &window, const QString &path, QString *error) {
                         return window->toJson(error, path);
                     });
    writer.writeNested(QStringLiteral("slideshowSettings"), m_slideshowSettings,
                       [](const SlideshowSettingsPtr &slideshow, const QString &path, QString *error) {
                           return slideshow->toJson(error, path);
                       });
    writer.write(QStringLiteral("sidebarAllowsKeyboardControl"), m_sidebarAllowsKeyboardControl);
    writer.write(QStringLiteral("sidebarAutoexpandOnSelection"), m_sidebarAutoexpandOnSelection);
    writer.write(QStringLiteral("sidebarRenameOnlyOnEnter"), m_sidebarRenameOnlyOnEnter);
    writer.write(QStringLiteral("thumbnailsRenameOnlyOnEnter"), m_thumbnailsRenameOnlyOnEnter);
    writer.write(QStringLiteral("thumbnailsAutoselectFirstItem"), m_thumbnailsAutoselectFirstItem);
    writer.write(QStringLiteral("thumbnailsAutoselectNextItemAfterMove"), m_thumbnailsAutoselectNextItemAfterMove);
    writer.write(QStringLiteral("thumbnailsHaveOutline"), m_thumbnailsHaveOutline);
    writer.write(QStringLiteral("thumbnailOutlineColor"), m_thumbnailOutlineColor);
    writer.write(QStringLiteral("thumbnailOutlineThickness"), m_thumbnailOutlineThickness);
    writer.write(QStringLiteral("thumbnailsHaveShadow"), m_thumbnailsHaveShadow);
    writer.write(QStringLiteral("thumbnailTextColor"), m_thumbnailTextColor);
    writer.write(QStringLiteral("thumbnailBackgroundColor"), m_thumbnailBackgroundColor);
    writer.write(QStringLiteral("thumbnailsAlignToBottom"), m_thumbnailsAlignToBottom);
    writer.write(QStringLiteral("thumbnailsPreviewPauseWhenLosingKey"), m_thumbnailsPreviewPauseWhenLosingKey);
    writer.write(QStringLiteral("thumbnailsPreviewAllowsKeyboardControl"), m_thumbnailsPreviewAllowsKeyboardControl);
    writer.write(QStringLiteral("slideshowImageScaling"), m_slideshowImageScaling);
    writer.write(QStringLiteral("slideshowImageScalingPercentage"), m_slideshowImageScalingPercentage);
    writer.write(QStringLiteral("slideshowBackgroundColor"), m_slideshowBackgroundColor);
    writer.write(QStringLiteral("slideshowControlsVisibleOnStart"), m_slideshowControlsVisibleOnStart);
    writer.write(QStringLiteral("slideshowScreen"), m_slideshowScreen);
    writer.write(QStringLiteral("slideshowBlackoutOtherScreens"), m_slideshowBlackoutOtherScreens);
    writer.write(QStringLiteral("slideshowFolderSearchDepth"), m_slideshowFolderSearchDepth);
    writer.write(QStringLiteral("slideshowSubfolderInclusionStyle"), m_slideshowSubfolderInclusionStyle);
    writer.write(QStringLiteral("slideshowIncludeVideos"), m_slideshowIncludeVideos);
    writer.write(QStringLiteral("slideshowAutoplayVideos"), m_slideshowAutoplayVideos);
    writer.write(QStringLiteral("slideshowPreventNextWhileVideoPlays"), m_slideshowPreventNextWhileVideoPlays);
    writer.write(QStringLiteral("quickviewImageScaling"), m_quickviewImageScaling);
    writer.write(QStringLiteral("quickviewImageScalingPercentage"), m_quickviewImageScalingPercentage);
    writer.write(QStringLiteral("quickviewAutohide"), m_quickviewAutohide);
    writer.write(QStringLiteral("quickviewAutoplayVideo"), m_quickviewAutoplayVideo);
    writer.write(QStringLiteral("quickviewMuteVideo"), m_quickviewMuteVideo);
    writer.write(QStringLiteral("quickviewOpensOnLaunch"), m_quickviewOpensOnLaunch);
    writer.write(QStringLiteral("quickviewBackgroundColor"), m_quickviewBackgroundColor);
    writer.write(QStringLiteral("quickviewScreen"), m_quickviewScreen);
    writer.write(QStringLiteral("quickviewRetainZoomBetweenItems"), m_quickviewRetainZoomBetweenItems);
    writer.write(QStringLiteral("quickviewTransitionDuration"), m_quickviewTransitionDuration);
    writer.write(QStringLiteral("openImageDestination"), m_openImageDestination);
    writer.write(QStringLiteral("openImageCustomApp"), m_openImageCustomApp);
    writer.write(QStringLiteral("imageWindowImageScaling"), m_imageWindowImageScaling);
    writer.write(QStringLiteral("imageWindowImageScalingPercentage"), m_imageWindowImageScalingPercentage);
    writer.writeList(QStringLiteral("favoriteApps"), m_favoriteApps,
                     [](const FileBookmark &bookmark, const QString &path, QString *error) {
                         return bookmark.toJson(path, error);
                     });
    writer.writeList(QStringLiteral("favoriteFolders"), m_favoriteFolders,
                     [](const FileBookmark &bookmark, const QString &path, QString *error) {
                         return bookmark.toJson(path, error);
                     });
    writer.write(QStringLiteral("detailedLogging"), m_detailedLogging);
    writer.write(QStringLiteral("isFirstLaunch"), m_isFirstLaunch);
    writer.write(QStringLiteral("firstLaunchDate"), m_firstLaunchDate);
    writer.write(QStringLiteral("hideOnDeactivate"), m_hideOnDeactivate);
    writer.write(QStringLiteral("settingsVersion"), m_settingsVersion);
    writer.write(QStringLiteral("alertsAndWarnings"), m_alertsAndWarnings);
    writer.write(QStringLiteral("alwaysUseThirdPartyVideoPlayer"), m_alwaysUseThirdPartyVideoPlayer);
    if (writer.failed()) {
        *error = writer.error();
        return std::nullopt;
    }
    return writer.object();
}

std::unique_ptr<AppSettings> AppSettings::fromJson(const QJsonObject &json, QString *error)
{
    auto settings = std::make_unique<AppSettings>();
    SettingsReader reader(json);

    // The version first: a file of any version is read as far as its keys are understood and is
    // written back in the current one. There is no conversion of single keys between versions.
    double version = currentSettingsVersion;
    reader.read(QStringLiteral("settingsVersion"), version);
    if (!reader.failed()) {
        using SettingsCoding::doubleText;
        if (version < currentSettingsVersion)
            logDebug(QStringLiteral("Updating settings from %1 to %2")
                         .arg(doubleText(version), doubleText(currentSettingsVersion)));
        else if (version > currentSettingsVersion)
            logError(QStringLiteral("Settings version %1 is newer than %2, some data may be lost")
                         .arg(doubleText(version), doubleText(currentSettingsVersion)));
    }
    settings->m_settingsVersion = currentSettingsVersion;

    reader.readList(QStringLiteral("windowSettings"), settings->m_windowSettings,
                    [](const QJsonValue &value, const QString &path,
                       QString *error) -> std::optional<WindowSettingsPtr> {
                        if (WindowSettingsPtr window = WindowSettings::fromJson(value, error, path))
                            return window;
                        return std::nullopt;
                    });
    SlideshowSettingsPtr slideshow = settings->m_slideshowSettings;
    reader.readNested(QStringLiteral("slideshowSettings"), slideshow,
                      [](const QJsonValue &value, const QString &path,
                         QString *error) -> std::optional<SlideshowSettingsPtr> {
                          if (SlideshowSettingsPtr slideshow = SlideshowSettings::fromJson(value, error, path))
                              return slideshow;
                          return std::nullopt;
                      });
    settings->adoptSlideshowSettings(slideshow);
    reader.read(QStringLiteral("sidebarAllowsKeyboardControl"), settings->m_sidebarAllowsKeyboardControl);
    reader.read(QStringLiteral("sidebarAutoexpandOnSelection"), settings->m_sidebarAutoexpandOnSelection);
    reader.read(QStringLiteral("sidebarRenameOnlyOnEnter"), settings->m_sidebarRenameOnlyOnEnter);
    reader.read(QStringLiteral("thumbnailsRenameOnlyOnEnter"), settings->m_thumbnailsRenameOnlyOnEnter);
    reader.read(QStringLiteral("thumbnailsAutoselectFirstItem"), settings->m_thumbnailsAutoselectFirstItem);
    reader.read(QStringLiteral("thumbnailsAutoselectNextItemAfterMove"),
                settings->m_thumbnailsAutoselectNextItemAfterMove);
    reader.read(QStringLiteral("thumbnailsHaveOutline"), settings->m_thumbnailsHaveOutline);
    reader.read(QStringLiteral("thumbnailOutlineColor"), settings->m_thumbnailOutlineColor);
    reader.read(QStringLiteral("thumbnailOutlineThickness"), settings->m_thumbnailOutlineThickness);
    reader.read(QStringLiteral("thumbnailsHaveShadow"), settings->m_thumbnailsHaveShadow);
    reader.read(QStringLiteral("thumbnailTextColor"), settings->m_thumbnailTextColor);
    reader.read(QStringLiteral("thumbnailBackgroundColor"), settings->m_thumbnailBackgroundColor);
    reader.read(QStringLiteral("thumbnailsAlignToBottom"), settings->m_thumbnailsAlignToBottom);
    reader.read(QStringLiteral("thumbnailsPreviewPauseWhenLosingKey"), settings->m_thumbnailsPreviewPauseWhenLosingKey);
    reader.read(QStringLiteral("thumbnailsPreviewAllowsKeyboardControl"),
                settings->m_thumbnailsPreviewAllowsKeyboardControl);
    reader.read(QStringLiteral("slideshowImageScaling"), settings->m_slideshowImageScaling);
    reader.read(QStringLiteral("slideshowImageScalingPercentage"), settings->m_slideshowImageScalingPercentage);
    reader.read(QStringLiteral("slideshowBackgroundColor"), settings->m_slideshowBackgroundColor);
    reader.read(QStringLiteral("slideshowControlsVisibleOnStart"), settings->m_slideshowControlsVisibleOnStart);
    reader.read(QStringLiteral("slideshowScreen"), settings->m_slideshowScreen);
    reader.read(QStringLiteral("slideshowBlackoutOtherScreens"), settings->m_slideshowBlackoutOtherScreens);
    reader.read(QStringLiteral("slideshowFolderSearchDepth"), settings->m_slideshowFolderSearchDepth);
    reader.read(QStringLiteral("slideshowSubfolderInclusionStyle"), settings->m_slideshowSubfolderInclusionStyle);
    reader.read(QStringLiteral("slideshowIncludeVideos"), settings->m_slideshowIncludeVideos);
    reader.read(QStringLiteral("slideshowAutoplayVideos"), settings->m_slideshowAutoplayVideos);
    reader.read(QStringLiteral("slideshowPreventNextWhileVideoPlays"), settings->m_slideshowPreventNextWhileVideoPlays);
    reader.read(QStringLiteral("quickviewImageScaling"), settings->m_quickviewImageScaling);
    reader.read(QStringLiteral("quickviewImageScalingPercentage"), settings->m_quickviewImageScalingPercentage);
    reader.read(QStringLiteral("quickviewAutohide"), settings->m_quickviewAutohide);
    reader.read(QStringLiteral("quickviewAutoplayVideo"), settings->m_quickviewAutoplayVideo);
    reader.read(QStringLiteral("quickviewMuteVideo"), settings->m_quickviewMuteVideo);
    reader.read(QStringLiteral("quickviewOpensOnLaunch"), settings->m_quickviewOpensOnLaunch);
    reader.read(QStringLiteral("quickviewBackgroundColor"), settings->m_quickviewBackgroundColor);
    reader.read(QStringLiteral("quickviewScreen"), settings->m_quickviewScreen);
    reader.read(QStringLiteral("quickviewRetainZoomBetweenItems"), settings->m_quickviewRetainZoomBetweenItems);
    reader.read(QStringLiteral("quickviewTransitionDuration"), settings->m_quickviewTransitionDuration);
    reader.read(QStringLiteral("openImageDestination"), settings->m_openImageDestination);
    reader.read(QStringLiteral("openImageCustomApp"), settings->m_openImageCustomApp);
    reader.read(QStringLiteral("imageWindowImageScaling"), settings->m_imageWindowImageScaling);
    reader.read(QStringLiteral("imageWindowImageScalingPercentage"), settings->m_imageWindowImageScalingPercentage);
    reader.readList(QStringLiteral("favoriteApps"), settings->m_favoriteApps, &FileBookmark::fromJson);
    reader.readList(QStringLiteral("favoriteFolders"), settings->m_favoriteFolders, &FileBookmark::fromJson);
    reader.read(QStringLiteral("detailedLogging"), settings->m_detailedLogging);
    reader.read(QStringLiteral("isFirstLaunch"), settings->m_isFirstLaunch);
    reader.read(QStringLiteral("firstLaunchDate"), settings->m_firstLaunchDate);
    reader.read(QStringLiteral("hideOnDeactivate"), settings->m_hideOnDeactivate);
    reader.read(QStringLiteral("alertsAndWarnings"), settings->m_alertsAndWarnings);
    reader.read(QStringLiteral("alwaysUseThirdPartyVideoPlayer"), settings->m_alwaysUseThirdPartyVideoPlayer);
    if (reader.failed()) {
        *error = reader.error();
        return nullptr;
    }
    return settings;
}

// MARK: fields

void AppSettings::setWindowSettings(const QList<WindowSettingsPtr> &windowSettings)
{
    QList<WindowSettingsPtr> windows = windowSettings;
    windows.removeAll(nullptr);
    update(m_windowSettings, windows, &AppSettings::windowSettingsChanged);
}

void AppSettings::setSlideshowSettings(const SlideshowSettingsPtr &slideshowSettings)
{
    if (!slideshowSettings || slideshowSettings == m_slideshowSettings)
        return;
    Q_EMIT willChange();
    adoptSlideshowSettings(slideshowSettings);
    Q_EMIT slideshowSettingsChanged(m_slideshowSettings);
    Q_EMIT changed();
}

void AppSettings::setSidebarAllowsKeyboardControl(bool sidebarAllowsKeyboardControl)
{
    update(m_sidebarAllowsKeyboardControl, sidebarAllowsKeyboardControl,
           &AppSettings::sidebarAllowsKeyboardControlChanged);
}

void AppSettings::setSidebarAutoexpandOnSelection(bool sidebarAutoexpandOnSelection)
{
    update(m_sidebarAutoexpandOnSelection, sidebarAutoexpandOnSelection,
           &AppSettings::sidebarAutoexpandOnSelectionChanged);
}

void AppSettings::setSidebarRenameOnlyOnEnter(bool sidebarRenameOnlyOnEnter)
{
    update(m_sidebarRenameOnlyOnEnter, sidebarRenameOnlyOnEnter, &AppSettings::sidebarRenameOnlyOnEnterChanged);
}

void AppSettings::setThumbnailsRenameOnlyOnEnter(bool thumbnailsRenameOnlyOnEnter)
{
    update(m_thumbnailsRenameOnlyOnEnter, thumbnailsRenameOnlyOnEnter,
           &AppSettings::thumbnailsRenameOnlyOnEnterChanged);
}

void AppSettings::setThumbnailsAutoselectFirstItem(bool thumbnailsAutoselectFirstItem)
{
    update(m_thumbnailsAutoselectFirstItem, thumbnailsAutoselectFirstItem,
           &AppSettings::thumbnailsAutoselectFirstItemChanged);
}

void AppSettings::setThumbnailsAutoselectNextItemAfterMove(bool thumbnailsAutoselectNextItemAfterMove)
{
    update(m_thumbnailsAutoselectNextItemAfterMove, thumbnailsAutoselectNextItemAfterMove,
           &AppSettings::thumbnailsAutoselectNextItemAfterMoveChanged);
}

void AppSettings::setThumbnailsHaveOutline(bool thumbnailsHaveOutline)
{
    update(m_thumbnailsHaveOutline, thumbnailsHaveOutline, &AppSettings::thumbnailsHaveOutlineChanged);
}

void AppSettings::setThumbnailOutlineColor(const QColor &thumbnailOutlineColor)
{
    update(m_thumbnailOutlineColor, thumbnailOutlineColor, &AppSettings::thumbnailOutlineColorChanged);
}

void AppSettings::setThumbnailOutlineThickness(int thumbnailOutlineThickness)
{
    update(m_thumbnailOutlineThickness, thumbnailOutlineThickness, &AppSettings::thumbnailOutlineThicknessChanged);
}

void AppSettings::setThumbnailsHaveShadow(bool thumbnailsHaveShadow)
{
    update(m_thumbnailsHaveShadow, thumbnailsHaveShadow, &AppSettings::thumbnailsHaveShadowChanged);
}

void AppSettings::setThumbnailTextColor(const QColor &thumbnailTextColor)
{
    update(m_thumbnailTextColor, thumbnailTextColor, &AppSettings::thumbnailTextColorChanged);
}

void AppSettings::setThumbnailBackgroundColor(const QColor &thumbnailBackgroundColor)
{
    update(m_thumbnailBackgroundColor, thumbnailBackgroundColor, &AppSettings::thumbnailBackgroundColorChanged);
}

void AppSettings::setThumbnailsAlignToBottom(bool thumbnailsAlignToBottom)
{
    update(m_thumbnailsAlignToBottom, thumbnailsAlignToBottom, &AppSettings::thumbnailsAlignToBottomChanged);
}

void AppSettings::setThumbnailsPreviewPauseWhenLosingKey(bool thumbnailsPreviewPauseWhenLosingKey)
{
    update(m_thumbnailsPreviewPauseWhenLosingKey, thumbnailsPreviewPauseWhenLosingKey,
           &AppSettings::thumbnailsPreviewPauseWhenLosingKeyChanged);
}

void AppSettings::setThumbnailsPreviewAllowsKeyboardControl(bool thumbnailsPreviewAllowsKeyboardControl)
{
    update(m_thumbnailsPreviewAllowsKeyboardControl, thumbnailsPreviewAllowsKeyboardControl,
           &AppSettings::thumbnailsPreviewAllowsKeyboardControlChanged);
}

void AppSettings::setSlideshowImageScaling(ImageDisplayScaling slideshowImageScaling)
{
    update(m_slideshowImageScaling, slideshowImageScaling, &AppSettings::slideshowImageScalingChanged);
}

void AppSettings::setSlideshowImageScalingPercentage(ImageScalePercentage slideshowImageScalingPercentage)
{
    update(m_slideshowImageScalingPercentage, slideshowImageScalingPercentage,
           &AppSettings::slideshowImageScalingPercentageChanged);
}

void AppSettings::setSlideshowBackgroundColor(const QColor &slideshowBackgroundColor)
{
    update(m_slideshowBackgroundColor, slideshowBackgroundColor, &AppSettings::slideshowBackgroundColorChanged);
}

void AppSettings::setSlideshowControlsVisibleOnStart(bool slideshowControlsVisibleOnStart)
{
    update(m_slideshowControlsVisibleOnStart, slideshowControlsVisibleOnStart,
           &AppSettings::slideshowControlsVisibleOnStartChanged);
}

void AppSettings::setSlideshowScreen(ScreenOption slideshowScreen)
{
    update(m_slideshowScreen, slideshowScreen, &AppSettings::slideshowScreenChanged);
}

void AppSettings::setSlideshowBlackoutOtherScreens(bool slideshowBlackoutOtherScreens)
{
    update(m_slideshowBlackoutOtherScreens, slideshowBlackoutOtherScreens,
           &AppSettings::slideshowBlackoutOtherScreensChanged);
}

void AppSettings::setSlideshowFolderSearchDepth(int slideshowFolderSearchDepth)
{
    update(m_slideshowFolderSearchDepth, slideshowFolderSearchDepth, &AppSettings::slideshowFolderSearchDepthChanged);
}

void AppSettings::setSlideshowSubfolderInclusionStyle(SubfolderInclusionStyle slideshowSubfolderInclusionStyle)
{
    update(m_slideshowSubfolderInclusionStyle, slideshowSubfolderInclusionStyle,
           &AppSettings::slideshowSubfolderInclusionStyleChanged);
}

void AppSettings::setSlideshowIncludeVideos(bool slideshowIncludeVideos)
{
    update(m_slideshowIncludeVideos, slideshowIncludeVideos, &AppSettings::slideshowIncludeVideosChanged);
}

void AppSettings::setSlideshowAutoplayVideos(bool slideshowAutoplayVideos)
{
    update(m_slideshowAutoplayVideos, slideshowAutoplayVideos, &AppSettings::slideshowAutoplayVideosChanged);
}

void AppSettings::setSlideshowPreventNextWhileVideoPlays(bool slideshowPreventNextWhileVideoPlays)
{
    update(m_slideshowPreventNextWhileVideoPlays, slideshowPreventNextWhileVideoPlays,
           &AppSettings::slideshowPreventNextWhileVideoPlaysChanged);
}

void AppSettings::setQuickviewImageScaling(ImageDisplayScaling quickviewImageScaling)
{
    update(m_quickviewImageScaling, quickviewImageScaling, &AppSettings::quickviewImageScalingChanged);
}

void AppSettings::setQuickviewImageScalingPercentage(ImageScalePercentage quickviewImageScalingPercentage)
{
    update(m_quickviewImageScalingPercentage, quickviewImageScalingPercentage,
           &AppSettings::quickviewImageScalingPercentageChanged);
}

void AppSettings::setQuickviewAutohide(bool quickviewAutohide)
{
    update(m_quickviewAutohide, quickviewAutohide, &AppSettings::quickviewAutohideChanged);
}

void AppSettings::setQuickviewAutoplayVideo(bool quickviewAutoplayVideo)
{
    update(m_quickviewAutoplayVideo, quickviewAutoplayVideo, &AppSettings::quickviewAutoplayVideoChanged);
}

void AppSettings::setQuickviewMuteVideo(bool quickviewMuteVideo)
{
    update(m_quickviewMuteVideo, quickviewMuteVideo, &AppSettings::quickviewMuteVideoChanged);
}

void AppSettings::setQuickviewOpensOnLaunch(bool quickviewOpensOnLaunch)
{
    update(m_quickviewOpensOnLaunch, quickviewOpensOnLaunch, &AppSettings::quickviewOpensOnLaunchChanged);
}

void AppSettings::setQuickviewBackgroundColor(const QColor &quickviewBackgroundColor)
{
    update(m_quickviewBackgroundColor, quickviewBackgroundColor, &AppSettings::quickviewBackgroundColorChanged);
}

void AppSettings::setQuickviewScreen(ScreenOption quickviewScreen)
{
    update(m_quickviewScreen, quickviewScreen, &AppSettings::quickviewScreenChanged);
}

void AppSettings::setQuickviewRetainZoomBetweenItems(bool quickviewRetainZoomBetweenItems)
{
    update(m_quickviewRetainZoomBetweenItems, quickviewRetainZoomBetweenItems,
           &AppSettings::quickviewRetainZoomBetweenItemsChanged);
}

void AppSettings::setQuickviewTransitionDuration(double quickviewTransitionDuration)
{
    update(m_quickviewTransitionDuration, quickviewTransitionDuration,
           &AppSettings::quickviewTransitionDurationChanged);
}

void AppSettings::setOpenImageDestination(OpenImageDestination openImageDestination)
{
    update(m_openImageDestination, openImageDestination, &AppSettings::openImageDestinationChanged);
}

void AppSettings::setOpenImageCustomApp(const PXFilePtr &openImageCustomApp)
{
    update(m_openImageCustomApp, openImageCustomApp, &AppSettings::openImageCustomAppChanged);
}

void AppSettings::setImageWindowImageScaling(ImageDisplayScaling imageWindowImageScaling)
{
    update(m_imageWindowImageScaling, imageWindowImageScaling, &AppSettings::imageWindowImageScalingChanged);
}

void AppSettings::setImageWindowImageScalingPercentage(ImageScalePercentage imageWindowImageScalingPercentage)
{
    update(m_imageWindowImageScalingPercentage, imageWindowImageScalingPercentage,
           &AppSettings::imageWindowImageScalingPercentageChanged);
}

void AppSettings::setFavoriteApps(const QList<FileBookmark> &favoriteApps)
{
    update(m_favoriteApps, favoriteApps, &AppSettings::favoriteAppsChanged);
}

void AppSettings::setFavoriteFolders(const QList<FileBookmark> &favoriteFolders)
{
    update(m_favoriteFolders, favoriteFolders, &AppSettings::favoriteFoldersChanged);
}

void AppSettings::setDetailedLogging(bool detailedLogging)
{
    update(m_detailedLogging, detailedLogging, &AppSettings::detailedLoggingChanged);
}

void AppSettings::setIsFirstLaunch(bool isFirstLaunch)
{
    update(m_isFirstLaunch, isFirstLaunch, &AppSettings::isFirstLaunchChanged);
}

void AppSettings::setFirstLaunchDate(const QDateTime &firstLaunchDate)
{
    update(m_firstLaunchDate, firstLaunchDate, &AppSettings::firstLaunchDateChanged);
}

void AppSettings::setHideOnDeactivate(bool hideOnDeactivate)
{
    update(m_hideOnDeactivate, hideOnDeactivate, &AppSettings::hideOnDeactivateChanged);
}

void AppSettings::setSettingsVersion(double settingsVersion)
{
    update(m_settingsVersion, settingsVersion, &AppSettings::settingsVersionChanged);
}

void AppSettings::setAlertsAndWarnings(AlertsAndWarnings alertsAndWarnings)
{
    update(m_alertsAndWarnings, alertsAndWarnings, &AppSettings::alertsAndWarningsChanged);
}

void AppSettings::setAlwaysUseThirdPartyVideoPlayer(bool alwaysUseThirdPartyVideoPlayer)
{
    update(m_alwaysUseThirdPartyVideoPlayer, alwaysUseThirdPartyVideoPlayer,
           &AppSettings::alwaysUseThirdPartyVideoPlayerChanged);
}

void AppSettings::setSelectedSettingsSection(const std::optional<SettingsSection> &selectedSettingsSection)
{
    update(m_selectedSettingsSection, selectedSettingsSection, &AppSettings::selectedSettingsSectionChanged);
}
