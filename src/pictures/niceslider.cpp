#include "pictures/niceslider.h"

#include <QMouseEvent>
#include <QPainter>

namespace {

constexpr int kHeight = 19;
constexpr int kCapWidth = 7;
constexpr int kKnobWidth = 11;
constexpr int kColourTop = 6, kColourBottom = 12;  // the recoloured rows of the fill columns
const QColor kBorderDark(60, 60, 60);
const QColor kBorderLight(170, 170, 170);

QImage transparent(int width) {
    QImage image(width, kHeight, QImage::Format_ARGB32);
    image.fill(Qt::transparent);
    return image;
}

// A fill column: the track's border above and below the coloured rows.
QImage fillColumn(QColor colour) {
    QImage column = transparent(1);
    column.setPixelColor(0, kColourTop - 1, kBorderDark);
    for (int y = kColourTop; y <= kColourBottom; ++y) column.setPixelColor(0, y, colour);
    column.setPixelColor(0, kColourBottom + 1, kBorderLight);
    return column;
}

// An end cap: the track's rounded end, open towards the track.
QImage cap(bool leftEnd) {
    QImage image = transparent(kCapWidth);
    QPainter p(&image);
    p.setRenderHint(QPainter::Antialiasing);
    p.setPen(QPen(kBorderDark, 1));
    p.setBrush(QColor(110, 110, 110));
    const QRectF end(leftEnd ? 1.5 : -kCapWidth + 0.5, kColourTop - 1.5, 2.0 * kCapWidth - 2, kColourBottom - kColourTop + 3);
    p.drawRoundedRect(end, 4, 4);
    return image;
}

QImage knob() {
    QImage image = transparent(kKnobWidth);
    QPainter p(&image);
    p.setRenderHint(QPainter::Antialiasing);
    QLinearGradient shade(0, 0, kKnobWidth, 0);
    shade.setColorAt(0, QColor(235, 235, 235));
    shade.setColorAt(1, QColor(150, 150, 150));
    p.setPen(QPen(kBorderDark, 1));
    p.setBrush(shade);
    p.drawRoundedRect(QRectF(0.5, 0.5, kKnobWidth - 1, kHeight - 1), 3, 3);
    p.setPen(QPen(QColor(90, 90, 90), 1));
    for (int x : {3, 5, 7}) p.drawLine(QPointF(x + 0.5, 6), QPointF(x + 0.5, 12));
    return image;
}

}  // namespace

NiceSlider::NiceSlider(QWidget* parent)
    : QWidget(parent), left_(cap(true)), right_(cap(false)), handle_(knob()),
      fullFill_(fillColumn(model_.foreColor())), emptyFill_(fillColumn(model_.backColor())) {
    setFixedHeight(left_.height());
    setMinimumWidth(left_.width() + right_.width() + handle_.width());
}

QSize NiceSlider::sizeHint() const { return {150, left_.height()}; }
QSize NiceSlider::minimumSizeHint() const { return {left_.width() + right_.width() + handle_.width(), left_.height()}; }

void NiceSlider::changed() {
    update();
    emit Change();
}

void NiceSlider::setBackColor(QColor colour) {
    model_.setBackColor(colour);
    for (int y = kColourTop; y <= kColourBottom; ++y) emptyFill_.setPixelColor(0, y, colour);
    changed();
}

void NiceSlider::setForeColor(QColor colour) {
    model_.setForeColor(colour);
    for (int y = kColourTop; y <= kColourBottom; ++y) fullFill_.setPixelColor(0, y, colour);
    changed();
}

void NiceSlider::setValue(int16_t value) {
    model_.setValue(value);
    changed();
}

void NiceSlider::setMax(int16_t max) {
    model_.setMax(max);
    changed();
}

void NiceSlider::setMin(int16_t min) {
    model_.setMin(min);
    changed();
}

void NiceSlider::ReadProperties(const QVariantMap& saved) {
    model_.readProperties(saved, [this](SliderModel::Setter setter) {
        // The colour columns follow the model's colours.
        if (setter == SliderModel::Setter::BackColor) return setBackColor(model_.backColor());
        if (setter == SliderModel::Setter::ForeColor) return setForeColor(model_.foreColor());
        changed();
    });
}

int NiceSlider::track() const {
    return SliderModel::trackLength(width(), left_.width(), right_.width(), handle_.width());
}

int NiceSlider::knobLeft() const { return model_.knobLeft(left_.width(), track()); }

void NiceSlider::paintEvent(QPaintEvent*) {
    QPainter p(this);
    const int knobAt = knobLeft();
    const int centre = knobAt + handle_.width() / 2 + 1;
    const int rightAt = width() - right_.width();
    p.drawImage(QPoint(0, 0), left_);
    // The one-pixel columns stretched over the track, each side of the knob's centre.
    if (centre > left_.width()) p.drawImage(QRect(left_.width(), 0, centre - left_.width(), height()), fullFill_);
    if (rightAt > centre) p.drawImage(QRect(centre, 0, rightAt - centre, height()), emptyFill_);
    p.drawImage(QPoint(rightAt, 0), right_);
    p.drawImage(QPoint(knobAt, 0), handle_);
}

void NiceSlider::resizeEvent(QResizeEvent*) { update(); }

void NiceSlider::mousePressEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton) return;
    const int x = qRound(event->position().x());
    const int knobAt = knobLeft();
    // Held where it was taken; a press beside the knob takes it by its middle.
    grabOffset_ = x >= knobAt && x < knobAt + handle_.width() ? x - knobAt : handle_.width() / 2;
    mouseMoveEvent(event);
}

void NiceSlider::mouseMoveEvent(QMouseEvent* event) {
    if (!(event->buttons() & Qt::LeftButton)) return;
    const double x = event->position().x() - grabOffset_ - left_.width();
    model_.setValue(model_.valueAt(x, track()));
    changed();
}

void NiceSlider::mouseReleaseEvent(QMouseEvent* event) {
    if (event->button() == Qt::LeftButton && rect().contains(event->position().toPoint())) emit Click();
}
