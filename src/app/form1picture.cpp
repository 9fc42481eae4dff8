#include "app/form1.h"

#include "app/callflow.h"
#include "app/form13.h"
#include "app/pictaropaste.h"
#include "app/picturemenu.h"
#include "app/picturecache.h"
#include "common/vbtext.h"
#include "db/form26.h"
#include "lookup/uclookup.h"
#include "pictures/dibsection.h"
#include "pictures/form21.h"
#include "pictures/stationpicture.h"
#include "ui/unimsgbox.h"

#include <QClipboard>
#include <QCursor>
#include <QGuiApplication>
#include <QTimer>
#include <QFileInfo>
#include <QLabel>
#include <QPixmap>

// The station picture in the main window: kept when it arrives, shown from the cache, enlarged
// on a click.

void Form1::onPictureReady(const QString& id) {
    // A page whose completion came after a picture request arrives here as well (the control
    // goes by the latest request's kind): only a picture goes into the cache, and only the
    // station on show gets its picture shown.
    if (stations_->KeepPicture(id, g_.DownloadBuffer) && id == pictureOf_)
        showPicture(PictureCachePath(g_.DataPath, id), 20);
    if (!page_.waiting()) busy_.set(false);
}

void Form1::onNoPic(const QString&) {
    if (!page_.waiting()) busy_.set(false);
}

void Form1::showPictureFromCache() {
    const QString file = PictureCachePath(g_.DataPath, g_.CurrentCall);
    const QFileInfo info(file);
    if (!info.isFile()) return;  // no picture yet: the web lookup asks for one
    if (info.size() >= kPictureStubBytes) {
        showPicture(file, 10);
        return;
    }
    // The service's placeholder: fetch the real picture again.
    g_.CurrentCall = vb::trim(lblCall->text()).section(u' ', 0, 0);
    pictureOf_ = g_.CurrentCall;
    if (!lookUp->PictureUrl(g_.CurrentCall).isEmpty()) lookUp->GetPicture(g_.CurrentCall);
}

void Form1::showPicture(const QString& file, int margin) {
    const QPixmap picture(file);
    if (picture.isNull()) return;
    const int innerWidth = margin == 10 ? width() : pic1->contentsRect().width();
    Image1->setPixmap(picture);
    Image1->setGeometry(PicturePlacement(picture.size(), innerWidth, margin));
    Image1->show();
    Image1->raise();
}

void Form1::enlargePicture() {
    const QPixmap picture(PictureCachePath(g_.DataPath, g_.CurrentCall));
    if (picture.isNull()) return;
    (new Form13(picture, this))->ShowCentredOn(QCursor::pos());
}

void Form1::ShowPictureMenu(QPoint at) {
    tmrMenus->stop();
    showMenuAt(at, PictureMenuItems(g_.Texts), &Form1::MnuPopupImageClick);
}

void Form1::MnuPopupImageClick(int item) {
    tmrMenus->stop();
    if (menu_) menu_->close();
    PictureMenuActions a;
    // The editor's picture while the editor is open, else the one shown here.
    const auto* editor = findChild<Form26*>();
    a.picture = (editor ? editor->picture() : Image1->pixmap()).toImage();
    a.desktopFolder = DesktopFolder();
    a.currentCall = g_.CurrentCall;
    a.texts = &g_.Texts;
    a.clipboard = QGuiApplication::clipboard();
    a.pictaro = SessionDesktop(a.clipboard);
    a.askJpegName = [this](const QString& proposed) { return AskJpegName(proposed, this); };
    a.showFailure = [this](const QString& text) {
        ShowUniMsgBox(this, text, msgbox::kIconExclamation, QStringLiteral("PX Callsigns"), QStringLiteral("OK"));
    };
    a.showStatus = [this](const QString& text) { lblStatus->setText(text); };
    if (item == picturemenu::kPrint) {
        if (a.picture.isNull()) return;
        auto* print = new Form21(a.picture, g_.Texts, this);
        PlaceWindowBeside(print, this);
        print->show();
        return;
    }
    ::MnuPopupImageClick(item, a);
}

StationViewActions Form1::stationViewPictureActions() {
    StationViewActions a;
    // Paste and copy run with their errors ignored: a failed step leaves the picture as it was.
    a.paste = [](const QImage& picture) { PasteToPictaro(picture, SessionDesktop(QGuiApplication::clipboard())); };
    a.copy = [](const QImage& picture) {
        cDIBSection bitmap;
        bitmap.CreateFromPicture(picture);
        bitmap.CopyToClipboard(QGuiApplication::clipboard(), false, [](const QString&) {});
    };
    QPointer<Form1> self(this);
    a.save = [self](const QImage& picture) {
        if (!self) return;
        QWidget* owner = self->stView_ ? self->stView_.data() : self.data();
        const QString target = JpegTargetFor(AskJpegName(QString(), owner));
        if (target.isEmpty()) return;  // cancelled, or a name without a folder
        if (const Status saved = SavePictureAsJpeg(picture, target); !saved)
            ShowUniMsgBox(owner, saved.message(), msgbox::kIconExclamation, QStringLiteral("PX Callsigns"), QStringLiteral("OK"));
    };
    return a;
}
