#include "core/inspector/InspectorRows.h"

#include "core/inspector/InspectorFormatter.h"
#include "core/model/PXFile.h"

#include <QSet>

#include <algorithm>

namespace {

// The records the rows describe: the loaded ones, then an empty one for every file without one.
QList<ImagePropertiesItemPtr> recordsForSelection(const QList<ImagePropertiesItemPtr> &items,
                                                  const QList<PXFilePtr> &files)
{
    QList<ImagePropertiesItemPtr> records;
    QSet<const PXFile *> covered;
    for (const ImagePropertiesItemPtr &item : items) {
        if (!item)
            continue;
        records.append(item);
        covered.insert(item->file().get());
    }
    for (const PXFilePtr &file : files) {
        if (file && !covered.contains(file.get())) {
            covered.insert(file.get());
            records.append(std::make_shared<const ImagePropertiesItem>(file));
        }
    }
    return records;
}

} // namespace

QList<InspectorRow> inspectorRows(InspectorList list, const QList<ImagePropertiesItemPtr> &items,
                                  const QList<PXFilePtr> &files)
{
    const QList<ImagePropertiesItemPtr> records = recordsForSelection(items, files);
    QList<InspectorRow> rows;
    QString section;
    for (const InspectorPropertyConfiguration &configuration : InspectorCatalogue::list(list)) {
        InspectorRow row;
        row.identifier = identifierName(configuration.identifier);
        row.label = configuration.label;
        if (configuration.isHeader()) {
            section = configuration.label;
            row.isHeader = true;
        } else {
            row.value = InspectorFormatter::formattedValue(configuration, records);
            row.isMap = configuration.rowType == InspectorRowType::map;
        }
        row.section = section;
        rows.append(row);
    }
    return rows;
}

InspectorList inspectorListForTab(InspectorTab tab, const QList<PXFilePtr> &files)
{
    const bool anyImage =
        std::any_of(files.begin(), files.end(), [](const PXFilePtr &file) { return file && file->isImage(); });
    if (!anyImage)
        return InspectorList::nonImage;
    switch (tab) {
    case InspectorTab::general: return InspectorList::general;
    case InspectorTab::exif: return InspectorList::exif;
    case InspectorTab::iptc: return InspectorList::iptc;
    case InspectorTab::gps: return InspectorList::gps;
    case InspectorTab::tiff: return InspectorList::tiff;
    }
    return InspectorList::general;
}

QList<InspectorRow> inspectorRows(InspectorTab tab, const QList<ImagePropertiesItemPtr> &items,
                                  const QList<PXFilePtr> &files)
{
    QList<PXFilePtr> selection = files;
    for (const ImagePropertiesItemPtr &item : items) {
        if (item && !selection.contains(item->file()))
            selection.append(item->file());
    }
    return inspectorRows(inspectorListForTab(tab, selection), items, files);
}
