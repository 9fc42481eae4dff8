#include "pictures/dibsection.h"

#include <QClipboard>
#include <QDateTime>
#include <QFileInfo>
#include <QPaintDevice>
#include <QRandomGenerator>
#include <QSaveFile>
#include <QtEndian>

#include <algorithm>
#include <cstring>

namespace {

// One byte of the result of a raster operation on a source and a destination byte. Each of the
// operations works bit by bit, so working byte by byte gives the same pixels.
inline uint8_t rasterByte(RasterOp op, uint8_t s, uint8_t d) {
    switch (op) {
    case RasterOp::SrcCopy: return s;
    case RasterOp::SrcPaint: return s | d;
    case RasterOp::SrcAnd: return s & d;
    case RasterOp::SrcInvert: return s ^ d;
    case RasterOp::SrcErase: return static_cast<uint8_t>(s & ~d);
    case RasterOp::NotSrcCopy: return static_cast<uint8_t>(~s);
    case RasterOp::NotSrcErase: return static_cast<uint8_t>(~(s | d));
    case RasterOp::DstInvert: return static_cast<uint8_t>(~d);
    case RasterOp::Blackness: return 0;
    case RasterOp::Whiteness: return 0xFF;
    }
    return d;  // an unknown operation leaves the destination as it is
}

// The part of a width x height rectangle at (left, top) of a source that lies on it and that
// fits a target of targetSize at (targetLeft, targetTop).
struct Span {
    int srcLeft, srcTop, dstLeft, dstTop, width, height;
};

Span clip(QSize source, QSize target, int srcLeft, int srcTop, int dstLeft, int dstTop, int width, int height) {
    // Negative offsets move the start into both pictures by the same amount.
    if (srcLeft < 0) { dstLeft -= srcLeft; width += srcLeft; srcLeft = 0; }
    if (srcTop < 0) { dstTop -= srcTop; height += srcTop; srcTop = 0; }
    if (dstLeft < 0) { srcLeft -= dstLeft; width += dstLeft; dstLeft = 0; }
    if (dstTop < 0) { srcTop -= dstTop; height += dstTop; dstTop = 0; }
    width = std::min({width, source.width() - srcLeft, target.width() - dstLeft});
    height = std::min({height, source.height() - srcTop, target.height() - dstTop});
    if (width <= 0 || height <= 0) return {0, 0, 0, 0, 0, 0};
    return {srcLeft, srcTop, dstLeft, dstTop, width, height};
}

void putLe16(QByteArray& b, int at, uint16_t v) { qToLittleEndian(v, b.data() + at); }
void putLe32(QByteArray& b, int at, uint32_t v) { qToLittleEndian(v, b.data() + at); }

}  // namespace

bool CompositionModeFor(RasterOp op, QPainter::CompositionMode* mode) {
    switch (op) {
    case RasterOp::SrcCopy: *mode = QPainter::CompositionMode_Source; return true;
    case RasterOp::SrcPaint: *mode = QPainter::RasterOp_SourceOrDestination; return true;
    case RasterOp::SrcAnd: *mode = QPainter::RasterOp_SourceAndDestination; return true;
    case RasterOp::SrcInvert: *mode = QPainter::RasterOp_SourceXorDestination; return true;
    case RasterOp::SrcErase: *mode = QPainter::RasterOp_SourceAndNotDestination; return true;
    case RasterOp::NotSrcCopy: *mode = QPainter::RasterOp_NotSource; return true;
    case RasterOp::NotSrcErase: *mode = QPainter::RasterOp_NotSourceAndNotDestination; return true;
    case RasterOp::DstInvert: *mode = QPainter::RasterOp_NotDestination; return true;
    case RasterOp::Blackness: *mode = QPainter::RasterOp_ClearDestination; return true;
    case RasterOp::Whiteness: *mode = QPainter::RasterOp_SetDestination; return true;
    }
    return false;
}

bool cDIBSection::Create(int w, int h) {
    ClearUp();
    if (w <= 0 || h <= 0 || static_cast<qint64>(w) * h > kMaxBitmapPixels) return false;
    QImage made(w, h, QImage::Format_BGR888);
    if (made.isNull() || made.bytesPerLine() != BytesPerScanLineFor(w)) return false;
    std::memset(made.bits(), 0, static_cast<size_t>(made.sizeInBytes()));  // black, and zero padding
    image_ = std::move(made);
    return true;
}

void cDIBSection::CreateFromPicture(const QImage& picture) {
    if (!Create(picture.width(), picture.height())) return;
    if (picture.hasAlphaChannel()) {
        QImage opaque(picture.size(), QImage::Format_RGB32);
        opaque.fill(Qt::black);
        QPainter(&opaque).drawImage(0, 0, picture);
        LoadPictureBlt(opaque);
    } else {
        LoadPictureBlt(picture);
    }
}

void cDIBSection::ClearUp() { image_ = QImage(); }

void cDIBSection::LoadPictureBlt(const QImage& source, int srcLeft, int srcTop, int width, int height, RasterOp op) {
    if (isNull() || source.isNull()) return;
    if (width == -1) width = Width();
    if (height == -1) height = Height();
    const Span s = clip(source.size(), image_.size(), srcLeft, srcTop, 0, 0, width, height);
    if (s.width == 0) return;
    const QImage from = source.copy(s.srcLeft, s.srcTop, s.width, s.height).convertToFormat(QImage::Format_BGR888);
    for (int y = 0; y < s.height; ++y) {
        const uint8_t* in = from.constScanLine(y);
        uint8_t* out = image_.scanLine(s.dstTop + y) + s.dstLeft * 3;
        if (op == RasterOp::SrcCopy) {
            std::memcpy(out, in, static_cast<size_t>(s.width) * 3);
            continue;
        }
        for (int i = 0; i < s.width * 3; ++i) out[i] = rasterByte(op, in[i], out[i]);
    }
}

void cDIBSection::PaintPicture(QPaintDevice& destination, int destLeft, int destTop, int width, int height, int srcLeft,
                               int srcTop, RasterOp op) const {
    if (isNull()) return;
    if (width == -1) width = Width();
    if (height == -1) height = Height();
    QPainter::CompositionMode mode;
    if (!CompositionModeFor(op, &mode)) return;
    QPainter painter;
    if (!painter.begin(&destination)) return;
    painter.setCompositionMode(mode);
    painter.drawImage(QPoint(destLeft, destTop), image_, QRect(srcLeft, srcTop, width, height));
}

void cDIBSection::RandomiseBits(bool grey, uint32_t seed) {
    if (isNull()) return;
    QRandomGenerator random(seed ? seed : static_cast<uint32_t>(QDateTime::currentMSecsSinceEpoch()));
    for (int y = 0; y < Height(); ++y) {
        uint8_t* line = image_.scanLine(y);
        for (int x = 0; x < Width(); ++x) {
            const uint32_t r = random.generate();
            line[x * 3] = static_cast<uint8_t>(r);
            line[x * 3 + 1] = grey ? line[x * 3] : static_cast<uint8_t>(r >> 8);
            line[x * 3 + 2] = grey ? line[x * 3] : static_cast<uint8_t>(r >> 16);
        }
    }
}

std::unique_ptr<cDIBSection> cDIBSection::Resample(int newHeight, int newWidth) const {
    auto result = std::make_unique<cDIBSection>();
    if (isNull() || !result->Create(newWidth, newHeight)) return nullptr;
    if (newWidth == Width() && newHeight == Height()) {
        std::memcpy(result->DIBSectionBitsPtr(), DIBSectionBitsPtr(), static_cast<size_t>(image_.sizeInBytes()));
        return result;
    }
    // Qt's smooth scaling weighs the neighbouring pixels by the two sizes' scale factors.
    result->LoadPictureBlt(image_.scaled(newWidth, newHeight, Qt::IgnoreAspectRatio, Qt::SmoothTransformation));
    return result;
}

bool cDIBSection::CopyToClipboard(QClipboard* clipboard, bool bAsDIB,
                                  const std::function<void(const QString&)>& message) const {
    if (bAsDIB) {
        if (message) message(QString::fromLatin1(kAsDibMessage));
        return false;
    }
    if (isNull() || !clipboard) return false;
    clipboard->setImage(image_.copy());
    return true;
}

QByteArray cDIBSection::BitmapFileBytes() const {
    if (isNull()) return {};
    constexpr int kHeaders = 14 + 40;
    const qint64 imageSize = static_cast<qint64>(BytesPerScanLine()) * Height();
    QByteArray b(static_cast<qsizetype>(kHeaders + imageSize), '\0');
    b[0] = 'B';
    b[1] = 'M';
    putLe32(b, 2, static_cast<uint32_t>(b.size()));
    putLe32(b, 10, kHeaders);                  // where the pixels start
    putLe32(b, 14, 40);                        // information header size
    putLe32(b, 18, static_cast<uint32_t>(Width()));
    putLe32(b, 22, static_cast<uint32_t>(Height()));  // positive: the first line in the file is the bottom one
    putLe16(b, 26, 1);                         // planes
    putLe16(b, 28, 24);                        // bits per pixel
    putLe32(b, 30, 0);                         // no compression
    putLe32(b, 34, static_cast<uint32_t>(imageSize));
    putLe32(b, 38, 3780);                      // 96 dots per inch, in dots per metre
    putLe32(b, 42, 3780);
    for (int y = 0; y < Height(); ++y)
        std::memcpy(b.data() + kHeaders + static_cast<qint64>(Height() - 1 - y) * BytesPerScanLine(),
                    image_.constScanLine(y), static_cast<size_t>(BytesPerScanLine()));
    return b;
}

Status SaveBitmapFile(const cDIBSection& bitmap, const QString& file) {
    if (bitmap.isNull()) return Status::Failed(QStringLiteral("There is no picture to save"));
    QSaveFile out(file);
    if (!out.open(QIODevice::WriteOnly) || out.write(bitmap.BitmapFileBytes()) < 0 || !out.commit())
        return Status::Failed(QStringLiteral("Cannot write the bitmap '") + QFileInfo(file).fileName() +
                              QStringLiteral("': ") + out.errorString());
    return Status::Ok();
}
