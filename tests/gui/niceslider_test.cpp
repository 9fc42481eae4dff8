// The picture-drawn slider: its value rules, the saved properties and their order, dragging,
// and the pixels of the track on either side of the knob.
#include "pictures/niceslider.h"

#include <QApplication>
#include <QMouseEvent>
#include <QSignalSpy>
#include <QtTest>
#include <functional>

namespace {

struct Bounds {
    int value, min, max;
    bool operator==(const Bounds&) const = default;
};
Bounds boundsOf(const NiceSlider& s) { return {s.value(), s.Min(), s.Max()}; }

void drag(NiceSlider& s, Qt::MouseButton button, QEvent::Type type, QPointF at) {
    QMouseEvent event(type, at, s.mapToGlobal(at), button, type == QEvent::MouseButtonRelease ? Qt::NoButton : Qt::LeftButton,
                      Qt::NoModifier);
    QApplication::sendEvent(&s, &event);
}

}  // namespace

class NiceSliderTest : public QObject {
    Q_OBJECT

private slots:
    void boundsKeepEachOther() {
        struct Case {
            const char* what;
            std::function<void(NiceSlider&)> steps;
            Bounds after;
            int changes;
        };
        const Case cases[] = {
            {"start", [](NiceSlider&) {}, {5, 0, 10}, 0},
            {"value clamped to the bounds", [](NiceSlider& s) { s.setValue(11); }, {10, 0, 10}, 1},
            {"value below Min", [](NiceSlider& s) { s.setValue(-3); }, {0, 0, 10}, 1},
            {"Min at Max gives Max - 1", [](NiceSlider& s) { s.setMin(10); }, {9, 9, 10}, 1},
            {"Max below Min gives Min + 1 and pulls Value down",
             [](NiceSlider& s) {
                 s.setMin(5);
                 s.setValue(8);
                 s.setMax(2);
             },
             {6, 5, 6}, 3},
            {"the ends of the 16-bit range",
             [](NiceSlider& s) {
                 s.setMax(32767);
                 s.setMin(32767);
                 s.setValue(-32768);
             },
             {32766, 32766, 32767}, 3},
            {"a colour is a change too", [](NiceSlider& s) { s.setForeColor(Qt::red); }, {5, 0, 10}, 1},
        };
        for (const Case& c : cases) {
            NiceSlider slider;
            QSignalSpy changes(&slider, &NiceSlider::Change);
            c.steps(slider);
            QVERIFY2(boundsOf(slider) == c.after, c.what);
            QVERIFY2(changes.count() == c.changes, c.what);
        }
    }

    void savedPropertiesInTheirStartOrder() {
        struct Case {
            const char* what;
            QVariantMap saved;
            Bounds after;
        };
        const Case cases[] = {
            {"nothing saved", {}, {5, 0, 10}},
            {"Value is clamped before the saved Max applies", {{"Value", 50}, {"Max", 100}}, {10, 0, 100}},
            {"a saved Min above the default Value pulls it up", {{"Value", 2}, {"Min", 4}}, {4, 4, 10}},
            {"numbers that are no 16-bit numbers are left at their defaults",
             {{"Value", "seven"}, {"Max", 70000}, {"Min", QVariant()}}, {5, 0, 10}},
        };
        for (const Case& c : cases) {
            NiceSlider slider;
            QSignalSpy changes(&slider, &NiceSlider::Change);
            slider.ReadProperties(c.saved);
            QVERIFY2(boundsOf(slider) == c.after, c.what);
            QCOMPARE(changes.count(), 5);
        }
        NiceSlider slider;
        slider.ReadProperties({{"BackColor", 255}, {"ForeColor", 0xFF0000}});  // red, then blue
        QCOMPARE(slider.BackColor(), QColor(255, 0, 0));
        QCOMPARE(slider.ForeColor(), QColor(0, 0, 255));
        slider.setValue(3);
        const QVariantMap written{{"Value", 3}, {"Max", 10}, {"Min", 0}, {"BackColor", 255}, {"ForeColor", 0xFF0000}};
        QCOMPARE(slider.WriteProperties(), written);
        QCOMPARE(NiceSlider().WriteProperties().value("ForeColor"), QVariant(200 + 200 * 256));
    }

    void dragsToTheEndsAndBetween() {
        NiceSlider slider;
        slider.resize(150, 19);
        const int leftWidth = slider.PicLeft().width();
        const int knobWidth = slider.PicHandle().width();
        const int track = 150 - leftWidth - slider.PicRight().width() - knobWidth;
        QCOMPARE(track, 125);
        QCOMPARE(slider.knobLeft(), leftWidth + 62);  // half of 125 pixels: a half goes to the even one
        QSignalSpy changes(&slider, &NiceSlider::Change);
        QSignalSpy clicks(&slider, &NiceSlider::Click);

        // Taken by the knob's left edge: the value follows that edge.
        const QPointF knob(slider.knobLeft() + 1, 9);
        drag(slider, Qt::LeftButton, QEvent::MouseButtonPress, knob);
        QCOMPARE(slider.value(), 5);
        struct Step { double x; int value; };
        for (const Step& s : {Step{1 + leftWidth + track * 0.31, 3}, Step{1 + leftWidth + track * 0.36, 4},
                              Step{1.0 + leftWidth + track, 10}, Step{10000, 10}, Step{-10000, 0}, Step{0, 0}}) {
            drag(slider, Qt::NoButton, QEvent::MouseMove, QPointF(s.x, 9));
            QCOMPARE(slider.value(), s.value);
        }
        drag(slider, Qt::LeftButton, QEvent::MouseButtonRelease, QPointF(0, 9));
        QCOMPARE(clicks.count(), 1);
        QCOMPARE(changes.count(), 7);  // the press and every move
        QCOMPARE(slider.knobLeft(), leftWidth);
    }

    void trackColoursEachSideOfTheKnob() {
        NiceSlider slider;
        slider.resize(150, 19);
        slider.setValue(5);
        QImage shot = slider.grab().toImage();
        const int left = slider.PicLeft().width() + 2;
        const int right = 150 - slider.PicRight().width() - 2;
        for (int row = 6; row <= 12; ++row) {
            QCOMPARE(shot.pixelColor(left, row), QColor(200, 200, 0));
            QCOMPARE(shot.pixelColor(right, row), QColor(Qt::black));
        }
        const QColor border = shot.pixelColor(left, 5);
        slider.setBackColor(QColor(0, 0, 255));
        slider.setForeColor(QColor(0, 128, 0));
        shot = slider.grab().toImage();
        QCOMPARE(shot.pixelColor(left, 9), QColor(0, 128, 0));
        QCOMPARE(shot.pixelColor(right, 9), QColor(0, 0, 255));
        QCOMPARE(shot.pixelColor(left, 5), border);  // only rows 6 to 12 take the colour
        QCOMPARE(slider.PicEmptyFill().pixelColor(0, 13), slider.PicFullFill().pixelColor(0, 13));
    }

    void sizeFollowsThePictures() {
        NiceSlider slider;
        slider.show();
        slider.resize(3, 60);
        QCOMPARE(slider.size(), QSize(slider.PicLeft().width() + slider.PicRight().width() + slider.PicHandle().width(),
                                      slider.PicLeft().height()));
        QVERIFY(slider.PicFullFill().height() >= 13);
    }
};

int main(int argc, char** argv) {
    if (qEnvironmentVariableIsEmpty("DISPLAY")) qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    NiceSliderTest test;
    return QTest::qExec(&test, argc, argv);
}
#include "niceslider_test.moc"
