#pragma once

#include <QString>

// Names the operations give: "photo copy.jpg", "photo 2.jpg". A folder's name is changed at its
// end ("2024.05 Trip 2"), a file's before its extension.
namespace ZQItemNames {

inline QString withSuffix(const QString &name, const QString &suffix, bool isFolder)
{
    const qsizetype dot = isFolder ? -1 : name.lastIndexOf(QLatin1Char('.'));
    if (dot <= 0)
        return name + suffix;
    return name.left(dot) + suffix + name.mid(dot);
}

// The name with " <number>" added; `number` 1 leaves it as it is.
inline QString numbered(const QString &name, int number, bool isFolder)
{
    return number <= 1 ? name : withSuffix(name, QStringLiteral(" %1").arg(number), isFolder);
}

inline bool isValid(const QString &name)
{
    return !name.isEmpty() && name != QLatin1String(".") && name != QLatin1String("..")
        && !name.contains(QLatin1Char('/')) && !name.contains(QChar(u'\0'));
}

} // namespace ZQItemNames
