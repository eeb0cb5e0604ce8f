#include "core/model/FlagManager.h"

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
    mark(files, &m_flaggedFiles);
}

void FlagManager::reject(const QList<PXFilePtr> &files)
{
    mark(files, &m_rejectedFiles);
}

void FlagManager::clear(const QList<PXFilePtr> &files)
{
    mark(files, nullptr);
}

void FlagManager::mark(const QList<PXFilePtr> &files, FileSet *into)
{
    for (const PXFilePtr &file : files) {
        m_flaggedFiles.remove(file.get());
        m_rejectedFiles.remove(file.get());
        if (into)
            into->insert(file.get(), file);
    }
    if (!files.isEmpty())
        Q_EMIT flagsChanged(files);
}
