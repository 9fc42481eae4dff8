#pragma once
// What the program asks of the desktop: windows, the display and sound. Only the files in this
// folder include X11 or Windows headers. Folders and processes, which need no display, are in
// platform/system.h (included here for the windows' convenience).
#include "platform/system.h"

#include <QRect>
#include <QString>
#include <cstdint>
#include <functional>
#include <optional>

namespace platform {

using WindowId = uint64_t;  // 0: no window

// First top-level window whose title contains part, compared without regard to case; an empty
// part finds nothing. Titles are cut at 255 characters.
WindowId FindWindowByTitlePart(const QString& part);

// Top-level window whose title is exactly title.
WindowId FindWindowByTitle(const QString& title);

// Brings the top-level window titled exactly title to the front and gives it the keyboard
// focus, restoring it when it is minimised: the window is raised and activated, wait(200) is
// called, the window is restored to its normal state, and wait(500) is called. wait is where the
// caller's windows go on painting. The window (the first of that title), or 0 when there is none.
WindowId ActivateWindowByTitle(const QString& title, const std::function<void(int ms)>& wait);

// The top-level window that has the keyboard focus, 0 for none (or none of ours to know).
WindowId FocusedWindow();

// Presses and releases F7 as if on the keyboard, for whichever window has the focus. False when
// keys cannot be sent (no display, no XTest extension).
bool SendKeyF7();

// Outer rectangle of a window on the screen, in pixels.
std::optional<QRect> WindowRect(WindowId window);

// Whether the program's windows can be shown. platformName and displayName are Qt's window
// options as given on the command line ("-platform", "-display"), "" when not given; otherwise
// QT_QPA_PLATFORM and DISPLAY count. When not, *why (if given) says what is missing.
// Linux: only the X11 plugin ("xcb", Qt's default here) is checked, by opening the X display;
// other plugins (offscreen, wayland, ...) are left to Qt. A display that opens stays connected
// until the program ends. Windows: always true.
bool DisplayAvailable(const QString& platformName, const QString& displayName, QString* why);

// Plays a tone of hz for ms milliseconds and returns when it has sounded; false (and silence)
// where there is no sound device.
bool PlayTone(int hz, int ms);

}  // namespace platform
