#include "core/rename/PXRenameComputation.h"

#include "core/model/PXFile.h"

#include <QFile>
#include <QHash>
#include <QSet>

#include <dirent.h>

namespace {

// The names in a folder, lower-cased: whether a proposed name is taken is judged ignoring case.
QSet<QString> lowerCasedNamesIn(const QByteArray &folder)
{
    QSet<QString> names;
    DIR *dir = ::opendir(folder.constData());
    if (!dir)
        return names;
    while (const dirent *entry = ::readdir(dir))
        names.insert(QFile::decodeName(entry->d_name).toLower());
    ::closedir(dir);
    return names;
}

} // namespace

PXRenameComputation::PXRenameComputation(const QList<PXFileRenameItemPtr> &items, const PXRenameRules &rules,
                                         bool perFolder)
    : m_items(items)
    , m_rules(rules)
    , m_perFolder(perFolder)
    , m_cancelled(std::make_shared<std::atomic<bool>>(false))
{
    m_inputs.reserve(items.size());
    for (const PXFileRenameItemPtr &item : items)
        m_inputs.append({item->representedObject(), item->isContainer(), item->itemIndex(), item->itemOverallIndex()});
}

PXRenameComputation::~PXRenameComputation() = default;

PXRenameComputation::Result PXRenameComputation::run() const
{
    Result result;
    result.proposals.reserve(m_inputs.size());
    QList<PXFilePtr> files;
    files.reserve(m_inputs.size());
    for (const Input &input : m_inputs) {
        if (isCancelled()) {
            result.cancelled = true;
            return result;
        }
        // A copy of the item with the listed one's numbers: the engine reads nothing else.
        PXFileRenameItem probe(input.file, input.isContainer);
        if (!input.isContainer && input.itemIndex != PXBatchItem::notFound) {
            quint64 overall = input.itemOverallIndex;
            quint64 index = input.itemIndex;
            probe.setOverallIndex(overall, index);
        }
        probe.updatePerFolderSetting(m_perFolder);
        result.proposals.append(probe.proposalForRenameRules(m_rules));
        files.append(input.file);
    }
    result.collisions = collisionsFor(files, result.proposals, &result.hasCollisions, m_cancelled.get());
    result.cancelled = isCancelled();
    return result;
}

void PXRenameComputation::apply(const Result &result) const
{
    if (result.cancelled || result.proposals.size() != m_items.size() || result.collisions.size() != m_items.size())
        return;
    for (qsizetype i = 0; i < m_items.size(); ++i) {
        m_items[i]->applyProposal(result.proposals[i]);
        m_items[i]->setHasCollision(result.collisions[i]);
    }
}

QList<bool> PXRenameComputation::collisionsFor(const QList<PXFilePtr> &files,
                                               const QList<PXFileRenameItem::Proposal> &proposals, bool *hasCollisions,
                                               const std::atomic<bool> *cancelled)
{
    QList<bool> collisions(proposals.size(), false);
    bool any = false;
    QSet<QString> claimed;
    claimed.reserve(proposals.size());
    QHash<QByteArray, QSet<QString>> namesByFolder;
    for (qsizetype i = 0; i < proposals.size(); ++i) {
        if (cancelled && (i & 255) == 0 && cancelled->load(std::memory_order_relaxed))
            break;
        const PXFileRenameItem::Proposal &proposal = proposals[i];
        bool collision = claimed.contains(proposal.potentialPath);
        if (!collision) {
            // A change of case alone is no collision with the file itself.
            if (proposal.nameHasChanged && !proposal.caseChange && files.value(i)) {
                if (const ZQFilePtr folder = files[i]->parentItem()) {
                    auto names = namesByFolder.find(folder->nativePath());
                    if (names == namesByFolder.end())
                        names = namesByFolder.insert(folder->nativePath(), lowerCasedNamesIn(folder->nativePath()));
                    collision = names->contains(proposal.potentialName.toLower());
                }
            }
            claimed.insert(proposal.potentialPath);
        }
        collisions[i] = collision;
        any = any || collision;
    }
    if (hasCollisions)
        *hasCollisions = any;
    return collisions;
}
