// The yardstick of the start-up benchmark: an empty Qt Widgets window of the main window's size,
// started and ended the same way (PX_QUIT_WHEN_SHOWN: "shown" on standard output, then the end).
#include <QApplication>
#include <QWidget>
#include <QTimer>
#include <QWindow>

#include <cstdio>

int main(int argc, char** argv) {
    QApplication app(argc, argv);
    QWidget window;
    window.resize(350, 180);
    window.show();
    QTimer poll;
    if (qEnvironmentVariableIsSet("PX_QUIT_WHEN_SHOWN")) {
        QObject::connect(&poll, &QTimer::timeout, &window, [&window] {
            if (!window.windowHandle() || !window.windowHandle()->isExposed()) return;
            std::fputs("shown\n", stdout);
            std::fflush(stdout);
            QCoreApplication::exit(0);
        });
        poll.start(1);
    }
    return app.exec();
}
