#pragma once

class CommandRegistry;
class MainWindowViewController;
class ValidatingToolbar;

// Fills a main window's toolbar from the command registry: back, forward and up; the three
// layouts; the sort and filter menus; the search field with its category chooser. The buttons
// run their commands on the window and follow its state whenever it says its commands changed;
// the menus are validated as they open.
namespace MainToolbarBuilder {

void build(ValidatingToolbar *toolbar, MainWindowViewController *window, const CommandRegistry &registry);

} // namespace MainToolbarBuilder
