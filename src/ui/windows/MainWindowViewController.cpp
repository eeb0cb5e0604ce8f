#include "ui/windows/MainWindowViewController.h"

#include "core/app/Log.h"
#include "core/fs/Applications.h"
#include "core/model/FlagManager.h"
#include "core/model/PXFile.h"
#include "core/settings/AppSettings.h"
#include "core/settings/SettingsManager.h"
#include "core/thumbnails/ThumbnailItem.h"
#include "ui/browser/BrowserViewController.h"
#include "ui/browser/ThumbnailsActionHandler.h"
#include "ui/browser/ThumbnailsViewController.h"
#include "ui/common/ThemeIcons.h"
#include "ui/inspector/InspectorViewController.h"
#include "ui/sidebar/FolderTreeModel.h"
#include "ui/sidebar/PathBar.h"
#include "ui/sidebar/SidebarViewController.h"
#include "ui/viewer/MediaViewActionHandler.h"
#include "ui/viewer/MediaViewController.h"
#include "ui/windows/CommandRegistry.h"
#include "ui/windows/MainToolbarBuilder.h"
#include "ui/windows/MainWindowActionHandler.h"
#include "ui/windows/MainWindowHost.h"
#include "ui/windows/ThumbnailContextMenu.h"
#include "ui/windows/ValidatingToolbar.h"

#include <QDesktopServices>
#include <QEvent>
#include <QHBoxLayout>
#include <QLabel>
#include <QMessageBox>
#include <QSlider>
#include <QSplitter>
#include <QStyle>
#include <QTimer>
#include <QUrl>
#include <QVBoxLayout>

#include <algorithm>
#include <cmath>

namespace {

// Deeper scans than five levels are better done by choosing a lower folder.
constexpr int maximumFolderDepth = 5;

PXFilePtr folderToShow(const PXFilePtr &file)
{
    if (!file)
        return nullptr;
    return file->isDirectory() ? file : PXFile::from(file->parentItem());
}

} // namespace

MainWindowViewController::MainWindowViewController(WindowSettingsPtr settings, MainWindowHost *host,
                                                   const PXFilePtr &file, QWidget *parent)
    : QWidget(parent)
    , m_windowSettings(std::move(settings))
    , m_host(host)
    , m_actionHandler(new MainWindowActionHandler(this, host))
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
    m_toolbarDivider = toolbarDivider;

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

    // The browser lays out its split when its layout changes; the positions are applied over it.
    m_browserSplitView = m_browserViewController->findChild<QSplitter *>(QString(), Qt::FindDirectChildrenOnly);
    if (m_browserSplitView) {
        m_browserSplitView->installEventFilter(this);
        connect(m_browserSplitView, &QSplitter::splitterMoved, this, &MainWindowViewController::browserSplitterMoved);
    }

    MainToolbarBuilder::build(m_toolbar, this, CommandRegistry::shared());
    m_toolbarDivider->setVisible(!m_toolbar->isHidden());
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
    connect(thumbnailsViewController()->actionHandler(), &ThumbnailsActionHandler::slideshowRequested, this,
            [this](const QList<PXFilePtr> &sources) {
                if (m_host)
                    m_host->startSlideshow(sources);
            });
    connect(m_browserViewController->mediaView(), &MediaViewController::commandsChanged, this,
            &MainWindowViewController::commandsChanged);
    connect(m_pathBar, &PathBar::folderChosen, m_sidebarViewController, &SidebarViewController::revealFolder);
    connectFlagsAndErrors();
    // The pane's context menu is made of the registry's commands, like this window's menus.
    thumbnailsViewController()->actionHandler()->setContextMenuFactory(
        [](ThumbnailsActionHandler *handler, bool onItems) {
            return ThumbnailContextMenu::build(handler, onItems, CommandRegistry::shared());
        });
    connect(m_primarySplitView, &QSplitter::splitterMoved, this, [this] {
        if (m_layoutComplete)
            writeLayoutToSettings();
    });

    // The sidebar may already know its place (nothing to list); else it says so when it does.
    if (!m_sidebarViewController->isRestoring()) {
        sourcesChanged(m_sidebarViewController->sources());
        recordPlace();
    }
    // A file handed over is selected (and so shown) in its folder, not only its folder opened.
    if (file && !file->isDirectory())
        thumbnailsViewController()->selectWhenShown(file);
    m_layoutComplete = true;
}

MainWindowViewController::~MainWindowViewController() = default;

// Flags live in the process-wide store, so every window shows the same marks; errors of the pane
// (a refused rename, a failed drop) are told in a message box over this window.
void MainWindowViewController::connectFlagsAndErrors()
{
    ThumbnailsViewController *pane = thumbnailsViewController();
    // The cells draw what is cached; the pane reads the marks of the cells it shows off the GUI
    // thread, and of every file before it selects by mark.
    pane->setFlagLookup([](const PXFilePtr &file) { return FlagManager::shared().cachedFlagOf(file); });
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
        m_actionHandler->changeFolderDepth(depth);
    });
    connect(m_folderDepthSlider, &QSlider::sliderReleased, this,
            [this] { m_actionHandler->changeFolderDepth(m_folderDepthSlider->value()); });

    bar->addSpacing(12);
    auto *thumbnailSizeIcon = new QLabel(bottomContainer);
    thumbnailSizeIcon->setPixmap(
        ThemeIcons::icon(QStringLiteral("image-x-generic"), QStyle::SP_FileIcon).pixmap(16, 16));
    thumbnailSizeIcon->setToolTip(tr("Thumbnail size"));
    bar->addWidget(thumbnailSizeIcon);
    m_thumbnailSizeSlider = new QSlider(Qt::Horizontal, bottomContainer);
    m_thumbnailSizeSlider->setRange(MainWindowActionHandler::minimumThumbnailSize,
                                    MainWindowActionHandler::maximumThumbnailSize);
    m_thumbnailSizeSlider->setSingleStep(MainWindowActionHandler::thumbnailSizeStep);
    m_thumbnailSizeSlider->setPageStep(MainWindowActionHandler::thumbnailSizeStep * 4);
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
    connect(settings, &ObservableSettings::changed, this, &MainWindowViewController::commandsChanged);
    // After the toolbar has arranged itself for the same change.
    connect(settings, &WindowSettings::toolbarConfigurationChanged, m_toolbarDivider,
            [this] { m_toolbarDivider->setVisible(!m_toolbar->isHidden()); });
    // After the browser's own reaction to the same changes, which resizes the split.
    for (auto changed :
         {&WindowSettings::browserVerticalSplitPositionChanged, &WindowSettings::browserHorizontalSplitPositionChanged})
        connect(settings, changed, this, &MainWindowViewController::applyBrowserSplitPosition);
    connect(settings, &WindowSettings::browserLayoutChanged, this,
            &MainWindowViewController::applyBrowserSplitPosition);
    connect(settings, &WindowSettings::thumbnailSizeChanged, this,
            &MainWindowViewController::applyBrowserSplitPosition);
}

bool MainWindowViewController::eventFilter(QObject *watched, QEvent *event)
{
    // The splitter has its new geometry when the event arrives and lays out its panes after it.
    if (watched == m_browserSplitView && event->type() == QEvent::Resize)
        applyBrowserSplitPosition();
    return QWidget::eventFilter(watched, event);
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

void MainWindowViewController::applyBrowserSplitPosition()
{
    const BrowserLayout layout = m_windowSettings->browserLayout();
    if (!m_browserSplitView || layout == BrowserLayout::noPreview || m_browserSplitView->count() != 2)
        return;
    const bool sideBySide = layout == BrowserLayout::rightPreview;
    const auto extent = [sideBySide](QSize size) { return sideBySide ? size.width() : size.height(); };
    const int total =
        extent(m_browserSplitView->contentsRect().size()) - extent(m_browserSplitView->handle(1)->sizeHint());
    if (total <= 0)
        return; // not laid out yet
    const double position = sideBySide ? m_windowSettings->browserVerticalSplitPosition()
                                       : m_windowSettings->browserHorizontalSplitPosition();
    // The splitter keeps each pane at least at its minimum size when the position does not fit.
    const int leading = int(std::lround(std::clamp(position, 0.0, double(total))));
    m_browserSplitView->setSizes({leading, total - leading});
}

// Only the user's drags come here; sizes set by the program do not move the divider this way.
void MainWindowViewController::browserSplitterMoved()
{
    const double leading = m_browserSplitView->sizes().value(0);
    switch (m_windowSettings->browserLayout()) {
    case BrowserLayout::rightPreview: m_windowSettings->setBrowserVerticalSplitPosition(leading); break;
    case BrowserLayout::topPreview: m_windowSettings->setBrowserHorizontalSplitPosition(leading); break;
    case BrowserLayout::noPreview: break;
    }
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
    if (m_host)
        m_host->thumbnailSelectionChanged(files);
    Q_EMIT commandsChanged();
}

// A folder is entered. Images and videos are shown in Pixcove's viewer (or where the settings
// send them): several opened together are the set the viewer steps through, one alone steps
// through the grid's pictures. Other files go to the application the desktop opens them with.
void MainWindowViewController::openFiles(const QList<PXFilePtr> &files)
{
    for (const PXFilePtr &file : files) {
        if (file->isDirectory()) {
            m_sidebarViewController->revealFolder(file);
            return;
        }
    }
    QList<PXFilePtr> media;
    for (const PXFilePtr &file : files) {
        if (file->isImage() || file->isVideo())
            media.append(file);
        else if (!QDesktopServices::openUrl(QUrl::fromLocalFile(file->path())))
            showNotice(tr("No application opens “%1”.").arg(file->displayName()));
    }
    if (media.isEmpty() || !m_host)
        return;
    QList<PXFilePtr> set = media;
    if (media.size() == 1) {
        set.clear();
        ThumbnailsViewController *pane = thumbnailsViewController();
        for (int i = 0; i < pane->fileCount(); ++i) {
            if (const PXFilePtr file = pane->itemAt(i)->file(); file->isImage() || file->isVideo())
                set.append(file);
        }
    }
    m_host->openInViewer(media.first(), set);
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

QObject *MainWindowViewController::ownerObject(CommandOwner owner) const
{
    switch (owner) {
    case CommandOwner::window: return m_actionHandler;
    case CommandOwner::pane: return thumbnailsViewController()->actionHandler();
    case CommandOwner::viewer: return m_browserViewController->mediaView()->actionHandler();
    case CommandOwner::tabbedWindow:
    case CommandOwner::application: break;
    }
    return nullptr;
}

bool MainWindowViewController::performCommand(const Command &command, const QVariant &argument)
{
    if (!command.perform(ownerObject(command.owner()), argument, window()))
        return false;
    // The pane tells of its own changes (a new selection); the window's commands change what
    // other commands show.
    if (command.owner() == CommandOwner::window)
        Q_EMIT commandsChanged();
    return true;
}

CommandState MainWindowViewController::commandState(const Command &command, const QVariant &argument) const
{
    return command.state(ownerObject(command.owner()), argument);
}
