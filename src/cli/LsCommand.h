#pragma once

#include <QStringList>

// `pixcove-cli ls`: a folder collection, filtered and sorted as a window shows it.
int runLsCommand(const QStringList &args);
