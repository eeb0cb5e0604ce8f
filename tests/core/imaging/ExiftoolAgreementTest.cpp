#include "core/imaging/ImagePropertiesItem.h"
#include "core/model/PXFile.h"

#include "support/TestDir.h"
#include "support/TestImages.h"

#include <QDirIterator>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QStandardPaths>

#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>

// Our records against exiftool's reading of the same files: the camera corpus when it is beside
// the checkout, and files written here with values that are easy to get wrong (southern and
// western positions, UTF-8 IPTC texts, long exposures, several keywords).

namespace {

QStringList writtenFiles(const TestDir &dir)
{
    QStringList files;
    TestImages::JpegOptions south;
    south.make = QStringLiteral("NIKON CORPORATION");
    south.model = QStringLiteral("NIKON D750");
    south.iso = {12800};
    south.fNumber = 5.6;
    south.dateTimeOriginal = QStringLiteral("2021:12:31 23:59:59");
    south.latitude = -33.856784;
    south.longitude = -70.651200;
    south.keywords = {QStringLiteral("Zürich"), QStringLiteral("café"), QStringLiteral("night")};
    south.extra = {{QStringLiteral("Exif.Photo.ExposureTime"), QStringLiteral("25/10")},
                   {QStringLiteral("Exif.Photo.FocalLength"), QStringLiteral("105/1")},
                   {QStringLiteral("Exif.Photo.Flash"), QStringLiteral("25")},
                   {QStringLiteral("Exif.Photo.DateTimeDigitized"), QStringLiteral("2022:01:01 00:00:01")},
                   {QStringLiteral("Exif.GPSInfo.GPSAltitude"), QStringLiteral("1234/10")},
                   {QStringLiteral("Exif.GPSInfo.GPSAltitudeRef"), QStringLiteral("1")},
                   {QStringLiteral("Iptc.Envelope.CharacterSet"), QStringLiteral("\x1b%G")},
                   {QStringLiteral("Iptc.Application2.City"), QStringLiteral("Malmö")},
                   {QStringLiteral("Iptc.Application2.Caption"), QStringLiteral("Über den Dächern")},
                   {QStringLiteral("Iptc.Application2.Byline"), QStringLiteral("Zoë")},
                   {QStringLiteral("Iptc.Application2.Headline"), QStringLiteral("Night")},
                   {QStringLiteral("Iptc.Application2.Credit"), QStringLiteral("Agency")},
                   {QStringLiteral("Iptc.Application2.Copyright"), QStringLiteral("© 2021")},
                   {QStringLiteral("Iptc.Application2.CountryName"), QStringLiteral("Sverige")}};
    files.append(TestImages::writeJpeg(dir.filePath(QStringLiteral("south.jpg")), QSize(32, 24), south));

    TestImages::JpegOptions north;
    north.make = QStringLiteral("Canon");
    north.model = QStringLiteral("Canon EOS R5");
    north.iso = {100};
    north.fNumber = 1.8;
    north.latitude = 64.1466;
    north.longitude = 21.9426;
    north.extra = {{QStringLiteral("Exif.Photo.ExposureTime"), QStringLiteral("1/8000")},
                   {QStringLiteral("Exif.Photo.FocalLength"), QStringLiteral("425/100")},
                   {QStringLiteral("Exif.Photo.Flash"), QStringLiteral("0")}};
    files.append(TestImages::writeJpeg(dir.filePath(QStringLiteral("north.jpg")), QSize(24, 32), north));
    return files;
}

QStringList corpusFiles()
{
    QStringList files;
    const QString corpus = TestImages::corpusDir();
    if (corpus.isEmpty())
        return files;
    QDirIterator it(corpus + QStringLiteral("/jpg"), {QStringLiteral("*.jpg"), QStringLiteral("*.jpeg")}, QDir::Files,
                    QDirIterator::Subdirectories);
    while (it.hasNext())
        files.append(it.next());
    files.sort();
    return files;
}

// exiftool's numeric reading of every file, by the file's path.
QHash<QString, QJsonObject> exiftoolRead(const QString &exiftool, const QStringList &files)
{
    QProcess process;
    QStringList args{QStringLiteral("-j"),
                     QStringLiteral("-n"),
                     QStringLiteral("-G"),
                     QStringLiteral("-q"),
                     QStringLiteral("-charset"),
                     QStringLiteral("iptc=UTF8"),
                     QStringLiteral("-EXIF:all"),
                     QStringLiteral("-IPTC:all"),
                     QStringLiteral("-Composite:GPSLatitude"),
                     QStringLiteral("-Composite:GPSLongitude")};
    process.start(exiftool, args + files);
    process.waitForFinished(120000);
    QHash<QString, QJsonObject> read;
    for (const QJsonValue &entry : QJsonDocument::fromJson(process.readAllStandardOutput()).array())
        read.insert(entry[QStringLiteral("SourceFile")].toString(), entry.toObject());
    return read;
}

// Compares what both sides have; what exiftool lacks is not checked, what we lack is a failure.
class Comparison
{
public:
    Comparison(const QString &file, const QJsonObject &tool, int *count)
        : m_file(file)
        , m_tool(tool)
        , m_count(count)
    { }

    void text(const char *tag, const std::optional<QString> &ours)
    {
        const QJsonValue theirs = m_tool.value(QLatin1String(tag));
        if (theirs.isUndefined())
            return;
        const QString expected = theirs.toVariant().toString().trimmed();
        if (expected.isEmpty())
            return;
        ++*m_count;
        EXPECT_EQ(ours.value_or(QStringLiteral("<absent>")), expected) << where(tag);
    }

    void number(const char *tag, const std::optional<double> &ours)
    {
        const QJsonValue theirs = m_tool.value(QLatin1String(tag));
        if (!theirs.isDouble())
            return; // "undef", "inf": a value the file does not really state
        ++*m_count;
        ASSERT_TRUE(ours.has_value()) << where(tag) << " exiftool: " << theirs.toDouble();
        EXPECT_NEAR(*ours, theirs.toDouble(), std::max(1e-6, std::fabs(theirs.toDouble()) * 1e-6)) << where(tag);
    }

    void list(const char *tag, const std::optional<QStringList> &ours)
    {
        const QJsonValue theirs = m_tool.value(QLatin1String(tag));
        if (theirs.isUndefined())
            return;
        ++*m_count;
        QStringList expected;
        if (theirs.isArray()) {
            for (const QJsonValue &value : theirs.toArray())
                expected.append(value.toVariant().toString().trimmed());
        } else {
            expected.append(theirs.toVariant().toString().trimmed());
        }
        EXPECT_EQ(ours.value_or(QStringList{QStringLiteral("<absent>")}), expected) << where(tag);
    }

private:
    std::string where(const char *tag) const { return (m_file + QStringLiteral(": ")).toStdString() + tag; }

    QString m_file;
    QJsonObject m_tool;
    int *m_count;
};

std::optional<double> real(const std::optional<qint64> &value)
{
    return value ? std::optional<double>(double(*value)) : std::nullopt;
}

} // namespace

TEST(ExiftoolAgreement, cameraFieldsMatchExiftool)
{
    const QString exiftool = QStandardPaths::findExecutable(QStringLiteral("exiftool"));
    if (exiftool.isEmpty())
        GTEST_SKIP() << "exiftool is not installed (scripts/setup installs it)";

    TestDir dir;
    const QStringList files = writtenFiles(dir) + corpusFiles();
    const QHash<QString, QJsonObject> tool = exiftoolRead(exiftool, files);
    ASSERT_EQ(tool.size(), files.size());

    int compared = 0;
    int values = 0;
    for (const QString &path : files) {
        LoadingError error;
        QString reason;
        const ImagePropertiesItemPtr item = ImagePropertiesItem::load(PXFile::fileForPath(path), &error, &reason);
        if (!item)
            continue; // broken on purpose: the bad-input tests cover them
        ++compared;
        Comparison check(path, tool.value(path), &values);
        check.text("EXIF:Make", item->tiffHardwareManufacturer);
        check.text("EXIF:Model", item->tiffHardwareModel);
        check.number("EXIF:ExposureTime", item->exposureTime);
        check.number("EXIF:FNumber", item->fNumber);
        check.number("EXIF:ISO", real(item->iso()));
        check.number("EXIF:FocalLength", item->focalLength);
        check.number("EXIF:Flash", real(item->flashStatus));
        check.text("EXIF:DateTimeOriginal", item->dateTimeOriginal);
        check.text("EXIF:CreateDate", item->dateTimeDigitized);
        check.text("EXIF:ModifyDate", item->tiffDateTime);
        if (item->latitude && item->longitude) {
            check.number("Composite:GPSLatitude", item->signedCoordinate().first);
            check.number("Composite:GPSLongitude", item->signedCoordinate().second);
        } else {
            EXPECT_FALSE(tool.value(path).contains(QStringLiteral("Composite:GPSLatitude"))) << qPrintable(path);
        }
        check.number("EXIF:GPSAltitude", item->altitude);
        check.number("EXIF:GPSAltitudeRef", real(item->altitudeReference));
        check.list("IPTC:Keywords", item->keywords);
        check.text("IPTC:City", item->city);
        check.text("IPTC:Caption-Abstract", item->caption);
        check.text("IPTC:By-line", item->byline);
        check.text("IPTC:Headline", item->headline);
        check.text("IPTC:Credit", item->credit);
        check.text("IPTC:CopyrightNotice", item->copyrightNotice);
        check.text("IPTC:Country-PrimaryLocationName", item->country);
    }
    EXPECT_GE(compared, 2);
    // The written files alone state 28 of the values; the corpus adds several hundred.
    EXPECT_GE(values, TestImages::corpusDir().isEmpty() ? 28 : 300) << "exiftool's output was not understood";
    std::printf("compared %d values of %d files with exiftool\n", values, compared);
}
