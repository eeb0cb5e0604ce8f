#include "core/model/FileSorting.h"
#include "core/model/PXFile.h"

#include "support/FileNames.h"
#include "support/TestDir.h"

#include "core/model/TextHelpers.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>

namespace {

QList<PXFilePtr> filesIn(const TestDir &dir, const QStringList &names)
{
    QList<PXFilePtr> files;
    for (const QString &name : names)
        files << PXFile::fileForPath(dir.filePath(name));
    return files;
}

} // namespace

TEST(FileSorting, DescriptorsFollowTheSortAndFolderRules)
{
    const auto byName = sortDescriptorsForSortType(FileSortType::name, FolderSortType::mixed, false);
    ASSERT_EQ(byName.size(), 1); // the name is the only key: no tie-break
    EXPECT_EQ(byName[0],
              (SortDescriptor{QStringLiteral("displayName"), false, SortDescriptor::Comparison::finderStyle}));

    const auto bySize =
        sortDescriptorsForSortType(FileSortType::fileSize, FolderSortType::foldersFirst, false, QStringLiteral("file"));
    ASSERT_EQ(bySize.size(), 3);
    EXPECT_EQ(bySize[0],
              (SortDescriptor{QStringLiteral("file.isDirectory"), false, SortDescriptor::Comparison::natural}));
    EXPECT_EQ(bySize[1], (SortDescriptor{QStringLiteral("file.fileSize"), false, SortDescriptor::Comparison::natural}));
    EXPECT_EQ(bySize[2],
              (SortDescriptor{QStringLiteral("file.displayName"), false, SortDescriptor::Comparison::finderStyle}));

    EXPECT_EQ(sortDescriptorsForSortType(FileSortType::shuffle, FolderSortType::foldersLast, true)[1].comparison,
              SortDescriptor::Comparison::random);
    EXPECT_EQ(sortDescriptorsForSortType(FileSortType::cameraModel, FolderSortType::mixed, true)[0].comparison,
              SortDescriptor::Comparison::finderStyle);
}

TEST(FileSorting, EverySortTypeHasAPrimaryKey)
{
    // A member added to the value set without its key would stop the program here.
    const QMetaEnum sorts = QMetaEnum::fromType<FileSortType>();
    for (int i = 0; i < sorts.keyCount(); ++i) {
        const auto descriptors = sortDescriptorsForSortType(FileSortType(sorts.value(i)), FolderSortType::mixed, true);
        EXPECT_FALSE(descriptors.value(0).key.isEmpty()) << sorts.key(i);
    }
}

TEST(FileSorting, FoldersStayFirstAndEqualKeysFallBackToNames)
{
    TestDir dir;
    dir.write(QStringLiteral("b.txt"), "12");
    dir.write(QStringLiteral("a10.txt"), "12");
    dir.write(QStringLiteral("a9.txt"), "1234");
    dir.write(QStringLiteral("c.txt"), "1");
    dir.mkdir(QStringLiteral("zfolder"));
    dir.mkdir(QStringLiteral("afolder"));
    const QStringList all = {QStringLiteral("b.txt"),  QStringLiteral("zfolder"), QStringLiteral("a10.txt"),
                             QStringLiteral("a9.txt"), QStringLiteral("c.txt"),   QStringLiteral("afolder")};

    QList<PXFilePtr> files = filesIn(dir, all);
    sortFiles(files, sortDescriptorsForSortType(FileSortType::fileSize, FolderSortType::foldersFirst, true));
    EXPECT_EQ(namesOf(files), (QStringList{"afolder", "zfolder", "c.txt", "a10.txt", "b.txt", "a9.txt"}));

    // Descending: the folders still come first, equal sizes by name descending.
    sortFiles(files, sortDescriptorsForSortType(FileSortType::fileSize, FolderSortType::foldersFirst, false));
    EXPECT_EQ(namesOf(files), (QStringList{"zfolder", "afolder", "a9.txt", "b.txt", "a10.txt", "c.txt"}));

    sortFiles(files, sortDescriptorsForSortType(FileSortType::name, FolderSortType::foldersLast, false));
    EXPECT_EQ(namesOf(files), (QStringList{"c.txt", "b.txt", "a10.txt", "a9.txt", "zfolder", "afolder"}));

    sortFiles(files, sortDescriptorsForSortType(FileSortType::name, FolderSortType::mixed, true));
    EXPECT_EQ(namesOf(files), (QStringList{"a9.txt", "a10.txt", "afolder", "b.txt", "c.txt", "zfolder"}));

    // Shuffling keeps every file exactly once.
    sortFiles(files, sortDescriptorsForSortType(FileSortType::shuffle, FolderSortType::mixed, true));
    QStringList shuffled = namesOf(files);
    shuffled.sort();
    QStringList expected = all;
    expected.sort();
    EXPECT_EQ(shuffled, expected);
}

// The fast name sort (a collation key per name, compared by its first bytes and then whole)
// against the collator itself, on names as cameras and people write them: unpadded and padded
// numbers, spaces, mixed case, copies "photo (N)", diacritics, full-width digits and long names
// that share more than the compared first bytes.
TEST(FileSorting, HundredThousandNamesSortInTheCollatorsOrder)
{
    const auto nameFor = [](int i) {
        const QString n = QString::number(i / 10 + 1);
        const QString padded = QStringLiteral("%1").arg(i / 10 % 1000, 5, 10, QLatin1Char('0'));
        switch (i % 10) {
        case 0: return QStringLiteral("IMG_") + n + QStringLiteral(".jpg");
        case 1: return QStringLiteral("img_") + n + QStringLiteral(".JPG");
        case 2: return QStringLiteral("DSC_") + padded + QStringLiteral("_") + n + QStringLiteral(".JPG");
        case 3: return QStringLiteral("photo (") + n + QStringLiteral(").jpeg");
        case 4: return QStringLiteral("Photo ") + n + QStringLiteral(".JPG");
        case 5: return QStringLiteral("résumé ") + n + QStringLiteral(".txt");
        case 6: return QStringLiteral("resume ") + n + QStringLiteral(".txt");
        case 7: return QStringLiteral("Holiday in Brittany 2023 - day ") + n + QStringLiteral(" - IMG_") + padded;
        case 8: return QStringLiteral("\uFF11") + n + QStringLiteral(" scan.png");
        default: return n;
        }
    };
    QStringList names;
    for (int i = 0; i < 100000; ++i)
        names << nameFor(i);
    std::shuffle(names.begin(), names.end(), std::mt19937(20240601));
    QList<PXFilePtr> files;
    for (const QString &name : std::as_const(names))
        files << PXFile::fileForPath(QStringLiteral("/nonexistent-sort-test/") + name);

    for (const bool ascending : {true, false}) {
        QList<PXFilePtr> sorted = files;
        sortFiles(sorted, sortDescriptorsForSortType(FileSortType::name, FolderSortType::mixed, ascending));
        ASSERT_EQ(sorted.size(), files.size());
        qsizetype misplaced = 0;
        QString example;
        for (qsizetype i = 0; i + 1 < sorted.size(); ++i) {
            const int order = finderStyleCompare(sorted[i]->name(), sorted[i + 1]->name());
            if (ascending ? order < 0 : order > 0)
                continue;
            if (misplaced++ == 0)
                example = sorted[i]->name() + QStringLiteral(" | ") + sorted[i + 1]->name();
        }
        EXPECT_EQ(misplaced, 0) << (ascending ? "ascending" : "descending") << ", first: " << qPrintable(example);
    }
}

TEST(FileSorting, FilterPredicatesHideInvisibleFilesAndFolders)
{
    TestDir dir;
    dir.write(QStringLiteral(".hidden.jpg"), "x");
    dir.write(QStringLiteral("shown.jpg"), "x");
    dir.write(QStringLiteral("notes.txt"), "x");
    dir.write(QStringLiteral("clip.mov"), "x");
    dir.mkdir(QStringLiteral("folder"));
    dir.mkdir(QStringLiteral(".git"));
    const QList<PXFilePtr> files =
        filesIn(dir, {".hidden.jpg", "shown.jpg", "notes.txt", "clip.mov", "folder", ".git"});
    const auto passing = [&files](FileFilterType filter, bool excludeFolders) {
        const FilePredicate predicate = filterPredicateForFilterType(filter, excludeFolders);
        QStringList names;
        for (const PXFilePtr &file : files) {
            if (predicate(*file))
                names << file->name();
        }
        return names;
    };
    EXPECT_EQ(passing(FileFilterType::visible, false), (QStringList{"shown.jpg", "notes.txt", "clip.mov", "folder"}));
    EXPECT_EQ(passing(FileFilterType::all, false),
              (QStringList{".hidden.jpg", "shown.jpg", "notes.txt", "clip.mov", "folder", ".git"}));
    EXPECT_EQ(passing(FileFilterType::all, true), (QStringList{".hidden.jpg", "shown.jpg", "notes.txt", "clip.mov"}));
    EXPECT_EQ(passing(FileFilterType::images, false), (QStringList{"shown.jpg"}));
    EXPECT_EQ(passing(FileFilterType::media, false), (QStringList{"shown.jpg", "clip.mov"}));
    EXPECT_EQ(passing(FileFilterType::imagesAndFolders, false), (QStringList{"shown.jpg", "folder"}));
    EXPECT_EQ(passing(FileFilterType::visibleFolders, false), (QStringList{"folder"}));
    EXPECT_EQ(passing(FileFilterType::filesOnly, false), (QStringList{"shown.jpg", "notes.txt", "clip.mov"}));
    EXPECT_EQ(passing(FileFilterType::folders, false), (QStringList{"folder", ".git"}));
    EXPECT_TRUE(passing(FileFilterType::folders, true).isEmpty());

    EXPECT_EQ(filterPredicateForFilterType(FileFilterType::images, false, QStringLiteral("file")).predicateFormat(),
              QStringLiteral("(file.isInvisible == NO) && (file.isImage == YES)"));
    const FilePredicate portrait = filterPredicateForFilterType(FileFilterType::portraitImages, false);
    EXPECT_EQ(portrait.format, QStringLiteral("(%K == NO) && (%K == YES) && (%K == %K)"));
    EXPECT_EQ(portrait.arguments, (QStringList{"isInvisible", "isImage", "orientation", "1"}));

    const FilePredicate search = searchPredicate(ThumbnailsSearchType::filename, QStringLiteral("SHOWN"));
    EXPECT_EQ(search.predicateFormat(), QStringLiteral("displayName contains[cd] \"SHOWN\""));
    EXPECT_TRUE(search(*files[1]));
    EXPECT_FALSE(search(*files[2]));
}
