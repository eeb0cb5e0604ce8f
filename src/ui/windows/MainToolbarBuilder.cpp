#include "ui/windows/MainToolbarBuilder.h"

#include "core/app/Translate.h"
#include "core/model/FileSortTypes.h"
#include "core/settings/SettingsValueSets.h"
#include "ui/common/ThemeIcons.h"
#include "ui/windows/CommandAction.h"
#include "ui/windows/CommandRegistry.h"
#include "ui/windows/MainWindowActionHandler.h"
#include "ui/windows/MainWindowViewController.h"
#include "ui/windows/ValidatingToolbar.h"

#include <QActionGroup>
#include <QLineEdit>
#include <QMenu>
#include <QToolButton>

namespace {

constexpr Translator tr("MainToolbar");

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
    CommandAction *button(CommandId id, const QIcon &icon, const QVariant &argument = {}, const QString &title = {})
    {
        CommandAction *item = action(id, argument, title, toolbar);
        item->setIcon(icon);
        item->setToolTip(item->text());
        toolbar->addButton(item);
        MainWindowViewController *target = window;
        const Command &command = registry.command(id);
        QObject::connect(window, &MainWindowViewController::commandsChanged, item, [target, item, &command] {
            item->applyState(target->commandState(command, item->argument()));
        });
        return item;
    }

    // A button with a menu of the values of a choice, checked to the window's state as it opens.
    QMenu *menuButton(const QIcon &icon, const QString &text, CommandId id, int count, QString (*titleOf)(int))
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
        return menu;
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
};

} // namespace

namespace MainToolbarBuilder {

void build(ValidatingToolbar *toolbar, MainWindowViewController *window, const CommandRegistry &registry)
{
    Builder b{toolbar, window, registry};
    b.button(CommandId::back, ThemeIcons::icon(QStringLiteral("go-previous"), QStyle::SP_ArrowBack));
    b.button(CommandId::forward, ThemeIcons::icon(QStringLiteral("go-next"), QStyle::SP_ArrowForward));
    b.button(CommandId::changeBaseUpOneLevel, ThemeIcons::icon(QStringLiteral("go-up"), QStyle::SP_ArrowUp));
    toolbar->addSeparator();

    // Layout: three exclusive buttons.
    auto *layoutGroup = new QActionGroup(toolbar);
    // Icon names of the freedesktop themes first, then those of the symbolic themes.
    const QList<std::tuple<BrowserLayout, const char *, const char *, QString>> layouts = {
        {BrowserLayout::noPreview, "view-grid", "view-grid-symbolic", tr("Thumbnails Only")},
        {BrowserLayout::topPreview, "view-split-top-bottom", "view-continuous-symbolic", tr("Preview on Top")},
        {BrowserLayout::rightPreview, "view-split-left-right", "view-dual-symbolic", tr("Preview on Right")},
    };
    for (const auto &[layout, iconName, symbolicName, title] : layouts) {
        const QIcon icon = QIcon::fromTheme(QLatin1String(iconName), QIcon::fromTheme(QLatin1String(symbolicName)));
        layoutGroup->addAction(b.button(CommandId::changeBrowserLayout, icon, int(layout), title));
    }
    toolbar->addSeparator();

    // Sort and filter: buttons with their menus.
    QMenu *sortMenu = b.menuButton(QIcon::fromTheme(QStringLiteral("view-sort-ascending")), tr("Sort"),
                                   CommandId::changeThumbnailFileSort, valueSetCount<FileSortType>(),
                                   [](int raw) { return fileSortTypeTitle(FileSortType(raw)); });
    sortMenu->addSeparator();
    sortMenu->addAction(b.action(CommandId::changeThumbnailReverseSort, {}, {}, sortMenu));
    b.menuButton(QIcon::fromTheme(QStringLiteral("view-filter")), tr("Show"), CommandId::changeThumbnailFileFilter,
                 valueSetCount<FileFilterType>(), [](int raw) { return fileFilterTypeTitle(FileFilterType(raw)); });

    auto *spacer = new QWidget(toolbar);
    spacer->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Preferred);
    toolbar->addWidget(spacer, 1);

    // Search: the field, with the category chooser in front of it.
    auto *categoryButton = new QToolButton(toolbar);
    categoryButton->setPopupMode(QToolButton::InstantPopup);
    categoryButton->setToolButtonStyle(Qt::ToolButtonTextOnly);
    categoryButton->setToolTip(tr("What the search matches"));
    auto *categories = new QMenu(categoryButton);
    auto *categoryGroup = new QActionGroup(categories);
    for (ThumbnailsSearchType type : {ThumbnailsSearchType::filename, ThumbnailsSearchType::kind,
                                      ThumbnailsSearchType::label, ThumbnailsSearchType::camera}) {
        CommandAction *item =
            b.action(CommandId::setThumbnailViewSearchCategory, int(type), thumbnailsSearchTypeTitle(type), categories);
        categories->addAction(categoryGroup->addAction(item));
        if (item->isChecked())
            categoryButton->setText(item->text());
    }
    b.validateOnShow(categories);
    categoryButton->setMenu(categories);
    toolbar->addWidget(categoryButton);
    auto *searchField = new QLineEdit(toolbar);
    searchField->setPlaceholderText(tr("Search"));
    searchField->setClearButtonEnabled(true);
    searchField->setMaximumWidth(240);
    searchField->addAction(QIcon::fromTheme(QStringLiteral("edit-find")), QLineEdit::LeadingPosition);
    toolbar->addWidget(searchField);
    window->actionHandler()->setSearchWidgets(searchField, categoryButton);
    const Command &search = registry.command(CommandId::thumbnailViewSearch);
    QObject::connect(searchField, &QLineEdit::textChanged, window,
                     [window, &search](const QString &text) { window->performCommand(search, text); });
}

} // namespace MainToolbarBuilder
