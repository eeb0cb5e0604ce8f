#include "core/settings/WindowSettings.h"
#include "core/model/PXFile.h"
#include "core/settings/AppSettings.h"

#include "support/TestDir.h"

#include <QDir>
#include <QSignalSpy>
#include <QStandardPaths>

#include <gtest/gtest.h>

TEST(WindowSettings, ANewWindowShowsPicturesWithTheDefaultLayout)
{
    const WindowSettings settings;
    const QString pictures = QStandardPaths::writableLocation(QStandardPaths::PicturesLocation);
    ASSERT_TRUE(settings.sidebarRootFolder());
    EXPECT_EQ(settings.sidebarRootFolder()->path(),
              QDir::cleanPath(pictures.isEmpty() ? QDir::homePath() + "/Pictures" : pictures));
    EXPECT_EQ(settings.sidebarInfo(), SidebarInfoOptions::filesAndFolders);
    EXPECT_EQ(settings.sidebarFileFilter(), FileFilterType::visibleFolders);
    EXPECT_EQ(settings.sidebarWidth(), 250.0);
    EXPECT_TRUE(settings.inspectorCollapsed());
    EXPECT_EQ(settings.inspectorWidth(), 300.0);
    EXPECT_EQ(settings.favoritesHeight(), 300.0);
    EXPECT_EQ(settings.browserVerticalSplitPosition(), 600.0);
    EXPECT_EQ(settings.browserHorizontalSplitPosition(), 600.0);
    EXPECT_EQ(settings.browserLayout(), BrowserLayout::rightPreview);
    EXPECT_EQ(settings.thumbnailsFolderSort(), FolderSortType::mixed);
    EXPECT_EQ(settings.thumbnailSize(), 200);
    EXPECT_TRUE(settings.thumbnailShowInformation());
    EXPECT_EQ(settings.thumbnailInformation().toInt(), 3);
    EXPECT_EQ(settings.thumbnailsFolderSearchDepth(), 0);
    EXPECT_EQ(settings.thumbnailsSubfolderInclusionStyle(), SubfolderInclusionStyle::byFolder);
    EXPECT_EQ(settings.inspectorActiveTab(), InspectorTab::general);
    EXPECT_FALSE(settings.toolbarConfiguration().has_value());
}

TEST(WindowSettings, ADuplicateIsIndependentAndKeepsFoldersThatAreGone)
{
    TestDir dir;
    const QString gone = dir.mkdir(QStringLiteral("gone"));
    const QList<PXFilePtr> selection{PXFile::fileForPath(dir.mkdir(QStringLiteral("a"))),
                                     PXFile::fileForPath(dir.mkdir(QStringLiteral("b"))), PXFile::fileForPath(gone)};
    WindowSettings original;
    original.setSidebarRootFolder(PXFile::fileForPath(dir.path() + QStringLiteral("/missing-root")));
    original.setSidebarSelection(selection);
    original.setThumbnailInformation({});
    original.setToolbarConfiguration(QVariantMap{{"order", QVariantList{1, 2.5, "x"}}});
    ASSERT_TRUE(QDir(gone).removeRecursively());

    const WindowSettingsPtr copy = original.duplicate();
    EXPECT_NE(copy.get(), &original);
    EXPECT_EQ(copy->sidebarSelection(), selection);
    EXPECT_TRUE(copy->sidebarSelection().at(2)->isPlaceholder());
    EXPECT_TRUE(copy->sidebarRootFolder()->isPlaceholder());
    EXPECT_EQ(copy->thumbnailInformation().toInt(), 0);
    EXPECT_EQ(copy->toolbarConfiguration(), original.toolbarConfiguration());

    copy->setSidebarSelection({});
    copy->setThumbnailSize(120);
    EXPECT_EQ(original.sidebarSelection(), selection);
    EXPECT_EQ(original.thumbnailSize(), 200);
}

TEST(WindowSettings, ObserversHearOfAChangeBeforeAndAfterItAndOfNothingElse)
{
    TestDir dir;
    WindowSettings settings;
    QList<int> sizesBeforeChange;
    QObject::connect(&settings, &ObservableSettings::willChange,
                     [&] { sizesBeforeChange.append(settings.thumbnailSize()); });
    QSignalSpy sizeChanged(&settings, &WindowSettings::thumbnailSizeChanged);
    QSignalSpy selectionChanged(&settings, &WindowSettings::sidebarSelectionChanged);
    QSignalSpy changed(&settings, &ObservableSettings::changed);

    settings.setThumbnailSize(320);
    settings.setThumbnailSize(320);
    EXPECT_EQ(sizesBeforeChange, QList<int>{200});
    ASSERT_EQ(sizeChanged.count(), 1);
    EXPECT_EQ(sizeChanged.at(0).at(0).toInt(), 320);
    EXPECT_EQ(changed.count(), 1);

    // A set holds each folder once, and a null root folder is refused.
    const PXFilePtr folder = PXFile::fileForPath(dir.path());
    settings.setSidebarSelection({folder, folder});
    EXPECT_EQ(settings.sidebarSelection(), QList<PXFilePtr>{folder});
    settings.setSidebarRootFolder(nullptr);
    EXPECT_TRUE(settings.sidebarRootFolder());
    EXPECT_EQ(selectionChanged.count(), 1);
    EXPECT_EQ(changed.count(), 2);

    // The application settings pass on changes made inside their slideshow settings, and stop
    // when the slideshow settings are replaced.
    AppSettings app;
    const SlideshowSettingsPtr first = app.slideshowSettings();
    QSignalSpy appChanged(&app, &ObservableSettings::changed);
    first->setLoop(false);
    EXPECT_EQ(appChanged.count(), 1);
    app.setSlideshowSettings(std::make_shared<SlideshowSettings>());
    first->setLoop(true);
    EXPECT_EQ(appChanged.count(), 2);
}
