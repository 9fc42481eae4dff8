#include "pictures/savejpg.h"

#include "pictures/dibsection.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QFile>
#include <QFileInfo>
#include <QImageReader>
#include <QImageWriter>
#include <QTemporaryFile>

#include <filesystem>

#include <optional>

namespace {

// What a replaced file keeps of the one it replaces.
struct KeptFileState {
    QDateTime accessed, modified, created;
    QFileDevice::Permissions permissions;
};

void putBack(const QString& file, const KeptFileState& kept) {
    // Times are set on an open file; the permissions last, in case they make it read-only.
    QFile f(file);
    if (f.open(QIODevice::Append)) {
        f.setFileTime(kept.accessed, QFileDevice::FileAccessTime);
        f.setFileTime(kept.modified, QFileDevice::FileModificationTime);
#ifdef Q_OS_WIN
        if (kept.created.isValid()) f.setFileTime(kept.created, QFileDevice::FileBirthTime);
#endif
        f.close();
    }
    f.setPermissions(kept.permissions);
}

Status failed(const char* text, const QString& reason) { return Status::Failed(QString::fromLatin1(text) + reason); }

}  // namespace

QString SavePictureFailedText(const QString& file) {
    return QStringLiteral("Failed to save the picture to the file: '") + file + QStringLiteral("'");
}

Status SaveJPG(const cDIBSection& bitmap, const QString& file, int quality) {
    if (!QImageWriter::supportedImageFormats().contains("jpeg"))
        return failed(kJpegInitFailed, QStringLiteral("no JPEG writer (Qt's jpeg image plugin is missing)"));
    if (bitmap.isNull()) return failed(kJpegWriteFailed, QStringLiteral("(no picture)"));

    const QFileInfo before(file);
    std::optional<KeptFileState> kept;
    if (before.exists())
        kept = KeptFileState{before.fileTime(QFileDevice::FileAccessTime), before.fileTime(QFileDevice::FileModificationTime),
                             before.fileTime(QFileDevice::FileBirthTime), before.permissions()};

    if (kept && !before.isWritable()) return failed(kJpegWriteFailed, QStringLiteral("(the file is read-only)"));
    // Written beside its place and renamed over it, so that the old picture stays whole until the
    // new one is. (Not flushed to the disk first: that would cost more than the encoding.)
    QTemporaryFile out(before.absolutePath() + QStringLiteral("/.") + before.fileName() + QStringLiteral(".XXXXXX"));
    if (!out.open()) return failed(kJpegWriteFailed, QStringLiteral("(") + out.errorString() + ')');
    QImageWriter writer(&out, "jpeg");
    writer.setQuality(quality);
    // Qt's writer hands red-green-blue lines to libjpeg as they are, and converts other formats
    // pixel by pixel at twice the cost of this one swap.
    if (!writer.write(bitmap.image().convertToFormat(QImage::Format_RGB888))) return failed(kJpegWriteFailed, QStringLiteral("(") + writer.errorString() + ')');
    out.close();
    // A new file is readable by everyone, as files the program makes are (the temporary one is not).
    if (!kept)
        out.setPermissions(QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ReadUser | QFileDevice::WriteUser |
                           QFileDevice::ReadGroup | QFileDevice::ReadOther);
    std::error_code error;
    std::filesystem::rename(out.fileName().toStdWString(), before.absoluteFilePath().toStdWString(), error);
    if (error) return failed(kJpegWriteFailed, QStringLiteral("(") + QString::fromLocal8Bit(error.message()) + ')');
    out.setAutoRemove(false);  // it is the picture now
    if (kept) putBack(file, *kept);
    return Status::Ok();
}

Result<QImage> ReadPictureFile(const QString& file) {
    const QString name = QFileInfo(file).fileName();
    QImageReader reader(file);
    const QSize declared = reader.size();
    if (declared.isValid() && static_cast<qint64>(declared.width()) * declared.height() > kMaxBitmapPixels)
        return Status::Failed(QStringLiteral("The picture '%1' is too large: %2 x %3 pixels")
                                  .arg(name).arg(declared.width()).arg(declared.height()));
    // The reader's own limit as well, in megabytes, for formats that tell their size late.
    reader.setAllocationLimit(static_cast<int>(kMaxBitmapPixels * 4 / (1024 * 1024)) + 1);
    QImage picture = reader.read();
    if (picture.isNull())
        return Status::Failed(QStringLiteral("Cannot read the picture '") + name + QStringLiteral("': ") + reader.errorString());
    return picture;
}
