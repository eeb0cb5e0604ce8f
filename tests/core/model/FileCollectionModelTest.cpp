#include "model/FileCollectionModel.h"

#include "support/TestDir.h"
#include "support/TestImages.h"

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
    EXPECT_EQ(namesOf(collection.flatRepresentation()), (QStringList{"IMG1.png", "img2.jpg", "img10.jpg", "readme.txt", "sub"}));
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
