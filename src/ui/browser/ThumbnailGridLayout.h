#pragma once

#include <QList>
#include <QMargins>
#include <QRect>
#include <QSize>

#include <utility>

// Geometry of the thumbnail grid: sections of equally sized cells flowing in rows, each section
// under an optional header, or one single row that scrolls sideways. Everything is computed from
// the section sizes, so finding the cells in a rectangle costs a binary search over the sections
// whatever the number of items. Positions are in content coordinates (0,0 = top left of the
// whole grid) and items are numbered flat across sections.
class ThumbnailGridLayout
{
public:
    void setSections(const QList<int> &counts, bool showHeaders);
    void setItemSize(QSize size) { m_itemSize = size; }
    void setSpacing(int spacing) { m_spacing = spacing; }
    void setHeaderHeight(int height) { m_headerHeight = height; }
    void setSectionInsets(const QMargins &insets) { m_insets = insets; }
    void setSingleRow(bool singleRow) { m_singleRow = singleRow; }
    // Lays the grid out for a viewport of `width`; call after changing any of the above.
    void layout(int width);

    QSize itemSize() const { return m_itemSize; }
    const QMargins &sectionInsets() const { return m_insets; }
    int itemCount() const { return m_itemCount; }
    int sectionCount() const { return int(m_counts.size()); }
    int columns() const { return m_columns; }
    bool showsHeaders() const { return m_showHeaders && !m_singleRow; }
    bool isSingleRow() const { return m_singleRow; }
    QSize contentSize() const { return m_contentSize; }

    QRect itemRect(int index) const;
    QRect headerRect(int section) const; // empty without headers
    QRect sectionRect(int section) const;
    int sectionOfItem(int index) const;
    int firstItemOfSection(int section) const { return m_sectionStarts.value(section); }
    int sectionCountAt(int section) const { return m_counts.value(section); }
    // The item whose cell contains `point`, or -1.
    int indexAt(QPoint point) const;
    // The section whose area contains `point`, or -1.
    int sectionAt(QPoint point) const;
    // The items whose rows (or columns, in a single row) meet `rect`: [first, last), in order.
    std::pair<int, int> itemsInRect(const QRect &rect) const;

    // Keyboard movement from `index` by one step; the same index at an edge.
    int indexLeft(int index) const;
    int indexRight(int index) const;
    int indexAbove(int index) const;
    int indexBelow(int index) const;

private:
    int rowsOf(int section) const;
    int rowPitch() const { return m_itemSize.height() + m_spacing; }
    int itemsTop(int section) const;

    QList<int> m_counts;
    QList<int> m_sectionStarts; // flat index of each section's first item
    QList<int> m_sectionTops; // content y of each section
    bool m_showHeaders = false;
    bool m_singleRow = false;
    QSize m_itemSize{100, 100};
    int m_spacing = 8;
    int m_headerHeight = 28;
    QMargins m_insets{10, 10, 10, 10};
    int m_itemCount = 0;
    int m_columns = 1;
    int m_columnPitch = 108;
    int m_columnOffset = 0; // a cell's left edge within its slot
    QSize m_contentSize;
};
