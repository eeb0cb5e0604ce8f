#include "ui/viewer/MediaViewActionHandler.h"

#include "ui/viewer/MediaViewController.h"
#include "ui/viewer/video/VideoControlsBar.h"
#include "ui/viewer/video/VideoView.h"

namespace {

// The controls bar's slot when the view has a bar (it shows itself for a moment), else the view's.
template<typename BarSlot, typename ViewSlot>
void runVideoCommand(MediaViewController *view, BarSlot barSlot, ViewSlot viewSlot)
{
    VideoView *video = view->currentVideoChild();
    if (!video)
        return;
    if (VideoControlsBar *bar = video->controlsBar())
        (bar->*barSlot)();
    else
        (video->*viewSlot)();
}

} // namespace

MediaViewActionHandler::MediaViewActionHandler(MediaViewController *view)
    : QObject(view)
    , m_view(view)
{ }

void MediaViewActionHandler::setStepper(std::function<void(int)> step, std::function<bool(int)> canStep)
{
    m_step = std::move(step);
    m_canStep = std::move(canStep);
}

void MediaViewActionHandler::scaleToFit()
{
    m_view->scaleToFit();
}

CommandState MediaViewActionHandler::scaleToFitState() const
{
    return {canChangeImage(), canChangeImage() && m_view->currentlySticky()};
}

void MediaViewActionHandler::fitToScreen()
{
    m_view->fitToScreen();
}

bool MediaViewActionHandler::canFitToScreen() const
{
    return m_fitsWindowToImage && canChangeImage();
}

void MediaViewActionHandler::zoomTo200Percent()
{
    m_view->zoomTo(2.0);
}

void MediaViewActionHandler::zoomTo100Percent()
{
    m_view->zoomTo(1.0);
}

void MediaViewActionHandler::zoomTo50Percent()
{
    m_view->zoomTo(0.5);
}

void MediaViewActionHandler::zoomIn()
{
    m_view->zoomIn();
}

void MediaViewActionHandler::zoomOut()
{
    m_view->zoomOut();
}

bool MediaViewActionHandler::canChangeImage() const
{
    return m_view->canChangeImage();
}

void MediaViewActionHandler::rotate180()
{
    m_view->rotate(180);
}

void MediaViewActionHandler::rotateClockwise()
{
    m_view->rotate(90);
}

void MediaViewActionHandler::rotateCounterclockwise()
{
    m_view->rotate(-90);
}

void MediaViewActionHandler::moveImageLeft()
{
    m_view->moveImage(-1, 0);
}

void MediaViewActionHandler::moveImageRight()
{
    m_view->moveImage(1, 0);
}

void MediaViewActionHandler::moveImageUp()
{
    m_view->moveImage(0, -1);
}

void MediaViewActionHandler::moveImageDown()
{
    m_view->moveImage(0, 1);
}

void MediaViewActionHandler::moveImageUpLeft()
{
    m_view->moveImage(-1, -1);
}

void MediaViewActionHandler::moveImageUpRight()
{
    m_view->moveImage(1, -1);
}

void MediaViewActionHandler::moveImageDownLeft()
{
    m_view->moveImage(-1, 1);
}

void MediaViewActionHandler::moveImageDownRight()
{
    m_view->moveImage(1, 1);
}

void MediaViewActionHandler::recenterImage()
{
    m_view->moveImage(0, 0);
}

void MediaViewActionHandler::nextImageInFolder()
{
    if (m_step)
        m_step(1);
}

bool MediaViewActionHandler::canStepForward() const
{
    return m_canStep && m_canStep(1);
}

void MediaViewActionHandler::previousImageInFolder()
{
    if (m_step)
        m_step(-1);
}

bool MediaViewActionHandler::canStepBackward() const
{
    return m_canStep && m_canStep(-1);
}

void MediaViewActionHandler::videoPlayPause()
{
    runVideoCommand(m_view, &VideoControlsBar::playPause, &VideoView::togglePlayPause);
}

void MediaViewActionHandler::videoFastBackward()
{
    runVideoCommand(m_view, &VideoControlsBar::fastBackward, &VideoView::fastBackward);
}

void MediaViewActionHandler::videoFastForward()
{
    runVideoCommand(m_view, &VideoControlsBar::fastForward, &VideoView::faster);
}

void MediaViewActionHandler::videoSlow()
{
    runVideoCommand(m_view, &VideoControlsBar::slow, &VideoView::slower);
}

void MediaViewActionHandler::videoJumpBackward15()
{
    runVideoCommand(m_view, &VideoControlsBar::jumpBackward15, &VideoView::jumpBackward15);
}

void MediaViewActionHandler::videoJumpForward15()
{
    runVideoCommand(m_view, &VideoControlsBar::jumpForward15, &VideoView::jumpForward15);
}

void MediaViewActionHandler::videoNextFrame()
{
    runVideoCommand(m_view, &VideoControlsBar::nextFrame, &VideoView::nextFrame);
}

void MediaViewActionHandler::videoPreviousFrame()
{
    runVideoCommand(m_view, &VideoControlsBar::prevFrame, &VideoView::previousFrame);
}

void MediaViewActionHandler::videoMute()
{
    runVideoCommand(m_view, &VideoControlsBar::mute, &VideoView::toggleMuted);
}

void MediaViewActionHandler::videoVolumeDown()
{
    runVideoCommand(m_view, &VideoControlsBar::volumeDown, &VideoView::volumeDown);
}

void MediaViewActionHandler::videoVolumeUp()
{
    runVideoCommand(m_view, &VideoControlsBar::volumeUp, &VideoView::volumeUp);
}

bool MediaViewActionHandler::hasVideo() const
{
    return m_view->currentVideoChild() != nullptr;
}
