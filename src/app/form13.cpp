#include "app/form13.h"

#include "ui/windowhelpers.h"

#include <QCursor>

Form13::Form13(const QPixmap& picture, QWidget* parent) : QLabel(parent, Qt::Window) {
    setObjectName(QStringLiteral("Form13"));
    setAttribute(Qt::WA_DeleteOnClose);
    setWindowTitle(QStringLiteral("PX Callsigns"));
    setPixmap(picture);
    setFixedSize(picture.size());
    SetTopMost(this, true);
}

void Form13::ShowCentredOn(QPoint centre) {
    PlaceWindowCentred(this, QRect(centre, QSize(1, 1)));
    show();
    QCursor::setPos(geometry().center());
}
