#include "ui/windows/ThumbnailContextMenu.h"

#include "core/app/Translate.h"
#include "core/settings/AppSettings.h"
#include "core/settings/FileBookmark.h"
#include "core/settings/SettingsManager.h"
#include "ui/browser/ThumbnailsActionHandler.h"
#include "ui/browser/ThumbnailsViewController.h"
#include "ui/windows/CommandAction.h"
#include "ui/windows/CommandRegistry.h"

#include <QMenu>

#include <iterator>

namespace {

constexpr Translator tr("ThumbnailsViewController");

struct Builder
{
    ThumbnailsActionHandler *handler;
    const CommandRegistry &registry;

    // An item for the command and value, enabled as it validates on the pane (the application's
    // commands here are all unavailable yet). `title`: the item's own, when not the command's.
    CommandAction *add(QMenu *menu, CommandId id, const QVariant &argument = {}, const QString &title = {}) const
    {
        const Command &command = registry.command(id);
        auto *action = new CommandAction(command, argument, title, menu);
        menu->addAction(action);
        const QObject *owner = command.owner() == CommandOwner::pane ? handler : nullptr;
        action->applyState(command.state(owner, argument));
        ThumbnailsActionHandler *target = handler;
        QObject::connect(action, &QAction::triggered, handler,
                         [target, &command, argument] { command.perform(target, argument); });
        return action;
    }

    void addShared(QMenu *menu) const
    {
        QMenu *moveTo = menu->addMenu(tr("Move To"));
        moveTo->menuAction()->setObjectName(QStringLiteral("moveToMenu"));
        if (AppSettings *app = SettingsManager::shared().settings()) {
            for (const FileBookmark &bookmark : app->favoriteFolders()) {
                if (bookmark.resolves())
                    add(moveTo, CommandId::moveToMenuAction, bookmark.file->path(), bookmark.title());
            }
        }
        // Moving runs as an activity, which the pane does not start yet.
        moveTo->menuAction()->setEnabled(false);

        QMenu *tag = menu->addMenu(tr("Tag:"));
        tag->menuAction()->setObjectName(QStringLiteral("changeFinderLabel"));
        const char *colours[] = {"Red", "Orange", "Yellow", "Green", "Blue", "Purple", "Gray"};
        for (int i = 0; i < int(std::size(colours)); ++i)
            add(tag, CommandId::changeFinderLabel, i, tr(colours[i]));
        tag->menuAction()->setEnabled(false);
    }
};

} // namespace

namespace ThumbnailContextMenu {

QMenu *build(ThumbnailsActionHandler *handler, bool onItems, const CommandRegistry &registry)
{
    ThumbnailsViewController *pane = handler->pane();
    const Builder b{handler, registry};
    auto *menu = new QMenu(pane);
    menu->setObjectName(QStringLiteral("Thumbnail Pane Menu"));
    menu->setTitle(tr("Thumbnail Pane Menu"));
    const QList<PXFilePtr> selected = pane->selectedFiles();

    if (!onItems) {
        b.add(menu, CommandId::newFolder)->setVisible(handler->canMakeFolder());
        if (pane->fileCount() > 0) {
            b.add(menu, CommandId::openRenameWindow, {}, tr("Batch Rename"));
            b.add(menu, CommandId::startSlideshowInFolder);
            // The shown folders themselves, whatever is selected.
            auto *reveal = new CommandAction(registry.command(CommandId::revealInFileManager), {}, {}, menu);
            menu->addAction(reveal);
            QObject::connect(reveal, &QAction::triggered, handler, [handler] {
                handler->deselectAll();
                handler->revealInFileManager();
            });
        }
        menu->addSeparator();
        b.addShared(menu);
        return menu;
    }

    QMenu *openWith = menu->addMenu(tr("Open With"));
    openWith->menuAction()->setObjectName(QStringLiteral("openWithMenu"));
    if (AppSettings *app = SettingsManager::shared().settings()) {
        for (const FileBookmark &bookmark : app->favoriteApps()) {
            if (bookmark.resolves())
                b.add(openWith, CommandId::openWithMenuAction, bookmark.file->path(), bookmark.title());
        }
    }
    openWith->menuAction()->setEnabled(!openWith->isEmpty());
    b.add(menu, CommandId::performOpen);
    b.add(menu, CommandId::openInApp);
    menu->addSeparator();
    b.add(menu, CommandId::startSlideshow);
    menu->addSeparator();
    if (selected.size() == 1)
        b.add(menu, CommandId::renameFile);
    b.add(menu, CommandId::revealInFileManager);
    bool anyLink = false;
    bool anyVolume = false;
    bool anyImage = false;
    bool allVolumes = !selected.isEmpty();
    for (const PXFilePtr &file : selected) {
        anyLink = anyLink || file->isSymbolicLink();
        anyVolume = anyVolume || file->isVolumeRoot();
        allVolumes = allVolumes && file->isVolumeRoot();
        anyImage = anyImage || file->isImage();
    }
    if (anyLink)
        b.add(menu, CommandId::revealOriginal);
    b.add(menu, CommandId::makeAlias);
    b.add(menu, CommandId::duplicate);
    b.add(menu, CommandId::openRenameWindow, {}, tr("Batch Rename"));
    menu->addSeparator();
    if (anyVolume)
        b.add(menu, CommandId::ejectSelected);
    if (!allVolumes)
        b.add(menu, CommandId::moveToTrash);
    if (anyImage) {
        menu->addSeparator();
        b.add(menu, CommandId::rotateClockwisePermanent);
        b.add(menu, CommandId::rotateCounterclockwisePermanent);
    }
    menu->addSeparator();
    b.add(menu, CommandId::newFolder);
    menu->addSeparator();
    b.addShared(menu);
    return menu;
}

} // namespace ThumbnailContextMenu
