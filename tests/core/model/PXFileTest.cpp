#include "core/model/PXFile.h"
#include "core/model/ImagePropertyKeys.h"

#include "support/TestDir.h"
#include "support/TestImages.h"

#include <QFile>

#include <gtest/gtest.h>

using TestImages::JpegOptions;

TEST(PXFile, PlaceholderIsOfNoKindAndHasNoFacts)
{
    TestDir dir;
    const PXFilePtr missing = PXFile::fileForPath(dir.filePath(QStringLiteral("gone.jpg")));
    EXPECT_TRUE(missing->isPlaceholder());
    EXPECT_FALSE(missing->isImage());
    EXPECT_FALSE(missing->isVideo());
    EXPECT_FALSE(missing->isAudio());
    EXPECT_FALSE(missing->isText());
    EXPECT_EQ(missing->fileSize(), 0);
    EXPECT_TRUE(missing->fileSizeString().isEmpty());
    EXPECT_TRUE(missing->modificationDateString().isEmpty());
    EXPECT_TRUE(missing->creationDateString().isEmpty());
    EXPECT_EQ(missing->megapixels(), 0);
    EXPECT_FALSE(missing->hasEditableImageMetadata());
    EXPECT_EQ(missing->genericTypeString(), QStringLiteral("file"));
}

TEST(PXFile, KindsFollowTypesAndLinks)
{
    TestDir dir;
    const QString movie = dir.write(QStringLiteral("clip.mp4"), "x");
    const QString photo = dir.write(QStringLiteral("photo.JPG"), "x");
    const QString song = dir.write(QStringLiteral("song.mp3"), "x");
    const QString notes = dir.write(QStringLiteral("notes.txt"), "x");
    dir.mkdir(QStringLiteral("folder"));
    dir.symlink(movie, QStringLiteral("clip-link"));
    dir.symlink(photo, QStringLiteral("photo-link"));

    const auto at = [&dir](const char *name) { return PXFile::fileForPath(dir.filePath(QLatin1String(name))); };
    EXPECT_TRUE(at("clip.mp4")->isVideo());
    EXPECT_TRUE(at("clip.mp4")->isMedia());
    EXPECT_EQ(at("clip.mp4")->genericTypeString(), QStringLiteral("movie"));
    EXPECT_TRUE(at("photo.JPG")->isImage());
    EXPECT_EQ(at("photo.JPG")->genericTypeString(), QStringLiteral("image"));
    EXPECT_TRUE(at("song.mp3")->isAudio());
    EXPECT_EQ(at("song.mp3")->genericTypeString(), QStringLiteral("music"));
    EXPECT_TRUE(at("notes.txt")->isText());
    EXPECT_EQ(at("folder")->genericTypeString(), QStringLiteral("folder"));
    EXPECT_EQ(at("folder")->fileSize(), 0);
    // A link to a film is not a film, but a link to a picture shows the picture.
    EXPECT_FALSE(at("clip-link")->isVideo());
    EXPECT_TRUE(at("photo-link")->isImage());
    EXPECT_EQ(at("photo-link")->linkTypeString(), QStringLiteral("alias"));
    EXPECT_EQ(at("photo.JPG")->linkTypeString(), QStringLiteral("file"));
    EXPECT_EQ(at("photo.JPG")->extensionlessFileName(), QStringLiteral("photo"));
    EXPECT_EQ(at("photo.JPG")->fileNameExtension(), QStringLiteral("JPG"));
    EXPECT_EQ(at("photo.JPG")->parentDisplayName(), QFileInfo(dir.path()).fileName());
}

TEST(PXFile, ImageFactsTurnQuarterRotatedImagesUpright)
{
    TestDir dir;
    JpegOptions turned;
    turned.orientation = 6;
    turned.sizeInHeaderOnly = true;
    turned.iso = {200};
    turned.fNumber = 2.8;
    turned.model = QStringLiteral("Test Camera");
    turned.dateTimeOriginal = QStringLiteral("2023:07:14 18:30:05");
    turned.extra.insert(QStringLiteral("Exif.Photo.ExposureTime"), QStringLiteral("1/250"));
    turned.extra.insert(QStringLiteral("Exif.Photo.FocalLength"), QStringLiteral("425/100"));
    const PXFilePtr portrait =
        PXFile::fileForPath(TestImages::writeJpeg(dir.filePath(QStringLiteral("p.jpg")), {4000, 3000}, turned));

    EXPECT_EQ(portrait->orientation(), 6);
    EXPECT_EQ(portrait->trueDimensions(), QSizeF(4000, 3000));
    EXPECT_EQ(portrait->dimensions(), QSizeF(3000, 4000));
    EXPECT_EQ(portrait->dimensionsString(), QStringLiteral("3000x4000"));
    EXPECT_EQ(portrait->generalOrientation(), 1);
    EXPECT_EQ(portrait->generalOrientationString(), QStringLiteral("Portrait"));
    EXPECT_DOUBLE_EQ(portrait->megapixels(), 12.0);
    EXPECT_EQ(portrait->megapixelString(), QStringLiteral("12.0 MP"));
    EXPECT_EQ(portrait->ISOString(), QStringLiteral("ISO 200"));
    EXPECT_EQ(portrait->fNumberString(), QStringLiteral("f2.8"));
    EXPECT_EQ(portrait->exposureTimeString(), QStringLiteral("1/250"));
    EXPECT_EQ(portrait->focalLengthString(), QStringLiteral("4mm"));
    EXPECT_EQ(portrait->cameraModelString(), QStringLiteral("Test Camera"));
    EXPECT_EQ(portrait->EXIFDate(), QDateTime(QDate(2023, 7, 14), QTime(18, 30, 5)));
    EXPECT_FALSE(portrait->EXIFDateString().isEmpty());
    EXPECT_EQ(portrait->imageDepthString(), QStringLiteral("8-bit RGB"));
    EXPECT_FALSE(portrait->isPanorama());

    JpegOptions headerOnly;
    headerOnly.sizeInHeaderOnly = true;
    const auto image = [&](const char *name, QSize size) {
        return PXFile::fileForPath(TestImages::writeJpeg(dir.filePath(QLatin1String(name)), size, headerOnly));
    };
    const PXFilePtr square = image("square.jpg", {1000, 1000});
    EXPECT_EQ(square->generalOrientation(), 2);
    EXPECT_EQ(square->generalOrientationString(), QStringLiteral("Square"));
    EXPECT_TRUE(image("wide.jpg", {6000, 1000})->isPanorama());
    EXPECT_FALSE(image("almost.jpg", {5000, 1000})->isPanorama());
    EXPECT_EQ(image("landscape.jpg", {300, 200})->generalOrientation(), 3);
}

namespace {

// A reader that answers a 40x30 picture turned a quarter, refuses files named "refused.jpg" and
// remembers what it was asked.
struct FakeReader
{
    static inline QList<QByteArray> paths;
    static inline QStringList typeHints;

    static bool read(const QByteArray &nativePath, const QString &typeHint, QVariantMap *properties, QString *error)
    {
        paths.append(nativePath);
        typeHints.append(typeHint);
        if (nativePath.endsWith("refused.jpg")) {
            *error = QStringLiteral("refused");
            return false;
        }
        properties->insert(QLatin1String(ImagePropertyKey::PixelWidth), 40);
        properties->insert(QLatin1String(ImagePropertyKey::PixelHeight), 30);
        properties->insert(QLatin1String(ImagePropertyKey::Orientation), 8);
        return true;
    }
};

// Puts the fake reader in place for one test and the program's own back afterwards.
class ReaderSwap
{
public:
    ReaderSwap()
        : m_saved(PXFile::imagePropertiesReader())
    {
        FakeReader::paths.clear();
        FakeReader::typeHints.clear();
        PXFile::setImagePropertiesReader(&FakeReader::read);
    }
    ~ReaderSwap() { PXFile::setImagePropertiesReader(m_saved); }

private:
    PXFile::ImagePropertiesReader m_saved;
};

} // namespace

TEST(PXFile, ImageFactsComeFromTheInstalledReaderOncePerRecord)
{
    ASSERT_NE(PXFile::imagePropertiesReader(), nullptr) << "the test program installs the imaging reader";
    TestDir dir;
    const QString photo = dir.write(QStringLiteral("photo.jpg"), "x");
    dir.symlink(photo, QStringLiteral("link.jpg"));
    dir.write(QStringLiteral("refused.jpg"), "x");
    dir.write(QStringLiteral("notes.txt"), "x");
    const auto at = [&dir](const char *name) { return PXFile::fileForPath(dir.filePath(QLatin1String(name))); };
    ReaderSwap swap;

    const PXFilePtr file = at("photo.jpg");
    EXPECT_EQ(file->dimensions(), QSizeF(30, 40));
    EXPECT_EQ(file->orientation(), 8);
    EXPECT_TRUE(file->findAllImageInfo());
    EXPECT_EQ(FakeReader::paths, QList<QByteArray>{file->nativePath()});
    EXPECT_EQ(FakeReader::typeHints, QStringList{QStringLiteral("public.jpeg")});

    // A link is read through its target; a refusal leaves empty facts and is not asked again.
    EXPECT_EQ(at("link.jpg")->trueDimensions(), QSizeF(40, 30));
    EXPECT_EQ(FakeReader::paths.last(), file->nativePath());
    const PXFilePtr refused = at("refused.jpg");
    EXPECT_FALSE(refused->findAllImageInfo());
    EXPECT_TRUE(refused->dimensionsString().isEmpty());
    EXPECT_EQ(refused->orientation(), 1);
    EXPECT_EQ(FakeReader::paths.size(), 3);

    // What is not an image never reaches the reader.
    EXPECT_TRUE(at("notes.txt")->imageProperties().isEmpty());
    EXPECT_EQ(FakeReader::paths.size(), 3);
}

TEST(PXFile, UnreadableImagesGiveEmptyFacts)
{
    TestDir dir;
    // A corrupt JPEG, an empty one and a text file named like an image: records that answer
    // sensibly, never a crash.
    const PXFilePtr corrupt =
        PXFile::fileForPath(dir.write(QStringLiteral("corrupt.jpg"), QByteArray("\xFF\xD8\xFF\xE1garbage", 11)));
    const PXFilePtr empty = PXFile::fileForPath(dir.write(QStringLiteral("empty.jpg")));
    for (const PXFilePtr &file : {corrupt, empty}) {
        EXPECT_TRUE(file->isImage());
        EXPECT_TRUE(file->imageProperties().isEmpty());
        EXPECT_EQ(file->megapixels(), 0);
        EXPECT_TRUE(file->dimensionsString().isEmpty());
        EXPECT_TRUE(file->megapixelString().isEmpty());
        EXPECT_EQ(file->orientation(), 1);
        EXPECT_EQ(file->generalOrientation(), 0);
        EXPECT_FALSE(file->EXIFDate().isValid());
    }
    // A name that is not valid UTF-8 still opens through its bytes.
    const QByteArray odd = QFile::encodeName(dir.path()) + "/caf\xE9.jpg";
    TestImages::writeJpeg(dir.filePath(QStringLiteral("plain.jpg")), {64, 48});
    {
        QFile source(dir.filePath(QStringLiteral("plain.jpg")));
        ASSERT_TRUE(source.open(QIODevice::ReadOnly));
        const QByteArray bytes = source.readAll();
        FILE *out = std::fopen(odd.constData(), "wb");
        ASSERT_NE(out, nullptr);
        std::fwrite(bytes.constData(), 1, size_t(bytes.size()), out);
        std::fclose(out);
    }
    const PXFilePtr oddFile = PXFile::fileForNativePath(odd);
    EXPECT_FALSE(oddFile->isPlaceholder());
    EXPECT_EQ(oddFile->dimensionsString(), QStringLiteral("64x48"));
}

TEST(PXFile, AccessDateStringAnswersTheCreationSlot)
{
    TestDir dir;
    const PXFilePtr file = PXFile::fileForPath(dir.write(QStringLiteral("a.txt"), "x"));
    EXPECT_TRUE(file->accessDateString().isEmpty());
    const QString created = file->creationDateString();
    EXPECT_EQ(file->accessDateString(), created);
}

TEST(PXFile, EventsClearOnlyWhatTheyMakeStale)
{
    TestDir dir;
    const QString path = dir.write(QStringLiteral("doc.txt"), "12345");
    const PXFilePtr file = PXFile::fileForPath(path);
    EXPECT_TRUE(file->isText());
    EXPECT_FALSE(file->isImage());
    EXPECT_EQ(file->fileSize(), 5);
    file->modificationDateString();

    // A change of attributes clears the modification date alone.
    EXPECT_EQ(file->changedKeysForEvent({ZQFileEventType::attributesChanged, file->nativePath()}),
              QStringList{QStringLiteral("modificationDateString")});
    EXPECT_EQ(file->fileSize(), 5);

    // A content change clears the size and the computed kinds, which are computed anew.
    dir.write(QStringLiteral("doc.txt"), "1234567890");
    const QStringList keys = file->changedKeysForEvent({ZQFileEventType::contentModified, file->nativePath()});
    EXPECT_TRUE(keys.contains(QStringLiteral("fileSize")));
    EXPECT_TRUE(keys.contains(QStringLiteral("fileSizeString")));
    EXPECT_TRUE(keys.contains(QStringLiteral("isText")));
    EXPECT_TRUE(keys.contains(QStringLiteral("isImage")));
    EXPECT_FALSE(keys.contains(QStringLiteral("isMovie"))); // never computed, so not announced
    EXPECT_EQ(file->fileSize(), 10);
    EXPECT_TRUE(file->isText());
}
