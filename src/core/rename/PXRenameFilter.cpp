#include "core/rename/PXRenameFilter.h"

#include "core/app/Translate.h"
#include "core/model/PXFile.h"

#include <QDateTime>

namespace {

constexpr Translator tr("PXRenameFilter");

using Key = PXRenameFilter::Key;
using Comparison = PXRenameFilter::Comparison;
using ValueType = PXRenameFilter::ValueType;

struct KeyEntry
{
    Key key;
    const char *name;
    const char *title;
    ValueType type;
};

constexpr KeyEntry keys[] = {
    {Key::name, "name", QT_TRANSLATE_NOOP("PXRenameFilter", "Name"), ValueType::text},
    {Key::extension, "extension", QT_TRANSLATE_NOOP("PXRenameFilter", "Extension"), ValueType::text},
    {Key::kind, "kind", QT_TRANSLATE_NOOP("PXRenameFilter", "Kind"), ValueType::text},
    {Key::cameraModel, "cameraModel", QT_TRANSLATE_NOOP("PXRenameFilter", "Camera Model"), ValueType::text},
    {Key::fileSize, "fileSize", QT_TRANSLATE_NOOP("PXRenameFilter", "Size in Bytes"), ValueType::number},
    {Key::modificationDate, "modificationDate", QT_TRANSLATE_NOOP("PXRenameFilter", "Modification Date"),
     ValueType::date},
    {Key::creationDate, "creationDate", QT_TRANSLATE_NOOP("PXRenameFilter", "Creation Date"), ValueType::date},
    {Key::EXIFDate, "EXIFDate", QT_TRANSLATE_NOOP("PXRenameFilter", "Date Taken"), ValueType::date},
    {Key::isImage, "isImage", QT_TRANSLATE_NOOP("PXRenameFilter", "Is an Image"), ValueType::boolean},
    {Key::isVideo, "isVideo", QT_TRANSLATE_NOOP("PXRenameFilter", "Is a Video"), ValueType::boolean},
};

const KeyEntry &entryFor(Key key)
{
    for (const KeyEntry &entry : keys) {
        if (entry.key == key)
            return entry;
    }
    return keys[0];
}

struct OperatorEntry
{
    Comparison comparison;
    const char *text;
};

// Longest first, so that "<=" is not read as "<".
constexpr OperatorEntry operators[] = {
    {Comparison::equal, "=="},          {Comparison::notEqual, "!="},
    {Comparison::notEqual, "<>"},       {Comparison::lessOrEqual, "<="},
    {Comparison::greaterOrEqual, ">="}, {Comparison::less, "<"},
    {Comparison::greater, ">"},         {Comparison::equal, "="},
    {Comparison::contains, "CONTAINS"}, {Comparison::beginsWith, "BEGINSWITH"},
    {Comparison::endsWith, "ENDSWITH"},
};

QString operatorText(Comparison comparison)
{
    for (const OperatorEntry &entry : operators) {
        if (entry.comparison == comparison)
            return QString::fromLatin1(entry.text);
    }
    return QStringLiteral("==");
}

// A text with its case folded and its diacritics dropped, as the row asks.
QString folded(const QString &text, bool ignoreCase, bool ignoreDiacritics)
{
    QString result = text;
    if (ignoreDiacritics) {
        const QString decomposed = text.normalized(QString::NormalizationForm_KD);
        result.clear();
        result.reserve(decomposed.size());
        for (const QChar c : decomposed) {
            if (!c.isMark())
                result.append(c);
        }
    }
    return ignoreCase ? result.toCaseFolded() : result;
}

QString textValue(Key key, const PXFile &file)
{
    switch (key) {
    case Key::name: return file.name();
    case Key::extension: return file.fileNameExtension();
    case Key::kind: return file.kindString();
    case Key::cameraModel: return file.cameraModelString();
    default: return QString();
    }
}

QDateTime dateValue(Key key, const PXFile &file)
{
    switch (key) {
    case Key::modificationDate: return file.modificationDate();
    case Key::creationDate: return file.creationDate();
    case Key::EXIFDate: return file.EXIFDate();
    default: return QDateTime();
    }
}

template<typename T>
bool compared(const T &a, const T &b, Comparison comparison)
{
    switch (comparison) {
    case Comparison::equal: return a == b;
    case Comparison::notEqual: return a != b;
    case Comparison::less: return a < b;
    case Comparison::lessOrEqual: return a <= b;
    case Comparison::greater: return a > b;
    case Comparison::greaterOrEqual: return a >= b;
    default: return false;
    }
}

std::optional<bool> booleanValue(const QString &text)
{
    const QString upper = text.trimmed().toUpper();
    if (upper == QLatin1String("YES") || upper == QLatin1String("TRUE") || upper == QLatin1String("1"))
        return true;
    if (upper == QLatin1String("NO") || upper == QLatin1String("FALSE") || upper == QLatin1String("0"))
        return false;
    return std::nullopt;
}

bool rowMatches(const PXRenameFilter::Row &row, const PXFile &file)
{
    switch (PXRenameFilter::valueType(row.key)) {
    case ValueType::text: {
        const QString text = folded(textValue(row.key, file), row.ignoreCase, row.ignoreDiacritics);
        const QString value = folded(row.value, row.ignoreCase, row.ignoreDiacritics);
        switch (row.comparison) {
        case Comparison::equal: return text == value;
        case Comparison::notEqual: return text != value;
        case Comparison::contains: return text.contains(value);
        case Comparison::beginsWith: return text.startsWith(value);
        case Comparison::endsWith: return text.endsWith(value);
        default: return compared(text, value, row.comparison);
        }
    }
    case ValueType::number: {
        bool ok = false;
        const qint64 value = row.value.trimmed().toLongLong(&ok);
        return ok && compared(file.fileSize(), value, row.comparison);
    }
    case ValueType::date: {
        const QDateTime date = dateValue(row.key, file);
        if (!date.isValid())
            return false;
        // A day compares with the file's day; a time with the moment.
        const QDate day = QDate::fromString(row.value.trimmed(), Qt::ISODate);
        if (day.isValid())
            return compared(date.toLocalTime().date(), day, row.comparison);
        const QDateTime moment = QDateTime::fromString(row.value.trimmed(), Qt::ISODate);
        return moment.isValid() && compared(date, moment, row.comparison);
    }
    case ValueType::boolean: {
        const std::optional<bool> value = booleanValue(row.value);
        const bool actual = row.key == Key::isImage ? file.isImage() : file.isVideo();
        return value && compared(actual, *value, row.comparison);
    }
    }
    return false;
}

// MARK: reading predicate text

class Reader
{
public:
    explicit Reader(const QString &text)
        : m_text(text)
    { }

    std::optional<PXRenameFilter> read(QString *error)
    {
        PXRenameFilter filter;
        QList<PXRenameFilter::Row> rows;
        std::optional<bool> all;
        skipSpace();
        // The whole text in parentheses reads as the text inside.
        for (;;) {
            const auto row = readTerm();
            if (!row)
                return fail(error);
            rows.append(*row);
            skipSpace();
            if (atEnd())
                break;
            bool isAnd = false;
            if (take(QStringLiteral("&&")) || takeWord(QStringLiteral("AND")))
                isAnd = true;
            else if (!take(QStringLiteral("||")) && !takeWord(QStringLiteral("OR")))
                return fail(error, tr("expected && or || at character %1").arg(m_pos + 1));
            if (all && *all != isAnd)
                return fail(error, tr("mixes && and ||; use one of them"));
            all = isAnd;
        }
        filter.setRows(rows);
        filter.setMatchesAll(all.value_or(true));
        return filter;
    }

private:
    std::optional<PXRenameFilter::Row> readTerm()
    {
        skipSpace();
        if (take(QStringLiteral("("))) {
            auto row = readTerm();
            skipSpace();
            if (row && !take(QStringLiteral(")"))) {
                m_error = tr("missing ) at character %1").arg(m_pos + 1);
                return std::nullopt;
            }
            return row;
        }
        PXRenameFilter::Row row;
        QString name = readWord();
        if (name.startsWith(QLatin1String("representedObject.")))
            name = name.mid(18);
        bool known = false;
        for (const KeyEntry &entry : keys) {
            if (name == QLatin1String(entry.name)) {
                row.key = entry.key;
                known = true;
            }
        }
        if (!known) {
            m_error = name.isEmpty() ? tr("expected a property at character %1").arg(m_pos + 1)
                                     : tr("unknown property \"%1\"").arg(name);
            return std::nullopt;
        }
        skipSpace();
        bool found = false;
        for (const OperatorEntry &entry : operators) {
            const QString op = QString::fromLatin1(entry.text);
            if (op.front().isLetter() ? takeWord(op) : take(op)) {
                row.comparison = entry.comparison;
                found = true;
                break;
            }
        }
        if (!found) {
            m_error = tr("expected a comparison after \"%1\"").arg(name);
            return std::nullopt;
        }
        row.ignoreCase = false;
        row.ignoreDiacritics = false;
        if (take(QStringLiteral("["))) {
            while (!atEnd() && m_text[m_pos] != QLatin1Char(']')) {
                const QChar flag = m_text[m_pos++].toLower();
                if (flag == QLatin1Char('c'))
                    row.ignoreCase = true;
                else if (flag == QLatin1Char('d'))
                    row.ignoreDiacritics = true;
                else if (flag != QLatin1Char('n')) {
                    m_error = tr("unknown comparison option \"%1\"").arg(flag);
                    return std::nullopt;
                }
            }
            if (!take(QStringLiteral("]"))) {
                m_error = tr("missing ] at character %1").arg(m_pos + 1);
                return std::nullopt;
            }
        }
        const ValueType type = PXRenameFilter::valueType(row.key);
        const bool textComparison = row.comparison == Comparison::contains || row.comparison == Comparison::beginsWith
            || row.comparison == Comparison::endsWith;
        if (textComparison && type != ValueType::text) {
            m_error = tr("\"%1\" compares only texts").arg(operatorText(row.comparison));
            return std::nullopt;
        }
        skipSpace();
        const std::optional<QString> value = readValue();
        if (!value)
            return std::nullopt;
        row.value = *value;
        return row;
    }

    std::optional<QString> readValue()
    {
        if (take(QStringLiteral("\""))) {
            QString value;
            while (!atEnd()) {
                const QChar c = m_text[m_pos++];
                if (c == QLatin1Char('\\') && !atEnd()) {
                    value.append(m_text[m_pos++]);
                } else if (c == QLatin1Char('"')) {
                    return value;
                } else {
                    value.append(c);
                }
            }
            m_error = tr("a quoted value is not closed");
            return std::nullopt;
        }
        const qsizetype start = m_pos;
        while (!atEnd() && !m_text[m_pos].isSpace() && m_text[m_pos] != QLatin1Char(')'))
            ++m_pos;
        if (m_pos == start) {
            m_error = tr("expected a value at character %1").arg(m_pos + 1);
            return std::nullopt;
        }
        return m_text.mid(start, m_pos - start);
    }

    QString readWord()
    {
        const qsizetype start = m_pos;
        while (!atEnd()
               && (m_text[m_pos].isLetterOrNumber() || m_text[m_pos] == QLatin1Char('.')
                   || m_text[m_pos] == QLatin1Char('_')))
            ++m_pos;
        return m_text.mid(start, m_pos - start);
    }

    bool take(const QString &token)
    {
        if (QStringView(m_text).mid(m_pos).startsWith(token)) {
            m_pos += token.size();
            return true;
        }
        return false;
    }

    // A keyword, in any case, not followed by a letter.
    bool takeWord(const QString &word)
    {
        if (!QStringView(m_text).mid(m_pos).startsWith(word, Qt::CaseInsensitive))
            return false;
        const qsizetype end = m_pos + word.size();
        if (end < m_text.size() && m_text[end].isLetterOrNumber())
            return false;
        m_pos = end;
        return true;
    }

    void skipSpace()
    {
        while (!atEnd() && m_text[m_pos].isSpace())
            ++m_pos;
    }

    bool atEnd() const { return m_pos >= m_text.size(); }

    std::optional<PXRenameFilter> fail(QString *error, const QString &reason = {})
    {
        if (error)
            *error = reason.isEmpty() ? m_error : reason;
        return std::nullopt;
    }

    const QString &m_text;
    qsizetype m_pos = 0;
    QString m_error;
};

} // namespace

QString PXRenameFilter::text() const
{
    QStringList parts;
    for (const Row &row : m_rows) {
        const ValueType type = valueType(row.key);
        QString part = keyName(row.key) + QLatin1Char(' ') + operatorText(row.comparison);
        if (type == ValueType::text && (row.ignoreCase || row.ignoreDiacritics))
            part += QStringLiteral("[%1%2]").arg(row.ignoreCase ? QStringLiteral("c") : QString(),
                                                 row.ignoreDiacritics ? QStringLiteral("d") : QString());
        QString value = row.value;
        if (type == ValueType::text || type == ValueType::date || value.isEmpty() || value.contains(QLatin1Char(' '))
            || value.contains(QLatin1Char(')'))) {
            value.replace(QLatin1Char('\\'), QStringLiteral("\\\\"));
            value.replace(QLatin1Char('"'), QStringLiteral("\\\""));
            value = QLatin1Char('"') + value + QLatin1Char('"');
        }
        part += QLatin1Char(' ') + value;
        parts.append(m_rows.size() > 1 ? QLatin1Char('(') + part + QLatin1Char(')') : part);
    }
    return parts.join(m_matchesAll ? QStringLiteral(" && ") : QStringLiteral(" || "));
}

std::optional<PXRenameFilter> PXRenameFilter::fromText(const QString &text, QString *error)
{
    const QString trimmed = text.trimmed();
    if (trimmed.isEmpty() || trimmed == QLatin1String("TRUEPREDICATE"))
        return PXRenameFilter();
    return Reader(trimmed).read(error);
}

std::optional<FilePredicate> PXRenameFilter::predicate() const
{
    if (m_rows.isEmpty())
        return std::nullopt;
    return FilePredicate{text(), {}, [filter = *this](const PXFile &file) { return filter.matches(file); }};
}

bool PXRenameFilter::matches(const PXFile &file) const
{
    if (m_rows.isEmpty())
        return true;
    for (const Row &row : m_rows) {
        const bool match = rowMatches(row, file);
        if (m_matchesAll && !match)
            return false;
        if (!m_matchesAll && match)
            return true;
    }
    return m_matchesAll;
}

QList<PXRenameFilter::Key> PXRenameFilter::allKeys()
{
    QList<Key> list;
    for (const KeyEntry &entry : keys)
        list.append(entry.key);
    return list;
}

QString PXRenameFilter::keyName(Key key)
{
    return QString::fromLatin1(entryFor(key).name);
}

QString PXRenameFilter::keyTitle(Key key)
{
    return tr(entryFor(key).title);
}

PXRenameFilter::ValueType PXRenameFilter::valueType(Key key)
{
    return entryFor(key).type;
}

QList<PXRenameFilter::Comparison> PXRenameFilter::comparisonsFor(ValueType type)
{
    switch (type) {
    case ValueType::text:
        return {Comparison::contains, Comparison::beginsWith, Comparison::endsWith, Comparison::equal,
                Comparison::notEqual};
    case ValueType::boolean: return {Comparison::equal};
    default:
        return {Comparison::equal,       Comparison::notEqual, Comparison::less,
                Comparison::lessOrEqual, Comparison::greater,  Comparison::greaterOrEqual};
    }
}

QString PXRenameFilter::comparisonTitle(Comparison comparison, ValueType type)
{
    const bool date = type == ValueType::date;
    switch (comparison) {
    case Comparison::equal: return tr("is");
    case Comparison::notEqual: return tr("is not");
    case Comparison::contains: return tr("contains");
    case Comparison::beginsWith: return tr("begins with");
    case Comparison::endsWith: return tr("ends with");
    case Comparison::less: return date ? tr("is before") : tr("is less than");
    case Comparison::lessOrEqual: return date ? tr("is on or before") : tr("is at most");
    case Comparison::greater: return date ? tr("is after") : tr("is greater than");
    case Comparison::greaterOrEqual: return date ? tr("is on or after") : tr("is at least");
    }
    return QString();
}
