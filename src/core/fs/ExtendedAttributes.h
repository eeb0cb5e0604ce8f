#pragma once

#include <QByteArray>
#include <QString>

#include <optional>

// User extended attributes of a file ("user.xdg.tags", "user.pixcove.flag"), read and written by
// path. A symbolic link is followed: its target carries the attribute, as in file managers (links
// cannot carry user attributes). Any thread; each call is one or two system calls.
namespace ExtendedAttributes {

// The outcome of a write: done, not possible on this file (the file system keeps no user
// attributes, the file is read-only for us or lives on a read-only volume: the caller may keep the
// value elsewhere), or failed for another reason (the file is gone), with the system's message.
enum class WriteStatus { written, unsupported, failed };

struct WriteResult
{
    WriteStatus status = WriteStatus::written;
    QString message;

    bool ok() const { return status == WriteStatus::written; }
};

// The attribute's value; nullopt when the file has no such attribute or cannot be read.
std::optional<QByteArray> read(const QByteArray &nativePath, const char *name);
// Sets the attribute to `value`, or removes it when `value` is null. Removing an attribute that
// is not there is a success.
WriteResult write(const QByteArray &nativePath, const char *name, const std::optional<QByteArray> &value);

} // namespace ExtendedAttributes
