#pragma once

#include "core/model/FileSorting.h"

#include <QList>
#include <QString>
#include <QStringList>

#include <optional>

// The batch renamer's file filter: which listed files the rules apply to. The filter editor
// shows it as rows of [property] [comparison] [value] under "all" or "any"; settings store it
// as predicate text, which is read back here:
//
//     (extension ==[c] "jpg") && (fileSize > 1000000)
//     name BEGINSWITH[cd] "IMG" || EXIFDate < "2020-01-01"
//
// Keys: name, extension, kind, cameraModel (texts), fileSize (bytes), modificationDate,
// creationDate, EXIFDate (dates as "yyyy-MM-dd" or ISO date and time), isImage, isVideo (YES or
// NO). Texts compare with ==, !=, CONTAINS, BEGINSWITH, ENDSWITH, each with [c] (ignoring case),
// [d] (ignoring diacritics) or [cd]; numbers and dates with ==, !=, <, <=, >, >=. The empty text
// is no filter. A text that cannot be read gives an error, never a filter that lets every file
// through: a preset's filter that is lost would rename files the preset was meant to leave alone.
class PXRenameFilter
{
public:
    enum class Key {
        name,
        extension,
        kind,
        cameraModel,
        fileSize,
        modificationDate,
        creationDate,
        EXIFDate,
        isImage,
        isVideo
    };
    enum class Comparison {
        equal,
        notEqual,
        contains,
        beginsWith,
        endsWith,
        less,
        lessOrEqual,
        greater,
        greaterOrEqual
    };
    enum class ValueType { text, number, date, boolean };

    struct Row
    {
        Key key = Key::name;
        Comparison comparison = Comparison::contains;
        QString value; // as typed: a text, a number, a date, "YES" or "NO"
        bool ignoreCase = true; // texts only
        bool ignoreDiacritics = true; // texts only

        bool operator==(const Row &) const = default;
    };

    PXRenameFilter() = default;

    bool isEmpty() const { return m_rows.isEmpty(); }
    // All rows must hold, or any one of them.
    bool matchesAll() const { return m_matchesAll; }
    void setMatchesAll(bool all) { m_matchesAll = all; }
    const QList<Row> &rows() const { return m_rows; }
    void setRows(const QList<Row> &rows) { m_rows = rows; }

    // The predicate text as settings store it; empty for no rows.
    QString text() const;
    // Reads a stored text; nothing, with the reason in `error`, for text it cannot read.
    static std::optional<PXRenameFilter> fromText(const QString &text, QString *error = nullptr);
    // The filter as a predicate on files; nothing for an empty filter. A row whose value does
    // not read as its key's type (a date that is no date) matches no file.
    std::optional<FilePredicate> predicate() const;
    bool matches(const PXFile &file) const;

    // For the filter editor's menus.
    static QList<Key> allKeys();
    static QString keyName(Key key); // "extension": the name in predicate text
    static QString keyTitle(Key key); // "Extension": the localised title
    static ValueType valueType(Key key);
    static QList<Comparison> comparisonsFor(ValueType type);
    static QString comparisonTitle(Comparison comparison, ValueType type); // "contains", "is before"

    bool operator==(const PXRenameFilter &) const = default;

private:
    bool m_matchesAll = true;
    QList<Row> m_rows;
};
