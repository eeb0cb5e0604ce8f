#pragma once

#include <QDialog>

class QDialogButtonBox;
class QLineEdit;
class QListWidget;

// "Other…" of the Open With menu: every installed application, by name, with a filter field.
// The list is read on a worker (the desktop's application database), shown when ready.
class ApplicationChooser : public QDialog
{
    Q_OBJECT
public:
    explicit ApplicationChooser(QWidget *parent = nullptr);

    // The chosen application's .desktop file; empty when cancelled.
    static QString choose(QWidget *parent, const QString &title);
    QString chosenDesktopFile() const;

private:
    void applyFilter(const QString &text);

    QLineEdit *m_filter;
    QListWidget *m_list;
    QDialogButtonBox *m_buttons;
};
