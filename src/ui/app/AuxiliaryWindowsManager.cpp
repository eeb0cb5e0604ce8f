#include "ui/app/AuxiliaryWindowsManager.h"

#include "core/settings/AppSettings.h"
#include "core/settings/SettingsManager.h"
#include "ui/windows/QuickviewWindowController.h"

#include <QApplication>
#include <QMessageBox>

namespace {
AuxiliaryWindowsManager *installedManager = nullptr;
}

AuxiliaryWindowsManager::AuxiliaryWindowsManager(AppSettings *settings, QObject *parent)
    : QObject(parent)
    , m_settings(settings)
{ }

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

void AuxiliaryWindowsManager::openAboutWindow(QWidget *parent)
{
    if (m_aboutWindowController) {
        m_aboutWindowController->raise();
        m_aboutWindowController->activateWindow();
        return;
    }
    auto *box = new QMessageBox(QMessageBox::NoIcon, tr("About Pixcove"),
                                tr("<b>Pixcove</b> %1<br>A browser for folders of images and videos.")
                                    .arg(QApplication::applicationVersion()),
                                QMessageBox::Ok, parent);
    box->setIconPixmap(QApplication::windowIcon().pixmap(64, 64));
    box->setAttribute(Qt::WA_DeleteOnClose);
    m_aboutWindowController = box;
    box->show();
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
    }
}
