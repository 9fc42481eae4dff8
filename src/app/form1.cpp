#include "app/form1.h"

#include "app/appcfg.h"
#include "app/settings.h"
#include "app/startup.h"
#include "common/vbtext.h"
#include "db/calldatabase.h"
#include "platform/platform.h"
#include "ui/unimsgbox.h"
#include "ui/windowhelpers.h"

#include <QApplication>
#include <QCloseEvent>
#include <QComboBox>
#include <QFile>
#include <QGuiApplication>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QPainter>
#include <QPushButton>
#include <QScreen>
#include <QSystemTrayIcon>
#include <QTimer>
#include <cmath>

namespace {

QLabel* makeLabel(QWidget* parent, const char* name) {
    auto* label = new QLabel(parent);
    label->setObjectName(QLatin1String(name));
    // Texts come from web pages and files: never let them be read as markup.
    label->setTextFormat(Qt::PlainText);
    return label;
}

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

Form1::Form1(ModuleValues& values, QWidget* parent) : QWidget(parent), g_(values) {
    setObjectName(QStringLiteral("Form1"));
    setWindowTitle(QStringLiteral("PX Callsigns"));
    showFailure = [this](const QString& text, const QString& title) {
        ShowUniMsgBox(this, text, 48, title, QStringLiteral("OK"));
    };

    lblCall = makeLabel(this, "lblCall");
    lblName = makeLabel(this, "lblName");
    lblAdd1 = makeLabel(this, "lblAdd1");
    lblAdd2 = makeLabel(this, "lblAdd2");
    lblCtry = makeLabel(this, "lblCtry");
    lblDxAz = makeLabel(this, "lblDxAz");
    lblStatus = makeLabel(this, "lblStatus");
    lblMaps = makeLabel(this, "lblMaps");
    lblSetup = makeLabel(this, "lblSetup");
    Image1 = makeLabel(this, "Image1");
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

    QFont callFont = lblCall->font();
    callFont.setBold(true);
    lblCall->setFont(callFont);

    connect(txtCall, &QLineEdit::returnPressed, this, [this] { LookUpCall(txtCall->text()); });
    connect(cmdUpdate, &QPushButton::clicked, this, [this] { LookUpCall(g_.CurrentCall); });
}

bool Form1::Form_Load() {
    // 1. Always on top.
    SetTopMost(this, true);
    // 2. The data folder.
    g_.DataPath = platform::GetAppDataFolder() + QStringLiteral("/Norvane");
    // 3. Pictaro's folder and the distance unit.
    const QString install = settings::GetSetting(settings::kPictaroInstall, platform::DefaultPictaroInstall());
    g_.DistUnit = settings::GetInt16Setting(settings::kUnit, 1);
    // 4. Screen size in twips; the horizontal factor serves both directions.
    const QScreen* screen = QGuiApplication::primaryScreen();
    const double dpiX = screen ? screen->logicalDotsPerInchX() : 96.0;
    const double dpiY = screen ? screen->logicalDotsPerInchY() : 96.0;
    g_.TwipsPerPixelX = vb::toInt16(1440.0 / dpiX).value_or(15);
    g_.TwipsPerPixelY = vb::toInt16(1440.0 / dpiY).value_or(15);
    const QSize pixels = screen ? screen->size() : QSize(0, 0);
    g_.ScreenWidthTw = pixels.width() * g_.TwipsPerPixelX;
    g_.ScreenHeightTw = pixels.height() * g_.TwipsPerPixelX;
    // 5. The map catalogue.
    lstMap = MapCatalogue(g_.DataPath);
    // 6. The menu font.
    const MenuFont menuFont = GetMenuFont();
    if (menuFont.faceName.isEmpty() || menuFont.pointSize <= 0) {
        ShowUniMsgBox(this, QString(200, u' '), 0, QString(), QStringLiteral("OK"));
    } else {
        g_.MenuFontName = menuFont.faceName;
        g_.MenuFontSize = menuFont.pointSize;
        QFont f = font();
        f.setFamily(g_.MenuFontName);
        f.setPointSizeF(g_.MenuFontSize);
        setFont(f);
    }
    // 7. Nicknames.
    const QString nicknamePath = g_.DataPath + QStringLiteral("/nicknames.txt");
    const auto nicknames = ReadNicknames(nicknamePath);
    if (!nicknames) {
        showFailure(QStringLiteral("File not found\r\n") + nicknamePath, QLatin1String(kFailureTitle));
        return false;
    }
    lstNicknames = *nicknames;
    // 8. Size and layout.
    resize(5250 / g_.TwipsPerPixelX, 2700 / g_.TwipsPerPixelY);
    layOutControls();
    // 9. Pictaro's folder, through the running program when the saved one does not hold it.
    const PictaroFolder pictaro = ResolvePictaroFolder(install, &platform::FindProgPath);
    if (!pictaro.failure.isEmpty()) {
        showFailure(pictaro.failure, QLatin1String(kFailureTitle));
        return false;
    }
    if (pictaro.store) settings::SaveSetting(settings::kPictaroInstall, pictaro.folder);
    // 10. Own call and language.
    QString error;
    const auto cfg = ReadAppCfg(pictaro.folder + QStringLiteral("app.cfg"), &error);
    if (!cfg) {
        showFailure(error, QLatin1String(kFailureTitle));
        return false;
    }
    g_.MyCall = cfg->myCall;
    g_.Language = cfg->language;
    // 11. Texts: the built-in English ones first, so that a short or missing file leaves no
    // caption empty, then the user's language.
    QFile builtIn(QStringLiteral(":/Languages/Norvane_English.Language"));
    if (builtIn.open(QIODevice::ReadOnly)) LoadLanguageText(builtIn.readAll(), g_.Texts);
    const LanguageResult language =
        LoadLanguage(g_.Language, g_.DataPath, g_.Texts, [this](const QString& text) { lblCall->setText(text); });
    if (language.status != LanguageLoad::Ok) {
        const QString file = g_.DataPath + QStringLiteral("/Languages/") + language.fileName;
        showFailure(language.message().isEmpty() ? file : language.message() + QStringLiteral("\r\n") + file,
                    QLatin1String(kFailureTitle));
        lblCall->setText(g_.Texts.Ready);
    }
    // 12. Own position, from the own call's record when none is saved.
    const Position own = OwnPosition(settings::GetDoubleSetting(settings::kMyLatitude, 0),
                                     settings::GetDoubleSetting(settings::kMyLongitude, 0), g_.MyCall,
                                     g_.callFilePath());
    g_.MyLat = own.lat;
    g_.MyLon = own.lon;
    // 13. Services; choosing one runs the box's click handler.
    for (const char* service : kServices) cboDB->addItem(QLatin1String(service));
    int16_t index = settings::GetInt16Setting(settings::kServiceIndex, 1);
    if (index < 0 || index >= static_cast<int>(kServices.size())) index = 1;
    connect(cboDB, &QComboBox::activated, this, &Form1::cboDB_Click);
    cboDB->setCurrentIndex(index);
    cboDB_Click(index);
    // 14.
    g_.ServiceName = cboDB->currentText();
    g_.ServiceNo = static_cast<int16_t>(cboDB->currentIndex() + 1);
    // 15. Pop-up menu captions.
    SetupMenuCaptions = {g_.Texts.MenuSetup, g_.Texts.MenuDatabaseEditor, g_.Texts.MenuHelp};
    MapsMenuCaptions = {g_.Texts.MenuMapOfStation, g_.Texts.MenuWebMapAddress, g_.Texts.MenuWebMapPosition,
                        g_.Texts.MenuStationView, g_.Texts.MenuRegionMaps};
    // 16. Hidden until loading has ended.
    hide();
    // 17. At the corner of the window that carries the version mark.
    if (const platform::WindowId marked = platform::FindWindowByTitlePart(QLatin1String(kVersionMark))) {
        const auto rect = platform::WindowRect(marked);
        if (rect && rect->left() != 0 && rect->top() != 0) move(rect->topLeft());
    }
    createTrayIcon();
    return true;
}

void Form1::layOutControls() {
    const int w = width();
    lblCall->setGeometry(10, 6, w - 90, 22);
    lblName->setGeometry(10, 30, w - 20, 18);
    lblAdd1->setGeometry(10, 48, w - 20, 18);
    lblAdd2->setGeometry(10, 66, w - 20, 18);
    lblCtry->setGeometry(10, 84, w - 20, 18);
    lblDxAz->setGeometry(10, 102, w - 20, 18);
    lblStatus->setGeometry(10, 122, w - 20, 18);
    const int row = height() - 32;
    txtCall->setGeometry(10, row, 80, 24);
    txtCall->setPlaceholderText(QStringLiteral("Call"));
    cmdUpdate->setGeometry(95, row, 105, 24);
    cboDB->setGeometry(205, row, 85, 24);
    lblMaps->setGeometry(296, row + 4, 24, 18);
    lblSetup->setGeometry(322, row + 4, 24, 18);
    lblMaps->setText(QStringLiteral("\u25A6"));   // a map grid sign
    lblSetup->setText(QStringLiteral("\u2699"));  // a gear
    lblMaps->setToolTip(QStringLiteral("Maps"));
    lblSetup->setToolTip(QStringLiteral("Setup"));
}

QString Form1::updateCaption() const {
    return QString(g_.Texts.UpdateButton).replace(QStringLiteral("***"), u' ' + cboDB->currentText());
}

void Form1::cboDB_Click(int index) {
    lblStatus->clear();
    Image1->hide();
    Image1->clear();
    cmdUpdate->setText(updateCaption());
    settings::SaveSetting(settings::kServiceIndex, QString::number(index));
    g_.ServiceName = cboDB->currentText();
    g_.ServiceNo = static_cast<int16_t>(index + 1);
    startupFlag_ = false;
}

void Form1::clearStation() {
    Image1->clear();
    Image1->hide();
    for (QLabel* label : {lblCall, lblName, lblAdd1, lblAdd2, lblCtry, lblDxAz}) label->clear();
}

void Form1::LookUpCall(const QString& typed) {
    cmdUpdate->setEnabled(false);
    cmdUpdate->setText(updateCaption());
    QCoreApplication::processEvents();
    const QString call = vb::trim(typed).toUpper();
    if (call.isEmpty()) {
        cmdUpdate->setEnabled(true);
        return;
    }
    clearStation();
    CallDatabase db(g_.callFilePath());
    if (db.FindCallRecord(call) > 0 && !vb::trim(db.CurrentRecord.Name()).isEmpty()) {
        g_.CurrentCall = vb::trim(db.CurrentRecord.Call());
        lblCall->setText(g_.CurrentCall + QStringLiteral("  (") + g_.Texts.SourceDatabase + u')');
        lblName->setText(vb::trim(db.CurrentRecord.Name()) + nicknameSuffix(g_.CurrentCall));
        lblAdd1->setText(db.CurrentRecord.Add1());
        lblAdd2->setText(db.CurrentRecord.Add2());
        lblCtry->setText(db.CurrentRecord.Ctry());
        g_.OtherLat = vb::val(db.CurrentRecord.Lat());
        g_.OtherLon = vb::val(db.CurrentRecord.Lon());
        cmdUpdate->setEnabled(true);
        return;
    }
    lblCall->setText(g_.Texts.NotFound + call);
    cmdUpdate->setEnabled(!g_.CurrentCall.isEmpty());
}

QString Form1::nicknameSuffix(const QString& call) const {
    // The first entry that begins with the call, compared without regard to case, counts.
    for (const QString& entry : lstNicknames) {
        if (!entry.startsWith(call, Qt::CaseInsensitive)) continue;
        const QStringList parts = entry.split(u'*');
        return parts.size() == 2 ? QStringLiteral("  (") + parts[1] + u')' : QString();
    }
    return {};
}

void Form1::createTrayIcon() {
    if (tray_ || !QSystemTrayIcon::isSystemTrayAvailable()) return;
    tray_ = new QSystemTrayIcon(trayIconImage(), this);
    tray_->setToolTip(windowTitle());
    auto* menu = new QMenu(this);
    menu->addAction(QStringLiteral("Show"), this, [this] {
        showNormal();
        raise();
        activateWindow();
    });
    menu->addAction(QStringLiteral("Quit"), this, &Form1::Unload);
    tray_->setContextMenu(menu);
    connect(tray_, &QSystemTrayIcon::activated, this, [this](QSystemTrayIcon::ActivationReason reason) {
        if (reason == QSystemTrayIcon::Trigger) {
            showNormal();
            raise();
        }
    });
    tray_->show();
}

void Form1::closeEvent(QCloseEvent* event) {
    if (unloading_) {
        event->accept();
        return;
    }
    // Closing from the title bar only hides the window. Without a tray icon to bring it back,
    // it goes to the task bar instead.
    event->ignore();
    if (tray_) hide();
    else showMinimized();
}

void Form1::Unload() {
    unloading_ = true;
    for (QWidget* w : QApplication::topLevelWidgets()) {
        if (w == this || !w->isWindow()) continue;
        w->hide();
        w->close();
    }
    hide();
    close();
    QCoreApplication::quit();
}
