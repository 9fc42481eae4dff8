#pragma once
// Where every command of the command line writes: one stream for stdout and one for stderr, so
// that messages from different commands never interleave out of order, and the two ways a
// command ends with a message.
#include <QString>
#include <QTextStream>

QTextStream& CliOut();
QTextStream& CliErr();

// "pxcallsigns: message" and the hint to --help on stderr; exit status 2.
int CliUsageError(const QString& message);

// "pxcallsigns: message" on stderr; exit status 1.
int CliFailure(const QString& message);
