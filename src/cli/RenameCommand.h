#pragma once

#include <QStringList>

// `pixcove-cli rename`: the batch renamer's proposed names for files and folders, by a rules file
// or a preset, with collisions marked; renames them with --apply.
int runRenameCommand(const QStringList &args);
