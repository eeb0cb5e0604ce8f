#pragma once

#include "core/model/PXFileForward.h"

#include <QTreeWidget>

class AppSettings;

// The favourites list under the sidebar's tree: the favourite folders and the favourite
// applications, each a group, kept in step with the application settings (every window shows
// the same lists). Activating a folder makes it the sidebar's root; activating an application
// opens the window's selection with it. A bookmark whose file is gone is shown dimmed.
class FavoritesView : public QTreeWidget
{
    Q_OBJECT
public:
    explicit FavoritesView(AppSettings *settings, QWidget *parent = nullptr);

    void addFavoriteFolder(const PXFilePtr &folder);

Q_SIGNALS:
    void folderActivated(const PXFilePtr &folder);
    void applicationActivated(const PXFilePtr &application);

protected:
    void contextMenuEvent(QContextMenuEvent *event) override;

private:
    void rebuild();
    void activate(QTreeWidgetItem *item);
    void removeFavorite(QTreeWidgetItem *item);

    AppSettings *m_settings;
    QTreeWidgetItem *m_folders;
    QTreeWidgetItem *m_applications;
};
