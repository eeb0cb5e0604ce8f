#pragma once

#include "core/model/PXFileForward.h"
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
    Q_PROPERTY(
        PXFilePtr sidebarRootFolder READ sidebarRootFolder WRITE setSidebarRootFolder NOTIFY sidebarRootFolderChanged)
    Q_PROPERTY(QList<PXFilePtr> sidebarExpandedFolders READ sidebarExpandedFolders WRITE setSidebarExpandedFolders
                   NOTIFY sidebarExpandedFoldersChanged)
    Q_PROPERTY(QList<PXFilePtr> sidebarSelection READ sidebarSelection WRITE setSidebarSelection NOTIFY
                   sidebarSelectionChanged)
    Q_PROPERTY(SidebarInfoOptions sidebarInfo READ sidebarInfo WRITE setSidebarInfo NOTIFY sidebarInfoChanged)
    Q_PROPERTY(FileSortType sidebarSortType READ sidebarSortType WRITE setSidebarSortType NOTIFY sidebarSortTypeChanged)
    Q_PROPERTY(
        bool sidebarReverseSort READ sidebarReverseSort WRITE setSidebarReverseSort NOTIFY sidebarReverseSortChanged)
    Q_PROPERTY(FileFilterType sidebarFileFilter READ sidebarFileFilter WRITE setSidebarFileFilter NOTIFY
                   sidebarFileFilterChanged)
    Q_PROPERTY(double sidebarWidth READ sidebarWidth WRITE setSidebarWidth NOTIFY sidebarWidthChanged)
    Q_PROPERTY(bool sidebarCollapsed READ sidebarCollapsed WRITE setSidebarCollapsed NOTIFY sidebarCollapsedChanged)
    Q_PROPERTY(double inspectorWidth READ inspectorWidth WRITE setInspectorWidth NOTIFY inspectorWidthChanged)
    Q_PROPERTY(
        bool inspectorCollapsed READ inspectorCollapsed WRITE setInspectorCollapsed NOTIFY inspectorCollapsedChanged)
    Q_PROPERTY(double favoritesHeight READ favoritesHeight WRITE setFavoritesHeight NOTIFY favoritesHeightChanged)
    Q_PROPERTY(
        bool favoritesCollapsed READ favoritesCollapsed WRITE setFavoritesCollapsed NOTIFY favoritesCollapsedChanged)
    Q_PROPERTY(double browserVerticalSplitPosition READ browserVerticalSplitPosition WRITE
                   setBrowserVerticalSplitPosition NOTIFY browserVerticalSplitPositionChanged)
    Q_PROPERTY(double browserHorizontalSplitPosition READ browserHorizontalSplitPosition WRITE
                   setBrowserHorizontalSplitPosition NOTIFY browserHorizontalSplitPositionChanged)
    Q_PROPERTY(BrowserLayout browserLayout READ browserLayout WRITE setBrowserLayout NOTIFY browserLayoutChanged)
    Q_PROPERTY(FileSortType thumbnailsFileSort READ thumbnailsFileSort WRITE setThumbnailsFileSort NOTIFY
                   thumbnailsFileSortChanged)
    Q_PROPERTY(FolderSortType thumbnailsFolderSort READ thumbnailsFolderSort WRITE setThumbnailsFolderSort NOTIFY
                   thumbnailsFolderSortChanged)
    Q_PROPERTY(bool thumbnailsReverseSort READ thumbnailsReverseSort WRITE setThumbnailsReverseSort NOTIFY
                   thumbnailsReverseSortChanged)
    Q_PROPERTY(FileFilterType thumbnailsFileFilter READ thumbnailsFileFilter WRITE setThumbnailsFileFilter NOTIFY
                   thumbnailsFileFilterChanged)
    Q_PROPERTY(bool thumbnailsHideFolders READ thumbnailsHideFolders WRITE setThumbnailsHideFolders NOTIFY
                   thumbnailsHideFoldersChanged)
    Q_PROPERTY(int thumbnailSize READ thumbnailSize WRITE setThumbnailSize NOTIFY thumbnailSizeChanged)
    Q_PROPERTY(bool thumbnailShowInformation READ thumbnailShowInformation WRITE setThumbnailShowInformation NOTIFY
                   thumbnailShowInformationChanged)
    Q_PROPERTY(ThumbnailInfoOptions thumbnailInformation READ thumbnailInformation WRITE setThumbnailInformation NOTIFY
                   thumbnailInformationChanged)
    Q_PROPERTY(int thumbnailsFolderSearchDepth READ thumbnailsFolderSearchDepth WRITE setThumbnailsFolderSearchDepth
                   NOTIFY thumbnailsFolderSearchDepthChanged)
    Q_PROPERTY(SubfolderInclusionStyle thumbnailsSubfolderInclusionStyle READ thumbnailsSubfolderInclusionStyle WRITE
                   setThumbnailsSubfolderInclusionStyle NOTIFY thumbnailsSubfolderInclusionStyleChanged)
    Q_PROPERTY(InspectorTab inspectorActiveTab READ inspectorActiveTab WRITE setInspectorActiveTab NOTIFY
                   inspectorActiveTabChanged)
    Q_PROPERTY(std::optional<QVariantMap> toolbarConfiguration READ toolbarConfiguration WRITE setToolbarConfiguration
                   NOTIFY toolbarConfigurationChanged)

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

    const PXFilePtr &sidebarRootFolder() const { return m_sidebarRootFolder; }
    const QList<PXFilePtr> &sidebarExpandedFolders() const { return m_sidebarExpandedFolders; }
    const QList<PXFilePtr> &sidebarSelection() const { return m_sidebarSelection; }
    SidebarInfoOptions sidebarInfo() const { return m_sidebarInfo; }
    FileSortType sidebarSortType() const { return m_sidebarSortType; }
    bool sidebarReverseSort() const { return m_sidebarReverseSort; }
    FileFilterType sidebarFileFilter() const { return m_sidebarFileFilter; }
    double sidebarWidth() const { return m_sidebarWidth; }
    bool sidebarCollapsed() const { return m_sidebarCollapsed; }
    double inspectorWidth() const { return m_inspectorWidth; }
    bool inspectorCollapsed() const { return m_inspectorCollapsed; }
    double favoritesHeight() const { return m_favoritesHeight; }
    bool favoritesCollapsed() const { return m_favoritesCollapsed; }
    double browserVerticalSplitPosition() const { return m_browserVerticalSplitPosition; }
    double browserHorizontalSplitPosition() const { return m_browserHorizontalSplitPosition; }
    BrowserLayout browserLayout() const { return m_browserLayout; }
    FileSortType thumbnailsFileSort() const { return m_thumbnailsFileSort; }
    FolderSortType thumbnailsFolderSort() const { return m_thumbnailsFolderSort; }
    bool thumbnailsReverseSort() const { return m_thumbnailsReverseSort; }
    FileFilterType thumbnailsFileFilter() const { return m_thumbnailsFileFilter; }
    bool thumbnailsHideFolders() const { return m_thumbnailsHideFolders; }
    int thumbnailSize() const { return m_thumbnailSize; }
    bool thumbnailShowInformation() const { return m_thumbnailShowInformation; }
    ThumbnailInfoOptions thumbnailInformation() const { return m_thumbnailInformation; }
    int thumbnailsFolderSearchDepth() const { return m_thumbnailsFolderSearchDepth; }
    SubfolderInclusionStyle thumbnailsSubfolderInclusionStyle() const { return m_thumbnailsSubfolderInclusionStyle; }
    InspectorTab inspectorActiveTab() const { return m_inspectorActiveTab; }
    const std::optional<QVariantMap> &toolbarConfiguration() const { return m_toolbarConfiguration; }

    // A null root folder is refused (the sidebar always has one); the sets drop duplicates.
    void setSidebarRootFolder(const PXFilePtr &sidebarRootFolder);
    void setSidebarExpandedFolders(const QList<PXFilePtr> &sidebarExpandedFolders);
    void setSidebarSelection(const QList<PXFilePtr> &sidebarSelection);
    void setSidebarInfo(SidebarInfoOptions sidebarInfo);
    void setSidebarSortType(FileSortType sidebarSortType);
    void setSidebarReverseSort(bool sidebarReverseSort);
    void setSidebarFileFilter(FileFilterType sidebarFileFilter);
    void setSidebarWidth(double sidebarWidth);
    void setSidebarCollapsed(bool sidebarCollapsed);
    void setInspectorWidth(double inspectorWidth);
    void setInspectorCollapsed(bool inspectorCollapsed);
    void setFavoritesHeight(double favoritesHeight);
    void setFavoritesCollapsed(bool favoritesCollapsed);
    void setBrowserVerticalSplitPosition(double browserVerticalSplitPosition);
    void setBrowserHorizontalSplitPosition(double browserHorizontalSplitPosition);
    void setBrowserLayout(BrowserLayout browserLayout);
    void setThumbnailsFileSort(FileSortType thumbnailsFileSort);
    void setThumbnailsFolderSort(FolderSortType thumbnailsFolderSort);
    void setThumbnailsReverseSort(bool thumbnailsReverseSort);
    void setThumbnailsFileFilter(FileFilterType thumbnailsFileFilter);
    void setThumbnailsHideFolders(bool thumbnailsHideFolders);
    void setThumbnailSize(int thumbnailSize);
    void setThumbnailShowInformation(bool thumbnailShowInformation);
    void setThumbnailInformation(ThumbnailInfoOptions thumbnailInformation);
    void setThumbnailsFolderSearchDepth(int thumbnailsFolderSearchDepth);
    void setThumbnailsSubfolderInclusionStyle(SubfolderInclusionStyle thumbnailsSubfolderInclusionStyle);
    void setInspectorActiveTab(InspectorTab inspectorActiveTab);
    void setToolbarConfiguration(const std::optional<QVariantMap> &toolbarConfiguration);

Q_SIGNALS:
    void sidebarRootFolderChanged(const PXFilePtr &sidebarRootFolder);
    void sidebarExpandedFoldersChanged(const QList<PXFilePtr> &sidebarExpandedFolders);
    void sidebarSelectionChanged(const QList<PXFilePtr> &sidebarSelection);
    void sidebarInfoChanged(SidebarInfoOptions sidebarInfo);
    void sidebarSortTypeChanged(FileSortType sidebarSortType);
    void sidebarReverseSortChanged(bool sidebarReverseSort);
    void sidebarFileFilterChanged(FileFilterType sidebarFileFilter);
    void sidebarWidthChanged(double sidebarWidth);
    void sidebarCollapsedChanged(bool sidebarCollapsed);
    void inspectorWidthChanged(double inspectorWidth);
    void inspectorCollapsedChanged(bool inspectorCollapsed);
    void favoritesHeightChanged(double favoritesHeight);
    void favoritesCollapsedChanged(bool favoritesCollapsed);
    void browserVerticalSplitPositionChanged(double browserVerticalSplitPosition);
    void browserHorizontalSplitPositionChanged(double browserHorizontalSplitPosition);
    void browserLayoutChanged(BrowserLayout browserLayout);
    void thumbnailsFileSortChanged(FileSortType thumbnailsFileSort);
    void thumbnailsFolderSortChanged(FolderSortType thumbnailsFolderSort);
    void thumbnailsReverseSortChanged(bool thumbnailsReverseSort);
    void thumbnailsFileFilterChanged(FileFilterType thumbnailsFileFilter);
    void thumbnailsHideFoldersChanged(bool thumbnailsHideFolders);
    void thumbnailSizeChanged(int thumbnailSize);
    void thumbnailShowInformationChanged(bool thumbnailShowInformation);
    void thumbnailInformationChanged(ThumbnailInfoOptions thumbnailInformation);
    void thumbnailsFolderSearchDepthChanged(int thumbnailsFolderSearchDepth);
    void thumbnailsSubfolderInclusionStyleChanged(SubfolderInclusionStyle thumbnailsSubfolderInclusionStyle);
    void inspectorActiveTabChanged(InspectorTab inspectorActiveTab);
    void toolbarConfigurationChanged(const std::optional<QVariantMap> &toolbarConfiguration);

private:
    PXFilePtr m_sidebarRootFolder;
    QList<PXFilePtr> m_sidebarExpandedFolders;
    QList<PXFilePtr> m_sidebarSelection;
    SidebarInfoOptions m_sidebarInfo = SidebarInfoOptions::filesAndFolders;
    FileSortType m_sidebarSortType = FileSortType::name;
    bool m_sidebarReverseSort = false;
    FileFilterType m_sidebarFileFilter = FileFilterType::visibleFolders;
    double m_sidebarWidth = 250.0;
    bool m_sidebarCollapsed = false;
    double m_inspectorWidth = 300.0;
    bool m_inspectorCollapsed = true;
    double m_favoritesHeight = 300.0;
    bool m_favoritesCollapsed = false;
    double m_browserVerticalSplitPosition = 600.0;
    double m_browserHorizontalSplitPosition = 600.0;
    BrowserLayout m_browserLayout = BrowserLayout::rightPreview;
    FileSortType m_thumbnailsFileSort = FileSortType::name;
    FolderSortType m_thumbnailsFolderSort = FolderSortType::mixed;
    bool m_thumbnailsReverseSort = false;
    FileFilterType m_thumbnailsFileFilter = FileFilterType::visible;
    bool m_thumbnailsHideFolders = false;
    int m_thumbnailSize = 200;
    bool m_thumbnailShowInformation = true;
    ThumbnailInfoOptions m_thumbnailInformation = ThumbnailInfoOption::filename | ThumbnailInfoOption::dimensions;
    int m_thumbnailsFolderSearchDepth = 0;
    SubfolderInclusionStyle m_thumbnailsSubfolderInclusionStyle = SubfolderInclusionStyle::byFolder;
    InspectorTab m_inspectorActiveTab = InspectorTab::general;
    std::optional<QVariantMap> m_toolbarConfiguration;
};
