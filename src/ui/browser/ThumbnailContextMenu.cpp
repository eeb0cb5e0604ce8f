#include "ui/browser/ThumbnailContextMenu.h"

#include "core/app/Translate.h"
#include "core/model/PXFile.h"
#include "core/settings/AppSettings.h"
#include "core/settings/FileBookmark.h"
#include "core/settings/SettingsManager.h"
#include "ui/browser/ThumbnailsViewController.h"

#include <QMenu>

namespace {
constexpr Translator tr("ThumbnailsViewController");

// Adds a command that runs `slot` of the pane when it validates.
QAction *addCommand(QMenu *menu, ThumbnailsViewController *controller, const QString &title, const char *slotName,
                    void (ThumbnailsViewController::*slot)())
{
    QAction *action = menu->addAction(title);
    action->setObjectName(QLatin1String(slotName));
    action->setEnabled(controller->validateAction(QLatin1String(slotName)));
    QObject::connect(action, &QAction::triggered, controller, slot);
    return action;
}

QAction *addDisabled(QMenu *menu, const QString &title, const char *name)
{
    QAction *action = menu->addAction(title);
    action->setObjectName(QLatin1String(name));
    action->setEnabled(false);
    return action;
}

void addShared(QMenu *menu)
{
    QMenu *moveTo = menu->addMenu(tr("Move To"));
    moveTo->menuAction()->setObjectName(QStringLiteral("moveToMenu"));
    if (AppSettings *app = SettingsManager::shared().settings()) {
        for (const FileBookmark &bookmark : app->favoriteFolders()) {
            if (bookmark.resolves())
                moveTo->addAction(bookmark.title())->setEnabled(false);
        }
    }
    // Moving runs as an activity, which the pane does not start yet.
    moveTo->menuAction()->setEnabled(false);

    QMenu *tag = menu->addMenu(tr("Tag:"));
    tag->menuAction()->setObjectName(QStringLiteral("changeFinderLabel"));
    for (const char *colour : {"Red", "Orange", "Yellow", "Green", "Blue", "Purple", "Gray"})
        tag->addAction(tr(colour))->setEnabled(false);
    tag->menuAction()->setEnabled(false);
}
} // namespace

QMenu *buildThumbnailContextMenu(ThumbnailsViewController *controller, bool onItems)
{
    auto *menu = new QMenu(controller);
    menu->setObjectName(QStringLiteral("Thumbnail Pane Menu"));
    menu->setTitle(tr("Thumbnail Pane Menu"));
    const QList<PXFilePtr> selected = controller->selectedFiles();

    if (!onItems) {
        addCommand(menu, controller, tr("New Folder"), "newFolder", &ThumbnailsViewController::newFolder)
            ->setVisible(controller->validateAction(QStringLiteral("newFolder")));
        if (!controller->files().isEmpty()) {
            addDisabled(menu, tr("Batch Rename"), "openRenameWindow");
            addDisabled(menu, tr("Slideshow With Contents"), "startSlideshowInFolder");
            QAction *reveal = menu->addAction(tr("Show in File Manager"));
            reveal->setObjectName(QStringLiteral("revealInFinder"));
            QObject::connect(reveal, &QAction::triggered, controller, [controller] {
                controller->deselectAll();
                controller->revealInFinder();
            });
        }
        menu->addSeparator();
        addShared(menu);
        return menu;
    }

    QMenu *openWith = menu->addMenu(tr("Open With"));
    openWith->menuAction()->setObjectName(QStringLiteral("openWithMenu"));
    if (AppSettings *app = SettingsManager::shared().settings()) {
        for (const FileBookmark &bookmark : app->favoriteApps()) {
            if (!bookmark.resolves())
                continue;
            const PXFilePtr application = bookmark.file;
            QObject::connect(openWith->addAction(bookmark.title()), &QAction::triggered, controller,
                             [controller, application] { controller->openWithApplication(application); });
        }
    }
    openWith->menuAction()->setEnabled(!openWith->isEmpty());
    addCommand(menu, controller, tr("Open"), "performOpen", &ThumbnailsViewController::performOpen);
    addCommand(menu, controller, tr("Open in Default App"), "openInApp", &ThumbnailsViewController::openInApp);
    menu->addSeparator();
    addDisabled(menu, tr("Slideshow With Selected"), "startSlideshow");
    menu->addSeparator();
    if (selected.size() == 1)
        addCommand(menu, controller, tr("Edit Filename"), "renameFile", &ThumbnailsViewController::renameFile);
    addCommand(menu, controller, tr("Show in File Manager"), "revealInFinder",
               &ThumbnailsViewController::revealInFinder);
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
        addDisabled(menu, tr("Reveal Original"), "revealOriginal");
    addCommand(menu, controller, tr("Make Alias"), "makeAlias", &ThumbnailsViewController::makeAlias);
    addCommand(menu, controller, tr("Duplicate"), "duplicate", &ThumbnailsViewController::duplicate);
    addDisabled(menu, tr("Batch Rename"), "openRenameWindow");
    menu->addSeparator();
    if (anyVolume)
        addDisabled(menu, tr("Eject"), "ejectSelected");
    if (!allVolumes)
        addCommand(menu, controller, tr("Move to Trash"), "moveToTrash", &ThumbnailsViewController::moveToTrash);
    if (anyImage) {
        menu->addSeparator();
        addDisabled(menu, tr("Rotate Clockwise"), "rotateClockwisePermanent");
        addDisabled(menu, tr("Rotate Counterclockwise"), "rotateCounterclockwisePermanent");
    }
    menu->addSeparator();
    addCommand(menu, controller, tr("New Folder"), "newFolder", &ThumbnailsViewController::newFolder);
    menu->addSeparator();
    addShared(menu);
    return menu;
}
