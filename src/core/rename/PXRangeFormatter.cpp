#include "core/rename/PXRangeFormatter.h"

#include "core/app/Translate.h"
#include "core/rename/PXBatchItem.h"
#include "core/rename/RenameTextHelpers.h"

#include <QStringList>

namespace {
constexpr Translator tr("PXRangeFormatter");
}

QString PXRangeFormatter::invalidRangeMessage()
{
    return tr("Ranges must be a number representing the beginning of the range, followed by a "
              "dash, followed by a number of equal or greater value representing the end of "
              "the range.");
}

std::optional<PXRange> PXRangeFormatter::getObjectValue(const QString &string, QString *errorDescription) const
{
    QStringList parts = string.split(QLatin1Char('-'));
    if (parts.size() != 2)
        parts = string.split(QLatin1Char(':'));
    if (parts.size() == 2) {
        const qint64 first = leadingIntegerValue(parts[0]);
        const qint64 last = leadingIntegerValue(parts[1]);
        if (first >= 1 && last >= 1 && last >= first)
            return PXRange{quint64(first - 1), quint64(last - first + 1)};
    }
    if (errorDescription)
        *errorDescription = invalidRangeMessage();
    return std::nullopt;
}

QString PXRangeFormatter::stringForObjectValue(const PXRange &range) const
{
    const quint64 end = range.location + range.length;
    if (range.location < PXBatchItem::notFound && end >= 1 && end >= range.location + 1)
        return QStringLiteral("%1-%2").arg(range.location + 1).arg(end);
    return QString();
}

QString PXRangeFormatter::stringForObjectValue(const QVariant &value) const
{
    if (value.canConvert<PXRange>() && value.metaType() == QMetaType::fromType<PXRange>())
        return stringForObjectValue(value.value<PXRange>());
    if (value.metaType() == QMetaType::fromType<QString>())
        return value.toString();
    return QString();
}
