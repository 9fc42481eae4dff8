#pragma once
// General helpers over the program's own windows.
#include <QString>

class QWidget;

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
