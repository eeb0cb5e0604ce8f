#include "ui/viewer/ImageView.h"

#include "core/app/Dispatch.h"

#include <QPaintEvent>
#include <QPainter>
#include <QPointer>

#include <cmath>

ImageView::ImageView(const ZoomState *state, QWidget *parent)
    : QWidget(parent)
    , m_state(state)
{
    setAttribute(Qt::WA_OpaquePaintEvent);
}

void ImageView::setBackgroundColor(const QColor &color)
{
    if (color == m_backgroundColor)
        return;
    m_backgroundColor = color;
    update();
    Q_EMIT placementChanged();
}

void ImageView::setCurrentImage(const QImage &image)
{
    if (image.cacheKey() == m_image.cacheKey())
        return;
    const bool hadPicture = !m_image.isNull();
    m_image = image;
    m_reduced = {};
    m_reducedLevel = 0;
    m_requestedLevel = 0;
    update();
    if (hadPicture != !m_image.isNull())
        Q_EMIT placementChanged();
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
    // The state's geometry is the clip view's: this view paints in its coordinates.
    QPainter painter(this);
    painter.translate(-pos());
    paint(painter, event->rect().translated(pos()));
}

void ImageView::paint(QPainter &painter, const QRect &exposed)
{
    const int level = levelWanted(painter.device()->devicePixelRatioF());
    if (level > 0 && level != m_reducedLevel && level != m_requestedLevel)
        requestReduced(level);
    paintContent(painter, exposed);
}

double ImageView::deviceScale(qreal ratio) const
{
    if (m_image.isNull() || m_state->imageSize().isEmpty())
        return 1.0;
    const double toImage = double(m_state->imageSize().width()) / m_image.width();
    return toImage * m_state->magnification() * ratio / m_state->devicePixelRatio();
}

int ImageView::levelWanted(qreal ratio) const
{
    int level = 0;
    // Halved while the copy would still be drawn at less than half its size; never below a pixel.
    for (double scale = deviceScale(ratio);
         scale < 0.5 && (m_image.width() >> (level + 1)) > 0 && (m_image.height() >> (level + 1)) > 0; scale *= 2)
        ++level;
    return level;
}

void ImageView::requestReduced(int level)
{
    m_requestedLevel = level;
    const QImage picture = m_image;
    const QPointer<ImageView> self(this);
    runOnPool(QStringLiteral("Image Viewer"), [self, picture, level] {
        QImage reduced = picture;
        // Halving with smooth filtering averages each 2 x 2 block: no detail is skipped.
        for (int i = 0; i < level; ++i)
            reduced = reduced.scaled(qMax(1, reduced.width() / 2), qMax(1, reduced.height() / 2), Qt::IgnoreAspectRatio,
                                     Qt::SmoothTransformation);
        postToGui([self, picture, reduced, level] {
            if (!self || self->m_image.cacheKey() != picture.cacheKey() || self->m_requestedLevel != level)
                return;
            self->m_reduced = reduced;
            self->m_reducedLevel = level;
            self->update();
        });
    });
}

void ImageView::paintContent(QPainter &painter, const QRect &exposed) const
{
    painter.fillRect(exposed, m_backgroundColor);
    const QSize imageSize = m_state->imageSize();
    if (!m_image.isNull() && !imageSize.isEmpty()) {
        painter.save();
        // A halved copy when one is there and not halved more than this scale allows.
        const qreal ratio = painter.device()->devicePixelRatioF();
        const QImage &picture = !m_reduced.isNull() && m_reducedLevel <= levelWanted(ratio) ? m_reduced : m_image;
        // The picture stands for the whole image, whatever its own size.
        const double toImageX = double(imageSize.width()) / picture.width();
        const double toImageY = double(imageSize.height()) / picture.height();
        const QTransform transform = QTransform::fromScale(toImageX, toImageY) * m_state->imageToViewport();
        // Device pixels per picture pixel.
        const double scale = toImageX * m_state->magnification() * ratio / m_state->devicePixelRatio();
        const bool exact = std::abs(scale - 1.0) < 1e-9;
        // Reduced pictures are smoothed at any scale (they stand in for finer ones); the whole
        // image is smoothed when made smaller and shows its pixels as squares when made larger.
        const bool reduced = picture.width() < imageSize.width();
        painter.setRenderHint(QPainter::SmoothPixmapTransform, !exact && (reduced || scale < 1.0));
        painter.setClipRect(exposed);
        painter.setTransform(transform, true);
        painter.drawImage(QPointF(0, 0), picture);
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
        const QRectF shown = view.intersected(m_state->documentRectInViewport());
        const QRectF band(shown.left(), shown.bottom() - height, shown.width(), height);
        painter.fillRect(band, QColor(0, 0, 0, 160));
        painter.setPen(Qt::white);
        painter.drawText(band, Qt::AlignCenter, m_notice);
    }
}
