#include "core/shell/BugReportSender.h"
#include "ui/app/ActivitiesGate.h"
#include "ui/app/AppDelegate.h"
#include "ui/app/UpdateController.h"
#include "ui/windows/AboutWindowController.h"
#include "ui/windows/BugReporterWindowController.h"
#include "ui/windows/ImageWindowController.h"
#include "ui/windows/TabbedWindow.h"
#include "ui/windows/UpdateWindowController.h"

#include "support/LocalHttpServer.h"
#include "support/TestImages.h"
#include "ui/ShellFixture.h"

#include <QAbstractButton>
#include <QAbstractItemView>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QScrollBar>
#include <QTest>

#include <gtest/gtest.h>

#include <algorithm>

using namespace std::chrono_literals;

namespace {

struct Alert
{
    bool success = false;
    QString title;
    QString text;
};

// A bug reporter that sends to `server` and records its alerts instead of showing them.
BugReporterWindowController *makeReporter(LocalHttpServer &server, QList<Alert> &alerts)
{
    auto *sender = new BugReportSender(server.url(QStringLiteral("/report")), QStringLiteral("tester:secret"));
    sender->setAllowsLoopbackHttp(true);
    auto *window = new BugReporterWindowController(sender);
    window->showAlert = [&alerts](QWidget *, bool success, const QString &title, const QString &text) {
        alerts.append({success, title, text});
    };
    return window;
}

// Every control a user reaches is named for assistive technology.
void expectNamedControls(QWidget *window)
{
    EXPECT_FALSE(window->windowTitle().isEmpty());
    EXPECT_FALSE(window->accessibleName().isEmpty());
    for (QWidget *control : window->findChildren<QWidget *>()) {
        if (qobject_cast<QAbstractButton *>(control) || qobject_cast<QLineEdit *>(control)
            || qobject_cast<QPlainTextEdit *>(control)) {
            EXPECT_FALSE(control->accessibleName().isEmpty()) << control->metaObject()->className();
        }
    }
}

struct QuitRecorder : ActivitiesGate
{
    bool allowQuit = true;
    QStringList steps;
    bool shouldQuit(QWidget *) override
    {
        steps.append(QStringLiteral("asked"));
        return allowQuit;
    }
    void finishActivities(std::function<void()> done) override
    {
        steps.append(QStringLiteral("finish"));
        done();
    }
};

} // namespace

TEST(ShellWindows, BugReporterKeepsTheFormOnFailureAndClearsItOnlyOnSuccess)
{
    ShellFixture shell;
    LocalHttpServer server;
    QList<Alert> alerts;
    shell.auxiliary->makeBugReporterWindow = [&] { return makeReporter(server, alerts); };
    shell.auxiliary->openBugReporterWindow(nullptr);
    BugReporterWindowController *window = shell.auxiliary->bugReporterWindowController();
    ASSERT_TRUE(window);
    EXPECT_TRUE(window->isVisible());
    EXPECT_EQ(window->windowTitle(), QStringLiteral("Bug Report / Feature Request"));
    expectNamedControls(window);
    shell.auxiliary->openBugReporterWindow(nullptr);
    EXPECT_EQ(shell.auxiliary->bugReporterWindowController(), window); // one at most

    // Send waits for a subject and a description with more than spaces.
    EXPECT_FALSE(window->sendButton()->isEnabled());
    window->subjectField()->setText(QStringLiteral("Thumbnails stay grey"));
    window->descriptionTextView()->setPlainText(QStringLiteral("   \n"));
    EXPECT_FALSE(window->sendButton()->isEnabled());
    window->descriptionTextView()->setPlainText(QStringLiteral("In a folder of 50 000 RAW files."));
    window->emailField()->setText(QStringLiteral("me@example.org"));
    ASSERT_TRUE(window->sendButton()->isEnabled());

    server.status = 500;
    window->sendButton()->click();
    EXPECT_TRUE(window->isSending());
    EXPECT_FALSE(window->sendButton()->isEnabled());
    EXPECT_TRUE(window->subjectField()->isReadOnly());
    ASSERT_TRUE(waitUntil([&] { return !alerts.isEmpty(); }));
    EXPECT_FALSE(alerts.last().success);
    EXPECT_EQ(alerts.last().title, QStringLiteral("Error submitting bug report!"));
    EXPECT_EQ(alerts.last().text,
              QStringLiteral("The server gave us a bad response code: 500.\n\nIf this happens "
                             "again, please submit a bug report via our website."));
    EXPECT_EQ(window->subjectField()->text(), QStringLiteral("Thumbnails stay grey"));
    EXPECT_EQ(window->descriptionTextView()->toPlainText(), QStringLiteral("In a folder of 50 000 RAW files."));
    EXPECT_EQ(window->emailField()->text(), QStringLiteral("me@example.org"));
    EXPECT_FALSE(window->subjectField()->isReadOnly());
    EXPECT_TRUE(window->isVisible());

    server.status = 200;
    server.body = "success";
    window->sendButton()->click();
    ASSERT_TRUE(waitUntil([&] { return alerts.size() == 2; }));
    EXPECT_TRUE(alerts.last().success);
    EXPECT_EQ(alerts.last().title, QStringLiteral("Successfully sent bug report!"));
    EXPECT_EQ(alerts.last().text, QStringLiteral("Thank you for your help in improving Pixcove."));
    EXPECT_TRUE(window->subjectField()->text().isEmpty());
    EXPECT_TRUE(window->descriptionTextView()->toPlainText().isEmpty());
    EXPECT_TRUE(window->emailField()->text().isEmpty());
    EXPECT_EQ(server.requests.size(), 2);

    // Escape keeps a report being typed; Ctrl+W closes, and closing forgets the window. Without
    // an endpoint there is no window, only a message.
    window->subjectField()->setText(QStringLiteral("Half a thought"));
    window->activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(window));
    QTest::keyClick(window->subjectField(), Qt::Key_Escape);
    EXPECT_TRUE(window->isVisible());
    QTest::keyClick(window->subjectField(), Qt::Key_W, Qt::ControlModifier);
    EXPECT_FALSE(window->isVisible());
    QApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_FALSE(shell.auxiliary->bugReporterWindowController());
    QStringList messages;
    shell.auxiliary->showMessage = [&](const QString &, const QString &text) { messages.append(text); };
    shell.auxiliary->makeBugReporterWindow = [] { return nullptr; };
    shell.auxiliary->openBugReporterWindow(nullptr);
    EXPECT_FALSE(shell.auxiliary->bugReporterWindowController());
    ASSERT_EQ(messages.size(), 1);
    EXPECT_TRUE(messages.first().contains(QLatin1String("no address to send bug reports to")));
}

TEST(ShellWindows, AboutShowsTheVersionAndTheLibrariesTheProgramRunsWith)
{
    ShellFixture shell;
    shell.auxiliary->openAboutWindow(nullptr);
    AboutWindowController *about = shell.auxiliary->aboutWindowController();
    ASSERT_TRUE(about);
    expectNamedControls(about);
    const QList<QLabel *> labels = about->findChildren<QLabel *>();
    EXPECT_TRUE(std::any_of(labels.begin(), labels.end(), [](QLabel *label) {
        return label->text().startsWith(QStringLiteral("Version " PIXCOVE_VERSION " (build "));
    }));
    ASSERT_TRUE(waitUntil([&] { return about->librariesLoaded(); }, 15000));
    const QStringList lines = about->libraryLines();
    ASSERT_EQ(lines.size(), 6) << lines.join(QLatin1Char('\n')).toStdString();
    EXPECT_EQ(lines.at(0), QStringLiteral("Qt ") + QLatin1String(qVersion()));
    const char *prefixes[] = {"Qt 6.", "Exiv2 0.", "libjpeg-turbo 2.", "libheif 1.", "LibRaw 0.", "FFmpeg "};
    for (int i = 0; i < 6; ++i) {
        EXPECT_TRUE(lines.at(i).startsWith(QLatin1String(prefixes[i]))) << lines.at(i).toStdString();
        EXPECT_FALSE(lines.at(i).contains(QLatin1String("unavailable"))) << lines.at(i).toStdString();
    }
    // Every library shows, with no scroll bar and no blank rows under them.
    QApplication::processEvents();
    const auto *list = about->findChild<QAbstractItemView *>();
    ASSERT_TRUE(list);
    EXPECT_EQ(list->verticalScrollBar()->maximum(), 0);
    const QModelIndex last = list->model()->index(5, 0);
    EXPECT_LE(list->viewport()->height() - list->visualRect(last).bottom(), list->visualRect(last).height());

    shell.auxiliary->openAboutWindow(nullptr);
    EXPECT_EQ(shell.auxiliary->aboutWindowController(), about);
    about->activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(about));
    QTest::keyClick(about, Qt::Key_Escape);
    EXPECT_FALSE(about->isVisible());
    QApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_FALSE(shell.auxiliary->aboutWindowController());
}

TEST(ShellWindows, CheckingForUpdatesShowsTheNewReleaseOrSaysThereIsNone)
{
    ShellFixture shell;
    LocalHttpServer server;
    server.body = R"(<rss xmlns:sparkle="http://www.andymatuschak.org/xml-namespaces/sparkle"><channel>
        <item><title>Pixcove 3.1</title><link>https://example.org/3.1</link>
        <description>&lt;p&gt;Much &lt;b&gt;faster&lt;/b&gt;&lt;/p&gt;</description>
        <enclosure url="https://example.org/pixcove-3.1.deb" sparkle:version="3.1"/></item></channel></rss>)";
    UpdateController controller(shell.settings(), server.url(), QStringLiteral("3.0"));
    controller.updater()->checker()->setAllowsLoopbackHttp(true);
    QStringList messages;
    controller.showMessage = [&](bool, const QString &title, const QString &) { messages.append(title); };

    controller.checkForUpdates();
    ASSERT_TRUE(waitUntil([&] { return controller.updateWindow() != nullptr; }));
    UpdateWindowController *window = controller.updateWindow();
    EXPECT_TRUE(window->isVisible());
    EXPECT_TRUE(window->heading().contains(QLatin1String("Pixcove 3.1 is now available; you have 3.0")));
    expectNamedControls(window);
    EXPECT_TRUE(messages.isEmpty());

    UpdateController current(shell.settings(), server.url(), QStringLiteral("3.1"));
    current.updater()->checker()->setAllowsLoopbackHttp(true);
    current.showMessage = controller.showMessage;
    current.checkForUpdates();
    ASSERT_TRUE(waitUntil([&] { return !messages.isEmpty(); }));
    EXPECT_EQ(messages, QStringList{QStringLiteral("You’re up to date!")});
    EXPECT_FALSE(current.updateWindow());
}

// The program ends when its last window closes, through the same questions as Quit; a window that
// is only hidden, or a bug report being written, keeps it running.
TEST(ShellWindows, ClosingTheLastWindowQuitsButHiddenWindowsAndAnUnsentReportDoNot)
{
    ShellFixture shell;
    LocalHttpServer server;
    QList<Alert> alerts;
    shell.auxiliary->makeBugReporterWindow = [&] { return makeReporter(server, alerts); };
    QuitRecorder activities;
    bool terminated = false;
    {
        AppDelegate delegate;
        delegate.setActivitiesGate(&activities);
        delegate.terminate = [&] { terminated = true; };
        delegate.closeSlideshows = [] {};
        delegate.closeRenamer = [] {};
        delegate.applicationDidFinishLaunching({});
        ASSERT_EQ(shell.windows->windowControllers().size(), 1);
        MainWindowController *first = shell.windows->windowControllers().first();
        MainWindowController *second = shell.windows->newMainWindow(shell.photos);

        // Losing the focus hides both; that is no reason to quit, and the next start brings the
        // same windows back rather than a new one.
        shell.settings()->setHideOnDeactivate(true);
        delegate.applicationDidResignActive();
        EXPECT_FALSE(shell.windows->hasVisibleWindows());
        QCoreApplication::processEvents();
        EXPECT_TRUE(activities.steps.isEmpty());
        delegate.handleRequest({});
        EXPECT_EQ(shell.windows->windowControllers().size(), 2);
        EXPECT_TRUE(first->tabbedWindow()->isVisible());
        EXPECT_TRUE(second->tabbedWindow()->isVisible());
        shell.settings()->setHideOnDeactivate(false);

        first->close();
        QCoreApplication::processEvents();
        EXPECT_TRUE(activities.steps.isEmpty());

        // The bug reporter holds the program open while it is there.
        shell.auxiliary->openBugReporterWindow(nullptr);
        second->close();
        QCoreApplication::processEvents();
        EXPECT_TRUE(activities.steps.isEmpty());

        // Its closing is the last one: the activities are asked, and declining keeps the program.
        activities.allowQuit = false;
        shell.auxiliary->bugReporterWindowController()->close();
        ASSERT_TRUE(waitUntil([&] { return !activities.steps.isEmpty(); }));
        EXPECT_EQ(activities.steps, QStringList{QStringLiteral("asked")});
        EXPECT_FALSE(terminated);

        // The next last window to close ends it.
        activities.allowQuit = true;
        activities.steps.clear();
        MainWindowController *third = shell.windows->newMainWindow(shell.photos);
        third->close();
        ASSERT_TRUE(waitUntil([&] { return terminated; }));
        EXPECT_EQ(activities.steps, QStringList({QStringLiteral("asked"), QStringLiteral("finish")}));
    }

    // An image window opened from the file manager is a last window too.
    terminated = false;
    activities.steps.clear();
    AppDelegate delegate;
    delegate.setActivitiesGate(&activities);
    delegate.terminate = [&] { terminated = true; };
    const QString photo = TestImages::writeJpeg(shell.dir.filePath(QStringLiteral("photos/one.jpg")), QSize(64, 48));
    delegate.applicationDidFinishLaunching({LaunchRequest::Kind::open, {photo}});
    EXPECT_TRUE(shell.windows->windowControllers().isEmpty());
    ASSERT_EQ(shell.imageWindows->imageWindowControllers().size(), 1);
    shell.imageWindows->closeAll();
    ASSERT_TRUE(waitUntil([&] { return terminated; }));
}
