#pragma once

#include <QWidget>

class QAction;
class QHBoxLayout;

// The toolbar of a main window: a row of flat buttons for actions, separators and widgets. The
// actions carry their enabled and checked states (the toolbar builder validates them), and the
// buttons follow. A plain row rather than a dockable tool bar: it never moves, and it costs nothing to
// make before the window first shows.
class ValidatingToolbar : public QWidget
{
    Q_OBJECT
public:
    explicit ValidatingToolbar(QWidget *parent = nullptr);

    // A button for `action`: its icon alone, or its text when it has no icon.
    void addButton(QAction *action);
    void addSeparator();
    void addWidget(QWidget *widget, int stretch = 0);
    void setIconSize(const QSize &size) { m_iconSize = size; }

private:
    QHBoxLayout *m_layout;
    QSize m_iconSize{20, 20};
};
