#include "pictures/stationpicture.h"

#include "pictures/dibsection.h"
#include "pictures/savejpg.h"

#include <QDir>
#include <QFileInfo>

QString FreeDesktopBitmapName(const QString& folder) {
    for (qint64 n = 1;; ++n) {
        const QString name = folder + QStringLiteral("PX Callsigns_") + QString::number(n) + QStringLiteral(".bmp");
        if (!QFileInfo::exists(name)) return name;
    }
}

Result<QString> SaveBitmapInFolder(const QImage& picture, const QString& folder) {
    if (picture.isNull()) return Status::Failed(QStringLiteral("There is no picture to save"));
    const QFileInfo dir(folder);
    if (!dir.isDir()) return Status::Failed(QStringLiteral("The folder '") + QDir::toNativeSeparators(folder) + QStringLiteral("' does not exist"));
    cDIBSection bitmap;
    bitmap.CreateFromPicture(picture);
    if (bitmap.isNull()) return Status::Failed(QStringLiteral("The picture is too large to save"));
    const QString file = FreeDesktopBitmapName(folder);
    if (const Status saved = SaveBitmapFile(bitmap, file); !saved) return saved;
    return file;
}

QString JpegTargetFor(const QString& chosen) {
    // Either separator marks a folder part, as on Windows.
    if (!chosen.contains(u'/') && !chosen.contains(u'\\')) return {};
    return chosen.endsWith(QStringLiteral(".jpg"), Qt::CaseInsensitive) ? chosen : chosen + QStringLiteral(".jpg");
}

Status SavePictureAsJpeg(const QImage& picture, const QString& target) {
    cDIBSection bitmap;
    bitmap.CreateFromPicture(picture);
    if (bitmap.isNull() || !SaveJPG(bitmap, target, kStationJpegQuality)) return Status::Failed(SavePictureFailedText(target));
    return Status::Ok();
}
