#pragma once

#include "core/model/PXFileForward.h"
#include "core/settings/SettingsValueSets.h"

#include <QList>
#include <QObject>
#include <QPointer>
#include <QWidget>

class AppSettings;
class MediaViewController;
class QScreen;
class WindowManager;

// The quick view: a window beside the main windows that shows the file last selected in any of
// them, large. Toggled by "Quick View" (the space bar); it follows the selection as it changes,
// takes its scaling, background, zoom carry-over, transition and video choices from the
// quick-view settings (and follows their changes), and opens on the screen `quickviewScreen`
// names. With `quickviewAutohide` it hides while Pixcove is not the active application and comes
// back with it. Closing it tells its manager.
class QuickviewWindowController : public QObject
{
    Q_OBJECT
public:
    // `file`: the first file shown; may be null. `delegate` is told when the window closes.
    QuickviewWindowController(AppSettings *settings, WindowManager *delegate, const PXFilePtr &file = {},
                              QObject *parent = nullptr);
    ~QuickviewWindowController() override;

    QWidget *window() const { return m_window; }
    MediaViewController *mediaView() const { return m_mediaView; }

    void show();
    // Closes the window, once; the controller deletes itself later.
    void close();
    bool isClosed() const { return m_closed; }

    // The files selected last; the first is shown, the others are prefetched.
    void setFiles(const QList<PXFilePtr> &files);

    // The screen `option` stands for, seen from the screen of the active window (`active`, may be
    // null): that screen, another one when there is one, or the primary screen.
    static QScreen *screenFor(ScreenOption option, QScreen *active);

Q_SIGNALS:
    void closed(QuickviewWindowController *controller);

private:
    void applySettings();
    void applicationStateChanged(Qt::ApplicationState state);

    AppSettings *m_settings;
    WindowManager *m_delegate;
    QPointer<QWidget> m_window;
    MediaViewController *m_mediaView = nullptr;
    bool m_hiddenByAutohide = false;
    bool m_closed = false;
};
