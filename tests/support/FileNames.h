#pragma once

#include "core/fs/ZQStandardFile.h"
#include "core/model/PXFile.h"

#include <QList>
#include <QSet>
#include <QStringList>

#include <string>

// The names of listed files, for comparisons in tests.
inline QSet<QString> namesOf(const QList<ZQFilePtr> &files)
{
    QSet<QString> names;
    for (const ZQFilePtr &file : files)
        names.insert(file->name());
    return names;
}

// The names of files in their order: what a view lists, top to bottom.
inline QStringList namesOf(const QList<PXFilePtr> &files)
{
    QStringList names;
    for (const PXFilePtr &file : files)
        names << file->name();
    return names;
}

// The names, sorted and joined, for readable failure messages.
inline std::string nameList(const QList<ZQFilePtr> &files)
{
    QStringList names = namesOf(files).values();
    names.sort();
    return names.join(QStringLiteral(", ")).toStdString();
}
