#include "core/fs/TypeIdentifiers.h"

#include <QMimeDatabase>

#include <gtest/gtest.h>

#include <utility>

using namespace TypeIdentifiers;

TEST(TypeIdentifiers, ImagesConformToImageAndData)
{
    for (const char *name : {"a.jpg", "b.JPEG", "c.jpe"})
        EXPECT_EQ(forFileName(QString::fromLatin1(name), false), QStringLiteral("public.jpeg")) << name;
    EXPECT_TRUE(conformsTo(QStringLiteral("public.jpeg"), QStringLiteral("public.image")));
    EXPECT_TRUE(conformsTo(QStringLiteral("public.jpeg"), QStringLiteral("public.data")));
    EXPECT_FALSE(conformsTo(QStringLiteral("public.jpeg"), QStringLiteral("public.movie")));

    for (const char *name : {"DSC_0001.NEF", "IMG_0001.CR2", "scan.DNG", "x.arw"}) {
        const QString type = forFileName(QString::fromLatin1(name), false);
        EXPECT_TRUE(conformsTo(type, QStringLiteral("public.camera-raw-image"))) << name << " " << qPrintable(type);
        EXPECT_TRUE(conformsTo(type, QStringLiteral("public.image"))) << name;
    }

    const QString eps = forFileName(QStringLiteral("logo.eps"), false);
    EXPECT_EQ(eps, QStringLiteral("com.adobe.encapsulated-postscript"));
    EXPECT_FALSE(conformsTo(eps, QStringLiteral("public.text")));
}

TEST(TypeIdentifiers, MoviesAudioAndText)
{
    for (const char *name : {"clip.mp4", "clip.MOV", "clip.mkv"}) {
        const QString type = forFileName(QString::fromLatin1(name), false);
        EXPECT_TRUE(conformsTo(type, QStringLiteral("public.movie"))) << name << " " << qPrintable(type);
        EXPECT_FALSE(conformsTo(type, QStringLiteral("public.image"))) << name;
    }
    EXPECT_TRUE(conformsTo(forFileName(QStringLiteral("song.mp3"), false), QStringLiteral("public.audio")));
    EXPECT_FALSE(conformsTo(forFileName(QStringLiteral("song.mp3"), false), QStringLiteral("public.movie")));

    const QString text = forFileName(QStringLiteral("notes.txt"), false);
    EXPECT_EQ(text, QStringLiteral("public.plain-text"));
    EXPECT_TRUE(conformsTo(text, QStringLiteral("public.text")));
}

TEST(TypeIdentifiers, TypesOutsideTheTableKeepTheirMimeName)
{
    // Known to the MIME database, not to the table.
    const QString document = forFileName(QStringLiteral("letter.odt"), false);
    EXPECT_EQ(document, QStringLiteral("application/vnd.oasis.opendocument.text"));
    EXPECT_TRUE(conformsTo(document, QStringLiteral("public.data")));
    EXPECT_FALSE(conformsTo(document, QStringLiteral("public.image")));
    EXPECT_EQ(preferredMimeType(document), document);

    // Known to nobody.
    const QString unknown = forFileName(QStringLiteral("blob.zzqqxx"), false);
    EXPECT_TRUE(conformsTo(unknown, QStringLiteral("public.data")));
    EXPECT_FALSE(conformsTo(unknown, QStringLiteral("public.text")));
}

TEST(TypeIdentifiers, FoldersAndNamesThatShareAnExtension)
{
    EXPECT_EQ(forFileName(QStringLiteral("photos.jpg"), true), QStringLiteral("public.folder"));
    EXPECT_EQ(forFileName(QStringLiteral("Tool.app"), true), QStringLiteral("com.apple.application-bundle"));
    EXPECT_TRUE(conformsTo(QStringLiteral("public.volume"), QStringLiteral("public.folder")));

    // A pattern over two extensions must not decide the type of every name with the last one.
    const QString tarball = forFileName(QStringLiteral("backup.tar.gz"), false);
    const QString gzip = forFileName(QStringLiteral("notes.gz"), false);
    EXPECT_NE(tarball, gzip);
    EXPECT_EQ(gzip, QStringLiteral("org.gnu.gnu-zip-archive"));
    EXPECT_EQ(forFileName(QStringLiteral("other.tar.gz"), false), tarball);
}

// Every suffix of the MIME database gets the type the database gives for that very name, however
// the caches by extension were filled before: the last part alone first ("first.gz" before
// "x.tar.gz"), upper case, more dots, and every name a second time.
TEST(TypeIdentifiers, SuffixesGetTheTypesOfTheWholeDatabase)
{
    const QMimeDatabase db;
    QStringList suffixes;
    for (const QMimeType &mime : db.allMimeTypes()) {
        for (const QString &glob : mime.globPatterns()) {
            const QString suffix = glob.mid(2);
            if (glob.startsWith(QLatin1String("*.")) && !suffix.contains(QLatin1Char('*'))
                && !suffix.contains(QLatin1Char('[')) && !suffix.contains(QLatin1Char('?')))
                suffixes.append(suffix);
        }
    }
    ASSERT_GT(suffixes.size(), 500);
    ASSERT_TRUE(suffixes.contains(QStringLiteral("tar.gz")));
    for (int pass = 0; pass < 2; ++pass) {
        for (const QString &suffix : std::as_const(suffixes)) {
            forFileName(QStringLiteral("first.") + suffix.section(QLatin1Char('.'), -1), false);
            for (const QString &name : {QStringLiteral("x.") + suffix, QStringLiteral("X.") + suffix.toUpper(),
                                        QStringLiteral("2023.05.01 party.") + suffix}) {
                const QString expected = forMimeType(db.mimeTypeForFile(name, QMimeDatabase::MatchExtension).name());
                EXPECT_EQ(forFileName(name, false), expected) << qPrintable(name);
            }
        }
    }

    // The types the program tells apart, by the suffixes cameras and people write.
    const std::pair<const char *, const char *> named[] = {
        {"a.JPG", "public.jpeg"},
        {"a.heic", "public.heif"}, // image/heic is an alias of image/heif here
        {"a.HEIF", "public.heif"},
        {"a.avif", "public.avif"},
        {"a.webp", "org.webmproject.webp"},
        {"a.tif", "public.tiff"},
        {"a.CR2", "com.canon.cr2-raw-image"},
        {"a.CR3", "com.canon.cr3-raw-image"},
        {"a.NEF", "com.nikon.raw-image"},
        {"a.dng", "com.adobe.raw-image"},
        {"a.ARW", "com.sony.arw-raw-image"},
        {"a.RAF", "com.fuji.raw-image"},
        {"a.ORF", "com.olympus.raw-image"},
        {"a.RW2", "com.panasonic.rw2-raw-image"},
        {"a.MOV", "com.apple.quicktime-movie"},
        {"a.mp4", "public.mpeg-4"},
        {"a.mkv", "org.matroska.mkv"},
        {"a.avi", "public.avi"},
        {"a.webm", "org.webmproject.webm"},
        {"a.MTS", "public.mpeg-2-transport-stream"},
        {"a.desktop", "org.freedesktop.desktop-entry"},
        {"a.AppImage", "com.appimage.appimage"},
    };
    for (const auto &[name, type] : named)
        EXPECT_EQ(forFileName(QString::fromLatin1(name), false), QString::fromLatin1(type)) << name;
    EXPECT_EQ(forFileName(QStringLiteral("DCIM"), true), QStringLiteral("public.folder"));
}
