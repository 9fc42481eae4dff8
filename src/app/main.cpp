#include "app/datafolder.h"
#include "app/form1.h"
#include "app/singleinstance.h"
#include "cli/cli.h"
#include "cli/clipictaro.h"
#include "cli/windowcommands.h"
#include "platform/platform.h"
#include "ui/unimsgbox.h"

#include <QApplication>
#include <QCoreApplication>
#include <QIcon>
#include <QTimer>
#include <QWindow>

#include <cstdio>

namespace {

// For the start-up benchmark: with PX_QUIT_WHEN_SHOWN set, the program says "shown" on standard
// output as soon as its window is on the screen, and ends (exit, not quit: the main window refuses
// to close). The benchmark times the line, so that the ending is not counted.
void QuitWhenExposedIfAsked(QWidget* window) {
    if (!qEnvironmentVariableIsSet("PX_QUIT_WHEN_SHOWN")) return;
    auto* poll = new QTimer(window);
    QObject::connect(poll, &QTimer::timeout, window, [window] {
        if (!window->windowHandle() || !window->windowHandle()->isExposed()) return;
        std::fputs("shown\n", stdout);
        std::fflush(stdout);
        QCoreApplication::exit(0);
    });
    poll->start(1);
}

// The sizes that title bars and window switchers use. Every size of a window icon is decoded and
// handed to the X server as the window opens; launchers take the larger ones from the theme.
constexpr int kLargestWindowIcon = 64;

QIcon ProgramIcon() {
    QIcon icon;
    for (const IconFile& file : ProgramIconFiles(QCoreApplication::applicationDirPath(), QStringLiteral(PX_APP_ID)))
        if (file.size <= kLargestWindowIcon) icon.addFile(file.path, QSize(file.size, file.size));
    return icon;
}

}  // namespace

int main(int argc, char* argv[]) {
    QStringList args;
    for (int i = 0; i < argc; ++i) args.append(QString::fromLocal8Bit(argv[i]));
    if (IsPictaroCommand(args)) {
        // The desktop's own clipboard and windows: the real display, not the offscreen one.
        QString why;
        if (!platform::DisplayAvailable(QString(), QString(), &why)) {
            std::fprintf(stderr, "pxcallsigns: no display: %s\n", qPrintable(why));
            return 1;
        }
        QGuiApplication app(argc, argv);
        return RunPictaroCommand(args);
    }
    if (IsWindowCommand(args)) {
        qputenv("QT_QPA_PLATFORM", kWindowCommandPlatform);
        QApplication app(argc, argv);
        return RunWindowCommand(args);
    }
    if (IsCliInvocation(args)) {
        QCoreApplication app(argc, argv);
        return RunCli(args);
    }
    // Qt would abort without a display; say so and end instead.
    QString why;
    if (!platform::DisplayAvailable(WindowOption(args, QStringLiteral("platform")), WindowOption(args, QStringLiteral("display")),
                                    &why)) {
        std::fprintf(stderr, "pxcallsigns: no display: %s (see pxcallsigns --help for the commands)\n", qPrintable(why));
        return 1;
    }

    QApplication app(argc, argv);
    QApplication::setApplicationName(QStringLiteral("PX Callsigns"));
    // The desktop entry, and the window icon from the bitmaps that ship with the program. Named
    // by their files rather than looked up in the icon theme, whose lookup first parses the
    // theme's whole index (about 5 ms); the icon is then found in the build tree too.
    QGuiApplication::setDesktopFileName(QStringLiteral(PX_APP_ID));
    QApplication::setWindowIcon(ProgramIcon());
    // Closing the main window from its title bar hides it; the program ends through Unload.
    QApplication::setQuitOnLastWindowClosed(false);

    // One copy per user and data folder: a second start brings the running one to the front.
    const QString dataPath = UserDataFolder();
    SingleInstance instance(dataPath);
    if (instance.role() == SingleInstance::Role::OtherRaised) return 0;
    if (instance.role() == SingleInstance::Role::OtherSilent) {
        std::fprintf(stderr, "pxcallsigns: another copy runs on %s but does not answer\n", qPrintable(dataPath));
        return 1;
    }

    // First run: the data folder comes from the default one that ships with the program.
    if (const Status seeded = SeedUserDataFolder(); !seeded)
        ShowUniMsgBox(nullptr, seeded.message(), msgbox::kIconExclamation, QStringLiteral("PX Callsigns"), QStringLiteral("OK"));

    ModuleValues values;
    Form1 form(values);
    if (!form.Form_Load()) return 1;
    QObject::connect(&instance, &SingleInstance::activationRequested, &form, [&form] {
        form.showNormal();
        form.raise();
        form.activateWindow();
    });
    QuitWhenExposedIfAsked(&form);
    form.show();
    return app.exec();
}
