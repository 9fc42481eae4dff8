// The display and sound part of the platform layer: the only test suite that links X11 and ALSA.
#include "platform/platform.h"

#include <QByteArray>
#include <QString>
#include <QFile>
#include <QTemporaryDir>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>

namespace {

void writeFile(const QString& path, const QByteArray& bytes) {
    QFile f(path);
    ASSERT_TRUE(f.open(QIODevice::WriteOnly) && f.write(bytes) == bytes.size());
}

QByteArray readFile(const QString& path) {
    QFile f(path);
    return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray();
}

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

// The tone goes to ALSA's default device. Here that is an ALSA configuration of the test's own: a
// device that writes what it plays to a file. (ALSA reads its configuration once a process.)
TEST(PlatformTest, ToneOnTheDefaultDevice) {
    EXPECT_FALSE(platform::PlayTone(0, 100) || platform::PlayTone(700, 0) || platform::PlayTone(700, 60000));
    QTemporaryDir dir;
    const QString config = dir.path() + "/alsa.conf", played = dir.path() + "/tone.raw";
    writeFile(config, "pcm.!default { type file slave.pcm \"sink\" file \"" + played.toUtf8() +
                          "\" format \"raw\" }\npcm.sink { type null }\n");
    qputenv("ALSA_CONFIG_PATH", config.toUtf8());
    ASSERT_TRUE(platform::PlayTone(700, 100));
    const QByteArray bytes = readFile(played);
    ASSERT_EQ(bytes.size(), 2205 * 2);  // 100 ms of 16-bit mono at 22,050 Hz
    const auto* samples = reinterpret_cast<const int16_t*>(bytes.constData());
    int crossings = 0, peak = 0;
    for (int i = 1; i < 2205; ++i) {
        crossings += (samples[i - 1] < 0) != (samples[i] < 0);
        peak = std::max(peak, std::abs(int(samples[i])));
    }
    EXPECT_NEAR(crossings, 140, 2);  // 700 Hz: 70 periods, two crossings each
    EXPECT_TRUE(peak > 8900 && peak <= 9000) << peak;
    EXPECT_EQ(samples[0], 0);  // faded in: no click
    EXPECT_LT(std::abs(int(samples[2204])), 300);  // and out
    qunsetenv("ALSA_CONFIG_PATH");
}

}  // namespace
