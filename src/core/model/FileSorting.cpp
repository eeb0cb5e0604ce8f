#include "core/model/FileSorting.h"

#include "core/model/PXFile.h"
#include "core/model/TextHelpers.h"

#include <QHash>
#include <QRandomGenerator>
#include <QtConcurrent/QtConcurrentMap>
#include <QtEndian>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <iterator>
#include <numeric>

namespace {

QString prefixed(const QString &itemKeyPath, const char *key)
{
    return itemKeyPath.isEmpty() ? QString::fromLatin1(key)
                                 : QStringLiteral("%1.%2").arg(itemKeyPath, QLatin1String(key));
}

QString withoutPrefix(const QString &key)
{
    const qsizetype dot = key.lastIndexOf(QLatin1Char('.'));
    return dot < 0 ? key : key.mid(dot + 1);
}

struct PrimaryKey
{
    const char *key;
    SortDescriptor::Comparison comparison;
};

// By raw value of FileSortType, one for each member: a test sorts by every one.
constexpr PrimaryKey primaryKeys[] = {
    {"displayName", SortDescriptor::Comparison::finderStyle},
    {"fileSize", SortDescriptor::Comparison::natural},
    {"kindString", SortDescriptor::Comparison::finderStyle},
    {"megapixels", SortDescriptor::Comparison::natural},
    {"modificationDate", SortDescriptor::Comparison::natural},
    {"displayName", SortDescriptor::Comparison::random},
    {"creationDate", SortDescriptor::Comparison::natural},
    {"finderLabelSortValue", SortDescriptor::Comparison::finderStyle},
    {"dimensionsHeight", SortDescriptor::Comparison::natural},
    {"dimensionsWidth", SortDescriptor::Comparison::natural},
    {"EXIFDate", SortDescriptor::Comparison::natural},
    {"generalOrientation", SortDescriptor::Comparison::natural},
    {"exposureTime", SortDescriptor::Comparison::natural},
    {"fNumber", SortDescriptor::Comparison::natural},
    {"ISO", SortDescriptor::Comparison::natural},
    {"focalLength", SortDescriptor::Comparison::natural},
    {"cameraModelString", SortDescriptor::Comparison::finderStyle},
    {"dateAdded", SortDescriptor::Comparison::natural},
};

// A key's value for one file: a number (dates as milliseconds), or a text as its collation key
// with the text itself for the forced tie-break. Missing values sort before present ones.
struct KeyValue
{
    bool missing = false;
    double number = 0;
    QByteArray collationKey;
    QString text;
};

enum class KeyId {
    isDirectory,
    displayName,
    fileSize,
    kindString,
    megapixels,
    modificationDate,
    creationDate,
    finderLabelSortValue,
    dimensionsHeight,
    dimensionsWidth,
    EXIFDate,
    generalOrientation,
    exposureTime,
    fNumber,
    ISO,
    focalLength,
    cameraModelString,
    dateAdded,
    unknown
};

KeyId keyIdFor(const QString &key)
{
    static const QHash<QString, KeyId> ids = {
        {QStringLiteral("isDirectory"), KeyId::isDirectory},
        {QStringLiteral("displayName"), KeyId::displayName},
        {QStringLiteral("fileSize"), KeyId::fileSize},
        {QStringLiteral("kindString"), KeyId::kindString},
        {QStringLiteral("megapixels"), KeyId::megapixels},
        {QStringLiteral("modificationDate"), KeyId::modificationDate},
        {QStringLiteral("creationDate"), KeyId::creationDate},
        {QStringLiteral("finderLabelSortValue"), KeyId::finderLabelSortValue},
        {QStringLiteral("dimensionsHeight"), KeyId::dimensionsHeight},
        {QStringLiteral("dimensionsWidth"), KeyId::dimensionsWidth},
        {QStringLiteral("EXIFDate"), KeyId::EXIFDate},
        {QStringLiteral("generalOrientation"), KeyId::generalOrientation},
        {QStringLiteral("exposureTime"), KeyId::exposureTime},
        {QStringLiteral("fNumber"), KeyId::fNumber},
        {QStringLiteral("ISO"), KeyId::ISO},
        {QStringLiteral("focalLength"), KeyId::focalLength},
        {QStringLiteral("cameraModelString"), KeyId::cameraModelString},
        {QStringLiteral("dateAdded"), KeyId::dateAdded},
    };
    return ids.value(withoutPrefix(key), KeyId::unknown);
}

KeyValue numberOf(double value)
{
    return {false, value, {}, {}};
}
KeyValue missingValue()
{
    return {true, 0, {}, {}};
}
KeyValue dateOf(const QDateTime &date)
{
    return date.isValid() ? numberOf(double(date.toMSecsSinceEpoch())) : missingValue();
}
template<typename T>
KeyValue optionalOf(const std::optional<T> &value)
{
    return value ? numberOf(double(*value)) : missingValue();
}
KeyValue textOf(const QString &text)
{
    return {false, 0, finderStyleSortKey(text), text};
}

KeyValue valueOf(const PXFile &file, KeyId id)
{
    switch (id) {
    case KeyId::isDirectory: return numberOf(file.isDirectory() ? 1 : 0);
    case KeyId::displayName: return {false, 0, file.nameSortKey(), file.displayName()};
    case KeyId::fileSize: return numberOf(double(file.fileSize()));
    case KeyId::kindString: return textOf(file.kindString());
    case KeyId::megapixels: return numberOf(file.megapixels());
    case KeyId::modificationDate: return dateOf(file.modificationDate());
    case KeyId::creationDate: return dateOf(file.creationDate());
    case KeyId::finderLabelSortValue: return numberOf(file.finderLabelSortValue());
    case KeyId::dimensionsHeight: return numberOf(file.dimensionsHeight());
    case KeyId::dimensionsWidth: return numberOf(file.dimensionsWidth());
    case KeyId::EXIFDate: return dateOf(file.EXIFDate());
    case KeyId::generalOrientation: return numberOf(file.generalOrientation());
    case KeyId::exposureTime: return optionalOf(file.exposureTime());
    case KeyId::fNumber: return optionalOf(file.fNumber());
    case KeyId::ISO: return optionalOf(file.ISO());
    case KeyId::focalLength: return optionalOf(file.focalLength());
    case KeyId::cameraModelString: return textOf(file.cameraModelString());
    case KeyId::dateAdded: return dateOf(file.dateAdded());
    case KeyId::unknown: break;
    }
    return missingValue();
}

// Keys whose value needs the image's properties or a system call per file: read on all cores.
bool isExpensive(KeyId id)
{
    return id != KeyId::displayName && id != KeyId::isDirectory;
}

int compareValues(const KeyValue &a, const KeyValue &b, SortDescriptor::Comparison comparison)
{
    if (a.missing || b.missing)
        return int(b.missing) - int(a.missing);
    if (comparison == SortDescriptor::Comparison::finderStyle
        && (!a.collationKey.isNull() || !b.collationKey.isNull())) {
        const int byKey = std::memcmp(a.collationKey.constData(), b.collationKey.constData(),
                                      size_t(std::min(a.collationKey.size(), b.collationKey.size())));
        if (byKey != 0)
            return byKey;
        if (a.collationKey.size() != b.collationKey.size())
            return a.collationKey.size() < b.collationKey.size() ? -1 : 1;
        return finderStyleTieBreak(a.text, b.text);
    }
    return a.number < b.number ? -1 : (b.number < a.number ? 1 : 0);
}

// An item's place in a sort, with its first key's value as 16 bytes in that key's order. A
// sort compares these first and looks at the keys themselves only when they are equal: the
// entries of 100 000 items fit the processor's cache, their keys do not.
struct SortEntry
{
    quint64 head[2];
    qsizetype index;
};

// Writes the head of `value`; false when the value has no head in its order (not a number).
// Missing values sort first, so they have the smallest head; a present value may share it, and
// equal heads are settled by the full comparison.
bool headOf(const KeyValue &value, SortDescriptor::Comparison comparison, quint64 head[2])
{
    head[0] = head[1] = 0;
    if (value.missing)
        return true;
    if (comparison == SortDescriptor::Comparison::finderStyle && !value.collationKey.isNull()) {
        // Sort keys hold no zero bytes (ICU ends them with one, which is dropped), so the
        // zero-filled head of a key that is a prefix of another is the smaller one.
        unsigned char bytes[16] = {};
        std::memcpy(bytes, value.collationKey.constData(), size_t(std::min<qsizetype>(value.collationKey.size(), 16)));
        head[0] = qFromBigEndian<quint64>(bytes);
        head[1] = qFromBigEndian<quint64>(bytes + 8);
        return true;
    }
    if (std::isnan(value.number))
        return false;
    // The bits of a double, flipped so that unsigned order is numeric order; -0 is 0.
    const double number = value.number == 0 ? 0.0 : value.number;
    quint64 bits;
    std::memcpy(&bits, &number, sizeof bits);
    head[0] = (bits >> 63) ? ~bits : bits | (quint64(1) << 63);
    return true;
}

} // namespace

QList<SortDescriptor> sortDescriptorsForSortType(FileSortType sort, FolderSortType folderSort, bool ascending,
                                                 const QString &itemKeyPath)
{
    const int sortRaw = int(sort);
    const int folderRaw = int(folderSort);
    if (sortRaw < 0 || sortRaw >= int(std::size(primaryKeys)))
        qFatal("Unknown file sort type %d", sortRaw);
    if (folderRaw < 0 || folderRaw >= valueSetCount<FolderSortType>())
        qFatal("Unknown folder sort type %d", folderRaw);

    QList<SortDescriptor> descriptors;
    // Folders go first or last whatever the direction of the sort.
    if (folderSort == FolderSortType::foldersFirst)
        descriptors.append({prefixed(itemKeyPath, "isDirectory"), false, SortDescriptor::Comparison::natural});
    else if (folderSort == FolderSortType::foldersLast)
        descriptors.append({prefixed(itemKeyPath, "isDirectory"), true, SortDescriptor::Comparison::natural});

    const PrimaryKey &primary = primaryKeys[sortRaw];
    descriptors.append({prefixed(itemKeyPath, primary.key), ascending, primary.comparison});
    if (sort != FileSortType::name)
        descriptors.append({prefixed(itemKeyPath, "displayName"), ascending, SortDescriptor::Comparison::finderStyle});
    return descriptors;
}

void FileSortingDetail::sortedOrder(const QList<const PXFile *> &files, const QList<SortDescriptor> &descriptors,
                                    QList<qsizetype> &order)
{
    const qsizetype count = files.size();
    const qsizetype keyCount = descriptors.size();
    QList<KeyId> ids;
    bool expensive = false;
    for (const SortDescriptor &descriptor : descriptors) {
        ids.append(keyIdFor(descriptor.key));
        expensive =
            expensive || (isExpensive(ids.last()) && descriptor.comparison != SortDescriptor::Comparison::random);
    }

    // Row-major: the keys of item i are values[i * keyCount ...].
    std::vector<KeyValue> values(size_t(count * keyCount));
    const auto fill = [&](qsizetype i) {
        for (qsizetype k = 0; k < keyCount; ++k) {
            KeyValue &value = values[size_t(i * keyCount + k)];
            if (descriptors[k].comparison == SortDescriptor::Comparison::random)
                value = numberOf(QRandomGenerator::global()->generateDouble());
            else
                value = valueOf(*files[i], ids[k]);
        }
    };
    QList<qsizetype> indices(count);
    std::iota(indices.begin(), indices.end(), 0);
    // Parallel when keys read the disk or many names need their first collation key.
    if (count > 2000 || (expensive && count > 16))
        QtConcurrent::blockingMap(indices, fill);
    else
        std::for_each(indices.begin(), indices.end(), fill);

    const auto less = [&](qsizetype a, qsizetype b) {
        for (qsizetype k = 0; k < keyCount; ++k) {
            const int result = compareValues(values[size_t(a * keyCount + k)], values[size_t(b * keyCount + k)],
                                             descriptors[k].comparison);
            if (result != 0)
                return descriptors[k].ascending ? result < 0 : result > 0;
        }
        return false;
    };

    std::vector<SortEntry> entries(static_cast<size_t>(count));
    bool headsUsable = keyCount > 0;
    for (qsizetype i = 0; i < count && headsUsable; ++i) {
        entries[size_t(i)].index = i;
        headsUsable = headOf(values[size_t(i * keyCount)], descriptors[0].comparison, entries[size_t(i)].head);
    }
    if (!headsUsable) {
        // Already in order (a re-sort after one file changed): nothing to move.
        if (!std::is_sorted(indices.begin(), indices.end(), less))
            std::stable_sort(indices.begin(), indices.end(), less);
        order = std::move(indices);
        return;
    }
    const bool firstAscending = descriptors[0].ascending;
    const auto entryLess = [&](const SortEntry &a, const SortEntry &b) {
        if (a.head[0] != b.head[0])
            return (a.head[0] < b.head[0]) == firstAscending;
        if (a.head[1] != b.head[1])
            return (a.head[1] < b.head[1]) == firstAscending;
        return less(a.index, b.index);
    };
    if (!std::is_sorted(entries.begin(), entries.end(), entryLess))
        std::stable_sort(entries.begin(), entries.end(), entryLess);
    for (qsizetype i = 0; i < count; ++i)
        indices[i] = entries[size_t(i)].index;
    order = std::move(indices);
}

int compareFiles(const PXFile &a, const PXFile &b, const QList<SortDescriptor> &descriptors)
{
    for (const SortDescriptor &descriptor : descriptors) {
        if (descriptor.comparison == SortDescriptor::Comparison::random)
            continue;
        const KeyId id = keyIdFor(descriptor.key);
        const int result = compareValues(valueOf(a, id), valueOf(b, id), descriptor.comparison);
        if (result != 0)
            return descriptor.ascending ? result : -result;
    }
    return 0;
}

bool isDeterministicSort(const QList<SortDescriptor> &descriptors)
{
    return std::none_of(descriptors.begin(), descriptors.end(), [](const SortDescriptor &descriptor) {
        return descriptor.comparison == SortDescriptor::Comparison::random;
    });
}

void sortFiles(QList<PXFilePtr> &files, const QList<SortDescriptor> &descriptors)
{
    sortItems<PXFilePtr>(files, descriptors, [](const PXFilePtr &file) -> const PXFile & { return *file; });
}

// MARK: predicates

QString FilePredicate::predicateFormat() const
{
    QString result;
    qsizetype argument = 0;
    for (qsizetype i = 0; i < format.size(); ++i) {
        if (format[i] == QLatin1Char('%') && i + 1 < format.size()
            && (format[i + 1] == QLatin1Char('K') || format[i + 1] == QLatin1Char('@'))) {
            const QString value = argument < arguments.size() ? arguments[argument++] : QString();
            result += format[i + 1] == QLatin1Char('@') ? QStringLiteral("\"%1\"").arg(value) : value;
            ++i;
        } else {
            result += format[i];
        }
    }
    return result;
}

FilePredicate filterPredicateForFilterType(FileFilterType filter, bool excludeFolders, const QString &itemKeyPath)
{
    const auto key = [&itemKeyPath](const char *name) { return prefixed(itemKeyPath, name); };
    const auto visibleAnd = [&](const char *flag, bool (PXFile::*test)() const) {
        return FilePredicate{QStringLiteral("(%K == NO) && (%K == YES)"),
                             {key("isInvisible"), key(flag)},
                             [test](const PXFile &f) { return !f.isInvisible() && (f.*test)(); }};
    };
    const auto visibleAndOrFolder = [&](const char *flag, bool (PXFile::*test)() const) {
        return FilePredicate{QStringLiteral("(%K == NO) && ((%K == YES) || (%K == YES))"),
                             {key("isInvisible"), key(flag), key("isDirectory")},
                             [test](const PXFile &f) { return !f.isInvisible() && ((f.*test)() || f.isDirectory()); }};
    };
    // The orientation filters keep the number in a key's place, as they always have, and match
    // images whose general orientation has that code.
    const auto orientationFilter = [&](int code) {
        return FilePredicate{QStringLiteral("(%K == NO) && (%K == YES) && (%K == %K)"),
                             {key("isInvisible"), key("isImage"), key("orientation"), QString::number(code)},
                             [code](const PXFile &f) {
                                 return !f.isInvisible() && f.isImage() && f.generalOrientation() == code;
                             }};
    };

    FilePredicate predicate;
    switch (filter) {
    case FileFilterType::visible:
        predicate = {QStringLiteral("%K == NO"), {key("isInvisible")}, [](const PXFile &f) {
                         return !f.isInvisible();
                     }};
        break;
    case FileFilterType::all:
        predicate = {QStringLiteral("TRUEPREDICATE"), {}, [](const PXFile &) { return true; }};
        break;
    case FileFilterType::images: predicate = visibleAnd("isImage", &PXFile::isImage); break;
    case FileFilterType::media: predicate = visibleAnd("isMedia", &PXFile::isMedia); break;
    case FileFilterType::imagesAndFolders: predicate = visibleAndOrFolder("isImage", &PXFile::isImage); break;
    case FileFilterType::mediaAndFolders: predicate = visibleAndOrFolder("isMedia", &PXFile::isMedia); break;
    case FileFilterType::visibleFolders: predicate = visibleAnd("isDirectory", &PXFile::isDirectory); break;
    case FileFilterType::filesOnly:
        predicate = {QStringLiteral("(%K == NO) && (%K == NO)"),
                     {key("isInvisible"), key("isDirectory")},
                     [](const PXFile &f) { return !f.isInvisible() && !f.isDirectory(); }};
        break;
    case FileFilterType::portraitImages: predicate = orientationFilter(1); break;
    case FileFilterType::landscapeImages: predicate = orientationFilter(3); break;
    case FileFilterType::squareImages: predicate = orientationFilter(2); break;
    case FileFilterType::panoramas:
        predicate = {QStringLiteral("(%K == NO) && (%K == YES) && (%K == YES)"),
                     {key("isInvisible"), key("isImage"), key("isPanorama")},
                     [](const PXFile &f) { return !f.isInvisible() && f.isImage() && f.isPanorama(); }};
        break;
    case FileFilterType::folders:
        predicate = {QStringLiteral("(%K == YES)"), {key("isDirectory")}, [](const PXFile &f) {
                         return f.isDirectory();
                     }};
        break;
    default: qFatal("Unknown file filter type %d", int(filter));
    }
    if (excludeFolders) {
        predicate = andPredicate(predicate,
                                 FilePredicate{QStringLiteral("%K == NO"), {key("isDirectory")}, [](const PXFile &f) {
                                                   return !f.isDirectory();
                                               }});
    }
    return predicate;
}

FilePredicate searchPredicate(ThumbnailsSearchType type, const QString &text, const QString &itemKeyPath)
{
    const char *key = "displayName";
    QString (*read)(const PXFile &) = [](const PXFile &f) { return f.displayName(); };
    switch (type) {
    case ThumbnailsSearchType::filename: break;
    case ThumbnailsSearchType::kind:
        key = "kindString";
        read = [](const PXFile &f) { return f.kindString(); };
        break;
    case ThumbnailsSearchType::label:
        key = "finderLabelTitle";
        read = [](const PXFile &f) { return f.finderLabelTitle(); };
        break;
    case ThumbnailsSearchType::camera:
        key = "cameraModelString";
        read = [](const PXFile &f) { return f.cameraModelString(); };
        break;
    }
    return {QStringLiteral("%K contains[cd] %@"), {prefixed(itemKeyPath, key), text}, [read, text](const PXFile &f) {
                return containsIgnoringCaseAndDiacritics(read(f), text);
            }};
}

FilePredicate andPredicate(const FilePredicate &first, const FilePredicate &second)
{
    return {QStringLiteral("(%1) && (%2)").arg(first.format, second.format), first.arguments + second.arguments,
            [a = first.test, b = second.test](const PXFile &f) { return (!a || a(f)) && (!b || b(f)); }};
}
