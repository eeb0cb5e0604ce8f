#pragma once

#include "core/model/PXFileForward.h"

#include <QPointer>
#include <QWidget>

#include <functional>

class AppSettings;
class QListWidget;
class QPushButton;

// Edits one of the favourites lists of the settings, which the "Open With" and "Move To" menus
// show: favourite applications (added from the installed applications) or favourite folders
// (added through a folder chooser). Items can be added, removed and moved up or down; every edit
// is written to the settings at once, and a change of the list made elsewhere is shown at once.
// An item whose file is gone is shown greyed and kept.
class FavoritesEditor : public QWidget
{
    Q_OBJECT
public:
    enum class Kind { applications, folders };
    // Asks the user for a file to add and hands its path to `chosen` (never, if the user cancels).
    using Chooser = std::function<void(QWidget *parent, std::function<void(const QString &path)> chosen)>;

    FavoritesEditor(AppSettings *settings, Kind kind, QWidget *parent = nullptr);

    Kind kind() const { return m_kind; }
    // Replaces the chooser ("Add…"); the default asks through a dialog without blocking.
    void setChooser(Chooser chooser) { m_chooser = std::move(chooser); }

    // Appends the file at `path` unless it is listed already; answers whether it was added.
    bool addPath(const QString &path);
    void removeSelected();
    // Moves the selected item by `offset` places.
    void moveSelected(int offset);
    void selectRow(int row);
    int rowCount() const;
    // Puts the keyboard focus on the list, for the menus' "Edit Favorites…" commands.
    void focusList();

private:
    void add();
    void refresh();
    void updateButtons();

    QPointer<AppSettings> m_settings;
    Kind m_kind;
    Chooser m_chooser;
    QListWidget *m_list;
    QPushButton *m_add;
    QPushButton *m_remove;
    QPushButton *m_up;
    QPushButton *m_down;
};
