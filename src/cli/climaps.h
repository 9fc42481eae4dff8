#pragma once
// The command line's map commands that need no drawing: which map a position gets and where it
// lands on a map picture. (Drawing a map is a window command, see windowcommands.h.)
#include "cli/cliargs.h"

// map choose LAT LON | map position NAME LAT LON [--json]. The exit status.
int RunMapCommand(const CliArgs& p);
