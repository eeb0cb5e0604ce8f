#include "core/model/SelectedFilesInfo.h"

#include "core/model/PXFile.h"

SelectedFilesInfo SelectedFilesInfo::forFiles(const QList<PXFilePtr> &files)
{
    SelectedFilesInfo info;
    info.anyItems = !files.isEmpty();
    info.oneItem = files.size() == 1;
    info.deleteable = info.anyItems;
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
        // What the trash takes: an item on disk, not a volume, in a folder that can be changed.
        const ZQFilePtr parent = file->parentItem();
        info.deleteable = info.deleteable && !gone && !volume && parent && parent->isWritable();
    }
    return info;
}
