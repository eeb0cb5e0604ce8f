#pragma once

class QMenu;
class ThumbnailsViewController;

// The pane's context menu ("Thumbnail Pane Menu"), built each time it opens: for the selected
// items when `onItems`, else for the background. Commands that this pane cannot run yet are
// shown disabled.
QMenu *buildThumbnailContextMenu(ThumbnailsViewController *controller, bool onItems);
