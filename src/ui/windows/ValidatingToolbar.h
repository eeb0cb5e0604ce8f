#pragma once

#include <QWidget>

class QAction;
class QHBoxLayout;
class QToolButton;

// The toolbar of a main window: a row of flat buttons for actions, separators and widgets. The
// actions carry their enabled and checked states (the toolbar builder validates them), and the
// buttons follow. A plain row rather than a dockable tool bar: it never moves, and it costs nothing to
// make before the window first shows. Its widgets can be put in another order, or hidden, at any
// time (arrange()).
class ValidatingToolbar : public QWidget
{
    Q_OBJECT
public:
    struct Entry
    {
        QWidget *widget;
        int stretch = 0;
    };

    explicit ValidatingToolbar(QWidget *parent = nullptr);

    // A button for `action`: its icon alone, or its text when it has no icon.
    QToolButton *addButton(QAction *action);
    void addWidget(QWidget *widget, int stretch = 0);
    // A vertical line between groups of items, for arrange() to place.
    QWidget *makeSeparator();
    // Shows `entries` in this order, with their stretch factors, and hides the other widgets.
    void arrange(const QList<Entry> &entries);
    QSize iconSize() const { return m_iconSize; }
    void setIconSize(const QSize &size) { m_iconSize = size; }

private:
    QHBoxLayout *m_layout;
    QSize m_iconSize{20, 20};
};
