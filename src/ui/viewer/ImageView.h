#pragma once

#include "core/viewer/ZoomState.h"

#include <QColor>
#include <QImage>
#include <QString>
#include <QWidget>

// Paints a viewer's picture: the document of a ZoomingScrollView, placed by its clip view
// (CenteringClipView) over the part of the image in view. It paints in the clip view's
// coordinates, shifted by its own position, so that the state's geometry holds for it unchanged;
// alone (a test's painter) it paints the whole view. The picture may be smaller than
// the image it stands for (a preview or a reduced decode); it is drawn over the image's whole
// place so that better pictures replace it without a jump. Only the visible part is drawn, turned
// by the view's rotation. At 100 % on a whole device pixel the picture's pixels map one to one onto
// the screen's, unfiltered; smaller scales are filtered smoothly, larger ones show pixels as
// squares. A picture shown at less than half its size (the whole image at the fit after a zoom)
// is drawn from a copy halved as often as needed, made on a worker, so that fine detail does not
// shimmer; the picture itself is drawn until the copy is there.
//
// A file that cannot be shown says why in the middle of the view; a remark on a shown picture
// (it decoded only in part) is shown along the bottom edge of the picture's visible part.
class ImageView : public QWidget
{
    Q_OBJECT

public:
    explicit ImageView(const ZoomState *state, QWidget *parent = nullptr);

    QColor backgroundColor() const { return m_backgroundColor; }
    void setBackgroundColor(const QColor &color);

    // The picture shown (upright, before rotation) and the text said in place of or over it.
    QImage currentImage() const { return m_image; }
    void setCurrentImage(const QImage &image);
    QString message() const { return m_message; }
    void setMessage(const QString &message);
    QString notice() const { return m_notice; }
    void setNotice(const QString &notice);

    // Draws what the view shows into `painter` (whose device may have another pixel ratio than
    // the screen's: what a test renders at 2x is what a 2x screen shows).
    void paintContent(QPainter &painter, const QRect &exposed) const;
    // As paintContent(), asking first for the halved copy the scale calls for.
    void paint(QPainter &painter, const QRect &exposed);

    // How often the copy drawn in place of the picture is halved (0: the picture itself).
    int reducedLevel() const { return m_reduced.isNull() ? 0 : m_reducedLevel; }

Q_SIGNALS:
    // What decides where the clip view puts this view changed: a picture came or went, or the
    // background around it changed.
    void placementChanged();

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    // Screen pixels per picture pixel, on a device of `ratio`.
    double deviceScale(qreal ratio) const;
    // How often to halve the picture for the scale now shown.
    int levelWanted(qreal ratio) const;
    void requestReduced(int level);

    const ZoomState *m_state;
    QColor m_backgroundColor = Qt::black;
    QImage m_image;
    QString m_message;
    QString m_notice;
    QImage m_reduced;
    int m_reducedLevel = 0;
    int m_requestedLevel = 0;
};
