#include "core/rename/RenameTextHelpers.h"

#include <QHash>
#include <QLocale>

#include <unicode/normalizer2.h>
#include <unicode/regex.h>
#include <unicode/smpdtfmt.h>
#include <unicode/uchar.h>
#include <unicode/unistr.h>
#include <unicode/utf16.h>

#include <limits>
#include <memory>
#include <string>
#include <vector>

namespace {

// A user typing a pattern makes a new one at every key stroke: past this many, a thread's cache
// starts afresh rather than growing without end.
constexpr qsizetype maximumCachedPatterns = 64;

icu::UnicodeString toUnicode(const QString &text)
{
    return icu::UnicodeString(reinterpret_cast<const UChar *>(text.utf16()), int32_t(text.size()));
}

QString fromUnicode(const icu::UnicodeString &text)
{
    return QString(reinterpret_cast<const QChar *>(text.getBuffer()), text.length());
}

bool isAscii(const QString &text)
{
    for (QChar c : text) {
        if (c.unicode() >= 0x80)
            return false;
    }
    return true;
}

// A text with case, diacritics and width folded away, and for every folded unit the range of the
// source text it came from.
struct FoldedText
{
    std::u16string text;
    std::vector<qsizetype> sourceStart;
};

FoldedText folded(const QString &source)
{
    UErrorCode status = U_ZERO_ERROR;
    const icu::Normalizer2 *nfkd = icu::Normalizer2::getNFKDInstance(status);
    FoldedText result;
    result.text.reserve(size_t(source.size()));
    result.sourceStart.reserve(size_t(source.size()));
    const auto *units = reinterpret_cast<const char16_t *>(source.utf16());
    const int32_t length = int32_t(source.size());
    icu::UnicodeString decomposition;
    for (int32_t i = 0; i < length;) {
        const int32_t start = i;
        UChar32 c;
        U16_NEXT(units, i, length, c);
        // Compatibility decomposition turns full-width and half-width forms into their plain
        // forms and splits letters from their accents.
        if (U_FAILURE(status) || !nfkd->getDecomposition(c, decomposition))
            decomposition.setTo(c);
        for (int32_t d = 0; d < decomposition.length();) {
            const UChar32 part = decomposition.char32At(d);
            d += U16_LENGTH(part);
            if (u_charType(part) == U_NON_SPACING_MARK)
                continue;
            const UChar32 foldedPart = u_foldCase(part, U_FOLD_CASE_DEFAULT);
            char16_t buffer[2];
            int32_t written = 0;
            U16_APPEND_UNSAFE(buffer, written, foldedPart);
            for (int32_t k = 0; k < written; ++k) {
                result.text.push_back(buffer[k]);
                result.sourceStart.push_back(start);
            }
        }
    }
    return result;
}

template<typename T>
struct PatternCache
{
    QHash<QString, std::shared_ptr<T>> entries;

    std::shared_ptr<T> *find(const QString &pattern)
    {
        auto found = entries.find(pattern);
        return found == entries.end() ? nullptr : &*found;
    }
    std::shared_ptr<T> &insert(const QString &pattern, std::shared_ptr<T> value)
    {
        if (entries.size() >= maximumCachedPatterns)
            entries.clear();
        return *entries.insert(pattern, std::move(value));
    }
};

struct CompiledRegex
{
    std::unique_ptr<icu::RegexPattern> pattern;
    // Reset for each text: making a matcher costs more than most matches.
    std::unique_ptr<icu::RegexMatcher> matcher;
    QString error;
};

icu::Locale userLocale()
{
    const QLocale system = QLocale::system();
    if (system.language() == QLocale::C)
        return icu::Locale("en_US");
    return icu::Locale(system.name().toLatin1().constData());
}

} // namespace

qint64 leadingIntegerValue(QStringView text)
{
    qsizetype i = 0;
    while (i < text.size() && text[i].isSpace())
        ++i;
    bool negative = false;
    if (i < text.size() && (text[i] == QLatin1Char('-') || text[i] == QLatin1Char('+'))) {
        negative = text[i] == QLatin1Char('-');
        ++i;
    }
    constexpr qint64 limit = std::numeric_limits<qint64>::max();
    qint64 value = 0;
    for (; i < text.size() && text[i] >= QLatin1Char('0') && text[i] <= QLatin1Char('9'); ++i) {
        const int digit = text[i].unicode() - '0';
        if (value > (limit - digit) / 10)
            return negative ? std::numeric_limits<qint64>::min() : limit;
        value = value * 10 + digit;
    }
    return negative ? -value : value;
}

QString replacingOccurrencesIgnoringCaseDiacriticsAndWidth(const QString &text, const QString &search,
                                                           const QString &replacement)
{
    if (search.isEmpty() || text.isEmpty())
        return text;
    // Plain ASCII has no diacritics and no width forms: case alone remains.
    if (isAscii(text) && isAscii(search)) {
        QString result = text;
        return result.replace(search, replacement, Qt::CaseInsensitive);
    }
    const FoldedText haystack = folded(text);
    const std::u16string needle = folded(search).text;
    if (needle.empty())
        return text;
    const std::u16string_view view(haystack.text);
    const size_t foldedLength = haystack.text.size();
    QString result;
    qsizetype copiedUpTo = 0;
    for (size_t from = 0; (from = view.find(needle, from)) != std::u16string_view::npos;) {
        const size_t end = from + needle.size();
        // Only whole source characters match: the folded "ss" of a "ß" is not two "s".
        const bool startsCharacter = from == 0 || haystack.sourceStart[from - 1] != haystack.sourceStart[from];
        const bool endsCharacter = end == foldedLength || haystack.sourceStart[end] != haystack.sourceStart[end - 1];
        if (!startsCharacter || !endsCharacter) {
            ++from;
            continue;
        }
        const qsizetype sourceStart = haystack.sourceStart[from];
        // Combining marks after the match fold to nothing: they belong to the matched letter.
        const qsizetype sourceEnd = end == foldedLength ? text.size() : haystack.sourceStart[end];
        result += QStringView(text).mid(copiedUpTo, sourceStart - copiedUpTo);
        result += replacement;
        copiedUpTo = sourceEnd;
        from = end;
    }
    if (copiedUpTo == 0)
        return text;
    result += QStringView(text).mid(copiedUpTo);
    return result;
}

std::optional<QString> formattedDateWithPattern(const QDateTime &date, const QString &pattern)
{
    if (!date.isValid() || pattern.isEmpty())
        return std::nullopt;
    // ICU formatters are not safe to share between threads: each thread keeps its own.
    thread_local PatternCache<icu::SimpleDateFormat> cache;
    std::shared_ptr<icu::SimpleDateFormat> *found = cache.find(pattern);
    if (!found) {
        UErrorCode status = U_ZERO_ERROR;
        auto formatter = std::make_shared<icu::SimpleDateFormat>(toUnicode(pattern), userLocale(), status);
        found = &cache.insert(pattern, U_SUCCESS(status) ? formatter : nullptr);
    }
    if (!*found)
        return std::nullopt;
    icu::UnicodeString out;
    (*found)->format(UDate(date.toMSecsSinceEpoch()), out);
    return fromUnicode(out);
}

std::optional<QString> regexReplacingAll(const QString &text, const QString &pattern,
                                         const QString &replacementTemplate, QString *errorDescription)
{
    thread_local PatternCache<CompiledRegex> cache;
    std::shared_ptr<CompiledRegex> *found = cache.find(pattern);
    if (!found) {
        auto compiled = std::make_shared<CompiledRegex>();
        UErrorCode status = U_ZERO_ERROR;
        UParseError parseError{};
        compiled->pattern.reset(
            icu::RegexPattern::compile(toUnicode(pattern), UREGEX_CASE_INSENSITIVE, parseError, status));
        if (U_SUCCESS(status))
            compiled->matcher.reset(compiled->pattern->matcher(status));
        if (U_FAILURE(status)) {
            compiled->pattern.reset();
            compiled->matcher.reset();
            compiled->error =
                QStringLiteral("%1 at offset %2").arg(QString::fromLatin1(u_errorName(status))).arg(parseError.offset);
        }
        found = &cache.insert(pattern, std::move(compiled));
    }
    const CompiledRegex &regex = **found;
    if (!regex.matcher) {
        if (errorDescription)
            *errorDescription = regex.error;
        return std::nullopt;
    }
    UErrorCode status = U_ZERO_ERROR;
    // Read-only aliases: neither text is copied on its way in.
    const icu::UnicodeString input(false, reinterpret_cast<const UChar *>(text.utf16()), int32_t(text.size()));
    const icu::UnicodeString replacement(false, reinterpret_cast<const UChar *>(replacementTemplate.utf16()),
                                         int32_t(replacementTemplate.size()));
    regex.matcher->reset(input);
    const icu::UnicodeString output = regex.matcher->replaceAll(replacement, status);
    // The matcher refers to its input: leave it on a text that outlives this call.
    static const icu::UnicodeString nothing;
    regex.matcher->reset(nothing);
    if (U_FAILURE(status)) {
        if (errorDescription)
            *errorDescription = QString::fromLatin1(u_errorName(status));
        return std::nullopt;
    }
    return fromUnicode(output);
}
