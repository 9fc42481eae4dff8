#pragma once
// The rules of the picture-drawn slider, apart from any window: the value and its bounds, where
// the knob stands, what a drag makes of the value, and the saved properties.
#include <QColor>
#include <QVariantMap>
#include <cstdint>

class SliderModel {
public:
    // Each setter applies its rule; the widget redraws and raises Change after every one.
    void setValue(int16_t value);  // clamped to Min..Max
    void setMax(int16_t max);      // at least Min + 1; pulls Value down with it
    void setMin(int16_t min);      // at most Max - 1; pulls Value up with it
    void setBackColor(QColor c) { back_ = c; }
    void setForeColor(QColor c) { fore_ = c; }

    int16_t value() const { return value_; }
    int16_t max() const { return max_; }
    int16_t min() const { return min_; }
    QColor backColor() const { return back_; }
    QColor foreColor() const { return fore_; }

    // The room the knob travels: the width less both caps and the knob.
    static int trackLength(int width, int leftWidth, int rightWidth, int knobWidth);
    // The knob's left edge: leftWidth + (Value - Min) / (Max - Min) of the track, to the nearest
    // pixel.
    int knobLeft(int leftWidth, int track) const;
    // The value for a knob whose left edge is x pixels into the track: Min + x / track of the
    // range, rounded to the nearest whole number (halves to even) and kept within Min..Max.
    int16_t valueAt(double x, int track) const;

    // The saved properties ("Value", "Max", "Min", "BackColor", "ForeColor"; colours as
    // red + 256 green + 65536 blue). Reading applies them through the setters in that order,
    // missing ones at their defaults, so a saved Value is clamped to the bounds in force before
    // the saved ones.
    QVariantMap properties() const;
    // The setters in the order they were applied, for the widget to redraw and report after each.
    enum class Setter { Value, Max, Min, BackColor, ForeColor };
    template <typename Each>
    void readProperties(const QVariantMap& saved, Each each);

    static int colourNumber(QColor c) { return c.red() + 256 * c.green() + 65536 * c.blue(); }
    static QColor colourOf(qint64 number) {
        return QColor(int(number & 0xFF), int((number >> 8) & 0xFF), int((number >> 16) & 0xFF));
    }
    static int16_t savedInt16(const QVariant& v, int16_t fallback);

private:
    int16_t value_ = 5;
    int16_t max_ = 10;
    int16_t min_ = 0;
    QColor back_ = Qt::black;
    QColor fore_ = QColor(200, 200, 0);
};

template <typename Each>
void SliderModel::readProperties(const QVariantMap& saved, Each each) {
    setValue(savedInt16(saved.value(QStringLiteral("Value")), 5));
    each(Setter::Value);
    setMax(savedInt16(saved.value(QStringLiteral("Max")), 10));
    each(Setter::Max);
    setMin(savedInt16(saved.value(QStringLiteral("Min")), 0));
    each(Setter::Min);
    setBackColor(colourOf(saved.value(QStringLiteral("BackColor"), 0).toLongLong()));
    each(Setter::BackColor);
    setForeColor(colourOf(saved.value(QStringLiteral("ForeColor"), colourNumber(QColor(200, 200, 0))).toLongLong()));
    each(Setter::ForeColor);
}
