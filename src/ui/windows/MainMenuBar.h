#pragma once

#include <QList>

class QAction;
class QMenuBar;
class QObject;

// Fills a main window's menu bar with every command of the program, in menus File, Edit, View,
// Go, Window and Help. Each action carries its command in the properties "command" and "argument";
// the frame runs and validates them. Commands that are not available yet are shown
// disabled.
namespace MainMenuBar {

QList<QAction *> build(QMenuBar *menuBar);

// The submenus rebuilt each time they open: "Open With" (favourite applications) and "Move To"
// (favourite folders); their object names.
inline constexpr const char *openWithMenuName = "openWithMenu";
inline constexpr const char *moveToMenuName = "moveToMenu";

} // namespace MainMenuBar
