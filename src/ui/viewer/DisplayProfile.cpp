#include "ui/viewer/DisplayProfile.h"

#include "core/app/Log.h"
#include "core/viewer/ColorTransform.h"

#include <QGuiApplication>
#include <QtGui/qguiapplication_platform.h>

#include <xcb/xcb.h>

#include <cstdlib>
#include <cstring>
#include <memory>

namespace DisplayProfile {

namespace {

// A profile starts with its size (big-endian) and carries "acsp" at byte 36.
bool looksLikeIccProfile(const QByteArray &data)
{
    if (data.size() < 128 || std::memcmp(data.constData() + 36, "acsp", 4) != 0)
        return false;
    const auto *bytes = reinterpret_cast<const unsigned char *>(data.constData());
    const quint32 declared =
        (quint32(bytes[0]) << 24) | (quint32(bytes[1]) << 16) | (quint32(bytes[2]) << 8) | bytes[3];
    return declared <= quint32(data.size());
}

QByteArray readFrom(xcb_connection_t *connection, int screen)
{
    xcb_screen_iterator_t screens = xcb_setup_roots_iterator(xcb_get_setup(connection));
    for (int i = 0; i < screen && screens.rem; ++i)
        xcb_screen_next(&screens);
    if (!screens.rem)
        return {};
    const xcb_window_t root = screens.data->root;

    const QByteArray atomName =
        screen == 0 ? QByteArrayLiteral("_ICC_PROFILE") : "_ICC_PROFILE_" + QByteArray::number(screen);
    const xcb_intern_atom_cookie_t atomCookie =
        xcb_intern_atom(connection, 1, uint16_t(atomName.size()), atomName.constData());
    const std::unique_ptr<xcb_intern_atom_reply_t, decltype(&std::free)> atom(xcb_intern_atom_reply(connection,
                                                                                                    atomCookie,
                                                                                                    nullptr),
                                                                              &std::free);
    if (!atom || atom->atom == XCB_ATOM_NONE)
        return {};

    // Profiles run to a few kilobytes, some to a few megabytes (the length is in 32-bit units).
    const xcb_get_property_cookie_t propertyCookie =
        xcb_get_property(connection, 0, root, atom->atom, XCB_ATOM_CARDINAL, 0, 16 * 1024 * 1024 / 4);
    const std::unique_ptr<xcb_get_property_reply_t, decltype(&std::free)>
        property(xcb_get_property_reply(connection, propertyCookie, nullptr), &std::free);
    if (!property || property->format != 8)
        return {};
    const QByteArray data(static_cast<const char *>(xcb_get_property_value(property.get())),
                          xcb_get_property_value_length(property.get()));
    if (data.isEmpty())
        return {};
    if (!looksLikeIccProfile(data)) {
        logError(QStringLiteral("The screen's colour profile (%1) is not an ICC profile; pictures are shown in sRGB.")
                     .arg(QString::fromLatin1(atomName)));
        return {};
    }
    return data;
}

} // namespace

QByteArray read(const char *displayName, int screen)
{
    const std::unique_ptr<xcb_connection_t, decltype(&xcb_disconnect)> connection(xcb_connect(displayName, nullptr),
                                                                                  &xcb_disconnect);
    if (!connection || xcb_connection_has_error(connection.get()))
        return {};
    return readFrom(connection.get(), screen);
}

void install()
{
    // The application's own connection to the X server: no second one at start-up.
    const auto *x11 = qApp ? qApp->nativeInterface<QNativeInterface::QX11Application>() : nullptr;
    if (!x11 || !x11->connection())
        return;
    const QByteArray profile = readFrom(x11->connection(), 0);
    if (profile.isEmpty())
        return;
    ColorTransform::setDisplayProfile(profile);
    logDebug(QStringLiteral("Pictures are converted to the screen's colour profile (%1 bytes).").arg(profile.size()));
}

} // namespace DisplayProfile
