#include "core/viewer/SlideshowPlaylist.h"

#include "core/model/PXFile.h"
#include "support/TestDir.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace {

QStringList namesOf(const QList<PXFilePtr> &files, const QString &root)
{
    QStringList names;
    for (const PXFilePtr &file : files)
        names.append(file->path().mid(root.size() + 1));
    return names;
}

} // namespace

// Folders are listed down to the depth asked, pictures only (videos when included), hidden
// files left out; grouped by folder or commingled by name; a file given twice shows once.
TEST(SlideshowPlaylist, ListsThePicturesOfFilesAndFoldersToTheDepthAsked)
{
    TestDir dir;
    for (const char *name :
         {"trip/IMG_0002.jpg", "trip/IMG_0010.jpg", "trip/clip.mp4", "trip/notes.txt", "trip/.hidden.jpg",
          "trip/day 2/IMG_0001.jpg", "trip/day 2/deeper/IMG_0003.jpg", "loose.png"})
        dir.write(QLatin1String(name), "x");
    const PXFilePtr trip = PXFile::fileForPath(dir.filePath("trip"));
    const PXFilePtr loose = PXFile::fileForPath(dir.filePath("loose.png"));

    SlideshowPlaylistOptions options;
    options.folderDepth = 0;
    EXPECT_EQ(namesOf(SlideshowPlaylist::make({trip}, options), dir.path()),
              QStringList({"trip/IMG_0002.jpg", "trip/IMG_0010.jpg"}));

    options.folderDepth = 1;
    options.inclusionStyle = SubfolderInclusionStyle::byFolder;
    EXPECT_EQ(namesOf(SlideshowPlaylist::make({trip, loose}, options), dir.path()),
              QStringList({"trip/IMG_0002.jpg", "trip/IMG_0010.jpg", "trip/day 2/IMG_0001.jpg", "loose.png"}));

    options.folderDepth = 2;
    options.inclusionStyle = SubfolderInclusionStyle::commingled;
    options.includeVideos = true;
    const PXFilePtr twice = PXFile::fileForPath(dir.filePath("trip/IMG_0010.jpg"));
    EXPECT_EQ(namesOf(SlideshowPlaylist::make({twice, trip}, options), dir.path()),
              QStringList({"trip/IMG_0010.jpg", "trip/clip.mp4", "trip/day 2/IMG_0001.jpg", "trip/IMG_0002.jpg",
                           "trip/day 2/deeper/IMG_0003.jpg"}));

    const std::atomic<bool> cancelled = true;
    EXPECT_TRUE(SlideshowPlaylist::make({trip}, options, &cancelled).isEmpty());
}

TEST(SlideshowPlaylist, ShufflesTheSameWayForTheSameSeed)
{
    QList<PXFilePtr> files;
    for (int i = 0; i < 20; ++i)
        files.append(PXFile::fileForPath(QStringLiteral("/nonexistent/%1.jpg").arg(i)));
    const QList<PXFilePtr> once = SlideshowPlaylist::shuffled(files, 42);
    EXPECT_EQ(once, SlideshowPlaylist::shuffled(files, 42));
    EXPECT_NE(once, files);
    QList<PXFilePtr> sorted = once;
    std::sort(sorted.begin(), sorted.end(),
              [&](const PXFilePtr &a, const PXFilePtr &b) { return files.indexOf(a) < files.indexOf(b); });
    EXPECT_EQ(sorted, files);
}
