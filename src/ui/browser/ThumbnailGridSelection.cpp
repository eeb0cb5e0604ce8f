#include "ui/browser/ThumbnailGridSelection.h"

#include <algorithm>

void ThumbnailGridSelection::resize(int itemCount)
{
    m_flags.assign(size_t(itemCount), 0);
    m_count = 0;
}

QList<int> ThumbnailGridSelection::indexes() const
{
    QList<int> result;
    result.reserve(m_count);
    for (size_t i = 0; i < m_flags.size() && result.size() < m_count; ++i) {
        if (m_flags[i])
            result.append(int(i));
    }
    return result;
}

bool ThumbnailGridSelection::set(int index, bool selected)
{
    if (index < 0 || size_t(index) >= m_flags.size() || bool(m_flags[size_t(index)]) == selected)
        return false;
    m_flags[size_t(index)] = selected;
    m_count += selected ? 1 : -1;
    return true;
}

void ThumbnailGridSelection::assign(const QList<int> &indexes)
{
    clear();
    for (int index : indexes)
        set(index, true);
}

void ThumbnailGridSelection::addRange(int from, int to)
{
    if (from > to)
        std::swap(from, to);
    for (int i = std::max(0, from); i <= to && size_t(i) < m_flags.size(); ++i)
        set(i, true);
}

void ThumbnailGridSelection::selectAll()
{
    std::fill(m_flags.begin(), m_flags.end(), 1);
    m_count = int(m_flags.size());
}

void ThumbnailGridSelection::clear()
{
    std::fill(m_flags.begin(), m_flags.end(), 0);
    m_count = 0;
}
