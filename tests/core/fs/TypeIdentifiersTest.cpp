#include "core/fs/TypeIdentifiers.h"

#include <gtest/gtest.h>

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
