#include "ui/windows/ImageWindowController.h"

#include "core/model/PXFile.h"
#include "core/settings/AppSettings.h"
#include "ui/common/CloseKeys.h"
#include "ui/viewer/MediaViewActionHandler.h"
#include "ui/viewer/MediaViewController.h"
#include "ui/windows/CommandRegistry.h"
#include "ui/windows/ViewerCommands.h"
#include "ui/windows/ViewerWindow.h"
#include "ui/windows/WindowManager.h"

#include <QAction>
#include <QApplication>
#include <QScreen>
#include <QVBoxLayout>

ImageWindowController::ImageWindowController(AppSettings *settings, WindowManager *delegate,
                                             const QList<PXFilePtr> &files, const PXFilePtr &current, QObject *parent)
    : QObject(parent)
    , m_settings(settings)
    , m_delegate(delegate)
    , m_files(files)
    , m_index(qMax(0, int(files.indexOf(current))))
{
    auto *window = new ViewerWindow([this] { close(); });
    m_window = window;
    window->setObjectName(QStringLiteral("Image Window"));
    auto *layout = new QVBoxLayout(window);
    layout->setContentsMargins(0, 0, 0, 0);
    m_mediaView = new MediaViewController(window);
    layout->addWidget(m_mediaView);

    MediaViewSettings viewSettings;
    viewSettings.defaultScalingMode = settings->imageWindowImageScaling();
    viewSettings.defaultScalingPercentage = int(settings->imageWindowImageScalingPercentage());
    viewSettings.transitionDuration = 0; // stepping shows the next picture at once
    viewSettings.backgroundColor = QColor(24, 24, 24);
    m_mediaView->setSettings(viewSettings);

    MediaViewActionHandler *handler = m_mediaView->actionHandler();
    handler->setStepper([this](int offset) { step(offset); }, [this](int offset) { return canStep(offset); });
    handler->setFitsWindowToImage(true);
    connect(m_mediaView, &MediaViewController::fitToScreenRequested, this, &ImageWindowController::fitWindowToImage);
    ViewerCommands::install(window, handler, CommandRegistry::shared(),
                            {CommandId::previousImageWindow, CommandId::nextImageWindow, CommandId::openQuickview});
    const QPointer<ImageWindowController> self(this);
    CloseKeys::install(window, CloseKeys::Escape::closes, [self] {
        if (self)
            self->close();
    });
    auto *fullScreen = new QAction(window);
    fullScreen->setShortcut(QKeySequence::FullScreen);
    window->addAction(fullScreen);
    connect(fullScreen, &QAction::triggered, window,
            [window] { window->setWindowState(window->windowState() ^ Qt::WindowFullScreen); });

    // Most of the screen: the picture is the point of the window.
    const QScreen *screen =
        QApplication::activeWindow() ? QApplication::activeWindow()->screen() : QGuiApplication::primaryScreen();
    if (screen) {
        const QRect area = screen->availableGeometry();
        QRect frame(QPoint(), area.size() * 4 / 5);
        frame.moveCenter(area.center());
        window->setGeometry(frame);
    }
    showCurrent();
}

ImageWindowController::~ImageWindowController()
{
    delete m_window;
}

PXFilePtr ImageWindowController::currentFile() const
{
    return m_files.value(m_index);
}

bool ImageWindowController::canStep(int offset) const
{
    const int target = m_index + offset;
    return offset != 0 && target >= 0 && target < m_files.size();
}

bool ImageWindowController::step(int offset)
{
    if (!canStep(offset))
        return false;
    m_index += offset;
    showCurrent();
    return true;
}

void ImageWindowController::showCurrent()
{
    const PXFilePtr file = currentFile();
    m_mediaView->showFile(file);
    // The pictures either side, the direction of travel first.
    QList<PXFilePtr> neighbours;
    for (int offset : {1, -1, 2}) {
        if (canStep(offset))
            neighbours.append(m_files.at(m_index + offset));
    }
    m_mediaView->prefetch(neighbours);
    if (!m_window || !file)
        return;
    m_window->setWindowTitle(m_files.size() > 1
                                 ? tr("%1 (%2 of %3)").arg(file->displayName()).arg(m_index + 1).arg(m_files.size())
                                 : file->displayName());
}

// The window takes the image's size at 100 %, as far as the screen allows, and stays on screen.
void ImageWindowController::fitWindowToImage(QSize imageSize)
{
    if (!m_window || imageSize.isEmpty())
        return;
    const QScreen *screen = m_window->screen();
    const QRect area = screen ? screen->availableGeometry() : QRect(0, 0, 1600, 1000);
    // One image pixel per device pixel.
    QSize wanted = (QSizeF(imageSize) / m_window->devicePixelRatioF()).toSize();
    wanted = wanted.boundedTo(area.size());
    QRect frame(m_window->geometry().topLeft(), wanted);
    frame.moveLeft(qBound(area.left(), frame.left(), area.right() - frame.width()));
    frame.moveTop(qBound(area.top(), frame.top(), area.bottom() - frame.height()));
    m_window->setGeometry(frame);
}

void ImageWindowController::show()
{
    if (!m_window)
        return;
    m_window->show();
    raise();
}

void ImageWindowController::raise()
{
    if (!m_window)
        return;
    m_window->raise();
    m_window->activateWindow();
}

void ImageWindowController::close()
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
