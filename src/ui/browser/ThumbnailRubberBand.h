#pragma once

#include "ui/browser/ThumbnailGridSelection.h"

#include <QPoint>

class QRubberBand;
class QWidget;
class ThumbnailGridLayout;

// The rectangle dragged over the grid's background. While it is shown, the selection is the one
// it started from plus every item whose cell it meets. Positions are in content coordinates; the
// band is drawn in the viewport, made on first use.
class ThumbnailRubberBand
{
public:
    explicit ThumbnailRubberBand(QWidget *viewport);

    bool isActive() const;
    // Shows an empty band at `origin` over the `selection` it adds to.
    void start(QPoint origin, QPoint scrollOrigin, const ThumbnailGridSelection &selection);
    // Stretches the band to `corner` and makes `selection` the starting one plus the items it
    // meets. Answers the last item it added, or -1.
    int stretch(QPoint corner, QPoint scrollOrigin, const ThumbnailGridLayout &layout,
                ThumbnailGridSelection &selection);
    void finish();

private:
    QWidget *m_viewport;
    QRubberBand *m_band = nullptr;
    QPoint m_origin;
    ThumbnailGridSelection m_selectionBefore;
};
