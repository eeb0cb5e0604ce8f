#pragma once

#include <QStringList>

// `pixcove-cli settings`: where the settings file lives, and whether a settings file would be
// read at start-up.
int runSettingsCommand(const QStringList &args);
