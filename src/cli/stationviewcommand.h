#pragma once
// station-view URL --capture OUT.png [--size WxH] [--timings]: the page in the station view,
// captured with the window's own capture.
#include "cli/cliargs.h"

#include <QSize>

// "WxH" with both from 64 to 4096; nullopt-like empty size when the text is no such size.
QSize ParseCaptureSize(const QString& text);

int RunStationViewCommand(const CliArgs& args);
