#include "core/model/MediaTypes.h"
#include "core/fs/TypeIdentifiers.h"
#include "core/model/TextHelpers.h"

#include <QMimeDatabase>

#include <gtest/gtest.h>

// A file is a film when its type is one of the database's video types, named by the table or not.
TEST(MediaTypes, FilmsAreTheVideoTypesOfTheDatabase)
{
    const QMimeDatabase db;
    QStringList videoTypes = {QStringLiteral("public.video"), QStringLiteral("public.movie")};
    for (const QMimeType &mime : db.allMimeTypes()) {
        if (mime.name().startsWith(QLatin1String("video/")))
            videoTypes.append(TypeIdentifiers::forMimeType(mime.name()));
    }
    ASSERT_GT(videoTypes.size(), 20);
    for (const QMimeType &mime : db.allMimeTypes()) {
        const QString type = TypeIdentifiers::forMimeType(mime.name());
        EXPECT_EQ(utiConformsToUTIs(type, MediaTypes::audiovisualTypes()), utiConformsToUTIs(type, videoTypes))
            << qPrintable(mime.name()) << " " << qPrintable(type);
    }
    EXPECT_TRUE(utiConformsToUTIs(QStringLiteral("video/x-flv"), MediaTypes::audiovisualTypes()));
    EXPECT_FALSE(utiConformsToUTIs(QStringLiteral("public.mp3"), MediaTypes::audiovisualTypes()));
}
