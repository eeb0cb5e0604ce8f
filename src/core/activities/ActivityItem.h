#pragma once

#include <QDateTime>
#include <QObject>
#include <QPointer>
#include <QString>

#include <functional>
#include <memory>

class ActivitiesModel;

// Work the program runs itself rather than as a file operation (turning images): the activity's
// row cancels it through this.
class IndependentActivity
{
public:
    virtual ~IndependentActivity() = default;
    // Stops the work item; what is half done is undone or left whole, never half-written.
    virtual void cancelWork() = 0;
};

// One row of the activities window: a long-running file operation or image rotation, with its
// title, status line, progress and a way to cancel it. Fields change on the GUI thread only, each
// with its own signal, and `changed()` after any of them.
//
// A new activity is `working`. It ends `finished`, either when its work ends or when the user
// cancels it: `cancelled`, then what the cancellation handler answers (`cleanup` while the work
// winds down, or `finished`). On reaching `finished` it tells its model.
class ActivityItem : public QObject
{
    Q_OBJECT
public:
    enum class Style { fileActivity };
    enum class State { working = 0, cancelled = 1, cleanup = 2, finished = 3 };
    Q_ENUM(State)

    ActivityItem(QString id, bool isHidden, State state = State::working, Style style = Style::fileActivity,
                 QObject *parent = nullptr);
    ~ActivityItem() override;

    const QString &id() const { return m_id; }
    ActivitiesModel *model() const;
    void setModel(ActivitiesModel *model);

    const QString &currentPath() const { return m_currentPath; }
    void setCurrentPath(const QString &path);
    bool isIndeterminate() const { return m_isIndeterminate; }
    void setIndeterminate(bool indeterminate);
    // 0 to 1.
    double progress() const { return m_progress; }
    void setProgress(double progress);
    const QString &status() const { return m_status; }
    void setStatus(const QString &status);
    // What is left to wait, "About 2 minutes left"; empty while unknown.
    const QString &timeLeft() const { return m_timeLeft; }
    void setTimeLeft(const QString &text);
    const QString &title() const { return m_title; }
    void setTitle(const QString &title);
    bool isHidden() const { return m_isHidden; }
    void setHidden(bool hidden);
    State state() const { return m_state; }
    void setState(State state);
    Style style() const { return m_style; }
    const QDateTime &lastUpdate() const { return m_lastUpdate; }

    // Asked when the user cancels an activity that runs as a file operation.
    std::function<State(ActivityItem *)> cancellationHandler;
    // The work an image rotation runs; cancelled directly, without the handler.
    void setIndependentActivity(std::shared_ptr<IndependentActivity> activity) { m_independent = std::move(activity); }
    IndependentActivity *independentActivity() const { return m_independent.get(); }

    // The row's cancel button: only a working activity can be cancelled.
    void cancel();

Q_SIGNALS:
    void currentPathChanged();
    void isIndeterminateChanged();
    void progressChanged();
    void statusChanged();
    void timeLeftChanged();
    void titleChanged();
    void isHiddenChanged(bool hidden);
    void stateChanged(ActivityItem::State state);
    void changed();

private:
    void touch();

    QString m_id;
    QPointer<ActivitiesModel> m_model;
    QString m_currentPath;
    bool m_isIndeterminate = false;
    double m_progress = 0;
    QString m_status;
    QString m_timeLeft;
    QString m_title;
    bool m_isHidden;
    State m_state;
    Style m_style;
    QDateTime m_lastUpdate;
    std::shared_ptr<IndependentActivity> m_independent;
};
