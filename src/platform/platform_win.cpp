// Windows: the shell's folders, a process snapshot and the top-level window list.
#include "platform/platform.h"

#include <QDir>

#include <windows.h>
#include <psapi.h>
#include <shlobj.h>
#include <tlhelp32.h>

namespace platform {

QString GetAppDataFolder() {
    wchar_t path[MAX_PATH] = {};
    if (FAILED(SHGetFolderPathW(nullptr, CSIDL_APPDATA, nullptr, SHGFP_TYPE_CURRENT, path))) return {};
    return QDir::fromNativeSeparators(QString::fromWCharArray(path));
}

QString DefaultPictaroInstall() { return QStringLiteral("C:/Program Files/Pictaro/"); }

QString FindProgPath(const QString& name) {
    if (name.isEmpty()) return {};
    HANDLE snapshot = CreateToolhelp32Snapshot(TH32CS_SNAPPROCESS, 0);
    if (snapshot == INVALID_HANDLE_VALUE) return {};
    QString result;
    PROCESSENTRY32W entry{};
    entry.dwSize = sizeof(entry);
    for (BOOL more = Process32FirstW(snapshot, &entry); more && result.isEmpty(); more = Process32NextW(snapshot, &entry)) {
        HANDLE process = OpenProcess(PROCESS_QUERY_INFORMATION | PROCESS_VM_READ, FALSE, entry.th32ProcessID);
        if (!process) continue;  // a process that cannot be opened is skipped
        HMODULE module = nullptr;
        DWORD needed = 0;
        wchar_t path[MAX_PATH] = {};
        if (EnumProcessModules(process, &module, sizeof(module), &needed) &&
            GetModuleFileNameExW(process, module, path, MAX_PATH)) {
            const QString full = QDir::fromNativeSeparators(QString::fromWCharArray(path));
            if (full.contains(name, Qt::CaseSensitive)) result = full.left(full.lastIndexOf(u'/') + 1);
        }
        CloseHandle(process);
    }
    CloseHandle(snapshot);
    return result;
}

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

std::optional<QRect> WindowRect(WindowId window) {
    RECT r{};
    if (!window || !GetWindowRect(reinterpret_cast<HWND>(window), &r)) return std::nullopt;
    return QRect(r.left, r.top, r.right - r.left, r.bottom - r.top);
}

// Windows always has its desktop.
bool DisplayAvailable(const QString&, const QString&, QString*) { return true; }

bool PlayTone(int hz, int ms) { return hz >= 37 && hz <= 32767 && ms > 0 && ::Beep(hz, ms); }

}  // namespace platform
