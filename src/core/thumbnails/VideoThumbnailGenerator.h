#pragma once

#include "core/thumbnails/ThumbnailError.h"

#include <QByteArray>
#include <QImage>
#include <QList>
#include <QObject>
#include <QSize>

#include <atomic>
#include <functional>
#include <memory>
#include <optional>

// Still frames of videos for the viewer and the slideshow: the frames at chosen times, grabbed
// on a pool and handed back on the GUI thread. A cancelled request delivers nothing.
class VideoThumbnailGenerator : public QObject
{
    Q_OBJECT

public:
    class Request
    {
    public:
        void cancel() { m_cancelled.store(true); }
        bool isCancelled() const { return m_cancelled.load(); }

    private:
        friend class VideoThumbnailGenerator;
        std::atomic<bool> m_cancelled = false;
    };
    using RequestPtr = std::shared_ptr<Request>;
    // One image per asked time (null where no frame could be had); an error when none could.
    using Handler = std::function<void(const QList<QImage> &frames, std::optional<ThumbnailError> error)>;

    explicit VideoThumbnailGenerator(QObject *parent = nullptr);
    static VideoThumbnailGenerator &shared();

    RequestPtr generate(const QByteArray &nativePath, const QList<double> &seconds, QSize maxSize, Handler handler);
};
