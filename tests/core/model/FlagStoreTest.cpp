#include "core/model/FlagStore.h"
#include "core/model/FlagManager.h"
#include "core/model/PXFile.h"

#include "core/fs/FileOperationsSupport.h"
#include "support/TestDir.h"

#include <QJsonDocument>
#include <QJsonObject>

#include <sys/stat.h>

#include <gtest/gtest.h>

namespace {

QByteArray flagAttribute(const QString &path)
{
    char value[32];
    const ssize_t size = ::getxattr(QFile::encodeName(path).constData(), FlagStore::flagAttribute, value, sizeof value);
    return size < 0 ? QByteArray() : QByteArray(value, size);
}

// A named pipe: a special file, which cannot carry user attributes even for root, so its flag
// goes to the store as a memory card's files do.
QString makePipe(const TestDir &dir, const QString &name)
{
    const QString path = dir.filePath(name);
    return ::mkfifo(QFile::encodeName(path).constData(), 0644) == 0 ? path : QString();
}

QJsonObject storedEntries(const QString &storeFile)
{
    return QJsonDocument::fromJson(readAll(storeFile)).object().value(QStringLiteral("files")).toObject();
}

// Installs a flag store and manager of the test's own for the records to read.
struct OwnFlags
{
    explicit OwnFlags(const QString &storeFile)
        : store(storeFile)
    {
        FlagStore::setShared(&store);
    }
    ~OwnFlags() { FlagStore::setShared(nullptr); }
    FlagStore store;
};

} // namespace

// A cull outlives the program: marks are in the files themselves, read again by a new run's
// records, and they travel with the files that this program moves.
TEST(FlagStore, MarksSurviveARestartAndAMoveMadeHere)
{
    TestDir dir;
    const QString kept = dir.write(QStringLiteral("DSC_0001.JPG"), "a");
    const QString thrown = dir.write(QStringLiteral("DSC_0002.JPG"), "b");
    const QString plain = dir.write(QStringLiteral("DSC_0003.JPG"), "c");
    const QString card = makePipe(dir, QStringLiteral("DSC_0004.JPG")); // keeps no attributes
    dir.mkdir(QStringLiteral("Keepers"));
    OwnFlags flags(dir.filePath(QStringLiteral("store/flags.json")));
    {
        FlagManager manager(&flags.store);
        manager.flag({PXFile::fileForPath(kept), PXFile::fileForPath(card)});
        manager.reject({PXFile::fileForPath(thrown)});
        manager.flag({PXFile::fileForPath(plain)});
        manager.clear({PXFile::fileForPath(plain)}); // in order: the clear comes last
        manager.flush();
    }
    EXPECT_EQ(flagAttribute(kept), QByteArray("flagged"));
    EXPECT_EQ(flagAttribute(thrown), QByteArray("rejected"));
    EXPECT_EQ(flagAttribute(plain), QByteArray());
    EXPECT_EQ(storedEntries(flags.store.storeFile()).keys(), QStringList{card});

    // A new run: new records, a new manager.
    FlagManager manager(&flags.store);
    EXPECT_TRUE(manager.isFlagged(PXFile::fileForPath(kept)));
    EXPECT_TRUE(manager.isRejected(PXFile::fileForPath(thrown)));
    EXPECT_EQ(manager.flagOf(PXFile::fileForPath(plain)), FileFlag::none);
    EXPECT_TRUE(manager.isFlagged(PXFile::fileForPath(card)));

    ZQFileController controller;
    manager.watchOperations(&controller);
    RecordingOperationDelegate delegate;
    controller.performOperation(ZQFileOperationType::move,
                                ZQFileOperationGroup({ZQFileOperationUnit(PXFile::fileForPath(kept), QString()),
                                                      ZQFileOperationUnit(PXFile::fileForPath(card), QString())},
                                                     PXFile::fileForPath(dir.filePath(QStringLiteral("Keepers")))),
                                &delegate);
    ASSERT_TRUE(waitUntil([&] { return delegate.completed; }));
    ASSERT_FALSE(delegate.error.isError()) << delegate.error.description.toStdString();
    manager.flush();
    EXPECT_TRUE(manager.isFlagged(PXFile::fileForPath(dir.filePath(QStringLiteral("Keepers/DSC_0001.JPG")))));
    EXPECT_TRUE(manager.isFlagged(PXFile::fileForPath(dir.filePath(QStringLiteral("Keepers/DSC_0004.JPG")))));
    EXPECT_EQ(storedEntries(flags.store.storeFile()).keys(),
              QStringList{dir.filePath(QStringLiteral("Keepers/DSC_0004.JPG"))});
}

// Files that cannot carry the attribute keep their marks in the store, which follows moves made
// here, and does not hand a mark to another file given the same name later.
TEST(FlagStore, FilesWithoutAttributesUseTheStore)
{
    TestDir dir;
    const QString pipe = makePipe(dir, QStringLiteral("card.jpg"));
    ASSERT_FALSE(pipe.isEmpty());
    const QString storeFile = dir.filePath(QStringLiteral("flags.json"));
    {
        FlagStore store(storeFile);
        QString error;
        ASSERT_TRUE(store.write(QFile::encodeName(pipe), FileFlag::rejected, &error)) << error.toStdString();
        EXPECT_EQ(flagAttribute(pipe), QByteArray());
        EXPECT_EQ(store.read(QFile::encodeName(pipe)), FileFlag::rejected);
    } // written when the store goes
    EXPECT_EQ(storedEntries(storeFile).size(), 1);

    FlagStore store(storeFile);
    EXPECT_EQ(store.read(QFile::encodeName(pipe)), FileFlag::rejected);
    const QString moved = dir.filePath(QStringLiteral("renamed.jpg"));
    ASSERT_TRUE(QFile::rename(pipe, moved));
    store.noteMoved(QFile::encodeName(pipe), QFile::encodeName(moved));
    EXPECT_EQ(store.read(QFile::encodeName(moved)), FileFlag::rejected);
    EXPECT_EQ(store.read(QFile::encodeName(pipe)), FileFlag::none);

    // Another file under the name (a card formatted and filled again): other size, other date.
    ASSERT_TRUE(QFile::remove(moved));
    dir.write(QStringLiteral("renamed.jpg"), "a new picture", QDateTime::currentDateTime().addDays(3));
    EXPECT_EQ(store.read(QFile::encodeName(moved)), FileFlag::none);
}

// Marking a thousand files in a minute costs a handful of store writes, not a thousand.
TEST(FlagStore, WritesTheStoreOncePerInterval)
{
    TestDir dir;
    FlagStore store(dir.filePath(QStringLiteral("flags.json")));
    store.setSaveInterval(std::chrono::milliseconds(300));
    QString error;
    for (int i = 0; i < 40; ++i) {
        const QString pipe = makePipe(dir, QStringLiteral("p%1").arg(i));
        ASSERT_TRUE(store.write(QFile::encodeName(pipe), FileFlag::flagged, &error));
        QCoreApplication::processEvents();
    }
    EXPECT_EQ(store.fileWriteCount(), 0);
    ASSERT_TRUE(waitUntil([&] { return store.fileWriteCount() > 0; }));
    QCoreApplication::processEvents();
    EXPECT_EQ(store.fileWriteCount(), 1);
    EXPECT_EQ(storedEntries(store.storeFile()).size(), 40);
}

// A write that fails half-way (a full disk) leaves the previous store whole; a store that cannot
// be read is set aside, never written over.
TEST(FlagStore, NeverLosesTheStoreFile)
{
    TestDir dir;
    const QString storeFile = dir.filePath(QStringLiteral("flags.json"));
    {
        FlagStore store(storeFile);
        QString error;
        ASSERT_TRUE(store.write(QFile::encodeName(makePipe(dir, QStringLiteral("first"))), FileFlag::flagged, &error));
        ASSERT_TRUE(store.flush(&error));
    }
    const QByteArray before = readAll(storeFile);
    ASSERT_EQ(storedEntries(storeFile).size(), 1);
    QStringList pipes;
    for (int i = 0; i < 100; ++i)
        pipes.append(makePipe(dir, QStringLiteral("a-rather-long-name-for-a-picture-%1.jpg").arg(i)));

    // The new store is larger than the disk allows: the old file stays as it was.
    const QByteArray answer = inChildProcess(
        [&] {
            FlagStore store(storeFile);
            QString error;
            for (const QString &pipe : std::as_const(pipes))
                store.write(QFile::encodeName(pipe), FileFlag::rejected, &error);
            return store.flush(&error) ? QByteArray("saved") : QByteArray("failed");
        },
        0, 2048);
    EXPECT_EQ(answer, QByteArray("failed"));
    EXPECT_EQ(readAll(storeFile), before);
    EXPECT_EQ(QDir(dir.path()).entryList({QStringLiteral("flags.json*")}, QDir::Files), QStringList{"flags.json"});

    // Not JSON: kept aside for the user, and the new store starts empty beside it.
    const QByteArray garbage = "{\"files\": {\"/photos/a.jpg\": {\"flag\": \"flagged\"";
    dir.write(QStringLiteral("flags.json"), garbage);
    {
        FlagStore store(storeFile);
        QString error;
        ASSERT_TRUE(store.write(QFile::encodeName(pipes.first()), FileFlag::flagged, &error));
        ASSERT_TRUE(store.flush(&error));
    }
    EXPECT_EQ(readAll(storeFile + QStringLiteral(".unreadable")), garbage);
    EXPECT_EQ(storedEntries(storeFile).size(), 1);

    // Unreadable, and no room to set it aside: left as it is, marks are not saved over it.
    dir.write(QStringLiteral("flags.json"), garbage);
    ASSERT_TRUE(QFile::remove(storeFile + QStringLiteral(".unreadable")));
    dir.write(QStringLiteral("flags.json.unreadable/something the user keeps"), "x");
    {
        FlagStore store(storeFile);
        QString error;
        ASSERT_TRUE(store.write(QFile::encodeName(pipes.first()), FileFlag::flagged, &error));
        store.flush(&error);
    }
    EXPECT_EQ(readAll(storeFile), garbage);
}
