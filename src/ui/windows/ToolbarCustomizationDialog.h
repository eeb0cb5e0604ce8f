#pragma once

#include <QDialog>
#include <QStringList>

class QListWidget;
class QPushButton;

// The sheet in which the user chooses a main window's toolbar items: every item in one list, the
// toolbar's own first and ticked, in their order, then the others unticked. Ticking shows an item,
// dragging a row moves it; separators and spaces can be added as often as wanted, and unticking
// one removes it. "Use Default" puts back the default toolbar. OK needs at least one ticked item.
class ToolbarCustomizationDialog : public QDialog
{
    Q_OBJECT
public:
    ToolbarCustomizationDialog(const QStringList &items, QWidget *parent = nullptr);

    // The ticked items, in their order.
    QStringList items() const;
    QListWidget *list() const { return m_list; }

    void useDefault();
    // Appends a separator or a space, ticked.
    void addSpacer(const QString &identifier);

private:
    void fill(const QStringList &items);
    void appendRow(const QString &identifier, bool ticked);
    void updateAcceptButton();

    QListWidget *m_list;
    QPushButton *m_acceptButton = nullptr;
};
