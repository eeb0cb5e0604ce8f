#pragma once

#include "core/thumbnails/ThumbnailCache.h"
#include "core/thumbnails/ThumbnailError.h"
#include "core/thumbnails/ThumbnailThrottle.h"

#include <QByteArray>
#include <QImage>
#include <QSizeF>
#include <QThreadPool>

#include <atomic>
#include <functional>
#include <memory>
#include <optional>

// One rendering asked of the system thumbnailer: a file, the size in points and the screen
// scale. Cancelling stops work that has not started and drops the result of work that has.
class SystemThumbnailRequest
{
public:
    SystemThumbnailRequest(QByteArray nativePath, QSizeF size, double scale);

    const QByteArray &nativePath() const { return m_nativePath; }
    QSizeF size() const { return m_size; }
    double scale() const { return m_scale; }
    // The longest edge wanted, in pixels.
    int pixelSize() const;

    void cancel() { m_cancelled.store(true); }
    bool isCancelled() const { return m_cancelled.load(); }

    // Off for callers that only need the thumbnail to exist (filling the cache): a valid cache
    // entry is then checked but not decoded, a rendered one is cached but not scaled, and a
    // result without an error carries no image.
    bool wantsImage() const { return m_wantsImage; }
    void setWantsImage(bool wants) { m_wantsImage = wants; }

private:
    QByteArray m_nativePath;
    QSizeF m_size;
    double m_scale;
    bool m_wantsImage = true;
    std::atomic<bool> m_cancelled = false;
};

struct SystemThumbnailResult
{
    QImage image; // null on failure, and whenever no image was wanted
    std::optional<ThumbnailError> error;
    ThumbnailSource source = ThumbnailSource::failed;
};

// Thumbnails of any file, shared with the desktop's file manager through the freedesktop
// thumbnail cache. A request is answered from the cache when an entry of a size that covers it
// matches the file's modification time; otherwise it is rendered (images in process, videos by a
// frame grab, other types by the installed .thumbnailer programs), scaled to fit the request and
// written to the cache at the size that covers it. Failures are remembered under fail/pixcove/
// so that a file that cannot be rendered is not tried again until it changes.
//
// Requests run on the thumbnailer's own pool, six at a time, each holding a slot of `throttle`
// while it works; the handler is called once per request on a pool thread, with an error when the
// request was cancelled.
class SystemThumbnailer
{
public:
    using Handler = std::function<void(const SystemThumbnailResult &result)>;

    explicit SystemThumbnailer(ThumbnailCache cache = ThumbnailCache());
    virtual ~SystemThumbnailer();
    SystemThumbnailer(const SystemThumbnailer &) = delete;
    SystemThumbnailer &operator=(const SystemThumbnailer &) = delete;

    static SystemThumbnailer &shared();

    // Starts `request` on the pool.
    virtual void generate(const std::shared_ptr<SystemThumbnailRequest> &request, Handler handler);
    // The same work done on the calling thread.
    SystemThumbnailResult thumbnail(const SystemThumbnailRequest &request) const;

    const ThumbnailCache &cache() const { return m_cache; }
    // Off: neither reads nor writes the cache (renders every time).
    void setCacheEnabled(bool enabled) { m_cacheEnabled = enabled; }
    bool cacheEnabled() const { return m_cacheEnabled; }

    // Six renders at once by default: as many as the generator runs.
    static constexpr int defaultThreadCount = 6;
    void setMaxThreadCount(int count);
    // Its pool's threads in the idle scheduling class (the windows' thumbnailer; see
    // setBackgroundPriority in Dispatch.h). Before the first request.
    void setBackgroundPriority();
    // How many decode at once; shared with the generator's preview reads, which may outlive the
    // thumbnailer.
    const std::shared_ptr<ThumbnailThrottle> &throttle() const { return m_throttle; }
    // Waits until every started request has called its handler (tests, the command line).
    void waitForDone() { m_pool.waitForDone(); }

private:
    SystemThumbnailResult render(const SystemThumbnailRequest &request, int renderPixels) const;

    ThumbnailCache m_cache;
    std::atomic<bool> m_cacheEnabled = true;
    std::shared_ptr<ThumbnailThrottle> m_throttle = std::make_shared<ThumbnailThrottle>(defaultThreadCount);
    QThreadPool m_pool;
};
