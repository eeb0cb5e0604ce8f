#include "ui/browser/ThumbnailRubberBand.h"

#include "ui/browser/ThumbnailGridLayout.h"

#include <QRubberBand>

ThumbnailRubberBand::ThumbnailRubberBand(QWidget *viewport)
    : m_viewport(viewport)
{ }

bool ThumbnailRubberBand::isActive() const
{
    return m_band && m_band->isVisible();
}

void ThumbnailRubberBand::start(QPoint origin, QPoint scrollOrigin, const ThumbnailGridSelection &selection)
{
    m_origin = origin;
    m_selectionBefore = selection;
    if (!m_band)
        m_band = new QRubberBand(QRubberBand::Rectangle, m_viewport);
    m_band->setGeometry(QRect(origin - scrollOrigin, QSize()));
    m_band->show();
}

int ThumbnailRubberBand::stretch(QPoint corner, QPoint scrollOrigin, const ThumbnailGridLayout &layout,
                                 ThumbnailGridSelection &selection)
{
    const QRect band = QRect(m_origin, corner).normalized();
    m_band->setGeometry(band.translated(-scrollOrigin));
    selection = m_selectionBefore;
    int added = -1;
    const auto [first, last] = layout.itemsInRect(band);
    for (int index = first; index < last; ++index) {
        if (layout.itemRect(index).intersects(band) && selection.set(index, true))
            added = index;
    }
    return added;
}

void ThumbnailRubberBand::finish()
{
    m_band->hide();
    m_selectionBefore = {};
}
