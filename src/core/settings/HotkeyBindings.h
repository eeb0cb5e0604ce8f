#pragma once

#include <QJsonObject>
#include <QJsonValue>
#include <QKeySequence>
#include <QList>
#include <QMap>
#include <QString>
#include <QStringList>

#include <optional>

// The keys the user chose for commands, by command identifier ("renameFile", "IV-MoveUp"), each
// with its keys in order. A command that is not listed keeps its default keys; one listed with no
// keys has none. The settings file keeps it under "hotkeys".
//
// JSON form: {"renameFile": ["F2", "Ctrl+E"], "videoMute": []}, keys in Qt's portable text.
// Reading is forgiving, unlike the rest of the settings file: an entry that is not an array of
// texts, or a key text that names no key, is dropped with a log line and the rest is kept, so a
// hand-edited binding never costs the user their other settings. An entry whose keys all fail to
// read is dropped whole (the command keeps its defaults rather than losing its keys). Which
// identifiers name real commands is for the hotkeys table to say: the settings do not know them.
struct HotkeyBindings
{
    QMap<QString, QList<QKeySequence>> keys;

    bool isEmpty() const { return keys.isEmpty(); }
    bool operator==(const HotkeyBindings &other) const = default;

    QJsonObject toJson() const;
    // `problems` receives one line per dropped entry or key (also logged); `keyPath` prefixes them.
    static HotkeyBindings fromJson(const QJsonValue &json, const QString &keyPath = QStringLiteral("hotkeys"),
                                   QStringList *problems = nullptr);

    // One key combination from its portable text ("Ctrl+Shift+R", "Space", "F2"); nothing for an
    // empty text, a text with an unknown key name, or one of more than one chord.
    static std::optional<QKeySequence> keyFromText(const QString &text);
    static QString textOf(const QKeySequence &key) { return key.toString(QKeySequence::PortableText); }
};
