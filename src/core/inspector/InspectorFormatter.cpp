#include "core/inspector/InspectorFormatter.h"

#include "core/app/Translate.h"
#include "core/model/DisplayFormats.h"
#include "core/model/TextHelpers.h"

#include <cmath>

namespace {

using F = InspectorFormat;

constexpr Translator tr("InspectorFormatter");

struct Code
{
    qint64 value;
    const char *text;
};

constexpr Code orientationCodes[] = {
    {0, "Unknown"},
    {1, "Natural"},
    {2, "Flip Horizontal"},
    {3, "Rotate 180°"},
    // The degree sign after "Vertical" is part of the text users know.
    {4, "Flip Vertical°"},
    {5, "Flip Horizontal, Rotate 270°"},
    {6, "Rotate 90°"},
    {7, "Flip Horizontal, Rotate 90°"},
    {8, "Rotate 270°"},
};

constexpr Code exposureProgramCodes[] = {
    {0, "Unknown"},
    {1, "Manual"},
    {2, "Program AE"},
    {3, "Aperture-priority AE"},
    {4, "Shutter-priority AE"},
    {5, "Creative (Slow speed)"},
    {6, "Action (High speed)"},
    {7, "Portrait"},
    {8, "Landscape"},
};

constexpr Code meteringModeCodes[] = {
    {0, "Unknown"}, {1, "Average"},    {2, "Center-weighted average"},
    {3, "Spot"},    {4, "Multi-spot"}, {5, "Multi-segment"},
    {6, "Partial"}, {255, "Other"},
};

constexpr Code lightSourceCodes[] = {
    {0, "Unknown"},
    {1, "Daylight"},
    {2, "Fluorescent"},
    {3, "Tungsten"},
    {4, "Flash"},
    {9, "Fine Weather"},
    {10, "Cloudy"},
    {11, "Shade"},
    {12, "Daylight Fluorescent"},
    {13, "Day White Fluorescent"},
    {14, "Cool White Fluorescent"},
    {15, "White Fluorescent"},
    {17, "Standard Light A"},
    {18, "Standard Light B"},
    {19, "Standard Light C"},
    {20, "D55"},
    {21, "D65"},
    {22, "D75"},
    {23, "D50"},
    {24, "ISO Studio Tungsten"},
    {255, "Other"},
};

// The EXIF flash bit field, by the combinations cameras write.
constexpr Code flashCodes[] = {
    {0, "No Flash"},
    {1, "Fired"},
    {5, "Fired, Return not detected"},
    {7, "Fired, Return detected"},
    {8, "On, Did not fire"},
    {9, "On, Fired"},
    {13, "On, Return not detected"},
    {15, "On, Return detected"},
    {16, "Off, Did not fire"},
    {20, "Off, Did not fire, Return not detected"},
    {24, "Auto, Did not fire"},
    {25, "Auto, Fired"},
    {29, "Auto, Fired, Return not detected"},
    {31, "Auto, Fired, Return detected"},
    {32, "No flash function"},
    {48, "Off, No flash function"},
    {65, "Fired, Red-eye reduction"},
    {69, "Fired, Red-eye reduction, Return not detected"},
    {71, "Fired, Red-eye reduction, Return detected"},
    {73, "On, Red-eye reduction"},
    {77, "On, Red-eye reduction, Return not detected"},
    {79, "On, Red-eye reduction, Return detected"},
    {80, "Off, Red-eye reduction"},
    {88, "Auto, Did not fire, Red-eye reduction"},
    {89, "Auto, Fired, Red-eye reduction"},
    {93, "Auto, Fired, Red-eye reduction, Return not detected"},
    {95, "Auto, Fired, Red-eye reduction, Return detected"},
};

constexpr Code fileSourceCodes[] = {
    {0, "Unknown"},
    {1, "Film Scanner"},
    {2, "Reflection Print Scanner"},
    {3, "Digital Camera"},
};

constexpr Code exposureModeCodes[] = {{0, "Auto"}, {1, "Manual"}, {2, "Auto Bracket"}};

constexpr Code whiteBalanceCodes[] = {{0, "Auto"}, {1, "Manual"}};

template<size_t N>
QString lookUp(const Code (&table)[N], qint64 value)
{
    for (const Code &code : table) {
        if (code.value == value)
            return tr(code.text);
    }
    return {};
}

// Lenient parse with `pattern`, printed in the user's locale; the text itself when it does not parse.
QString reprintedDate(const QString &text, const char *pattern, DateStyle dateStyle, DateStyle timeStyle)
{
    const QDateTime date = parsedDate(text, QLatin1String(pattern));
    if (!date.isValid())
        return {};
    return formattedDate(date, dateStyle, timeStyle);
}

// The value of one record through one accessor, as a comparable value; std::monostate when absent.
using Value = std::variant<std::monostate, QString, qint64, double, bool, QStringList, GPSInfo>;

template<typename Optional>
Value wrap(const Optional &optional)
{
    if (!optional)
        return std::monostate{};
    return *optional;
}

Value valueOf(const InspectorProperty &property, const ImagePropertiesItem &item)
{
    return std::visit(
        [&](const auto &accessor) -> Value {
            using Accessor = std::decay_t<decltype(accessor)>;
            if constexpr (std::is_same_v<Accessor, InspectorProperty::Header>)
                return std::monostate{};
            else {
                Value value = wrap(accessor(item));
                // Positions compare by where they are, not by whose they are.
                if (auto *gps = std::get_if<GPSInfo>(&value))
                    gps->file.reset();
                return value;
            }
        },
        property.accessor);
}

QString formatValue(const Value &value, InspectorFormat format)
{
    return std::visit(
        [&](const auto &v) -> QString {
            using V = std::decay_t<decltype(v)>;
            if constexpr (std::is_same_v<V, std::monostate>)
                return {};
            else if constexpr (std::is_same_v<V, QString>)
                return InspectorFormatter::formatText(v, format);
            else if constexpr (std::is_same_v<V, qint64>)
                return InspectorFormatter::formatInteger(v, format);
            else if constexpr (std::is_same_v<V, double>)
                return InspectorFormatter::formatReal(v, format);
            else if constexpr (std::is_same_v<V, bool>)
                return InspectorFormatter::formatBoolean(v);
            else if constexpr (std::is_same_v<V, QStringList>)
                return InspectorFormatter::formatStringArray(v);
            else
                return InspectorFormatter::formatCoordinate(v);
        },
        value);
}

} // namespace

namespace InspectorFormatter {

QString mixedValuesText()
{
    return tr("Mixed Values");
}

QString codeText(InspectorFormat format, qint64 value)
{
    switch (format) {
    case F::orientation: return lookUp(orientationCodes, value);
    case F::meteringMode: return lookUp(meteringModeCodes, value);
    case F::exposureProgram: return lookUp(exposureProgramCodes, value);
    case F::exposureMode: return lookUp(exposureModeCodes, value);
    case F::lightSource: return lookUp(lightSourceCodes, value);
    case F::flashStatus: return lookUp(flashCodes, value);
    case F::whiteBalance: return lookUp(whiteBalanceCodes, value);
    case F::fileSource: return lookUp(fileSourceCodes, value);
    default: return {};
    }
}

QString formatText(const QString &text, InspectorFormat format)
{
    QString printed;
    switch (format) {
    case F::IPTCDate: printed = reprintedDate(text, "yyyyMMdd", DateStyle::longStyle, DateStyle::none); break;
    case F::IPTCTime: printed = reprintedDate(text, "HHmmssZ", DateStyle::none, DateStyle::longStyle); break;
    case F::TIFFDate:
    case F::EXIFDate:
        printed = reprintedDate(text, "yyyy:MM:dd HH:mm:ss", DateStyle::medium, DateStyle::longStyle);
        break;
    case F::EXIFDateWithOffset:
        printed = reprintedDate(text, "yyyy:MM:dd HH:mm:ss ZZZZZ", DateStyle::medium, DateStyle::longStyle);
        if (printed.isEmpty())
            printed = reprintedDate(text, "yyyy:MM:dd HH:mm:ss", DateStyle::medium, DateStyle::longStyle);
        break;
    default: return text;
    }
    return printed.isEmpty() ? text : printed;
}

QString formatInteger(qint64 value, InspectorFormat format)
{
    const QString code = codeText(format, value);
    return code.isNull() ? QString::number(value) : code;
}

QString formatReal(double value, InspectorFormat format)
{
    switch (format) {
    case F::oneDecimal: return QString::asprintf("%.1f", value);
    case F::twoDecimals: return QString::asprintf("%.2f", value);
    case F::noDecimals: return QString::asprintf("%.0f", std::round(value));
    case F::exposureTime: return exposureFractionString(value);
    default: return QString::asprintf("%.6f", value);
    }
}

QString formatBoolean(bool value)
{
    return value ? tr("Yes") : tr("No");
}

QString formatStringArray(const QStringList &values)
{
    return values.join(QStringLiteral(", "));
}

QString formatCoordinate(const GPSInfo &info)
{
    if (!info.coordinate || !info.latitude || !info.longitude)
        return {};
    return QString::asprintf("%.6f, %.6f", info.coordinate->first, info.coordinate->second);
}

QString formattedValue(const InspectorPropertyConfiguration &configuration, const QList<ImagePropertiesItemPtr> &items)
{
    if (items.isEmpty() || configuration.isHeader())
        return {};
    const Value first = valueOf(configuration.property, *items.first());
    for (qsizetype i = 1; i < items.size(); ++i) {
        if (!(valueOf(configuration.property, *items[i]) == first))
            return mixedValuesText();
    }
    return formatValue(first, configuration.format);
}

} // namespace InspectorFormatter
