#pragma once

#include <QObject>
#include <QString>

#include <functional>

// Removable volumes through GIO: ejecting the medium a mounted folder belongs to (an SD card,
// a camera, a USB stick), else unmounting it. The work runs on a worker thread with a GLib main
// context of its own, so it needs no GLib event loop on the GUI thread and never blocks it.
namespace Volumes {

// Ejects (else unmounts) the mount that holds `path` (a volume's root, as the grid shows it). `done` runs on
// `context`'s thread, while `context` lives, with an empty message on success or the reason it failed ("The volume is
// busy").
void eject(const QString &path, QObject *context, std::function<void(const QString &error)> done);

} // namespace Volumes
