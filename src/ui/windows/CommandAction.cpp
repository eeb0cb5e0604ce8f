#include "ui/windows/CommandAction.h"

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
