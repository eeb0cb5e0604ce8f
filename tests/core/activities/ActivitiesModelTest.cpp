#include "core/activities/ActivitiesModel.h"
#include "core/activities/ActivityItem.h"

#include <QSignalSpy>

#include <gtest/gtest.h>

namespace {

using State = ActivityItem::State;

struct CountingWork : IndependentActivity
{
    int cancels = 0;
    void cancelWork() override { ++cancels; }
};

QStringList idsOf(const QList<ActivityItem *> &items)
{
    QStringList ids;
    for (const ActivityItem *item : items)
        ids << item->id();
    return ids;
}

} // namespace

TEST(ActivitiesModel, CancellingFollowsTheStateRules)
{
    ActivitiesModel model;
    model.setFinishedLinger(0);
    QSignalSpy allFinished(&model, &ActivitiesModel::allFinished);

    // An image rotation: its work stops and it finishes at once, its handler never asked.
    auto *rotation = new ActivityItem(QStringLiteral("rotation"), false);
    auto work = std::make_shared<CountingWork>();
    rotation->setIndependentActivity(work);
    int handlerCalls = 0;
    rotation->cancellationHandler = [&](ActivityItem *) {
        ++handlerCalls;
        return State::cleanup;
    };
    // A file operation that winds down first.
    auto *copy = new ActivityItem(QStringLiteral("copy"), false);
    copy->cancellationHandler = [&](ActivityItem *) {
        ++handlerCalls;
        return State::cleanup;
    };
    model.add(rotation);
    model.add(copy);
    QList<State> rotationStates;
    QObject::connect(rotation, &ActivityItem::stateChanged, [&](State state) { rotationStates << state; });

    rotation->cancel();
    EXPECT_EQ(work->cancels, 1);
    EXPECT_EQ(handlerCalls, 0);
    EXPECT_EQ(rotationStates, (QList<State>{State::cancelled, State::finished}));
    EXPECT_EQ(idsOf(model.activities()), QStringList{"copy"}); // a finished one leaves

    copy->cancel();
    EXPECT_EQ(handlerCalls, 1);
    EXPECT_EQ(copy->state(), State::cleanup);
    EXPECT_TRUE(model.hasUnfinishedActivities());
    // Not working any more: a second cancel changes nothing.
    copy->cancel();
    EXPECT_EQ(handlerCalls, 1);
    EXPECT_EQ(copy->state(), State::cleanup);
    EXPECT_EQ(allFinished.count(), 0);
    copy->setState(State::finished);
    EXPECT_EQ(allFinished.count(), 1);
    EXPECT_TRUE(model.activities().isEmpty());

    // Finished already: cancel does nothing at all.
    ActivityItem done(QStringLiteral("done"), false, State::finished);
    done.cancellationHandler = [&](ActivityItem *) {
        ++handlerCalls;
        return State::cleanup;
    };
    done.cancel();
    EXPECT_EQ(done.state(), State::finished);
    EXPECT_EQ(handlerCalls, 1);
}

TEST(ActivitiesModel, HiddenActivitiesLeaveTheVisibleListAndComeBackInPlace)
{
    ActivitiesModel model;
    QList<ActivityItem *> items;
    for (const char *id : {"a", "b", "c"}) {
        items << new ActivityItem(QString::fromLatin1(id), false);
        model.add(items.last());
    }
    auto *hidden = new ActivityItem(QStringLiteral("hidden"), true);
    model.add(hidden);
    EXPECT_EQ(idsOf(model.activities()), (QStringList{"a", "b", "c", "hidden"}));
    EXPECT_EQ(idsOf(model.visibleActivities()), (QStringList{"a", "b", "c"}));

    QSignalSpy visibleChanged(&model, &ActivitiesModel::visibleActivitiesChanged);
    items[1]->setHidden(true);
    EXPECT_EQ(idsOf(model.visibleActivities()), (QStringList{"a", "c"}));
    hidden->setHidden(false);
    items[1]->setHidden(false);
    EXPECT_EQ(idsOf(model.visibleActivities()), (QStringList{"a", "b", "c", "hidden"}));
    EXPECT_EQ(visibleChanged.count(), 3);

    // A finished activity stays listed for a moment, then leaves.
    model.setFinishedLinger(20);
    items[0]->setState(State::finished);
    EXPECT_EQ(model.activities().size(), 4);
    QSignalSpy listChanged(&model, &ActivitiesModel::activitiesChanged);
    ASSERT_TRUE(listChanged.wait(2000));
    EXPECT_EQ(idsOf(model.visibleActivities()), (QStringList{"b", "c", "hidden"}));
}
