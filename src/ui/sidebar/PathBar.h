#pragma once

#include "core/model/PXFileForward.h"

#include <QWidget>

class QHBoxLayout;

// A row of buttons, one for each folder from the file system's root down to the current folder;
// clicking one jumps there. Long paths drop their first folders behind a "…" button that lists them.
class PathBar : public QWidget
{
    Q_OBJECT
public:
    explicit PathBar(QWidget *parent = nullptr);

    void setFolder(const PXFilePtr &folder);
    const PXFilePtr &folder() const { return m_folder; }
    // The folders shown, from the top down (for tests and the overflow menu).
    QList<PXFilePtr> chain() const;

Q_SIGNALS:
    void folderChosen(const PXFilePtr &folder);

protected:
    void resizeEvent(QResizeEvent *event) override;

private:
    void rebuild();

    PXFilePtr m_folder;
    QHBoxLayout *m_layout;
};
