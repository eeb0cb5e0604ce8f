#include "ui/viewer/video/VideoView.h"

#include "core/app/Log.h"
#include "core/model/PXFile.h"

#include <QFileInfo>
#include <QPainter>

#include <algorithm>
#include <cmath>
#include <iterator>
#include <utility>

namespace {

// Frame steps and jumps in a video whose frame rate is not known yet.
constexpr double fallbackFrameRate = 30.0;

} // namespace

VideoView::VideoView(QWidget *parent)
    : QWidget(parent)
{
    setAttribute(Qt::WA_OpaquePaintEvent);
    setAutoFillBackground(false);
    setFocusPolicy(Qt::StrongFocus);
    setMinimumSize(64, 48);
}

VideoView::~VideoView() = default;

bool VideoView::accepts(const PXFile &file)
{
    return file.isVideo();
}

void VideoView::load(const PXFilePtr &file)
{
    loadPath(file ? file->path() : QString());
    m_file = file;
}

void VideoView::loadPath(const QString &path)
{
    closeMedia();
    m_file.reset();
    m_path = path;
    m_playWhenReady = m_autoplay;
    m_firstFrameShown = false;
    m_errorMessage.clear();
    m_position = 0;
    m_duration = 0;
    m_frameRate = 0;
    setCanPlay(false);
    setState(VideoState::noVideo);
    Q_EMIT positionChanged(0);
    Q_EMIT durationChanged(0);
    update();
    if (path.isEmpty())
        return;
    // A file that is gone, or a folder, fails here with a message of its own rather than with the
    // library's guess at what went wrong.
    const QFileInfo info(path);
    if (!info.exists()) {
        reportFailure(tr("the file no longer exists."));
        return;
    }
    if (!info.isFile() || !info.isReadable()) {
        reportFailure(tr("the file cannot be read."));
        return;
    }
    applyAudio(m_volume, m_muted);
    applyRate(m_rate);
    openMedia(path);
}

void VideoView::play()
{
    if (!m_canPlay) {
        // Asked while the file opens: it starts when it can.
        if (!m_path.isEmpty() && m_errorMessage.isEmpty())
            m_playWhenReady = true;
        return;
    }
    if (m_state == VideoState::finished)
        seekMedia(0);
    playMedia();
}

void VideoView::pause()
{
    m_playWhenReady = false;
    if (m_canPlay && m_state == VideoState::playing)
        pauseMedia();
}

void VideoView::togglePlayPause()
{
    if (m_state == VideoState::playing || (!m_canPlay && m_playWhenReady))
        pause();
    else
        play();
}

void VideoView::seek(qint64 position)
{
    if (!m_canPlay)
        return;
    position = std::max<qint64>(0, position);
    if (m_duration > 0)
        position = std::min(position, m_duration);
    seekMedia(position);
    // The position shows where the user asked at once; the player's reports follow.
    reportPosition(position);
    if (m_state == VideoState::finished && position < m_duration)
        setState(VideoState::paused);
}

void VideoView::skip(qint64 delta)
{
    seek(m_position + delta);
}

void VideoView::nextFrame()
{
    if (!m_canPlay)
        return;
    if (m_state == VideoState::playing)
        pauseMedia();
    stepMedia(1);
}

void VideoView::previousFrame()
{
    if (!m_canPlay)
        return;
    if (m_state == VideoState::playing)
        pauseMedia();
    stepMedia(-1);
}

void VideoView::stepMedia(int direction)
{
    const double rate = m_frameRate > 0 ? m_frameRate : fallbackFrameRate;
    seek(m_position + direction * std::max<qint64>(1, std::llround(1000.0 / rate)));
}

void VideoView::faster()
{
    const auto next = std::upper_bound(std::begin(rateSteps), std::end(rateSteps), m_rate + 1e-9);
    setPlaybackRate(next == std::end(rateSteps) ? rateSteps[std::size(rateSteps) - 1] : *next);
    play();
}

void VideoView::slower()
{
    const auto below = std::lower_bound(std::begin(rateSteps), std::end(rateSteps), m_rate - 1e-9);
    setPlaybackRate(below == std::begin(rateSteps) ? rateSteps[0] : *(below - 1));
    play();
}

void VideoView::fastBackward()
{
    setPlaybackRate(1.0);
    skip(-fastBackwardSeconds * 1000);
}

void VideoView::setPlaybackRate(double rate)
{
    rate = std::clamp(rate, rateSteps[0], rateSteps[std::size(rateSteps) - 1]);
    if (qFuzzyCompare(rate, m_rate))
        return;
    m_rate = rate;
    if (!m_path.isEmpty())
        applyRate(rate);
    Q_EMIT playbackRateChanged(rate);
}

void VideoView::setVolume(int volume)
{
    volume = std::clamp(volume, 0, 100);
    // Turning the volume up is a wish to hear it.
    const bool unmute = m_muted && volume > m_volume;
    if (volume == m_volume && !unmute)
        return;
    m_volume = volume;
    if (unmute)
        m_muted = false;
    if (!m_path.isEmpty())
        applyAudio(m_volume, m_muted);
    Q_EMIT volumeChanged(volume);
    if (unmute)
        Q_EMIT mutedChanged(false);
}

void VideoView::setMuted(bool muted)
{
    if (muted == m_muted)
        return;
    m_muted = muted;
    if (!m_path.isEmpty())
        applyAudio(m_volume, m_muted);
    Q_EMIT mutedChanged(muted);
}

void VideoView::reportOpened(qint64 duration, double frameRate)
{
    if (m_path.isEmpty() || !m_errorMessage.isEmpty() || m_canPlay)
        return;
    m_frameRate = frameRate;
    reportDuration(duration);
    // The player is told before anyone hears of it, so that a listener's play() is the last word.
    if (std::exchange(m_playWhenReady, false))
        playMedia();
    else
        pauseMedia();
    setState(VideoState::paused);
    setCanPlay(true);
}

void VideoView::reportDuration(qint64 duration)
{
    duration = std::max<qint64>(0, duration);
    if (duration == m_duration)
        return;
    m_duration = duration;
    Q_EMIT durationChanged(duration);
}

void VideoView::reportPosition(qint64 position)
{
    position = std::max<qint64>(0, position);
    if (position == m_position)
        return;
    m_position = position;
    Q_EMIT positionChanged(position);
}

void VideoView::reportPlaying()
{
    if (m_canPlay)
        setState(VideoState::playing);
}

void VideoView::reportPaused()
{
    if (m_canPlay && m_state != VideoState::finished)
        setState(VideoState::paused);
}

void VideoView::reportFinished()
{
    if (!m_canPlay)
        return;
    reportPosition(m_duration);
    setState(VideoState::finished);
}

void VideoView::reportFirstFrame()
{
    if (m_firstFrameShown || m_path.isEmpty())
        return;
    m_firstFrameShown = true;
    Q_EMIT firstFrameShown();
}

void VideoView::reportFailure(const QString &reason)
{
    showFailureMessage(failureMessage(reason));
}

void VideoView::showFailureMessage(const QString &message)
{
    if (!m_errorMessage.isEmpty())
        return; // the first reason is the one that counts
    closeMedia();
    if (m_logsFailures)
        logError(QStringLiteral("%1 (%2)").arg(message, m_path));
    m_errorMessage = message;
    m_playWhenReady = false;
    setCanPlay(false);
    setState(VideoState::noVideo);
    update();
    Q_EMIT failed(message);
}

QString VideoView::failureMessage(const QString &reason)
{
    QString sentence = reason.trimmed();
    if (!sentence.isEmpty() && !sentence.endsWith(QLatin1Char('.')) && !sentence.endsWith(QLatin1Char(')')))
        sentence += QLatin1Char('.');
    return tr("This video cannot be played: %1").arg(sentence);
}

void VideoView::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.fillRect(rect(), Qt::black);
    if (m_errorMessage.isEmpty())
        return;
    painter.setPen(QColor(235, 235, 235));
    const int margin = std::min(width(), height()) / 10;
    painter.drawText(rect().adjusted(margin, margin, -margin, -margin), Qt::AlignCenter | Qt::TextWordWrap,
                     m_errorMessage);
}

void VideoView::setState(VideoState state)
{
    if (state == m_state)
        return;
    m_state = state;
    Q_EMIT videoStateChanged(state);
}

void VideoView::setCanPlay(bool canPlay)
{
    if (canPlay == m_canPlay)
        return;
    m_canPlay = canPlay;
    Q_EMIT canPlayChanged(canPlay);
}
