#pragma once
// A 24-bit bitmap whose pixel bytes are those of a Windows bitmap section: blue, green, red for
// each pixel, every scan line padded to a multiple of 4 bytes. It is held in a QImage of the
// same layout (Format_BGR888, whose lines Qt pads to 4 bytes), so Qt draws into it and out of
// it, and the bytes can be read and written by address. Scan lines run top to bottom.
#include "common/status.h"

#include <QImage>
#include <QPainter>
#include <QString>
#include <cstdint>
#include <functional>
#include <memory>

class QClipboard;
class QPaintDevice;

// The raster operations of the blitting calls, by their Windows values, and the ones Qt's
// composition modes stand for.
enum class RasterOp : uint32_t {
    SrcCopy = 0x00CC0020,
    SrcPaint = 0x00EE0086,    // source OR destination
    SrcAnd = 0x008800C6,      // source AND destination
    SrcInvert = 0x00660046,   // source XOR destination
    SrcErase = 0x00440328,    // source AND NOT destination
    NotSrcCopy = 0x00330008,  // NOT source
    NotSrcErase = 0x001100A6, // NOT (source OR destination)
    DstInvert = 0x00550009,   // NOT destination
    Blackness = 0x00000042,
    Whiteness = 0x00FF0062,
};

// Qt's composition mode for a raster operation; false when Qt has none (*mode is then untouched).
bool CompositionModeFor(RasterOp op, QPainter::CompositionMode* mode);

// The largest bitmap made: 64 million pixels (192 MB of pixel bytes), far beyond any station
// picture or screen capture, and far below what a hostile header could ask for.
inline constexpr qint64 kMaxBitmapPixels = 64LL * 1000 * 1000;

class cDIBSection {
public:
    static constexpr const char* kAsDibMessage = "I don't know how to put a DIB on the clipboard! Copy as bitmap instead!!!";

    cDIBSection() = default;
    ~cDIBSection() { ClearUp(); }
    cDIBSection(const cDIBSection&) = delete;
    cDIBSection& operator=(const cDIBSection&) = delete;

    // Makes a bitmap of w x h pixels, all black; false (and no bitmap) for a size that is not
    // positive or beyond kMaxBitmapPixels.
    bool Create(int w, int h);
    // Makes this bitmap a copy of picture (any format; transparency drawn over black). A null
    // picture leaves no bitmap.
    void CreateFromPicture(const QImage& picture);
    // Puts the previous state back: no bitmap, zero size.
    void ClearUp();

    bool isNull() const { return image_.isNull(); }
    int Width() const { return image_.width(); }
    int Height() const { return image_.height(); }
    // (width x 3 + 3) with the two low bits cleared: 4 for a width of 1, 12 for 4, 16 for 5.
    int32_t BytesPerScanLine() const { return BytesPerScanLineFor(Width()); }
    static int32_t BytesPerScanLineFor(int width) { return (width * 3 + 3) & ~3; }
    // The first pixel byte, nullptr without a bitmap.
    uint8_t* DIBSectionBitsPtr() { return isNull() ? nullptr : image_.bits(); }
    const uint8_t* DIBSectionBitsPtr() const { return isNull() ? nullptr : image_.constBits(); }
    // The bitmap as a Qt image (shared, not copied).
    const QImage& image() const { return image_; }

    // Copies pixels from source (srcLeft, srcTop; width and height -1: this bitmap's) into this
    // bitmap at 0, 0 with the raster operation. Without a bitmap it does nothing.
    void LoadPictureBlt(const QImage& source, int srcLeft = 0, int srcTop = 0, int width = -1, int height = -1,
                        RasterOp op = RasterOp::SrcCopy);
    // Copies this bitmap's pixels (srcLeft, srcTop onward) to destination at destLeft, destTop.
    void PaintPicture(QPaintDevice& destination, int destLeft = 0, int destTop = 0, int width = -1, int height = -1,
                      int srcLeft = 0, int srcTop = 0, RasterOp op = RasterOp::SrcCopy) const;

    // Random pixel values, seeded from the clock (or from seed when not 0); with grey, the
    // three bytes of a pixel are equal.
    void RandomiseBits(bool grey, uint32_t seed = 0);

    // A new bitmap of the requested size showing the whole picture: an identical copy at the
    // same size, else smoothly scaled. nullptr when it could not be made.
    std::unique_ptr<cDIBSection> Resample(int newHeight, int newWidth) const;

    // Puts a copy of the picture on the clipboard as a bitmap. With bAsDIB, only tells
    // (through message) that it cannot and leaves the clipboard alone. False when nothing was put.
    bool CopyToClipboard(QClipboard* clipboard, bool bAsDIB = false,
                         const std::function<void(const QString&)>& message = {}) const;

    // The bitmap as a Windows bitmap file: the 14-byte file header, the 40-byte information
    // header, then the scan lines bottom-up, each padded to 4 bytes. Empty without a bitmap.
    QByteArray BitmapFileBytes() const;

private:
    QImage image_;
};

// Writes the bitmap as a Windows bitmap file, through a temporary file beside it so that a
// failed write leaves no half file.
Status SaveBitmapFile(const cDIBSection& bitmap, const QString& file);
