#include "core/fs/operations/ZQTrash.h"

#include "core/app/Log.h"
#include "core/fs/operations/ZQItemCopier.h"
#include "core/fs/operations/ZQItemNames.h"

#include <QDateTime>
#include <QDir>
#include <QFile>

#include <cerrno>
#include <climits>
#include <cstdlib>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

namespace Code = ZQFileOperationErrorCode;

// Enough tries to find a free name in any real trash.
constexpr int maximumNameTries = 10000;

QByteArray joined(const QByteArray &folder, const QByteArray &name)
{
    return folder.endsWith('/') ? folder + name : folder + '/' + name;
}

ZQFileOperationError errorFor(int code, const QByteArray &path)
{
    return ZQFileOperationError::forCode(code, QFile::decodeName(path));
}

// `path` as a folder of ours: made (0700) when missing; an existing one must be a real folder of
// this user, not a link someone placed there.
bool ensurePrivateFolder(const QByteArray &path)
{
    if (::mkdir(path.constData(), 0700) != 0 && errno != EEXIST)
        return false;
    struct stat info
    { };
    return ::lstat(path.constData(), &info) == 0 && S_ISDIR(info.st_mode) && info.st_uid == ::geteuid();
}

bool ensureTrash(const QByteArray &trash)
{
    return ensurePrivateFolder(trash) && ensurePrivateFolder(joined(trash, "files"))
        && ensurePrivateFolder(joined(trash, "info"));
}

dev_t deviceOf(const QByteArray &path)
{
    struct stat info
    { };
    return ::lstat(path.constData(), &info) == 0 ? info.st_dev : dev_t(-1);
}

// The device of `path`, or of its nearest folder that exists.
dev_t deviceOfNearest(QByteArray path)
{
    for (;;) {
        const dev_t device = deviceOf(path);
        if (device != dev_t(-1) || path == "/")
            return device;
        path = ZQItemCopier::folderOf(path);
    }
}

bool writeAll(int fd, const QByteArray &bytes)
{
    for (qsizetype at = 0; at < bytes.size();) {
        const ssize_t written = ::write(fd, bytes.constData() + at, size_t(bytes.size() - at));
        if (written < 0 && errno != EINTR)
            return false;
        at += std::max<ssize_t>(written, 0);
    }
    return true;
}

QByteArray infoPathFor(const QByteArray &trashedPath)
{
    const QByteArray trash = ZQItemCopier::folderOf(ZQItemCopier::folderOf(trashedPath));
    return joined(joined(trash, "info"), ZQItemCopier::nameOf(trashedPath) + ".trashinfo");
}

} // namespace

ZQTrash::ZQTrash(QByteArray homeTrash)
    : m_homeTrash(std::move(homeTrash))
{
    if (m_homeTrash.isEmpty()) {
        QByteArray data = qgetenv("XDG_DATA_HOME");
        if (data.isEmpty() || !data.startsWith('/'))
            data = QFile::encodeName(QDir::homePath()) + "/.local/share";
        m_homeTrash = data + "/Trash";
    }
}

QByteArray ZQTrash::topDirectoryOf(const QByteArray &path)
{
    char resolved[PATH_MAX];
    QByteArray folder = ::realpath(ZQItemCopier::folderOf(path).constData(), resolved) ? QByteArray(resolved)
                                                                                       : ZQItemCopier::folderOf(path);
    const dev_t device = deviceOf(folder);
    while (folder != "/") {
        const QByteArray parent = ZQItemCopier::folderOf(folder);
        if (deviceOf(parent) != device)
            break;
        folder = parent;
    }
    return folder;
}

QByteArray ZQTrash::trashFor(const QByteArray &path, QByteArray &topDirectory, int &error) const
{
    topDirectory.clear();
    const dev_t device = deviceOf(path);
    // The home trash belongs to the volume its folder is (or would be) on: made there, with the
    // data folder above it when that is missing too; never a volume's trash for the home volume.
    if (deviceOfNearest(m_homeTrash) == device) {
        const QByteArray data = ZQItemCopier::folderOf(m_homeTrash);
        if (deviceOf(data) == dev_t(-1) && !QDir().mkpath(QFile::decodeName(data)))
            logError(QStringLiteral("The folder of the trash can't be made: %1").arg(QFile::decodeName(data)));
        if (ensureTrash(m_homeTrash))
            return m_homeTrash;
        error = Code::noTrash;
        return {};
    }
    topDirectory = m_topDirectoryOf ? m_topDirectoryOf(path) : topDirectoryOf(path);
    const QByteArray uid = QByteArray::number(::geteuid());
    // The administrator's shared trash: a real sticky folder, with a folder for each user.
    const QByteArray shared = joined(topDirectory, ".Trash");
    struct stat info
    { };
    if (::lstat(shared.constData(), &info) == 0) {
        if (S_ISDIR(info.st_mode) && (info.st_mode & S_ISVTX)) {
            if (ensureTrash(joined(shared, uid)))
                return joined(shared, uid);
        } else {
            logError(QStringLiteral("%1 is not a sticky folder: not used as a trash").arg(QFile::decodeName(shared)));
        }
    }
    const QByteArray own = joined(topDirectory, ".Trash-" + uid);
    if (ensureTrash(own))
        return own;
    error = Code::noTrash;
    return {};
}

ZQTrash::Result ZQTrash::moveToTrash(const QByteArray &path) const
{
    Result result;
    struct stat info
    { };
    if (::lstat(path.constData(), &info) != 0) {
        result.error = errorFor(errno == ENOENT || errno == ENOTDIR ? Code::sourceMissing : errno, path);
        return result;
    }
    QByteArray topDirectory;
    int trashError = 0;
    const QByteArray trash = trashFor(path, topDirectory, trashError);
    if (trash.isEmpty()) {
        result.error =
            errorFor(trashError == EACCES || trashError == EPERM || trashError == EROFS ? Code::noTrash : trashError,
                     path);
        return result;
    }
    // Absolute in the home trash; relative to the volume's top folder in a volume's own trash.
    char resolved[PATH_MAX];
    QByteArray original = ::realpath(ZQItemCopier::folderOf(path).constData(), resolved)
        ? joined(QByteArray(resolved), ZQItemCopier::nameOf(path))
        : path;
    if (!topDirectory.isEmpty() && original.startsWith(topDirectory + '/'))
        original = original.mid(topDirectory.size() + 1);
    const QByteArray information = "[Trash Info]\nPath=" + original.toPercentEncoding("/")
        + "\nDeletionDate=" + QDateTime::currentDateTime().toString(Qt::ISODate).left(19).toLatin1() + '\n';

    const QString name = QFile::decodeName(ZQItemCopier::nameOf(path));
    for (int number = 1; number < maximumNameTries; ++number) {
        const QByteArray trashedName = QFile::encodeName(ZQItemNames::numbered(name, number, S_ISDIR(info.st_mode)));
        const QByteArray infoPath = joined(joined(trash, "info"), trashedName + ".trashinfo");
        // The name is ours once its information file is: made exclusively, never replaced.
        const int fd = ::open(infoPath.constData(), O_CREAT | O_EXCL | O_WRONLY | O_CLOEXEC, 0600);
        if (fd < 0) {
            if (errno == EEXIST)
                continue;
            result.error = errorFor(errno == EACCES || errno == EROFS ? Code::noTrash : errno, path);
            return result;
        }
        // Not synced one by one (a thousand syncs would cost seconds): written before the rename,
        // it reaches the disk no later than the rename does on journalled file systems.
        const bool written = writeAll(fd, information);
        const int writeError = errno;
        ::close(fd);
        if (!written) {
            ::unlink(infoPath.constData());
            result.error = errorFor(writeError, path);
            return result;
        }
        const QByteArray trashedPath = joined(joined(trash, "files"), trashedName);
        const int error = ZQItemCopier::renameInto(path, trashedPath, false);
        if (error == 0) {
            result.trashedPath = trashedPath;
            return result;
        }
        ::unlink(infoPath.constData());
        if (error == EEXIST || error == ENOTEMPTY)
            continue; // an item without information under this name: left alone
        result.error = errorFor(error == ENOENT ? Code::sourceMissing : error == EXDEV ? Code::noTrash : error, path);
        return result;
    }
    result.error = errorFor(Code::noTrash, path);
    return result;
}

QByteArray ZQTrash::originalPath(const QByteArray &trashedPath) const
{
    QFile file(QFile::decodeName(infoPathFor(trashedPath)));
    if (!file.open(QIODevice::ReadOnly))
        return {};
    QByteArray path;
    for (const QByteArray &line : file.readAll().split('\n')) {
        if (line.startsWith("Path="))
            path = QByteArray::fromPercentEncoding(line.mid(5).trimmed());
    }
    if (path.isEmpty() || path.startsWith('/'))
        return path;
    // Relative to the volume's top folder: .Trash-$uid or .Trash/$uid lies in it.
    const QByteArray trash = ZQItemCopier::folderOf(ZQItemCopier::folderOf(trashedPath));
    QByteArray top = ZQItemCopier::folderOf(trash);
    if (ZQItemCopier::nameOf(top) == ".Trash")
        top = ZQItemCopier::folderOf(top);
    return joined(top, path);
}

ZQFileOperationError ZQTrash::restore(const QByteArray &trashedPath, const QByteArray &destination, bool replace) const
{
    const int error = ZQItemCopier::renameInto(trashedPath, destination, replace);
    if (error == EEXIST || error == ENOTEMPTY)
        return errorFor(Code::destinationExists, destination);
    if (error == ENOENT) {
        struct stat info
        { };
        return errorFor(::lstat(trashedPath.constData(), &info) != 0 ? Code::sourceMissing
                                                                     : Code::destinationFolderMissing,
                        ::lstat(trashedPath.constData(), &info) != 0 ? trashedPath : destination);
    }
    if (error != 0)
        return errorFor(error, trashedPath);
    ::unlink(infoPathFor(trashedPath).constData());
    return {};
}
