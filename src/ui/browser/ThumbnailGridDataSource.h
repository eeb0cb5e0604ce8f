#pragma once

#include "core/model/PXFileForward.h"
#include "ui/browser/ThumbnailGridView.h"

#include <QHash>
#include <QIcon>
#include <QPixmap>
#include <QString>

#include <memory>

class ThumbnailItem;
class ThumbnailVisibilityUpdater;
class ThumbnailsViewController;
class WindowSettings;
using WindowSettingsPtr = std::shared_ptr<WindowSettings>;

// What the thumbnail pane's grid draws and how it drags and drops: cells numbered flat in the
// pane's display order become pictures, icons, information lines and marks, sections become the
// titles of their folders, dragged cells become file addresses, and drops go to the pane.
// Pictures are scaled once for the cell's size and kept until the item's thumbnail changes, the
// cell size changes or the item goes far from the view; icons are kept per file type.
class ThumbnailGridDataSource : public ThumbnailGridDelegate
{
public:
    ThumbnailGridDataSource(ThumbnailsViewController &pane, WindowSettingsPtr settings,
                            const ThumbnailVisibilityUpdater &visibility);

    // Forgets the picture drawn for `item`, or all of them.
    void forgetThumbnail(const ThumbnailItem *item) { m_pixmaps.remove(item); }
    void clearThumbnails() { m_pixmaps.clear(); }

    QPixmap gridThumbnail(int index, int side) override;
    QPixmap gridIcon(int index, int side) override;
    QStringList gridInfoLines(int index) override;
    QString gridSectionTitle(int section) override;
    int gridMark(int index) override;
    QColor gridLabelColor(int index) override;
    QString gridEditableName(int index) override;
    QMimeData *gridMimeDataForDrag(const QList<int> &indexes) override;
    Qt::DropAction gridValidateDrop(const QMimeData *data, int index, int section,
                                    Qt::KeyboardModifiers modifiers) override;
    bool gridAcceptDrop(const QMimeData *data, int index, int section, Qt::KeyboardModifiers modifiers) override;

private:
    PXFilePtr fileAt(int index) const;

    ThumbnailsViewController &m_pane;
    WindowSettingsPtr m_windowSettings;
    const ThumbnailVisibilityUpdater &m_visibility;
    QHash<const ThumbnailItem *, QPixmap> m_pixmaps;
    QHash<QString, QIcon> m_iconsByType;
};
