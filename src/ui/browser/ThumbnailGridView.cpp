#include "ui/browser/ThumbnailGridView.h"

#include <QApplication>
#include <QKeyEvent>
#include <QMimeData>
#include <QPainter>
#include <QScrollBar>
#include <QStyle>
#include <QTimer>

#include <algorithm>

namespace {
// One frame at 60 Hz: scrolling settles the visible range at most once per frame.
constexpr int visibilityCheckIntervalMs = 16;
// A pause this long ends a scroll: wheel notches and key repeats come closer together.
constexpr int scrollSettleMs = 250;
} // namespace

ThumbnailGridView::ThumbnailGridView(ThumbnailGridDelegate *delegate, QWidget *parent)
    : QAbstractScrollArea(parent)
    , m_delegate(delegate)
    , m_rubberBand(viewport())
    , m_dragDrop(this, delegate)
    , m_nameEditor(this)
    , m_clickRenameTimer(new QTimer(this))
    , m_visibilityTimer(new QTimer(this))
    , m_scrollSettleTimer(new QTimer(this))
{
    setFocusPolicy(Qt::StrongFocus);
    setAcceptDrops(true);
    viewport()->setAcceptDrops(true);
    viewport()->setAttribute(Qt::WA_OpaquePaintEvent);
    viewport()->setBackgroundRole(QPalette::Base);
    setFrameShape(QFrame::NoFrame);
    verticalScrollBar()->setSingleStep(24);
    horizontalScrollBar()->setSingleStep(24);
    m_lineHeight = fontMetrics().height();

    // A click on the name of the selected item edits it once the double-click time has passed
    // without a second click.
    m_clickRenameTimer->setSingleShot(true);
    m_clickRenameTimer->setInterval(QApplication::doubleClickInterval());
    connect(m_clickRenameTimer, &QTimer::timeout, this, [this] {
        if (m_selection.count() == 1 && m_current >= 0 && isSelected(m_current))
            editName(m_current);
    });
    connect(&m_nameEditor, &ThumbnailNameEditor::committed, this, &ThumbnailGridView::nameEdited);
    m_visibilityTimer->setSingleShot(true);
    m_visibilityTimer->setInterval(visibilityCheckIntervalMs);
    connect(m_visibilityTimer, &QTimer::timeout, this, &ThumbnailGridView::visibleRangeChanged);
    m_scrollSettleTimer->setSingleShot(true);
    m_scrollSettleTimer->setInterval(scrollSettleMs);
    connect(m_scrollSettleTimer, &QTimer::timeout, this, [this] { Q_EMIT scrollingChanged(false); });
}

ThumbnailGridView::~ThumbnailGridView()
{
    if (m_scrollSettleTimer->isActive())
        Q_EMIT scrollingChanged(false);
}

void ThumbnailGridView::setAppearance(const ThumbnailGridAppearance &appearance)
{
    if (appearance == m_appearance)
        return;
    m_appearance = appearance;
    viewport()->update();
}

void ThumbnailGridView::relayout()
{
    const int oldCount = m_selection.itemCount();
    m_layout.layout(viewport()->width());
    const int newCount = m_layout.itemCount();
    if (newCount != oldCount) {
        m_nameEditor.close(false);
        m_selection.resize(newCount);
        m_current = std::min(m_current, newCount - 1);
        m_anchor = std::min(m_anchor, newCount - 1);
    }
    updateScrollBars();
    viewport()->update();
    scheduleVisibilityCheck();
}

QList<int> ThumbnailGridView::selectedIndexes() const
{
    return m_selection.indexes();
}

bool ThumbnailGridView::isSelected(int index) const
{
    return m_selection.contains(index);
}

void ThumbnailGridView::setSelected(int index, bool selected)
{
    if (m_selection.set(index, selected))
        updateItem(index);
}

void ThumbnailGridView::setSelectedIndexes(const QList<int> &indexes, int current)
{
    m_selection.assign(indexes);
    m_current = current >= 0 ? current : (indexes.isEmpty() ? -1 : indexes.first());
    m_anchor = m_current;
    viewport()->update();
    Q_EMIT selectionChanged();
}

void ThumbnailGridView::selectAll()
{
    m_selection.selectAll();
    viewport()->update();
    Q_EMIT selectionChanged();
}

void ThumbnailGridView::clearSelection()
{
    if (m_selection.count() == 0)
        return;
    m_selection.clear();
    viewport()->update();
    Q_EMIT selectionChanged();
}

void ThumbnailGridView::moveCurrent(int key, Qt::KeyboardModifiers modifiers)
{
    const int count = m_layout.itemCount();
    if (count == 0)
        return;
    int from = m_current >= 0 ? m_current : -1;
    int to = from;
    const int rowsPerPage = std::max(1, viewport()->height() / std::max(1, m_layout.itemSize().height()));
    switch (key) {
    case Qt::Key_Left: to = from < 0 ? 0 : m_layout.indexLeft(from); break;
    case Qt::Key_Right: to = from < 0 ? 0 : m_layout.indexRight(from); break;
    case Qt::Key_Up: to = from < 0 ? 0 : m_layout.indexAbove(from); break;
    case Qt::Key_Down: to = from < 0 ? 0 : m_layout.indexBelow(from); break;
    case Qt::Key_Home: to = 0; break;
    case Qt::Key_End: to = count - 1; break;
    case Qt::Key_PageUp:
        to = std::max(0, from);
        for (int i = 0; i < rowsPerPage; ++i)
            to = m_layout.indexAbove(to);
        break;
    case Qt::Key_PageDown:
        to = std::max(0, from);
        for (int i = 0; i < rowsPerPage; ++i)
            to = m_layout.indexBelow(to);
        break;
    default: return;
    }
    if (modifiers.testFlag(Qt::ShiftModifier) && m_anchor >= 0) {
        m_selection.clear();
        m_selection.addRange(m_anchor, to);
        m_current = to;
    } else {
        m_selection.assign({to});
        m_current = m_anchor = to;
    }
    viewport()->update();
    scrollToItem(to);
    Q_EMIT selectionChanged();
}

QPoint ThumbnailGridView::contentPos(QPoint viewportPos) const
{
    return viewportPos + scrollOrigin();
}

QPoint ThumbnailGridView::scrollOrigin() const
{
    return {horizontalScrollBar()->value(), verticalScrollBar()->value()};
}

void ThumbnailGridView::setScrollOrigin(QPoint origin)
{
    horizontalScrollBar()->setValue(origin.x());
    verticalScrollBar()->setValue(origin.y());
}

QRect ThumbnailGridView::visualRect(int index) const
{
    return m_layout.itemRect(index).translated(-scrollOrigin());
}

void ThumbnailGridView::scrollToItem(int index)
{
    const QRect rect = m_layout.itemRect(index);
    if (rect.isEmpty())
        return;
    const QRect visible(scrollOrigin(), viewport()->size());
    if (m_layout.isSingleRow()) {
        if (rect.left() < visible.left())
            horizontalScrollBar()->setValue(rect.left() - m_layout.sectionInsets().left());
        else if (rect.right() > visible.right())
            horizontalScrollBar()->setValue(rect.right() - visible.width() + m_layout.sectionInsets().right() + 1);
        return;
    }
    const int section = m_layout.sectionOfItem(index);
    const int headerRoom = m_layout.headerRect(section).height();
    if (rect.top() < visible.top())
        verticalScrollBar()->setValue(
            rect.top() - m_layout.sectionInsets().top()
            - (m_layout.firstItemOfSection(section) + m_layout.columns() > index ? headerRoom : 0));
    else if (rect.bottom() > visible.bottom())
        verticalScrollBar()->setValue(rect.bottom() - visible.height() + m_layout.sectionInsets().bottom() + 1);
}

int ThumbnailGridView::firstVisibleIndex() const
{
    const auto [first, last] = onscreenRange();
    return first < last ? first : -1;
}

std::pair<int, int> ThumbnailGridView::onscreenRange() const
{
    return m_layout.itemsInRect(QRect(scrollOrigin(), viewport()->size()));
}

std::pair<int, int> ThumbnailGridView::nearbyRange() const
{
    // One screen ahead and one behind: enough to keep up with a flick without asking for the
    // whole folder.
    QRect band(scrollOrigin(), viewport()->size());
    if (m_layout.isSingleRow())
        band.adjust(-band.width(), 0, band.width(), 0);
    else
        band.adjust(0, -band.height(), 0, band.height());
    return m_layout.itemsInRect(band);
}

void ThumbnailGridView::updateItem(int index)
{
    const QRect rect = visualRect(index);
    if (rect.intersects(viewport()->rect()))
        viewport()->update(rect.adjusted(-2, -2, 2, 2));
}

void ThumbnailGridView::updateScrollBars()
{
    const QSize content = m_layout.contentSize();
    const QSize view = viewport()->size();
    if (m_layout.isSingleRow()) {
        setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
        setHorizontalScrollBarPolicy(Qt::ScrollBarAsNeeded);
        verticalScrollBar()->setRange(0, 0);
        horizontalScrollBar()->setRange(0, std::max(0, content.width() - view.width()));
        horizontalScrollBar()->setPageStep(view.width());
    } else {
        setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
        setVerticalScrollBarPolicy(Qt::ScrollBarAsNeeded);
        horizontalScrollBar()->setRange(0, 0);
        verticalScrollBar()->setRange(0, std::max(0, content.height() - view.height()));
        verticalScrollBar()->setPageStep(view.height());
    }
}

void ThumbnailGridView::scheduleVisibilityCheck()
{
    if (!m_visibilityTimer->isActive())
        m_visibilityTimer->start();
}

void ThumbnailGridView::resizeEvent(QResizeEvent *event)
{
    QAbstractScrollArea::resizeEvent(event);
    // The first visible item stays in view across a change of the number of columns.
    const int anchor = firstVisibleIndex();
    const int oldColumns = m_layout.columns();
    m_layout.layout(viewport()->width());
    updateScrollBars();
    if (anchor > 0 && oldColumns != m_layout.columns())
        verticalScrollBar()->setValue(m_layout.itemRect(anchor).top() - m_layout.sectionInsets().top());
    m_nameEditor.close(true);
    scheduleVisibilityCheck();
}

void ThumbnailGridView::scrollContentsBy(int, int)
{
    if (m_nameEditor.isOpen())
        m_nameEditor.move(nameRect(m_nameEditor.index()).topLeft());
    viewport()->update();
    scheduleVisibilityCheck();
    if (!m_scrollSettleTimer->isActive())
        Q_EMIT scrollingChanged(true);
    m_scrollSettleTimer->start();
}

void ThumbnailGridView::paintEvent(QPaintEvent *event)
{
    QPainter painter(viewport());
    const QRect exposed = event->rect();
    painter.fillRect(exposed, m_appearance.backgroundColor);
    const QPoint origin = scrollOrigin();
    const QRect contentRect = exposed.translated(origin);

    if (m_layout.showsHeaders()) {
        for (int section = 0; section < m_layout.sectionCount(); ++section) {
            const QRect header = m_layout.headerRect(section).translated(-origin);
            if (header.bottom() < exposed.top())
                continue;
            if (header.top() > exposed.bottom())
                break;
            QFont font = QWidget::font();
            font.setBold(true);
            painter.setFont(font);
            painter.setPen(m_appearance.textColor);
            const QRect textRect =
                header.adjusted(m_layout.sectionInsets().left(), 0, -m_layout.sectionInsets().right(), 0);
            painter.drawText(textRect, Qt::AlignLeft | Qt::AlignVCenter,
                             painter.fontMetrics().elidedText(m_delegate->gridSectionTitle(section), Qt::ElideMiddle,
                                                              textRect.width()));
            QColor rule = m_appearance.textColor;
            rule.setAlphaF(0.3f);
            painter.setPen(rule);
            painter.drawLine(textRect.bottomLeft(), textRect.bottomRight());
            painter.setFont(QWidget::font());
        }
    }
    const auto [first, last] = m_layout.itemsInRect(contentRect);
    const qreal dpr = devicePixelRatioF();
    for (int index = first; index < last; ++index) {
        const QRect rect = m_layout.itemRect(index).translated(-origin);
        if (!rect.intersects(exposed))
            continue;
        const ThumbnailCellPainter::Cell cell{index, rect, isSelected(index), hasFocus(),
                                              index == m_dragDrop.dropTarget()};
        m_cellPainter.paint(painter, cell, *m_delegate, m_appearance, palette(), dpr, m_lineHeight);
    }
}

QRect ThumbnailGridView::nameRect(int index) const
{
    const QRect rect = visualRect(index);
    const int padding = ThumbnailCellPainter::cellPadding;
    return QRect(rect.left(), rect.top() + ThumbnailCellPainter::pictureSide(rect) + 2 * padding - 2, rect.width(),
                 m_lineHeight + 6);
}

void ThumbnailGridView::mousePressEvent(QMouseEvent *event)
{
    m_clickRenameTimer->stop();
    m_nameEditor.close(true);
    setFocus(Qt::MouseFocusReason);
    const QPoint pos = event->position().toPoint();
    const int index = m_layout.indexAt(contentPos(pos));
    m_pressPos = pos;
    m_pressIndex = index;
    m_pressWasSelected = isSelected(index);
    m_dragStarted = false;
    const Qt::KeyboardModifiers mods = event->modifiers();
    const bool toggle = mods.testFlag(Qt::ControlModifier);
    const bool extend = mods.testFlag(Qt::ShiftModifier);

    if (index < 0) {
        if (event->button() == Qt::LeftButton) {
            if (!toggle && !extend)
                clearSelection();
            m_rubberBand.start(contentPos(pos), scrollOrigin(), m_selection);
        }
        return;
    }
    if (event->button() == Qt::RightButton) {
        if (!m_pressWasSelected) {
            setSelectedIndexes({index}, index);
        }
        return;
    }
    if (event->button() != Qt::LeftButton)
        return;
    if (extend && m_anchor >= 0) {
        if (!toggle)
            m_selection.clear();
        m_selection.addRange(m_anchor, index);
        viewport()->update();
        m_current = index;
        Q_EMIT selectionChanged();
    } else if (toggle) {
        setSelected(index, !m_pressWasSelected);
        m_current = m_anchor = index;
        Q_EMIT selectionChanged();
    } else if (!m_pressWasSelected) {
        setSelectedIndexes({index}, index);
    }
    // A press on a selected item without modifiers keeps the selection for a drag; the release
    // narrows it to the item.
}

void ThumbnailGridView::mouseMoveEvent(QMouseEvent *event)
{
    const QPoint pos = event->position().toPoint();
    if (m_rubberBand.isActive()) {
        updateRubberBand(pos);
        return;
    }
    if (!(event->buttons() & Qt::LeftButton) || m_pressIndex < 0 || m_dragStarted)
        return;
    if ((pos - m_pressPos).manhattanLength() < QApplication::startDragDistance())
        return;
    if (!isSelected(m_pressIndex))
        return;
    m_dragStarted = true;
    m_dragDrop.startDrag(selectedIndexes(), m_pressIndex);
}

void ThumbnailGridView::updateRubberBand(QPoint viewportPos)
{
    const int added = m_rubberBand.stretch(contentPos(viewportPos), scrollOrigin(), m_layout, m_selection);
    if (added >= 0)
        m_current = added;
    m_anchor = m_current;
    viewport()->update();
    Q_EMIT selectionChanged();
}

void ThumbnailGridView::mouseReleaseEvent(QMouseEvent *event)
{
    if (m_rubberBand.isActive()) {
        m_rubberBand.finish();
        return;
    }
    const QPoint pos = event->position().toPoint();
    if (event->button() == Qt::LeftButton && !m_dragStarted && m_pressIndex >= 0 && m_pressWasSelected
        && event->modifiers() == Qt::NoModifier) {
        const bool wasOnlySelection = m_selection.count() == 1;
        setSelectedIndexes({m_pressIndex}, m_pressIndex);
        if (wasOnlySelection && m_clickToRename && nameRect(m_pressIndex).contains(pos))
            m_clickRenameTimer->start();
    }
    m_pressIndex = -1;
}

void ThumbnailGridView::mouseDoubleClickEvent(QMouseEvent *event)
{
    m_clickRenameTimer->stop();
    const int index = m_layout.indexAt(contentPos(event->position().toPoint()));
    if (index >= 0 && event->button() == Qt::LeftButton)
        Q_EMIT activated(index);
}

void ThumbnailGridView::contextMenuEvent(QContextMenuEvent *event)
{
    int index = -1;
    if (event->reason() == QContextMenuEvent::Mouse) {
        index = m_layout.indexAt(contentPos(event->pos()));
    } else if (m_current >= 0 && isSelected(m_current)) {
        index = m_current;
        scrollToItem(index);
    }
    QPoint global = event->globalPos();
    if (event->reason() != QContextMenuEvent::Mouse && index >= 0)
        global = viewport()->mapToGlobal(visualRect(index).center());
    Q_EMIT contextMenuRequested(index, global);
}

void ThumbnailGridView::keyPressEvent(QKeyEvent *event)
{
    if (event->matches(QKeySequence::SelectAll)) {
        selectAll();
        return;
    }
    switch (event->key()) {
    case Qt::Key_Left:
    case Qt::Key_Right:
    case Qt::Key_Up:
    case Qt::Key_Down:
    case Qt::Key_Home:
    case Qt::Key_End:
    case Qt::Key_PageUp:
    case Qt::Key_PageDown: moveCurrent(event->key(), event->modifiers()); return;
    case Qt::Key_Return:
    case Qt::Key_Enter:
        if (m_current >= 0 && isSelected(m_current))
            Q_EMIT activated(m_current);
        return;
    case Qt::Key_F2: Q_EMIT renameShortcutPressed(); return;
    case Qt::Key_Escape: clearSelection(); return;
    default: break;
    }
    QAbstractScrollArea::keyPressEvent(event);
}

void ThumbnailGridView::wheelEvent(QWheelEvent *event)
{
    if (m_layout.isSingleRow()) {
        // One row under the preview: the wheel scrolls it sideways.
        const QPoint delta = event->pixelDelta().isNull() ? event->angleDelta() / 2 : event->pixelDelta();
        const int step = delta.y() != 0 ? delta.y() : delta.x();
        horizontalScrollBar()->setValue(horizontalScrollBar()->value() - step);
        event->accept();
        return;
    }
    QAbstractScrollArea::wheelEvent(event);
}

void ThumbnailGridView::dragEnterEvent(QDragEnterEvent *event)
{
    if (event->mimeData()->hasUrls())
        dragMoveEvent(event);
    else
        event->ignore();
}

void ThumbnailGridView::dragMoveEvent(QDragMoveEvent *event)
{
    const QPoint pos = contentPos(event->position().toPoint());
    m_dragDrop.dragMove(event, m_layout.indexAt(pos), m_layout.sectionAt(pos));
}

void ThumbnailGridView::dragLeaveEvent(QDragLeaveEvent *)
{
    m_dragDrop.dragLeave();
}

void ThumbnailGridView::dropEvent(QDropEvent *event)
{
    const QPoint pos = contentPos(event->position().toPoint());
    m_dragDrop.drop(event, m_layout.indexAt(pos), m_layout.sectionAt(pos));
}

void ThumbnailGridView::focusInEvent(QFocusEvent *event)
{
    QAbstractScrollArea::focusInEvent(event);
    viewport()->update();
}

void ThumbnailGridView::focusOutEvent(QFocusEvent *event)
{
    QAbstractScrollArea::focusOutEvent(event);
    viewport()->update();
}

void ThumbnailGridView::editName(int index)
{
    if (index < 0 || index >= count())
        return;
    m_nameEditor.close(false);
    scrollToItem(index);
    m_nameEditor.open(index, m_delegate->gridEditableName(index), nameRect(index));
}
