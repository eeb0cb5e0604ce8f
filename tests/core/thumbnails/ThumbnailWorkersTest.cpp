#include "support/CameraJpegs.h"
#include "support/TestDir.h"

#include "core/app/Dispatch.h"
#include "core/model/PXFile.h"
#include "core/thumbnails/SystemThumbnailer.h"
#include "core/thumbnails/ThumbnailGenerator.h"
#include "core/thumbnails/ThumbnailThrottle.h"

#include <QThread>
#include <QThreadPool>

#include <sched.h>

#include <atomic>
#include <chrono>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

namespace {

// Workers that each take a slot and keep it until the test lets one of them go.
class SlotHolders
{
public:
    SlotHolders(ThumbnailThrottle &throttle, int count)
    {
        for (int i = 0; i < count; ++i) {
            m_threads.emplace_back([this, &throttle] {
                {
                    const ThumbnailThrottle::Slot slot = throttle.acquire();
                    while (!takeTicket())
                        std::this_thread::sleep_for(std::chrono::milliseconds(1));
                }
                ++finished;
            });
        }
    }
    ~SlotHolders()
    {
        m_tickets += 1000;
        for (std::thread &thread : m_threads)
            thread.join();
    }

    void letGo(int count) { m_tickets += count; }
    std::atomic<int> finished = 0;

private:
    bool takeTicket()
    {
        int tickets = m_tickets.load();
        while (tickets > 0) {
            if (m_tickets.compare_exchange_weak(tickets, tickets - 1))
                return true;
        }
        return false;
    }

    std::atomic<int> m_tickets = 0;
    std::vector<std::thread> m_threads;
};

// The scheduling policy of the thread that runs a task on `pool`.
int policyOfWorker(QThreadPool *pool)
{
    std::atomic<int> policy = -2;
    pool->start([&policy] { policy = sched_getscheduler(0); });
    waitUntil([&] { return policy != -2; });
    return policy;
}

TEST(ThumbnailThrottle, HoldsDecodersToTheBusyCapWithoutInterruptingAny)
{
    ThumbnailThrottle throttle(6, 2);
    throttle.setBusy(true);
    {
        SlotHolders holders(throttle, 6);
        ASSERT_TRUE(waitUntil([&] { return throttle.waiting() == 4; }));
        EXPECT_EQ(throttle.running(), 2);
        // Calm again: everyone decodes.
        throttle.setBusy(false);
        ASSERT_TRUE(waitUntil([&] { return throttle.running() == 6; }));
        EXPECT_EQ(throttle.waiting(), 0);

        // Busy while all six decode: none is stopped, and a newcomer waits until only one is left
        // (two slots while busy).
        throttle.setBusy(true);
        EXPECT_EQ(throttle.running(), 6);
        SlotHolders newcomer(throttle, 1);
        ASSERT_TRUE(waitUntil([&] { return throttle.waiting() == 1; }));
        holders.letGo(4);
        ASSERT_TRUE(waitUntil([&] { return holders.finished == 4; }));
        EXPECT_EQ(throttle.waiting(), 1);
        holders.letGo(1);
        ASSERT_TRUE(waitUntil([&] { return throttle.waiting() == 0; }));
        EXPECT_EQ(throttle.running(), 2);
    }
    EXPECT_EQ(throttle.running(), 0);

    // A machine with one core still decodes one at a time.
    EXPECT_GE(ThumbnailThrottle::defaultBusyLimit(), 1);
    EXPECT_EQ(ThumbnailThrottle::defaultBusyLimit(), qMax(1, QThread::idealThreadCount() - 1));
}

TEST(ThumbnailWorkers, WindowsWorkersRunInTheIdleClassTheCommandLinesDoNot)
{
    ThumbnailGenerator &shared = ThumbnailGenerator::shared();
    EXPECT_EQ(policyOfWorker(shared.utilityQueue()), SCHED_IDLE);

    // The thumbnailer's pool: its handler runs on the worker (a cancelled request touches no
    // file and no cache).
    auto policyOfRender = [](SystemThumbnailer &thumbnailer) {
        auto request = std::make_shared<SystemThumbnailRequest>("/nonexistent.jpg", QSizeF(400, 400), 1);
        request->cancel();
        std::atomic<int> policy = -2;
        thumbnailer.generate(request, [&policy](const SystemThumbnailResult &) { policy = sched_getscheduler(0); });
        thumbnailer.waitForDone();
        return policy.load();
    };
    EXPECT_EQ(policyOfRender(SystemThumbnailer::shared()), SCHED_IDLE);

    // Made as the command line makes them: ordinary threads.
    SystemThumbnailer thumbnailer{ThumbnailCache(QStringLiteral("/nonexistent"))};
    ThumbnailGenerator generator(&thumbnailer);
    EXPECT_EQ(policyOfWorker(generator.utilityQueue()), SCHED_OTHER);
    EXPECT_EQ(policyOfRender(thumbnailer), SCHED_OTHER);
}

TEST(ThumbnailWorkers, QtsGlobalPoolStaysOrdinaryWhenAnIdleWorkerSharesWorkWithIt)
{
    // Smooth scaling and conversions on a worker hand slices of the work to Qt's global pool, as
    // the GUI thread's painting does: a thread started there by the worker would be idle-class.
    QThreadPool pool;
    setBackgroundPriority(&pool);
    std::atomic<int> workerPolicy = -2;
    std::atomic<int> slicePolicy = -2;
    pool.start([&] {
        workerPolicy = sched_getscheduler(0);
        QThreadPool::globalInstance()->start([&slicePolicy] { slicePolicy = sched_getscheduler(0); });
    });
    ASSERT_TRUE(waitUntil([&] { return slicePolicy != -2; }));
    EXPECT_EQ(workerPolicy, SCHED_IDLE);
    EXPECT_EQ(slicePolicy, SCHED_OTHER);
}

TEST(ThumbnailWorkers, PreviewReadsAndRendersWaitForASlotWhileAnyViewScrolls)
{
    TestDir dir;
    ThumbnailCache cache(dir.filePath("cache"));
    SystemThumbnailer thumbnailer(cache);
    ThumbnailGenerator generator(&thumbnailer);
    generator.setScreenScale(2);
    ThumbnailThrottle &throttle = *thumbnailer.throttle();

    // Two views scroll; the decoders stay held back until both have stopped.
    generator.viewScrollingChanged(true);
    generator.viewScrollingChanged(true);
    generator.viewScrollingChanged(false);
    EXPECT_TRUE(throttle.isBusy());
    EXPECT_EQ(throttle.currentLimit(), qMin(ThumbnailThrottle::defaultBusyLimit(), 6));
    generator.viewScrollingChanged(false);
    EXPECT_FALSE(throttle.isBusy());
    EXPECT_EQ(throttle.currentLimit(), 6);
    generator.viewScrollingChanged(false); // an extra stop does not make the next start count less
    generator.viewScrollingChanged(true);
    EXPECT_TRUE(throttle.isBusy());

    // Every busy slot taken: a request gets no preview until one is returned. The test takes it
    // back as the preview arrives, and the rendering waits in turn.
    std::vector<ThumbnailThrottle::Slot> taken;
    for (int i = 0; i < throttle.currentLimit(); ++i)
        taken.push_back(throttle.acquire());
    const QString photo = CameraJpegs::write(dir.filePath("photo.jpg"), QSize(1600, 1200), QSize(160, 120), {});
    QList<bool> deliveries;
    generator.add(
        std::make_shared<ThumbnailGenerator::Request>(PXFile::fileForPath(photo), QSizeF(400, 400),
                                                      ThumbnailGenerator::Priority::high,
                                                      [&](const QImage &, bool final, std::optional<ThumbnailError>) {
                                                          deliveries.append(final);
                                                          if (!final)
                                                              taken.push_back(throttle.acquire());
                                                      }));
    ASSERT_TRUE(waitUntil([&] { return throttle.waiting() == 1; }));
    QCoreApplication::processEvents();
    EXPECT_TRUE(deliveries.isEmpty());

    taken.pop_back();
    ASSERT_TRUE(waitUntil([&] { return deliveries.size() == 1; }));
    EXPECT_FALSE(deliveries.first()); // the small preview, for now
    ASSERT_TRUE(waitUntil([&] { return throttle.waiting() == 1; }));
    EXPECT_EQ(deliveries.size(), 1);

    // Stopping lifts the cap without a slot coming back.
    generator.viewScrollingChanged(false);
    ASSERT_TRUE(waitUntil([&] { return deliveries.size() == 2; }));
    EXPECT_TRUE(deliveries.last());
    taken.clear();
}

} // namespace
