#pragma once
// Writing a bitmap as a JPEG file, and reading a picture file with a limit on its size.
#include "common/status.h"

#include <QImage>
#include <QString>

class cDIBSection;

// The texts of the two ways a JPEG write fails, each followed by the writer's reason.
inline constexpr const char* kJpegInitFailed = "Failed to initialise the IJL library: ";
inline constexpr const char* kJpegWriteFailed = "Failed to save to JPG ";
// Where those failures come from, after the program's name.
inline constexpr const char* kJpegErrorSource = ".mIntelJPEGLibrary";
// What the callers show when the write failed, around the file name.
QString SavePictureFailedText(const QString& file);

// Writes bitmap to file as a JPEG of the given quality (0-100). The file is written beside its
// final place and then put there, so a failed write leaves an existing file as it was. When the
// file existed, its access and modification times and its permissions are put back on the new
// file (on Windows also its creation time). The failure's message is one of the two texts above
// with the reason.
Status SaveJPG(const cDIBSection& bitmap, const QString& file, int quality);

// Reads a picture file (any format Qt reads). A file that is no picture, or that declares more
// than kMaxBitmapPixels, fails with a message naming the file; nothing of that size is allocated.
Result<QImage> ReadPictureFile(const QString& file);
