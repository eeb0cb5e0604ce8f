#include "ui/rename/FileRenamerWindow.h"

#include "core/model/DisplayFormats.h"
#include "core/model/PXFile.h"
#include "core/rename/PXBatchOutlineModel.h"
#include "core/rename/PXFileRenamer.h"
#include "core/rename/PXRangeFormatter.h"
#include "core/rename/PXRenamePresets.h"
#include "ui/rename/RenameFilesModel.h"
#include "ui/rename/RenameFilterEditor.h"
#include "ui/rename/RenamePresetsView.h"
#include "ui/rename/RenameRuleEditor.h"

#include <QCheckBox>
#include <QCloseEvent>
#include <QComboBox>
#include <QDialog>
#include <QDialogButtonBox>
#include <QFileDialog>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QKeyEvent>
#include <QLabel>
#include <QMessageBox>
#include <QMimeData>
#include <QProgressBar>
#include <QPushButton>
#include <QScrollArea>
#include <QSettings>
#include <QSplitter>
#include <QStyle>
#include <QTextBrowser>
#include <QTimer>
#include <QToolButton>
#include <QTreeView>
#include <QUrl>
#include <QVBoxLayout>

#include <algorithm>
#include <utility>

namespace {

namespace Key = PXRenameSettingsKey;
namespace C = PXRenameConstant;

const QString frameKey = QStringLiteral("fileRenameWindow");
const QString presetsSplitKey = QStringLiteral("fileRenamerPresetsSplitview");
const QString filesSplitKey = QStringLiteral("fileRenamerFilesSplitview");

// The deepest folder level the depth menu offers as "All levels": deeper trees are rare and the
// scan stops there.
constexpr int allLevelsDepth = 100;

QComboBox *menuOf(QWidget *parent, const QString &name, const QList<std::pair<QString, int>> &items)
{
    auto *menu = new QComboBox(parent);
    menu->setObjectName(name);
    for (const auto &[title, tag] : items)
        menu->addItem(title, tag);
    return menu;
}

void selectTag(QComboBox *menu, int tag)
{
    const int index = menu->findData(tag);
    if (index >= 0)
        menu->setCurrentIndex(index);
}

} // namespace

FileRenamerWindow::FileRenamerWindow(QSettings *settings, ZQFileController *fileController, QWidget *parent)
    : QWidget(parent, Qt::Window)
    , m_settings(settings)
{
    if (!m_settings) {
        m_ownSettings = std::make_unique<QSettings>(QStringLiteral("tallowmere"), QStringLiteral("Pixcove3"));
        m_settings = m_ownSettings.get();
    }
    setObjectName(QStringLiteral("fileRenamerWindow"));
    setAttribute(Qt::WA_DeleteOnClose, false);
    setAcceptDrops(true);
    m_presets = std::make_unique<PXRenamePresets>(m_settings);
    m_renamer = std::make_unique<PXFileRenamer>(m_presets.get(), fileController);
    m_renamer->setQuestions(this);
    m_renamer->setComputesInBackground(true);
    buildWindow();
    wireRenamer();

    m_presets->buildPresetList(m_renamer->currentSettingsDict());
    m_presetsView->reload();
    m_showingState = true;
    const QString filterText = m_presets->filterPredicate();
    if (!filterText.isEmpty()) {
        if (m_renamer->setFilterPredicateText(filterText))
            m_filterEditor->setFilter(m_renamer->filter());
        else
            m_filterEditor->setProblem(m_renamer->filterError());
    }
    m_ruleEditor->addComplexRow();
    m_showingState = false;
    rulesEdited();
    fitEditors(m_ruleEditor->rows().isEmpty() ? 0 : 2 * m_ruleEditor->rows().constLast()->sizeHint().height());
    restoreFrame();
    setWindowTitle(m_renamer->windowTitle());
}

FileRenamerWindow::~FileRenamerWindow()
{
    // The renamer goes before the widgets that show it: nothing it says on its way reaches them.
    m_renamer->setQuestions(nullptr);
    disconnect(m_renamer.get(), nullptr, this, nullptr);
    disconnect(&m_renamer->outline(), nullptr, m_filesModel, nullptr);
    m_filesView->setModel(nullptr);
}

void FileRenamerWindow::buildWindow()
{
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(8, 8, 8, 8);
    m_presetsSplit = new QSplitter(Qt::Horizontal, this);
    m_presetsSplit->setObjectName(QStringLiteral("presetsSplit"));
    layout->addWidget(m_presetsSplit, 1);

    // Presets.
    auto *presetsPanel = new QWidget(m_presetsSplit);
    auto *presetsLayout = new QVBoxLayout(presetsPanel);
    presetsLayout->setContentsMargins(0, 0, 4, 0);
    m_presetsView = new RenamePresetsView(m_presets.get(), presetsPanel);
    presetsLayout->addWidget(m_presetsView, 1);
    auto *presetButtons = new QHBoxLayout;
    auto *newPreset = new QPushButton(tr("New"), presetsPanel);
    newPreset->setObjectName(QStringLiteral("newPreset"));
    newPreset->setToolTip(tr("Save the current rules as a new preset"));
    auto *savePreset = new QPushButton(tr("Save"), presetsPanel);
    savePreset->setObjectName(QStringLiteral("savePreset"));
    savePreset->setToolTip(tr("Save the changes to the selected preset"));
    auto *removePreset = new QPushButton(tr("Remove"), presetsPanel);
    removePreset->setObjectName(QStringLiteral("removePreset"));
    presetButtons->addWidget(newPreset);
    presetButtons->addWidget(savePreset);
    presetButtons->addWidget(removePreset);
    presetsLayout->addLayout(presetButtons);
    m_presetsSplit->addWidget(presetsPanel);

    // Rules, filter and files.
    m_filesSplit = new QSplitter(Qt::Vertical, m_presetsSplit);
    m_filesSplit->setObjectName(QStringLiteral("filesSplit"));
    auto *editors = new QWidget;
    auto *editorsLayout = new QVBoxLayout(editors);
    editorsLayout->setContentsMargins(4, 0, 4, 4);
    m_ruleEditor = new RenameRuleEditor(editors);
    m_ruleEditor->setDefaultText([this](const PXRenameCriterion &criterion) -> QString {
        switch (criterion.operationConstant()) {
        case C::dateFormatValue: return m_presets->lastDateFormat();
        case C::initialSequenceValue: {
            const QString start = m_presets->lastSequenceStart();
            return start.isEmpty() ? QStringLiteral("1") : start;
        }
        case C::rangeToReplace: return m_presets->lastRange();
        default: return QString();
        }
    });
    editorsLayout->addWidget(m_ruleEditor);
    m_filterEditor = new RenameFilterEditor(editors);
    editorsLayout->addWidget(m_filterEditor);
    editorsLayout->addStretch(1);
    m_editorsScroll = new QScrollArea;
    m_editorsScroll->setObjectName(QStringLiteral("editorsPane"));
    m_editorsScroll->setWidget(editors);
    m_editorsScroll->setWidgetResizable(true);
    m_editorsScroll->setFrameShape(QFrame::NoFrame);
    m_filesSplit->addWidget(m_editorsScroll);

    auto *filesPanel = new QWidget;
    auto *filesLayout = new QVBoxLayout(filesPanel);
    filesLayout->setContentsMargins(4, 4, 0, 0);
    auto *options = new QHBoxLayout;
    m_depthMenu = menuOf(filesPanel, QStringLiteral("depthMenu"),
                         {{tr("Items Only"), 0},
                          {tr("1 Level Deep"), 1},
                          {tr("2 Levels Deep"), 2},
                          {tr("3 Levels Deep"), 3},
                          {tr("All Levels"), allLevelsDepth}});
    m_sortMenu = menuOf(filesPanel, QStringLiteral("sortMenu"),
                        {{tr("Sort by Name"), PXFileRenamer::byName},
                         {tr("Sort by Date Modified"), PXFileRenamer::byModificationDate},
                         {tr("Sort by Date Created"), PXFileRenamer::byCreationDate},
                         {tr("Sort by Kind"), PXFileRenamer::byKind},
                         {tr("Sort by Size"), PXFileRenamer::bySize},
                         {tr("Sort by Date Taken"), PXFileRenamer::byEXIFDate}});
    auto *descending = new QCheckBox(tr("Descending"), filesPanel);
    descending->setObjectName(QStringLiteral("sortDescending"));
    m_listTypeMenu =
        menuOf(filesPanel, QStringLiteral("listTypeMenu"),
               {{tr("Folders as Tree"), PXFileRenamer::treeList}, {tr("Flat List"), PXFileRenamer::flatList}});
    m_numberingMenu = menuOf(filesPanel, QStringLiteral("numberingMenu"),
                             {{tr("Number Across All Files"), PXFileRenamer::acrossBatch},
                              {tr("Number Within Each Folder"), PXFileRenamer::perFolderSequence}});
    options->addWidget(m_depthMenu);
    options->addWidget(m_sortMenu);
    options->addWidget(descending);
    options->addWidget(m_listTypeMenu);
    options->addWidget(m_numberingMenu);
    options->addStretch(1);
    filesLayout->addLayout(options);

    m_filesModel = new RenameFilesModel(m_renamer.get(), this);
    m_filesView = new QTreeView(filesPanel);
    m_filesView->setObjectName(QStringLiteral("filesList"));
    m_filesView->setModel(m_filesModel);
    m_filesView->setSelectionMode(QAbstractItemView::ExtendedSelection);
    m_filesView->setUniformRowHeights(true);
    m_filesView->setTextElideMode(Qt::ElideMiddle);
    m_filesView->setAlternatingRowColors(true);
    // Files and folders dropped on the list join it: the viewport is where a drop lands, and it
    // would otherwise take the drop as a move of rows.
    m_filesView->viewport()->setAcceptDrops(true);
    m_filesView->viewport()->installEventFilter(this);
    m_filesView->header()->setStretchLastSection(false);
    // New names are usually the longer ones: they take the room the other columns leave.
    m_filesView->header()->setSectionResizeMode(RenameFilesModel::proposedNameColumn, QHeaderView::Stretch);
    // The property columns as wide as their longest usual values, measured once rather than over
    // thousands of rows.
    const QFontMetrics metrics = m_filesView->fontMetrics();
    const int padding = 3 * metrics.averageCharWidth();
    m_filesView->header()->resizeSection(RenameFilesModel::nameColumn,
                                         metrics.horizontalAdvance(QStringLiteral("PXL_20240612_143222.jpg"))
                                             + 2 * m_filesView->indentation() + padding);
    m_filesView->header()->resizeSection(RenameFilesModel::kindColumn,
                                         metrics.horizontalAdvance(tr("Sony ARW raw image")) + padding);
    m_filesView->header()->resizeSection(RenameFilesModel::sizeColumn,
                                         metrics.horizontalAdvance(QStringLiteral("999.9 MB")) + padding);
    m_filesView->header()->resizeSection(RenameFilesModel::modificationDateColumn,
                                         metrics.horizontalAdvance(
                                             formattedDate(QDateTime(QDate(2024, 12, 28), QTime(22, 58, 58)),
                                                           DateStyle::medium, DateStyle::medium))
                                             + padding);
    m_filesView->installEventFilter(this);
    filesLayout->addWidget(m_filesView, 1);
    m_filesSplit->addWidget(filesPanel);
    // A taller window gives the files list the room; the rules keep theirs (fitEditors).
    m_filesSplit->setStretchFactor(0, 0);
    m_filesSplit->setStretchFactor(1, 1);
    m_presetsSplit->addWidget(m_filesSplit);
    m_presetsSplit->setStretchFactor(0, 0);
    m_presetsSplit->setStretchFactor(1, 1);
    m_presetsSplit->setSizes({200, 1080});

    // The bottom bar.
    auto *bar = new QHBoxLayout;
    auto *addFiles = new QToolButton(this);
    addFiles->setObjectName(QStringLiteral("addFiles"));
    addFiles->setText(QStringLiteral("+"));
    addFiles->setToolTip(tr("Add files or folders"));
    auto *removeFiles = new QToolButton(this);
    removeFiles->setObjectName(QStringLiteral("removeFiles"));
    removeFiles->setText(QStringLiteral("−"));
    removeFiles->setToolTip(tr("Remove the selected files from the list"));
    auto *help = new QToolButton(this);
    help->setObjectName(QStringLiteral("renameHelp"));
    help->setText(QStringLiteral("?"));
    help->setToolTip(tr("How renaming works"));
    m_statusLabel = new QLabel(this);
    m_statusLabel->setObjectName(QStringLiteral("renameStatus"));
    m_progress = new QProgressBar(this);
    m_progress->setObjectName(QStringLiteral("renameProgress"));
    m_progress->setMaximumWidth(180);
    m_progress->hide();
    m_cancelButton = new QPushButton(tr("Cancel"), this);
    m_cancelButton->setObjectName(QStringLiteral("cancelWork"));
    m_cancelButton->hide();
    m_renameButton = new QPushButton(tr("Rename"), this);
    m_renameButton->setObjectName(QStringLiteral("renameButton"));
    m_renameButton->setDefault(true);
    bar->addWidget(addFiles);
    bar->addWidget(removeFiles);
    bar->addWidget(help);
    bar->addWidget(m_statusLabel, 1);
    bar->addWidget(m_progress);
    bar->addWidget(m_cancelButton);
    bar->addWidget(m_renameButton);
    layout->addLayout(bar);

    connect(newPreset, &QPushButton::clicked, this, [this] {
        const qsizetype index = m_presets->newPreset(m_renamer->currentSettingsDict());
        // The new preset holds the settings as they are: nothing to apply, nothing altered.
        m_renamer->setCurrentPreset(PXRenamePresets::savedPresetsGroup, index);
        m_presetsView->reload(PXRenamePresets::savedPresetsGroup, index);
        m_presetsView->editName(index);
    });
    connect(savePreset, &QPushButton::clicked, this, [this] {
        m_renamer->savePreset();
        m_presetsView->refreshMarks();
    });
    connect(removePreset, &QPushButton::clicked, this, [this] {
        QList<qsizetype> indexes;
        for (QTreeWidgetItem *item : m_presetsView->selectedItems()) {
            if (RenamePresetsView::groupOf(item) == PXRenamePresets::savedPresetsGroup)
                indexes.append(RenamePresetsView::indexOf(item));
        }
        Q_EMIT m_presetsView->removeRequested(indexes);
    });
    connect(m_presetsView, &RenamePresetsView::removeRequested, this, [this](const QList<qsizetype> &indexes) {
        if (indexes.isEmpty())
            return;
        // The renamer's current preset is known by index: after a removal it is no preset.
        m_renamer->setCurrentPreset(QString(), -1);
        m_presets->removePresets(indexes);
        m_presetsView->reload();
    });
    connect(m_presetsView, &RenamePresetsView::presetChosen, this, &FileRenamerWindow::presetChosen);
    connect(m_presetsView, &RenamePresetsView::presetMoved, this, [this](qsizetype from, qsizetype to) {
        m_renamer->savedPresetMoved(from, to);
        m_presetsView->refreshMarks();
    });
    connect(m_ruleEditor, &RenameRuleEditor::rulesChanged, this, &FileRenamerWindow::rulesEdited);
    connect(m_ruleEditor, &RenameRuleEditor::dateFormatHelpRequested, this, &FileRenamerWindow::showDateFormatSheet);
    connect(m_ruleEditor, &RenameRuleEditor::rangeFormatHelpRequested, this, &FileRenamerWindow::showRangeFormatSheet);
    connect(m_filterEditor, &RenameFilterEditor::filterChanged, this, &FileRenamerWindow::filterEdited);
    for (QComboBox *menu : {m_depthMenu, m_sortMenu, m_listTypeMenu, m_numberingMenu})
        connect(menu, &QComboBox::activated, this, &FileRenamerWindow::optionsChosen);
    connect(descending, &QCheckBox::toggled, this, &FileRenamerWindow::optionsChosen);
    connect(addFiles, &QToolButton::clicked, this, [this] {
        const QStringList paths = QFileDialog::getOpenFileNames(this, tr("Add Files to Rename"));
        QList<PXFilePtr> files;
        for (const QString &path : paths)
            files.append(PXFile::fileForPath(path));
        addFilesToRename(files);
    });
    connect(removeFiles, &QToolButton::clicked, this, &FileRenamerWindow::removeSelectedFiles);
    connect(help, &QToolButton::clicked, this, &FileRenamerWindow::showRenameHelpSheet);
    connect(m_cancelButton, &QPushButton::clicked, this, &FileRenamerWindow::cancel);
    connect(m_renameButton, &QPushButton::clicked, this, &FileRenamerWindow::rename);
    // Wide enough for the longest rule row beside the presets, and for a new name of a few words
    // beside the file's properties.
    resize(1280, 800);
}

void FileRenamerWindow::wireRenamer()
{
    // The rows are rebuilt when the arrangement changed; names alone only redraw. With thousands
    // of files, sorting them and laying out their rows are each a good part of a frame: the rows
    // follow at the next turn of the event loop, unless the new names come first.
    connect(&m_renamer->outline(), &PXBatchOutlineModel::updated, this, [this] {
        if (std::exchange(m_rowsStale, true))
            return;
        // 1 ms rather than 0: a zero timer may run in the same pass of the event loop.
        QTimer::singleShot(1, this, &FileRenamerWindow::showArrangement);
    });
    connect(m_renamer.get(), &PXFileRenamer::updated, this, &FileRenamerWindow::renamerUpdated);
    connect(m_renamer.get(), &PXFileRenamer::workInProgressChanged, this, [this] { showRenamerState(); });
    connect(m_renamer.get(), &PXFileRenamer::progressChanged, this, [this](double percentage) {
        m_progress->setRange(0, 100);
        m_progress->setValue(int(percentage));
    });
    connect(m_renamer.get(), &PXFileRenamer::renameFinished, this,
            [this](qsizetype renamed, const ZQFileOperationError &error) {
                m_statusLabel->setText(error.isError() ? tr("Renamed %n file(s), then stopped.", nullptr, int(renamed))
                                                       : tr("Renamed %n file(s).", nullptr, int(renamed)));
                showRenamerState();
            });
}

// MARK: state

void FileRenamerWindow::showArrangement()
{
    if (!std::exchange(m_rowsStale, false))
        return;
    m_filesModel->arrangementChanged();
    m_filesView->expandAll();
}

void FileRenamerWindow::renamerUpdated()
{
    showArrangement();
    m_filesModel->namesChanged(shownRows());
    setWindowTitle(m_renamer->windowTitle());
    m_presetsView->refreshMarks();
    showRenamerState();
}

// The rows of the files list on screen, top to bottom; empty while it is hidden.
QList<QModelIndex> FileRenamerWindow::shownRows() const
{
    QList<QModelIndex> rows;
    if (!m_filesView->isVisible())
        return rows;
    const int bottom = m_filesView->viewport()->height();
    // Halfway across: the left edge of a nested row is its indentation, where there is no index.
    const QModelIndex top = m_filesView->indexAt(QPoint(m_filesView->viewport()->width() / 2, 0));
    for (QModelIndex row = top.siblingAtColumn(0); row.isValid(); row = m_filesView->indexBelow(row)) {
        if (m_filesView->visualRect(row).top() >= bottom)
            break;
        rows.append(row);
    }
    return rows;
}

void FileRenamerWindow::showRenamerState()
{
    const bool working = m_renamer->workInProgress();
    const bool renaming = m_renamer->fileOperationHandler() != nullptr;
    m_cancelButton->setVisible(working);
    m_progress->setVisible(working);
    if (working && !renaming)
        m_progress->setRange(0, 0);
    m_renameButton->setEnabled(!working && !m_renamer->hasCollisions());
    if (working) {
        m_statusLabel->setText(
            renaming ? tr("Renaming…")
                     : tr("Looking for files… %n found", nullptr, int(m_renamer->outline().items().size())));
        return;
    }
    qsizetype changing = 0;
    qsizetype collisions = 0;
    qsizetype tooLong = 0;
    for (const PXFileRenameItemPtr &item : m_renamer->arrangedItems()) {
        changing += item->lastKnownRenamable() && item->nameHasChanged() ? 1 : 0;
        collisions += item->hasCollision() ? 1 : 0;
        tooLong += item->nameTooLong() ? 1 : 0;
    }
    QStringList parts{tr("%n file(s) will be renamed", nullptr, int(changing))};
    if (collisions > 0)
        parts.append(tr("%n name(s) already taken: nothing is renamed until they differ", nullptr, int(collisions)));
    if (tooLong > 0)
        parts.append(tr("%n name(s) too long, kept as they are", nullptr, int(tooLong)));
    m_statusLabel->setText(parts.join(QStringLiteral(" · ")));
}

void FileRenamerWindow::rulesEdited()
{
    if (m_showingState)
        return;
    const PXRenameRules rules = m_ruleEditor->rules();
    m_presets->rememberFieldValues(rules);
    m_renamer->setRenameRules(rules);
    fitEditorsLater();
}

void FileRenamerWindow::filterEdited()
{
    if (m_showingState)
        return;
    m_renamer->setFilter(m_filterEditor->filter());
}

void FileRenamerWindow::optionsChosen()
{
    if (m_showingState)
        return;
    m_renamer->setFolderScanDepth(m_depthMenu->currentData().toInt());
    m_renamer->setSortSetting(m_sortMenu->currentData().toInt(),
                              !findChild<QCheckBox *>(QStringLiteral("sortDescending"))->isChecked());
    m_renamer->setFlatList(m_listTypeMenu->currentData().toInt() == PXFileRenamer::flatList);
    m_renamer->setPerFolder(m_numberingMenu->currentData().toInt() == PXFileRenamer::perFolderSequence);
}

// MARK: presets

void FileRenamerWindow::presetChosen(const QString &group, qsizetype index)
{
    const QString previousGroup = m_renamer->currentSavedPresetIndex() ? PXRenamePresets::savedPresetsGroup : QString();
    const qsizetype previousIndex = m_renamer->currentSavedPresetIndex().value_or(-1);
    if (!m_renamer->selectPreset(group, index)) {
        // "Cancel": the list goes back to the preset that stays, once it has finished changing.
        QMetaObject::invokeMethod(
            m_presetsView,
            [view = m_presetsView, previousGroup, previousIndex] { view->reload(previousGroup, previousIndex); },
            Qt::QueuedConnection);
        return;
    }
    showRenamerSettings();
}

// Shows the renamer's options, filter and rules in the window's controls.
void FileRenamerWindow::showRenamerSettings()
{
    m_showingState = true;
    selectTag(m_depthMenu, m_renamer->folderScanDepth());
    selectTag(m_sortMenu, m_renamer->sortSetting());
    findChild<QCheckBox *>(QStringLiteral("sortDescending"))->setChecked(!m_renamer->sortAscending());
    selectTag(m_listTypeMenu, m_renamer->isFlatList() ? PXFileRenamer::flatList : PXFileRenamer::treeList);
    selectTag(m_numberingMenu, m_renamer->perFolder() ? PXFileRenamer::perFolderSequence : PXFileRenamer::acrossBatch);
    m_filterEditor->setFilter(m_renamer->filter());
    m_filterEditor->setProblem(m_renamer->filterError());
    m_ruleEditor->setRules(m_renamer->renameRules());
    m_showingState = false;
    fitEditorsLater();
    m_presetsView->refreshMarks();
}

// MARK: files

void FileRenamerWindow::addFilesToRename(const QList<PXFilePtr> &files)
{
    m_renamer->addFilesToRename(files);
    showRenamerState();
}

void FileRenamerWindow::removeSelectedFiles()
{
    QList<PXBatchItemPtr> items;
    for (const QModelIndex &index : m_filesView->selectionModel()->selectedRows(RenameFilesModel::nameColumn)) {
        if (PXBatchItemPtr item = m_filesModel->itemAt(index))
            items.append(item);
    }
    if (!items.isEmpty())
        m_renamer->removeFiles(items);
}

void FileRenamerWindow::rename()
{
    switch (m_renamer->rename()) {
    case PXFileRenamer::RenameStart::refused:
        m_statusLabel->setText(m_renamer->hasCollisions()
                                   ? tr("Some new names are taken (marked in red): nothing was renamed.")
                                   : tr("Wait for the current work to finish."));
        break;
    case PXFileRenamer::RenameStart::nothingToRename: m_statusLabel->setText(tr("No name changes.")); break;
    case PXFileRenamer::RenameStart::started:
        m_progress->setRange(0, 100);
        m_progress->setValue(0);
        break;
    }
    showRenamerState();
}

void FileRenamerWindow::cancel()
{
    m_renamer->cancel();
    showRenamerState();
}

// MARK: window

void FileRenamerWindow::closeEvent(QCloseEvent *event)
{
    if (m_renamer->workInProgress()) {
        m_statusLabel->setText(tr("Cancel the scan or the rename before closing the window."));
        event->ignore();
        return;
    }
    if (!m_renamer->windowShouldClose()) {
        event->ignore();
        return;
    }
    m_renamer->windowWillClose();
    saveFrame();
    event->accept();
    Q_EMIT renameFilesEnded(this);
}

// Makes the rules and the filter pane tall enough to show them whole with `room` to spare (for
// rows still to come), taking the height from the files list as long as it keeps half the split.
void FileRenamerWindow::fitEditors(int room)
{
    QList<int> sizes = m_filesSplit->sizes();
    if (sizes.size() != 2)
        return;
    const int total = sizes[0] + sizes[1] > 0 ? sizes[0] + sizes[1] : height();
    // A horizontal scroll bar shows when the rows are wider than the pane.
    const int wanted = m_editorsScroll->widget()->sizeHint().height() + room
        + style()->pixelMetric(QStyle::PM_ScrollBarExtent, nullptr, m_editorsScroll);
    const int fitted = std::min(wanted, total / 2);
    if (sizes[0] >= fitted && sizes[0] + sizes[1] > 0)
        return;
    m_filesSplit->setSizes({fitted, total - fitted});
}

// New rows show at the next turn of the event loop, and only then count in the pane's height.
void FileRenamerWindow::fitEditorsLater()
{
    QMetaObject::invokeMethod(
        this, [this] { fitEditors(); }, Qt::QueuedConnection);
}

void FileRenamerWindow::restoreFrame()
{
    restoreGeometry(QByteArray::fromBase64(m_settings->value(frameKey).toString().toLatin1()));
    m_presetsSplit->restoreState(QByteArray::fromBase64(m_settings->value(presetsSplitKey).toString().toLatin1()));
    m_filesSplit->restoreState(QByteArray::fromBase64(m_settings->value(filesSplitKey).toString().toLatin1()));
}

void FileRenamerWindow::saveFrame()
{
    m_settings->setValue(frameKey, QString::fromLatin1(saveGeometry().toBase64()));
    m_settings->setValue(presetsSplitKey, QString::fromLatin1(m_presetsSplit->saveState().toBase64()));
    m_settings->setValue(filesSplitKey, QString::fromLatin1(m_filesSplit->saveState().toBase64()));
}

namespace {

// The local files and folders of a drop; other addresses are left out.
QList<PXFilePtr> droppedFiles(const QMimeData *data)
{
    QList<PXFilePtr> files;
    if (!data || !data->hasUrls())
        return files;
    for (const QUrl &url : data->urls()) {
        if (url.isLocalFile() && !url.toLocalFile().isEmpty())
            files.append(PXFile::fileForPath(url.toLocalFile()));
    }
    return files;
}

bool holdsLocalFiles(const QMimeData *data)
{
    if (!data || !data->hasUrls())
        return false;
    const QList<QUrl> urls = data->urls();
    return std::any_of(urls.cbegin(), urls.cend(), [](const QUrl &url) { return url.isLocalFile(); });
}

} // namespace

void FileRenamerWindow::dragEnterEvent(QDragEnterEvent *event)
{
    if (holdsLocalFiles(event->mimeData()))
        event->acceptProposedAction();
}

void FileRenamerWindow::dragMoveEvent(QDragMoveEvent *event)
{
    if (holdsLocalFiles(event->mimeData()))
        event->acceptProposedAction();
}

void FileRenamerWindow::dropEvent(QDropEvent *event)
{
    const QList<PXFilePtr> files = droppedFiles(event->mimeData());
    if (files.isEmpty())
        return;
    event->acceptProposedAction();
    addFilesToRename(files);
}

bool FileRenamerWindow::eventFilter(QObject *watched, QEvent *event)
{
    if (watched == m_filesView && event->type() == QEvent::KeyPress) {
        const int key = static_cast<QKeyEvent *>(event)->key();
        if (key == Qt::Key_Delete || key == Qt::Key_Backspace) {
            removeSelectedFiles();
            return true;
        }
    }
    if (watched == m_filesView->viewport()) {
        switch (event->type()) {
        case QEvent::DragEnter: dragEnterEvent(static_cast<QDragEnterEvent *>(event)); return true;
        case QEvent::DragMove: dragMoveEvent(static_cast<QDragMoveEvent *>(event)); return true;
        case QEvent::Drop: dropEvent(static_cast<QDropEvent *>(event)); return true;
        default: break;
        }
    }
    return QWidget::eventFilter(watched, event);
}

// MARK: questions

ZQFileOperationResolution FileRenamerWindow::queryUserWithError(const ZQFileOperationError &error, bool *applyToAll)
{
    if (m_questionsOverride)
        return m_questionsOverride->queryUserWithError(error, applyToAll);
    QMessageBox box(QMessageBox::Warning, error.description, error.failureReason, QMessageBox::NoButton, this);
    box.setWindowModality(Qt::WindowModal);
    QPushButton *skip = box.addButton(tr("Skip"), QMessageBox::AcceptRole);
    QPushButton *keepBoth = box.addButton(tr("Keep Both"), QMessageBox::AcceptRole);
    box.addButton(tr("Stop"), QMessageBox::RejectRole);
    auto *all = new QCheckBox(tr("Apply to all"));
    box.setCheckBox(all);
    box.exec();
    *applyToAll = all->isChecked();
    if (box.clickedButton() == skip)
        return ZQFileOperationResolution::skip;
    if (box.clickedButton() == keepBoth)
        return ZQFileOperationResolution::keepBoth;
    return ZQFileOperationResolution::cancel;
}

void FileRenamerWindow::showRenameError(const QString &message, const QString &informativeText)
{
    if (m_questionsOverride) {
        m_questionsOverride->showRenameError(message, informativeText);
        return;
    }
    auto *box = new QMessageBox(QMessageBox::Warning, message, message, QMessageBox::Ok, this);
    box->setInformativeText(informativeText);
    box->setWindowModality(Qt::WindowModal);
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->open();
}

PXUnsavedPresetAnswer FileRenamerWindow::askToSaveChangesToPreset(const QJsonObject &preset)
{
    if (m_questionsOverride)
        return m_questionsOverride->askToSaveChangesToPreset(preset);
    QMessageBox box(QMessageBox::Question, tr("Save Changes to Preset?"), tr("Save Changes to Preset?"),
                    QMessageBox::NoButton, this);
    box.setInformativeText(tr("You made some changes to the current preset, do you want to save them?"));
    box.setWindowModality(Qt::WindowModal);
    QPushButton *save = box.addButton(tr("Save"), QMessageBox::AcceptRole);
    QPushButton *cancel = box.addButton(tr("Cancel"), QMessageBox::RejectRole);
    box.addButton(tr("Discard Changes"), QMessageBox::DestructiveRole);
    box.setDefaultButton(save);
    box.exec();
    if (box.clickedButton() == save)
        return PXUnsavedPresetAnswer::save;
    if (box.clickedButton() == cancel || !box.clickedButton())
        return PXUnsavedPresetAnswer::cancel;
    return PXUnsavedPresetAnswer::discardChanges;
}

// MARK: sheets

QDialog *FileRenamerWindow::sheet(const QString &title, const QString &html)
{
    auto *dialog = new QDialog(this);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->setWindowTitle(title);
    dialog->setWindowModality(Qt::WindowModal);
    auto *layout = new QVBoxLayout(dialog);
    auto *text = new QTextBrowser(dialog);
    text->setOpenExternalLinks(true);
    text->setHtml(html);
    layout->addWidget(text);
    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Close, dialog);
    connect(buttons, &QDialogButtonBox::rejected, dialog, &QDialog::reject);
    layout->addWidget(buttons);
    dialog->resize(520, 460);
    dialog->open();
    return dialog;
}

void FileRenamerWindow::showDateFormatSheet()
{
    sheet(tr("Date Patterns"),
          tr("<p>Dates are written with Unicode date patterns. Letters stand for parts of the date; "
             "text in single quotes is copied as it is.</p>"
             "<table cellspacing='6'>"
             "<tr><td><b>yyyy</b></td><td>year, 2024</td><td><b>yy</b></td><td>year, 24</td></tr>"
             "<tr><td><b>MM</b></td><td>month, 06</td><td><b>MMM</b></td><td>month, Jun</td></tr>"
             "<tr><td><b>dd</b></td><td>day, 09</td><td><b>EEE</b></td><td>weekday, Sun</td></tr>"
             "<tr><td><b>HH</b></td><td>hour, 00–23</td><td><b>hh a</b></td><td>hour, 01–12 AM/PM</td></tr>"
             "<tr><td><b>mm</b></td><td>minute</td><td><b>ss</b></td><td>second</td></tr>"
             "</table>"
             "<p>Example: <b>yyyy-MM-dd HH.mm.ss</b> gives 2024-06-09 14.03.59.</p>"
             "<p>A file name cannot hold a slash, and a colon is read as a slash by some programs: a / in "
             "the result becomes |, a : becomes a full stop.</p>"
             "<p>“Date Taken” is the date the camera wrote into the picture; files without one use their "
             "creation date.</p>"
             "<p>The full reference: <a href='https://unicode.org/reports/tr35/tr35-dates.html#"
             "Date_Field_Symbol_Table'>Unicode date field symbols</a>.</p>"))
        ->setObjectName(QStringLiteral("dateFormatSheet"));
}

void FileRenamerWindow::showRangeFormatSheet()
{
    sheet(tr("Ranges"),
          tr("<p>A range is the position of the first character to replace, a dash, and the position of "
             "the last one, counting from 1: <b>1-3</b> is the first three characters, <b>5-5</b> the fifth "
             "alone.</p>"
             "<p>A range that reaches past the end of a name leaves that name as it is.</p>"
             "<p>%1</p>")
              .arg(PXRangeFormatter::invalidRangeMessage()))
        ->setObjectName(QStringLiteral("rangeFormatSheet"));
}

void FileRenamerWindow::showRenameHelpSheet()
{
    sheet(tr("Renaming Files"),
          tr("<p>Add files or folders by dropping them on the window. A folder lists its files to the "
             "depth chosen above the list; folders themselves are never renamed.</p>"
             "<p>Rules run from top to bottom, each on the result of the one before. “In” chooses the "
             "part of the name the rules below it change: the name without its extension, the "
             "extension, or both.</p>"
             "<p>The list shows every new name as you type. Names in grey stay as they are; names in "
             "red are taken by another file, or by another file of the list, and nothing is renamed "
             "until they differ. Names too long for the file system are kept and marked.</p>"
             "<p>Sequences count in the order of the list, across all files or within each folder.</p>"
             "<p>Presets keep rules with their options; the last ten settings used are under "
             "“Recent”.</p>"))
        ->setObjectName(QStringLiteral("renameHelpSheet"));
}
