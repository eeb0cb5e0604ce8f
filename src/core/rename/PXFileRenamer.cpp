#include "core/rename/PXFileRenamer.h"

#include "core/app/Dispatch.h"
#include "core/app/Log.h"
#include "core/fs/ZQFolderLoadOperation.h"
#include "core/fs/ZQFolderSubscription.h"
#include "core/fs/operations/ZQFileController.h"
#include "core/fs/operations/ZQFileOperationHandler.h"
#include "core/model/PXFile.h"
#include "core/rename/PXBatchOutlineModel.h"
#include "core/rename/PXFileRenamerQuestions.h"
#include "core/rename/PXRenameComputation.h"
#include "core/rename/PXRenamePresets.h"

#include <QFile>
#include <QFileInfo>
#include <QSet>

namespace {

namespace Key = PXRenameSettingsKey;

// 0.2 s: a burst of edits (typing a pattern, a scan posting batches) costs one recomputation.
constexpr int updateDelayMs = 200;
// Progress shows only for a rename that takes longer than this, so quick ones do not flicker.
constexpr qint64 progressDelayMs = 500;

FileSortType fileSortTypeForSetting(int tag)
{
    switch (tag) {
    case PXFileRenamer::byModificationDate: return FileSortType::modificationDate;
    case PXFileRenamer::byCreationDate: return FileSortType::creationDate;
    case PXFileRenamer::byKind: return FileSortType::kind;
    case PXFileRenamer::bySize: return FileSortType::fileSize;
    case PXFileRenamer::byEXIFDate: return FileSortType::exifDate;
    default: return FileSortType::name;
    }
}

// Files a scan found made into items in one turn of the GUI thread's event loop: a scan posts
// thousands at once, and a slice of this size takes a millisecond or two.
constexpr qsizetype foundFilesPerTurn = 500;

// Proposed names are computed here, apart from the folder scans and renames.
const QString computationPool = QStringLiteral("PXFileRenamer.Names");

PXFileRenameItemPtr asRenameItem(const PXBatchItemPtr &item)
{
    return std::static_pointer_cast<PXFileRenameItem>(item);
}

} // namespace

PXFileRenamer::PXFileRenamer(PXRenamePresets *presets, ZQFileController *fileController, QObject *parent)
    : QObject(parent)
    , m_presets(presets)
    , m_fileController(fileController ? fileController : &ZQFileController::sharedFileController())
{
    if (!m_presets) {
        m_ownPresets = std::make_unique<PXRenamePresets>();
        m_presets = m_ownPresets.get();
    }
    m_outline = std::make_unique<PXBatchOutlineModel>(
        [this](const PXFilePtr &file, bool container) -> PXBatchItemPtr { return makeItem(file, container); });
    applySortDescriptors();

    m_updateTimer.setSingleShot(true);
    m_updateTimer.setInterval(updateDelayMs);
    connect(&m_updateTimer, &QTimer::timeout, this, [this] {
        if (m_computesInBackground)
            updateInBackground();
        else
            updateNow();
    });
    // 0 s: file events are applied at the next turn of the event loop, after the whole burst arrived.
    m_updateFilesTimer.setSingleShot(true);
    m_updateFilesTimer.setInterval(0);
    connect(&m_updateFilesTimer, &QTimer::timeout, this, &PXFileRenamer::updateFiles);
    // 0 s: the files a scan found are listed a slice a turn, the event loop running in between.
    m_foundFilesTimer.setSingleShot(true);
    m_foundFilesTimer.setInterval(0);
    connect(&m_foundFilesTimer, &QTimer::timeout, this, &PXFileRenamer::listFoundFiles);
    m_windowTitle = tr("Rename Files (%1 files)").arg(0);
}

PXFileRenamer::~PXFileRenamer()
{
    if (m_computation)
        m_computation->cancel();
    for (const QPointer<ZQFolderLoadOperation> &loader : std::as_const(m_fileLoaders)) {
        if (loader)
            loader->cancel();
    }
    if (m_fileOperationHandler) {
        m_fileOperationHandler->setDelegate(nullptr);
        m_fileOperationHandler->cancel();
    }
}

PXFileRenameItemPtr PXFileRenamer::makeItem(const PXFilePtr &file, bool container)
{
    auto item = std::make_shared<PXFileRenameItem>(file, container);
    item->setDelegate(this);
    return item;
}

void PXFileRenamer::setWatchesFiles(bool watches)
{
    m_watchesFiles = watches;
    resetSubscription();
}

// MARK: files

void PXFileRenamer::addFilesToRename(const QList<PXFilePtr> &files)
{
    QList<PXBatchItemPtr> added;
    QList<PXFilePtr> folders;
    for (const PXFilePtr &file : files) {
        if (!file || m_rootItems.contains(file->path()))
            continue;
        const bool folder = file->isDirectory();
        PXFileRenameItemPtr item = makeItem(file, folder);
        m_rootItems.insert(file->path(), item);
        m_rootItemList.append(item);
        added.append(item);
        if (folder)
            folders.append(file);
    }
    m_outline->addItems(added);
    scanForChildrenOfFiles(folders);
    if (m_fileLoaders.isEmpty())
        resetSubscription();
    updateForChanges();
}

void PXFileRenamer::removeFiles(const QList<PXBatchItemPtr> &items)
{
    m_outline->removeItems(items, true);
    for (const PXBatchItemPtr &item : items) {
        if (m_rootItems.value(item->identifier()).get() == item.get()) {
            m_rootItems.remove(item->identifier());
            m_rootItemList.removeOne(asRenameItem(item));
        }
    }
    resetSubscription();
    updateForChanges();
}

QList<PXFileRenameItemPtr> PXFileRenamer::rootItems() const
{
    return m_rootItemList;
}

QList<PXFileRenameItemPtr> PXFileRenamer::arrangedItems() const
{
    QList<PXFileRenameItemPtr> items;
    items.reserve(m_outline->arrangedItems().size());
    for (const PXBatchItemPtr &item : m_outline->arrangedItems())
        items.append(asRenameItem(item));
    return items;
}

void PXFileRenamer::scanForChildrenOfFiles(const QList<PXFilePtr> &folders, std::optional<int> levels)
{
    // Depth 0 lists a folder as itself; each level more lists one level of its contents.
    if (m_folderScanDepth <= 0 || folders.isEmpty())
        return;
    ZQFolderLoadOptions options;
    options.depth = levels.value_or(m_folderScanDepth - 1);
    // Runs on the listing's worker: the names' collation keys are made there, so that sorting the
    // found files on the GUI thread only compares them.
    options.fileFilter = [](const ZQFilePtr &file) {
        if (file->isInvisible())
            return false;
        PXFile::from(file)->nameSortKey();
        return true;
    };
    options.folderFilter = [](const ZQFilePtr &file) { return !file->isInvisible(); };
    for (const PXFilePtr &folder : folders) {
        auto *loader = new ZQFolderLoadOperation(folder, options, this);
        connect(loader, &ZQFolderLoadOperation::batchLoaded, this,
                [this](const ZQFilePtr &, const QList<ZQFilePtr> &files) {
                    m_foundFiles.reserve(m_foundFiles.size() + files.size());
                    for (const ZQFilePtr &file : files)
                        m_foundFiles.append(PXFile::from(file));
                    if (!m_foundFilesTimer.isActive())
                        m_foundFilesTimer.start();
                });
        connect(loader, &ZQFolderLoadOperation::folderFailed, this, [](const ZQFilePtr &folder, const QString &reason) {
            logError(QStringLiteral("Could not list %1 for renaming: %2").arg(folder->path(), reason));
        });
        connect(loader, &ZQFolderLoadOperation::finished, this, [this, loader] {
            m_fileLoaders.removeAll(loader);
            m_fileLoaders.removeAll(nullptr);
            loader->deleteLater();
            if (m_fileLoaders.isEmpty() && m_foundFiles.isEmpty())
                scanEnded();
        });
        m_fileLoaders.append(loader);
        setWorkInProgress(true);
        loader->start();
    }
}

void PXFileRenamer::listFoundFiles()
{
    const qsizetype count = std::min(m_foundFiles.size(), foundFilesPerTurn);
    QList<PXBatchItemPtr> found;
    found.reserve(count);
    for (qsizetype i = 0; i < count; ++i) {
        const PXFilePtr &file = m_foundFiles[i];
        if (m_outline->itemForIdentifier(file->path()))
            continue;
        found.append(makeItem(file, file->isDirectory()));
    }
    m_foundFiles.remove(0, count);
    m_outline->addItems(found);
    updateForChanges();
    if (!m_foundFiles.isEmpty())
        m_foundFilesTimer.start();
    else if (m_fileLoaders.isEmpty())
        scanEnded();
}

void PXFileRenamer::scanEnded()
{
    setWorkInProgress(false);
    resetSubscription();
    updateForChanges();
    Q_EMIT scanFinished();
}

void PXFileRenamer::rebuildContents()
{
    for (const QPointer<ZQFolderLoadOperation> &loader : std::as_const(m_fileLoaders)) {
        if (loader) {
            loader->cancel();
            loader->deleteLater();
        }
    }
    m_fileLoaders.clear();
    m_foundFiles.clear();
    m_foundFilesTimer.stop();
    QList<PXBatchItemPtr> roots;
    QList<PXFilePtr> folders;
    for (const PXFileRenameItemPtr &item : std::as_const(m_rootItemList)) {
        roots.append(item);
        if (item->isContainer())
            folders.append(item->representedObject());
    }
    m_outline->setItems(roots);
    scanForChildrenOfFiles(folders);
    if (m_fileLoaders.isEmpty()) {
        setWorkInProgress(m_fileOperationHandler != nullptr);
        resetSubscription();
    }
    updateForChanges();
}

void PXFileRenamer::resetSubscription()
{
    m_filesSubscription.reset();
    m_pendingEvents.clear();
    if (!m_watchesFiles)
        return;
    m_filesSubscription = std::make_unique<ZQFilesSubscription>();
    for (const PXBatchItemPtr &item : m_outline->items())
        m_filesSubscription->addFile(item->representedObject());
    connect(m_filesSubscription.get(), &ZQFilesSubscription::foundChanges, this, &PXFileRenamer::setNeedsToUpdateFiles);
}

void PXFileRenamer::setNeedsToUpdateFiles(const QList<ZQFileEvent> &events)
{
    m_pendingEvents += events;
    m_updateFilesTimer.start();
}

void PXFileRenamer::updateFiles()
{
    const QList<ZQFileEvent> events = std::exchange(m_pendingEvents, {});
    QList<PXBatchItemPtr> gone;
    QList<PXFilePtr> foldersToList;
    for (const ZQFileEvent &event : events) {
        ZQStandardFile::newFileForNativePath(event.nativePath)->updateForEvent(event);
        // Our own rename removes the old names; its items are known by the new ones afterwards.
        if (event.type != ZQFileEventType::removed || m_fileOperationHandler)
            continue;
        // A file deleted or renamed from outside leaves the list; the folder it was listed from
        // is listed again, where a renamed file shows up under its new name.
        const PXBatchItemPtr item = m_outline->itemForIdentifier(QFile::decodeName(event.nativePath));
        if (!item || gone.contains(item) || QFileInfo::exists(item->identifier()))
            continue;
        gone.append(item);
        const ZQFilePtr parent = item->representedObject()->parentItem();
        const PXFilePtr folder = parent ? PXFile::from(parent) : nullptr;
        if (folder && m_outline->itemForIdentifier(folder->path()) && !foldersToList.contains(folder))
            foldersToList.append(folder);
    }
    if (!gone.isEmpty()) {
        removeFiles(gone);
        scanForChildrenOfFiles(foldersToList, 0);
    }
    m_outline->setNeedsUpdate();
    updateForChanges();
}

void PXFileRenamer::setWorkInProgress(bool working)
{
    if (m_workInProgress == working)
        return;
    m_workInProgress = working;
    Q_EMIT workInProgressChanged(working);
}

// MARK: options

void PXFileRenamer::setFolderScanDepth(int depth)
{
    depth = std::max(depth, 0);
    if (depth == m_folderScanDepth)
        return;
    m_folderScanDepth = depth;
    rebuildContents();
}

void PXFileRenamer::setSortSetting(int tag, bool ascending)
{
    m_sortSetting = tag >= 0 && tag < sortSettingCount ? tag : int(byName);
    m_sortAscending = ascending;
    applySortDescriptors();
    updateForChanges();
}

void PXFileRenamer::setFlatList(bool flat)
{
    m_flatList = flat;
    applySortDescriptors();
    updateForChanges();
}

void PXFileRenamer::setPerFolder(bool perFolder)
{
    m_perFolder = perFolder;
    updateForChanges();
}

void PXFileRenamer::setFilter(const PXRenameFilter &filter)
{
    m_filter = filter;
    m_filterError.clear();
    m_outline->setFilterPredicate(filter.predicate());
    m_predicateText = filter.text();
    m_presets->setFilterPredicate(m_predicateText);
    updateForChanges();
}

bool PXFileRenamer::setFilterPredicateText(const QString &text)
{
    QString error;
    const std::optional<PXRenameFilter> filter = PXRenameFilter::fromText(text, &error);
    if (filter) {
        setFilter(*filter);
        return true;
    }
    // Renaming every file because a filter could not be read would touch files the filter was
    // meant to leave alone: no file passes until the user sets another filter.
    logError(QStringLiteral("Could not read the rename filter \"%1\": %2").arg(text, error));
    m_filter = {};
    m_filterError = error;
    m_predicateText = text;
    m_outline->setFilterPredicate(
        FilePredicate{QStringLiteral("FALSEPREDICATE"), {}, [](const PXFile &) { return false; }});
    updateForChanges();
    return false;
}

void PXFileRenamer::setRenameRules(const PXRenameRules &rules)
{
    m_renameRules = rules;
    m_hasChanges = true;
    updateForChanges();
}

void PXFileRenamer::applySortDescriptors()
{
    // The name order is the file model's own; every other key falls back to it for equal values.
    const QList<SortDescriptor> descriptors =
        sortDescriptorsForSortType(fileSortTypeForSetting(m_sortSetting), FolderSortType::mixed, m_sortAscending,
                                   QStringLiteral("representedObject"));
    m_outline->setSortDescriptors(descriptors);
    m_outline->setFlattenedItemsSortDescriptors(descriptors);
    m_outline->setShowAsFlatList(m_flatList);
    m_outline->setSortFlattenedItemsSeparately(m_flatList);
}

// MARK: updates

void PXFileRenamer::updateForChanges()
{
    m_hasChanges = true;
    if (!m_updateTimer.isActive())
        m_updateTimer.start();
}

bool PXFileRenamer::isUpdatePending() const
{
    return m_updateTimer.isActive() || m_computation != nullptr;
}

void PXFileRenamer::prepareUpdate()
{
    m_updateTimer.stop();
    if (m_computation) {
        m_computation->cancel();
        m_computation.reset();
    }
    m_outline->commitChanges();
    m_windowTitle = tr("Rename Files (%1 files)").arg(m_outline->arrangedItems().size());
}

void PXFileRenamer::finishUpdate()
{
    m_currentSettings = currentSettingsDict();
    markCurrentPreset();
    Q_EMIT updated();
}

void PXFileRenamer::updateNow()
{
    prepareUpdate();
    for (const PXBatchItemPtr &batchItem : m_outline->arrangedItems()) {
        auto *item = static_cast<PXFileRenameItem *>(batchItem.get());
        item->updatePerFolderSetting(m_perFolder);
        item->updateForRenameRules(m_renameRules);
    }
    scanForCollisions();
    finishUpdate();
}

void PXFileRenamer::updateInBackground()
{
    prepareUpdate();
    for (const PXBatchItemPtr &item : m_outline->arrangedItems())
        static_cast<PXFileRenameItem *>(item.get())->updatePerFolderSetting(m_perFolder);
    auto computation = std::make_shared<PXRenameComputation>(arrangedItems(), m_renameRules, m_perFolder);
    m_computation = computation;
    const QPointer<PXFileRenamer> self(this);
    runOnPool(computationPool, [self, computation] {
        auto result = std::make_shared<PXRenameComputation::Result>(computation->run());
        if (result->cancelled)
            return;
        postToGui([self, computation, result] {
            // A newer edit started another computation (or an update ran at once): this one is stale.
            if (!self || self->m_computation != computation)
                return;
            self->m_computation.reset();
            computation->apply(*result);
            self->m_hasCollisions = result->hasCollisions;
            self->finishUpdate();
        });
    });
}

void PXFileRenamer::scanForCollisions()
{
    QList<PXFilePtr> files;
    QList<PXFileRenameItem::Proposal> proposals;
    const QList<PXBatchItemPtr> &arranged = m_outline->arrangedItems();
    files.reserve(arranged.size());
    proposals.reserve(arranged.size());
    for (const PXBatchItemPtr &batchItem : arranged) {
        files.append(batchItem->representedObject());
        proposals.append(static_cast<const PXFileRenameItem *>(batchItem.get())->proposal());
    }
    const QList<bool> collisions = PXRenameComputation::collisionsFor(files, proposals, &m_hasCollisions);
    for (qsizetype i = 0; i < arranged.size(); ++i)
        static_cast<PXFileRenameItem *>(arranged[i].get())->setHasCollision(collisions[i]);
}

void PXFileRenamer::renameItemDidChange(PXFileRenameItem *item)
{
    Q_EMIT itemChanged(item);
}

// MARK: presets

QJsonObject PXFileRenamer::currentSettingsDict() const
{
    return QJsonObject{
        {Key::rules, jsonFromRenameRules(m_renameRules)},
        {Key::depth, m_folderScanDepth},
        {Key::sortType, m_sortSetting},
        {Key::sortAscending, m_sortAscending},
        {Key::listType, m_flatList ? int(flatList) : int(treeList)},
        {Key::sequenceType, m_perFolder ? int(perFolderSequence) : int(acrossBatch)},
        {Key::predicate, m_predicateText},
    };
}

std::optional<qsizetype> PXFileRenamer::currentSavedPresetIndex() const
{
    if (m_currentPresetGroup != PXRenamePresets::savedPresetsGroup || m_currentPresetIndex < 0
        || m_currentPresetIndex >= m_presets->savedPresets().size())
        return std::nullopt;
    return m_currentPresetIndex;
}

bool PXFileRenamer::isCurrentPresetAltered() const
{
    const auto index = currentSavedPresetIndex();
    return index && m_presets->savedPresets()[*index].contains(Key::altered);
}

void PXFileRenamer::markCurrentPreset()
{
    const auto index = currentSavedPresetIndex();
    if (!index)
        return;
    QJsonObject &preset = m_presets->savedPresets()[*index];
    if (PXRenamePresets::settingsAreEqual(m_currentSettings, preset))
        preset.remove(Key::altered);
    else
        preset.insert(Key::altered, Key::altered);
}

void PXFileRenamer::updateWithPreset(const QJsonObject &preset)
{
    if (preset.contains(Key::sortType) || preset.contains(Key::sortAscending))
        setSortSetting(preset.value(Key::sortType).toInt(m_sortSetting),
                       preset.value(Key::sortAscending).toBool(m_sortAscending));
    if (preset.contains(Key::listType))
        setFlatList(preset.value(Key::listType).toInt() == flatList);
    if (preset.contains(Key::sequenceType))
        setPerFolder(preset.value(Key::sequenceType).toInt() == perFolderSequence);
    if (preset.contains(Key::predicate))
        setFilterPredicateText(preset.value(Key::predicate).toString());
    QString error;
    if (const auto rules = renameRulesFromJson(preset.value(Key::rules), &error))
        setRenameRules(*rules);
    else
        logError(QStringLiteral("Could not read the rules of preset %1: %2")
                     .arg(preset.value(Key::presetName).toString(), error));
    if (preset.contains(Key::depth))
        setFolderScanDepth(preset.value(Key::depth).toInt());
    if (const auto index = currentSavedPresetIndex())
        m_presets->savedPresets()[*index].remove(Key::altered);
    updateForChanges();
}

bool PXFileRenamer::selectPreset(const QString &groupIdentifier, qsizetype index)
{
    const bool saved = groupIdentifier == PXRenamePresets::savedPresetsGroup;
    const qsizetype count = saved ? m_presets->savedPresets().size() : m_presets->recentSettings().size();
    if (index < 0 || index >= count || !dealWithUnsavedPreset())
        return false;
    QJsonObject preset = saved ? m_presets->savedPresets()[index] : m_presets->recentSettings()[index];
    // Stored rules in the form the renamer writes them, so that an untouched preset is not "altered".
    if (const auto rules = renameRulesFromJson(preset.value(Key::rules))) {
        preset.insert(Key::rules, jsonFromRenameRules(*rules));
        if (saved)
            m_presets->savedPresets()[index].insert(Key::rules, preset.value(Key::rules));
    }
    m_currentPresetGroup = groupIdentifier;
    m_currentPresetIndex = index;
    updateWithPreset(preset);
    return true;
}

void PXFileRenamer::setCurrentPreset(const QString &groupIdentifier, qsizetype index)
{
    if (const auto previous = currentSavedPresetIndex())
        m_presets->savedPresets()[*previous].remove(Key::altered);
    m_currentPresetGroup = groupIdentifier;
    m_currentPresetIndex = index;
    markCurrentPreset();
}

void PXFileRenamer::savedPresetMoved(qsizetype from, qsizetype to)
{
    if (m_currentPresetGroup != PXRenamePresets::savedPresetsGroup || m_currentPresetIndex < 0)
        return;
    qsizetype &current = m_currentPresetIndex;
    if (current == from)
        current = to;
    else if (from < current && current <= to)
        --current;
    else if (to <= current && current < from)
        ++current;
}

void PXFileRenamer::savePreset()
{
    const auto index = currentSavedPresetIndex();
    if (!index)
        return;
    QJsonObject &preset = m_presets->savedPresets()[*index];
    QJsonObject updated = currentSettingsDict();
    updated.insert(Key::presetName, preset.value(Key::presetName));
    updated.insert(Key::groupIdentifier, PXRenamePresets::savedPresetsGroup);
    updated.insert(Key::dateSaved, QDateTime::currentDateTimeUtc().toString(Qt::ISODateWithMs));
    preset = updated;
}

bool PXFileRenamer::dealWithUnsavedPreset()
{
    if (!isCurrentPresetAltered())
        return true;
    const auto index = currentSavedPresetIndex();
    const PXUnsavedPresetAnswer answer = m_questions
        ? m_questions->askToSaveChangesToPreset(m_presets->savedPresets()[*index])
        : PXUnsavedPresetAnswer::discardChanges;
    switch (answer) {
    case PXUnsavedPresetAnswer::save: savePreset(); return true;
    case PXUnsavedPresetAnswer::cancel: return false;
    case PXUnsavedPresetAnswer::discardChanges: m_presets->savedPresets()[*index].remove(Key::altered); return true;
    }
    return true;
}

bool PXFileRenamer::windowShouldClose()
{
    if (m_workInProgress)
        return false;
    if (isUpdatePending())
        updateNow();
    return dealWithUnsavedPreset();
}

void PXFileRenamer::windowWillClose()
{
    m_updateTimer.stop();
    m_presets->savePresets(currentSettingsDict());
}

// MARK: renaming

PXFileRenamer::RenameStart PXFileRenamer::rename()
{
    // Names and collisions computed once more, against the disk as it is now.
    updateNow();
    if (m_hasCollisions || m_workInProgress)
        return RenameStart::refused;
    m_hasChanges = false;

    QList<ZQFileOperationUnit> units;
    m_renamingItems.clear();
    m_observedFiles.clear();
    for (const PXBatchItemPtr &batchItem : m_outline->arrangedItems()) {
        const PXFileRenameItemPtr item = asRenameItem(batchItem);
        if (item->representedObject())
            m_observedFiles.append(item->representedObject());
        if (item->isRenamable() && item->representedObject()->name() != item->potentialName()) {
            units.append(ZQFileOperationUnit(item->representedObject(), item->potentialName()));
            m_renamingItems.append(item);
        }
    }
    if (units.isEmpty())
        return RenameStart::nothingToRename;

    m_destinationExistsAnswer.reset();
    m_otherErrorAnswer.reset();
    m_renameError = {};
    m_progressPercentage = 0;
    m_workBeganDate = QDateTime::currentDateTime();
    m_workTimer.start();
    setWorkInProgress(true);
    m_fileOperationHandler =
        m_fileController->performOperation(ZQFileOperationType::rename, ZQFileOperationGroup(std::move(units)), this);
    if (!m_fileOperationHandler) {
        m_renamingItems.clear();
        setWorkInProgress(false);
        return RenameStart::nothingToRename;
    }
    return RenameStart::started;
}

ZQFileOperationHandler *PXFileRenamer::fileOperationHandler() const
{
    return m_fileOperationHandler;
}

void PXFileRenamer::cancel()
{
    for (const QPointer<ZQFolderLoadOperation> &loader : std::as_const(m_fileLoaders)) {
        if (loader) {
            loader->cancel();
            loader->deleteLater();
        }
    }
    m_fileLoaders.clear();
    m_foundFiles.clear();
    m_foundFilesTimer.stop();
    if (m_fileOperationHandler)
        m_fileOperationHandler->cancel();
    setWorkInProgress(false);
}

void PXFileRenamer::fileOperationHandlerNeedsInitialResolution(ZQFileOperationHandler *handler,
                                                               ZQFileOperationGroup &group)
{
    logDebug(QStringLiteral("Needs initial resolution."));
    for (ZQFileOperationUnit &unit : group.units()) {
        if (!unit.hasError())
            continue;
        // "Apply to all" holds for the rest of the rename, separately for names already taken.
        std::optional<ZQFileOperationResolution> &remembered =
            unit.destinationError().code == ZQFileOperationErrorCode::destinationExists ? m_destinationExistsAnswer
                                                                                        : m_otherErrorAnswer;
        ZQFileOperationResolution answer = ZQFileOperationResolution::cancel;
        if (remembered) {
            answer = *remembered;
        } else if (m_questions) {
            bool applyToAll = false;
            answer = m_questions->queryUserWithError(unit.error(), &applyToAll);
            if (answer != ZQFileOperationResolution::skip && answer != ZQFileOperationResolution::keepBoth)
                answer = ZQFileOperationResolution::cancel;
            if (applyToAll)
                remembered = answer;
        }
        if (answer == ZQFileOperationResolution::cancel) {
            m_renameError = unit.error();
            handler->cancel();
            return;
        }
        unit.setResolution(answer);
    }
    handler->continueToPreflight();
}

void PXFileRenamer::fileOperationHandlerNeedsPreflightResolution(ZQFileOperationHandler *handler,
                                                                 ZQFileOperationGroup &)
{
    // What preflight finds (two items aiming at one name) is skipped without asking.
    handler->continueToPerform();
}

void PXFileRenamer::fileOperationHandlerReportingTransaction(ZQFileOperationHandler *handler,
                                                             const ZQFileOperationTransaction &transaction)
{
    if (transaction.isError()) {
        const ZQFileOperationError &error = transaction.error;
        const QString message = error.description.isEmpty() ? tr("An error occurred") : error.description;
        const QString text = error.failureReason.isEmpty() ? tr("Stopping the operation") : error.failureReason;
        logError(QStringLiteral("File operation error: %1 %2").arg(message, text));
        m_renameError = error;
        if (m_questions)
            m_questions->showRenameError(message, text);
        handler->cancel();
        return;
    }
    if (transaction.stage == ZQFileOperationStage::performing && m_workTimer.elapsed() > progressDelayMs) {
        m_progressPercentage = transaction.percentComplete;
        Q_EMIT progressChanged(m_progressPercentage);
    }
}

void PXFileRenamer::fileOperationHandlerCompletedOperation(ZQFileOperationHandler *handler)
{
    const QList<ZQFileOperationUnit> &units = handler->group().units();
    qsizetype renamed = 0;
    for (qsizetype i = 0; i < units.size() && i < m_renamingItems.size(); ++i) {
        if (units[i].state() != ZQFileOperationUnit::State::done)
            continue;
        ++renamed;
        const PXFileRenameItemPtr &item = m_renamingItems[i];
        const QString previous = item->identifier();
        item->setRepresentedObject(PXFile::fileForPath(units[i].destinationPath()));
        m_outline->reindexItem(item, previous);
        if (m_rootItems.value(previous) == item) {
            m_rootItems.remove(previous);
            m_rootItems.insert(item->identifier(), item);
        }
    }
    QSet<QString> folders;
    for (const PXFilePtr &file : std::as_const(m_observedFiles)) {
        const QString folder = file->parentPath();
        if (!folder.isEmpty() && !folders.contains(folder)) {
            folders.insert(folder);
            m_fileController->changeHappenedInDirectory(file->parentItem());
        }
    }
    m_renamingItems.clear();
    m_observedFiles.clear();
    m_fileOperationHandler = nullptr;
    m_progressPercentage = 100;
    Q_EMIT progressChanged(m_progressPercentage);
    m_fileController->checkFilesystem();
    setWorkInProgress(!m_fileLoaders.isEmpty());
    resetSubscription();
    updateForChanges();
    Q_EMIT renameFinished(renamed, m_renameError);
}
