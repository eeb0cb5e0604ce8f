#include "support/CliRun.h"
#include "support/TestDir.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <gtest/gtest.h>

TEST(LsCommand, PrintsShownFilesInDisplayOrder)
{
    TestDir dir;
    dir.write(QStringLiteral("file10.jpg"), "x");
    dir.write(QStringLiteral("file2.jpg"), "xxx");
    dir.write(QStringLiteral(".hidden"), "x");
    dir.write(QStringLiteral("sub/inner.png"), "x");
    const QString root = dir.path();

    CliRun run = runCli({QStringLiteral("ls"), root});
    EXPECT_EQ(run.exitCode, 0) << qPrintable(run.err);
    EXPECT_EQ(run.out, QStringLiteral("%1/file2.jpg\n%1/file10.jpg\n%1/sub\n").arg(root));

    run = runCli({QStringLiteral("ls"), QStringLiteral("--sort"), QStringLiteral("1"), QStringLiteral("--reverse"),
                  QStringLiteral("--hide-folders"), QStringLiteral("--filter"), QStringLiteral("1"), root});
    EXPECT_EQ(run.out, QStringLiteral("%1/file2.jpg\n%1/file10.jpg\n%1/.hidden\n").arg(root));

    run = runCli({QStringLiteral("ls"), QStringLiteral("--depth"), QStringLiteral("1"), QStringLiteral("--by-folder"),
                  QStringLiteral("--filter"), QStringLiteral("2"), root});
    EXPECT_EQ(run.out, QStringLiteral("# %1\n%1/file2.jpg\n%1/file10.jpg\n# %1/sub\n%1/sub/inner.png\n").arg(root));

    run = runCli({QStringLiteral("ls"), QStringLiteral("--search"), QStringLiteral("FILE1"),
                  QStringLiteral("--search-type"), QStringLiteral("filename"), root});
    EXPECT_EQ(run.out, QStringLiteral("%1/file10.jpg\n").arg(root));

    run =
        runCli({QStringLiteral("ls"), QStringLiteral("--json"), QStringLiteral("--filter"), QStringLiteral("2"), root});
    ASSERT_EQ(run.exitCode, 0);
    const QJsonArray array = QJsonDocument::fromJson(run.out.toUtf8()).array();
    ASSERT_EQ(array.size(), 2);
    const QJsonObject first = array.first().toObject();
    EXPECT_EQ(first.value(QStringLiteral("path")).toString(), root + QStringLiteral("/file2.jpg"));
    EXPECT_EQ(first.value(QStringLiteral("name")).toString(), QStringLiteral("file2.jpg"));
    EXPECT_EQ(first.value(QStringLiteral("size")).toInt(), 3);
    for (const char *key : {"kind", "dimensions", "megapixels", "orientation", "exifDate", "camera"})
        EXPECT_TRUE(first.contains(QLatin1String(key))) << key;
}

TEST(LsCommand, ReportsUsageErrorsAndUnreadableFolders)
{
    TestDir dir;
    dir.write(QStringLiteral("a.jpg"), "x");

    for (const QStringList &args :
         {QStringList{"ls", "--sort", "18", dir.path()}, QStringList{"ls", "--filter", "-1", dir.path()},
          QStringList{"ls", "--folder-sort", "x", dir.path()}, QStringList{"ls", "--bogus", dir.path()},
          QStringList{"ls", "--search-type", "colour", "--search", "a", dir.path()}, QStringList{"ls"},
          QStringList{"frobnicate"}}) {
        const CliRun run = runCli(args);
        EXPECT_EQ(run.exitCode, 2) << qPrintable(args.join(' '));
        EXPECT_TRUE(run.err.startsWith(QStringLiteral("pixcove-cli: "))) << qPrintable(run.err);
        EXPECT_TRUE(run.out.isEmpty());
    }

    // An unreadable folder is reported and the readable ones still print.
    const QString missing = dir.filePath(QStringLiteral("missing"));
    const CliRun run = runCli({QStringLiteral("ls"), missing, dir.path()});
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_EQ(run.err, QStringLiteral("pixcove-cli: cannot read %1: No such file or directory\n").arg(missing));
    EXPECT_EQ(run.out, dir.filePath(QStringLiteral("a.jpg")) + QLatin1Char('\n'));
}
