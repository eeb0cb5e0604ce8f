#pragma once

#include "ui/common/Command.h"

#include <QObject>

#include <functional>

class MediaViewController;

// The commands of a media view, bound to the command registry: fitting and zooming, rotating,
// scrolling the image by keys, stepping to the next or previous file, and the video player's
// commands. The window around the view (main window, quick view, image window, slideshow) runs
// them for its menus and keys.
//
// Image commands are enabled while an image is shown and loaded; video commands while a video
// is. Stepping is the window's: it installs what the next and previous files are.
class MediaViewActionHandler : public QObject
{
    Q_OBJECT
public:
    static constexpr CommandOwner commandOwner = CommandOwner::viewer;

    explicit MediaViewActionHandler(MediaViewController *view);

    // What stepping by `step` (+1 next, -1 previous) does, and whether it can; without it the
    // step commands are disabled.
    void setStepper(std::function<void(int step)> step, std::function<bool(int step)> canStep);
    // Whether the window can take the image's size (an image window); fitToScreen is disabled
    // otherwise.
    void setFitsWindowToImage(bool fits) { m_fitsWindowToImage = fits; }

    // Scaling.
    void scaleToFit();
    CommandState scaleToFitState() const;
    void fitToScreen();
    bool canFitToScreen() const;
    void zoomTo200Percent();
    void zoomTo100Percent();
    void zoomTo50Percent();
    void zoomIn();
    void zoomOut();
    bool canChangeImage() const;
    // Rotation of the view only (the file is not changed).
    void rotate180();
    void rotateClockwise();
    void rotateCounterclockwise();
    // Keyboard scrolling of a zoomed image.
    void moveImageLeft();
    void moveImageRight();
    void moveImageUp();
    void moveImageDown();
    void moveImageUpLeft();
    void moveImageUpRight();
    void moveImageDownLeft();
    void moveImageDownRight();
    void recenterImage();
    // Stepping through the window's files.
    void nextImageInFolder();
    bool canStepForward() const;
    void previousImageInFolder();
    bool canStepBackward() const;
    // The video player.
    void videoPlayPause();
    void videoFastBackward();
    void videoFastForward();
    void videoSlow();
    void videoJumpBackward15();
    void videoJumpForward15();
    void videoNextFrame();
    void videoPreviousFrame();
    void videoMute();
    void videoVolumeDown();
    void videoVolumeUp();
    bool hasVideo() const;

private:
    MediaViewController *m_view;
    std::function<void(int)> m_step;
    std::function<bool(int)> m_canStep;
    bool m_fitsWindowToImage = false;
};
