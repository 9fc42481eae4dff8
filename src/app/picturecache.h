#pragma once
// The station picture cache: one file per call, <data folder>/images/qrzImages/CALL.jpg.
#include <QByteArray>
#include <QString>

QString PictureCachePath(const QString& dataPath, const QString& call);

// A cached file of fewer bytes than this is the service's placeholder and is fetched again.
constexpr qint64 kPictureStubBytes = 2001;

// Whether the bytes begin as a JPEG, PNG, GIF or BMP file does. The picture servers answer a
// missing picture or a refused request with a page, which must never be cached as a picture.
bool LooksLikePicture(const QByteArray& bytes);

// Keeps the downloaded bytes as the call's cache file, exactly as they came, when they are a
// picture; anything else (an error page, a page that arrived late) leaves the cache alone. The
// cache folder is made when it is missing. True when the file now holds the bytes.
bool StorePictureInCache(const QString& dataPath, const QString& call, const QByteArray& bytes);
