#include "ui/windows/BugReporterWindowController.h"

#include "core/shell/BugReportSender.h"
#include "core/shell/BuildConfiguration.h"
#include "ui/common/CloseKeys.h"
#include "ui/windows/WindowManager.h"

#include <QApplication>
#include <QCloseEvent>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QIcon>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPlainTextEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QSettings>
#include <QVBoxLayout>

namespace {

// The key under which the window's place and size are remembered.
const QString frameKey = QStringLiteral("WindowFrames/BugReporterWindow");

QIcon applicationIcon()
{
    const QIcon icon = QApplication::windowIcon();
    return icon.isNull() ? QIcon(QStringLiteral(":/pixcove/pixcove.svg")) : icon;
}

void showMessageBox(QWidget *window, bool success, const QString &title, const QString &text)
{
    auto *box = new QMessageBox(success ? QMessageBox::Information : QMessageBox::Critical, title, text,
                                QMessageBox::Ok, window);
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->setWindowModality(Qt::WindowModal);
    box->open();
}

bool isBlank(const QString &text)
{
    return text.trimmed().isEmpty();
}

} // namespace

BugReporterWindowController::BugReporterWindowController(BugReportSender *sender, QWidget *parent)
    : QWidget(parent, Qt::Window)
    , m_sender(sender ? sender : new BugReportSender)
{
    m_sender->setParent(this);
    setAttribute(Qt::WA_DeleteOnClose);
    setObjectName(QStringLiteral("BugReporterWindow"));
    setWindowTitle(tr("Bug Report / Feature Request"));
    setAccessibleName(windowTitle());
    showAlert = showMessageBox;
    // Escape would throw away a report being typed; Ctrl+W is asked for.
    CloseKeys::install(this, CloseKeys::Escape::ignored);

    m_iconView = new QLabel(this);
    m_iconView->setPixmap(applicationIcon().pixmap(64, 64));
    m_iconView->setAccessibleName(tr("Pixcove icon"));
    m_appNameField = new QLabel(QApplication::applicationDisplayName(), this);
    QFont nameFont = m_appNameField->font();
    nameFont.setBold(true);
    nameFont.setPointSizeF(nameFont.pointSizeF() * 1.4);
    m_appNameField->setFont(nameFont);
    m_appVersionField =
        new QLabel(tr("Version %1 (%2)").arg(BuildConfiguration::version(), BuildConfiguration::buildNumber()), this);
    m_appVersionField->setTextInteractionFlags(Qt::TextSelectableByMouse);

    m_subjectLabel = new QLabel(tr("Subject:"), this);
    m_subjectField = new QLineEdit(this);
    m_subjectField->setAccessibleName(tr("Subject"));
    m_subjectLabel->setBuddy(m_subjectField);
    m_descriptionTextView = new QPlainTextEdit(this);
    m_descriptionTextView->setAccessibleName(tr("Description"));
    m_descriptionTextView->setPlaceholderText(
        tr("What happened, what you expected instead, and how to make it happen again."));
    m_descriptionTextView->setTabChangesFocus(true);
    auto *descriptionLabel = new QLabel(tr("Description:"), this);
    descriptionLabel->setBuddy(m_descriptionTextView);
    m_emailLabel = new QLabel(tr("Email (optional):"), this);
    m_emailField = new QLineEdit(this);
    m_emailField->setAccessibleName(tr("Email address"));
    m_emailLabel->setBuddy(m_emailField);

    m_disclaimerField = new QLabel(
        tr("Send bug reports or feature requests via this form. The only information sent is what you see in this "
           "window, plus any information required in making a network connection. If we need further information "
           "we may contact you via email if you provided your address."),
        this);
    m_disclaimerField->setWordWrap(true);
    m_disclaimerField->setEnabled(false); // drawn as secondary text

    m_sendButton = new QPushButton(tr("Send"), this);
    m_sendButton->setAccessibleName(tr("Send report"));
    m_sendButton->setDefault(true);
    m_sendButton->setEnabled(false);

    m_loadingView = new QLabel(tr("Sending Report..."), this);
    m_busyIndicator = new QProgressBar(this);
    m_busyIndicator->setRange(0, 0); // busy, without a measure
    m_busyIndicator->setMaximumWidth(120);
    m_busyIndicator->setAccessibleName(tr("Sending"));
    m_loadingView->setVisible(false);
    m_busyIndicator->setVisible(false);

    auto *header = new QHBoxLayout;
    header->addWidget(m_iconView, 0, Qt::AlignTop);
    auto *names = new QVBoxLayout;
    names->addWidget(m_appNameField);
    names->addWidget(m_appVersionField);
    names->addStretch();
    header->addLayout(names, 1);

    auto *form = new QFormLayout;
    form->setFieldGrowthPolicy(QFormLayout::AllNonFixedFieldsGrow);
    form->addRow(m_subjectLabel, m_subjectField);
    form->addRow(descriptionLabel, m_descriptionTextView);
    form->addRow(m_emailLabel, m_emailField);

    auto *buttons = new QHBoxLayout;
    buttons->addWidget(m_busyIndicator);
    buttons->addWidget(m_loadingView);
    buttons->addStretch();
    buttons->addWidget(m_sendButton);

    auto *layout = new QVBoxLayout(this);
    layout->addLayout(header);
    layout->addLayout(form, 1);
    layout->addWidget(m_disclaimerField);
    layout->addLayout(buttons);

    connect(m_subjectField, &QLineEdit::textChanged, this, &BugReporterWindowController::updateSendButton);
    connect(m_descriptionTextView, &QPlainTextEdit::textChanged, this, &BugReporterWindowController::updateSendButton);
    connect(m_sendButton, &QPushButton::clicked, this, &BugReporterWindowController::send);
    connect(m_sender, &BugReportSender::finished, this, &BugReporterWindowController::sendFinished);

    resize(520, 480);
    if (const QByteArray frame = QSettings().value(frameKey).toByteArray(); !frame.isEmpty())
        restoreGeometry(frame);
}

BugReporterWindowController::~BugReporterWindowController() = default;

QLineEdit *BugReporterWindowController::subjectField()
{
    return m_subjectField;
}

QPlainTextEdit *BugReporterWindowController::descriptionTextView()
{
    return m_descriptionTextView;
}

QLineEdit *BugReporterWindowController::emailField()
{
    return m_emailField;
}

bool BugReporterWindowController::isSending() const
{
    return m_sending;
}

void BugReporterWindowController::send()
{
    if (isSending() || isBlank(m_subjectField->text()) || isBlank(m_descriptionTextView->toPlainText()))
        return;
    setSending(true);
    m_sender->send({m_subjectField->text(), m_descriptionTextView->toPlainText(), m_emailField->text().trimmed(),
                    BuildConfiguration::version()});
}

void BugReporterWindowController::sendFinished(const BugReportOutcome &outcome)
{
    setSending(false);
    if (outcome.sent) {
        m_subjectField->clear();
        m_descriptionTextView->clear();
        m_emailField->clear();
        showAlert(this, true, tr("Successfully sent bug report!"), tr("Thank you for your help in improving Pixcove."));
        return;
    }
    // The form keeps everything the user typed, to send again.
    showAlert(this, false, tr("Error submitting bug report!"),
              outcome.message + tr("\n\nIf this happens again, please submit a bug report via our website."));
}

void BugReporterWindowController::setSending(bool sending)
{
    m_sending = sending;
    m_loadingView->setVisible(sending);
    m_busyIndicator->setVisible(sending);
    // Locked, not disabled: the text stays readable and selectable while it travels.
    m_subjectField->setReadOnly(sending);
    m_descriptionTextView->setReadOnly(sending);
    m_emailField->setReadOnly(sending);
    updateSendButton();
}

void BugReporterWindowController::updateSendButton()
{
    m_sendButton->setEnabled(!isSending() && !isBlank(m_subjectField->text())
                             && !isBlank(m_descriptionTextView->toPlainText()));
}

void BugReporterWindowController::closeEvent(QCloseEvent *event)
{
    QSettings().setValue(frameKey, saveGeometry());
    if (m_delegate)
        m_delegate->windowControllerWillClose(this);
    event->accept();
}
