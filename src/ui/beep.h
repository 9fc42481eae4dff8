#pragma once
// The program's sounds: the system's message sounds and the short tone of a failed lookup.
#include <functional>

namespace sound {

// The system sound for a message box icon (16 critical, 48 exclamation, 64 information).
void MessageBeep(int type);

// A tone of hz for ms milliseconds.
void Beep(int hz, int ms);

// The tone of a failed lookup.
inline constexpr int kFailureToneHz = 700;
inline constexpr int kFailureToneMs = 100;
inline void FailureBeep() { Beep(kFailureToneHz, kFailureToneMs); }

// Tests listen here instead of to the speaker: kind 0 for MessageBeep(type) with hz = type,
// kind 1 for Beep(hz, ms). An empty listener restores the real sounds.
using Listener = std::function<void(int kind, int hz, int ms)>;
void SetListener(Listener listener);

}  // namespace sound
