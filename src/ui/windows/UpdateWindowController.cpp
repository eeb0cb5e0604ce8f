#include "ui/windows/UpdateWindowController.h"

#include "ui/common/CloseKeys.h"

#include <QApplication>
#include <QDesktopServices>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QTextBrowser>
#include <QVBoxLayout>

UpdateWindowController::UpdateWindowController(const AppcastItem &item, const QString &currentVersion, QWidget *parent)
    : QWidget(parent, Qt::Window)
    , m_currentVersion(currentVersion)
{
    setAttribute(Qt::WA_DeleteOnClose);
    setObjectName(QStringLiteral("UpdateWindow"));
    setWindowTitle(tr("Software Update"));
    setAccessibleName(windowTitle());
    CloseKeys::install(this, CloseKeys::Escape::closes);

    m_heading = new QLabel(this);
    QFont headingFont = m_heading->font();
    headingFont.setBold(true);
    headingFont.setPointSizeF(headingFont.pointSizeF() * 1.2);
    m_heading->setFont(headingFont);
    m_versions = new QLabel(this);
    m_versions->setWordWrap(true);
    auto *notesLabel = new QLabel(tr("Release Notes:"), this);
    m_releaseNotes = new QTextBrowser(this);
    m_releaseNotes->setAccessibleName(tr("Release notes"));
    // Links open in the browser; images and style sheets the notes refer to are never fetched.
    m_releaseNotes->setOpenLinks(false);
    connect(m_releaseNotes, &QTextBrowser::anchorClicked, this, [](const QUrl &url) {
        if (url.scheme() == QLatin1String("https") || url.scheme() == QLatin1String("http"))
            QDesktopServices::openUrl(url);
    });
    notesLabel->setBuddy(m_releaseNotes);

    auto *later = new QPushButton(tr("Remind Me Later"), this);
    later->setAccessibleName(later->text());
    m_openButton = new QPushButton(tr("Open Download Page"), this);
    m_openButton->setAccessibleName(m_openButton->text());
    m_openButton->setDefault(true);
    connect(later, &QPushButton::clicked, this, &QWidget::close);
    connect(m_openButton, &QPushButton::clicked, this, &UpdateWindowController::openRelease);
    auto *buttons = new QHBoxLayout;
    buttons->addStretch();
    buttons->addWidget(later);
    buttons->addWidget(m_openButton);

    auto *layout = new QVBoxLayout(this);
    layout->addWidget(m_heading);
    layout->addWidget(m_versions);
    layout->addWidget(notesLabel);
    layout->addWidget(m_releaseNotes, 1);
    layout->addLayout(buttons);
    resize(520, 420);
    setItem(item);
}

void UpdateWindowController::setItem(const AppcastItem &item)
{
    m_item = item;
    m_heading->setText(tr("A new version of Pixcove is available!"));
    m_versions->setText(tr("Pixcove %1 is now available; you have %2. Download it from its page, or update it "
                           "with the package manager that installed it.")
                            .arg(item.displayVersion(), m_currentVersion));
    if (!item.description.isEmpty())
        m_releaseNotes->setHtml(item.description);
    else if (item.releaseNotesLink.isValid())
        m_releaseNotes->setHtml(tr("<p>The release notes are on <a href=\"%1\">the web site</a>.</p>")
                                    .arg(item.releaseNotesLink.toString().toHtmlEscaped()));
    else
        m_releaseNotes->setPlainText(tr("No release notes were given for this version."));
    m_openButton->setEnabled(item.link.isValid() && !item.link.isEmpty());
}

QString UpdateWindowController::heading() const
{
    return m_heading->text() + QLatin1Char('\n') + m_versions->text();
}

void UpdateWindowController::openRelease()
{
    if (m_item.link.scheme() == QLatin1String("https") || m_item.link.scheme() == QLatin1String("http"))
        QDesktopServices::openUrl(m_item.link);
    close();
}
