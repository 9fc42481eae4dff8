#pragma once
// The main window: a small always-on-top strip that shows one station at a time.
#include "app/modulevalues.h"
#include "app/stationservice.h"
#include "db/callrecord.h"
#include "lookup/awaitedpage.h"
#include "pictures/stationviewhost.h"

#include "ui/windowhelpers.h"

#include <QPointer>
#include <QStringList>
#include <QWidget>
#include <array>
#include <functional>
#include <memory>
#include <optional>

class PopupMenu;
class QComboBox;
class QGridLayout;
class QLabel;
class QLineEdit;
class QPushButton;
class QSystemTrayIcon;
class QTimer;
class QUrl;
class ucLookUp;
class CookieFile;
class StationView;

class Form9;
class Form1 : public QWidget {
    Q_OBJECT

public:
    static constexpr const char* kVersionMark = "Ver:07/OCT/2014";
    static constexpr const char* kFailureTitle = "PX RxOk";

    explicit Form1(ModuleValues& values, QWidget* parent = nullptr);

    // Loads the window as described in its steps; false when the program has to end (the
    // message has been shown).
    bool Form_Load();

    // Closes every window of the program and ends it.
    void Unload();

    // How failures reach the user; tests replace it to read the texts.
    std::function<void(const QString& text, const QString& title)> showFailure;

    // The call flow: a call from the clipboard (F8) or typed, looked up in the call-sign file and
    // else on the chosen service; the result shown with distance, azimuth and picture.
    void TakeCallFromClipboard();
    void LookUpCall(const QString& call);
    void ShowDbRecord(const CallRecord& record);
    void cmdUpdate_Click();
    void cboDB_Click(int index);

    // Pop-up menus of the maps and setup labels; tmrMenus closes them once the mouse has left.
    // Setup items: 0 own station, 1 call-sign file editor, 2 help, 3 quit.
    void MnuSetupClick(int item);
    // The picture menu (items of PictureMenuItems), over the main window's or the editor's picture.
    void MnuPopupImageClick(int item);
    // at: where the right button went down, on the screen.
    void ShowPictureMenu(QPoint at);
    // Maps items: 0 the region map of the station on show, 1 web map by address, 2 by position,
    // 3 the station view of the shown station's page on the chosen service, 4 the region maps,
    // kMenuLogIn the chosen service's login page in the station view.
    void MnuMapsClick(int item);
    static constexpr int kMenuLogIn = 100;
    // The station view's request for a maps item; empty when the item opens none.
    QString mapsRequest(int item) const;
    // Opens the station view on "address*caption"; closes one that is open.
    void openStationView(const QString& request);
    // What the station view's paste, save and copy do with its picture: the program's picture
    // procedures (Pictaro's paste, the JPEG save dialog and SaveJPG at quality 70, the bitmap
    // class's clipboard copy) unless a test puts others here.
    StationViewActions stationViewActions;
    StationViewActions stationViewPictureActions();
    StationView* stationView() const { return stView_ ? stViewHandle_ : nullptr; }
    // The cookies that the lookups and the station view share.
    CookieFile* cookies() const { return cookies_; }
    // Item 0: the region map of the station on show; item 4 the region maps as they were.
    void MnuMapLocCallClick();
    void showRegionMaps();
    void watchMapWindow();
    // The help text: with the desktop's viewer, else in a window of the program.
    void ShowHelp();
    // How a file is handed to the desktop's viewer (false: it could not be); tests replace it.
    std::function<bool(const QUrl&)> openWithDesktop;
    // The distance line of the station on show, after the own position or unit changed.
    void RefreshDistance();
    PopupMenu* openMenu() const { return menu_; }
    // Where the help text is (it ships with the program).
    QString helpFile;

    // Hidden lists filled at start-up.
    QStringList lstMap;
    QStringList lstNicknames;
    // Captions of the pop-up menus: setup (four entries) and maps (five entries).
    std::array<QString, 4> SetupMenuCaptions;
    std::array<QString, 5> MapsMenuCaptions;

    QLabel* lblCall;
    QLabel* lblName;
    QLabel* lblAdd1;
    QLabel* lblAdd2;
    QLabel* lblCtry;
    QLabel* lblDxAz;
    QLabel* lblStatus;
    QLabel* lblMaps;
    QLabel* lblSetup;
    QLabel* Image1;
    QWidget* pic1;
    QLineEdit* txtCall;
    QPushButton* cmdUpdate;
    QComboBox* cboDB;
    QTimer* tmrMenus;
    ucLookUp* lookUp;

    // The tray icon, shown while the desktop has a system tray (nullptr while it has none). The
    // desktop's tray may come and go: tmrTray asks trayAvailable (tests replace it) now and then.
    QSystemTrayIcon* trayIcon() const { return tray_; }
    std::function<bool()> trayAvailable;
    void UpdateTray();
    QTimer* tmrTray;
    // Saves where the window is once it has stopped moving for a moment.
    QTimer* tmrPosition;

protected:
    void closeEvent(QCloseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void moveEvent(QMoveEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    // Handlers of the lookup control's events.
    void onLoginChecked(const QString& id, bool loggedIn);
    void onSiteNotFound(const QString& id);
    void onGotPage(const QString& call, bool loggedIn);
    void onPageNotFound(const QString& id);
    void onCallNotFound(const QString& ca);
    void onPictureReady(const QString& id);
    void onNoPic(const QString& id);
    void onLoginRequired(const QString& ca);
    void showNotFound(const QString& call);
    void showStation(const StationFields& station);

    // A call typed into the box and Enter pressed.
    void txtCall_Enter();
    // The page of a call asked of the chosen service (see AwaitedPage).
    void askService(const QString& call);

    void showPictureFromCache();
    void showPicture(const QString& file, int margin);
    void enlargePicture();
    void showMenu(QLabel* at, const QList<struct MenuItem>& items, void (Form1::*handler)(int));
    void showMenuAt(QPoint at, const QList<struct MenuItem>& items, void (Form1::*handler)(int));
    void tmrMenus_Timer();
    void failureBeep();
    void createTrayIcon();
    void createControls();  // every control, its timers and what they call
    void layOutControls();
    void clearStation();
    QString updateCaption() const;

    ModuleValues& g_;
    std::unique_ptr<StationService> stations_;
    AwaitedPage page_;         // one at a time: a new lookup, even one the file answers, drops it
    QString pictureOf_;        // the station whose picture belongs on screen, "" while none is shown
    bool startupFlag_ = true;  // the first service-box click is the one loading causes
    bool unloading_ = false;
    QSystemTrayIcon* tray_ = nullptr;
    PopupMenu* menu_ = nullptr;
    CookieFile* cookies_ = nullptr;
    QPointer<QWidget> stView_;
    StationView* stViewHandle_ = nullptr;
    Form9* form9_ = nullptr;
    BusyPointer busy_;

    // Window placement and the strip's layout.
    void placeOnLoad();
    void savePosition();
    void fitStripToTexts();
    void setPictureRoom(bool room);
    QGridLayout* lines_ = nullptr;
    std::optional<QPoint> markPlace_;  // where the version-mark window put the window: not the user's place
};
