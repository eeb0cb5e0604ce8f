#pragma once

#include "ui/browser/ThumbnailCellPainter.h"
#include "ui/browser/ThumbnailGridDragDrop.h"
#include "ui/browser/ThumbnailGridLayout.h"
#include "ui/browser/ThumbnailGridSelection.h"
#include "ui/browser/ThumbnailNameEditor.h"
#include "ui/browser/ThumbnailRubberBand.h"

#include <QAbstractScrollArea>
#include <QColor>
#include <QList>
#include <QPixmap>
#include <QStringList>

class QMimeData;
class QTimer;

// What the grid asks of its owner: the contents of cells and headers, and what drags and drops do.
class ThumbnailGridDelegate
{
public:
    virtual ~ThumbnailGridDelegate() = default;
    // The picture for a cell, scaled for a square of `side` device pixels; null draws `icon`.
    virtual QPixmap gridThumbnail(int index, int side) = 0;
    virtual QPixmap gridIcon(int index, int side) = 0;
    // The information lines under a cell; the first is the name.
    virtual QStringList gridInfoLines(int index) = 0;
    virtual QString gridSectionTitle(int section) = 0;
    // A mark on the cell: 0 none, 1 flagged, 2 rejected (drawn dimmed).
    virtual int gridMark(int index) = 0;
    // The colour of the cell's colour label; invalid without one.
    virtual QColor gridLabelColor(int index)
    {
        Q_UNUSED(index);
        return {};
    }
    // The text the name editor starts with.
    virtual QString gridEditableName(int index) = 0;
    // Files being dragged out; null when the items cannot be dragged.
    virtual QMimeData *gridMimeDataForDrag(const QList<int> &indexes) = 0;
    // A drag over item `index` (-1 for none) in `section` (-1 for none): what a drop would do, and
    // the drop itself.
    virtual Qt::DropAction gridValidateDrop(const QMimeData *data, int index, int section,
                                            Qt::KeyboardModifiers modifiers) = 0;
    virtual bool gridAcceptDrop(const QMimeData *data, int index, int section, Qt::KeyboardModifiers modifiers) = 0;
};

// How the grid paints: the background, the text, and the frame, shadow and place of each
// picture. Icons (files without a thumbnail) get neither frame nor shadow.
struct ThumbnailGridAppearance
{
    QColor backgroundColor = QColor::fromRgbF(0.2f, 0.2f, 0.2f);
    QColor textColor = Qt::white;
    bool outline = true;
    QColor outlineColor = Qt::white;
    int outlineThickness = 2; // points, inside the picture's square
    bool shadow = true;
    bool alignToBottom = true; // pictures stand on the bottom of their square, else are centred

    bool operator==(const ThumbnailGridAppearance &other) const = default;
};

// The thumbnail grid: a virtualised view of equally sized cells in sections (or one row), drawn
// only where the viewport shows them, with selection by mouse, rubber band (ThumbnailRubberBand)
// and keyboard, an in-place name editor (ThumbnailNameEditor), dragging files out and dropping
// files in (ThumbnailGridDragDrop). It holds no items of its own: cells are numbered flat and
// their contents come from the delegate when they are drawn.
class ThumbnailGridView : public QAbstractScrollArea
{
    Q_OBJECT

public:
    explicit ThumbnailGridView(ThumbnailGridDelegate *delegate, QWidget *parent = nullptr);
    ~ThumbnailGridView() override;

    ThumbnailGridDelegate *delegate() const { return m_delegate; }
    ThumbnailGridLayout &gridLayout() { return m_layout; }
    // Call after changing the layout's sections or metrics; the selection is cleared when the
    // number of items changes and `keepSelection` is false.
    void relayout();
    void setLineHeight(int height) { m_lineHeight = height; }
    int lineHeight() const { return m_lineHeight; }
    // Whether a click on the name of the one selected item opens the name editor.
    void setClickToRename(bool on) { m_clickToRename = on; }
    void setAppearance(const ThumbnailGridAppearance &appearance);
    const ThumbnailGridAppearance &appearance() const { return m_appearance; }

    int count() const { return m_layout.itemCount(); }
    QList<int> selectedIndexes() const;
    int selectedCount() const { return m_selection.count(); }
    bool isSelected(int index) const;
    // Replaces the selection; `current` becomes the keyboard position (the first when -1).
    void setSelectedIndexes(const QList<int> &indexes, int current = -1);
    void selectAll();
    void clearSelection();
    int currentIndex() const { return m_current; }
    // Moves the keyboard position by a key (arrows, Home, End, Page Up/Down) as if it were pressed.
    void moveCurrent(int key, Qt::KeyboardModifiers modifiers = Qt::NoModifier);

    void scrollToItem(int index);
    QPoint scrollOrigin() const;
    void setScrollOrigin(QPoint origin);
    // The first item whose row is at least partly visible.
    int firstVisibleIndex() const;
    // Items on screen and the read-ahead band around them: [first, last) each.
    std::pair<int, int> onscreenRange() const;
    std::pair<int, int> nearbyRange() const;

    void updateItem(int index);
    void editName(int index);
    bool isEditingName() const { return m_nameEditor.isOpen(); }
    QRect visualRect(int index) const; // in viewport coordinates

Q_SIGNALS:
    void selectionChanged();
    void activated(int index);
    void contextMenuRequested(int index, const QPoint &globalPos);
    void visibleRangeChanged();
    // The view started scrolling, and stopped once no step came for a moment; work that competes
    // with drawing holds back meanwhile. Every start is followed by a stop, at the latest when the
    // view goes.
    void scrollingChanged(bool scrolling);
    void nameEdited(int index, const QString &text);
    void renameShortcutPressed();

protected:
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void scrollContentsBy(int dx, int dy) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void mouseDoubleClickEvent(QMouseEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void wheelEvent(QWheelEvent *event) override;
    void contextMenuEvent(QContextMenuEvent *event) override;
    void dragEnterEvent(QDragEnterEvent *event) override;
    void dragMoveEvent(QDragMoveEvent *event) override;
    void dragLeaveEvent(QDragLeaveEvent *event) override;
    void dropEvent(QDropEvent *event) override;
    void focusInEvent(QFocusEvent *event) override;
    void focusOutEvent(QFocusEvent *event) override;

private:
    QPoint contentPos(QPoint viewportPos) const;
    void updateScrollBars();
    void scheduleVisibilityCheck();
    void setSelected(int index, bool selected);
    void updateRubberBand(QPoint viewportPos);
    QRect nameRect(int index) const; // viewport coordinates

    ThumbnailGridDelegate *m_delegate;
    ThumbnailGridLayout m_layout;
    int m_lineHeight = 16;
    bool m_clickToRename = true;
    ThumbnailGridAppearance m_appearance;
    ThumbnailCellPainter m_cellPainter;
    ThumbnailGridSelection m_selection;
    int m_current = -1;
    int m_anchor = -1;

    // Mouse.
    QPoint m_pressPos;
    int m_pressIndex = -1;
    bool m_pressWasSelected = false;
    bool m_dragStarted = false;
    ThumbnailRubberBand m_rubberBand;
    ThumbnailGridDragDrop m_dragDrop;

    ThumbnailNameEditor m_nameEditor;
    QTimer *m_clickRenameTimer;
    QTimer *m_visibilityTimer;
    QTimer *m_scrollSettleTimer;
};
