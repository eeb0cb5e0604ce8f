#include "core/model/SelectedFilesInfo.h"

#include "core/model/PXFile.h"

#include <QHash>

SelectedFilesInfo SelectedFilesInfo::forFiles(const QList<PXFilePtr> &files)
{
    SelectedFilesInfo info;
    info.anyItems = !files.isEmpty();
    info.oneItem = files.size() == 1;
    info.deleteable = info.anyItems;
    // Whether each folder can be changed, asked once per folder (a selection is mostly one folder).
    QHash<QString, bool> writableFolders;
    for (const PXFilePtr &file : files) {
        if (!file)
            continue;
        const bool gone = file->isPlaceholder();
        info.needsRefresh = info.needsRefresh || gone;
        info.images = info.images || file->isImage();
        info.media = info.media || file->isMedia();
        info.folders = info.folders || (file->isDirectory() && !file->isSymbolicLink());
        info.aliases = info.aliases || file->isSymbolicLink();
        const bool volume = file->isVolumeRoot();
        info.ejectable = info.ejectable || volume;
        if (!info.deleteable)
            continue;
        // What the trash takes: an item on disk, not a volume, in a folder that can be changed.
        const QString folder = file->parentPath();
        auto known = writableFolders.constFind(folder);
        if (known == writableFolders.constEnd()) {
            const ZQFilePtr parent = folder.isEmpty() ? nullptr : ZQStandardFile::newFileForPath(folder);
            known = writableFolders.insert(folder, parent && parent->isWritable());
        }
        info.deleteable = !gone && !volume && known.value();
    }
    return info;
}
