#pragma once

#include "core/model/PXFileForward.h"

#include <QList>

#include <optional>

// A main window's back and forward history: the places the user visited in that window, as a
// web browser keeps the pages it showed.
//
// The window records a place whenever what its sidebar shows really changes (root folder or
// selection). Going back or forward answers the place to show; the window shows it and records
// it again, and that recording only settles the current entry (the place as it really came out,
// with folders that vanished meanwhile left out) instead of starting a new branch. The history
// has no length limit and does not compare a recording with the current entry. Lives as long as
// its window; never persisted.
class NavigationHistory
{
public:
    // One place: the sidebar's root folder, its expanded folders and its selection. The two
    // lists are sets: equality ignores their order.
    struct Item
    {
        QList<PXFilePtr> selectedFiles;
        QList<PXFilePtr> expandedFolders;
        PXFilePtr rootFolder;

        bool operator==(const Item &other) const;
    };

    void record(const Item &item);
    // The place to show, or nothing when there is nowhere to go.
    std::optional<Item> back();
    std::optional<Item> forward();

    bool canGoBack() const { return !m_backHistory.isEmpty(); }
    bool canGoForward() const { return !m_forwardHistory.isEmpty(); }

    const QList<Item> &backHistory() const { return m_backHistory; } // oldest first
    const QList<Item> &forwardHistory() const { return m_forwardHistory; } // next step last
    const std::optional<Item> &currentItem() const { return m_currentItem; }
    bool performedNavigationAction() const { return m_performedNavigationAction; }

private:
    QList<Item> m_backHistory;
    QList<Item> m_forwardHistory;
    std::optional<Item> m_currentItem;
    bool m_performedNavigationAction = false;
};
