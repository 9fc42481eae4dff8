#include "maps/mappicture.h"

#include <QFileInfo>
#include <QImageReader>

Result<QImage> ReadMapPicture(const QString& path) {
    const QString name = QFileInfo(path).fileName();
    QImageReader reader(path);
    reader.setAutoTransform(false);
    if (!reader.canRead()) return Status::Failed(name + QStringLiteral(" is not a picture"));
    const QSize size = reader.size();
    if (!size.isValid() || size.width() > kMapPictureMaxSide || size.height() > kMapPictureMaxSide ||
        qint64(size.width()) * size.height() > kMapPictureMaxPixels)
        return Status::Failed(name + QStringLiteral(" is too large a picture for a map"));
    QImage image;
    if (!reader.read(&image) || image.isNull()) return Status::Failed(name + QStringLiteral(" cannot be read: ") + reader.errorString());
    return image;
}
