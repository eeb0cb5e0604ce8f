#include "core/viewer/ImageViewDataSource.h"

#include "core/app/Dispatch.h"
#include "core/imaging/ImageDecoder.h"
#include "core/model/PXFile.h"
#include "core/viewer/DecodedImageCache.h"
#include "core/viewer/ImageLoading.h"
#include "core/viewer/ZoomRules.h"

#include <QPointer>

namespace {

// The pool of the viewers' decodes: apart from the thumbnails', whose long queue must not delay
// the file on screen.
const QString poolName = QStringLiteral("Image Viewer");

std::atomic<quint64> displaySequenceCounter{0};

// The embedded preview is asked to cover this long edge (EmbeddedPreview caps it anyway): a
// screen-sized picture that a camera's large preview provides.
constexpr int previewPixels = 1920;

} // namespace

struct ImageViewDataSource::StepResult
{
    ImageLoading::Result result;
    bool previewStep = false;
    Quality quality = Quality::none;
    QSize requested;
};

ImageViewDataSource::ImageViewDataSource(PXFilePtr file, QObject *parent)
    : QObject(parent)
    , m_file(std::move(file))
    , m_cache(&DecodedImageCache::shared())
    , m_memoryLimit(ImageDecoder::defaultMemoryLimit)
    , m_cancelled(std::make_shared<std::atomic_bool>(false))
{
    if (m_file) {
        m_nativePath = m_file->resolvedNativePath();
        m_version = versionOf(m_file);
    }
}

ImageViewDataSource::FileVersion ImageViewDataSource::versionOf(const PXFilePtr &file)
{
    if (!file)
        return {};
    const QDateTime modified = file->modificationDate();
    return {quint64(file->inode()), modified.isValid() ? modified.toMSecsSinceEpoch() : 0};
}

bool ImageViewDataSource::isOutdated() const
{
    return m_file && versionOf(m_file) != m_version;
}

ImageViewDataSource::~ImageViewDataSource()
{
    *m_cancelled = true;
}

ImageViewDataSourcePtr ImageViewDataSource::create(const PXFilePtr &file)
{
    return std::make_shared<ImageViewDataSource>(file);
}

void ImageViewDataSource::markDisplayed()
{
    m_lastDisplayDate = QDateTime::currentDateTimeUtc();
    m_displaySequence = ++displaySequenceCounter;
}

void ImageViewDataSource::setRotationAngle(int degrees)
{
    m_rotationAngle = ((degrees / 90 * 90) % 360 + 360) % 360;
}

void ImageViewDataSource::setZoomLevel(double zoomLevel)
{
    m_zoomLevel = ZoomRules::clampMagnification(zoomLevel);
}

void ImageViewDataSource::seed(ImageViewScalingMode mode, int percentage)
{
    m_stickiness = stickinessFor(mode);
    if (mode == ImageViewScalingMode::percentage)
        setZoomLevel(percentage / 100.0);
}

void ImageViewDataSource::copyScaling(const ImageViewDataSource &previous)
{
    m_stickiness = previous.m_stickiness;
    m_zoomLevel = previous.m_zoomLevel;
    m_visibleRect = previous.m_visibleRect;
}

void ImageViewDataSource::setThumbnail(const QImage &thumbnail)
{
    if (thumbnail.isNull() || m_quality >= Quality::thumbnail)
        return;
    adopt(thumbnail, Quality::thumbnail);
    updateLoadedAndNotify();
}

QSize ImageViewDataSource::fittedNeed(QSize neededPixels) const
{
    if (m_imageSize.isEmpty())
        return neededPixels;
    if (neededPixels.width() >= m_imageSize.width() && neededPixels.height() >= m_imageSize.height())
        return m_imageSize;
    return m_imageSize.scaled(neededPixels, Qt::KeepAspectRatio);
}

bool ImageViewDataSource::covers(QSize neededPixels) const
{
    if (m_quality == Quality::full)
        return true;
    // Previews are a first look: only a decode of the file counts as covering.
    if (m_quality < Quality::scaled || neededPixels.isEmpty())
        return m_quality >= Quality::scaled;
    const QSize need = fittedNeed(neededPixels);
    // A pixel of rounding between the decoder's scale and the view's.
    return m_image.width() + 1 >= need.width() && m_image.height() + 1 >= need.height();
}

ImageViewDataSource::Quality ImageViewDataSource::qualityNeededFor(QSize neededPixels) const
{
    if (!m_imageSize.isEmpty() && fittedNeed(neededPixels) == m_imageSize)
        return Quality::full;
    return Quality::scaled;
}

void ImageViewDataSource::requestImage(QSize neededPixels)
{
    if (m_nativePath.isEmpty() || !m_errorMessage.isEmpty())
        return;
    const bool wasLoading = m_imageLoading;
    const Quality quality = m_quality;
    if (m_quality < Quality::preview && !m_previewRunning && !m_thumbnailRequestCompleted) {
        if (m_cache) {
            const DecodedImageCache::Entry entry = m_cache->find(m_nativePath);
            if (entry.quality > m_quality && entry.quality >= Quality::preview && entry.version == m_version) {
                m_imageSize = entry.imageSize;
                m_notice = entry.notice;
                adopt(entry.image, entry.quality);
            }
        }
        if (m_quality >= Quality::preview)
            m_thumbnailRequestCompleted = true;
        else
            startPreviewStep();
    }
    if (!neededPixels.isEmpty() && !covers(neededPixels)) {
        const Quality needed = qualityNeededFor(neededPixels);
        if (m_previewRunning && m_quality < Quality::preview) {
            // The decode starts once the preview is out: on two cores, a decode beside the
            // preview's read doubles the time to the first picture and gains the decode little.
            m_decodeWaitingFor = neededPixels;
        } else if (m_decodeRunningQuality != Quality::none) {
            // The running decode will do when it decodes whole or at least as large.
            const bool runningWillDo = m_decodeRunningQuality == Quality::full
                || (needed != Quality::full
                    && fittedNeed(m_decodeRunningFor).width() >= fittedNeed(neededPixels).width()
                    && fittedNeed(m_decodeRunningFor).height() >= fittedNeed(neededPixels).height());
            m_decodeWaitingFor = runningWillDo ? QSize() : neededPixels;
        } else {
            startDecodeStep(neededPixels, needed);
        }
    }
    const bool loading = m_previewRunning || m_decodeRunningQuality != Quality::none;
    if (loading != wasLoading || quality != m_quality)
        updateLoadedAndNotify();
}

void ImageViewDataSource::startPreviewStep()
{
    m_previewRunning = true;
    const QPointer<ImageViewDataSource> self(this);
    const auto cancelled = m_cancelled;
    const quint64 generation = m_generation;
    const QByteArray path = m_nativePath;
    // The preview is a small read: ahead of decodes waiting on the pool.
    runOnPool(
        poolName,
        [self, cancelled, generation, path] {
            if (*cancelled)
                return;
            StepResult step{ImageLoading::preview(path, previewPixels), true, Quality::preview, {}};
            postToGui([self, step, generation] {
                if (self)
                    self->finishStep(step, generation);
            });
        },
        1);
}

void ImageViewDataSource::startDecodeStep(QSize neededPixels, Quality quality)
{
    m_decodeRunningFor = neededPixels;
    m_decodeRunningQuality = quality;
    m_decodeWaitingFor = {};
    m_imageLoadRequestCompleted = false;
    const QPointer<ImageViewDataSource> self(this);
    const auto cancelled = m_cancelled;
    const quint64 generation = m_generation;
    const QByteArray path = m_nativePath;
    const QSize fitSize = quality == Quality::full ? QSize() : neededPixels;
    const qint64 memoryLimit = m_memoryLimit;
    runOnPool(poolName, [self, cancelled, generation, path, fitSize, memoryLimit, quality, neededPixels] {
        if (*cancelled)
            return;
        StepResult step{ImageLoading::decode(path, fitSize, memoryLimit), false, quality, neededPixels};
        postToGui([self, step, generation] {
            if (self)
                self->finishStep(step, generation);
        });
    });
}

void ImageViewDataSource::finishStep(const StepResult &step, quint64 generation)
{
    if (generation != m_generation)
        return;
    if (step.previewStep)
        finishPreview(step);
    else
        finishDecode(step);
    updateLoadedAndNotify();
}

void ImageViewDataSource::finishPreview(const StepResult &step)
{
    m_previewRunning = false;
    m_thumbnailRequestCompleted = true;
    const ImageLoading::Result &result = step.result;
    // A decode that came first knows the size as well.
    if (m_quality < Quality::scaled && !result.imageSize.isEmpty())
        m_imageSize = result.imageSize;
    if (!result.image.isNull() && m_quality < Quality::preview && !m_imageSize.isEmpty()) {
        adopt(result.image, Quality::preview);
        if (m_cache)
            m_cache->insert(m_nativePath, {m_image, m_quality, m_imageSize, {}, m_version});
    }
    // A file that cannot even be opened: said at once unless a decode is still trying.
    if (m_image.isNull() && result.imageSize.isEmpty() && !result.error.isEmpty()
        && m_decodeRunningQuality == Quality::none) {
        m_errorMessage = result.error;
        m_decodeWaitingFor = {};
    }
    const QSize waiting = m_decodeWaitingFor;
    if (!waiting.isEmpty() && m_decodeRunningQuality == Quality::none && !covers(waiting))
        startDecodeStep(waiting, qualityNeededFor(waiting));
}

void ImageViewDataSource::finishDecode(const StepResult &step)
{
    m_decodeRunningFor = {};
    m_decodeRunningQuality = Quality::none;
    m_imageLoadRequestCompleted = true;
    const ImageLoading::Result &result = step.result;
    if (!result.image.isNull()) {
        if (!result.imageSize.isEmpty())
            m_imageSize = result.imageSize;
        Quality quality = step.quality;
        // A reduced request that came out whole, or asked for the whole image before its size was
        // known, is the full picture (reduced only by the memory limit).
        const bool wholeAsked =
            step.requested.width() >= m_imageSize.width() && step.requested.height() >= m_imageSize.height();
        if (quality == Quality::scaled && (result.image.size() == m_imageSize || wholeAsked))
            quality = Quality::full;
        if (quality >= m_quality) {
            adopt(result.image, quality);
            m_notice = result.notice;
            if (m_cache)
                m_cache->insert(m_nativePath, {m_image, m_quality, m_imageSize, m_notice, m_version});
        }
    } else {
        if (m_imageSize.isEmpty())
            m_imageSize = result.imageSize;
        // With a preview on screen the failure is a remark; without, it is what the view says.
        if (m_image.isNull())
            m_errorMessage = result.error;
        else
            m_notice = result.error;
        m_decodeWaitingFor = {};
    }
    const QSize waiting = m_decodeWaitingFor;
    m_decodeWaitingFor = {};
    if (!waiting.isEmpty() && !covers(waiting) && m_errorMessage.isEmpty())
        startDecodeStep(waiting, qualityNeededFor(waiting));
}

void ImageViewDataSource::adopt(const QImage &image, Quality quality)
{
    m_image = image;
    m_quality = quality;
    // A picture arrived after all: what failed is now a remark on it.
    if (!m_errorMessage.isEmpty()) {
        m_notice = m_errorMessage;
        m_errorMessage.clear();
    }
}

void ImageViewDataSource::newGeneration()
{
    *m_cancelled = true;
    m_cancelled = std::make_shared<std::atomic_bool>(false);
    ++m_generation;
    if (m_previewRunning)
        m_thumbnailRequestCompleted = false;
    m_previewRunning = false;
    m_decodeRunningFor = {};
    m_decodeRunningQuality = Quality::none;
    m_decodeWaitingFor = {};
}

void ImageViewDataSource::cancelLoading()
{
    if (!m_imageLoading)
        return;
    newGeneration();
    updateLoadedAndNotify();
}

void ImageViewDataSource::dropImage()
{
    // The shared copy goes too: otherwise every file stepped past stays decoded until the cache
    // is full, and a long walk through a folder ends with the whole capacity resident.
    if (m_cache && !m_nativePath.isEmpty())
        m_cache->remove(m_nativePath);
    newGeneration();
    m_image = {};
    m_quality = Quality::none;
    m_imageSize = {};
    m_imageLoaded = false;
    m_thumbnailRequestCompleted = false;
    m_imageLoadRequestCompleted = false;
    m_errorMessage.clear();
    m_notice.clear();
    updateLoadedAndNotify();
}

void ImageViewDataSource::updateLoadedAndNotify()
{
    m_imageLoaded = (!m_image.isNull() && !m_imageSize.isEmpty()) || !m_errorMessage.isEmpty();
    m_imageLoading = m_previewRunning || m_decodeRunningQuality != Quality::none;
    Q_EMIT changed();
}
