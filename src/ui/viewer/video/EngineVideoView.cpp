#include "ui/viewer/video/EngineVideoView.h"

#include "ui/viewer/video/VideoEngineLoader.h"

#include <QFile>

EngineVideoView::EngineVideoView(VideoPlayerSource source, QWidget *parent)
    : VideoView(parent)
    , m_source(source)
{ }

EngineVideoView::~EngineVideoView()
{
    // The engine goes first: once it is destroyed no handler runs, so nothing can be posted to
    // this object any more.
    stopEngine();
}

void EngineVideoView::stopEngine()
{
    m_engine.reset();
    m_open = false;
}

bool EngineVideoView::ensureEngine()
{
    if (m_engine)
        return true;
    if (!m_engineError.isEmpty())
        return false;
    m_engine = VideoEngineLoader::newEngine(m_source, &m_engineError);
    if (!m_engine) {
        if (m_engineError.isEmpty())
            m_engineError = tr("the video player cannot start.");
        return false;
    }
    VideoEngine::Handlers handlers;
    const std::shared_ptr<std::atomic<quint64>> current = m_generation;
    // Runs on any thread: tags the event with the load it belongs to and queues it for the GUI
    // thread. Posting to `this` is safe here: the engine, and with it every handler, is gone
    // before this object starts dying.
    handlers.event = [this, current](const VideoEngine::Event &event) {
        const quint64 generation = current->load();
        QMetaObject::invokeMethod(
            this, [this, event, generation] { handleEvent(event, generation); }, Qt::QueuedConnection);
    };
    handlers.frame = [this, current](const QImage &frame) { takeFrame(frame, current->load()); };
    m_engine->setHandlers(std::move(handlers));
    prepareEngine(*m_engine);
    return true;
}

void EngineVideoView::openMedia(const QString &path)
{
    if (!ensureEngine()) {
        reportFailure(m_engineError);
        return;
    }
    ++*m_generation;
    m_open = true;
    m_engine->open(QFile::encodeName(path));
}

void EngineVideoView::closeMedia()
{
    if (!m_open)
        return;
    m_open = false;
    if (m_engine)
        m_engine->close();
    // Whatever the closed file reported meanwhile is now stale.
    ++*m_generation;
}

void EngineVideoView::playMedia()
{
    if (m_engine && m_open)
        m_engine->play();
}

void EngineVideoView::pauseMedia()
{
    if (m_engine && m_open)
        m_engine->pause();
}

void EngineVideoView::seekMedia(qint64 position)
{
    if (m_engine && m_open)
        m_engine->seek(position);
}

void EngineVideoView::applyAudio(int volume, bool muted)
{
    if (!ensureEngine())
        return;
    m_engine->setVolume(volume);
    m_engine->setMuted(muted);
}

void EngineVideoView::applyRate(double rate)
{
    if (ensureEngine())
        m_engine->setRate(rate);
}

void EngineVideoView::stepMedia(int direction)
{
    if (!m_engine || !m_open)
        return;
    if (direction > 0 && m_engine->stepForward())
        return;
    VideoView::stepMedia(direction);
}

void EngineVideoView::handleEvent(const VideoEngine::Event &event, quint64 generation)
{
    if (!m_open || generation != m_generation->load())
        return;
    switch (event.type) {
    case VideoEngine::EventType::opened: reportOpened(event.time, event.rate); break;
    case VideoEngine::EventType::durationChanged: reportDuration(event.time); break;
    case VideoEngine::EventType::positionChanged:
        // A player that rewinds as it stops at the end does not move the position of a finished
        // video; a seek from there moves it.
        if (videoState() != VideoState::finished)
            reportPosition(event.time);
        break;
    case VideoEngine::EventType::playing: reportPlaying(); break;
    case VideoEngine::EventType::paused: reportPaused(); break;
    case VideoEngine::EventType::finished: reportFinished(); break;
    case VideoEngine::EventType::firstFrame: reportFirstFrame(); break;
    case VideoEngine::EventType::failed: reportFailure(event.text); break;
    }
}
