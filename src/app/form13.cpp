#include "app/form13.h"

#include "ui/windowhelpers.h"

Form13::Form13(const QPixmap& picture, QWidget* parent) : QLabel(parent, Qt::Window) {
    setObjectName(QStringLiteral("Form13"));
    setAttribute(Qt::WA_DeleteOnClose);
    setWindowTitle(QStringLiteral("PX Callsigns"));
    setPixmap(picture);
    setFixedSize(picture.size());
    SetTopMost(this, true);
}
