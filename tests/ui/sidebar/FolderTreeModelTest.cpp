#include "ui/sidebar/FolderTreeModel.h"
#include "core/model/PXFile.h"
#include "ui/sidebar/PathBar.h"

#include "support/TestDir.h"

#include <QAbstractButton>
#include <QDir>
#include <QFile>
#include <QSignalSpy>

#include <gtest/gtest.h>

namespace {

QStringList childNames(const FolderTreeModel &model, const QModelIndex &parent)
{
    QStringList names;
    for (int row = 0; row < model.rowCount(parent); ++row)
        names.append(model.index(row, 0, parent).data().toString());
    return names;
}

QModelIndex listed(FolderTreeModel &model, const QModelIndex &folder)
{
    if (model.canFetchMore(folder))
        model.fetchMore(folder);
    EXPECT_TRUE(waitUntil([&] { return model.isListed(folder); }));
    return folder;
}

} // namespace

TEST(FolderTreeModel, ListsFoldersLazilyByTheSidebarFilterAndSort)
{
    TestDir dir;
    for (const char *folder : {"root/Beta", "root/alpha/deep", "root/.hidden", "root/gamma10", "root/gamma9"})
        dir.mkdir(QLatin1String(folder));
    dir.write(QStringLiteral("root/photo.jpg"), "x");
    FolderTreeModel model;
    model.setRootFolder(PXFile::fileForPath(dir.filePath(QStringLiteral("root"))));

    const QModelIndex root = model.index(0, 0);
    EXPECT_EQ(model.rowCount(), 1);
    EXPECT_TRUE(model.hasChildren(root)); // a folder says so before it is listed
    EXPECT_EQ(model.rowCount(root), 0);
    listed(model, root);
    // Visible folders only, in the name order (numbers by value, case ignored).
    EXPECT_EQ(childNames(model, root), QStringList({"alpha", "Beta", "gamma9", "gamma10"}));
    // Listing went one level only.
    const QModelIndex alpha = model.indexForFile(PXFile::fileForPath(dir.filePath(QStringLiteral("root/alpha"))));
    ASSERT_TRUE(alpha.isValid());
    EXPECT_FALSE(model.isListed(alpha));
    listed(model, alpha);
    EXPECT_EQ(childNames(model, alpha), QStringList({"deep"}));

    // Reversing keeps the listed subtree (its node survives the move).
    model.setSort(FileSortType::name, true);
    EXPECT_EQ(childNames(model, root), QStringList({"gamma10", "gamma9", "Beta", "alpha"}));
    EXPECT_EQ(childNames(model, model.indexForFile(PXFile::fileForPath(dir.filePath(QStringLiteral("root/alpha"))))),
              QStringList({"deep"}));
    // Another filter shows files too, still folders first.
    model.setFilter(FileFilterType::all);
    const QStringList all = childNames(model, root);
    EXPECT_EQ(all.size(), 6);
    EXPECT_EQ(all.last(), QStringLiteral("photo.jpg"));
    EXPECT_TRUE(all.contains(QStringLiteral(".hidden")));
    EXPECT_FALSE(model.hasChildren(model.index(int(all.size()) - 1, 0, root)));
}

TEST(FolderTreeModel, FollowsTheDiskAndCountsByTheChosenInfo)
{
    TestDir dir;
    dir.mkdir(QStringLiteral("root/a"));
    dir.write(QStringLiteral("root/a/one.jpg"), "x");
    dir.write(QStringLiteral("root/a/notes.txt"), "x");
    dir.write(QStringLiteral("root/a/.secret"), "x");
    dir.mkdir(QStringLiteral("root/a/sub"));
    FolderTreeModel model;
    model.setRootFolder(PXFile::fileForPath(dir.filePath(QStringLiteral("root"))));
    const QModelIndex root = listed(model, model.index(0, 0));
    const QModelIndex a = model.index(0, 0, root);
    const QModelIndex counts = a.siblingAtColumn(1);

    model.setInfo(SidebarInfoOptions::filesAndFolders);
    EXPECT_TRUE(waitUntil([&] { return !counts.data().toString().isEmpty(); }));
    EXPECT_EQ(counts.data().toString(), QStringLiteral("2 · 1")); // hidden files do not count
    // A folder never expanded is counted again when an item is moved into it or out of it.
    EXPECT_FALSE(model.isListed(a));
    ASSERT_TRUE(
        QFile::rename(dir.write(QStringLiteral("root/two.jpg"), "x"), dir.filePath(QStringLiteral("root/a/two.jpg"))));
    EXPECT_TRUE(waitUntil([&] { return counts.data().toString() == QStringLiteral("3 · 1"); }))
        << counts.data().toString().toStdString();
    ASSERT_TRUE(QFile::remove(dir.filePath(QStringLiteral("root/a/notes.txt"))));
    EXPECT_TRUE(waitUntil([&] { return counts.data().toString() == QStringLiteral("2 · 1"); }))
        << counts.data().toString().toStdString();
    model.setInfo(SidebarInfoOptions::images);
    EXPECT_EQ(counts.data().toString(), QStringLiteral("2"));
    model.setInfo(SidebarInfoOptions::none);
    EXPECT_TRUE(counts.data().toString().isEmpty());

    // Folders made and removed outside appear and go; a removed folder's row goes with it.
    QSignalSpy removed(&model, &QAbstractItemModel::rowsRemoved);
    dir.mkdir(QStringLiteral("root/b"));
    ASSERT_TRUE(waitUntil([&] { return model.rowCount(root) == 2; }));
    EXPECT_EQ(childNames(model, root), QStringList({"a", "b"}));
    ASSERT_TRUE(QDir(dir.filePath(QStringLiteral("root/a"))).removeRecursively());
    ASSERT_TRUE(waitUntil([&] { return childNames(model, root) == QStringList({"b"}); }));
    EXPECT_GE(removed.count(), 1);
    EXPECT_FALSE(model.indexForFile(PXFile::fileForPath(dir.filePath(QStringLiteral("root/a")))).isValid());
}

TEST(PathBar, ShowsEveryFolderUpToTheRootAndJumpsToTheOneClicked)
{
    TestDir dir;
    const PXFilePtr deep = PXFile::fileForPath(dir.mkdir(QStringLiteral("x/y/z")));
    PathBar bar;
    bar.resize(2000, 30);
    bar.setFolder(deep);
    const QList<PXFilePtr> chain = bar.chain();
    ASSERT_GE(chain.size(), 4);
    EXPECT_EQ(chain.first()->path(), QStringLiteral("/"));
    EXPECT_EQ(chain.last(), deep);
    EXPECT_EQ(chain[chain.size() - 2]->name(), QStringLiteral("y"));

    QSignalSpy chosen(&bar, &PathBar::folderChosen);
    for (QAbstractButton *button : bar.findChildren<QAbstractButton *>()) {
        if (button->text() == QStringLiteral("y"))
            button->click();
    }
    ASSERT_EQ(chosen.count(), 1);
    EXPECT_EQ(chosen.first().first().value<PXFilePtr>()->name(), QStringLiteral("y"));
}
