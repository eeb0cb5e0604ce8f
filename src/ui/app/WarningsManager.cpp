#include "ui/app/WarningsManager.h"

#include "core/settings/AppSettings.h"
#include "core/settings/SettingsManager.h"

#include <QCheckBox>
#include <QMessageBox>

namespace {
WarningsManager *installedManager = nullptr;
}

WarningsManager::WarningsManager(AppSettings *settings, QObject *parent)
    : QObject(parent)
    , m_settings(settings)
    , m_presenter(&WarningsManager::presentAlert)
{ }

WarningsManager &WarningsManager::shared()
{
    if (installedManager)
        return *installedManager;
    static auto *own = new WarningsManager(SettingsManager::shared().settings());
    return *own;
}

void WarningsManager::setShared(WarningsManager *manager)
{
    installedManager = manager;
}

QString WarningsManager::folderDepthWarningTitle()
{
    return tr("Increased Folder Scan Depth");
}

QString WarningsManager::folderDepthWarningText()
{
    return tr("Scanning multiple levels deep into your folder heirarchy can result in a huge number of files and "
              "folders to display in the thumbnail pane.\n\nThis can get slow.\n\nYou have been warned!");
}

bool WarningsManager::showFolderDepthWarning(QWidget *window)
{
    if (m_settings->alertsAndWarnings().testFlag(AlertsAndWarning::folderDepthWarning))
        return false;
    if (m_presenter(window, folderDepthWarningTitle(), folderDepthWarningText()))
        m_settings->setAlertsAndWarnings(m_settings->alertsAndWarnings() | AlertsAndWarning::folderDepthWarning);
    return true;
}

bool WarningsManager::presentAlert(QWidget *window, const QString &title, const QString &text)
{
    QMessageBox box(QMessageBox::Information, title, text, QMessageBox::Ok, window);
    if (window)
        box.setWindowModality(Qt::WindowModal);
    auto *suppress = new QCheckBox(tr("Do not show this message again"), &box);
    suppress->setChecked(true);
    box.setCheckBox(suppress);
    box.exec();
    return suppress->isChecked();
}
