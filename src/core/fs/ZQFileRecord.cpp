#include "core/fs/ZQFileRecord.h"

#include <QFile>
#include <QJsonValue>

#include <dirent.h>
#include <sys/stat.h>

#include <cmath>

namespace {

// JSON numbers are doubles: whole numbers up to 2^53 survive exactly, larger ones go as text.
constexpr quint64 largestExactJsonInteger = quint64(1) << 53;

QJsonValue jsonNumber(quint64 value)
{
    if (value <= largestExactJsonInteger)
        return QJsonValue(qint64(value));
    return QJsonValue(QString::number(value));
}

// A device or inode number: a whole non-negative number, or a text of decimal digits.
std::optional<quint64> numberFromJson(const QJsonValue &value)
{
    if (value.isUndefined() || value.isNull())
        return quint64(0);
    if (value.isDouble()) {
        const double number = value.toDouble();
        if (number < 0 || number > double(largestExactJsonInteger) || std::floor(number) != number)
            return std::nullopt;
        return quint64(number);
    }
    if (value.isString()) {
        bool ok = false;
        const quint64 number = value.toString().toULongLong(&ok, 10);
        if (ok)
            return number;
    }
    return std::nullopt;
}

// A file object answers from what it read earlier; when the disk says otherwise now, it is told
// so that whoever gets it from resolve() sees the file that stands there.
void forgetIfStale(const ZQFilePtr &file, bool standing, const struct stat &info)
{
    const bool wasStanding = !file->isPlaceholder();
    if (wasStanding == standing && (!standing || (file->device() == info.st_dev && file->inode() == info.st_ino)))
        return;
    file->updateForEvent(
        ZQFileEvent{standing ? ZQFileEventType::replaced : ZQFileEventType::removed, file->nativePath()});
}

bool fail(QString *error, const QString &reason)
{
    if (error)
        *error = reason;
    return false;
}

} // namespace

ZQFileRecord ZQFileRecord::forFile(const ZQFilePtr &file)
{
    ZQFileRecord record;
    if (!file)
        return record;
    record.path = file->path();
    if (!file->isPlaceholder()) {
        record.device = quint64(file->device());
        record.inode = quint64(file->inode());
    }
    return record;
}

QJsonObject ZQFileRecord::toJson() const
{
    return QJsonObject{
        {QStringLiteral("path"), path},
        {QStringLiteral("device"), jsonNumber(device)},
        {QStringLiteral("inode"), jsonNumber(inode)},
    };
}

std::optional<ZQFileRecord> ZQFileRecord::fromJson(const QJsonValue &json, QString *error)
{
    if (!json.isObject()) {
        fail(error, QStringLiteral("file record: not an object"));
        return std::nullopt;
    }
    const QJsonObject object = json.toObject();
    const QJsonValue path = object.value(QLatin1String("path"));
    if (path.isUndefined()) {
        fail(error, QStringLiteral("file record: no path"));
        return std::nullopt;
    }
    if (!path.isString()) {
        fail(error, QStringLiteral("file record: path is not a string"));
        return std::nullopt;
    }
    if (path.toString().isEmpty()) {
        fail(error, QStringLiteral("file record: path is empty"));
        return std::nullopt;
    }
    ZQFileRecord record;
    record.path = path.toString();
    for (const auto &[key, field] : {std::pair{"device", &record.device}, std::pair{"inode", &record.inode}}) {
        const std::optional<quint64> number = numberFromJson(object.value(QLatin1String(key)));
        if (!number) {
            fail(error, QStringLiteral("file record: %1 is not a number").arg(QLatin1String(key)));
            return std::nullopt;
        }
        *field = *number;
    }
    return record;
}

ZQFilePtr ZQFileRecord::resolve() const
{
    const ZQFilePtr file = ZQStandardFile::newFileForPath(path);
    if (!file)
        return nullptr;
    if (device == 0 && inode == 0)
        return file;

    // Asked afresh: a file object held elsewhere may remember an older file under the name.
    const QByteArray nativePath = file->nativePath();
    struct stat info
    { };
    const bool standing = ::lstat(nativePath.constData(), &info) == 0;
    if (standing && quint64(info.st_dev) == device && quint64(info.st_ino) == inode)
        return file;
    forgetIfStale(file, standing, info);

    // Renamed inside its folder: the same device and inode under another name.
    const ZQFilePtr parent = file->parentItem();
    if (parent) {
        if (DIR *dir = ::opendir(parent->nativePath().constData())) {
            QByteArray found;
            while (const dirent *entry = ::readdir(dir)) {
                // The directory entry's inode is a hint (mount points differ); stat confirms.
                if (quint64(entry->d_ino) != inode)
                    continue;
                QByteArray candidate = parent->nativePath();
                if (!candidate.endsWith('/'))
                    candidate += '/';
                candidate += entry->d_name;
                struct stat candidateInfo
                { };
                if (::lstat(candidate.constData(), &candidateInfo) == 0 && quint64(candidateInfo.st_dev) == device
                    && quint64(candidateInfo.st_ino) == inode) {
                    found = candidate;
                    break;
                }
            }
            ::closedir(dir);
            if (!found.isEmpty())
                return ZQStandardFile::newFileForNativePath(found);
        }
    }
    // Something else stands under the name now, or nothing does (a placeholder).
    return file;
}
