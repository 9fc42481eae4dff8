#include "db/form26.h"

#include "app/callflow.h"
#include "app/form13.h"
#include "app/lookuphosts.h"
#include "app/picturecache.h"
#include "common/vbtext.h"
#include "db/calldatabase.h"
#include "db/editorrules.h"
#include "db/listsearch.h"
#include "db/storestation.h"
#include "lookup/cleancall.h"
#include "lookup/uclookup.h"
#include "ui/beep.h"
#include "ui/unimsgbox.h"

#include "ui/windowhelpers.h"

#include <QApplication>
#include <QCloseEvent>
#include <QComboBox>
#include <QFileInfo>
#include <QImage>
#include <QItemSelectionModel>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QListView>
#include <QMouseEvent>
#include <QPushButton>
#include <QScrollBar>
#include <algorithm>
#include <optional>

namespace {
constexpr const char* kEntriesPrefix = "Number of callsigns in database = ";
}  // namespace

// ---------------------------------------------------------------------------------------------
// The window

Form26::Form26(ModuleValues& values, QStringList& nicknames, QWidget* parent)
    : QWidget(parent, Qt::Window), g_(values), nicknames_(nicknames) {
    setObjectName(QStringLiteral("Form26"));
    setWindowTitle(QStringLiteral("PX Callsigns"));
    ScreenKeeper::of(this);  // opens wholly on a screen, wherever it is put

    createControls();

    lookUp = new ucLookUp(g_.DownloadBuffer, LookupHostsFromSettings(), this);
    stations_ = std::make_unique<StationService>(*lookUp, g_.DataPath);
    connect(lookUp, &ucLookUp::GotPage, this, &Form26::ucLookUp_GotPage);
    connect(lookUp, &ucLookUp::CallNotFound, this, &Form26::ucLookUp_CallNotFound);
    connect(lookUp, &ucLookUp::LoginRequired, this, &Form26::ucLookUp_CallNotFound);
    connect(lookUp, &ucLookUp::PageNotFound, this, &Form26::ucLookUp_Unreachable);
    connect(lookUp, &ucLookUp::SiteNotFound, this, &Form26::ucLookUp_Unreachable);
    connect(lookUp, &ucLookUp::PictureReady, this, &Form26::ucLookUp_PictureReady);
    connect(lookUp, &ucLookUp::NoPic, this, [this] {
        if (!page_.waiting()) busy_.set(false);
    });
}

// 1.
void Form26::Form_Load() {
    const LanguageTexts& t = g_.Texts;
    setWindowTitle(t.EditorTitle);
    layOutControls();
    lblInfo->setText(t.EditorInfo1 + u' ' + t.EditorInfo2 + u' ' + t.EditorInfo3 + u' ' + t.EditorInfo4);
    showNotice(QString());
    CallDatabase db(g_.callFilePath());
    fillList(db);
    lblEntries->setText(QString(t.EditorEntries).replace(QStringLiteral("xxx"), QString::number(calls->rowCount())));
    const std::array<std::pair<QLabel*, QString>, 10> captions{{{lblCall, t.FieldCall},
                                                                 {lblName, t.FieldName},
                                                                 {lblNickName, t.FieldNickname},
                                                                 {lblAdd1, t.FieldAdd1},
                                                                 {lblAdd2, t.FieldAdd2},
                                                                 {lblCtry, t.FieldCountry},
                                                                 {lblLat, t.FieldLatitude},
                                                                 {lblLon, t.FieldLongitude},
                                                                 {lblClass, t.FieldClass},
                                                                 {lblYearBorn, t.FieldYearBorn}}};
    for (const auto& [label, text] : captions) label->setText(text + QStringLiteral(": "));
    const QString callsign = QStringLiteral("callsign");
    cmdAddNewSite->setText(withCall(t.EditorAdd, callsign));
    cmdLookup->setText(lookupCaption(callsign));
    cmdDeleteSite->setText(withCall(t.EditorDelete, callsign));
    cmdClose->setText(t.CloseButton);

    cboDB->clear();
    for (const CallbookService& service : kServices) cboDB->addItem(QLatin1String(service.editorName));
    cboDB->setCurrentIndex(-1);
    connect(cboDB, &QComboBox::currentIndexChanged, this, &Form26::cboDB_Click, Qt::UniqueConnection);
    // The list index is set to the saved service number itself: the number counts from 1 and the
    // index from 0, so the box shows the service after the saved one, and the click that setting
    // the index causes moves the number on by one. That is how the editor has always opened.
    // A number that points past the last entry (5, HamCall) leaves the box without a selection
    // and raises no click: the number and name stay as they are, and no lookup can be asked for
    // until the user picks a service.
    const int index = g_.ServiceNo;
    if (index >= 0 && index < cboDB->count()) cboDB->setCurrentIndex(index);
    fitButtonsToCaptions();
}

// 2.
void Form26::cboDB_Click(int index) {
    if (index < 0) return;
    g_.ServiceNo = static_cast<int16_t>(index + 1);
    if (const CallbookService* service = ServiceByNumber(g_.ServiceNo)) g_.ServiceName = QLatin1String(service->domain);
    cmdLookup->setText(lookupCaption(txtCall->text()));
    cmdLookup->setEnabled(!txtCall->text().isEmpty() && serviceChosen());
}

// 3.
void Form26::cmdLookup_Click() {
    LookupCall = txtCall->text();
    if (LookupCall.isEmpty()) return;
    busy_.set(true);
    // A lookup still on its way is of no use now.
    page_.forget(*lookUp);
    QString typed = LookupCall;
    const QString call = CleanCall(typed);
    if (call.isEmpty()) {
        // Nothing a service could look up: said as a service would say it.
        ucLookUp_CallNotFound(LookupCall);
        return;
    }
    LookupCall = call;
    page_.ask(*lookUp, static_cast<int16_t>(cboDB->currentIndex() + 1), call);
}

// 4.
void Form26::cmdAddNewSite_Click() { storeForm(); }

void Form26::storeForm() {
    const QString key = StoredCall(txtCall->text());
    if (key.isEmpty()) {
        busy_.set(false);
        return;
    }
    CallDatabase db(g_.callFilePath());
    const StoreOutcome stored = StoreRecord(
        db, {key, txtName->text(), txtAdd1->text(), txtAdd2->text(), txtCtry->text(), txtLat->text(), txtLon->text(),
             txtClass->text(), txtYearBorn->text()});
    showStored(key, stored);
    busy_.set(false);
}

void Form26::showStored(const QString& key, const StoreOutcome& stored) {
    if (stored.appended) {
        CallDatabase db(g_.callFilePath());
        lstCall->setUpdatesEnabled(false);
        fillList(db);
        const int index = FindStringExact(calls->calls(), key);
        setListIndex(index);
        // Near the bottom of the visible rows, 14 rows above it.
        if (index >= kVisibleRows) setTopIndex(index - (kVisibleRows - 1));
        lstCall->setUpdatesEnabled(true);
        showCount();
        // Selecting the new call is a click on its row, as in a list box: the form shows the
        // record as stored, and the buttons (delete among them) name the call.
        if (index >= 0) lstCall_Click();
    }
    // The file is unchanged when it could not be written; say why rather than pretend.
    if (!stored.written) showNotice(stored.written.message());
}

// 5.
void Form26::cmdDeleteSite_Click() {
    lstCall->setUpdatesEnabled(false);
    const int top = topIndex();
    CallDatabase db(g_.callFilePath());
    const Status written = db.DeleteCallRecord(vb::trim(txtCall->text()));
    fillList(db);
    showCount();
    setTopIndex(top);
    lstCall->setUpdatesEnabled(true);
    for (QLineEdit* box : {txtCall, txtName, txtNickName, txtAdd1, txtAdd2, txtCtry, txtLat, txtLon, txtClass, txtYearBorn})
        box->setText(QString());
    resetPicture();
    if (!written) showNotice(written.message());
}

// 6.
void Form26::lstCall_Click() {
    Label4->hide();
    resetPicture();
    const int index = listIndex();
    if (index < 0) return;
    const QString call = calls->calls().at(index);
    LookupCall = call;
    CallDatabase db(g_.callFilePath());
    db.ClearRecord();
    const bool found = db.FindCallRecord(call) > 0;
    const CallRecord& r = db.CurrentRecord;
    txtCall->setText(found ? vb::trim(r.Call()) : call);
    txtName->setText(vb::trim(r.Name()));
    txtAdd1->setText(vb::trim(r.Add1()));
    txtAdd2->setText(vb::trim(r.Add2()));
    txtCtry->setText(vb::trim(r.Ctry()));
    txtLat->setText(vb::trim(r.Lat()));
    txtLon->setText(vb::trim(r.Lon()));
    txtClass->setText(vb::trim(r.Class()));
    txtYearBorn->setText(vb::trim(r.YearBorn()));
    cmdDeleteSite->setEnabled(true);
    cmdAddNewSite->setEnabled(true);
    cmdLookup->setEnabled(serviceChosen());
    cmdDeleteSite->setText(withCall(g_.Texts.EditorDelete, call));
    cmdAddNewSite->setText(withCall(g_.Texts.EditorAdd, call));
    cmdLookup->setText(lookupCaption(call));
    showPicture(call);
    busy_.set(false);
}

// 7. The wheel then scrolls the list under the mouse.
void Form26::lstCall_MouseMove() { lstCall->setFocus(); }

// 8.
QString Form26::txtCall_KeyPress(const QString& key) {
    QString put = key;
    if (key.size() == 1 && key[0].unicode() >= 97 && key[0].unicode() <= 122) put = QChar(key[0].unicode() - 32);
    editing = true;
    for (QLineEdit* box : {txtName, txtAdd1, txtAdd2, txtCtry, txtLat, txtLon, txtClass, txtYearBorn}) box->setText(QString());
    showNotice(QString());
    resetPicture();
    return put;
}

// 9.
void Form26::txtCall_Change() {
    const QString text = txtCall->text();
    txtNickName->setText(QString());
    setListIndex(FindStringExact(calls->calls(), text));
    cmdLookup->setText(lookupCaption(text));
    cmdAddNewSite->setText(withCall(g_.Texts.EditorAdd, text));
    // The delete button names the call it deletes: never one clicked before.
    cmdDeleteSite->setText(withCall(g_.Texts.EditorDelete, text));
    if (listIndex() >= 0) {
        cmdDeleteSite->setEnabled(true);
        // By prefix on purpose: a shorter call may show the nickname of a longer one.
        const int entry = FindString(nicknames_, text);
        if (entry >= 0) txtNickName->setText(nicknames_.at(entry).split(u'*').value(1));
    } else {
        cmdDeleteSite->setEnabled(false);
    }
    cmdAddNewSite->setEnabled(!text.isEmpty() && !txtName->text().isEmpty());
    cmdLookup->setEnabled(!text.isEmpty() && serviceChosen());
}

// 10.
void Form26::txtName_Change() { cmdAddNewSite->setEnabled(!txtCall->text().isEmpty() && !txtName->text().isEmpty()); }

// 11.
void Form26::txtLat_Change() { coordinateNotice(txtLat->text()); }
void Form26::txtLon_Change() { coordinateNotice(txtLon->text()); }

void Form26::coordinateNotice(const QString& text) {
    if (!text.endsWith(u'*')) return;
    showNotice(QStringLiteral("* Coordinates not available from ") + g_.ServiceName + u'\n' +
               QStringLiteral("    Derived from address or zipcode."));
}

// 12. A page arrived: the station's fields into the form, and kept in the file.
void Form26::ucLookUp_GotPage(const QString& call, bool) {
    // Only the answer for the call last asked about (a click in the list asks about another).
    if (!page_.isAnswer(call) || call != LookupCall) return;
    page_.arrived();
    // A page that says the call is unknown, or wants a login, raises its event while the name
    // is read and holds no station: nothing of it goes into the form or the file.
    const TakenPage taken = stations_->Take(call);
    if (!taken.station) {
        if (!taken.refusal) ucLookUp_CallNotFound(call);
        busy_.set(false);
        return;
    }
    // The form shows the record as kept: a page without a position takes the one the file knows.
    const RecordFields& kept = taken.record;
    txtCall->setText(call);
    txtName->setText(kept.name);
    txtAdd1->setText(kept.add1);
    txtAdd2->setText(kept.add2);
    txtCtry->setText(kept.ctry);
    txtLat->setText(kept.lat);
    txtLon->setText(kept.lon);
    txtClass->setText(kept.licenceClass);
    txtYearBorn->setText(kept.yearBorn);
    // The editor's own position of the station, as the page gave it: the main window's station
    // stays as it is.
    OtherLat = taken.positionFromFile ? 0 : vb::val(kept.lat);
    OtherLon = taken.positionFromFile ? 0 : vb::val(kept.lon);
    showStored(StoredCall(call), taken.stored);
    // The station's picture comes next (15).
    busy_.set(false);
}

// 13. The service has no station under this call (or wants a login first).
void Form26::ucLookUp_CallNotFound(const QString& call) {
    if (call != LookupCall) return;
    page_.arrived();
    showNotice(call + QStringLiteral(" not found on ") + g_.ServiceName);
    cmdAddNewSite->setEnabled(false);
    cmdDeleteSite->setEnabled(false);
    busy_.set(false);
    sound::FailureBeep();
}

// 14. The service could not be asked: it did not answer, or answered with an error.
void Form26::ucLookUp_Unreachable(const QString& call) {
    if (!page_.isAnswer(call) || call != LookupCall) return;
    page_.arrived();
    busy_.set(false);
    ShowUniMsgBox(this, cboDB->currentText() + u' ' + g_.Texts.ServiceUnreachable, msgbox::kIconInformation, QStringLiteral("PX callsigns"),
                  QStringLiteral("Ok"));
}

// 15. The picture of a looked-up station: kept in the cache and shown while its call is in the form.
void Form26::ucLookUp_PictureReady(const QString& call) {
    // Only a picture may go into the cache (a page that arrived late comes here too).
    stations_->KeepPicture(call, g_.DownloadBuffer);
    if (call == vb::trim(txtCall->text())) showPicture(call);
    if (!page_.waiting()) busy_.set(false);
}

// 16. The right button opens the picture menu; the left button shows the picture at its natural size.
void Form26::Image1_MouseDown(Qt::MouseButton button) {
    if (button == Qt::RightButton && !Image1->pixmap().isNull()) emit PictureMenuRequested();
    if (button != Qt::LeftButton || pictureCall_.isEmpty()) return;
    const QPixmap full(PictureCachePath(g_.DataPath, pictureCall_));
    if (full.isNull()) return;
    (new Form13(full, this))->ShowCentredOn(QCursor::pos());
}

// 17.
void Form26::cmdClose_Click() { close(); }

void Form26::Form_Unload() {
    if (unloaded_) return;
    unloaded_ = true;
    const QStringList before = nicknames_;
    const QString call = txtCall->text();
    const QString nickname = txtNickName->text();
    // Without a call there is nothing to hand back (and the prefix search for "" would take the
    // first entry of the list for this call's).
    if (!call.isEmpty()) {
        const QString entry = call + u'*' + nickname;
        const int found = FindString(nicknames_, call);
        if (found < 0) {
            if (!nickname.isEmpty()) nicknames_.append(entry);
        } else if (nicknames_.at(found) != entry) {
            nicknames_.removeAt(found);
            nicknames_.append(entry);
        }
    }
    emit Unloaded(nicknames_ != before);
}

void Form26::closeEvent(QCloseEvent* event) {
    Form_Unload();
    event->accept();
}

bool Form26::eventFilter(QObject* watched, QEvent* event) {
    if (watched == txtCall && event->type() == QEvent::KeyPress) {
        auto* key = static_cast<QKeyEvent*>(event);
        // Only keys that type a character; Tab moves the focus.
        if (key->text().isEmpty() || key->key() == Qt::Key_Tab || key->key() == Qt::Key_Backtab) return false;
        const QString put = txtCall_KeyPress(key->text());
        if (put == key->text()) return false;
        txtCall->insert(put);
        return true;
    }
    if (watched == lstCall->viewport()) {
        if (event->type() == QEvent::MouseMove) lstCall_MouseMove();
        if (event->type() == QEvent::MouseButtonPress) changedByPress_ = false;
        return false;
    }
    if (watched == Image1 && event->type() == QEvent::MouseButtonPress) {
        Image1_MouseDown(static_cast<QMouseEvent*>(event)->button());
        return true;
    }
    return QWidget::eventFilter(watched, event);
}

// ---------------------------------------------------------------------------------------------
// Helpers

int Form26::listIndex() const {
    const QModelIndexList selected = lstCall->selectionModel()->selectedIndexes();
    return selected.isEmpty() ? -1 : selected.first().row();
}

void Form26::setListIndex(int index) {
    ++selecting_;
    if (index < 0 || index >= calls->rowCount())
        lstCall->selectionModel()->clear();
    else
        lstCall->selectionModel()->setCurrentIndex(calls->index(index), QItemSelectionModel::ClearAndSelect);
    --selecting_;
}

int Form26::topIndex() const {
    // One scroll step is one row.
    return calls->rowCount() == 0 ? 0 : lstCall->verticalScrollBar()->value();
}

void Form26::setTopIndex(int index) {
    if (calls->rowCount() == 0) return;
    // Past the last full screen the list goes as far as it can, as a list box does.
    lstCall->scrollTo(calls->index(std::clamp(index, 0, calls->rowCount() - 1)), QAbstractItemView::PositionAtTop);
}

void Form26::fillList(CallDatabase& db) {
    QStringList list = calls->calls();  // kept as it is when there is no file
    db.FillCallList(list);
    ++selecting_;
    calls->setCalls(std::move(list));
    --selecting_;
    // A list filled anew shows its first rows, as a list box does.
    lstCall->scrollToTop();
}

void Form26::showCount() { lblEntries->setText(QLatin1String(kEntriesPrefix) + QString::number(calls->rowCount())); }

void Form26::showNotice(const QString& text) {
    Label4->setText(text);
    Label4->setVisible(!text.isEmpty());
}

void Form26::resetPicture() {
    Image1->hide();
    Image1->clear();
    Image1->setGeometry(QRect(kPictureHome, QSize(0, 0)));
    pictureCall_.clear();
}

void Form26::showPicture(const QString& call) {
    const QString file = PictureCachePath(g_.DataPath, call);
    if (!QFileInfo(file).isFile()) return;
    const QPixmap pixmap(file);
    if (pixmap.isNull()) return;
    Image1->hide();
    Image1->setPixmap(pixmap);
    Image1->setGeometry(FitPicture(pixmap.size()));
    Image1->show();
    pictureCall_ = call;
}

QPixmap Form26::picture() const { return Image1->pixmap(); }

bool Form26::serviceChosen() const { return cboDB->currentIndex() >= 0; }

QString Form26::withCall(const QString& text, const QString& call) const { return ReplaceCall(text, call); }

QString Form26::lookupCaption(const QString& call) const {
    return withCall(g_.Texts.EditorLookup, call).replace(QStringLiteral("***"), g_.ServiceName);
}

