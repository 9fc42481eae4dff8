#pragma once
// What the station picture's menu does with the picture, without the window: the bitmap copy on
// the desktop and the JPEG copy in a file the user chose.
#include "common/status.h"

#include <QImage>
#include <QString>

// The JPEG quality the program saves station pictures at.
inline constexpr int kStationJpegQuality = 70;

// folder + "PX Callsigns_" + n + ".bmp" for the first n, counting from 1, that names no file.
// folder ends in a separator.
QString FreeDesktopBitmapName(const QString& folder);

// Writes picture as a Windows bitmap under the first free name in folder (see above); the path
// written, or a message when there is no picture, the folder is missing or cannot be written.
Result<QString> SaveBitmapInFolder(const QImage& picture, const QString& folder);

// The file a JPEG copy goes to for the name chosen in the save dialog: the name with ".jpg"
// (kept when it already ends so, in any case); "" when the name has no folder part (nothing is
// written then).
QString JpegTargetFor(const QString& chosen);

// Writes picture as a JPEG at kStationJpegQuality to target. On failure the message is the one
// the user is shown: "Failed to save the picture to the file: '<target>'".
Status SavePictureAsJpeg(const QImage& picture, const QString& target);
