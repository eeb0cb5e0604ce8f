#pragma once

#include "core/model/PXFile.h"
#include "core/settings/ObservableSettings.h"
#include "core/settings/SettingsValueSets.h"

#include <QJsonObject>
#include <QJsonValue>
#include <QList>
#include <QVariantMap>

#include <memory>
#include <optional>

class WindowSettings;
using WindowSettingsPtr = std::shared_ptr<WindowSettings>;

// The layout and browsing options of one main window: which folder its sidebar shows and which
// folders are expanded and selected there, the sizes of its panes, how its thumbnails are sorted,
// filtered and labelled, how deep it looks into subfolders, which inspector tab is open.
//
// Each window owns its own object (a duplicate() of a saved one, so two windows never share one);
// the application settings keep the list that is saved. The window's parts read the fields and
// follow their change signals. Main thread only.
//
// File references are file objects: a folder that is gone is a placeholder, never an error. The
// sets of folders hold no duplicates and keep the order they were given in.
class WindowSettings : public ObservableSettings
{
    Q_OBJECT
    // A null root folder is refused (the sidebar always has one); the sets drop duplicates.
    PIXCOVE_SETTING_WITH_SETTER(PXFilePtr, sidebarRootFolder, setSidebarRootFolder,
                                PXFile::fileForPath(defaultSidebarRootPath()));
    PIXCOVE_SETTING_WITH_SETTER(QList<PXFilePtr>, sidebarExpandedFolders, setSidebarExpandedFolders);
    PIXCOVE_SETTING_WITH_SETTER(QList<PXFilePtr>, sidebarSelection, setSidebarSelection);
    PIXCOVE_SETTING(SidebarInfoOptions, sidebarInfo, setSidebarInfo, SidebarInfoOptions::filesAndFolders);
    PIXCOVE_SETTING(FileSortType, sidebarSortType, setSidebarSortType, FileSortType::name);
    PIXCOVE_SETTING(bool, sidebarReverseSort, setSidebarReverseSort, false);
    PIXCOVE_SETTING(FileFilterType, sidebarFileFilter, setSidebarFileFilter, FileFilterType::visibleFolders);
    PIXCOVE_SETTING(double, sidebarWidth, setSidebarWidth, 250.0);
    PIXCOVE_SETTING(bool, sidebarCollapsed, setSidebarCollapsed, false);
    PIXCOVE_SETTING(double, inspectorWidth, setInspectorWidth, 300.0);
    PIXCOVE_SETTING(bool, inspectorCollapsed, setInspectorCollapsed, true);
    PIXCOVE_SETTING(double, favoritesHeight, setFavoritesHeight, 300.0);
    PIXCOVE_SETTING(bool, favoritesCollapsed, setFavoritesCollapsed, false);
    PIXCOVE_SETTING(double, browserVerticalSplitPosition, setBrowserVerticalSplitPosition, 600.0);
    PIXCOVE_SETTING(double, browserHorizontalSplitPosition, setBrowserHorizontalSplitPosition, 600.0);
    PIXCOVE_SETTING(BrowserLayout, browserLayout, setBrowserLayout, BrowserLayout::rightPreview);
    PIXCOVE_SETTING(FileSortType, thumbnailsFileSort, setThumbnailsFileSort, FileSortType::name);
    PIXCOVE_SETTING(FolderSortType, thumbnailsFolderSort, setThumbnailsFolderSort, FolderSortType::mixed);
    PIXCOVE_SETTING(bool, thumbnailsReverseSort, setThumbnailsReverseSort, false);
    PIXCOVE_SETTING(FileFilterType, thumbnailsFileFilter, setThumbnailsFileFilter, FileFilterType::visible);
    PIXCOVE_SETTING(bool, thumbnailsHideFolders, setThumbnailsHideFolders, false);
    PIXCOVE_SETTING(int, thumbnailSize, setThumbnailSize, 200);
    PIXCOVE_SETTING(bool, thumbnailShowInformation, setThumbnailShowInformation, true);
    PIXCOVE_SETTING(ThumbnailInfoOptions, thumbnailInformation, setThumbnailInformation,
                    ThumbnailInfoOption::filename | ThumbnailInfoOption::dimensions);
    PIXCOVE_SETTING(int, thumbnailsFolderSearchDepth, setThumbnailsFolderSearchDepth, 0);
    PIXCOVE_SETTING(SubfolderInclusionStyle, thumbnailsSubfolderInclusionStyle, setThumbnailsSubfolderInclusionStyle,
                    SubfolderInclusionStyle::byFolder);
    PIXCOVE_SETTING(InspectorTab, inspectorActiveTab, setInspectorActiveTab, InspectorTab::general);
    PIXCOVE_SETTING(std::optional<QVariantMap>, toolbarConfiguration, setToolbarConfiguration);

public:
    // The defaults; the sidebar shows the user's Pictures folder (a placeholder when it is missing).
    explicit WindowSettings(QObject *parent = nullptr);

    // The XDG Pictures folder, else ~/Pictures.
    static QString defaultSidebarRootPath();

    // A new, independent object with the same values, made by encoding and decoding this one.
    // Failing either way is a programming error and stops the program.
    WindowSettingsPtr duplicate() const;

    std::optional<QJsonObject> toJson(QString *error, const QString &keyPath = {}) const;
    // Null with the reason when `json` is not a readable window settings object.
    static WindowSettingsPtr fromJson(const QJsonValue &json, QString *error, const QString &keyPath = {});
};
