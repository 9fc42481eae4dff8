#include "ui/windowhelpers.h"

#include <QApplication>
#include <QCursor>
#include <QEvent>
#include <QGuiApplication>
#include <QLabel>
#include <QLayout>
#include <QScreen>
#include <QTimer>
#include <QWidget>
#include <QWindow>
#include <algorithm>
#include <cmath>
#include <limits>

QLabel* MakePlainLabel(QWidget* parent, const char* name) {
    auto* label = new QLabel(parent);
    label->setObjectName(QLatin1String(name));
    label->setTextFormat(Qt::PlainText);
    return label;
}

void SetTopMost(QWidget* window, bool topMost) {
    if (window->windowFlags().testFlag(Qt::WindowStaysOnTopHint) == topMost) return;
    const bool visible = window->isVisible();
    const bool placed = window->testAttribute(Qt::WA_Moved);
    const QPoint frameTopLeft = window->pos();
    const QSize size = window->size();
    window->setWindowFlag(Qt::WindowStaysOnTopHint, topMost);
    // Changing a window flag re-creates the native window hidden: put it back as it was. A window
    // nobody has placed yet stays for the window manager to place; one that was placed goes back
    // by its frame (move), never by its inner rectangle, which would put the title bar where the
    // window's top was.
    if (placed) window->move(frameTopLeft);
    window->resize(size);
    if (visible) window->show();
}

MenuFont GetMenuFont() {
    const QFont font = QApplication::font("QMenu");
    MenuFont result;
    result.faceName = font.family().remove(QChar(0));
    result.bold = font.weight() != QFont::Normal;
    result.italic = font.italic();
    const double points = font.pointSizeF() > 0 ? font.pointSizeF() : font.pixelSize() * 0.75;
    result.pointSize = static_cast<float>(std::nearbyint(points));
    return result;
}

int CountLoadedWindows(const QString& name) {
    int count = 0;
    for (const QWidget* w : QApplication::topLevelWidgets()) {
        if (!w->isWindow() || w->objectName().isEmpty()) continue;
        if (name.isEmpty() || w->objectName().compare(name, Qt::CaseInsensitive) == 0) ++count;
    }
    return count;
}

bool IsCursorOver(const QWidget* window) {
    const QPoint p = QCursor::pos();
    const QRect r = window->frameGeometry();
    return p.x() >= r.left() && p.x() <= r.left() + r.width() && p.y() >= r.top() && p.y() <= r.top() + r.height();
}

// ---------------------------------------------------------------------------------------------
// On the screen

QRect ClampToArea(const QRect& frame, const QRect& area) {
    if (area.isEmpty()) return frame;
    const int width = std::min(frame.width(), area.width());
    const int height = std::min(frame.height(), area.height());
    const int left = std::clamp(frame.left(), area.left(), area.left() + area.width() - width);
    const int top = std::clamp(frame.top(), area.top(), area.top() + area.height() - height);
    return {left, top, width, height};
}

int AreaIndexFor(const QRect& frame, const QList<QRect>& areas) {
    int best = -1;
    qint64 bestShared = 0;
    for (int i = 0; i < areas.size(); ++i) {
        const QRect shared = frame.intersected(areas[i]);
        const qint64 size = shared.isEmpty() ? 0 : qint64(shared.width()) * shared.height();
        if (size > bestShared) {
            best = i;
            bestShared = size;
        }
    }
    if (best >= 0) return best;
    // On none of them: the nearest, by the distance from the frame's centre to each area.
    const QPoint c = frame.center();
    qint64 nearest = std::numeric_limits<qint64>::max();
    for (int i = 0; i < areas.size(); ++i) {
        const QRect& a = areas[i];
        const qint64 dx = std::max({a.left() - c.x(), 0, c.x() - a.right()});
        const qint64 dy = std::max({a.top() - c.y(), 0, c.y() - a.bottom()});
        if (dx * dx + dy * dy < nearest) {
            nearest = dx * dx + dy * dy;
            best = i;
        }
    }
    return best;
}

QRect FitOnScreens(const QRect& frame, const QList<QRect>& areas) {
    const int index = AreaIndexFor(frame, areas);
    return index < 0 ? frame : ClampToArea(frame, areas[index]);
}

QRect BesideRect(QSize frame, const QRect& owner, const QRect& area) {
    const auto along = [&](QPoint at) { return ClampToArea(QRect(at, frame), area); };
    const QRect candidates[] = {along({owner.left(), owner.bottom() + 1}), along({owner.left(), owner.top() - frame.height()}),
                                along({owner.right() + 1, owner.top()}), along({owner.left() - frame.width(), owner.top()})};
    for (const QRect& r : candidates)
        if (r.size() == frame && !r.intersects(owner)) return r;
    return along({owner.left() + (owner.width() - frame.width()) / 2, owner.top() + (owner.height() - frame.height()) / 2});
}

QList<QRect> AvailableAreas() {
    QList<QRect> areas;
    for (const QScreen* screen : QGuiApplication::screens()) areas << screen->availableGeometry();
    return areas;
}

QRect AvailableAreaAt(QPoint point) {
    const QScreen* screen = QGuiApplication::screenAt(point);
    if (!screen) screen = QGuiApplication::primaryScreen();
    return screen ? screen->availableGeometry() : QRect();
}

namespace {

QMargins ownMargins(const QWidget* window) {
    const QWindow* handle = window->windowHandle();
    return handle && window->isVisible() ? handle->frameMargins() : QMargins();
}

}  // namespace

QMargins KnownFrameMargins(const QWidget* window) {
    const QMargins own = ownMargins(window);
    if (!own.isNull() || window->windowFlags().testFlag(Qt::FramelessWindowHint)) return own;
    for (const QWidget* other : QApplication::topLevelWidgets()) {
        if (other == window || other->windowFlags().testFlag(Qt::FramelessWindowHint)) continue;
        const QMargins margins = ownMargins(other);
        if (!margins.isNull()) return margins;
    }
    return {};
}

void PlaceWindow(QWidget* window, QPoint frameTopLeft) {
    window->ensurePolished();
    if (QLayout* layout = window->layout()) layout->activate();
    const QMargins margins = KnownFrameMargins(window);
    const QRect frame(frameTopLeft, window->size().grownBy(margins));
    const QRect fit = FitOnScreens(frame, AvailableAreas());
    if (fit.size() != frame.size()) window->resize(fit.size().shrunkBy(margins));
    // move() places the frame, whatever the window manager puts around the window.
    window->move(fit.topLeft());
    ScreenKeeper::of(window)->setWanted(frameTopLeft);
}

void PlaceWindowCentred(QWidget* window, const QRect& over) {
    window->ensurePolished();
    if (QLayout* layout = window->layout()) layout->activate();
    const QSize frame = window->size().grownBy(KnownFrameMargins(window));
    PlaceWindow(window, QPoint(over.left() + (over.width() - frame.width()) / 2,
                               over.top() + (over.height() - frame.height()) / 2));
}

void PlaceWindowBeside(QWidget* window, const QWidget* owner) {
    window->ensurePolished();
    if (QLayout* layout = window->layout()) layout->activate();
    const QRect over = owner->frameGeometry();
    const QList<QRect> areas = AvailableAreas();
    const int index = AreaIndexFor(over, areas);
    const QSize frame = window->size().grownBy(KnownFrameMargins(window));
    PlaceWindow(window, BesideRect(frame, over, index < 0 ? QRect() : areas[index]).topLeft());
}

ScreenKeeper* ScreenKeeper::of(QWidget* window) {
    if (auto* keeper = window->findChild<ScreenKeeper*>(QString(), Qt::FindDirectChildrenOnly)) return keeper;
    return new ScreenKeeper(window);
}

ScreenKeeper::ScreenKeeper(QWidget* window) : QObject(window), window_(window) {
    armed_ = window->isVisible();
    window->installEventFilter(this);
}

void ScreenKeeper::check() {
    if (!armed_ || !window_->isVisible() || window_->isMinimized() || window_->isMaximized() || window_->isFullScreen())
        return;
    const QMargins margins = ownMargins(window_);
    const bool known = !margins.isNull();
    if (known && !announced_) {
        announced_ = true;
        emit frameKnown(margins);  // the window may change its size for its frame first
    }
    QRect frame = window_->frameGeometry();
    // The first look at the real frame: placed from where it was meant to go, now that the
    // frame's size is known.
    const QRect fit = FitOnScreens(known && wanted_ ? QRect(*wanted_, frame.size()) : frame, AvailableAreas());
    if (known) wanted_.reset();
    if (fit.size() != frame.size()) window_->resize(fit.size().shrunkBy(margins));
    if (fit.topLeft() != frame.topLeft()) window_->move(fit.topLeft());
    // Framed and inside: from here on the window is the user's to move.
    if (known) armed_ = false;
}

bool ScreenKeeper::eventFilter(QObject* watched, QEvent* event) {
    if (watched != window_) return false;
    switch (event->type()) {
    case QEvent::Show:
        armed_ = true;
        announced_ = false;
        // The window manager frames the window after it is mapped: look again once it has.
        QTimer::singleShot(0, this, &ScreenKeeper::check);
        break;
    case QEvent::Move:
    case QEvent::Resize:
    case QEvent::WindowActivate:
    case QEvent::UpdateRequest:
        if (armed_) check();
        break;
    default: break;
    }
    return false;
}

void BusyPointer::set(bool busy) {
    if (busy == busy_) return;
    busy_ = busy;
    if (busy) QApplication::setOverrideCursor(Qt::WaitCursor);
    else QApplication::restoreOverrideCursor();
}
