#include "core/fs/ZQFileRecord.h"

#include "support/TestDir.h"

#include <QFile>
#include <QJsonDocument>

#include <gtest/gtest.h>

#include <cstdio>

namespace {

ZQFileRecord recordOf(const QString &path)
{
    return ZQFileRecord::forFile(ZQStandardFile::newFileForPath(path));
}

QString reasonFor(const QJsonValue &json)
{
    QString reason;
    EXPECT_FALSE(ZQFileRecord::fromJson(json, &reason).has_value());
    return reason;
}

} // namespace

TEST(ZQFileRecord, SurvivesJsonText)
{
    TestDir dir;
    const ZQFileRecord record = recordOf(dir.write(QStringLiteral("photo.jpg")));
    EXPECT_NE(record.inode, 0u);

    const QJsonObject json = record.toJson();
    EXPECT_TRUE(json.value(QLatin1String("device")).isDouble());
    EXPECT_TRUE(json.value(QLatin1String("inode")).isDouble());
    const QByteArray text = QJsonDocument(json).toJson(QJsonDocument::Compact);
    EXPECT_EQ(ZQFileRecord::fromJson(QJsonDocument::fromJson(text).object()), record);

    // Beyond what a double holds exactly, numbers travel as text; text is read either way.
    const ZQFileRecord huge{QStringLiteral("/x"), 7, (quint64(1) << 60) + 1};
    const QByteArray hugeText = QJsonDocument(huge.toJson()).toJson();
    EXPECT_EQ(ZQFileRecord::fromJson(QJsonDocument::fromJson(hugeText).object()), huge);
    const auto fromStrings = ZQFileRecord::fromJson(QJsonObject{{"path", "/y"}, {"device", "12"}, {"inode", "34"}});
    ASSERT_TRUE(fromStrings);
    EXPECT_EQ(fromStrings->device, 12u);
    EXPECT_EQ(fromStrings->inode, 34u);

    // Without numbers the record stands for its path alone.
    const auto pathOnly = ZQFileRecord::fromJson(QJsonObject{{"path", "/z"}});
    ASSERT_TRUE(pathOnly);
    EXPECT_EQ(pathOnly->inode, 0u);
}

TEST(ZQFileRecord, RejectsMalformedObjectsWithAReason)
{
    EXPECT_EQ(reasonFor(QJsonValue(QStringLiteral("/a"))), QStringLiteral("file record: not an object"));
    EXPECT_EQ(reasonFor(QJsonObject{{"device", 1}}), QStringLiteral("file record: no path"));
    EXPECT_EQ(reasonFor(QJsonObject{{"path", 5}}), QStringLiteral("file record: path is not a string"));
    EXPECT_EQ(reasonFor(QJsonObject{{"path", "/a"}, {"device", "abc"}}),
              QStringLiteral("file record: device is not a number"));
    EXPECT_EQ(reasonFor(QJsonObject{{"path", "/a"}, {"inode", -1}}),
              QStringLiteral("file record: inode is not a number"));
    EXPECT_EQ(reasonFor(QJsonObject{{"path", "/a"}, {"inode", 1.5}}),
              QStringLiteral("file record: inode is not a number"));
    EXPECT_EQ(reasonFor(QJsonObject{{"path", "/a"}, {"inode", true}}),
              QStringLiteral("file record: inode is not a number"));
}

TEST(ZQFileRecord, ResolvesRenamesReplacementsAndLosses)
{
    TestDir dir;
    const QString original = dir.write(QStringLiteral("before.jpg"));
    const ZQFileRecord record = recordOf(original);
    EXPECT_EQ(record.resolve()->path(), original);

    // Renamed within its folder: found by its inode.
    const QString renamed = dir.filePath(QStringLiteral("after.jpg"));
    ASSERT_EQ(std::rename(QFile::encodeName(original).constData(), QFile::encodeName(renamed).constData()), 0);
    EXPECT_EQ(record.resolve()->path(), renamed);

    // Gone, and another file stands under the old name: that one.
    const QString other = dir.write(QStringLiteral("before.jpg"));
    ASSERT_TRUE(QFile::remove(renamed));
    const ZQFilePtr replacement = record.resolve();
    EXPECT_EQ(replacement->path(), other);
    EXPECT_FALSE(replacement->isPlaceholder());

    // Nothing there at all: a placeholder for the path.
    ASSERT_TRUE(QFile::remove(other));
    const ZQFilePtr lost = record.resolve();
    EXPECT_EQ(lost->path(), original);
    EXPECT_TRUE(lost->isPlaceholder());

    // A record without device and inode trusts its path.
    const ZQFileRecord pathOnly{dir.filePath(QStringLiteral("missing/x.jpg")), 0, 0};
    EXPECT_TRUE(pathOnly.resolve()->isPlaceholder());
}
