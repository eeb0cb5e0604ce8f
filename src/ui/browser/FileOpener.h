#pragma once

#include "core/model/PXFileForward.h"

#include <QList>

class QObject;

// Hands files to other programs: an application chosen by the user, or the file manager.
namespace FileOpener {
// Starts `application` (a .desktop file through GIO, else the program itself) on `files`;
// false when it could not be started.
bool openWith(const PXFilePtr &application, const QList<PXFilePtr> &files);
// Shows `files` selected in the file manager (its D-Bus interface), else opens the folder of
// the first. `context` owns the short-lived helper process.
void reveal(const QList<PXFilePtr> &files, QObject *context);
} // namespace FileOpener
