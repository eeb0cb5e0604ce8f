#include "core/imaging/ImagePropertiesLoader.h"
#include "core/imaging/ImagePropertiesManager.h"
#include "core/model/PXFile.h"

#include "support/TestDir.h"
#include "support/TestImages.h"

#include <QFileInfo>
#include <QMap>
#include <QThreadPool>

#include <gtest/gtest.h>

namespace {

using State = ImagePropertiesLoader::CompletionState;

// Images and one file that is not readable as an image, in a fresh folder.
struct Selection
{
    TestDir dir;
    QList<PXFilePtr> files;

    explicit Selection(int images)
    {
        for (int i = 0; i < images; ++i) {
            TestImages::JpegOptions options;
            options.model = QStringLiteral("Camera %1").arg(i);
            files.append(PXFile::fileForPath(
                TestImages::writeJpeg(dir.filePath(QStringLiteral("%1.jpg").arg(i)), QSize(32, 32), options)));
        }
        files.append(PXFile::fileForPath(dir.write(QStringLiteral("broken.jpg"), QByteArray("\xff\xd8\xff", 3))));
    }
};

} // namespace

TEST(ImagePropertiesLoader, deliversEveryRecordAndErrorOnceOnTheGuiThread)
{
    ImagePropertiesLoader loader;
    std::optional<State> state;
    int calls = 0;
    bool onGuiThread = false;
    loader.load({}, [&](const State &finished) {
        ++calls;
        state = finished;
        onGuiThread = QThread::currentThread() == qApp->thread();
    });
    EXPECT_FALSE(state) << "an empty load still completes later, not inside load()";
    ASSERT_TRUE(waitUntil([&] { return state.has_value(); }));
    EXPECT_TRUE(onGuiThread);
    EXPECT_EQ(state->kind, State::Kind::completed);
    EXPECT_TRUE(state->results.isEmpty() && state->errors.isEmpty());
    EXPECT_FALSE(loader.isLoading());

    Selection selection(6);
    state.reset();
    loader.load(selection.files, [&](const State &finished) {
        ++calls;
        state = finished;
    });
    EXPECT_TRUE(loader.isLoading());
    ASSERT_TRUE(waitUntil([&] { return state.has_value(); }));
    EXPECT_EQ(calls, 2);
    EXPECT_EQ(state->results.size(), 6);
    ASSERT_EQ(state->errors.size(), 1);
    EXPECT_EQ(state->errors.first().file, selection.files.last());
    EXPECT_EQ(state->errors.first().error, LoadingError::cannotLoadData);
    QStringList models;
    for (const ImagePropertiesItemPtr &item : state->results)
        models.append(item->tiffHardwareModel.value_or(QString()));
    models.sort();
    EXPECT_EQ(models.first(), QStringLiteral("Camera 0"));
    EXPECT_EQ(loader.results().size(), 6);
}

TEST(ImagePropertiesLoader, aCancelledOrReplacedLoadStaysSilent)
{
    Selection selection(20);
    QThreadPool pool;
    pool.setMaxThreadCount(1);
    ImagePropertiesLoader loader(&pool);

    int cancelledCalls = 0;
    loader.load(selection.files, [&](const State &) { ++cancelledCalls; });
    loader.cancel();
    EXPECT_FALSE(loader.isLoading());
    EXPECT_TRUE(loader.results().isEmpty());

    // A load started while another runs replaces it: only the second completes.
    int firstCalls = 0;
    std::optional<State> second;
    loader.load(selection.files, [&](const State &) { ++firstCalls; });
    loader.load(selection.files.mid(0, 2), [&](const State &state) { second = state; });
    ASSERT_TRUE(waitUntil([&] { return second.has_value(); }, 20000));
    pool.waitForDone();
    QCoreApplication::processEvents();
    EXPECT_EQ(cancelledCalls, 0);
    EXPECT_EQ(firstCalls, 0);
    EXPECT_EQ(second->results.size(), 2);
    EXPECT_EQ(loader.results().size(), 2) << "deliveries of the replaced load must not land";

    // A loader destroyed while its reads run delivers nothing and does not crash.
    int orphanCalls = 0;
    {
        ImagePropertiesLoader doomed(&pool);
        doomed.load(selection.files, [&](const State &) { ++orphanCalls; });
    }
    pool.waitForDone();
    QCoreApplication::processEvents();
    EXPECT_EQ(orphanCalls, 0);
}

TEST(ImagePropertiesManager, keepsItsSubscriptionInStepWithItsRecords)
{
    Selection selection(3);
    ImagePropertiesManager manager;
    manager.setMaximumCount(2);
    QList<ImagePropertiesItemPtr> items;
    for (int i = 0; i < 3; ++i)
        items.append(ImagePropertiesItem::load(selection.files[i]));

    manager.insert(items[0]);
    manager.insert(items[1]);
    EXPECT_EQ(manager.item(selection.files[0]), items[0]); // now the most recently used
    manager.insert(items[2]); // evicts files[1]
    EXPECT_EQ(manager.count(), 2);
    EXPECT_FALSE(manager.item(selection.files[1]));
    const auto subscribed = [&] {
        QStringList paths;
        for (const PXFilePtr &file : manager.subscribedFiles())
            paths.append(file->name());
        paths.sort();
        return paths.join(QLatin1Char(' '));
    };
    EXPECT_EQ(subscribed(), QStringLiteral("0.jpg 2.jpg"));

    manager.insert(ImagePropertiesItem::load(selection.files[2])); // a newer record of a held file
    EXPECT_EQ(manager.count(), 2);
    EXPECT_NE(manager.item(selection.files[2]), items[2]);

    // A file written to loses its record, so the next selection reads it again.
    TestImages::writeJpeg(selection.files[0]->path(), QSize(8, 8));
    EXPECT_TRUE(waitUntil([&] { return !manager.item(selection.files[0]); }));
    EXPECT_EQ(subscribed(), QStringLiteral("2.jpg"));

    manager.clear();
    EXPECT_EQ(subscribed(), QString());
}

namespace {
void setModified(const QString &path, const QDateTime &time)
{
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::ReadWrite));
    ASSERT_TRUE(file.setFileTime(time, QFileDevice::FileModificationTime));
}
} // namespace

TEST(ImagePropertiesLoader, TakesUnchangedFilesFromTheCacheAndReadsChangedOnesAgain)
{
    Selection selection(3);
    // A whole second, so that setting it again later gives the very same time.
    const QDateTime wholeSecond(QDate(2021, 6, 1), QTime(12, 0), Qt::UTC);
    const QString touched = selection.files[0]->path();
    const QString rewritten = selection.files[1]->path();
    setModified(rewritten, wholeSecond);
    ImagePropertiesManager cache;
    ImagePropertiesLoader loader;
    loader.setCache(&cache);
    // The records of a load, by file name.
    const auto load = [&] {
        std::optional<State> state;
        loader.load(selection.files, [&](const State &finished) { state = finished; });
        EXPECT_TRUE(waitUntil([&] { return state.has_value(); }, 20000));
        QMap<QString, ImagePropertiesItemPtr> records;
        if (state) {
            for (const ImagePropertiesItemPtr &item : state->results)
                records.insert(item->file()->name(), item);
            EXPECT_EQ(state->errors.size(), 1);
        }
        return records;
    };
    const QMap<QString, ImagePropertiesItemPtr> first = load();
    ASSERT_EQ(first.size(), 3);
    EXPECT_EQ(cache.count(), 3) << "the broken file has no record to keep";

    // The same selection again: the very same records, no file read.
    const QMap<QString, ImagePropertiesItemPtr> again = load();
    for (const QString &name : first.keys())
        EXPECT_EQ(again.value(name).get(), first.value(name).get()) << name.toStdString();

    // Changed before any change event can arrive: only the record's own stamp tells. 0.jpg gets
    // a new modification time alone; 1.jpg new bytes of another size under its old time.
    setModified(touched, QFileInfo(touched).lastModified().addSecs(-60));
    TestImages::JpegOptions other;
    other.model = QStringLiteral("Another Camera Entirely");
    TestImages::writeJpeg(rewritten, QSize(32, 32), other);
    setModified(rewritten, wholeSecond);

    const QMap<QString, ImagePropertiesItemPtr> changed = load();
    EXPECT_NE(changed.value("0.jpg").get(), first.value("0.jpg").get());
    ASSERT_NE(changed.value("1.jpg").get(), first.value("1.jpg").get());
    EXPECT_EQ(changed.value("1.jpg")->tiffHardwareModel, QStringLiteral("Another Camera Entirely"));
    EXPECT_EQ(changed.value("2.jpg").get(), first.value("2.jpg").get());
    EXPECT_EQ(cache.item(selection.files[1]).get(), changed.value("1.jpg").get())
        << "the fresh record replaces the old";
}

TEST(ImagePropertiesLoader, CompletesOnlyAfterTheLastDeliveryHowEverFastTheJobs)
{
    // Records from the cache make every job a stat, and more threads than cores get
    // interrupted anywhere: the deliveries race each other.
    Selection selection(60);
    ImagePropertiesManager cache;
    QThreadPool pool;
    pool.setMaxThreadCount(16);
    ImagePropertiesLoader loader(&pool);
    loader.setCache(&cache);
    for (int round = 0; round < 40; ++round) {
        std::optional<State> state;
        loader.load(selection.files, [&](const State &finished) { state = finished; });
        ASSERT_TRUE(waitUntil([&] { return state.has_value(); }, 20000));
        ASSERT_EQ(state->results.size() + state->errors.size(), 61) << "round " << round;
    }
    QCoreApplication::processEvents();
    EXPECT_EQ(loader.results().size(), 60) << "a late delivery must not land in the next load";
}
