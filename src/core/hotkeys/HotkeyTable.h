#pragma once

#include "core/settings/HotkeyBindings.h"

#include <QHash>
#include <QKeySequence>
#include <QList>
#include <QString>
#include <QStringList>

#include <optional>
#include <utility>

// The keys of every command the user can bind: one row per command (or per value of a command
// that has keys of its own, "Thumbnail Size: Larger"), with its default keys and the user's.
// The table knows nothing of windows: it is filled by the hotkeys controller from the command
// registry and answers which keys each row has now, which rows share a key, and which user
// bindings to save.
//
// A key on two rows is a conflict: every window holds the application's, the window's and the
// viewer's commands at once, so two commands on one key would leave that key doing nothing.
// Conflicts are reported, never refused: the user may be halfway through moving a key.
class HotkeyTable
{
public:
    struct Row
    {
        // Stored under this name in the settings ("renameFile", "IV-MoveUp").
        QString identifier;
        // Older or other names of the same command that stored bindings may use ("moveImageUp").
        QStringList aliases;
        QString title;
        // The menu it sits in, or the group of the commands without a menu item.
        QString group;
        QList<QKeySequence> defaultKeys;
        // What the user chose, if anything; else the defaults apply.
        std::optional<QList<QKeySequence>> userKeys;

        const QList<QKeySequence> &keys() const { return userKeys ? *userKeys : defaultKeys; }
        bool isCustomized() const { return userKeys && *userKeys != defaultKeys; }
    };

    // Rows keep their order: the order in which they are shown.
    void addRow(Row row);
    const QList<Row> &rows() const { return m_rows; }
    // By identifier or alias; -1 when there is none.
    int indexOf(const QString &identifier) const;
    const Row *row(const QString &identifier) const;

    // Takes the user's stored bindings: entries for unknown commands are dropped with a log line
    // (and listed in `problems`); the rest replace the rows' user keys. Rows without an entry go
    // back to their defaults.
    void applyBindings(const HotkeyBindings &bindings, QStringList *problems = nullptr);
    // The bindings to store: one entry per row whose keys differ from its defaults, under the
    // row's identifier.
    HotkeyBindings bindings() const;

    // Edits. Empty keys are dropped and a key listed twice is kept once.
    void setKeys(const QString &identifier, const QList<QKeySequence> &keys);
    void reset(const QString &identifier);
    void resetAll();

    // The identifiers of the other rows that have `key` now.
    QStringList rowsWithKey(const QKeySequence &key, const QString &except = {}) const;
    // Whether any key of the row is on another row too.
    bool hasConflict(const QString &identifier) const;
    // Every key on more than one row, with those rows' identifiers, in row order.
    QList<std::pair<QKeySequence, QStringList>> conflicts() const;

private:
    QList<Row> m_rows;
    QHash<QString, int> m_index; // identifiers and aliases
};
