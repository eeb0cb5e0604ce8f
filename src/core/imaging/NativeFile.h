#pragma once

#include <QByteArray>
#include <QString>

// A regular file opened read-only by its file-system bytes, read at explicit offsets so that
// several readers can share the handle without seeking. Closed with the object.
class NativeFile
{
public:
    NativeFile() = default;
    ~NativeFile();
    NativeFile(const NativeFile &) = delete;
    NativeFile &operator=(const NativeFile &) = delete;

    // Answers false with a reason when the path does not name a readable regular file.
    bool open(const QByteArray &nativePath, QString *error);
    int handle() const { return m_fd; }
    qint64 size() const { return m_size; }

    // Up to `length` bytes from `offset`; shorter at the end of the file or on a read error.
    QByteArray read(qint64 offset, qint64 length) const;

private:
    int m_fd = -1;
    qint64 m_size = 0;
};
