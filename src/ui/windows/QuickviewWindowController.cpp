#include "ui/windows/QuickviewWindowController.h"

#include "core/model/PXFile.h"
#include "core/settings/AppSettings.h"
#include "ui/viewer/MediaViewController.h"
#include "ui/windows/CommandRegistry.h"
#include "ui/windows/ViewerCommands.h"
#include "ui/windows/ViewerWindow.h"
#include "ui/windows/WindowManager.h"

#include <QAction>
#include <QApplication>
#include <QGuiApplication>
#include <QScreen>
#include <QVBoxLayout>

QuickviewWindowController::QuickviewWindowController(AppSettings *settings, WindowManager *delegate,
                                                     const PXFilePtr &file, QObject *parent)
    : QObject(parent)
    , m_settings(settings)
    , m_delegate(delegate)
{
    auto *window = new ViewerWindow([this] { close(); });
    m_window = window;
    window->setWindowTitle(tr("Quick View"));
    window->setObjectName(QStringLiteral("Quick View"));
    // Shown beside the main window without taking the keyboard from it.
    window->setAttribute(Qt::WA_ShowWithoutActivating);
    auto *layout = new QVBoxLayout(window);
    layout->setContentsMargins(0, 0, 0, 0);
    m_mediaView = new MediaViewController(window);
    layout->addWidget(m_mediaView);
    applySettings();
    connect(settings, &AppSettings::changed, this, &QuickviewWindowController::applySettings);
    connect(m_mediaView, &MediaViewController::fileShown, this, [this](const PXFilePtr &shown) {
        if (m_window)
            m_window->setWindowTitle(shown ? shown->displayName() : tr("Quick View"));
    });
    connect(qApp, &QGuiApplication::applicationStateChanged, this, &QuickviewWindowController::applicationStateChanged);

    // The viewer's keys, the space bar that closes it again and Escape.
    ViewerCommands::install(window, m_mediaView->actionHandler(), CommandRegistry::shared(), {CommandId::openQuickview},
                            false);
    auto *escape = new QAction(window);
    escape->setShortcut(Qt::Key_Escape);
    window->addAction(escape);
    connect(escape, &QAction::triggered, this, &QuickviewWindowController::close);

    m_mediaView->setEmptyText(tr("Select a picture or a video in a browser window to see it here."));
    m_mediaView->showFile(file);
}

QuickviewWindowController::~QuickviewWindowController()
{
    delete m_window;
}

void QuickviewWindowController::applySettings()
{
    MediaViewSettings settings;
    settings.defaultScalingMode = m_settings->quickviewImageScaling();
    settings.defaultScalingPercentage = int(m_settings->quickviewImageScalingPercentage());
    settings.retainScalingFromPreviousFile = m_settings->quickviewRetainZoomBetweenItems();
    settings.transitionDuration = m_settings->quickviewTransitionDuration();
    settings.backgroundColor = m_settings->quickviewBackgroundColor();
    settings.autoplayVideo = m_settings->quickviewAutoplayVideo();
    settings.muteVideo = m_settings->quickviewMuteVideo();
    if (!(settings == m_mediaView->settings()))
        m_mediaView->setSettings(settings);
}

QScreen *QuickviewWindowController::screenFor(ScreenOption option, QScreen *active)
{
    QScreen *primary = QGuiApplication::primaryScreen();
    if (!active)
        active = primary;
    switch (option) {
    case ScreenOption::activeScreen: return active;
    case ScreenOption::primaryScreen: return primary;
    case ScreenOption::alternateScreen:
        for (QScreen *screen : QGuiApplication::screens()) {
            if (screen != active)
                return screen;
        }
        return active;
    }
    return active;
}

void QuickviewWindowController::show()
{
    if (!m_window)
        return;
    const QWidget *front = QApplication::activeWindow();
    QScreen *screen = screenFor(m_settings->quickviewScreen(), front ? front->screen() : nullptr);
    if (screen) {
        // Two thirds of the screen: large enough to judge a picture, small enough to leave the
        // main window in sight on a single screen.
        const QRect area = screen->availableGeometry();
        QRect frame(QPoint(), area.size() * 2 / 3);
        frame.moveCenter(area.center());
        m_window->setScreen(screen);
        m_window->setGeometry(frame);
    }
    m_window->show();
    m_window->raise();
}

void QuickviewWindowController::setFiles(const QList<PXFilePtr> &files)
{
    if (m_closed)
        return;
    m_mediaView->showFile(files.value(0));
    m_mediaView->prefetch(files.mid(1, 2));
}

// Hidden while another application is in front, back when Pixcove is.
void QuickviewWindowController::applicationStateChanged(Qt::ApplicationState state)
{
    if (!m_window || m_closed)
        return;
    if (state != Qt::ApplicationActive) {
        if (m_settings->quickviewAutohide() && m_window->isVisible()) {
            m_hiddenByAutohide = true;
            m_window->hide();
        }
    } else if (m_hiddenByAutohide) {
        m_hiddenByAutohide = false;
        m_window->show();
    }
}

void QuickviewWindowController::close()
{
    if (m_closed)
        return;
    m_closed = true;
    if (m_delegate)
        m_delegate->windowControllerWillClose(this);
    Q_EMIT closed(this);
    if (auto *window = static_cast<ViewerWindow *>(m_window.data()))
        window->closeAndDelete();
    deleteLater();
}
