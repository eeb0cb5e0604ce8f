#include "core/fs/operations/ZQTransferPerformer.h"
#include "core/fs/operations/ZQTrashPerformer.h"

#include "core/fs/FileOperationsSupport.h"

#include <QDateTime>
#include <QDir>
#include <QFileInfo>
#include <QRegularExpression>

#include <gtest/gtest.h>

namespace {

using Type = ZQFileOperationType;
using Resolution = ZQFileOperationResolution;
using State = ZQFileOperationUnit::State;
namespace Code = ZQFileOperationErrorCode;

const QDateTime taken = QDateTime::fromSecsSinceEpoch(1500000000);

class TransferOperations : public ::testing::Test
{
protected:
    void SetUp() override
    {
        ::chmod(QFile::encodeName(dir.path()).constData(), 0755);
        source = dir.mkdir(QStringLiteral("source"));
        destination = dir.mkdir(QStringLiteral("destination"));
    }

    // Another file system for moves across volumes, when /dev/shm is one.
    bool makeOtherVolume()
    {
        other = std::make_unique<QTemporaryDir>(QStringLiteral("/dev/shm/pixcove-ops-XXXXXX"));
        struct stat a
        {
        }, b{};
        return other->isValid() && ::stat("/dev/shm", &a) == 0
            && ::stat(QFile::encodeName(dir.path()).constData(), &b) == 0 && a.st_dev != b.st_dev;
    }

    ZQFileOperationUnit unit(const QString &path, const QString &name = {})
    {
        return ZQFileOperationUnit(ZQStandardFile::newFileForPath(path), name);
    }

    // Runs an operation through the controller and waits for its end.
    bool run(Type type, QList<ZQFileOperationUnit> units, const QString &into = {})
    {
        QPointer<ZQFileOperationHandler> handler =
            controller.performOperation(type,
                                        ZQFileOperationGroup(std::move(units),
                                                             into.isEmpty() ? nullptr
                                                                            : ZQStandardFile::newFileForPath(into)),
                                        &delegate);
        return handler && waitUntil([&] { return delegate.completed; }, 20000);
    }

    // A photo with a colour label, read-only permissions and the time it was taken.
    QString writePhoto(const QString &relative, const QByteArray &bytes)
    {
        const QString path = dir.write(relative, bytes, taken);
        setTags(path, "Red,Holiday");
        ::chmod(QFile::encodeName(path).constData(), 0640);
        return path;
    }

    void expectSamePhoto(const QString &copy, const QByteArray &bytes)
    {
        EXPECT_EQ(readAll(copy), bytes) << qPrintable(copy);
        EXPECT_EQ(tagsOf(copy), "Red,Holiday") << qPrintable(copy);
        EXPECT_EQ(QFileInfo(copy).lastModified(), taken) << qPrintable(copy);
        struct stat info
        { };
        ::stat(QFile::encodeName(copy).constData(), &info);
        EXPECT_EQ(info.st_mode & 07777, 0640u) << qPrintable(copy);
    }

    TestDir dir;
    QString source;
    QString destination;
    std::unique_ptr<QTemporaryDir> other;
    ZQFileController controller;
    RecordingOperationDelegate delegate;
};

} // namespace

TEST_F(TransferOperations, CopiesCarryDataTagsPermissionsAndTimesAndCopyLinksAsLinks)
{
    const QByteArray big = bytesOfSize(3 << 20, 'a');
    writePhoto(QStringLiteral("source/IMG_0001.JPG"), big);
    writePhoto(QStringLiteral("source/Trip/DSC_0002.JPG"), "trip photo");
    // A loop of links inside the folder: copied as links, never followed.
    dir.symlink(QStringLiteral("."), QStringLiteral("source/Trip/loop"));
    dir.symlink(QStringLiteral("DSC_0002.JPG"), QStringLiteral("source/Trip/latest"));
    setTags(source + QStringLiteral("/Trip"), "Blue");

    ASSERT_TRUE(run(Type::copy,
                    {unit(source + QStringLiteral("/IMG_0001.JPG")), unit(source + QStringLiteral("/Trip"))},
                    destination));
    EXPECT_FALSE(delegate.error.isError()) << qPrintable(delegate.error.description);
    expectSamePhoto(destination + QStringLiteral("/IMG_0001.JPG"), big);
    expectSamePhoto(destination + QStringLiteral("/Trip/DSC_0002.JPG"), "trip photo");
    EXPECT_EQ(tagsOf(destination + QStringLiteral("/Trip")), "Blue");
    EXPECT_EQ(QFileInfo(destination + QStringLiteral("/Trip/loop")).symLinkTarget(),
              destination + QStringLiteral("/Trip"));
    EXPECT_TRUE(QFileInfo(destination + QStringLiteral("/Trip/latest")).isSymLink());
    EXPECT_EQ(entriesOf(destination), (QStringList{"IMG_0001.JPG", "Trip"}));
    // The originals are untouched, and the last report counts every byte and file.
    expectSamePhoto(source + QStringLiteral("/IMG_0001.JPG"), big);
    const ZQFileOperationTransaction &last = delegate.transactions.last();
    EXPECT_EQ(last.totalByteCount, big.size() + 10);
    EXPECT_EQ(last.completedByteCount, last.totalByteCount);
    EXPECT_EQ(last.totalFileCount, 4); // the photo, and the photo and two links in the folder
    EXPECT_EQ(last.completedFileCount, 4);
    EXPECT_EQ(last.percentComplete, 100);

    // Duplicates and aliases beside the originals; new folders where asked.
    delegate = RecordingOperationDelegate();
    ASSERT_TRUE(run(Type::duplicate,
                    {unit(source + QStringLiteral("/IMG_0001.JPG")), unit(source + QStringLiteral("/Trip")),
                     unit(source + QStringLiteral("/IMG_0001.JPG"))}));
    delegate = RecordingOperationDelegate();
    ASSERT_TRUE(run(Type::alias, {unit(source + QStringLiteral("/IMG_0001.JPG"))}, source));
    delegate = RecordingOperationDelegate();
    ASSERT_TRUE(run(Type::newFolder, {unit({}), unit({})}, source));
    EXPECT_EQ(entriesOf(source),
              (QStringList{"IMG_0001 alias.JPG", "IMG_0001 copy 2.JPG", "IMG_0001 copy.JPG", "IMG_0001.JPG", "Trip",
                           "Trip copy", "untitled folder", "untitled folder 2"}));
    expectSamePhoto(source + QStringLiteral("/IMG_0001 copy 2.JPG"), big);
    EXPECT_EQ(QFileInfo(source + QStringLiteral("/IMG_0001 alias.JPG")).symLinkTarget(),
              source + QStringLiteral("/IMG_0001.JPG"));
}

TEST_F(TransferOperations, MovesAcrossVolumesCopyCheckAndOnlyThenRemoveTheOriginals)
{
    if (!makeOtherVolume())
        GTEST_SKIP() << "/dev/shm is not another file system here";
    const QByteArray bytes = bytesOfSize(1 << 20, 'm');
    writePhoto(QStringLiteral("source/IMG_0001.JPG"), bytes);
    writePhoto(QStringLiteral("source/Trip/DSC_0002.JPG"), bytes);
    ASSERT_TRUE(run(Type::move,
                    {unit(source + QStringLiteral("/IMG_0001.JPG")), unit(source + QStringLiteral("/Trip"))},
                    other->path()));
    EXPECT_FALSE(delegate.error.isError()) << qPrintable(delegate.error.description);
    expectSamePhoto(other->path() + QStringLiteral("/IMG_0001.JPG"), bytes);
    expectSamePhoto(other->path() + QStringLiteral("/Trip/DSC_0002.JPG"), bytes);
    EXPECT_EQ(entriesOf(source), QStringList());
    EXPECT_EQ(delegate.transactions.last().completedByteCount, 2 << 20);

    // Within a volume a move renames: nothing is written.
    delegate = RecordingOperationDelegate();
    ASSERT_TRUE(
        run(Type::move, {unit(other->path() + QStringLiteral("/Trip"))}, other->path() + QStringLiteral("/..")));
    delegate = RecordingOperationDelegate();
    const QString trip = QFileInfo(other->path() + QStringLiteral("/../Trip")).absoluteFilePath();
    ASSERT_TRUE(run(Type::move, {unit(trip)}, other->path()));
    EXPECT_EQ(delegate.transactions.last().totalByteCount, 0);
    expectSamePhoto(other->path() + QStringLiteral("/Trip/DSC_0002.JPG"), bytes);

    // A folder never goes into itself.
    delegate = RecordingOperationDelegate();
    ASSERT_TRUE(
        run(Type::move, {unit(other->path() + QStringLiteral("/Trip"))}, other->path() + QStringLiteral("/Trip")));
    EXPECT_EQ(delegate.finalUnits.at(0).sourceError().code, Code::none);
    EXPECT_EQ(delegate.finalUnits.at(0).destinationError().code, Code::intoItself);
    EXPECT_EQ(delegate.finalUnits.at(0).state(), State::skipped);
}

// Originals go only once their copies are on the disk: one sync for the batch, before the first
// original is removed; a sync that fails keeps every original.
TEST_F(TransferOperations, AMoveAcrossVolumesRemovesOriginalsOnlyAfterOneSyncOfTheirCopies)
{
    if (!makeOtherVolume())
        GTEST_SKIP() << "/dev/shm is not another file system here";
    const QByteArray bytes = bytesOfSize(256 << 10, 'd');
    const QStringList originals{writePhoto(QStringLiteral("source/IMG_0001.JPG"), bytes),
                                writePhoto(QStringLiteral("source/IMG_0002.JPG"), bytes),
                                writePhoto(QStringLiteral("source/Trip/DSC_0003.JPG"), bytes)};
    const auto units = [&] {
        return QList<ZQFileOperationUnit>{unit(originals[0]), unit(originals[1]),
                                          unit(source + QStringLiteral("/Trip"))};
    };
    const auto allOriginalsThere = [&] {
        for (const QString &path : originals) {
            if (readAll(path) != bytes)
                return false;
        }
        return true;
    };
    for (const int syncError : {EIO, 0}) {
        ZQTransferPerformer performer(Type::move);
        int syncs = 0;
        bool originalsThereAtSync = false;
        bool copiesThereAtSync = false;
        performer.setVolumeSync([&](const QByteArray &folder) {
            ++syncs;
            originalsThereAtSync = allOriginalsThere();
            copiesThereAtSync = entriesOf(other->path()) == QStringList{"IMG_0001.JPG", "IMG_0002.JPG", "Trip"};
            EXPECT_EQ(folder, QFile::encodeName(other->path()));
            return syncError;
        });
        ZQFileOperationGroup group(units(), ZQStandardFile::newFileForPath(other->path()));
        const ZQFileOperationError error = performNow(performer, group);
        EXPECT_EQ(syncs, 1) << syncError;
        EXPECT_TRUE(originalsThereAtSync) << syncError;
        EXPECT_TRUE(copiesThereAtSync) << syncError;
        expectSamePhoto(other->path() + QStringLiteral("/Trip/DSC_0003.JPG"), bytes);
        if (syncError) {
            EXPECT_EQ(error.code, EIO);
            EXPECT_TRUE(allOriginalsThere());
            QDir(other->path()).removeRecursively();
            QDir().mkpath(other->path());
        } else {
            EXPECT_FALSE(error.isError()) << qPrintable(error.description);
            EXPECT_EQ(entriesOf(source), QStringList());
        }
    }
}

// Nothing is replaced unless the delegate said so, not even an item that appears after the checks.
TEST_F(TransferOperations, AnOccupiedNameIsReplacedOnlyWhenTheDelegateSaysSo)
{
    const QStringList names{"A.JPG", "B.JPG", "C.JPG"};
    for (const QString &name : names) {
        dir.write(QStringLiteral("source/") + name, "new " + name.toLatin1());
        dir.write(QStringLiteral("destination/") + name, "old " + name.toLatin1());
    }
    const auto units = [&] {
        QList<ZQFileOperationUnit> list;
        for (const QString &name : names)
            list.append(unit(source + QLatin1Char('/') + name));
        return list;
    };
    for (Type type : {Type::copy, Type::move}) {
        delegate = RecordingOperationDelegate();
        delegate.answer = Resolution::skip;
        ASSERT_TRUE(run(type, units(), destination));
        EXPECT_EQ(delegate.questions, 1);
        for (const QString &name : names)
            EXPECT_EQ(readAll(destination + QLatin1Char('/') + name), "old " + name.toLatin1());
        EXPECT_EQ(entriesOf(source), names);
    }
    delegate = RecordingOperationDelegate();
    delegate.answer = Resolution::keepBoth;
    ASSERT_TRUE(run(Type::copy, units(), destination));
    EXPECT_EQ(readAll(destination + QStringLiteral("/B 2.JPG")), "new B.JPG");
    EXPECT_EQ(readAll(destination + QStringLiteral("/B.JPG")), "old B.JPG");

    delegate = RecordingOperationDelegate();
    delegate.answer = Resolution::replace;
    ASSERT_TRUE(run(Type::move, units(), destination));
    EXPECT_EQ(readAll(destination + QStringLiteral("/C.JPG")), "new C.JPG");
    EXPECT_EQ(entriesOf(source), QStringList());
    EXPECT_EQ(entriesOf(destination), (QStringList{"A 2.JPG", "A.JPG", "B 2.JPG", "B.JPG", "C 2.JPG", "C.JPG"}));

    // A name taken between the checks and the work: the run stops, the newcomer is kept.
    const QString late = dir.write(QStringLiteral("source/late.jpg"), "late original");
    const QString dropped = dir.write(QStringLiteral("source/dropped.jpg"), "dropped original");
    for (Type type : {Type::copy, Type::move, Type::alias}) {
        for (const QString &name : {QStringLiteral("late.jpg"), QStringLiteral("dropped.jpg")})
            QFile::remove(destination + QLatin1Char('/') + name);
        delegate = RecordingOperationDelegate();
        delegate.whenPerforming = [&] {
            dir.write(QStringLiteral("destination/late.jpg"), "arrived meanwhile");
            dir.mkdir(QStringLiteral("destination/dropped.jpg"));
        };
        ASSERT_TRUE(run(type, {unit(late), unit(dropped)}, destination));
        EXPECT_EQ(delegate.error.code, Code::destinationExists) << int(type);
        EXPECT_EQ(readAll(destination + QStringLiteral("/late.jpg")), "arrived meanwhile") << int(type);
        EXPECT_EQ(readAll(late), "late original");
        EXPECT_TRUE(QFileInfo(destination + QStringLiteral("/dropped.jpg")).isDir());
        EXPECT_EQ(entriesOf(destination).filter(QStringLiteral(".pixcove")), QStringList());
    }
    // A replace answer never replaces an item by itself.
    delegate = RecordingOperationDelegate();
    delegate.answer = Resolution::replace;
    ASSERT_TRUE(run(Type::copy, {unit(late)}, source));
    EXPECT_EQ(delegate.finalUnits.at(0).destinationError().code, Code::replaceItself);
    EXPECT_EQ(readAll(late), "late original");
}

// On a case-sensitive volume another case is another name: both items are kept whole.
TEST_F(TransferOperations, ANameOfAnotherCaseIsAnotherItemHere)
{
    dir.write(QStringLiteral("destination/IMG_0001.JPG"), "upper");
    const QString lower = dir.write(QStringLiteral("source/img_0001.jpg"), "lower");
    ASSERT_TRUE(run(Type::move, {unit(lower)}, destination));
    EXPECT_EQ(delegate.questions, 0);
    EXPECT_EQ(readAll(destination + QStringLiteral("/IMG_0001.JPG")), "upper");
    EXPECT_EQ(readAll(destination + QStringLiteral("/img_0001.jpg")), "lower");
}

TEST_F(TransferOperations, ASourceDeletedMidwayStopsTheRunWithAClearMessage)
{
    const QString first = dir.write(QStringLiteral("source/IMG_0001.JPG"), "one");
    const QString second = dir.write(QStringLiteral("source/IMG_0002.JPG"), "two");
    const QString third = dir.write(QStringLiteral("source/IMG_0003.JPG"), "three");
    delegate.whenPerforming = [&] { QFile::remove(second); };
    ASSERT_TRUE(run(Type::copy, {unit(first), unit(second), unit(third)}, destination));
    EXPECT_EQ(delegate.error.code, Code::sourceMissing);
    EXPECT_EQ(delegate.error.description, QStringLiteral("The item “IMG_0002.JPG” can’t be found."));
    EXPECT_EQ(delegate.finalUnits.at(0).state(), State::done);
    EXPECT_EQ(delegate.finalUnits.at(1).state(), State::failed);
    EXPECT_EQ(delegate.finalUnits.at(2).state(), State::pending);
    EXPECT_EQ(entriesOf(destination), QStringList{"IMG_0001.JPG"});
}

// A cancel in the middle of a file leaves no part of it; a cancelled move keeps every original.
TEST_F(TransferOperations, ACancelledCopyOrMoveLeavesNothingBehindAndKeepsTheOriginals)
{
    const QByteArray bytes = bytesOfSize(40 << 20, 'c');
    const QString photo = dir.write(QStringLiteral("source/Trip/IMG_0001.JPG"), bytes);
    dir.write(QStringLiteral("source/Trip/IMG_0002.JPG"), bytes);
    const bool otherVolume = makeOtherVolume();
    const QString into = otherVolume ? other->path() : destination;
    for (Type type : {Type::copy, Type::move}) {
        for (const QString &item : {photo, source + QStringLiteral("/Trip")}) {
            ZQTransferPerformer performer(type);
            ZQFileOperationGroup group({unit(item)}, ZQStandardFile::newFileForPath(into));
            CountingProgress progress;
            progress.cancelAfterBytes = 10 << 20; // within the first file
            // Nothing appears under the item's name while it is written.
            QStringList seen;
            progress.whileWriting = [&] {
                seen += entriesOf(into).filter(QRegularExpression(QStringLiteral("^[^.]")));
            };
            const ZQFileOperationError error = performNow(performer, group, &progress);
            EXPECT_EQ(seen, QStringList());
            EXPECT_EQ(error.code, Code::cancelled) << qPrintable(item);
            EXPECT_GT(progress.bytes, 0);
            EXPECT_EQ(entriesOf(into), QStringList()) << int(type) << qPrintable(item);
            EXPECT_EQ(readAll(photo), bytes);
            EXPECT_EQ(entriesOf(source + QStringLiteral("/Trip")), (QStringList{"IMG_0001.JPG", "IMG_0002.JPG"}));
        }
    }
    // Through a handler: cancelled while it performs, it completes and keeps what was done.
    QPointer<ZQFileOperationHandler> handler;
    delegate.whenPerforming = [&] { handler->cancel(); };
    handler = controller.performOperation(Type::copy,
                                          ZQFileOperationGroup({unit(source + QStringLiteral("/Trip"))},
                                                               ZQStandardFile::newFileForPath(into)),
                                          &delegate);
    ASSERT_TRUE(waitUntil([&] { return delegate.completed; }, 20000));
    EXPECT_EQ(entriesOf(into), QStringList());
    EXPECT_FALSE(delegate.error.isError());
}

// A full disk: the copy stops at the first file that does not fit, with a message, and nothing
// half-written is left; a move across volumes keeps every original.
TEST_F(TransferOperations, AFullDestinationStopsTheRunAndKeepsEveryOriginal)
{
    const QByteArray small = bytesOfSize(100 << 10, 's');
    const QByteArray large = bytesOfSize(3 << 20, 'l');
    dir.write(QStringLiteral("source/Trip/IMG_0001.JPG"), small);
    dir.write(QStringLiteral("source/Trip/IMG_0002.JPG"), large);
    const QString single = dir.write(QStringLiteral("source/IMG_0003.JPG"), large);
    const bool otherVolume = makeOtherVolume();
    const QString into = otherVolume ? other->path() : destination;
    for (Type type : {Type::copy, Type::move}) {
        for (const QString &item : {source + QStringLiteral("/Trip"), single}) {
            const QByteArray answer = inChildProcess(
                [&] {
                    ZQTransferPerformer performer(type);
                    ZQFileOperationGroup group({unit(item)}, ZQStandardFile::newFileForPath(into));
                    const ZQFileOperationError error = performNow(performer, group);
                    return QByteArray::number(error.code) + ' ' + error.description.toUtf8();
                },
                0, 1 << 20);
            EXPECT_EQ(answer,
                      QByteArray::number(EFBIG) + ' ' + (item == single ? "“IMG_0003.JPG”" : "“IMG_0002.JPG”")
                          + " is too large for the destination.");
            EXPECT_EQ(entriesOf(into), QStringList()) << int(type);
            EXPECT_EQ(readAll(source + QStringLiteral("/Trip/IMG_0002.JPG")), large);
            EXPECT_EQ(readAll(source + QStringLiteral("/Trip/IMG_0001.JPG")), small);
            EXPECT_EQ(readAll(single), large);
        }
    }
}

// As another user: a folder that may not be written is refused with a message, the originals kept.
TEST_F(TransferOperations, AReadOnlyDestinationIsRefusedWithAMessage)
{
    const QString photo = dir.write(QStringLiteral("source/IMG_0001.JPG"), "photo");
    const QString readOnly = dir.mkdir(QStringLiteral("readonly"));
    ::chmod(QFile::encodeName(source).constData(), 0777);
    ::chmod(QFile::encodeName(photo).constData(), 0644);
    ::chmod(QFile::encodeName(readOnly).constData(), 0755);
    for (Type type : {Type::copy, Type::move, Type::alias}) {
        const QByteArray answer = inChildProcess(
            [&] {
                ZQTransferPerformer performer(type);
                ZQFileOperationGroup group({unit(photo)}, ZQStandardFile::newFileForPath(readOnly));
                const ZQFileOperationError error = performNow(performer, group);
                return error.description.toUtf8();
            },
            65534);
        EXPECT_EQ(answer, "You don’t have permission to change “readonly”.") << int(type);
        EXPECT_EQ(entriesOf(readOnly), QStringList());
        EXPECT_EQ(readAll(photo), "photo");
    }
}
