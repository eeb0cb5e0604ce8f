#pragma once

#include "core/model/PXFileForward.h"
#include "ui/windows/WindowManager.h"

#include <QList>
#include <QObject>
#include <QPointer>

class AppSettings;
class QuickviewWindowController;
class QWidget;

// The windows that exist at most once (quick view, about, bug reporter, settings) and the files
// last selected in any main window, which the quick view follows.
//
// `quickviewOpensOnLaunch` is the user's preference that a plain start opens the quick view beside
// the main window; it is read, never cleared, so it holds for every start until the user changes
// it.
class AuxiliaryWindowsManager : public QObject, public WindowManager
{
    Q_OBJECT
public:
    explicit AuxiliaryWindowsManager(AppSettings *settings, QObject *parent = nullptr);

    static AuxiliaryWindowsManager &shared();
    static void setShared(AuxiliaryWindowsManager *manager); // not owned

    // Whether a plain start opens the quick view too.
    bool opensQuickviewOnLaunch() const;

    const QList<PXFilePtr> &recentlySelectedFiles() const { return m_recentlySelectedFiles; }
    // Main windows tell it their selection; an open quick view shows it.
    void setRecentlySelectedFiles(const QList<PXFilePtr> &files);

    void openAboutWindow(QWidget *parent);
    // Opens the quick view on the first of the recently selected files, or closes it.
    void toggleQuickview();
    // Opens the quick view unless it is open.
    void showQuickview();
    QuickviewWindowController *quickviewWindowController() const;
    // Closes the quick view and the About window (the program is quitting).
    void closeAll();

    void windowControllerWillClose(QObject *controller) override;

Q_SIGNALS:
    void quickviewChanged();

private:
    AppSettings *m_settings;
    QPointer<QuickviewWindowController> m_quickviewWindowController;
    QPointer<QWidget> m_aboutWindowController;
    QList<PXFilePtr> m_recentlySelectedFiles;
};
