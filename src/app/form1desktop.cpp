// The main window on the desktop: its controls, the strip's layout for the language's texts,
// where the window opens and is remembered, the tray icon and the title-bar close, and the help
// text.
#include "app/form1.h"

#include "app/settings.h"
#include "lookup/services.h"
#include "common/vbtext.h"
#include "ui/helpwindow.h"
#include "ui/windowhelpers.h"

#include <QCloseEvent>
#include <QComboBox>
#include <QDesktopServices>
#include <QFileInfo>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QPainter>
#include <QPushButton>
#include <QSystemTrayIcon>
#include <QTimer>
#include <QUrl>
#include <QVBoxLayout>
#include <array>

namespace {

QIcon trayIconImage() {
    QPixmap pixmap(32, 32);
    pixmap.fill(Qt::transparent);
    QPainter p(&pixmap);
    p.setRenderHint(QPainter::Antialiasing);
    p.setBrush(QColor(0x1f, 0x4e, 0x79));
    p.setPen(Qt::NoPen);
    p.drawRoundedRect(0, 0, 32, 32, 6, 6);
    p.setPen(Qt::white);
    QFont f = p.font();
    f.setBold(true);
    f.setPixelSize(14);
    p.setFont(f);
    p.drawText(pixmap.rect(), Qt::AlignCenter, QStringLiteral("PX"));
    return QIcon(pixmap);
}

}  // namespace

void Form1::createControls() {
    lblCall = MakePlainLabel(this, "lblCall");
    lblName = MakePlainLabel(this, "lblName");
    lblAdd1 = MakePlainLabel(this, "lblAdd1");
    lblAdd2 = MakePlainLabel(this, "lblAdd2");
    lblCtry = MakePlainLabel(this, "lblCtry");
    lblDxAz = MakePlainLabel(this, "lblDxAz");
    lblStatus = MakePlainLabel(this, "lblStatus");
    lblMaps = MakePlainLabel(this, "lblMaps");
    lblSetup = MakePlainLabel(this, "lblSetup");
    Image1 = MakePlainLabel(this, "Image1");
    Image1->hide();
    txtCall = new QLineEdit(this);
    txtCall->setObjectName(QStringLiteral("txtCall"));
    txtCall->setMaxLength(32);
    cmdUpdate = new QPushButton(this);
    cmdUpdate->setObjectName(QStringLiteral("cmdUpdate"));
    cboDB = new QComboBox(this);
    cboDB->setObjectName(QStringLiteral("cboDB"));
    tmrMenus = new QTimer(this);
    tmrMenus->setObjectName(QStringLiteral("tmrMenus"));
    tmrMenus->setInterval(200);
    connect(tmrMenus, &QTimer::timeout, this, &Form1::tmrMenus_Timer);
    tmrTray = new QTimer(this);
    tmrTray->setObjectName(QStringLiteral("tmrTray"));
    tmrTray->setInterval(2000);
    connect(tmrTray, &QTimer::timeout, this, &Form1::UpdateTray);
    trayAvailable = &QSystemTrayIcon::isSystemTrayAvailable;
    openWithDesktop = &QDesktopServices::openUrl;
    // A drag moves the window many times a second: its place is saved once it rests.
    tmrPosition = new QTimer(this);
    tmrPosition->setObjectName(QStringLiteral("tmrPosition"));
    tmrPosition->setSingleShot(true);
    tmrPosition->setInterval(500);
    connect(tmrPosition, &QTimer::timeout, this, &Form1::savePosition);
    pic1 = new QWidget(this);
    pic1->setObjectName(QStringLiteral("pic1"));
    pic1->lower();
    Image1->setScaledContents(true);
    Image1->setCursor(Qt::PointingHandCursor);
    for (QLabel* clickable : {Image1, lblMaps, lblSetup}) clickable->installEventFilter(this);
    QFont callFont = lblCall->font();
    callFont.setBold(true);
    lblCall->setFont(callFont);

    connect(txtCall, &QLineEdit::returnPressed, this, &Form1::txtCall_Enter);
    // A call can be typed as soon as the window shows; F8 reaches the window from the box too.
    txtCall->setFocus();
    connect(cmdUpdate, &QPushButton::clicked, this, &Form1::cmdUpdate_Click);
}

void Form1::layOutControls() {
    if (lines_) return;  // laid out once
    auto* root = new QVBoxLayout(this);
    root->setContentsMargins(10, 6, 10, 8);
    root->setSpacing(2);
    // The station's lines. Their texts never widen the window (fitStripToTexts sizes it for the
    // language's texts once); the first three end before the picture's corner while a picture is
    // shown (column 1).
    lines_ = new QGridLayout;
    lines_->setHorizontalSpacing(0);
    lines_->setVerticalSpacing(1);
    const std::array<QLabel*, 7> rows{lblCall, lblName, lblAdd1, lblAdd2, lblCtry, lblDxAz, lblStatus};
    for (int i = 0; i < static_cast<int>(rows.size()); ++i) {
        rows[i]->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Fixed);
        rows[i]->setFixedHeight(rows[i]->fontMetrics().height() + (i == 0 ? 4 : 1));
        lines_->addWidget(rows[i], i, 0, 1, i < 3 ? 1 : 2);
    }
    // Status texts may take two lines.
    lblStatus->setWordWrap(true);
    lblStatus->setAlignment(Qt::AlignLeft | Qt::AlignTop);
    lblStatus->setFixedHeight(2 * lblStatus->fontMetrics().lineSpacing() + 2);
    lines_->setColumnStretch(0, 1);
    root->addLayout(lines_);
    root->addStretch(1);
    auto* bottom = new QHBoxLayout;
    bottom->setSpacing(4);
    txtCall->setPlaceholderText(QStringLiteral("Call"));
    txtCall->setFixedWidth(std::max(80, txtCall->fontMetrics().horizontalAdvance(QStringLiteral("WW0WWW")) + 14));
    cboDB->setSizeAdjustPolicy(QComboBox::AdjustToContents);
    bottom->addWidget(txtCall);
    bottom->addWidget(cmdUpdate, 1);
    bottom->addWidget(cboDB);
    // The two menu labels one above the other, so that the row keeps its width.
    auto* menus = new QVBoxLayout;
    menus->setSpacing(0);
    menus->addWidget(lblMaps);
    menus->addWidget(lblSetup);
    bottom->addLayout(menus);
    root->addLayout(bottom);
    lblMaps->setText(QStringLiteral("\u25A6"));   // a map grid sign
    lblSetup->setText(QStringLiteral("\u2699"));  // a gear
    for (QLabel* menuLabel : {lblMaps, lblSetup}) {
        menuLabel->setAlignment(Qt::AlignCenter);
        menuLabel->setFixedSize(18, 17);
    }
    lblMaps->setToolTip(QStringLiteral("Maps"));
    lblSetup->setToolTip(QStringLiteral("Setup"));
    pic1->setGeometry(rect());
}

void Form1::fitStripToTexts() {
    layOutControls();
    const LanguageTexts& t = g_.Texts;
    // The update button as wide as its widest caption, whichever service is chosen.
    const QString caption = cmdUpdate->text();
    int button = 0;
    for (const CallbookService& service : kServices) {
        cmdUpdate->setText(QString(t.UpdateButton).replace(QStringLiteral("***"), u' ' + QLatin1String(service.boxName)));
        button = std::max(button, cmdUpdate->sizeHint().width());
    }
    cmdUpdate->setText(caption);
    cmdUpdate->setMinimumWidth(button);
    // The language's texts in the lines: one line each, the status two lines at most.
    const QString call = QStringLiteral("WW0WWW");
    int lines = 0;
    for (const CallbookService& service : kServices) {
        const QString name = QLatin1String(service.boxName);
        for (const QString& text : {t.Ready, QString(t.LookingUp).replace(QStringLiteral("???"), call), t.LoginRequired,
                                    QString(t.Contacting).replace(QStringLiteral("***"), name) + QStringLiteral(". . ."),
                                    t.NotFound + u' ' + call, call + QStringLiteral("  (") + t.SourceDatabase + u')',
                                    call + QStringLiteral("  (") + t.SourceWeb + name + u')'})
            lines = std::max(lines, lblCall->fontMetrics().horizontalAdvance(text));
        const QString searching = QString(t.Searching).replace(QStringLiteral("***"), name) + QStringLiteral(". . .");
        lines = std::max(lines, lblName->fontMetrics().horizontalAdvance(searching));
    }
    const QFontMetrics status = lblStatus->fontMetrics();
    const int statusHeight = lblStatus->contentsRect().height();
    for (QString text : {t.LoggedIn, t.NotLoggedIn, t.LoginNotNeededQrzcq, t.LoginNotNeededCallook, t.LookupOk,
                         t.LookupFailed, t.LookupFailedQrzcq, t.CallookStatus, t.StatusNoCall, t.StatusNotACall,
                         t.StatusUnreachable, t.StatusHttpError, t.StatusTimedOut, t.StatusTooLarge}) {
        text.replace(QStringLiteral("***"), QStringLiteral("CALLOOK")).replace(QStringLiteral("???"), call);
        int width = std::max(lines, 100);
        while (width < 2000 &&
               status.boundingRect(QRect(0, 0, width, 1 << 16), Qt::TextWordWrap, text).height() > statusHeight)
            width += 10;
        lines = std::max(lines, width);
    }
    const QMargins margins = layout()->contentsMargins();
    layout()->activate();
    const int width = std::max({5250 / g_.TwipsPerPixelX, minimumSizeHint().width(), lines + margins.left() + margins.right()});
    const int height = std::max(2700 / g_.TwipsPerPixelY, minimumSizeHint().height());
    setMinimumSize(width, height);
    resize(width, height);
}

void Form1::setPictureRoom(bool room) {
    // A picture of at most 57 pixels, 20 from the right edge at most, and 4 pixels between.
    if (lines_) lines_->setColumnMinimumWidth(1, room ? 57 + 20 + 4 - layout()->contentsMargins().right() : 0);
}

void Form1::placeOnLoad() {
    const auto left = vb::parseNumber(settings::GetSetting(settings::kForm1Left, QString()));
    const auto top = vb::parseNumber(settings::GetSetting(settings::kForm1Top, QString()));
    if (!left || !top) return;
    const auto x = vb::toInt32(*left), y = vb::toInt32(*top);
    if (x && y) PlaceWindow(this, QPoint(*x, *y));
}

void Form1::moveEvent(QMoveEvent* event) {
    QWidget::moveEvent(event);
    if (isVisible() && !isMinimized()) tmrPosition->start();
}

void Form1::savePosition() {
    tmrPosition->stop();
    const QPoint at = pos();
    // Put there by the version-mark window, not by the user: nothing to remember.
    if (markPlace_ && at == *markPlace_) return;
    settings::SaveSetting(settings::kForm1Left, QString::number(at.x()));
    settings::SaveSetting(settings::kForm1Top, QString::number(at.y()));
}

void Form1::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    pic1->setGeometry(rect());
}

void Form1::ShowHelp() {
    if (QFileInfo(helpFile).isFile() && openWithDesktop && openWithDesktop(QUrl::fromLocalFile(helpFile))) return;
    // No viewer on this desktop (or no file, which the window then says): the program shows it.
    auto* help = findChild<HelpWindow*>(QString(), Qt::FindDirectChildrenOnly);
    if (!help) {
        help = new HelpWindow(helpFile, g_.Texts.MenuHelp, this);
        PlaceWindowBeside(help, this);
    }
    help->show();
    help->raise();
    help->activateWindow();
}

void Form1::createTrayIcon() {
    if (tray_ || !trayAvailable || !trayAvailable()) return;
    tray_ = new QSystemTrayIcon(trayIconImage(), this);
    tray_->setToolTip(windowTitle());
    auto* menu = new QMenu(this);
    menu->addAction(QStringLiteral("Show"), this, [this] {
        showNormal();
        raise();
        activateWindow();
    });
    menu->addAction(g_.Texts.MenuQuit.isEmpty() ? QStringLiteral("Quit") : g_.Texts.MenuQuit, this, &Form1::Unload);
    tray_->setContextMenu(menu);
    connect(tray_, &QSystemTrayIcon::activated, this, [this](QSystemTrayIcon::ActivationReason reason) {
        if (reason == QSystemTrayIcon::Trigger) {
            showNormal();
            raise();
        }
    });
    tray_->show();
}

void Form1::UpdateTray() {
    const bool available = trayAvailable && trayAvailable();
    if (available && !tray_) {
        createTrayIcon();
    } else if (!available && tray_) {
        // The tray has gone, and the icon with it: a window hidden in it would be lost.
        tray_->hide();
        delete tray_->contextMenu();
        delete tray_;
        tray_ = nullptr;
        if (isHidden() && !unloading_) showMinimized();
    }
}

void Form1::closeEvent(QCloseEvent* event) {
    if (unloading_) {
        event->accept();
        return;
    }
    // Closing from the title bar only hides the window, to the tray icon that brings it back.
    // Where no tray icon is shown (no tray, or the tray has gone) it is minimised instead.
    event->ignore();
    UpdateTray();
    if (tray_ && tray_->isVisible()) hide();
    else showMinimized();
}
