#pragma once
// "pictaro paste IMAGE": the picture handed to Pictaro as the picture menu hands it. It needs
// the desktop's clipboard and windows, so it runs under a GUI application on the real display.
#include <QStringList>

// True when args (args[0] is the program) name this command.
bool IsPictaroCommand(const QStringList& args);

// Runs it: 0 when F7 was sent, 1 when not (no Pictaro window, the focus elsewhere, no picture),
// 2 for bad arguments. Needs a QGuiApplication. It returns once Pictaro has read the clipboard,
// or after a few seconds: the picture lives on the clipboard only while this process owns it.
int RunPictaroCommand(const QStringList& args);
