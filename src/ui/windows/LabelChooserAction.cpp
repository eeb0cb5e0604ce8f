#include "ui/windows/LabelChooserAction.h"

#include "core/model/ColorLabels.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QMenu>
#include <QPainter>
#include <QPointer>
#include <QToolButton>

namespace {

constexpr int swatchSide = 16; // a colour dot as large as a menu icon

QIcon swatch(int value, const QPalette &palette)
{
    QPixmap pixmap(swatchSide * 2, swatchSide * 2); // drawn at twice the size for sharp edges
    pixmap.fill(Qt::transparent);
    pixmap.setDevicePixelRatio(2);
    QPainter painter(&pixmap);
    painter.setRenderHint(QPainter::Antialiasing, true);
    const QRectF dot(1.5, 1.5, swatchSide - 3, swatchSide - 3);
    if (const ColorLabels::Label *label = ColorLabels::labelForValue(value)) {
        painter.setPen(QPen(label->colour.darker(130), 1));
        painter.setBrush(label->colour);
        painter.drawEllipse(dot);
    } else {
        // No label: an empty ring crossed out.
        painter.setPen(QPen(palette.color(QPalette::WindowText), 1.2));
        painter.setBrush(Qt::NoBrush);
        painter.drawEllipse(dot);
        painter.drawLine(QPointF(dot.left() + 3, dot.bottom() - 3), QPointF(dot.right() - 3, dot.top() + 3));
    }
    return QIcon(pixmap);
}

} // namespace

LabelChooserAction::LabelChooserAction(const QString &title, const QList<QAction *> &valueActions, QObject *parent)
    : QWidgetAction(parent)
    , m_title(title)
    , m_valueActions(valueActions)
{
    setText(title);
}

QWidget *LabelChooserAction::createWidget(QWidget *parent)
{
    auto *row = new QWidget(parent);
    auto *layout = new QHBoxLayout(row);
    layout->setContentsMargins(8, 2, 8, 2);
    layout->setSpacing(2);
    layout->addWidget(new QLabel(m_title, row));
    layout->addSpacing(6);
    for (int value = 0; value < m_valueActions.size(); ++value) {
        QAction *action = m_valueActions[value];
        auto *button = new QToolButton(row);
        button->setObjectName(QStringLiteral("labelSwatch%1").arg(value));
        button->setAutoRaise(true);
        button->setIcon(swatch(value, row->palette()));
        button->setIconSize(QSize(swatchSide, swatchSide));
        button->setToolTip(action->text());
        const QPointer<QAction> target(action);
        connect(button, &QToolButton::clicked, row, [row, target] {
            // Closes the menus first, as a menu item does, then runs the command.
            for (QWidget *widget = row->parentWidget(); widget; widget = widget->parentWidget()) {
                if (auto *menu = qobject_cast<QMenu *>(widget))
                    menu->hide();
            }
            if (target)
                target->trigger();
        });
        layout->addWidget(button);
    }
    layout->addStretch(1);
    // The row follows the commands' state, validated like any item.
    const auto follow = [this, row] {
        row->setEnabled(!m_valueActions.isEmpty() && m_valueActions.first()->isEnabled());
    };
    follow();
    if (!m_valueActions.isEmpty())
        connect(m_valueActions.first(), &QAction::changed, row, follow);
    return row;
}
