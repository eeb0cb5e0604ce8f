#include "ui/windows/ViewerWindow.h"

#include <QCloseEvent>

ViewerWindow::ViewerWindow(std::function<void()> closeRequested, QWidget *parent, Qt::WindowFlags flags)
    : QWidget(parent, flags)
    , m_closeRequested(std::move(closeRequested))
{ }

void ViewerWindow::closeEvent(QCloseEvent *event)
{
    if (m_closing) {
        event->accept();
        return;
    }
    // The controller closes the window (and lets this event through) when it agrees.
    event->ignore();
    if (m_closeRequested)
        m_closeRequested();
}

void ViewerWindow::closeAndDelete()
{
    m_closing = true;
    close();
    deleteLater();
}
