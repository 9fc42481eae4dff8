#pragma once
// The command-line front end over the same core as the program.
#include <QStringList>

// True when the arguments name a command-line use (a subcommand, --help or --version).
bool IsCliInvocation(const QStringList& args);

// Runs it; the exit status. Output goes to stdout, errors to stderr.
int RunCli(const QStringList& args);
