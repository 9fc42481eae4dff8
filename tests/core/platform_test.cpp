#include "platform/system.h"
#include "testutil.h"

#include <QCoreApplication>
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

// A program name that no other process has: the search looks at every process of the machine,
// and the tests run side by side (each of these two starts a program of its own).
QString uniqueProgramName(const char* test) {
    return QStringLiteral("Pictaro-%1-%2.exe").arg(QLatin1String(test)).arg(QCoreApplication::applicationPid());
}

TEST(PlatformTest, FindProgPathByProgramFile) {
    const QString name = uniqueProgramName("file");
    QTemporaryDir dir;
    QDir().mkpath(dir.path() + "/bin dir");
    const QString exe = dir.path() + "/bin dir/" + name;
    ASSERT_TRUE(QFile::copy("/bin/sleep", exe));
    EXPECT_EQ(platform::FindProgPath(name), "");
    Child child(exe, {"30"});
    EXPECT_EQ(platform::FindProgPath(name), dir.path() + "/bin dir/");
    EXPECT_EQ(platform::FindProgPath(name.toLower()), "") << "the search is case-sensitive";
    EXPECT_EQ(platform::FindProgPath(""), "");
}

// Wine shows the Windows path of the program as the command line; the drive is found through
// the prefix named by the process's own WINEPREFIX.
TEST(PlatformTest, FindProgPathUnderWineMapsTheWindowsPath) {
    const QString name = uniqueProgramName("wine");
    QTemporaryDir prefix;
    QDir().mkpath(prefix.path() + "/drive_c/Program Files/Pictaro");
    QDir().mkpath(prefix.path() + "/dosdevices");
    QFile::link("../drive_c", prefix.path() + "/dosdevices/c:");
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.insert("WINEPREFIX", prefix.path());
    Child child("/bin/bash", {"-c", "exec -a 'C:\\Program Files\\Pictaro\\" + name + "' sleep 30"}, env);
    QThread::msleep(100);  // until bash has replaced itself
    EXPECT_EQ(platform::FindProgPath(name), prefix.path() + "/drive_c/Program Files/Pictaro/");
}

TEST(PlatformTest, AppDataFolderFollowsXdg) {
    const QByteArray saved = qgetenv("XDG_DATA_HOME");
    qputenv("XDG_DATA_HOME", "/tmp/xdg-data");
    EXPECT_EQ(platform::GetAppDataFolder(), "/tmp/xdg-data");
    qputenv("XDG_DATA_HOME", "relative/ignored");
    EXPECT_EQ(platform::GetAppDataFolder(), QDir::homePath() + "/.local/share");
    qputenv("XDG_DATA_HOME", saved);
}

}  // namespace
