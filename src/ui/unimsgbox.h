#pragma once
// The program's own modal message box: one of four icons, a prompt of one or more lines (CR LF
// between them), a title and one to three buttons whose captions the caller gives. The buttons
// give fixed results whatever their captions: cmd1 7, cmd2 6, cmd3 2.
#include <QDialog>
#include <QString>

#include <QMargins>
#include <QSize>

// The icon part of the buttons argument, and the results the three buttons give.
namespace msgbox {
inline constexpr int kNoIcon = 0;
inline constexpr int kIconCritical = 16;
inline constexpr int kIconQuestion = 32;
inline constexpr int kIconExclamation = 48;
inline constexpr int kIconInformation = 64;
inline constexpr int kResultCmd1 = 7;
inline constexpr int kResultCmd2 = 6;
inline constexpr int kResultCmd3 = 2;
}  // namespace msgbox

class QLabel;
class QPushButton;
class QWidget;

class UniMsgBox : public QDialog {
    Q_OBJECT

public:
    // The prompt label is this wide, or as wide as its longest line where that is wider (as far as
    // the screen allows).
    static constexpr int kPromptWidth = 300;

    explicit UniMsgBox(QWidget* parent = nullptr);

    // Lays the box out (icon, beep, prompt, buttons, position) without showing it. buttons: the
    // low four bits are the style, the rest the icon (16, 32, 48 or 64). The box is centred over
    // owner (over the screen without one) unless left and top are both non-zero (pixels).
    void Prepare(QWidget* owner, const QString& prompt, int buttons, const QString& title, const QString& caption1,
                 const QString& caption2 = {}, const QString& caption3 = {}, const QString& extra = {},
                 int left = 0, int top = 0);

    // 7, 6 or 2 for the button pressed; 0 when the box was closed without a button.
    int result() const { return result_; }

    // The box's outer size, frame included: the prompt's size + 145 wide and + 160 high.
    QSize outerSize() const { return outer_; }
    // Sizes the inside so that, with a frame of these margins, the box is outerSize(); the strip
    // along the bottom and its buttons follow the inside. Prepare uses the margins known so far;
    // the window manager's own come once the box is shown.
    void fitFrame(QMargins margins);

    QLabel *imgCritical, *imgQuestion, *imgExclamation, *imgInformation;
    QLabel* lblPrompt;
    QWidget* pic1;
    QPushButton *cmd1, *cmd2, *cmd3;

private:
    struct ButtonGeometry {
        int offset, top, width, height;
    };
    void layOutButtons();

    int result_ = 0;
    int style_ = 0;
    ButtonGeometry buttons_{80, 30, 70, 30};
    QSize outer_;
};

// Shows the box modally and returns the number of the button pressed (see UniMsgBox::result).
// extra is accepted for the callers that pass it and not used.
int ShowUniMsgBox(QWidget* owner, const QString& prompt, int buttons, const QString& title, const QString& caption1,
                  const QString& caption2 = {}, const QString& caption3 = {}, const QString& extra = {},
                  int left = 0, int top = 0);

// Left of the rightmost button slot of the last box shown.
int UniMsgBoxRightSlot();
