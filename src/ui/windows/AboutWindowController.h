#pragma once

#include <QWidget>

class QLabel;
class QTreeWidget;
class WindowManager;

// The About window: the program's icon, name, version and build number, the libraries it runs with
// and their versions (read off the GUI thread: some are loaded for the question), and the links to
// the web site and the release notes. Closing it tells its `delegate`, which forgets it.
class AboutWindowController : public QWidget
{
    Q_OBJECT
public:
    explicit AboutWindowController(QWidget *parent = nullptr);
    ~AboutWindowController() override;

    void setDelegate(WindowManager *delegate) { m_delegate = delegate; }

    // The library rows as shown ("Qt 6.4.2"), once read.
    QStringList libraryLines() const;
    bool librariesLoaded() const { return m_librariesLoaded; }

Q_SIGNALS:
    void librariesShown();

protected:
    void closeEvent(QCloseEvent *event) override;

private:
    QTreeWidget *m_libraries;
    bool m_librariesLoaded = false;
    WindowManager *m_delegate = nullptr;
};
