#pragma once

#include <QDateTime>
#include <QString>

// Locale-aware display texts shared by the file record and the inspector.
enum class DateStyle { none, shortStyle, medium, longStyle, full };

// A date and time in the user's locale (ICU styles, so "medium" exists as on other desktops).
QString formattedDate(const QDateTime &date, DateStyle dateStyle, DateStyle timeStyle);
// Parses `text` with a Unicode date pattern ("yyyy:MM:dd HH:mm:ss"); invalid when it does not match.
QDateTime parsedDate(const QString &text, const QString &pattern);

// A file size as file managers show it: decimal units, "Zero KB", "512 bytes", "1.2 MB".
QString byteCountString(qint64 bytes);
