#include "core/thumbnails/SystemThumbnailer.h"

#include "core/app/Dispatch.h"
#include "core/app/Log.h"
#include "core/imaging/ImageDecoder.h"
#include "core/imaging/ImageHeaderReader.h"
#include "core/thumbnails/DesktopThumbnailers.h"
#include "core/thumbnails/VideoFrameGrabber.h"

#include <QFile>
#include <QMimeDatabase>

#include <sys/stat.h>

#include <cmath>

namespace {

const QString errorDomain = QStringLiteral("SystemThumbnailer");

SystemThumbnailResult failure(int code, const QString &description)
{
    return {QImage(), ThumbnailError{errorDomain, code, description}, ThumbnailSource::failed};
}

} // namespace

SystemThumbnailRequest::SystemThumbnailRequest(QByteArray nativePath, QSizeF size, double scale)
    : m_nativePath(std::move(nativePath))
    , m_size(size)
    , m_scale(scale > 0 ? scale : 1.0)
{ }

int SystemThumbnailRequest::pixelSize() const
{
    return qMax(1, int(std::ceil(qMax(m_size.width(), m_size.height()) * m_scale)));
}

SystemThumbnailer::SystemThumbnailer(ThumbnailCache cache)
    : m_cache(std::move(cache))
{
    m_pool.setObjectName(QStringLiteral("System Thumbnailer"));
    m_pool.setMaxThreadCount(defaultThreadCount);
}

SystemThumbnailer::~SystemThumbnailer()
{
    m_pool.waitForDone();
}

SystemThumbnailer &SystemThumbnailer::shared()
{
    // Never deleted: its pool may be running while static destructors run.
    static SystemThumbnailer *thumbnailer = [] {
        auto *made = new SystemThumbnailer;
        made->setBackgroundPriority();
        registerThreadPool(&made->m_pool);
        return made;
    }();
    return *thumbnailer;
}

void SystemThumbnailer::setMaxThreadCount(int count)
{
    m_pool.setMaxThreadCount(count);
    m_throttle->setLimit(count);
}

void SystemThumbnailer::setBackgroundPriority()
{
    ::setBackgroundPriority(&m_pool);
}

void SystemThumbnailer::generate(const std::shared_ptr<SystemThumbnailRequest> &request, Handler handler)
{
    m_pool.start([this, request, handler = std::move(handler)] {
        const auto cancelled = [] { return failure(2, QStringLiteral("The request was cancelled.")); };
        if (request->isCancelled()) {
            handler(cancelled());
            return;
        }
        SystemThumbnailResult result;
        {
            const ThumbnailThrottle::Slot slot = m_throttle->acquire();
            // Asked again after the wait: a request scrolled away meanwhile costs nothing.
            result = request->isCancelled() ? cancelled() : thumbnail(*request);
        }
        handler(result);
    });
}

SystemThumbnailResult SystemThumbnailer::thumbnail(const SystemThumbnailRequest &request) const
{
    const QByteArray &path = request.nativePath();
    struct stat info;
    if (::stat(path.constData(), &info) != 0 || !S_ISREG(info.st_mode))
        return failure(3, QStringLiteral("%1 is not a readable file.").arg(QFile::decodeName(path)));
    if (info.st_size == 0)
        return failure(3, QStringLiteral("%1 is empty.").arg(QFile::decodeName(path)));
    const qint64 mtime = info.st_mtime;
    const int pixels = request.pixelSize();
    const QSize fit(pixels, pixels);
    const ThumbnailCache::Flavor flavor = ThumbnailCache::flavorForPixels(pixels);
    const QString uri = ThumbnailCache::uriForNativePath(path);

    if (m_cacheEnabled) {
        QString error;
        if (!request.wantsImage()) {
            if (m_cache.verify(uri, mtime, flavor, &error))
                return {QImage(), std::nullopt, ThumbnailSource::cached};
        } else {
            const QImage cached = m_cache.lookup(uri, mtime, flavor, &error);
            if (!cached.isNull())
                return {ImageDecoder::scaledToFit(cached, fit), std::nullopt, ThumbnailSource::cached};
        }
        if (!error.isEmpty())
            logError(error);
        if (m_cache.hasFailure(uri, mtime))
            return failure(4, QStringLiteral("No thumbnail can be made of %1.").arg(QFile::decodeName(path)));
    }
    if (request.isCancelled())
        return failure(2, QStringLiteral("The request was cancelled."));

    const int renderPixels = ThumbnailCache::flavorPixels(flavor);
    SystemThumbnailResult result = render(request, qMax(renderPixels, pixels));
    if (request.isCancelled())
        return failure(2, QStringLiteral("The request was cancelled."));

    if (m_cacheEnabled) {
        QString error;
        const bool stored = result.image.isNull()
            ? m_cache.storeFailure(uri, mtime, &error)
            : m_cache.store(uri, mtime, flavor,
                            ImageDecoder::scaledToFit(result.image, QSize(renderPixels, renderPixels)), &error);
        if (!stored)
            logError(error);
    }
    if (!request.wantsImage())
        result.image = QImage();
    else if (!result.image.isNull())
        result.image = ImageDecoder::scaledToFit(result.image, fit);
    return result;
}

SystemThumbnailResult SystemThumbnailer::render(const SystemThumbnailRequest &request, int renderPixels) const
{
    const QByteArray &path = request.nativePath();
    const QString displayPath = QFile::decodeName(path);
    QFile file(displayPath);
    QByteArray head;
    if (file.open(QIODevice::ReadOnly))
        head = file.read(64);
    file.close();

    const QSize fit(renderPixels, renderPixels);
    QString error;
    ImageDecoder::Options options;
    options.fitSize = fit;
    auto decoded = [&]() -> SystemThumbnailResult {
        const QImage image = ImageDecoder::decode(path, options, &error);
        if (!image.isNull())
            return {image, std::nullopt, ThumbnailSource::rendered};
        return failure(5, error);
    };
    // Signatures first; then videos by name, before anything loads the image plugins to ask them.
    if (ImageHeaderReader::detectFormat(head, {}, path) != ImageFormat::Other)
        return decoded();
    static const QMimeDatabase mimeDatabase;
    const QMimeType mime = mimeDatabase.mimeTypeForFile(displayPath);
    if (mime.name().startsWith(QLatin1String("video/"))) {
        const QImage frame = VideoFrameGrabber::thumbnailFrame(path, fit, &error);
        if (!frame.isNull())
            return {frame, std::nullopt, ThumbnailSource::rendered};
        return failure(6, error);
    }
    if (!ImageDecoder::sniffFormat(head, path).isEmpty())
        return decoded();
    const QImage image = DesktopThumbnailers::shared().render(path, mime, renderPixels, &error);
    if (!image.isNull())
        return {image, std::nullopt, ThumbnailSource::rendered};
    return failure(7, error.isEmpty() ? QStringLiteral("No thumbnailer knows %1 files.").arg(mime.name()) : error);
}
