#pragma once

#include "core/model/PXFileForward.h"
#include "ui/browser/FileDropValidator.h"

#include <QList>
#include <QObject>
#include <QStringList>

#include <functional>

// Moves, copies or links dropped files into a folder on a worker thread. An item whose name is
// already taken in the folder is left alone and reported; nothing is ever overwritten. `done`
// runs on the GUI thread, while `context` lives, with one message per item that failed.
namespace FileDropPerformer {
void perform(FileDropOperation operation, const QList<PXFilePtr> &sources, const PXFilePtr &destination,
             QObject *context, std::function<void(const QStringList &errors)> done);
// The same work, synchronously (what the worker runs).
QStringList performNow(FileDropOperation operation, const QStringList &sourcePaths, const QString &destinationFolder);
} // namespace FileDropPerformer
