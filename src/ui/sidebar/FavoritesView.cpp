#include "ui/sidebar/FavoritesView.h"

#include "core/model/PXFile.h"
#include "core/settings/AppSettings.h"
#include "ui/common/ThemeIcons.h"

#include <QContextMenuEvent>
#include <QHeaderView>
#include <QMenu>

namespace {
constexpr int bookmarkIndexRole = Qt::UserRole + 1;
}

FavoritesView::FavoritesView(AppSettings *settings, QWidget *parent)
    : QTreeWidget(parent)
    , m_settings(settings)
    , m_folders(new QTreeWidgetItem(this, {tr("Favorite Folders")}))
    , m_applications(new QTreeWidgetItem(this, {tr("Favorite Applications")}))
{
    setHeaderHidden(true);
    setRootIsDecorated(false);
    setIndentation(12);
    setFrameShape(QFrame::NoFrame);
    setUniformRowHeights(true);
    for (QTreeWidgetItem *group : {m_folders, m_applications}) {
        group->setFlags(Qt::ItemIsEnabled);
        QFont font = group->font(0);
        font.setBold(true);
        group->setFont(0, font);
    }
    rebuild();
    connect(m_settings, &AppSettings::favoriteFoldersChanged, this, &FavoritesView::rebuild);
    connect(m_settings, &AppSettings::favoriteAppsChanged, this, &FavoritesView::rebuild);
    connect(this, &QTreeWidget::itemActivated, this, &FavoritesView::activate);
}

void FavoritesView::rebuild()
{
    const QIcon &folderIcon = ThemeIcons::folder();
    const QIcon appIcon = QIcon::fromTheme(QStringLiteral("application-x-executable"));
    const auto fill = [](QTreeWidgetItem *group, const QList<FileBookmark> &bookmarks, const QIcon &icon,
                         const QString &emptyText) {
        qDeleteAll(group->takeChildren());
        for (int i = 0; i < bookmarks.size(); ++i) {
            auto *item = new QTreeWidgetItem(group, {bookmarks[i].title()});
            item->setIcon(0, icon);
            item->setToolTip(0, bookmarks[i].file->path());
            item->setData(0, bookmarkIndexRole, i);
            if (!bookmarks[i].resolves())
                item->setDisabled(true);
        }
        if (bookmarks.isEmpty()) {
            auto *item = new QTreeWidgetItem(group, {emptyText});
            item->setFlags(Qt::NoItemFlags);
        }
        group->setExpanded(true);
    };
    fill(m_folders, m_settings->favoriteFolders(), folderIcon, tr("Add folders from the tree's menu"));
    fill(m_applications, m_settings->favoriteApps(), appIcon, tr("No favorite applications"));
}

void FavoritesView::activate(QTreeWidgetItem *item)
{
    if (!item || !item->data(0, bookmarkIndexRole).isValid())
        return;
    const int index = item->data(0, bookmarkIndexRole).toInt();
    if (item->parent() == m_folders && index < m_settings->favoriteFolders().size())
        Q_EMIT folderActivated(m_settings->favoriteFolders()[index].file);
    else if (item->parent() == m_applications && index < m_settings->favoriteApps().size())
        Q_EMIT applicationActivated(m_settings->favoriteApps()[index].file);
}

void FavoritesView::addFavoriteFolder(const PXFilePtr &folder)
{
    QList<FileBookmark> folders = m_settings->favoriteFolders();
    for (const FileBookmark &bookmark : folders) {
        if (bookmark.file == folder)
            return;
    }
    folders.append(FileBookmark{folder, {}});
    m_settings->setFavoriteFolders(folders);
}

void FavoritesView::removeFavorite(QTreeWidgetItem *item)
{
    const int index = item->data(0, bookmarkIndexRole).toInt();
    if (item->parent() == m_folders) {
        QList<FileBookmark> folders = m_settings->favoriteFolders();
        if (index < folders.size()) {
            folders.removeAt(index);
            m_settings->setFavoriteFolders(folders);
        }
    } else {
        QList<FileBookmark> apps = m_settings->favoriteApps();
        if (index < apps.size()) {
            apps.removeAt(index);
            m_settings->setFavoriteApps(apps);
        }
    }
}

void FavoritesView::contextMenuEvent(QContextMenuEvent *event)
{
    QTreeWidgetItem *item = itemAt(viewport()->mapFromGlobal(event->globalPos()));
    if (!item || !item->data(0, bookmarkIndexRole).isValid())
        return;
    QMenu menu(this);
    menu.addAction(tr("Open"), this, [this, item] { activate(item); });
    menu.addAction(tr("Remove from Favorites"), this, [this, item] { removeFavorite(item); });
    menu.exec(event->globalPos());
}
