#include "ui/browser/ApplicationChooser.h"

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

constexpr int desktopFileRole = Qt::UserRole;

QIcon iconFor(const Applications::ApplicationInfo &application)
{
    const QIcon fallback = QIcon::fromTheme(QStringLiteral("application-x-executable"));
    if (QFileInfo(application.icon).isAbsolute())
        return QIcon(application.icon);
    return application.icon.isEmpty() ? fallback : QIcon::fromTheme(application.icon, fallback);
}

} // namespace

ApplicationChooser::ApplicationChooser(const QStringList &mimeTypes, QWidget *parent)
    : QDialog(parent)
    , m_filtered(!mimeTypes.isEmpty())
    , m_filter(new QLineEdit(this))
    , m_list(new QListWidget(this))
    , m_buttons(new QDialogButtonBox(QDialogButtonBox::Open | QDialogButtonBox::Cancel, this))
{
    setObjectName(QStringLiteral("applicationChooser"));
    setWindowTitle(tr("Choose an Application"));
    m_filter->setPlaceholderText(tr("Search"));
    m_filter->setAccessibleName(tr("Search applications"));
    m_filter->setClearButtonEnabled(true);
    m_list->setObjectName(QStringLiteral("applications"));
    m_list->setAccessibleName(tr("Applications"));
    m_list->setIconSize(QSize(24, 24));
    QPushButton *other = m_buttons->addButton(tr("Other…"), QDialogButtonBox::ActionRole);
    other->setAccessibleName(tr("Choose another application file"));
    auto *layout = new QVBoxLayout(this);
    layout->addWidget(m_filter);
    layout->addWidget(m_list, 1);
    layout->addWidget(m_buttons);
    resize(420, 480);

    m_buttons->button(QDialogButtonBox::Open)->setEnabled(false);
    connect(m_buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(m_buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    connect(other, &QPushButton::clicked, this, &ApplicationChooser::chooseOtherFile);
    connect(m_filter, &QLineEdit::textChanged, this, &ApplicationChooser::applyFilter);
    connect(m_list, &QListWidget::currentItemChanged, this, [this](QListWidgetItem *item) {
        m_buttons->button(QDialogButtonBox::Open)
            ->setEnabled(item && !item->isHidden() && !item->data(desktopFileRole).toString().isEmpty());
    });
    connect(m_list, &QListWidget::itemActivated, this, [this] {
        if (!chosenDesktopFile().isEmpty())
            accept();
    });

    m_list->addItem(tr("Looking for applications…"));
    m_list->item(0)->setFlags(Qt::NoItemFlags);
    const QPointer<ApplicationChooser> self(this);
    runOnPool(QStringLiteral("Browser Disk Work"), [self, mimeTypes] {
        QList<Applications::ApplicationInfo> applications =
            mimeTypes.isEmpty() ? Applications::allApplications() : Applications::installedApplications(mimeTypes);
        postToGui([self, applications = std::move(applications)] {
            if (self)
                self->showApplications(applications);
        });
    });
}

QString ApplicationChooser::choose(QWidget *parent, const QString &title, const QStringList &mimeTypes)
{
    ApplicationChooser chooser(mimeTypes, parent);
    if (!title.isEmpty())
        chooser.setWindowTitle(title);
    chooser.setAccessibleName(chooser.windowTitle());
    return chooser.exec() == QDialog::Accepted ? chooser.chosenDesktopFile() : QString();
}

void ApplicationChooser::open(QWidget *parent, const QString &title, const QStringList &mimeTypes,
                              std::function<void(const QString &desktopFile)> chosen)
{
    auto *chooser = new ApplicationChooser(mimeTypes, parent);
    chooser->setAttribute(Qt::WA_DeleteOnClose);
    chooser->setWindowModality(Qt::WindowModal);
    if (!title.isEmpty())
        chooser->setWindowTitle(title);
    chooser->setAccessibleName(chooser->windowTitle());
    connect(chooser, &QDialog::accepted, chooser, [chooser, chosen = std::move(chosen)] {
        const QString file = chooser->chosenDesktopFile();
        if (!file.isEmpty())
            chosen(file);
    });
    chooser->QDialog::open();
}

QString ApplicationChooser::chosenDesktopFile() const
{
    if (!m_otherFile.isEmpty())
        return m_otherFile;
    const QListWidgetItem *item = m_list->currentItem();
    return item && !item->isHidden() ? item->data(desktopFileRole).toString() : QString();
}

void ApplicationChooser::openForPhotosAndVideos(QWidget *parent, std::function<void(const QString &desktopFile)> chosen)
{
    // The types this program shows; "Other…" reaches every other application.
    static const QStringList types{
        QStringLiteral("image/jpeg"), QStringLiteral("image/png"),       QStringLiteral("image/tiff"),
        QStringLiteral("image/heif"), QStringLiteral("image/webp"),      QStringLiteral("image/x-dcraw"),
        QStringLiteral("video/mp4"),  QStringLiteral("video/quicktime"),
    };
    open(parent, QString(), types, std::move(chosen));
}

void ApplicationChooser::showApplications(const QList<Applications::ApplicationInfo> &applications)
{
    m_list->clear();
    for (const Applications::ApplicationInfo &application : applications) {
        auto *item = new QListWidgetItem(iconFor(application), application.name, m_list);
        item->setData(desktopFileRole, application.desktopFile);
        item->setToolTip(application.desktopFile);
    }
    if (applications.isEmpty()) {
        m_list->addItem(m_filtered ? tr("No applications for photos or videos were found. Use Other… to choose one.")
                                   : tr("No applications were found. Use Other… to choose one."));
        m_list->item(0)->setFlags(Qt::NoItemFlags);
    }
    applyFilter(m_filter->text());
}

void ApplicationChooser::applyFilter(const QString &text)
{
    const QString wanted = text.trimmed();
    for (int row = 0; row < m_list->count(); ++row) {
        QListWidgetItem *item = m_list->item(row);
        const bool application = !item->data(desktopFileRole).toString().isEmpty();
        item->setHidden(application && !item->text().contains(wanted, Qt::CaseInsensitive));
    }
}

void ApplicationChooser::chooseOtherFile()
{
    const QString path =
        QFileDialog::getOpenFileName(this, tr("Choose an Application File"), QStringLiteral("/usr/share/applications"),
                                     tr("Applications (*.desktop)"));
    if (path.isEmpty())
        return;
    m_otherFile = QFileInfo(path).absoluteFilePath();
    accept();
}
