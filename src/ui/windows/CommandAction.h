#pragma once

#include "ui/common/Command.h"

#include <QAction>

// A menu, toolbar or context-menu item that stands for a command of the registry, with the value
// it chooses for the commands that take one. Whoever makes it connects it to the command's owner
// and validates it.
class CommandAction : public QAction
{
    Q_OBJECT
public:
    // Titled `text`, else the command's title; named after the command's identifier; checkable
    // when the command is.
    CommandAction(const Command &command, const QVariant &argument, const QString &text, QObject *parent);

    CommandId commandId() const { return m_commandId; }
    const QVariant &argument() const { return m_argument; }
    // Takes the command's state on its owner.
    void applyState(const CommandState &state);
    // Carries the command's keys for its value (the user's, else the defaults) and follows them
    // when the user changes them. Only the items that stand for the command in a window bind
    // keys: a toolbar button or a context-menu item beside the menu's item would make the key
    // ambiguous, and Qt then runs neither.
    void bindKeys(const Command &command);

private:
    void applyKeys();

    CommandId m_commandId;
    QVariant m_argument;
    QList<QKeySequence> m_defaultKeys;
    bool m_keysBound = false;
};
