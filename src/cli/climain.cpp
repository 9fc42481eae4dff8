// The command-line tool on its own, without the windows: what the sanitizer build makes of
// pxcallsigns. Any other use is refused with a pointer to --help.
#include "cli/cli.h"

#include <QCoreApplication>
#include <QStringList>

#include <cstdio>

int main(int argc, char* argv[]) {
    QStringList args;
    for (int i = 0; i < argc; ++i) args.append(QString::fromLocal8Bit(argv[i]));
    if (!IsCliInvocation(args)) {
        std::fputs("pxcallsigns: this build has the command line only (see --help)\n", stderr);
        return 2;
    }
    QCoreApplication app(argc, argv);
    return RunCli(args);
}
