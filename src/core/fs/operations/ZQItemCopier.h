#pragma once

#include "core/fs/operations/ZQFileOperationTypes.h"

#include <QByteArray>
#include <QByteArrayView>

#include <sys/stat.h>

#include <vector>

class ZQFileOperationProgress;

// The file-system work under copies and moves: an item (a file, a folder with its contents, or a
// symbolic link, copied as a link so that a loop of links is never followed) written where it
// goes so that it appears whole or not at all.
//
// A file is written into an unnamed file in the destination's folder (O_TMPFILE; a hidden
// temporary name where the file system has none), its data by copy_file_range, then its
// permissions, extended attributes (user.xdg.tags: the colour labels) and times, checked against
// the original's size, and only then linked under its name, which refuses an existing item. A
// folder is built under a hidden temporary name and renamed into place the same way. A failure or
// a cancel removes what was written; the original is never touched. Nothing is synced here, as cp
// does not: the original is still there. What removes originals afterwards (a move across
// volumes) calls syncVolume first. Paths are the file system's bytes. Runs on a worker thread;
// `progress` may be null.
class ZQItemCopier
{
public:
    struct Work
    {
        qint64 bytes = 0;
        qint64 files = 0;
    };

    explicit ZQItemCopier(ZQFileOperationProgress *progress)
        : m_progress(progress)
    { }

    // Copies `source` to `destination`. Without `replace` an item already at `destination` stops
    // the copy (destinationExists); with it, the complete copy takes that item's place in one step
    // and the item is removed.
    ZQFileOperationError copy(const QByteArray &source, const QByteArray &destination, bool replace);

    // Bytes of the files in `path` and the number of files and links (folders are not counted).
    static Work measure(const QByteArray &path);
    // Writes everything on the file system of `path` to its disk (syncfs): data, names and
    // folders. 0 or an errno.
    static int syncVolume(const QByteArray &path);
    // Removes `path` and, for a folder, everything in it; 0 or the first errno met.
    static int removeTree(const QByteArray &path);
    // Puts the item at `from` at `to` in one step: refusing an existing item, or with `replace`
    // exchanging the two and removing what was at `to`. 0 or an errno.
    static int renameInto(const QByteArray &from, const QByteArray &to, bool replace);
    // Copies the extended attributes of one open file to another (colour labels among them); 0 or
    // an errno. A destination that keeps none is logged, not an error.
    static int copyExtendedAttributes(int in, int out, const QByteArray &pathForLog);
    // Replaces the file at `path` (open as `in`, described by `before`) with `bytes` in one step:
    // written beside it under a temporary name with its owner, permissions and extended
    // attributes, synced, then renamed over it, so that the file is whole at every moment. A file
    // changed since `before` is left alone (ECANCELED). 0 or an errno.
    static int replaceContents(const QByteArray &path, int in, const struct stat &before, const QByteArray &bytes);
    // The same with the new contents in pieces, written one after another.
    static int replaceContents(const QByteArray &path, int in, const struct stat &before,
                               const std::vector<QByteArrayView> &pieces);
    // The folder part of a native path ("/" for an item in the root).
    static QByteArray folderOf(const QByteArray &path);
    static QByteArray nameOf(const QByteArray &path);

private:
    struct Failure;
    int copyFileInto(int sourceFd, const struct stat &info, int folderFd, const QByteArray &name, QByteArray &madeName,
                     bool unnamed);
    int copyInto(int sourceFolderFd, const QByteArray &sourceName, int folderFd, const QByteArray &name,
                 QByteArray &failedPath, const QByteArray &sourcePath, const QByteArray &destinationPath);
    int copyData(int in, int out, qint64 size);

    ZQFileOperationProgress *m_progress = nullptr;
};
