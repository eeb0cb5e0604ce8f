#include "ui/common/Command.h"

#include "core/app/Translate.h"

#include <QMetaEnum>

namespace {
constexpr Translator tr("Commands");
}

Command::Command(CommandId id, const char *title)
    : m_id(id)
    , m_identifier(QMetaEnum::fromType<CommandId>().valueToKey(int(id)))
    , m_title(title)
{ }

QString Command::title() const
{
    return tr(m_title);
}

QKeySequence Command::defaultKey(const QVariant &argument) const
{
    for (const Key &key : m_keys) {
        if (key.argument == argument)
            return key.sequence;
    }
    return {};
}

CommandState Command::state(const QObject *owner, const QVariant &argument) const
{
    if (!m_available || !m_perform || !owner)
        return {};
    return m_validate ? m_validate(owner, argument) : CommandState{true, false};
}

bool Command::perform(QObject *owner, const QVariant &argument, QWidget *window) const
{
    if (!state(owner, argument).enabled)
        return false;
    m_perform(owner, argument, window);
    return true;
}

Command &Command::key(const QKeySequence &sequence, const QVariant &argument)
{
    m_keys.append({sequence, argument});
    return *this;
}

Command &Command::checkable()
{
    m_checkable = true;
    return *this;
}

Command &Command::unavailable()
{
    m_available = false;
    return *this;
}

Command &Command::ownedBy(CommandOwner owner)
{
    m_owner = owner;
    return *this;
}
