// Linux with X11: Xlib with the EWMH properties for windows (folders and processes: system_linux.cpp).
#include "platform/platform.h"

#include <algorithm>
#include <memory>
#include <vector>

#include <X11/Xatom.h>
#include <X11/Xlib.h>
#include <X11/Xutil.h>
#include <X11/extensions/XTest.h>
#include <X11/keysym.h>

#include <QElapsedTimer>

namespace platform {

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

Atom atom(Display* d, const char* name) { return XInternAtom(d, name, False); }

// A window manager that follows the desktop conventions announces itself on the root window.
bool hasWindowManager(Display* d) {
    Atom type = None;
    int format = 0;
    unsigned long count = 0, after = 0;
    unsigned char* data = nullptr;
    const bool found = XGetWindowProperty(d, DefaultRootWindow(d), atom(d, "_NET_SUPPORTING_WM_CHECK"), 0, 1, False,
                                          XA_WINDOW, &type, &format, &count, &after, &data) == Success &&
                       data && count == 1;
    if (data) XFree(data);
    return found;
}

Window activeWindow(Display* d) {
    Atom type = None;
    int format = 0;
    unsigned long count = 0, after = 0;
    unsigned char* data = nullptr;
    Window w = 0;
    if (XGetWindowProperty(d, DefaultRootWindow(d), atom(d, "_NET_ACTIVE_WINDOW"), 0, 1, False, XA_WINDOW, &type, &format,
                           &count, &after, &data) == Success &&
        data && count == 1)
        w = *reinterpret_cast<const Window*>(data);
    if (data) XFree(data);
    return w;
}

void sendToRoot(Display* d, Window w, Atom message, long a0, long a1, long a2) {
    XEvent e{};
    e.xclient.type = ClientMessage;
    e.xclient.window = w;
    e.xclient.message_type = message;
    e.xclient.format = 32;
    e.xclient.data.l[0] = a0;
    e.xclient.data.l[1] = a1;
    e.xclient.data.l[2] = a2;
    XSendEvent(d, DefaultRootWindow(d), False, SubstructureRedirectMask | SubstructureNotifyMask, &e);
}

// Raises the window and gives it the focus: through the window manager where there is one (an
// activation request from a pager-like source, which managers honour, and which restores a
// minimised window), else directly.
void bringToFront(Display* d, Window w, bool managed) {
    if (managed) {
        sendToRoot(d, w, atom(d, "_NET_ACTIVE_WINDOW"), 2, CurrentTime, 0);
    } else {
        XMapRaised(d, w);
        XSync(d, False);
        XSetInputFocus(d, w, RevertToParent, CurrentTime);
    }
    XSync(d, False);
}

// Takes the window out of the minimised state: mapped again, its hidden state removed.
void restore(Display* d, Window w, bool managed) {
    if (managed) {
        const Atom state = atom(d, "_NET_WM_STATE");
        sendToRoot(d, w, state, 0 /* remove */, static_cast<long>(atom(d, "_NET_WM_STATE_HIDDEN")), 0);
    }
    XMapRaised(d, w);
    XSync(d, False);
}

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

WindowId ActivateWindowByTitle(const QString& title, const std::function<void(int ms)>& wait) {
    const WindowId found = FindWindowByTitle(title);
    if (!found) return 0;
    DisplayPtr d = openDisplay();
    if (!d) return 0;
    const Window w = static_cast<Window>(found);
    {
        QuietErrors quiet(d.get());
        bringToFront(d.get(), w, hasWindowManager(d.get()));
    }
    wait(200);
    {
        QuietErrors quiet(d.get());
        const bool managed = hasWindowManager(d.get());
        restore(d.get(), w, managed);
        if (managed && activeWindow(d.get()) != w) bringToFront(d.get(), w, true);  // a slow manager: ask once more
        if (!managed) XSetInputFocus(d.get(), w, RevertToParent, CurrentTime);
    }
    wait(500);
    return found;
}

WindowId FocusedWindow() {
    DisplayPtr d = openDisplay();
    if (!d) return 0;
    QuietErrors quiet(d.get());
    if (hasWindowManager(d.get())) return static_cast<WindowId>(activeWindow(d.get()));
    // Without a manager the focus may sit on a child window: walk up to the top-level one.
    Window focus = 0;
    int revert = 0;
    XGetInputFocus(d.get(), &focus, &revert);
    const std::vector<Window> tops = topLevelWindows(d.get());
    const Window root = DefaultRootWindow(d.get());
    while (focus && focus != PointerRoot && focus != root) {
        if (std::find(tops.begin(), tops.end(), focus) != tops.end()) return static_cast<WindowId>(focus);
        Window rootReturn = 0, parent = 0;
        Window* children = nullptr;
        unsigned int n = 0;
        if (!XQueryTree(d.get(), focus, &rootReturn, &parent, &children, &n)) return 0;
        if (children) XFree(children);
        focus = parent;
    }
    return 0;
}

bool SendKeyF7() {
    DisplayPtr d = openDisplay();
    if (!d) return false;
    int event = 0, error = 0, major = 0, minor = 0;
    if (!XTestQueryExtension(d.get(), &event, &error, &major, &minor)) return false;
    const KeyCode key = XKeysymToKeycode(d.get(), XK_F7);
    if (!key) return false;
    XTestFakeKeyEvent(d.get(), key, True, CurrentTime);
    XTestFakeKeyEvent(d.get(), key, False, CurrentTime);
    XSync(d.get(), False);
    return true;
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
