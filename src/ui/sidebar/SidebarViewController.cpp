#include "ui/sidebar/SidebarViewController.h"

#include "core/model/PXFile.h"
#include "core/settings/AppSettings.h"
#include "ui/activities/FileOperationsController.h"
#include "ui/sidebar/FavoritesView.h"
#include "ui/sidebar/FolderTreeModel.h"

#include <QContextMenuEvent>
#include <QDesktopServices>
#include <QDropEvent>
#include <QHeaderView>
#include <QMenu>
#include <QMimeData>
#include <QSplitter>
#include <QTreeView>
#include <QUrl>
#include <QVBoxLayout>

SidebarViewController::SidebarViewController(WindowSettingsPtr settings, AppSettings *appSettings, QWidget *parent)
    : QWidget(parent)
    , m_settings(std::move(settings))
    , m_appSettings(appSettings)
    , m_splitter(new QSplitter(Qt::Vertical, this))
    , m_tree(new QTreeView(m_splitter))
    , m_model(new FolderTreeModel(this))
    , m_favorites(new FavoritesView(appSettings, m_splitter))
{
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_splitter);
    m_splitter->setChildrenCollapsible(true);
    m_splitter->setStretchFactor(0, 1);
    m_splitter->setStretchFactor(1, 0);

    m_model->setSort(m_settings->sidebarSortType(), m_settings->sidebarReverseSort());
    m_model->setFilter(m_settings->sidebarFileFilter());
    m_model->setInfo(m_settings->sidebarInfo());
    m_tree->setModel(m_model);
    m_tree->setHeaderHidden(true);
    m_tree->setUniformRowHeights(true);
    m_tree->setSelectionMode(QAbstractItemView::ExtendedSelection);
    m_tree->setDragEnabled(true);
    m_tree->setDragDropMode(QAbstractItemView::DragOnly);
    // Files dropped onto a folder of the tree go there; the tree's own drop handling is not used.
    m_tree->viewport()->setAcceptDrops(true);
    m_tree->viewport()->installEventFilter(this);
    m_tree->setFrameShape(QFrame::NoFrame);
    m_tree->setAllColumnsShowFocus(true);
    m_tree->header()->setStretchLastSection(false);
    m_tree->header()->setSectionResizeMode(0, QHeaderView::Stretch);
    m_tree->header()->setSectionResizeMode(1, QHeaderView::ResizeToContents);
    m_tree->setFocusPolicy(m_appSettings->sidebarAllowsKeyboardControl() ? Qt::StrongFocus : Qt::ClickFocus);
    connect(m_appSettings, &AppSettings::sidebarAllowsKeyboardControlChanged, m_tree,
            [this](bool allowed) { m_tree->setFocusPolicy(allowed ? Qt::StrongFocus : Qt::ClickFocus); });

    m_splitter->setSizes({600, int(m_settings->favoritesHeight())});
    setFavoritesShown(!m_settings->favoritesCollapsed());

    connect(m_tree->selectionModel(), &QItemSelectionModel::selectionChanged, this,
            &SidebarViewController::treeSelectionChanged);
    connect(m_tree, &QTreeView::expanded, this, &SidebarViewController::expansionChanged);
    connect(m_tree, &QTreeView::collapsed, this, &SidebarViewController::expansionChanged);
    connect(m_model, &FolderTreeModel::folderListed, this, &SidebarViewController::continueRestore);
    connect(m_model, &FolderTreeModel::folderVanished, this, &SidebarViewController::folderVanished);
    connect(m_favorites, &FavoritesView::folderActivated, this, &SidebarViewController::revealFolder);
    connect(m_favorites, &FavoritesView::applicationActivated, this,
            &SidebarViewController::favoriteApplicationActivated);

    connect(m_settings.get(), &WindowSettings::sidebarRootFolderChanged, this, [this](const PXFilePtr &root) {
        if (root != m_model->rootFolder())
            setRootFolder(root);
    });
    connect(m_settings.get(), &WindowSettings::sidebarSortTypeChanged, this,
            [this] { m_model->setSort(m_settings->sidebarSortType(), m_settings->sidebarReverseSort()); });
    connect(m_settings.get(), &WindowSettings::sidebarReverseSortChanged, this,
            [this] { m_model->setSort(m_settings->sidebarSortType(), m_settings->sidebarReverseSort()); });
    connect(m_settings.get(), &WindowSettings::sidebarFileFilterChanged, m_model, &FolderTreeModel::setFilter);
    connect(m_settings.get(), &WindowSettings::sidebarInfoChanged, m_model, &FolderTreeModel::setInfo);
    connect(m_settings.get(), &WindowSettings::favoritesCollapsedChanged, this,
            [this](bool collapsed) { setFavoritesShown(!collapsed); });

    showPlace({m_settings->sidebarSelection(), m_settings->sidebarExpandedFolders(), m_settings->sidebarRootFolder()});
}

SidebarViewController::~SidebarViewController() = default;

FileDropOperation SidebarViewController::dropOperation(const QList<QUrl> &urls, const QPoint &position,
                                                       Qt::KeyboardModifiers modifiers)
{
    const PXFilePtr folder = m_model->fileForIndex(m_tree->indexAt(position));
    const FileDropOperation operation =
        folder ? m_dropValidator.validate(urls, folder, modifiers) : FileDropOperation::none;
    // Only folders take drops here; applications are opened from the grid.
    return operation == FileDropOperation::open ? FileDropOperation::none : operation;
}

bool SidebarViewController::acceptDrop(const QList<QUrl> &urls, const QPoint &position, Qt::KeyboardModifiers modifiers)
{
    const FileDropOperation operation = dropOperation(urls, position, modifiers);
    const PXFilePtr folder = m_model->fileForIndex(m_tree->indexAt(position));
    m_dropValidator.reset();
    if (operation == FileDropOperation::none || !folder)
        return false;
    QList<PXFilePtr> sources;
    for (const QUrl &url : urls)
        sources.append(PXFile::fileForPath(url.toLocalFile()));
    FileOperationsController &operations = FileOperationsController::shared();
    switch (operation) {
    case FileDropOperation::move: operations.move(sources, folder); break;
    case FileDropOperation::copy: operations.copy(sources, folder); break;
    case FileDropOperation::link: operations.link(sources, folder); break;
    case FileDropOperation::ask: operations.offerPlacement(sources, folder, this); break;
    case FileDropOperation::none:
    case FileDropOperation::open: return false;
    }
    return true;
}

bool SidebarViewController::eventFilter(QObject *watched, QEvent *event)
{
    if (watched != m_tree->viewport())
        return QWidget::eventFilter(watched, event);
    switch (event->type()) {
    case QEvent::DragEnter:
    case QEvent::DragMove: {
        auto *drag = static_cast<QDragMoveEvent *>(event);
        if (!drag->mimeData()->hasUrls()) {
            drag->ignore();
            return true;
        }
        const FileDropOperation operation =
            dropOperation(drag->mimeData()->urls(), drag->position().toPoint(), drag->modifiers());
        if (operation == FileDropOperation::none) {
            // Entering over a place that takes nothing still lets the drag move on over the tree.
            if (event->type() == QEvent::DragEnter)
                drag->accept();
            else
                drag->ignore();
            return true;
        }
        drag->setDropAction(dropActionForOperation(operation));
        drag->accept();
        return true;
    }
    case QEvent::DragLeave: m_dropValidator.reset(); return true;
    case QEvent::Drop: {
        auto *drop = static_cast<QDropEvent *>(event);
        const bool done = acceptDrop(drop->mimeData()->urls(), drop->position().toPoint(), drop->modifiers());
        if (done) {
            drop->setDropAction(Qt::CopyAction); // the source never removes anything itself
            drop->accept();
        } else {
            drop->ignore();
        }
        return true;
    }
    default: return QWidget::eventFilter(watched, event);
    }
}

QList<PXFilePtr> SidebarViewController::selectedFiles() const
{
    QList<PXFilePtr> files;
    for (const QModelIndex &index : m_tree->selectionModel()->selectedRows(0)) {
        if (PXFilePtr file = m_model->fileForIndex(index))
            files.append(std::move(file));
    }
    return files;
}

QList<PXFilePtr> SidebarViewController::sources() const
{
    QList<PXFilePtr> folders;
    for (const PXFilePtr &file : selectedFiles()) {
        // A selected file stands for its folder.
        PXFilePtr folder = file->isDirectory() ? file : PXFile::from(file->parentItem());
        if (folder && !folders.contains(folder))
            folders.append(folder);
    }
    if (folders.isEmpty() && m_model->rootFolder())
        folders.append(m_model->rootFolder());
    return folders;
}

NavigationHistory::Item SidebarViewController::currentPlace() const
{
    return {selectedFiles(), m_settings->sidebarExpandedFolders(), m_model->rootFolder()};
}

void SidebarViewController::setRootFolder(const PXFilePtr &root)
{
    showPlace({{}, {}, root});
}

void SidebarViewController::showPlace(const NavigationHistory::Item &place)
{
    const PXFilePtr root = place.rootFolder ? place.rootFolder : m_model->rootFolder();
    m_restoring = true;
    m_tree->selectionModel()->clearSelection();
    m_model->setRootFolder(root);
    m_settings->setSidebarRootFolder(root);
    // The root is always open: its folders are what the tree is for.
    QList<PXFilePtr> expanded = place.expandedFolders;
    if (!expanded.contains(root))
        expanded.prepend(root);
    beginRestore(expanded, place.selectedFiles);
}

void SidebarViewController::revealFolder(const PXFilePtr &folder)
{
    if (!folder)
        return;
    const PXFilePtr root = m_model->rootFolder();
    if (root && selectionLiesUnder(folder, root)) {
        QList<PXFilePtr> expanded = m_settings->sidebarExpandedFolders();
        m_restoring = true;
        beginRestore(expanded, {folder});
        return;
    }
    showPlace({{folder}, {}, folder});
}

bool SidebarViewController::selectionLiesUnder(const PXFilePtr &file, const PXFilePtr &folder) const
{
    const QString base = folder->path();
    return file->path() == base
        || file->path().startsWith(base.endsWith(QLatin1Char('/')) ? base : base + QLatin1Char('/'));
}

void SidebarViewController::beginRestore(const QList<PXFilePtr> &expanded, const QList<PXFilePtr> &selection)
{
    const auto missing = [](const PXFilePtr &file) { return !file; };
    m_pendingExpanded = expanded;
    m_pendingExpanded.removeIf(missing);
    m_pendingSelection = selection;
    m_pendingSelection.removeIf(missing);
    m_restoredSelection.clear();
    continueRestore();
}

// Works through what is waiting: folders that have appeared are expanded or selected; for a
// selected folder deeper down, the deepest listed ancestor is listed next. Called again as each
// folder's listing arrives, until nothing is left.
void SidebarViewController::continueRestore()
{
    if (!m_restoring)
        return;
    for (auto it = m_pendingExpanded.begin(); it != m_pendingExpanded.end();) {
        const QModelIndex index = m_model->indexForFile(*it);
        if (index.isValid()) {
            m_tree->expand(index);
            it = m_pendingExpanded.erase(it);
        } else {
            ++it;
        }
    }
    bool waiting = false;
    const PXFilePtr root = m_model->rootFolder();
    const QList<PXFilePtr> pending = std::exchange(m_pendingSelection, {});
    for (const PXFilePtr &file : pending) {
        if (m_model->indexForFile(file).isValid()) {
            m_restoredSelection.append(file);
            continue;
        }
        // The nearest ancestor in the tree, listed now unless it already was (then the file is gone).
        QModelIndex ancestor;
        for (ZQFilePtr parent = file->parentItem(); parent && root && selectionLiesUnder(PXFile::from(parent), root);
             parent = parent->parentItem()) {
            ancestor = m_model->indexForFile(PXFile::from(parent));
            if (ancestor.isValid())
                break;
        }
        if (ancestor.isValid() && !m_model->isListed(ancestor)) {
            m_model->fetchMore(ancestor);
            m_pendingSelection.append(file);
            waiting = true;
        }
    }
    // Folders to expand that are not listed yet appear with their parents, or never: they do not
    // hold the place back.
    if (!waiting)
        finishRestore();
}

void SidebarViewController::finishRestore()
{
    QItemSelection selection;
    for (const PXFilePtr &file : std::as_const(m_restoredSelection)) {
        const QModelIndex index = m_model->indexForFile(file);
        if (index.isValid())
            selection.select(index, index.siblingAtColumn(1));
    }
    m_restoredSelection.removeIf([this](const PXFilePtr &file) { return !m_model->indexForFile(file).isValid(); });
    m_tree->selectionModel()->select(selection, QItemSelectionModel::ClearAndSelect);
    if (!m_restoredSelection.isEmpty()) {
        const QModelIndex current = m_model->indexForFile(m_restoredSelection.first());
        m_tree->selectionModel()->setCurrentIndex(current, QItemSelectionModel::NoUpdate);
        m_tree->scrollTo(current);
    }
    m_restoring = false;
    m_restoredSelection.clear();
    treeSelectionChanged();
}

void SidebarViewController::treeSelectionChanged()
{
    if (m_restoring)
        return;
    m_settings->setSidebarSelection(selectedFiles());
    const QList<PXFilePtr> now = sources();
    if (now != m_lastSources) {
        m_lastSources = now;
        Q_EMIT sourcesChanged(now);
    }
    Q_EMIT placeChanged();
}

void SidebarViewController::expansionChanged()
{
    QList<PXFilePtr> expanded;
    // Walk what the model has: only listed folders can be expanded.
    std::function<void(const QModelIndex &)> walk = [&](const QModelIndex &parent) {
        for (int row = 0; row < m_model->rowCount(parent); ++row) {
            const QModelIndex child = m_model->index(row, 0, parent);
            if (m_tree->isExpanded(child)) {
                expanded.append(m_model->fileForIndex(child));
                walk(child);
            }
        }
    };
    walk({});
    if (!m_restoring || m_pendingExpanded.isEmpty())
        m_settings->setSidebarExpandedFolders(expanded);
}

void SidebarViewController::expandSelected()
{
    for (const QModelIndex &index : m_tree->selectionModel()->selectedRows(0))
        m_tree->expand(index);
}

void SidebarViewController::collapseSelected()
{
    for (const QModelIndex &index : m_tree->selectionModel()->selectedRows(0))
        m_tree->collapse(index);
}

void SidebarViewController::setFavoritesShown(bool shown)
{
    m_favorites->setVisible(shown);
}

void SidebarViewController::writeLayoutToSettings()
{
    if (m_favorites->isVisible() && m_splitter->sizes().size() > 1)
        m_settings->setFavoritesHeight(m_splitter->sizes().at(1));
}

void SidebarViewController::contextMenuEvent(QContextMenuEvent *event)
{
    if (!m_tree->isAncestorOf(childAt(mapFromGlobal(event->globalPos())))
        && childAt(mapFromGlobal(event->globalPos())) != m_tree)
        return;
    const QModelIndex index = m_tree->indexAt(m_tree->viewport()->mapFromGlobal(event->globalPos()));
    const PXFilePtr file = m_model->fileForIndex(index);
    if (!file)
        return;
    QMenu menu(this);
    menu.addAction(tr("Make Root"), this, [this, file] { setRootFolder(file); })->setEnabled(file->isDirectory());
    menu.addAction(tr("Add to Favorites"), this, [this, file] { m_favorites->addFavoriteFolder(file); })
        ->setEnabled(file->isDirectory());
    menu.addAction(tr("Show in File Manager"), this, [file] {
        QDesktopServices::openUrl(QUrl::fromLocalFile(file->isDirectory() ? file->path() : file->parentPath()));
    });
    menu.exec(event->globalPos());
}
