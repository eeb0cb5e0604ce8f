#include "ui/app/UpdateController.h"

#include "ui/windows/UpdateWindowController.h"

#include <QApplication>
#include <QMessageBox>

UpdateController::UpdateController(AppSettings *settings, const QUrl &feed, const QString &currentVersion,
                                   QObject *parent)
    : QObject(parent)
    , m_currentVersion(currentVersion)
    , m_updater(settings, feed, currentVersion)
{
    showMessage = [](bool failed, const QString &title, const QString &text) {
        if (failed)
            QMessageBox::warning(QApplication::activeWindow(), title, text);
        else
            QMessageBox::information(QApplication::activeWindow(), title, text);
    };
    connect(&m_updater, &Updater::updateFound, this, &UpdateController::showUpdate);
    connect(&m_updater, &Updater::userCheckFinished, this, &UpdateController::userCheckFinished);
}

UpdateController::~UpdateController()
{
    delete m_updateWindow.data();
}

UpdateWindowController *UpdateController::updateWindow() const
{
    return m_updateWindow;
}

void UpdateController::checkForUpdates()
{
    m_updater.checkForUpdates();
}

void UpdateController::showUpdate(const AppcastItem &item)
{
    if (m_updateWindow) {
        m_updateWindow->setItem(item);
    } else {
        m_updateWindow = new UpdateWindowController(item, m_currentVersion);
    }
    m_updateWindow->show();
    m_updateWindow->raise();
    m_updateWindow->activateWindow();
}

void UpdateController::userCheckFinished(const UpdateCheckResult &result)
{
    switch (result.outcome) {
    case UpdateCheckResult::Outcome::updateAvailable:
        if (result.update)
            showUpdate(*result.update);
        return;
    case UpdateCheckResult::Outcome::upToDate:
        showMessage(false, tr("You’re up to date!"),
                    tr("Pixcove %1 is currently the newest version available.").arg(m_currentVersion));
        return;
    case UpdateCheckResult::Outcome::failed: showMessage(true, tr("Update Error!"), result.message); return;
    }
}
