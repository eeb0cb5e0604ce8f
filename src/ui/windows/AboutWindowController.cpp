#include "ui/windows/AboutWindowController.h"

#include "core/app/Dispatch.h"
#include "core/shell/BuildConfiguration.h"
#include "core/shell/LibraryVersions.h"
#include "ui/common/CloseKeys.h"
#include "ui/windows/WindowManager.h"

#include <QApplication>
#include <QCloseEvent>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QIcon>
#include <QLabel>
#include <QPointer>
#include <QPushButton>
#include <QTreeWidget>
#include <QVBoxLayout>

namespace {

QIcon applicationIcon()
{
    const QIcon icon = QApplication::windowIcon();
    return icon.isNull() ? QIcon(QStringLiteral(":/pixcove/pixcove.svg")) : icon;
}

// The libraries, in the order they are listed, before their versions are known.
const char *const libraryNames[] = {"Qt", "Exiv2", "libjpeg-turbo", "libheif", "LibRaw", "FFmpeg"};

} // namespace

AboutWindowController::AboutWindowController(QWidget *parent)
    : QWidget(parent, Qt::Window)
{
    setAttribute(Qt::WA_DeleteOnClose);
    setObjectName(QStringLiteral("AboutWindow"));
    setWindowTitle(tr("About Pixcove"));
    setAccessibleName(windowTitle());
    CloseKeys::install(this, CloseKeys::Escape::closes);

    auto *icon = new QLabel(this);
    icon->setPixmap(applicationIcon().pixmap(96, 96));
    icon->setAccessibleName(tr("Pixcove icon"));
    icon->setAlignment(Qt::AlignCenter);
    auto *name = new QLabel(QApplication::applicationDisplayName(), this);
    QFont nameFont = name->font();
    nameFont.setBold(true);
    nameFont.setPointSizeF(nameFont.pointSizeF() * 1.8);
    name->setFont(nameFont);
    name->setAlignment(Qt::AlignCenter);
    auto *version =
        new QLabel(tr("Version %1 (build %2)").arg(BuildConfiguration::version(), BuildConfiguration::buildNumber()),
                   this);
    version->setAlignment(Qt::AlignCenter);
    version->setTextInteractionFlags(Qt::TextSelectableByMouse);
    version->setObjectName(QStringLiteral("version"));
    auto *summary = new QLabel(tr("A fast browser for folders of images and videos."), this);
    summary->setAlignment(Qt::AlignCenter);
    summary->setWordWrap(true);

    m_libraries = new QTreeWidget(this);
    m_libraries->setAccessibleName(tr("Libraries"));
    m_libraries->setColumnCount(2);
    m_libraries->setHeaderLabels({tr("Library"), tr("Version")});
    m_libraries->setRootIsDecorated(false);
    m_libraries->setSelectionMode(QAbstractItemView::NoSelection);
    m_libraries->setFocusPolicy(Qt::NoFocus);
    m_libraries->header()->setSectionResizeMode(0, QHeaderView::ResizeToContents);
    m_libraries->header()->setStretchLastSection(true);
    for (const char *library : libraryNames)
        new QTreeWidgetItem(m_libraries, {QLatin1String(library), QStringLiteral("…")});
    m_libraries->setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    m_libraries->setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
    fitLibrariesHeight();

    auto *website = new QPushButton(tr("Pixcove Website"), this);
    website->setAccessibleName(website->text());
    auto *releaseNotes = new QPushButton(tr("Release Notes"), this);
    releaseNotes->setAccessibleName(releaseNotes->text());
    connect(website, &QPushButton::clicked, this, &AboutWindowController::websiteRequested);
    connect(releaseNotes, &QPushButton::clicked, this, &AboutWindowController::releaseNotesRequested);
    auto *links = new QHBoxLayout;
    links->addStretch();
    links->addWidget(website);
    links->addWidget(releaseNotes);
    links->addStretch();

    auto *layout = new QVBoxLayout(this);
    layout->addWidget(icon);
    layout->addWidget(name);
    layout->addWidget(version);
    layout->addWidget(summary);
    layout->addSpacing(8);
    layout->addWidget(m_libraries);
    layout->addLayout(links);
    layout->setSizeConstraint(QLayout::SetFixedSize);

    const QPointer<AboutWindowController> self(this);
    runOnPool(QStringLiteral("About"), [self] {
        QList<LibraryVersion> versions = libraryVersions();
        postToGui([self, versions = std::move(versions)] {
            if (!self)
                return;
            self->m_libraries->clear();
            for (const LibraryVersion &library : versions)
                new QTreeWidgetItem(self->m_libraries, {library.name, library.version});
            self->fitLibrariesHeight();
            self->m_librariesLoaded = true;
            Q_EMIT self->librariesShown();
        });
    });
}

AboutWindowController::~AboutWindowController() = default;

// Exactly as tall as its header and rows: a short list needs no scroll bar and no blank space.
void AboutWindowController::fitLibrariesHeight()
{
    int height = m_libraries->header()->sizeHint().height() + 2 * m_libraries->frameWidth();
    for (int row = 0; row < m_libraries->topLevelItemCount(); ++row)
        height += m_libraries->sizeHintForRow(row);
    m_libraries->setFixedHeight(height);
    m_libraries->setMinimumWidth(320);
}

QStringList AboutWindowController::libraryLines() const
{
    QStringList lines;
    for (int row = 0; row < m_libraries->topLevelItemCount(); ++row) {
        const QTreeWidgetItem *item = m_libraries->topLevelItem(row);
        lines.append(item->text(0) + QLatin1Char(' ') + item->text(1));
    }
    return lines;
}

void AboutWindowController::closeEvent(QCloseEvent *event)
{
    if (m_delegate)
        m_delegate->windowControllerWillClose(this);
    event->accept();
}
