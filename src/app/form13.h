#pragma once
// The station picture on its own, at its natural size; a click anywhere closes it.
#include <QLabel>
#include <QPixmap>

class Form13 : public QLabel {
    Q_OBJECT

public:
    explicit Form13(const QPixmap& picture, QWidget* parent = nullptr);

    // Shows the window centred on a point of the screen (the mouse pointer), wholly on a screen,
    // and puts the pointer on its centre.
    void ShowCentredOn(QPoint centre);

protected:
    void mousePressEvent(QMouseEvent*) override { close(); }
};
