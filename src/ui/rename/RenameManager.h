#pragma once

#include "core/model/PXFileForward.h"

#include <QList>
#include <QObject>
#include <QPointer>

class FileRenamerWindow;
class QSettings;

// Owns the one batch renamer window of the program. Opening with files creates the window when
// there is none, adds the files, and brings it to the front; when the window closes the manager
// drops it, so the next opening starts afresh (presets and recent settings reloaded).
class RenameManager : public QObject
{
    Q_OBJECT
public:
    // `settings` (not owned) is where the window keeps its presets and frame; without one, the
    // application's settings.
    explicit RenameManager(QSettings *settings = nullptr, QObject *parent = nullptr);
    ~RenameManager() override;

    // The program's manager; tests may install their own.
    static RenameManager &shared();
    static void setShared(RenameManager *manager);

    void openWithFiles(const QList<PXFilePtr> &files);
    FileRenamerWindow *fileRenamer() const;
    // Closes the window when it may close (no scan or rename running, the unsaved-preset
    // question answered); false when it stays open.
    bool closeRenamer();
    // Stops what the window runs and closes it without asking (the program quits).
    void cancelRenamer();

Q_SIGNALS:
    void renamerOpened(FileRenamerWindow *window);
    void renameFilesEnded();

private:
    void windowClosed(FileRenamerWindow *window);

    QSettings *m_settings = nullptr;
    QPointer<FileRenamerWindow> m_window;
};
