#pragma once

class CommandRegistry;
class QMenu;
class ThumbnailsActionHandler;

// The thumbnail pane's context menu ("Thumbnail Pane Menu"), built from the command registry each
// time it opens: for the selected items when `onItems`, else for the background. Its items run
// on the pane's action handler; commands that this pane cannot run yet are shown disabled.
namespace ThumbnailContextMenu {

QMenu *build(ThumbnailsActionHandler *handler, bool onItems, const CommandRegistry &registry);

} // namespace ThumbnailContextMenu
