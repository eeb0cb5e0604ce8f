#include "support/HeldThumbnailer.h"
#include "support/TestDir.h"

#include "core/app/Dispatch.h"
#include "core/settings/WindowSettings.h"
#include "core/thumbnails/SystemThumbnailer.h"
#include "core/thumbnails/ThumbnailVisibilityUpdater.h"

#include <QFileInfo>
#include <QSet>

#include <sched.h>

#include <gtest/gtest.h>

#include <atomic>

namespace {

using Priority = ThumbnailGenerator::Priority;

QString nameOf(int i)
{
    return QStringLiteral("f%1.txt").arg(i, 2, 10, QLatin1Char('0'));
}

// The names of items `from` to `to`, both included.
QStringList names(int from, int to)
{
    QStringList result;
    for (int i = from; i <= to; ++i)
        result.append(nameOf(i));
    return result;
}

class ThumbnailVisibilityUpdaterTest : public ::testing::Test
{
protected:
    ThumbnailVisibilityUpdaterTest()
    {
        // One rendering at a time: the others wait in the order they were asked for.
        generator.setConcurrentRequestsCount(1);
        QObject::connect(&updater, &ThumbnailVisibilityUpdater::thumbnailForgotten,
                         [this](const ThumbnailItem *item) { forgotten.insert(item); });
    }

    ThumbnailItemPtr makeItem(const QString &name)
    {
        return std::make_shared<ThumbnailItem>(PXFile::fileForPath(dir.write(name, "text")), nullptr, generator);
    }

    void makeItems(int count)
    {
        for (int i = 0; i < count; ++i)
            items.append(makeItem(nameOf(i)));
        publish(items);
    }

    // Shows `shown` in this order, as the pane does on each publication.
    void publish(const QList<ThumbnailItemPtr> &shown)
    {
        shownItems = shown;
        indexByFile.clear();
        for (int i = 0; i < shown.size(); ++i) {
            shown[i]->indexPath = i;
            indexByFile.insert(shown[i]->file().get(), i);
        }
    }

    QStringList waiting() const
    {
        QStringList result;
        for (const ThumbnailGenerator::RequestPtr &request : generator.requests())
            result.append(request->file()->name());
        return result;
    }

    QSet<const ThumbnailItem *> forgottenItems(int from, int to) const
    {
        QSet<const ThumbnailItem *> result;
        for (int i = from; i <= to; ++i)
            result.insert(items[i].get());
        return result;
    }

    TestDir dir;
    HeldThumbnailer thumbnailer;
    ThumbnailGenerator generator{&thumbnailer};
    WindowSettingsPtr settings = std::make_shared<WindowSettings>();
    std::atomic<int> reads = 0;
    std::atomic<int> readerPolicy = -1;
    QList<ThumbnailItemPtr> shownItems;
    QHash<const PXFile *, int> indexByFile;
    ThumbnailVisibilityUpdater updater{shownItems, indexByFile, settings,
                                       [this](const PXFile &file, ThumbnailInfoOptions) {
                                           ++reads;
                                           readerPolicy = sched_getscheduler(0);
                                           return QStringList{file.name(), QStringLiteral("lines")};
                                       }};
    QList<ThumbnailItemPtr> items;
    QSet<const ThumbnailItem *> forgotten;
};

TEST_F(ThumbnailVisibilityUpdaterTest, AsksForTheScreenFirstThenTheBandAndForgetsFarAwayPictures)
{
    makeItems(60);
    updater.setVisibleRange(10, 15, 5, 20);
    EXPECT_EQ(thumbnailer.started, QStringList{nameOf(10)});
    EXPECT_EQ(waiting(), names(11, 14) + names(5, 9) + names(15, 19));
    EXPECT_EQ(items[14]->thumbnailRequest()->priority(), Priority::high);
    EXPECT_EQ(items[15]->thumbnailRequest()->priority(), Priority::medium);
    EXPECT_FALSE(items[4]->thumbnailRequest());
    EXPECT_FALSE(items[20]->thumbnailRequest());
    thumbnailer.finish(0);
    ASSERT_TRUE(waitUntil([&] { return items[10]->lookedForThumbnail(); }));

    // A short scroll: what leaves the band stops asking, but pictures this close stay.
    updater.setVisibleRange(15, 20, 10, 25);
    EXPECT_EQ(waiting(), names(12, 14) + names(15, 19) + names(20, 24));
    EXPECT_EQ(items[10]->visible(), Visibility::nearby);
    EXPECT_FALSE(items[10]->thumbnail().isNull());
    EXPECT_EQ(items[5]->visible(), Visibility::offscreen);
    EXPECT_TRUE(forgotten.isEmpty());

    // A jump far away: everything near the old place forgets its picture, including the items
    // that had already left the band.
    updater.setVisibleRange(45, 50, 40, 55);
    EXPECT_EQ(waiting(), names(45, 49) + names(40, 44) + names(50, 54));
    EXPECT_TRUE(items[10]->thumbnail().isNull());
    EXPECT_EQ(forgotten, forgottenItems(5, 24));
    EXPECT_EQ(items[5]->visible(), Visibility::offscreen);
}

TEST_F(ThumbnailVisibilityUpdaterTest, ARepublicationKeepsTheRequestsOfItemsStillInView)
{
    makeItems(30);
    updater.setVisibleRange(0, 5, 0, 10);
    const ThumbnailGenerator::RequestPtr stays = items[2]->thumbnailRequest();
    const ThumbnailGenerator::RequestPtr movesToTheBand = items[4]->thumbnailRequest();
    ASSERT_TRUE(stays && movesToTheBand);

    // Two files arrive in front and f03 leaves: the same view now shows other items.
    const ThumbnailItemPtr a = makeItem(QStringLiteral("a.txt"));
    const ThumbnailItemPtr b = makeItem(QStringLiteral("b.txt"));
    QList<ThumbnailItemPtr> shown{a, b};
    shown += items;
    shown.removeOne(items[3]);
    updater.forget(items[3].get());
    publish(shown);
    updater.setVisibleRange(0, 5, 0, 10);

    EXPECT_EQ(items[2]->thumbnailRequest(), stays);
    EXPECT_EQ(stays->priority(), Priority::high);
    EXPECT_EQ(items[4]->thumbnailRequest(), movesToTheBand);
    EXPECT_EQ(movesToTheBand->priority(), Priority::medium);
    EXPECT_FALSE(items[3]->thumbnailRequest());
    EXPECT_TRUE(forgotten.contains(items[3].get()));
    EXPECT_FALSE(items[9]->thumbnailRequest()); // pushed out of the band
    // Requests kept keep their places in the queue; the newcomers ask after them.
    EXPECT_EQ(waiting(), names(1, 2) + names(4, 8) + QStringList({"a.txt", "b.txt"}));
}

TEST_F(ThumbnailVisibilityUpdaterTest, ReadsInformationLinesOfTheBandOnceUntilTheyChange)
{
    settings->setThumbnailShowInformation(true);
    settings->setThumbnailInformation(ThumbnailInfoOption::filename | ThumbnailInfoOption::dimensions);
    makeItems(20);
    QList<int> arrived;
    QObject::connect(&updater, &ThumbnailVisibilityUpdater::infoLinesChanged,
                     [&arrived](int index) { arrived.append(index); });
    const auto settle = [] {
        namedThreadPool(QStringLiteral("Thumbnail Info"))->waitForDone();
        QCoreApplication::processEvents();
    };

    updater.setVisibleRange(0, 5, 0, 10);
    updater.setVisibleRange(0, 5, 0, 10); // while they are read: not asked twice
    settle();
    EXPECT_EQ(reads.load(), 10);
    EXPECT_EQ(readerPolicy.load(), SCHED_IDLE); // out of the GUI thread's way
    EXPECT_EQ(arrived.size(), 10);
    EXPECT_EQ(updater.infoLines(items[3]->file().get()), (QStringList{nameOf(3), "lines"}));
    EXPECT_FALSE(updater.infoLines(items[10]->file().get()));
    updater.setVisibleRange(0, 5, 0, 10);
    settle();
    EXPECT_EQ(reads.load(), 10);

    // A changed file is read again; lines read for settings that changed since are dropped.
    updater.forgetInfoLines(items[3]->file().get());
    updater.setVisibleRange(0, 5, 0, 10);
    updater.clearInfoLines();
    settle();
    EXPECT_EQ(reads.load(), 11);
    EXPECT_EQ(arrived.size(), 10);
    EXPECT_FALSE(updater.infoLines(items[3]->file().get()));
    updater.setVisibleRange(0, 5, 0, 10);
    settle();
    EXPECT_EQ(reads.load(), 21);
    EXPECT_TRUE(updater.infoLines(items[3]->file().get()));

    // Only the name: nothing to read.
    settings->setThumbnailInformation(ThumbnailInfoOption::filename);
    updater.clearInfoLines();
    updater.setVisibleRange(0, 5, 0, 10);
    settle();
    EXPECT_EQ(reads.load(), 21);
}

} // namespace
