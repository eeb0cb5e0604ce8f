#pragma once

#include "core/model/PXFileForward.h"

#include <QList>
#include <QStringList>

#include <functional>

class QObject;

// Moving, copying or linking files into a folder from the "Move To", "Copy To" and "Alias To"
// menus: one function, so that where the work runs (the file controller, the activities) can
// change in one place. Runs the file controller's operation (extended attributes, and so labels
// and flags, travel with copies); a name that is taken in the folder is never overwritten: that
// item is left alone and reported. `done` runs on the GUI thread, while `context` lives, with
// one message per item that failed.
namespace FileTransfer {

enum class Kind { move, copy, alias };

void start(Kind kind, const QList<PXFilePtr> &files, const PXFilePtr &folder, QObject *context,
           std::function<void(const QStringList &errors)> done);

} // namespace FileTransfer
