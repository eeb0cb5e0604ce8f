#include "ui/windows/MainToolbarBuilder.h"

#include "core/app/Log.h"
#include "core/app/Translate.h"
#include "core/model/FileSortTypes.h"
#include "core/settings/SettingsValueSets.h"
#include "core/settings/WindowSettings.h"
#include "ui/common/ThemeIcons.h"
#include "ui/windows/CommandAction.h"
#include "ui/windows/CommandRegistry.h"
#include "ui/windows/MainWindowActionHandler.h"
#include "ui/windows/MainWindowViewController.h"
#include "ui/windows/ToolbarCustomizationDialog.h"
#include "ui/windows/ValidatingToolbar.h"

#include <QActionGroup>
#include <QHash>
#include <QLineEdit>
#include <QMenu>
#include <QPointer>
#include <QToolButton>

namespace {

constexpr Translator tr("MainToolbar");

const QString itemsKey = QStringLiteral("TB Item Identifiers");
const QString shownKey = QStringLiteral("TB Is Shown");

const QString separatorItem = QStringLiteral("separator");
const QString spaceItem = QStringLiteral("space");
const QString flexibleSpaceItem = QStringLiteral("flexibleSpace");

QString identifierOf(CommandId id)
{
    return CommandRegistry::shared().command(id).identifier();
}

struct Builder
{
    ValidatingToolbar *toolbar;
    MainWindowViewController *window;
    const CommandRegistry &registry;

    // An item for the command and value, run on the window.
    CommandAction *action(CommandId id, const QVariant &argument, const QString &title, QObject *parent) const
    {
        const Command &command = registry.command(id);
        auto *item = new CommandAction(command, argument, title, parent);
        MainWindowViewController *target = window;
        QObject::connect(item, &QAction::triggered, target,
                         [target, &command, argument] { target->performCommand(command, argument); });
        item->applyState(window->commandState(command, argument));
        return item;
    }

    // A button that follows the window's state.
    QToolButton *button(CommandId id, const QIcon &icon, const QVariant &argument = {}, const QString &title = {})
    {
        CommandAction *item = action(id, argument, title, toolbar);
        item->setIcon(icon);
        item->setToolTip(item->text());
        MainWindowViewController *target = window;
        const Command &command = registry.command(id);
        QObject::connect(window, &MainWindowViewController::commandsChanged, item, [target, item, &command] {
            item->applyState(target->commandState(command, item->argument()));
        });
        return toolbar->addButton(item);
    }

    // A button with a menu of the values of a choice, checked to the window's state as it opens.
    QToolButton *menuButton(const QIcon &icon, const QString &text, CommandId id, int count, QString (*titleOf)(int))
    {
        auto *button = new QToolButton(toolbar);
        button->setIcon(icon);
        button->setText(text);
        button->setToolTip(text);
        button->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
        button->setPopupMode(QToolButton::InstantPopup);
        auto *menu = new QMenu(button);
        auto *group = new QActionGroup(menu);
        for (int raw = 0; raw < count; ++raw)
            menu->addAction(group->addAction(action(id, raw, titleOf(raw), menu)));
        validateOnShow(menu);
        button->setMenu(menu);
        toolbar->addWidget(button);
        return button;
    }

    void validateOnShow(QMenu *menu) const
    {
        MainWindowViewController *target = window;
        const CommandRegistry *commands = &registry;
        QObject::connect(menu, &QMenu::aboutToShow, menu, [target, commands, menu] {
            for (QAction *entry : menu->actions()) {
                if (auto *item = qobject_cast<CommandAction *>(entry))
                    item->applyState(target->commandState(commands->command(item->commandId()), item->argument()));
            }
        });
    }

    QList<QWidget *> navigation(CommandId id, const char *iconName, QStyle::StandardPixmap fallback)
    {
        return {button(id, ThemeIcons::icon(QLatin1String(iconName), fallback))};
    }

    // Three exclusive buttons.
    QList<QWidget *> layouts()
    {
        auto *group = new QActionGroup(toolbar);
        // Icon names of the freedesktop themes first, then those of the symbolic themes.
        const QList<std::tuple<BrowserLayout, const char *, const char *, QString>> layouts = {
            {BrowserLayout::noPreview, "view-grid", "view-grid-symbolic", tr("Thumbnails Only")},
            {BrowserLayout::topPreview, "view-split-top-bottom", "view-continuous-symbolic", tr("Preview on Top")},
            {BrowserLayout::rightPreview, "view-split-left-right", "view-dual-symbolic", tr("Preview on Right")},
        };
        QList<QWidget *> buttons;
        for (const auto &[layout, iconName, symbolicName, title] : layouts) {
            const QIcon icon = QIcon::fromTheme(QLatin1String(iconName), QIcon::fromTheme(QLatin1String(symbolicName)));
            QToolButton *item = button(CommandId::changeBrowserLayout, icon, int(layout), title);
            group->addAction(item->defaultAction());
            buttons.append(item);
        }
        return buttons;
    }

    QList<QWidget *> sort()
    {
        QToolButton *item = menuButton(QIcon::fromTheme(QStringLiteral("view-sort-ascending")), tr("Sort"),
                                       CommandId::changeThumbnailFileSort, valueSetCount<FileSortType>(),
                                       [](int raw) { return fileSortTypeTitle(FileSortType(raw)); });
        item->menu()->addSeparator();
        item->menu()->addAction(action(CommandId::changeThumbnailReverseSort, {}, {}, item->menu()));
        return {item};
    }

    QList<QWidget *> filter()
    {
        return {menuButton(QIcon::fromTheme(QStringLiteral("view-filter")), tr("Show"),
                           CommandId::changeThumbnailFileFilter, valueSetCount<FileFilterType>(),
                           [](int raw) { return fileFilterTypeTitle(FileFilterType(raw)); })};
    }

    // The field, with the category chooser in front of it.
    QList<QWidget *> search()
    {
        auto *categoryButton = new QToolButton(toolbar);
        categoryButton->setPopupMode(QToolButton::InstantPopup);
        categoryButton->setToolButtonStyle(Qt::ToolButtonTextOnly);
        categoryButton->setToolTip(tr("What the search matches"));
        auto *categories = new QMenu(categoryButton);
        auto *categoryGroup = new QActionGroup(categories);
        for (ThumbnailsSearchType type : {ThumbnailsSearchType::filename, ThumbnailsSearchType::kind,
                                          ThumbnailsSearchType::label, ThumbnailsSearchType::camera}) {
            CommandAction *item = action(CommandId::setThumbnailViewSearchCategory, int(type),
                                         thumbnailsSearchTypeTitle(type), categories);
            categories->addAction(categoryGroup->addAction(item));
            if (item->isChecked())
                categoryButton->setText(item->text());
        }
        validateOnShow(categories);
        categoryButton->setMenu(categories);
        toolbar->addWidget(categoryButton);
        auto *searchField = new QLineEdit(toolbar);
        searchField->setPlaceholderText(tr("Search"));
        searchField->setClearButtonEnabled(true);
        searchField->setMaximumWidth(240);
        searchField->addAction(QIcon::fromTheme(QStringLiteral("edit-find")), QLineEdit::LeadingPosition);
        toolbar->addWidget(searchField);
        window->actionHandler()->setSearchWidgets(searchField, categoryButton);
        const Command &searchCommand = registry.command(CommandId::thumbnailViewSearch);
        MainWindowViewController *target = window;
        QObject::connect(searchField, &QLineEdit::textChanged, target, [target, &searchCommand](const QString &text) {
            target->performCommand(searchCommand, text);
        });
        return {categoryButton, searchField};
    }
};

// Keeps a toolbar arranged as its window's settings say. Every item is made once; an item that
// is left out is hidden, so the search field and its text survive a change of arrangement.
// Separators and spaces are made anew for each arrangement.
class ToolbarArranger : public QObject
{
public:
    ToolbarArranger(ValidatingToolbar *toolbar, MainWindowViewController *window)
        : QObject(toolbar)
        , m_toolbar(toolbar)
        , m_window(window)
    { }

    void addItem(const QString &identifier, const QList<QWidget *> &widgets) { m_items.insert(identifier, widgets); }

    void arrange()
    {
        QString problem;
        const MainToolbarBuilder::Arrangement wanted =
            MainToolbarBuilder::arrangement(m_window->windowSettings()->toolbarConfiguration(), &problem);
        if (!problem.isEmpty())
            logError(QStringLiteral("The toolbar's configuration cannot be used, showing the default toolbar: ")
                     + problem);
        qDeleteAll(m_spacers);
        m_spacers.clear();
        QList<ValidatingToolbar::Entry> entries;
        for (const QString &identifier : wanted.items) {
            if (!MainToolbarBuilder::isRepeatable(identifier)) {
                for (QWidget *widget : m_items.value(identifier))
                    entries.append({widget, 0});
                continue;
            }
            QWidget *spacer = identifier == separatorItem ? m_toolbar->makeSeparator() : new QWidget(m_toolbar);
            // A space is as wide as a button; a flexible space takes what the other items leave.
            if (identifier == spaceItem)
                spacer->setFixedWidth(m_toolbar->iconSize().width() + 12);
            else if (identifier == flexibleSpaceItem)
                spacer->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Preferred);
            m_spacers.append(spacer);
            entries.append({spacer, identifier == flexibleSpaceItem ? 1 : 0});
        }
        m_toolbar->arrange(entries);
        m_toolbar->setVisible(wanted.shown);
    }

private:
    ValidatingToolbar *m_toolbar;
    MainWindowViewController *m_window;
    QHash<QString, QList<QWidget *>> m_items;
    QList<QWidget *> m_spacers;
};

} // namespace

namespace MainToolbarBuilder {

QStringList defaultItems()
{
    return {identifierOf(CommandId::back),
            identifierOf(CommandId::forward),
            identifierOf(CommandId::changeBaseUpOneLevel),
            separatorItem,
            identifierOf(CommandId::changeBrowserLayout),
            separatorItem,
            identifierOf(CommandId::changeThumbnailFileSort),
            identifierOf(CommandId::changeThumbnailFileFilter),
            flexibleSpaceItem,
            identifierOf(CommandId::thumbnailViewSearch)};
}

QStringList allItems()
{
    QStringList items = defaultItems();
    items.removeDuplicates();
    items.insert(items.indexOf(flexibleSpaceItem), spaceItem);
    return items;
}

bool isRepeatable(const QString &identifier)
{
    return identifier == separatorItem || identifier == spaceItem || identifier == flexibleSpaceItem;
}

QString itemTitle(const QString &identifier)
{
    if (identifier == separatorItem)
        return tr("Separator");
    if (identifier == spaceItem)
        return tr("Space");
    if (identifier == flexibleSpaceItem)
        return tr("Flexible Space");
    if (identifier == identifierOf(CommandId::changeBrowserLayout))
        return tr("Layout");
    if (identifier == identifierOf(CommandId::changeThumbnailFileSort))
        return tr("Sort");
    if (const Command *command = CommandRegistry::shared().find(identifier))
        return command->title();
    return identifier;
}

Arrangement arrangement(const std::optional<QVariantMap> &configuration, QString *problem)
{
    if (problem)
        problem->clear();
    Arrangement arranged{defaultItems(), true};
    if (!configuration)
        return arranged;
    const auto fail = [&](const QString &reason) {
        if (problem)
            *problem = reason;
        return Arrangement{defaultItems(), true};
    };

    if (const QVariant items = configuration->value(itemsKey); items.isValid()) {
        if (items.typeId() != QMetaType::QStringList && items.typeId() != QMetaType::QVariantList)
            return fail(QStringLiteral("“%1” holds a value of type %2, not a list")
                            .arg(itemsKey, QLatin1String(items.typeName())));
        const QStringList known = allItems();
        QStringList identifiers;
        for (const QVariant &item : items.toList()) {
            if (item.typeId() != QMetaType::QString)
                return fail(QStringLiteral("“%1” holds a value of type %2, not an item's identifier")
                                .arg(itemsKey, QLatin1String(item.typeName())));
            const QString identifier = item.toString();
            if (!known.contains(identifier))
                return fail(QStringLiteral("“%1” names the unknown item “%2”").arg(itemsKey, identifier));
            if (identifiers.contains(identifier) && !isRepeatable(identifier))
                return fail(QStringLiteral("“%1” names the item “%2” twice").arg(itemsKey, identifier));
            identifiers.append(identifier);
        }
        if (identifiers.isEmpty())
            return fail(QStringLiteral("“%1” is empty").arg(itemsKey));
        arranged.items = identifiers;
    }
    if (const QVariant shown = configuration->value(shownKey); shown.isValid()) {
        if (shown.typeId() != QMetaType::Bool)
            return fail(QStringLiteral("“%1” holds a value of type %2, not a Boolean")
                            .arg(shownKey, QLatin1String(shown.typeName())));
        arranged.shown = shown.toBool();
    }
    return arranged;
}

QVariantMap configuration(const std::optional<QVariantMap> &configuration, const Arrangement &arranged)
{
    QString problem;
    arrangement(configuration, &problem);
    // One that cannot be read is replaced whole.
    QVariantMap written = configuration && problem.isEmpty() ? *configuration : QVariantMap();
    if (arranged.items == defaultItems())
        written.remove(itemsKey);
    else
        written.insert(itemsKey, arranged.items);
    written.insert(shownKey, arranged.shown);
    return written;
}

void build(ValidatingToolbar *toolbar, MainWindowViewController *window, const CommandRegistry &registry)
{
    Builder b{toolbar, window, registry};
    auto *arranger = new ToolbarArranger(toolbar, window);
    arranger->addItem(identifierOf(CommandId::back),
                      b.navigation(CommandId::back, "go-previous", QStyle::SP_ArrowBack));
    arranger->addItem(identifierOf(CommandId::forward),
                      b.navigation(CommandId::forward, "go-next", QStyle::SP_ArrowForward));
    arranger->addItem(identifierOf(CommandId::changeBaseUpOneLevel),
                      b.navigation(CommandId::changeBaseUpOneLevel, "go-up", QStyle::SP_ArrowUp));
    arranger->addItem(identifierOf(CommandId::changeBrowserLayout), b.layouts());
    arranger->addItem(identifierOf(CommandId::changeThumbnailFileSort), b.sort());
    arranger->addItem(identifierOf(CommandId::changeThumbnailFileFilter), b.filter());
    arranger->addItem(identifierOf(CommandId::thumbnailViewSearch), b.search());
    arranger->arrange();
    QObject::connect(window->windowSettings().get(), &WindowSettings::toolbarConfigurationChanged, arranger,
                     &ToolbarArranger::arrange);

    // The toolbar's own commands, on a right click anywhere on it but in the search field.
    toolbar->setContextMenuPolicy(Qt::CustomContextMenu);
    QObject::connect(toolbar, &QWidget::customContextMenuRequested, toolbar, [b, toolbar](const QPoint &position) {
        QMenu menu(toolbar);
        menu.addAction(b.action(CommandId::toggleToolbarShown, {}, {}, &menu));
        menu.addAction(b.action(CommandId::runToolbarCustomizationPalette, {}, {}, &menu));
        menu.exec(toolbar->mapToGlobal(position));
    });
}

void toggleShown(MainWindowViewController *window)
{
    WindowSettings &settings = *window->windowSettings();
    Arrangement arranged = arrangement(settings.toolbarConfiguration(), nullptr);
    arranged.shown = !arranged.shown;
    settings.setToolbarConfiguration(configuration(settings.toolbarConfiguration(), arranged));
}

bool isShown(const MainWindowViewController *window)
{
    return arrangement(window->windowSettings()->toolbarConfiguration(), nullptr).shown;
}

void runCustomizationPalette(MainWindowViewController *window)
{
    if (window->findChild<ToolbarCustomizationDialog *>())
        return; // open already
    auto *dialog =
        new ToolbarCustomizationDialog(arrangement(window->windowSettings()->toolbarConfiguration(), nullptr).items,
                                       window);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    const QPointer<MainWindowViewController> target(window);
    QObject::connect(dialog, &QDialog::accepted, window, [target, dialog] {
        if (!target)
            return;
        WindowSettings &settings = *target->windowSettings();
        Arrangement arranged = arrangement(settings.toolbarConfiguration(), nullptr);
        arranged.items = dialog->items();
        settings.setToolbarConfiguration(configuration(settings.toolbarConfiguration(), arranged));
    });
    dialog->open();
}

} // namespace MainToolbarBuilder
