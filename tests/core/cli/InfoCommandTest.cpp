#include "support/CliRun.h"
#include "support/TestDir.h"
#include "support/TestImages.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <gtest/gtest.h>

namespace {

QString cameraJpeg(const TestDir &dir, const QString &name, const QString &model, double fNumber)
{
    TestImages::JpegOptions options;
    options.make = QStringLiteral("Maker");
    options.model = model;
    options.fNumber = fNumber;
    options.latitude = 48.5;
    options.longitude = -2.25;
    options.extra.insert(QStringLiteral("Exif.Photo.Flash"), QStringLiteral("16"));
    options.extra.insert(QStringLiteral("Exif.Photo.ExposureTime"), QStringLiteral("1/3"));
    return TestImages::writeJpeg(dir.filePath(name), QSize(40, 30), options);
}

// The lines of text output: "[Title]" for a header, "Label: value" for a row.
QStringList lines(const QString &out)
{
    return out.split(QLatin1Char('\n'), Qt::SkipEmptyParts);
}

} // namespace

TEST(InfoCommand, printsTheInspectorRowsOfEachFile)
{
    TestDir dir;
    const QString a = cameraJpeg(dir, QStringLiteral("a.jpg"), QStringLiteral("Model A"), 2.8);

    CliRun run = runCli({QStringLiteral("info"), a});
    ASSERT_EQ(run.exitCode, 0) << qPrintable(run.err);
    const QStringList general = lines(run.out);
    EXPECT_EQ(general.first(), QStringLiteral("[File Information]"));
    EXPECT_TRUE(general.contains(QStringLiteral("File Name: a.jpg")));
    EXPECT_TRUE(general.contains(QStringLiteral("Model: Model A")));
    EXPECT_TRUE(general.contains(QStringLiteral("F Stop: 2.8")));
    EXPECT_TRUE(general.contains(QStringLiteral("Exposure: 1/3")));
    EXPECT_TRUE(general.contains(QStringLiteral("Dimensions: 40x30")));
    EXPECT_TRUE(general.contains(QStringLiteral("Lens:"))) << "an empty value prints the label alone";
    EXPECT_LT(general.indexOf(QStringLiteral("[Hardware]")), general.indexOf(QStringLiteral("Model: Model A")));

    run = runCli({QStringLiteral("info"), QStringLiteral("--tab"), QStringLiteral("gps"), a});
    EXPECT_EQ(lines(run.out).first(), QStringLiteral("GPS: 48.500000, -2.250000"));
    EXPECT_TRUE(lines(run.out).contains(QStringLiteral("Coordinates: 48.500000 N, 2.250000 W")));

    run = runCli({QStringLiteral("info"), QStringLiteral("--tab"), QStringLiteral("exif"), a});
    EXPECT_TRUE(lines(run.out).contains(QStringLiteral("Flash: Off, Did not fire")));

    // A file that is not an image shows the file list.
    const QString notes = dir.write(QStringLiteral("notes.txt"), "hello");
    run = runCli({QStringLiteral("info"), notes});
    EXPECT_EQ(run.exitCode, 0);
    EXPECT_EQ(lines(run.out).size(), 9);
    EXPECT_TRUE(lines(run.out).contains(QStringLiteral("File Size: 5 bytes")));

    run = runCli({QStringLiteral("info"), QStringLiteral("--tab"), QStringLiteral("colour"), a});
    EXPECT_EQ(run.exitCode, 2);
}

TEST(InfoCommand, mergesSelectionsAndReportsUnreadableFiles)
{
    TestDir dir;
    const QString a = cameraJpeg(dir, QStringLiteral("a.jpg"), QStringLiteral("Model A"), 2.8);
    const QString b = cameraJpeg(dir, QStringLiteral("b.jpg"), QStringLiteral("Model B"), 2.8);
    const QString broken = dir.write(QStringLiteral("broken.jpg"), "not a jpeg");
    const QString missing = dir.filePath(QStringLiteral("missing.jpg"));

    CliRun run =
        runCli({QStringLiteral("info"), QStringLiteral("--json"), QStringLiteral("--merge"), a, broken, b, missing});
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_TRUE(run.err.contains(QStringLiteral("pixcove-cli: cannot read %1: ").arg(broken))) << qPrintable(run.err);
    EXPECT_TRUE(run.err.contains(QStringLiteral("pixcove-cli: cannot read %1: ").arg(missing)));
    const QJsonArray json = QJsonDocument::fromJson(run.out.toUtf8()).array();
    ASSERT_EQ(json.size(), 1);
    EXPECT_TRUE(json[0][QStringLiteral("file")].isNull());
    QMap<QString, QJsonObject> rows;
    for (const QJsonValue &row : json[0][QStringLiteral("rows")].toArray())
        rows.insert(row[QStringLiteral("id")].toString(), row.toObject());
    const auto field = [&](const char *id, const char *key) {
        return rows.value(QLatin1String(id)).value(QLatin1String(key)).toString();
    };
    EXPECT_EQ(field("tiffHardwareModel", "value"), QStringLiteral("Mixed Values"));
    EXPECT_EQ(field("tiffHardwareModel", "label"), QStringLiteral("Model:"));
    EXPECT_EQ(field("tiffHardwareModel", "section"), QStringLiteral("Hardware"));
    EXPECT_EQ(field("fNumber", "value"), QStringLiteral("2.8"));
    EXPECT_EQ(field("filename", "value"), QStringLiteral("Mixed Values"));

    run = runCli({QStringLiteral("info"), QStringLiteral("--json"), b, a});
    EXPECT_EQ(run.exitCode, 0);
    const QJsonArray each = QJsonDocument::fromJson(run.out.toUtf8()).array();
    ASSERT_EQ(each.size(), 2);
    EXPECT_EQ(each[0][QStringLiteral("file")].toString(), b) << "files print in the order given";
    EXPECT_EQ(each[1][QStringLiteral("file")].toString(), a);
}
