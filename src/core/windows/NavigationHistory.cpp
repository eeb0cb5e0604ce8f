#include "core/windows/NavigationHistory.h"

#include <QSet>

namespace {

QSet<const PXFile *> identities(const QList<PXFilePtr> &files)
{
    QSet<const PXFile *> set;
    set.reserve(files.size());
    for (const PXFilePtr &file : files)
        set.insert(file.get());
    return set;
}

} // namespace

// File objects are unique per path while in use, so the same file is the same object.
bool NavigationHistory::Item::operator==(const Item &other) const
{
    return rootFolder == other.rootFolder && identities(selectedFiles) == identities(other.selectedFiles)
        && identities(expandedFolders) == identities(other.expandedFolders);
}

void NavigationHistory::record(const Item &item)
{
    if (m_performedNavigationAction) {
        m_currentItem = item;
        m_performedNavigationAction = false;
        return;
    }
    if (m_currentItem)
        m_backHistory.append(*m_currentItem);
    m_currentItem = item;
    m_forwardHistory.clear();
}

std::optional<NavigationHistory::Item> NavigationHistory::back()
{
    if (m_backHistory.isEmpty())
        return std::nullopt;
    Item item = m_backHistory.takeLast();
    if (m_currentItem)
        m_forwardHistory.append(*m_currentItem);
    m_currentItem = std::move(item);
    m_performedNavigationAction = true;
    return m_currentItem;
}

std::optional<NavigationHistory::Item> NavigationHistory::forward()
{
    if (m_forwardHistory.isEmpty())
        return std::nullopt;
    Item item = m_forwardHistory.takeLast();
    if (m_currentItem)
        m_backHistory.append(*m_currentItem);
    m_currentItem = std::move(item);
    m_performedNavigationAction = true;
    return m_currentItem;
}
