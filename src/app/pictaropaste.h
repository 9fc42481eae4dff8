#pragma once
// Handing a picture to Pictaro: the picture onto the clipboard, Pictaro's window to the front,
// and F7, which Pictaro takes as "paste the clipboard into the transmit picture". The steps and
// their pauses are here; what they do on the desktop is passed in, so tests run them without one.
#include "platform/platform.h"

#include <QImage>
#include <QString>
#include <functional>

class QClipboard;

inline constexpr const char* kPictaroTitle = "Pictaro";

struct PictaroDesktop {
    std::function<bool(const QImage&)> putPicture;  // empties the clipboard and puts the picture on it
    std::function<platform::WindowId(const QString& title, const std::function<void(int)>& wait)> activate;
    std::function<platform::WindowId()> focusedWindow;
    std::function<bool()> sendF7;
    std::function<void(int ms)> wait;
};

enum class PasteOutcome {
    KeySent,         // F7 went to Pictaro's window
    NoPictaro,       // no window titled Pictaro: the picture is on the clipboard, no key sent
    FocusElsewhere,  // Pictaro's window did not have the focus when the key was due: no key sent
    NoKeyboard,      // keys cannot be sent on this desktop
    NoPicture,       // nothing to hand over (or the clipboard refused it)
};

// The clipboard, Pictaro's window activated (pausing 0.2 s and 0.5 s inside), 0.5 s, then F7 when
// the window that has the focus is Pictaro's; in every case 0.5 s more before returning.
PasteOutcome PasteToPictaro(const QImage& picture, const PictaroDesktop& desktop);

// The desktop of this session: the clipboard given, the platform's window calls, and pauses
// during which the program's windows go on painting but take no input.
PictaroDesktop SessionDesktop(QClipboard* clipboard);

// Lets the event loop run for ms milliseconds without user input (painting, the clipboard's
// requests from other programs).
void WaitKeepingWindowsPainted(int ms);
