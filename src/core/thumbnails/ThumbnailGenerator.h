#pragma once

#include "core/model/PXFileForward.h"
#include "core/thumbnails/ThumbnailError.h"

#include <QImage>
#include <QList>
#include <QMutex>
#include <QObject>
#include <QPointer>
#include <QSet>
#include <QSizeF>

#include <atomic>
#include <functional>
#include <memory>
#include <optional>

class QThreadPool;
class SystemThumbnailer;
class SystemThumbnailRequest;
class ThumbnailThrottle;

// The one producer of thumbnails for the grids. Items hand it requests whose priority follows
// their visibility; it runs at most `concurrentRequestsCount` of them at once and always starts
// the most urgent waiting request next (earliest arrival within a class). The priority is read
// at the moment of choosing, so raising a waiting request's priority re-orders the queue.
//
// Images first try the preview embedded in the file (cheap: a small read). A preview that covers
// the needed pixels is the final thumbnail; a smaller one is delivered as a preliminary picture
// and the system thumbnailer renders the final one. Other files go straight to the thumbnailer.
//
// The waiting and running lists live on the GUI thread; add, remove and finished re-post
// themselves there when called from elsewhere. Every delivery reaches the update handler on the
// GUI thread.
//
// The windows' generator keeps out of the GUI thread's way: its workers run in the idle
// scheduling class, and while a view scrolls only as many decode at once as leave a core free
// (the thumbnailer's throttle, which preview reads share); the six requests keep running, their
// decoding waits.
class ThumbnailGenerator : public QObject
{
    Q_OBJECT

public:
    enum class Priority { cancelled = 0, low = 1, medium = 2, high = 3 };
    class Request; // shared, compared by identity
    using RequestPtr = std::shared_ptr<Request>;
    // `image` is null when there is none; `final` is false for a preliminary picture.
    using UpdateHandler = std::function<void(const QImage &image, bool final, std::optional<ThumbnailError> error)>;

    // The generator renders through `thumbnailer` (the shared one unless a test passes its own).
    explicit ThumbnailGenerator(SystemThumbnailer *thumbnailer = nullptr, QObject *parent = nullptr);
    ~ThumbnailGenerator() override;

    static ThumbnailGenerator &shared();

    void add(const RequestPtr &request);
    void remove(const RequestPtr &request);
    void finished(const RequestPtr &request);

    // Six: enough to keep both decoders and disks busy while a scroll changes what is urgent.
    static constexpr int defaultConcurrentRequestsCount = 6;
    int concurrentRequestsCount() const { return m_concurrentRequestsCount; }
    void setConcurrentRequestsCount(int count);

    // Runs the preview reads on a pool of idle-class threads and asks the same of the thumbnailer
    // (see setBackgroundPriority in Dispatch.h); the shared generator does, the command line's
    // does not: it has no GUI thread to give way to, and idle threads would crawl beside any busy
    // program. Before the first request.
    void setBackgroundPriority();
    // The pool that reads embedded previews.
    QThreadPool *utilityQueue() const { return m_utilityQueue; }

    // A view started (true) or stopped (false) scrolling; views report both, so that the decoders
    // are held back while any of them scrolls (GUI thread).
    void viewScrollingChanged(bool scrolling);
    bool isViewScrolling() const { return m_scrollingViews > 0; }

    // The largest backing scale among the screens (1 without screens), unless set explicitly.
    double screenScale() const;
    void setScreenScale(double scale);

    // Waiting and running requests (GUI thread).
    const QList<RequestPtr> &requests() const { return m_requests; }
    int activeRequestCount() const { return int(m_activeRequests.size()); }

private:
    void schedule();
    void start(const RequestPtr &request);
    // On the utility queue: the embedded preview, then the thumbnailer if it does not cover
    // `needed` pixels. Holds the request weakly and gives up silently when it is gone.
    static void runImagePath(QPointer<ThumbnailGenerator> generator, const std::weak_ptr<Request> &weakRequest,
                             int needed, const std::shared_ptr<ThumbnailThrottle> &throttle);
    void startSystemThumbnail(const RequestPtr &request);

    QList<RequestPtr> m_requests;
    QSet<Request *> m_activeRequests;
    QList<RequestPtr> m_activeOwners; // keeps running requests alive until they finish
    int m_concurrentRequestsCount = defaultConcurrentRequestsCount;
    int m_scrollingViews = 0;
    QThreadPool *m_utilityQueue;
    std::optional<double> m_screenScale;
    SystemThumbnailer *m_thumbnailer;
};

// One wish for a thumbnail of `file` at `size` points. The priority is written on the GUI
// thread; workers only ask whether it became `cancelled`.
class ThumbnailGenerator::Request
{
public:
    Request(PXFilePtr file, QSizeF size, Priority priority, UpdateHandler updateHandler);
    ~Request();

    const PXFilePtr &file() const { return m_file; }
    QSizeF size() const { return m_size; }
    Priority priority() const { return m_priority.load(); }
    void setPriority(Priority priority) { m_priority.store(priority); }
    bool isCancelled() const { return priority() == Priority::cancelled; }

    // Set before the request is added; called on the GUI thread.
    void setUpdateHandler(UpdateHandler handler) { m_updateHandler = std::move(handler); }

    // Cancels the request and any rendering of it that is under way.
    void cancel();

    // Off when the caller only needs the thumbnail to exist (the command line filling the
    // cache): the thumbnailer's final delivery then comes without an image (an error still
    // says that it failed).
    bool wantsImage() const { return m_wantsImage; }
    void setWantsImage(bool wants) { m_wantsImage = wants; }

    // How the latest delivery was made.
    ThumbnailSource source() const { return m_source.load(); }

private:
    friend class ThumbnailGenerator;

    void deliver(const QImage &image, bool final, const std::optional<ThumbnailError> &error, ThumbnailSource source);
    void setSystemRequest(std::shared_ptr<SystemThumbnailRequest> systemRequest);

    PXFilePtr m_file;
    QSizeF m_size;
    std::atomic<Priority> m_priority;
    UpdateHandler m_updateHandler;
    std::atomic<ThumbnailSource> m_source = ThumbnailSource::none;
    bool m_wantsImage = true;
    QMutex m_lock; // guards m_systemRequest
    std::shared_ptr<SystemThumbnailRequest> m_systemRequest;
    QPointer<ThumbnailGenerator> m_generator;
};
