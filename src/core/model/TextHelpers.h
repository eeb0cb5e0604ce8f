#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

// The name order used everywhere: case-insensitive, numeric ("file2" before "file10"),
// width-insensitive, diacritic-sensitive, in the user's locale, and forced: two different texts
// never compare equal. A null `other` orders `text` first. Answers <0, 0 or >0.
int finderStyleCompare(const QString &text, const QString &other);

// Bytes whose plain byte order is finderStyleCompare's order, except that texts which differ only
// in what the order ignores get equal keys (break such ties with finderStyleTieBreak). Computing
// keys once and comparing bytes is what makes sorting 100 000 names fast.
QByteArray finderStyleSortKey(const QString &text);
int finderStyleTieBreak(const QString &text, const QString &other);

// Whether `text` contains `needle`, ignoring case and diacritics (a search field's "contains[cd]").
bool containsIgnoringCaseAndDiacritics(const QString &text, const QString &needle);

// Whether the type identifier `type` conforms to at least one of `types`, tried in order.
bool utiConformsToUTIs(const QString &type, const QStringList &types);

// A text made fit to be a file name: "/" becomes "|", ":" becomes "." and NUL characters go.
QString cleanedFilename(const QString &text);

// An exposure time in seconds as a photographer writes it: 0.004 → "1/250", 2.5 → "2 1/2",
// 2 → "2", and 0 → "1/0".
QString exposureFractionString(double seconds);
