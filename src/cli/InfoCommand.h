#pragma once

#include <QStringList>

// `pixcove-cli info`: the inspector's rows for files, as text or JSON.
int runInfoCommand(const QStringList &args);
