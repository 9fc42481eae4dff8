// Windows: the shell's folders and a process snapshot.
#include "platform/system.h"

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

}  // namespace platform
