#include "ui/viewer/video/VideoControlsBar.h"

#include "ui/common/ThemeIcons.h"
#include "ui/viewer/video/VideoView.h"

#include <QAction>
#include <QApplication>
#include <QEnterEvent>
#include <QHBoxLayout>
#include <QLabel>
#include <QLocale>
#include <QMenu>
#include <QPainter>
#include <QSlider>
#include <QTimer>
#include <QToolButton>

#include <algorithm>
#include <limits>

namespace {

// "0:07", "12:30", "1:02:03".
QString formatTime(qint64 milliseconds)
{
    const qint64 seconds = std::max<qint64>(0, milliseconds) / 1000;
    const qint64 hours = seconds / 3600;
    const qint64 minutes = seconds / 60 % 60;
    const QString secondsText = QStringLiteral("%1").arg(seconds % 60, 2, 10, QLatin1Char('0'));
    if (hours > 0)
        return QStringLiteral("%1:%2:%3").arg(hours).arg(minutes, 2, 10, QLatin1Char('0')).arg(secondsText);
    return QStringLiteral("%1:%2").arg(minutes).arg(secondsText);
}

QString formatRate(double rate)
{
    return QLocale().toString(rate, 'g', 3) + QStringLiteral("×");
}

QToolButton *makeButton(QWidget *parent, const QString &accessibleName, const QIcon &icon)
{
    auto *button = new QToolButton(parent);
    button->setAutoRaise(true);
    button->setIcon(icon);
    button->setIconSize(QSize(20, 20));
    button->setAccessibleName(accessibleName);
    button->setToolTip(accessibleName);
    button->setFocusPolicy(Qt::StrongFocus);
    return button;
}

// 50 ms: a dragged seek bar asks for at most twenty seeks a second, each of which decodes from
// the key frame before it.
constexpr int seekCoalesceMs = 50;
constexpr int barMargin = 8;

} // namespace

VideoControlsBar::VideoControlsBar(VideoView *view, QWidget *parent)
    : QWidget(parent)
    , m_view(view)
{
    setAttribute(Qt::WA_TranslucentBackground);
    setAccessibleName(tr("Video controls"));
    buildControls();
    m_hideTimer = new QTimer(this);
    m_hideTimer->setSingleShot(true);
    m_hideTimer->setInterval(autohideDelayMs);
    connect(m_hideTimer, &QTimer::timeout, this, &VideoControlsBar::hideIfResting);
    m_seekTimer = new QTimer(this);
    m_seekTimer->setSingleShot(true);
    m_seekTimer->setInterval(seekCoalesceMs);
    connect(m_seekTimer, &QTimer::timeout, this, [this] {
        if (m_view)
            m_view->seek(m_seek->value());
    });
    followView();
}

void VideoControlsBar::buildControls()
{
    auto *layout = new QHBoxLayout(this);
    layout->setContentsMargins(8, 4, 8, 4);
    layout->setSpacing(2);

    m_previousFrame =
        makeButton(this, tr("Previous frame"), ThemeIcons::icon(QStringLiteral("go-previous"), QStyle::SP_ArrowLeft));
    m_jumpBackward = makeButton(this, tr("Back 15 seconds"),
                                ThemeIcons::icon(QStringLiteral("media-seek-backward"), QStyle::SP_MediaSeekBackward));
    m_playPause =
        makeButton(this, tr("Play"), ThemeIcons::icon(QStringLiteral("media-playback-start"), QStyle::SP_MediaPlay));
    m_jumpForward = makeButton(this, tr("Forward 15 seconds"),
                               ThemeIcons::icon(QStringLiteral("media-seek-forward"), QStyle::SP_MediaSeekForward));
    m_nextFrame =
        makeButton(this, tr("Next frame"), ThemeIcons::icon(QStringLiteral("go-next"), QStyle::SP_ArrowRight));
    connect(m_previousFrame, &QToolButton::clicked, this, &VideoControlsBar::prevFrame);
    connect(m_jumpBackward, &QToolButton::clicked, this, &VideoControlsBar::jumpBackward15);
    connect(m_playPause, &QToolButton::clicked, this, &VideoControlsBar::playPause);
    connect(m_jumpForward, &QToolButton::clicked, this, &VideoControlsBar::jumpForward15);
    connect(m_nextFrame, &QToolButton::clicked, this, &VideoControlsBar::nextFrame);

    m_seek = new QSlider(Qt::Horizontal, this);
    m_seek->setAccessibleName(tr("Position"));
    m_seek->setFocusPolicy(Qt::StrongFocus);
    m_seek->setSingleStep(5000); // arrow keys: 5 s
    m_seek->setPageStep(VideoView::jumpSeconds * 1000);
    connect(m_seek, &QSlider::valueChanged, this, [this](int value) {
        if (m_followingView || !m_view)
            return;
        if (m_seek->isSliderDown()) {
            if (!m_seekTimer->isActive())
                m_seekTimer->start();
            return;
        }
        m_view->seek(value);
    });
    connect(m_seek, &QSlider::sliderReleased, this, [this] {
        m_seekTimer->stop();
        if (m_view)
            m_view->seek(m_seek->value());
    });

    m_time = new QLabel(this);
    m_time->setAccessibleName(tr("Time"));
    m_time->setTextFormat(Qt::PlainText);

    m_rate = new QToolButton(this);
    m_rate->setAutoRaise(true);
    m_rate->setAccessibleName(tr("Speed"));
    m_rate->setToolTip(tr("Speed"));
    m_rate->setFocusPolicy(Qt::StrongFocus);
    m_rate->setPopupMode(QToolButton::InstantPopup);
    auto *rates = new QMenu(m_rate);
    for (const double rate : VideoView::rateSteps) {
        QAction *action = rates->addAction(formatRate(rate));
        connect(action, &QAction::triggered, this, [this, rate] {
            if (m_view)
                m_view->setPlaybackRate(rate);
        });
    }
    m_rate->setMenu(rates);

    m_mute =
        makeButton(this, tr("Mute"), ThemeIcons::icon(QStringLiteral("audio-volume-high"), QStyle::SP_MediaVolume));
    m_mute->setCheckable(true);
    connect(m_mute, &QToolButton::clicked, this, &VideoControlsBar::mute);
    m_volume = new QSlider(Qt::Horizontal, this);
    m_volume->setAccessibleName(tr("Volume"));
    m_volume->setFocusPolicy(Qt::StrongFocus);
    m_volume->setRange(0, 100);
    m_volume->setSingleStep(5);
    m_volume->setPageStep(10);
    m_volume->setFixedWidth(80);
    connect(m_volume, &QSlider::valueChanged, this, [this](int value) {
        if (!m_followingView && m_view)
            m_view->setVolume(value);
    });

    for (QWidget *control : {static_cast<QWidget *>(m_previousFrame), static_cast<QWidget *>(m_jumpBackward),
                             static_cast<QWidget *>(m_playPause), static_cast<QWidget *>(m_jumpForward),
                             static_cast<QWidget *>(m_nextFrame)})
        layout->addWidget(control);
    layout->addWidget(m_seek, 1);
    layout->addWidget(m_time);
    layout->addWidget(m_rate);
    layout->addWidget(m_mute);
    layout->addWidget(m_volume);

    // Light controls on the dark bar, whatever the desktop's colours.
    QPalette palette = this->palette();
    for (const QPalette::ColorRole role : {QPalette::WindowText, QPalette::ButtonText, QPalette::Text})
        palette.setColor(role, QColor(240, 240, 240));
    setPalette(palette);
}

void VideoControlsBar::followView()
{
    if (!m_view)
        return;
    m_view->installEventFilter(this);
    connect(m_view, &VideoView::videoStateChanged, this, &VideoControlsBar::updateState);
    connect(m_view, &VideoView::canPlayChanged, this, &VideoControlsBar::updateEnabled);
    connect(m_view, &VideoView::positionChanged, this, &VideoControlsBar::updatePosition);
    connect(m_view, &VideoView::durationChanged, this, &VideoControlsBar::updatePosition);
    connect(m_view, &VideoView::volumeChanged, this, &VideoControlsBar::updateAudio);
    connect(m_view, &VideoView::mutedChanged, this, &VideoControlsBar::updateAudio);
    connect(m_view, &VideoView::playbackRateChanged, this, &VideoControlsBar::updateRate);
    updateState(m_view->videoState());
    updatePosition();
    updateAudio();
    updateRate();
    updateEnabled();
}

void VideoControlsBar::updateState(VideoState state)
{
    const bool playing = state == VideoState::playing;
    m_playPause->setIcon(playing ? ThemeIcons::icon(QStringLiteral("media-playback-pause"), QStyle::SP_MediaPause)
                                 : ThemeIcons::icon(QStringLiteral("media-playback-start"), QStyle::SP_MediaPlay));
    const QString name = playing ? tr("Pause") : tr("Play");
    m_playPause->setAccessibleName(name);
    m_playPause->setToolTip(name);
    if (playing) {
        scheduleHide();
    } else {
        m_hideTimer->stop();
        if (m_view && m_view->canPlay())
            reveal();
    }
}

void VideoControlsBar::updateEnabled()
{
    const bool canPlay = m_view && m_view->canPlay();
    for (QWidget *control : findChildren<QWidget *>(QString(), Qt::FindDirectChildrenOnly)) {
        if (control != m_mute && control != m_volume && control != m_rate)
            control->setEnabled(canPlay);
    }
    // Nothing to control: a failure message or an empty view is not covered by the bar.
    setVisible(canPlay);
    if (canPlay)
        raise();
}

void VideoControlsBar::updatePosition()
{
    if (!m_view)
        return;
    m_followingView = true;
    m_seek->setRange(0, static_cast<int>(std::min<qint64>(m_view->duration(), std::numeric_limits<int>::max())));
    if (!m_seek->isSliderDown())
        m_seek->setValue(static_cast<int>(std::min<qint64>(m_view->position(), m_seek->maximum())));
    m_followingView = false;
    m_time->setText(timeText());
}

void VideoControlsBar::updateAudio()
{
    if (!m_view)
        return;
    m_followingView = true;
    m_volume->setValue(m_view->volume());
    m_followingView = false;
    const bool muted = m_view->isMuted();
    m_mute->setChecked(muted);
    m_mute->setIcon(muted ? ThemeIcons::icon(QStringLiteral("audio-volume-muted"), QStyle::SP_MediaVolumeMuted)
                          : ThemeIcons::icon(QStringLiteral("audio-volume-high"), QStyle::SP_MediaVolume));
    const QString name = muted ? tr("Unmute") : tr("Mute");
    m_mute->setAccessibleName(name);
    m_mute->setToolTip(name);
}

void VideoControlsBar::updateRate()
{
    if (m_view)
        m_rate->setText(formatRate(m_view->playbackRate()));
}

QString VideoControlsBar::timeText() const
{
    if (!m_view)
        return {};
    return QStringLiteral("%1 / %2").arg(formatTime(m_view->position()), formatTime(m_view->duration()));
}

void VideoControlsBar::setAutohide(bool autohide)
{
    m_autohide = autohide;
    if (autohide)
        scheduleHide();
    else
        reveal();
}

void VideoControlsBar::setAutohideDelay(int milliseconds)
{
    m_hideTimer->setInterval(milliseconds);
}

void VideoControlsBar::reveal()
{
    if (!m_view || !m_view->canPlay())
        return;
    show();
    raise();
    scheduleHide();
}

void VideoControlsBar::scheduleHide()
{
    if (m_autohide)
        m_hideTimer->start();
}

void VideoControlsBar::hideIfResting()
{
    if (mayHide())
        hide();
}

bool VideoControlsBar::mayHide() const
{
    if (!m_autohide || m_pointerInside || !m_view || m_view->videoState() != VideoState::playing)
        return false;
    // A control in use with the keyboard keeps the bar.
    const QWidget *focus = QApplication::focusWidget();
    return !(focus && isAncestorOf(focus));
}

void VideoControlsBar::placeIn(const QRect &area)
{
    const int height = sizeHint().height();
    setGeometry(area.left() + barMargin, area.bottom() + 1 - barMargin - height, area.width() - 2 * barMargin, height);
}

bool VideoControlsBar::eventFilter(QObject *watched, QEvent *event)
{
    if (watched == m_view) {
        switch (event->type()) {
        case QEvent::MouseMove:
        case QEvent::FocusIn: reveal(); break;
        case QEvent::Resize: placeIn(m_view->rect()); break;
        default: break;
        }
    }
    return QWidget::eventFilter(watched, event);
}

void VideoControlsBar::enterEvent(QEnterEvent *event)
{
    m_pointerInside = true;
    m_hideTimer->stop();
    QWidget::enterEvent(event);
}

void VideoControlsBar::leaveEvent(QEvent *event)
{
    m_pointerInside = false;
    scheduleHide();
    QWidget::leaveEvent(event);
}

void VideoControlsBar::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    // A dark glass that keeps the controls readable over any picture.
    painter.setBrush(QColor(20, 20, 20, 190));
    painter.drawRoundedRect(QRectF(rect()), 8, 8);
}

void VideoControlsBar::playPause()
{
    reveal();
    if (m_view)
        m_view->togglePlayPause();
}

void VideoControlsBar::fastBackward()
{
    reveal();
    if (m_view)
        m_view->fastBackward();
}

void VideoControlsBar::fastForward()
{
    reveal();
    if (m_view)
        m_view->faster();
}

void VideoControlsBar::slow()
{
    reveal();
    if (m_view)
        m_view->slower();
}

void VideoControlsBar::jumpBackward15()
{
    reveal();
    if (m_view)
        m_view->jumpBackward15();
}

void VideoControlsBar::jumpForward15()
{
    reveal();
    if (m_view)
        m_view->jumpForward15();
}

void VideoControlsBar::nextFrame()
{
    reveal();
    if (m_view)
        m_view->nextFrame();
}

void VideoControlsBar::prevFrame()
{
    reveal();
    if (m_view)
        m_view->previousFrame();
}

void VideoControlsBar::mute()
{
    reveal();
    if (m_view)
        m_view->toggleMuted();
}

void VideoControlsBar::volumeDown()
{
    reveal();
    if (m_view)
        m_view->volumeDown();
}

void VideoControlsBar::volumeUp()
{
    reveal();
    if (m_view)
        m_view->volumeUp();
}
