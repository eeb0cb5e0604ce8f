#include "ui/viewer/video/SwitchingVideoView.h"

#include "ui/viewer/video/NativeVideoView.h"
#include "ui/viewer/video/VideoControlsBar.h"
#include "ui/viewer/video/VideoEngineLoader.h"
#include "ui/viewer/video/VlcVideoView.h"

#include "core/settings/AppSettings.h"
#include "core/settings/SettingsManager.h"

#include <QResizeEvent>

SwitchingVideoView::SwitchingVideoView(std::optional<VideoPlayerSource> source, QWidget *parent)
    : VideoView(parent)
    , m_fixedSource(source)
    , m_chooser(source.value_or(VideoPlayerSource::automatic),
                [] { return VideoEngineLoader::isAvailable(VideoPlayerSource::vlc); })
{
    setMouseTracking(true);
    m_controls = new VideoControlsBar(this, this);
}

SwitchingVideoView::~SwitchingVideoView()
{
    // The controls first (they watch this view's events), then the players, which say nothing
    // more on the way.
    delete m_controls;
    m_controls = nullptr;
    for (VideoView *player : {m_native, m_vlc}) {
        if (player) {
            player->disconnect(this);
            delete player;
        }
    }
}

VideoPlayerSource SwitchingVideoView::playerSource() const
{
    return m_player ? m_player->playerSource() : VideoPlayerSource::native;
}

void SwitchingVideoView::openMedia(const QString &path)
{
    const VideoPlayerSource source = m_fixedSource.value_or(
        VideoPlayerChooser::sourceFromSettings(SettingsManager::shared().settings()->alwaysUseThirdPartyVideoPlayer()));
    if (source != m_chooser.source()) {
        m_chooser.setSource(source);
        m_chooser.forgetFailures();
    }
    m_openPath = path;
    m_tried.clear();
    start(m_chooser.firstChoice(path));
}

void SwitchingVideoView::start(VideoPlayerSource source)
{
    m_tried.append(source);
    VideoView *player = playerFor(source);
    if (m_player && m_player != player) {
        m_player->unload();
        m_player->hide();
    }
    m_player = player;
    player->setGeometry(rect());
    player->show();
    m_controls->raise();
    player->setVolume(volume());
    player->setMuted(isMuted());
    player->setPlaybackRate(playbackRate());
    // This view decides when to play, as the file becomes ready.
    player->setAutoplay(false);
    player->loadPath(m_openPath);
}

VideoView *SwitchingVideoView::playerFor(VideoPlayerSource source)
{
    VideoView *&player = source == VideoPlayerSource::vlc ? m_vlc : m_native;
    if (!player) {
        if (source == VideoPlayerSource::vlc) {
            player = new VlcVideoView(this);
            // The bar must be a window of its own to lie over libvlc's window.
            m_controls->setAttribute(Qt::WA_NativeWindow);
        } else {
            player = new NativeVideoView(this);
        }
        player->setLogsFailures(false);
        player->setMouseTracking(true);
        player->setFocusPolicy(Qt::NoFocus);
        follow(player);
    }
    return player;
}

void SwitchingVideoView::follow(VideoView *player)
{
    // Only the player at work speaks for this view.
    const auto current = [this, player] { return player == m_player && !m_openPath.isEmpty(); };
    connect(player, &VideoView::canPlayChanged, this, [this, player, current](bool canPlay) {
        if (current() && canPlay)
            reportOpened(player->duration(), player->frameRate());
    });
    connect(player, &VideoView::durationChanged, this, [this, current](qint64 duration) {
        if (current())
            reportDuration(duration);
    });
    connect(player, &VideoView::positionChanged, this, [this, current](qint64 position) {
        if (current())
            reportPosition(position);
    });
    connect(player, &VideoView::videoStateChanged, this, [this, current](VideoState state) {
        if (!current())
            return;
        switch (state) {
        case VideoState::playing: reportPlaying(); break;
        case VideoState::paused: reportPaused(); break;
        case VideoState::finished: reportFinished(); break;
        case VideoState::noVideo: break;
        }
    });
    connect(player, &VideoView::firstFrameShown, this, [this, current] {
        if (current())
            reportFirstFrame();
    });
    connect(player, &VideoView::failed, this, [this, player, current](const QString &message) {
        if (current())
            playerFailed(player, message);
    });
}

void SwitchingVideoView::playerFailed(VideoView *player, const QString &message)
{
    if (const auto next = m_chooser.nextChoice(m_openPath, player->playerSource(), m_tried)) {
        start(*next);
        return;
    }
    player->hide();
    showFailureMessage(message);
}

void SwitchingVideoView::closeMedia()
{
    m_openPath.clear();
    if (m_player)
        m_player->unload();
}

void SwitchingVideoView::playMedia()
{
    if (m_player)
        m_player->play();
}

void SwitchingVideoView::pauseMedia()
{
    if (m_player)
        m_player->pause();
}

void SwitchingVideoView::seekMedia(qint64 position)
{
    if (m_player)
        m_player->seek(position);
}

void SwitchingVideoView::applyAudio(int volume, bool muted)
{
    if (m_player) {
        m_player->setVolume(volume);
        m_player->setMuted(muted);
    }
}

void SwitchingVideoView::applyRate(double rate)
{
    if (m_player)
        m_player->setPlaybackRate(rate);
}

void SwitchingVideoView::stepMedia(int direction)
{
    if (!m_player)
        return;
    if (direction > 0)
        m_player->nextFrame();
    else
        m_player->previousFrame();
}

void SwitchingVideoView::resizeEvent(QResizeEvent *event)
{
    VideoView::resizeEvent(event);
    if (m_player)
        m_player->setGeometry(rect());
    m_controls->placeIn(rect());
}

std::unique_ptr<VideoView> makeVideoView(QWidget *parent)
{
    return std::make_unique<SwitchingVideoView>(std::nullopt, parent);
}

std::unique_ptr<VideoView> makeVideoView(VideoPlayerSource source, QWidget *parent)
{
    return std::make_unique<SwitchingVideoView>(source, parent);
}

void preloadVideoPlayer()
{
    VideoEngineLoader::preload(
        VideoPlayerChooser::sourceFromSettings(SettingsManager::shared().settings()->alwaysUseThirdPartyVideoPlayer()));
}
