#include "core/viewer/SlideshowPlaylist.h"

#include "core/model/FileSorting.h"
#include "core/model/PXFile.h"

#include <QDir>
#include <QSet>

#include <random>

namespace {

struct Lister
{
    const SlideshowPlaylistOptions &options;
    const std::atomic<bool> *cancelled;
    QList<SortDescriptor> byName = sortDescriptorsForSortType(FileSortType::name, FolderSortType::mixed, true);

    bool stopped() const { return cancelled && cancelled->load(std::memory_order_relaxed); }

    bool shows(const PXFilePtr &file) const { return file->isImage() || (options.includeVideos && file->isVideo()); }

    // The files of `folder` in name order (with `byFolder`, each subfolder's after them), down
    // to `depth` more levels.
    void list(const QString &folder, int depth, QList<PXFilePtr> &files)
    {
        const QFileInfoList entries =
            QDir(folder).entryInfoList(QDir::Files | QDir::Dirs | QDir::NoDotAndDotDot | QDir::Readable);
        QList<PXFilePtr> own;
        QList<PXFilePtr> subfolders;
        for (const QFileInfo &entry : entries) {
            if (stopped())
                return;
            const PXFilePtr file = PXFile::fileForPath(entry.absoluteFilePath());
            if (entry.isDir())
                subfolders.append(file);
            else if (shows(file))
                own.append(file);
        }
        sortFiles(own, byName);
        files.append(own);
        if (depth <= 0)
            return;
        sortFiles(subfolders, byName);
        for (const PXFilePtr &subfolder : std::as_const(subfolders))
            list(subfolder->path(), depth - 1, files);
    }
};

} // namespace

namespace SlideshowPlaylist {

QList<PXFilePtr> make(const QList<PXFilePtr> &sources, const SlideshowPlaylistOptions &options,
                      const std::atomic<bool> *cancelled)
{
    Lister lister{options, cancelled};
    QList<PXFilePtr> files;
    for (const PXFilePtr &source : sources) {
        if (lister.stopped())
            return {};
        if (!source || source->isPlaceholder())
            continue;
        if (!source->isDirectory()) {
            if (lister.shows(source))
                files.append(source);
            continue;
        }
        QList<PXFilePtr> listed;
        lister.list(source->path(), qMax(0, options.folderDepth), listed);
        if (options.inclusionStyle == SubfolderInclusionStyle::commingled)
            sortFiles(listed, lister.byName);
        files.append(listed);
    }
    // A file given twice (and in a folder given too) is shown once, where it came first.
    QList<PXFilePtr> unique;
    QSet<const PXFile *> seen;
    for (const PXFilePtr &file : std::as_const(files)) {
        if (!seen.contains(file.get())) {
            seen.insert(file.get());
            unique.append(file);
        }
    }
    return lister.stopped() ? QList<PXFilePtr>() : unique;
}

QList<PXFilePtr> shuffled(QList<PXFilePtr> files, std::uint64_t seed)
{
    std::mt19937_64 random(seed);
    for (qsizetype i = files.size() - 1; i > 0; --i) {
        std::uniform_int_distribution<qsizetype> pick(0, i);
        files.swapItemsAt(i, pick(random));
    }
    return files;
}

} // namespace SlideshowPlaylist
