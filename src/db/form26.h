#pragma once
// The call-sign file editor: the sorted list of every stored call, a form of the record's nine
// fields and the nickname, buttons to add or update, delete and look the call up on a call-book
// service, and the station picture from the picture cache.
#include "app/modulevalues.h"
#include "app/stationservice.h"
#include "db/calllistmodel.h"
#include "db/editorrules.h"
#include "db/storestation.h"
#include "lookup/awaitedpage.h"

#include "ui/windowhelpers.h"

#include <QPixmap>
#include <QRect>
#include <QStringList>
#include <QWidget>
#include <memory>
#include <array>

class CallDatabase;
class QComboBox;
class QFrame;
class QLabel;
class QLineEdit;
class QListView;
class QPushButton;
class ucLookUp;

class Form26 : public QWidget {
    Q_OBJECT

public:
    static constexpr int kVisibleRows = 15;
    static constexpr QRect kPictureArea = kEditorPictureArea;
    static constexpr QPoint kPictureCentre = kEditorPictureCentre;
    static constexpr QPoint kPictureHome{340, 25};           // where an empty picture waits

    // values: the program-wide values (data folder, service, texts, download buffer).
    // nicknames: the main window's nickname list ("CALL*nickname" entries); it is read while the
    // editor runs and receives the nickname of the call in the form when the editor closes.
    Form26(ModuleValues& values, QStringList& nicknames, QWidget* parent = nullptr);

    // The handlers, named as the controls and events they belong to.
    void Form_Load();
    void cboDB_Click(int index);
    void cmdLookup_Click();
    void cmdAddNewSite_Click();
    void cmdDeleteSite_Click();
    void lstCall_Click();
    void lstCall_MouseMove();
    // Returns the character that goes into the box: a to z as A to Z, anything else unchanged.
    QString txtCall_KeyPress(const QString& key);
    void txtCall_Change();
    void txtName_Change();
    void txtLat_Change();
    void txtLon_Change();
    void Image1_MouseDown(Qt::MouseButton button);
    void cmdClose_Click();
    void Form_Unload();

    // The list box's view of the list: its selection and its first visible row.
    int listIndex() const;
    void setListIndex(int index);
    int topIndex() const;
    void setTopIndex(int index);

    // The picture shown ("" and an empty picture when none).
    QPixmap picture() const;
    const QString& pictureCall() const { return pictureCall_; }

    // The call of the last lookup or list click.
    QString LookupCall;
    // The position of the station the last lookup found (the main window keeps its own).
    double OtherLat = 0;
    double OtherLon = 0;
    // Set by any key typed into txtCall.
    bool editing = false;

    QListView* lstCall;
    CallListModel* calls;
    QLineEdit *txtCall, *txtName, *txtNickName, *txtAdd1, *txtAdd2, *txtCtry, *txtLat, *txtLon, *txtClass,
        *txtYearBorn;
    QLabel *lblCall, *lblName, *lblNickName, *lblAdd1, *lblAdd2, *lblCtry, *lblLat, *lblLon, *lblClass,
        *lblYearBorn;
    QComboBox* cboDB;
    QPushButton *cmdLookup, *cmdAddNewSite, *cmdDeleteSite, *cmdClose;
    QLabel* lblEntries;
    QLabel* lblInfo;
    QLabel* Label4;
    QLabel* Image1;
    QFrame* picArea = nullptr;  // the sunken box the picture is shown in (kPictureArea)
    ucLookUp* lookUp;

signals:
    // After the nickname hand-back of closing; changed when the nickname list differs from before.
    void Unloaded(bool nicknamesChanged);
    // The right button on the picture: the main window opens the picture menu.
    void PictureMenuRequested();

protected:
    void closeEvent(QCloseEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    // Lookup events: 12 a page arrived, 13 the service has no station for the call, 14 the
    // service could not be asked, 15 a picture arrived.
    void ucLookUp_GotPage(const QString& call, bool loggedIn);
    void ucLookUp_CallNotFound(const QString& call);
    void ucLookUp_Unreachable(const QString& call);
    void ucLookUp_PictureReady(const QString& call);

    // The form kept in the file: find, clear, copy the nine boxes, then append + sort (and show
    // the new call in the list) or update in place.
    void storeForm();
    // After a write: a new call is listed and selected; a failure is said.
    void showStored(const QString& key, const StoreOutcome& stored);
    void fillList(CallDatabase& db);
    void showCount();
    void showNotice(const QString& text);
    void coordinateNotice(const QString& text);
    void resetPicture();
    void showPicture(const QString& call);
    bool serviceChosen() const;
    void createControls();  // every control, with its signals
    void layOutControls();
    void fitButtonsToCaptions();
    QString withCall(const QString& text, const QString& call) const;
    QString lookupCaption(const QString& call) const;

    ModuleValues& g_;
    std::unique_ptr<StationService> stations_;
    QStringList& nicknames_;
    QString pictureCall_;
    AwaitedPage page_;
    BusyPointer busy_;
    bool unloaded_ = false;
    int selecting_ = 0;          // > 0 while the program itself moves the list's selection
    bool changedByPress_ = false;  // the current mouse press already changed the selection
};
