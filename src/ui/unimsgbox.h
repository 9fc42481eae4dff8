#pragma once
// The program's own modal message box: one of four icons, a prompt of one or more lines (CR LF
// between them), a title and one to three buttons whose captions the caller gives. The buttons
// give fixed results whatever their captions: cmd1 7, cmd2 6, cmd3 2.
#include <QDialog>
#include <QString>

class QLabel;
class QPushButton;
class QWidget;

class UniMsgBox : public QDialog {
    Q_OBJECT

public:
    static constexpr int kPromptWidth = 300;  // the prompt label keeps this width

    explicit UniMsgBox(QWidget* parent = nullptr);

    // Lays the box out (icon, beep, prompt, buttons, position) without showing it. buttons: the
    // low four bits are the style, the rest the icon (16, 32, 48 or 64). The box is centred over
    // owner (over the screen without one) unless left and top are both non-zero (pixels).
    void Prepare(QWidget* owner, const QString& prompt, int buttons, const QString& title, const QString& caption1,
                 const QString& caption2 = {}, const QString& caption3 = {}, const QString& extra = {},
                 int left = 0, int top = 0);

    // 7, 6 or 2 for the button pressed; 0 when the box was closed without a button.
    int result() const { return result_; }

    QLabel *imgCritical, *imgQuestion, *imgExclamation, *imgInformation;
    QLabel* lblPrompt;
    QWidget* pic1;
    QPushButton *cmd1, *cmd2, *cmd3;

private:
    int result_ = 0;
};

// Shows the box modally and returns the number of the button pressed (see UniMsgBox::result).
// extra is accepted for the callers that pass it and not used.
int ShowUniMsgBox(QWidget* owner, const QString& prompt, int buttons, const QString& title, const QString& caption1,
                  const QString& caption2 = {}, const QString& caption3 = {}, const QString& extra = {},
                  int left = 0, int top = 0);

// Left of the rightmost button slot of the last box shown.
int UniMsgBoxRightSlot();
