#pragma once

#include "core/inspector/InspectorPropertyConfiguration.h"

#include <QList>

// Turns record values into the inspector's texts: code tables, decimals, exposure fractions,
// dates in the user's locale, "Mixed Values" for a selection whose records differ.
namespace InspectorFormatter {

// The value of `configuration` for all of `items`: empty without records or without a common
// value, "Mixed Values" when the records disagree, else the common value formatted.
// A header gives an empty text; the map row gives its coordinate (formatCoordinate).
QString formattedValue(const InspectorPropertyConfiguration &configuration, const QList<ImagePropertiesItemPtr> &items);

QString formatText(const QString &text, InspectorFormat format);
QString formatInteger(qint64 value, InspectorFormat format);
QString formatReal(double value, InspectorFormat format);
QString formatBoolean(bool value);
QString formatStringArray(const QStringList &values);
// The map row's text: the signed coordinate as "latitude, longitude" with six decimals.
QString formatCoordinate(const GPSInfo &info);

// The text of `value` in a code table ("flashStatus" 16 is "Off, Did not fire"), or null when
// the format has no table or the table has no such value.
QString codeText(InspectorFormat format, qint64 value);

QString mixedValuesText();

} // namespace InspectorFormatter
