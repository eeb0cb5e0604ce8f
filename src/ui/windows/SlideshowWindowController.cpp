#include "ui/windows/SlideshowWindowController.h"

#include "core/app/Dispatch.h"
#include "core/model/PXFile.h"
#include "core/settings/AppSettings.h"
#include "core/viewer/SlideshowPlaylist.h"
#include "ui/viewer/MediaViewActionHandler.h"
#include "ui/viewer/MediaViewController.h"
#include "ui/windows/CommandRegistry.h"
#include "ui/windows/QuickviewWindowController.h"
#include "ui/windows/ViewerCommands.h"
#include "ui/windows/ViewerWindow.h"
#include "ui/windows/WindowManager.h"

#include <QAction>
#include <QApplication>
#include <QCursor>
#include <QEvent>
#include <QHBoxLayout>
#include <QLabel>
#include <QRandomGenerator>
#include <QScreen>
#include <QStyle>
#include <QTimer>
#include <QToolButton>
#include <QVBoxLayout>

// The buttons over the bottom of a slideshow: previous, play or pause, next, the position, close.
class SlideshowControls : public QWidget
{
public:
    explicit SlideshowControls(SlideshowWindowController *show, QWidget *parent)
        : QWidget(parent)
        , m_playPause(new QToolButton(this))
        , m_position(new QLabel(this))
    {
        setAutoFillBackground(true);
        QPalette colors = palette();
        colors.setColor(QPalette::Window, QColor(0, 0, 0, 170));
        colors.setColor(QPalette::WindowText, Qt::white);
        colors.setColor(QPalette::ButtonText, Qt::white);
        setPalette(colors);
        auto *layout = new QHBoxLayout(this);
        layout->setContentsMargins(12, 6, 12, 6);
        const auto button = [this, layout](QStyle::StandardPixmap icon, const QString &name, auto action) {
            auto *tool = new QToolButton(this);
            tool->setIcon(style()->standardIcon(icon));
            tool->setIconSize(QSize(24, 24));
            tool->setAutoRaise(true);
            tool->setToolTip(name);
            tool->setAccessibleName(name);
            tool->setFocusPolicy(Qt::NoFocus);
            connect(tool, &QToolButton::clicked, this, action);
            layout->addWidget(tool);
            return tool;
        };
        button(QStyle::SP_MediaSkipBackward, SlideshowWindowController::tr("Previous"), [show] { show->step(-1); });
        m_playPause->setIconSize(QSize(24, 24));
        m_playPause->setAutoRaise(true);
        m_playPause->setFocusPolicy(Qt::NoFocus);
        connect(m_playPause, &QToolButton::clicked, this, [show] { show->togglePlaying(); });
        layout->addWidget(m_playPause);
        button(QStyle::SP_MediaSkipForward, SlideshowWindowController::tr("Next"), [show] { show->step(1); });
        layout->addSpacing(12);
        layout->addWidget(m_position);
        layout->addStretch(1);
        button(QStyle::SP_DialogCloseButton, SlideshowWindowController::tr("End Slideshow"), [show] { show->close(); });
        setPlaying(true);
    }

    void setPlaying(bool playing)
    {
        const QString name = playing ? SlideshowWindowController::tr("Pause") : SlideshowWindowController::tr("Play");
        m_playPause->setIcon(style()->standardIcon(playing ? QStyle::SP_MediaPause : QStyle::SP_MediaPlay));
        m_playPause->setToolTip(name);
        m_playPause->setAccessibleName(name);
    }
    void setPosition(const QString &text) { m_position->setText(text); }

private:
    QToolButton *m_playPause;
    QLabel *m_position;
};

namespace {
// Three seconds of a still pointer and the controls go: time to reach them, not long enough to
// be in the way of the pictures.
constexpr int controlsHideMs = 3000;
// Four times a second is enough to notice the pointer moving; polling costs nothing measurable.
constexpr int pointerPollMs = 250;
} // namespace

SlideshowWindowController::SlideshowWindowController(AppSettings *settings, WindowManager *delegate,
                                                     const QList<PXFilePtr> &sources, QObject *parent)
    : QObject(parent)
    , m_settings(settings)
    , m_delegate(delegate)
    , m_sources(sources)
    , m_timer(new QTimer(this))
    , m_listingCancelled(std::make_shared<std::atomic<bool>>(false))
{
    auto *window = new ViewerWindow([this] { close(); });
    m_window = window;
    window->setWindowTitle(tr("Slideshow"));
    window->setObjectName(QStringLiteral("Slideshow"));
    auto *layout = new QVBoxLayout(window);
    layout->setContentsMargins(0, 0, 0, 0);
    m_mediaView = new MediaViewController(window);
    layout->addWidget(m_mediaView);
    window->installEventFilter(this);
    const SlideshowSettings &show = *settings->slideshowSettings();
    MediaViewSettings viewSettings;
    viewSettings.defaultScalingMode = settings->slideshowImageScaling();
    viewSettings.defaultScalingPercentage = int(settings->slideshowImageScalingPercentage());
    viewSettings.backgroundColor = settings->slideshowBackgroundColor();
    viewSettings.transitionDuration =
        show.transitionStyle() == SlideshowTransitionStyle::none ? 0.0 : show.transitionDuration();
    viewSettings.autoplayVideo = settings->slideshowAutoplayVideos();
    m_mediaView->setSettings(viewSettings);
    connect(m_mediaView, &MediaViewController::videoStateChanged, this, &SlideshowWindowController::videoStateChanged);

    m_info = new QLabel(window);
    m_info->setTextFormat(Qt::PlainText);
    m_info->setMargin(10);
    m_info->setAutoFillBackground(true);
    QPalette infoColors = m_info->palette();
    infoColors.setColor(QPalette::Window, QColor(0, 0, 0, 170));
    infoColors.setColor(QPalette::WindowText, Qt::white);
    m_info->setPalette(infoColors);
    m_controls = new SlideshowControls(this, window);

    MediaViewActionHandler *handler = m_mediaView->actionHandler();
    handler->setStepper([this](int offset) { step(offset); }, [this](int) { return m_files.size() > 1; });
    ViewerCommands::install(window, handler, CommandRegistry::shared());
    const auto key = [this, window](const QKeySequence &sequence, auto action) {
        auto *shortcut = new QAction(window);
        shortcut->setShortcut(sequence);
        window->addAction(shortcut);
        connect(shortcut, &QAction::triggered, this, action);
    };
    key(Qt::Key_Escape, [this] { close(); });
    key(Qt::Key_Space, [this] { togglePlaying(); });

    m_timer->setSingleShot(true);
    connect(m_timer, &QTimer::timeout, this, [this] { step(1, false); });
    connect(&show, &SlideshowSettings::intervalChanged, this, &SlideshowWindowController::restartTimer);

    // The controls and the automatic information come with the pointer and go a while after it rests.
    auto *hideTimer = new QTimer(this);
    hideTimer->setSingleShot(true);
    hideTimer->setInterval(controlsHideMs);
    connect(hideTimer, &QTimer::timeout, this, [this] {
        m_controls->hide();
        if (m_window)
            m_window->setCursor(Qt::BlankCursor);
        updateInfo();
    });
    auto *pointer = new QTimer(this);
    pointer->setInterval(pointerPollMs);
    connect(pointer, &QTimer::timeout, this, [this, hideTimer, last = QCursor::pos()]() mutable {
        if (QCursor::pos() == last)
            return;
        last = QCursor::pos();
        if (m_window)
            m_window->unsetCursor();
        m_controls->show();
        m_controls->raise();
        updateInfo();
        hideTimer->start();
    });
    pointer->start();
    m_controls->setVisible(settings->slideshowControlsVisibleOnStart());
    if (!m_controls->isHidden())
        hideTimer->start();
}

SlideshowWindowController::~SlideshowWindowController()
{
    m_listingCancelled->store(true);
    for (const QPointer<QWidget> &blackout : std::as_const(m_blackouts))
        delete blackout;
    delete m_window;
}

PXFilePtr SlideshowWindowController::currentFile() const
{
    return m_files.value(m_index);
}

QList<QWidget *> SlideshowWindowController::blackoutWindows() const
{
    QList<QWidget *> windows;
    for (const QPointer<QWidget> &blackout : m_blackouts) {
        if (blackout)
            windows.append(blackout);
    }
    return windows;
}

void SlideshowWindowController::start()
{
    const QWidget *front = QApplication::activeWindow();
    QScreen *screen =
        QuickviewWindowController::screenFor(m_settings->slideshowScreen(), front ? front->screen() : nullptr);
    if (screen) {
        m_window->setScreen(screen);
        m_window->setGeometry(screen->geometry());
        if (m_settings->slideshowBlackoutOtherScreens()) {
            for (QScreen *other : QGuiApplication::screens()) {
                if (other == screen)
                    continue;
                auto *blackout = new ViewerWindow([this] { close(); }, nullptr, Qt::Window | Qt::FramelessWindowHint);
                blackout->setObjectName(QStringLiteral("Slideshow Blackout"));
                QPalette black = blackout->palette();
                black.setColor(QPalette::Window, Qt::black);
                blackout->setPalette(black);
                blackout->setAutoFillBackground(true);
                blackout->setScreen(other);
                blackout->setGeometry(other->geometry());
                blackout->showFullScreen();
                m_blackouts.append(blackout);
            }
        }
    }
    m_window->showFullScreen();
    m_window->raise();
    m_window->activateWindow();
    updateInfo();
    m_info->setText(tr("Collecting pictures…"));
    m_info->show();

    SlideshowPlaylistOptions options;
    options.folderDepth = m_settings->slideshowFolderSearchDepth();
    options.inclusionStyle = m_settings->slideshowSubfolderInclusionStyle();
    options.includeVideos = m_settings->slideshowIncludeVideos();
    const QList<PXFilePtr> sources = m_sources;
    const std::shared_ptr<std::atomic<bool>> cancelled = m_listingCancelled;
    const QPointer<SlideshowWindowController> self(this);
    runOnPool(QStringLiteral("Slideshow"), [self, sources, options, cancelled] {
        const QList<PXFilePtr> files = SlideshowPlaylist::make(sources, options, cancelled.get());
        postToGui([self, files] {
            if (self)
                self->filesListed(files);
        });
    });
}

void SlideshowWindowController::filesListed(const QList<PXFilePtr> &files)
{
    m_listed = true;
    m_files = m_settings->slideshowSettings()->shuffle()
        ? SlideshowPlaylist::shuffled(files, QRandomGenerator::global()->generate64())
        : files;
    m_index = 0;
    Q_EMIT listed();
    if (m_files.isEmpty()) {
        m_info->setText(tr("There are no pictures to show."));
        m_info->adjustSize();
        m_info->show();
        m_playing = false;
        m_controls->setPlaying(false);
        return;
    }
    showCurrent();
}

void SlideshowWindowController::showCurrent()
{
    const PXFilePtr file = currentFile();
    m_mediaView->showFile(file);
    QList<PXFilePtr> next;
    if (m_files.size() > 1)
        next.append(m_files.at((m_index + 1) % m_files.size()));
    m_mediaView->prefetch(next);
    updateInfo();
    restartTimer();
}

void SlideshowWindowController::restartTimer()
{
    m_timer->stop();
    if (!m_playing || m_files.size() < 2 || m_closed)
        return;
    m_timer->start(int(m_settings->slideshowSettings()->interval() * 1000));
}

bool SlideshowWindowController::step(int offset, bool byUser)
{
    if (m_files.isEmpty() || m_closed)
        return false;
    // A video that plays holds the show until it ends (its end moves the show on).
    if (!byUser && m_settings->slideshowPreventNextWhileVideoPlays()
        && m_mediaView->videoState() == VideoState::playing)
        return false;
    const int count = int(m_files.size());
    int target = m_index + offset;
    if (target < 0 || target >= count) {
        if (!m_settings->slideshowSettings()->loop()) {
            if (!byUser)
                setPlaying(false);
            return false;
        }
        target = ((target % count) + count) % count;
    }
    m_index = target;
    showCurrent();
    return true;
}

void SlideshowWindowController::setPlaying(bool playing)
{
    m_playing = playing;
    m_controls->setPlaying(playing);
    restartTimer();
}

void SlideshowWindowController::videoStateChanged(VideoState state)
{
    if (state == VideoState::finished && m_playing && m_settings->slideshowPreventNextWhileVideoPlays())
        step(1, false);
}

void SlideshowWindowController::updateInfo()
{
    if (!m_window)
        return;
    const QRect area = m_window->rect();
    const QSize controls = m_controls->sizeHint();
    m_controls->setGeometry(area.left(), area.bottom() - controls.height() + 1, area.width(), controls.height());
    const PXFilePtr file = currentFile();
    const QString position = file ? tr("%1 of %2").arg(m_index + 1).arg(m_files.size()) : QString();
    m_controls->setPosition(position);
    if (!file)
        return;
    const SlideshowInfoVisibility visibility = m_settings->slideshowSettings()->infoVisibility();
    m_info->setText(tr("%1 — %2").arg(file->displayName(), position));
    m_info->adjustSize();
    m_info->move(area.topLeft() + QPoint(16, 16));
    m_info->setVisible(visibility == SlideshowInfoVisibility::showAlways
                       || (visibility == SlideshowInfoVisibility::showAutomatic && !m_controls->isHidden()));
    m_info->raise();
    m_controls->raise();
}

bool SlideshowWindowController::eventFilter(QObject *watched, QEvent *event)
{
    if (watched == m_window && event->type() == QEvent::Resize)
        updateInfo();
    return QObject::eventFilter(watched, event);
}

void SlideshowWindowController::close()
{
    if (m_closed)
        return;
    m_closed = true;
    m_listingCancelled->store(true);
    m_timer->stop();
    if (m_delegate)
        m_delegate->windowControllerWillClose(this);
    Q_EMIT closed(this);
    for (const QPointer<QWidget> &blackout : std::as_const(m_blackouts)) {
        if (auto *window = static_cast<ViewerWindow *>(blackout.data()))
            window->closeAndDelete();
    }
    if (auto *window = static_cast<ViewerWindow *>(m_window.data()))
        window->closeAndDelete();
    deleteLater();
}
