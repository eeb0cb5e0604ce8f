#include "ui/browser/ThumbnailsViewController.h"

#include "core/app/Dispatch.h"
#include "core/fs/ZQFolderLoadOperation.h"
#include "core/model/FileCollectionModel.h"
#include "core/model/PXFile.h"
#include "core/settings/AppSettings.h"
#include "core/settings/SettingsManager.h"
#include "support/FileNames.h"
#include "support/TestDir.h"
#include "support/TestImages.h"
#include "ui/browser/ThumbnailGridView.h"
#include "ui/browser/ThumbnailsActionHandler.h"
#include "ui/windows/CommandRegistry.h"
#include "ui/windows/ThumbnailContextMenu.h"

#include <QAction>
#include <QDir>
#include <QFileInfo>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QScrollBar>
#include <QSemaphore>
#include <QSignalSpy>
#include <QTest>
#include <QThreadPool>

#include <gtest/gtest.h>

namespace {
bool settle(ThumbnailsViewController &pane, int count)
{
    return waitUntil([&] { return !pane.isLoading() && pane.files().size() == count; });
}

// The menu a right click on item `index` (-1: the background) opens, made as the window makes it.
QMenu *contextMenu(ThumbnailsViewController &pane, int index)
{
    pane.actionHandler()->setContextMenuFactory([](ThumbnailsActionHandler *handler, bool onItems) {
        return ThumbnailContextMenu::build(handler, onItems, CommandRegistry::shared());
    });
    return pane.actionHandler()->makeContextMenu(index);
}

QStringList menuTitles(QMenu *menu)
{
    QStringList titles;
    for (QAction *action : menu->actions())
        titles << (action->isSeparator() ? QStringLiteral("-") : action->text());
    return titles;
}

// Makes folder listings as slow as a test needs: the listing pool gets one thread, and each
// hold() queues a task that keeps it busy until released, so the listings queued before a hold
// run and those queued after it wait.
class ListingPool
{
public:
    ListingPool()
        : m_pool(namedThreadPool(QString::fromLatin1(ZQFolderLoadOperation::poolName)))
        , m_threads(m_pool->maxThreadCount())
    {
        m_pool->waitForDone();
        m_pool->setMaxThreadCount(1);
    }
    ~ListingPool()
    {
        for (int i = 0; i < m_holds.size(); ++i)
            release();
        m_pool->waitForDone();
        m_pool->setMaxThreadCount(m_threads);
    }
    void hold()
    {
        auto gate = std::make_shared<QSemaphore>();
        m_holds.append(gate);
        m_pool->start([gate] { gate->acquire(); });
    }
    // Lets the oldest hold go.
    void release()
    {
        if (m_released < m_holds.size())
            m_holds[m_released++]->release();
    }

private:
    QThreadPool *m_pool;
    int m_threads;
    QList<std::shared_ptr<QSemaphore>> m_holds;
    qsizetype m_released = 0;
};

// Counts the times `widget` is shown.
class ShowCounter : public QObject
{
public:
    explicit ShowCounter(QWidget *widget) { widget->installEventFilter(this); }
    int shows = 0;

protected:
    bool eventFilter(QObject *, QEvent *event) override
    {
        if (event->type() == QEvent::Show)
            ++shows;
        return false;
    }
};

// An own settings manager made the shared one for the test's lifetime.
struct SharedSettings
{
    TestDir dir;
    SettingsManager manager{dir.filePath(QStringLiteral("settings.json"))};
    SharedSettings() { SettingsManager::setShared(&manager); }
    ~SharedSettings() { SettingsManager::setShared(nullptr); }
    AppSettings &app() { return *manager.settings(); }
};

// The bounding box of the pixels of exactly `color` in `image`, within `area`.
QRect boxOf(const QImage &image, QColor color, const QRect &area)
{
    QRect box;
    for (int y = area.top(); y <= area.bottom(); ++y) {
        for (int x = area.left(); x <= area.right(); ++x) {
            if (image.pixelColor(x, y) == color)
                box |= QRect(x, y, 1, 1);
        }
    }
    return box;
}
} // namespace

TEST(ThumbnailsViewController, ReportsSelectionAndRestoresItPerSetOfSources)
{
    TestDir dir;
    for (int i = 0; i < 60; ++i)
        dir.write(QStringLiteral("a/file%1.txt").arg(i, 2, 10, QLatin1Char('0')), "x");
    dir.write(QStringLiteral("b/only.txt"), "x");

    auto settings = std::make_shared<WindowSettings>();
    ThumbnailsViewController pane(settings);
    pane.resize(500, 300);
    pane.show();
    EXPECT_EQ(pane.statusText(), "No Folder Selected");

    const PXFilePtr a = PXFile::fileForPath(dir.filePath("a"));
    const PXFilePtr b = PXFile::fileForPath(dir.filePath("b"));
    QSignalSpy selections(&pane, &ThumbnailsViewController::selectionChanged);
    pane.setSources({a});
    ASSERT_TRUE(settle(pane, 60));
    pane.selectFiles({});
    EXPECT_EQ(pane.statusText(), "60 files");

    const QList<PXFilePtr> chosen{pane.files().at(41), pane.files().at(43)};
    pane.selectFiles(chosen);
    EXPECT_EQ(pane.statusText(), "2 of 60 files selected");
    ASSERT_TRUE(waitUntil(
        [&] { return !selections.isEmpty() && selections.last().first().value<QList<PXFilePtr>>() == chosen; }));
    const QPoint origin = pane.gridView()->scrollOrigin();
    EXPECT_GT(origin.y(), 0); // scrolled to show the selection

    pane.setSources({b});
    ASSERT_TRUE(settle(pane, 1));
    pane.actionHandler()->selectAll();
    EXPECT_EQ(pane.statusText(), "1 of 1 file selected");
    EXPECT_EQ(namesOf(pane.selectedFiles()), QStringList{"only.txt"});

    // Coming back restores the selection and the scroll position of the first visit.
    pane.setSources({a});
    ASSERT_TRUE(settle(pane, 60));
    ASSERT_TRUE(waitUntil([&] { return pane.selectedFiles() == chosen; }));
    EXPECT_EQ(pane.gridView()->scrollOrigin(), origin);
    pane.setSources({b});
    ASSERT_TRUE(settle(pane, 1));
    EXPECT_EQ(namesOf(pane.selectedFiles()), QStringList{"only.txt"});

    // Two sources with subfolders in the status line.
    settings->setThumbnailsFolderSearchDepth(1);
    pane.setSources({a, b});
    ASSERT_TRUE(settle(pane, 61));
    pane.actionHandler()->deselectAll();
    EXPECT_EQ(pane.statusText(), "2 folders and their subfolders: 61 files");
}

TEST(ThumbnailsViewController, SearchFiltersByTheChosenCategory)
{
    TestDir dir;
    TestImages::JpegOptions canon;
    canon.make = "Canon";
    canon.model = "Canon EOS 5D";
    TestImages::JpegOptions shouting = canon;
    shouting.model = "CANON POWERSHOT";
    TestImages::JpegOptions nikon;
    nikon.make = "NIKON";
    nikon.model = "NIKON D70";
    TestImages::writeJpeg(dir.filePath("one.jpg"), QSize(32, 24), canon);
    TestImages::writeJpeg(dir.filePath("two.jpg"), QSize(32, 24), shouting);
    TestImages::writeJpeg(dir.filePath("canon-named.jpg"), QSize(32, 24), nikon);
    dir.write(QStringLiteral("notes.txt"), "x");

    ThumbnailsViewController pane(std::make_shared<WindowSettings>());
    pane.resize(600, 400);
    pane.setSources({PXFile::fileForPath(dir.path())});
    ASSERT_TRUE(settle(pane, 4));

    pane.setThumbnailViewSearchCategory(ThumbnailsSearchType::camera);
    pane.thumbnailViewSearch(QStringLiteral("canon"));
    ASSERT_TRUE(waitUntil([&] { return !pane.isLoading() && pane.files().size() == 2; }));
    EXPECT_EQ(namesOf(pane.files()), (QStringList{"one.jpg", "two.jpg"}));

    // The same text by name finds the other file; an empty text shows everything again.
    pane.setThumbnailViewSearchCategory(ThumbnailsSearchType::filename);
    ASSERT_TRUE(
        waitUntil([&] { return !pane.isLoading() && namesOf(pane.files()) == QStringList{"canon-named.jpg"}; }));
    pane.thumbnailViewSearch(QString());
    ASSERT_TRUE(settle(pane, 4));
}

TEST(ThumbnailsViewController, ContextMenusListTheirItemsInOrderAndDisableLaterOnes)
{
    TestDir dir;
    TestImages::writeJpeg(dir.filePath("photo.jpg"), QSize(32, 24));
    dir.write(QStringLiteral("notes.txt"), "x");
    ThumbnailsViewController pane(std::make_shared<WindowSettings>());
    pane.resize(600, 400);
    pane.setSources({PXFile::fileForPath(dir.path())});
    ASSERT_TRUE(settle(pane, 2));
    ASSERT_EQ(namesOf(pane.files()), (QStringList{"notes.txt", "photo.jpg"}));
    pane.selectFiles({pane.files().last()});

    std::unique_ptr<QMenu> items(contextMenu(pane, 1));
    EXPECT_EQ(menuTitles(items.get()),
              (QStringList{"Open With",
                           "Open",
                           "Open in Default App",
                           "Open in Creator App",
                           "-",
                           "Slideshow With Selected",
                           "-",
                           "Edit Filename",
                           "Show in File Manager",
                           "Make Alias",
                           "Duplicate",
                           "Batch Rename",
                           "-",
                           "Move to Trash",
                           "-",
                           "Rotate Clockwise",
                           "Rotate Counterclockwise",
                           "-",
                           "New Folder",
                           "-",
                           "Move To",
                           "Copy To",
                           "Alias To",
                           "Tag:"}));
    for (QAction *action : items->actions()) {
        const QString name = action->objectName();
        if (name == "openRenameWindow") {
            EXPECT_FALSE(action->isEnabled()) << name.toStdString();
        }
        if (name == "performOpen" || name == "renameFile" || name == "newFolder" || name == "moveToTrash"
            || name == "duplicate" || name == "makeAlias" || name == "rotateClockwisePermanent") {
            EXPECT_TRUE(action->isEnabled()) << name.toStdString();
        }
    }

    // Two files, one of them not an image: no rename, no rotation.
    pane.actionHandler()->selectAll();
    std::unique_ptr<QMenu> two(contextMenu(pane, 0));
    EXPECT_FALSE(menuTitles(two.get()).contains("Edit Filename"));
    EXPECT_TRUE(menuTitles(two.get()).contains("Rotate Clockwise"));

    std::unique_ptr<QMenu> background(contextMenu(pane, -1));
    EXPECT_EQ(menuTitles(background.get()),
              (QStringList{"New Folder", "Batch Rename", "Slideshow With Contents", "Show in File Manager", "-",
                           "Move To", "Copy To", "Alias To", "Tag:"}));
}

TEST(ThumbnailsViewController, RenamesInPlaceThroughTheFileLayerAndKeepsTheSelection)
{
    TestDir dir;
    dir.write(QStringLiteral("before.txt"), "x");
    dir.write(QStringLiteral("taken.txt"), "y");
    ThumbnailsViewController pane(std::make_shared<WindowSettings>());
    pane.resize(600, 400);
    pane.show();
    pane.setSources({PXFile::fileForPath(dir.path())});
    ASSERT_TRUE(settle(pane, 2));
    pane.selectFiles({pane.files().first()});
    QSignalSpy errors(&pane, &ThumbnailsViewController::errorOccurred);
    // The Return that ends the edit is the editor's: it does not also open the file.
    QSignalSpy opened(pane.gridView(), &ThumbnailGridView::activated);

    auto typeName = [&pane](const QString &name) {
        pane.actionHandler()->renameFile();
        auto *editor = pane.gridView()->viewport()->findChild<QLineEdit *>();
        ASSERT_TRUE(editor && pane.gridView()->isEditingName());
        editor->setText(name);
        QTest::keyClick(editor, Qt::Key_Return);
        EXPECT_FALSE(pane.gridView()->isEditingName());
    };
    typeName(QStringLiteral("taken.txt"));
    ASSERT_TRUE(errors.wait(5000));
    EXPECT_TRUE(QFileInfo::exists(dir.filePath("before.txt")));
    EXPECT_EQ(QFile(dir.filePath("taken.txt")).size(), 1);

    typeName(QStringLiteral("after.txt"));
    ASSERT_TRUE(waitUntil([&] { return namesOf(pane.files()).contains("after.txt"); }));
    EXPECT_FALSE(QFileInfo::exists(dir.filePath("before.txt")));
    ASSERT_TRUE(waitUntil([&] { return namesOf(pane.selectedFiles()) == QStringList{"after.txt"}; }));
    EXPECT_EQ(opened.count(), 0);
}

TEST(ThumbnailsViewController, TellsTheWindowWhenItsFolderIsDeletedWhileShown)
{
    TestDir dir;
    dir.write(QStringLiteral("shown/a.txt"), "x");
    const PXFilePtr shown = PXFile::fileForPath(dir.filePath("shown"));
    ThumbnailsViewController pane(std::make_shared<WindowSettings>());
    pane.setSources({shown});
    ASSERT_TRUE(settle(pane, 1));
    pane.actionHandler()->selectAll();

    QSignalSpy vanished(&pane, &ThumbnailsViewController::sourceVanished);
    ASSERT_TRUE(QDir(dir.filePath("shown")).removeRecursively());
    ASSERT_TRUE(vanished.wait(5000) || !vanished.isEmpty());
    EXPECT_EQ(vanished.first().first().value<PXFilePtr>(), shown);
    ASSERT_TRUE(waitUntil([&] { return pane.files().isEmpty() && pane.selectedFiles().isEmpty(); }));
    EXPECT_EQ(pane.statusText(), "0 files");
}

TEST(ThumbnailsViewController, FlagCommandsGoThroughTheWindowsFlagStore)
{
    TestDir dir;
    for (const char *name : {"a.txt", "b.txt", "c.txt", "d.txt"})
        dir.write(QLatin1String(name), "x");
    ThumbnailsViewController pane(std::make_shared<WindowSettings>());
    pane.setSources({PXFile::fileForPath(dir.path())});
    ASSERT_TRUE(settle(pane, 4));
    pane.selectFiles({pane.files().at(1)});
    EXPECT_FALSE(pane.actionHandler()->canChangeFlags()); // no store plugged in yet

    QHash<PXFilePtr, FileFlag> store;
    pane.setFlagLookup([&store](const PXFilePtr &file) { return store.value(file, FileFlag::none); });
    QObject::connect(&pane, &ThumbnailsViewController::flagChangeRequested,
                     [&store](const QList<PXFilePtr> &files, FileFlag flag) {
                         for (const PXFilePtr &file : files)
                             store.insert(file, flag);
                     });
    ASSERT_TRUE(pane.actionHandler()->canChangeFlags());
    pane.actionHandler()->flagItem();
    pane.selectFiles({pane.files().at(2), pane.files().at(3)});
    pane.actionHandler()->rejectItem();
    pane.selectFiles({pane.files().at(3)});
    pane.actionHandler()->clearItemFlag();

    pane.actionHandler()->selectFlagged();
    EXPECT_EQ(namesOf(pane.selectedFiles()), QStringList{"b.txt"});
    pane.actionHandler()->selectRejected();
    EXPECT_EQ(namesOf(pane.selectedFiles()), QStringList{"c.txt"});
}

TEST(ThumbnailsViewController, SelectsTheFollowingItemWhenTheSelectionIsDeletedOrRenamedOutside)
{
    TestDir dir;
    for (const char *name : {"a.txt", "b.txt", "c.txt", "d.txt", "e.txt"})
        dir.write(QLatin1String(name), "x");
    ThumbnailsViewController pane(std::make_shared<WindowSettings>());
    pane.setSources({PXFile::fileForPath(dir.path())});
    ASSERT_TRUE(settle(pane, 5));
    QSignalSpy selections(&pane, &ThumbnailsViewController::selectionChanged);

    // Renamed from outside while selected: the selection follows the file.
    pane.selectFiles({pane.files().at(3)});
    ASSERT_TRUE(selections.wait(5000)); // the selection has settled before the file moves
    ASSERT_TRUE(QFile::rename(dir.filePath("d.txt"), dir.filePath("z.txt")));
    ASSERT_TRUE(waitUntil([&] { return namesOf(pane.files()).contains("z.txt"); }));
    ASSERT_TRUE(waitUntil([&] { return namesOf(pane.selectedFiles()) == QStringList{"z.txt"}; }))
        << namesOf(pane.selectedFiles()).join(' ').toStdString();

    pane.selectFiles({pane.files().at(1), pane.files().at(2)});
    ASSERT_TRUE(QFile::remove(dir.filePath("b.txt")));
    ASSERT_TRUE(QFile::remove(dir.filePath("c.txt")));
    ASSERT_TRUE(waitUntil([&] { return pane.files().size() == 3; }));
    ASSERT_TRUE(waitUntil([&] { return namesOf(pane.selectedFiles()) == QStringList{"e.txt"}; }))
        << namesOf(pane.selectedFiles()).join(' ').toStdString();
    ASSERT_TRUE(waitUntil([&] { return selections.last().first().value<QList<PXFilePtr>>() == pane.selectedFiles(); }));

    // Filtering the selection away is not a move: nothing else gets selected.
    pane.thumbnailViewSearch(QStringLiteral("a"));
    ASSERT_TRUE(waitUntil([&] { return pane.files().size() == 1; }));
    EXPECT_TRUE(pane.selectedFiles().isEmpty());
}

TEST(ThumbnailsViewController, CountsFilesWhileLoadingAndShowsTheNoticeOnlyForASlowLoad)
{
    TestDir dir;
    for (int i = 0; i < 40; ++i)
        dir.write(QStringLiteral("before/%1.txt").arg(i), "x");
    for (int i = 0; i < 12; ++i)
        dir.write(QStringLiteral("slow/%1.txt").arg(i), "x");
    for (int i = 0; i < 5; ++i)
        dir.write(QStringLiteral("slow/sub/%1.txt").arg(i), "x");
    for (const char *name : {"filtered/a.txt", "filtered/b.txt", "filtered/inner/c.txt"})
        dir.write(QLatin1String(name), "x");

    auto settings = std::make_shared<WindowSettings>();
    settings->setThumbnailsFolderSearchDepth(1);
    ThumbnailsViewController pane(settings);
    pane.resize(500, 300);
    pane.show();
    auto *notice = pane.findChild<QLabel *>(QStringLiteral("loadingNotice"));
    ASSERT_TRUE(notice);
    ShowCounter noticeShows(notice);

    // A folder that lists at once: its files come without a notice flashing first.
    pane.setSources({PXFile::fileForPath(dir.filePath("before"))});
    ASSERT_TRUE(settle(pane, 40));
    EXPECT_EQ(noticeShows.shows, 0);
    EXPECT_EQ(pane.statusText(), "before and its subfolders: 40 files");

    ListingPool listings;
    listings.hold();
    pane.setSources({PXFile::fileForPath(dir.filePath("slow"))});
    EXPECT_EQ(pane.statusText(), "Loading. 0 found...") << "not the count of the folder before";
    EXPECT_FALSE(notice->isVisible());

    // The folder itself is listed; its subfolder waits.
    listings.hold();
    listings.release();
    ASSERT_TRUE(waitUntil([&] { return pane.statusText() == "Loading. 13 found..."; }))
        << pane.statusText().toStdString();
    ASSERT_TRUE(waitUntil([&] { return notice->isVisible(); }));
    EXPECT_EQ(notice->text(), "Loading Files...");
    EXPECT_TRUE(pane.files().isEmpty());

    listings.release();
    ASSERT_TRUE(settle(pane, 18));
    EXPECT_EQ(pane.statusText(), "slow and its subfolders: 18 files");
    EXPECT_FALSE(notice->isVisible());

    // Only what the filter lets through is found: the count while loading leads to the count shown.
    settings->setThumbnailsFileFilter(FileFilterType::visibleFolders);
    ASSERT_TRUE(settle(pane, 1));
    listings.hold();
    pane.setSources({PXFile::fileForPath(dir.filePath("filtered"))});
    listings.hold();
    listings.release();
    ASSERT_TRUE(waitUntil([&] { return pane.statusText() == "Loading. 1 found..."; }))
        << pane.statusText().toStdString();
    listings.release();
    ASSERT_TRUE(settle(pane, 1));
}

TEST(ThumbnailsViewController, PaintsWithTheStoredAppearanceAndRepaintsWhenItChanges)
{
    SharedSettings shared;
    AppSettings &app = shared.app();
    const QColor background(0, 96, 0);
    const QColor outline(255, 0, 0);
    app.setThumbnailBackgroundColor(background);
    app.setThumbnailOutlineColor(outline);
    app.setThumbnailOutlineThickness(3);
    app.setThumbnailTextColor(QColor(0, 0, 255));

    TestDir dir;
    TestImages::writeJpeg(dir.filePath("wide.jpg"), QSize(200, 100));
    auto settings = std::make_shared<WindowSettings>();
    ThumbnailsViewController pane(settings);
    pane.resize(500, 400);
    pane.show();
    pane.setSources({PXFile::fileForPath(dir.path())});
    ASSERT_TRUE(settle(pane, 1));
    ASSERT_TRUE(waitUntil([&] { return !pane.itemAt(0)->thumbnail().isNull(); }, 20000));

    ThumbnailGridView *grid = pane.gridView();
    const QRect cell = grid->visualRect(0);
    const auto shot = [&] { return grid->viewport()->grab().toImage(); };
    QImage image = shot();
    EXPECT_EQ(image.pixelColor(2, 2), background);
    const QRect bottomAligned = boxOf(image, outline, cell);
    ASSERT_FALSE(bottomAligned.isEmpty()) << "no outline drawn";
    EXPECT_GT(bottomAligned.width(), 3 * bottomAligned.height() / 2) << "the outline frames the wide picture";
    // The name under the picture is written in the text colour.
    bool blueText = false;
    for (int y = bottomAligned.bottom() + 8; y < cell.bottom() && !blueText; ++y) {
        for (int x = cell.left(); x < cell.right() && !blueText; ++x) {
            const QColor pixel = image.pixelColor(x, y);
            blueText = pixel.blue() > 180 && pixel.red() < 60 && pixel.green() < 80;
        }
    }
    EXPECT_TRUE(blueText);
    // The shadow darkens the background just under the frame.
    const QPoint underFrame(bottomAligned.center().x(), bottomAligned.bottom() + 2);
    EXPECT_LT(image.pixelColor(underFrame).green(), background.green() - 10);

    app.setThumbnailsHaveShadow(false);
    EXPECT_EQ(shot().pixelColor(underFrame), background);

    app.setThumbnailsAlignToBottom(false);
    const QRect centred = boxOf(shot(), outline, cell);
    EXPECT_EQ(centred.size(), bottomAligned.size());
    EXPECT_LT(centred.bottom(), bottomAligned.bottom() - 20) << "a wide picture stands on its square's bottom";

    app.setThumbnailsHaveOutline(false);
    EXPECT_TRUE(boxOf(shot(), outline, cell).isEmpty());
}
