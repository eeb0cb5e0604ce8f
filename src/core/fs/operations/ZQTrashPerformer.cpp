#include "core/fs/operations/ZQTrashPerformer.h"

#include "core/app/Translate.h"
#include "core/fs/operations/ZQFileOperationGroup.h"
#include "core/fs/operations/ZQItemCopier.h"
#include "core/fs/operations/ZQItemNames.h"

#include <QFile>
#include <QSet>

#include <cerrno>
#include <sys/stat.h>

namespace {

using State = ZQFileOperationUnit::State;
namespace Code = ZQFileOperationErrorCode;
constexpr Translator tr("ZQFileOperation");

// Enough tries to find a free name in any real folder.
constexpr int maximumNameTries = 10000;

ZQFileOperationError errorFor(int code, const QByteArray &path)
{
    return ZQFileOperationError::forCode(code, QFile::decodeName(path));
}

bool exists(const QByteArray &path)
{
    struct stat info
    { };
    return ::lstat(path.constData(), &info) == 0 || errno != ENOENT;
}

bool isFolder(const QByteArray &path)
{
    struct stat info
    { };
    return ::lstat(path.constData(), &info) == 0 && S_ISDIR(info.st_mode);
}

} // namespace

ZQTrashPerformer::ZQTrashPerformer(ZQFileOperationType type, ZQTrash trash)
    : m_type(type)
    , m_trash(std::move(trash))
{ }

void ZQTrashPerformer::prepare(ZQFileOperationGroup &group)
{
    for (ZQFileOperationUnit &unit : group.units()) {
        if (!unit.sourceItem()) {
            unit.setSourceError(ZQFileOperationError::forCode(Code::unknown, QString()));
            continue;
        }
        const QByteArray source = unit.sourceItem()->nativePath();
        if (!exists(source)) {
            unit.setSourceError(errorFor(Code::sourceMissing, source));
            continue;
        }
        if (m_type == ZQFileOperationType::trash)
            continue;
        const QByteArray original = m_trash.originalPath(source);
        if (original.isEmpty()) {
            unit.setSourceError(errorFor(Code::notInTrash, source));
            continue;
        }
        unit.setDestinationPath(QFile::decodeName(original));
        if (exists(original))
            unit.setDestinationError(errorFor(Code::destinationExists, original));
    }
}

void ZQTrashPerformer::preflight(ZQFileOperationGroup &group)
{
    QSet<QByteArray> claimed;
    for (ZQFileOperationUnit &unit : group.units()) {
        if (unit.state() != State::pending)
            continue;
        unit.setWork(0, 1);
        if (m_type == ZQFileOperationType::trash)
            continue;
        QByteArray destination = QFile::encodeName(unit.destinationPath());
        const bool occupied = unit.destinationError().code == Code::destinationExists;
        if (occupied && unit.resolution() == ZQFileOperationResolution::keepBoth) {
            const QByteArray folder = ZQItemCopier::folderOf(destination);
            const QString name = QFile::decodeName(ZQItemCopier::nameOf(destination));
            for (int number = 2; number < maximumNameTries; ++number) {
                const QByteArray candidate = folder + '/'
                    + QFile::encodeName(ZQItemNames::numbered(name, number, isFolder(unit.sourceItem()->nativePath())));
                if (!claimed.contains(candidate) && !exists(candidate)) {
                    destination = candidate;
                    unit.setDestinationPath(QFile::decodeName(candidate));
                    unit.setDestinationError({});
                    break;
                }
            }
        } else if (occupied && unit.resolution() == ZQFileOperationResolution::replace) {
            unit.setDestinationError({});
        }
        if (unit.hasError())
            continue;
        if (claimed.contains(destination))
            unit.setDestinationError(errorFor(Code::destinationExists, destination));
        claimed.insert(destination);
    }
}

ZQFileOperationError ZQTrashPerformer::perform(ZQFileOperationUnit &unit, const ZQFileOperationGroup &)
{
    const QByteArray source = unit.sourceItem()->nativePath();
    QByteArray destination;
    if (m_type == ZQFileOperationType::trash) {
        const ZQTrash::Result result = m_trash.moveToTrash(source);
        if (result.error.isError())
            return result.error;
        destination = result.trashedPath;
        unit.setDestinationPath(QFile::decodeName(destination));
    } else {
        destination = QFile::encodeName(unit.destinationPath());
        const ZQFileOperationError error =
            m_trash.restore(source, destination, unit.resolution() == ZQFileOperationResolution::replace);
        if (error.isError())
            return error;
    }
    unit.sourceItem()->updateForEvent({ZQFileEventType::removed, source});
    ZQStandardFile::newFileForNativePath(destination)->updateForEvent({ZQFileEventType::created, destination});
    return {};
}

void ZQNewFolderPerformer::prepare(ZQFileOperationGroup &group)
{
    const QByteArray folder = group.destinationItem() ? group.destinationItem()->nativePath() : QByteArray();
    for (ZQFileOperationUnit &unit : group.units()) {
        const QString name = unit.renamedFilename().isEmpty() ? tr("untitled folder") : unit.renamedFilename();
        unit.setRenamedFilename(name);
        const QByteArray path = folder + '/' + QFile::encodeName(name);
        unit.setDestinationPath(QFile::decodeName(path));
        if (!isFolder(folder))
            unit.setDestinationError(errorFor(Code::destinationFolderMissing, folder.isEmpty() ? path : folder));
        else if (!ZQItemNames::isValid(name))
            unit.setDestinationError(errorFor(Code::invalidName, path));
    }
}

ZQFileOperationError ZQNewFolderPerformer::perform(ZQFileOperationUnit &unit, const ZQFileOperationGroup &group)
{
    const QByteArray folder = group.destinationItem()->nativePath();
    const QString name = unit.renamedFilename();
    for (int number = 1; number < maximumNameTries; ++number) {
        const QByteArray path = folder + '/' + QFile::encodeName(ZQItemNames::numbered(name, number, true));
        if (::mkdir(path.constData(), 0777) == 0) {
            unit.setDestinationPath(QFile::decodeName(path));
            unit.setRenamedFilename(QFile::decodeName(ZQItemCopier::nameOf(path)));
            ZQStandardFile::newFileForNativePath(path)->updateForEvent({ZQFileEventType::created, path});
            return {};
        }
        if (errno != EEXIST)
            return errorFor(errno == ENOENT ? Code::destinationFolderMissing : errno, errno == ENOENT ? folder : path);
    }
    return errorFor(Code::destinationExists, folder + '/' + QFile::encodeName(name));
}
