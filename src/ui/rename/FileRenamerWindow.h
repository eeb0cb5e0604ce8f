#pragma once

#include "core/model/PXFileForward.h"
#include "core/rename/PXFileRenamerQuestions.h"

#include <QJsonObject>
#include <QWidget>

#include <memory>

class PXFileRenamer;
class PXRenamePresets;
class QComboBox;
class QDialog;
class QLabel;
class QProgressBar;
class QPushButton;
class QScrollArea;
class QSettings;
class QSplitter;
class QTreeView;
class RenameFilesModel;
class RenameFilterEditor;
class RenamePresetsView;
class RenameRuleEditor;
class ZQFileController;

// The batch renamer's window: presets and recent settings on the left; on the right the rule
// editor, the filter editor, the options (depth, sort, list type, numbering) and the files list
// with every file's proposed name, live. Built on PXFileRenamer, which owns the files, the rules
// and the rename; this window turns its state into widgets and the user's edits into calls.
//
// Edits reach the renamer through its 0.2 s coalescing timer and are computed on a worker, so
// typing stays fluid with thousands of files listed. The window refuses to close while a folder
// is scanned or files are renamed, and asks before an altered preset's changes are lost. Its
// frame and split positions are remembered.
class FileRenamerWindow : public QWidget, public PXFileRenamerQuestions
{
    Q_OBJECT
public:
    // `settings` and `fileController` are not owned; without them, the application's.
    explicit FileRenamerWindow(QSettings *settings = nullptr, ZQFileController *fileController = nullptr,
                               QWidget *parent = nullptr);
    ~FileRenamerWindow() override;

    PXFileRenamer &renamer() { return *m_renamer; }
    PXRenamePresets &presets() { return *m_presets; }
    RenameRuleEditor *ruleEditor() const { return m_ruleEditor; }
    RenameFilterEditor *filterEditor() const { return m_filterEditor; }
    RenamePresetsView *presetsView() const { return m_presetsView; }
    QTreeView *filesView() const { return m_filesView; }
    RenameFilesModel *filesModel() const { return m_filesModel; }
    QPushButton *renameButton() const { return m_renameButton; }
    QComboBox *depthMenu() const { return m_depthMenu; }
    QComboBox *sortMenu() const { return m_sortMenu; }
    QComboBox *listTypeMenu() const { return m_listTypeMenu; }
    QComboBox *numberingMenu() const { return m_numberingMenu; }

    void addFilesToRename(const QList<PXFilePtr> &files);
    // The files list's selection leaves the batch (the Delete key, the remove button).
    void removeSelectedFiles();
    // Starts the rename of every changed file; refused while names collide.
    void rename();
    void cancel();

    // Opens the help sheets (also from the editor's help buttons).
    void showDateFormatSheet();
    void showRangeFormatSheet();
    void showRenameHelpSheet();

    // Tests answer the window's questions without a modal dialog.
    void setQuestionsOverride(PXFileRenamerQuestions *questions) { m_questionsOverride = questions; }

    // PXFileRenamerQuestions: alerts and sheets of the window.
    ZQFileOperationResolution queryUserWithError(const ZQFileOperationError &error, bool *applyToAll) override;
    void showRenameError(const QString &message, const QString &informativeText) override;
    PXUnsavedPresetAnswer askToSaveChangesToPreset(const QJsonObject &preset) override;

Q_SIGNALS:
    // The window closed; its owner drops it.
    void renameFilesEnded(FileRenamerWindow *window);

protected:
    void closeEvent(QCloseEvent *event) override;
    void dragEnterEvent(QDragEnterEvent *event) override;
    void dragMoveEvent(QDragMoveEvent *event) override;
    void dropEvent(QDropEvent *event) override;
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void buildWindow();
    void wireRenamer();
    void fitEditors(int room = 0);
    void fitEditorsLater();
    void restoreFrame();
    void saveFrame();
    void rulesEdited();
    void filterEdited();
    void optionsChosen();
    void showRenamerState();
    QList<QModelIndex> shownRows() const;
    void showArrangement();
    void renamerUpdated();
    void presetChosen(const QString &group, qsizetype index);
    void showRenamerSettings();
    QDialog *sheet(const QString &title, const QString &html);

    std::unique_ptr<QSettings> m_ownSettings;
    QSettings *m_settings = nullptr;
    std::unique_ptr<PXRenamePresets> m_presets;
    std::unique_ptr<PXFileRenamer> m_renamer;
    PXFileRenamerQuestions *m_questionsOverride = nullptr;
    bool m_closing = false;
    bool m_showingState = false;
    bool m_rowsStale = false; // the batch was rearranged since the rows were built

    QSplitter *m_presetsSplit = nullptr;
    QSplitter *m_filesSplit = nullptr;
    QScrollArea *m_editorsScroll = nullptr;
    RenamePresetsView *m_presetsView = nullptr;
    RenameRuleEditor *m_ruleEditor = nullptr;
    RenameFilterEditor *m_filterEditor = nullptr;
    QTreeView *m_filesView = nullptr;
    RenameFilesModel *m_filesModel = nullptr;
    QComboBox *m_depthMenu = nullptr;
    QComboBox *m_sortMenu = nullptr;
    QComboBox *m_listTypeMenu = nullptr;
    QComboBox *m_numberingMenu = nullptr;
    QLabel *m_statusLabel = nullptr;
    QProgressBar *m_progress = nullptr;
    QPushButton *m_cancelButton = nullptr;
    QPushButton *m_renameButton = nullptr;
};
