#include "ui/browser/BrowserViewController.h"
#include "ui/browser/ThumbnailsActionHandler.h"
#include "ui/browser/ThumbnailsViewController.h"
#include "ui/viewer/MediaViewController.h"

#include "core/model/FileCollectionModel.h"
#include "core/model/PXFile.h"
#include "core/thumbnails/SystemThumbnailer.h"
#include "core/thumbnails/ThumbnailGenerator.h"
#include "support/FileNames.h"
#include "support/TestDir.h"
#include "support/TestImages.h"

#include <QFileInfo>
#include <QMimeData>
#include <QScrollBar>
#include <QSignalSpy>
#include <QSplitter>
#include <QTest>

#include <memory>

#include <gtest/gtest.h>

namespace {
// A shown pane over `count` text files named f000.txt, f001.txt, ...
struct Pane
{
    explicit Pane(int count, QSize size = QSize(700, 500))
        : settings(std::make_shared<WindowSettings>())
        , pane(settings)
    {
        for (int i = 0; i < count; ++i)
            dir.write(QStringLiteral("f%1.txt").arg(i, 3, 10, QLatin1Char('0')), "x");
        pane.resize(size);
        pane.show();
        pane.setSources({PXFile::fileForPath(dir.path())});
        ok = waitUntil([this, count] { return !pane.isLoading() && pane.files().size() == count; });
        pane.actionHandler()->deselectAll();
    }
    QPoint centre(int index) { return pane.gridView()->visualRect(index).center(); }
    QWidget *viewport() { return pane.gridView()->viewport(); }

    TestDir dir;
    WindowSettingsPtr settings;
    ThumbnailsViewController pane;
    bool ok = false;
};
} // namespace

TEST(ThumbnailGridInteraction, MouseAndKeyboardSelectLikeAFileManager)
{
    Pane p(30);
    ASSERT_TRUE(p.ok);
    ThumbnailGridView *grid = p.pane.gridView();
    const int columns = grid->gridLayout().columns();
    ASSERT_GT(columns, 1);

    QTest::mouseClick(p.viewport(), Qt::LeftButton, {}, p.centre(2));
    EXPECT_EQ(namesOf(p.pane.selectedFiles()), QStringList{"f002.txt"});
    QTest::mouseClick(p.viewport(), Qt::LeftButton, Qt::ShiftModifier, p.centre(5));
    EXPECT_EQ(p.pane.selectedFiles().size(), 4);
    QTest::mouseClick(p.viewport(), Qt::LeftButton, Qt::ControlModifier, p.centre(3));
    EXPECT_EQ(namesOf(p.pane.selectedFiles()), (QStringList{"f002.txt", "f004.txt", "f005.txt"}));
    // A plain click on one of several selected items narrows the selection to it on release.
    QTest::mouseClick(p.viewport(), Qt::LeftButton, {}, p.centre(4));
    EXPECT_EQ(namesOf(p.pane.selectedFiles()), QStringList{"f004.txt"});
    // A click on the background clears it.
    const QRect last = grid->visualRect(29);
    QTest::mouseClick(p.viewport(), Qt::LeftButton, {}, QPoint(last.right() + 5, last.center().y()));
    EXPECT_TRUE(p.pane.selectedFiles().isEmpty());

    QTest::mouseClick(p.viewport(), Qt::LeftButton, {}, p.centre(0));
    QTest::keyClick(grid, Qt::Key_Right);
    QTest::keyClick(grid, Qt::Key_Down);
    EXPECT_EQ(grid->currentIndex(), 1 + columns);
    QTest::keyClick(grid, Qt::Key_Left, Qt::ShiftModifier);
    EXPECT_EQ(p.pane.selectedFiles().size(), 2);
    QTest::keyClick(grid, Qt::Key_End);
    EXPECT_EQ(namesOf(p.pane.selectedFiles()), QStringList{"f029.txt"});
    EXPECT_TRUE(grid->viewport()->rect().intersects(grid->visualRect(29))); // scrolled into view
    QTest::keyClick(grid, Qt::Key_A, Qt::ControlModifier);
    EXPECT_EQ(p.pane.statusText(), "30 of 30 files selected");

    // Return and double click open; a drag carries the files' addresses.
    QSignalSpy opened(&p.pane, &ThumbnailsViewController::openRequested);
    QTest::keyClick(grid, Qt::Key_Return);
    ASSERT_EQ(opened.size(), 1);
    EXPECT_EQ(opened.first().first().value<QList<PXFilePtr>>().size(), 30);
    QTest::mouseClick(p.viewport(), Qt::LeftButton, {}, p.centre(7));
    QTest::mouseDClick(p.viewport(), Qt::LeftButton, {}, p.centre(7));
    ASSERT_EQ(opened.size(), 2);
    EXPECT_EQ(namesOf(opened.last().first().value<QList<PXFilePtr>>()), QStringList{"f007.txt"});
    ThumbnailGridDelegate *delegate = p.pane.gridView()->delegate();
    std::unique_ptr<QMimeData> drag(delegate->gridMimeDataForDrag({7, 8}));
    ASSERT_EQ(drag->urls().size(), 2);
    EXPECT_EQ(drag->urls().first(), QUrl::fromLocalFile(p.dir.filePath("f007.txt")));
}

TEST(ThumbnailGridInteraction, OnlyCellsOnOrNearTheScreenAskForThumbnails)
{
    Pane p(400, QSize(500, 400));
    ASSERT_TRUE(p.ok);
    ThumbnailGridView *grid = p.pane.gridView();
    ASSERT_TRUE(waitUntil([&] { return p.pane.itemAt(0)->visible() == Visibility::onscreen; }));
    const auto [first, last] = grid->onscreenRange();
    const auto [nearFirst, nearLast] = grid->nearbyRange();
    EXPECT_EQ(first, 0);
    EXPECT_GT(nearLast, last);
    EXPECT_EQ(p.pane.itemAt(last)->visible(), Visibility::nearby);
    EXPECT_NE(p.pane.itemAt(399)->visible(), Visibility::onscreen);
    EXPECT_NE(p.pane.itemAt(399)->visible(), Visibility::nearby);

    grid->verticalScrollBar()->setValue(grid->verticalScrollBar()->maximum());
    ASSERT_TRUE(waitUntil([&] { return p.pane.itemAt(399)->visible() == Visibility::onscreen; }));
    EXPECT_EQ(p.pane.itemAt(0)->visible(), Visibility::offscreen);
    // Far behind the view: the picture is forgotten.
    EXPECT_TRUE(p.pane.itemAt(0)->thumbnail().isNull());
}

TEST(ThumbnailGridInteraction, ScrollingHoldsBackTheDecodersUntilItSettlesOrTheViewGoes)
{
    auto p = std::make_unique<Pane>(400, QSize(500, 400));
    ASSERT_TRUE(p->ok);
    const ThumbnailGenerator &generator = ThumbnailGenerator::shared();
    const ThumbnailThrottle &throttle = *SystemThumbnailer::shared().throttle();
    ASSERT_TRUE(waitUntil([&] { return !generator.isViewScrolling(); }));
    QScrollBar *bar = p->pane.gridView()->verticalScrollBar();
    QSignalSpy spy(p->pane.gridView(), &ThumbnailGridView::scrollingChanged);

    // A run of steps is one scroll.
    for (int i = 1; i <= 5; ++i)
        bar->setValue(i * 40);
    ASSERT_EQ(spy.size(), 1);
    EXPECT_TRUE(spy.first().first().toBool());
    EXPECT_TRUE(throttle.isBusy());
    ASSERT_TRUE(waitUntil([&] { return !throttle.isBusy(); }));
    EXPECT_EQ(spy.size(), 2);

    // A view closed while it scrolls does not leave the decoders held back.
    bar->setValue(400);
    EXPECT_TRUE(throttle.isBusy());
    p.reset();
    EXPECT_FALSE(throttle.isBusy());
    EXPECT_FALSE(generator.isViewScrolling());
}

TEST(ThumbnailGridInteraction, ItemSizeFollowsTheWindowSettings)
{
    Pane p(10, QSize(900, 500));
    ASSERT_TRUE(p.ok);
    ThumbnailGridLayout &layout = p.pane.gridView()->gridLayout();
    p.settings->setThumbnailShowInformation(false);
    p.settings->setThumbnailSize(150);
    EXPECT_EQ(layout.itemSize(), QSize(170, 170));
    p.settings->setThumbnailShowInformation(true);
    EXPECT_GT(layout.itemSize().height(), 170);
    const int columns = layout.columns();
    p.settings->setThumbnailSize(300);
    EXPECT_LT(layout.columns(), columns);

    p.settings->setBrowserLayout(BrowserLayout::topPreview);
    EXPECT_TRUE(layout.isSingleRow());
    EXPECT_LE(layout.itemSize().height(), p.pane.gridView()->height());
    EXPECT_EQ(p.pane.gridView()->visualRect(9).top(), p.pane.gridView()->visualRect(0).top());
}

TEST(ThumbnailGridInteraction, DropsGoToTheFolderUnderThePointerOrTheSectionsFolder)
{
    Pane p(0);
    ASSERT_TRUE(p.ok);
    p.dir.write(QStringLiteral("one/a.txt"), "a");
    p.dir.mkdir(QStringLiteral("one/inner"));
    p.dir.write(QStringLiteral("two/b.txt"), "b");
    const QString outside = p.dir.write(QStringLiteral("outside.txt"), "o");
    p.settings->setThumbnailsFolderSearchDepth(1);
    p.pane.setSources({PXFile::fileForPath(p.dir.filePath("one")), PXFile::fileForPath(p.dir.filePath("two"))});
    ASSERT_TRUE(waitUntil([&] { return !p.pane.isLoading() && p.pane.files().size() == 3; }));
    ThumbnailGridLayout &layout = p.pane.gridView()->gridLayout();
    ASSERT_TRUE(layout.showsHeaders());
    ASSERT_EQ(layout.sectionCount(), 2);

    const QList<QUrl> urls{QUrl::fromLocalFile(outside)};
    const int inner = int(p.pane.files().indexOf(PXFile::fileForPath(p.dir.filePath("one/inner"))));
    ASSERT_GE(inner, 0);
    EXPECT_EQ(p.pane.dropOperation(urls, inner, 0, Qt::NoModifier), FileDropOperation::move);
    EXPECT_EQ(p.pane.dropOperation(urls, inner, 0, Qt::ControlModifier), FileDropOperation::copy);
    // On a file, the file's section: its folder.
    const int b = int(p.pane.files().indexOf(PXFile::fileForPath(p.dir.filePath("two/b.txt"))));
    EXPECT_EQ(p.pane.dropOperation({QUrl::fromLocalFile(p.dir.filePath("two/b.txt"))}, b, 1, Qt::NoModifier),
              FileDropOperation::none); // already there

    QMimeData data;
    data.setUrls(urls);
    ThumbnailGridDelegate *delegate = p.pane.gridView()->delegate();
    ASSERT_EQ(delegate->gridValidateDrop(&data, -1, 1, Qt::ControlModifier), Qt::CopyAction);
    ASSERT_TRUE(delegate->gridAcceptDrop(&data, -1, 1, Qt::ControlModifier));
    ASSERT_TRUE(waitUntil([&] { return namesOf(p.pane.files()).contains("outside.txt"); }));
    EXPECT_TRUE(QFileInfo::exists(outside));
    EXPECT_TRUE(QFileInfo::exists(p.dir.filePath("two/outside.txt")));
}

TEST(BrowserViewController, PreviewFollowsTheSelectionAndTheLayout)
{
    TestDir dir;
    TestImages::writeJpeg(dir.filePath("a.jpg"), QSize(64, 48));
    TestImages::writeJpeg(dir.filePath("b.jpg"), QSize(48, 64));
    dir.write(QStringLiteral("c.txt"), "x");
    auto settings = std::make_shared<WindowSettings>();
    BrowserViewController browser(settings);
    browser.resize(900, 600);
    browser.show();
    browser.setSources({PXFile::fileForPath(dir.path())});
    ThumbnailsViewController *pane = browser.thumbnailsViewController();
    ASSERT_TRUE(waitUntil([&] { return !pane->isLoading() && pane->files().size() == 3; }));

    // The viewer shows the first selected file: an image as a picture, another file as its name.
    MediaViewController *viewer = browser.mediaView();
    pane->selectFiles({pane->files().at(0)});
    pane->selectFiles({pane->files().at(1)});
    ASSERT_TRUE(waitUntil([&] { return viewer->currentFile() == pane->files().at(1) && viewer->isShowingImage(); }));
    pane->selectFiles({pane->files().at(2)});
    ASSERT_TRUE(waitUntil([&] { return viewer->currentFile() == pane->files().at(2); }));
    EXPECT_FALSE(viewer->isShowingImage());
    EXPECT_TRUE(viewer->message().contains("c.txt"));

    auto *splitter = browser.findChild<QSplitter *>();
    ASSERT_TRUE(splitter);
    EXPECT_EQ(splitter->orientation(), Qt::Horizontal);
    EXPECT_EQ(splitter->widget(0), pane);
    settings->setBrowserLayout(BrowserLayout::topPreview);
    EXPECT_EQ(splitter->orientation(), Qt::Vertical);
    EXPECT_EQ(splitter->widget(0), viewer);
    settings->setBrowserLayout(BrowserLayout::noPreview);
    EXPECT_FALSE(viewer->isVisible());
}
