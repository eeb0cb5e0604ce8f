#pragma once

#include <QString>
#include <QVariant>

// A menu or toolbar command: its identifier (such as "changeBrowserLayout") and, for the commands that choose among
// values, the value.
struct Command
{
    QString name;
    QVariant argument;
};

// Whether a command can run now and, for a choice or a switch, whether it is the current one.
struct CommandState
{
    bool enabled = false;
    bool checked = false;
};
