#pragma once

#include "core/model/PXFileForward.h"
#include "ui/windows/WindowManager.h"

#include <QList>
#include <QObject>
#include <QPointer>

class AppSettings;
class QWidget;

// The windows that exist at most once (quick view, about, bug reporter, settings), the files last
// selected in any main window, and the one-shot launch flag.
//
// The launch flag is `quickviewOpensOnLaunch`: set, the next plain start opens the quick view on
// its own instead of a main window, and the flag is cleared as it is read, so it fires once.
class AuxiliaryWindowsManager : public QObject, public WindowManager
{
    Q_OBJECT
public:
    explicit AuxiliaryWindowsManager(AppSettings *settings, QObject *parent = nullptr);

    static AuxiliaryWindowsManager &shared();
    static void setShared(AuxiliaryWindowsManager *manager); // not owned

    // Whether this plain start is taken by the one-shot launch flag (cleared on reading).
    bool consumeLaunchFlag();

    const QList<PXFilePtr> &recentlySelectedFiles() const { return m_recentlySelectedFiles; }
    // Main windows tell it their selection.
    void setRecentlySelectedFiles(const QList<PXFilePtr> &files) { m_recentlySelectedFiles = files; }

    void openAboutWindow(QWidget *parent);
    // The quick view arrives with the viewer; until then toggling says so in the log.
    void toggleQuickview();

    void windowControllerWillClose(QObject *controller) override;

private:
    AppSettings *m_settings;
    QPointer<QWidget> m_aboutWindowController;
    QList<PXFilePtr> m_recentlySelectedFiles;
};
