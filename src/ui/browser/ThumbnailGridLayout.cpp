#include "ui/browser/ThumbnailGridLayout.h"

#include <algorithm>

void ThumbnailGridLayout::setSections(const QList<int> &counts, bool showHeaders)
{
    m_counts = counts;
    m_showHeaders = showHeaders;
}

void ThumbnailGridLayout::layout(int width)
{
    m_sectionStarts.resize(m_counts.size());
    m_sectionTops.resize(m_counts.size());
    m_itemCount = 0;
    for (qsizetype i = 0; i < m_counts.size(); ++i) {
        m_sectionStarts[i] = m_itemCount;
        m_itemCount += m_counts[i];
    }
    const int itemWidth = std::max(1, m_itemSize.width());
    if (m_singleRow) {
        m_columns = std::max(1, m_itemCount);
        m_columnPitch = itemWidth + m_spacing;
        m_columnOffset = 0;
        for (qsizetype i = 0; i < m_counts.size(); ++i)
            m_sectionTops[i] = 0;
        const int contentWidth =
            m_insets.left() + m_insets.right() + std::max(0, m_itemCount * m_columnPitch - m_spacing);
        m_contentSize = QSize(contentWidth, m_insets.top() + m_itemSize.height() + m_insets.top());
        return;
    }
    const int available = std::max(itemWidth, width - m_insets.left() - m_insets.right());
    m_columns = std::max(1, (available + m_spacing) / (itemWidth + m_spacing));
    // Equal slots across the width, each cell centred in its slot: what is left over is shared
    // out evenly instead of piling up on the right.
    m_columnPitch = std::max(itemWidth + m_spacing, available / m_columns);
    m_columnOffset = (m_columnPitch - itemWidth) / 2;
    int y = 0;
    for (qsizetype i = 0; i < m_counts.size(); ++i) {
        m_sectionTops[i] = y;
        y += sectionRect(int(i)).height();
    }
    m_contentSize = QSize(width, y);
}

int ThumbnailGridLayout::rowsOf(int section) const
{
    const int count = m_counts.value(section);
    return (count + m_columns - 1) / m_columns;
}

int ThumbnailGridLayout::itemsTop(int section) const
{
    return m_sectionTops.value(section) + (showsHeaders() ? m_headerHeight : 0) + m_insets.top();
}

QRect ThumbnailGridLayout::sectionRect(int section) const
{
    if (section < 0 || section >= m_counts.size())
        return {};
    if (m_singleRow)
        return QRect(QPoint(0, 0), m_contentSize);
    const int rows = rowsOf(section);
    const int height = (showsHeaders() ? m_headerHeight : 0) + m_insets.top() + m_insets.bottom()
        + std::max(0, rows * rowPitch() - m_spacing);
    return QRect(0, m_sectionTops.value(section), m_contentSize.width(), height);
}

QRect ThumbnailGridLayout::headerRect(int section) const
{
    if (!showsHeaders() || section < 0 || section >= m_counts.size())
        return {};
    return QRect(0, m_sectionTops[section], m_contentSize.width(), m_headerHeight);
}

int ThumbnailGridLayout::sectionOfItem(int index) const
{
    if (index < 0 || index >= m_itemCount)
        return -1;
    const auto it = std::upper_bound(m_sectionStarts.cbegin(), m_sectionStarts.cend(), index);
    return int(it - m_sectionStarts.cbegin()) - 1;
}

QRect ThumbnailGridLayout::itemRect(int index) const
{
    if (index < 0 || index >= m_itemCount)
        return {};
    if (m_singleRow)
        return QRect(m_insets.left() + index * m_columnPitch, m_insets.top(), m_itemSize.width(), m_itemSize.height());
    const int section = sectionOfItem(index);
    const int local = index - m_sectionStarts[section];
    const int row = local / m_columns;
    const int column = local % m_columns;
    return QRect(m_insets.left() + m_columnOffset + column * m_columnPitch, itemsTop(section) + row * rowPitch(),
                 m_itemSize.width(), m_itemSize.height());
}

int ThumbnailGridLayout::sectionAt(QPoint point) const
{
    if (m_counts.isEmpty() || point.y() < 0)
        return -1;
    if (m_singleRow)
        return sectionOfItem(indexAt(point));
    const auto it = std::upper_bound(m_sectionTops.cbegin(), m_sectionTops.cend(), point.y());
    const int section = int(it - m_sectionTops.cbegin()) - 1;
    return sectionRect(section).contains(point) ? section : -1;
}

int ThumbnailGridLayout::indexAt(QPoint point) const
{
    if (m_itemCount == 0)
        return -1;
    int index = -1;
    if (m_singleRow) {
        const int x = point.x() - m_insets.left();
        if (x < 0)
            return -1;
        index = x / m_columnPitch;
    } else {
        const auto it = std::upper_bound(m_sectionTops.cbegin(), m_sectionTops.cend(), point.y());
        const int section = int(it - m_sectionTops.cbegin()) - 1;
        if (section < 0)
            return -1;
        const int x = point.x() - m_insets.left();
        const int y = point.y() - itemsTop(section);
        // x is measured from the slot's edge; itemRect() below rejects the margins around the cell.
        if (x < 0 || y < 0)
            return -1;
        const int local = (y / rowPitch()) * m_columns + std::min(m_columns - 1, x / m_columnPitch);
        if (local >= m_counts[section])
            return -1;
        index = m_sectionStarts[section] + local;
    }
    return itemRect(index).contains(point) ? index : -1;
}

std::pair<int, int> ThumbnailGridLayout::itemsInRect(const QRect &rect) const
{
    if (m_itemCount == 0 || rect.isEmpty())
        return {0, 0};
    if (m_singleRow) {
        const int first = std::max(0, (rect.left() - m_insets.left()) / m_columnPitch);
        const int last = std::min(m_itemCount, (rect.right() - m_insets.left()) / m_columnPitch + 1);
        return {std::min(first, last), last};
    }
    // The first item of the row at or below `y` (end of section when below it), across sections.
    auto boundary = [this](int y, bool upper) {
        const auto it = std::upper_bound(m_sectionTops.cbegin(), m_sectionTops.cend(), y);
        const int section = std::max(0, int(it - m_sectionTops.cbegin()) - 1);
        const int offset = y - itemsTop(section);
        int row = offset < 0 ? 0 : offset / rowPitch() + (upper ? 1 : 0);
        if (!upper && offset >= 0 && offset % rowPitch() >= m_itemSize.height())
            ++row; // in the gap under a row: start with the next one
        const int local = std::min(m_counts[section], row * m_columns);
        return m_sectionStarts[section] + local;
    };
    const int first = boundary(std::max(0, rect.top()), false);
    const int last = std::min(m_itemCount, boundary(rect.bottom(), true));
    return {std::min(first, last), last};
}

int ThumbnailGridLayout::indexLeft(int index) const
{
    return index > 0 ? index - 1 : index;
}

int ThumbnailGridLayout::indexRight(int index) const
{
    return index + 1 < m_itemCount ? index + 1 : index;
}

int ThumbnailGridLayout::indexAbove(int index) const
{
    if (m_singleRow || index <= 0)
        return index;
    const int section = sectionOfItem(index);
    const int local = index - m_sectionStarts[section];
    if (local >= m_columns)
        return index - m_columns;
    // Into the last row of the nearest section above with items, same column where it has one.
    int above = section - 1;
    while (above >= 0 && m_counts[above] == 0)
        --above;
    if (above < 0)
        return index;
    const int count = m_counts[above];
    const int lastRowStart = ((count - 1) / m_columns) * m_columns;
    return m_sectionStarts[above] + std::min(count - 1, lastRowStart + local % m_columns);
}

int ThumbnailGridLayout::indexBelow(int index) const
{
    if (m_singleRow || index < 0 || index + 1 >= m_itemCount)
        return index;
    const int section = sectionOfItem(index);
    const int local = index - m_sectionStarts[section];
    const int count = m_counts[section];
    const int column = local % m_columns;
    if (local + m_columns < count)
        return index + m_columns;
    // The last row of a section: to the next row when it is partial, else into the next section.
    if ((local / m_columns) < rowsOf(section) - 1)
        return m_sectionStarts[section] + count - 1;
    int next = section + 1;
    while (next < m_counts.size() && m_counts[next] == 0)
        ++next;
    if (next >= m_counts.size())
        return index;
    return m_sectionStarts[next] + std::min(m_counts[next] - 1, column);
}
