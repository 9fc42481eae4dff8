#pragma once
// The program's own pop-up menu: a small frameless window of captions that opens at a label and
// calls back with the chosen item's number. It does not take the mouse: the window that opens
// it closes it again once the mouse has left it (see Form1's tmrMenus).
#include <QList>
#include <QString>
#include <QWidget>
#include <functional>

struct MenuItem {
    int number;  // what the callback receives
    QString caption;
};

class PopupMenu : public QWidget {
    Q_OBJECT

public:
    PopupMenu(QList<MenuItem> items, std::function<void(int)> chosen, QWidget* parent = nullptr);

    const QList<MenuItem>& items() const { return items_; }
    // Row under a point in the menu's own coordinates, -1 for none.
    int rowAt(QPoint p) const;
    QRect rowRect(int row) const;

protected:
    void paintEvent(QPaintEvent*) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void leaveEvent(QEvent*) override;

private:
    QList<MenuItem> items_;
    std::function<void(int)> chosen_;
    int hover_ = -1;
    int rowHeight_ = 0;
};

// Builds the menu window "frmMenu" of the captions and shows it with its top-left corner at
// `at` (screen pixels), kept on the screen.
PopupMenu* MakeMenu(const QList<MenuItem>& items, QPoint at, std::function<void(int)> chosen, QWidget* owner);
