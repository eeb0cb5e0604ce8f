#pragma once

#include <QByteArray>
#include <QImage>
#include <QSize>
#include <QString>

#include <functional>
#include <memory>
#include <utility>

// A player library behind a plain interface: Qt Multimedia and libvlc each live in a module of
// their own (pixcove_qtmedia.so, pixcove_vlc.so) that implements it, so that neither the program's
// start nor a folder without videos pays for loading them. Nothing here names a library type.
//
// An engine plays one file at a time. Its calls return at once; what happens is reported through
// the handlers, on any thread (the library's own, or the GUI thread); a handler must not call back
// into the engine. Once the engine is destroyed, no handler runs any more.
class VideoEngine
{
public:
    enum class EventType {
        opened, // the file can play: `time` is its duration (0 unknown), `rate` its frame rate
        durationChanged, // `time`
        positionChanged, // `time`
        playing,
        paused,
        finished,
        firstFrame, // engines that draw into a window: the first picture of the file is there
        failed, // `text` says why
    };
    struct Event
    {
        Event(EventType type, qint64 time = 0, double rate = 0, QString text = {})
            : type(type)
            , time(time)
            , rate(rate)
            , text(std::move(text))
        { }

        EventType type;
        qint64 time; // milliseconds
        double rate;
        QString text;
    };
    struct Handlers
    {
        std::function<void(const Event &)> event;
        // Engines that hand their pictures over rather than drawing into a window.
        std::function<void(const QImage &)> frame;
    };

    virtual ~VideoEngine() = default;

    // Before open(); the handlers stay for the engine's life.
    virtual void setHandlers(Handlers handlers) = 0;
    // Engines that draw themselves: the native window (an X11 window id) to draw into.
    virtual void setWindow(quint64 windowId) = 0;
    // Whether pictures come through the frame handler (else into the window).
    virtual bool deliversFrames() const = 0;
    // Engines that hand pictures over: the size (device pixels) they are shown at, so that they
    // come scaled to fit it. Any time; empty for their own size.
    virtual void setFrameSize(QSize fitSize) { Q_UNUSED(fitSize); }

    virtual void open(const QByteArray &nativePath) = 0;
    virtual void close() = 0;
    virtual void play() = 0;
    virtual void pause() = 0;
    virtual void seek(qint64 position) = 0;
    virtual void setVolume(int percent) = 0;
    virtual void setMuted(bool muted) = 0;
    virtual void setRate(double rate) = 0;
    // One frame forward while paused; false when the library cannot (the caller seeks instead).
    virtual bool stepForward() = 0;
};

// The entry point each engine module exports under the name "pixcove_new_video_engine": a new
// engine, or null with the reason in `error` (the library cannot start).
extern "C" {
using PixcoveNewVideoEngine = VideoEngine *(*)(QString *error);
// A module may also export `pixcove_warm_video_engine`, which loads ahead, on any thread, the
// libraries its first engine would load on the GUI thread.
using PixcoveWarmVideoEngine = void (*)();
}
