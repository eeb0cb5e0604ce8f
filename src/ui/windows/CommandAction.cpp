#include "ui/windows/CommandAction.h"

#include "ui/windows/CommandKeys.h"

CommandAction::CommandAction(const Command &command, const QVariant &argument, const QString &text, QObject *parent)
    : QAction(text.isEmpty() ? command.title() : text, parent)
    , m_commandId(command.id())
    , m_argument(argument)
{
    setObjectName(command.identifier());
    setCheckable(command.isCheckable());
}

void CommandAction::applyState(const CommandState &state)
{
    setEnabled(state.enabled);
    if (isCheckable())
        setChecked(state.checked);
}

void CommandAction::bindKeys(const Command &command)
{
    m_defaultKeys = CommandKeys::defaultKeys(command, m_argument);
    applyKeys();
    if (!m_keysBound) {
        m_keysBound = true;
        connect(&CommandKeys::shared(), &CommandKeys::changed, this, &CommandAction::applyKeys);
    }
}

void CommandAction::applyKeys()
{
    setShortcuts(CommandKeys::shared().keys(CommandKeys::itemName(m_commandId, m_argument), m_defaultKeys));
}
