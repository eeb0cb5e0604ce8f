#pragma once

#include "core/hotkeys/HotkeyTable.h"
#include "ui/common/Command.h"

#include <QHash>
#include <QObject>
#include <QPointer>

class AppSettings;
class CommandKeys;
class CommandRegistry;

// Owns the table of every bindable command and keeps three things in step: the table, the user's
// bindings in the settings (`hotkeys`), and the keys that every window's command items carry
// (CommandKeys). Made once by the application delegate; the settings window edits through it.
//
// The table has a row for every item of the menu bar (a submenu's items titled "Submenu: Item")
// and one for every viewer command without a menu item, grouped as the user finds them: by menu,
// then "Image Viewer", "Keyboard Image Scrolling" and "Video Player Control". The viewer's
// commands are stored under their short names ("IV-MoveUp", "VID-PlayPause", "ZoomIn"); the
// others under the command's identifier, with ":value" for an item that chooses a value. Stored
// bindings may use either name.
//
// A binding to an unknown command, or a key that cannot be read, is ignored with a log line; the
// other bindings and every other setting are kept. Main thread only.
class HotkeysController : public QObject
{
    Q_OBJECT
public:
    HotkeysController(AppSettings *settings, const CommandRegistry &registry, CommandKeys &keys,
                      QObject *parent = nullptr);
    ~HotkeysController() override;

    const HotkeyTable &table() const { return m_table; }
    // The command item a row stands for; false for an unknown identifier.
    bool itemOf(const QString &identifier, CommandId *id, QVariant *argument) const;
    // The identifier of the row that stands for an item, empty when there is none.
    QString identifierOf(CommandId id, const QVariant &argument = {}) const;

    // Edits: applied to every window at once and saved with the settings.
    void setKeys(const QString &identifier, const QList<QKeySequence> &keys);
    void reset(const QString &identifier);
    void resetAll();

    // A key as the user's keyboard shows it ("Ctrl+Shift+R", "Strg+Umschalt+R").
    static QString keyText(const QKeySequence &key);
    static QString keysText(const QList<QKeySequence> &keys);

    // The short names of the viewer's commands ("IV-MoveUp"), empty for the others.
    static QString shortName(CommandId id);

Q_SIGNALS:
    // The keys of some rows changed (an edit here, or new bindings in the settings).
    void tableChanged();

private:
    void buildTable(const CommandRegistry &registry);
    void loadBindings();
    void publish();
    void store();

    QPointer<AppSettings> m_settings;
    QPointer<CommandKeys> m_keys;
    HotkeyTable m_table;
    struct Item
    {
        CommandId id;
        QVariant argument;
    };
    QHash<QString, Item> m_items; // by row identifier
    bool m_storing = false;
};
