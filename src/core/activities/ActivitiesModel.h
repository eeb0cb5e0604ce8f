#pragma once

#include <QList>
#include <QObject>

#include <functional>

class ActivityItem;

// The activities of the process in the order they began, and the visible ones among them (those
// not hidden, in the same order), which the activities window shows. The model owns its items. A
// finished activity stays listed for a moment, so that its row can be seen to end, then leaves.
// Use from the GUI thread.
class ActivitiesModel : public QObject
{
    Q_OBJECT
public:
    explicit ActivitiesModel(QObject *parent = nullptr);
    ~ActivitiesModel() override;

    const QList<ActivityItem *> &activities() const { return m_activities; }
    const QList<ActivityItem *> &visibleActivities() const { return m_visibleActivities; }
    // Working, cancelled or cleaning up: not yet finished.
    bool hasUnfinishedActivities() const;

    // Takes `item`; the handler hears of it.
    void add(ActivityItem *item);
    // Called with each activity added (the window opens itself for long ones).
    std::function<void(ActivityItem *)> newActivityHandler;
    // How long a finished activity stays listed; 0 removes it at once.
    void setFinishedLinger(int milliseconds) { m_finishedLingerMs = milliseconds; }

    // An item reached `finished` (called by the item).
    void activityFinished(ActivityItem *item);

Q_SIGNALS:
    void activitiesChanged();
    void visibleActivitiesChanged();
    // The last unfinished activity finished.
    void allFinished();

private:
    void updateVisibleActivities();
    void remove(ActivityItem *item);

    QList<ActivityItem *> m_activities;
    QList<ActivityItem *> m_visibleActivities;
    int m_finishedLingerMs;
};
