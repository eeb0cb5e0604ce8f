#include "core/activities/ActivityItem.h"

#include "core/activities/ActivitiesModel.h"

ActivityItem::ActivityItem(QString id, bool isHidden, State state, Style style, QObject *parent)
    : QObject(parent)
    , m_id(std::move(id))
    , m_isHidden(isHidden)
    , m_state(state)
    , m_style(style)
    , m_lastUpdate(QDateTime::currentDateTimeUtc())
{ }

ActivityItem::~ActivityItem() = default;

ActivitiesModel *ActivityItem::model() const
{
    return m_model.data();
}

void ActivityItem::setModel(ActivitiesModel *model)
{
    m_model = model;
}

void ActivityItem::touch()
{
    m_lastUpdate = QDateTime::currentDateTimeUtc();
    Q_EMIT changed();
}

void ActivityItem::setCurrentPath(const QString &path)
{
    if (path == m_currentPath)
        return;
    m_currentPath = path;
    Q_EMIT currentPathChanged();
    touch();
}

void ActivityItem::setIndeterminate(bool indeterminate)
{
    if (indeterminate == m_isIndeterminate)
        return;
    m_isIndeterminate = indeterminate;
    Q_EMIT isIndeterminateChanged();
    touch();
}

void ActivityItem::setProgress(double progress)
{
    if (progress == m_progress)
        return;
    m_progress = progress;
    Q_EMIT progressChanged();
    touch();
}

void ActivityItem::setStatus(const QString &status)
{
    if (status == m_status)
        return;
    m_status = status;
    Q_EMIT statusChanged();
    touch();
}

void ActivityItem::setTimeLeft(const QString &text)
{
    if (text == m_timeLeft)
        return;
    m_timeLeft = text;
    Q_EMIT timeLeftChanged();
    touch();
}

void ActivityItem::setTitle(const QString &title)
{
    if (title == m_title)
        return;
    m_title = title;
    Q_EMIT titleChanged();
    touch();
}

void ActivityItem::setHidden(bool hidden)
{
    if (hidden == m_isHidden)
        return;
    m_isHidden = hidden;
    Q_EMIT isHiddenChanged(hidden);
    touch();
}

void ActivityItem::setState(State state)
{
    if (state == m_state)
        return;
    m_state = state;
    Q_EMIT stateChanged(state);
    touch();
    if (state == State::finished && m_model)
        m_model->activityFinished(this);
}

void ActivityItem::cancel()
{
    if (m_state != State::working)
        return;
    setState(State::cancelled);
    if (m_independent) {
        m_independent->cancelWork();
        setState(State::finished);
    } else if (cancellationHandler) {
        setState(cancellationHandler(this));
    } else {
        setState(State::finished);
    }
}
