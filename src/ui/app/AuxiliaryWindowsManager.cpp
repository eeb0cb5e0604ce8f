#include "ui/app/AuxiliaryWindowsManager.h"

#include "core/app/Log.h"
#include "core/settings/AppSettings.h"
#include "core/settings/SettingsManager.h"

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

bool AuxiliaryWindowsManager::consumeLaunchFlag()
{
    if (!m_settings->quickviewOpensOnLaunch())
        return false;
    m_settings->setQuickviewOpensOnLaunch(false);
    toggleQuickview();
    return true;
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

void AuxiliaryWindowsManager::toggleQuickview()
{
    logDebug(QStringLiteral("The quick view is not available in this build"));
}

void AuxiliaryWindowsManager::windowControllerWillClose(QObject *controller)
{
    if (controller && controller == m_aboutWindowController.data())
        m_aboutWindowController = nullptr;
}
