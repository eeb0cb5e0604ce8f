#pragma once

#include <QObject>

// Base of the settings objects: each field has its own change signal, and the object as a whole
// says `willChange()` before any field changes and `changed()` after it has. Setting a field to
// the value it already holds says nothing. Main thread only.
class ObservableSettings : public QObject
{
    Q_OBJECT
public:
    using QObject::QObject;

Q_SIGNALS:
    void willChange();
    void changed();

protected:
    // Stores `value` in `slot` and tells observers: willChange(), the field's own signal, changed().
    template<typename Owner, typename T, typename Arg>
    void update(T &slot, const T &value, void (Owner::*notify)(Arg))
    {
        if (slot == value)
            return;
        Q_EMIT willChange();
        slot = value;
        Q_EMIT(static_cast<Owner *>(this)->*notify)(slot);
        Q_EMIT changed();
    }
};
