#pragma once

class QObject;

// What every window manager does: drops its reference to a window controller that is closing.
class WindowManager
{
public:
    virtual ~WindowManager() = default;
    virtual void windowControllerWillClose(QObject *controller) = 0;
};
