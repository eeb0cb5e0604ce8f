#pragma once

#include <QHash>
#include <QWidget>

class ActivitiesModel;
class ActivityItem;
class QLabel;
class QVBoxLayout;

// The activities window: one row per visible activity, in the order they began, each with its
// title, progress bar, status line (done, total and the time left) and a cancel button.
class ActivitiesWindow : public QWidget
{
    Q_OBJECT
public:
    explicit ActivitiesWindow(ActivitiesModel *model, QWidget *parent = nullptr);

    // The row of `item`, null when it has none (tests press its cancel button).
    QWidget *rowFor(ActivityItem *item) const { return m_rows.value(item); }
    int rowCount() const { return int(m_rows.size()); }

private:
    void rebuild();

    ActivitiesModel *m_model;
    QVBoxLayout *m_rowsLayout;
    QLabel *m_emptyLabel;
    QHash<ActivityItem *, QWidget *> m_rows;
};
