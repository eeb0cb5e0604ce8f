#include "core/fs/ExtendedAttributes.h"

#include <cerrno>
#include <cstring>
#include <sys/xattr.h>

namespace {

// Errors after which the value may be kept elsewhere: the file system has no user attributes
// (ENOTSUP: FAT, some network shares), the file is not ours to change (EACCES, EPERM: read-only
// files, special files) or the volume is read-only (EROFS).
bool meansUnsupported(int error)
{
    return error == ENOTSUP || error == EACCES || error == EPERM || error == EROFS;
}

} // namespace

namespace ExtendedAttributes {

std::optional<QByteArray> read(const QByteArray &nativePath, const char *name)
{
    // Most values are short: one call with a buffer on the stack, a second only for a long one.
    char buffer[512];
    ssize_t size = ::getxattr(nativePath.constData(), name, buffer, sizeof buffer);
    if (size >= 0)
        return QByteArray(buffer, size);
    if (errno != ERANGE)
        return std::nullopt;
    for (int attempt = 0; attempt < 3; ++attempt) {
        size = ::getxattr(nativePath.constData(), name, nullptr, 0);
        if (size < 0)
            return std::nullopt;
        QByteArray value(size, Qt::Uninitialized);
        const ssize_t read = ::getxattr(nativePath.constData(), name, value.data(), size_t(value.size()));
        if (read >= 0) {
            value.truncate(read);
            return value;
        }
        if (errno != ERANGE) // else it grew in between: ask again
            return std::nullopt;
    }
    return std::nullopt;
}

WriteResult write(const QByteArray &nativePath, const char *name, const std::optional<QByteArray> &value)
{
    const int result = value ? ::setxattr(nativePath.constData(), name, value->constData(), size_t(value->size()), 0)
                             : ::removexattr(nativePath.constData(), name);
    if (result == 0)
        return {};
    const int error = errno;
    if (!value && error == ENODATA)
        return {};
    return {meansUnsupported(error) ? WriteStatus::unsupported : WriteStatus::failed,
            QString::fromLocal8Bit(std::strerror(error))};
}

} // namespace ExtendedAttributes
