#pragma once

#include "core/model/PXFileForward.h"

#include <QList>
#include <QStringList>

#include <functional>

class QDBusConnection;
class QObject;
class QUrl;

// Hands files to other programs: an application chosen by the user, or the file manager.
namespace FileOpener {
// Starts `application` (a .desktop file through GIO, else the program itself) on `files`;
// false when it could not be started.
bool openWith(const PXFilePtr &application, const QList<PXFilePtr> &files);
// Shows `files` selected in the file manager (org.freedesktop.FileManager1 on the session bus,
// asked without waiting), else opens the folder of the first. `context` owns the pending call.
void reveal(const QList<PXFilePtr> &files, QObject *context);
// What reveal does, on `bus`, with `openFolder` as the fallback when the service is absent or
// the call fails.
void showItems(const QStringList &uris, const QUrl &folder, QObject *context, const QDBusConnection &bus,
               const std::function<void(const QUrl &)> &openFolder);
} // namespace FileOpener
