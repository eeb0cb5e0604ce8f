#include "core/fs/ZQFolderLoadOperation.h"

#include "core/app/Dispatch.h"
#include "support/FileNames.h"
#include "support/TestDir.h"

#include <QCoreApplication>
#include <QFile>
#include <QSet>

#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

// The listed folders relative to `root` ("" for the root itself), sorted; fails unless the
// root comes first and no folder comes before one of a nearer level.
std::string foldersOf(const QList<ZQFolderListing> &listings, const QString &root)
{
    QStringList folders;
    qsizetype level = 0;
    for (const ZQFolderListing &listing : listings) {
        const QString relative = listing.folder->path().mid(root.size());
        EXPECT_GE(relative.count(QLatin1Char('/')), level) << qPrintable(relative) << " listed too late";
        level = relative.count(QLatin1Char('/'));
        folders.append(relative);
    }
    EXPECT_TRUE(!folders.isEmpty() && folders.first().isEmpty()) << "the folder itself comes first";
    folders.sort();
    return folders.join(QStringLiteral(", ")).toStdString();
}

// Lets every queued worker finish and every posted batch arrive.
void drainPool()
{
    namedThreadPool(QString::fromLatin1(ZQFolderLoadOperation::poolName))->waitForDone();
    QCoreApplication::processEvents();
    QCoreApplication::sendPostedEvents();
}

struct Recorder
{
    QList<std::pair<ZQFilePtr, QList<ZQFilePtr>>> batches;
    QList<std::pair<ZQFilePtr, QString>> failures;
    int finishedCount = 0;

    void attach(ZQFolderLoadOperation *operation)
    {
        QObject::connect(operation, &ZQFolderLoadOperation::batchLoaded, operation,
                         [this](const ZQFilePtr &folder, const QList<ZQFilePtr> &files) {
                             batches.append({folder, files});
                         });
        QObject::connect(operation, &ZQFolderLoadOperation::folderFailed, operation,
                         [this](const ZQFilePtr &folder, const QString &reason) {
                             failures.append({folder, reason});
                         });
        QObject::connect(operation, &ZQFolderLoadOperation::finished, operation, [this] { ++finishedCount; });
    }
    QList<ZQFilePtr> allFiles() const
    {
        QList<ZQFilePtr> all;
        for (const auto &batch : batches)
            all += batch.second;
        return all;
    }
};

class ZQFolderLoadOperationTree : public ::testing::Test
{
protected:
    void SetUp() override
    {
        dir.write(QStringLiteral("a.jpg"));
        dir.write(QStringLiteral(".hidden"));
        dir.write(QStringLiteral("sub/b.jpg"));
        dir.write(QStringLiteral("sub/notes.txt"));
        dir.write(QStringLiteral("sub/deep/c.jpg"));
        dir.write(QStringLiteral("sub/deep/deeper/d.jpg"));
        dir.write(QStringLiteral("skip/e.jpg"));
        // Leads back up: walking into it would never end.
        dir.symlink(dir.path(), QStringLiteral("loop"));
        root = ZQStandardFile::newFileForPath(dir.path());
    }

    TestDir dir;
    ZQFilePtr root;
};

} // namespace

TEST_F(ZQFolderLoadOperationTree, ListsToTheRequestedDepthWithoutFollowingLinks)
{
    ZQFolderLoadOptions options;
    const QList<ZQFolderListing> flat = ZQFolderLoadOperation::listSynchronously(root, options);
    ASSERT_EQ(flat.size(), 1);
    EXPECT_EQ(flat[0].folder, root);
    EXPECT_TRUE(flat[0].error.isEmpty());
    EXPECT_EQ(nameList(flat[0].files), ".hidden, a.jpg, loop, skip, sub");
    for (const ZQFilePtr &file : flat[0].files) {
        EXPECT_EQ(file->isSymbolicLink(), file->name() == QLatin1String("loop")) << qPrintable(file->name());
        EXPECT_EQ(file->isDirectory(), file->name() == "sub" || file->name() == "skip" || file->name() == "loop");
    }

    options.depth = 1;
    EXPECT_EQ(foldersOf(ZQFolderLoadOperation::listSynchronously(root, options), dir.path()), ", /skip, /sub");

    options.depth = 2;
    const QList<ZQFolderListing> two = ZQFolderLoadOperation::listSynchronously(root, options);
    EXPECT_EQ(foldersOf(two, dir.path()), ", /skip, /sub, /sub/deep");
    EXPECT_EQ(nameList(two.last().files), "c.jpg, deeper");

    options.depth = 10;
    EXPECT_EQ(ZQFolderLoadOperation::listSynchronously(root, options).size(), 5);
}

TEST_F(ZQFolderLoadOperationTree, FiltersEntriesAndFoldersSeparately)
{
    ZQFolderLoadOptions options;
    options.depth = 5;
    options.fileFilter = [](const ZQFilePtr &file) { return file->name().endsWith(QLatin1String(".jpg")); };
    options.folderFilter = [](const ZQFilePtr &folder) { return folder->name() != QLatin1String("skip"); };
    const QList<ZQFolderListing> listings = ZQFolderLoadOperation::listSynchronously(root, options);

    // Folders that the file filter hides are still walked; the folder filter stops the walk.
    EXPECT_EQ(foldersOf(listings, dir.path()), ", /sub, /sub/deep, /sub/deep/deeper");
    EXPECT_EQ(nameList(listings[0].files), "a.jpg");
    EXPECT_EQ(nameList(listings[1].files), "b.jpg");
}

TEST_F(ZQFolderLoadOperationTree, BackgroundListingMatchesTheSynchronousOne)
{
    for (int i = 0; i < 45; ++i)
        dir.write(QStringLiteral("sub/many/%1.png").arg(i));
    ZQFolderLoadOptions options;
    options.depth = 3;
    options.batchSize = 10;

    ZQFolderLoadOperation operation(root, options);
    Recorder recorder;
    recorder.attach(&operation);
    operation.start();
    EXPECT_TRUE(operation.isRunning());
    ASSERT_TRUE(waitUntil([&] { return recorder.finishedCount > 0; }));
    EXPECT_FALSE(operation.isRunning());
    drainPool();
    EXPECT_EQ(recorder.finishedCount, 1);
    EXPECT_TRUE(recorder.failures.isEmpty());

    int manyBatches = 0;
    for (const auto &[folder, files] : recorder.batches) {
        EXPECT_LE(files.size(), 10);
        if (folder->name() == QLatin1String("many"))
            ++manyBatches;
    }
    EXPECT_EQ(manyBatches, 5);

    QList<ZQFilePtr> expected;
    for (const ZQFolderListing &listing : ZQFolderLoadOperation::listSynchronously(root, options))
        expected += listing.files;
    const QList<ZQFilePtr> found = recorder.allFiles();
    EXPECT_EQ(found.size(), expected.size());
    QSet<ZQStandardFile *> foundObjects, expectedObjects;
    for (const ZQFilePtr &file : found)
        foundObjects.insert(file.get());
    for (const ZQFilePtr &file : expected)
        expectedObjects.insert(file.get());
    EXPECT_EQ(foundObjects, expectedObjects);
}

TEST(ZQFolderLoadOperation, NothingArrivesAfterCancelOrDestruction)
{
    TestDir dir;
    for (int i = 0; i < 400; ++i)
        dir.write(QStringLiteral("f%1").arg(i));
    const ZQFilePtr folder = ZQStandardFile::newFileForPath(dir.path());
    ZQFolderLoadOptions options;
    options.batchSize = 1;

    ZQFolderLoadOperation operation(folder, options);
    Recorder recorder;
    recorder.attach(&operation);
    // Cancelled on the first batch, while the others are already on their way.
    auto cancelOnce =
        QObject::connect(&operation, &ZQFolderLoadOperation::batchLoaded, &operation, [&] { operation.cancel(); });
    operation.start();
    ASSERT_TRUE(waitUntil([&] { return !recorder.batches.isEmpty(); }));
    EXPECT_FALSE(operation.isRunning());
    drainPool();
    EXPECT_EQ(recorder.batches.size(), 1);
    EXPECT_EQ(recorder.finishedCount, 0);
    QObject::disconnect(cancelOnce);

    // Destroyed while its worker still posts: whatever was posted dies with it.
    int late = 0;
    QObject witness;
    auto *doomed = new ZQFolderLoadOperation(folder, options);
    QObject::connect(doomed, &ZQFolderLoadOperation::batchLoaded, &witness, [&] { ++late; });
    doomed->start();
    delete doomed;
    drainPool();
    EXPECT_EQ(late, 0);

    // A cancelled operation can start over.
    operation.start();
    ASSERT_TRUE(waitUntil([&] { return recorder.finishedCount == 1; }));
}

TEST(ZQFolderLoadOperation, ReportsFoldersThatCannotBeRead)
{
    TestDir dir;
    const QString file = dir.write(QStringLiteral("plain.txt"));
    const ZQFilePtr vanished = ZQStandardFile::newFileForPath(dir.filePath(QStringLiteral("vanished")));

    const QList<ZQFolderListing> gone = ZQFolderLoadOperation::listSynchronously(vanished, {});
    ASSERT_EQ(gone.size(), 1);
    EXPECT_EQ(gone[0].error, QStringLiteral("No such file or directory"));
    EXPECT_TRUE(gone[0].files.isEmpty());

    ZQFolderLoadOperation operation(ZQStandardFile::newFileForPath(file), {});
    Recorder recorder;
    recorder.attach(&operation);
    operation.start();
    ASSERT_TRUE(waitUntil([&] { return recorder.finishedCount > 0; }));
    ASSERT_EQ(recorder.failures.size(), 1);
    EXPECT_EQ(recorder.failures[0].second, QStringLiteral("Not a directory"));
    EXPECT_TRUE(recorder.batches.isEmpty());

    // Root reads every folder, whatever its permissions say.
    if (::geteuid() == 0)
        return;
    dir.write(QStringLiteral("open/x.jpg"));
    const QString locked = dir.mkdir(QStringLiteral("open/locked"));
    ::chmod(QFile::encodeName(locked).constData(), 0);
    ZQFolderLoadOptions options;
    options.depth = 1;
    const QList<ZQFolderListing> listings =
        ZQFolderLoadOperation::listSynchronously(ZQStandardFile::newFileForPath(dir.filePath(QStringLiteral("open"))),
                                                 options);
    ::chmod(QFile::encodeName(locked).constData(), 0700);
    ASSERT_EQ(listings.size(), 2);
    EXPECT_EQ(listings[0].files.size(), 2);
    EXPECT_EQ(listings[1].error, QStringLiteral("Permission denied"));
}

TEST(ZQFolderLoadOperation, ListsNamesThatAreNotUtf8)
{
    TestDir dir;
    const QByteArray nativePath = QFile::encodeName(dir.path()) + "/\xff\xfe.jpg";
    const int fd = ::open(nativePath.constData(), O_CREAT | O_WRONLY, 0644);
    ASSERT_GE(fd, 0);
    ::close(fd);

    const QList<ZQFolderListing> listings =
        ZQFolderLoadOperation::listSynchronously(ZQStandardFile::newFileForPath(dir.path()), {});
    ASSERT_EQ(listings.value(0).files.size(), 1);
    const ZQFilePtr file = listings[0].files[0];
    EXPECT_EQ(file->nativePath(), nativePath);
    EXPECT_FALSE(file->isPlaceholder());
    // The temporary folder cannot remove what it cannot name.
    ::unlink(nativePath.constData());
}
