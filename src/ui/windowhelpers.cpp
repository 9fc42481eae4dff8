#include "ui/windowhelpers.h"

#include <QApplication>
#include <QCursor>
#include <QWidget>
#include <cmath>

void SetTopMost(QWidget* window, bool topMost) {
    const bool visible = window->isVisible();
    const QRect geometry = window->geometry();
    window->setWindowFlag(Qt::WindowStaysOnTopHint, topMost);
    // Changing a window flag re-creates the native window hidden; put it back as it was.
    window->setGeometry(geometry);
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

void BusyPointer::set(bool busy) {
    if (busy == busy_) return;
    busy_ = busy;
    if (busy) QApplication::setOverrideCursor(Qt::WaitCursor);
    else QApplication::restoreOverrideCursor();
}
