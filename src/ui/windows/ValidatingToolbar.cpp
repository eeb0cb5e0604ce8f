#include "ui/windows/ValidatingToolbar.h"

#include <QAction>
#include <QFrame>
#include <QHBoxLayout>
#include <QToolButton>

ValidatingToolbar::ValidatingToolbar(QWidget *parent)
    : QWidget(parent)
    , m_layout(new QHBoxLayout(this))
{
    m_layout->setContentsMargins(6, 3, 6, 3);
    m_layout->setSpacing(2);
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
}

void ValidatingToolbar::addButton(QAction *action)
{
    auto *button = new QToolButton(this);
    button->setDefaultAction(action);
    button->setAutoRaise(true);
    button->setIconSize(m_iconSize);
    button->setToolButtonStyle(action->icon().isNull() ? Qt::ToolButtonTextOnly : Qt::ToolButtonIconOnly);
    button->setFocusPolicy(Qt::TabFocus);
    m_layout->addWidget(button);
}

void ValidatingToolbar::addSeparator()
{
    auto *line = new QFrame(this);
    line->setFrameShape(QFrame::VLine);
    line->setFrameShadow(QFrame::Sunken);
    m_layout->addSpacing(4);
    m_layout->addWidget(line);
    m_layout->addSpacing(4);
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
