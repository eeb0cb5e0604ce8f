#include "core/model/DisplayFormats.h"

#include "core/app/Translate.h"

#include <QLocale>

#include <unicode/datefmt.h>
#include <unicode/smpdtfmt.h>
#include <unicode/timezone.h>

#include <cmath>
#include <map>
#include <memory>
#include <optional>

namespace {

constexpr Translator tr("DisplayFormats");

icu::Locale formattingLocale()
{
    const QLocale system = QLocale::system();
    if (system.language() == QLocale::C)
        return icu::Locale("en_US");
    return icu::Locale(system.name().toLatin1().constData());
}

icu::DateFormat::EStyle icuStyle(DateStyle style)
{
    switch (style) {
    case DateStyle::none: return icu::DateFormat::kNone;
    case DateStyle::shortStyle: return icu::DateFormat::kShort;
    case DateStyle::medium: return icu::DateFormat::kMedium;
    case DateStyle::longStyle: return icu::DateFormat::kLong;
    case DateStyle::full: return icu::DateFormat::kFull;
    }
    return icu::DateFormat::kNone;
}

QString fromUnicode(const icu::UnicodeString &text)
{
    return QString(reinterpret_cast<const QChar *>(text.getBuffer()), text.length());
}

icu::UnicodeString toUnicode(const QString &text)
{
    return icu::UnicodeString(reinterpret_cast<const UChar *>(text.utf16()), int32_t(text.size()));
}

// EXIF and TIFF dates ("yyyy:MM:dd HH:mm:ss", and with an offset " +02:00" or " Z" after it),
// read without ICU's parser: building its number parser for the first date costs a millisecond
// or two, a good part of what `pixcove-cli info` takes. A wall time is placed with ICU's own
// time zone, as its parser does. Only well-formed dates from 1900 on (before that ICU's calendar
// and zone history differ from plain Gregorian dates) are read here, wall times only on days
// without a change of the clock offset; anything else goes to ICU's lenient parser, so the
// answers do not change.
constexpr qint64 julianDayOfEpoch = 2440588;
constexpr double msPerDay = 86400000.0;

// Milliseconds since the epoch of the wall time at the start of `text`, as if it were UTC.
std::optional<double> exifWallTime(QStringView text)
{
    if (text.size() < 19)
        return std::nullopt;
    int fields[6];
    for (int field = 0; field < 6; ++field) {
        const int start = field == 0 ? 0 : 2 + 3 * field; // "yyyy:MM:dd HH:mm:ss"
        const int length = field == 0 ? 4 : 2;
        if (field > 0 && text[start - 1] != (field == 3 ? u' ' : u':'))
            return std::nullopt;
        int value = 0;
        for (int i = start; i < start + length; ++i) {
            const char16_t c = text[i].unicode();
            if (c < u'0' || c > u'9')
                return std::nullopt;
            value = value * 10 + (c - u'0');
        }
        fields[field] = value;
    }
    const QDate date(fields[0], fields[1], fields[2]);
    const QTime time(fields[3], fields[4], fields[5]);
    if (fields[0] < 1900 || !date.isValid() || !time.isValid())
        return std::nullopt;
    return double(date.toJulianDay() - julianDayOfEpoch) * msPerDay + double(time.msecsSinceStartOfDay());
}

std::optional<QDateTime> parsedExifDate(QStringView text)
{
    const std::optional<double> wallTime = text.size() == 19 ? exifWallTime(text) : std::nullopt;
    if (!wallTime)
        return std::nullopt;
    const std::unique_ptr<icu::TimeZone> zone(icu::TimeZone::createDefault());
    if (!zone)
        return std::nullopt;
    const auto offsetAt = [&zone](double localTime) -> std::optional<int32_t> {
        int32_t raw = 0;
        int32_t dst = 0;
        UErrorCode status = U_ZERO_ERROR;
        zone->getOffset(localTime, true, raw, dst, status);
        return U_SUCCESS(status) ? std::optional<int32_t>(raw + dst) : std::nullopt;
    };
    const double dayStart = std::floor(*wallTime / msPerDay) * msPerDay;
    const std::optional<int32_t> offset = offsetAt(dayStart);
    if (!offset || offsetAt(dayStart + msPerDay) != offset)
        return std::nullopt;
    return QDateTime::fromMSecsSinceEpoch(qint64(*wallTime) - *offset);
}

// The same with the offset the text must end with; an invalid date when it has none (ICU's
// parser fails there as well).
std::optional<QDateTime> parsedExifDateWithOffset(QStringView text)
{
    const std::optional<double> wallTime = exifWallTime(text);
    if (!wallTime)
        return std::nullopt;
    if (text.size() == 19)
        return QDateTime();
    if (text.size() == 21 && text.endsWith(QLatin1String(" Z")))
        return QDateTime::fromMSecsSinceEpoch(qint64(*wallTime));
    const QStringView offset = text.mid(19);
    if (offset.size() != 7 || offset[0] != u' ' || (offset[1] != u'+' && offset[1] != u'-') || offset[4] != u':')
        return std::nullopt;
    int hours = 0;
    int minutes = 0;
    for (const int i : {2, 3, 5, 6}) {
        if (offset[i] < u'0' || offset[i] > u'9')
            return std::nullopt;
        int &part = i < 4 ? hours : minutes;
        part = part * 10 + (offset[i].unicode() - u'0');
    }
    // Offsets beyond those of any zone go to ICU, which has its own rules for them.
    if (hours > 14 || minutes > 59)
        return std::nullopt;
    const qint64 offsetMs = (qint64(hours) * 60 + minutes) * 60000 * (offset[1] == u'-' ? -1 : 1);
    return QDateTime::fromMSecsSinceEpoch(qint64(*wallTime) - offsetMs);
}

} // namespace

QString formattedDate(const QDateTime &date, DateStyle dateStyle, DateStyle timeStyle)
{
    if (!date.isValid())
        return {};
    // ICU formatters are not safe to share between threads: each thread keeps its own.
    thread_local std::map<std::pair<int, int>, std::unique_ptr<icu::DateFormat>> formatters;
    auto &formatter = formatters[{int(dateStyle), int(timeStyle)}];
    if (!formatter)
        formatter.reset(
            icu::DateFormat::createDateTimeInstance(icuStyle(dateStyle), icuStyle(timeStyle), formattingLocale()));
    if (!formatter)
        return date.toString(Qt::ISODate);
    icu::UnicodeString out;
    formatter->format(UDate(date.toMSecsSinceEpoch()), out);
    return fromUnicode(out);
}

QDateTime parsedDate(const QString &text, const QString &pattern)
{
    if (pattern == QLatin1String("yyyy:MM:dd HH:mm:ss")) {
        if (const std::optional<QDateTime> date = parsedExifDate(QStringView(text).trimmed()))
            return *date;
    } else if (pattern == QLatin1String("yyyy:MM:dd HH:mm:ss ZZZZZ")) {
        if (const std::optional<QDateTime> date = parsedExifDateWithOffset(QStringView(text).trimmed()))
            return *date;
    }
    thread_local std::map<QString, std::unique_ptr<icu::SimpleDateFormat>> parsers;
    auto &parser = parsers[pattern];
    if (!parser) {
        UErrorCode status = U_ZERO_ERROR;
        parser = std::make_unique<icu::SimpleDateFormat>(toUnicode(pattern), icu::Locale("en_US_POSIX"), status);
        if (U_FAILURE(status)) {
            parser.reset();
            return {};
        }
        parser->setLenient(true);
    }
    UErrorCode status = U_ZERO_ERROR;
    const UDate when = parser->parse(toUnicode(text.trimmed()), status);
    if (U_FAILURE(status))
        return {};
    return QDateTime::fromMSecsSinceEpoch(qint64(when));
}

QString byteCountString(qint64 bytes)
{
    const QLocale locale;
    if (bytes <= 0)
        return tr("Zero KB");
    if (bytes < 1000)
        return bytes == 1 ? tr("1 byte") : tr("%1 bytes").arg(locale.toString(bytes));
    struct Unit
    {
        double size;
        const char *name;
        int decimals;
    };
    static constexpr Unit units[] = {{1e3, "KB", 0}, {1e6, "MB", 1}, {1e9, "GB", 2}, {1e12, "TB", 2}};
    const Unit *unit = &units[0];
    for (const Unit &candidate : units) {
        if (double(bytes) >= candidate.size)
            unit = &candidate;
    }
    return QStringLiteral("%1 %2").arg(locale.toString(double(bytes) / unit->size, 'f', unit->decimals),
                                       QString::fromLatin1(unit->name));
}
