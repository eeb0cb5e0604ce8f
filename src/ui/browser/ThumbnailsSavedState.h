#pragma once

#include "core/model/PXFileForward.h"
#include "core/settings/SettingsValueSets.h"

#include <QList>
#include <QPoint>
#include <QString>

#include <optional>

// What the thumbnail pane remembers of a set of sources when it leaves them, to come back to.
struct ThumbnailsSavedState
{
    QList<PXFilePtr> sources;
    QList<PXFilePtr> selectedFiles;
    BrowserLayout layout = BrowserLayout::rightPreview;
    QPoint scrollOrigin;
    std::optional<int> initialIndexPath; // the first visible item
};

// The key of a set of sources: the same folders in any order give the same key.
QString thumbnailsSavedSourcesKey(const QList<PXFilePtr> &sources);
