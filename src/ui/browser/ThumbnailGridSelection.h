#pragma once

#include <QList>

#include <vector>

// Which of a grid's items are selected: one flag per item and their count, so that asking about
// one item or the count costs nothing whatever the number of items. A plain value: the rubber
// band keeps a copy of the selection it started from.
class ThumbnailGridSelection
{
public:
    // Deselects everything and holds `itemCount` items.
    void resize(int itemCount);
    int itemCount() const { return int(m_flags.size()); }
    int count() const { return m_count; }
    bool contains(int index) const { return index >= 0 && size_t(index) < m_flags.size() && m_flags[size_t(index)]; }
    // The selected items in order.
    QList<int> indexes() const;

    // Selects or deselects one item; false when it already was (or is not an item).
    bool set(int index, bool selected);
    // Selects exactly `indexes` (those that are items).
    void assign(const QList<int> &indexes);
    // Adds the items from `from` to `to`, both included, in either order.
    void addRange(int from, int to);
    void selectAll();
    void clear();

private:
    std::vector<char> m_flags;
    int m_count = 0;
};
