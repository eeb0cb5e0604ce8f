#pragma once

#include "ui/common/Command.h"

#include <QList>

class CommandAction;
class CommandRegistry;
class MediaViewActionHandler;
class QWidget;

// The keys of a viewer window (quick view, image window, slideshow): every command of the media
// viewer, and the application commands asked for, as actions of `window` with their keys (the
// user's, else the defaults).
// A viewer command runs on `handler`, an application command on the application; each runs only
// when it is enabled at that moment. Without `stepping`, the keys of the next and previous file
// are left to the view (a window that has no files to step through).
namespace ViewerCommands {

QList<CommandAction *> install(QWidget *window, MediaViewActionHandler *handler, const CommandRegistry &registry,
                               const QList<CommandId> &applicationCommands = {}, bool stepping = true);

} // namespace ViewerCommands
