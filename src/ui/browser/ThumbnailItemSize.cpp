#include "ui/browser/ThumbnailItemSize.h"

#include <algorithm>

namespace {
// Room the scroller and the cell's own padding take beside the sections' insets.
constexpr int scrollerSlack = 17;
// Padding around a cell's picture: 10 points on each side.
constexpr int cellPadding = 20;
// Gap between the picture and the information lines.
constexpr int stackGap = 6;
} // namespace

int thumbnailStackViewHeight(bool showInformation, int lineCount, int lineHeight)
{
    if (!showInformation)
        return 0;
    return std::max(0, lineCount) * lineHeight + stackGap;
}

int thumbnailOtherWidthModifiers(const QMargins &sectionInsets)
{
    return scrollerSlack + sectionInsets.left() + sectionInsets.right();
}

int thumbnailOtherHeightModifiers(const QMargins &sectionInsets)
{
    return scrollerSlack + sectionInsets.top() * 2;
}

QSize thumbnailItemSize(const ThumbnailItemSizeInput &input)
{
    if (input.layout == BrowserLayout::topPreview) {
        const int height = std::max(1, input.gridSize.height() - thumbnailOtherHeightModifiers(input.sectionInsets));
        const int width = std::max(1, height - input.stackViewHeight);
        return {width, height};
    }
    int width = input.thumbnailSize + cellPadding;
    const int available = input.gridSize.width() - thumbnailOtherWidthModifiers(input.sectionInsets);
    if (width > available)
        width = available;
    width = std::max(1, width);
    return {width, width + input.stackViewHeight};
}
