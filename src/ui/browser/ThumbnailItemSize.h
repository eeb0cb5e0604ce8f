#pragma once

#include "core/settings/SettingsValueSets.h"

#include <QMargins>
#include <QSize>

// The size every cell of the thumbnail grid shares, from the window's thumbnail size, its
// browser layout and the height of the information lines under a thumbnail.
struct ThumbnailItemSizeInput
{
    int thumbnailSize = 200;
    BrowserLayout layout = BrowserLayout::rightPreview;
    QSize gridSize; // the grid's viewport
    int stackViewHeight = 0; // see thumbnailStackViewHeight()
    QMargins sectionInsets;
};

// Room for the lines under a thumbnail: their height plus 6 points when they are shown, else 0.
int thumbnailStackViewHeight(bool showInformation, int lineCount, int lineHeight);

// 17 points of scroller and rounding slack plus the section's insets. The top inset is taken
// twice for the height and the bottom inset not at all, which the single-row layout relies on.
int thumbnailOtherWidthModifiers(const QMargins &sectionInsets);
int thumbnailOtherHeightModifiers(const QMargins &sectionInsets);

QSize thumbnailItemSize(const ThumbnailItemSizeInput &input);
