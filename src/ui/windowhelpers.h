#pragma once
// General helpers over the program's own windows.
#include <QList>
#include <QMargins>
#include <QObject>
#include <QPoint>
#include <QRect>
#include <QString>
#include <optional>

class QLabel;
class QWidget;

// A label named name on parent that shows its text as plain text: texts come from web pages
// and files and are never read as markup.
QLabel* MakePlainLabel(QWidget* parent, const char* name);

// Keeps the window above all others (true) or releases it, without moving or sizing it.
void SetTopMost(QWidget* window, bool topMost);

struct MenuFont {
    QString faceName;
    bool bold = false;
    bool italic = false;
    float pointSize = 0;  // whole points
};
// The desktop's menu font; nullopt-like empty face when the desktop reports none.
MenuFont GetMenuFont();

// How many of the program's windows carry this name (case-insensitive); "" counts them all.
int CountLoadedWindows(const QString& name);

// True when the mouse pointer is inside the window's outer rectangle, edges included.
bool IsCursorOver(const QWidget* window);

// ---------------------------------------------------------------------------------------------
// Windows wholly on a screen, frame (title bar and borders) included.

// The rectangle brought inside area: an edge that sticks out is moved back to the area's edge.
// A rectangle wider (higher) than the area gets the area's left (top) edge and width (height),
// so that the title bar and the top-left corner always stay reachable. An empty area changes
// nothing.
QRect ClampToArea(const QRect& frame, const QRect& area);

// Which of the areas holds the largest part of frame; when none holds any of it (the screen it
// was on has gone), the one whose centre lies nearest frame's centre. -1 when there are none.
int AreaIndexFor(const QRect& frame, const QList<QRect>& areas);

// The frame clamped to the area of the screen it is mostly on (ClampToArea, AreaIndexFor).
QRect FitOnScreens(const QRect& frame, const QList<QRect>& areas);

// Where a frame of this size goes beside another window's frame (owner) so that it covers none
// of it: below it, else above it, else to its right, else to its left, each lined up with the
// owner's left (top) edge and kept inside area; where none of these fits, centred over the owner
// and clamped to the area.
QRect BesideRect(QSize frame, const QRect& owner, const QRect& area);

// What the screens leave free for windows (QScreen::availableGeometry), in the screens' order.
QList<QRect> AvailableAreas();

// What the screen at a point leaves free for windows; the primary screen's where no screen holds
// the point, and an empty rectangle when there is no screen at all.
QRect AvailableAreaAt(QPoint point);

// The window's frame margins as far as they are known: its own once the window manager has framed
// it; before that those of another shown window of the program (one manager frames them alike);
// none where nothing is framed.
QMargins KnownFrameMargins(const QWidget* window);

// Puts the window's frame (its size plus the known margins) at frameTopLeft, moved in so that it
// lies wholly on a screen, and keeps it there once shown (ScreenKeeper).
void PlaceWindow(QWidget* window, QPoint frameTopLeft);
// The same, with the frame centred over a rectangle of the screen (another window's frame).
void PlaceWindowCentred(QWidget* window, const QRect& over);
// The same, beside another window (BesideRect) on the screen that window is mostly on.
void PlaceWindowBeside(QWidget* window, const QWidget* owner);

// Watches one window: from each time it is shown until the window manager has framed it (its
// frame margins are known), the frame is moved back wholly inside an available area wherever it
// has been put, and frameKnown tells the margins once. Without a window manager the margins stay
// unknown and the window is kept inside for as long as it lives.
class ScreenKeeper : public QObject {
    Q_OBJECT

public:
    // The window's keeper, made on first use (a child of the window).
    static ScreenKeeper* of(QWidget* window);

    // Moves the window inside now, when needed.
    void check();
    // Where the window's frame is meant to go (PlaceWindow): once the frame is known, the window
    // is placed from there again with the frame's real size.
    void setWanted(QPoint frameTopLeft) { wanted_ = frameTopLeft; }

signals:
    void frameKnown(QMargins margins);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    explicit ScreenKeeper(QWidget* window);
    QWidget* window_;
    bool armed_ = false;
    bool announced_ = false;
    std::optional<QPoint> wanted_;
};

// The wait pointer of one window's pending work: shown by set(true), gone again by set(false) or
// when the owner goes, however often either is called.
class BusyPointer {
public:
    BusyPointer() = default;
    BusyPointer(const BusyPointer&) = delete;
    BusyPointer& operator=(const BusyPointer&) = delete;
    ~BusyPointer() { set(false); }
    void set(bool busy);
    bool isSet() const { return busy_; }

private:
    bool busy_ = false;
};
