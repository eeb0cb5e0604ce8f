#pragma once

#include "core/fs/operations/ZQFileOperationTypes.h"

#include <QByteArray>

#include <functional>

// The freedesktop trash: items of the home volume go to the home trash
// ($XDG_DATA_HOME/Trash/files, with info/NAME.trashinfo naming where each came from and when);
// items of other volumes to their volume's trash, $topdir/.Trash/$uid when the administrator made
// $topdir/.Trash (a sticky folder, not a link), else $topdir/.Trash-$uid. Folders are made when
// missing. A name is claimed by creating its .trashinfo exclusively, and the item is renamed in
// without replacing anything, so two trashings never take one name ("photo.jpg", "photo 2.jpg").
// An item is never copied into the trash: a volume whose trash cannot be made says so and keeps
// the item. Paths are the file system's bytes.
class ZQTrash
{
public:
    struct Result
    {
        QByteArray trashedPath; // where the item is now
        ZQFileOperationError error;
    };

    // `homeTrash`: the home trash folder; empty for $XDG_DATA_HOME/Trash (~/.local/share/Trash).
    explicit ZQTrash(QByteArray homeTrash = {});

    const QByteArray &homeTrash() const { return m_homeTrash; }
    // The top folder of the volume a path is on; tests name their own to stand for a volume.
    void setTopDirectoryFinder(std::function<QByteArray(const QByteArray &)> finder)
    {
        m_topDirectoryOf = std::move(finder);
    }

    Result moveToTrash(const QByteArray &path) const;
    // Where a trashed item came from (from its .trashinfo); empty when that is not known.
    QByteArray originalPath(const QByteArray &trashedPath) const;
    // Puts a trashed item at `destination` (its original path, or a free name beside it), never
    // replacing an item there unless `replace`, and drops its .trashinfo.
    ZQFileOperationError restore(const QByteArray &trashedPath, const QByteArray &destination, bool replace) const;

    // The mount point of the volume that holds `path`.
    static QByteArray topDirectoryOf(const QByteArray &path);

private:
    // The trash folder for an item on the device of `path`; empty with `error` set when none can be had.
    QByteArray trashFor(const QByteArray &path, QByteArray &topDirectory, int &error) const;

    QByteArray m_homeTrash;
    std::function<QByteArray(const QByteArray &)> m_topDirectoryOf;
};
