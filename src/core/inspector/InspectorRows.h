#pragma once

#include "core/imaging/ImagePropertiesItem.h"
#include "core/inspector/InspectorCatalogue.h"
#include "core/settings/SettingsValueSets.h"

#include <QList>
#include <QString>

// One line of the inspector: a section header (label = section = its title, value empty), a
// labelled value, or the map (value: the signed position as "latitude, longitude", or empty).
// `identifier` is the property's name ("none" for headers).
struct InspectorRow
{
    QString identifier;
    QString label;
    QString section;
    QString value;
    bool isHeader = false;
    bool isMap = false;
};

// The rows of `list` for a selection, exactly as `pixcove-cli info` prints them. `files` is the
// selection; `items` the records read for it. A file without a record (not an image, or its read
// failed) takes part with an empty record, so its file rows count and its other values are
// absent. Several files give one row each, with "Mixed Values" where their values differ.
QList<InspectorRow> inspectorRows(InspectorList list, const QList<ImagePropertiesItemPtr> &items,
                                  const QList<PXFilePtr> &files);

// The same for a tab of the inspector: the non-image list when no file of the selection is an
// image, else the tab's list.
QList<InspectorRow> inspectorRows(InspectorTab tab, const QList<ImagePropertiesItemPtr> &items,
                                  const QList<PXFilePtr> &files);
InspectorList inspectorListForTab(InspectorTab tab, const QList<PXFilePtr> &files);
