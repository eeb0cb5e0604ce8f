#pragma once

#include "core/model/PXFileForward.h"
#include "core/viewer/Stickiness.h"

#include <QByteArray>
#include <QDateTime>
#include <QImage>
#include <QObject>
#include <QRectF>
#include <QSize>
#include <QString>

#include <atomic>
#include <memory>

class DecodedImageCache;
class ImageViewDataSource;
using ImageViewDataSourcePtr = std::shared_ptr<ImageViewDataSource>;

// One file as a viewer shows it, kept while the user moves on so that coming back shows the file
// as it was left: its zoom level, its fit rule (stickiness), the visible part, its turn, and the
// picture decoded so far. The owner keeps one per file (ImageViewDataSourceCache); the image view
// showing the file shares it.
//
// The picture arrives in steps, each replacing the last only when it is better:
// 1. a thumbnail the owner already has (setThumbnail(), the grid's picture);
// 2. the preview embedded in the file, together with the image's full size (a small read);
// 3. a decode scaled to what the view needs (JPEG decodes straight to the nearest DCT scale);
// 4. full resolution, when the view is zoomed past what the scaled decode covers.
// requestImage() starts the next step the view needs on the "Image Viewer" pool; results come
// back on the GUI thread (changed()). The latest request wins: a waiting decode is replaced, a
// running one is finished and kept if it still helps. Decoded pictures are also kept in the
// shared DecodedImageCache (costed in bytes), so a file shown again, by this viewer or another,
// shows at once.
//
// A file that cannot be read gets an errorMessage() and loaded() becomes true, so that the view
// says so in place; a file that decodes only in part (a truncated JPEG) shows what decoded with
// a notice(). An image too large to decode whole within the memory limit is decoded reduced.
//
// Lives on the GUI thread.
class ImageViewDataSource : public QObject
{
    Q_OBJECT

public:
    // How good the picture held is, in the order the steps arrive.
    enum class Quality { none = 0, thumbnail = 1, preview = 2, scaled = 3, full = 4 };

    explicit ImageViewDataSource(PXFilePtr file, QObject *parent = nullptr);
    ~ImageViewDataSource() override;
    static ImageViewDataSourcePtr create(const PXFilePtr &file);

    const PXFilePtr &file() const { return m_file; }
    // The bytes the file's pictures are read from (a symbolic link is followed).
    QByteArray nativePath() const { return m_nativePath; }

    // Which content of the file a picture was decoded from: a file written anew (turned, edited,
    // replaced) has another inode or modification time, and pictures of the old one are stale.
    struct FileVersion
    {
        quint64 inode = 0;
        qint64 modified = 0; // ms since the epoch
        bool operator==(const FileVersion &) const = default;
    };
    static FileVersion versionOf(const PXFilePtr &file);
    FileVersion version() const { return m_version; }
    // Whether the file on disk is no longer the one this data source was made for.
    bool isOutdated() const;

    // --- View state, kept per file -------------------------------------------------------------

    // When the file was last shown; ties are broken by displaySequence(), which grows with every
    // markDisplayed() in the process.
    QDateTime lastDisplayDate() const { return m_lastDisplayDate; }
    quint64 displaySequence() const { return m_displaySequence; }
    void markDisplayed();

    // The visible part of the image, in pixels of the full-resolution image turned by
    // rotationAngle(); empty until the file was left once.
    QRectF visibleRect() const { return m_visibleRect; }
    void setVisibleRect(const QRectF &rect) { m_visibleRect = rect; }
    // Degrees clockwise, kept as 0, 90, 180 or 270 (any multiple of 90 is accepted).
    int rotationAngle() const { return m_rotationAngle; }
    void setRotationAngle(int degrees);
    // Magnification when not fitted (ZoomRules: image pixels per device pixel), clamped to the
    // viewer's range.
    double zoomLevel() const { return m_zoomLevel; }
    void setZoomLevel(double zoomLevel);
    Stickiness stickiness() const { return m_stickiness; }
    void setStickiness(Stickiness stickiness) { m_stickiness = stickiness; }

    // Seeds a new file's state from the viewer's default: alwaysFit is `always`, shrinkToFit
    // `whenNeededToFit`, percentage `none` at `percentage` / 100.
    void seed(ImageViewScalingMode mode, int percentage);
    // Takes the previous file's stickiness, zoom level and visible rectangle (the "retain
    // scaling from the previous file" choice).
    void copyScaling(const ImageViewDataSource &previous);

    // --- The picture ---------------------------------------------------------------------------

    // The best picture so far, upright (EXIF orientation applied, not the view's rotation),
    // colour-managed to sRGB; null before the first step.
    QImage image() const { return m_image; }
    Quality imageQuality() const { return m_quality; }
    // The full-resolution upright pixel size; empty until known (the preview step reads it).
    QSize imageSize() const { return m_imageSize; }
    // Whether something can be shown: the size and a picture, or an error message.
    bool imageLoaded() const { return m_imageLoaded; }
    // Whether a step is running or waiting on the pool.
    bool imageLoading() const { return m_imageLoading; }
    // The preview step has finished (with or without a picture).
    bool thumbnailRequestCompleted() const { return m_thumbnailRequestCompleted; }
    // The decode for the last requested size has finished.
    bool imageLoadRequestCompleted() const { return m_imageLoadRequestCompleted; }
    // Why the file cannot be shown; empty when it can.
    QString errorMessage() const { return m_errorMessage; }
    // A remark on a picture that is shown, such as "only part of the image could be read".
    QString notice() const { return m_notice; }

    // Hands in a first, small picture (the grid's thumbnail, upright). Ignored once a better one
    // is there.
    void setThumbnail(const QImage &thumbnail);
    // Asks for a picture that covers `neededPixels` (device pixels, upright; the view converts its
    // rotated need). An empty size asks only for the first steps. Does nothing when the picture
    // held covers the need or a running step will.
    void requestImage(QSize neededPixels);
    // Whether the picture held covers `neededPixels`: full resolution always does; a reduced one
    // when it is at least that large (within a pixel of rounding).
    bool covers(QSize neededPixels) const;
    // The quality a request for `neededPixels` leads to: scaled when a reduced decode covers it,
    // full when only the whole image does.
    Quality qualityNeededFor(QSize neededPixels) const;
    // Stops the steps that have not started yet and ignores the results of those running (the
    // view moved on to another file); the picture held stays. A later request starts afresh.
    void cancelLoading();
    // Forgets the picture (the owner's trimming): image null, size empty, loaded and completion
    // flags false; a running step's result is dropped; the decoded-picture cache forgets the
    // file as well. The view state stays.
    void dropImage();

    // The decoded-picture cache this source reads and fills; the shared one unless a test sets
    // its own (null: none).
    void setImageCache(DecodedImageCache *cache) { m_cache = cache; }
    // The largest decode in bytes (ImageDecoder's limit); larger images are decoded reduced.
    void setMemoryLimit(qint64 bytes) { m_memoryLimit = bytes; }

Q_SIGNALS:
    // The picture, its size, its messages or the loading state changed.
    void changed();

private:
    struct StepResult;
    void startPreviewStep();
    void startDecodeStep(QSize neededPixels, Quality quality);
    void finishStep(const StepResult &result, quint64 generation);
    void finishPreview(const StepResult &step);
    void finishDecode(const StepResult &step);
    void adopt(const QImage &image, Quality quality);
    void newGeneration();
    // The part of a need that a picture must cover: the image fitted into the box, never larger
    // than the image (the box itself while the image's size is unknown).
    QSize fittedNeed(QSize neededPixels) const;
    void updateLoadedAndNotify();

    PXFilePtr m_file;
    QByteArray m_nativePath;
    FileVersion m_version;
    QDateTime m_lastDisplayDate;
    quint64 m_displaySequence = 0;
    QRectF m_visibleRect;
    int m_rotationAngle = 0;
    double m_zoomLevel = 1.0;
    Stickiness m_stickiness = Stickiness::whenNeededToFit;

    QImage m_image;
    Quality m_quality = Quality::none;
    QSize m_imageSize;
    bool m_imageLoaded = false;
    bool m_imageLoading = false;
    bool m_thumbnailRequestCompleted = false;
    bool m_imageLoadRequestCompleted = false;
    QString m_errorMessage;
    QString m_notice;

    DecodedImageCache *m_cache = nullptr;
    qint64 m_memoryLimit = 0;
    // Dropping the picture or cancelling starts a new generation: results of an older one are
    // ignored, and steps of an older one that have not started yet do not run.
    quint64 m_generation = 0;
    std::shared_ptr<std::atomic_bool> m_cancelled;
    bool m_previewRunning = false;
    // The decode running and the one waiting behind it (empty size: none).
    QSize m_decodeRunningFor;
    Quality m_decodeRunningQuality = Quality::none;
    QSize m_decodeWaitingFor;
};
