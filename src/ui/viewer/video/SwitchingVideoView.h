#pragma once

#include "ui/viewer/video/VideoView.h"

#include <QList>

#include <optional>

class VideoControlsBar;

// The video view the viewer holds (made by makeVideoView): a player of the library that
// VideoPlayerChooser picks for each file, inside it, and the controls bar over it. When the
// player fails on a file, the chooser's next library gets the same file; only when none is left
// does the view show the failure. The owner sees one view throughout: its state, position and
// signals are those of the player at work, and volume, mute, speed and autoplay carry over.
class SwitchingVideoView final : public VideoView
{
    Q_OBJECT

public:
    // `source`: the library source to use; none reads `alwaysUseThirdPartyVideoPlayer` of the
    // shared settings at each load.
    explicit SwitchingVideoView(std::optional<VideoPlayerSource> source, QWidget *parent = nullptr);
    ~SwitchingVideoView() override;

    VideoPlayerSource playerSource() const override;
    VideoControlsBar *controlsBar() const override { return m_controls; }
    // The player at work (tests).
    VideoView *player() const { return m_player; }
    VideoPlayerChooser &chooser() { return m_chooser; }

protected:
    void openMedia(const QString &path) override;
    void closeMedia() override;
    void playMedia() override;
    void pauseMedia() override;
    void seekMedia(qint64 position) override;
    void applyAudio(int volume, bool muted) override;
    void applyRate(double rate) override;
    void stepMedia(int direction) override;
    void resizeEvent(QResizeEvent *event) override;

private:
    void start(VideoPlayerSource source);
    VideoView *playerFor(VideoPlayerSource source);
    void follow(VideoView *player);
    void playerFailed(VideoView *player, const QString &message);

    std::optional<VideoPlayerSource> m_fixedSource;
    VideoPlayerChooser m_chooser;
    VideoView *m_native = nullptr;
    VideoView *m_vlc = nullptr;
    VideoView *m_player = nullptr;
    VideoControlsBar *m_controls = nullptr;
    QString m_openPath;
    QList<VideoPlayerSource> m_tried;
};
