#pragma once

#include "core/model/PXFileForward.h"
#include "core/settings/SettingsValueSets.h"
#include "core/viewer/VideoState.h"

#include <QColor>
#include <QImage>
#include <QList>
#include <QPointer>
#include <QWidget>

#include <array>
#include <memory>

class ImageViewController;
class ImageViewDataSource;
class ImageViewDataSourceCache;
class MediaViewActionHandler;
class QLabel;
class QVariantAnimation;
class VideoView;
class ZQFilesSubscription;
struct ZQFileEvent;

// How a media view shows files: the scaling new files start with, whether the previous file's
// zoom carries over, the cross-fade, the background, and how videos start. The embedded viewer,
// the quick view, image windows and slideshows each fill it from their own settings.
struct MediaViewSettings
{
    ImageDisplayScaling defaultScalingMode = ImageDisplayScaling::shrinkToFit;
    int defaultScalingPercentage = 100; // with `percentage`
    bool retainScalingFromPreviousFile = false;
    bool restoreScrollPositions = true;
    bool disableAnimation = false;
    double transitionDuration = 0.2; // seconds; 0 switches at once
    QColor backgroundColor = Qt::black;
    bool autoplayVideo = true;
    bool muteVideo = false;

    bool operator==(const MediaViewSettings &) const = default;
};

// Shows one file at a time, image or video: the one viewer used in the main window, the quick
// view, image windows and slideshows.
//
// It has two image children and two video children. A new file goes to the child of its kind
// that is not current, so the old picture stays on screen until the new one is ready; then the
// two cross-fade (`transitionDuration`) and the new child becomes current. Each transition has an
// id; showing another file cancels the running one. The view state of every file shown
// (`ImageViewDataSource`: zoom, stickiness, scroll position, rotation) is kept by file in a
// cache, so returning to a file restores how it was seen; new files are seeded from the default
// scaling, or from the previous file with `retainScalingFromPreviousFile`.
//
// Every file shown is watched: a file changed on disk is loaded again in place (keeping its zoom),
// a file deleted or moved away is replaced by a message saying so. `prefetch()` decodes the files
// the user is likely to step to next, so that stepping through a folder shows each picture at
// once. GUI thread only.
class MediaViewController : public QWidget
{
    Q_OBJECT
public:
    explicit MediaViewController(QWidget *parent = nullptr);
    ~MediaViewController() override;

    void setSettings(const MediaViewSettings &settings);
    const MediaViewSettings &settings() const { return m_settings; }

    // Shows `file`; null shows nothing, or the empty text when one is set. Showing the file already shown keeps its
    // zoom and position. A file that is neither an image nor a playable video shows its name and kind. `thumbnail`
    // (upright; the grid's picture) is shown until a better picture is decoded.
    void showFile(const PXFilePtr &file, const QImage &thumbnail = {});
    const PXFilePtr &currentFile() const { return m_currentFile; }
    // What the view says while it has no file (the quick view before anything is selected).
    void setEmptyText(const QString &text) { m_emptyText = text; }
    // Decodes these files ahead (the next and previous of the current one), most likely first;
    // what was asked before and is not in the list is no longer wanted.
    void prefetch(const QList<PXFilePtr> &files);

    // The child that shows the current file (null while nothing is shown).
    ImageViewController *currentImageChild() const;
    VideoView *currentVideoChild() const;
    bool isShowingImage() const { return currentImageChild() != nullptr; }
    bool isShowingVideo() const { return currentVideoChild() != nullptr; }
    // The image child that is loading the next file before the switch; null when none waits.
    ImageViewController *waitingForLoadingChild() const;
    // The running transition, 0 when none runs.
    quint64 animationID() const { return m_animationID; }
    // The view state of `file`, null when it was never shown (or has been trimmed away).
    std::shared_ptr<ImageViewDataSource> dataSource(const PXFilePtr &file) const;

    VideoState videoState() const { return m_videoState; }
    // Whether the current image is fitted to the view (its stickiness is in effect).
    bool currentlySticky() const { return m_currentlySticky; }
    // What the view says in place of a picture (a deleted file, a file that cannot be read).
    QString message() const;

    // The viewer's commands (also through the action handler, for menus and hotkeys). The image
    // commands do nothing without a current image or while it loads.
    bool canChangeImage() const;
    void zoomIn();
    void zoomOut();
    void zoomTo(double magnification);
    void scaleToFit();
    // Asks the window around the view to take the image's size (fitToScreenRequested).
    void fitToScreen();
    void rotate(int degrees); // multiples of 90, clockwise
    // Scrolls the image by a step in a direction (-1, 0, 1 on each axis); (0, 0) centres it.
    void moveImage(int dx, int dy);

    MediaViewActionHandler *actionHandler() const { return m_actionHandler; }

protected:
    void resizeEvent(QResizeEvent *event) override;

Q_SIGNALS:
    // The switch to `file` happened (its child is current and shows it).
    void fileShown(const PXFilePtr &file);
    void scaleChanged(bool sticky);
    void imageReady();
    void fitToScreenRequested(QSize imageSize);
    void videoStateChanged(VideoState state);
    // Something the viewer's commands depend on changed (a new file, a zoom, a video state).
    void commandsChanged();

private:
    void setCurrentlySticky(bool sticky);
    void setVideoState(VideoState state);
    void rememberCurrentState();
    ImageViewController *otherImageChild() const;
    VideoView *otherVideoChild();
    void showImage(const PXFilePtr &file, const QImage &thumbnail);
    void showVideo(const PXFilePtr &file);
    void imageChildReady(ImageViewController *child);
    void switchTo(QWidget *child);
    void finishTransition();
    void showMessage(const QString &text);
    void filesChanged(const QList<ZQFileEvent> &events);
    void reloadCurrentFile();
    QSize neededPixels() const;

    MediaViewSettings m_settings;
    std::array<ImageViewController *, 2> m_imageChildren{};
    std::array<VideoView *, 2> m_videoChildren{}; // made with the first video
    QLabel *m_messageView;
    QString m_emptyText;
    QVariantAnimation *m_fade;
    QWidget *m_currentChild = nullptr;
    QPointer<QWidget> m_fadingOutChild; // the child left, shown under the new one while it fades in
    QList<std::shared_ptr<ImageViewDataSource>> m_prefetched;
    QPointer<ImageViewController> m_waitingForLoadingChild;
    PXFilePtr m_currentFile;
    std::unique_ptr<ImageViewDataSourceCache> m_dataByFile;
    ZQFilesSubscription *m_filesSubscription;
    MediaViewActionHandler *m_actionHandler;
    quint64 m_animationID = 0;
    quint64 m_nextAnimationID = 0;
    VideoState m_videoState = VideoState::noVideo;
    bool m_currentlySticky = false;
};
