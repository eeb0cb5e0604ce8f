#include "core/activities/ActivitiesSupport.h"
#include "core/model/FlagManager.h"
#include "core/model/FlagStore.h"
#include "core/model/PXFile.h"
#include "support/FileNames.h"
#include "support/TestDir.h"
#include "ui/activities/FileOperationsController.h"
#include "ui/browser/ThumbnailsActionHandler.h"
#include "ui/browser/ThumbnailsViewController.h"
#include "ui/windows/CommandRegistry.h"
#include "ui/windows/ThumbnailContextMenu.h"

#include <QFile>
#include <QFileInfo>
#include <QMenu>
#include <QSignalSpy>
#include <QToolButton>
#include <QWidgetAction>

#include <sys/xattr.h>

#include <memory>

#include <gtest/gtest.h>

namespace {

QByteArray attribute(const QString &path, const char *name)
{
    char value[256];
    const ssize_t size = ::getxattr(QFile::encodeName(path).constData(), name, value, sizeof value);
    return size < 0 ? QByteArray() : QByteArray(value, size);
}

// A pane showing `folder` with `count` files, its flags kept by `flags` when given.
struct Pane
{
    explicit Pane(const QString &folder, int count, FlagManager *flags = nullptr)
        : view(std::make_shared<WindowSettings>())
    {
        view.resize(600, 400);
        if (flags) {
            view.setFlagLookup([flags](const PXFilePtr &file) { return flags->flagOf(file); });
            QObject::connect(&view, &ThumbnailsViewController::flagChangeRequested, flags,
                             [flags](const QList<PXFilePtr> &files, FileFlag flag) { flags->setFlag(files, flag); });
        }
        view.setSources({PXFile::fileForPath(folder)});
        loaded = waitUntil([&] { return !view.isLoading() && view.files().size() == count; });
    }
    ThumbnailsActionHandler *handler() { return view.actionHandler(); }
    QMenu *contextMenu(int index)
    {
        handler()->setContextMenuFactory([](ThumbnailsActionHandler *h, bool onItems) {
            return ThumbnailContextMenu::build(h, onItems, CommandRegistry::shared());
        });
        return handler()->makeContextMenu(index);
    }

    ThumbnailsViewController view;
    bool loaded = false;
};

} // namespace

// The "Tag:" chooser writes the colour beside the tags other programs wrote, the grid finds files
// by their label, and a label taken off takes the file out of that search.
TEST(FileCommands, LabelsKeepOtherTagsAndAreFoundBySearch)
{
    TestDir dir;
    const QString work = dir.write(QStringLiteral("work.txt"), "a");
    const QString plain = dir.write(QStringLiteral("plain.txt"), "b");
    dir.write(QStringLiteral("other.txt"), "c");
    setTags(work, "Work");
    Pane pane(dir.path(), 3);
    ASSERT_TRUE(pane.loaded);
    pane.view.selectFiles({PXFile::fileForPath(work), PXFile::fileForPath(plain)});

    std::unique_ptr<QMenu> menu(pane.contextMenu(pane.view.indexOfFile(PXFile::fileForPath(work))));
    auto *blue = menu->findChild<QToolButton *>(QStringLiteral("labelSwatch4"));
    ASSERT_TRUE(blue);
    EXPECT_TRUE(blue->isEnabled());
    QSignalSpy labelled(pane.handler(), &ThumbnailsActionHandler::labelsChanged);
    blue->click();
    ASSERT_TRUE(labelled.wait(5000));
    EXPECT_EQ(attribute(work, "user.xdg.tags"), QByteArray("Work,Blue"));
    EXPECT_EQ(attribute(plain, "user.xdg.tags"), QByteArray("Blue"));

    pane.view.setThumbnailViewSearchCategory(ThumbnailsSearchType::label);
    pane.view.thumbnailViewSearch(QStringLiteral("blue"));
    ASSERT_TRUE(waitUntil([&] { return namesOf(pane.view.files()) == QStringList({"plain.txt", "work.txt"}); }));

    pane.view.selectFiles({PXFile::fileForPath(work)});
    pane.handler()->changeFinderLabel(0);
    ASSERT_TRUE(labelled.wait(5000));
    EXPECT_EQ(attribute(work, "user.xdg.tags"), QByteArray("Work"));
    EXPECT_TRUE(waitUntil([&] { return namesOf(pane.view.files()) == QStringList({"plain.txt"}); }));

    // Nothing selected: the chooser is there, disabled.
    pane.handler()->deselectAll();
    std::unique_ptr<QMenu> background(pane.contextMenu(-1));
    auto *red = background->findChild<QToolButton *>(QStringLiteral("labelSwatch6"));
    ASSERT_TRUE(red);
    EXPECT_FALSE(red->isEnabled());
}

// A cull outlives the window and the program: a new pane with a new flag manager selects the
// files flagged and rejected before.
TEST(FileCommands, FlaggedAndRejectedFilesAreSelectedAgainAfterARestart)
{
    TestDir dir;
    const QString first = dir.write(QStringLiteral("IMG_0001.JPG"), "a");
    const QString second = dir.write(QStringLiteral("IMG_0002.JPG"), "b");
    dir.write(QStringLiteral("IMG_0003.JPG"), "c");
    FlagStore store(dir.filePath(QStringLiteral("store/flags.json")));
    FlagStore::setShared(&store);
    const std::shared_ptr<void> uninstall(nullptr, [](void *) { FlagStore::setShared(nullptr); });
    {
        FlagManager flags(&store);
        Pane pane(dir.path(), 3, &flags);
        ASSERT_TRUE(pane.loaded);
        pane.view.selectFiles({PXFile::fileForPath(first)});
        pane.handler()->flagItem();
        pane.view.selectFiles({PXFile::fileForPath(second)});
        pane.handler()->rejectItem();
        flags.flush();
    }
    EXPECT_EQ(attribute(first, FlagStore::flagAttribute), QByteArray("flagged"));
    EXPECT_EQ(attribute(second, FlagStore::flagAttribute), QByteArray("rejected"));

    FlagManager flags(&store);
    Pane pane(dir.path(), 3, &flags);
    ASSERT_TRUE(pane.loaded);
    pane.handler()->selectFlagged();
    EXPECT_EQ(namesOf(pane.view.selectedFiles()), QStringList{"IMG_0001.JPG"});
    pane.handler()->selectRejected();
    EXPECT_EQ(namesOf(pane.view.selectedFiles()), QStringList{"IMG_0002.JPG"});
}

// Move To, Copy To and Alias To run as activities, as drops do: a name that is taken in the
// folder is asked about and never overwritten unasked, labels travel, and a move can be undone.
TEST(FileCommands, MoveCopyAndAliasToAFolderRunAsActivities)
{
    ActivitiesFixture f;
    FileOperationsController operations(f.manager.get(), f.history.get());
    const QString red = f.dir.write(QStringLiteral("src/red.jpg"), "red");
    const QString taken = f.dir.write(QStringLiteral("src/taken.jpg"), "new");
    setTags(red, "Red");
    const QString into = f.dir.mkdir(QStringLiteral("into"));
    f.dir.write(QStringLiteral("into/taken.jpg"), "keep me");
    Pane pane(f.dir.filePath(QStringLiteral("src")), 2);
    ASSERT_TRUE(pane.loaded);
    pane.handler()->setFileOperations(&operations);
    pane.handler()->selectAll();
    EXPECT_FALSE(pane.handler()->canTransferTo(red));
    EXPECT_TRUE(pane.handler()->canTransferTo(into));

    int asked = 0;
    pane.handler()->dialogs().chooseFolder = [&](const QString &) {
        ++asked;
        return into;
    };
    f.prompter.answer = ZQFileOperationResolution::skip;
    pane.handler()->moveToMenuAction(QString()); // "Other Folder…"
    EXPECT_TRUE(f.manager->hasWorkingActivities());
    ASSERT_TRUE(f.settle());
    EXPECT_EQ(asked, 1);
    EXPECT_EQ(f.prompter.questions, QStringList{"taken.jpg"});
    EXPECT_FALSE(QFile::exists(red));
    EXPECT_EQ(attribute(f.dir.filePath(QStringLiteral("into/red.jpg")), "user.xdg.tags"), QByteArray("Red"));
    EXPECT_EQ(readAll(f.dir.filePath(QStringLiteral("into/taken.jpg"))), QByteArray("keep me"));
    EXPECT_EQ(readAll(taken), QByteArray("new"));
    EXPECT_EQ(f.history->undoTitle(), QStringLiteral("Undo Move"));
    f.history->undo();
    ASSERT_TRUE(f.settle());
    EXPECT_EQ(readAll(red), QByteArray("red"));
    EXPECT_FALSE(QFile::exists(f.dir.filePath(QStringLiteral("into/red.jpg"))));

    const QString copies = f.dir.mkdir(QStringLiteral("copies"));
    const QString links = f.dir.mkdir(QStringLiteral("links"));
    ASSERT_TRUE(waitUntil([&] { return pane.view.files().size() == 2; }));
    pane.handler()->selectAll();
    pane.handler()->copyToMenuAction(copies);
    ASSERT_TRUE(f.settle());
    pane.handler()->aliasToMenuAction(links);
    ASSERT_TRUE(f.settle());
    EXPECT_EQ(readAll(copies + QStringLiteral("/taken.jpg")), QByteArray("new"));
    EXPECT_EQ(QFileInfo(links + QStringLiteral("/taken.jpg")).symLinkTarget(), taken);
    EXPECT_TRUE(QFile::exists(taken));
}

// Opening more than a handful of files at once asks first; "Cancel" opens nothing.
TEST(FileCommands, OpeningManyFilesAsksFirst)
{
    TestDir tools;
    const QString log = tools.filePath(QStringLiteral("opened.log"));
    const QString opener =
        tools.write(QStringLiteral("opener.sh"), "#!/bin/sh\necho \"$#\" >> '" + QFile::encodeName(log) + "'\n");
    ASSERT_TRUE(QFile::setPermissions(opener, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner));
    TestDir dir;
    const int many = ThumbnailsActionHandler::manyFilesThreshold + 1;
    for (int i = 0; i < many; ++i)
        dir.write(QStringLiteral("IMG_%1.JPG").arg(i, 4, 10, QLatin1Char('0')), "x");
    Pane pane(dir.path(), many);
    ASSERT_TRUE(pane.loaded);

    QStringList questions;
    bool answer = false;
    pane.handler()->dialogs().confirm = [&](const QString &text) {
        questions << text;
        return answer;
    };
    pane.handler()->selectAll();
    pane.handler()->openWithMenuAction(opener);
    ASSERT_EQ(questions.size(), 1);
    EXPECT_TRUE(questions.first().endsWith(QStringLiteral("open %1 files?").arg(many)));
    answer = true;
    pane.handler()->openWithMenuAction(opener);
    const auto logged = [&log] {
        QFile file(log);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    };
    ASSERT_TRUE(waitUntil([&] { return logged() == QByteArray::number(many) + "\n"; }, 10000));

    // A few files, through "Other…": no question.
    pane.view.selectFiles(pane.view.files().mid(0, 3));
    pane.handler()->dialogs().chooseApplication = [&](const QList<PXFilePtr> &) { return opener; };
    pane.handler()->openWithMenuAction(QString());
    EXPECT_EQ(questions.size(), 2);
    EXPECT_TRUE(waitUntil([&] { return logged() == QByteArray::number(many) + "\n3\n"; }, 10000));
}
