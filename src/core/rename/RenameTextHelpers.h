#pragma once

#include <QDateTime>
#include <QString>
#include <QStringView>

#include <optional>

// Text operations of the rename engine that need ICU. Compiled regular expressions and date
// formatters are kept per thread and pattern, so that renaming thousands of files compiles each
// pattern once; a file name never waits for another thread.

// The whole number a text starts with, as the rule fields read it: leading white space, an
// optional sign, then digits up to the first other character. 0 without digits; saturates.
qint64 leadingIntegerValue(QStringView text);

// Every occurrence of `search` in `text` replaced, matching case-, diacritic- and
// width-insensitively: "a" finds "a", "A", "á" (composed or not) and the full-width "Ａ". A
// match covers whole characters with their combining marks.
QString replacingOccurrencesIgnoringCaseDiacriticsAndWidth(const QString &text, const QString &search,
                                                           const QString &replacement);

// `date` formatted with a Unicode date pattern ("yyyy-MM-dd HH.mm") in the user's locale and
// time zone; nothing for an invalid date or a pattern ICU refuses.
std::optional<QString> formattedDateWithPattern(const QDateTime &date, const QString &pattern);

// Every match of `pattern` (compiled case-insensitively) replaced by `replacementTemplate`, where
// $1, $2 ... stand for capture groups. Nothing, with ICU's reason in `errorDescription`, when the
// pattern does not compile or the template refers to a group that does not exist.
std::optional<QString> regexReplacingAll(const QString &text, const QString &pattern,
                                         const QString &replacementTemplate, QString *errorDescription);
