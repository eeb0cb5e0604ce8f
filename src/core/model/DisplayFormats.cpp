#include "core/model/DisplayFormats.h"

#include "core/app/Translate.h"

#include <QLocale>

#include <unicode/datefmt.h>
#include <unicode/smpdtfmt.h>
#include <unicode/timezone.h>

#include <map>
#include <memory>

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
