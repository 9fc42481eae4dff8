#include "ui/popupmenu.h"

#include "ui/windowhelpers.h"

#include <QApplication>
#include <QGuiApplication>
#include <QMouseEvent>
#include <QPainter>
#include <QScreen>

namespace {
constexpr int kPadX = 12;
constexpr int kPadY = 4;
}  // namespace

PopupMenu::PopupMenu(QList<MenuItem> items, std::function<void(int)> chosen, QWidget* parent)
    : QWidget(parent, Qt::Tool | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint | Qt::WindowDoesNotAcceptFocus),
      items_(std::move(items)), chosen_(std::move(chosen)) {
    setObjectName(QStringLiteral("frmMenu"));
    setAttribute(Qt::WA_ShowWithoutActivating);
    setAttribute(Qt::WA_DeleteOnClose);
    setMouseTracking(true);
    setFont(QApplication::font("QMenu"));
    const QFontMetrics fm(font());
    rowHeight_ = fm.height() + 2 * kPadY;
    int width = 0;
    for (const MenuItem& item : items_) width = std::max(width, fm.horizontalAdvance(item.caption));
    setFixedSize(width + 2 * kPadX, rowHeight_ * static_cast<int>(items_.size()) + 2);
}

int PopupMenu::rowAt(QPoint p) const {
    if (!rect().contains(p)) return -1;
    const int row = (p.y() - 1) / rowHeight_;
    return row >= 0 && row < items_.size() ? row : -1;
}

QRect PopupMenu::rowRect(int row) const { return QRect(1, 1 + row * rowHeight_, width() - 2, rowHeight_); }

void PopupMenu::paintEvent(QPaintEvent*) {
    QPainter p(this);
    const QPalette pal = palette();
    p.fillRect(rect(), pal.color(QPalette::Base));
    p.setPen(pal.color(QPalette::Mid));
    p.drawRect(rect().adjusted(0, 0, -1, -1));
    for (int row = 0; row < items_.size(); ++row) {
        const QRect r = rowRect(row);
        if (row == hover_) p.fillRect(r, pal.color(QPalette::Highlight));
        p.setPen(pal.color(row == hover_ ? QPalette::HighlightedText : QPalette::Text));
        p.drawText(r.adjusted(kPadX - 1, 0, 0, 0), Qt::AlignVCenter | Qt::AlignLeft, items_[row].caption);
    }
}

void PopupMenu::mouseMoveEvent(QMouseEvent* event) {
    const int row = rowAt(event->position().toPoint());
    if (row != hover_) {
        hover_ = row;
        update();
    }
}

void PopupMenu::mouseReleaseEvent(QMouseEvent* event) {
    const int row = rowAt(event->position().toPoint());
    if (row < 0 || event->button() != Qt::LeftButton) return;
    const int number = items_[row].number;
    auto chosen = chosen_;
    close();
    if (chosen) chosen(number);
}

void PopupMenu::leaveEvent(QEvent*) {
    hover_ = -1;
    update();
}

PopupMenu* MakeMenu(const QList<MenuItem>& items, QPoint at, std::function<void(int)> chosen, QWidget* owner) {
    auto* menu = new PopupMenu(items, std::move(chosen), owner);
    if (const QRect area = AvailableAreaAt(at); !area.isEmpty()) {
        at.setX(std::clamp(at.x(), area.left(), std::max(area.left(), area.right() + 1 - menu->width())));
        at.setY(std::clamp(at.y(), area.top(), std::max(area.top(), area.bottom() + 1 - menu->height())));
    }
    menu->move(at);
    menu->show();
    return menu;
}
