#include "ui/settings/ApplicationChooserDialog.h"

#include "core/app/Dispatch.h"

#include <QDialogButtonBox>
#include <QFileDialog>
#include <QFileInfo>
#include <QIcon>
#include <QLineEdit>
#include <QListWidget>
#include <QPointer>
#include <QPushButton>
#include <QVBoxLayout>

namespace {

// The applications offered are those that open photos or videos; "Other…" reaches the rest.
const QStringList &offeredTypes()
{
    static const QStringList types{
        QStringLiteral("image/jpeg"), QStringLiteral("image/png"),       QStringLiteral("image/tiff"),
        QStringLiteral("image/heif"), QStringLiteral("image/webp"),      QStringLiteral("image/x-dcraw"),
        QStringLiteral("video/mp4"),  QStringLiteral("video/quicktime"),
    };
    return types;
}

QIcon iconFor(const Applications::ApplicationInfo &application)
{
    const QIcon fallback = QIcon::fromTheme(QStringLiteral("application-x-executable"));
    if (application.icon.startsWith(QLatin1Char('/')))
        return QIcon(application.icon);
    return QIcon::fromTheme(application.icon, fallback);
}

} // namespace

ApplicationChooserDialog::ApplicationChooserDialog(QWidget *parent)
    : QDialog(parent)
    , m_search(new QLineEdit(this))
    , m_list(new QListWidget(this))
{
    setAttribute(Qt::WA_DeleteOnClose);
    setWindowModality(Qt::WindowModal);
    setWindowTitle(tr("Choose an Application"));
    setObjectName(QStringLiteral("applicationChooser"));
    setAccessibleName(windowTitle());
    m_search->setPlaceholderText(tr("Search"));
    m_search->setAccessibleName(tr("Search applications"));
    m_search->setClearButtonEnabled(true);
    m_list->setAccessibleName(tr("Applications"));
    m_list->setIconSize(QSize(24, 24));
    m_list->addItem(tr("Looking for applications…"));
    m_list->item(0)->setFlags(Qt::NoItemFlags);

    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
    QPushButton *other = buttons->addButton(tr("Other…"), QDialogButtonBox::ActionRole);
    other->setAccessibleName(tr("Choose another application file"));
    auto *layout = new QVBoxLayout(this);
    layout->addWidget(m_search);
    layout->addWidget(m_list, 1);
    layout->addWidget(buttons);
    resize(420, 480);

    connect(m_search, &QLineEdit::textChanged, this, &ApplicationChooserDialog::filter);
    connect(m_list, &QListWidget::itemDoubleClicked, this, &ApplicationChooserDialog::accept);
    connect(buttons, &QDialogButtonBox::accepted, this, &ApplicationChooserDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &ApplicationChooserDialog::reject);
    connect(other, &QPushButton::clicked, this, [this] {
        auto *files = new QFileDialog(this, tr("Choose an Application File"), QStringLiteral("/usr/share/applications"),
                                      tr("Applications (*.desktop)"));
        files->setAttribute(Qt::WA_DeleteOnClose);
        files->setFileMode(QFileDialog::ExistingFile);
        connect(files, &QFileDialog::fileSelected, this, [this](const QString &path) {
            Q_EMIT applicationChosen(QFileInfo(path).absoluteFilePath());
            QDialog::accept();
        });
        files->open();
    });

    // Reading every .desktop file takes a moment: on a pool, shown when ready.
    const QPointer<ApplicationChooserDialog> self(this);
    runOnPool(QStringLiteral("Applications"), [self] {
        const QList<Applications::ApplicationInfo> applications = Applications::installedApplications(offeredTypes());
        postToGui([self, applications] {
            if (self)
                self->showApplications(applications);
        });
    });
}

void ApplicationChooserDialog::choose(QWidget *parent, std::function<void(const QString &desktopFile)> chosen)
{
    auto *dialog = new ApplicationChooserDialog(parent);
    connect(dialog, &ApplicationChooserDialog::applicationChosen, dialog,
            [chosen](const QString &desktopFile) { chosen(desktopFile); });
    dialog->open();
}

void ApplicationChooserDialog::showApplications(const QList<Applications::ApplicationInfo> &applications)
{
    m_list->clear();
    for (const Applications::ApplicationInfo &application : applications) {
        auto *item = new QListWidgetItem(iconFor(application), application.name, m_list);
        item->setData(Qt::UserRole, application.desktopFile);
        item->setToolTip(application.desktopFile);
    }
    if (applications.isEmpty()) {
        m_list->addItem(tr("No applications for photos or videos were found. Use Other… to choose one."));
        m_list->item(0)->setFlags(Qt::NoItemFlags);
    }
    filter(m_search->text());
}

void ApplicationChooserDialog::filter(const QString &text)
{
    for (int i = 0; i < m_list->count(); ++i) {
        QListWidgetItem *item = m_list->item(i);
        item->setHidden(!text.isEmpty() && !item->text().contains(text.trimmed(), Qt::CaseInsensitive));
    }
}

void ApplicationChooserDialog::accept()
{
    const QListWidgetItem *item = m_list->currentItem();
    const QString file = item ? item->data(Qt::UserRole).toString() : QString();
    if (file.isEmpty())
        return;
    Q_EMIT applicationChosen(file);
    QDialog::accept();
}
