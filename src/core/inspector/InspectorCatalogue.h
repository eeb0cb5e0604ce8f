#pragma once

#include "core/inspector/InspectorPropertyConfiguration.h"

#include <QList>

// The six lists of rows the inspector shows, each a sequence of section headers and rows.
enum class InspectorList { nonImage, general, exif, iptc, gps, tiff };

namespace InspectorCatalogue {

// The configuration of a shown property; null for the never-shown identifiers (none,
// hasAlphaChannel, shutterSpeed, aperture, cameraUserComment).
const InspectorPropertyConfiguration *configuration(InspectorIdentifier identifier);
// Every configuration of a shown property, in identifier order.
const QList<InspectorPropertyConfiguration> &allConfigurations();
// A list's rows in order, headers included.
const QList<InspectorPropertyConfiguration> &list(InspectorList list);

// The list name as the command line spells it ("general", ..., "nonimage") and back.
QString listName(InspectorList list);
std::optional<InspectorList> listForName(const QString &name);

} // namespace InspectorCatalogue
