#pragma once

#include <QJsonObject>
#include <QTreeWidget>

class PXRenamePresets;

// The presets list: the groups "PRESETS" (saved presets, in their order, a changed one marked
// "altered") and "RECENT" (recent settings). Headers cannot be selected; saved presets can be
// renamed in place and reordered by dragging within their group. Delete removes the selected
// saved presets.
class RenamePresetsView : public QTreeWidget
{
    Q_OBJECT
public:
    explicit RenamePresetsView(PXRenamePresets *presets, QWidget *parent = nullptr);

    // Rebuilds both groups from the presets; selects `group`/`index` when given.
    void reload(const QString &selectGroup = {}, qsizetype selectIndex = -1);
    // Redraws the "altered" marks without touching the selection.
    void refreshMarks();
    // The group and index of an item; the index is -1 for a header.
    static QString groupOf(const QTreeWidgetItem *item);
    static qsizetype indexOf(const QTreeWidgetItem *item);
    QTreeWidgetItem *itemFor(const QString &group, qsizetype index) const;
    // Starts editing the name of a saved preset.
    void editName(qsizetype index);
    // Moves a saved preset within its group, as a drag does.
    void moveSavedPreset(qsizetype from, qsizetype to);

Q_SIGNALS:
    // The user chose a preset; the window decides (the unsaved-preset question) and may undo the
    // selection with `reload`.
    void presetChosen(const QString &group, qsizetype index);
    void removeRequested(const QList<qsizetype> &savedIndexes);
    // A saved preset moved from one index to another (the list is reloaded).
    void presetMoved(qsizetype from, qsizetype to);
    void presetRenamed(qsizetype index);

protected:
    void dropEvent(QDropEvent *event) override;
    void dragMoveEvent(QDragMoveEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;

private:
    PXRenamePresets *m_presets;
    QTreeWidgetItem *m_savedHeader = nullptr;
    QTreeWidgetItem *m_recentHeader = nullptr;
    bool m_reloading = false;
};
