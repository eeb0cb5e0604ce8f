#pragma once

#include <QPointF>
#include <QRectF>
#include <QSize>
#include <QSizeF>
#include <QTransform>

// Where an image lies in a view: its magnification, its rotation, the scroll position and the
// centring of an image smaller than the view (it stays centred on that axis, the clip view's
// behaviour). Pure geometry, no widget: the scroll view keeps one and draws what it says.
//
// Three coordinate systems:
// - image: pixels of the full-resolution upright image, before the view's rotation;
// - document: the rotated image at the current magnification, in logical (device-independent)
//   pixels, origin at its top left;
// - viewport: logical pixels of the view.
// Magnification is image pixels per device pixel (ZoomRules), so a document is
// rotated size x magnification / devicePixelRatio logical pixels large.
//
// The scroll position is the document point at the viewport's top left on an axis where the
// document is larger than the view, and is kept within the document; on an axis where it is
// smaller the document is centred and the scroll position is 0.
class ZoomState
{
public:
    void setImageSize(QSize imageSize); // full-resolution, upright
    QSize imageSize() const { return m_imageSize; }
    void setRotation(int degrees); // any multiple of 90, kept as 0, 90, 180 or 270
    int rotation() const { return m_rotation; }
    void setViewportSize(QSizeF size);
    QSizeF viewportSize() const { return m_viewport; }
    void setDevicePixelRatio(qreal ratio);
    qreal devicePixelRatio() const { return m_dpr; }

    double magnification() const { return m_magnification; }
    // Sets the magnification (clamped) keeping the image point under `anchor` (viewport
    // coordinates) where it is; without an anchor, about the viewport's centre.
    void setMagnification(double magnification);
    void setMagnification(double magnification, QPointF anchor);
    // The magnification at which the rotated image fits the view.
    double fitMagnification() const;
    // Whether the rotated image at 1.0 fits the view in both directions.
    bool imageFitsView() const;

    // The image turned by the rotation, in image pixels.
    QSizeF rotatedImageSize() const;
    QSizeF documentSize() const;
    // Where the document's top left lies in the viewport (centring included).
    QPointF documentOrigin() const;
    QRectF documentRectInViewport() const { return QRectF(documentOrigin(), documentSize()); }

    QPointF scrollPosition() const { return m_scroll; }
    void setScrollPosition(QPointF position); // clamped to what the document allows
    QPointF maximumScrollPosition() const;
    void scrollBy(QPointF delta) { setScrollPosition(m_scroll + delta); }
    // Puts the document's centre at the viewport's centre.
    void recenter();

    // Mapping between image pixels and viewport points.
    QTransform imageToViewport() const;
    QPointF viewportToImage(QPointF point) const;
    QPointF imageToViewportPoint(QPointF point) const;

    // The visible part of the rotated image, in rotated image pixels (what a file remembers).
    QRectF visibleRect() const;
    // Scrolls so that a remembered visible rectangle's origin is at the viewport's top left.
    void scrollToVisibleOrigin(QPointF rotatedImagePoint);

private:
    QPointF rotatedToDocument(QPointF rotatedImagePoint) const;
    QPointF documentToRotated(QPointF documentPoint) const;
    void clampScroll();

    QSize m_imageSize;
    int m_rotation = 0;
    QSizeF m_viewport;
    qreal m_dpr = 1;
    double m_magnification = 1;
    QPointF m_scroll;
};
