#include "core/model/FileSortTypes.h"

#include "core/app/Translate.h"

namespace {
constexpr Translator tr("FileSortTypes");
} // namespace

QString fileSortTypeTitle(FileSortType type)
{
    switch (type) {
    case FileSortType::name: return tr("Name");
    case FileSortType::fileSize: return tr("Size");
    case FileSortType::kind: return tr("Kind");
    case FileSortType::megapixels: return tr("Megapixels");
    case FileSortType::modificationDate: return tr("Date Modified");
    case FileSortType::shuffle: return tr("Shuffle");
    case FileSortType::creationDate: return tr("Date Created");
    case FileSortType::label: return tr("Tag");
    case FileSortType::height: return tr("Height");
    case FileSortType::width: return tr("Width");
    case FileSortType::exifDate: return tr("Date Taken");
    case FileSortType::orientation: return tr("Orientation");
    case FileSortType::exposureTime: return tr("Exposure Time");
    case FileSortType::fNumber: return tr("F Stop");
    case FileSortType::iso: return tr("ISO");
    case FileSortType::focalLength: return tr("Focal Length");
    case FileSortType::cameraModel: return tr("Camera Model");
    case FileSortType::dateAdded: return tr("Date Added");
    }
    return {};
}

QString folderSortTypeTitle(FolderSortType type)
{
    switch (type) {
    case FolderSortType::foldersFirst: return tr("Folders First");
    case FolderSortType::foldersLast: return tr("Folders Last");
    case FolderSortType::mixed: return tr("Folders Mixed with Files");
    }
    return {};
}

QString fileFilterTypeTitle(FileFilterType type)
{
    switch (type) {
    case FileFilterType::visible: return tr("All Visible Items");
    case FileFilterType::all: return tr("All Items, Including Invisible");
    case FileFilterType::images: return tr("Images");
    case FileFilterType::media: return tr("Images, Videos and Audio");
    case FileFilterType::imagesAndFolders: return tr("Images and Folders");
    case FileFilterType::mediaAndFolders: return tr("Media and Folders");
    case FileFilterType::visibleFolders: return tr("Folders");
    case FileFilterType::filesOnly: return tr("Files Only");
    case FileFilterType::portraitImages: return tr("Portrait Images");
    case FileFilterType::landscapeImages: return tr("Landscape Images");
    case FileFilterType::squareImages: return tr("Square Images");
    case FileFilterType::panoramas: return tr("Panoramas");
    case FileFilterType::folders: return tr("Folders, Including Invisible");
    }
    return {};
}

QString thumbnailsSearchTypeTitle(ThumbnailsSearchType type)
{
    switch (type) {
    case ThumbnailsSearchType::filename: return tr("Filename");
    case ThumbnailsSearchType::kind: return tr("Kind");
    case ThumbnailsSearchType::label: return tr("Tag");
    case ThumbnailsSearchType::camera: return tr("Camera");
    }
    return {};
}
