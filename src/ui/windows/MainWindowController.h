#pragma once

#include "core/model/PXFileForward.h"
#include "core/settings/WindowSettings.h"

#include <QObject>
#include <QPointer>

class TabbedWindow;
class MainWindowHost;
class MainWindowViewController;
class WindowManager;

// One main window: its own window settings (a duplicate made for it), the view controller that
// lays out sidebar, browser and inspector, and the tabbed window (top-level window) whose tab it is.
//
// Closing writes the window's layout into its settings, tells the manager that created it, and
// makes these settings the only saved window settings, so that the window closed last is the one
// the next start opens like. The settings file is written with the next save.
class MainWindowController : public QObject
{
    Q_OBJECT
public:
    // `file`: a folder to show, or a file whose folder to show; null keeps the settings' place.
    // `host`: what the window asks of the program around it; may be null.
    MainWindowController(WindowSettingsPtr settings, WindowManager *delegate, MainWindowHost *host,
                         const PXFilePtr &file = {}, QObject *parent = nullptr);
    ~MainWindowController() override;

    const WindowSettingsPtr &windowSettings() const { return m_windowSettings; }
    MainWindowViewController *mainViewController() const;
    TabbedWindow *tabbedWindow() const { return m_tabbedWindow; }
    void setTabbedWindow(TabbedWindow *window) { m_tabbedWindow = window; }

    bool isCurrentlyKey() const;
    bool isShown() const;
    bool isFullscreen() const;
    QString title() const;

    // Closes the window (its tab), once.
    void close();
    bool isClosed() const { return m_closed; }

Q_SIGNALS:
    void titleChanged(const QString &title);
    // Something that menu items and toolbar buttons depend on changed.
    void commandsChanged();
    void closed(MainWindowController *controller);

private:
    WindowSettingsPtr m_windowSettings;
    QPointer<MainWindowViewController> m_mainViewController; // a child of its tabbed window while it has one
    WindowManager *m_delegate;
    QPointer<TabbedWindow> m_tabbedWindow;
    bool m_closed = false;
};
