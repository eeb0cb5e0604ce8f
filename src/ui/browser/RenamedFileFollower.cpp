#include "ui/browser/RenamedFileFollower.h"

#include "core/app/Dispatch.h"
#include "core/model/PXFile.h"

#include <QPointer>

#include <sys/stat.h>

RenamedFileFollower::RenamedFileFollower(QObject *parent)
    : QObject(parent)
{ }

QHash<RenamedFileFollower::Identity, PXFilePtr> RenamedFileFollower::identitiesOf(const QList<PXFilePtr> &files)
{
    QHash<Identity, PXFilePtr> identities;
    for (const PXFilePtr &file : files) {
        struct stat info
        { };
        if (::lstat(file->nativePath().constData(), &info) == 0)
            identities.insert({quint64(info.st_dev), quint64(info.st_ino)}, file);
    }
    return identities;
}

void RenamedFileFollower::remember(const QList<PXFilePtr> &files)
{
    const quint64 generation = ++m_generation;
    m_selected.clear();
    if (files.isEmpty() || files.size() > followedLimit)
        return;
    QPointer<RenamedFileFollower> self(this);
    runOnPool(QStringLiteral("Browser Disk Work"), [self, files, generation] {
        const QHash<Identity, PXFilePtr> identities = identitiesOf(files);
        postToGui([self, identities, generation] {
            if (self && generation == self->m_generation)
                self->m_selected = identities;
        });
    });
}

void RenamedFileFollower::noteShown(const std::function<bool(const PXFilePtr &)> &isShown)
{
    for (auto it = m_selected.cbegin(); it != m_selected.cend(); ++it) {
        if (!isShown(it.value()) && m_lost.size() < followedLimit)
            m_lost.insert(it.key(), it.value());
    }
}

void RenamedFileFollower::lookForRenamed(const QList<PXFilePtr> &arrived,
                                         std::function<void(const QList<PXFilePtr> &)> found)
{
    if (m_lost.isEmpty() || arrived.isEmpty() || arrived.size() > followedLimit)
        return;
    QPointer<RenamedFileFollower> self(this);
    const QHash<Identity, PXFilePtr> lost = m_lost;
    runOnPool(QStringLiteral("Browser Disk Work"), [self, arrived, lost, found = std::move(found)] {
        const QHash<Identity, PXFilePtr> identities = identitiesOf(arrived);
        QList<PXFilePtr> renamed;
        QList<Identity> matched;
        for (auto it = identities.cbegin(); it != identities.cend(); ++it) {
            if (lost.contains(it.key())) {
                renamed.append(it.value());
                matched.append(it.key());
            }
        }
        if (renamed.isEmpty())
            return;
        postToGui([self, renamed, matched, found] {
            if (!self)
                return;
            for (const Identity &identity : matched)
                self->m_lost.remove(identity);
            found(renamed);
        });
    });
}

void RenamedFileFollower::clear()
{
    ++m_generation;
    m_selected.clear();
    m_lost.clear();
}
