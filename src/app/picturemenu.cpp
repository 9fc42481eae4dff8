#include "app/picturemenu.h"

#include "pictures/dibsection.h"
#include "pictures/stationpicture.h"
#include "ui/filedialog.h"

#include <QDir>
#include <QFileInfo>
#include <QStandardPaths>

QList<MenuItem> PictureMenuItems(const LanguageTexts& texts) {
    return {{picturemenu::kCopy, texts.MenuPictureCopy},
            {picturemenu::kSaveBitmap, texts.MenuPictureBitmap},
            {picturemenu::kPasteToPictaro, texts.MenuPicturePictaro},
            {picturemenu::kSaveJpeg, texts.MenuPictureJpeg},
            {picturemenu::kPrint, texts.PrintTitle}};
}

namespace {

void copyPicture(const PictureMenuActions& a) {
    cDIBSection bitmap;
    bitmap.CreateFromPicture(a.picture);
    if (!bitmap.CopyToClipboard(a.clipboard, false, a.showFailure))
        a.showFailure(QStringLiteral("The picture could not be put on the clipboard"));
}

void saveBitmapOnDesktop(const PictureMenuActions& a) {
    const Result<QString> saved = SaveBitmapInFolder(a.picture, a.desktopFolder);
    if (!saved) {
        a.showFailure(saved.message());
        return;
    }
    a.showStatus(QString(a.texts->StatusBitmapSaved).replace(QStringLiteral("###"), QFileInfo(*saved).fileName()));
}

void pasteToPictaro(const PictureMenuActions& a) {
    switch (PasteToPictaro(a.picture, a.pictaro)) {
    case PasteOutcome::KeySent: a.showStatus(QString()); break;
    case PasteOutcome::NoPictaro: a.showStatus(a.texts->StatusPictaroAbsent); break;
    case PasteOutcome::FocusElsewhere: a.showStatus(a.texts->StatusPictaroFocus); break;
    case PasteOutcome::NoKeyboard: a.showStatus(a.texts->StatusNoKeys); break;
    case PasteOutcome::NoPicture: break;
    }
}

void saveJpeg(const PictureMenuActions& a) {
    const QString target = JpegTargetFor(a.askJpegName(a.currentCall));
    if (target.isEmpty()) return;  // cancelled, or a name without a folder
    if (const Status saved = SavePictureAsJpeg(a.picture, target); !saved) a.showFailure(saved.message());
}

}  // namespace

void MnuPopupImageClick(int item, const PictureMenuActions& a) {
    if (a.picture.isNull()) return;
    if (item == picturemenu::kCopy) copyPicture(a);
    if (item == picturemenu::kSaveBitmap) saveBitmapOnDesktop(a);
    if (item == picturemenu::kPasteToPictaro) pasteToPictaro(a);
    if (item == picturemenu::kSaveJpeg) saveJpeg(a);
}

QString AskJpegName(const QString& proposedName, QWidget* owner) {
    const QString filter = AddFilterItem(QString(), QStringLiteral("jpg files (*.jpg)"), QStringLiteral("*.jpg"));
    int flags = ofn::kOverwritePrompt | ofn::kPathMustExist;
    return ShowFileDialog(&flags, QString(), filter, 1, QStringLiteral("jpg"), proposedName, QString(), owner, false);
}

QString DesktopFolder() {
    return QDir::fromNativeSeparators(QStandardPaths::writableLocation(QStandardPaths::DesktopLocation)) + u'/';
}
