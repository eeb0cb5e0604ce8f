#pragma once

#include <functional>

class QWidget;

// The part of the activities manager that quitting asks first: whether running activities let the
// program quit (it may put the question "Operations Not Complete" to the user), and to settle them
// before the windows close. Without running activities the answer is yes and settling is done at
// once, which is what the default gate does.
class ActivitiesGate
{
public:
    virtual ~ActivitiesGate() = default;
    // False keeps the program running as it was.
    virtual bool shouldQuit(QWidget *window)
    {
        (void)window;
        return true;
    }
    // Finishes or stops the activities, then calls `done` on the GUI thread.
    virtual void finishActivities(std::function<void()> done) { done(); }
};
