#pragma once

#include "core/fs/ZQFileEvent.h"
#include "core/fs/operations/ZQFileOperationDelegate.h"
#include "core/model/FileSorting.h"
#include "core/rename/PXFileRenameItem.h"
#include "core/rename/PXRenameFilter.h"
#include "core/rename/PXRenameRules.h"

#include <QDateTime>
#include <QElapsedTimer>
#include <QHash>
#include <QJsonObject>
#include <QObject>
#include <QPointer>
#include <QTimer>

#include <memory>
#include <optional>

class PXBatchOutlineModel;
class PXFileRenamerQuestions;
class PXRenameComputation;
class PXRenamePresets;
class ZQFileController;
class ZQFileOperationHandler;
class ZQFilesSubscription;
class ZQFolderLoadOperation;

// The batch renamer without its window: collects files (scanning added folders to a depth), keeps
// the rules and options, recomputes every proposed name after each change, marks collisions,
// tracks presets, and renames all changed files in one file operation.
//
// Edits are coalesced: updateForChanges recomputes once 0.2 s after the first of a burst; with
// setComputesInBackground the names are then computed on a worker thread (a window's list of
// 10 000 files stays fluid while the user types) and applied when they are ready, a newer edit
// cancelling an older computation. updateNow always computes at once, on the calling thread. The
// rename is refused while any item collides; it runs as one rename operation whose questions go
// to the questions object, and an error stops it with the files renamed so far keeping their new
// names. Afterwards the renamed items stand for their new paths. Lives on the GUI thread.
class PXFileRenamer : public QObject, private ZQFileOperationDelegate, private PXFileRenameItemDelegate
{
    Q_OBJECT

public:
    // Tags of the sort menu.
    enum SortSetting : int {
        byName = 0,
        byModificationDate = 1,
        byCreationDate = 2,
        byKind = 3,
        bySize = 4,
        byEXIFDate = 5
    };
    static constexpr int sortSettingCount = 6;
    // Tags of the list-type and numbering menus, as stored in settings dictionaries.
    enum ListType : int { treeList = 0, flatList = 1 };
    enum SequenceType : int { acrossBatch = 0, perFolderSequence = 1 };
    enum class RenameStart { started, nothingToRename, refused };

    // `presets` and `fileController` are not owned; without them the renamer uses its own presets
    // over the application's settings and the shared file controller.
    explicit PXFileRenamer(PXRenamePresets *presets = nullptr, ZQFileController *fileController = nullptr,
                           QObject *parent = nullptr);
    ~PXFileRenamer() override;

    void setQuestions(PXFileRenamerQuestions *questions) { m_questions = questions; }
    // Whether the listed files are watched for changes (a window does; a one-shot command need not).
    void setWatchesFiles(bool watches);
    // Whether timed updates compute the names on a worker thread (a window's do).
    void setComputesInBackground(bool background) { m_computesInBackground = background; }

    // Files.
    void addFilesToRename(const QList<PXFilePtr> &files);
    void removeFiles(const QList<PXBatchItemPtr> &items);
    QList<PXFileRenameItemPtr> rootItems() const;
    PXBatchOutlineModel &outline() { return *m_outline; }
    // Every shown item in display order, as of the last update.
    QList<PXFileRenameItemPtr> arrangedItems() const;

    // Options.
    int folderScanDepth() const { return m_folderScanDepth; }
    void setFolderScanDepth(int depth);
    int sortSetting() const { return m_sortSetting; }
    bool sortAscending() const { return m_sortAscending; }
    void setSortSetting(int tag, bool ascending);
    bool isFlatList() const { return m_flatList; }
    void setFlatList(bool flat);
    bool perFolder() const { return m_perFolder; }
    void setPerFolder(bool perFolder);
    // The filter of the files shown, and its text as stored in settings dictionaries.
    void setFilter(const PXRenameFilter &filter);
    const PXRenameFilter &filter() const { return m_filter; }
    const QString &filterPredicateText() const { return m_predicateText; }
    // A stored predicate text that could not be read: no file passes until another filter is set.
    const QString &filterError() const { return m_filterError; }
    // Applies stored predicate text (a preset's, the remembered one); false when unreadable.
    bool setFilterPredicateText(const QString &text);
    const PXRenameRules &renameRules() const { return m_renameRules; }
    void setRenameRules(const PXRenameRules &rules);

    // Updates.
    void updateForChanges();
    // Runs a pending (or forced) update now, on the calling thread.
    void updateNow();
    // A computation runs on a worker, or waits for the timer.
    bool isUpdatePending() const;
    void scanForCollisions();
    bool hasCollisions() const { return m_hasCollisions; }
    bool hasChanges() const { return m_hasChanges; }
    bool workInProgress() const { return m_workInProgress; }
    double progressPercentage() const { return m_progressPercentage; }
    QString windowTitle() const { return m_windowTitle; }

    // Presets.
    PXRenamePresets &presets() { return *m_presets; }
    QJsonObject currentSettingsDict() const;
    const QJsonObject &currentSettings() const { return m_currentSettings; }
    void updateWithPreset(const QJsonObject &preset);
    // Applies a saved preset (group "savedPresets") or a recent setting; false when the user kept
    // an altered preset by answering "Cancel".
    bool selectPreset(const QString &groupIdentifier, qsizetype index);
    std::optional<qsizetype> currentSavedPresetIndex() const;
    // Makes a preset the current one without applying it (a new preset made of the current
    // settings; none after presets were removed). The previous preset loses its "altered" mark:
    // its stored settings did not change.
    void setCurrentPreset(const QString &groupIdentifier, qsizetype index);
    // A saved preset was moved within its group: the current one is followed to its new index.
    void savedPresetMoved(qsizetype from, qsizetype to);
    bool isCurrentPresetAltered() const;
    // Saves the current settings into the current saved preset.
    void savePreset();
    // Asks about an altered preset; false when the action should not go on.
    bool dealWithUnsavedPreset();
    // The window may close: no scan or rename runs and no altered preset was kept by "Cancel".
    bool windowShouldClose();
    // Writes presets and recent settings.
    void windowWillClose();

    // Renaming.
    RenameStart rename();
    void cancel();
    ZQFileOperationHandler *fileOperationHandler() const;

Q_SIGNALS:
    void updated();
    void itemChanged(PXFileRenameItem *item);
    void workInProgressChanged(bool working);
    void progressChanged(double percentage);
    void scanFinished();
    // `renamed` files got their new names; `error` is what stopped the run, if anything did.
    void renameFinished(qsizetype renamed, const ZQFileOperationError &error);

private:
    void updateInBackground();
    // The steps of an update before and after the names are computed.
    void prepareUpdate();
    void finishUpdate();
    PXFileRenameItemPtr makeItem(const PXFilePtr &file, bool container);
    // Lists the folders' contents to the chosen depth, or `levels` below them.
    void scanForChildrenOfFiles(const QList<PXFilePtr> &folders, std::optional<int> levels = std::nullopt);
    // Makes items of a slice of the files the scans found.
    void listFoundFiles();
    void scanEnded();
    void rebuildContents();
    void resetSubscription();
    void setNeedsToUpdateFiles(const QList<ZQFileEvent> &events);
    void updateFiles();
    void setWorkInProgress(bool working);
    void applySortDescriptors();
    void markCurrentPreset();

    void renameItemDidChange(PXFileRenameItem *item) override;
    void fileOperationHandlerNeedsInitialResolution(ZQFileOperationHandler *handler,
                                                    ZQFileOperationGroup &group) override;
    void fileOperationHandlerNeedsPreflightResolution(ZQFileOperationHandler *handler,
                                                      ZQFileOperationGroup &group) override;
    void fileOperationHandlerReportingTransaction(ZQFileOperationHandler *handler,
                                                  const ZQFileOperationTransaction &transaction) override;
    void fileOperationHandlerCompletedOperation(ZQFileOperationHandler *handler) override;

    std::unique_ptr<PXRenamePresets> m_ownPresets;
    PXRenamePresets *m_presets = nullptr;
    ZQFileController *m_fileController = nullptr;
    PXFileRenamerQuestions *m_questions = nullptr;
    std::unique_ptr<PXBatchOutlineModel> m_outline;

    PXRenameRules m_renameRules;
    QList<PXFileRenameItemPtr> m_rootItemList;
    QHash<QString, PXFileRenameItemPtr> m_rootItems;
    int m_folderScanDepth = 0;
    int m_sortSetting = byName;
    bool m_sortAscending = true;
    bool m_flatList = false;
    bool m_perFolder = false;
    QString m_predicateText;
    PXRenameFilter m_filter;
    QString m_filterError;
    bool m_computesInBackground = false;
    std::shared_ptr<PXRenameComputation> m_computation; // the one running on a worker, if any

    bool m_hasChanges = true;
    bool m_hasCollisions = false;
    bool m_workInProgress = false;
    double m_progressPercentage = 0;
    QDateTime m_workBeganDate;
    QElapsedTimer m_workTimer;
    QString m_windowTitle;

    QString m_currentPresetGroup;
    qsizetype m_currentPresetIndex = -1;
    QJsonObject m_currentSettings;

    QList<QPointer<ZQFolderLoadOperation>> m_fileLoaders;
    QList<PXFilePtr> m_foundFiles; // found by the scans, not listed yet
    QTimer m_foundFilesTimer;
    QPointer<ZQFileOperationHandler> m_fileOperationHandler;
    QList<PXFileRenameItemPtr> m_renamingItems; // parallel to the units of the running rename
    QList<PXFilePtr> m_observedFiles;
    std::optional<ZQFileOperationResolution> m_destinationExistsAnswer;
    std::optional<ZQFileOperationResolution> m_otherErrorAnswer;
    ZQFileOperationError m_renameError;

    bool m_watchesFiles = true;
    std::unique_ptr<ZQFilesSubscription> m_filesSubscription;
    QList<ZQFileEvent> m_pendingEvents;
    QTimer m_updateTimer;
    QTimer m_updateFilesTimer;
};
