#pragma once

#include <QList>

class QDragMoveEvent;
class QDropEvent;
class ThumbnailGridDelegate;
class ThumbnailGridView;

// Files dragged out of the grid and dropped onto it. The delegate says what a drag carries and
// what a drop does; the item a drop would land on is highlighted while a drag hovers over it.
class ThumbnailGridDragDrop
{
public:
    ThumbnailGridDragDrop(ThumbnailGridView *view, ThumbnailGridDelegate *delegate);

    // Drags `indexes` out, showing the picture of `pressIndex` under the pointer.
    void startDrag(const QList<int> &indexes, int pressIndex);

    // A drag hovering over item `index` (-1 for none) in `section` (-1 for none).
    void dragMove(QDragMoveEvent *event, int index, int section);
    void dragLeave() { setDropTarget(-1); }
    void drop(QDropEvent *event, int index, int section);
    // The item a drop would land on, or -1.
    int dropTarget() const { return m_dropTarget; }

private:
    void setDropTarget(int index);

    ThumbnailGridView *m_view;
    ThumbnailGridDelegate *m_delegate;
    int m_dropTarget = -1;
};
