#include "ui/beep.h"

#include "platform/platform.h"

#include <QApplication>

namespace sound {
namespace {
Listener& listener() {
    static Listener l;
    return l;
}
}  // namespace

void SetListener(Listener l) { listener() = std::move(l); }

void MessageBeep(int type) {
    if (listener()) return listener()(0, type, 0);
    QApplication::beep();
}

void Beep(int hz, int ms) {
    if (listener()) return listener()(1, hz, ms);
    // Without a sound device the desktop's bell is the nearest thing to a tone.
    if (!platform::PlayTone(hz, ms)) QApplication::beep();
}

}  // namespace sound
