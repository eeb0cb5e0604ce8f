#pragma once

#include <QPointer>
#include <QWidget>

class HotkeysController;
class KeyRecorder;
class QLabel;
class QLineEdit;
class QPushButton;
class QSortFilterProxyModel;
class QStandardItem;
class QStandardItemModel;
class QTreeView;

// The Hotkeys section of the settings window: every bindable command, grouped as in the menus,
// with its keys as the keyboard shows them. A search field filters by command title, group or
// key; "Add Key…" records a combination for the selected command, "Clear" leaves it without keys,
// "Reset" brings back its default keys and "Reset All" those of every command. A key used by
// two commands marks both rows and names the other command under the list.
class HotkeysView : public QWidget
{
    Q_OBJECT
public:
    explicit HotkeysView(HotkeysController *controller, QWidget *parent = nullptr);

    // For tests and the window: select a row by identifier; false when it is not shown.
    bool selectCommand(const QString &identifier);
    QString selectedCommand() const;
    void setSearchText(const QString &text);
    // The rows the search leaves, by identifier, in the order shown.
    QStringList shownCommands() const;
    // Whether the row is marked as sharing a key with another.
    bool isMarkedAsConflict(const QString &identifier) const;
    KeyRecorder *recorder() const { return m_recorder; }

    void recordKey();
    void clearKeys();
    void resetSelected();
    void resetAll();

private:
    void rebuild();
    void refreshRows();
    void updateDetails();
    void keyRecorded(const QKeySequence &key);
    QStandardItem *itemFor(const QString &identifier) const;

    QPointer<HotkeysController> m_controller;
    QLineEdit *m_search;
    QTreeView *m_tree;
    QStandardItemModel *m_model;
    QSortFilterProxyModel *m_filter;
    KeyRecorder *m_recorder;
    QLabel *m_details;
    QPushButton *m_add;
    QPushButton *m_clear;
    QPushButton *m_reset;
    QPushButton *m_resetAll;
};
