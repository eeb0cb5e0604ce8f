#pragma once

#include "core/viewer/ZoomState.h"

#include <QAbstractScrollArea>
#include <QPointF>
#include <QPointer>

#include <optional>

class CenteringClipView;
class ImageView;
class QVariantAnimation;

// The scroll view of an image viewer: no frame, scroll bars that track the position but stay
// hidden, a CenteringClipView as its viewport and the ImageView as the document the clip view
// places. It keeps the view's geometry (ZoomState: magnification between 0.001 and 100, rotation,
// scroll position, an image smaller than the view kept centred) and turns the scroll bars, drags
// and keys into scroll positions.
//
// Magnification changes are animated over 150 ms unless disableAnimation is set; the image point
// under the anchor stays where it is throughout. A drag with the left button pans (a press
// without movement still reaches the owner as a click); a double click, a pinch and ctrl+wheel
// are reported to the owner, which decides.
class ZoomingScrollView : public QAbstractScrollArea
{
    Q_OBJECT

public:
    // 150 ms: long enough to see where the zoom goes, short enough never to wait for it.
    static constexpr int animationMilliseconds = 150;

    explicit ZoomingScrollView(QWidget *parent = nullptr);
    ~ZoomingScrollView() override;

    CenteringClipView *clipView() const { return m_clipView; }
    ImageView *imageView() const { return m_imageView; }
    const ZoomState &state() const { return m_state; }

    bool disableAnimation() const { return m_disableAnimation; }
    void setDisableAnimation(bool disable) { m_disableAnimation = disable; }

    void setImageSize(QSize imageSize);
    void setRotation(int degrees);

    // The magnification shown, or the one an animation is heading for.
    double magnification() const;
    bool isAnimating() const;
    // Sets the magnification (clamped), animated when asked and animation is on, keeping the
    // image point under `anchor` (viewport coordinates; the centre without one) in place.
    void setMagnification(double magnification, bool animated, std::optional<QPointF> anchor = {});
    void stopAnimation();

    void scrollBy(QPointF delta);
    void setScrollPosition(QPointF position);
    void recenter();
    void scrollToVisibleOrigin(QPointF rotatedImagePoint);
    QRectF visibleRect() const { return m_state.visibleRect(); }

    // The viewport's size in device pixels.
    QSize viewportDeviceSize() const;

Q_SIGNALS:
    // The viewport's size changed (the fit update follows it).
    void frameChanged();
    // The shown magnification changed (also at every animation step).
    void magnificationChanged(double magnification);
    void doubleClicked(QPointF viewportPoint);
    // A pinch has ended at this magnification (shown live while it went on).
    void liveMagnificationEnded(double magnification);
    // Ctrl+wheel: the owner zooms by `factor` about `anchor` (viewport coordinates).
    void zoomRequested(double factor, QPointF anchor);
    // The scroll position changed (by a drag, the scroll bars or a key).
    void scrolled();

protected:
    void resizeEvent(QResizeEvent *event) override;
    void showEvent(QShowEvent *event) override;
    void paintEvent(QPaintEvent *event) override;
    void scrollContentsBy(int dx, int dy) override;
    bool viewportEvent(QEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void mouseDoubleClickEvent(QMouseEvent *event) override;
    void wheelEvent(QWheelEvent *event) override;

private:
    void applyMagnification(double magnification, QPointF anchor);
    void syncScrollBars();
    void syncViewportSize();

    CenteringClipView *m_clipView = nullptr;
    ImageView *m_imageView = nullptr;
    ZoomState m_state;
    bool m_disableAnimation = false;
    QVariantAnimation *m_animation = nullptr;
    double m_animationTarget = 1;
    QPointF m_animationAnchor;
    bool m_syncingScrollBars = false;
    std::optional<QPointF> m_dragStart;
    QPointF m_lastDragPoint;
    bool m_liveMagnifying = false;
};
