#include "ui/sidebar/PathBar.h"

#include "core/model/PXFile.h"
#include "ui/common/ThemeIcons.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QMenu>
#include <QToolButton>

PathBar::PathBar(QWidget *parent)
    : QWidget(parent)
    , m_layout(new QHBoxLayout(this))
{
    m_layout->setContentsMargins(4, 1, 4, 1);
    m_layout->setSpacing(0);
    setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Fixed);
}

QList<PXFilePtr> PathBar::chain() const
{
    QList<PXFilePtr> folders;
    for (ZQFilePtr folder = m_folder; folder; folder = folder->parentItem())
        folders.prepend(PXFile::from(folder));
    return folders;
}

void PathBar::setFolder(const PXFilePtr &folder)
{
    if (folder == m_folder)
        return;
    m_folder = folder;
    rebuild();
}

void PathBar::resizeEvent(QResizeEvent *event)
{
    QWidget::resizeEvent(event);
    rebuild();
}

// Buttons are made for the whole chain, then the first ones are folded into the "…" menu until
// the rest fits.
void PathBar::rebuild()
{
    // Later, not now: rebuilding may run inside a button's own click.
    while (QLayoutItem *item = m_layout->takeAt(0)) {
        if (QWidget *widget = item->widget()) {
            widget->hide();
            widget->deleteLater();
        }
        delete item;
    }
    const QList<PXFilePtr> folders = chain();
    const QIcon &folderIcon = ThemeIcons::folder();
    QList<QWidget *> parts;
    int width = 0;
    for (int i = 0; i < folders.size(); ++i) {
        const PXFilePtr folder = folders[i];
        auto *button = new QToolButton(this);
        button->setAutoRaise(true);
        button->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
        button->setText(folder->displayName().isEmpty() ? QStringLiteral("/") : folder->displayName());
        button->setIcon(folderIcon);
        button->setToolTip(folder->path());
        button->setFocusPolicy(Qt::TabFocus);
        if (i == folders.size() - 1) {
            QFont font = button->font();
            font.setBold(true);
            button->setFont(font);
        }
        connect(button, &QToolButton::clicked, this, [this, folder] { Q_EMIT folderChosen(folder); });
        parts.append(button);
        width += button->sizeHint().width() + 12;
    }
    int folded = 0;
    while (width > this->width() && folded < parts.size() - 1) {
        width -= parts[folded]->sizeHint().width() + 12;
        ++folded;
    }
    if (folded > 0) {
        auto *more = new QToolButton(this);
        more->setAutoRaise(true);
        more->setText(QStringLiteral("…"));
        more->setPopupMode(QToolButton::InstantPopup);
        auto *menu = new QMenu(more);
        for (int i = folded - 1; i >= 0; --i) {
            const PXFilePtr folder = folders[i];
            menu->addAction(folderIcon, folder->displayName().isEmpty() ? QStringLiteral("/") : folder->displayName(),
                            this, [this, folder] { Q_EMIT folderChosen(folder); });
        }
        more->setMenu(menu);
        m_layout->addWidget(more);
    }
    for (int i = 0; i < parts.size(); ++i) {
        if (i < folded) {
            parts[i]->deleteLater();
            continue;
        }
        if (i > folded || folded > 0) {
            auto *separator = new QLabel(QStringLiteral("›"), this);
            separator->setEnabled(false);
            m_layout->addWidget(separator);
        }
        m_layout->addWidget(parts[i]);
    }
    m_layout->addStretch(1);
}
