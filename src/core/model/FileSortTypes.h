#pragma once

#include "core/model/ValueSetCount.h"

#include <QObject>
#include <QString>

// How a folder's files are sorted and filtered. The raw values are stored in the settings file
// and accepted on the command line: never renumber them. The stored ones are meta-enums, so that
// the settings file's reader knows their names and members, and valueSetCount() their size; the
// rest of the program names them without the namespace.
namespace FileSortTypes {
Q_NAMESPACE

enum class FileSortType : int {
    name = 0,
    fileSize = 1,
    kind = 2,
    megapixels = 3,
    modificationDate = 4,
    shuffle = 5,
    creationDate = 6,
    label = 7,
    height = 8,
    width = 9,
    exifDate = 10,
    orientation = 11,
    exposureTime = 12,
    fNumber = 13,
    iso = 14,
    focalLength = 15,
    cameraModel = 16,
    dateAdded = 17,
};
Q_ENUM_NS(FileSortType)

enum class FolderSortType : int {
    foldersFirst = 0,
    foldersLast = 1,
    mixed = 2,
};
Q_ENUM_NS(FolderSortType)

enum class FileFilterType : int {
    visible = 0,
    all = 1,
    images = 2,
    media = 3,
    imagesAndFolders = 4,
    mediaAndFolders = 5,
    visibleFolders = 6,
    filesOnly = 7,
    portraitImages = 8,
    landscapeImages = 9,
    squareImages = 10,
    panoramas = 11,
    folders = 12,
};
Q_ENUM_NS(FileFilterType)

enum class SubfolderInclusionStyle : int {
    byFolder = 0,
    commingled = 1,
};
Q_ENUM_NS(SubfolderInclusionStyle)

} // namespace FileSortTypes

using FileSortTypes::FileFilterType;
using FileSortTypes::FileSortType;
using FileSortTypes::FolderSortType;
using FileSortTypes::SubfolderInclusionStyle;

// Which property a search field matches; not persisted.
enum class ThumbnailsSearchType : int {
    filename = 0,
    kind = 1,
    label = 2,
    camera = 3,
};

// Menu titles of the choices.
QString fileSortTypeTitle(FileSortType type);
QString folderSortTypeTitle(FolderSortType type);
QString fileFilterTypeTitle(FileFilterType type);
QString thumbnailsSearchTypeTitle(ThumbnailsSearchType type);
