#pragma once

#include "core/model/PXFileForward.h"
#include "ui/windows/WindowManager.h"

#include <QList>
#include <QObject>

#include <functional>

class AppSettings;
class ImageWindowController;
class QWidget;

// The open image windows, in the order they were opened, and what "Open" does with files:
// `openImageDestination` decides whether they are shown in an image window of Pixcove's
// (`pixcove`), handed to the application that made them (`creator`: the installed application
// named in the file's creator software, else Pixcove's own viewer) or to the chosen application
// (`other`: `openImageCustomApp`). Files are never handed to the desktop's default application,
// which may be Pixcove itself.
class ImageWindowsManager : public QObject, public WindowManager
{
    Q_OBJECT
public:
    explicit ImageWindowsManager(AppSettings *settings, QObject *parent = nullptr);
    ~ImageWindowsManager() override;

    static ImageWindowsManager &shared();
    static void setShared(ImageWindowsManager *manager); // not owned

    const QList<ImageWindowController *> &imageWindowControllers() const { return m_controllers; }

    // Opens `file` as the settings say; `set` is what an image window steps through (it holds
    // `file`; empty: `file` alone). Failures are told through `showMessage`.
    void openFile(const PXFilePtr &file, const QList<PXFilePtr> &set = {});
    // An image window over exactly `files`, showing `current` (else the first).
    ImageWindowController *openWindow(const QList<PXFilePtr> &files, const PXFilePtr &current = {});

    // Brings the image window after (or before) the front one to the front.
    void nextImageWindow();
    void previousImageWindow();
    bool hasImageWindows() const { return !m_controllers.isEmpty(); }
    // The files the open image windows show, in window order.
    QList<PXFilePtr> shownFiles() const;
    void closeAll();

    void windowControllerWillClose(QObject *controller) override;

    // Tells the user of a failure (default: a message box). Tests replace it.
    std::function<void(const QString &title, const QString &text)> showMessage;

Q_SIGNALS:
    void imageWindowControllersChanged();

private:
    void openWithCreator(const PXFilePtr &file, const QList<PXFilePtr> &set);
    void openWithApplication(const PXFilePtr &application, const PXFilePtr &file, const QList<PXFilePtr> &set);
    int frontIndex() const;

    AppSettings *m_settings;
    QList<ImageWindowController *> m_controllers;
};
