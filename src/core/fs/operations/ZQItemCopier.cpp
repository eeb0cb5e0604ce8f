#include "core/fs/operations/ZQItemCopier.h"

#include "core/app/Log.h"
#include "core/fs/operations/ZQFileOperationPerformer.h"

#include <QFile>
#include <QRandomGenerator>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstring>
#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <vector>

namespace {

namespace Code = ZQFileOperationErrorCode;

// 8 MB a call: a cancel or a progress report comes within a few milliseconds at disk speed, and a
// 2 GB copy costs a few hundred system calls.
constexpr size_t copyChunkBytes = size_t(8) << 20;
// Where copy_file_range cannot work (another file system that refuses it): a buffer of 1 MB.
constexpr size_t bufferBytes = size_t(1) << 20;

class Fd
{
public:
    explicit Fd(int fd = -1)
        : m_fd(fd)
    { }
    ~Fd()
    {
        if (m_fd >= 0)
            ::close(m_fd);
    }
    Fd(const Fd &) = delete;
    Fd &operator=(const Fd &) = delete;
    int get() const { return m_fd; }
    bool isValid() const { return m_fd >= 0; }
    void reset(int fd)
    {
        if (m_fd >= 0)
            ::close(m_fd);
        m_fd = fd;
    }

private:
    int m_fd;
};

QByteArray joined(const QByteArray &folder, const QByteArray &name)
{
    return folder.endsWith('/') ? folder + name : folder + '/' + name;
}

// A name no item has yet, hidden, in the destination's folder: what a copy is built under.
QByteArray temporaryName()
{
    return QByteArray(".pixcove-copy-") + QByteArray::number(QRandomGenerator::global()->generate64(), 36);
}

} // namespace

// Copies the extended attributes of `in` to `out` (both open). The colour labels live in
// user.xdg.tags, so a failure to write a user attribute fails the copy, except on a file system
// that keeps none (then it is logged). Attributes of other namespaces (security, trusted, system)
// are carried where allowed.
int ZQItemCopier::replaceContents(const QByteArray &path, int in, const struct stat &before, const QByteArray &bytes)
{
    return replaceContents(path, in, before, std::vector<QByteArrayView>{QByteArrayView(bytes)});
}

int ZQItemCopier::replaceContents(const QByteArray &path, int in, const struct stat &before,
                                  const std::vector<QByteArrayView> &pieces)
{
    const QByteArray temporary =
        folderOf(path) + "/.pixcove-turn-" + QByteArray::number(QRandomGenerator::global()->generate64(), 36);
    const int out = ::open(temporary.constData(), O_CREAT | O_EXCL | O_WRONLY | O_CLOEXEC, 0600);
    if (out < 0)
        return errno;
    int error = 0;
    for (const QByteArrayView &bytes : pieces) {
        for (qsizetype at = 0; error == 0 && at < bytes.size();) {
            const ssize_t written = ::write(out, bytes.constData() + at, size_t(bytes.size() - at));
            if (written < 0 && errno != EINTR)
                error = errno;
            at += written > 0 ? written : 0;
        }
    }
    if (error == 0)
        error = copyExtendedAttributes(in, out, path);
    if (error == 0) {
        if (::geteuid() == 0) [[maybe_unused]]
            const int ignored = ::fchown(out, before.st_uid, before.st_gid);
        ::fchmod(out, before.st_mode & 07777);
        // The data is on the disk before the name points at it: the original is gone after this.
        if (::fdatasync(out) != 0)
            error = errno;
    }
    ::close(out);
    // A file changed since it was read is not replaced by a version of its old content.
    struct stat now
    { };
    if (error == 0
        && (::stat(path.constData(), &now) != 0 || now.st_ino != before.st_ino || now.st_size != before.st_size
            || now.st_mtim.tv_sec != before.st_mtim.tv_sec || now.st_mtim.tv_nsec != before.st_mtim.tv_nsec))
        error = ECANCELED;
    if (error == 0)
        error = renameInto(temporary, path, true);
    if (error != 0)
        ::unlink(temporary.constData());
    return error;
}

int ZQItemCopier::copyExtendedAttributes(int in, int out, const QByteArray &sourcePath)
{
    ssize_t listSize = ::flistxattr(in, nullptr, 0);
    if (listSize <= 0)
        return 0;
    std::vector<char> names(size_t(listSize) + 1);
    listSize = ::flistxattr(in, names.data(), names.size());
    if (listSize < 0)
        return 0;
    std::vector<char> value;
    for (ssize_t at = 0; at < listSize;) {
        const char *name = names.data() + at;
        at += ssize_t(std::strlen(name)) + 1;
        const bool user = std::strncmp(name, "user.", 5) == 0;
        ssize_t size = ::fgetxattr(in, name, nullptr, 0);
        if (size < 0)
            continue;
        value.resize(size_t(size) + 1);
        size = ::fgetxattr(in, name, value.data(), value.size());
        if (size < 0)
            continue;
        if (::fsetxattr(out, name, value.data(), size_t(size), 0) == 0)
            continue;
        const int error = errno;
        if (!user)
            continue;
        if (error == ENOTSUP || error == EOPNOTSUPP) {
            logError(QStringLiteral("The destination of %1 keeps no extended attributes: %2 is not copied")
                         .arg(QFile::decodeName(sourcePath), QString::fromLatin1(name)));
            continue;
        }
        return error;
    }
    return 0;
}

namespace {

// Owner (when we may set it), permissions and times of `out` from `info`.
void copyOwnerModeAndTimes(int out, const struct stat &info)
{
    if (::geteuid() == 0 && ::fchown(out, info.st_uid, info.st_gid) != 0)
        logDebug(QStringLiteral("Owner not copied: %1").arg(QString::fromLocal8Bit(std::strerror(errno))));
    ::fchmod(out, info.st_mode & 07777);
    const struct timespec times[2] = {info.st_atim, info.st_mtim};
    ::futimens(out, times);
}

} // namespace

QByteArray ZQItemCopier::folderOf(const QByteArray &path)
{
    const qsizetype slash = path.lastIndexOf('/');
    return slash <= 0 ? QByteArray("/") : path.left(slash);
}

QByteArray ZQItemCopier::nameOf(const QByteArray &path)
{
    return path.mid(path.lastIndexOf('/') + 1);
}

int ZQItemCopier::copyData(int in, int out, qint64 size)
{
    qint64 done = 0;
    bool ranged = true;
    std::vector<char> buffer;
    for (;;) {
        if (m_progress && m_progress->isCancelled())
            return Code::cancelled;
        ssize_t count = 0;
        if (ranged) {
            count = ::copy_file_range(in, nullptr, out, nullptr, copyChunkBytes, 0);
            if (count < 0 && done == 0
                && (errno == EXDEV || errno == EINVAL || errno == ENOSYS || errno == EOPNOTSUPP)) {
                ranged = false;
                continue;
            }
        } else {
            buffer.resize(bufferBytes);
            count = ::read(in, buffer.data(), buffer.size());
            for (ssize_t written = 0; count > 0 && written < count;) {
                const ssize_t step = ::write(out, buffer.data() + written, size_t(count - written));
                if (step < 0 && errno != EINTR)
                    return errno;
                written += std::max<ssize_t>(step, 0);
            }
        }
        if (count < 0) {
            if (errno == EINTR)
                continue;
            return errno;
        }
        if (count == 0)
            break;
        done += count;
        if (m_progress)
            m_progress->advance(count, 0);
    }
    return done == size ? 0 : Code::sizeMismatch;
}

int ZQItemCopier::copyFileInto(int sourceFd, const struct stat &info, int folderFd, const QByteArray &name,
                               QByteArray &madeName, bool unnamed)
{
    const bool published = unnamed; // a file that appears under its name only when complete
    Fd out(unnamed ? ::openat(folderFd, ".", O_TMPFILE | O_WRONLY | O_CLOEXEC, 0600) : -1);
    if (!out.isValid()) {
        if (unnamed && errno != EOPNOTSUPP && errno != EISDIR && errno != EINVAL)
            return errno;
        // No unnamed files here: a hidden name, removed again on failure.
        unnamed = false;
    }
    if (!unnamed) {
        const QByteArray wanted = published || name.isEmpty() ? temporaryName() : name;
        out.reset(::openat(folderFd, wanted.constData(), O_CREAT | O_EXCL | O_WRONLY | O_CLOEXEC, 0600));
        if (!out.isValid())
            return errno;
        madeName = wanted;
    }
    const auto fail = [&](int error) {
        if (!madeName.isEmpty())
            ::unlinkat(folderFd, madeName.constData(), 0);
        madeName.clear();
        return error;
    };
    // No space is reserved ahead (posix_fallocate): on ext4 the reserved blocks must be converted
    // again as they are written, which costs more than a full disk found halfway through a file,
    // whose part is removed anyway.
    if (const int error = copyData(sourceFd, out.get(), info.st_size))
        return fail(error);
    if (const int error = copyExtendedAttributes(sourceFd, out.get(), {}))
        return fail(error);
    copyOwnerModeAndTimes(out.get(), info);
    struct stat written
    { };
    if (::fstat(out.get(), &written) != 0 || written.st_size != info.st_size)
        return fail(Code::sizeMismatch);
    // Not synced: a copy leaves its original in place, so nothing is lost if the machine stops
    // before the data reaches the disk. A move syncs its copies once before it removes originals.
    if (unnamed) {
        const QByteArray procPath = "/proc/self/fd/" + QByteArray::number(out.get());
        const QByteArray linkName = name.isEmpty() ? temporaryName() : name;
        if (::linkat(AT_FDCWD, procPath.constData(), folderFd, linkName.constData(), AT_SYMLINK_FOLLOW) != 0)
            return errno;
        madeName = linkName;
    }
    if (m_progress)
        m_progress->advance(0, 1);
    return 0;
}

int ZQItemCopier::copyInto(int sourceFolderFd, const QByteArray &sourceName, int folderFd, const QByteArray &name,
                           QByteArray &failedPath, const QByteArray &sourcePath, const QByteArray &destinationPath)
{
    const auto failed = [&](int error, const QByteArray &path) {
        failedPath = path;
        return error;
    };
    struct stat info
    { };
    if (::fstatat(sourceFolderFd, sourceName.constData(), &info, AT_SYMLINK_NOFOLLOW) != 0)
        return failed(errno == ENOENT ? Code::sourceMissing : errno, sourcePath);
    if (S_ISREG(info.st_mode)) {
        Fd in(::openat(sourceFolderFd, sourceName.constData(), O_RDONLY | O_NOFOLLOW | O_CLOEXEC));
        if (!in.isValid())
            return failed(errno == ENOENT ? Code::sourceMissing : errno, sourcePath);
        QByteArray made;
        const int error = copyFileInto(in.get(), info, folderFd, name, made, false);
        if (error)
            return failed(error, sourcePath);
        return 0;
    }
    if (S_ISLNK(info.st_mode)) {
        // Copied as a link, never followed: a loop of links is copied as the links it is made of.
        QByteArray target(qsizetype(info.st_size > 0 ? info.st_size : PATH_MAX) + 1, '\0');
        const ssize_t length = ::readlinkat(sourceFolderFd, sourceName.constData(), target.data(), target.size());
        if (length < 0)
            return failed(errno == ENOENT ? Code::sourceMissing : errno, sourcePath);
        target.truncate(length);
        if (::symlinkat(target.constData(), folderFd, name.constData()) != 0)
            return failed(errno, sourcePath);
        if (::geteuid() == 0)
            ::fchownat(folderFd, name.constData(), info.st_uid, info.st_gid, AT_SYMLINK_NOFOLLOW);
        const struct timespec times[2] = {info.st_atim, info.st_mtim};
        ::utimensat(folderFd, name.constData(), times, AT_SYMLINK_NOFOLLOW);
        if (m_progress)
            m_progress->advance(0, 1);
        return 0;
    }
    if (!S_ISDIR(info.st_mode))
        return failed(Code::unsupportedType, sourcePath);

    Fd in(::openat(sourceFolderFd, sourceName.constData(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    if (!in.isValid())
        return failed(errno == ENOENT ? Code::sourceMissing : errno, sourcePath);
    // Made private while it fills; its own permissions come last, so that a read-only original
    // does not stop its contents from being written.
    if (::mkdirat(folderFd, name.constData(), 0700) != 0)
        return failed(errno, sourcePath);
    Fd out(::openat(folderFd, name.constData(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    if (!out.isValid())
        return failed(errno, sourcePath);
    DIR *listing = ::fdopendir(::dup(in.get()));
    if (!listing)
        return failed(errno, sourcePath);
    int error = 0;
    while (error == 0) {
        errno = 0;
        const dirent *entry = ::readdir(listing);
        if (!entry) {
            error = errno;
            if (error)
                failedPath = sourcePath;
            break;
        }
        const QByteArray entryName(entry->d_name);
        if (entryName == "." || entryName == "..")
            continue;
        if (m_progress && m_progress->isCancelled())
            error = Code::cancelled;
        else
            error = copyInto(in.get(), entryName, out.get(), entryName, failedPath, joined(sourcePath, entryName),
                             joined(destinationPath, entryName));
    }
    ::closedir(listing);
    if (error)
        return error;
    if (const int attributeError = copyExtendedAttributes(in.get(), out.get(), sourcePath))
        return failed(attributeError, sourcePath);
    copyOwnerModeAndTimes(out.get(), info);
    return 0;
}

ZQFileOperationError ZQItemCopier::copy(const QByteArray &source, const QByteArray &destination, bool replace)
{
    const auto error = [](int code, const QByteArray &path) {
        return ZQFileOperationError::forCode(code, QFile::decodeName(path));
    };
    const QByteArray folder = folderOf(destination);
    const QByteArray name = nameOf(destination);
    struct stat info
    { };
    if (::lstat(source.constData(), &info) != 0)
        return error(errno == ENOENT ? Code::sourceMissing : errno, source);
    Fd folderFd(::open(folder.constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!folderFd.isValid())
        return error(errno == ENOENT ? Code::destinationFolderMissing : errno, folder);

    QByteArray made;
    QByteArray failedPath = source;
    int code = 0;
    if (S_ISREG(info.st_mode)) {
        Fd in(::open(source.constData(), O_RDONLY | O_NOFOLLOW | O_CLOEXEC));
        if (!in.isValid())
            return error(errno == ENOENT ? Code::sourceMissing : errno, source);
        // Linked straight under its name when nothing may be replaced; the link refuses an
        // existing item.
        code = copyFileInto(in.get(), info, folderFd.get(), replace ? QByteArray() : name, made, true);
        if (code == EEXIST && !replace)
            return error(Code::destinationExists, destination);
        if (code != 0 && code != Code::cancelled && code != Code::sizeMismatch && code != ENOSPC && code != EDQUOT
            && code != EFBIG && code != EIO)
            failedPath = folder; // the destination refused the file
    } else {
        made = temporaryName();
        code = copyInto(AT_FDCWD, source, folderFd.get(), made, failedPath, source, joined(folder, made));
    }
    if (code == 0 && made != name) {
        code = renameInto(joined(folder, made), destination, replace);
        if (code == EEXIST)
            code = Code::destinationExists, failedPath = destination;
    }
    if (code != 0) {
        if (!made.isEmpty() && made != name)
            removeTree(joined(folder, made));
        return error(code, failedPath);
    }
    return {};
}

int ZQItemCopier::syncVolume(const QByteArray &path)
{
    const Fd fd(::open(path.constData(), O_RDONLY | O_CLOEXEC));
    if (!fd.isValid())
        return errno;
    return ::syncfs(fd.get()) == 0 ? 0 : errno;
}

ZQItemCopier::Work ZQItemCopier::measure(const QByteArray &path)
{
    Work work;
    struct stat info
    { };
    if (::lstat(path.constData(), &info) != 0)
        return work;
    if (!S_ISDIR(info.st_mode)) {
        work.files = 1;
        work.bytes = S_ISREG(info.st_mode) ? info.st_size : 0;
        return work;
    }
    DIR *listing = ::opendir(path.constData());
    if (!listing)
        return work;
    while (const dirent *entry = ::readdir(listing)) {
        const QByteArray name(entry->d_name);
        if (name == "." || name == "..")
            continue;
        const Work inner = measure(joined(path, name));
        work.bytes += inner.bytes;
        work.files += inner.files;
    }
    ::closedir(listing);
    return work;
}

int ZQItemCopier::removeTree(const QByteArray &path)
{
    if (::unlink(path.constData()) == 0 || errno == ENOENT)
        return 0;
    if (errno != EISDIR && errno != EPERM)
        return errno;
    int firstError = 0;
    if (DIR *listing = ::opendir(path.constData())) {
        while (const dirent *entry = ::readdir(listing)) {
            const QByteArray name(entry->d_name);
            if (name == "." || name == "..")
                continue;
            const int error = removeTree(joined(path, name));
            firstError = firstError ? firstError : error;
        }
        ::closedir(listing);
    }
    if (::rmdir(path.constData()) != 0 && errno != ENOENT)
        firstError = firstError ? firstError : errno;
    return firstError;
}

int ZQItemCopier::renameInto(const QByteArray &from, const QByteArray &to, bool replace)
{
    if (!replace) {
        if (::renameat2(AT_FDCWD, from.constData(), AT_FDCWD, to.constData(), RENAME_NOREPLACE) == 0)
            return 0;
        const int error = errno;
        if (error != EINVAL && error != ENOSYS)
            return error;
        // A file system without RENAME_NOREPLACE: a hard link refuses an existing name too
        // (folders and links to folders cannot be hard-linked: they wait for such a file system).
        if (::link(from.constData(), to.constData()) != 0)
            return errno;
        ::unlink(from.constData());
        return 0;
    }
    // Both items stay whole until the exchange; then the one that was there is removed.
    if (::renameat2(AT_FDCWD, from.constData(), AT_FDCWD, to.constData(), RENAME_EXCHANGE) == 0)
        return removeTree(from);
    const int error = errno;
    if (error == ENOENT) // nothing there any more to replace
        return renameInto(from, to, false);
    if (error != EINVAL && error != ENOSYS)
        return error;
    // A file system without exchange: a file may still be replaced in one step.
    struct stat target
    { };
    if (::lstat(to.constData(), &target) != 0)
        return errno;
    if (S_ISDIR(target.st_mode))
        return EISDIR; // a folder is only replaced in one step
    return ::rename(from.constData(), to.constData()) == 0 ? 0 : errno;
}
