#include "ui/windows/ThumbnailContextMenu.h"

#include "core/app/Translate.h"
#include "ui/browser/ThumbnailsActionHandler.h"
#include "ui/browser/ThumbnailsViewController.h"
#include "ui/windows/CommandAction.h"
#include "ui/windows/CommandRegistry.h"
#include "ui/windows/FileMenus.h"

#include <QMenu>
#include <QPointer>

namespace {

constexpr Translator tr("ThumbnailsViewController");

struct Builder
{
    ThumbnailsActionHandler *handler;
    const CommandRegistry &registry;

    // An item for the command and value, enabled as it validates on the pane, or on the
    // application for its own commands (Batch Rename). `title`: the item's own, when not the
    // command's.
    CommandAction *add(QMenu *menu, CommandId id, const QVariant &argument = {}, const QString &title = {}) const
    {
        const Command &command = registry.command(id);
        auto *action = new CommandAction(command, argument, title, menu);
        menu->addAction(action);
        QObject *owner = nullptr;
        switch (command.owner()) {
        case CommandOwner::pane: owner = handler; break;
        case CommandOwner::application: owner = registry.application(); break;
        default: break;
        }
        action->applyState(command.state(owner, argument));
        const QPointer<QObject> target(owner);
        ThumbnailsActionHandler *context = handler;
        QObject::connect(action, &QAction::triggered, handler, [context, target, &command, argument] {
            if (target)
                command.perform(target, argument, context->pane()->window());
        });
        return action;
    }

    FileMenus::AddItem adder() const
    {
        return [this](QMenu *menu, CommandId id, const QVariant &argument, const QString &title) -> QAction * {
            return add(menu, id, argument, title);
        };
    }

    QMenu *addFolderMenu(QMenu *menu, const QString &title, CommandId id, const char *name) const
    {
        QMenu *submenu = menu->addMenu(title);
        submenu->menuAction()->setObjectName(QLatin1String(name));
        FileMenus::fillFolders(submenu, id, adder());
        submenu->menuAction()->setEnabled(registry.command(id).state(handler, QString()).enabled);
        return submenu;
    }

    void addShared(QMenu *menu) const
    {
        addFolderMenu(menu, tr("Move To"), CommandId::moveToMenuAction, "moveToMenu");
        addFolderMenu(menu, tr("Copy To"), CommandId::copyToMenuAction, "copyToMenu");
        addFolderMenu(menu, tr("Alias To"), CommandId::aliasToMenuAction, "aliasToMenu");
        FileMenus::addLabelChooser(menu, tr("Tag:"), adder());
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
    FileMenus::fillOpenWith(openWith, selected, b.adder());
    openWith->menuAction()->setEnabled(!selected.isEmpty());
    b.add(menu, CommandId::performOpen);
    b.add(menu, CommandId::openInApp);
    b.add(menu, CommandId::openInCreator);
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
