#pragma once

#include "ui/viewer/video/VideoEngine.h"
#include "ui/viewer/video/VideoView.h"

#include <atomic>
#include <memory>

// A video view played by one library's engine (VideoEngine): makes the engine on the first load,
// passes the view's commands on and turns what the engine reports, on whatever thread, into the
// view's reports on the GUI thread. Reports of a file that is no longer loaded are dropped.
// Subclasses say how the pictures reach the screen.
class EngineVideoView : public VideoView
{
    Q_OBJECT

public:
    ~EngineVideoView() override;

    VideoPlayerSource playerSource() const override { return m_source; }

protected:
    EngineVideoView(VideoPlayerSource source, QWidget *parent);

    void openMedia(const QString &path) override;
    void closeMedia() override;
    void playMedia() override;
    void pauseMedia() override;
    void seekMedia(qint64 position) override;
    void applyAudio(int volume, bool muted) override;
    void applyRate(double rate) override;
    void stepMedia(int direction) override;

    // Called once the engine is made, before it opens anything (a window to draw into).
    virtual void prepareEngine(VideoEngine &engine) { Q_UNUSED(engine); }
    // Called with each new picture of engines that hand them over, on the engine's thread: the
    // subclass keeps the latest. `generation` tells which load it belongs to.
    virtual void takeFrame(const QImage &frame, quint64 generation)
    {
        Q_UNUSED(frame);
        Q_UNUSED(generation);
    }
    // Destroys the engine: no handler runs afterwards. A subclass whose handlers use its own
    // members calls it first thing in its destructor.
    void stopEngine();
    // The engine of the current load; null before the first load or when it could not be made.
    VideoEngine *engine() const { return m_engine.get(); }
    // Which load reports belong to; bumped at every open and close.
    quint64 generation() const { return m_generation->load(); }

private:
    bool ensureEngine();
    void handleEvent(const VideoEngine::Event &event, quint64 generation);

    VideoPlayerSource m_source;
    std::unique_ptr<VideoEngine> m_engine;
    QString m_engineError;
    bool m_open = false;
    // Shared with the engine's handlers, which may run on other threads.
    std::shared_ptr<std::atomic<quint64>> m_generation = std::make_shared<std::atomic<quint64>>(0);
};
