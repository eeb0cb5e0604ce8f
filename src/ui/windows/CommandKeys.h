#pragma once

#include "ui/common/Command.h"

#include <QHash>
#include <QKeySequence>
#include <QList>
#include <QObject>
#include <QString>

// The keys that the command items of every window carry: the user's where the hotkeys say so,
// else the registry's defaults. An item that binds its keys here (CommandAction::bindKeys) takes
// them when it is made and again whenever they change, so a new binding reaches every open window
// at once and every window made later. Main thread only.
class CommandKeys : public QObject
{
    Q_OBJECT
public:
    using QObject::QObject;

    // The process's one: command items follow it from the moment they are made.
    static CommandKeys &shared();

    // The name of one item: the command's identifier, with the value it chooses when it takes one
    // ("changeThumbnailSize:1").
    static QString itemName(CommandId id, const QVariant &argument = {});
    // The command's default keys for `argument`, in the registry's order.
    static QList<QKeySequence> defaultKeys(const Command &command, const QVariant &argument = {});

    // The keys of the item now: the user's when there are some for it, else `defaults`.
    QList<QKeySequence> keys(const QString &itemName, const QList<QKeySequence> &defaults) const;
    // Replaces every user binding at once (by item name; an empty list means no keys at all).
    void setUserKeys(const QHash<QString, QList<QKeySequence>> &keys);
    const QHash<QString, QList<QKeySequence>> &userKeys() const { return m_userKeys; }

Q_SIGNALS:
    void changed();

private:
    QHash<QString, QList<QKeySequence>> m_userKeys;
};
