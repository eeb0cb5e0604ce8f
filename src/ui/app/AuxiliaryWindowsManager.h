#pragma once

#include "core/model/PXFileForward.h"
#include "ui/windows/WindowManager.h"

#include <QList>
#include <QObject>
#include <QPointer>

#include <functional>

class AboutWindowController;
class AppSettings;
class BugReporterWindowController;
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
    ~AuxiliaryWindowsManager() override;

    static AuxiliaryWindowsManager &shared();
    static void setShared(AuxiliaryWindowsManager *manager); // not owned

    // Whether a plain start opens the quick view too.
    bool opensQuickviewOnLaunch() const;

    const QList<PXFilePtr> &recentlySelectedFiles() const { return m_recentlySelectedFiles; }
    // Main windows tell it their selection; an open quick view shows it.
    void setRecentlySelectedFiles(const QList<PXFilePtr> &files);

    // Shows the window, making it on first use.
    void openAboutWindow(QWidget *parent);
    AboutWindowController *aboutWindowController() const;
    // Shows the bug reporter, making it on first use; in a build without a bug-report endpoint,
    // says so through `showMessage` instead.
    void openBugReporterWindow(QWidget *parent);
    BugReporterWindowController *bugReporterWindowController() const;
    // Makes the bug reporter's window (default: one that reports to this build's endpoint); tests
    // replace it to report elsewhere. Answers null when reporting is not set up.
    std::function<BugReporterWindowController *()> makeBugReporterWindow;
    // Tells the user something (default: a message box).
    std::function<void(const QString &title, const QString &text)> showMessage;
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
    void bugReporterChanged();

private:
    AppSettings *m_settings;
    QPointer<QuickviewWindowController> m_quickviewWindowController;
    QPointer<AboutWindowController> m_aboutWindowController;
    QPointer<BugReporterWindowController> m_bugReporterWindowController;
    QList<PXFilePtr> m_recentlySelectedFiles;
};
