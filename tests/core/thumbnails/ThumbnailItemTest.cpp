#include "support/TestDir.h"

#include "core/model/PXFile.h"
#include "core/thumbnails/SystemThumbnailer.h"
#include "core/thumbnails/ThumbnailItem.h"

#include <QFile>

#include <gtest/gtest.h>

namespace {

using Priority = ThumbnailGenerator::Priority;

// Answers every rendering at once with a picture, or with an error when told to fail.
class InstantThumbnailer : public SystemThumbnailer
{
public:
    InstantThumbnailer()
        : SystemThumbnailer(ThumbnailCache(QStringLiteral("/nonexistent")))
    { }

    void generate(const std::shared_ptr<SystemThumbnailRequest> &, Handler handler) override
    {
        ++calls;
        if (fail) {
            handler({QImage(), ThumbnailError{"test", 7, "cannot"}, ThumbnailSource::failed});
        } else {
            QImage image(64, 48, QImage::Format_RGB32);
            image.fill(Qt::gray);
            handler({image, std::nullopt, ThumbnailSource::rendered});
        }
    }

    int calls = 0;
    bool fail = false;
};

class CountingDelegate : public QObject, public ThumbnailItemDelegate
{
public:
    void thumbnailItemThumbnailChanged(ThumbnailItem &) override { ++changes; }
    int changes = 0;
};

class ThumbnailItemTest : public ::testing::Test
{
protected:
    ThumbnailItemPtr makeItem(const QString &name)
    {
        auto item = std::make_shared<ThumbnailItem>(PXFile::fileForPath(dir.write(name, "text")), nullptr, generator);
        item->setController(&delegate, &delegate);
        return item;
    }

    TestDir dir;
    InstantThumbnailer thumbnailer;
    ThumbnailGenerator generator{&thumbnailer};
    CountingDelegate delegate;
};

TEST_F(ThumbnailItemTest, PriorityFollowsVisibilityAndOffscreenWithdraws)
{
    // Fill every slot so that the item's request waits.
    generator.setConcurrentRequestsCount(1);
    const ThumbnailItemPtr busy = makeItem("busy.mp4");
    const ThumbnailItemPtr item = makeItem("clip.mp4");
    // The busy item's request is answered only after a turn of the event loop, so it holds the slot.
    busy->setVisible(Visibility::onscreen);
    item->setVisible(Visibility::nearby);
    ASSERT_TRUE(item->thumbnailRequest());
    EXPECT_EQ(item->thumbnailRequest()->priority(), Priority::medium);
    item->setVisible(Visibility::onscreen);
    EXPECT_EQ(item->thumbnailRequest()->priority(), Priority::high);
    EXPECT_EQ(generator.requests().size(), 1);

    // Scrolled away before it started: it leaves the queue and nothing is delivered.
    item->setVisible(Visibility::offscreen);
    EXPECT_FALSE(item->thumbnailRequest());
    EXPECT_TRUE(generator.requests().isEmpty());
    ASSERT_TRUE(waitUntil([&] { return busy->lookedForThumbnail(); }));
    QCoreApplication::processEvents();
    EXPECT_FALSE(item->lookedForThumbnail());
    EXPECT_EQ(thumbnailer.calls, 1);

    // Scrolled back: a new request, answered.
    item->setVisible(Visibility::onscreen);
    ASSERT_TRUE(waitUntil([&] { return item->lookedForThumbnail(); }));
    EXPECT_EQ(item->thumbnail().size(), QSize(64, 48));
    EXPECT_FALSE(item->thumbnailRequest());
    EXPECT_EQ(delegate.changes, 2);
}

TEST_F(ThumbnailItemTest, FailureIsKeptUntilReloadAndReloadKeepsThePicture)
{
    const ThumbnailItemPtr item = makeItem("clip.mp4");
    item->setVisible(Visibility::onscreen);
    ASSERT_TRUE(waitUntil([&] { return item->lookedForThumbnail(); }));
    EXPECT_FALSE(item->thumbnail().isNull());

    // Reload keeps the old picture on show while it asks again; this time the render fails.
    thumbnailer.fail = true;
    item->reload();
    EXPECT_FALSE(item->lookedForThumbnail());
    EXPECT_FALSE(item->thumbnail().isNull());
    ASSERT_TRUE(waitUntil([&] { return item->lookedForThumbnail(); }));
    EXPECT_TRUE(item->thumbnail().isNull());
    EXPECT_EQ(thumbnailer.calls, 2);

    // A failed item does not ask again when it comes back into view.
    item->setVisible(Visibility::offscreen);
    item->setVisible(Visibility::onscreen);
    QCoreApplication::processEvents();
    EXPECT_EQ(thumbnailer.calls, 2);

    item->reset();
    EXPECT_FALSE(item->lookedForThumbnail());
}

TEST_F(ThumbnailItemTest, ReleasedItemDropsItsResult)
{
    ThumbnailItemPtr item = makeItem("clip.mp4");
    item->setVisible(Visibility::onscreen);
    const ThumbnailGenerator::RequestPtr request = item->thumbnailRequest();
    ASSERT_TRUE(request);
    item.reset();
    EXPECT_TRUE(request->isCancelled());
    QCoreApplication::processEvents();
    waitUntil([&] { return generator.activeRequestCount() == 0; }, 1000);
    EXPECT_EQ(delegate.changes, 0);
}

} // namespace
