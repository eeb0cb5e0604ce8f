#include "ui/browser/ThumbnailCellPainter.h"

#include "ui/browser/ThumbnailGridView.h"

#include <QPainter>
#include <QPalette>

#include <algorithm>
#include <cmath>
#include <vector>

namespace {
// A picture's drop shadow: how far it fades out and how far it falls below the picture, in
// points. Together they stay inside the cell's padding, so a shadow never reaches a neighbour.
constexpr qreal shadowBlur = 4;
constexpr qreal shadowDrop = 2;
constexpr int shadowAlpha = 150;
// The thickest outline drawn, as a part of the picture's square: a wider one would leave no
// picture to see.
constexpr int maximumOutlineShare = 8;

// A black square on a transparent tile, fading out over `blur` pixels on every side. The tile
// is cut in nine to draw the shadow of a picture of any size: made once, painting a cell's
// shadow costs a few blits.
QPixmap makeShadowTile(int blur)
{
    const int size = 4 * blur + 1;
    std::vector<float> alpha(size_t(size * size), 0.0f);
    for (int y = blur; y < size - blur; ++y)
        std::fill_n(alpha.begin() + y * size + blur, size - 2 * blur, 1.0f);
    // Three box blurs each way come close to a gaussian of the same reach.
    const int radius = std::max(1, blur / 3);
    std::vector<float> blurred(alpha.size());
    for (int pass = 0; pass < 6; ++pass) {
        const bool horizontal = pass % 2 == 0;
        for (int line = 0; line < size; ++line) {
            for (int i = 0; i < size; ++i) {
                float sum = 0;
                for (int j = std::max(0, i - radius); j <= std::min(size - 1, i + radius); ++j)
                    sum += horizontal ? alpha[size_t(line * size + j)] : alpha[size_t(j * size + line)];
                (horizontal ? blurred[size_t(line * size + i)] : blurred[size_t(i * size + line)]) =
                    sum / float(2 * radius + 1);
            }
        }
        alpha.swap(blurred);
    }
    QImage image(size, size, QImage::Format_ARGB32_Premultiplied);
    for (int y = 0; y < size; ++y) {
        auto *line = reinterpret_cast<QRgb *>(image.scanLine(y));
        for (int x = 0; x < size; ++x)
            line[x] = qRgba(0, 0, 0, int(std::lround(alpha[size_t(y * size + x)] * shadowAlpha)));
    }
    return QPixmap::fromImage(image);
}
} // namespace

int ThumbnailCellPainter::pictureSide(const QRect &cellRect)
{
    return std::max(1, cellRect.width() - 2 * cellPadding);
}

void ThumbnailCellPainter::paint(QPainter &painter, const Cell &cell, ThumbnailGridDelegate &delegate,
                                 const ThumbnailGridAppearance &appearance, const QPalette &palette,
                                 qreal devicePixelRatio, int lineHeight)
{
    const QRect &rect = cell.rect;
    const bool selected = cell.selected;
    const bool focused = cell.focused;
    const QPalette &pal = palette;
    const qreal dpr = devicePixelRatio;
    const int side = pictureSide(rect);
    const QRect pictureArea(rect.left() + cellPadding, rect.top() + cellPadding, side, side);

    painter.setRenderHint(QPainter::Antialiasing, true);
    const bool dropTarget = cell.dropTarget;
    if (selected || dropTarget) {
        QColor back = pal.color(focused ? QPalette::Active : QPalette::Inactive, QPalette::Highlight);
        back.setAlpha(dropTarget ? 110 : (focused ? 70 : 45));
        painter.setPen(Qt::NoPen);
        painter.setBrush(back);
        painter.drawRoundedRect(QRectF(pictureArea).adjusted(-6, -6, 6, 6), 6, 6);
    }
    painter.setRenderHint(QPainter::Antialiasing, false);
    // The outline is drawn inside the square, around a picture made that much smaller.
    const int outline = appearance.outline ? std::clamp(appearance.outlineThickness, 0, side / maximumOutlineShare) : 0;
    const QRect thumbnailArea = pictureArea.adjusted(outline, outline, -outline, -outline);
    QPixmap pixmap = delegate.gridThumbnail(cell.index, int(thumbnailArea.width() * dpr));
    const bool isThumbnail = !pixmap.isNull();
    if (!isThumbnail)
        pixmap = delegate.gridIcon(cell.index, std::min(int(side * dpr), int(128 * dpr)));
    if (!pixmap.isNull()) {
        // The delegate hands pictures made for this cell's size: drawn without resampling.
        const QRect area = isThumbnail ? thumbnailArea : pictureArea;
        const QSize size = (QSizeF(pixmap.size()) / dpr).toSize();
        QRect target(QPoint(0, 0), size);
        target.moveCenter(area.center());
        if (appearance.alignToBottom)
            target.moveBottom(area.bottom());
        pixmap.setDevicePixelRatio(dpr);
        const int mark = delegate.gridMark(cell.index);
        const QRect frame = target.adjusted(-outline, -outline, outline, outline);
        if (isThumbnail && appearance.shadow)
            paintShadow(painter, frame, dpr);
        if (isThumbnail && outline > 0) {
            // Four bands rather than one fill: a picture with transparent parts shows the
            // background through them, not the outline's colour.
            const QColor color = appearance.outlineColor;
            painter.fillRect(QRect(frame.left(), frame.top(), frame.width(), outline), color);
            painter.fillRect(QRect(frame.left(), target.bottom() + 1, frame.width(), outline), color);
            painter.fillRect(QRect(frame.left(), target.top(), outline, target.height()), color);
            painter.fillRect(QRect(target.right() + 1, target.top(), outline, target.height()), color);
        }
        painter.setOpacity(mark == 2 ? 0.35 : 1.0);
        painter.drawPixmap(target.topLeft(), pixmap);
        painter.setOpacity(1.0);
        if (mark != 0) {
            // A dot in the picture's corner: orange for flagged, red with a cross for rejected.
            const QRectF dot(target.right() - 15, target.top() + 4, 12, 12);
            painter.setRenderHint(QPainter::Antialiasing, true);
            painter.setPen(QPen(Qt::white, 1.5));
            painter.setBrush(mark == 1 ? QColor(255, 149, 0) : QColor(220, 40, 40));
            painter.drawEllipse(dot);
            if (mark == 2) {
                painter.drawLine(dot.center() + QPointF(-3, -3), dot.center() + QPointF(3, 3));
                painter.drawLine(dot.center() + QPointF(-3, 3), dot.center() + QPointF(3, -3));
            }
            painter.setRenderHint(QPainter::Antialiasing, false);
        }
        if (const QColor label = delegate.gridLabelColor(cell.index); label.isValid()) {
            // The colour label: a dot in the other top corner, as large as the flag's.
            const QRectF dot(target.left() + 3, target.top() + 4, 12, 12);
            painter.setRenderHint(QPainter::Antialiasing, true);
            painter.setPen(QPen(Qt::white, 1.5));
            painter.setBrush(label);
            painter.drawEllipse(dot);
            painter.setRenderHint(QPainter::Antialiasing, false);
        }
    }

    const QStringList lines = delegate.gridInfoLines(cell.index);
    int y = rect.top() + side + 2 * cellPadding;
    const QRect lineArea(rect.left() + 2, 0, rect.width() - 4, lineHeight);
    QColor secondaryText = appearance.textColor;
    secondaryText.setAlphaF(0.65f);
    for (int i = 0; i < lines.size() && y + lineHeight <= rect.bottom() + 2; ++i) {
        QRect lineRect = lineArea.translated(0, y);
        const QString text = painter.fontMetrics().elidedText(lines[i], Qt::ElideMiddle, lineRect.width() - 8);
        if (i == 0 && selected) {
            const int width = painter.fontMetrics().horizontalAdvance(text) + 10;
            QRect pill(0, lineRect.top(), std::min(width, lineRect.width()), lineHeight);
            pill.moveLeft(lineRect.center().x() - pill.width() / 2);
            painter.setRenderHint(QPainter::Antialiasing, true);
            painter.setPen(Qt::NoPen);
            painter.setBrush(pal.color(focused ? QPalette::Active : QPalette::Inactive, QPalette::Highlight));
            painter.drawRoundedRect(pill, 4, 4);
            painter.setRenderHint(QPainter::Antialiasing, false);
            painter.setPen(pal.color(focused ? QPalette::Active : QPalette::Inactive, QPalette::HighlightedText));
        } else {
            painter.setPen(i == 0 ? appearance.textColor : secondaryText);
        }
        painter.drawText(lineRect, Qt::AlignHCenter | Qt::AlignVCenter, text);
        y += lineHeight;
    }
}

void ThumbnailCellPainter::paintShadow(QPainter &painter, const QRect &frame, qreal dpr)
{
    const int blur = std::max(1, int(std::lround(shadowBlur * dpr))); // device pixels
    if (m_shadowTile.isNull() || m_shadowTile.width() != 4 * blur + 1)
        m_shadowTile = makeShadowTile(blur);
    // The tile's square starts `blur` in from its edge; its corners are `2 * blur` wide.
    const qreal inset = blur / dpr;
    const qreal corner = 2 * inset;
    const QRectF outer = QRectF(frame).adjusted(-inset, -inset, inset, inset).translated(0, shadowDrop);
    const qreal edge = 2.0 * blur; // where the tile's middle row and column are
    const qreal far = edge + 1;
    const auto piece = [&](qreal x, qreal y, qreal w, qreal h, qreal sx, qreal sy, qreal sw, qreal sh) {
        if (w > 0 && h > 0)
            painter.drawPixmap(QRectF(x, y, w, h), m_shadowTile, QRectF(sx, sy, sw, sh));
    };
    const qreal innerWidth = outer.width() - 2 * corner;
    const qreal innerHeight = outer.height() - 2 * corner;
    const qreal right = outer.right() - corner;
    const qreal bottom = outer.bottom() - corner;
    piece(outer.left(), outer.top(), corner, corner, 0, 0, edge, edge);
    piece(right, outer.top(), corner, corner, far, 0, edge, edge);
    piece(outer.left(), bottom, corner, corner, 0, far, edge, edge);
    piece(right, bottom, corner, corner, far, far, edge, edge);
    piece(outer.left() + corner, outer.top(), innerWidth, corner, edge, 0, 1, edge);
    piece(outer.left() + corner, bottom, innerWidth, corner, edge, far, 1, edge);
    piece(outer.left(), outer.top() + corner, corner, innerHeight, 0, edge, edge, 1);
    piece(right, outer.top() + corner, corner, innerHeight, far, edge, edge, 1);
}
