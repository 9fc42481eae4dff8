#pragma once
// The commands of the command line that draw with the windows' own code (printing a picture).
// They run under a GUI application on Qt's offscreen platform, so they need no display.
#include <QStringList>

// True when args (args[0] is the program) name one of these commands.
bool IsWindowCommand(const QStringList& args);

// Runs it; the exit status (0 done, 1 failed, 2 bad arguments). Needs a QApplication.
int RunWindowCommand(const QStringList& args);

// The platform they run on: Qt's offscreen one (set before the application is made).
inline constexpr const char* kWindowCommandPlatform = "offscreen";
