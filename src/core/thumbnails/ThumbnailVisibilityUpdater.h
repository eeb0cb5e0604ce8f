#pragma once

#include "core/model/PXFileForward.h"
#include "core/settings/SettingsValueSets.h"
#include "core/thumbnails/ThumbnailItem.h"

#include <QHash>
#include <QList>
#include <QObject>
#include <QSet>
#include <QStringList>

#include <functional>
#include <optional>

// Decides from what a grid shows which of its items ask for their thumbnails and information
// lines. Items on screen ask first, in reading order, so that their requests are the oldest of
// the most urgent class; then the read-ahead band around them. Items that leave the band withdraw
// their requests; those more than a few screens away also forget their pictures, nearer ones keep
// them and are watched until they go that far. The information lines under each cell (reading
// dimensions opens the image) are read on a pool for the band and kept per file until the file
// or the lines' settings change. So are the colour labels and flags of the band's files (extended
// attributes), into the files' records, so that the grid draws its marks without the disk.
//
// It reads the items in display order, and the position of each file among them, from the
// containers of its owner, who passes the items that leave them to `forget`. Phases:
// `setVisibleRange` whenever the view settles or the items change, `clear` when the sources
// change. A call costs the size of the band and of the items watched before, never the number of
// items. GUI thread only; holds no widgets.
class ThumbnailVisibilityUpdater : public QObject
{
    Q_OBJECT

public:
    // Reads the lines of one file for `options`; called on a worker thread.
    using InfoLinesReader = std::function<QStringList(const PXFile &file, ThumbnailInfoOptions options)>;

    // Reads `items` and `indexByFile`, which stay their owner's, whenever it runs.
    ThumbnailVisibilityUpdater(const QList<ThumbnailItemPtr> &items, const QHash<const PXFile *, int> &indexByFile,
                               WindowSettingsPtr settings, InfoLinesReader reader, QObject *parent = nullptr);

    // Items [first, last) are on screen and [bandFirst, bandLast), around them, are read ahead.
    void setVisibleRange(int first, int last, int bandFirst, int bandLast);
    // Withdraws an item that left the collection and forgets its picture and lines.
    void forget(ThumbnailItem *item);
    // Forgets the items watched, the lines and the reads under way, for new sources. The items
    // themselves are their owner's to withdraw.
    void clear();

    // The lines read for `file`; none until they are.
    std::optional<QStringList> infoLines(const PXFile *file) const;
    // The file changed: its lines are read again when it is next near the view.
    void forgetInfoLines(const PXFile *file);
    // The lines' settings changed: every line is read again, reads under way are dropped.
    void clearInfoLines();

Q_SIGNALS:
    // The item forgot its picture: whatever was drawn from it is stale.
    void thumbnailForgotten(const ThumbnailItem *item);
    // The lines of the item at `index` arrived.
    void infoLinesChanged(int index);
    // The label and flag of the item at `index` were read.
    void attributesRead(int index);

private:
    void requestInfoLines(int first, int last);
    void requestAttributes(int first, int last);

    const QList<ThumbnailItemPtr> &m_items;
    const QHash<const PXFile *, int> &m_indexByFile;
    WindowSettingsPtr m_windowSettings;
    InfoLinesReader m_readInfoLines;
    // Items with a visibility other than offscreen, and those still close enough to keep their
    // pictures.
    QSet<ThumbnailItem *> m_nearItems;
    QHash<const PXFile *, QStringList> m_infoLines;
    QSet<const PXFile *> m_infoLinesPending;
    quint64 m_infoGeneration = 0; // bumped when the lines' settings change
    QSet<const PXFile *> m_attributesPending;
};
