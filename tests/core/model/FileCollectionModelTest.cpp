#include "core/model/FileCollectionModel.h"
#include "core/model/PXFile.h"

#include "support/TestDir.h"
#include "support/TestImages.h"

#include <QDir>
#include <QFile>
#include <QSignalSpy>

#include <gtest/gtest.h>

namespace {

QStringList namesOf(const QList<FileModelPtr> &nodes)
{
    QStringList names;
    for (const FileModelPtr &node : nodes)
        names << node->file()->name();
    return names;
}

// Waits until the collection has listed and published everything it was asked for.
bool settle(FileCollectionModel &collection)
{
    return waitUntil([&collection] { return collection.isSettled(); });
}

} // namespace

TEST(FileCollectionModel, ListsSortsAndFiltersOneFolder)
{
    TestDir dir;
    dir.write(QStringLiteral("img10.jpg"), "x");
    dir.write(QStringLiteral("img2.jpg"), "x");
    dir.write(QStringLiteral("IMG1.png"), "x");
    dir.write(QStringLiteral("readme.txt"), "x");
    dir.write(QStringLiteral(".thumbs"), "x");
    dir.mkdir(QStringLiteral("sub"));

    FileCollectionModel collection;
    QSignalSpy loading(&collection, &FileCollectionModel::isLoadingChanged);
    collection.setCollectionRoots({PXFile::fileForPath(dir.path())});
    ASSERT_TRUE(settle(collection));
    EXPECT_EQ(namesOf(collection.flatRepresentation()),
              (QStringList{"IMG1.png", "img2.jpg", "img10.jpg", "readme.txt", "sub"}));
    EXPECT_EQ(collection.itemCount(), 5);
    EXPECT_FALSE(collection.isLoading());
    EXPECT_GE(loading.count(), 2); // on, then off
    ASSERT_EQ(collection.treeRepresentation().size(), 1);
    EXPECT_EQ(collection.treeRepresentation().first()->arrangedChildren().size(), 5);

    const FileModelPtr firstNode = collection.flatRepresentation().first();
    collection.setFileFilter(FileFilterType::images);
    collection.setFolderSort(FolderSortType::foldersFirst);
    collection.setReverseSort(true);
    ASSERT_TRUE(settle(collection));
    EXPECT_EQ(namesOf(collection.flatRepresentation()), (QStringList{"img10.jpg", "img2.jpg", "IMG1.png"}));
    // Nodes keep their identity across re-sorts.
    EXPECT_EQ(collection.flatRepresentation().last(), firstNode);

    collection.setFileFilter(FileFilterType::all);
    collection.setExcludeFolders(true);
    collection.setSearch(ThumbnailsSearchType::filename, QStringLiteral("THUMB"));
    ASSERT_TRUE(settle(collection));
    EXPECT_EQ(namesOf(collection.flatRepresentation()), QStringList{".thumbs"});
}

TEST(FileCollectionModel, IncludesSubfoldersByFolderOrCommingled)
{
    TestDir dir;
    dir.write(QStringLiteral("top.jpg"), "x");
    dir.write(QStringLiteral("b/b2.jpg"), "x");
    dir.write(QStringLiteral("b/deeper/d.jpg"), "x");
    dir.write(QStringLiteral("a/a1.jpg"), "x");
    dir.mkdir(QStringLiteral("empty"));
    dir.write(QStringLiteral(".hidden/h.jpg"), "x");

    FileCollectionModel collection;
    collection.setFileFilter(FileFilterType::images);
    collection.setFolderDepth(1);
    collection.setCollectionRoots({PXFile::fileForPath(dir.path())});
    ASSERT_TRUE(settle(collection));
    EXPECT_EQ(namesOf(collection.flatRepresentation()), (QStringList{"a1.jpg", "b2.jpg", "top.jpg"}));
    EXPECT_EQ(namesOf(collection.byFolderFlatRepresentation()), (QStringList{"top.jpg", "a1.jpg", "b2.jpg"}));
    QStringList groups;
    for (const auto &group : collection.folderGroups())
        groups << group.folder->file()->name();
    EXPECT_EQ(groups, (QStringList{QFileInfo(dir.path()).fileName(), "a", "b"})); // the empty folder has no group

    collection.setIncludeTopLevelItems(false);
    collection.setFolderDepth(2);
    ASSERT_TRUE(settle(collection));
    EXPECT_EQ(namesOf(collection.flatRepresentation()), (QStringList{"a1.jpg", "b2.jpg", "d.jpg"}));

    collection.setExcludeEmptiesFromFolderRepresentation(false);
    ASSERT_TRUE(settle(collection));
    EXPECT_EQ(collection.folderGroups().size(), 4); // a, b, b/deeper, empty
}

TEST(FileCollectionModel, FollowsFileEventsWithCoalescedRebuilds)
{
    TestDir dir;
    dir.write(QStringLiteral("b.txt"), "12");
    dir.write(QStringLiteral("c.txt"), "123");

    FileCollectionModel collection;
    collection.setFileSort(FileSortType::fileSize);
    QList<QString> updated;
    collection.fileUpdateCallback = [&updated](const FileModelPtr &node) { updated << node->file()->name(); };
    collection.setCollectionRoots({PXFile::fileForPath(dir.path())});
    ASSERT_TRUE(settle(collection));
    ASSERT_EQ(namesOf(collection.flatRepresentation()), (QStringList{"b.txt", "c.txt"}));

    // A burst of new files gives one or two publications, not one per file.
    QSignalSpy published(&collection, &FileCollectionModel::representationsPublished);
    for (int i = 0; i < 30; ++i)
        dir.write(QStringLiteral("new%1.txt").arg(i), "1234567");
    ASSERT_TRUE(waitUntil([&] { return collection.itemCount() == 32 && collection.isSettled(); }));
    EXPECT_LE(published.count(), 4);

    // Growing a file moves it in a size sort and tells the view.
    dir.write(QStringLiteral("b.txt"), "123456789012");
    ASSERT_TRUE(waitUntil([&] { return namesOf(collection.flatRepresentation()).last() == QStringLiteral("b.txt"); }));
    EXPECT_TRUE(updated.contains(QStringLiteral("b.txt")));

    QFile::remove(dir.filePath(QStringLiteral("c.txt")));
    ASSERT_TRUE(waitUntil([&] { return collection.itemCount() == 31; }));
    EXPECT_FALSE(namesOf(collection.flatRepresentation()).contains(QStringLiteral("c.txt")));
}

TEST(FileCollectionModel, VanishedAndBrokenEntriesDoNotStopTheListing)
{
    TestDir dir;
    dir.write(QStringLiteral("ok.jpg"), "x");
    dir.symlink(dir.filePath(QStringLiteral("nowhere.jpg")), QStringLiteral("broken.jpg"));
    const QByteArray oddName = QFile::encodeName(dir.path()) + "/\xFF\xFEodd.jpg";
    if (FILE *f = std::fopen(oddName.constData(), "wb"))
        std::fclose(f);

    FileCollectionModel collection;
    QSignalSpy failed(&collection, &FileCollectionModel::folderFailed);
    const PXFilePtr missing = PXFile::fileForPath(dir.filePath(QStringLiteral("missing-folder")));
    collection.setCollectionRoots({PXFile::fileForPath(dir.path()), missing});
    ASSERT_TRUE(settle(collection));
    EXPECT_EQ(collection.itemCount(), 3);
    EXPECT_EQ(failed.count(), 1);
    for (const FileModelPtr &node : collection.flatRepresentation()) {
        const PXFilePtr &file = node->file();
        if (file->name() == QStringLiteral("broken.jpg")) {
            EXPECT_TRUE(file->isSymbolicLink());
            EXPECT_EQ(file->megapixels(), 0);
        }
    }
}

namespace {

QStringList pathsOf(const QList<FileModelPtr> &nodes)
{
    QStringList paths;
    for (const FileModelPtr &node : nodes)
        paths << node->file()->path();
    return paths;
}

QStringList groupsOf(const FileCollectionModel &collection)
{
    QStringList groups;
    for (const FileCollectionModel::FolderGroup &group : collection.folderGroups())
        groups << group.folder->file()->name() + QLatin1Char(':') + namesOf(group.files).join(QLatin1Char(','));
    return groups;
}

} // namespace

// File events patch the published order in place; whatever they do, the result must be what a
// fresh listing of the same folders shows.
TEST(FileCollectionModel, RebuildsAfterFileEventsMatchAFreshListing)
{
    TestDir dir;
    for (const char *folder : {"a", "b"}) {
        for (int i = 0; i < 12; ++i)
            dir.write(QLatin1String(folder) + QStringLiteral("/f%1.txt").arg(i), QByteArray(i % 5 + 1, 'x'));
    }
    dir.write(QStringLiteral("top.txt"), "xx");

    const auto configure = [&dir](FileCollectionModel &collection) {
        collection.setFolderDepth(1);
        collection.setFileSort(FileSortType::fileSize);
        collection.setCollectionRoots({PXFile::fileForPath(dir.path())});
    };
    FileCollectionModel collection;
    configure(collection);
    ASSERT_TRUE(settle(collection));
    ASSERT_EQ(collection.itemCount(), 2 + 24 + 1);

    const auto matchesFreshListing = [&] {
        FileCollectionModel fresh;
        configure(fresh);
        if (!settle(fresh))
            return false;
        return waitUntil([&] {
            return collection.isSettled()
                && pathsOf(collection.flatRepresentation()) == pathsOf(fresh.flatRepresentation())
                && pathsOf(collection.byFolderFlatRepresentation()) == pathsOf(fresh.byFolderFlatRepresentation())
                && groupsOf(collection) == groupsOf(fresh);
        });
    };

    // Grow and shrink files (they move in a size sort, ties with equal sizes across folders).
    dir.write(QStringLiteral("a/f0.txt"), QByteArray(9, 'x'));
    dir.write(QStringLiteral("b/f4.txt"), QByteArray(1, 'x'));
    EXPECT_TRUE(matchesFreshListing()) << "after resizing";

    // New files, one of them invisible (filtered out), and removals.
    dir.write(QStringLiteral("a/new.txt"), QByteArray(3, 'x'));
    dir.write(QStringLiteral("b/.hidden"), QByteArray(3, 'x'));
    QFile::remove(dir.filePath(QStringLiteral("b/f7.txt")));
    QFile::remove(dir.filePath(QStringLiteral("top.txt")));
    EXPECT_TRUE(matchesFreshListing()) << "after adding and removing";

    // A rename inside a folder and a move between the two folders.
    QFile::rename(dir.filePath(QStringLiteral("a/f3.txt")), dir.filePath(QStringLiteral("a/g3.txt")));
    QFile::rename(dir.filePath(QStringLiteral("a/f8.txt")), dir.filePath(QStringLiteral("b/f8-moved.txt")));
    EXPECT_TRUE(matchesFreshListing()) << "after renaming and moving";

    // Many changes at once in one folder.
    for (int i = 0; i < 12; ++i)
        dir.write(QStringLiteral("b/f%1.txt").arg(i), QByteArray(12 - i, 'x'));
    EXPECT_TRUE(matchesFreshListing()) << "after rewriting a whole folder";

    // A subfolder removed while shown.
    QDir(dir.filePath(QStringLiteral("a"))).removeRecursively();
    EXPECT_TRUE(matchesFreshListing()) << "after removing a subfolder";
    EXPECT_EQ(collection.itemCount(), 1 + 13); // b with f0..f11 written again and the moved file
}
