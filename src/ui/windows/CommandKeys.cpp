#include "ui/windows/CommandKeys.h"

#include <QMetaEnum>

CommandKeys &CommandKeys::shared()
{
    static auto *own = new CommandKeys;
    return *own;
}

QString CommandKeys::itemName(CommandId id, const QVariant &argument)
{
    const QString identifier = QLatin1String(QMetaEnum::fromType<CommandId>().valueToKey(int(id)));
    return argument.isValid() ? identifier + QLatin1Char(':') + argument.toString() : identifier;
}

QList<QKeySequence> CommandKeys::defaultKeys(const Command &command, const QVariant &argument)
{
    QList<QKeySequence> keys;
    for (const Command::Key &key : command.defaultKeys()) {
        if (key.argument == argument && !key.sequence.isEmpty() && !keys.contains(key.sequence))
            keys.append(key.sequence);
    }
    return keys;
}

QList<QKeySequence> CommandKeys::keys(const QString &itemName, const QList<QKeySequence> &defaults) const
{
    const auto user = m_userKeys.constFind(itemName);
    return user == m_userKeys.cend() ? defaults : *user;
}

void CommandKeys::setUserKeys(const QHash<QString, QList<QKeySequence>> &keys)
{
    if (keys == m_userKeys)
        return;
    m_userKeys = keys;
    Q_EMIT changed();
}
