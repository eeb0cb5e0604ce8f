#pragma once

#include "ui/common/Command.h"

#include <QPointer>

#include <vector>

// The table of every command: identifier, title, default keys, whether it is checkable, what it
// takes, and the member functions that run and validate it on its owner. The menu bar, the
// toolbar and the thumbnail pane's context menu build their items from it, and the hotkeys table
// reads identifiers, titles and default keys from `commands()`.
//
// The commands of the tabbed window, the window content and the pane are bound in the table.
// The application's are declared there too, but the application binds them when it starts (this
// folder does not know the application's types) and names itself their owner; until then, and
// after it goes, they are disabled.
class CommandRegistry
{
public:
    CommandRegistry();

    static CommandRegistry &shared();
    static void setShared(CommandRegistry *registry); // not owned; null goes back to the process's own

    const Command &command(CommandId id) const { return m_commands[size_t(id)]; }
    // In the order of CommandId.
    const std::vector<Command> &commands() const { return m_commands; }
    // By identifier ("changeBrowserLayout"), null when there is none: for stored hotkeys and tests.
    const Command *find(const QString &identifier) const;

    // The application's commands: bound by the application, run on the object it names.
    Command &bindApplicationCommand(CommandId id);
    void setApplication(QObject *application) { m_application = application; }
    QObject *application() const { return m_application; }

private:
    Command &add(CommandId id, const char *title);
    void declareApplicationCommands();
    void declareFrameCommands();
    void declareWindowCommands();
    void declareViewerCommands();
    void declarePaneCommands();

    // Never resized after the table is declared: items keep references to their commands.
    std::vector<Command> m_commands;
    QPointer<QObject> m_application;
};
