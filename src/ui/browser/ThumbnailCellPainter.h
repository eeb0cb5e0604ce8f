#pragma once

#include <QPixmap>
#include <QRect>

class QPainter;
class QPalette;
class ThumbnailGridDelegate;
struct ThumbnailGridAppearance;

// Paints one cell of the thumbnail grid: the selection behind the picture, the picture with its
// shadow, outline and flag mark, and the information lines under it. Keeps the shadow tile, made
// once for the current device pixel ratio, so a cell's shadow costs a few blits.
class ThumbnailCellPainter
{
public:
    // Padding between a cell's edge and its picture.
    static constexpr int cellPadding = 10;

    struct Cell
    {
        int index = -1;
        QRect rect; // viewport coordinates
        bool selected = false;
        bool focused = false; // the grid has the keyboard focus
        bool dropTarget = false;
    };

    // The side of the square a cell's picture is drawn in.
    static int pictureSide(const QRect &cellRect);

    void paint(QPainter &painter, const Cell &cell, ThumbnailGridDelegate &delegate,
               const ThumbnailGridAppearance &appearance, const QPalette &palette, qreal devicePixelRatio,
               int lineHeight);

private:
    void paintShadow(QPainter &painter, const QRect &frame, qreal devicePixelRatio);

    QPixmap m_shadowTile;
};
