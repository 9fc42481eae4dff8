#include "platform/platform.h"
#include "testutil.h"

#include <QDir>
#include <QProcess>
#include <QThread>
#include <QTemporaryDir>
#include <gtest/gtest.h>

namespace {

// A child process started with the given program and argv[0], ended when the test ends.
struct Child : QProcess {
    Child(const QString& program, const QStringList& args, const QProcessEnvironment& env = QProcessEnvironment::systemEnvironment()) {
        setProcessEnvironment(env);
        start(program, args);
        waitForStarted();
    }
    ~Child() override { kill(), waitForFinished(); }
};

TEST(PlatformTest, FindProgPathByProgramFile) {
    QTemporaryDir dir;
    QDir().mkpath(dir.path() + "/bin dir");
    const QString exe = dir.path() + "/bin dir/Pictaro.exe";
    ASSERT_TRUE(QFile::copy("/bin/sleep", exe));
    EXPECT_EQ(platform::FindProgPath("Pictaro.exe"), "");
    Child child(exe, {"30"});
    EXPECT_EQ(platform::FindProgPath("Pictaro.exe"), dir.path() + "/bin dir/");
    EXPECT_EQ(platform::FindProgPath("pictaro.exe"), "") << "the search is case-sensitive";
    EXPECT_EQ(platform::FindProgPath(""), "");
}

// Wine shows the Windows path of the program as the command line; the drive is found through
// the prefix named by the process's own WINEPREFIX.
TEST(PlatformTest, FindProgPathUnderWineMapsTheWindowsPath) {
    QTemporaryDir prefix;
    QDir().mkpath(prefix.path() + "/drive_c/Program Files/Pictaro");
    QDir().mkpath(prefix.path() + "/dosdevices");
    QFile::link("../drive_c", prefix.path() + "/dosdevices/c:");
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.insert("WINEPREFIX", prefix.path());
    Child child("/bin/bash", {"-c", "exec -a 'C:\\Program Files\\Pictaro\\Pictaro.exe' sleep 30"}, env);
    QThread::msleep(100);  // until bash has replaced itself
    EXPECT_EQ(platform::FindProgPath("Pictaro.exe"), prefix.path() + "/drive_c/Program Files/Pictaro/");
}

TEST(PlatformTest, AppDataFolderFollowsXdg) {
    const QByteArray saved = qgetenv("XDG_DATA_HOME");
    qputenv("XDG_DATA_HOME", "/tmp/xdg-data");
    EXPECT_EQ(platform::GetAppDataFolder(), "/tmp/xdg-data");
    qputenv("XDG_DATA_HOME", "relative/ignored");
    EXPECT_EQ(platform::GetAppDataFolder(), QDir::homePath() + "/.local/share");
    qputenv("XDG_DATA_HOME", saved);
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
    testutil::writeFile(config, "pcm.!default { type file slave.pcm \"sink\" file \"" + played.toUtf8() +
                          "\" format \"raw\" }\npcm.sink { type null }\n");
    qputenv("ALSA_CONFIG_PATH", config.toUtf8());
    ASSERT_TRUE(platform::PlayTone(700, 100));
    const QByteArray bytes = testutil::readFile(played);
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
