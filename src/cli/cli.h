#pragma once
// The command-line front end over the same core as the program.
#include "cli/cliargs.h"

#include <QStringList>

// Runs it (args[0] is the program); the exit status. Output goes to stdout, errors to stderr.
int RunCli(const QStringList& args);
