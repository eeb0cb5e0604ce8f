#pragma once

#include "core/model/PXFileForward.h"
#include "core/settings/WindowSettings.h"
#include "core/windows/NavigationHistory.h"
#include "ui/common/Command.h"

#include <QList>
#include <QWidget>

class BrowserViewController;
class InspectorViewController;
class MainWindowActionHandler;
class MainWindowHost;
class PathBar;
class QLabel;
class QSlider;
class QSplitter;
class QTimer;
class SidebarViewController;
class ThumbnailsViewController;
class ValidatingToolbar;

// Lays out one main window: the toolbar, the sidebar | browser | inspector split, the path bar
// and the bottom bar with the status line and the folder-depth and thumbnail-size sliders. It
// runs the commands of its content (its action handler's) and of its thumbnail pane, follows the
// window settings so that a change from anywhere shows at once, and keeps the navigation history
// from the sidebar's places.
//
// The browser's split keeps its leading pane (the grid beside the preview, the preview above the
// grid) at the window's split position for that layout, in points, whenever the browser is laid
// out or resized; the trailing pane takes the rest. A position that does not fit is shown
// clamped and kept as it was; dragging the divider writes the new one.
class MainWindowViewController : public QWidget
{
    Q_OBJECT
public:
    // `file`: a folder to show, or a file whose folder to show; null keeps the settings' place.
    // `host`: may be null (no folder-depth warning, the selection goes nowhere else).
    MainWindowViewController(WindowSettingsPtr settings, MainWindowHost *host, const PXFilePtr &file = {},
                             QWidget *parent = nullptr);
    ~MainWindowViewController() override;

    const WindowSettingsPtr &windowSettings() const { return m_windowSettings; }
    SidebarViewController *sidebarViewController() const { return m_sidebarViewController; }
    BrowserViewController *browserViewController() const { return m_browserViewController; }
    InspectorViewController *inspectorViewController() const { return m_inspectorViewController; }
    ThumbnailsViewController *thumbnailsViewController() const;
    MainWindowActionHandler *actionHandler() const { return m_actionHandler; }
    const NavigationHistory &navigationHistory() const { return m_navigationHistory; }
    PathBar *pathBar() const { return m_pathBar; }
    ValidatingToolbar *toolbar() const { return m_toolbar; }
    // The browser's split between the grid and the preview.
    QSplitter *browserSplitView() const { return m_browserSplitView; }
    QSlider *folderDepthSlider() const { return m_folderDepthSlider; }
    QSlider *thumbnailSizeSlider() const { return m_thumbnailSizeSlider; }
    QLabel *statusBarText() const { return m_statusBarText; }
    QList<PXFilePtr> selectedFiles() const { return m_lastThumbnailViewSelection; }

    QString title() const;
    // Runs a command of this window or of its thumbnail pane; false when it is disabled (or
    // belongs to another owner).
    bool performCommand(const Command &command, const QVariant &argument = {});
    CommandState commandState(const Command &command, const QVariant &argument = {}) const;
    // Shows the place `step` places back (< 0) or forward in the navigation history.
    void goBackOrForward(int step);
    // Pane sizes into the window settings (when the window closes).
    void writeLayoutToSettings();

Q_SIGNALS:
    void titleChanged(const QString &title);
    void commandsChanged();

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void connectFlagsAndErrors();
    QWidget *buildBottomBar();
    void observeSettings();
    void applyPaneVisibility();
    void applySplitSizes();
    void applyBrowserSplitPosition();
    void browserSplitterMoved();
    void sourcesChanged(const QList<PXFilePtr> &sources);
    void recordPlace();
    void thumbnailSelectionChanged(const QList<PXFilePtr> &files);
    void openFiles(const QList<PXFilePtr> &files);
    void showNearestExistingParent(const PXFilePtr &folder, const QString &reason);
    QObject *ownerObject(CommandOwner owner) const;
    void showStatus(const QString &text);
    // A message that stays over the status line for a while.
    void showNotice(const QString &text);

    WindowSettingsPtr m_windowSettings;
    MainWindowHost *m_host;
    MainWindowActionHandler *m_actionHandler;
    NavigationHistory m_navigationHistory;
    ValidatingToolbar *m_toolbar = nullptr;
    QWidget *m_toolbarDivider = nullptr;
    QSplitter *m_primarySplitView = nullptr;
    QSplitter *m_browserSplitView = nullptr;
    SidebarViewController *m_sidebarViewController = nullptr;
    BrowserViewController *m_browserViewController = nullptr;
    InspectorViewController *m_inspectorViewController = nullptr;
    PathBar *m_pathBar = nullptr;
    QLabel *m_statusBarText = nullptr;
    QString m_statusText;
    QTimer *m_noticeTimer = nullptr;
    QSlider *m_folderDepthSlider = nullptr;
    QSlider *m_thumbnailSizeSlider = nullptr;
    QList<PXFilePtr> m_lastThumbnailViewSelection;
    QList<PXFilePtr> m_sources;
    bool m_layoutComplete = false;
};
