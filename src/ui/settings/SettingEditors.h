#pragma once

#include "ui/settings/SettingRows.h"

#include <functional>

class QObject;
class QWidget;

// Makes the editor of one row from its property's type: a check box for a Boolean, a spin box for
// a number, a menu of titled choices for a value set, a colour button, an application button for
// a file reference. Each editor writes through the property's setter as the user edits, and
// follows the property's change signal, so a change made elsewhere (a menu, another window) shows
// at once. The editor is named after its property, and its accessible name is the row's label.
namespace SettingEditors {

// Asks the user for an application and hands its .desktop file to `chosen` (never, if the user
// cancels). Replaceable for tests.
using ApplicationChooser = std::function<void(QWidget *parent, std::function<void(const QString &desktopFile)> chosen)>;

// Null for a property type that has no editor (a programming error: the rows' test catches it).
QWidget *make(QObject *settings, const SettingRow &row, QWidget *parent, const ApplicationChooser &chooseApplication);

} // namespace SettingEditors
