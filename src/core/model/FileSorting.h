#pragma once

#include "core/model/FileSortTypes.h"
#include "core/model/PXFileForward.h"

#include <QList>
#include <QString>
#include <QStringList>

#include <functional>

// One key of a sort: which property, which direction, how values compare.
struct SortDescriptor
{
    enum class Comparison { natural, finderStyle, random };

    QString key; // prefixed with the item key path when one was given
    bool ascending = true;
    Comparison comparison = Comparison::natural;

    bool operator==(const SortDescriptor &) const = default;
};

// The sort of a folder's files: the folder descriptor (unless folders mix with files), the
// primary key in the given direction and, for every key but the name, the name as tie-break.
QList<SortDescriptor> sortDescriptorsForSortType(FileSortType sort, FolderSortType folderSort, bool ascending,
                                                 const QString &itemKeyPath = {});

// Sorts `files` by `descriptors`. Each item's keys are read once before sorting (on all cores
// when a key needs the image's properties), then compared: fast enough for 100 000 items.
void sortFiles(QList<PXFilePtr> &files, const QList<SortDescriptor> &descriptors);
// Where `a` sorts against `b` under `descriptors` (negative, zero, positive). For placing a few
// changed files into a list that is already sorted; a random descriptor compares as equal.
int compareFiles(const PXFile &a, const PXFile &b, const QList<SortDescriptor> &descriptors);
// Whether `descriptors` give the same order every time (no shuffle).
bool isDeterministicSort(const QList<SortDescriptor> &descriptors);
// Sorts any items that carry a file record; `fileOf` projects an item to its record.
template<typename Item>
void sortItems(QList<Item> &items, const QList<SortDescriptor> &descriptors,
               const std::function<const PXFile &(const Item &)> &fileOf);

// A condition on a file, with the predicate text it was built from (for logs and tests).
struct FilePredicate
{
    QString format; // "(%K == NO) && (%K == YES)"
    QStringList arguments; // the keys (and values) in order
    std::function<bool(const PXFile &)> test;

    // The format with its arguments in place: "(isInvisible == NO) && (isImage == YES)".
    QString predicateFormat() const;
    bool operator()(const PXFile &file) const { return !test || test(file); }
};

FilePredicate filterPredicateForFilterType(FileFilterType filter, bool excludeFolders, const QString &itemKeyPath = {});
// "%K contains[cd] %@": the searched property contains `text`, ignoring case and diacritics.
FilePredicate searchPredicate(ThumbnailsSearchType type, const QString &text, const QString &itemKeyPath = {});
// Both conditions hold.
FilePredicate andPredicate(const FilePredicate &first, const FilePredicate &second);

// Implementation of sortItems.
namespace FileSortingDetail {
void sortedOrder(const QList<const PXFile *> &files, const QList<SortDescriptor> &descriptors, QList<qsizetype> &order);
}

template<typename Item>
void sortItems(QList<Item> &items, const QList<SortDescriptor> &descriptors,
               const std::function<const PXFile &(const Item &)> &fileOf)
{
    QList<const PXFile *> files;
    files.reserve(items.size());
    for (const Item &item : items)
        files.append(&fileOf(item));
    QList<qsizetype> order;
    FileSortingDetail::sortedOrder(files, descriptors, order);
    QList<Item> sorted;
    sorted.reserve(items.size());
    for (qsizetype index : order)
        sorted.append(std::move(items[index]));
    items = std::move(sorted);
}
