#pragma once

#include <QWidget>

#include <functional>

// The top-level widget of a viewer window (quick view, image window, slideshow): it hands its
// closing (the title bar's button, the window manager) to its controller, which decides.
class ViewerWindow : public QWidget
{
public:
    explicit ViewerWindow(std::function<void()> closeRequested, QWidget *parent = nullptr,
                          Qt::WindowFlags flags = Qt::Window);

    // Closes the window for good (the controller's decision) and deletes it later.
    void closeAndDelete();

protected:
    void closeEvent(QCloseEvent *event) override;

private:
    std::function<void()> m_closeRequested;
    bool m_closing = false;
};
