#include "ui/viewer/ImageView.h"

#include <QPaintEvent>
#include <QPainter>

#include <cmath>

ImageView::ImageView(const ZoomState *state, QWidget *parent)
    : QWidget(parent)
    , m_state(state)
{
    setAttribute(Qt::WA_OpaquePaintEvent);
}

void ImageView::setBackgroundColor(const QColor &color)
{
    m_backgroundColor = color;
    update();
}

void ImageView::setCurrentImage(const QImage &image)
{
    if (image.cacheKey() == m_image.cacheKey())
        return;
    m_image = image;
    update();
}

void ImageView::setMessage(const QString &message)
{
    if (message == m_message)
        return;
    m_message = message;
    update();
}

void ImageView::setNotice(const QString &notice)
{
    if (notice == m_notice)
        return;
    m_notice = notice;
    update();
}

void ImageView::paintEvent(QPaintEvent *event)
{
    QPainter painter(this);
    paintContent(painter, event->rect());
}

void ImageView::paintContent(QPainter &painter, const QRect &exposed) const
{
    painter.fillRect(exposed, m_backgroundColor);
    const QSize imageSize = m_state->imageSize();
    if (!m_image.isNull() && !imageSize.isEmpty()) {
        painter.save();
        // The picture stands for the whole image, whatever its own size.
        const double toImageX = double(imageSize.width()) / m_image.width();
        const double toImageY = double(imageSize.height()) / m_image.height();
        const QTransform transform = QTransform::fromScale(toImageX, toImageY) * m_state->imageToViewport();
        // Picture pixels per device pixel of the target.
        const double deviceScale =
            toImageX * m_state->magnification() * painter.device()->devicePixelRatioF() / m_state->devicePixelRatio();
        const bool exact = std::abs(deviceScale - 1.0) < 1e-9;
        // Reduced pictures are smoothed at any scale (they stand in for finer ones); the whole
        // image is smoothed when made smaller and shows its pixels as squares when made larger.
        const bool reduced = m_image.width() < imageSize.width();
        painter.setRenderHint(QPainter::SmoothPixmapTransform, !exact && (reduced || deviceScale < 1.0));
        painter.setClipRect(exposed);
        painter.setTransform(transform, true);
        painter.drawImage(QPointF(0, 0), m_image);
        painter.restore();
    }
    // Text in a colour that stands out from the background.
    const QColor ink = m_backgroundColor.lightnessF() > 0.5 ? QColor(Qt::black) : QColor(Qt::white);
    const QRectF view(QPointF(0, 0), m_state->viewportSize());
    if (!m_message.isEmpty()) {
        painter.setPen(ink);
        painter.drawText(view.adjusted(24, 24, -24, -24), Qt::AlignCenter | Qt::TextWordWrap, m_message);
    }
    if (!m_notice.isEmpty() && !m_image.isNull()) {
        const QFontMetrics metrics(painter.font());
        const double height = metrics.height() * 1.8;
        const QRectF band(view.left(), view.bottom() - height, view.width(), height);
        painter.fillRect(band, QColor(0, 0, 0, 160));
        painter.setPen(Qt::white);
        painter.drawText(band, Qt::AlignCenter, m_notice);
    }
}
