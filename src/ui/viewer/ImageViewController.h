#pragma once

#include "core/viewer/ImageViewDataSource.h"
#include "core/viewer/Stickiness.h"

#include <QColor>
#include <QPointF>
#include <QVariantMap>
#include <QWidget>

#include <optional>

class ImageView;
class ZoomingScrollView;

// One image shown at a chosen scale in a scrollable, zoomable view: the image child of the media
// view. It owns a ZoomingScrollView whose viewport is the ImageView that paints; the picture and
// the file's view state come from an ImageViewDataSource, which it asks for the picture the
// view needs (progressively: preview, a decode at the shown size, full resolution once zoomed
// past it).
//
// Magnification is image pixels per device pixel: at 100 % one pixel of the image covers one
// pixel of the screen, also on high-DPI screens.
//
// Life of a file:
// 1. The owner sets loadingImage and hands over the data source (setDataSource()).
// 2. When the data source has a picture to show (or an error to say), "image ready" runs: the
//    file's stickiness decides between its zoom level and fitting, a remembered scroll position
//    is restored (restoreScrollPositions), loadingImage clears and imageReady() is emitted.
// 3. While shown, every change of the view's size runs the fit update (sticky files follow it),
//    zoom commands fix a zoom level, a double click toggles between 100 % and fitted.
// 4. Before leaving, the owner calls rememberState(): the data source takes the visible
//    rectangle and the magnification.
//
// Zoom commands are ignored while loadingImage is set. Magnification changes are animated
// (150 ms) unless disableAnimation is set. Every change of currentlySticky is reported
// (currentlyStickyChanged) and every scale change too (scaleChanged).
class ImageViewController : public QWidget
{
    Q_OBJECT

public:
    explicit ImageViewController(QWidget *parent = nullptr);
    ~ImageViewController() override;

    ZoomingScrollView *scrollView() const { return m_scrollView; }
    ImageView *imageView() const { return m_imageView; }

    // The file shown; null shows nothing. Keeps the picture on screen until the new one is ready.
    void setDataSource(const ImageViewDataSourcePtr &dataSource);
    const ImageViewDataSourcePtr &dataSource() const { return m_dataSource; }

    QColor backgroundColor() const;
    void setBackgroundColor(const QColor &color);
    bool disableAnimation() const;
    void setDisableAnimation(bool disable);
    // Whether image ready scrolls back to a file's remembered visible rectangle.
    bool restoreScrollPositions() const { return m_restoreScrollPositions; }
    void setRestoreScrollPositions(bool restore) { m_restoreScrollPositions = restore; }
    // Whether the view is fitted now (its file's stickiness is applied).
    bool currentlySticky() const { return m_currentlySticky; }
    // Frame changes are not followed while set (a window resizing itself around the image);
    // image ready reports imageReady() and clears it.
    bool ignoreFrameUpdates() const { return m_ignoreFrameUpdates; }
    void setIgnoreFrameUpdates(bool ignore) { m_ignoreFrameUpdates = ignore; }
    // True while a new image is being put in place; zoom commands are ignored meanwhile.
    bool loadingImage() const { return m_loadingImage; }
    void setLoadingImage(bool loading);

    // The magnification shown (or being animated to).
    double magnification() const;
    // The magnification that fits the image into the view.
    double fitMagnification() const;

    // The visible rectangle and magnification into the data source (before leaving the file).
    void rememberState();

public Q_SLOTS:
    // ×1.25 and ×0.75 of the current magnification; both through setZoom().
    void zoomIn();
    void zoomOut();
    // A fixed zoom level (1.0 = 100 %): stickiness none, not fitted, animated.
    void setZoom(double zoomLevel);
    // Fits the image into the view from now on (stickiness always), animated.
    void scaleToFit();
    // Asks the owner to fit its window to the image (fitToScreen()).
    void requestFitToScreen();
    // Turns the view of the image (not the file) by 90° steps.
    void rotateClockwise();
    void rotateCounterclockwise();
    void rotate180();
    // The keyboard's image scrolling: a tenth of the view per press.
    void moveUp();
    void moveDown();
    void moveLeft();
    void moveRight();
    void moveNorthWest();
    void moveNorthEast();
    void moveSouthWest();
    void moveSouthEast();
    void recenter();
    // A double click at `viewportPoint`: 100 % about the point, or fitted (ZoomRules).
    void doubleClickAt(QPointF viewportPoint);
    // The end of a live magnification (a pinch): it becomes the file's fixed zoom level.
    void endLiveMagnification(double magnification);
    // A zoom-value notification: "ZoomValue" (a number) as the end of a live magnification,
    // then scaleChanged(false). Without the key or with a non-number, nothing happens.
    void handleZoomValue(const QVariantMap &userInfo);

Q_SIGNALS:
    // The scale changed; `sticky` is whether the view is fitted.
    void scaleChanged(bool sticky);
    // The data source's picture (or its error) has been shown for the first time.
    void imageReady();
    // The owner should fit its window to the image.
    void fitToScreen();
    void currentlyStickyChanged(bool sticky);
    void loadingImageChanged(bool loading);

protected:
    void showEvent(QShowEvent *event) override;

private:
    void dataSourceChanged();
    void runImageReady();
    void fitUpdate(bool animated);
    void setCurrentlySticky(bool sticky);
    void setZoomAt(double zoomLevel, std::optional<QPointF> anchor);
    void requestNeededPicture();
    // Puts the data source's picture and texts in the view; with `followSize`, a changed image
    // size refits.
    void showPicture(bool followSize);
    void move(int dx, int dy);
    void rotateBy(int degrees);
    void viewportResized();

    ZoomingScrollView *m_scrollView = nullptr;
    ImageView *m_imageView = nullptr;
    ImageViewDataSourcePtr m_dataSource;
    QMetaObject::Connection m_dataSourceConnection;
    bool m_restoreScrollPositions = true;
    bool m_currentlySticky = false;
    bool m_ignoreFrameUpdates = false;
    bool m_loadingImage = false;
    // Image ready has run for the current data source.
    bool m_ready = false;
};
