#pragma once

#include <QList>

class CommandAction;
class CommandRegistry;
class QMenuBar;

// Fills a main window's menu bar with the commands of the registry, in menus File, Edit, View,
// Go, Window and Help, each item with the command's keys (CommandAction::bindKeys). The tabbed window
// runs and validates the items. Commands that are not available yet are shown disabled.
namespace MainMenuBar {

QList<CommandAction *> build(QMenuBar *menuBar, const CommandRegistry &registry);

// The submenus rebuilt each time they open: "Open With" (favourite applications and those of the
// selection's type), "Move To", "Copy To" and "Alias To" (favourite folders); their object names.
inline constexpr const char *openWithMenuName = "openWithMenu";
inline constexpr const char *moveToMenuName = "moveToMenu";
inline constexpr const char *copyToMenuName = "copyToMenu";
inline constexpr const char *aliasToMenuName = "aliasToMenu";

} // namespace MainMenuBar
