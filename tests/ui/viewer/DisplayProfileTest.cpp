#include "ui/viewer/DisplayProfile.h"

#include <QColorSpace>
#include <QDir>
#include <QFileInfo>
#include <QProcess>
#include <QStandardPaths>
#include <QThread>

#include <gtest/gtest.h>

#include <xcb/xcb.h>

#include <cstdlib>
#include <memory>
#include <unistd.h>

namespace {

// An X server of its own, so that the test can publish profiles on its root window.
class Xvfb
{
public:
    Xvfb()
    {
        const QString program = QStandardPaths::findExecutable(QStringLiteral("Xvfb"));
        if (program.isEmpty())
            return;
        for (int display = 160 + ::getpid() % 40; display < 260; ++display) {
            if (QFileInfo::exists(QStringLiteral("/tmp/.X11-unix/X%1").arg(display)))
                continue;
            m_process.start(program,
                            {QStringLiteral(":%1").arg(display), QStringLiteral("-nolisten"), QStringLiteral("tcp"),
                             QStringLiteral("-screen"), QStringLiteral("0"), QStringLiteral("64x64x24")});
            m_process.waitForStarted();
            for (int i = 0; i < 100 && m_process.state() == QProcess::Running; ++i) {
                if (QFileInfo::exists(QStringLiteral("/tmp/.X11-unix/X%1").arg(display))) {
                    m_name = QStringLiteral(":%1").arg(display).toLatin1();
                    m_connection = xcb_connect(m_name.constData(), nullptr);
                    return;
                }
                QThread::msleep(50);
            }
            m_process.kill();
            m_process.waitForFinished();
        }
    }
    ~Xvfb()
    {
        if (m_connection)
            xcb_disconnect(m_connection);
        m_process.kill();
        m_process.waitForFinished();
    }
    bool running() const { return m_connection && !xcb_connection_has_error(m_connection); }
    const char *name() const { return m_name.constData(); }

    void publish(const QByteArray &property, const QByteArray &value)
    {
        const xcb_window_t root = xcb_setup_roots_iterator(xcb_get_setup(m_connection)).data->root;
        const std::unique_ptr<xcb_intern_atom_reply_t, decltype(&std::free)> atom(
            xcb_intern_atom_reply(m_connection,
                                  xcb_intern_atom(m_connection, 0, uint16_t(property.size()), property.constData()),
                                  nullptr),
            &std::free);
        xcb_change_property(m_connection, XCB_PROP_MODE_REPLACE, root, atom->atom, XCB_ATOM_CARDINAL, 8,
                            uint32_t(value.size()), value.constData());
        xcb_flush(m_connection);
        // A round trip, so that the property is there before another client asks.
        free(xcb_get_input_focus_reply(m_connection, xcb_get_input_focus(m_connection), nullptr));
    }

private:
    QProcess m_process;
    QByteArray m_name;
    xcb_connection_t *m_connection = nullptr;
};

} // namespace

// The screen's profile as a colour manager publishes it; anything else leaves pictures in sRGB.
TEST(DisplayProfile, ReadsTheProfilePublishedOnTheRootWindow)
{
    Xvfb server;
    if (!server.running())
        GTEST_SKIP() << "no Xvfb to publish a profile on";
    EXPECT_TRUE(DisplayProfile::read(server.name()).isEmpty()) << "nothing published yet";

    const QByteArray displayP3 = QColorSpace(QColorSpace::DisplayP3).iccProfile();
    ASSERT_FALSE(displayP3.isEmpty());
    server.publish("_ICC_PROFILE", displayP3);
    EXPECT_EQ(DisplayProfile::read(server.name()), displayP3);
    // Only the first screen has one; a screen that does not exist has none.
    EXPECT_TRUE(DisplayProfile::read(server.name(), 1).isEmpty());

    // Not a profile (a tool that wrote a path, a profile cut short): ignored.
    server.publish("_ICC_PROFILE", QByteArrayLiteral("/usr/share/color/icc/screen.icc"));
    EXPECT_TRUE(DisplayProfile::read(server.name()).isEmpty());
    server.publish("_ICC_PROFILE", displayP3.left(displayP3.size() / 2));
    EXPECT_TRUE(DisplayProfile::read(server.name()).isEmpty());

    // No X server at that name.
    EXPECT_TRUE(DisplayProfile::read(":259.7").isEmpty());
}
