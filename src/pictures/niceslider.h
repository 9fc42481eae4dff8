#pragma once
// A horizontal slider drawn from five pictures: two end caps, the knob, and one-pixel fill
// columns for the track left and right of the knob, stretched across it. Rows 6 to 12 of the
// fill columns take the fore and back colours; their other rows are the track's border.
#include "pictures/slidermodel.h"

#include <QImage>
#include <QWidget>

class NiceSlider : public QWidget {
    Q_OBJECT

public:
    explicit NiceSlider(QWidget* parent = nullptr);

    // Every setter redraws and raises Change, the colour setters included.
    void setBackColor(QColor colour);
    QColor BackColor() const { return model_.backColor(); }
    void setForeColor(QColor colour);
    QColor ForeColor() const { return model_.foreColor(); }
    void setValue(int16_t value);
    int16_t value() const { return model_.value(); }
    void setMax(int16_t max);
    int16_t Max() const { return model_.max(); }
    void setMin(int16_t min);
    int16_t Min() const { return model_.min(); }

    // The saved properties, read through the setters in their start-up order, and written back.
    void ReadProperties(const QVariantMap& saved);
    QVariantMap WriteProperties() const { return model_.properties(); }

    // The pictures the control is drawn from.
    const QImage& PicLeft() const { return left_; }
    const QImage& PicRight() const { return right_; }
    const QImage& PicHandle() const { return handle_; }
    const QImage& PicFullFill() const { return fullFill_; }
    const QImage& PicEmptyFill() const { return emptyFill_; }

    // Where the knob's left edge stands, in pixels from the control's left edge.
    int knobLeft() const;

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

signals:
    void Change();
    void Click();

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;

private:
    void changed();
    int track() const;

    SliderModel model_;
    QImage left_, right_, handle_, fullFill_, emptyFill_;
    int grabOffset_ = 0;  // where in the knob the pointer holds it
};
