#pragma once

#include <QPointer>
#include <QWidget>

#include <functional>

class BugReportSender;
class QLabel;
class QLineEdit;
class QPlainTextEdit;
class QProgressBar;
class QPushButton;
class WindowManager;
struct BugReportOutcome;

// The "Bug Report / Feature Request" window: the program's icon, name and version, a subject, a
// description, an optional e-mail address, the disclaimer and Send. Send posts the report
// (BugReportSender) with "Sending Report..." shown and the form locked; success clears the three
// fields and thanks the user, a failure shows why in the error alert and keeps every word typed.
// Send is enabled once the subject and the description hold more than spaces.
//
// Closing the window tells its `delegate` (the auxiliary windows manager), which forgets it; a
// report still on its way is dropped unanswered. The window's place and size are remembered.
class BugReporterWindowController : public QWidget
{
    Q_OBJECT
public:
    // `sender`: the program's own when null (this build's endpoint and credential); taken over.
    explicit BugReporterWindowController(BugReportSender *sender = nullptr, QWidget *parent = nullptr);
    ~BugReporterWindowController() override;

    void setDelegate(WindowManager *delegate) { m_delegate = delegate; }

    QLineEdit *subjectField();
    QPlainTextEdit *descriptionTextView();
    QLineEdit *emailField();
    QPushButton *sendButton() const { return m_sendButton; }
    bool isSending() const;

    void send();

    // Shows the outcome's alert (default: a message box). Tests replace it.
    std::function<void(QWidget *window, bool success, const QString &title, const QString &text)> showAlert;

protected:
    void closeEvent(QCloseEvent *event) override;

private:
    void sendFinished(const BugReportOutcome &outcome);
    void updateSendButton();
    void setSending(bool sending);

    QLabel *m_iconView;
    QLabel *m_appNameField;
    QLabel *m_appVersionField;
    QLabel *m_subjectLabel = nullptr;
    QLineEdit *m_subjectField = nullptr;
    QPlainTextEdit *m_descriptionTextView = nullptr;
    QLabel *m_emailLabel = nullptr;
    QLineEdit *m_emailField = nullptr;
    QLabel *m_disclaimerField;
    QPushButton *m_sendButton;
    QLabel *m_loadingView = nullptr; // "Sending Report..."
    QProgressBar *m_busyIndicator = nullptr;
    BugReportSender *m_sender;
    WindowManager *m_delegate = nullptr;
    bool m_sending = false;
};
