#include "core/fs/operations/ZQTransferPerformer.h"

#include "core/app/Log.h"
#include "core/app/Translate.h"
#include "core/fs/operations/ZQFileOperationGroup.h"
#include "core/fs/operations/ZQItemCopier.h"
#include "core/fs/operations/ZQItemNames.h"

#include <QFile>
#include <QRandomGenerator>
#include <QSet>

#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

using State = ZQFileOperationUnit::State;
namespace Code = ZQFileOperationErrorCode;
constexpr Translator tr("ZQFileOperation");

// Enough tries to find a free "photo copy 2.jpg" … in any real folder.
constexpr int maximumNameTries = 10000;
// Copies across volumes synced in one step before their originals go: a sync waits for at most
// about a gigabyte, and a folder of originals shrinks as the move goes on.
constexpr size_t movedBatchItems = 2000;
constexpr qint64 movedBatchBytes = qint64(1) << 30;

QByteArray joined(const QByteArray &folder, const QByteArray &name)
{
    return folder.endsWith('/') ? folder + name : folder + '/' + name;
}

bool exists(const QByteArray &path)
{
    struct stat info
    { };
    return ::lstat(path.constData(), &info) == 0 || errno != ENOENT;
}

bool sameItem(const QByteArray &a, const QByteArray &b)
{
    struct stat first
    {
    }, second{};
    return ::lstat(a.constData(), &first) == 0 && ::lstat(b.constData(), &second) == 0 && first.st_dev == second.st_dev
        && first.st_ino == second.st_ino;
}

QByteArray realPath(const QByteArray &path)
{
    char resolved[PATH_MAX];
    return ::realpath(path.constData(), resolved) ? QByteArray(resolved) : path;
}

// Whether `inner` is `outer` or lies inside it, links resolved.
bool isWithin(const QByteArray &inner, const QByteArray &outer)
{
    const QByteArray a = realPath(inner);
    const QByteArray b = realPath(outer);
    return a == b || a.startsWith(b.endsWith('/') ? b : b + '/');
}

bool isFolder(const QByteArray &path)
{
    struct stat info
    { };
    return ::lstat(path.constData(), &info) == 0 && S_ISDIR(info.st_mode);
}

ZQFileOperationError errorFor(int code, const QByteArray &path)
{
    return ZQFileOperationError::forCode(code, QFile::decodeName(path));
}

// The first free name of `name` numbered from `first`, not in `claimed`; empty when none.
QByteArray freeName(const QByteArray &folder, const QString &name, bool folderName, int first,
                    const QSet<QByteArray> &claimed)
{
    for (int number = first; number < maximumNameTries; ++number) {
        const QByteArray path = joined(folder, QFile::encodeName(ZQItemNames::numbered(name, number, folderName)));
        if (!claimed.contains(path) && !exists(path))
            return path;
    }
    return {};
}

} // namespace

ZQTransferPerformer::ZQTransferPerformer(ZQFileOperationType type)
    : m_type(type)
    , m_sync(&ZQItemCopier::syncVolume)
{ }

ZQTransferPerformer::~ZQTransferPerformer() = default;

ZQFileOperationError ZQTransferPerformer::finishPerforming()
{
    return removeMovedOriginals();
}

ZQFileOperationError ZQTransferPerformer::removeMovedOriginals()
{
    if (m_moved.empty())
        return {};
    std::vector<Moved> moved;
    moved.swap(m_moved);
    m_movedBytes = 0;
    // One sync a destination volume, then the originals; a copy not known to be on the disk keeps
    // its original.
    QList<QByteArray> synced;
    for (const Moved &item : moved) {
        const QByteArray folder = ZQItemCopier::folderOf(item.destination);
        if (synced.contains(folder))
            continue;
        if (const int code = m_sync(folder)) {
            logError(QStringLiteral("Sync of %1 failed before originals were removed: %2")
                         .arg(QFile::decodeName(folder), QString::fromLocal8Bit(std::strerror(code))));
            return errorFor(code, folder);
        }
        synced.append(folder);
    }
    ZQFileOperationError first;
    for (const Moved &item : moved) {
        const int code = ZQItemCopier::removeTree(item.source);
        if (code != 0) {
            if (!first.isError()) {
                first = errorFor(Code::sourceNotRemoved, item.source);
                first.failureReason = QString::fromLocal8Bit(std::strerror(code));
            }
            continue;
        }
        item.item->updateForEvent({ZQFileEventType::removed, item.source});
    }
    return first;
}

QByteArray ZQTransferPerformer::destinationFolder(const ZQFileOperationUnit &unit,
                                                  const ZQFileOperationGroup &group) const
{
    if (m_type == ZQFileOperationType::duplicate)
        return ZQItemCopier::folderOf(unit.sourceItem()->nativePath());
    return group.destinationItem() ? group.destinationItem()->nativePath() : QByteArray();
}

QString ZQTransferPerformer::wantedName(const ZQFileOperationUnit &unit, const QByteArray &folder) const
{
    if (!unit.renamedFilename().isEmpty())
        return unit.renamedFilename();
    const QByteArray source = unit.sourceItem()->nativePath();
    const QString name = QFile::decodeName(ZQItemCopier::nameOf(source));
    const bool folderName = isFolder(source);
    if (m_type == ZQFileOperationType::duplicate)
        return ZQItemNames::withSuffix(name, tr(" copy"), folderName);
    if (m_type == ZQFileOperationType::alias && realPath(folder) == realPath(ZQItemCopier::folderOf(source)))
        return ZQItemNames::withSuffix(name, tr(" alias"), folderName);
    return name;
}

void ZQTransferPerformer::prepare(ZQFileOperationGroup &group)
{
    for (ZQFileOperationUnit &unit : group.units()) {
        if (!unit.sourceItem()) {
            unit.setSourceError(ZQFileOperationError::forCode(Code::unknown, QString()));
            continue;
        }
        const QByteArray source = unit.sourceItem()->nativePath();
        struct stat sourceInfo
        { };
        if (::lstat(source.constData(), &sourceInfo) != 0) {
            unit.setSourceError(errorFor(errno == ENOENT || errno == ENOTDIR ? Code::sourceMissing : errno, source));
            continue;
        }
        const QByteArray folder = destinationFolder(unit, group);
        struct stat folderInfo
        { };
        if (folder.isEmpty() || ::stat(folder.constData(), &folderInfo) != 0 || !S_ISDIR(folderInfo.st_mode)) {
            unit.setDestinationError(errorFor(Code::destinationFolderMissing, folder.isEmpty() ? source : folder));
            continue;
        }
        const QString name = wantedName(unit, folder);
        const QByteArray destination = joined(folder, QFile::encodeName(name));
        unit.setDestinationPath(QFile::decodeName(destination));
        if (!ZQItemNames::isValid(name)) {
            unit.setDestinationError(
                ZQFileOperationError::forCode(Code::invalidName, QFile::decodeName(destination), name));
            continue;
        }
        if (m_type == ZQFileOperationType::move && destination == source) {
            unit.setState(State::skipped); // already there
            continue;
        }
        if ((m_type == ZQFileOperationType::move || m_type == ZQFileOperationType::copy) && S_ISDIR(sourceInfo.st_mode)
            && isWithin(folder, source)) {
            unit.setDestinationError(errorFor(Code::intoItself, source));
            continue;
        }
        // A duplicate always takes a free name: nothing to ask.
        if (m_type != ZQFileOperationType::duplicate && exists(destination))
            unit.setDestinationError(errorFor(Code::destinationExists, destination));
    }
}

void ZQTransferPerformer::preflight(ZQFileOperationGroup &group)
{
    // Names the units will take, so that two units never aim at one name.
    QSet<QByteArray> claimed;
    for (ZQFileOperationUnit &unit : group.units()) {
        if (unit.state() != State::pending)
            continue;
        const QByteArray source = unit.sourceItem()->nativePath();
        QByteArray destination = QFile::encodeName(unit.destinationPath());
        const QByteArray folder = ZQItemCopier::folderOf(destination);
        const bool folderName = isFolder(source);
        const bool occupied = unit.destinationError().code == Code::destinationExists;
        if (m_type == ZQFileOperationType::duplicate
            || (occupied && unit.resolution() == ZQFileOperationResolution::keepBoth)) {
            const QString name = QFile::decodeName(ZQItemCopier::nameOf(destination));
            const QByteArray free =
                freeName(folder, name, folderName, m_type == ZQFileOperationType::duplicate ? 1 : 2, claimed);
            if (!free.isEmpty()) {
                destination = free;
                unit.setDestinationPath(QFile::decodeName(free));
                unit.setRenamedFilename(QFile::decodeName(ZQItemCopier::nameOf(free)));
                unit.setDestinationError({});
            }
        } else if (occupied && unit.resolution() == ZQFileOperationResolution::replace) {
            // Replacing an item by itself, or a folder by something inside it, would lose it.
            if (sameItem(source, destination) || isWithin(source, destination))
                unit.setDestinationError(errorFor(Code::replaceItself, destination));
            else
                unit.setDestinationError({});
        }
        if (unit.hasError())
            continue;
        if (claimed.contains(destination)) {
            unit.setDestinationError(errorFor(Code::destinationExists, destination));
            continue;
        }
        claimed.insert(destination);

        struct stat sourceInfo
        {
        }, folderInfo{};
        const bool sameVolume = ::lstat(source.constData(), &sourceInfo) == 0
            && ::stat(folder.constData(), &folderInfo) == 0 && sourceInfo.st_dev == folderInfo.st_dev;
        if (m_type == ZQFileOperationType::alias || (m_type == ZQFileOperationType::move && sameVolume)) {
            unit.setWork(0, 1);
        } else {
            const ZQItemCopier::Work work = ZQItemCopier::measure(source);
            unit.setWork(work.bytes, work.files);
        }
    }
}

ZQFileOperationError ZQTransferPerformer::perform(ZQFileOperationUnit &unit, const ZQFileOperationGroup &)
{
    const ZQFilePtr &item = unit.sourceItem();
    const QByteArray source = item->nativePath();
    QByteArray destination = QFile::encodeName(unit.destinationPath());
    const bool replace = unit.resolution() == ZQFileOperationResolution::replace;
    const auto sourceGone = [&] { return !exists(source); };
    ZQItemCopier copier(progress());
    ZQFileOperationError error;

    switch (m_type) {
    case ZQFileOperationType::alias: {
        const QByteArray target = realPath(ZQItemCopier::folderOf(source)) + '/' + ZQItemCopier::nameOf(source);
        const QByteArray made = replace
            ? joined(ZQItemCopier::folderOf(destination),
                     ".pixcove-alias-" + QByteArray::number(QRandomGenerator::global()->generate64(), 36))
            : destination;
        int code = ::symlink(target.constData(), made.constData()) == 0 ? 0 : errno;
        if (code == 0 && replace) {
            code = ZQItemCopier::renameInto(made, destination, true);
            if (code != 0)
                ::unlink(made.constData());
        }
        if (code == EEXIST)
            return errorFor(Code::destinationExists, destination);
        if (code != 0)
            return errorFor(code, ZQItemCopier::folderOf(destination));
        break;
    }
    case ZQFileOperationType::duplicate: {
        // Another item may take the free name first: then the next number.
        const QString name = QFile::decodeName(ZQItemCopier::nameOf(destination));
        const QByteArray folder = ZQItemCopier::folderOf(destination);
        for (int number = 2;; ++number) {
            error = copier.copy(source, destination, false);
            if (error.code != Code::destinationExists || number >= maximumNameTries)
                break;
            destination = joined(folder, QFile::encodeName(ZQItemNames::numbered(name, number, isFolder(source))));
            unit.setDestinationPath(QFile::decodeName(destination));
            unit.setRenamedFilename(QFile::decodeName(ZQItemCopier::nameOf(destination)));
        }
        if (error.isError())
            return error;
        break;
    }
    case ZQFileOperationType::copy:
        error = copier.copy(source, destination, replace);
        if (error.isError())
            return error;
        break;
    case ZQFileOperationType::move: {
        int code = ZQItemCopier::renameInto(source, destination, replace);
        if (code == EXDEV) {
            // Another volume: the whole item is copied and checked before the original goes.
            error = copier.copy(source, destination, replace);
            if (error.isError())
                return error;
            m_moved.push_back({source, destination, item});
            m_movedBytes += unit.byteCount();
            ZQStandardFile::newFileForNativePath(destination)->updateForEvent({ZQFileEventType::created, destination});
            if (m_moved.size() < movedBatchItems && m_movedBytes < movedBatchBytes)
                return {};
            return removeMovedOriginals();
        } else if (code == EEXIST || code == ENOTEMPTY) {
            return errorFor(Code::destinationExists, destination);
        } else if (code == ENOENT && sourceGone()) {
            return errorFor(Code::sourceMissing, source);
        } else if (code != 0) {
            return errorFor(code == ENOENT ? Code::destinationFolderMissing : code,
                            code == EACCES || code == EPERM || code == EROFS ? ZQItemCopier::folderOf(destination)
                                                                             : source);
        }
        item->updateForEvent({ZQFileEventType::removed, source});
        break;
    }
    default: return errorFor(Code::unknown, source);
    }
    ZQStandardFile::newFileForNativePath(destination)->updateForEvent({ZQFileEventType::created, destination});
    return {};
}
