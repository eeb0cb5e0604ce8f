#include "ui/browser/FileDropPerformer.h"

#include "support/TestDir.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <gtest/gtest.h>

TEST(FileDropPerformer, MovesCopiesAndLinksWithoutOverwritingAnything)
{
    TestDir dir;
    const QString photo = dir.write(QStringLiteral("src/photo.jpg"), "photo");
    const QString album = dir.mkdir(QStringLiteral("src/album"));
    dir.write(QStringLiteral("src/album/inside.jpg"), "inside");
    const QString clash = dir.write(QStringLiteral("src/clash.jpg"), "new");
    const QString target = dir.mkdir(QStringLiteral("target"));
    dir.write(QStringLiteral("target/clash.jpg"), "old");

    QStringList errors = FileDropPerformer::performNow(FileDropOperation::copy, {photo, album, clash}, target);
    ASSERT_EQ(errors.size(), 1);
    EXPECT_TRUE(errors.first().contains("clash.jpg"));
    EXPECT_TRUE(QFileInfo::exists(photo));
    QFile copied(dir.filePath("target/album/inside.jpg"));
    ASSERT_TRUE(copied.open(QIODevice::ReadOnly));
    EXPECT_EQ(copied.readAll(), "inside");
    QFile kept(dir.filePath("target/clash.jpg"));
    ASSERT_TRUE(kept.open(QIODevice::ReadOnly));
    EXPECT_EQ(kept.readAll(), "old");

    const QString elsewhere = dir.mkdir(QStringLiteral("elsewhere"));
    errors = FileDropPerformer::performNow(FileDropOperation::move, {photo, album}, elsewhere);
    EXPECT_TRUE(errors.isEmpty()) << errors.join(' ').toStdString();
    EXPECT_FALSE(QFileInfo::exists(photo));
    EXPECT_FALSE(QFileInfo::exists(album));
    EXPECT_TRUE(QFileInfo::exists(dir.filePath("elsewhere/album/inside.jpg")));

    const QString links = dir.mkdir(QStringLiteral("links"));
    errors = FileDropPerformer::performNow(FileDropOperation::link, {dir.filePath("elsewhere/photo.jpg")}, links);
    EXPECT_TRUE(errors.isEmpty());
    const QFileInfo link(dir.filePath("links/photo.jpg"));
    EXPECT_TRUE(link.isSymLink());
    EXPECT_EQ(link.symLinkTarget(), dir.filePath("elsewhere/photo.jpg"));
}
