#include "cli/clioutput.h"

#include <cstdio>

QTextStream& CliOut() {
    static QTextStream s(stdout);
    return s;
}

QTextStream& CliErr() {
    static QTextStream s(stderr);
    return s;
}

int CliUsageError(const QString& message) {
    CliErr() << "pxcallsigns: " << message << "\nTry 'pxcallsigns --help'.\n";
    CliErr().flush();
    return 2;
}

int CliFailure(const QString& message) {
    CliErr() << "pxcallsigns: " << message << "\n";
    CliErr().flush();
    return 1;
}
