#pragma once

#include "core/rename/PXRenameFilter.h"

#include <QWidget>

class QComboBox;
class QLabel;
class QVBoxLayout;

// The batch renamer's filter editor: "Rename files matching [all|any] of:" then rows of
// [property] [comparison] [value] with add and remove buttons. No rows: every file. Emits
// `filterChanged` on every edit.
class RenameFilterEditor : public QWidget
{
    Q_OBJECT
public:
    explicit RenameFilterEditor(QWidget *parent = nullptr);

    PXRenameFilter filter() const;
    void setFilter(const PXRenameFilter &filter);
    // A stored filter that could not be read: said in the editor until the filter changes.
    void setProblem(const QString &text);
    int rowCount() const;
    void addRow();

Q_SIGNALS:
    void filterChanged();

private:
    QWidget *makeRow(const PXRenameFilter::Row &row);
    void fillComparisons(QWidget *row, PXRenameFilter::Comparison chosen);
    void edited();

    QComboBox *m_allAny = nullptr;
    QVBoxLayout *m_rowsLayout = nullptr;
    QLabel *m_problem = nullptr;
    bool m_filling = false;
};
