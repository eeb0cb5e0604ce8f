#include "core/fs/ZQStandardFile.h"

#include "core/fs/ZQFileRegistry.h"

#include "support/TestDir.h"

#include <QFile>
#include <QFileInfo>

#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

TEST(ZQStandardFile, ReadsDatesSizeAndIdentityOfAFile)
{
    TestDir dir;
    const QDateTime modified = QDateTime::fromString(QStringLiteral("2021-03-04T05:06:07Z"), Qt::ISODate);
    const QString path = dir.write(QStringLiteral("photo.jpg"), "12345", modified);

    const ZQFilePtr file = ZQStandardFile::newFileForPath(path);
    ASSERT_TRUE(file);
    EXPECT_FALSE(file->isPlaceholder());
    EXPECT_EQ(file->name(), QStringLiteral("photo.jpg"));
    EXPECT_EQ(file->parentPath(), dir.path());
    EXPECT_EQ(file->fileSize(), 5);
    EXPECT_EQ(file->modificationDate(), modified);
    EXPECT_TRUE(file->dateAdded().isValid());
    EXPECT_TRUE(file->accessDate().isValid());
    if (file->creationDate().isValid()) {
        EXPECT_LE(file->creationDate(), file->dateAdded());
    }
    EXPECT_FALSE(file->isDirectory());
    EXPECT_TRUE(file->isWritable());
    EXPECT_EQ(file->typeIdentifier(), QStringLiteral("public.jpeg"));

    struct stat info
    { };
    ASSERT_EQ(::lstat(QFile::encodeName(path).constData(), &info), 0);
    EXPECT_EQ(file->device(), info.st_dev);
    EXPECT_EQ(file->inode(), info.st_ino);

    // Facts are kept until an event says the file changed.
    dir.write(QStringLiteral("photo.jpg"), "1234567890");
    EXPECT_EQ(file->fileSize(), 5);
    file->updateForEvent(ZQFileEvent{ZQFileEventType::contentModified, file->nativePath()});
    EXPECT_EQ(file->fileSize(), 10);
}

TEST(ZQStandardFile, TellsLinksFromTheirTargets)
{
    TestDir dir;
    const QString image = dir.write(QStringLiteral("target.jpg"), "x");
    const QString folder = dir.mkdir(QStringLiteral("folder"));

    const ZQFilePtr toImage = ZQStandardFile::newFileForPath(dir.symlink(image, QStringLiteral("link")));
    EXPECT_TRUE(toImage->isSymbolicLink());
    EXPECT_FALSE(toImage->isRealFile());
    EXPECT_FALSE(toImage->isDirectory());
    EXPECT_EQ(toImage->typeIdentifier(), QStringLiteral("public.symlink"));
    EXPECT_EQ(toImage->resolvedTypeIdentifier(), QStringLiteral("public.jpeg"));
    EXPECT_EQ(toImage->resolvedPath(), QFileInfo(image).canonicalFilePath());

    const ZQFilePtr toFolder = ZQStandardFile::newFileForPath(dir.symlink(folder, QStringLiteral("folder link")));
    EXPECT_TRUE(toFolder->isSymbolicLink());
    EXPECT_TRUE(toFolder->isDirectory());
    EXPECT_EQ(toFolder->resolvedTypeIdentifier(), QStringLiteral("public.folder"));

    // A broken link is on disk, but leads nowhere: it keeps the link's type, whatever its name says.
    const ZQFilePtr broken = ZQStandardFile::newFileForPath(
        dir.symlink(dir.filePath(QStringLiteral("gone.jpg")), QStringLiteral("broken.jpg")));
    EXPECT_FALSE(broken->isPlaceholder());
    EXPECT_TRUE(broken->isSymbolicLink());
    EXPECT_FALSE(broken->isDirectory());
    EXPECT_EQ(broken->resolvedPath(), broken->path());
    EXPECT_EQ(broken->resolvedTypeIdentifier(), QStringLiteral("public.symlink"));
}

TEST(ZQStandardFile, MissingPathIsAPlaceholder)
{
    TestDir dir;
    const ZQFilePtr missing = ZQStandardFile::newFileForPath(dir.filePath(QStringLiteral("not there.png")));
    ASSERT_TRUE(missing);
    EXPECT_TRUE(missing->isPlaceholder());
    EXPECT_FALSE(missing->isDirectory());
    EXPECT_FALSE(missing->isWritable());
    EXPECT_FALSE(missing->modificationDate().isValid());
    EXPECT_FALSE(missing->dateAdded().isValid());
    EXPECT_LT(missing->fileSize(), 0);
    EXPECT_EQ(missing->typeIdentifier(), QStringLiteral("public.png"));

    EXPECT_TRUE(ZQStandardFile::arrayOfFilesForURLs({QUrl::fromLocalFile(missing->path())}, false).isEmpty());
    EXPECT_EQ(ZQStandardFile::arrayOfFilesForURLs({QUrl::fromLocalFile(missing->path())}, true).value(0), missing);
    EXPECT_FALSE(ZQStandardFile::newFileForURL(QUrl(QStringLiteral("https://example.org/a.jpg"))));
}

TEST(ZQStandardFile, OpensNamesThatAreNotUtf8)
{
    TestDir dir;
    const QByteArray nativePath = QFile::encodeName(dir.path()) + "/caf\xe9.jpg";
    const int fd = ::open(nativePath.constData(), O_CREAT | O_WRONLY, 0644);
    ASSERT_GE(fd, 0);
    ASSERT_EQ(::write(fd, "abc", 3), 3);
    ::close(fd);

    const ZQFilePtr file = ZQStandardFile::newFileForNativePath(nativePath);
    EXPECT_EQ(file->nativePath(), nativePath);
    EXPECT_FALSE(file->isPlaceholder());
    EXPECT_EQ(file->fileSize(), 3);
    EXPECT_TRUE(file->name().startsWith(QStringLiteral("caf")));
    EXPECT_EQ(file->resolvedNativePath(), nativePath);

    // A link to it leads back to the same bytes.
    const QByteArray linkPath = QFile::encodeName(dir.path()) + "/link";
    ASSERT_EQ(::symlink(nativePath.constData(), linkPath.constData()), 0);
    const ZQFilePtr link = ZQStandardFile::newFileForNativePath(linkPath);
    EXPECT_EQ(link->resolvedNativePath(),
              QFile::encodeName(QFileInfo(dir.path()).canonicalFilePath()) + "/caf\xe9.jpg");
    EXPECT_EQ(link->resolvedTypeIdentifier(), QStringLiteral("public.jpeg"));

    // The temporary folder cannot remove what it cannot name.
    ::unlink(linkPath.constData());
    ::unlink(nativePath.constData());
}

TEST(ZQStandardFile, OneObjectPerPathWhileHeld)
{
    TestDir dir;
    const QString path = dir.write(QStringLiteral("a/b.txt"));

    std::weak_ptr<ZQStandardFile> weak;
    {
        const ZQFilePtr first = ZQStandardFile::newFileForPath(path);
        weak = first;
        EXPECT_EQ(ZQStandardFile::newFileForPath(path), first);
        EXPECT_EQ(ZQStandardFile::newFileForPath(dir.path() + QStringLiteral("//a/./c/../b.txt/")), first);
        EXPECT_EQ(ZQStandardFile::newFileForURL(QUrl::fromLocalFile(path)), first);
        EXPECT_EQ(first->parentItem(), ZQStandardFile::newFileForPath(dir.filePath(QStringLiteral("a"))));
    }
    EXPECT_TRUE(weak.expired());

    // Released: the next request makes a fresh object that knows nothing stale.
    dir.write(QStringLiteral("a/b.txt"), "new");
    const ZQFilePtr again = ZQStandardFile::newFileForPath(path);
    EXPECT_TRUE(weak.expired());
    EXPECT_EQ(again->fileSize(), 3);
}

TEST(ZQStandardFile, KnowsVolumeRoots)
{
    const ZQFilePtr root = ZQStandardFile::newFileForPath(QStringLiteral("/"));
    EXPECT_TRUE(root->isVolumeRoot());
    EXPECT_TRUE(root->isDirectory());
    EXPECT_EQ(root->displayName(), QStringLiteral("/"));
    EXPECT_TRUE(root->parentPath().isEmpty());
    EXPECT_FALSE(root->parentItem());
    EXPECT_EQ(root->typeIdentifier(), QStringLiteral("public.volume"));

    struct stat proc
    {
    }, slash{};
    if (::stat("/proc", &proc) == 0 && ::stat("/", &slash) == 0 && proc.st_dev != slash.st_dev) {
        const ZQFilePtr mountPoint = ZQStandardFile::newFileForPath(QStringLiteral("/proc"));
        EXPECT_TRUE(mountPoint->isVolumeRoot());
        EXPECT_EQ(mountPoint->parentItem(), root);
    }

    TestDir dir;
    const ZQFilePtr plain = ZQStandardFile::newFileForPath(dir.mkdir(QStringLiteral("plain")));
    EXPECT_FALSE(plain->isVolumeRoot());
    EXPECT_TRUE(plain->isPlainDirectory());
    EXPECT_EQ(plain->typeIdentifier(), QStringLiteral("public.folder"));
}

TEST(ZQFileRegistry, KeepsIdentitiesThroughHeavyChurn)
{
    // Paths need not exist: the registry knows names only. Enough of them to grow and shrink
    // the table several times, released in an order that punches holes into probe runs.
    const int liveBefore = ZQFileRegistry::shared().liveCount();
    std::vector<ZQFilePtr> held;
    std::vector<std::weak_ptr<ZQStandardFile>> released;
    for (int round = 0; round < 3; ++round) {
        std::vector<ZQFilePtr> batch;
        for (int i = 0; i < 6000; ++i)
            batch.push_back(ZQStandardFile::newFileForPath(QStringLiteral("/registry-churn/%1/%2").arg(round).arg(i)));
        for (int i = 0; i < 6000; ++i) {
            if (i % 3 == round % 3)
                held.push_back(batch[i]);
            else
                released.push_back(batch[i]);
        }
    }
    EXPECT_EQ(ZQFileRegistry::shared().liveCount(), liveBefore + int(held.size()));
    for (const auto &weak : released)
        EXPECT_TRUE(weak.expired());
    for (const ZQFilePtr &file : held)
        ASSERT_EQ(ZQStandardFile::newFileForNativePath(file->nativePath()), file) << file->nativePath().constData();
    held.clear();
    EXPECT_EQ(ZQFileRegistry::shared().liveCount(), liveBefore);
}
