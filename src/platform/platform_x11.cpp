// Linux with X11: /proc for processes, Xlib with the EWMH properties for windows.
#include "platform/platform.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QStandardPaths>
#include <algorithm>
#include <memory>
#include <vector>

#include <X11/Xatom.h>
#include <X11/Xlib.h>
#include <X11/Xutil.h>

namespace platform {

QString GetAppDataFolder() {
    const QByteArray xdg = qgetenv("XDG_DATA_HOME");
    if (!xdg.isEmpty() && QDir::isAbsolutePath(QString::fromLocal8Bit(xdg))) return QString::fromLocal8Bit(xdg);
    const QString home = QDir::homePath();
    return home.isEmpty() ? QString() : home + QStringLiteral("/.local/share");
}

namespace {

QString winePrefixOf(const QByteArray& environ) {
    QString prefix;
    QString home;
    for (const QByteArray& entry : environ.split('\0')) {
        if (entry.startsWith("WINEPREFIX=")) prefix = QString::fromLocal8Bit(entry.mid(11));
        else if (entry.startsWith("HOME=")) home = QString::fromLocal8Bit(entry.mid(5));
    }
    if (!prefix.isEmpty()) return prefix;
    if (home.isEmpty()) home = QDir::homePath();
    return home + QStringLiteral("/.wine");
}

// "C:\Program Files\Pictaro\Pictaro.exe" -> the Linux path through the prefix's drive links.
QString mapWindowsPath(const QString& path, const QString& prefix) {
    if (path.size() < 3 || !path[0].isLetter() || path[1] != u':' || path[2] != u'\\') return {};
    const QString drive = path.left(2).toLower();
    QString root = QFileInfo(prefix + QStringLiteral("/dosdevices/") + drive).canonicalFilePath();
    if (root.isEmpty() && drive == QLatin1String("c:")) root = prefix + QStringLiteral("/drive_c");
    if (root.isEmpty()) return {};
    return root + QString(path.mid(2)).replace(u'\\', u'/');
}

QString folderOf(const QString& path) {
    const qsizetype slash = path.lastIndexOf(u'/');
    return slash < 0 ? QString() : path.left(slash + 1);
}

}  // namespace

QString DefaultPictaroInstall() {
    QString prefix = QString::fromLocal8Bit(qgetenv("WINEPREFIX"));
    if (prefix.isEmpty()) prefix = QDir::homePath() + QStringLiteral("/.wine");
    return prefix + QStringLiteral("/drive_c/Program Files/Pictaro/");
}

QString FindProgPath(const QString& name) {
    if (name.isEmpty()) return {};
    QDir proc(QStringLiteral("/proc"));
    std::vector<long> pids;
    for (const QString& entry : proc.entryList(QDir::Dirs | QDir::NoDotAndDotDot)) {
        bool ok = false;
        const long pid = entry.toLong(&ok);
        if (ok) pids.push_back(pid);
    }
    std::sort(pids.begin(), pids.end());
    for (const long pid : pids) {
        const QString dir = QStringLiteral("/proc/") + QString::number(pid);
        const QString exe = QFile::symLinkTarget(dir + QStringLiteral("/exe"));
        if (!exe.isEmpty() && exe.contains(name, Qt::CaseSensitive)) return folderOf(exe);
        QFile cmdline(dir + QStringLiteral("/cmdline"));
        if (!cmdline.open(QIODevice::ReadOnly)) continue;
        for (const QByteArray& arg : cmdline.readAll().split('\0')) {
            const QString text = QString::fromLocal8Bit(arg);
            if (!text.contains(name, Qt::CaseSensitive)) continue;
            if (text.startsWith(u'/')) return folderOf(text);
            QFile environ(dir + QStringLiteral("/environ"));
            const QByteArray env = environ.open(QIODevice::ReadOnly) ? environ.readAll() : QByteArray();
            const QString mapped = mapWindowsPath(text, winePrefixOf(env));
            if (!mapped.isEmpty()) return folderOf(mapped);
        }
    }
    return {};
}

namespace {

struct DisplayCloser {
    void operator()(Display* d) const { XCloseDisplay(d); }
};
using DisplayPtr = std::unique_ptr<Display, DisplayCloser>;

DisplayPtr openDisplay() {
    // Without an X server (no DISPLAY) there are no windows to find.
    if (qgetenv("DISPLAY").isEmpty()) return nullptr;
    return DisplayPtr(XOpenDisplay(nullptr));
}

std::vector<Window> topLevelWindows(Display* d) {
    std::vector<Window> result;
    const Window root = DefaultRootWindow(d);
    Atom type = None;
    int format = 0;
    unsigned long count = 0, after = 0;
    unsigned char* data = nullptr;
    const Atom clientList = XInternAtom(d, "_NET_CLIENT_LIST", True);
    if (clientList != None &&
        XGetWindowProperty(d, root, clientList, 0, 1 << 16, False, XA_WINDOW, &type, &format, &count, &after,
                           &data) == Success &&
        data && type == XA_WINDOW && format == 32 && count > 0) {
        const auto* windows = reinterpret_cast<const Window*>(data);
        result.assign(windows, windows + count);
    } else {
        Window rootReturn = 0, parent = 0;
        Window* children = nullptr;
        unsigned int n = 0;
        if (XQueryTree(d, root, &rootReturn, &parent, &children, &n) && children) {
            result.assign(children, children + n);
            XFree(children);
        }
    }
    if (data) XFree(data);
    return result;
}

QString windowTitle(Display* d, Window w) {
    QString title;
    const Atom netName = XInternAtom(d, "_NET_WM_NAME", True);
    const Atom utf8 = XInternAtom(d, "UTF8_STRING", True);
    Atom type = None;
    int format = 0;
    unsigned long count = 0, after = 0;
    unsigned char* data = nullptr;
    if (netName != None && utf8 != None &&
        XGetWindowProperty(d, w, netName, 0, 1024, False, utf8, &type, &format, &count, &after, &data) == Success &&
        data && type == utf8 && format == 8) {
        title = QString::fromUtf8(reinterpret_cast<const char*>(data), static_cast<qsizetype>(count));
    } else {
        char* name = nullptr;
        if (XFetchName(d, w, &name) && name) {
            title = QString::fromLocal8Bit(name);
            XFree(name);
        }
    }
    if (data) XFree(data);
    const qsizetype nul = title.indexOf(QChar(0));
    if (nul >= 0) title.truncate(nul);
    return title.left(255);
}

int errorHandler(Display*, XErrorEvent*) { return 0; }  // a window that vanished is not an error here

// Xlib's own error handler ends the process; windows may vanish while we look at them.
class QuietErrors {
public:
    explicit QuietErrors(Display* d) : d_(d), previous_(XSetErrorHandler(errorHandler)) {}
    ~QuietErrors() {
        XSync(d_, False);
        XSetErrorHandler(previous_);
    }

private:
    Display* d_;
    int (*previous_)(Display*, XErrorEvent*);
};

template <typename Match>
WindowId findWindow(Match match) {
    DisplayPtr d = openDisplay();
    if (!d) return 0;
    QuietErrors quiet(d.get());
    for (const Window w : topLevelWindows(d.get()))
        if (match(windowTitle(d.get(), w))) return static_cast<WindowId>(w);
    return 0;
}

}  // namespace

WindowId FindWindowByTitlePart(const QString& part) {
    if (part.isEmpty()) return 0;
    return findWindow([&](const QString& title) { return title.contains(part, Qt::CaseInsensitive); });
}

WindowId FindWindowByTitle(const QString& title) {
    return findWindow([&](const QString& t) { return t == title; });
}

std::optional<QRect> WindowRect(WindowId window) {
    DisplayPtr d = openDisplay();
    if (!d || !window) return std::nullopt;
    QuietErrors quiet(d.get());
    XWindowAttributes attrs{};
    std::optional<QRect> rect;
    Window child = 0;
    int x = 0, y = 0;
    const Window w = static_cast<Window>(window);
    if (XGetWindowAttributes(d.get(), w, &attrs) &&
        XTranslateCoordinates(d.get(), w, DefaultRootWindow(d.get()), 0, 0, &x, &y, &child)) {
        // The outer rectangle includes the frame that the window manager drew around the window.
        long left = 0, right = 0, top = 0, bottom = 0;
        const Atom extents = XInternAtom(d.get(), "_NET_FRAME_EXTENTS", True);
        Atom type = None;
        int format = 0;
        unsigned long count = 0, after = 0;
        unsigned char* data = nullptr;
        if (extents != None &&
            XGetWindowProperty(d.get(), w, extents, 0, 4, False, XA_CARDINAL, &type, &format, &count, &after,
                               &data) == Success &&
            data && count == 4) {
            const auto* v = reinterpret_cast<const long*>(data);
            left = v[0], right = v[1], top = v[2], bottom = v[3];
        }
        if (data) XFree(data);
        rect = QRect(x - static_cast<int>(left), y - static_cast<int>(top),
                     attrs.width + static_cast<int>(left + right), attrs.height + static_cast<int>(top + bottom));
    }
    return rect;
}

bool DisplayAvailable(const QString& platformName, const QString& displayName, QString* why) {
    // "xcb:option=value" names its plugin before the colon; a list ("wayland;xcb") is Qt's to try.
    const QString plugin =
        (platformName.isEmpty() ? qEnvironmentVariable("QT_QPA_PLATFORM") : platformName).section(u':', 0, 0).trimmed();
    if (!plugin.isEmpty() && plugin != QLatin1String("xcb")) return true;
    const QString name = displayName.isEmpty() ? qEnvironmentVariable("DISPLAY") : displayName;
    if (name.isEmpty()) {
        if (why) *why = QStringLiteral("DISPLAY is not set");
        return false;
    }
    DisplayPtr display(XOpenDisplay(name.toLocal8Bit().constData()));
    if (!display) {
        if (why) *why = QStringLiteral("cannot open the X display ") + name;
        return false;
    }
    // Kept open until the program ends: an X server that resets itself when its last client
    // leaves (Xvfb does, taking tens of milliseconds) would otherwise do so right before Qt connects.
    static DisplayPtr kept;
    kept = std::move(display);
    return true;
}

}  // namespace platform
