#pragma once

#include "core/model/PXFileForward.h"
#include "core/viewer/VideoPlayerChooser.h"
#include "core/viewer/VideoState.h"

#include <QString>
#include <QWidget>

#include <memory>

class PXFile;
class VideoControlsBar;

// One video shown in place, the video child of the media viewer. A view plays one file at a time:
// load() opens it and shows its first frame (playing at once when autoplay is on); the controls
// bar and the "VID-…" commands drive it through the slots below.
//
// Phases of a load: `canPlayChanged(false)` and `videoState()` noVideo while the file opens; then
// either `canPlayChanged(true)` with the duration and the first frame on screen
// (`firstFrameShown`), state paused or playing; or `failed("This video cannot be played: …")`,
// and the view shows that message in place of the picture (it stays noVideo). Playing to the end
// gives finished; play() from there starts again at the beginning.
//
// Every setting (volume, mute, speed, autoplay) is kept by the view across loads and applied to
// the next file. Commands given while nothing can play are ignored, never queued. Opening and
// decoding run on the player library's own threads; no call here blocks the GUI thread.
//
// `makeVideoView()` below is the one way the viewer makes a video view: it picks the library by
// the settings and falls back from one library to the other as VideoPlayerChooser says.
// NativeVideoView (Qt Multimedia) and VlcVideoView (libvlc, loaded on first use) are the two
// players; each library lives in a module of its own that is loaded on the first video.
class VideoView : public QWidget
{
    Q_OBJECT

public:
    ~VideoView() override;

    // Whether a video view shows `file` at all: a video by its type. Whether the file really
    // plays is only known after load() (failed() tells).
    static bool accepts(const PXFile &file);

    // The library that plays the current file: `native` or `vlc` (the one tried last when none
    // could play it).
    virtual VideoPlayerSource playerSource() const = 0;
    // The controls shown over the video, or null for a bare player.
    virtual VideoControlsBar *controlsBar() const { return nullptr; }

    // Opens `file` and shows its first frame; null unloads (state noVideo, black view).
    void load(const PXFilePtr &file);
    // The same for a path (tests, benchmarks, files outside the model).
    void loadPath(const QString &path);
    // Stops and forgets the file.
    void unload() { loadPath({}); }
    const QString &path() const { return m_path; }
    const PXFilePtr &file() const { return m_file; }

    VideoState videoState() const { return m_state; }
    bool canPlay() const { return m_canPlay; }
    // The message shown in place after a failure ("This video cannot be played: …"); empty
    // otherwise.
    const QString &errorMessage() const { return m_errorMessage; }

    // Milliseconds; the duration is 0 while unknown.
    qint64 position() const { return m_position; }
    qint64 duration() const { return m_duration; }
    // Frames per second of the video stream; 0 while unknown (frame steps then assume 30).
    double frameRate() const { return m_frameRate; }

    // 0 ... 100, kept across files.
    int volume() const { return m_volume; }
    bool isMuted() const { return m_muted; }
    // 1.0 is normal speed; between 0.25 and 8 (neither library plays backwards).
    double playbackRate() const { return m_rate; }
    // Whether the next loads start playing as soon as they can.
    bool autoplay() const { return m_autoplay; }
    void setAutoplay(bool autoplay) { m_autoplay = autoplay; }
    // Whether failures are written to the log (off for a player inside another view, which
    // may still play the file with the other library and logs what it finally shows).
    void setLogsFailures(bool logs) { m_logsFailures = logs; }

    // The speeds that faster() and slower() step through.
    static constexpr double rateSteps[] = {0.25, 0.5, 1.0, 2.0, 4.0, 8.0};
    // Seconds that jumpBackward15()/jumpForward15() and fastBackward() move.
    static constexpr int jumpSeconds = 15;
    static constexpr int fastBackwardSeconds = 5;

public Q_SLOTS:
    void play();
    void pause();
    void togglePlayPause();
    // Milliseconds, clamped to the video; a frame is shown there even while paused.
    void seek(qint64 position);
    // Relative seek, in milliseconds.
    void skip(qint64 delta);
    void jumpBackward15() { skip(-jumpSeconds * 1000); }
    void jumpForward15() { skip(jumpSeconds * 1000); }
    // One frame forward or back; pauses first.
    void nextFrame();
    void previousFrame();
    // "VID-FastForward": one speed step faster, playing. "VID-Slow": one step slower, playing.
    // "VID-FastBackward": back by fastBackwardSeconds at normal speed (no library plays
    // backwards).
    void faster();
    void slower();
    void fastBackward();
    void setPlaybackRate(double rate);
    void setVolume(int volume);
    void volumeUp() { setVolume(m_volume + 10); }
    void volumeDown() { setVolume(m_volume - 10); }
    void setMuted(bool muted);
    void toggleMuted() { setMuted(!m_muted); }

Q_SIGNALS:
    void videoStateChanged(VideoState state);
    void canPlayChanged(bool canPlay);
    // The first frame of a newly loaded file is on screen.
    void firstFrameShown();
    // `message` is the whole text shown in place: "This video cannot be played: …".
    void failed(const QString &message);
    void positionChanged(qint64 position);
    void durationChanged(qint64 duration);
    void volumeChanged(int volume);
    void mutedChanged(bool muted);
    void playbackRateChanged(double rate);

protected:
    explicit VideoView(QWidget *parent = nullptr);

    // What a player does; called only with a file open (after openMedia) unless said otherwise.
    // Opens `path` (never empty), asynchronously: the player answers with the report functions.
    virtual void openMedia(const QString &path) = 0;
    // Stops and closes the file; no report may arrive for it afterwards. Also called with
    // nothing open.
    virtual void closeMedia() = 0;
    virtual void playMedia() = 0;
    virtual void pauseMedia() = 0;
    virtual void seekMedia(qint64 position) = 0;
    virtual void applyAudio(int volume, bool muted) = 0;
    virtual void applyRate(double rate) = 0;
    // One frame forward (+1) or back (-1), paused. The default seeks by one frame's duration.
    virtual void stepMedia(int direction);

    // What the player reports, on the GUI thread.
    // The file is open and can play: its duration (ms, 0 unknown) and frame rate (0 unknown).
    void reportOpened(qint64 duration, double frameRate);
    void reportDuration(qint64 duration);
    void reportPosition(qint64 position);
    void reportPlaying();
    void reportPaused();
    void reportFinished();
    void reportFirstFrame();
    // The file cannot be played; `reason` completes "This video cannot be played: …".
    void reportFailure(const QString &reason);

    // Shows a failure message already made (a view that forwards another view's failure).
    void showFailureMessage(const QString &message);

    // The message, if any, painted on black; a subclass that paints frames calls it after them.
    void paintEvent(QPaintEvent *event) override;

    // The whole text for a reason: "This video cannot be played: reason".
    static QString failureMessage(const QString &reason);

private:
    void setState(VideoState state);
    void setCanPlay(bool canPlay);

    PXFilePtr m_file;
    QString m_path;
    VideoState m_state = VideoState::noVideo;
    bool m_canPlay = false;
    bool m_firstFrameShown = false;
    // Set by play() before the file is ready: it plays as soon as it can.
    bool m_playWhenReady = false;
    QString m_errorMessage;
    qint64 m_position = 0;
    qint64 m_duration = 0;
    double m_frameRate = 0;
    int m_volume = 100;
    bool m_muted = false;
    double m_rate = 1.0;
    bool m_autoplay = false;
    bool m_logsFailures = true;
};

// The video view the viewer uses: the library chosen by the settings (`alwaysUseThirdPartyVideoPlayer`
// of the shared settings, read at each load), falling back to the other library for a file the
// first cannot play, with a VideoControlsBar over the video. `source` overrides the settings.
std::unique_ptr<VideoView> makeVideoView(QWidget *parent = nullptr);
std::unique_ptr<VideoView> makeVideoView(VideoPlayerSource source, QWidget *parent = nullptr);

// Loads the module of the player the settings choose on a worker thread, once per run, so that
// the first video shown does not wait for it.
void preloadVideoPlayer();
