#pragma once

#include "core/shell/Appcast.h"

#include <QWidget>

class QLabel;
class QPushButton;
class QTextBrowser;

// Tells the user that a newer release exists: its version beside ours, its release notes (the
// feed's HTML, shown without fetching anything it refers to), and a button that opens the
// release's page in the browser. Pixcove does not replace itself: the user downloads, or the
// package manager updates it.
class UpdateWindowController : public QWidget
{
    Q_OBJECT
public:
    UpdateWindowController(const AppcastItem &item, const QString &currentVersion, QWidget *parent = nullptr);

    const AppcastItem &item() const { return m_item; }
    // Shows another release in the same window (a later check found a newer one).
    void setItem(const AppcastItem &item);
    QString heading() const;

private:
    void openRelease();

    AppcastItem m_item;
    QString m_currentVersion;
    QLabel *m_heading;
    QLabel *m_versions;
    QTextBrowser *m_releaseNotes;
    QPushButton *m_openButton;
};
