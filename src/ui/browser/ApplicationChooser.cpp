#include "ui/browser/ApplicationChooser.h"

#include "core/app/Dispatch.h"
#include "core/fs/Applications.h"

#include <QDialogButtonBox>
#include <QFileInfo>
#include <QLineEdit>
#include <QListWidget>
#include <QPointer>
#include <QPushButton>
#include <QVBoxLayout>

namespace {

constexpr int desktopFileRole = Qt::UserRole;

} // namespace

ApplicationChooser::ApplicationChooser(QWidget *parent)
    : QDialog(parent)
    , m_filter(new QLineEdit(this))
    , m_list(new QListWidget(this))
    , m_buttons(new QDialogButtonBox(QDialogButtonBox::Open | QDialogButtonBox::Cancel, this))
{
    setObjectName(QStringLiteral("ApplicationChooser"));
    m_filter->setPlaceholderText(tr("Search"));
    m_filter->setClearButtonEnabled(true);
    m_list->setIconSize(QSize(24, 24));
    m_list->setObjectName(QStringLiteral("applications"));
    auto *layout = new QVBoxLayout(this);
    layout->addWidget(m_filter);
    layout->addWidget(m_list, 1);
    layout->addWidget(m_buttons);
    resize(420, 480);
    m_buttons->button(QDialogButtonBox::Open)->setEnabled(false);
    connect(m_buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(m_buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    connect(m_filter, &QLineEdit::textChanged, this, &ApplicationChooser::applyFilter);
    connect(m_list, &QListWidget::currentItemChanged, this, [this](QListWidgetItem *item) {
        m_buttons->button(QDialogButtonBox::Open)->setEnabled(item && !item->isHidden());
    });
    connect(m_list, &QListWidget::itemActivated, this, &QDialog::accept);

    m_list->addItem(tr("Loading…"));
    m_list->item(0)->setFlags(Qt::NoItemFlags);
    const QPointer<ApplicationChooser> self(this);
    runOnPool(QStringLiteral("Browser Disk Work"), [self] {
        QList<Applications::ApplicationInfo> applications = Applications::allApplications();
        postToGui([self, applications = std::move(applications)] {
            if (!self)
                return;
            self->m_list->clear();
            for (const Applications::ApplicationInfo &application : applications) {
                auto *item = new QListWidgetItem(application.name, self->m_list);
                item->setData(desktopFileRole, application.desktopFile);
                item->setToolTip(application.desktopFile);
                if (!application.icon.isEmpty())
                    item->setIcon(QFileInfo(application.icon).isAbsolute() ? QIcon(application.icon)
                                                                           : QIcon::fromTheme(application.icon));
            }
            self->applyFilter(self->m_filter->text());
        });
    });
}

QString ApplicationChooser::choose(QWidget *parent, const QString &title)
{
    ApplicationChooser chooser(parent);
    chooser.setWindowTitle(title);
    return chooser.exec() == QDialog::Accepted ? chooser.chosenDesktopFile() : QString();
}

QString ApplicationChooser::chosenDesktopFile() const
{
    const QListWidgetItem *item = m_list->currentItem();
    return item && !item->isHidden() ? item->data(desktopFileRole).toString() : QString();
}

void ApplicationChooser::applyFilter(const QString &text)
{
    for (int row = 0; row < m_list->count(); ++row) {
        QListWidgetItem *item = m_list->item(row);
        item->setHidden(!item->text().contains(text.trimmed(), Qt::CaseInsensitive));
    }
}
