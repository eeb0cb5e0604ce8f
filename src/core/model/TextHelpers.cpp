#include "core/model/TextHelpers.h"

#include "core/fs/TypeIdentifiers.h"

#include <QLocale>

#include <unicode/coll.h>
#include <unicode/unistr.h>

#include <algorithm>
#include <cmath>
#include <memory>
#include <mutex>

namespace {

icu::UnicodeString toUnicode(const QString &text)
{
    return icu::UnicodeString(reinterpret_cast<const UChar *>(text.utf16()), int32_t(text.size()));
}

// Under LANG=C the default ICU locale (en_US_POSIX) ignores numeric collation, so C and POSIX
// use the root collation instead.
icu::Locale collationLocale()
{
    const QLocale system = QLocale::system();
    if (system.language() == QLocale::C)
        return icu::Locale::getRoot();
    return icu::Locale(system.name().toLatin1().constData());
}

const icu::Collator &prototypeCollator()
{
    static std::unique_ptr<icu::Collator> prototype;
    static std::once_flag once;
    std::call_once(once, [] {
        UErrorCode status = U_ZERO_ERROR;
        prototype.reset(icu::Collator::createInstance(collationLocale(), status));
        if (U_FAILURE(status) || !prototype) {
            status = U_ZERO_ERROR;
            prototype.reset(icu::Collator::createInstance(icu::Locale::getRoot(), status));
        }
        // Secondary strength: case and width are ignored, diacritics are not.
        prototype->setStrength(icu::Collator::SECONDARY);
        prototype->setAttribute(UCOL_NUMERIC_COLLATION, UCOL_ON, status);
    });
    return *prototype;
}

// A collator of this thread's own: sorting runs on several threads at once.
icu::Collator &threadCollator()
{
    thread_local std::unique_ptr<icu::Collator> collator(prototypeCollator().clone());
    return *collator;
}

const icu::Collator &searchCollator()
{
    thread_local std::unique_ptr<icu::Collator> collator = [] {
        std::unique_ptr<icu::Collator> c(prototypeCollator().clone());
        c->setStrength(icu::Collator::PRIMARY); // neither case nor diacritics
        return c;
    }();
    return *collator;
}

} // namespace

int finderStyleTieBreak(const QString &text, const QString &other)
{
    return text.compare(other, Qt::CaseSensitive);
}

int finderStyleCompare(const QString &text, const QString &other)
{
    if (other.isNull())
        return text.isNull() ? 0 : -1;
    UErrorCode status = U_ZERO_ERROR;
    const UCollationResult result = threadCollator().compare(toUnicode(text), toUnicode(other), status);
    if (result != UCOL_EQUAL)
        return result;
    return finderStyleTieBreak(text, other);
}

QByteArray finderStyleSortKey(const QString &text)
{
    const icu::UnicodeString source = toUnicode(text);
    QByteArray key(int(text.size()) * 2 + 16, Qt::Uninitialized);
    int32_t length = threadCollator().getSortKey(source, reinterpret_cast<uint8_t *>(key.data()), int32_t(key.size()));
    if (length > key.size()) {
        key.resize(length);
        length = threadCollator().getSortKey(source, reinterpret_cast<uint8_t *>(key.data()), int32_t(key.size()));
    }
    key.resize(length > 0 ? length - 1 : 0); // drop the terminating zero
    return key;
}

bool containsIgnoringCaseAndDiacritics(const QString &text, const QString &needle)
{
    if (needle.isEmpty())
        return true;
    if (needle.size() > text.size())
        return false;
    // Primary-strength comparison of every window of the needle's length: texts are short names.
    const icu::Collator &collator = searchCollator();
    const icu::UnicodeString haystack = toUnicode(text);
    const icu::UnicodeString pattern = toUnicode(needle);
    for (int32_t start = 0; start + pattern.length() <= haystack.length(); ++start) {
        UErrorCode status = U_ZERO_ERROR;
        if (collator.compare(haystack.tempSubString(start, pattern.length()), pattern, status) == UCOL_EQUAL)
            return true;
    }
    // A decomposed diacritic can make the matching window one unit longer or shorter.
    for (int32_t start = 0; start + pattern.length() < haystack.length(); ++start) {
        UErrorCode status = U_ZERO_ERROR;
        if (collator.compare(haystack.tempSubString(start, pattern.length() + 1), pattern, status) == UCOL_EQUAL)
            return true;
    }
    return false;
}

bool utiConformsToUTIs(const QString &type, const QStringList &types)
{
    for (const QString &candidate : types) {
        if (TypeIdentifiers::conformsTo(type, candidate))
            return true;
    }
    return false;
}

QString cleanedFilename(const QString &text)
{
    QString result = text;
    result.replace(QLatin1Char('/'), QLatin1Char('|'));
    result.replace(QLatin1Char(':'), QLatin1Char('.'));
    result.remove(QChar(u'\0'));
    return result;
}

QString exposureFractionString(double seconds)
{
    // Values no camera writes (a rational with a zero denominator read as a float, corrupt data)
    // print as numbers: the fraction's whole part and denominator must fit 64 bits.
    if (!std::isfinite(seconds) || std::fabs(seconds) >= 1e15)
        return QString::number(seconds);
    const double whole = std::floor(seconds);
    const double rest = seconds - whole;
    if (rest != 0) {
        // A rest of a few ulps would overflow a plain int; no camera states such a fraction anyway.
        const qint64 denominator = qint64(std::min(std::floor(1.0 / rest + 0.5), 1e15));
        if (whole == 0)
            return QStringLiteral("%1/%2").arg(1).arg(denominator);
        return QStringLiteral("%1 %2/%3").arg(qint64(whole)).arg(1).arg(denominator);
    }
    if (whole != 0)
        return QString::number(qint64(whole));
    return QStringLiteral("1/0");
}
