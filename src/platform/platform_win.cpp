// Windows: the top-level window list and the beep (folders and processes: system_win.cpp).
#include "platform/platform.h"

#include <windows.h>

namespace platform {

namespace {
struct Search {
    QString text;
    bool exact;
    HWND found = nullptr;
};

BOOL CALLBACK visit(HWND window, LPARAM param) {
    auto* search = reinterpret_cast<Search*>(param);
    wchar_t title[256] = {};
    GetWindowTextW(window, title, 256);
    const QString t = QString::fromWCharArray(title);
    const bool match = search->exact ? t == search->text : t.contains(search->text, Qt::CaseInsensitive);
    if (!match) return TRUE;
    search->found = window;
    return FALSE;
}

WindowId find(const QString& text, bool exact) {
    Search search{text, exact};
    EnumWindows(visit, reinterpret_cast<LPARAM>(&search));
    return reinterpret_cast<WindowId>(search.found);
}
}  // namespace

WindowId FindWindowByTitlePart(const QString& part) { return part.isEmpty() ? 0 : find(part, false); }

WindowId FindWindowByTitle(const QString& title) { return find(title, true); }

WindowId ActivateWindowByTitle(const QString& title, const std::function<void(int ms)>& wait) {
    const WindowId found = FindWindowByTitle(title);
    if (!found) return 0;
    const HWND window = reinterpret_cast<HWND>(found);
    WINDOWPLACEMENT placement{};
    placement.length = sizeof(placement);
    GetWindowPlacement(window, &placement);
    placement.showCmd = SW_SHOWNORMAL;
    SetForegroundWindow(window);
    wait(200);
    SetWindowPlacement(window, &placement);  // restores a minimised window
    wait(500);
    return found;
}

WindowId FocusedWindow() { return reinterpret_cast<WindowId>(GetForegroundWindow()); }

bool SendKeyF7() {
    INPUT keys[2] = {};
    keys[0].type = keys[1].type = INPUT_KEYBOARD;
    keys[0].ki.wVk = keys[1].ki.wVk = VK_F7;
    keys[1].ki.dwFlags = KEYEVENTF_KEYUP;
    return SendInput(2, keys, sizeof(INPUT)) == 2;
}

std::optional<QRect> WindowRect(WindowId window) {
    RECT r{};
    if (!window || !GetWindowRect(reinterpret_cast<HWND>(window), &r)) return std::nullopt;
    return QRect(r.left, r.top, r.right - r.left, r.bottom - r.top);
}

// Windows always has its desktop.
bool DisplayAvailable(const QString&, const QString&, QString*) { return true; }

bool PlayTone(int hz, int ms) { return hz >= 37 && hz <= 32767 && ms > 0 && ::Beep(hz, ms); }

}  // namespace platform
