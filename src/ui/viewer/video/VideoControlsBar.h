#pragma once

#include "core/viewer/VideoState.h"

#include <QPointer>
#include <QWidget>

class QLabel;
class QMenu;
class QSlider;
class QTimer;
class QToolButton;
class VideoView;

// The controls over a video: play/pause, frame back and forward, jump back and forward 15 s, the
// seek bar with the time, speed, mute and volume. It lies along the bottom of its video view and
// hides itself while the video plays and the pointer rests (autohide), showing again on any
// pointer movement over the view, on keyboard focus and on every command. While the video is
// paused, finished or cannot play, and while the pointer is over the bar, it stays.
//
// Every control has an accessible name and is reached with Tab; the seek bar and the volume take
// the arrow keys. The public slots are the "VID-…" commands, so that hotkeys act as the buttons
// do and show the bar for a moment.
class VideoControlsBar : public QWidget
{
    Q_OBJECT

public:
    // Follows and drives `view`; placed over it (a child of `view`) by the view.
    explicit VideoControlsBar(VideoView *view, QWidget *parent = nullptr);

    // Whether the bar hides itself while the video plays (on by default).
    bool autohide() const { return m_autohide; }
    void setAutohide(bool autohide);
    // Shows the bar now; with autohide, it hides again after `autohideDelayMs` of rest while
    // playing.
    void reveal();
    static constexpr int autohideDelayMs = 2000; // long enough to reach the bar with the pointer
    // Another delay (tests).
    void setAutohideDelay(int milliseconds);

    // Lays the bar along the bottom of `area` (the view's rectangle).
    void placeIn(const QRect &area);

    // The shown time, "0:12 / 1:05:30" (tests).
    QString timeText() const;

public Q_SLOTS:
    // "VID-PlayPause" … "VID-VolumeUp".
    void playPause();
    void fastBackward();
    void fastForward();
    void slow();
    void jumpBackward15();
    void jumpForward15();
    void nextFrame();
    void prevFrame();
    void mute();
    void volumeDown();
    void volumeUp();

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;
    void enterEvent(QEnterEvent *event) override;
    void leaveEvent(QEvent *event) override;
    void paintEvent(QPaintEvent *event) override;

private:
    void buildControls();
    void followView();
    void updateState(VideoState state);
    void updatePosition();
    void updateAudio();
    void updateRate();
    void updateEnabled();
    void scheduleHide();
    void hideIfResting();
    bool mayHide() const;

    QPointer<VideoView> m_view;
    QToolButton *m_playPause = nullptr;
    QToolButton *m_previousFrame = nullptr;
    QToolButton *m_nextFrame = nullptr;
    QToolButton *m_jumpBackward = nullptr;
    QToolButton *m_jumpForward = nullptr;
    QSlider *m_seek = nullptr;
    QLabel *m_time = nullptr;
    QToolButton *m_rate = nullptr;
    QToolButton *m_mute = nullptr;
    QSlider *m_volume = nullptr;
    QTimer *m_hideTimer = nullptr;
    // Coalesces the seeks of a dragged seek bar.
    QTimer *m_seekTimer = nullptr;
    bool m_autohide = true;
    bool m_pointerInside = false;
    // Set while the view's own position or duration moves the seek bar, which then asks for no
    // seek.
    bool m_followingView = false;
};
