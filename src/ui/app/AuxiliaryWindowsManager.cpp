#include "ui/app/AuxiliaryWindowsManager.h"

#include "core/settings/AppSettings.h"
#include "core/settings/SettingsManager.h"
#include "core/shell/BugReportSender.h"
#include "core/shell/BuildConfiguration.h"
#include "ui/windows/AboutWindowController.h"
#include "ui/windows/BugReporterWindowController.h"
#include "ui/windows/QuickviewWindowController.h"

#include <QApplication>
#include <QDesktopServices>
#include <QMessageBox>
#include <QUrl>

namespace {

AuxiliaryWindowsManager *installedManager = nullptr;

void bringForward(QWidget *window)
{
    window->show();
    window->raise();
    window->activateWindow();
}

} // namespace

AuxiliaryWindowsManager::AuxiliaryWindowsManager(AppSettings *settings, QObject *parent)
    : QObject(parent)
    , m_settings(settings)
{
    makeBugReporterWindow = []() -> BugReporterWindowController * {
        auto *sender = new BugReportSender;
        if (!sender->isConfigured()) {
            delete sender;
            return nullptr;
        }
        return new BugReporterWindowController(sender);
    };
    showMessage = [](const QString &title, const QString &text) {
        QMessageBox::information(QApplication::activeWindow(), title, text);
    };
}

// The About and bug-reporter windows are the manager's: they go with it (the process's manager
// lives to the end; a test's goes with its test).
AuxiliaryWindowsManager::~AuxiliaryWindowsManager()
{
    delete m_aboutWindowController.data();
    delete m_bugReporterWindowController.data();
}

AuxiliaryWindowsManager &AuxiliaryWindowsManager::shared()
{
    if (installedManager)
        return *installedManager;
    static auto *own = new AuxiliaryWindowsManager(SettingsManager::shared().settings());
    return *own;
}

void AuxiliaryWindowsManager::setShared(AuxiliaryWindowsManager *manager)
{
    installedManager = manager;
}

bool AuxiliaryWindowsManager::opensQuickviewOnLaunch() const
{
    return m_settings->quickviewOpensOnLaunch();
}

void AuxiliaryWindowsManager::setRecentlySelectedFiles(const QList<PXFilePtr> &files)
{
    m_recentlySelectedFiles = files;
    if (m_quickviewWindowController)
        m_quickviewWindowController->setFiles(files);
}

// A window of the program's own, not a dialog of the window that asked: it outlives that window.
void AuxiliaryWindowsManager::openAboutWindow(QWidget *parent)
{
    Q_UNUSED(parent);
    if (!m_aboutWindowController) {
        auto *controller = new AboutWindowController;
        controller->setDelegate(this);
        connect(controller, &AboutWindowController::websiteRequested, this,
                [] { QDesktopServices::openUrl(QUrl(BuildConfiguration::websiteLink())); });
        connect(controller, &AboutWindowController::releaseNotesRequested, this,
                [] { QDesktopServices::openUrl(QUrl(BuildConfiguration::releaseNotesLink())); });
        m_aboutWindowController = controller;
    }
    bringForward(m_aboutWindowController);
}

AboutWindowController *AuxiliaryWindowsManager::aboutWindowController() const
{
    return m_aboutWindowController;
}

void AuxiliaryWindowsManager::openBugReporterWindow(QWidget *parent)
{
    Q_UNUSED(parent);
    if (!m_bugReporterWindowController) {
        BugReporterWindowController *controller = makeBugReporterWindow ? makeBugReporterWindow() : nullptr;
        if (!controller) {
            showMessage(tr("Bug Report / Feature Request"),
                        tr("This build of Pixcove has no address to send bug reports to. Please report bugs and "
                           "ask for features on the Pixcove website: %1")
                            .arg(BuildConfiguration::websiteLink()));
            return;
        }
        controller->setDelegate(this);
        m_bugReporterWindowController = controller;
        Q_EMIT bugReporterChanged();
    }
    bringForward(m_bugReporterWindowController);
}

BugReporterWindowController *AuxiliaryWindowsManager::bugReporterWindowController() const
{
    return m_bugReporterWindowController;
}

QuickviewWindowController *AuxiliaryWindowsManager::quickviewWindowController() const
{
    return m_quickviewWindowController;
}

void AuxiliaryWindowsManager::toggleQuickview()
{
    if (m_quickviewWindowController) {
        m_quickviewWindowController->close();
        return;
    }
    showQuickview();
}

void AuxiliaryWindowsManager::closeAll()
{
    if (m_quickviewWindowController)
        m_quickviewWindowController->close();
    if (m_aboutWindowController)
        m_aboutWindowController->close();
}

void AuxiliaryWindowsManager::showQuickview()
{
    if (m_quickviewWindowController)
        return;
    auto *controller = new QuickviewWindowController(m_settings, this, m_recentlySelectedFiles.value(0));
    controller->setFiles(m_recentlySelectedFiles);
    m_quickviewWindowController = controller;
    controller->show();
    Q_EMIT quickviewChanged();
}

// The quick view, about and bug-reporter slots are checked in that order; the first match goes.
void AuxiliaryWindowsManager::windowControllerWillClose(QObject *controller)
{
    if (!controller)
        return;
    if (controller == m_quickviewWindowController.data()) {
        m_quickviewWindowController = nullptr;
        Q_EMIT quickviewChanged();
    } else if (controller == m_aboutWindowController.data()) {
        m_aboutWindowController = nullptr;
    } else if (controller == m_bugReporterWindowController.data()) {
        m_bugReporterWindowController = nullptr;
        Q_EMIT bugReporterChanged();
    }
}
