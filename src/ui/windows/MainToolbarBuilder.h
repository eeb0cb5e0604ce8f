#pragma once

#include <QString>
#include <QStringList>
#include <QVariantMap>

#include <optional>

class CommandRegistry;
class MainWindowViewController;
class ValidatingToolbar;

// Fills a main window's toolbar from the command registry: back, forward and up; the three
// layouts; the sort and filter menus; the search field with its category chooser. The buttons
// run their commands on the window and follow its state whenever it says its commands changed;
// the menus are validated as they open.
//
// Which items show, in which order, and whether the toolbar shows at all follow the window
// settings' `toolbarConfiguration`, a dictionary with two keys, each optional:
// - "TB Item Identifiers": the items in order, by identifier (below); absent: the default items;
// - "TB Is Shown": a Boolean; absent: shown.
// A configuration that cannot be read (a key of the wrong type, an empty list, an item this
// version does not know or twice) is logged and the default toolbar shows; the next change the
// user makes to the toolbar replaces it. Keys the toolbar does not know are kept.
//
// Item identifiers are those of the commands the items run ("back", "forward",
// "changeBaseUpOneLevel", "changeBrowserLayout", "changeThumbnailFileSort",
// "changeThumbnailFileFilter", "thumbnailViewSearch"), and "separator", "space" and
// "flexibleSpace", which may appear any number of times.
namespace MainToolbarBuilder {

struct Arrangement
{
    QStringList items;
    bool shown = true;

    bool operator==(const Arrangement &other) const = default;
};

// The toolbar of a new window.
QStringList defaultItems();
// Every item once, separators and spaces included, in the order of the default toolbar.
QStringList allItems();
bool isRepeatable(const QString &identifier);
// The name of an item in the customization sheet.
QString itemTitle(const QString &identifier);

// The arrangement `configuration` asks for: the default one for none, and for one that cannot be
// read, with the reason in `problem` (left empty otherwise; may be null).
Arrangement arrangement(const std::optional<QVariantMap> &configuration, QString *problem);
// `configuration` changed to ask for `arrangement`. Items in the default order are not written,
// so that a toolbar never customised follows the default of later versions.
QVariantMap configuration(const std::optional<QVariantMap> &configuration, const Arrangement &arrangement);

// Builds every item once and arranges them as the window's settings say, again whenever the
// configuration changes; right-clicking the toolbar offers the toolbar's commands.
void build(ValidatingToolbar *toolbar, MainWindowViewController *window, const CommandRegistry &registry);

// Shows or hides the window's toolbar by its settings.
void toggleShown(MainWindowViewController *window);
bool isShown(const MainWindowViewController *window);
// Opens the customization sheet over the window (it does not wait for it); accepting it writes
// the chosen items into the window's settings.
void runCustomizationPalette(MainWindowViewController *window);

} // namespace MainToolbarBuilder
