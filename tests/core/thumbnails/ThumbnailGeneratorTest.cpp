#include "support/CameraJpegs.h"
#include "support/HeldThumbnailer.h"
#include "support/TestDir.h"

#include "core/model/PXFile.h"
#include "core/thumbnails/SystemThumbnailer.h"
#include "core/thumbnails/ThumbnailGenerator.h"

#include <QStringList>

#include <gtest/gtest.h>

namespace {

using Priority = ThumbnailGenerator::Priority;
using RequestPtr = ThumbnailGenerator::RequestPtr;

struct Delivery
{
    QSize size;
    bool final = false;
    bool error = false;
    ThumbnailSource source = ThumbnailSource::none;
};

class ThumbnailGeneratorTest : public ::testing::Test
{
protected:
    ThumbnailGeneratorTest() { generator.setScreenScale(2); }

    RequestPtr request(const QString &name, Priority priority, QList<Delivery> *deliveries = nullptr)
    {
        const QString path = QFile::exists(dir.filePath(name)) ? dir.filePath(name) : dir.write(name, "text");
        auto made = std::make_shared<ThumbnailGenerator::Request>(PXFile::fileForPath(path), QSizeF(400, 400), priority,
                                                                  nullptr);
        std::weak_ptr<ThumbnailGenerator::Request> weak = made;
        made->setUpdateHandler(
            [deliveries, weak](const QImage &image, bool final, std::optional<ThumbnailError> error) {
                if (deliveries)
                    deliveries->append({image.size(), final, bool(error), weak.lock()->source()});
            });
        return made;
    }

    TestDir dir;
    HeldThumbnailer thumbnailer;
    ThumbnailGenerator generator{&thumbnailer};
};

TEST_F(ThumbnailGeneratorTest, StartsTheMostUrgentEarliestRequestAsSlotsFree)
{
    // Six running requests take every slot, so that the choice is made among all seven below.
    QList<RequestPtr> requests;
    for (int i = 0; i < 6; ++i) {
        requests.append(request(QStringLiteral("busy%1.txt").arg(i), Priority::high));
        generator.add(requests.last());
    }
    ASSERT_EQ(thumbnailer.started.size(), 6);
    const QList<Priority> priorities = {Priority::low,    Priority::low,  Priority::medium, Priority::high,
                                        Priority::medium, Priority::high, Priority::low};
    for (int i = 0; i < priorities.size(); ++i) {
        requests.append(request(QStringLiteral("file%1.txt").arg(i), priorities.at(i)));
        generator.add(requests.last());
    }
    EXPECT_EQ(generator.requests().size(), 7);
    for (int i = 0; i < 6; ++i)
        thumbnailer.finish(i);
    ASSERT_TRUE(waitUntil([&] { return thumbnailer.started.size() == 12; }));
    EXPECT_EQ(thumbnailer.started.mid(6),
              QStringList({"file3.txt", "file5.txt", "file2.txt", "file4.txt", "file0.txt", "file1.txt"}));

    // The last low waits for a free slot.
    QCoreApplication::processEvents();
    EXPECT_EQ(thumbnailer.started.size(), 12);
    thumbnailer.finish(6);
    ASSERT_TRUE(waitUntil([&] { return thumbnailer.started.size() == 13; }));
    EXPECT_EQ(thumbnailer.started.last(), "file6.txt");
}

TEST_F(ThumbnailGeneratorTest, PriorityIsReadWhenASlotFrees)
{
    for (int i = 0; i < 6; ++i)
        generator.add(request(QStringLiteral("busy%1.txt").arg(i), Priority::high));
    const RequestPtr older = request(QStringLiteral("older.txt"), Priority::medium);
    const RequestPtr raised = request(QStringLiteral("raised.txt"), Priority::medium);
    const RequestPtr dropped = request(QStringLiteral("dropped.txt"), Priority::high);
    generator.add(older);
    generator.add(raised);
    generator.add(dropped);
    raised->setPriority(Priority::high);
    dropped->setPriority(Priority::cancelled);
    thumbnailer.finish(0);
    ASSERT_TRUE(waitUntil([&] { return thumbnailer.started.size() == 7; }));
    EXPECT_EQ(thumbnailer.started.last(), "raised.txt");

    // Removing takes a waiting request out; with only cancelled ones left nothing starts and
    // the queue is reported.
    generator.remove(older);
    QStringList logged;
    static QStringList *sink;
    sink = &logged;
    const auto previous =
        qInstallMessageHandler([](QtMsgType, const QMessageLogContext &, const QString &text) { sink->append(text); });
    thumbnailer.finish(1);
    waitUntil([&] { return !logged.isEmpty(); }, 1000);
    qInstallMessageHandler(previous);
    EXPECT_EQ(thumbnailer.started.size(), 7);
    ASSERT_EQ(logged.size(), 1);
    EXPECT_TRUE(logged.first().contains("Error: Nothing but cancelled requests in the thumbnail queue"));

    // The next choice drops the cancelled request it meets on the way.
    generator.add(request(QStringLiteral("late.txt"), Priority::low));
    EXPECT_EQ(thumbnailer.started.last(), "late.txt");
    EXPECT_TRUE(generator.requests().isEmpty());
}

TEST_F(ThumbnailGeneratorTest, EmbeddedPreviewIsFinalOnlyWhenItCoversTheCell)
{
    // 160 pixels is less than the 800 that a 400-point cell needs at scale 2: a preliminary
    // picture, then the thumbnailer's.
    CameraJpegs::write(dir.filePath("small.jpg"), QSize(1600, 1200), QSize(160, 120), {});
    QList<Delivery> small;
    generator.add(request(QStringLiteral("small.jpg"), Priority::high, &small));
    ASSERT_TRUE(waitUntil([&] { return thumbnailer.started.size() == 1; }));
    ASSERT_EQ(small.size(), 1);
    EXPECT_EQ(small.first().size, QSize(160, 120));
    EXPECT_FALSE(small.first().final);
    EXPECT_EQ(small.first().source, ThumbnailSource::embedded);
    thumbnailer.finish(0);
    ASSERT_TRUE(waitUntil([&] { return small.size() == 2; }));
    EXPECT_TRUE(small.last().final);
    EXPECT_EQ(small.last().source, ThumbnailSource::rendered);

    // A 1620 x 1080 preview covers it: one final delivery at the 800 pixels the cell needs (a
    // larger one would be kept in memory for nothing), no rendering.
    CameraJpegs::write(dir.filePath("large.jpg"), QSize(2400, 1600), QSize(160, 120), QSize(1620, 1080), 6);
    QList<Delivery> large;
    generator.add(request(QStringLiteral("large.jpg"), Priority::high, &large));
    ASSERT_TRUE(waitUntil([&] { return !large.isEmpty(); }));
    QCoreApplication::processEvents();
    ASSERT_EQ(large.size(), 1);
    EXPECT_TRUE(large.first().final);
    EXPECT_EQ(large.first().size, QSize(533, 800)); // turned upright by orientation 6
    EXPECT_EQ(thumbnailer.started.size(), 1);
    EXPECT_EQ(generator.activeRequestCount(), 0);
}

TEST_F(ThumbnailGeneratorTest, FileWithoutLocationGetsNothingAndCancelledRequestsDeliverNothing)
{
    QList<Delivery> deliveries;
    auto nowhere =
        std::make_shared<ThumbnailGenerator::Request>(nullptr, QSizeF(400, 400), Priority::high,
                                                      [&](const QImage &, bool, std::optional<ThumbnailError>) {
                                                          deliveries.append(Delivery());
                                                      });
    generator.add(nowhere);
    EXPECT_TRUE(nowhere->isCancelled());
    EXPECT_TRUE(generator.requests().isEmpty());

    // A running request that is cancelled still frees its slot but delivers nothing.
    const RequestPtr running = request(QStringLiteral("video.mp4"), Priority::high, &deliveries);
    generator.add(running);
    ASSERT_EQ(thumbnailer.started, QStringList({"video.mp4"})); // not an image: straight to the thumbnailer
    running->cancel();
    thumbnailer.finish(0);
    ASSERT_TRUE(waitUntil([&] { return generator.activeRequestCount() == 0; }));
    QCoreApplication::processEvents();
    EXPECT_TRUE(deliveries.isEmpty());
}

} // namespace
