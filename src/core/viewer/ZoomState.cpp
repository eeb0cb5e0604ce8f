#include "core/viewer/ZoomState.h"

#include "core/viewer/ZoomRules.h"

#include <algorithm>
#include <cmath>

void ZoomState::setImageSize(QSize imageSize)
{
    m_imageSize = imageSize;
    clampScroll();
}

void ZoomState::setRotation(int degrees)
{
    m_rotation = ((degrees / 90 * 90) % 360 + 360) % 360;
    clampScroll();
}

void ZoomState::setViewportSize(QSizeF size)
{
    m_viewport = size;
    clampScroll();
}

void ZoomState::setDevicePixelRatio(qreal ratio)
{
    m_dpr = ratio > 0 ? ratio : 1;
    clampScroll();
}

void ZoomState::setMagnification(double magnification)
{
    setMagnification(magnification, QPointF(m_viewport.width() / 2, m_viewport.height() / 2));
}

void ZoomState::setMagnification(double magnification, QPointF anchor)
{
    // The rotated image point under the anchor stays under it: where the document is larger than
    // the view, the scroll position follows; where it is smaller, it is centred anyway.
    const QPointF before = documentToRotated(anchor - documentOrigin());
    m_magnification = ZoomRules::clampMagnification(magnification);
    const QPointF after = rotatedToDocument(before);
    m_scroll = after - anchor;
    clampScroll();
}

double ZoomState::fitMagnification() const
{
    const QSizeF rotated = rotatedImageSize();
    return ZoomRules::fitMagnification(rotated.width(), rotated.height(), m_viewport.width() * m_dpr,
                                       m_viewport.height() * m_dpr);
}

bool ZoomState::imageFitsView() const
{
    const QSizeF rotated = rotatedImageSize();
    return ZoomRules::imageFitsView(rotated.width(), rotated.height(), m_viewport.width() * m_dpr,
                                    m_viewport.height() * m_dpr);
}

QSizeF ZoomState::rotatedImageSize() const
{
    const QSizeF size(m_imageSize);
    return m_rotation % 180 == 0 ? size : size.transposed();
}

QSizeF ZoomState::documentSize() const
{
    return rotatedImageSize() * (m_magnification / m_dpr);
}

QPointF ZoomState::documentOrigin() const
{
    const QSizeF document = documentSize();
    auto axis = [this](double view, double doc, double scroll) {
        const double origin = doc < view ? (view - doc) / 2 : -scroll;
        // On whole device pixels, so that 100 % maps pixels one to one.
        return std::round(origin * m_dpr) / m_dpr;
    };
    return QPointF(axis(m_viewport.width(), document.width(), m_scroll.x()),
                   axis(m_viewport.height(), document.height(), m_scroll.y()));
}

QPointF ZoomState::maximumScrollPosition() const
{
    const QSizeF document = documentSize();
    return QPointF(std::max(0.0, document.width() - m_viewport.width()),
                   std::max(0.0, document.height() - m_viewport.height()));
}

void ZoomState::setScrollPosition(QPointF position)
{
    m_scroll = position;
    clampScroll();
}

void ZoomState::recenter()
{
    const QPointF maximum = maximumScrollPosition();
    m_scroll = QPointF(maximum.x() / 2, maximum.y() / 2);
}

void ZoomState::clampScroll()
{
    const QPointF maximum = maximumScrollPosition();
    m_scroll = QPointF(std::clamp(m_scroll.x(), 0.0, maximum.x()), std::clamp(m_scroll.y(), 0.0, maximum.y()));
}

QTransform ZoomState::imageToViewport() const
{
    const double w = m_imageSize.width();
    const double h = m_imageSize.height();
    QTransform turn;
    switch (m_rotation) {
    case 90: turn = QTransform(0, 1, -1, 0, h, 0); break;
    case 180: turn = QTransform(-1, 0, 0, -1, w, h); break;
    case 270: turn = QTransform(0, -1, 1, 0, 0, w); break;
    default: break;
    }
    const double scale = m_magnification / m_dpr;
    const QPointF origin = documentOrigin();
    return turn * QTransform::fromScale(scale, scale) * QTransform::fromTranslate(origin.x(), origin.y());
}

QPointF ZoomState::viewportToImage(QPointF point) const
{
    return imageToViewport().inverted().map(point);
}

QPointF ZoomState::imageToViewportPoint(QPointF point) const
{
    return imageToViewport().map(point);
}

QRectF ZoomState::visibleRect() const
{
    const QRectF view(QPointF(0, 0), m_viewport);
    const QRectF shown = view.intersected(documentRectInViewport());
    if (shown.isEmpty())
        return {};
    const QPointF origin = documentOrigin();
    return QRectF(documentToRotated(shown.topLeft() - origin), documentToRotated(shown.bottomRight() - origin));
}

void ZoomState::scrollToVisibleOrigin(QPointF rotatedImagePoint)
{
    setScrollPosition(rotatedToDocument(rotatedImagePoint));
}

QPointF ZoomState::rotatedToDocument(QPointF rotatedImagePoint) const
{
    return rotatedImagePoint * (m_magnification / m_dpr);
}

QPointF ZoomState::documentToRotated(QPointF documentPoint) const
{
    return documentPoint * (m_dpr / m_magnification);
}
