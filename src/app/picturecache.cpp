#include "app/picturecache.h"

#include <QDir>
#include <QFileInfo>
#include <QSaveFile>

QString PictureCachePath(const QString& dataPath, const QString& call) {
    return dataPath + QStringLiteral("/images/qrzImages/") + call + QStringLiteral(".jpg");
}

bool LooksLikePicture(const QByteArray& bytes) {
    static constexpr const char* kSignatures[] = {"\xFF\xD8\xFF", "\x89PNG\r\n\x1A\n", "GIF87a", "GIF89a", "BM"};
    for (const char* signature : kSignatures)
        if (bytes.startsWith(signature)) return bytes.size() > qsizetype(qstrlen(signature));
    return false;
}

bool StorePictureInCache(const QString& dataPath, const QString& call, const QByteArray& bytes) {
    if (call.isEmpty() || !LooksLikePicture(bytes)) return false;
    const QString file = PictureCachePath(dataPath, call);
    if (!QDir().mkpath(QFileInfo(file).absolutePath())) return false;
    QSaveFile out(file);
    return out.open(QIODevice::WriteOnly) && out.write(bytes) == bytes.size() && out.commit();
}
