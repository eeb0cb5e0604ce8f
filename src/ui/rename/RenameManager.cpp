#include "ui/rename/RenameManager.h"

#include "core/rename/PXFileRenamer.h"
#include "ui/rename/FileRenamerWindow.h"

#include <QSettings>

namespace {
RenameManager *installedManager = nullptr;
}

RenameManager::RenameManager(QSettings *settings, QObject *parent)
    : QObject(parent)
    , m_settings(settings)
{ }

RenameManager::~RenameManager()
{
    if (m_window) {
        m_window->renamer().cancel();
        delete m_window;
    }
    if (installedManager == this)
        installedManager = nullptr;
}

RenameManager &RenameManager::shared()
{
    if (installedManager)
        return *installedManager;
    static auto *own = new RenameManager;
    return *own;
}

void RenameManager::setShared(RenameManager *manager)
{
    installedManager = manager;
}

FileRenamerWindow *RenameManager::fileRenamer() const
{
    return m_window;
}

void RenameManager::openWithFiles(const QList<PXFilePtr> &files)
{
    if (!m_window) {
        m_window = new FileRenamerWindow(m_settings);
        connect(m_window, &FileRenamerWindow::renameFilesEnded, this, &RenameManager::windowClosed);
        Q_EMIT renamerOpened(m_window);
    }
    if (!files.isEmpty())
        m_window->addFilesToRename(files);
    m_window->show();
    m_window->raise();
    m_window->activateWindow();
}

bool RenameManager::closeRenamer()
{
    return !m_window || m_window->close();
}

void RenameManager::cancelRenamer()
{
    if (!m_window)
        return;
    m_window->renamer().cancel();
    m_window->close();
}

void RenameManager::windowClosed(FileRenamerWindow *window)
{
    if (window != m_window)
        return;
    m_window = nullptr;
    // Not during the close event that told us.
    window->deleteLater();
    Q_EMIT renameFilesEnded();
}
