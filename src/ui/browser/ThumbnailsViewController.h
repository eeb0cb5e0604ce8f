#pragma once

#include "model/FileSortTypes.h"
#include "model/PXFile.h"
#include "settings/WindowSettings.h"

#include <QList>
#include <QString>
#include <QWidget>

// The thumbnail pane of a main window: the grid of the files of the window's sources, their
// selection, the pane's commands and context menu, drops onto the grid and the status line.
class ThumbnailsViewController : public QWidget
{
    Q_OBJECT

public:
    explicit ThumbnailsViewController(WindowSettingsPtr settings, QWidget *parent = nullptr);
    ~ThumbnailsViewController() override;

    void setSources(const QList<PXFilePtr> &folders);
    QList<PXFilePtr> sources() const;

    // Whether the command named like its slot ("moveToTrash") can run now.
    bool validateAction(const QString &slotName) const;
    QList<PXFilePtr> selectedFiles() const;
    QString statusText() const;

public Q_SLOTS:
    void performOpen();
    void openInApp();
    void selectAll();
    void deselectAll();
    void renameFile();
    void makeAlias();
    void makeSymlink();
    void duplicate();
    void moveToTrash();
    void revealInFinder();
    void newFolder();
    void flagItem();
    void rejectItem();
    void clearItemFlag();
    void selectFlagged();
    void selectRejected();
    void nextImageInBrowser();
    void previousImageInBrowser();
    void scrollSelectionToVisible();
    void thumbnailViewSearch(const QString &text);
    void setThumbnailViewSearchCategory(ThumbnailsSearchType type);

Q_SIGNALS:
    void selectionChanged(const QList<PXFilePtr> &files);
    void statusTextChanged(const QString &text);
    void openRequested(const QList<PXFilePtr> &files);
    void sourceVanished(const PXFilePtr &folder, const QString &reason);

private:
    WindowSettingsPtr m_windowSettings;
    QList<PXFilePtr> m_currentSources;
};
