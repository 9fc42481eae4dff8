#pragma once
// The station picture on its own, at its natural size; a click anywhere closes it.
#include <QLabel>
#include <QPixmap>

class Form13 : public QLabel {
    Q_OBJECT

public:
    explicit Form13(const QPixmap& picture, QWidget* parent = nullptr);

protected:
    void mousePressEvent(QMouseEvent*) override { close(); }
};
