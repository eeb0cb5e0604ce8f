#pragma once

#include "core/viewer/ImageViewDataSource.h"

#include <QByteArray>
#include <QCache>
#include <QImage>
#include <QMutex>

// Decoded pictures of the files viewers showed, by path, costed in bytes and bounded (512 MB by
// default); the least recently used go first. A picture is kept with its quality, and a better
// one replaces a worse one, never the reverse. Pictures are implicitly shared, so the bytes a
// data source holds too are counted once. Thread-safe.
class DecodedImageCache
{
public:
    // 512 MB: a 100 MP photo at full resolution and the fitted pictures of a folder's neighbours.
    static constexpr qint64 defaultCapacity = qint64(512) * 1024 * 1024;

    explicit DecodedImageCache(qint64 capacityBytes = defaultCapacity);
    static DecodedImageCache &shared();

    struct Entry
    {
        QImage image;
        ImageViewDataSource::Quality quality = ImageViewDataSource::Quality::none;
        QSize imageSize; // the full-resolution size the picture stands for
        QString notice;
        ImageViewDataSource::FileVersion version; // of the file it was decoded from
    };

    // Keeps `entry` unless a better picture of the same version of the file is there. A picture
    // larger than the whole capacity is not kept.
    void insert(const QByteArray &nativePath, const Entry &entry);
    // The file's picture, or an entry of quality none.
    Entry find(const QByteArray &nativePath) const;
    void remove(const QByteArray &nativePath);
    void clear();

    qint64 capacity() const;
    void setCapacity(qint64 bytes);
    qint64 totalCost() const;

    static qint64 costOf(const QImage &image) { return image.sizeInBytes(); }

private:
    mutable QMutex m_mutex;
    // Costed in bytes (QCache's costs are 64-bit).
    mutable QCache<QByteArray, Entry> m_entries;
};
