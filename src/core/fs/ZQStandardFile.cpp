#include "core/fs/ZQStandardFile.h"

#include "core/fs/TypeIdentifiers.h"
#include "core/fs/ZQFileRegistry.h"

#include <QDir>
#include <QFile>

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>

#include <climits>
#include <cstdlib>

struct ZQStandardFile::StatInfo
{
    bool exists = false;
    mode_t linkMode = 0; // the entry itself (a link stays a link)
    mode_t targetMode = 0; // links followed; 0 for a broken link
    qint64 size = -1;
    // Kept as stamps and made into dates when first asked: a local date costs the C library a
    // look at the time zone file, too much for every entry of a big listing.
    struct Date
    {
        statx_timestamp stamp{};
        mutable bool made = false;
        mutable QDateTime date;
    };
    Date modified, created, statusChanged, accessed;
    dev_t device = 0;
    ino_t inode = 0;
};

namespace {

// Whether `path` is absolute with no empty, "." or ".." component and no trailing slash, as
// every path a listing builds is: those skip the cleaning below, which splits the path.
bool isCleanNativePath(const QByteArray &path)
{
    const qsizetype length = path.size();
    if (length == 0 || path[0] != '/')
        return false;
    if (length == 1)
        return true;
    if (path[length - 1] == '/')
        return false;
    const char *data = path.constData();
    for (qsizetype i = 0; i < length; ++i) {
        if (data[i] != '/')
            continue;
        // A component starts at i + 1 (it exists: the path does not end in '/').
        const char *component = data + i + 1;
        const qsizetype rest = length - i - 1;
        if (component[0] == '/')
            return false;
        if (component[0] == '.'
            && (rest == 1 || component[1] == '/' || (component[1] == '.' && (rest == 2 || component[2] == '/'))))
            return false;
    }
    return true;
}

// Collapses "//", "/./" and "/../" and drops a trailing slash, on bytes.
QByteArray cleanedNativePath(const QByteArray &input)
{
    if (isCleanNativePath(input))
        return input;
    QByteArray absolute = input;
    if (!absolute.startsWith('/'))
        absolute = QFile::encodeName(QDir::currentPath()) + '/' + absolute;
    QList<QByteArray> parts;
    for (const QByteArray &part : absolute.split('/')) {
        if (part.isEmpty() || part == ".")
            continue;
        if (part == "..") {
            if (!parts.isEmpty())
                parts.removeLast();
            continue;
        }
        parts.append(part);
    }
    QByteArray result;
    result.reserve(absolute.size());
    for (const QByteArray &part : parts)
        result += '/' + part;
    return result.isEmpty() ? QByteArray("/") : result;
}

QDateTime dateFrom(const statx_timestamp &stamp)
{
    if (stamp.tv_sec == 0 && stamp.tv_nsec == 0)
        return {};
    return QDateTime::fromMSecsSinceEpoch(qint64(stamp.tv_sec) * 1000 + stamp.tv_nsec / 1000000);
}

} // namespace

ZQStandardFile::ZQStandardFile(const QByteArray &nativePath, ZQEntryKind kind)
    : m_nativePath(nativePath)
    , m_path(QFile::decodeName(nativePath))
    , m_kind(kind)
{
    const qsizetype slash = m_path.lastIndexOf(QLatin1Char('/'));
    m_name = m_path.mid(slash + 1);
    m_displayName = m_name.isEmpty() ? QStringLiteral("/") : m_name;
    m_isInvisible = m_name.startsWith(QLatin1Char('.'));
}

ZQStandardFile::~ZQStandardFile() = default;

ZQFilePtr ZQStandardFile::newFileForNativePath(const QByteArray &nativePath, ZQEntryKind kind)
{
    if (nativePath.isEmpty())
        return nullptr;
    return ZQFileRegistry::shared().fileForNativePath(cleanedNativePath(nativePath), kind);
}

ZQFilePtr ZQStandardFile::newFileForPath(const QString &path)
{
    return newFileForNativePath(QFile::encodeName(path));
}

ZQFilePtr ZQStandardFile::newFileForURL(const QUrl &url)
{
    if (!url.isLocalFile())
        return nullptr;
    return newFileForPath(url.toLocalFile());
}

QList<ZQFilePtr> ZQStandardFile::arrayOfFilesForURLs(const QList<QUrl> &urls, bool allowPlaceholders)
{
    QList<ZQFilePtr> files;
    for (const QUrl &url : urls) {
        ZQFilePtr file = newFileForURL(url);
        if (file && (allowPlaceholders || !file->isPlaceholder()))
            files.append(std::move(file));
    }
    return files;
}

QUrl ZQStandardFile::url() const
{
    return QUrl::fromLocalFile(m_path);
}

QString ZQStandardFile::parentPath() const
{
    if (m_nativePath == "/")
        return {};
    const qsizetype slash = m_path.lastIndexOf(QLatin1Char('/'));
    return slash <= 0 ? QStringLiteral("/") : m_path.left(slash);
}

ZQFilePtr ZQStandardFile::parentItem() const
{
    if (m_nativePath == "/")
        return nullptr;
    const qsizetype slash = m_nativePath.lastIndexOf('/');
    // No kind given: the parent of a placeholder need not exist either.
    return newFileForNativePath(slash <= 0 ? QByteArray("/") : m_nativePath.left(slash));
}

void ZQStandardFile::fillStat() const
{
    auto info = std::make_unique<StatInfo>();
    struct statx stx
    { };
    if (::statx(AT_FDCWD, m_nativePath.constData(), AT_SYMLINK_NOFOLLOW, STATX_BASIC_STATS | STATX_BTIME, &stx) == 0) {
        info->exists = true;
        info->linkMode = stx.stx_mode;
        info->targetMode = stx.stx_mode;
        info->size = qint64(stx.stx_size);
        info->modified.stamp = stx.stx_mtime;
        if (stx.stx_mask & STATX_BTIME)
            info->created.stamp = stx.stx_btime;
        info->statusChanged.stamp = stx.stx_ctime;
        info->accessed.stamp = stx.stx_atime;
        info->device = makedev(stx.stx_dev_major, stx.stx_dev_minor);
        info->inode = stx.stx_ino;
        if (S_ISLNK(stx.stx_mode)) {
            struct stat target
            { };
            info->targetMode = ::stat(m_nativePath.constData(), &target) == 0 ? target.st_mode : 0;
        }
    }
    m_stat = std::move(info);
}

namespace {
// Caller holds the file's lock.
template<typename Date>
QDateTime dateOf(const Date &date)
{
    if (!date.made) {
        date.date = dateFrom(date.stamp);
        date.made = true;
    }
    return date.date;
}
} // namespace

const ZQStandardFile::StatInfo &ZQStandardFile::statInfo() const
{
    if (!m_stat)
        fillStat();
    return *m_stat;
}

bool ZQStandardFile::isPlaceholder() const
{
    // A listing saw the entry, and no event has said since that it may have gone.
    if (m_kind.load(std::memory_order_relaxed) != ZQEntryKind::unknown)
        return false;
    QMutexLocker locker(&m_lock);
    return !statInfo().exists;
}

bool ZQStandardFile::isSymbolicLink() const
{
    const ZQEntryKind kind = m_kind.load(std::memory_order_relaxed);
    if (kind == ZQEntryKind::symlink)
        return true;
    if (kind != ZQEntryKind::unknown)
        return false;
    QMutexLocker locker(&m_lock);
    return S_ISLNK(statInfo().linkMode);
}

bool ZQStandardFile::isDirectory() const
{
    const ZQEntryKind kind = m_kind.load(std::memory_order_relaxed);
    if (kind == ZQEntryKind::directory)
        return true;
    if (kind == ZQEntryKind::regular || kind == ZQEntryKind::other)
        return false;
    QMutexLocker locker(&m_lock);
    return S_ISDIR(statInfo().targetMode);
}

bool ZQStandardFile::isPlainDirectory() const
{
    return isDirectory() && !isApplication();
}

bool ZQStandardFile::isApplication() const
{
    const QString suffix = m_name.section(QLatin1Char('.'), -1).toLower();
    if (!m_name.contains(QLatin1Char('.')))
        return false;
    if (suffix == QLatin1String("app"))
        return isDirectory();
    if (suffix == QLatin1String("desktop") || suffix == QLatin1String("appimage"))
        return !isDirectory() && !isPlaceholder();
    return false;
}

bool ZQStandardFile::isWritable() const
{
    return ::access(m_nativePath.constData(), W_OK) == 0;
}

bool ZQStandardFile::isVolumeRoot() const
{
    if (m_nativePath == "/")
        return true;
    if (!isDirectory())
        return false;
    const ZQFilePtr parent = parentItem();
    struct stat own
    {
    }, above{};
    if (::stat(m_nativePath.constData(), &own) != 0 || ::stat(parent->nativePath().constData(), &above) != 0)
        return false;
    return own.st_dev != above.st_dev || own.st_ino == above.st_ino;
}

bool ZQStandardFile::isVolumesDirectory() const
{
    const QString user = qEnvironmentVariable("USER");
    return m_path == QLatin1String("/mnt")
        || (!user.isEmpty()
            && (m_path == QLatin1String("/media/") + user || m_path == QLatin1String("/run/media/") + user));
}

qint64 ZQStandardFile::fileSize() const
{
    QMutexLocker locker(&m_lock);
    return statInfo().size;
}

QDateTime ZQStandardFile::modificationDate() const
{
    QMutexLocker locker(&m_lock);
    return dateOf(statInfo().modified);
}

QDateTime ZQStandardFile::creationDate() const
{
    QMutexLocker locker(&m_lock);
    return dateOf(statInfo().created);
}

QDateTime ZQStandardFile::dateAdded() const
{
    QMutexLocker locker(&m_lock);
    return dateOf(statInfo().statusChanged);
}

QDateTime ZQStandardFile::accessDate() const
{
    QMutexLocker locker(&m_lock);
    return dateOf(statInfo().accessed);
}

dev_t ZQStandardFile::device() const
{
    QMutexLocker locker(&m_lock);
    return statInfo().device;
}

ino_t ZQStandardFile::inode() const
{
    QMutexLocker locker(&m_lock);
    return statInfo().inode;
}

QString ZQStandardFile::resolvedPath() const
{
    if (!isSymbolicLink())
        return m_path;
    return QFile::decodeName(resolvedNativePath());
}

QByteArray ZQStandardFile::resolvedNativePath() const
{
    if (!isSymbolicLink())
        return m_nativePath;
    {
        QMutexLocker locker(&m_lock);
        if (!m_resolvedNativePath.isNull())
            return m_resolvedNativePath;
    }
    char buffer[PATH_MAX];
    const QByteArray resolved = ::realpath(m_nativePath.constData(), buffer) ? QByteArray(buffer) : m_nativePath;
    QMutexLocker locker(&m_lock);
    m_resolvedNativePath = resolved;
    return m_resolvedNativePath;
}

QString ZQStandardFile::typeIdentifier() const
{
    {
        QMutexLocker locker(&m_lock);
        if (!m_typeIdentifier.isNull())
            return m_typeIdentifier;
    }
    QString type;
    if (isSymbolicLink())
        type = TypeIdentifiers::symlink();
    else if (isPlaceholder())
        type = TypeIdentifiers::forFileName(m_name, false);
    else if (isVolumeRoot())
        type = TypeIdentifiers::volume();
    else
        type = TypeIdentifiers::forFileName(m_name, isDirectory());
    QMutexLocker locker(&m_lock);
    m_typeIdentifier = type;
    return m_typeIdentifier;
}

QString ZQStandardFile::resolvedTypeIdentifier() const
{
    if (!isSymbolicLink())
        return typeIdentifier();
    {
        QMutexLocker locker(&m_lock);
        if (!m_resolvedTypeIdentifier.isNull())
            return m_resolvedTypeIdentifier;
    }
    bool broken;
    {
        QMutexLocker locker(&m_lock);
        broken = statInfo().targetMode == 0;
    }
    // A broken link leads nowhere: it stays a link rather than taking the type its name suggests.
    const QString target = resolvedPath();
    const QString type = broken ? TypeIdentifiers::symlink()
                                : TypeIdentifiers::forFileName(target.section(QLatin1Char('/'), -1), isDirectory());
    QMutexLocker locker(&m_lock);
    m_resolvedTypeIdentifier = type;
    return m_resolvedTypeIdentifier;
}

void ZQStandardFile::updateForEvent(const ZQFileEvent &event)
{
    QMutexLocker locker(&m_lock);
    m_stat.reset();
    if (event.changesContentOrIdentity() || event.type == ZQFileEventType::removed) {
        m_typeIdentifier = QString();
        m_resolvedTypeIdentifier = QString();
        m_resolvedNativePath = QByteArray();
        m_kind.store(ZQEntryKind::unknown, std::memory_order_relaxed); // another kind of entry may stand there now
    }
}
