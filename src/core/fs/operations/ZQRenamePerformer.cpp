#include "core/fs/operations/ZQRenamePerformer.h"

#include "core/fs/operations/ZQFileOperationGroup.h"

#include <QFile>
#include <QSet>

#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <sys/stat.h>

namespace {

using State = ZQFileOperationUnit::State;
namespace Code = ZQFileOperationErrorCode;

// Enough tries to find a free "name 2.jpg" … in any real folder.
constexpr int maximumKeepBothTries = 10000;

QByteArray folderOf(const QByteArray &nativePath)
{
    const qsizetype slash = nativePath.lastIndexOf('/');
    return slash <= 0 ? QByteArray("/") : nativePath.left(slash);
}

QByteArray joined(const QByteArray &folder, const QString &name)
{
    QByteArray path = folder;
    if (!path.endsWith('/'))
        path += '/';
    return path + QFile::encodeName(name);
}

bool isValidName(const QString &name)
{
    return !name.isEmpty() && name != QLatin1String(".") && name != QLatin1String("..")
        && !name.contains(QLatin1Char('/')) && !name.contains(QChar(u'\0'));
}

// 0 when `path` names nothing; otherwise fills `info`.
int lstatError(const QByteArray &path, struct stat &info)
{
    return ::lstat(path.constData(), &info) == 0 ? 0 : errno;
}

bool sameItem(const struct stat &a, const struct stat &b)
{
    return a.st_dev == b.st_dev && a.st_ino == b.st_ino;
}

// "photo.jpg" → "photo 2.jpg", "photo 3.jpg", …
QString numberedName(const QString &name, int number)
{
    const qsizetype dot = name.lastIndexOf(QLatin1Char('.'));
    if (dot <= 0)
        return QStringLiteral("%1 %2").arg(name).arg(number);
    return QStringLiteral("%1 %2%3").arg(name.left(dot)).arg(number).arg(name.mid(dot));
}

int renameNoReplace(const QByteArray &from, const QByteArray &to)
{
    if (::renameat2(AT_FDCWD, from.constData(), AT_FDCWD, to.constData(), RENAME_NOREPLACE) == 0)
        return 0;
    const int error = errno;
    if (error != EINVAL && error != ENOSYS)
        return error;
    // A file system without RENAME_NOREPLACE: check, then rename.
    struct stat existing
    { };
    if (lstatError(to, existing) == 0)
        return EEXIST;
    return ::rename(from.constData(), to.constData()) == 0 ? 0 : errno;
}

} // namespace

void ZQRenamePerformer::prepare(ZQFileOperationGroup &group)
{
    for (ZQFileOperationUnit &unit : group.units()) {
        if (!unit.sourceItem()) {
            unit.setSourceError(ZQFileOperationError::forCode(Code::unknown, QString()));
            continue;
        }
        const QByteArray source = unit.sourceItem()->nativePath();
        const QByteArray destination = joined(folderOf(source), unit.renamedFilename());
        unit.setDestinationPath(QFile::decodeName(destination));

        struct stat sourceInfo
        { };
        if (const int error = lstatError(source, sourceInfo)) {
            unit.setSourceError(
                ZQFileOperationError::forCode(error == ENOENT || error == ENOTDIR ? Code::sourceMissing : error,
                                              unit.sourceItem()->path()));
            continue;
        }
        if (!isValidName(unit.renamedFilename())) {
            unit.setDestinationError(
                ZQFileOperationError::forCode(Code::invalidName, unit.destinationPath(), unit.renamedFilename()));
            continue;
        }
        struct stat destinationInfo
        { };
        // Another name of the same item is a change of case on a case-insensitive volume.
        if (destination != source && lstatError(destination, destinationInfo) == 0
            && !sameItem(sourceInfo, destinationInfo))
            unit.setDestinationError(ZQFileOperationError::forCode(Code::destinationExists, unit.destinationPath()));
    }
}

void ZQRenamePerformer::preflight(ZQFileOperationGroup &group)
{
    // Names the units will take, so that two units never aim at one name.
    QSet<QByteArray> claimed;
    for (ZQFileOperationUnit &unit : group.units()) {
        if (unit.state() != State::pending)
            continue;
        const QByteArray folder = folderOf(unit.sourceItem()->nativePath());
        if (unit.resolution() == ZQFileOperationResolution::keepBoth
            && unit.destinationError().code == Code::destinationExists) {
            const QString wanted = unit.renamedFilename();
            for (int number = 2; number < maximumKeepBothTries; ++number) {
                const QString candidate = numberedName(wanted, number);
                const QByteArray path = joined(folder, candidate);
                struct stat info
                { };
                if (!claimed.contains(path) && lstatError(path, info) == ENOENT) {
                    unit.setRenamedFilename(candidate);
                    unit.setDestinationPath(QFile::decodeName(path));
                    unit.setDestinationError({});
                    break;
                }
            }
        }
        if (unit.hasError())
            continue;
        const QByteArray destination = QFile::encodeName(unit.destinationPath());
        if (claimed.contains(destination))
            unit.setDestinationError(ZQFileOperationError::forCode(Code::destinationExists, unit.destinationPath()));
        else
            claimed.insert(destination);
    }
}

ZQFileOperationError ZQRenamePerformer::perform(ZQFileOperationUnit &unit, const ZQFileOperationGroup &)
{
    const ZQFilePtr &item = unit.sourceItem();
    const QByteArray source = item->nativePath();
    const QByteArray destination = QFile::encodeName(unit.destinationPath());
    if (source == destination)
        return {};
    int error = renameNoReplace(source, destination);
    if (error == EEXIST) {
        struct stat sourceInfo
        {
        }, destinationInfo{};
        if (lstatError(source, sourceInfo) == 0 && lstatError(destination, destinationInfo) == 0
            && sameItem(sourceInfo, destinationInfo)) {
            // A change of case on a case-insensitive volume: by way of a temporary name.
            const QByteArray temporary =
                joined(folderOf(source), QStringLiteral(".pixcove-rename-%1").arg(sourceInfo.st_ino));
            error = renameNoReplace(source, temporary);
            if (error == 0) {
                error = renameNoReplace(temporary, destination);
                if (error != 0)
                    renameNoReplace(temporary, source);
            }
        } else {
            return ZQFileOperationError::forCode(Code::destinationExists, unit.destinationPath());
        }
    }
    if (error == ENOENT)
        return ZQFileOperationError::forCode(Code::sourceMissing, item->path());
    if (error != 0)
        return ZQFileOperationError::forCode(error, item->path());
    item->updateForEvent({ZQFileEventType::removed, source});
    ZQStandardFile::newFileForNativePath(destination)->updateForEvent({ZQFileEventType::created, destination});
    return {};
}
