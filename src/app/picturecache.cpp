#include "app/picturecache.h"

#include "app/callflow.h"

#include <QDir>
#include <QFileInfo>
#include <QImage>
#include <QSaveFile>

bool StorePictureInCache(const QString& dataPath, const QString& call, const QByteArray& bytes) {
    if (call.isEmpty() || QImage::fromData(bytes).isNull()) return false;
    const QString file = PictureCachePath(dataPath, call);
    if (!QDir().mkpath(QFileInfo(file).absolutePath())) return false;
    QSaveFile out(file);
    return out.open(QIODevice::WriteOnly) && out.write(bytes) == bytes.size() && out.commit();
}
