#include "core/activities/ActivitiesModel.h"

#include "core/activities/ActivityItem.h"

#include <QPointer>
#include <QTimer>

namespace {
// 1.5 s: long enough to see a row reach its end, short enough that the list stays current.
constexpr int defaultFinishedLingerMs = 1500;
} // namespace

ActivitiesModel::ActivitiesModel(QObject *parent)
    : QObject(parent)
    , m_finishedLingerMs(defaultFinishedLingerMs)
{ }

ActivitiesModel::~ActivitiesModel()
{
    for (ActivityItem *item : std::as_const(m_activities)) {
        item->disconnect(this);
        item->setModel(nullptr);
        delete item;
    }
}

bool ActivitiesModel::hasUnfinishedActivities() const
{
    for (const ActivityItem *item : m_activities) {
        if (item->state() != ActivityItem::State::finished)
            return true;
    }
    return false;
}

void ActivitiesModel::add(ActivityItem *item)
{
    item->setParent(this);
    item->setModel(this);
    m_activities.append(item);
    // The visible list follows every later change of an item's hiding.
    connect(item, &ActivityItem::isHiddenChanged, this, &ActivitiesModel::updateVisibleActivities);
    Q_EMIT activitiesChanged();
    updateVisibleActivities();
    if (newActivityHandler)
        newActivityHandler(item);
}

void ActivitiesModel::updateVisibleActivities()
{
    QList<ActivityItem *> visible;
    for (ActivityItem *item : std::as_const(m_activities)) {
        if (!item->isHidden())
            visible.append(item);
    }
    if (visible == m_visibleActivities)
        return;
    m_visibleActivities = visible;
    Q_EMIT visibleActivitiesChanged();
}

void ActivitiesModel::activityFinished(ActivityItem *item)
{
    if (!m_activities.contains(item))
        return;
    if (!hasUnfinishedActivities())
        Q_EMIT allFinished();
    if (m_finishedLingerMs <= 0) {
        remove(item);
        return;
    }
    QPointer<ActivityItem> finished(item);
    QTimer::singleShot(m_finishedLingerMs, this, [this, finished] {
        if (finished)
            remove(finished);
    });
}

void ActivitiesModel::remove(ActivityItem *item)
{
    if (!m_activities.removeOne(item))
        return;
    item->disconnect(this);
    item->setModel(nullptr);
    Q_EMIT activitiesChanged();
    updateVisibleActivities();
    item->deleteLater();
}
