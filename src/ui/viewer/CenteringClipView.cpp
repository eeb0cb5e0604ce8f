#include "ui/viewer/CenteringClipView.h"

#include "core/viewer/ZoomState.h"
#include "ui/viewer/ImageView.h"

#include <QPainter>
#include <QRegion>

CenteringClipView::CenteringClipView(const ZoomState *state, QWidget *parent)
    : QWidget(parent)
    , m_state(state)
    , m_document(new ImageView(state, this))
{
    setAttribute(Qt::WA_OpaquePaintEvent);
    m_document->setAttribute(Qt::WA_TransparentForMouseEvents);
    connect(m_document, &ImageView::placementChanged, this, [this] {
        placeDocument();
        // The background around the document may have changed too.
        update();
    });
}

QRect CenteringClipView::documentGeometry() const
{
    const QRect whole = rect();
    if (m_document->currentImage().isNull() || m_state->imageSize().isEmpty())
        return whole;
    // Whole logical pixels around the document's exact place: the document paints its edge's
    // partly covered pixels with the background itself.
    return m_state->documentRectInViewport().toAlignedRect().intersected(whole);
}

void CenteringClipView::placeDocument()
{
    const QRect geometry = documentGeometry();
    if (geometry != m_document->geometry())
        m_document->setGeometry(geometry);
    // The picture moves inside the document when it scrolls, even where the document stays.
    m_document->update();
}

void CenteringClipView::paintBackground(QPainter &painter, const QRect &exposed) const
{
    // Only around the document: it paints its own place, and filling it twice is a pass over the
    // whole view at every step to the next picture.
    const QRegion around = QRegion(exposed).subtracted(m_document->isVisible() ? m_document->geometry() : QRect());
    for (const QRect &part : around)
        painter.fillRect(part, m_document->backgroundColor());
}
