#include "core/settings/WindowSettings.h"

#include "core/model/PXFile.h"
#include "core/settings/SettingsCoding.h"

#include <QDir>
#include <QStandardPaths>

namespace {

// A set keeps each file once, in the order given.
QList<PXFilePtr> withoutDuplicates(const QList<PXFilePtr> &files)
{
    QList<PXFilePtr> unique;
    unique.reserve(files.size());
    for (const PXFilePtr &file : files) {
        if (file && !unique.contains(file))
            unique.append(file);
    }
    return unique;
}

} // namespace

WindowSettings::WindowSettings(QObject *parent)
    : ObservableSettings(parent)
    , m_sidebarRootFolder(PXFile::fileForPath(defaultSidebarRootPath()))
{
    if (!m_sidebarRootFolder)
        qFatal("Unable to make a file object for the Pictures folder %s", qUtf8Printable(defaultSidebarRootPath()));
}

QString WindowSettings::defaultSidebarRootPath()
{
    const QString pictures = QStandardPaths::writableLocation(QStandardPaths::PicturesLocation);
    return pictures.isEmpty() ? QDir::homePath() + QStringLiteral("/Pictures") : pictures;
}

WindowSettingsPtr WindowSettings::duplicate() const
{
    QString error;
    const std::optional<QJsonObject> json = toJson(&error);
    WindowSettingsPtr copy = json ? fromJson(*json, &error) : nullptr;
    if (!copy)
        qFatal("Unable to duplicate WindowSettings: %s", qUtf8Printable(error));
    return copy;
}

std::optional<QJsonObject> WindowSettings::toJson(QString *error, const QString &keyPath) const
{
    SettingsWriter writer(keyPath);
    writer.write(QStringLiteral("sidebarRootFolder"), m_sidebarRootFolder);
    writer.write(QStringLiteral("sidebarExpandedFolders"), m_sidebarExpandedFolders);
    writer.write(QStringLiteral("sidebarSelection"), m_sidebarSelection);
    writer.write(QStringLiteral("sidebarInfo"), m_sidebarInfo);
    writer.write(QStringLiteral("sidebarSortType"), m_sidebarSortType);
    writer.write(QStringLiteral("sidebarReverseSort"), m_sidebarReverseSort);
    writer.write(QStringLiteral("sidebarFileFilter"), m_sidebarFileFilter);
    writer.write(QStringLiteral("sidebarWidth"), m_sidebarWidth);
    writer.write(QStringLiteral("sidebarCollapsed"), m_sidebarCollapsed);
    writer.write(QStringLiteral("inspectorWidth"), m_inspectorWidth);
    writer.write(QStringLiteral("inspectorCollapsed"), m_inspectorCollapsed);
    writer.write(QStringLiteral("favoritesHeight"), m_favoritesHeight);
    writer.write(QStringLiteral("favoritesCollapsed"), m_favoritesCollapsed);
    writer.write(QStringLiteral("browserVerticalSplitPosition"), m_browserVerticalSplitPosition);
    writer.write(QStringLiteral("browserHorizontalSplitPosition"), m_browserHorizontalSplitPosition);
    writer.write(QStringLiteral("browserLayout"), m_browserLayout);
    writer.write(QStringLiteral("thumbnailsFileSort"), m_thumbnailsFileSort);
    writer.write(QStringLiteral("thumbnailsFolderSort"), m_thumbnailsFolderSort);
    writer.write(QStringLiteral("thumbnailsReverseSort"), m_thumbnailsReverseSort);
    writer.write(QStringLiteral("thumbnailsFileFilter"), m_thumbnailsFileFilter);
    writer.write(QStringLiteral("thumbnailsHideFolders"), m_thumbnailsHideFolders);
    writer.write(QStringLiteral("thumbnailSize"), m_thumbnailSize);
    writer.write(QStringLiteral("thumbnailShowInformation"), m_thumbnailShowInformation);
    writer.write(QStringLiteral("thumbnailInformation"), m_thumbnailInformation);
    writer.write(QStringLiteral("thumbnailsFolderSearchDepth"), m_thumbnailsFolderSearchDepth);
    writer.write(QStringLiteral("thumbnailsSubfolderInclusionStyle"), m_thumbnailsSubfolderInclusionStyle);
    writer.write(QStringLiteral("inspectorActiveTab"), m_inspectorActiveTab);
    writer.write(QStringLiteral("toolbarConfiguration"), m_toolbarConfiguration);
    if (writer.failed()) {
        *error = writer.error();
        return std::nullopt;
    }
    return writer.object();
}

WindowSettingsPtr WindowSettings::fromJson(const QJsonValue &json, QString *error, const QString &keyPath)
{
    const std::optional<QJsonObject> object = SettingsReader::objectAt(json, keyPath, error);
    if (!object)
        return nullptr;
    auto settings = std::make_shared<WindowSettings>();
    SettingsReader reader(*object, keyPath);
    reader.read(QStringLiteral("sidebarRootFolder"), settings->m_sidebarRootFolder);
    reader.read(QStringLiteral("sidebarExpandedFolders"), settings->m_sidebarExpandedFolders);
    reader.read(QStringLiteral("sidebarSelection"), settings->m_sidebarSelection);
    reader.read(QStringLiteral("sidebarInfo"), settings->m_sidebarInfo);
    reader.read(QStringLiteral("sidebarSortType"), settings->m_sidebarSortType);
    reader.read(QStringLiteral("sidebarReverseSort"), settings->m_sidebarReverseSort);
    reader.read(QStringLiteral("sidebarFileFilter"), settings->m_sidebarFileFilter);
    reader.read(QStringLiteral("sidebarWidth"), settings->m_sidebarWidth);
    reader.read(QStringLiteral("sidebarCollapsed"), settings->m_sidebarCollapsed);
    reader.read(QStringLiteral("inspectorWidth"), settings->m_inspectorWidth);
    reader.read(QStringLiteral("inspectorCollapsed"), settings->m_inspectorCollapsed);
    reader.read(QStringLiteral("favoritesHeight"), settings->m_favoritesHeight);
    reader.read(QStringLiteral("favoritesCollapsed"), settings->m_favoritesCollapsed);
    reader.read(QStringLiteral("browserVerticalSplitPosition"), settings->m_browserVerticalSplitPosition);
    reader.read(QStringLiteral("browserHorizontalSplitPosition"), settings->m_browserHorizontalSplitPosition);
    reader.read(QStringLiteral("browserLayout"), settings->m_browserLayout);
    reader.read(QStringLiteral("thumbnailsFileSort"), settings->m_thumbnailsFileSort);
    reader.read(QStringLiteral("thumbnailsFolderSort"), settings->m_thumbnailsFolderSort);
    reader.read(QStringLiteral("thumbnailsReverseSort"), settings->m_thumbnailsReverseSort);
    reader.read(QStringLiteral("thumbnailsFileFilter"), settings->m_thumbnailsFileFilter);
    reader.read(QStringLiteral("thumbnailsHideFolders"), settings->m_thumbnailsHideFolders);
    reader.read(QStringLiteral("thumbnailSize"), settings->m_thumbnailSize);
    reader.read(QStringLiteral("thumbnailShowInformation"), settings->m_thumbnailShowInformation);
    reader.read(QStringLiteral("thumbnailInformation"), settings->m_thumbnailInformation);
    reader.read(QStringLiteral("thumbnailsFolderSearchDepth"), settings->m_thumbnailsFolderSearchDepth);
    reader.read(QStringLiteral("thumbnailsSubfolderInclusionStyle"), settings->m_thumbnailsSubfolderInclusionStyle);
    reader.read(QStringLiteral("inspectorActiveTab"), settings->m_inspectorActiveTab);
    reader.read(QStringLiteral("toolbarConfiguration"), settings->m_toolbarConfiguration);
    if (reader.failed()) {
        *error = reader.error();
        return nullptr;
    }
    return settings;
}

// MARK: fields

void WindowSettings::setSidebarRootFolder(const PXFilePtr &sidebarRootFolder)
{
    if (sidebarRootFolder)
        update(m_sidebarRootFolder, sidebarRootFolder, &WindowSettings::sidebarRootFolderChanged);
}

void WindowSettings::setSidebarExpandedFolders(const QList<PXFilePtr> &sidebarExpandedFolders)
{
    update(m_sidebarExpandedFolders, withoutDuplicates(sidebarExpandedFolders),
           &WindowSettings::sidebarExpandedFoldersChanged);
}

void WindowSettings::setSidebarSelection(const QList<PXFilePtr> &sidebarSelection)
{
    update(m_sidebarSelection, withoutDuplicates(sidebarSelection), &WindowSettings::sidebarSelectionChanged);
}

void WindowSettings::setSidebarInfo(SidebarInfoOptions sidebarInfo)
{
    update(m_sidebarInfo, sidebarInfo, &WindowSettings::sidebarInfoChanged);
}

void WindowSettings::setSidebarSortType(FileSortType sidebarSortType)
{
    update(m_sidebarSortType, sidebarSortType, &WindowSettings::sidebarSortTypeChanged);
}

void WindowSettings::setSidebarReverseSort(bool sidebarReverseSort)
{
    update(m_sidebarReverseSort, sidebarReverseSort, &WindowSettings::sidebarReverseSortChanged);
}

void WindowSettings::setSidebarFileFilter(FileFilterType sidebarFileFilter)
{
    update(m_sidebarFileFilter, sidebarFileFilter, &WindowSettings::sidebarFileFilterChanged);
}

void WindowSettings::setSidebarWidth(double sidebarWidth)
{
    update(m_sidebarWidth, sidebarWidth, &WindowSettings::sidebarWidthChanged);
}

void WindowSettings::setSidebarCollapsed(bool sidebarCollapsed)
{
    update(m_sidebarCollapsed, sidebarCollapsed, &WindowSettings::sidebarCollapsedChanged);
}

void WindowSettings::setInspectorWidth(double inspectorWidth)
{
    update(m_inspectorWidth, inspectorWidth, &WindowSettings::inspectorWidthChanged);
}

void WindowSettings::setInspectorCollapsed(bool inspectorCollapsed)
{
    update(m_inspectorCollapsed, inspectorCollapsed, &WindowSettings::inspectorCollapsedChanged);
}

void WindowSettings::setFavoritesHeight(double favoritesHeight)
{
    update(m_favoritesHeight, favoritesHeight, &WindowSettings::favoritesHeightChanged);
}

void WindowSettings::setFavoritesCollapsed(bool favoritesCollapsed)
{
    update(m_favoritesCollapsed, favoritesCollapsed, &WindowSettings::favoritesCollapsedChanged);
}

void WindowSettings::setBrowserVerticalSplitPosition(double browserVerticalSplitPosition)
{
    update(m_browserVerticalSplitPosition, browserVerticalSplitPosition,
           &WindowSettings::browserVerticalSplitPositionChanged);
}

void WindowSettings::setBrowserHorizontalSplitPosition(double browserHorizontalSplitPosition)
{
    update(m_browserHorizontalSplitPosition, browserHorizontalSplitPosition,
           &WindowSettings::browserHorizontalSplitPositionChanged);
}

void WindowSettings::setBrowserLayout(BrowserLayout browserLayout)
{
    update(m_browserLayout, browserLayout, &WindowSettings::browserLayoutChanged);
}

void WindowSettings::setThumbnailsFileSort(FileSortType thumbnailsFileSort)
{
    update(m_thumbnailsFileSort, thumbnailsFileSort, &WindowSettings::thumbnailsFileSortChanged);
}

void WindowSettings::setThumbnailsFolderSort(FolderSortType thumbnailsFolderSort)
{
    update(m_thumbnailsFolderSort, thumbnailsFolderSort, &WindowSettings::thumbnailsFolderSortChanged);
}

void WindowSettings::setThumbnailsReverseSort(bool thumbnailsReverseSort)
{
    update(m_thumbnailsReverseSort, thumbnailsReverseSort, &WindowSettings::thumbnailsReverseSortChanged);
}

void WindowSettings::setThumbnailsFileFilter(FileFilterType thumbnailsFileFilter)
{
    update(m_thumbnailsFileFilter, thumbnailsFileFilter, &WindowSettings::thumbnailsFileFilterChanged);
}

void WindowSettings::setThumbnailsHideFolders(bool thumbnailsHideFolders)
{
    update(m_thumbnailsHideFolders, thumbnailsHideFolders, &WindowSettings::thumbnailsHideFoldersChanged);
}

void WindowSettings::setThumbnailSize(int thumbnailSize)
{
    update(m_thumbnailSize, thumbnailSize, &WindowSettings::thumbnailSizeChanged);
}

void WindowSettings::setThumbnailShowInformation(bool thumbnailShowInformation)
{
    update(m_thumbnailShowInformation, thumbnailShowInformation, &WindowSettings::thumbnailShowInformationChanged);
}

void WindowSettings::setThumbnailInformation(ThumbnailInfoOptions thumbnailInformation)
{
    update(m_thumbnailInformation, thumbnailInformation, &WindowSettings::thumbnailInformationChanged);
}

void WindowSettings::setThumbnailsFolderSearchDepth(int thumbnailsFolderSearchDepth)
{
    update(m_thumbnailsFolderSearchDepth, thumbnailsFolderSearchDepth,
           &WindowSettings::thumbnailsFolderSearchDepthChanged);
}

void WindowSettings::setThumbnailsSubfolderInclusionStyle(SubfolderInclusionStyle thumbnailsSubfolderInclusionStyle)
{
    update(m_thumbnailsSubfolderInclusionStyle, thumbnailsSubfolderInclusionStyle,
           &WindowSettings::thumbnailsSubfolderInclusionStyleChanged);
}

void WindowSettings::setInspectorActiveTab(InspectorTab inspectorActiveTab)
{
    update(m_inspectorActiveTab, inspectorActiveTab, &WindowSettings::inspectorActiveTabChanged);
}

void WindowSettings::setToolbarConfiguration(const std::optional<QVariantMap> &toolbarConfiguration)
{
    update(m_toolbarConfiguration, toolbarConfiguration, &WindowSettings::toolbarConfigurationChanged);
}
