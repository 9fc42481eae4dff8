#pragma once
// Reading a map picture: a file that is no picture, or one that declares dimensions beyond what a
// map needs, is refused before any pixel memory is taken.
#include "common/status.h"

#include <QImage>
#include <QString>

inline constexpr int kMapPictureMaxSide = 12000;
inline constexpr qint64 kMapPictureMaxPixels = 60'000'000;

// The picture, or the reason it cannot be shown.
Result<QImage> ReadMapPicture(const QString& path);
