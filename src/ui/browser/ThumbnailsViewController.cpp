#include "ui/browser/ThumbnailsViewController.h"

#include "core/activities/ActivitiesManager.h"
#include "core/app/Dispatch.h"
#include "core/app/Log.h"
#include "core/model/FileCollectionModel.h"
#include "core/model/PXFile.h"
#include "core/settings/AppSettings.h"
#include "core/settings/SettingsManager.h"
#include "core/thumbnails/ThumbnailGenerator.h"
#include "core/thumbnails/ThumbnailVisibilityUpdater.h"
#include "ui/activities/FileOperationsController.h"
#include "ui/browser/InlineRenameOperation.h"
#include "ui/browser/RenamedFileFollower.h"
#include "ui/browser/ThumbnailGridDataSource.h"
#include "ui/browser/ThumbnailInfoLines.h"
#include "ui/browser/ThumbnailItemSize.h"
#include "ui/browser/ThumbnailsActionHandler.h"
#include "ui/browser/ThumbnailsSettingsBinding.h"
#include "ui/browser/ThumbnailsStatusText.h"

#include <QEvent>
#include <QFileInfo>
#include <QLabel>
#include <QMenu>
#include <QTimer>
#include <QVBoxLayout>

namespace {
// Room around each section's cells.
const QMargins sectionInsets(10, 10, 10, 10);
// Coalesces a run of keyboard moves into one report to the window (the inspector and the
// preview load on each report).
constexpr int selectionChangeDelayMs = 40;
} // namespace

ThumbnailsViewController::ThumbnailsViewController(WindowSettingsPtr settings, QWidget *parent)
    : QWidget(parent)
    , m_windowSettings(settings ? std::move(settings) : std::make_shared<WindowSettings>())
    , m_collection(new FileCollectionModel(this))
    , m_visibility(
          new ThumbnailVisibilityUpdater(m_allItemsFlat, m_indexByFile, m_windowSettings, &thumbnailInfoLines, this))
    , m_dataSource(std::make_unique<ThumbnailGridDataSource>(*this, m_windowSettings, *m_visibility))
    , m_grid(new ThumbnailGridView(m_dataSource.get(), this))
    , m_loadingLabel(new QLabel(tr("Loading Files..."), this))
    , m_selectionChangeTimer(new QTimer(this))
    , m_renameFollower(new RenamedFileFollower(this))
    , m_actionHandler(new ThumbnailsActionHandler(this))
{
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_grid);
    m_loadingLabel->setObjectName(QStringLiteral("loadingNotice"));
    m_loadingLabel->setAlignment(Qt::AlignCenter);
    m_loadingLabel->setWordWrap(true);
    m_loadingLabel->setAttribute(Qt::WA_TransparentForMouseEvents);
    m_loadingLabel->hide();
    m_grid->gridLayout().setSectionInsets(sectionInsets);
    m_grid->installEventFilter(this);
    setFocusProxy(m_grid);

    m_collection->representedItemGenerator = [this](const PXFilePtr &file) -> std::any {
        if (ThumbnailItemPtr item = m_allItemsByFile.value(file.get()))
            return item;
        auto item = std::make_shared<ThumbnailItem>(file, m_windowSettings);
        item->setController(this, this);
        m_allItemsByFile.insert(file.get(), item);
        return item;
    };
    m_collection->fileUpdateCallback = [this](const FileModelPtr &node) {
        const PXFile *file = node->file().get();
        m_visibility->forgetInfoLines(file);
        if (ThumbnailItemPtr item = m_allItemsByFile.value(file)) {
            if (item->lookedForThumbnail())
                item->reload();
            if (item->indexPath)
                m_grid->updateItem(*item->indexPath);
        }
    };
    m_collection->fileSwapCallback = [this](const FileModelPtr &node, const PXFilePtr &previous) {
        // A file renamed from outside keeps its place in the selection under its new record.
        for (PXFilePtr &selected : m_selectedFiles) {
            if (selected == previous) {
                selected = node->file();
                m_selectionChangeTimer->start();
            }
        }
    };
    connect(m_collection, &FileCollectionModel::representationsPublished, this, &ThumbnailsViewController::publish);
    connect(m_collection, &FileCollectionModel::isLoadingChanged, this, [this] {
        updateStatus();
        restoreStateIfSettled();
    });
    connect(m_collection, &FileCollectionModel::itemCountChanged, this, &ThumbnailsViewController::updateStatus);
    connect(m_collection, &FileCollectionModel::foundCountChanged, this, &ThumbnailsViewController::updateStatus);
    connect(m_collection, &FileCollectionModel::longLoadingChanged, this, &ThumbnailsViewController::updateStatus);
    connect(m_collection, &FileCollectionModel::folderFailed, this, [this](const QString &path, const QString &reason) {
        logError(tr("Cannot list %1: %2").arg(path, reason));
        // Shown in place of the files; a folder that is gone altogether is the window's to leave.
        m_failureText = tr("\"%1\" cannot be read. %2").arg(PXFile::fileForPath(path)->displayName(), reason);
        checkSourcesExist();
        updateStatus();
    });

    connect(m_visibility, &ThumbnailVisibilityUpdater::thumbnailForgotten, this,
            [this](const ThumbnailItem *item) { m_dataSource->forgetThumbnail(item); });
    connect(m_visibility, &ThumbnailVisibilityUpdater::infoLinesChanged, m_grid, &ThumbnailGridView::updateItem);
    connect(m_visibility, &ThumbnailVisibilityUpdater::attributesRead, m_grid, &ThumbnailGridView::updateItem);

    connect(m_grid, &ThumbnailGridView::selectionChanged, this, &ThumbnailsViewController::gridSelectionChanged);
    connect(m_grid, &ThumbnailGridView::visibleRangeChanged, this, &ThumbnailsViewController::updateVisibility);
    connect(m_grid, &ThumbnailGridView::scrollingChanged, &ThumbnailGenerator::shared(),
            &ThumbnailGenerator::viewScrollingChanged);
    connect(m_grid, &ThumbnailGridView::activated, this, [this] { m_actionHandler->performOpen(); });
    connect(m_grid, &ThumbnailGridView::nameEdited, this, &ThumbnailsViewController::commitNameEdit);
    connect(m_grid, &ThumbnailGridView::renameShortcutPressed, this, [this] { m_actionHandler->renameFile(); });
    connect(m_grid, &ThumbnailGridView::contextMenuRequested, this, [this](int index, const QPoint &globalPos) {
        QMenu *menu = m_actionHandler->makeContextMenu(index);
        if (!menu)
            return;
        menu->setAttribute(Qt::WA_DeleteOnClose);
        menu->popup(globalPos);
    });
    connect(m_actionHandler, &ThumbnailsActionHandler::openRequested, this, &ThumbnailsViewController::openRequested);
    connect(m_actionHandler, &ThumbnailsActionHandler::flagChangeRequested, this,
            &ThumbnailsViewController::flagChangeRequested);
    connect(m_actionHandler, &ThumbnailsActionHandler::errorOccurred, this, &ThumbnailsViewController::errorOccurred);
    // Images turned for good turn in their cells at once.
    connect(&ActivitiesManager::shared(), &ActivitiesManager::imagesRotated, this,
            [this](const QList<PXFilePtr> &files, JpegRotation::Turn turn) {
                for (const PXFilePtr &file : files) {
                    if (const ThumbnailItemPtr item = m_allItemsByFile.value(file.get()))
                        item->showTurned(turn == JpegRotation::Turn::clockwise);
                }
            });

    m_selectionChangeTimer->setSingleShot(true);
    m_selectionChangeTimer->setInterval(selectionChangeDelayMs);
    connect(m_selectionChangeTimer, &QTimer::timeout, this, [this] { Q_EMIT selectionChanged(m_selectedFiles); });

    WindowSettings *ws = m_windowSettings.get();
    ThumbnailsSettingsBinding::bindCollection(ws, m_collection);
    connect(ws, &WindowSettings::thumbnailsSubfolderInclusionStyleChanged, this, &ThumbnailsViewController::publish);
    connect(ws, &WindowSettings::thumbnailSizeChanged, this, &ThumbnailsViewController::updateItemSize);
    connect(ws, &WindowSettings::browserLayoutChanged, this, &ThumbnailsViewController::updateItemSize);
    connect(ws, &WindowSettings::thumbnailShowInformationChanged, this, &ThumbnailsViewController::updateItemSize);
    connect(ws, &WindowSettings::thumbnailInformationChanged, this, [this] {
        m_visibility->clearInfoLines();
        updateItemSize();
    });
    if (AppSettings *app = SettingsManager::shared().settings())
        ThumbnailsSettingsBinding::bindGrid(app, m_grid, m_loadingLabel);
    updateItemSize();
    updateStatus();
}

ThumbnailsViewController::~ThumbnailsViewController()
{
    m_grid->disconnect(this);
    // Items may outlive the pane in a pending result: they must not call back into it.
    for (const ThumbnailItemPtr &item : std::as_const(m_allItemsByFile)) {
        item->setController(nullptr, nullptr);
        item->setVisible(Visibility::offscreen);
    }
}

bool ThumbnailsViewController::eventFilter(QObject *watched, QEvent *event)
{
    if (watched == m_grid && event->type() == QEvent::Resize) {
        updateItemSize();
        m_loadingLabel->setGeometry(m_grid->geometry());
    }
    return QWidget::eventFilter(watched, event);
}

void ThumbnailsViewController::setSources(const QList<PXFilePtr> &folders)
{
    if (thumbnailsSavedSourcesKey(folders) == thumbnailsSavedSourcesKey(m_currentSources) && !folders.isEmpty())
        return;
    saveState();
    m_currentSources = folders;
    m_failureText.clear();
    m_renameFollower->clear();
    m_dropValidator.reset();
    m_selectedFiles.clear();
    m_newFile.reset();
    if (!m_filesToSelect.isEmpty() && !folders.contains(PXFile::from(m_filesToSelect.first()->parentItem())))
        m_filesToSelect.clear();
    // The grid empties at once; the new folders' files follow as they are listed.
    // Offscreen first: that takes the waiting requests out of the generator's queue.
    for (const ThumbnailItemPtr &item : std::as_const(m_allItemsByFile)) {
        item->setVisible(Visibility::offscreen);
        item->reset();
    }
    m_allItemsByFile.clear();
    m_allItemsFlat.clear();
    m_indexByFile.clear();
    m_sectionFolders.clear();
    m_visibility->clear();
    m_dataSource->clearThumbnails();
    m_grid->gridLayout().setSections({}, false);
    m_grid->relayout();
    m_grid->setScrollOrigin({0, 0});
    m_needsRestore = true;
    m_collection->setCollectionRoots(folders);
    m_selectionChangeTimer->start();
    updateStatus();
}

void ThumbnailsViewController::saveState()
{
    if (m_currentSources.isEmpty())
        return;
    ThumbnailsSavedState state;
    state.sources = m_currentSources;
    state.selectedFiles = m_selectedFiles;
    state.layout = m_windowSettings->browserLayout();
    state.scrollOrigin = m_grid->scrollOrigin();
    const int first = m_grid->firstVisibleIndex();
    if (first >= 0)
        state.initialIndexPath = first;
    m_savedStates.insert(thumbnailsSavedSourcesKey(m_currentSources), state);
}

void ThumbnailsViewController::restoreStateIfSettled()
{
    if (!m_needsRestore || m_currentSources.isEmpty() || !m_collection->isSettled())
        return;
    m_needsRestore = false;
    const auto it = m_savedStates.constFind(thumbnailsSavedSourcesKey(m_currentSources));
    if (it != m_savedStates.cend()) {
        selectFiles(it->selectedFiles);
        if (it->layout == m_windowSettings->browserLayout())
            m_grid->setScrollOrigin(it->scrollOrigin);
        else if (it->initialIndexPath)
            m_grid->scrollToItem(*it->initialIndexPath);
        return;
    }
    AppSettings *app = SettingsManager::shared().settings();
    if (app && app->thumbnailsAutoselectFirstItem() && !m_allItemsFlat.isEmpty() && m_selectedFiles.isEmpty())
        selectFiles({m_allItemsFlat.first()->file()});
}

ThumbnailItemPtr ThumbnailsViewController::itemForNode(const FileModelPtr &node)
{
    const PXFilePtr &file = node->file();
    if (node->representedItem.has_value()) {
        if (const auto *item = std::any_cast<ThumbnailItemPtr>(&node->representedItem);
            item && *item && (*item)->file() == file) {
            m_allItemsByFile.insert(file.get(), *item);
            return *item;
        }
    }
    if (ThumbnailItemPtr item = m_allItemsByFile.value(file.get()))
        return item;
    logDebug(QStringLiteral("There should always be a thumbnail item. Create a new one..."));
    auto item = std::make_shared<ThumbnailItem>(file, m_windowSettings);
    item->setController(this, this);
    node->representedItem = item;
    return item;
}

void ThumbnailsViewController::publish()
{
    const bool byFolder = m_windowSettings->thumbnailsSubfolderInclusionStyle() == SubfolderInclusionStyle::byFolder;
    QList<int> counts;
    QList<FileModelPtr> nodes;
    m_sectionFolders.clear();
    if (byFolder) {
        for (const FileCollectionModel::FolderGroup &group : m_collection->folderGroups()) {
            counts.append(int(group.files.size()));
            m_sectionFolders.append(group.folder);
            nodes.append(group.files);
        }
    } else {
        nodes = m_collection->flatRepresentation();
        counts.append(int(nodes.size()));
    }

    // Where the selection started, for choosing the item that followed it when it goes away.
    int firstSelectedIndex = -1;
    const int previousCount = int(m_allItemsFlat.size());
    for (const PXFilePtr &file : std::as_const(m_selectedFiles)) {
        const int index = m_indexByFile.value(file.get(), -1);
        if (index >= 0 && (firstSelectedIndex < 0 || index < firstSelectedIndex))
            firstSelectedIndex = index;
    }

    QHash<const PXFile *, ThumbnailItemPtr> items;
    items.reserve(nodes.size());
    QList<ThumbnailItemPtr> flat;
    flat.reserve(nodes.size());
    m_indexByFileBefore = std::move(m_indexByFile);
    m_indexByFile.clear();
    m_indexByFile.reserve(nodes.size());
    for (const FileModelPtr &node : std::as_const(nodes)) {
        ThumbnailItemPtr item = itemForNode(node);
        item->indexPath = int(flat.size());
        m_indexByFile.insert(item->file().get(), int(flat.size()));
        items.insert(item->file().get(), item);
        flat.append(item);
    }
    for (auto it = m_allItemsByFile.cbegin(); it != m_allItemsByFile.cend(); ++it) {
        if (!items.contains(it.key())) {
            ThumbnailItem *gone = it.value().get();
            gone->setController(nullptr, nullptr);
            m_visibility->forget(gone);
        }
    }
    QList<PXFilePtr> arrived;
    if (!m_selectedFiles.isEmpty() || m_renameFollower->isWaiting()) {
        for (auto it = items.cbegin(); it != items.cend(); ++it) {
            if (!m_allItemsByFile.contains(it.key()) || !m_indexByFileBefore.contains(it.key()))
                arrived.append(it.value()->file());
        }
    }
    m_allItemsByFile = std::move(items);
    m_allItemsFlat = std::move(flat);

    const bool headers =
        byFolder && (m_currentSources.size() > 1 || m_windowSettings->thumbnailsFolderSearchDepth() > 0);
    m_grid->gridLayout().setSections(counts, headers);
    const QList<PXFilePtr> previousSelection = m_selectedFiles;
    m_grid->relayout();
    // A selected file that left may come back under another name, in this or a later publication.
    m_renameFollower->noteShown([this](const PXFilePtr &file) { return m_indexByFile.contains(file.get()); });
    // Files arriving or changing must not pull the view back to the selection.
    selectFiles(previousSelection, false);
    QPointer<ThumbnailsViewController> self(this);
    m_renameFollower->lookForRenamed(arrived, [self](const QList<PXFilePtr> &renamed) {
        if (self)
            self->selectRenamedFiles(renamed);
    });
    m_indexByFileBefore.clear();
    AppSettings *app = SettingsManager::shared().settings();
    // Exactly the selected files left (moved away or deleted, not filtered out with others): the
    // item that followed them takes over.
    const bool selectionLeft = int(m_allItemsFlat.size()) == previousCount - int(previousSelection.size());
    if (m_selectedFiles.isEmpty() && firstSelectedIndex >= 0 && selectionLeft && !m_allItemsFlat.isEmpty() && app
        && app->thumbnailsAutoselectNextItemAfterMove()) {
        const int next = std::min(firstSelectedIndex, int(m_allItemsFlat.size()) - 1);
        m_grid->setSelectedIndexes({next}, next);
        m_autoselectedFile = fileAt(next);
    }
    if (m_newFile)
        editNameWhenShown(m_newFile);
    updateVisibility();
    updateStatus();
    restoreStateIfSettled();
    if (!m_filesToSelect.isEmpty())
        selectWhenShown(QList<PXFilePtr>(m_filesToSelect));
    if (m_collection->isSettled())
        checkSourcesExist();
}

void ThumbnailsViewController::checkSourcesExist()
{
    // On a worker: asking a vanished network mount may hang.
    QPointer<ThumbnailsViewController> self(this);
    const QList<PXFilePtr> sources = m_currentSources;
    runOnPool(QStringLiteral("Browser Disk Work"), [self, sources] {
        QList<PXFilePtr> gone;
        for (const PXFilePtr &source : sources) {
            if (!QFileInfo(source->path()).isDir())
                gone.append(source);
        }
        if (gone.isEmpty())
            return;
        postToGui([self, gone] {
            if (!self)
                return;
            for (const PXFilePtr &source : gone) {
                if (self->m_currentSources.contains(source))
                    Q_EMIT self->sourceVanished(source,
                                                tr("The folder \"%1\" is no longer there.").arg(source->displayName()));
            }
        });
    });
}

void ThumbnailsViewController::selectFiles(const QList<PXFilePtr> &files, bool scroll)
{
    QList<int> indexes;
    for (const PXFilePtr &file : files) {
        const auto it = m_indexByFile.constFind(file.get());
        if (it != m_indexByFile.cend())
            indexes.append(*it);
    }
    int current = m_grid->currentIndex();
    if (!indexes.contains(current))
        current = indexes.isEmpty() ? -1 : indexes.first();
    m_grid->setSelectedIndexes(indexes, current);
    if (scroll && current >= 0)
        m_grid->scrollToItem(current);
}

void ThumbnailsViewController::updateItemSize()
{
    const BrowserLayout layout = m_windowSettings->browserLayout();
    const bool singleRow = layout == BrowserLayout::topPreview;
    const int lines = thumbnailInfoLineCount(m_windowSettings->thumbnailInformation(), singleRow);
    ThumbnailItemSizeInput input;
    input.thumbnailSize = m_windowSettings->thumbnailSize();
    input.layout = layout;
    input.gridSize = m_grid->size();
    input.stackViewHeight =
        thumbnailStackViewHeight(m_windowSettings->thumbnailShowInformation(), lines, m_grid->lineHeight());
    input.sectionInsets = sectionInsets;
    const QSize size = thumbnailItemSize(input);
    ThumbnailGridLayout &grid = m_grid->gridLayout();
    if (size == grid.itemSize() && singleRow == grid.isSingleRow())
        return;
    const int anchor = m_grid->currentIndex() >= 0 ? m_grid->currentIndex() : m_grid->firstVisibleIndex();
    grid.setItemSize(size);
    grid.setSingleRow(singleRow);
    m_dataSource->clearThumbnails();
    m_grid->relayout();
    if (anchor >= 0)
        m_grid->scrollToItem(anchor);
}

void ThumbnailsViewController::updateVisibility()
{
    const auto [first, last] = m_grid->onscreenRange();
    const auto [nearFirst, nearLast] = m_grid->nearbyRange();
    m_visibility->setVisibleRange(first, last, nearFirst, nearLast);
}

void ThumbnailsViewController::thumbnailItemThumbnailChanged(ThumbnailItem &item)
{
    m_dataSource->forgetThumbnail(&item);
    if (item.indexPath)
        m_grid->updateItem(*item.indexPath);
}

PXFilePtr ThumbnailsViewController::fileAt(int index) const
{
    return index >= 0 && index < m_allItemsFlat.size() ? m_allItemsFlat[index]->file() : nullptr;
}

PXFilePtr ThumbnailsViewController::dropDestination(int index, int section) const
{
    if (const PXFilePtr file = fileAt(index); file && (file->isDirectory() || file->isApplication()))
        return file;
    if (m_grid->gridLayout().showsHeaders() && section >= 0 && section < m_sectionFolders.size()
        && m_sectionFolders[section])
        return m_sectionFolders[section]->file();
    return m_currentSources.size() == 1 ? m_currentSources.first() : nullptr;
}

FileDropOperation ThumbnailsViewController::dropOperation(const QList<QUrl> &urls, int index, int section,
                                                          Qt::KeyboardModifiers modifiers)
{
    return m_dropValidator.validate(urls, dropDestination(index, section), modifiers);
}

bool ThumbnailsViewController::acceptDrop(const QList<QUrl> &urls, int index, int section,
                                          Qt::KeyboardModifiers modifiers)
{
    const FileDropOperation operation = dropOperation(urls, index, section, modifiers);
    const PXFilePtr destination = dropDestination(index, section);
    if (operation == FileDropOperation::none || !destination)
        return false;
    QList<PXFilePtr> sources;
    for (const QUrl &url : urls)
        sources.append(PXFile::fileForPath(url.toLocalFile()));
    m_dropValidator.reset();
    m_actionHandler->placeDroppedFiles(operation, sources, destination);
    return true;
}

void ThumbnailsViewController::gridSelectionChanged()
{
    QList<PXFilePtr> files;
    const QList<int> indexes = m_grid->selectedIndexes();
    files.reserve(indexes.size());
    for (int index : indexes)
        files.append(m_allItemsFlat.value(index) ? m_allItemsFlat[index]->file() : nullptr);
    files.removeAll(nullptr);
    if (files == m_selectedFiles)
        return;
    m_selectedFiles = files;
    updateStatus();
    m_selectionChangeTimer->start();
    m_renameFollower->remember(m_selectedFiles);
}

void ThumbnailsViewController::selectRenamedFiles(const QList<PXFilePtr> &renamed)
{
    // What was chosen only because the file seemed gone gives way to the file itself.
    QList<PXFilePtr> selection = m_selectedFiles;
    if (selection.size() == 1 && selection.first() == m_autoselectedFile)
        selection.clear();
    for (const PXFilePtr &file : renamed) {
        if (!selection.contains(file))
            selection.append(file);
    }
    selectFiles(selection, false);
}

void ThumbnailsViewController::updateStatus()
{
    ThumbnailsStatusInput input;
    for (const PXFilePtr &source : std::as_const(m_currentSources))
        input.sourceNames.append(source->displayName());
    input.includesSubfolders = m_windowSettings->thumbnailsFolderSearchDepth() > 0;
    input.loading = m_collection->isLoading();
    input.foundCount = m_collection->foundCount();
    input.fileCount = int(m_allItemsFlat.size());
    input.selectedCount = int(m_selectedFiles.size());
    const QString text = thumbnailsStatusText(input);
    const bool empty = m_allItemsFlat.isEmpty() && !m_currentSources.isEmpty();
    // A folder that lists quickly shows its files without a notice flashing first.
    const bool longLoading = input.loading && m_collection->isLongLoading();
    m_loadingLabel->setText(longLoading || m_failureText.isEmpty() ? tr("Loading Files...") : m_failureText);
    m_loadingLabel->setVisible(empty && (longLoading || (!input.loading && !m_failureText.isEmpty())));
    if (text == m_statusText)
        return;
    m_statusText = text;
    Q_EMIT statusTextChanged(text);
}

QString ThumbnailsViewController::statusText() const
{
    return m_statusText;
}

QList<PXFilePtr> ThumbnailsViewController::files() const
{
    QList<PXFilePtr> result;
    result.reserve(m_allItemsFlat.size());
    for (const ThumbnailItemPtr &item : m_allItemsFlat)
        result.append(item->file());
    return result;
}

bool ThumbnailsViewController::isLoading() const
{
    return m_collection->isLoading() || !m_collection->isSettled();
}

void ThumbnailsViewController::setFlagLookup(std::function<FileFlag(const PXFilePtr &)> lookup)
{
    m_flagLookup = std::move(lookup);
    m_grid->viewport()->update();
}

void ThumbnailsViewController::commitNameEdit(int index, const QString &text)
{
    const PXFilePtr file = fileAt(index);
    if (!file) {
        logError(QStringLiteral("Unable to get file for edit enabled text field"));
        return;
    }
    const QString name = text.trimmed();
    if (name.isEmpty() || name == file->name())
        return;
    // A new extension makes the file another kind of file: asked first.
    if (!file->isDirectory() && FileOperationsController::changesExtension(file->name(), name)
        && !m_actionHandler->fileOperations()->confirmExtensionChange(file->name(), name, this))
        return;
    QPointer<ThumbnailsViewController> self(this);
    InlineRenameOperation::start(file, name, this, [self, name](const QString &newPath, const QString &error) {
        if (!self)
            return;
        if (!error.isEmpty()) {
            logError(tr("Cannot rename to \"%1\": %2").arg(name, error));
            Q_EMIT self->errorOccurred(tr("The file could not be renamed"), error);
            return;
        }
        // Keep the renamed file selected once the folder lists it under its new name.
        self->m_newFile.reset();
        const PXFilePtr renamed = PXFile::fileForPath(newPath);
        self->m_selectedFiles = {renamed};
        self->m_selectionChangeTimer->start();
    });
}

void ThumbnailsViewController::editNameWhenShown(const PXFilePtr &file)
{
    m_newFile = file;
    const auto it = m_indexByFile.constFind(m_newFile.get());
    if (it != m_indexByFile.cend()) {
        m_newFile.reset();
        m_grid->setSelectedIndexes({*it}, *it);
        m_grid->editName(*it);
    }
}

void ThumbnailsViewController::selectWhenShown(const QList<PXFilePtr> &files)
{
    m_filesToSelect = files;
    QList<int> indexes;
    for (const PXFilePtr &file : files) {
        const auto it = m_indexByFile.constFind(file.get());
        if (it == m_indexByFile.cend())
            return;
        indexes.append(*it);
    }
    m_filesToSelect.clear();
    if (indexes.isEmpty())
        return;
    m_grid->setSelectedIndexes(indexes, indexes.last());
    m_grid->scrollToItem(indexes.last());
}

void ThumbnailsViewController::thumbnailViewSearch(const QString &text)
{
    m_searchString = text;
    m_collection->setSearch(m_searchType, m_searchString);
}

void ThumbnailsViewController::setThumbnailViewSearchCategory(ThumbnailsSearchType type)
{
    if (type == m_searchType)
        return;
    m_searchType = type;
    if (!m_searchString.isEmpty())
        m_collection->setSearch(m_searchType, m_searchString);
}
