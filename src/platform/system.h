#pragma once
// What the program asks of the operating system that needs no display: the user's folders and
// the running processes. Its library links Qt Core alone, so the command line and the core tests
// use it without X11 or sound.
#include <QString>

namespace platform {

// The current user's roaming application-data folder ("" when it cannot be had).
// Linux: $XDG_DATA_HOME, else ~/.local/share.
QString GetAppDataFolder();

// Where Pictaro is installed when nothing better is known, ending in a separator.
// Linux: the same folder inside the default Wine prefix.
QString DefaultPictaroInstall();

// Folder (ending in a separator) of the first running process whose program path contains name
// (case-sensitive), "" when none does. A program running under Wine shows its Windows path in
// its command line; that path is mapped to the Linux folder through the Wine prefix.
QString FindProgPath(const QString& name);

}  // namespace platform
