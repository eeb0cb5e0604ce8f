#pragma once

#include "core/fs/ZQFileEvent.h"

#include <QByteArray>
#include <QDateTime>
#include <QMutex>
#include <QString>
#include <QUrl>

#include <sys/types.h>

#include <atomic>
#include <memory>

class ZQStandardFile;
using ZQFilePtr = std::shared_ptr<ZQStandardFile>;

// What a folder listing already knows about an entry (from the directory entry's type), so that
// a listing sorted by name never has to stat its files.
enum class ZQEntryKind : quint8 { unknown, regular, directory, symlink, other };

// A file, folder, volume or application on disk, known by its path.
//
// One object stands for one path while anybody holds it (see ZQFileRegistry), so that caches and
// identities survive reloads. Facts that need a system call (stat, type lookup, link target) are
// read on first use and kept until a file event clears them; every accessor is safe to call
// from several threads at once.
//
// Paths are kept as the file system's bytes (`nativePath`) so that names that are not valid
// UTF-8 still open; `path` and `name` are their decoded forms for display and sorting.
class ZQStandardFile : public std::enable_shared_from_this<ZQStandardFile>
{
public:
    virtual ~ZQStandardFile();
    ZQStandardFile(const ZQStandardFile &) = delete;
    ZQStandardFile &operator=(const ZQStandardFile &) = delete;

    // The object for a path (made absolute and cleaned); an existing one while it is in use.
    static ZQFilePtr newFileForPath(const QString &path);
    static ZQFilePtr newFileForNativePath(const QByteArray &nativePath, ZQEntryKind kind = ZQEntryKind::unknown);
    static ZQFilePtr newFileForURL(const QUrl &url);
    // Files for local URLs; those not on disk are left out unless `allowPlaceholders`.
    static QList<ZQFilePtr> arrayOfFilesForURLs(const QList<QUrl> &urls, bool allowPlaceholders);

    // Names and places. Constant for the object's life.
    const QByteArray &nativePath() const { return m_nativePath; }
    const QString &path() const { return m_path; }
    QUrl url() const;
    const QString &name() const { return m_name; }
    // The name shown to the user: the file name, or the volume's name for "/".
    const QString &displayName() const { return m_displayName; }
    QString parentPath() const; // empty for "/"
    ZQFilePtr parentItem() const; // null for "/"
    bool isInvisible() const { return m_isInvisible; }

    // Symbolic links followed; the path itself when it is not a link or the link is broken.
    QString resolvedPath() const;
    // The same as file-system bytes, to open the target of a link whose name is not UTF-8.
    QByteArray resolvedNativePath() const;
    // Type identifiers ("public.jpeg", "public.folder", ...; see TypeIdentifiers). The file's own
    // type is "public.symlink" for a link; the resolved type is that of the link's target.
    QString typeIdentifier() const;
    QString resolvedTypeIdentifier() const;

    // Facts from stat; a placeholder answers empty dates, size -1 and false.
    bool isPlaceholder() const; // not on disk (any more)
    bool isSymbolicLink() const;
    bool isRealFile() const { return !isSymbolicLink(); }
    bool isDirectory() const; // links to folders count
    bool isPlainDirectory() const; // a folder that is not an application bundle
    bool isApplication() const; // a .desktop file, an AppImage or an .app bundle
    bool isWritable() const;
    bool isVolumeRoot() const; // a mount point
    bool isVolumesDirectory() const; // /media/$USER, /run/media/$USER or /mnt
    qint64 fileSize() const; // bytes; -1 when stat failed
    QDateTime modificationDate() const;
    QDateTime creationDate() const; // birth time; invalid where the file system has none
    QDateTime dateAdded() const; // last status change: moving a file into a folder sets it
    QDateTime accessDate() const;
    dev_t device() const;
    ino_t inode() const;

    // Forgets what stat and the type lookup said, so that the next question reads again.
    virtual void updateForEvent(const ZQFileEvent &event);

protected:
    ZQStandardFile(const QByteArray &nativePath, ZQEntryKind kind);

    // Guards the caches of this object and of subclasses; never held during slow work.
    mutable QBasicMutex m_lock;

private:
    friend class ZQFileRegistry;

    struct StatInfo;
    const StatInfo &statInfo() const; // caller holds m_lock
    void fillStat() const; // caller holds m_lock

    QByteArray m_nativePath;
    QString m_path;
    QString m_name;
    QString m_displayName;
    std::atomic<ZQEntryKind> m_kind; // from the directory entry; unknown once an event says it may differ
    bool m_isInvisible; // the name starts with a dot; kept beside the kind, as filters ask it of every file

    mutable std::unique_ptr<StatInfo> m_stat;
    mutable QString m_typeIdentifier;
    mutable QString m_resolvedTypeIdentifier;
    mutable QByteArray m_resolvedNativePath;
};
