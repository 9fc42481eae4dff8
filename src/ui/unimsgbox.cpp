#include "ui/unimsgbox.h"

#include "ui/beep.h"
#include "ui/windowhelpers.h"

#include <QApplication>
#include <QGuiApplication>
#include <QLabel>
#include <QPushButton>
#include <QScreen>
#include <QStyle>

namespace {

int rightSlot = 0;  // kept between calls, as the one value the box remembers

// The longest line of the prompt in the label's font, in pixels.
int widestLine(const QFontMetrics& metrics, const QString& prompt) {
    int widest = 0;
    for (const QString& line : prompt.split(QStringLiteral("\r\n"))) widest = std::max(widest, metrics.horizontalAdvance(line));
    return widest;
}

QLabel* iconLabel(QWidget* parent, const char* name, QStyle::StandardPixmap which, QRect geometry) {
    auto* label = new QLabel(parent);
    label->setObjectName(QLatin1String(name));
    label->setPixmap(parent->style()->standardIcon(which).pixmap(geometry.size()));
    label->setScaledContents(true);
    label->setGeometry(geometry);
    label->hide();
    return label;
}

}  // namespace

UniMsgBox::UniMsgBox(QWidget* parent) : QDialog(parent) {
    setObjectName(QStringLiteral("UniMsgBox"));
    // The designed places; only two of the icons are moved when shown.
    imgCritical = iconLabel(this, "imgCritical", QStyle::SP_MessageBoxCritical, {15, 25, 48, 48});
    imgQuestion = iconLabel(this, "imgQuestion", QStyle::SP_MessageBoxQuestion, {15, 25, 48, 48});
    imgExclamation = iconLabel(this, "imgExclamation", QStyle::SP_MessageBoxWarning, {15, 25, 48, 48});
    imgInformation = iconLabel(this, "imgInformation", QStyle::SP_MessageBoxInformation, {15, 25, 48, 48});
    lblPrompt = new QLabel(this);
    lblPrompt->setObjectName(QStringLiteral("lblPrompt"));
    lblPrompt->setTextFormat(Qt::PlainText);
    lblPrompt->setAlignment(Qt::AlignLeft | Qt::AlignTop);
    pic1 = new QWidget(this);
    pic1->setObjectName(QStringLiteral("pic1"));
    pic1->setAutoFillBackground(true);
    QPalette strip = pic1->palette();
    strip.setColor(QPalette::Window, strip.color(QPalette::Button));
    pic1->setPalette(strip);
    int number = 0;
    for (QPushButton** button : {&cmd1, &cmd2, &cmd3}) {
        *button = new QPushButton(pic1);
        (*button)->setObjectName(QStringLiteral("cmd%1").arg(++number));
        (*button)->hide();
    }
    const auto press = [this](int value) {
        result_ = value;
        accept();
    };
    connect(cmd1, &QPushButton::clicked, this, [press] { press(msgbox::kResultCmd1); });
    connect(cmd2, &QPushButton::clicked, this, [press] { press(msgbox::kResultCmd2); });
    connect(cmd3, &QPushButton::clicked, this, [press] { press(msgbox::kResultCmd3); });
}

void UniMsgBox::Prepare(QWidget* owner, const QString& prompt, int buttons, const QString& title,
                        const QString& caption1, const QString& caption2, const QString& caption3, const QString&,
                        int left, int top) {
    // Icon and beep.
    const int style = buttons & 15;
    const int icon = buttons - style;
    switch (icon) {
    case msgbox::kIconCritical:
        imgCritical->show();
        sound::MessageBeep(msgbox::kIconCritical);
        break;
    case msgbox::kIconQuestion: imgQuestion->show(); break;  // the question icon is shown silently
    case msgbox::kIconExclamation:
        imgExclamation->setGeometry(10, 10, 50, 50);
        imgExclamation->show();
        sound::MessageBeep(msgbox::kIconExclamation);
        break;
    case msgbox::kIconInformation:
        imgInformation->setGeometry(10, 30, 40, 40);
        imgInformation->show();
        sound::MessageBeep(msgbox::kIconInformation);
        break;
    default: break;
    }
    // The desktop's message font.
    const QFont messageFont = QApplication::font("QMessageBox");
    lblPrompt->setFont(messageFont);
    // One label line per CR LF, 21 pixels each; as wide as the longest line needs, within the screen.
    const qsizetype lines = (prompt.size() - QString(prompt).remove(QStringLiteral("\r\n")).size()) / 2 + 1;
    lblPrompt->setText(QString(prompt).replace(QStringLiteral("\r\n"), QStringLiteral("\n")));
    const QScreen* screen = owner && owner->screen() ? owner->screen() : QGuiApplication::primaryScreen();
    const int widest = screen ? screen->availableGeometry().width() - 145 : 1 << 16;
    const int promptWidth = std::clamp(widestLine(lblPrompt->fontMetrics(), prompt) + 4, kPromptWidth, std::max(kPromptWidth, widest));
    lblPrompt->setGeometry(85, 30, promptWidth, static_cast<int>(21 * lines));
    setWindowTitle(title);
    // Buttons: font, geometry by the font's size, captions.
    for (QPushButton* b : {cmd1, cmd2, cmd3}) b->setFont(messageFont);
    const double points = messageFont.pointSizeF() > 0 ? messageFont.pointSizeF() : messageFont.pixelSize() * 0.75;
    if (points < 9) buttons_ = {80, 30, 70, 30};
    else if (points < 12) buttons_ = {95, 25, 85, 32};
    else buttons_ = {110, 20, 100, 35};
    style_ = style;
    cmd1->setText(caption1);
    cmd2->setText(caption2);
    cmd3->setText(caption3);
    // The window around it, frame included, and the strip along its bottom.
    outer_ = QSize(lblPrompt->width() + 145, lblPrompt->height() + 160);
    fitFrame(KnownFrameMargins(this));
    // Position: given, or centred over the owner and kept on the virtual screen; and then wholly
    // inside the available area of a screen.
    QPoint at(left, top);
    if (left == 0 || top == 0) {
        const QRect over = owner ? owner->frameGeometry() : (screen ? screen->geometry() : QRect());
        const QRect desk = screen ? screen->virtualGeometry() : QRect(0, 0, 1 << 16, 1 << 16);
        const int width = outer_.width(), height = outer_.height();
        int x = std::max(0, over.left() + (over.width() - width) / 2);
        int y = std::max(0, over.top() + (over.height() - height) / 2);
        if (x + width > desk.right() + 1) x = desk.right() + 1 - width;
        if (y + height > desk.bottom() + 1) y = desk.bottom() + 1 - height;
        at = QPoint(x, y);
    }
    PlaceWindow(this, at);
    // The frame the window manager gives the box decides its inner size.
    connect(ScreenKeeper::of(this), &ScreenKeeper::frameKnown, this, &UniMsgBox::fitFrame, Qt::UniqueConnection);
    // Above every other window.
    SetTopMost(this, true);
}

void UniMsgBox::fitFrame(QMargins margins) {
    const QSize inner = outer_.shrunkBy(margins);
    setFixedSize(inner);
    pic1->setGeometry(0, inner.height() - 70, inner.width(), 70);
    layOutButtons();
}

void UniMsgBox::layOutButtons() {
    const ButtonGeometry& g = buttons_;
    rightSlot = pic1->width() - g.offset;
    auto place = [&g](QPushButton* b, int left) {
        b->setGeometry(left, g.top, g.width, g.height);
        b->show();
    };
    if (style_ == 0) {
        place(cmd1, rightSlot);
    } else if (style_ == 1 || style_ == 4 || style_ == 5) {
        place(cmd2, rightSlot);
        place(cmd1, rightSlot - g.width - 10);
    } else if (style_ == 2 || style_ == 3) {
        place(cmd2, rightSlot);
        place(cmd1, rightSlot - g.width - 10);
        place(cmd3, rightSlot - 2 * g.width - 20);
    }
}

int ShowUniMsgBox(QWidget* owner, const QString& prompt, int buttons, const QString& title, const QString& caption1,
                  const QString& caption2, const QString& caption3, const QString& extra, int left, int top) {
    UniMsgBox box(owner);
    box.Prepare(owner, prompt, buttons, title, caption1, caption2, caption3, extra, left, top);
    box.exec();
    return box.result();
}

int UniMsgBoxRightSlot() { return rightSlot; }
