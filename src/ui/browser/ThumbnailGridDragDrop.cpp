#include "ui/browser/ThumbnailGridDragDrop.h"

#include "ui/browser/ThumbnailGridView.h"

#include <QDrag>
#include <QDropEvent>
#include <QMimeData>

ThumbnailGridDragDrop::ThumbnailGridDragDrop(ThumbnailGridView *view, ThumbnailGridDelegate *delegate)
    : m_view(view)
    , m_delegate(delegate)
{ }

void ThumbnailGridDragDrop::startDrag(const QList<int> &indexes, int pressIndex)
{
    QMimeData *data = m_delegate->gridMimeDataForDrag(indexes);
    if (!data)
        return;
    auto *drag = new QDrag(m_view);
    drag->setMimeData(data);
    const qreal dpr = m_view->devicePixelRatioF();
    QPixmap picture = m_delegate->gridThumbnail(pressIndex, int(96 * dpr));
    if (picture.isNull())
        picture = m_delegate->gridIcon(pressIndex, int(64 * dpr));
    if (!picture.isNull()) {
        picture = picture.scaled(QSize(96, 96) * dpr, Qt::KeepAspectRatio, Qt::SmoothTransformation);
        picture.setDevicePixelRatio(dpr);
        drag->setPixmap(picture);
        drag->setHotSpot(QPoint(int(picture.width() / dpr / 2), int(picture.height() / dpr / 2)));
    }
    drag->exec(Qt::CopyAction | Qt::MoveAction | Qt::LinkAction, Qt::CopyAction);
}

void ThumbnailGridDragDrop::setDropTarget(int index)
{
    if (index == m_dropTarget)
        return;
    const int old = m_dropTarget;
    m_dropTarget = index;
    m_view->updateItem(old);
    m_view->updateItem(index);
}

void ThumbnailGridDragDrop::dragMove(QDragMoveEvent *event, int index, int section)
{
    const Qt::DropAction action = m_delegate->gridValidateDrop(event->mimeData(), index, section, event->modifiers());
    setDropTarget(action != Qt::IgnoreAction ? index : -1);
    if (action == Qt::IgnoreAction) {
        event->ignore();
        return;
    }
    event->setDropAction(action);
    event->accept();
}

void ThumbnailGridDragDrop::drop(QDropEvent *event, int index, int section)
{
    setDropTarget(-1);
    const Qt::DropAction action = m_delegate->gridValidateDrop(event->mimeData(), index, section, event->modifiers());
    if (action == Qt::IgnoreAction
        || !m_delegate->gridAcceptDrop(event->mimeData(), index, section, event->modifiers())) {
        event->ignore();
        return;
    }
    event->setDropAction(action);
    event->accept();
}
