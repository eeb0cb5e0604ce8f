#pragma once

#include <QWidget>

class QTreeWidget;
class WindowManager;

// The About window: the program's icon, name, version and build number, the libraries it runs with
// and their versions (read off the GUI thread, since some are loaded for the question), and
// buttons for the web site and the release notes, which the window's owner connects. Closing it
// tells its `delegate`, which forgets it.
class AboutWindowController : public QWidget
{
    Q_OBJECT
public:
    explicit AboutWindowController(QWidget *parent = nullptr);
    ~AboutWindowController() override;

    void setDelegate(WindowManager *delegate) { m_delegate = delegate; }

    // The library rows as shown ("Qt 6.4.2"); placeholders until the versions have been read.
    QStringList libraryLines() const;
    bool librariesLoaded() const { return m_librariesLoaded; }

Q_SIGNALS:
    void librariesShown();
    void websiteRequested();
    void releaseNotesRequested();

protected:
    void closeEvent(QCloseEvent *event) override;

private:
    void fitLibrariesHeight();

    QTreeWidget *m_libraries;
    bool m_librariesLoaded = false;
    WindowManager *m_delegate = nullptr;
};
