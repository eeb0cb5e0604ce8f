#pragma once

#include "core/model/FileSortTypes.h"
#include "core/model/PXFileForward.h"
#include "core/settings/WindowSettings.h"
#include "core/windows/NavigationHistory.h"
#include "ui/windows/CommandState.h"

#include <QList>
#include <QWidget>

class BrowserViewController;
class InspectorViewController;
class PathBar;
class QActionGroup;
class QLabel;
class QLineEdit;
class QSlider;
class QSplitter;
class QTimer;
class QToolButton;
class SidebarViewController;
class ThumbnailsViewController;
class ValidatingToolbar;

// Lays out one main window: the toolbar, the sidebar | browser | inspector split, the path bar
// and the bottom bar with the status line and the folder-depth and thumbnail-size sliders. It
// runs the window's commands (each changes the matching window setting, or goes to the
// thumbnails pane), follows the window settings so that a change from anywhere shows at once,
// and keeps the navigation history from the sidebar's places.
class MainWindowViewController : public QWidget
{
    Q_OBJECT
public:
    // `file`: a folder to show, or a file whose folder to show; null keeps the settings' place.
    MainWindowViewController(WindowSettingsPtr settings, const PXFilePtr &file = {}, QWidget *parent = nullptr);
    ~MainWindowViewController() override;

    const WindowSettingsPtr &windowSettings() const { return m_windowSettings; }
    SidebarViewController *sidebarViewController() const { return m_sidebarViewController; }
    BrowserViewController *browserViewController() const { return m_browserViewController; }
    InspectorViewController *inspectorViewController() const { return m_inspectorViewController; }
    ThumbnailsViewController *thumbnailsViewController() const;
    const NavigationHistory &navigationHistory() const { return m_navigationHistory; }
    PathBar *pathBar() const { return m_pathBar; }
    ValidatingToolbar *toolbar() const { return m_toolbar; }
    QSlider *folderDepthSlider() const { return m_folderDepthSlider; }
    QSlider *thumbnailSizeSlider() const { return m_thumbnailSizeSlider; }
    QLabel *statusBarText() const { return m_statusBarText; }
    QList<PXFilePtr> selectedFiles() const { return m_lastThumbnailViewSelection; }

    QString title() const;
    bool performCommand(const Command &command);
    CommandState commandState(const Command &command) const;
    // Pane sizes into the window settings (when the window closes).
    void writeLayoutToSettings();

Q_SIGNALS:
    void titleChanged(const QString &title);
    void commandsChanged();

private:
    void connectFlagsAndErrors();
    void buildToolbar();
    QWidget *buildBottomBar();
    void observeSettings();
    void applyPaneVisibility();
    void applySplitSizes();
    void sourcesChanged(const QList<PXFilePtr> &sources);
    void recordPlace();
    void goBackOrForward(int step);
    void thumbnailSelectionChanged(const QList<PXFilePtr> &files);
    void openFiles(const QList<PXFilePtr> &files);
    void showNearestExistingParent(const PXFilePtr &folder, const QString &reason);
    void chooseFolder();
    void changeFolderDepth(int depth);
    void showStatus(const QString &text);
    // A message that stays over the status line for a while.
    void showNotice(const QString &text);

    WindowSettingsPtr m_windowSettings;
    NavigationHistory m_navigationHistory;
    ValidatingToolbar *m_toolbar = nullptr;
    QSplitter *m_primarySplitView = nullptr;
    SidebarViewController *m_sidebarViewController = nullptr;
    BrowserViewController *m_browserViewController = nullptr;
    InspectorViewController *m_inspectorViewController = nullptr;
    PathBar *m_pathBar = nullptr;
    QLabel *m_statusBarText = nullptr;
    QString m_statusText;
    QTimer *m_noticeTimer = nullptr;
    QSlider *m_folderDepthSlider = nullptr;
    QSlider *m_thumbnailSizeSlider = nullptr;
    QLineEdit *m_searchField = nullptr;
    QToolButton *m_searchCategoryButton = nullptr;
    QActionGroup *m_layoutGroup = nullptr;
    QList<PXFilePtr> m_lastThumbnailViewSelection;
    QList<PXFilePtr> m_sources;
    ThumbnailsSearchType m_searchType = ThumbnailsSearchType::filename;
    bool m_layoutComplete = false;
};
