#include "ui/activities/ActivitiesWindow.h"

#include "core/activities/ActivitiesModel.h"
#include "core/activities/ActivityItem.h"
#include "ui/common/CloseKeys.h"

#include <QCoreApplication>
#include <QIcon>
#include <QLabel>
#include <QPointer>
#include <QProgressBar>
#include <QScrollArea>
#include <QToolButton>
#include <QVBoxLayout>

namespace {

// 1000 steps: smooth enough for any bar width.
constexpr int progressSteps = 1000;

class ActivityRow : public QWidget
{
public:
    ActivityRow(ActivityItem *item, QWidget *parent)
        : QWidget(parent)
        , m_item(item)
        , m_title(new QLabel(this))
        , m_bar(new QProgressBar(this))
        , m_status(new QLabel(this))
        , m_cancel(new QToolButton(this))
    {
        setObjectName(QStringLiteral("activityRow"));
        m_title->setTextFormat(Qt::PlainText);
        m_status->setTextFormat(Qt::PlainText);
        QFont small = m_status->font();
        small.setPointSizeF(small.pointSizeF() * 0.9);
        m_status->setFont(small);
        m_bar->setTextVisible(false);
        m_cancel->setObjectName(QStringLiteral("cancelButton"));
        m_cancel->setIcon(QIcon::fromTheme(QStringLiteral("process-stop")));
        const QString cancel = QCoreApplication::translate("ActivitiesWindow", "Cancel");
        m_cancel->setText(cancel);
        m_cancel->setToolTip(cancel);
        m_cancel->setAutoRaise(true);
        auto *text = new QVBoxLayout;
        text->addWidget(m_title);
        text->addWidget(m_bar);
        text->addWidget(m_status);
        auto *layout = new QHBoxLayout(this);
        layout->addLayout(text, 1);
        layout->addWidget(m_cancel, 0, Qt::AlignVCenter);
        QPointer<ActivityItem> guarded(item);
        connect(m_cancel, &QToolButton::clicked, this, [guarded] {
            if (guarded)
                guarded->cancel();
        });
        connect(item, &ActivityItem::changed, this, &ActivityRow::refresh);
        refresh();
    }

private:
    void refresh()
    {
        if (!m_item)
            return;
        m_title->setText(m_item->title());
        m_status->setText(m_item->status());
        if (m_item->isIndeterminate() && m_item->state() == ActivityItem::State::working) {
            m_bar->setRange(0, 0);
        } else {
            m_bar->setRange(0, progressSteps);
            m_bar->setValue(int(m_item->progress() * progressSteps));
        }
        m_cancel->setEnabled(m_item->state() == ActivityItem::State::working);
    }

    QPointer<ActivityItem> m_item;
    QLabel *m_title;
    QProgressBar *m_bar;
    QLabel *m_status;
    QToolButton *m_cancel;
};

} // namespace

ActivitiesWindow::ActivitiesWindow(ActivitiesModel *model, QWidget *parent)
    : QWidget(parent, Qt::Window)
    , m_model(model)
    , m_rowsLayout(new QVBoxLayout)
    , m_emptyLabel(new QLabel(tr("No activities"), this))
{
    setObjectName(QStringLiteral("activitiesWindow"));
    setWindowTitle(tr("Activity"));
    CloseKeys::install(this, CloseKeys::Escape::closes);
    auto *content = new QWidget;
    auto *contentLayout = new QVBoxLayout(content);
    contentLayout->addLayout(m_rowsLayout);
    contentLayout->addStretch(1);
    auto *scroll = new QScrollArea(this);
    scroll->setWidgetResizable(true);
    scroll->setWidget(content);
    m_emptyLabel->setAlignment(Qt::AlignCenter);
    m_emptyLabel->setEnabled(false);
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_emptyLabel);
    layout->addWidget(scroll, 1);
    resize(420, 300);
    connect(model, &ActivitiesModel::visibleActivitiesChanged, this, &ActivitiesWindow::rebuild);
    rebuild();
}

void ActivitiesWindow::rebuild()
{
    const QList<ActivityItem *> &visible = m_model->visibleActivities();
    for (auto it = m_rows.begin(); it != m_rows.end();) {
        if (!visible.contains(it.key())) {
            delete it.value();
            it = m_rows.erase(it);
        } else {
            ++it;
        }
    }
    // Rows in the order of the list: a row shown again returns to its place.
    for (int i = 0; i < visible.size(); ++i) {
        QWidget *row = m_rows.value(visible[i]);
        if (!row) {
            row = new ActivityRow(visible[i], this);
            m_rows.insert(visible[i], row);
        }
        m_rowsLayout->removeWidget(row);
        m_rowsLayout->insertWidget(i, row);
    }
    m_emptyLabel->setVisible(visible.isEmpty());
}
