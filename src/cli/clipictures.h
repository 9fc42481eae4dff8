#pragma once
// The picture commands of the command line that need no display: "picture jpeg".
#include "cli/cliargs.h"

// picture jpeg IN OUT [--quality N]: the exit status (0 written, 1 failed, 2 bad arguments).
int RunPictureCommand(const CliArgs& args);
