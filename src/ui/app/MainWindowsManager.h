#pragma once

#include "core/model/PXFileForward.h"
#include "core/settings/WindowSettings.h"
#include "ui/windows/MainWindowHost.h"
#include "ui/windows/WindowManager.h"

#include <QList>
#include <QObject>
#include <QPointer>

class AppSettings;
class MainWindowController;
class TabbedWindow;

// Keeps the open main windows alive, in the order they were opened, and opens new ones: each gets
// its own duplicate of the front window's settings, else of the first saved window settings, else
// of the defaults. A new window joins the front window's tabbed window as a tab when asked to. It is the
// windows' host: their warnings and selections go to the shared managers.
//
// The saved list of window settings follows the open windows, the most recently opened first, so
// that every save holds each open window as it is and the first entry, which the next start opens
// like, is the window a quit would close last. With no window open the list keeps the window
// closed last.
class MainWindowsManager : public QObject, public WindowManager, public MainWindowHost
{
    Q_OBJECT
public:
    explicit MainWindowsManager(AppSettings *settings, QObject *parent = nullptr);
    ~MainWindowsManager() override;

    static MainWindowsManager &shared();
    static void setShared(MainWindowsManager *manager); // not owned; null goes back to the process's own

    const QList<MainWindowController *> &windowControllers() const { return m_windowControllers; }
    // The main window whose tabbed window is in front (the active one, else the most recently raised).
    MainWindowController *frontMainWindow() const;
    // Opens a main window showing `file` (a folder: that folder; a file: its folder), else the
    // template's place.
    MainWindowController *newMainWindow(const PXFilePtr &file = {}, bool asTab = false);
    bool hasVisibleWindows() const;
    // Closes every main window in list order; each writes its settings as it closes.
    void closeAll();

    void windowControllerWillClose(QObject *controller) override;
    void folderDepthIncreased(QWidget *window) override;
    void thumbnailSelectionChanged(const QList<PXFilePtr> &files) override;
    void openInViewer(const PXFilePtr &file, const QList<PXFilePtr> &set) override;
    void startSlideshow(const QList<PXFilePtr> &sources) override;

Q_SIGNALS:
    void windowControllersChanged();

private:
    void publishWindowSettings();

    AppSettings *m_settings;
    QList<MainWindowController *> m_windowControllers;
};
