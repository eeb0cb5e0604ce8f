#include "ui/activities/ActivitiesWindow.h"
#include "core/activities/ActivitiesSupport.h"
#include "support/FileNames.h"
#include "ui/ShellFixture.h"
#include "ui/activities/ActivitiesWindowController.h"
#include "ui/activities/FileOperationsController.h"
#include "ui/app/AppDelegate.h"
#include "ui/browser/ThumbnailsActionHandler.h"
#include "ui/browser/ThumbnailsViewController.h"
#include "ui/sidebar/FolderTreeModel.h"
#include "ui/sidebar/SidebarViewController.h"
#include "ui/windows/MainWindowViewController.h"
#include "ui/windows/TabbedWindow.h"

#include <QAbstractButton>
#include <QCheckBox>
#include <QDropEvent>
#include <QMenu>
#include <QMessageBox>
#include <QMimeData>
#include <QPushButton>
#include <QTimer>
#include <QToolButton>
#include <QTreeView>

#include <gtest/gtest.h>

#include <sys/stat.h>

namespace {

using Type = ZQFileOperationType;

// Answers each question the controller puts up by pressing the named buttons in turn, ticking
// "apply to all" first when the name says "all:".
struct Answerer
{
    QStringList answers;
    QStringList asked; // each question's object name and text
    QMetaObject::Connection connection;

    explicit Answerer(ActivitiesWindowController &controller, QStringList script)
        : answers(std::move(script))
    {
        connection =
            QObject::connect(&controller, &ActivitiesWindowController::questionShown, [this](QMessageBox *box) {
                asked << box->objectName() + QLatin1Char(':') + box->text();
                QString answer = answers.isEmpty() ? QStringLiteral("ok") : answers.takeFirst();
                QPointer<QMessageBox> question(box);
                QTimer::singleShot(0, [question, answer]() mutable {
                    if (!question)
                        return;
                    if (answer.startsWith(QLatin1String("all:"))) {
                        answer = answer.mid(4);
                        question->checkBox()->setChecked(true);
                    }
                    if (auto *button = question->findChild<QPushButton *>(answer))
                        button->click();
                    else if (!question->buttons().isEmpty())
                        question->buttons().first()->click();
                });
            });
    }
    ~Answerer() { QObject::disconnect(connection); }
};

QList<QUrl> urlsOf(const QStringList &paths)
{
    QList<QUrl> urls;
    for (const QString &path : paths)
        urls << QUrl::fromLocalFile(path);
    return urls;
}

} // namespace

TEST(ActivitiesWindow, ConflictQuestionsReplaceSkipKeepBothOrStop)
{
    ActivitiesFixture f;
    ActivitiesWindowController controller(f.manager.get());
    for (const char *name : {"a.jpg", "b.jpg", "c.jpg"}) {
        f.dir.write(QStringLiteral("in/") + QLatin1String(name), QByteArray("new ") + name);
        f.dir.write(QStringLiteral("out/") + QLatin1String(name), QByteArray("old ") + name);
    }
    const QStringList all{"in/a.jpg", "in/b.jpg", "in/c.jpg"};
    const auto contents = [&] {
        QStringList texts;
        for (const QString &name : entriesOf(f.dir.filePath("out")))
            texts << name + QLatin1Char('=') + QString::fromUtf8(readAll(f.dir.filePath("out/" + name)));
        return texts;
    };

    {
        // Stop at the first question: everything stays.
        Answerer answerer(controller, {"stop"});
        const FileOperationOutcome outcome = f.run(Type::copy, all, "out");
        EXPECT_TRUE(outcome.cancelled);
        EXPECT_EQ(answerer.asked.size(), 1);
        EXPECT_EQ(contents(), (QStringList{"a.jpg=old a.jpg", "b.jpg=old b.jpg", "c.jpg=old c.jpg"}));
    }
    {
        // One answer each: keep both, replace, skip.
        Answerer answerer(controller, {"keepBoth", "replace", "skip"});
        f.run(Type::copy, all, "out");
        EXPECT_EQ(answerer.asked.size(), 3);
        EXPECT_TRUE(answerer.asked.first().startsWith("conflictQuestion:An item named “a.jpg” already exists"));
        EXPECT_EQ(contents(),
                  (QStringList{"a 2.jpg=new a.jpg", "a.jpg=old a.jpg", "b.jpg=new b.jpg", "c.jpg=old c.jpg"}));
    }
    {
        // Skip, for all: one question, nothing replaced.
        Answerer answerer(controller, {"all:skip"});
        f.run(Type::copy, all, "out");
        EXPECT_EQ(answerer.asked.size(), 1);
        EXPECT_EQ(contents(),
                  (QStringList{"a 2.jpg=new a.jpg", "a.jpg=old a.jpg", "b.jpg=new b.jpg", "c.jpg=old c.jpg"}));
    }
    {
        // A failure is shown as a message.
        Answerer answerer(controller, {});
        ASSERT_EQ(::mkfifo(QFile::encodeName(f.dir.filePath("in/pipe")).constData(), 0600), 0);
        f.run(Type::copy, {"in/pipe"}, "out");
        ASSERT_TRUE(waitUntil([&] { return !answerer.asked.isEmpty(); }));
        EXPECT_TRUE(answerer.asked.first().startsWith("operationError:")) << answerer.asked.first().toStdString();
    }
}

TEST(ActivitiesWindow, RowsShowTheActivitiesAndTheirCancelButtonsWork)
{
    ActivitiesFixture f;
    f.manager->activitiesModel()->setFinishedLinger(60000);
    ActivitiesWindowController controller(f.manager.get());
    auto *waiting = new ActivityItem(QStringLiteral("one"), false);
    waiting->setTitle(QStringLiteral("Copying “a.jpg” to “out”"));
    f.manager->activitiesModel()->add(waiting);
    // It runs longer than a moment: the window opens by itself.
    ASSERT_TRUE(waitUntil([&] { return controller.window() && controller.window()->isVisible(); }, 3000));
    ActivitiesWindow *window = controller.window();
    EXPECT_EQ(window->rowCount(), 1);
    auto *cancel = window->rowFor(waiting)->findChild<QToolButton *>(QStringLiteral("cancelButton"));
    ASSERT_TRUE(cancel);
    cancel->click();
    EXPECT_EQ(waiting->state(), ActivityItem::State::finished);
    EXPECT_FALSE(cancel->isEnabled());
    waiting->setHidden(true);
    EXPECT_EQ(window->rowCount(), 0);
}

TEST(ActivitiesWindow, QuittingWhileActivitiesWorkAsksFirst)
{
    ShellFixture shell;
    ActivitiesFixture f;
    ActivitiesManager::setShared(f.manager.get());
    FileOperationHistory::setShared(f.history.get());
    {
        AppDelegate delegate;
        QStringList steps;
        QObject::connect(&delegate, &AppDelegate::shutdownStep, [&](const QString &step) { steps << step; });
        delegate.terminate = [&] { steps << QStringLiteral("terminate"); };
        auto *working = new ActivityItem(QStringLiteral("copy"), false);
        bool cancelled = false;
        working->cancellationHandler = [&](ActivityItem *) {
            cancelled = true;
            return ActivityItem::State::finished;
        };
        f.manager->activitiesModel()->add(working);

        {
            Answerer answerer(*delegate.fileHandler(), {"continueOperations"});
            delegate.requestQuit();
            ASSERT_EQ(answerer.asked.size(), 1);
            EXPECT_EQ(answerer.asked.first(), "quitQuestion:Operations Not Complete");
        }
        EXPECT_EQ(steps, QStringList{"cancelled"});
        EXPECT_FALSE(cancelled);
        EXPECT_EQ(working->state(), ActivityItem::State::working);

        Answerer answerer(*delegate.fileHandler(), {"quit"});
        delegate.requestQuit();
        EXPECT_TRUE(cancelled);
        EXPECT_EQ(steps,
                  (QStringList{"cancelled", "activities", "slideshows", "viewers", "renamer", "windows", "terminate"}));
    }
    FileOperationHistory::setShared(nullptr);
    ActivitiesManager::setShared(nullptr);
}

TEST(ActivitiesWindow, DropsFollowTheModifiersAndRunAsActivities)
{
    ShellFixture shell;
    ActivitiesFixture f;
    FileOperationsController operations(f.manager.get(), f.history.get());
    const QString destination = f.dir.mkdir(QStringLiteral("dest"));
    ThumbnailsViewController pane(std::make_shared<WindowSettings>());
    pane.actionHandler()->setFileOperations(&operations);
    pane.resize(600, 400);
    pane.setSources({PXFile::fileForPath(destination)});
    ASSERT_TRUE(waitUntil([&] { return !pane.isLoading(); }));

    const auto drop = [&](const QString &name, Qt::KeyboardModifiers modifiers) {
        const QString source = f.dir.write(QStringLiteral("src/") + name, name.toUtf8());
        EXPECT_TRUE(pane.acceptDrop(urlsOf({source}), -1, 0, modifiers));
        f.wait(f.manager->activitiesModel()->activities().value(0));
        return source;
    };
    const auto kindAt = [&](const QString &name) {
        const QFileInfo info(destination + QLatin1Char('/') + name);
        return info.isSymLink() ? QStringLiteral("link") : info.exists() ? QStringLiteral("file") : QStringLiteral("-");
    };

    // Within a volume: no modifier and Shift move, Ctrl copies, Ctrl+Shift links.
    EXPECT_FALSE(QFileInfo::exists(drop(QStringLiteral("plain.jpg"), Qt::NoModifier)));
    EXPECT_EQ(kindAt("plain.jpg"), "file");
    EXPECT_FALSE(QFileInfo::exists(drop(QStringLiteral("shift.jpg"), Qt::ShiftModifier)));
    EXPECT_EQ(kindAt("shift.jpg"), "file");
    EXPECT_TRUE(QFileInfo::exists(drop(QStringLiteral("ctrl.jpg"), Qt::ControlModifier)));
    EXPECT_EQ(kindAt("ctrl.jpg"), "file");
    const QString linked = drop(QStringLiteral("link.jpg"), Qt::ControlModifier | Qt::ShiftModifier);
    EXPECT_EQ(kindAt("link.jpg"), "link");
    EXPECT_EQ(QFileInfo(destination + "/link.jpg").canonicalFilePath(), QFileInfo(linked).canonicalFilePath());

    // Alt asks in a menu.
    const QString asked = f.dir.write(QStringLiteral("src/alt.jpg"), "alt");
    EXPECT_TRUE(pane.acceptDrop(urlsOf({asked}), -1, 0, Qt::AltModifier));
    QMenu *menu = pane.actionHandler()->dropMenu();
    ASSERT_TRUE(menu);
    QStringList choices;
    for (QAction *action : menu->actions())
        choices << action->text();
    EXPECT_EQ(choices, (QStringList{"Move Here", "Copy Here", "Link Here", "", "Cancel"}));
    menu->actions().at(1)->trigger();
    menu->close();
    ASSERT_TRUE(waitUntil([&] { return kindAt("alt.jpg") == "file" && !f.manager->hasWorkingActivities(); }));
    EXPECT_EQ(readAll(asked), "alt");

    // A name already taken asks (here: skip) and leaves the file there alone.
    f.dir.write(QStringLiteral("src/plain.jpg"), "another");
    f.prompter.answer = ZQFileOperationResolution::skip;
    drop(QStringLiteral("plain.jpg"), Qt::NoModifier);
    EXPECT_EQ(f.prompter.questions, QStringList{"plain.jpg"});
    EXPECT_EQ(readAll(destination + "/plain.jpg"), "plain.jpg");
    EXPECT_EQ(readAll(f.dir.filePath("src/plain.jpg")), "plain.jpg"); // the drop helper wrote it anew

    // Everything dropped can be undone, the last first.
    EXPECT_EQ(f.history->undoTitle(), "Undo Copy");
}

TEST(ActivitiesWindow, PaneCommandsTrashAskAndCanBeUndone)
{
    ShellFixture shell;
    shell.settings()->setThumbnailsAutoselectNextItemAfterMove(true);
    ActivitiesFixture f;
    FileOperationsController operations(f.manager.get(), f.history.get());
    const QString folder = f.dir.mkdir(QStringLiteral("photos"));
    for (const char *name : {"a.jpg", "b.jpg", "c.jpg", "d.png"})
        f.dir.write(QStringLiteral("photos/") + QLatin1String(name), name);
    ThumbnailsViewController pane(std::make_shared<WindowSettings>());
    pane.actionHandler()->setFileOperations(&operations);
    pane.resize(600, 400);
    pane.setSources({PXFile::fileForPath(folder)});
    ASSERT_TRUE(waitUntil([&] { return !pane.isLoading() && pane.fileCount() == 4; }));

    // Trashing the selection selects the item that followed it.
    pane.selectFiles({pane.files().at(1)});
    EXPECT_TRUE(pane.actionHandler()->canMoveToTrash());
    pane.actionHandler()->moveToTrash();
    ASSERT_TRUE(waitUntil([&] { return pane.fileCount() == 3; }, 10000));
    EXPECT_FALSE(QFileInfo::exists(folder + "/b.jpg"));
    ASSERT_TRUE(waitUntil([&] { return pane.selectedFiles().size() == 1; }));
    EXPECT_EQ(pane.selectedFiles().first()->name(), "c.jpg");
    EXPECT_EQ(f.history->undoTitle(), "Undo Move to Trash");
    f.history->undo();
    ASSERT_TRUE(f.settle());
    EXPECT_EQ(readAll(folder + "/b.jpg"), "b.jpg");

    // Deleting the rejects asks first: declined, nothing moves.
    pane.setFlagLookup([](const PXFilePtr &file) {
        return file->name() == "a.jpg" || file->name() == "d.png" ? FileFlag::rejected : FileFlag::none;
    });
    int asked = 0;
    pane.actionHandler()->deleteRejectedQuestion = [&](int count) {
        asked = count;
        return false;
    };
    ASSERT_TRUE(pane.actionHandler()->canDeleteRejected());
    pane.actionHandler()->deleteRejected();
    EXPECT_EQ(asked, 2);
    EXPECT_FALSE(f.manager->hasWorkingActivities());
    EXPECT_EQ(entriesOf(folder), (QStringList{"a.jpg", "b.jpg", "c.jpg", "d.png"}));
    pane.actionHandler()->deleteRejectedQuestion = [](int) { return true; };
    pane.actionHandler()->deleteRejected();
    ASSERT_TRUE(waitUntil([&] { return entriesOf(folder) == QStringList{"b.jpg", "c.jpg"}; }, 10000));
    EXPECT_EQ(entriesOf(f.trashFolder + "/files"), (QStringList{"a.jpg", "d.png"}));

    // A new extension asks: declined, the name stays.
    QStringList questions;
    operations.extensionQuestion = [&](const QString &name, const QString &newName) {
        questions << name + QLatin1String("->") + newName;
        return false;
    };
    const PXFilePtr b = PXFile::fileForPath(folder + "/b.jpg");
    EXPECT_EQ(operations.rename(b, QStringLiteral("b.png"), nullptr), nullptr);
    EXPECT_EQ(questions, QStringList{"b.jpg->b.png"});
    EXPECT_TRUE(QFileInfo::exists(folder + "/b.jpg"));
    // The same extension in other letters, or only the name: not asked.
    f.wait(operations.rename(b, QStringLiteral("bee.JPG"), nullptr));
    EXPECT_EQ(questions.size(), 1);
    EXPECT_EQ(entriesOf(folder), (QStringList{"bee.JPG", "c.jpg"}));
    EXPECT_TRUE(FileOperationsController::changesExtension("photo.jpg", "photo"));
}

TEST(ActivitiesWindow, NewFoldersDuplicatesAndAliasesComeFromThePaneAndGoBackToTheTrash)
{
    ShellFixture shell;
    ActivitiesFixture f;
    FileOperationsController operations(f.manager.get(), f.history.get());
    const QString folder = f.dir.mkdir(QStringLiteral("photos"));
    f.dir.write(QStringLiteral("photos/c.jpg"), "c");
    ThumbnailsViewController pane(std::make_shared<WindowSettings>());
    pane.actionHandler()->setFileOperations(&operations);
    pane.resize(600, 400);
    pane.show();
    pane.setSources({PXFile::fileForPath(folder)});
    ASSERT_TRUE(waitUntil([&] { return !pane.isLoading() && pane.fileCount() == 1; }));

    // A new folder opens its name for editing once it is listed.
    pane.actionHandler()->newFolder();
    ASSERT_TRUE(waitUntil([&] { return pane.gridView()->isEditingName(); }, 10000));
    EXPECT_TRUE(QFileInfo(folder + "/untitled folder").isDir());
    EXPECT_EQ(pane.selectedFiles().first()->name(), "untitled folder");

    // The copies of a selection take it, all of them.
    f.dir.write(QStringLiteral("photos/d.jpg"), "d");
    ASSERT_TRUE(waitUntil([&] { return pane.fileCount() == 3; }));
    pane.selectFiles({PXFile::fileForPath(folder + "/c.jpg"), PXFile::fileForPath(folder + "/d.jpg")});
    pane.actionHandler()->duplicate();
    ASSERT_TRUE(
        waitUntil([&] { return QFileInfo::exists(folder + "/d copy.jpg") && !f.manager->hasWorkingActivities(); }));
    EXPECT_TRUE(waitUntil([&] {
        return namesOf(pane.selectedFiles()) == QStringList{"c copy.jpg", "d copy.jpg"};
    })) << namesOf(pane.selectedFiles()).join(", ").toStdString();
    pane.selectFiles({PXFile::fileForPath(folder + "/c.jpg")});
    pane.actionHandler()->makeAlias();
    ASSERT_TRUE(waitUntil(
        [&] { return QFileInfo(folder + "/c alias.jpg").isSymLink() && !f.manager->hasWorkingActivities(); }));
    EXPECT_EQ(readAll(folder + "/c alias.jpg"), "c");
    EXPECT_EQ(f.history->undoTitle(), "Undo Make Alias");

    // Undone, each goes to the trash, newest first; the original stays.
    for (const char *title : {"Undo Make Alias", "Undo Duplicate", "Undo New Folder"}) {
        EXPECT_EQ(f.history->undoTitle(), title);
        f.history->undo();
        ASSERT_TRUE(f.settle());
    }
    EXPECT_EQ(entriesOf(folder), (QStringList{"c.jpg", "d.jpg"}));
    EXPECT_EQ(entriesOf(f.trashFolder + "/files"),
              (QStringList{"c alias.jpg", "c copy.jpg", "d copy.jpg", "untitled folder"}));
}

TEST(ActivitiesWindow, FilesDroppedOnASidebarFolderGoThere)
{
    ShellFixture shell;
    const QString photo = shell.dir.write(QStringLiteral("elsewhere/photo.jpg"), "p");
    MainWindowController *window = shell.windows->newMainWindow(shell.photos);
    SidebarViewController *sidebar = window->mainViewController()->sidebarViewController();
    const PXFilePtr target = shell.folder("photos/a");
    ASSERT_TRUE(waitUntil([&] { return sidebar->model()->indexForFile(target).isValid(); }));
    QTreeView *tree = sidebar->treeView();
    const QPoint point = tree->visualRect(sidebar->model()->indexForFile(target)).center();

    // As the window system delivers it: the drag enters, then drops with Ctrl held (a copy).
    QMimeData data;
    data.setUrls({QUrl::fromLocalFile(photo)});
    QDragEnterEvent enter(point, Qt::CopyAction | Qt::MoveAction | Qt::LinkAction, &data, Qt::LeftButton,
                          Qt::ControlModifier);
    QCoreApplication::sendEvent(tree->viewport(), &enter);
    EXPECT_TRUE(enter.isAccepted());
    EXPECT_EQ(enter.dropAction(), Qt::CopyAction);
    QDropEvent drop(QPointF(point), Qt::CopyAction | Qt::MoveAction | Qt::LinkAction, &data, Qt::LeftButton,
                    Qt::ControlModifier);
    QCoreApplication::sendEvent(tree->viewport(), &drop);
    EXPECT_TRUE(drop.isAccepted());
    ASSERT_TRUE(waitUntil([&] { return QFileInfo::exists(shell.dir.filePath("photos/a/photo.jpg")); }));
    EXPECT_EQ(readAll(photo), "p");

    // Below the last folder there is nothing to drop on.
    EXPECT_EQ(sidebar->dropOperation({QUrl::fromLocalFile(photo)}, QPoint(5, tree->viewport()->height() - 2),
                                     Qt::NoModifier),
              FileDropOperation::none);
}
