#pragma once
// The station picture cache: one JPEG file per call in <data folder>/images/qrzImages.
#include <QByteArray>
#include <QString>

// Keeps the downloaded bytes as the call's cache file, exactly as they came, when they are a
// picture; anything else (an error page, a page that arrived late) leaves the cache alone. The
// cache folder is made when it is missing. True when the file now holds the bytes.
bool StorePictureInCache(const QString& dataPath, const QString& call, const QByteArray& bytes);
