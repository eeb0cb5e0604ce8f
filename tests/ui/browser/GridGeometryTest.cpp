#include "ui/browser/ThumbnailGridLayout.h"
#include "ui/browser/ThumbnailItemSize.h"

#include <QRandomGenerator>

#include <gtest/gtest.h>

TEST(ThumbnailItemSize, FollowsThumbnailSizeLayoutAndInformationLines)
{
    const QMargins insets(10, 12, 10, 30);
    EXPECT_EQ(thumbnailStackViewHeight(false, 3, 16), 0);
    EXPECT_EQ(thumbnailStackViewHeight(true, 2, 16), 2 * 16 + 6);

    ThumbnailItemSizeInput input;
    input.thumbnailSize = 200;
    input.layout = BrowserLayout::rightPreview;
    input.gridSize = QSize(1000, 700);
    input.stackViewHeight = 38;
    input.sectionInsets = insets;
    EXPECT_EQ(thumbnailItemSize(input), QSize(220, 258));
    input.layout = BrowserLayout::noPreview;
    EXPECT_EQ(thumbnailItemSize(input), QSize(220, 258));

    // Never wider than the grid minus 17 points and the side insets.
    input.gridSize = QSize(200, 700);
    EXPECT_EQ(thumbnailItemSize(input), QSize(200 - 17 - 20, 200 - 17 - 20 + 38));

    // One row under the preview: the height of the grid decides; the top inset counts twice and
    // the bottom one not at all.
    input.layout = BrowserLayout::topPreview;
    input.gridSize = QSize(1000, 180);
    const int height = 180 - 17 - 2 * 12;
    EXPECT_EQ(thumbnailItemSize(input), QSize(height - 38, height));
    input.gridSize = QSize(1000, 10);
    EXPECT_GT(thumbnailItemSize(input).width(), 0);
}

namespace {
ThumbnailGridLayout makeLayout(const QList<int> &sections, bool headers, int width)
{
    ThumbnailGridLayout layout;
    layout.setItemSize(QSize(100, 130));
    layout.setSpacing(8);
    layout.setHeaderHeight(28);
    layout.setSectionInsets(QMargins(10, 10, 10, 10));
    layout.setSections(sections, headers);
    layout.layout(width);
    return layout;
}
} // namespace

TEST(ThumbnailGridLayout, PlacesSectionsAndFindsItemsByGeometry)
{
    const ThumbnailGridLayout layout = makeLayout({7, 0, 3, 12}, true, 470);
    ASSERT_EQ(layout.itemCount(), 22);
    ASSERT_EQ(layout.columns(), 4);

    for (int i = 0; i < layout.itemCount(); ++i) {
        const QRect rect = layout.itemRect(i);
        ASSERT_EQ(layout.indexAt(rect.center()), i) << i;
        ASSERT_TRUE(layout.sectionRect(layout.sectionOfItem(i)).contains(rect)) << i;
        EXPECT_FALSE(layout.headerRect(layout.sectionOfItem(i)).intersects(rect)) << i;
    }
    // Sections never overlap and an empty one keeps its header.
    for (int s = 1; s < layout.sectionCount(); ++s)
        EXPECT_EQ(layout.sectionRect(s).top(), layout.sectionRect(s - 1).bottom() + 1);
    EXPECT_EQ(layout.sectionOfItem(7), 2);
    EXPECT_EQ(layout.indexAt(layout.headerRect(2).center()), -1);
    EXPECT_EQ(layout.contentSize().height(), layout.sectionRect(3).bottom() + 1);

    // Whatever rectangle is asked for, the range holds every item meeting it and no row that does not.
    QRandomGenerator random(7);
    for (int round = 0; round < 500; ++round) {
        const int top = random.bounded(-50, layout.contentSize().height());
        const QRect rect(0, top, 470, random.bounded(1, 400));
        const auto [first, last] = layout.itemsInRect(rect);
        for (int i = 0; i < layout.itemCount(); ++i) {
            const bool meets = layout.itemRect(i).intersects(rect);
            if (meets) {
                ASSERT_TRUE(i >= first && i < last) << "item " << i << " missing for top " << top;
            } else if (i >= first && i < last) {
                ASSERT_TRUE(layout.itemRect(i).top() <= rect.bottom() && layout.itemRect(i).bottom() >= rect.top() - 8)
                    << "item " << i << " far outside for top " << top;
            }
        }
    }
}

TEST(ThumbnailGridLayout, KeyboardMovesAcrossRowsAndSections)
{
    const ThumbnailGridLayout layout = makeLayout({6, 0, 2, 5}, true, 470); // 4 columns
    EXPECT_EQ(layout.indexRight(3), 4);
    EXPECT_EQ(layout.indexLeft(0), 0);
    EXPECT_EQ(layout.indexBelow(1), 5); // to the partial second row: its last item
    EXPECT_EQ(layout.indexBelow(0), 4);
    EXPECT_EQ(layout.indexBelow(4), 6); // past the empty section, same column
    EXPECT_EQ(layout.indexBelow(5), 7); // column 1 of the next section
    EXPECT_EQ(layout.indexAbove(6), 4); // back into the last row above, same column
    EXPECT_EQ(layout.indexAbove(7), 5);
    EXPECT_EQ(layout.indexBelow(7), 9); // into the third section's column 1
    EXPECT_EQ(layout.indexBelow(12), 12); // last item stays
    EXPECT_EQ(layout.indexAbove(0), 0);

    ThumbnailGridLayout row = makeLayout({3, 4}, true, 470);
    row.setSingleRow(true);
    row.layout(470);
    EXPECT_FALSE(row.showsHeaders());
    EXPECT_EQ(row.itemRect(6).top(), row.itemRect(0).top());
    EXPECT_GT(row.contentSize().width(), 470);
    EXPECT_EQ(row.indexAt(row.itemRect(5).center()), 5);
    EXPECT_EQ(row.itemsInRect(QRect(row.itemRect(2).left(), 0, 10, 10)), std::make_pair(2, 3));
}
