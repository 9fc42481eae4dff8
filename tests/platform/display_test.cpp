// The display and sound part of the platform layer: the only test suite that links X11 and ALSA.
#include "platform/platform.h"

#include <QByteArray>
#include <QString>
#include <gtest/gtest.h>

namespace {

// Only the X11 plugin needs an X display; the command line's -platform and -display come first.
TEST(PlatformTest, DisplayAvailable) {
    struct Case { const char* platformEnv; const char* displayEnv; const char* platform; const char* display; const char* why; };
    const Case cases[] = {
        {nullptr, nullptr, "", "", "DISPLAY is not set"},
        {"xcb", nullptr, "", "", "DISPLAY is not set"},
        {"xcb:nograb", "", "", "", "DISPLAY is not set"},
        {nullptr, ":4713", "", "", "cannot open the X display :4713"},
        {"offscreen", ":4713", "xcb", "", "cannot open the X display :4713"},
        {nullptr, nullptr, "xcb", ":4714", "cannot open the X display :4714"},
        {"offscreen", nullptr, "", "", nullptr},
        {"wayland;xcb", nullptr, "", "", nullptr},  // Qt tries its list
        {"xcb", nullptr, "offscreen", "", nullptr},
        {nullptr, ":4713", "vnc", "", nullptr},
    };
    const QByteArray savedPlatform = qgetenv("QT_QPA_PLATFORM"), savedDisplay = qgetenv("DISPLAY");
    const auto restore = [](const char* name, const QByteArray& value) {
        value.isNull() ? qunsetenv(name) : qputenv(name, value);
    };
    for (const Case& c : cases) {
        c.platformEnv ? qputenv("QT_QPA_PLATFORM", c.platformEnv) : qunsetenv("QT_QPA_PLATFORM");
        c.displayEnv ? qputenv("DISPLAY", c.displayEnv) : qunsetenv("DISPLAY");
        QString why = "untouched";
        EXPECT_EQ(platform::DisplayAvailable(c.platform, c.display, &why), c.why == nullptr) << c.platform << c.display;
        EXPECT_EQ(why, c.why ? c.why : "untouched");
        EXPECT_EQ(platform::DisplayAvailable(c.platform, c.display, nullptr), c.why == nullptr);
    }
    restore("QT_QPA_PLATFORM", savedPlatform);
    restore("DISPLAY", savedDisplay);
}

TEST(PlatformTest, ToneArgumentsAndNoDevice) {
    EXPECT_FALSE(platform::PlayTone(0, 100) || platform::PlayTone(700, 0) || platform::PlayTone(700, 60000));
    (void)platform::PlayTone(700, 20);  // comes back with or without a sound device
}

}  // namespace
