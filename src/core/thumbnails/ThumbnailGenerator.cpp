#include "core/thumbnails/ThumbnailGenerator.h"

#include "core/app/Dispatch.h"
#include "core/app/Log.h"
#include "core/imaging/EmbeddedPreview.h"
#include "core/model/PXFile.h"
#include "core/thumbnails/SystemThumbnailer.h"

#include <QGuiApplication>
#include <QScreen>

#include <cmath>

namespace {

// Two pools, as a thread keeps its scheduling class for life.
QThreadPool *namedUtilityQueue(bool background)
{
    QThreadPool *pool = namedThreadPool(background ? QStringLiteral("Thumbnail Generator, idle")
                                                   : QStringLiteral("Thumbnail Generator"));
    if (background)
        setBackgroundPriority(pool);
    // Embedded previews are small reads: as many at once as requests may run.
    if (pool->maxThreadCount() < ThumbnailGenerator::defaultConcurrentRequestsCount)
        pool->setMaxThreadCount(ThumbnailGenerator::defaultConcurrentRequestsCount);
    return pool;
}

} // namespace

// ---- Request ------------------------------------------------------------------------------

ThumbnailGenerator::Request::Request(PXFilePtr file, QSizeF size, Priority priority, UpdateHandler updateHandler)
    : m_file(std::move(file))
    , m_size(size)
    , m_priority(priority)
    , m_updateHandler(std::move(updateHandler))
{ }

ThumbnailGenerator::Request::~Request() = default;

void ThumbnailGenerator::Request::cancel()
{
    setPriority(Priority::cancelled);
    QMutexLocker locker(&m_lock);
    if (m_systemRequest)
        m_systemRequest->cancel();
}

void ThumbnailGenerator::Request::setSystemRequest(std::shared_ptr<SystemThumbnailRequest> systemRequest)
{
    QMutexLocker locker(&m_lock);
    m_systemRequest = std::move(systemRequest);
    if (m_systemRequest && isCancelled())
        m_systemRequest->cancel();
}

void ThumbnailGenerator::Request::deliver(const QImage &image, bool final, const std::optional<ThumbnailError> &error,
                                          ThumbnailSource source)
{
    if (isCancelled())
        return;
    m_source.store(source);
    if (m_updateHandler)
        m_updateHandler(image, final, error);
}

// ---- Generator ----------------------------------------------------------------------------

ThumbnailGenerator::ThumbnailGenerator(SystemThumbnailer *thumbnailer, QObject *parent)
    : QObject(parent)
    , m_utilityQueue(namedUtilityQueue(false))
    , m_thumbnailer(thumbnailer ? thumbnailer : &SystemThumbnailer::shared())
{ }

ThumbnailGenerator::~ThumbnailGenerator()
{
    for (const RequestPtr &request : std::as_const(m_activeOwners))
        request->cancel();
}

ThumbnailGenerator &ThumbnailGenerator::shared()
{
    // Never deleted: requests may finish on pool threads while static destructors run.
    static ThumbnailGenerator *generator = [] {
        auto *made = new ThumbnailGenerator;
        made->setBackgroundPriority();
        return made;
    }();
    return *generator;
}

void ThumbnailGenerator::setConcurrentRequestsCount(int count)
{
    m_concurrentRequestsCount = qMax(1, count);
    if (m_utilityQueue->maxThreadCount() < m_concurrentRequestsCount)
        m_utilityQueue->setMaxThreadCount(m_concurrentRequestsCount);
}

void ThumbnailGenerator::setBackgroundPriority()
{
    m_utilityQueue = namedUtilityQueue(true);
    setConcurrentRequestsCount(m_concurrentRequestsCount);
    m_thumbnailer->setBackgroundPriority();
}

void ThumbnailGenerator::viewScrollingChanged(bool scrolling)
{
    m_scrollingViews = qMax(0, m_scrollingViews + (scrolling ? 1 : -1));
    m_thumbnailer->throttle()->setBusy(m_scrollingViews > 0);
}

double ThumbnailGenerator::screenScale() const
{
    if (m_screenScale)
        return *m_screenScale;
    double scale = 1.0;
    if (qobject_cast<QGuiApplication *>(QCoreApplication::instance())) {
        const auto screens = QGuiApplication::screens();
        for (const QScreen *screen : screens)
            scale = qMax(scale, screen->devicePixelRatio());
    }
    return scale;
}

void ThumbnailGenerator::setScreenScale(double scale)
{
    m_screenScale = scale;
}

void ThumbnailGenerator::add(const RequestPtr &request)
{
    if (!isGuiThread()) {
        postTo(this, [this, request] { add(request); });
        return;
    }
    request->m_generator = this;
    m_requests.append(request);
    schedule();
}

void ThumbnailGenerator::remove(const RequestPtr &request)
{
    if (!isGuiThread()) {
        postTo(this, [this, request] { remove(request); });
        return;
    }
    m_requests.removeAll(request);
}

void ThumbnailGenerator::finished(const RequestPtr &request)
{
    if (!isGuiThread()) {
        postTo(this, [this, request] { finished(request); });
        return;
    }
    if (m_activeRequests.remove(request.get()))
        m_activeOwners.removeOne(request);
    schedule();
}

void ThumbnailGenerator::schedule()
{
    while (m_activeRequests.size() < m_concurrentRequestsCount && !m_requests.isEmpty()) {
        // Most urgent class first, earliest arrival within a class; read now, so that priorities
        // changed while waiting count.
        qsizetype chosen = -1;
        qsizetype firstMedium = -1;
        qsizetype firstLow = -1;
        QList<RequestPtr> cancelledMet;
        for (qsizetype i = 0; i < m_requests.size() && chosen < 0; ++i) {
            const RequestPtr &candidate = m_requests.at(i);
            switch (candidate->priority()) {
            case Priority::cancelled: cancelledMet.append(candidate); break;
            case Priority::high: chosen = i; break;
            case Priority::medium:
                if (firstMedium < 0)
                    firstMedium = i;
                break;
            case Priority::low:
                if (firstLow < 0)
                    firstLow = i;
                break;
            }
        }
        if (chosen < 0)
            chosen = firstMedium >= 0 ? firstMedium : firstLow;
        if (chosen < 0) {
            logError(QStringLiteral("Error: Nothing but cancelled requests in the thumbnail queue"));
            return;
        }
        const RequestPtr request = m_requests.takeAt(chosen);
        // Cancelled requests that the walk met are dropped, so that items released while waiting
        // do not pile up; the others keep their order.
        for (const RequestPtr &cancelled : std::as_const(cancelledMet))
            m_requests.removeOne(cancelled);
        m_activeRequests.insert(request.get());
        m_activeOwners.append(request);
        start(request);
    }
}

void ThumbnailGenerator::start(const RequestPtr &request)
{
    const PXFilePtr &file = request->file();
    if (!file || file->nativePath().isEmpty()) {
        // A file without a location gets no thumbnail. The error is made but, as the request is
        // cancelled first, never delivered. Its slot is freed at once: nothing runs for it.
        request->cancel();
        m_requests.removeAll(request);
        m_activeRequests.remove(request.get());
        m_activeOwners.removeOne(request);
        request->deliver({}, true,
                         ThumbnailError{QStringLiteral("ThumbnailGenerator"), 1,
                                        QStringLiteral("URL to file could not be found.")},
                         ThumbnailSource::failed);
        return;
    }
    if (!file->isImage()) {
        if (!request->isCancelled())
            startSystemThumbnail(request);
        else
            finished(request);
        return;
    }
    // The screens are asked here: only the GUI thread may.
    const int needed = int(screenScale() * request->size().width());
    std::weak_ptr<Request> weakRequest = request;
    QPointer<ThumbnailGenerator> generator = this;
    std::shared_ptr<ThumbnailThrottle> throttle = m_thumbnailer->throttle();
    m_utilityQueue->start(
        [generator, weakRequest, needed, throttle] { runImagePath(generator, weakRequest, needed, throttle); });
}

void ThumbnailGenerator::runImagePath(QPointer<ThumbnailGenerator> generator, const std::weak_ptr<Request> &weakRequest,
                                      int needed, const std::shared_ptr<ThumbnailThrottle> &throttle)
{
    RequestPtr request = weakRequest.lock();
    if (!request || !generator)
        return;
    if (!request->isCancelled()) {
        QImage preview;
        {
            const ThumbnailThrottle::Slot slot = throttle->acquire();
            if (!request->isCancelled())
                preview = EmbeddedPreview::read(request->file()->resolvedNativePath(), needed);
        }
        if (!preview.isNull()) {
            if (preview.width() < needed && preview.height() < needed) {
                postTo(generator, [request, preview] {
                    request->deliver(preview, false, std::nullopt, ThumbnailSource::embedded);
                });
            } else {
                postTo(generator, [generator, request, preview] {
                    generator->finished(request);
                    request->deliver(preview, true, std::nullopt, ThumbnailSource::embedded);
                });
                return;
            }
        }
    }
    if (request->isCancelled()) {
        postTo(generator, [generator, request] { generator->finished(request); });
        return;
    }
    postTo(generator, [generator, request] { generator->startSystemThumbnail(request); });
}

void ThumbnailGenerator::startSystemThumbnail(const RequestPtr &request)
{
    if (request->isCancelled()) {
        finished(request);
        return;
    }
    QPointer<ThumbnailGenerator> generator = this;
    std::weak_ptr<Request> weakRequest = request;
    auto systemRequest =
        std::make_shared<SystemThumbnailRequest>(request->file()->resolvedNativePath(), request->size(), screenScale());
    systemRequest->setWantsImage(request->wantsImage());
    // Stored first, so that a cancel from now on reaches the rendering.
    request->setSystemRequest(systemRequest);
    m_thumbnailer->generate(systemRequest, [generator, weakRequest](const SystemThumbnailResult &result) {
        if (!generator)
            return;
        postTo(generator, [generator, weakRequest, result] {
            const RequestPtr request = weakRequest.lock();
            if (!request)
                return;
            request->deliver(result.image, true, result.error, result.source);
            request->setSystemRequest(nullptr);
            generator->finished(request);
        });
    });
}
