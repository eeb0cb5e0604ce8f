#pragma once

#include <QMetaType>
#include <QString>
#include <QVariant>

#include <optional>

// A character range as the range field edits it: 0-based location and length.
struct PXRange
{
    quint64 location = 0;
    quint64 length = 0;

    bool operator==(const PXRange &) const = default;
};
Q_DECLARE_METATYPE(PXRange)

// The two halves of the range field's text formatter. The field shows 1-based, inclusive ranges
// ("1-3" is the first three characters; "1:3" reads the same) and refuses anything else while the
// user types. The engine reads the stored text again on its own terms, so what this formatter
// refuses never reaches a rename.
class PXRangeFormatter
{
public:
    // The range for `string`; nothing, with the message for the user, when it is no range.
    std::optional<PXRange> getObjectValue(const QString &string, QString *errorDescription = nullptr) const;
    // "a-b" for a range that covers at least one character, a text as it is, else nothing.
    QString stringForObjectValue(const QVariant &value) const;
    QString stringForObjectValue(const PXRange &range) const;

    static QString invalidRangeMessage();
};
