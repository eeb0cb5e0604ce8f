#include "core/windows/NavigationHistory.h"
#include "core/model/PXFile.h"

#include "support/TestDir.h"

#include <gtest/gtest.h>

namespace {

using Item = NavigationHistory::Item;

struct Places
{
    TestDir dir;
    PXFilePtr root = PXFile::fileForPath(dir.mkdir(QStringLiteral("root")));
    PXFilePtr a = PXFile::fileForPath(dir.mkdir(QStringLiteral("root/a")));
    PXFilePtr b = PXFile::fileForPath(dir.mkdir(QStringLiteral("root/b")));
    PXFilePtr c = PXFile::fileForPath(dir.mkdir(QStringLiteral("root/c")));
    PXFilePtr d = PXFile::fileForPath(dir.mkdir(QStringLiteral("root/d")));

    Item at(const PXFilePtr &selected) const { return Item{{selected}, {}, root}; }
};

QList<PXFilePtr> selections(const QList<Item> &items)
{
    QList<PXFilePtr> firsts;
    for (const Item &item : items)
        firsts.append(item.selectedFiles.value(0));
    return firsts;
}

} // namespace

TEST(NavigationHistory, BackAndForwardWalkThePlacesAndANewPlaceDropsTheForwardBranch)
{
    Places places;
    NavigationHistory history;
    EXPECT_FALSE(history.back());
    EXPECT_FALSE(history.currentItem());

    history.record(places.at(places.a));
    EXPECT_TRUE(history.backHistory().isEmpty()); // the first place only becomes current
    history.record(places.at(places.b));
    history.record(places.at(places.c));

    // The window shows what back answers and records it again: that settles, never pushes.
    std::optional<Item> shown = history.back();
    ASSERT_TRUE(shown);
    EXPECT_EQ(shown->selectedFiles.value(0), places.b);
    EXPECT_EQ(selections(history.forwardHistory()), QList<PXFilePtr>({places.c}));
    history.record(*shown);
    EXPECT_EQ(selections(history.backHistory()), QList<PXFilePtr>({places.a}));

    shown = history.back();
    ASSERT_TRUE(shown);
    EXPECT_EQ(shown->selectedFiles.value(0), places.a);
    EXPECT_EQ(selections(history.forwardHistory()), QList<PXFilePtr>({places.c, places.b}));
    history.record(*shown);
    EXPECT_TRUE(history.backHistory().isEmpty());

    // At the oldest place back answers nothing and changes nothing.
    EXPECT_FALSE(history.back());
    EXPECT_EQ(history.currentItem()->selectedFiles.value(0), places.a);
    EXPECT_FALSE(history.performedNavigationAction());

    shown = history.forward();
    ASSERT_TRUE(shown);
    EXPECT_EQ(shown->selectedFiles.value(0), places.b);
    EXPECT_EQ(selections(history.forwardHistory()), QList<PXFilePtr>({places.c}));
    history.record(*shown);

    history.record(places.at(places.d));
    EXPECT_TRUE(history.forwardHistory().isEmpty());
    EXPECT_FALSE(history.forward());
    EXPECT_EQ(selections(history.backHistory()), QList<PXFilePtr>({places.a, places.b}));
}

TEST(NavigationHistory, TheSettlingRecordingKeepsThePlaceAsItCameOutAndRepeatsAreKept)
{
    Places places;
    NavigationHistory history;
    history.record(places.at(places.a));
    history.record(places.at(places.b));
    ASSERT_TRUE(history.back());
    // The folder selected back then has gone: the window shows the root with nothing selected.
    const Item cameOut{{}, {}, places.root};
    history.record(cameOut);
    EXPECT_EQ(*history.currentItem(), cameOut);
    EXPECT_TRUE(history.backHistory().isEmpty());

    // Recording is not deduplicated: the window records only real changes of place.
    history.record(cameOut);
    EXPECT_EQ(history.backHistory().size(), 1);
}

TEST(NavigationHistory, ItemsAreEqualAsSetsOfTheSameFiles)
{
    Places places;
    const Item first{{places.a, places.b}, {places.c}, places.root};
    const Item reordered{{places.b, places.a}, {places.c}, places.root};
    EXPECT_EQ(first, reordered);
    EXPECT_NE(first, (Item{{places.a}, {places.c}, places.root}));
    EXPECT_NE(first, (Item{{places.a, places.b}, {}, places.root}));
    EXPECT_NE(first, (Item{{places.a, places.b}, {places.c}, places.a}));
}
