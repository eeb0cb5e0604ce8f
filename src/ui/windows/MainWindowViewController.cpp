#include "ui/windows/MainWindowViewController.h"

#include "core/app/FlagManager.h"
#include "core/app/Log.h"
#include "core/fs/Applications.h"
#include "core/settings/AppSettings.h"
#include "core/settings/SettingsManager.h"
#include "ui/app/AuxiliaryWindowsManager.h"
#include "ui/app/WarningsManager.h"
#include "ui/browser/BrowserViewController.h"
#include "ui/browser/ThumbnailsViewController.h"
#include "ui/common/ThemeIcons.h"
#include "ui/inspector/InspectorViewController.h"
#include "ui/sidebar/FolderTreeModel.h"
#include "ui/sidebar/PathBar.h"
#include "ui/sidebar/SidebarViewController.h"
#include "ui/windows/ValidatingToolbar.h"

#include <QAction>
#include <QActionGroup>
#include <QDesktopServices>
#include <QFileDialog>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QMessageBox>
#include <QSlider>
#include <QSplitter>
#include <QStyle>
#include <QTimer>
#include <QToolButton>
#include <QUrl>
#include <QVBoxLayout>

namespace {

// The thumbnail edge in points: 48 still shows a recognisable picture, 512 is above the 400-point
// thumbnails the generator makes, so the largest setting never upscales much.
constexpr int minimumThumbnailSize = 48;
constexpr int maximumThumbnailSize = 512;
constexpr int thumbnailSizeStep = 16;
// Deeper scans than five levels are better done by choosing a lower folder.
constexpr int maximumFolderDepth = 5;

const QStringList thumbnailCommands = {
    QStringLiteral("performOpen"),
    QStringLiteral("openInApp"),
    QStringLiteral("selectAll"),
    QStringLiteral("deselectAll"),
    QStringLiteral("renameFile"),
    QStringLiteral("makeAlias"),
    QStringLiteral("makeSymlink"),
    QStringLiteral("duplicate"),
    QStringLiteral("moveToTrash"),
    QStringLiteral("revealInFinder"),
    QStringLiteral("newFolder"),
    QStringLiteral("flagItem"),
    QStringLiteral("rejectItem"),
    QStringLiteral("clearItemFlag"),
    QStringLiteral("selectFlagged"),
    QStringLiteral("selectRejected"),
    QStringLiteral("nextImageInBrowser"),
    QStringLiteral("previousImageInBrowser"),
    QStringLiteral("scrollSelectionToVisible"),
};

PXFilePtr folderToShow(const PXFilePtr &file)
{
    if (!file)
        return nullptr;
    return file->isDirectory() ? file : PXFile::from(file->parentItem());
}

} // namespace

MainWindowViewController::MainWindowViewController(WindowSettingsPtr settings, const PXFilePtr &file, QWidget *parent)
    : QWidget(parent)
    , m_windowSettings(std::move(settings))
{
    AppSettings *appSettings = SettingsManager::shared().settings();
    // A folder handed over on the command line is shown as the root of the tree, selected.
    if (const PXFilePtr folder = folderToShow(file)) {
        m_windowSettings->setSidebarRootFolder(folder);
        m_windowSettings->setSidebarSelection({folder});
        m_windowSettings->setSidebarExpandedFolders({});
    }
    // A root that has gone since the settings were saved: its nearest parent on disk.
    PXFilePtr root = m_windowSettings->sidebarRootFolder();
    while (root && root->isPlaceholder() && root->parentItem())
        root = PXFile::from(root->parentItem());
    if (root != m_windowSettings->sidebarRootFolder()) {
        m_windowSettings->setSidebarSelection({});
        m_windowSettings->setSidebarRootFolder(root);
    }

    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);

    m_toolbar = new ValidatingToolbar(this);
    layout->addWidget(m_toolbar);
    auto *toolbarDivider = new QFrame(this);
    toolbarDivider->setFrameShape(QFrame::HLine);
    toolbarDivider->setFrameShadow(QFrame::Sunken);
    layout->addWidget(toolbarDivider);

    m_primarySplitView = new QSplitter(Qt::Horizontal, this);
    m_primarySplitView->setChildrenCollapsible(false);
    m_primarySplitView->setHandleWidth(1);
    m_sidebarViewController = new SidebarViewController(m_windowSettings, appSettings, m_primarySplitView);
    m_browserViewController = new BrowserViewController(m_windowSettings, m_primarySplitView);
    m_inspectorViewController = new InspectorViewController(m_windowSettings, m_primarySplitView);
    m_sidebarViewController->setMinimumWidth(140);
    m_inspectorViewController->setMinimumWidth(200);
    m_primarySplitView->setStretchFactor(0, 0);
    m_primarySplitView->setStretchFactor(1, 1);
    m_primarySplitView->setStretchFactor(2, 0);
    layout->addWidget(m_primarySplitView, 1);

    auto *topDivider = new QFrame(this);
    topDivider->setFrameShape(QFrame::HLine);
    topDivider->setFrameShadow(QFrame::Sunken);
    layout->addWidget(topDivider);
    m_pathBar = new PathBar(this);
    layout->addWidget(m_pathBar);
    auto *bottomDivider = new QFrame(this);
    bottomDivider->setFrameShape(QFrame::HLine);
    bottomDivider->setFrameShadow(QFrame::Sunken);
    layout->addWidget(bottomDivider);
    layout->addWidget(buildBottomBar());

    buildToolbar();
    applyPaneVisibility();
    applySplitSizes();
    observeSettings();

    connect(m_sidebarViewController, &SidebarViewController::sourcesChanged, this,
            &MainWindowViewController::sourcesChanged);
    connect(m_sidebarViewController, &SidebarViewController::placeChanged, this,
            &MainWindowViewController::recordPlace);
    connect(m_sidebarViewController, &SidebarViewController::folderVanished, this,
            [this](const PXFilePtr &folder) { showNearestExistingParent(folder, tr("it was deleted or moved")); });
    connect(m_sidebarViewController, &SidebarViewController::favoriteApplicationActivated, this,
            [this](const PXFilePtr &application) {
                QStringList paths;
                for (const PXFilePtr &file : std::as_const(m_lastThumbnailViewSelection))
                    paths.append(file->path());
                QString error;
                if (!Applications::launch(application->path(), paths, &error))
                    showNotice(tr("Cannot open with %1: %2").arg(application->displayName(), error));
            });
    connect(m_browserViewController, &BrowserViewController::selectionChanged, this,
            &MainWindowViewController::thumbnailSelectionChanged);
    connect(m_browserViewController, &BrowserViewController::statusTextChanged, this,
            &MainWindowViewController::showStatus);
    connect(m_browserViewController, &BrowserViewController::openRequested, this, &MainWindowViewController::openFiles);
    connect(m_browserViewController, &BrowserViewController::sourceVanished, this,
            &MainWindowViewController::showNearestExistingParent);
    connect(m_pathBar, &PathBar::folderChosen, m_sidebarViewController, &SidebarViewController::revealFolder);
    connectFlagsAndErrors();
    connect(m_primarySplitView, &QSplitter::splitterMoved, this, [this] {
        if (m_layoutComplete)
            writeLayoutToSettings();
    });

    // The sidebar may already know its place (nothing to list); else it says so when it does.
    if (!m_sidebarViewController->isRestoring()) {
        sourcesChanged(m_sidebarViewController->sources());
        recordPlace();
    }
    m_layoutComplete = true;
}

MainWindowViewController::~MainWindowViewController() = default;

// Flags live in the process-wide store, so every window shows the same marks; errors of the pane
// (a refused rename, a failed drop) are told in a message box over this window.
void MainWindowViewController::connectFlagsAndErrors()
{
    ThumbnailsViewController *pane = thumbnailsViewController();
    pane->setFlagLookup([](const PXFilePtr &file) {
        FlagManager &flags = FlagManager::shared();
        if (flags.isFlagged(file))
            return FileFlag::flagged;
        return flags.isRejected(file) ? FileFlag::rejected : FileFlag::none;
    });
    connect(pane, &ThumbnailsViewController::flagChangeRequested, this,
            [](const QList<PXFilePtr> &files, FileFlag flag) {
                FlagManager &flags = FlagManager::shared();
                switch (flag) {
                case FileFlag::flagged: flags.flag(files); break;
                case FileFlag::rejected: flags.reject(files); break;
                case FileFlag::none: flags.clear(files); break;
                }
            });
    connect(&FlagManager::shared(), &FlagManager::flagsChanged, pane,
            [pane] { pane->gridView()->viewport()->update(); });
    connect(pane, &ThumbnailsViewController::errorOccurred, this,
            [this](const QString &title, const QString &text) { QMessageBox::warning(window(), title, text); });
}

ThumbnailsViewController *MainWindowViewController::thumbnailsViewController() const
{
    return m_browserViewController->thumbnailsViewController();
}

QString MainWindowViewController::title() const
{
    if (m_sources.isEmpty())
        return QStringLiteral("Pixcove");
    const QString first = m_sources.first()->displayName();
    return m_sources.size() == 1 ? first : tr("%1 and %n more", nullptr, int(m_sources.size() - 1)).arg(first);
}

void MainWindowViewController::buildToolbar()
{
    auto addCommand = [this](const QIcon &icon, const QString &text, const QString &toolTip, const Command &command) {
        QAction *action = m_toolbar->addAction(icon, text);
        action->setToolTip(toolTip);
        connect(action, &QAction::triggered, this, [this, command] { performCommand(command); });
        connect(this, &MainWindowViewController::commandsChanged, action,
                [this, action, command] { action->setEnabled(commandState(command).enabled); });
        action->setEnabled(commandState(command).enabled);
        return action;
    };
    addCommand(ThemeIcons::icon(QStringLiteral("go-previous"), QStyle::SP_ArrowBack), tr("Back"), tr("Back"),
               {QStringLiteral("back"), {}});
    addCommand(ThemeIcons::icon(QStringLiteral("go-next"), QStyle::SP_ArrowForward), tr("Forward"), tr("Forward"),
               {QStringLiteral("forward"), {}});
    addCommand(ThemeIcons::icon(QStringLiteral("go-up"), QStyle::SP_ArrowUp), tr("Enclosing Folder"),
               tr("Enclosing Folder"), {QStringLiteral("changeBaseUpOneLevel"), {}});
    m_toolbar->addSeparator();

    // Layout: three exclusive buttons.
    m_layoutGroup = new QActionGroup(this);
    // Icon names of the freedesktop themes first, then those of the symbolic themes.
    const QList<std::tuple<BrowserLayout, const char *, const char *, QString>> layouts = {
        {BrowserLayout::noPreview, "view-grid", "view-grid-symbolic", tr("Thumbnails Only")},
        {BrowserLayout::topPreview, "view-split-top-bottom", "view-continuous-symbolic", tr("Preview on Top")},
        {BrowserLayout::rightPreview, "view-split-left-right", "view-dual-symbolic", tr("Preview on Right")},
    };
    for (const auto &[layout, iconName, symbolicName, title] : layouts) {
        const QIcon icon = QIcon::fromTheme(QLatin1String(iconName), QIcon::fromTheme(QLatin1String(symbolicName)));
        QAction *action = m_toolbar->addAction(icon, title);
        action->setCheckable(true);
        action->setChecked(m_windowSettings->browserLayout() == layout);
        action->setToolTip(title);
        action->setData(int(layout));
        m_layoutGroup->addAction(action);
        const BrowserLayout chosen = layout;
        connect(action, &QAction::triggered, this, [this, chosen] {
            performCommand({QStringLiteral("changeBrowserLayout"), int(chosen)});
        });
    }
    m_toolbar->addSeparator();

    // Sort and filter: buttons with their menus, checked to the window's settings as they open.
    const auto menuButton = [this](const QIcon &icon, const QString &text, const char *command, int count,
                                   QString (*titleOf)(int)) {
        auto *button = new QToolButton(m_toolbar);
        button->setIcon(icon);
        button->setText(text);
        button->setToolTip(text);
        button->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
        button->setPopupMode(QToolButton::InstantPopup);
        auto *menu = new QMenu(button);
        auto *group = new QActionGroup(menu);
        for (int raw = 0; raw < count; ++raw) {
            QAction *item = menu->addAction(titleOf(raw));
            item->setCheckable(true);
            group->addAction(item);
            const Command itemCommand{QString::fromLatin1(command), raw};
            connect(item, &QAction::triggered, this, [this, itemCommand] { performCommand(itemCommand); });
            connect(menu, &QMenu::aboutToShow, item, [this, item, itemCommand] {
                const CommandState state = commandState(itemCommand);
                item->setChecked(state.checked);
                item->setEnabled(state.enabled);
            });
        }
        button->setMenu(menu);
        m_toolbar->addWidget(button);
        return menu;
    };
    QMenu *sortMenu =
        menuButton(QIcon::fromTheme(QStringLiteral("view-sort-ascending")), tr("Sort"), "changeThumbnailFileSort",
                   fileSortTypeCount, [](int raw) { return fileSortTypeTitle(FileSortType(raw)); });
    sortMenu->addSeparator();
    QAction *reverse = sortMenu->addAction(tr("Reverse Order"));
    reverse->setCheckable(true);
    connect(sortMenu, &QMenu::aboutToShow, reverse,
            [this, reverse] { reverse->setChecked(m_windowSettings->thumbnailsReverseSort()); });
    connect(reverse, &QAction::triggered, this, [this] {
        performCommand({QStringLiteral("changeThumbnailReverseSort"), {}});
    });
    menuButton(QIcon::fromTheme(QStringLiteral("view-filter")), tr("Show"), "changeThumbnailFileFilter",
               fileFilterTypeCount, [](int raw) { return fileFilterTypeTitle(FileFilterType(raw)); });

    auto *spacer = new QWidget(m_toolbar);
    spacer->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Preferred);
    m_toolbar->addWidget(spacer, 1);

    // Search: the field, with the category chooser in front of it.
    m_searchCategoryButton = new QToolButton(m_toolbar);
    m_searchCategoryButton->setPopupMode(QToolButton::InstantPopup);
    m_searchCategoryButton->setToolButtonStyle(Qt::ToolButtonTextOnly);
    m_searchCategoryButton->setText(thumbnailsSearchTypeTitle(m_searchType));
    m_searchCategoryButton->setToolTip(tr("What the search matches"));
    auto *categories = new QMenu(m_searchCategoryButton);
    auto *categoryGroup = new QActionGroup(categories);
    for (ThumbnailsSearchType type : {ThumbnailsSearchType::filename, ThumbnailsSearchType::kind,
                                      ThumbnailsSearchType::label, ThumbnailsSearchType::camera}) {
        QAction *item = categories->addAction(thumbnailsSearchTypeTitle(type));
        item->setCheckable(true);
        item->setChecked(type == m_searchType);
        categoryGroup->addAction(item);
        connect(item, &QAction::triggered, this, [this, type] {
            performCommand({QStringLiteral("setThumbnailViewSearchCategory"), int(type)});
        });
    }
    m_searchCategoryButton->setMenu(categories);
    m_toolbar->addWidget(m_searchCategoryButton);
    m_searchField = new QLineEdit(m_toolbar);
    m_searchField->setPlaceholderText(tr("Search"));
    m_searchField->setClearButtonEnabled(true);
    m_searchField->setMaximumWidth(240);
    m_searchField->addAction(QIcon::fromTheme(QStringLiteral("edit-find")), QLineEdit::LeadingPosition);
    m_toolbar->addWidget(m_searchField);
    connect(m_searchField, &QLineEdit::textChanged, this, [this](const QString &text) {
        performCommand({QStringLiteral("thumbnailViewSearch"), text});
    });
}

QWidget *MainWindowViewController::buildBottomBar()
{
    auto *bottomContainer = new QWidget(this);
    auto *bar = new QHBoxLayout(bottomContainer);
    bar->setContentsMargins(8, 2, 8, 2);
    bar->setSpacing(6);
    m_statusBarText = new QLabel(bottomContainer);
    // Eight seconds: long enough to read a sentence, short enough not to hide the counts for long.
    m_noticeTimer = new QTimer(this);
    m_noticeTimer->setSingleShot(true);
    m_noticeTimer->setInterval(8000);
    connect(m_noticeTimer, &QTimer::timeout, this, [this] { m_statusBarText->setText(m_statusText); });
    m_statusBarText->setTextFormat(Qt::PlainText);
    m_statusBarText->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    bar->addWidget(m_statusBarText, 1);

    auto *folderDepthIcon = new QLabel(bottomContainer);
    folderDepthIcon->setPixmap(ThemeIcons::folder().pixmap(16, 16));
    folderDepthIcon->setToolTip(tr("Subfolder depth"));
    bar->addWidget(folderDepthIcon);
    m_folderDepthSlider = new QSlider(Qt::Horizontal, bottomContainer);
    m_folderDepthSlider->setRange(0, maximumFolderDepth);
    m_folderDepthSlider->setPageStep(1);
    m_folderDepthSlider->setTickPosition(QSlider::TicksBelow);
    m_folderDepthSlider->setFixedWidth(90);
    m_folderDepthSlider->setValue(m_windowSettings->thumbnailsFolderSearchDepth());
    m_folderDepthSlider->setToolTip(tr("How many levels of subfolders the thumbnails include"));
    m_folderDepthSlider->setAccessibleName(tr("Subfolder depth"));
    bar->addWidget(m_folderDepthSlider);
    // Only a change the user makes counts (and may warn); values set from the settings do not.
    connect(m_folderDepthSlider, &QSlider::valueChanged, this, [this](int depth) {
        if (m_folderDepthSlider->isSliderDown())
            return;
        changeFolderDepth(depth);
    });
    connect(m_folderDepthSlider, &QSlider::sliderReleased, this,
            [this] { changeFolderDepth(m_folderDepthSlider->value()); });

    bar->addSpacing(12);
    auto *thumbnailSizeIcon = new QLabel(bottomContainer);
    thumbnailSizeIcon->setPixmap(
        ThemeIcons::icon(QStringLiteral("image-x-generic"), QStyle::SP_FileIcon).pixmap(16, 16));
    thumbnailSizeIcon->setToolTip(tr("Thumbnail size"));
    bar->addWidget(thumbnailSizeIcon);
    m_thumbnailSizeSlider = new QSlider(Qt::Horizontal, bottomContainer);
    m_thumbnailSizeSlider->setRange(minimumThumbnailSize, maximumThumbnailSize);
    m_thumbnailSizeSlider->setSingleStep(thumbnailSizeStep);
    m_thumbnailSizeSlider->setPageStep(thumbnailSizeStep * 4);
    m_thumbnailSizeSlider->setFixedWidth(140);
    m_thumbnailSizeSlider->setValue(m_windowSettings->thumbnailSize());
    m_thumbnailSizeSlider->setAccessibleName(tr("Thumbnail size"));
    bar->addWidget(m_thumbnailSizeSlider);
    connect(m_thumbnailSizeSlider, &QSlider::valueChanged, this,
            [this](int size) { m_windowSettings->setThumbnailSize(size); });
    return bottomContainer;
}

void MainWindowViewController::observeSettings()
{
    WindowSettings *settings = m_windowSettings.get();
    connect(settings, &WindowSettings::sidebarCollapsedChanged, this, &MainWindowViewController::applyPaneVisibility);
    connect(settings, &WindowSettings::inspectorCollapsedChanged, this, &MainWindowViewController::applyPaneVisibility);
    connect(settings, &WindowSettings::thumbnailSizeChanged, m_thumbnailSizeSlider, [this](int size) {
        const QSignalBlocker blocker(m_thumbnailSizeSlider);
        m_thumbnailSizeSlider->setValue(size);
    });
    connect(settings, &WindowSettings::thumbnailsFolderSearchDepthChanged, m_folderDepthSlider, [this](int depth) {
        const QSignalBlocker blocker(m_folderDepthSlider);
        m_folderDepthSlider->setValue(depth);
    });
    connect(settings, &WindowSettings::browserLayoutChanged, this, [this](BrowserLayout layout) {
        for (QAction *action : m_layoutGroup->actions())
            action->setChecked(action->data().toInt() == int(layout));
    });
    connect(settings, &ObservableSettings::changed, this, &MainWindowViewController::commandsChanged);
}

void MainWindowViewController::applyPaneVisibility()
{
    m_sidebarViewController->setVisible(!m_windowSettings->sidebarCollapsed());
    m_inspectorViewController->setVisible(!m_windowSettings->inspectorCollapsed());
    applySplitSizes();
}

void MainWindowViewController::applySplitSizes()
{
    const int total = qMax(width(), 1000);
    const int sidebar = int(m_windowSettings->sidebarWidth());
    const int inspector = int(m_windowSettings->inspectorWidth());
    m_primarySplitView->setSizes({sidebar, qMax(200, total - sidebar - inspector), inspector});
}

void MainWindowViewController::writeLayoutToSettings()
{
    const QList<int> sizes = m_primarySplitView->sizes();
    if (m_sidebarViewController->isVisible() && sizes.value(0) > 0)
        m_windowSettings->setSidebarWidth(sizes.value(0));
    if (m_inspectorViewController->isVisible() && sizes.value(2) > 0)
        m_windowSettings->setInspectorWidth(sizes.value(2));
    m_sidebarViewController->writeLayoutToSettings();
}

void MainWindowViewController::sourcesChanged(const QList<PXFilePtr> &sources)
{
    m_sources = sources;
    m_browserViewController->setSources(sources);
    m_pathBar->setFolder(sources.value(0));
    Q_EMIT titleChanged(title());
    Q_EMIT commandsChanged();
}

// Expansion alone is not a new place; the root and the selection are. A back or forward step is
// always settled by the recording that follows it.
void MainWindowViewController::recordPlace()
{
    const NavigationHistory::Item place = m_sidebarViewController->currentPlace();
    if (!m_navigationHistory.performedNavigationAction() && m_navigationHistory.currentItem()
        && m_navigationHistory.currentItem()->rootFolder == place.rootFolder
        && NavigationHistory::Item{m_navigationHistory.currentItem()->selectedFiles, {}, place.rootFolder}
            == NavigationHistory::Item{place.selectedFiles, {}, place.rootFolder})
        return;
    m_navigationHistory.record(place);
    Q_EMIT commandsChanged();
}

void MainWindowViewController::goBackOrForward(int step)
{
    const std::optional<NavigationHistory::Item> place =
        step < 0 ? m_navigationHistory.back() : m_navigationHistory.forward();
    if (!place)
        return;
    m_sidebarViewController->showPlace(*place);
    Q_EMIT commandsChanged();
}

void MainWindowViewController::thumbnailSelectionChanged(const QList<PXFilePtr> &files)
{
    m_lastThumbnailViewSelection = files;
    m_inspectorViewController->setFiles(files);
    AuxiliaryWindowsManager::shared().setRecentlySelectedFiles(files);
    Q_EMIT commandsChanged();
}

// Folders are entered; other files open in their default application until Pixcove's own viewer
// windows arrive.
void MainWindowViewController::openFiles(const QList<PXFilePtr> &files)
{
    for (const PXFilePtr &file : files) {
        if (file->isDirectory()) {
            m_sidebarViewController->revealFolder(file);
            return;
        }
    }
    for (const PXFilePtr &file : files) {
        if (!QDesktopServices::openUrl(QUrl::fromLocalFile(file->path())))
            showNotice(tr("No application opens “%1”.").arg(file->displayName()));
    }
}

void MainWindowViewController::showNearestExistingParent(const PXFilePtr &folder, const QString &reason)
{
    PXFilePtr existing = folder;
    while (existing && existing->parentItem()) {
        existing->updateForEvent({ZQFileEventType::removed, existing->nativePath()});
        if (!existing->isPlaceholder() && existing != folder)
            break;
        existing = PXFile::from(existing->parentItem());
    }
    if (!existing)
        return;
    const PXFilePtr root = m_sidebarViewController->model()->rootFolder();
    const QString rootPath = root ? root->path() : QString();
    const bool rootGone = root && (root == folder || rootPath.startsWith(folder->path() + QLatin1Char('/')));
    if (rootGone)
        m_sidebarViewController->showPlace({{existing}, {}, existing});
    else
        m_sidebarViewController->revealFolder(existing);
    const QString text = tr("“%1” is no longer available (%2); showing “%3”.")
                             .arg(folder->displayName(), reason, existing->displayName());
    logError(
        QStringLiteral("%1 is no longer available (%2); showing %3").arg(folder->path(), reason, existing->path()));
    showNotice(text);
}

void MainWindowViewController::showStatus(const QString &text)
{
    m_statusText = text;
    if (!m_noticeTimer->isActive())
        m_statusBarText->setText(text);
}

void MainWindowViewController::showNotice(const QString &text)
{
    m_statusBarText->setText(text);
    m_noticeTimer->start();
}

void MainWindowViewController::chooseFolder()
{
    const PXFilePtr root = m_sidebarViewController->model()->rootFolder();
    auto *dialog = new QFileDialog(this, tr("Choose a Folder"), root ? root->path() : QString());
    dialog->setFileMode(QFileDialog::Directory);
    dialog->setOption(QFileDialog::ShowDirsOnly);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    connect(dialog, &QFileDialog::fileSelected, this, [this](const QString &path) {
        const PXFilePtr folder = PXFile::fileForPath(path);
        m_sidebarViewController->showPlace({{folder}, {}, folder});
    });
    dialog->open();
}

void MainWindowViewController::changeFolderDepth(int depth)
{
    const int previous = m_windowSettings->thumbnailsFolderSearchDepth();
    if (depth == previous)
        return;
    m_windowSettings->setThumbnailsFolderSearchDepth(depth);
    if (depth > previous)
        WarningsManager::shared().showFolderDepthWarning(window());
}

bool MainWindowViewController::performCommand(const Command &command)
{
    if (!commandState(command).enabled)
        return false;
    WindowSettings &s = *m_windowSettings;
    const QString &name = command.name;
    const int value = command.argument.toInt();
    if (thumbnailCommands.contains(name))
        return QMetaObject::invokeMethod(thumbnailsViewController(), name.toLatin1().constData());
    if (name == QLatin1String("showHideSidebar"))
        s.setSidebarCollapsed(!s.sidebarCollapsed());
    else if (name == QLatin1String("showHideInspector"))
        s.setInspectorCollapsed(!s.inspectorCollapsed());
    else if (name == QLatin1String("showHideFavorites"))
        s.setFavoritesCollapsed(!s.favoritesCollapsed());
    else if (name == QLatin1String("changeBrowserLayout"))
        s.setBrowserLayout(BrowserLayout(value));
    else if (name == QLatin1String("toggleThumbnailInfo"))
        s.setThumbnailShowInformation(!s.thumbnailShowInformation());
    else if (name == QLatin1String("showThumbInfo"))
        s.setThumbnailInformation(s.thumbnailInformation() ^ ThumbnailInfoOption(value));
    else if (name == QLatin1String("back"))
        goBackOrForward(-1);
    else if (name == QLatin1String("forward"))
        goBackOrForward(1);
    else if (name == QLatin1String("backForward"))
        goBackOrForward(value);
    else if (name == QLatin1String("changeSidebarSource"))
        chooseFolder();
    else if (name == QLatin1String("changeSidebarSourceFromTree")) {
        const PXFilePtr folder = m_sidebarViewController->sources().value(0);
        m_sidebarViewController->showPlace({{folder}, {}, folder});
    } else if (name == QLatin1String("changeBaseUpOneLevel")) {
        const PXFilePtr root = m_sidebarViewController->model()->rootFolder();
        const PXFilePtr parent = PXFile::from(root->parentItem());
        m_sidebarViewController->showPlace({{root}, {parent}, parent});
    } else if (name == QLatin1String("expandSelected"))
        m_sidebarViewController->expandSelected();
    else if (name == QLatin1String("collapseSelected"))
        m_sidebarViewController->collapseSelected();
    else if (name == QLatin1String("changeThumbnailSize"))
        s.setThumbnailSize(
            qBound(minimumThumbnailSize, s.thumbnailSize() + value * thumbnailSizeStep * 2, maximumThumbnailSize));
    else if (name == QLatin1String("changeFolderDepth"))
        changeFolderDepth(value);
    else if (name == QLatin1String("changeThumbnailFileSort"))
        s.setThumbnailsFileSort(FileSortType(value));
    else if (name == QLatin1String("changeThumbnailReverseSort"))
        s.setThumbnailsReverseSort(!s.thumbnailsReverseSort());
    else if (name == QLatin1String("changeThumbnailFolderSort"))
        s.setThumbnailsFolderSort(FolderSortType(value));
    else if (name == QLatin1String("changeThumbnailSubfolderGrouping"))
        s.setThumbnailsSubfolderInclusionStyle(SubfolderInclusionStyle(value));
    else if (name == QLatin1String("changeThumbnailFileFilter"))
        s.setThumbnailsFileFilter(FileFilterType(value));
    else if (name == QLatin1String("changeThumbnailHideFolders"))
        s.setThumbnailsHideFolders(!s.thumbnailsHideFolders());
    else if (name == QLatin1String("filterThumbnails")) {
        m_searchField->setFocus(Qt::ShortcutFocusReason);
        m_searchField->selectAll();
    } else if (name == QLatin1String("setThumbnailViewSearchCategory")) {
        m_searchType = ThumbnailsSearchType(value);
        m_searchCategoryButton->setText(thumbnailsSearchTypeTitle(m_searchType));
        thumbnailsViewController()->setThumbnailViewSearchCategory(m_searchType);
    } else if (name == QLatin1String("thumbnailViewSearch")) {
        if (m_searchField->text() != command.argument.toString())
            m_searchField->setText(command.argument.toString()); // comes back here through textChanged
        else
            thumbnailsViewController()->thumbnailViewSearch(command.argument.toString());
    } else if (name == QLatin1String("changeSidebarFileSort"))
        s.setSidebarSortType(FileSortType(value));
    else if (name == QLatin1String("changeSidebarReverseSort"))
        s.setSidebarReverseSort(!s.sidebarReverseSort());
    else if (name == QLatin1String("changeSidebarFileFilter"))
        s.setSidebarFileFilter(FileFilterType(value));
    else if (name == QLatin1String("changeSidebarInfo"))
        s.setSidebarInfo(SidebarInfoOptions(value));
    else if (name == QLatin1String("inspectorDoubleClicked"))
        s.setInspectorCollapsed(false);
    else
        return false;
    Q_EMIT commandsChanged();
    return true;
}

CommandState MainWindowViewController::commandState(const Command &command) const
{
    const WindowSettings &s = *m_windowSettings;
    const QString &name = command.name;
    const int value = command.argument.toInt();
    if (thumbnailCommands.contains(name))
        return {thumbnailsViewController()->validateAction(name), false};
    if (name == QLatin1String("showHideSidebar"))
        return {true, !s.sidebarCollapsed()};
    if (name == QLatin1String("showHideInspector"))
        return {true, !s.inspectorCollapsed()};
    if (name == QLatin1String("showHideFavorites"))
        return {!s.sidebarCollapsed(), !s.favoritesCollapsed()};
    if (name == QLatin1String("changeBrowserLayout"))
        return {true, int(s.browserLayout()) == value};
    if (name == QLatin1String("toggleThumbnailInfo"))
        return {true, s.thumbnailShowInformation()};
    if (name == QLatin1String("showThumbInfo"))
        return {s.thumbnailShowInformation(), s.thumbnailInformation().testFlag(ThumbnailInfoOption(value))};
    if (name == QLatin1String("back"))
        return {m_navigationHistory.canGoBack(), false};
    if (name == QLatin1String("forward"))
        return {m_navigationHistory.canGoForward(), false};
    if (name == QLatin1String("backForward"))
        return {value < 0 ? m_navigationHistory.canGoBack() : m_navigationHistory.canGoForward(), false};
    if (name == QLatin1String("changeSidebarSource"))
        return {true, false};
    if (name == QLatin1String("changeSidebarSourceFromTree"))
        return {!m_sidebarViewController->selectedFiles().isEmpty(), false};
    if (name == QLatin1String("changeBaseUpOneLevel")) {
        const PXFilePtr root = m_sidebarViewController->model()->rootFolder();
        return {root && root->parentItem() != nullptr, false};
    }
    if (name == QLatin1String("expandSelected") || name == QLatin1String("collapseSelected"))
        return {!m_sidebarViewController->selectedFiles().isEmpty(), false};
    if (name == QLatin1String("changeThumbnailSize"))
        return {value > 0 ? s.thumbnailSize() < maximumThumbnailSize : s.thumbnailSize() > minimumThumbnailSize, false};
    if (name == QLatin1String("changeFolderDepth"))
        return {true, s.thumbnailsFolderSearchDepth() == value};
    if (name == QLatin1String("changeThumbnailFileSort"))
        return {true, int(s.thumbnailsFileSort()) == value};
    if (name == QLatin1String("changeThumbnailReverseSort"))
        return {true, s.thumbnailsReverseSort()};
    if (name == QLatin1String("changeThumbnailFolderSort"))
        return {true, int(s.thumbnailsFolderSort()) == value};
    if (name == QLatin1String("changeThumbnailSubfolderGrouping"))
        return {s.thumbnailsFolderSearchDepth() > 0, int(s.thumbnailsSubfolderInclusionStyle()) == value};
    if (name == QLatin1String("changeThumbnailFileFilter"))
        return {true, int(s.thumbnailsFileFilter()) == value};
    if (name == QLatin1String("changeThumbnailHideFolders"))
        return {true, s.thumbnailsHideFolders()};
    if (name == QLatin1String("filterThumbnails") || name == QLatin1String("thumbnailViewSearch"))
        return {true, false};
    if (name == QLatin1String("setThumbnailViewSearchCategory"))
        return {true, int(m_searchType) == value};
    if (name == QLatin1String("changeSidebarFileSort"))
        return {true, int(s.sidebarSortType()) == value};
    if (name == QLatin1String("changeSidebarReverseSort"))
        return {true, s.sidebarReverseSort()};
    if (name == QLatin1String("changeSidebarFileFilter"))
        return {true, int(s.sidebarFileFilter()) == value};
    if (name == QLatin1String("changeSidebarInfo"))
        return {true, int(s.sidebarInfo()) == value};
    if (name == QLatin1String("inspectorDoubleClicked"))
        return {true, false};
    // The embedded viewer's commands and the commands that are not available yet.
    return {};
}
