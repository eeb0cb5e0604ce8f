#include "core/model/ColorLabels.h"
#include "core/fs/ExtendedAttributes.h"
#include "core/model/PXFile.h"

#include "core/fs/FileOperationsSupport.h"
#include "support/TestDir.h"

#include <gtest/gtest.h>

// File managers and other programs keep their own tags beside the colour: a label change replaces
// the colour tag only, and leaves every other tag as it was written (order, spacing, case).
TEST(ColorLabels, ChangingTheLabelKeepsTheOtherTagsByteForByte)
{
    TestDir dir;
    const QString tagged = dir.write(QStringLiteral("tagged.jpg"), "x");
    setTags(tagged, "Holiday,red, family ,Blue");
    QString error;
    ASSERT_TRUE(ColorLabels::writeLabel(QFile::encodeName(tagged), 2, &error)) << error.toStdString();
    EXPECT_EQ(tagsOf(tagged), QByteArray("Holiday, family ,Green"));
    EXPECT_EQ(ColorLabels::readLabel(QFile::encodeName(tagged)), 2);

    ASSERT_TRUE(ColorLabels::writeLabel(QFile::encodeName(tagged), 0, &error));
    EXPECT_EQ(tagsOf(tagged), QByteArray("Holiday, family "));

    // The label a file has already: nothing is rewritten, not even the tag's case.
    const QString same = dir.write(QStringLiteral("same.jpg"), "x");
    setTags(same, "red,Trip");
    ASSERT_TRUE(ColorLabels::writeLabel(QFile::encodeName(same), 6, &error));
    EXPECT_EQ(tagsOf(same), QByteArray("red,Trip"));

    // No tags left: no empty attribute either.
    const QString only = dir.write(QStringLiteral("only.jpg"), "x");
    setTags(only, "Orange");
    ASSERT_TRUE(ColorLabels::writeLabel(QFile::encodeName(only), 0, &error));
    char value[8];
    EXPECT_LT(::getxattr(QFile::encodeName(only).constData(), "user.xdg.tags", value, sizeof value), 0);

    // A long list of tags is read whole: the colour comes after the first few hundred bytes.
    const QString many = dir.write(QStringLiteral("many.jpg"), "x");
    QByteArray tags;
    for (int i = 0; i < 60; ++i)
        tags += "project-" + QByteArray::number(i) + ",";
    setTags(many, tags + "Purple");
    EXPECT_EQ(ColorLabels::readLabel(QFile::encodeName(many)), 3);
    ASSERT_TRUE(ColorLabels::writeLabel(QFile::encodeName(many), 1, &error));
    EXPECT_EQ(ExtendedAttributes::read(QFile::encodeName(many), ColorLabels::tagsAttribute), tags + "Gray");
}

// The record answers a label it has just written without reading it back; a file gone since
// gives a message.
TEST(ColorLabels, TheFileRecordAnswersItsNewLabelAtOnce)
{
    TestDir dir;
    const QString path = dir.write(QStringLiteral("photo.jpg"), "x");
    const PXFilePtr file = PXFile::fileForPath(path);
    EXPECT_EQ(file->finderLabelSortValue(), 0);
    EXPECT_TRUE(file->finderLabelTitle().isEmpty());
    QString error;
    ASSERT_TRUE(file->setFinderLabel(7, &error));
    EXPECT_EQ(file->finderLabelTitle(), QStringLiteral("Orange"));
    EXPECT_EQ(tagsOf(path), QByteArray("Orange"));

    // A file gone since: a message, no crash, no label.
    const PXFilePtr gone = PXFile::fileForPath(dir.write(QStringLiteral("gone.jpg"), "x"));
    ASSERT_TRUE(QFile::remove(gone->path()));
    EXPECT_FALSE(gone->setFinderLabel(6, &error));
    EXPECT_FALSE(error.isEmpty());
}
