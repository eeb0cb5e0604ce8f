#include "support/CameraJpegs.h"
#include "support/CliRun.h"
#include "support/TestDir.h"

#include <QRegularExpression>

#include <gtest/gtest.h>

namespace {

TEST(ThumbsCommandTest, PrintsTheSourceOfEveryThumbnailAndFillsTheCache)
{
    TestDir dir;
    const QByteArray previousCache = qgetenv("XDG_CACHE_HOME");
    qputenv("XDG_CACHE_HOME", QFile::encodeName(dir.filePath("cache")));
    const QString photos = dir.mkdir("photos");
    CameraJpegs::write(dir.filePath("photos/a-preview.jpg"), QSize(2400, 1600), QSize(160, 106), QSize(1620, 1080));
    CameraJpegs::write(dir.filePath("photos/b-small.jpg"), QSize(1200, 800), QSize(160, 106), {});
    dir.write("photos/c-text.jpg", "not a picture");
    dir.write("photos/sub/ignored.jpg", "one level only");

    const CliRun first = runCli({"thumbs", "--jobs", "2", photos});
    EXPECT_EQ(first.exitCode, 1) << first.err.toStdString(); // one file failed
    QStringList lines = first.out.split('\n', Qt::SkipEmptyParts);
    ASSERT_EQ(lines.size(), 4) << first.out.toStdString();
    const QString summary = lines.takeLast();
    lines.sort(); // finished in any order
    EXPECT_EQ(lines,
              QStringList({"embedded " + photos + "/a-preview.jpg", "failed " + photos + "/c-text.jpg",
                           "rendered " + photos + "/b-small.jpg"}));
    EXPECT_TRUE(QRegularExpression(R"(^2 thumbnails in \d+\.\d+ s \(\d+\.\d per second\)$)").match(summary).hasMatch())
        << summary.toStdString();

    // The second run finds the rendered one in the cache; --no-cache renders again.
    const CliRun second = runCli({"thumbs", photos + "/b-small.jpg"});
    EXPECT_EQ(second.exitCode, 0);
    EXPECT_TRUE(second.out.startsWith("cached " + photos + "/b-small.jpg\n")) << second.out.toStdString();
    EXPECT_TRUE(runCli({"thumbs", "--decode", photos + "/b-small.jpg"}).out.startsWith("cached "));
    const CliRun uncached = runCli({"thumbs", "--no-cache", "--size", "100", "--scale", "1", photos + "/b-small.jpg"});
    EXPECT_TRUE(uncached.out.startsWith("embedded ")) << uncached.out.toStdString(); // 160 covers 100

    EXPECT_EQ(runCli({"thumbs", "--size", "x", photos}).exitCode, 2);
    EXPECT_EQ(runCli({"thumbs"}).exitCode, 2);
    qputenv("XDG_CACHE_HOME", previousCache);
}

} // namespace
