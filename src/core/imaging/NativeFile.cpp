#include "core/imaging/NativeFile.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

NativeFile::~NativeFile()
{
    if (m_fd >= 0)
        ::close(m_fd);
}

bool NativeFile::open(const QByteArray &nativePath, QString *error)
{
    m_fd = ::open(nativePath.constData(), O_RDONLY | O_CLOEXEC);
    if (m_fd < 0) {
        *error = QString::fromLocal8Bit(std::strerror(errno));
        return false;
    }
    struct stat info
    { };
    if (::fstat(m_fd, &info) != 0) {
        *error = QString::fromLocal8Bit(std::strerror(errno));
        return false;
    }
    // A FIFO or device would block or never end; only plain files hold images.
    if (!S_ISREG(info.st_mode)) {
        *error = QStringLiteral("not a regular file");
        return false;
    }
    m_size = info.st_size;
    return true;
}

QByteArray NativeFile::read(qint64 offset, qint64 length) const
{
    if (m_fd < 0 || offset < 0 || offset >= m_size || length <= 0)
        return {};
    QByteArray bytes(qsizetype(qMin(length, m_size - offset)), Qt::Uninitialized);
    qsizetype filled = 0;
    while (filled < bytes.size()) {
        const ssize_t got = ::pread(m_fd, bytes.data() + filled, size_t(bytes.size() - filled), offset + filled);
        if (got < 0 && errno == EINTR)
            continue;
        if (got <= 0)
            break;
        filled += got;
    }
    bytes.truncate(filled);
    return bytes;
}
