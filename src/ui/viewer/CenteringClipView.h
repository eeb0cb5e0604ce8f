#pragma once

#include <QWidget>

class ImageView;
class QPainter;
class ZoomState;

// The clip view of a ZoomingScrollView (its viewport): the window through which the document, an
// ImageView, is seen. It places the document where the view's ZoomState says the image lies:
// centred on an axis where the image is smaller than the view, moved by the scroll position on
// one where it is larger. The document widget covers only the part of the document that is in
// view, so that it is never larger than the view however far the image is zoomed; the clip view
// shows the background around it. A document with no picture (nothing loaded yet, or only a
// message saying why) is given the whole view, so that its text is centred in the view.
//
// The document takes no mouse events: presses, drags and the wheel reach the scroll view through
// the clip view, as they would with no document over it.
class CenteringClipView : public QWidget
{
    Q_OBJECT

public:
    explicit CenteringClipView(const ZoomState *state, QWidget *parent = nullptr);

    ImageView *documentView() const { return m_document; }

    // Where the document goes, in the clip view's coordinates.
    QRect documentGeometry() const;
    // Moves the document where the state now says and repaints it.
    void placeDocument();

    // Paints the background around the document (the scroll view hands its viewport's paint
    // events here).
    void paintBackground(QPainter &painter, const QRect &exposed) const;

private:
    const ZoomState *m_state;
    ImageView *m_document;
};
