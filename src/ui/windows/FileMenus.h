#pragma once

#include "core/model/PXFileForward.h"
#include "ui/common/Command.h"

#include <QList>
#include <QString>
#include <QVariant>

#include <functional>

class QAction;
class QMenu;

// The submenus that the File menu and the thumbnail pane's context menu share, filled when they
// open: "Open With", "Move To", "Copy To", "Alias To" and the "Label:" chooser. Each item is a
// command with its value, made and wired by the caller's `add` (which validates it on the pane).
namespace FileMenus {

// Makes an item for command `id` with `argument`, titled `title` (the command's own title when
// empty), adds it to `menu` and answers it.
using AddItem = std::function<QAction *(QMenu *menu, CommandId id, const QVariant &argument, const QString &title)>;

// The favourite applications that resolve, then every application that opens the type of
// `files` (when they share one; the default first), then "Other…" (an empty path: a chooser).
void fillOpenWith(QMenu *menu, const QList<PXFilePtr> &files, const AddItem &add);
// For moveToMenuAction, copyToMenuAction or aliasToMenuAction: the favourite folders that
// resolve, then "Other Folder…" (an empty path: a folder chooser).
void fillFolders(QMenu *menu, CommandId id, const AddItem &add);
// Appends the "Label:" item with its swatches; its eight value items (0: no label, then the
// labels' sort values) are made through `add` and taken out of the menu again, to be run by the
// swatches.
QAction *addLabelChooser(QMenu *menu, const QString &title, const AddItem &add);

} // namespace FileMenus
