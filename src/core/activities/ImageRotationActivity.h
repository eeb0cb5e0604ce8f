#pragma once

#include "core/activities/ActivityItem.h"
#include "core/imaging/JpegRotation.h"

#include <QString>

#include <atomic>

class ThumbnailCache;

// Turns image files a quarter turn for good, the way each format allows without loss: JPEGs by
// moving their DCT blocks (the EXIF orientation is folded in and reset to 1, the EXIF thumbnail
// turns too); TIFF, HEIF and camera RAW files by their orientation tag; PNG and WebP by writing
// the turned pixels losslessly. Each file is replaced in one step, so a cancel or a failure leaves
// it as it was or turned, never half-written.
class ImageRotationActivity : public IndependentActivity
{
public:
    struct Result
    {
        bool ok = false;
        bool pixelsTurned = false; // false when only the orientation tag changed
        QString error; // for the user
    };

    // Turns one file; runs on any thread. The files of a batch share `workspace`.
    static Result rotateFile(const QString &path, JpegRotation::Turn turn,
                             JpegRotation::Workspace *workspace = nullptr);
    // Whether a file of this name can be turned.
    static bool canRotate(const QString &path);
    // The file's cached thumbnails, made for it as it was at `modifiedBefore` (seconds), turned
    // with it and stored for its new modification time: the grid needs no new thumbnail, and an
    // entry of the same second is never left showing the old picture.
    static void turnCachedThumbnails(const QString &path, qint64 modifiedBefore, JpegRotation::Turn turn,
                                     const ThumbnailCache &cache);

    void cancelWork() override { m_cancelled = true; }
    bool isCancelled() const { return m_cancelled.load(); }

private:
    std::atomic<bool> m_cancelled{false};
};
