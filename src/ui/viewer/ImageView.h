#pragma once

#include "core/viewer/ZoomState.h"

#include <QColor>
#include <QImage>
#include <QString>
#include <QWidget>

// Paints a viewer's picture: the viewport of a ZoomingScrollView. The picture may be smaller than
// the image it stands for (a preview or a reduced decode); it is drawn over the image's whole
// place so that better pictures replace it without a jump. Only the visible part is drawn, turned
// by the view's rotation. At 100 % on a whole device pixel the picture's pixels map one to one onto
// the screen's, unfiltered; smaller scales are filtered smoothly, larger ones show pixels as
// squares.
//
// A file that cannot be shown says why in the middle of the view; a remark on a shown picture
// (it decoded only in part) is shown along the bottom edge.
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

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    const ZoomState *m_state;
    QColor m_backgroundColor = Qt::black;
    QImage m_image;
    QString m_message;
    QString m_notice;
};
