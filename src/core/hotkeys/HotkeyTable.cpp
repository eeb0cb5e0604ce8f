#include "core/hotkeys/HotkeyTable.h"

#include "core/app/Log.h"

namespace {

// Empty keys dropped, each key once, order kept.
QList<QKeySequence> cleaned(const QList<QKeySequence> &keys)
{
    QList<QKeySequence> result;
    for (const QKeySequence &key : keys) {
        if (!key.isEmpty() && !result.contains(key))
            result.append(key);
    }
    return result;
}

} // namespace

void HotkeyTable::addRow(Row row)
{
    const int index = int(m_rows.size());
    row.defaultKeys = cleaned(row.defaultKeys);
    m_index.insert(row.identifier, index);
    for (const QString &alias : std::as_const(row.aliases))
        m_index.insert(alias, index);
    m_rows.append(std::move(row));
}

int HotkeyTable::indexOf(const QString &identifier) const
{
    return m_index.value(identifier, -1);
}

const HotkeyTable::Row *HotkeyTable::row(const QString &identifier) const
{
    const int index = indexOf(identifier);
    return index < 0 ? nullptr : &m_rows.at(index);
}

void HotkeyTable::applyBindings(const HotkeyBindings &bindings, QStringList *problems)
{
    for (Row &row : m_rows)
        row.userKeys.reset();
    for (auto entry = bindings.keys.cbegin(); entry != bindings.keys.cend(); ++entry) {
        const int index = indexOf(entry.key());
        if (index < 0) {
            const QString line =
                QStringLiteral("Ignoring the hotkeys of \"%1\": there is no such command").arg(entry.key());
            logError(line);
            if (problems)
                problems->append(line);
            continue;
        }
        // Under its stored name the binding wins over one under an older name.
        Row &row = m_rows[index];
        if (row.userKeys && entry.key() != row.identifier)
            continue;
        row.userKeys = cleaned(entry.value());
    }
}

HotkeyBindings HotkeyTable::bindings() const
{
    HotkeyBindings bindings;
    for (const Row &row : m_rows) {
        if (row.isCustomized())
            bindings.keys.insert(row.identifier, *row.userKeys);
    }
    return bindings;
}

void HotkeyTable::setKeys(const QString &identifier, const QList<QKeySequence> &keys)
{
    const int index = indexOf(identifier);
    if (index < 0)
        return;
    Row &row = m_rows[index];
    const QList<QKeySequence> chosen = cleaned(keys);
    if (chosen == row.defaultKeys)
        row.userKeys.reset();
    else
        row.userKeys = chosen;
}

void HotkeyTable::reset(const QString &identifier)
{
    if (const int index = indexOf(identifier); index >= 0)
        m_rows[index].userKeys.reset();
}

void HotkeyTable::resetAll()
{
    for (Row &row : m_rows)
        row.userKeys.reset();
}

QStringList HotkeyTable::rowsWithKey(const QKeySequence &key, const QString &except) const
{
    QStringList identifiers;
    const int skipped = except.isEmpty() ? -1 : indexOf(except);
    for (int i = 0; i < m_rows.size(); ++i) {
        if (i != skipped && m_rows.at(i).keys().contains(key))
            identifiers.append(m_rows.at(i).identifier);
    }
    return identifiers;
}

bool HotkeyTable::hasConflict(const QString &identifier) const
{
    const Row *own = row(identifier);
    if (!own)
        return false;
    for (const QKeySequence &key : own->keys()) {
        if (!rowsWithKey(key, identifier).isEmpty())
            return true;
    }
    return false;
}

QList<std::pair<QKeySequence, QStringList>> HotkeyTable::conflicts() const
{
    QList<std::pair<QKeySequence, QStringList>> result;
    QList<QKeySequence> seen;
    for (const Row &row : m_rows) {
        for (const QKeySequence &key : row.keys()) {
            if (seen.contains(key))
                continue;
            seen.append(key);
            const QStringList rows = rowsWithKey(key);
            if (rows.size() > 1)
                result.append({key, rows});
        }
    }
    return result;
}
