#pragma once

#include <QByteArray>
#include <QMetaType>

// A change to one file, as a folder subscription reports it. Types 1, 2 and 4 change what the
// file is (its content or identity); the others touch only its attributes or its presence.
enum class ZQFileEventType : int {
    contentModified = 1, // written to
    created = 2, // appeared under this name
    removed = 3, // gone from the folder (deleted or moved away)
    replaced = 4, // another file was moved onto this name
    attributesChanged = 5, // permissions, times, extended attributes
    rescanNeeded = 6, // the kernel dropped events: the folder must be listed again
};

struct ZQFileEvent
{
    ZQFileEventType type = ZQFileEventType::attributesChanged;
    QByteArray nativePath; // the file the event is about (the folder itself for rescanNeeded)

    int rawType() const { return static_cast<int>(type); }
    // Whether the event may have changed the file's bytes or which file stands under the name.
    bool changesContentOrIdentity() const
    {
        const int raw = rawType();
        return raw == 1 || raw == 2 || raw == 4;
    }
};

Q_DECLARE_METATYPE(ZQFileEvent)
