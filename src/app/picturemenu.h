#pragma once
// The station picture's pop-up menu (main window and editor): its captions and what each item
// does. The windows pass in where the picture, the desktop, the dialogs and the messages are.
#include "app/pictaropaste.h"
#include "ui/language.h"
#include "ui/popupmenu.h"

#include <QImage>
#include <QList>
#include <QString>
#include <functional>

class QClipboard;

namespace picturemenu {
inline constexpr int kCopy = 0;
inline constexpr int kSaveBitmap = 1;
inline constexpr int kPasteToPictaro = 2;
inline constexpr int kSaveJpeg = 3;
inline constexpr int kPrint = 4;  // the print window: the main window opens it
}  // namespace picturemenu

struct PictureMenuActions {
    QImage picture;                // the editor's when it is open, else the main window's
    QString desktopFolder;         // ends in a separator
    QString currentCall;           // the name the JPEG save dialog proposes
    const LanguageTexts* texts = nullptr;
    QClipboard* clipboard = nullptr;
    PictaroDesktop pictaro;
    std::function<QString(const QString& proposedName)> askJpegName;  // the save dialog; "" when cancelled
    std::function<void(const QString&)> showFailure;                  // a message box with the exclamation icon
    std::function<void(const QString&)> showStatus;                   // the status line
};

// The captions, items 0 to 4.
QList<MenuItem> PictureMenuItems(const LanguageTexts& texts);

// Runs one of items 0 to 3. Without a picture, nothing happens.
void MnuPopupImageClick(int item, const PictureMenuActions& a);

// The save dialog of the JPEG item: "jpg files (*.jpg)", the proposed name, owner's dialog.
QString AskJpegName(const QString& proposedName, QWidget* owner);

// The user's desktop folder, ending in a separator.
QString DesktopFolder();
