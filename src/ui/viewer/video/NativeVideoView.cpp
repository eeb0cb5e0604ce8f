#include "ui/viewer/video/NativeVideoView.h"

#include <QMutexLocker>
#include <QPainter>
#include <QRegion>

namespace {

QImage scaledToFit(const QImage &frame, QSize target)
{
    if (frame.isNull() || target.isEmpty())
        return frame;
    const QSize fitted = frame.size().scaled(target, Qt::KeepAspectRatio);
    if (fitted == frame.size())
        return frame;
    return frame.scaled(fitted, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
}

} // namespace

NativeVideoView::NativeVideoView(QWidget *parent)
    : EngineVideoView(VideoPlayerSource::native, parent)
{
    m_slot->target = targetSize();
}

NativeVideoView::~NativeVideoView()
{
    // The engine's thread hands pictures to this object's members: stop it while they exist.
    stopEngine();
}

void NativeVideoView::prepareEngine(VideoEngine &engine)
{
    engine.setFrameSize(targetSize());
}

void NativeVideoView::openMedia(const QString &path)
{
    m_shown = {};
    EngineVideoView::openMedia(path);
    QMutexLocker locker(&m_slot->mutex);
    m_slot->latest = {};
    m_slot->lastOriginal = {};
    m_slot->generation = generation();
}

void NativeVideoView::closeMedia()
{
    EngineVideoView::closeMedia();
    m_shown = {};
    {
        QMutexLocker locker(&m_slot->mutex);
        m_slot->latest = {};
        m_slot->lastOriginal = {};
        m_slot->generation = generation();
    }
    update();
}

void NativeVideoView::takeFrame(const QImage &frame, quint64 generation)
{
    // The engine's thread: scale here, not on the GUI thread.
    QSize target;
    {
        QMutexLocker locker(&m_slot->mutex);
        if (generation != m_slot->generation)
            return;
        target = m_slot->target;
    }
    QImage scaled = scaledToFit(frame, target);
    QMutexLocker locker(&m_slot->mutex);
    if (generation != m_slot->generation)
        return;
    m_slot->latest = std::move(scaled);
    m_slot->lastOriginal = frame;
    if (m_slot->updateQueued)
        return;
    m_slot->updateQueued = true;
    // Safe to post to `this`: the engine, whose thread calls here, is destroyed before this
    // object starts dying.
    QMetaObject::invokeMethod(this, &NativeVideoView::showLatestFrame, Qt::QueuedConnection);
}

void NativeVideoView::showLatestFrame()
{
    QImage latest;
    {
        QMutexLocker locker(&m_slot->mutex);
        m_slot->updateQueued = false;
        if (m_slot->generation != generation())
            return;
        latest = std::move(m_slot->latest);
        m_slot->latest = {};
    }
    if (latest.isNull())
        return;
    m_shown = std::move(latest);
    if (isVisible())
        repaint(); // reports the first frame once it is painted
    else
        reportFirstFrame();
}

QSize NativeVideoView::targetSize() const
{
    return size() * devicePixelRatioF();
}

void NativeVideoView::resizeEvent(QResizeEvent *event)
{
    EngineVideoView::resizeEvent(event);
    QImage original;
    {
        QMutexLocker locker(&m_slot->mutex);
        m_slot->target = targetSize();
        original = m_slot->lastOriginal;
    }
    if (engine())
        engine()->setFrameSize(targetSize());
    // A paused picture is rescaled at once; a playing one gets the new size with its next frame.
    if (!original.isNull() && videoState() != VideoState::playing)
        m_shown = scaledToFit(original, targetSize());
}

void NativeVideoView::paintEvent(QPaintEvent *event)
{
    if (m_shown.isNull() || !errorMessage().isEmpty()) {
        VideoView::paintEvent(event);
        return;
    }
    QPainter painter(this);
    const qreal ratio = devicePixelRatioF();
    const QSizeF shown = QSizeF(m_shown.size()) / ratio;
    const QRectF target(QPointF((width() - shown.width()) / 2, (height() - shown.height()) / 2), shown);
    // Black bars around the picture only, so that the picture itself is drawn once.
    QRegion bars(rect());
    bars -= target.toAlignedRect();
    for (const QRect &bar : bars)
        painter.fillRect(bar, Qt::black);
    painter.drawImage(target, m_shown);
    painter.end();
    reportFirstFrame();
}
