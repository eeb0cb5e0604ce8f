#pragma once

#include <QFlags>
#include <QObject>

#include <type_traits>

// How a setting's value is passed to its setter and signal and returned by its getter: numbers,
// enumerations and flag sets by value, everything else by const reference.
template<typename T>
inline constexpr bool settingPassedByValue = std::is_scalar_v<T>;
template<typename E>
inline constexpr bool settingPassedByValue<QFlags<E>> = true;
template<typename T>
using SettingArg = std::conditional_t<settingPassedByValue<T>, T, const T &>;

// Base of the settings objects: each field has its own change signal, and the object as a whole
// says `willChange()` before any field changes and `changed()` after it has. Setting a field to
// the value it already holds says nothing. Main thread only.
//
// The fields are declared with PIXCOVE_SETTING below, one line each; the JSON coding of the
// settings file (SettingsCoding) reads and writes them through their properties.
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

// One line per part of a declaration reads better than the formatter's layout of macros.
// clang-format off

// Declares one setting of a settings class, in the class body:
//
//     PIXCOVE_SETTING(int, thumbnailSize, setThumbnailSize, 200);
//
// makes the property `thumbnailSize`, the getter `int thumbnailSize() const`, the setter
// `setThumbnailSize(int)` (which stores the value through update()), the signal
// `thumbnailSizeChanged(int)` and the member `m_thumbnailSize`, which starts at the arguments
// after the setter's name (the type's default when there are none). The class goes on private.
// moc expands the macro like the compiler does: it finds this header on the include path.
#define PIXCOVE_SETTING(Type, name, setter, ...)                                                                       \
    PIXCOVE_SETTING_ACCESSORS(Type, name, setter, true)                                                                \
    PIXCOVE_SETTING_SETTER(Type, name, setter)                                                                         \
    PIXCOVE_SETTING_MEMBER(Type, name, __VA_ARGS__)

// A setting whose setter the class defines itself, to refuse or adjust a value before update().
#define PIXCOVE_SETTING_WITH_SETTER(Type, name, setter, ...)                                                           \
    PIXCOVE_SETTING_ACCESSORS(Type, name, setter, true)                                                                \
    void setter(SettingArg<Type> value);                                                                               \
    PIXCOVE_SETTING_MEMBER(Type, name, __VA_ARGS__)

// A setting that lives for the run only: the settings file has no key for it.
#define PIXCOVE_UNSAVED_SETTING(Type, name, setter, ...)                                                               \
    PIXCOVE_SETTING_ACCESSORS(Type, name, setter, false)                                                               \
    PIXCOVE_SETTING_SETTER(Type, name, setter)                                                                         \
    PIXCOVE_SETTING_MEMBER(Type, name, __VA_ARGS__)

// The parts of the macros above.
#define PIXCOVE_SETTING_ACCESSORS(Type, name, setter, stored)                                                          \
    Q_PROPERTY(Type name READ name WRITE setter NOTIFY name##Changed STORED stored)                                    \
public:                                                                                                                \
    SettingArg<Type> name() const { return m_##name; }                                                                 \
    Q_SIGNAL void name##Changed(SettingArg<Type> name);

#define PIXCOVE_SETTING_SETTER(Type, name, setter)                                                                     \
    void setter(SettingArg<Type> value)                                                                                \
    {                                                                                                                  \
        update(m_##name, value, &std::remove_pointer_t<decltype(this)>::name##Changed);                                \
    }

#define PIXCOVE_SETTING_MEMBER(Type, name, ...)                                                                        \
private:                                                                                                               \
    Type m_##name{__VA_ARGS__}

// clang-format on
