#include "ui/rename/FileRenamerWindow.h"

#include "core/fs/operations/ZQFileController.h"
#include "core/model/PXFile.h"
#include "core/rename/PXBatchOutlineModel.h"
#include "core/rename/PXFileRenamer.h"
#include "core/rename/PXRenamePresets.h"
#include "support/TestDir.h"
#include "ui/ShellFixture.h"
#include "ui/app/AppDelegate.h"
#include "ui/browser/ThumbnailsActionHandler.h"
#include "ui/browser/ThumbnailsViewController.h"
#include "ui/rename/RenameFilesModel.h"
#include "ui/rename/RenameFilterEditor.h"
#include "ui/rename/RenameManager.h"
#include "ui/rename/RenamePresetsView.h"
#include "ui/rename/RenameRuleEditor.h"
#include "ui/windows/CommandRegistry.h"
#include "ui/windows/MainWindowViewController.h"
#include "ui/windows/TabbedWindow.h"
#include "ui/windows/ThumbnailContextMenu.h"

#include <QAction>
#include <QComboBox>
#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QKeyEvent>
#include <QMenu>
#include <QLineEdit>
#include <QMimeData>
#include <QPushButton>
#include <QScrollArea>
#include <QSettings>
#include <QSignalSpy>
#include <QTreeView>
#include <QUrl>

#include <gtest/gtest.h>

#include <functional>
#include <memory>

#include <fcntl.h>
#include <unistd.h>

namespace C = PXRenameConstant;
namespace Key = PXRenameSettingsKey;

namespace {

// Rule rows compared as they are stored.
QJsonArray json(const PXRenameRules &rules)
{
    return jsonFromRenameRules(rules);
}

// Answers the window's questions as a test decides.
class ScriptedAnswers : public PXFileRenamerQuestions
{
public:
    PXUnsavedPresetAnswer presetAnswer = PXUnsavedPresetAnswer::cancel;
    int presetQuestions = 0;

    ZQFileOperationResolution queryUserWithError(const ZQFileOperationError &, bool *) override
    {
        return ZQFileOperationResolution::cancel;
    }
    void showRenameError(const QString &, const QString &) override { }
    PXUnsavedPresetAnswer askToSaveChangesToPreset(const QJsonObject &) override
    {
        ++presetQuestions;
        return presetAnswer;
    }
};

class RenamerWindow : public ::testing::Test
{
protected:
    void SetUp() override
    {
        settings = std::make_unique<QSettings>(settingsDir.filePath(QStringLiteral("s.ini")), QSettings::IniFormat);
        window = std::make_unique<FileRenamerWindow>(settings.get(), &controller);
        window->setQuestionsOverride(&answers);
        window->resize(1000, 700);
    }

    PXFileRenamer &renamer() { return window->renamer(); }

    bool settle(int timeoutMs = 10000)
    {
        return waitUntil([&] { return !renamer().workInProgress() && !renamer().isUpdatePending(); }, timeoutMs);
    }

    void add(const QStringList &relativePaths, int depth = 0)
    {
        if (depth > 0) {
            window->depthMenu()->setCurrentIndex(window->depthMenu()->findData(depth));
            Q_EMIT window->depthMenu()->activated(window->depthMenu()->currentIndex());
        }
        QList<PXFilePtr> files;
        for (const QString &path : relativePaths)
            files.append(PXFile::fileForPath(dir.filePath(path)));
        window->addFilesToRename(files);
        ASSERT_TRUE(settle());
    }

    // "name -> shown proposed name [state]" for every row of the files list, in display order.
    QStringList rows() const
    {
        QStringList lines;
        const RenameFilesModel *model = window->filesModel();
        const std::function<void(const QModelIndex &)> walk = [&](const QModelIndex &parent) {
            for (int row = 0; row < model->rowCount(parent); ++row) {
                const QModelIndex name = model->index(row, RenameFilesModel::nameColumn, parent);
                const QModelIndex proposed = model->index(row, RenameFilesModel::proposedNameColumn, parent);
                const QString state = model->data(name, RenameFilesModel::stateRole).toString();
                lines.append(name.data().toString() + QStringLiteral(" -> ") + proposed.data().toString()
                             + (state.isEmpty() ? QString() : QStringLiteral(" [%1]").arg(state)));
                walk(name);
            }
        };
        walk({});
        return lines;
    }

    RenameRuleRowWidget *simpleRow() const
    {
        for (RenameRuleRowWidget *row : window->ruleEditor()->rows()) {
            if (row->rowType() == PXRenameRow::simple)
                return row;
        }
        return nullptr;
    }

    // Sets the rule editor's first simple row to `constants`, choosing menu items and typing
    // into fields step by step as the user would.
    void buildRow(const QList<std::pair<int, QString>> &steps)
    {
        RenameRuleRowWidget *row = simpleRow();
        ASSERT_TRUE(row);
        for (int i = 0; i < steps.size(); ++i) {
            const auto &[constant, text] = steps[i];
            if (qobject_cast<QComboBox *>(row->controlAt(i)))
                ASSERT_TRUE(row->chooseConstant(i, constant)) << constant;
            else if (qobject_cast<QLineEdit *>(row->controlAt(i)))
                row->setFieldText(i, text);
        }
    }

    QStringList namesOnDisk() const
    {
        return QDir(dir.path()).entryList(QDir::Files | QDir::NoDotAndDotDot, QDir::Name);
    }

    TestDir dir;
    TestDir settingsDir;
    ZQFileController controller;
    ScriptedAnswers answers;
    std::unique_ptr<QSettings> settings;
    std::unique_ptr<FileRenamerWindow> window;
};

} // namespace

// Every row the editor's menus can build is saved as the engine reads it, restored from what was
// saved, and reaches the renamer; the default presets come back unchanged.
TEST_F(RenamerWindow, RuleEditorRowsRoundTripThroughSavedRules)
{
    RenameRuleEditor *editor = window->ruleEditor();
    RenameRuleRowWidget *row = simpleRow();
    ASSERT_TRUE(row);
    int built = 0;
    QSet<int> chosen;
    RenameRuleEditor restored;
    const std::function<void(int)> visit = [&](int step) {
        row = simpleRow();
        if (step >= row->steps().size()) {
            const PXRenameRules saved = editor->rules();
            restored.setRules(saved);
            EXPECT_TRUE(restored.restoredCompletely());
            EXPECT_EQ(json(restored.rules()), json(saved));
            ASSERT_TRUE(waitUntil([&] { return json(renamer().renameRules()) == json(saved); }));
            ++built;
            return;
        }
        auto *menu = qobject_cast<QComboBox *>(row->controlAt(step));
        if (!menu) {
            if (auto *field = qobject_cast<QLineEdit *>(row->controlAt(step)))
                row->setFieldText(step, field->text().isEmpty() ? QStringLiteral("12") : field->text());
            visit(step + 1);
            return;
        }
        // Each choice rebuilds the row's controls: the menu is looked up again every time.
        const int count = menu->count();
        for (int i = 0; i < count; ++i) {
            const int constant = qobject_cast<QComboBox *>(simpleRow()->controlAt(step))->itemData(i).toInt();
            ASSERT_TRUE(simpleRow()->chooseConstant(step, constant));
            chosen.insert(constant);
            visit(step + 1);
        }
    };
    visit(0);
    EXPECT_GT(built, 60);
    for (int constant : {int(C::insert), int(C::replace), int(C::regex), int(C::addDateTaken), int(C::replaceRange),
                         int(C::insertAtLocation), int(C::makeUppercase), int(C::sequenceFormat00001)})
        EXPECT_TRUE(chosen.contains(constant)) << constant;

    for (const QJsonObject &preset : PXRenamePresets::defaultPresets()) {
        const PXRenameRules rules = *renameRulesFromJson(preset.value(Key::rules));
        editor->setRules(rules);
        EXPECT_TRUE(editor->restoredCompletely());
        EXPECT_EQ(json(editor->rules()), json(rules)) << qPrintable(preset.value(Key::presetName).toString());
    }

    // Switching where to insert keeps the value and its fields.
    editor->setRules({});
    buildRow({{C::insert, {}}, {C::insertAtEnd, {}}, {C::addCharacters, {}}, {C::replacementCharacters, "_final"}});
    ASSERT_TRUE(simpleRow()->chooseConstant(1, C::insertAtBeginning));
    EXPECT_EQ(simpleRow()->savedRules(),
              (QList<PXRenameRule>{{C::insert, "Insert"},
                                   {C::insertAtBeginning, "At Beginning"},
                                   {C::addCharacters, "Characters"},
                                   {C::replacementCharacters, "_final"}}));
}

// A preset changed in the editor is marked; leaving it asks, and each of the three answers does
// what it says. Closing asks too.
TEST_F(RenamerWindow, AlteredPresetsAreMarkedAndTheSheetsAnswersHold)
{
    dir.write(QStringLiteral("My Photo.JPG"));
    add({QStringLiteral("My Photo.JPG")});
    RenamePresetsView *list = window->presetsView();
    const auto indexNamed = [&](const QString &name) {
        const QList<QJsonObject> &saved = window->presets().savedPresets();
        for (qsizetype i = 0; i < saved.size(); ++i) {
            if (saved[i].value(Key::presetName).toString() == name)
                return i;
        }
        return qsizetype(-1);
    };
    const qsizetype lowercase = indexNamed(QStringLiteral("Lowercase Extensions"));
    qsizetype spaces = indexNamed(QStringLiteral("Spaces to Underscores"));
    ASSERT_GE(lowercase, 0);
    ASSERT_GE(spaces, 0);
    const auto choose = [&](qsizetype index) {
        list->setCurrentItem(list->itemFor(PXRenamePresets::savedPresetsGroup, index));
        QCoreApplication::processEvents();
        EXPECT_TRUE(settle());
    };
    const auto altered = [&](qsizetype index) {
        return window->presets().savedPresets()[index].contains(Key::altered);
    };

    choose(lowercase);
    EXPECT_EQ(rows(), QStringList{"My Photo.JPG -> My Photo.jpg"});
    EXPECT_FALSE(altered(lowercase));
    // Lowercase becomes Uppercase: the preset is marked, in the list too.
    ASSERT_TRUE(simpleRow()->chooseConstant(3, C::makeUppercase));
    ASSERT_TRUE(settle());
    EXPECT_TRUE(altered(lowercase));
    EXPECT_EQ(list->itemFor(PXRenamePresets::savedPresetsGroup, lowercase)->text(1), QStringLiteral("●"));
    const PXRenameRules changed = window->ruleEditor()->rules();

    // Cancel: nothing changes, the list goes back to the preset.
    answers.presetAnswer = PXUnsavedPresetAnswer::cancel;
    choose(spaces);
    EXPECT_EQ(answers.presetQuestions, 1);
    EXPECT_TRUE(altered(lowercase));
    EXPECT_EQ(json(window->ruleEditor()->rules()), json(changed));
    EXPECT_EQ(RenamePresetsView::indexOf(list->currentItem()), lowercase);
    // Closing with the change unsaved and "Cancel": the window stays.
    window->show();
    EXPECT_FALSE(window->close());
    EXPECT_TRUE(window->isVisible());

    // Discard: the mark goes, the stored preset is as it was, the other preset applies.
    const QJsonValue storedRules = window->presets().savedPresets()[lowercase].value(Key::rules);
    answers.presetAnswer = PXUnsavedPresetAnswer::discardChanges;
    choose(spaces);
    EXPECT_FALSE(altered(lowercase));
    EXPECT_EQ(window->presets().savedPresets()[lowercase].value(Key::rules), storedRules);
    EXPECT_EQ(rows(), QStringList{"My Photo.JPG -> My_Photo.JPG"});

    // Save: the preset takes the current settings.
    RenameRuleRowWidget *row = simpleRow();
    row->setFieldText(5, QStringLiteral("-"));
    ASSERT_TRUE(settle());
    EXPECT_TRUE(altered(spaces));
    answers.presetAnswer = PXUnsavedPresetAnswer::save;
    choose(lowercase);
    EXPECT_FALSE(altered(spaces));
    const auto savedRules = renameRulesFromJson(window->presets().savedPresets()[spaces].value(Key::rules));
    ASSERT_TRUE(savedRules);
    EXPECT_EQ(savedRules->first().subRules.first().rules.last().stringValue, QStringLiteral("-"));

    // Presets are written when the window closes; a renamed preset keeps its new name.
    list->itemFor(PXRenamePresets::savedPresetsGroup, spaces)->setText(0, QStringLiteral("Dashes"));
    // Dragged to the top, a preset takes its place there; the current preset is followed, so that
    // a change marks it and no other.
    list->moveSavedPreset(spaces, 0);
    const qsizetype movedLowercase = indexNamed(QStringLiteral("Lowercase Extensions"));
    EXPECT_EQ(window->presets().savedPresets().first().value(Key::presetName).toString(), QStringLiteral("Dashes"));
    EXPECT_EQ(RenamePresetsView::indexOf(list->currentItem()), movedLowercase);
    ASSERT_TRUE(simpleRow()->chooseConstant(3, C::makeUppercase));
    ASSERT_TRUE(settle());
    for (qsizetype i = 0; i < window->presets().savedPresets().size(); ++i)
        EXPECT_EQ(altered(i), i == movedLowercase) << i;
    answers.presetAnswer = PXUnsavedPresetAnswer::discardChanges;
    spaces = 0;
    // A name edited to nothing is no name: the preset keeps the one it had.
    list->itemFor(PXRenamePresets::savedPresetsGroup, spaces)->setText(0, QStringLiteral("  "));
    EXPECT_EQ(list->itemFor(PXRenamePresets::savedPresetsGroup, spaces)->text(0), QStringLiteral("Dashes"));
    EXPECT_TRUE(window->close());
    // The frame and both split positions are kept for the next window.
    for (const char *key : {"fileRenameWindow", "fileRenamerPresetsSplitview", "fileRenamerFilesSplitview"})
        EXPECT_FALSE(settings->value(QLatin1String(key)).toString().isEmpty()) << key;
    const std::optional<QJsonObject> dashes = PXRenamePresets(settings.get()).presetNamed(QStringLiteral("Dashes"));
    ASSERT_TRUE(dashes);
    EXPECT_EQ(dashes->value(Key::rules), window->presets().savedPresets()[spaces].value(Key::rules));
}

// Names that would collide are red and marked, and nothing is renamed until they differ; nothing
// is renamed before Rename is pressed, and never onto a file that exists.
TEST_F(RenamerWindow, CollisionsAreMarkedAndNothingIsRenamedOntoAnExistingFile)
{
    dir.write(QStringLiteral("Trip/a.jpg"), "first");
    dir.write(QStringLiteral("Trip/b.jpg"), "second");
    dir.write(QStringLiteral("Trip/x.jpg"), "existing");
    dir.write(QStringLiteral("Trip/keep.png"), "png");
    add({QStringLiteral("Trip")}, 1);
    RenameRuleEditor *editor = window->ruleEditor();
    editor->setRules({});
    RenameRuleRowWidget *row = simpleRow();
    ASSERT_TRUE(row->chooseConstant(0, C::regex));
    // In the name without its extension: "a" and "b" both become "x".
    row->setFieldText(1, QStringLiteral("^[ab]$"));
    row->setFieldText(3, QStringLiteral("x"));
    ASSERT_TRUE(settle());
    EXPECT_EQ(rows(),
              (QStringList{"Trip -> Not Applicable [notApplicable]", "a.jpg -> x.jpg [collision]",
                           "b.jpg -> x.jpg [collision]", "keep.png -> keep.png [unchanged]",
                           "x.jpg -> x.jpg [collision]"}));
    const QModelIndex collided =
        window->filesModel()->index(0, RenameFilesModel::proposedNameColumn, window->filesModel()->index(0, 0));
    EXPECT_EQ(collided.data(Qt::ForegroundRole).value<QColor>(), QColor(Qt::red));
    EXPECT_FALSE(collided.data(Qt::DecorationRole).isNull());
    EXPECT_FALSE(window->renameButton()->isEnabled());
    window->rename();
    ASSERT_TRUE(settle());
    QFile existing(dir.filePath(QStringLiteral("Trip/x.jpg")));
    ASSERT_TRUE(existing.open(QIODevice::ReadOnly));
    EXPECT_EQ(existing.readAll(), QByteArray("existing"));
    EXPECT_EQ(QDir(dir.filePath(QStringLiteral("Trip"))).entryList(QDir::Files, QDir::Name),
              (QStringList{"a.jpg", "b.jpg", "keep.png", "x.jpg"}));

    // Distinct names: still nothing on disk changes until Rename is pressed.
    row = simpleRow();
    row->setFieldText(3, QStringLiteral("y_$0"));
    ASSERT_TRUE(settle());
    EXPECT_TRUE(window->renameButton()->isEnabled());
    EXPECT_EQ(QDir(dir.filePath(QStringLiteral("Trip"))).entryList(QDir::Files, QDir::Name),
              (QStringList{"a.jpg", "b.jpg", "keep.png", "x.jpg"}));
    QSignalSpy finished(&renamer(), &PXFileRenamer::renameFinished);
    window->renameButton()->click();
    ASSERT_TRUE(finished.wait(10000));
    EXPECT_EQ(QDir(dir.filePath(QStringLiteral("Trip"))).entryList(QDir::Files, QDir::Name),
              (QStringList{"keep.png", "x.jpg", "y_a.jpg", "y_b.jpg"}));
}

// Bad input is said where it is typed and loses nothing: a regular expression that does not
// compile leaves names alone; a date pattern that makes path separators is cleaned.
TEST_F(RenamerWindow, BadRulesAreSaidAndLeaveNamesAlone)
{
    dir.write(QStringLiteral("IMG_0001.JPG"), "x", QDateTime(QDate(2020, 2, 29), QTime(8, 15)));
    add({QStringLiteral("IMG_0001.JPG")});
    window->ruleEditor()->setRules({});
    RenameRuleRowWidget *row = simpleRow();
    ASSERT_TRUE(row->chooseConstant(0, C::regex));
    row->setFieldText(1, QStringLiteral("(IMG"));
    row->setFieldText(3, QStringLiteral("x"));
    ASSERT_TRUE(settle());
    EXPECT_TRUE(window->ruleEditor()->problemText().contains(QStringLiteral("(IMG")))
        << qPrintable(window->ruleEditor()->problemText());
    EXPECT_EQ(rows(), QStringList{"IMG_0001.JPG -> IMG_0001.JPG [unchanged]"});

    buildRow({{C::insert, {}},
              {C::insertAtBeginning, {}},
              {C::addModificationDate, {}},
              {C::label, {}},
              {C::dateFormatValue, "yyyy/MM/dd HH:mm "}});
    ASSERT_TRUE(settle());
    EXPECT_TRUE(window->ruleEditor()->problemText().isEmpty());
    EXPECT_EQ(rows(), QStringList{"IMG_0001.JPG -> 2020|02|29 08.15 IMG_0001.JPG"});
    // The pattern is remembered for the next fresh field.
    EXPECT_EQ(window->presets().lastDateFormat(), QStringLiteral("yyyy/MM/dd HH:mm "));
}

// At its first size the window shows every rule row and the filter whole, and still a long list;
// a preset with more rows makes room for them.
TEST_F(RenamerWindow, EveryPartShowsAtTheFirstSize)
{
    FileRenamerWindow fresh(settings.get(), &controller);
    fresh.show();
    const QWidget *pane = fresh.findChild<QScrollArea *>(QStringLiteral("editorsPane"))->viewport();
    // Rows show, and the pane is fitted and laid out, at later turns of the event loop.
    const auto settled = [&](qsizetype rowCount) {
        const QList<RenameRuleRowWidget *> rows = fresh.ruleEditor()->rows();
        const bool shown = rows.size() == rowCount
            && std::all_of(rows.cbegin(), rows.cend(), [](QWidget *row) { return row->isVisible(); });
        if (shown)
            waitUntil([] { return false; }, 50);
        return shown;
    };
    const auto shownWhole = [&](QWidget *widget) {
        return widget->isVisible() && pane->rect().contains(QRect(widget->mapTo(pane, QPoint(0, 0)), widget->size()));
    };
    const auto everyPartShown = [&] {
        const QList<RenameRuleRowWidget *> rows = fresh.ruleEditor()->rows();
        return shownWhole(fresh.filterEditor())
            && std::all_of(rows.cbegin(), rows.cend(), [&](QWidget *row) { return shownWhole(row); });
    };
    ASSERT_TRUE(waitUntil([&] { return settled(2); }));
    EXPECT_TRUE(everyPartShown());
    EXPECT_GE(fresh.filesView()->viewport()->height(), 10 * fresh.filesView()->fontMetrics().height());

    // Seven rows: the compound one and six that change the name.
    namespace C = PXRenameConstant;
    const PXRenameRule insert{C::insert, QStringLiteral("Insert")};
    const PXRenameRule atEnd{C::insertAtEnd, QStringLiteral("At End")};
    const PXRenameRule characters{C::addCharacters, QStringLiteral("Characters")};
    QList<PXRenameRow> nested;
    for (const char *text : {"_a", "_b", "_c", "_d", "_e", "_f"})
        nested.append(PXRenameRow{PXRenameRow::simple,
                                  {insert, atEnd, characters, {C::replacementCharacters, QString::fromLatin1(text)}},
                                  {}});
    fresh.ruleEditor()->setRules(
        {PXRenameRow{PXRenameRow::compound,
                     {{C::label, QStringLiteral("In")}, {C::searchFilename, QStringLiteral("Filename")}},
                     nested}});
    ASSERT_TRUE(waitUntil([&] { return settled(7); }));
    EXPECT_TRUE(everyPartShown());
    fresh.renamer().cancel();
}

// Files and folders dropped on the files list join it, a folder with its contents to the chosen
// depth; what is not a local file is refused.
TEST_F(RenamerWindow, DroppedFilesAndFoldersJoinTheList)
{
    dir.write(QStringLiteral("DSC_0412.ARW"));
    dir.write(QStringLiteral("Porto 2024/IMG_2041.HEIC"));
    dir.write(QStringLiteral("Porto 2024/IMG_2042.HEIC"));
    window->show();
    window->depthMenu()->setCurrentIndex(window->depthMenu()->findData(1));
    Q_EMIT window->depthMenu()->activated(window->depthMenu()->currentIndex());
    QWidget *target = window->filesView()->viewport();
    const QPointF where(target->width() / 2.0, target->height() / 2.0);
    const auto drop = [&](const QList<QUrl> &urls) {
        QMimeData data;
        data.setUrls(urls);
        QDragEnterEvent enter(where.toPoint(), Qt::CopyAction | Qt::LinkAction, &data, Qt::LeftButton, Qt::NoModifier);
        QCoreApplication::sendEvent(target, &enter);
        QDragMoveEvent move(where.toPoint(), Qt::CopyAction | Qt::LinkAction, &data, Qt::LeftButton, Qt::NoModifier);
        QCoreApplication::sendEvent(target, &move);
        QDropEvent dropped(where, Qt::CopyAction | Qt::LinkAction, &data, Qt::LeftButton, Qt::NoModifier);
        QCoreApplication::sendEvent(target, &dropped);
        return std::tuple{enter.isAccepted(), move.isAccepted(), dropped.isAccepted()};
    };

    EXPECT_EQ(drop({QUrl(QStringLiteral("https://example.org/IMG_9999.JPG"))}), std::tuple(false, false, false));
    ASSERT_TRUE(settle());
    EXPECT_TRUE(rows().isEmpty());

    EXPECT_EQ(drop({QUrl::fromLocalFile(dir.filePath(QStringLiteral("DSC_0412.ARW"))),
                    QUrl::fromLocalFile(dir.filePath(QStringLiteral("Porto 2024")))}),
              std::tuple(true, true, true));
    ASSERT_TRUE(settle());
    EXPECT_EQ(rows(),
              (QStringList{"DSC_0412.ARW -> DSC_0412.ARW [unchanged]", "Porto 2024 -> Not Applicable [notApplicable]",
                           "IMG_2041.HEIC -> IMG_2041.HEIC [unchanged]",
                           "IMG_2042.HEIC -> IMG_2042.HEIC [unchanged]"}));
    EXPECT_EQ(window->windowTitle(), QStringLiteral("Rename Files (4 files)"));
}

// Files renamed or deleted by another program while listed: the list follows.
TEST_F(RenamerWindow, TheListFollowsFilesChangedFromOutside)
{
    for (const char *name : {"Trip/a.jpg", "Trip/b.jpg", "Trip/c.jpg"})
        dir.write(QString::fromLatin1(name));
    add({QStringLiteral("Trip")}, 1);
    ASSERT_EQ(rows().size(), 4);
    ASSERT_EQ(::rename(QFile::encodeName(dir.filePath(QStringLiteral("Trip/b.jpg"))).constData(),
                       QFile::encodeName(dir.filePath(QStringLiteral("Trip/renamed.jpg"))).constData()),
              0);
    ASSERT_TRUE(QFile::remove(dir.filePath(QStringLiteral("Trip/c.jpg"))));
    const QStringList expected{"Trip -> Not Applicable [notApplicable]", "a.jpg -> a.jpg [unchanged]",
                               "renamed.jpg -> renamed.jpg [unchanged]"};
    EXPECT_TRUE(waitUntil([&] { return settle(100) && rows() == expected; }, 10000)) << qPrintable(rows().join('\n'));

    // The Delete key takes the selected files off the list, and nothing off the disk.
    const QModelIndex first = window->filesModel()->index(0, 0, window->filesModel()->index(0, 0));
    window->filesView()->selectionModel()->select(first, QItemSelectionModel::Select | QItemSelectionModel::Rows);
    QKeyEvent press(QEvent::KeyPress, Qt::Key_Delete, Qt::NoModifier);
    QCoreApplication::sendEvent(window->filesView(), &press);
    ASSERT_TRUE(settle());
    EXPECT_EQ(rows(),
              (QStringList{"Trip -> Not Applicable [notApplicable]", "renamed.jpg -> renamed.jpg [unchanged]"}));
    EXPECT_TRUE(QFile::exists(dir.filePath(QStringLiteral("Trip/a.jpg"))));
}

// A folder of 50 000 files is listed in the background with its progress shown, and can be
// stopped; the window cannot close meanwhile.
TEST_F(RenamerWindow, ABigFolderIsScannedInTheBackgroundAndCanBeCancelled)
{
    const QString big = dir.mkdir(QStringLiteral("Card"));
    for (int i = 1; i <= 50000; ++i) {
        const QByteArray path = QFile::encodeName(big + QStringLiteral("/DSC_%1.ARW").arg(i, 5, 10, QLatin1Char('0')));
        const int fd = ::open(path.constData(), O_CREAT | O_WRONLY | O_CLOEXEC, 0644);
        ASSERT_GE(fd, 0);
        ::close(fd);
    }
    window->show();
    window->depthMenu()->setCurrentIndex(window->depthMenu()->findData(1));
    Q_EMIT window->depthMenu()->activated(window->depthMenu()->currentIndex());
    window->addFilesToRename({PXFile::fileForPath(big)});
    EXPECT_TRUE(renamer().workInProgress());
    auto *progress = window->findChild<QWidget *>(QStringLiteral("renameProgress"));
    auto *cancel = window->findChild<QPushButton *>(QStringLiteral("cancelWork"));
    EXPECT_TRUE(progress->isVisible());
    EXPECT_TRUE(cancel->isVisible());
    EXPECT_FALSE(window->close());
    cancel->click();
    EXPECT_FALSE(renamer().workInProgress());
    EXPECT_FALSE(progress->isVisible());
    ASSERT_TRUE(settle());
    EXPECT_LT(renamer().outline().items().size(), 50001);

    // Listed to the end when left alone; the names follow the rules.
    window->depthMenu()->setCurrentIndex(window->depthMenu()->findData(2));
    Q_EMIT window->depthMenu()->activated(window->depthMenu()->currentIndex());
    ASSERT_TRUE(settle(60000));
    EXPECT_EQ(renamer().arrangedItems().size(), 50001);
    EXPECT_EQ(renamer().windowTitle(), QStringLiteral("Rename Files (50001 files)"));

    // A rule edit announces the rows on screen, not fifty thousand (the view would walk every
    // one of them on each keystroke); the rows further down show their new names when reached.
    window->ruleEditor()->setRules({});
    RenameRuleRowWidget *row = simpleRow();
    ASSERT_TRUE(row->chooseConstant(0, C::regex));
    row->setFieldText(1, QStringLiteral("^DSC_"));
    QSignalSpy announced(window->filesModel(), &QAbstractItemModel::dataChanged);
    row->setFieldText(3, QStringLiteral("Lisbon "));
    ASSERT_TRUE(settle());
    ASSERT_FALSE(announced.isEmpty());
    int rowsAnnounced = 0;
    for (const QList<QVariant> &signal : announced)
        rowsAnnounced += signal.at(1).toModelIndex().row() - signal.at(0).toModelIndex().row() + 1;
    EXPECT_LT(rowsAnnounced, 200);
    auto *list = window->findChild<QTreeView *>(QStringLiteral("filesList"));
    const QModelIndex card = window->filesModel()->index(0, 0);
    const QModelIndex last = window->filesModel()->index(49999, RenameFilesModel::proposedNameColumn, card);
    EXPECT_EQ(window->filesModel()->index(0, RenameFilesModel::proposedNameColumn, card).data().toString(),
              QStringLiteral("Lisbon 00001.ARW"));
    list->scrollTo(last);
    EXPECT_EQ(last.data().toString(), QStringLiteral("Lisbon 50000.ARW"));
    EXPECT_TRUE(window->close());
}

// The service, the command line's --rename and the Batch Rename command all open the one window
// of the rename manager, which the next opening reuses.
TEST(RenameManagerTest, OpeningHandsFilesToTheOneWindow)
{
    ShellFixture shell;
    TestDir settingsDir;
    QSettings settings(settingsDir.filePath(QStringLiteral("s.ini")), QSettings::IniFormat);
    RenameManager manager(&settings);
    RenameManager::setShared(&manager);
    AppDelegate delegate;
    delegate.showMessage = [](const QString &, const QString &) {};
    const QString a = shell.dir.write(QStringLiteral("photos/a.jpg"));
    const QString b = shell.dir.write(QStringLiteral("photos/b.jpg"));
    delegate.handleRequest({LaunchRequest::Kind::rename, {a}});
    FileRenamerWindow *window = manager.fileRenamer();
    ASSERT_TRUE(window);
    EXPECT_TRUE(window->isVisible());
    delegate.handleRequest({LaunchRequest::Kind::rename, {b}});
    EXPECT_EQ(manager.fileRenamer(), window);
    EXPECT_EQ(window->renamer().rootItems().size(), 2);

    EXPECT_TRUE(manager.closeRenamer());
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_FALSE(manager.fileRenamer());

    // "Batch Rename" in a main window: its selection, or every file it shows.
    MainWindowController *main = shell.windows->newMainWindow(shell.photos);
    ThumbnailsViewController *pane = main->mainViewController()->thumbnailsViewController();
    ASSERT_TRUE(waitUntil([&] { return !pane->isLoading() && pane->fileCount() == 5; }));
    delegate.openRenameWindow(main->tabbedWindow());
    ASSERT_TRUE(manager.fileRenamer());
    EXPECT_EQ(manager.fileRenamer()->renamer().rootItems().size(), 5);
    EXPECT_TRUE(manager.closeRenamer());
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    pane->selectFiles({PXFile::fileForPath(b)});
    ASSERT_TRUE(waitUntil([&] { return main->mainViewController()->selectedFiles().size() == 1; }));
    delegate.openRenameWindow(main->tabbedWindow());
    ASSERT_TRUE(manager.fileRenamer());
    ASSERT_EQ(manager.fileRenamer()->renamer().rootItems().size(), 1);
    EXPECT_EQ(manager.fileRenamer()->renamer().rootItems().first()->identifier(), b);
    manager.cancelRenamer();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);

    // And from the grid's context menu, on the same selection.
    std::unique_ptr<QMenu> menu(ThumbnailContextMenu::build(pane->actionHandler(), true, CommandRegistry::shared()));
    QAction *batchRename = menu->findChild<QAction *>(QStringLiteral("openRenameWindow"));
    ASSERT_TRUE(batchRename);
    ASSERT_TRUE(batchRename->isEnabled());
    batchRename->trigger();
    ASSERT_TRUE(manager.fileRenamer());
    ASSERT_EQ(manager.fileRenamer()->renamer().rootItems().size(), 1);
    EXPECT_EQ(manager.fileRenamer()->renamer().rootItems().first()->identifier(), b);
    manager.cancelRenamer();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    RenameManager::setShared(nullptr);
}
