#include "app/FlagManager.h"

namespace {
FlagManager *installedManager = nullptr;
}

FlagManager &FlagManager::shared()
{
    if (installedManager)
        return *installedManager;
    static FlagManager *own = new FlagManager;
    return *own;
}

void FlagManager::setShared(FlagManager *manager)
{
    installedManager = manager;
}

void FlagManager::flag(const QList<PXFilePtr> &files)
{
    for (const PXFilePtr &file : files) {
        m_rejectedFiles.remove(file.get());
        m_flaggedFiles.insert(file.get(), file);
    }
    if (!files.isEmpty())
        emit flagsChanged(files);
}

void FlagManager::reject(const QList<PXFilePtr> &files)
{
    for (const PXFilePtr &file : files) {
        m_flaggedFiles.remove(file.get());
        m_rejectedFiles.insert(file.get(), file);
    }
    if (!files.isEmpty())
        emit flagsChanged(files);
}

void FlagManager::clear(const QList<PXFilePtr> &files)
{
    for (const PXFilePtr &file : files) {
        m_flaggedFiles.remove(file.get());
        m_rejectedFiles.remove(file.get());
    }
    if (!files.isEmpty())
        emit flagsChanged(files);
}
