#pragma once

#include <QList>
#include <QWidgetAction>

class QAction;

// The "Label:" item of the File menu and the pane's context menu: its title and a row of colour
// swatches (no label, then Red ... Gray). A swatch triggers the item's action for that label,
// `valueActions[i]` standing for the label of sort value i (0: none), so that the commands stay
// ordinary menu actions, validated and run like any other; the row is enabled while they are.
class LabelChooserAction : public QWidgetAction
{
    Q_OBJECT
public:
    LabelChooserAction(const QString &title, const QList<QAction *> &valueActions, QObject *parent);

    const QList<QAction *> &valueActions() const { return m_valueActions; }

protected:
    QWidget *createWidget(QWidget *parent) override;

private:
    QString m_title;
    QList<QAction *> m_valueActions;
};
