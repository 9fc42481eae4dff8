#include "pictures/slidermodel.h"

#include "common/vbtext.h"

#include <algorithm>

void SliderModel::setValue(int16_t value) { value_ = std::clamp(value, min_, max_); }

void SliderModel::setMax(int16_t max) {
    // Min is below Max, so Min + 1 always fits.
    max_ = max > min_ ? max : static_cast<int16_t>(min_ + 1);
    if (value_ > max_) value_ = max_;
}

void SliderModel::setMin(int16_t min) {
    min_ = min < max_ ? min : static_cast<int16_t>(max_ - 1);
    if (value_ < min_) value_ = min_;
}

int SliderModel::trackLength(int width, int leftWidth, int rightWidth, int knobWidth) {
    return std::max(0, width - leftWidth - rightWidth - knobWidth);
}

int SliderModel::knobLeft(int leftWidth, int track) const {
    const double share = double(value_ - min_) / double(max_ - min_);
    return leftWidth + vb::toInt32(share * track).value_or(0);
}

int16_t SliderModel::valueAt(double x, int track) const {
    if (track <= 0) return value_;
    const double steps = x / track * (max_ - min_);
    // Far outside the track the steps may not fit a whole number at all: an end it is.
    const std::optional<int32_t> rounded = vb::toInt32(steps);
    const int64_t v = rounded ? int64_t(min_) + *rounded : (steps < 0 ? min_ : max_);
    return static_cast<int16_t>(std::clamp<int64_t>(v, min_, max_));
}

QVariantMap SliderModel::properties() const {
    return {{QStringLiteral("Value"), int(value_)},
            {QStringLiteral("Max"), int(max_)},
            {QStringLiteral("Min"), int(min_)},
            {QStringLiteral("BackColor"), colourNumber(back_)},
            {QStringLiteral("ForeColor"), colourNumber(fore_)}};
}

int16_t SliderModel::savedInt16(const QVariant& v, int16_t fallback) {
    bool ok = false;
    const double number = v.toDouble(&ok);
    if (!v.isValid() || !ok) return fallback;
    return vb::toInt16(number).value_or(fallback);
}
