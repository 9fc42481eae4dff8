#include "app/form1.h"

#include "lookup/cookiefile.h"
#include "pictures/stationviewapi.h"

#include "app/appcfg.h"
#include "app/callflow.h"
#include "app/datafolder.h"
#include "app/form13.h"
#include "app/lookuphosts.h"
#include "app/picturecache.h"
#include "app/statustexts.h"
#include "app/settings.h"
#include "app/startup.h"
#include "app/stationservice.h"
#include "common/vbtext.h"
#include "db/calldatabase.h"
#include "lookup/cleancall.h"
#include "lookup/uclookup.h"
#include "platform/platform.h"
#include "app/nicknames.h"
#include "db/form26.h"
#include "setup/form2.h"
#include "ui/beep.h"
#include "ui/popupmenu.h"
#include "ui/unimsgbox.h"
#include "ui/windowhelpers.h"

#include <QApplication>
#include <QClipboard>
#include <QDesktopServices>
#include <QFileInfo>
#include <QImage>
#include <QKeyEvent>
#include <QUrl>
#include <QCloseEvent>
#include <QComboBox>
#include <QFile>
#include <QGuiApplication>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QScreen>
#include <QSystemTrayIcon>
#include <QTimer>
#include <cmath>

Form1::Form1(ModuleValues& values, QWidget* parent) : QWidget(parent), g_(values) {
    setObjectName(QStringLiteral("Form1"));
    setWindowTitle(QStringLiteral("PX Callsigns"));
    showFailure = [this](const QString& text, const QString& title) {
        ShowUniMsgBox(this, text, msgbox::kIconExclamation, title, QStringLiteral("OK"));
    };

    createControls();

    lookUp = new ucLookUp(g_.DownloadBuffer, LookupHostsFromSettings(), this);
    // One browser session: the station view's logins serve the lookups, and the other way round.
    cookies_ = new CookieFile(settings::SettingsFolder() + u'/' + QLatin1String(settings::kCookieFileName));
    cookies_->received = [this](const QNetworkCookie& cookie) {
        if (StationView* view = stationView()) view->putCookie(cookie);
    };
    lookUp->setCookieJar(cookies_);
    stations_ = std::make_unique<StationService>(*lookUp, g_.DataPath);
    connect(lookUp, &ucLookUp::LoginChecked, this, &Form1::onLoginChecked);
    connect(lookUp, &ucLookUp::GotPage, this, &Form1::onGotPage);
    connect(lookUp, &ucLookUp::PageNotFound, this, &Form1::onPageNotFound);
    connect(lookUp, &ucLookUp::CallNotFound, this, &Form1::onCallNotFound);
    connect(lookUp, &ucLookUp::PictureReady, this, &Form1::onPictureReady);
    connect(lookUp, &ucLookUp::LoginRequired, this, &Form1::onLoginRequired);
    connect(lookUp, &ucLookUp::SiteNotFound, this, &Form1::onSiteNotFound);
    connect(lookUp, &ucLookUp::NoPic, this, &Form1::onNoPic);
    helpFile = DefaultDataFolder(QCoreApplication::applicationDirPath()) + QStringLiteral("/Help.txt");
}

bool Form1::Form_Load() {
    // 1. Always on top.
    SetTopMost(this, true);
    // 2. The data folder.
    g_.DataPath = UserDataFolder();
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
        ShowUniMsgBox(this, QString(200, u' '), msgbox::kNoIcon, QString(), QStringLiteral("OK"));
    } else {
        g_.MenuFontName = menuFont.faceName;
        g_.MenuFontSize = menuFont.pointSize;
        QFont f = font();
        f.setFamily(g_.MenuFontName);
        f.setPointSizeF(g_.MenuFontSize);
        setFont(f);
    }
    // 7. Nicknames.
    const QString nicknamePath = g_.nicknamesPath();
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
    const Result<AppCfg> cfg = ReadAppCfg(pictaro.folder + QStringLiteral("app.cfg"));
    if (!cfg) {
        showFailure(cfg.message(), QLatin1String(kFailureTitle));
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
    for (const CallbookService& service : kServices) cboDB->addItem(QLatin1String(service.boxName));
    int16_t index = settings::GetInt16Setting(settings::kServiceIndex, 1);
    if (index < 0 || index >= static_cast<int>(kServices.size())) index = 1;
    connect(cboDB, &QComboBox::activated, this, &Form1::cboDB_Click);
    cboDB->setCurrentIndex(index);
    cboDB_Click(index);
    // 14.
    g_.ServiceName = cboDB->currentText();
    g_.ServiceNo = static_cast<int16_t>(cboDB->currentIndex() + 1);
    // 15. Pop-up menu captions.
    SetupMenuCaptions = {g_.Texts.MenuSetup, g_.Texts.MenuDatabaseEditor, g_.Texts.MenuHelp, g_.Texts.MenuQuit};
    MapsMenuCaptions = {g_.Texts.MenuMapOfStation, g_.Texts.MenuWebMapAddress, g_.Texts.MenuWebMapPosition,
                        g_.Texts.MenuStationView, g_.Texts.MenuRegionMaps};
    // The strip as wide and high as the language's texts need.
    fitStripToTexts();
    // 16. Hidden until loading has ended.
    hide();
    // Where the user left it, on a screen that is still there.
    placeOnLoad();
    // 17. At the corner of the window that carries the version mark.
    if (const platform::WindowId marked = platform::FindWindowByTitlePart(QLatin1String(kVersionMark))) {
        const auto rect = platform::WindowRect(marked);
        if (rect && rect->left() != 0 && rect->top() != 0) {
            PlaceWindow(this, rect->topLeft());
            markPlace_ = pos();
        }
    }
    // Wherever it opens (the window manager places it when nothing else does), it opens wholly
    // on a screen.
    ScreenKeeper::of(this);
    createTrayIcon();
    tmrTray->start();
    return true;
}

QString Form1::updateCaption() const {
    return QString(g_.Texts.UpdateButton).replace(QStringLiteral("***"), u' ' + cboDB->currentText());
}

void Form1::failureBeep() { sound::FailureBeep(); }

void Form1::clearStation() {
    pictureOf_.clear();
    Image1->clear();
    Image1->hide();
    for (QLabel* label : {lblCall, lblName, lblAdd1, lblAdd2, lblCtry, lblDxAz}) label->clear();
}

void Form1::keyPressEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_F8) {
        TakeCallFromClipboard();
        return;
    }
    QWidget::keyPressEvent(event);
}

void Form1::TakeCallFromClipboard() {
    clearStation();
    LookUpCall(CallFromClipboardText(QGuiApplication::clipboard()->text()));
}

void Form1::txtCall_Enter() {
    // Typed calls need no clipboard rule: the cleaning takes "EA8/DL1ABC/P" to DL1ABC. A text
    // that holds no call leaves the station on show where it is.
    const QString typed = txtCall->text();
    QString copy = typed;
    if (!CleanCall(copy).isEmpty()) clearStation();
    LookUpCall(typed);
}

void Form1::LookUpCall(const QString& typed) {
    cmdUpdate->setEnabled(false);
    cmdUpdate->setText(updateCaption());
    QCoreApplication::processEvents(QEventLoop::ExcludeUserInputEvents);
    // Whatever the last lookup still waits for is of no use now.
    page_.forget(*lookUp);
    lblStatus->clear();
    QString text = typed;
    const QString call = CleanCall(text);
    if (call.isEmpty()) {
        lblStatus->setText(NoCallStatus(g_.Texts, typed));
        // The shown station stays, and so does the way to update it.
        cmdUpdate->setEnabled(!g_.CurrentCall.isEmpty());
        busy_.set(false);
        return;
    }
    busy_.set(true);
    CallDatabase db(g_.callFilePath());
    if (db.FindCallRecord(call) > 0 && !vb::trim(db.CurrentRecord.Name()).isEmpty()) {
        ShowDbRecord(db.CurrentRecord);
        cmdUpdate->setEnabled(true);
        return;
    }
    lblCall->setText(QString(g_.Texts.LookingUp).replace(QStringLiteral("???"), call));
    lblName->setText(QString(g_.Texts.Searching).replace(QStringLiteral("***"), g_.ServiceName) + QStringLiteral(". . ."));
    askService(call);
}

void Form1::askService(const QString& call) {
    page_.ask(*lookUp, static_cast<int16_t>(cboDB->currentIndex() + 1), call);
}

void Form1::ShowDbRecord(const CallRecord& record) {
    g_.CurrentCall = vb::trim(record.Call());
    pictureOf_ = g_.CurrentCall;
    lblCall->setText(g_.CurrentCall + QStringLiteral("  (") + g_.Texts.SourceDatabase + u')');
    lblName->setText(vb::trim(record.Name()) + NicknameSuffix(lstNicknames, g_.CurrentCall));
    lblAdd1->setText(record.Add1());
    lblAdd2->setText(record.Add2());
    lblCtry->setText(record.Ctry());
    g_.OtherLat = vb::val(record.Lat());
    g_.OtherLon = vb::val(record.Lon());
    lblDxAz->setText(DxAzLine(g_.MyLat, g_.MyLon, g_.OtherLat, g_.OtherLon, g_.DistUnit));
    showPictureFromCache();
    busy_.set(false);
}

void Form1::cmdUpdate_Click() {
    pictureOf_.clear();
    Image1->clear();
    Image1->hide();
    lblCall->setText(QString(g_.Texts.Contacting).replace(QStringLiteral("***"), g_.ServiceName) + QStringLiteral(". . ."));
    for (QLabel* label : {lblName, lblAdd1, lblAdd2, lblCtry, lblDxAz}) label->clear();
    QCoreApplication::processEvents(QEventLoop::ExcludeUserInputEvents);
    busy_.set(true);
    askService(g_.CurrentCall);
}

void Form1::cboDB_Click(int index) {
    lblStatus->clear();
    Image1->hide();
    Image1->clear();
    cmdUpdate->setText(updateCaption());
    settings::SaveSetting(settings::kServiceIndex, QString::number(index));
    g_.ServiceName = cboDB->currentText();
    g_.ServiceNo = static_cast<int16_t>(index + 1);
    lookUp->setDatabase(static_cast<int16_t>(index + 1));
    // The first click is the one loading causes: it asks about the login. Later ones look the
    // shown station up again on the new service.
    if (startupFlag_) {
        busy_.set(true);
        lookUp->IsLoggedIn(g_.MyCall);
    } else if (!g_.CurrentCall.isEmpty()) {
        busy_.set(true);
        askService(g_.CurrentCall);
    }
    startupFlag_ = false;
}

void Form1::onLoginChecked(const QString&, bool loggedIn) {
    QString text = LoginStatus(g_.Texts, g_.ServiceNo, loggedIn);
    lblStatus->setText(text.replace(QStringLiteral("***"), g_.ServiceName));
    busy_.set(false);
}

void Form1::onSiteNotFound(const QString&) {
    lblStatus->setText(FailureStatus(g_.Texts, lookUp->LastFailure, g_.ServiceName));
    busy_.set(false);
}

void Form1::onGotPage(const QString& call, bool loggedIn) {
    if (!page_.isAnswer(call)) return;  // the answer to a lookup that was replaced
    if (loggedIn) {
        lblStatus->setText(g_.Texts.LookupOk);
    } else {
        lblStatus->setText(LoggedOutPageStatus(g_.Texts, g_.ServiceNo));
        const CallbookService* service = ServiceByNumber(g_.ServiceNo);
        if (!service || !service->keepsWindowWhenLoggedOut) {
            clearStation();
            failureBeep();
            busy_.set(false);
        }
    }
    lblCall->setText(call + QStringLiteral("  (") + g_.Texts.SourceWeb + g_.ServiceName + u')');
    // The events the name raises say why a page holds no station (their handlers show it).
    const TakenPage taken = stations_->Take(call);
    page_.arrived();
    if (!taken.station) {
        // Nothing from such a page is shown or kept.
        if (!taken.refusal) showNotFound(call);
        cmdUpdate->setEnabled(!g_.CurrentCall.isEmpty());
        busy_.set(false);
        return;
    }
    showStation(*taken.station);
    if (!taken.stored.written)
        ShowUniMsgBox(this, taken.stored.written.message(), msgbox::kIconExclamation, QStringLiteral("PX Callsigns"), QStringLiteral("OK"));
    // The picture follows in the background; the window is ready for the next call.
    busy_.set(false);
}

void Form1::showStation(const StationFields& station) {
    g_.CurrentCall = station.call;
    pictureOf_ = station.call;
    lblName->setText(station.name + NicknameSuffix(lstNicknames, station.call));
    lblAdd1->setText(station.add1);
    lblAdd2->setText(station.add2);
    lblCtry->setText(station.ctry);
    g_.OtherLat = station.lat;
    g_.OtherLon = station.lon;
    lblDxAz->clear();
    if (g_.OtherLat != 0 && g_.OtherLon != 0)
        lblDxAz->setText(DxAzLine(g_.MyLat, g_.MyLon, g_.OtherLat, g_.OtherLon, g_.DistUnit));
    cmdUpdate->setEnabled(true);
}

void Form1::onPageNotFound(const QString& id) {
    if (!page_.isAnswer(id)) return;
    page_.arrived();
    lblCall->setText(g_.Texts.NotFound + id);
    lblName->clear();
    lblStatus->setText(FailureStatus(g_.Texts, lookUp->LastFailure, g_.ServiceName));
    cmdUpdate->setEnabled(!g_.CurrentCall.isEmpty());
    busy_.set(false);
    failureBeep();
}

void Form1::onCallNotFound(const QString& ca) {
    if (!page_.isAnswer(ca)) return;
    showNotFound(ca);
}

void Form1::showNotFound(const QString& call) {
    lblCall->setText(g_.Texts.NotFound + u' ' + call);
    lblName->clear();
    busy_.set(false);
    failureBeep();
}

void Form1::onLoginRequired(const QString& ca) {
    if (!page_.isAnswer(ca)) return;
    lblName->clear();
    lblCall->setText(g_.Texts.LoginRequired);
    busy_.set(false);
    failureBeep();
}

void Form1::RefreshDistance() {
    // The own position or the unit may have changed: the station on show gets a new line.
    if (lblDxAz->text().isEmpty() || (g_.OtherLat == 0 && g_.OtherLon == 0)) return;
    lblDxAz->setText(DxAzLine(g_.MyLat, g_.MyLon, g_.OtherLat, g_.OtherLon, g_.DistUnit));
}

void Form1::Unload() {
    unloading_ = true;
    if (tmrPosition->isActive()) savePosition();
    tmrTray->stop();
    for (QWidget* w : QApplication::topLevelWidgets()) {
        if (w == this || !w->isWindow()) continue;
        w->hide();
        w->close();
    }
    hide();
    close();
    QCoreApplication::quit();
}
