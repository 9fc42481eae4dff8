// JPEG writing with the replaced file's times and permissions kept, picture reading with its
// limits, the station picture's bitmap and JPEG copies, and the "picture jpeg" command.
#include "pictures/dibsection.h"
#include "pictures/savejpg.h"
#include "pictures/stationpicture.h"
#include "printto.h"

#include <QBuffer>
#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QImageWriter>
#include <QProcess>
#include <QTemporaryDir>
#include <gtest/gtest.h>

#include <cstdlib>

namespace {

QByteArray readAll(const QString& path) {
    QFile f(path);
    return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray("<missing>");
}

void writeAll(const QString& path, const QByteArray& bytes) {
    QFile f(path);
    ASSERT_TRUE(f.open(QIODevice::WriteOnly));
    f.write(bytes);
}

QImage gradient(int w, int h) {
    QImage i(w, h, QImage::Format_RGB32);
    for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x) i.setPixel(x, y, qRgb(x * 255 / w, y * 255 / h, 128));
    return i;
}

QByteArray jpegBytes(const QImage& picture) {
    QBuffer buffer;
    buffer.open(QIODevice::WriteOnly);
    QImageWriter(&buffer, "jpeg").write(picture);
    return buffer.data();
}

// The largest difference of any colour channel between two pictures of one size.
int largestDifference(const QImage& a, const QImage& b) {
    int worst = 0;
    for (int y = 0; y < a.height(); ++y)
        for (int x = 0; x < a.width(); ++x) {
            const QRgb p = a.pixel(x, y), q = b.pixel(x, y);
            worst = std::max({worst, std::abs(qRed(p) - qRed(q)), std::abs(qGreen(p) - qGreen(q)), std::abs(qBlue(p) - qBlue(q))});
        }
    return worst;
}

// A folder where not even root can make a file.
const QString kUnwritableFolder = QStringLiteral("/proc/");

TEST(SaveJpg, WritesTheBitmapAtTheQuality) {
    QTemporaryDir dir;
    const QImage picture = gradient(64, 48);
    cDIBSection bitmap;
    bitmap.CreateFromPicture(picture);
    const struct { int quality; } cases[] = {{10}, {70}, {95}};
    qint64 previousSize = 0;
    for (const auto& c : cases) {
        const QString file = dir.filePath(QStringLiteral("q%1.jpg").arg(c.quality));
        ASSERT_TRUE(SaveJPG(bitmap, file, c.quality).ok());
        const QByteArray bytes = readAll(file);
        EXPECT_TRUE(bytes.startsWith("\xFF\xD8\xFF"));
        EXPECT_GT(bytes.size(), previousSize) << "a higher quality keeps more";
        previousSize = bytes.size();
        const QImage back(file);
        ASSERT_EQ(back.size(), picture.size());
        EXPECT_LE(largestDifference(back, picture), c.quality >= 70 ? 12 : 60) << c.quality;
    }
    // The writer is the same one that any caller of Qt gets at that quality.
    QImageWriter reference(dir.filePath(QStringLiteral("reference.jpg")), "jpeg");
    reference.setQuality(70);
    ASSERT_TRUE(reference.write(bitmap.image()));
    EXPECT_EQ(readAll(dir.filePath(QStringLiteral("q70.jpg"))), readAll(dir.filePath(QStringLiteral("reference.jpg"))));
}

TEST(SaveJpg, ReplacingAFileKeepsItsTimesAndPermissions) {
    QTemporaryDir dir;
    const QString file = dir.filePath(QStringLiteral("kept.jpg"));
    writeAll(file, "old contents");
    const QDateTime accessed = QDateTime::fromString(QStringLiteral("2001-02-03T04:05:06.789Z"), Qt::ISODateWithMs);
    const QDateTime modified = QDateTime::fromString(QStringLiteral("2002-03-04T05:06:07.123Z"), Qt::ISODateWithMs);
    {
        QFile f(file);
        ASSERT_TRUE(f.open(QIODevice::Append));
        ASSERT_TRUE(f.setFileTime(accessed, QFileDevice::FileAccessTime));
        ASSERT_TRUE(f.setFileTime(modified, QFileDevice::FileModificationTime));
    }
    const auto permissions = QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ReadGroup;
    ASSERT_TRUE(QFile::setPermissions(file, permissions));
    cDIBSection bitmap;
    bitmap.CreateFromPicture(gradient(8, 8));
    ASSERT_TRUE(SaveJPG(bitmap, file, 70).ok());
    const QFileInfo after(file);
    EXPECT_EQ(after.fileTime(QFileDevice::FileAccessTime).toUTC(), accessed);
    EXPECT_EQ(after.fileTime(QFileDevice::FileModificationTime).toUTC(), modified);
    EXPECT_EQ(after.permissions() & ~(QFileDevice::ReadUser | QFileDevice::WriteUser), permissions);
    EXPECT_EQ(QDir(dir.path()).entryList(QDir::Files | QDir::Hidden), QStringList{QStringLiteral("kept.jpg")}) << "no temporary file left";
    EXPECT_TRUE(readAll(file).startsWith("\xFF\xD8\xFF"));

    // A new file takes the time of its writing.
    const QString fresh = dir.filePath(QStringLiteral("fresh.jpg"));
    const QDateTime before = QDateTime::currentDateTimeUtc().addSecs(-2);
    ASSERT_TRUE(SaveJPG(bitmap, fresh, 70).ok());
    EXPECT_GE(QFileInfo(fresh).lastModified().toUTC(), before);
    EXPECT_EQ(QFileInfo(fresh).permissions() & ~(QFileDevice::ReadUser | QFileDevice::WriteUser),
              QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ReadGroup | QFileDevice::ReadOther);
}

TEST(SaveJpg, FailuresSayWhyAndLeaveFilesAlone) {
    QTemporaryDir dir;
    const QString existing = dir.filePath(QStringLiteral("existing.jpg"));
    writeAll(existing, "precious");
    cDIBSection none, bitmap;
    bitmap.CreateFromPicture(gradient(4, 4));
    const struct { const cDIBSection* bitmap; QString file; QString message; } cases[] = {
        {&none, existing, QStringLiteral("Failed to save to JPG (no picture)")},
        {&bitmap, kUnwritableFolder + QStringLiteral("x.jpg"), QStringLiteral("Failed to save to JPG (")},
        {&bitmap, dir.filePath(QStringLiteral("no/such/folder/x.jpg")), QStringLiteral("Failed to save to JPG (")},
    };
    for (const auto& c : cases) {
        const Status saved = SaveJPG(*c.bitmap, c.file, 70);
        EXPECT_FALSE(saved.ok()) << c.file.toStdString();
        EXPECT_TRUE(saved.message().startsWith(c.message)) << saved.message().toStdString();
        EXPECT_GT(saved.message().size(), QStringLiteral("Failed to save to JPG (").size() + 1);
    }
    EXPECT_EQ(readAll(existing), "precious");
    EXPECT_EQ(QDir(dir.path()).entryList(QDir::Files | QDir::Hidden), QStringList{QStringLiteral("existing.jpg")});
    EXPECT_EQ(QString::fromLatin1(kJpegInitFailed), QStringLiteral("Failed to initialise the IJL library: "));
}

TEST(ReadPicture, BadFilesGiveAClearMessage) {
    QTemporaryDir dir;
    const QByteArray jpeg = jpegBytes(gradient(16, 16));
    // The same picture declaring 40,000 x 40,000 pixels in its frame header.
    QByteArray huge = jpeg;
    const qsizetype sof = huge.indexOf("\xFF\xC0");
    ASSERT_GT(sof, 0);
    for (int at : {5, 7}) {
        huge[sof + at] = static_cast<char>(40000 >> 8);
        huge[sof + at + 1] = static_cast<char>(40000 & 0xFF);
    }
    const struct { const char* name; QByteArray bytes; QString message; } cases[] = {
        {"page.jpg", "<!DOCTYPE html><html><body>No picture</body></html>", "Cannot read the picture 'page.jpg': "},
        {"empty.jpg", "", "Cannot read the picture 'empty.jpg': "},
        {"huge.jpg", huge, "The picture 'huge.jpg' is too large: 40000 x 40000 pixels"},
        {"header.jpg", jpeg.left(20), "Cannot read the picture 'header.jpg': "},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        const QString file = dir.filePath(QString::fromLatin1(c.name));
        writeAll(file, c.bytes);
        const Result<QImage> read = ReadPictureFile(file);
        EXPECT_FALSE(read.ok());
        EXPECT_TRUE(read.message().startsWith(c.message)) << read.message().toStdString();
    }
    EXPECT_FALSE(ReadPictureFile(dir.filePath(QStringLiteral("absent.png"))).ok());
    // A picture cut short is read as far as it goes (the rest grey), as viewers show it.
    const QString cut = dir.filePath(QStringLiteral("cut.jpg"));
    writeAll(cut, jpeg.left(jpeg.size() * 2 / 3));
    const Result<QImage> partial = ReadPictureFile(cut);
    if (partial) {
        EXPECT_EQ(partial->size(), QSize(16, 16));
    }
}

TEST(StationPicture, BitmapsTakeTheFirstFreeNumber) {
    QTemporaryDir dir;
    const QString folder = dir.path() + u'/';
    const struct { QStringList present; QString next; } cases[] = {
        {{}, "PX Callsigns_1.bmp"},
        {{"PX Callsigns_1.bmp", "PX Callsigns_2.bmp", "PX Callsigns_3.bmp"}, "PX Callsigns_4.bmp"},
        {{"PX Callsigns_1.bmp", "PX Callsigns_3.bmp"}, "PX Callsigns_2.bmp"},
        {{"PX Callsigns_2.bmp", "PX Callsigns_1.BMP"}, "PX Callsigns_1.bmp"},
    };
    for (const auto& c : cases) {
        for (const QString& f : QDir(folder).entryList(QDir::Files)) QFile::remove(folder + f);
        for (const QString& f : c.present) writeAll(folder + f, "x");
        EXPECT_EQ(FreeDesktopBitmapName(folder), folder + c.next);
    }
    const QImage picture = gradient(5, 3);
    const Result<QString> saved = SaveBitmapInFolder(picture, folder);
    ASSERT_TRUE(saved.ok()) << saved.message().toStdString();
    EXPECT_EQ(*saved, folder + QStringLiteral("PX Callsigns_1.bmp"));
    EXPECT_EQ(QImage(*saved).convertToFormat(QImage::Format_RGB32), picture);
    EXPECT_EQ(readAll(*saved).left(2), "BM");
}

TEST(StationPicture, BitmapFailures) {
    QTemporaryDir dir;
    const struct { QImage picture; QString folder; QString message; } cases[] = {
        {gradient(2, 2), dir.filePath(QStringLiteral("Desktop/")), "The folder '" + dir.filePath(QStringLiteral("Desktop/")) + "' does not exist"},
        {QImage(), dir.path() + u'/', "There is no picture to save"},
        {gradient(2, 2), kUnwritableFolder, "Cannot write the bitmap 'PX Callsigns_1.bmp': "},
    };
    for (const auto& c : cases) {
        const Result<QString> saved = SaveBitmapInFolder(c.picture, c.folder);
        EXPECT_FALSE(saved.ok());
        EXPECT_TRUE(saved.message().startsWith(c.message)) << saved.message().toStdString();
    }
    EXPECT_TRUE(QDir(dir.path()).entryList(QDir::Files).isEmpty());
}

TEST(StationPicture, JpegTargetAndItsFailureText) {
    const struct { QString chosen, target; } cases[] = {
        {"/home/op/DL1ABC", "/home/op/DL1ABC.jpg"}, {"/home/op/DL1ABC.jpg", "/home/op/DL1ABC.jpg"},
        {"/home/op/a.JPG", "/home/op/a.JPG"},       {"/home/op/a.png", "/home/op/a.png.jpg"},
        {"DL1ABC", ""},                             {"", ""},
        {"C:\\Pictures\\DL1ABC", "C:\\Pictures\\DL1ABC.jpg"},
    };
    for (const auto& c : cases) EXPECT_EQ(JpegTargetFor(c.chosen), c.target) << c.chosen.toStdString();
    const QString target = kUnwritableFolder + QStringLiteral("DL1ABC.jpg");
    const Status saved = SavePictureAsJpeg(gradient(4, 4), target);
    EXPECT_EQ(saved.message(), QStringLiteral("Failed to save the picture to the file: '/proc/DL1ABC.jpg'"));
    QTemporaryDir dir;
    EXPECT_TRUE(SavePictureAsJpeg(gradient(4, 4), dir.filePath(QStringLiteral("ok.jpg"))).ok());
    EXPECT_EQ(QImage(dir.filePath(QStringLiteral("ok.jpg"))).size(), QSize(4, 4));
}

struct CliRun { int status; QString err; };

CliRun cli(const QStringList& args) {
    QProcess p;
    p.start(QStringLiteral(PX_CLI), args);
    p.waitForFinished(60000);
    return {p.exitStatus() == QProcess::NormalExit ? p.exitCode() : -1, QString::fromUtf8(p.readAllStandardError())};
}

TEST(PictureCommand, JpegThroughTheBitmap) {
    QTemporaryDir dir;
    const QString in = dir.filePath(QStringLiteral("in.png"));
    ASSERT_TRUE(gradient(40, 30).save(in));
    const QString out = dir.filePath(QStringLiteral("out.jpg"));
    writeAll(out, "old");
    const QDateTime modified = QDateTime::fromString(QStringLiteral("2003-01-01T00:00:00Z"), Qt::ISODate);
    {
        QFile f(out);
        ASSERT_TRUE(f.open(QIODevice::Append));
        ASSERT_TRUE(f.setFileTime(modified, QFileDevice::FileModificationTime));
    }
    CliRun run = cli({QStringLiteral("picture"), QStringLiteral("jpeg"), in, out});
    EXPECT_EQ(run.status, 0) << run.err.toStdString();
    cDIBSection bitmap;
    bitmap.CreateFromPicture(QImage(in));
    const QString reference = dir.filePath(QStringLiteral("reference.jpg"));
    ASSERT_TRUE(SaveJPG(bitmap, reference, 70).ok());
    EXPECT_EQ(readAll(out), readAll(reference)) << "quality 70 by default";
    EXPECT_EQ(QFileInfo(out).lastModified().toUTC(), modified);

    run = cli({QStringLiteral("picture"), QStringLiteral("jpeg"), in, out, QStringLiteral("--quality"), QStringLiteral("20")});
    EXPECT_EQ(run.status, 0);
    EXPECT_LT(readAll(out).size(), readAll(reference).size());

    writeAll(dir.filePath(QStringLiteral("page.jpg")), "<html>Not found</html>");
    const struct { QStringList args; int status; QString err; } failures[] = {
        {{"picture", "jpeg", dir.filePath("page.jpg"), out}, 1, "pxcallsigns: Cannot read the picture 'page.jpg': "},
        {{"picture", "jpeg", in, "/proc/out.jpg"}, 1, "pxcallsigns: Failed to save to JPG ("},
        {{"picture", "jpeg", in, out, "--quality", "101"}, 2, "pxcallsigns: --quality takes 0 to 100"},
        {{"picture", "jpeg", in}, 2, "pxcallsigns: picture jpeg needs IN and OUT"},
        {{"picture", "png", in, out}, 2, "pxcallsigns: picture takes: jpeg"},
    };
    const QByteArray kept = readAll(out);
    for (const auto& f : failures) {
        run = cli(f.args);
        EXPECT_EQ(run.status, f.status) << f.args.join(' ').toStdString();
        EXPECT_TRUE(run.err.startsWith(f.err)) << run.err.toStdString();
    }
    EXPECT_EQ(readAll(out), kept);
}

}  // namespace
