#include "ui/browser/ThumbnailsSettingsBinding.h"

#include "core/model/FileCollectionModel.h"
#include "core/settings/AppSettings.h"
#include "core/settings/WindowSettings.h"
#include "ui/browser/ThumbnailGridView.h"

#include <QLabel>
#include <QPointer>

namespace ThumbnailsSettingsBinding {

void bindCollection(WindowSettings *settings, FileCollectionModel *collection)
{
    // The connections end with the collection or the settings, so both are alive when they fire.
    const auto apply = [settings, collection] {
        collection->setFileSort(settings->thumbnailsFileSort());
        collection->setFolderSort(settings->thumbnailsFolderSort());
        collection->setReverseSort(settings->thumbnailsReverseSort());
        collection->setFileFilter(settings->thumbnailsFileFilter());
        collection->setExcludeFolders(settings->thumbnailsHideFolders());
        collection->setFolderDepth(settings->thumbnailsFolderSearchDepth());
    };
    QObject::connect(settings, &WindowSettings::thumbnailsFileSortChanged, collection, apply);
    QObject::connect(settings, &WindowSettings::thumbnailsFolderSortChanged, collection, apply);
    QObject::connect(settings, &WindowSettings::thumbnailsReverseSortChanged, collection, apply);
    QObject::connect(settings, &WindowSettings::thumbnailsFileFilterChanged, collection, apply);
    QObject::connect(settings, &WindowSettings::thumbnailsHideFoldersChanged, collection, apply);
    QObject::connect(settings, &WindowSettings::thumbnailsFolderSearchDepthChanged, collection, apply);
    apply();
}

void bindGrid(AppSettings *settings, ThumbnailGridView *grid, QLabel *notice)
{
    grid->setClickToRename(!settings->thumbnailsRenameOnlyOnEnter());
    QObject::connect(settings, &AppSettings::thumbnailsRenameOnlyOnEnterChanged, grid,
                     [grid](bool onlyOnEnter) { grid->setClickToRename(!onlyOnEnter); });

    // The notice belongs to the grid's pane; it may still go first.
    const auto apply = [settings, grid, notice = QPointer<QLabel>(notice)] {
        ThumbnailGridAppearance appearance;
        appearance.backgroundColor = settings->thumbnailBackgroundColor();
        appearance.textColor = settings->thumbnailTextColor();
        appearance.outline = settings->thumbnailsHaveOutline();
        appearance.outlineColor = settings->thumbnailOutlineColor();
        appearance.outlineThickness = settings->thumbnailOutlineThickness();
        appearance.shadow = settings->thumbnailsHaveShadow();
        appearance.alignToBottom = settings->thumbnailsAlignToBottom();
        grid->setAppearance(appearance);
        if (notice) {
            QPalette palette = notice->palette();
            palette.setColor(QPalette::WindowText, appearance.textColor);
            notice->setPalette(palette);
        }
    };
    QObject::connect(settings, &AppSettings::thumbnailsHaveOutlineChanged, grid, apply);
    QObject::connect(settings, &AppSettings::thumbnailOutlineColorChanged, grid, apply);
    QObject::connect(settings, &AppSettings::thumbnailOutlineThicknessChanged, grid, apply);
    QObject::connect(settings, &AppSettings::thumbnailsHaveShadowChanged, grid, apply);
    QObject::connect(settings, &AppSettings::thumbnailTextColorChanged, grid, apply);
    QObject::connect(settings, &AppSettings::thumbnailBackgroundColorChanged, grid, apply);
    QObject::connect(settings, &AppSettings::thumbnailsAlignToBottomChanged, grid, apply);
    apply();
}

} // namespace ThumbnailsSettingsBinding
