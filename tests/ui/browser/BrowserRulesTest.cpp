#include "core/model/PXFile.h"
#include "ui/browser/FileDropValidator.h"
#include "ui/browser/ThumbnailsStatusText.h"

#include "support/TestDir.h"

#include <gtest/gtest.h>

TEST(ThumbnailsStatusText, CountsFilesSelectionAndSources)
{
    EXPECT_EQ(thumbnailsStatusText({}), "No Folder Selected");

    ThumbnailsStatusInput input;
    input.sourceNames = {"Holiday"};
    input.loading = true;
    input.foundCount = 1234;
    EXPECT_EQ(thumbnailsStatusText(input), "Loading. 1234 found...");

    input.loading = false;
    input.fileCount = 1;
    EXPECT_EQ(thumbnailsStatusText(input), "1 file");
    input.selectedCount = 1;
    EXPECT_EQ(thumbnailsStatusText(input), "1 of 1 file selected");
    input.fileCount = 12;
    input.selectedCount = 3;
    EXPECT_EQ(thumbnailsStatusText(input), "3 of 12 files selected");
    input.fileCount = 0;
    input.selectedCount = 0;
    EXPECT_EQ(thumbnailsStatusText(input), "0 files");

    input.fileCount = 12;
    input.includesSubfolders = true;
    EXPECT_EQ(thumbnailsStatusText(input), "Holiday and its subfolders: 12 files");
    input.sourceNames = {"A", "B", "C"};
    EXPECT_EQ(thumbnailsStatusText(input), "3 folders and their subfolders: 12 files");
    input.includesSubfolders = false;
    input.selectedCount = 2;
    EXPECT_EQ(thumbnailsStatusText(input), "3 folders: 2 of 12 files selected");
}

TEST(FileDropValidator, ModifiersOverrideTheDefaultOperation)
{
    using Op = FileDropOperation;
    EXPECT_EQ(FileDropValidator::applyModifiers(Op::move, Qt::ControlModifier), Op::copy);
    EXPECT_EQ(FileDropValidator::applyModifiers(Op::copy, Qt::ShiftModifier), Op::move);
    EXPECT_EQ(FileDropValidator::applyModifiers(Op::copy, Qt::ControlModifier | Qt::ShiftModifier), Op::link);
    EXPECT_EQ(FileDropValidator::applyModifiers(Op::copy, Qt::AltModifier | Qt::ShiftModifier), Op::ask);
    EXPECT_EQ(FileDropValidator::applyModifiers(Op::move, Qt::NoModifier), Op::move);
    // What cannot be dropped stays refused; an application opens whatever is held.
    EXPECT_EQ(FileDropValidator::applyModifiers(Op::none, Qt::AltModifier), Op::none);
    EXPECT_EQ(FileDropValidator::applyModifiers(Op::open, Qt::ControlModifier | Qt::AltModifier), Op::open);

    TestDir dir;
    const QString photo = dir.write(QStringLiteral("in/photo.jpg"), "x");
    const QString folder = dir.mkdir(QStringLiteral("in/sub"));
    const QString other = dir.mkdir(QStringLiteral("other"));
    const QString app = dir.write(QStringLiteral("viewer.desktop"), "[Desktop Entry]\nType=Application\nExec=true\n");

    FileDropValidator validator;
    const QList<QUrl> urls{QUrl::fromLocalFile(photo), QUrl::fromLocalFile(folder)};
    const PXFilePtr otherFolder = PXFile::fileForPath(other);
    EXPECT_EQ(validator.validate(urls, otherFolder, Qt::NoModifier), Op::move); // same volume
    EXPECT_EQ(validator.validate(urls, otherFolder, Qt::ControlModifier), Op::copy);
    EXPECT_EQ(validator.validate(urls, otherFolder, Qt::ControlModifier | Qt::ShiftModifier), Op::link);
    // Back into the folder they are in, or a folder into itself: nothing to do.
    EXPECT_EQ(validator.validate(urls, PXFile::fileForPath(dir.filePath("in")), Qt::ControlModifier), Op::none);
    EXPECT_EQ(validator.validate(urls, PXFile::fileForPath(folder), Qt::NoModifier), Op::none);
    EXPECT_EQ(validator.validate({QUrl(QStringLiteral("https://example.org/a.jpg"))}, otherFolder, Qt::NoModifier),
              Op::none);
    EXPECT_EQ(validator.validate(urls, PXFile::fileForPath(app), Qt::NoModifier), Op::open);
    EXPECT_EQ(validator.validate(urls, PXFile::fileForPath(photo), Qt::NoModifier), Op::none);
}
