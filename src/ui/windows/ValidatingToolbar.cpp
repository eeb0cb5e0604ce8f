#include "ui/windows/ValidatingToolbar.h"

#include <QAction>
#include <QFrame>
#include <QHBoxLayout>
#include <QSet>
#include <QToolButton>

ValidatingToolbar::ValidatingToolbar(QWidget *parent)
    : QWidget(parent)
    , m_layout(new QHBoxLayout(this))
{
    m_layout->setContentsMargins(6, 3, 6, 3);
    m_layout->setSpacing(2);
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
}

QToolButton *ValidatingToolbar::addButton(QAction *action)
{
    auto *button = new QToolButton(this);
    button->setDefaultAction(action);
    button->setAutoRaise(true);
    button->setIconSize(m_iconSize);
    button->setToolButtonStyle(action->icon().isNull() ? Qt::ToolButtonTextOnly : Qt::ToolButtonIconOnly);
    button->setFocusPolicy(Qt::TabFocus);
    m_layout->addWidget(button);
    return button;
}

QWidget *ValidatingToolbar::makeSeparator()
{
    auto *line = new QFrame(this);
    line->setFrameShape(QFrame::VLine);
    line->setFrameShadow(QFrame::Sunken);
    // The line is drawn in the middle, with room on both sides.
    line->setFixedWidth(9);
    line->hide();
    return line;
}

void ValidatingToolbar::arrange(const QList<Entry> &entries)
{
    while (QLayoutItem *item = m_layout->takeAt(0))
        delete item; // the layout's record of a widget, not the widget
    QSet<QWidget *> placed;
    for (const Entry &entry : entries) {
        m_layout->addWidget(entry.widget, entry.stretch);
        placed.insert(entry.widget);
    }
    const QList<QWidget *> children = findChildren<QWidget *>(QString(), Qt::FindDirectChildrenOnly);
    for (QWidget *child : children) {
        if (!child->isWindow()) // a menu opened from the toolbar is none of its items
            child->setVisible(placed.contains(child));
    }
}

void ValidatingToolbar::addWidget(QWidget *widget, int stretch)
{
    widget->setParent(this);
    if (auto *button = qobject_cast<QToolButton *>(widget)) {
        button->setAutoRaise(true);
        button->setIconSize(m_iconSize);
    }
    m_layout->addWidget(widget, stretch);
}
