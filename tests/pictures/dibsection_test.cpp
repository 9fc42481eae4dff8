// The bitmap's bytes: layout, raster operations, resampling, the bitmap file.
#include "pictures/dibsection.h"
#include "printto.h"

#include <QBuffer>
#include <QImage>
#include <QImageReader>
#include <gtest/gtest.h>

#include <cstring>
#include <vector>

namespace {

std::vector<uint8_t> bytesOf(const cDIBSection& b) {
    const uint8_t* p = b.DIBSectionBitsPtr();
    return std::vector<uint8_t>(p, p + static_cast<size_t>(b.BytesPerScanLine()) * b.Height());
}

QImage uniform(int w, int h, QRgb colour) {
    QImage i(w, h, QImage::Format_RGB32);
    i.fill(colour);
    return i;
}

TEST(DibSection, ScanLinesArePaddedToFourBytes) {
    const struct { int width; int32_t bytes; } cases[] = {{1, 4}, {2, 8}, {3, 12}, {4, 12}, {5, 16}, {640, 1920}, {641, 1924}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.width);
        EXPECT_EQ(cDIBSection::BytesPerScanLineFor(c.width), c.bytes);
        cDIBSection b;
        ASSERT_TRUE(b.Create(c.width, 3));
        EXPECT_EQ(b.BytesPerScanLine(), c.bytes);
        EXPECT_EQ(b.image().bytesPerLine(), c.bytes);
        // A new bitmap is black, padding included.
        EXPECT_EQ(bytesOf(b), std::vector<uint8_t>(static_cast<size_t>(c.bytes) * 3, 0));
    }
}

TEST(DibSection, RefusesSizesItCannotHold) {
    const struct { int w, h; } cases[] = {{0, 1}, {1, 0}, {-5, 5}, {40000, 40000}, {8001, 8000}};
    for (const auto& c : cases) {
        cDIBSection b;
        EXPECT_FALSE(b.Create(c.w, c.h)) << c.w << "x" << c.h;
        EXPECT_TRUE(b.isNull());
        EXPECT_EQ(b.DIBSectionBitsPtr(), nullptr);
        // Drawing with no bitmap does nothing.
        b.LoadPictureBlt(uniform(4, 4, qRgb(1, 2, 3)));
        b.RandomiseBits(false);
        EXPECT_EQ(b.Resample(2, 2), nullptr);
        EXPECT_TRUE(b.BitmapFileBytes().isEmpty());
    }
    cDIBSection largest;
    EXPECT_TRUE(largest.Create(8000, 8000));
}

TEST(DibSection, PixelsAreBlueGreenRedByteTriples) {
    QImage picture(2, 2, QImage::Format_RGB32);
    picture.setPixel(0, 0, qRgb(255, 0, 0));
    picture.setPixel(1, 0, qRgb(0, 255, 0));
    picture.setPixel(0, 1, qRgb(0, 0, 255));
    picture.setPixel(1, 1, qRgb(1, 2, 3));
    cDIBSection b;
    b.CreateFromPicture(picture);
    ASSERT_EQ(b.Width(), 2);
    ASSERT_EQ(b.Height(), 2);
    const std::vector<uint8_t> expected = {0x00, 0x00, 0xFF, 0x00, 0xFF, 0x00, 0, 0,
                                           0xFF, 0x00, 0x00, 0x03, 0x02, 0x01, 0, 0};
    EXPECT_EQ(bytesOf(b), expected);
}

TEST(DibSection, TransparentPicturesAreDrawnOverBlack) {
    QImage picture(1, 1, QImage::Format_ARGB32);
    picture.setPixel(0, 0, qRgba(200, 100, 50, 0));
    cDIBSection b;
    b.CreateFromPicture(picture);
    EXPECT_EQ(bytesOf(b), (std::vector<uint8_t>{0, 0, 0, 0}));
    picture.setPixel(0, 0, qRgba(200, 100, 50, 255));
    b.CreateFromPicture(picture);
    EXPECT_EQ(bytesOf(b), (std::vector<uint8_t>{50, 100, 200, 0}));
}

TEST(DibSection, LoadPictureBltAppliesTheRasterOperation) {
    // Destination bytes 0xCC, source bytes 0xAA.
    const struct { RasterOp op; uint8_t result; } cases[] = {
        {RasterOp::SrcCopy, 0xAA},     {RasterOp::SrcPaint, 0xEE},    {RasterOp::SrcAnd, 0x88},
        {RasterOp::SrcInvert, 0x66},   {RasterOp::SrcErase, 0x22},    {RasterOp::NotSrcCopy, 0x55},
        {RasterOp::NotSrcErase, 0x11}, {RasterOp::DstInvert, 0x33},   {RasterOp::Blackness, 0x00},
        {RasterOp::Whiteness, 0xFF},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(static_cast<uint32_t>(c.op));
        cDIBSection b;
        ASSERT_TRUE(b.Create(3, 2));
        b.LoadPictureBlt(uniform(3, 2, qRgb(0xCC, 0xCC, 0xCC)));
        b.LoadPictureBlt(uniform(3, 2, qRgb(0xAA, 0xAA, 0xAA)), 0, 0, -1, -1, c.op);
        std::vector<uint8_t> expected;
        for (int y = 0; y < 2; ++y) {
            expected.insert(expected.end(), 9, c.result);
            expected.insert(expected.end(), 3, 0);  // padding untouched
        }
        EXPECT_EQ(bytesOf(b), expected);
    }
}

TEST(DibSection, LoadPictureBltTakesThePartAskedFor) {
    QImage source(4, 3, QImage::Format_RGB32);
    for (int y = 0; y < 3; ++y)
        for (int x = 0; x < 4; ++x) source.setPixel(x, y, qRgb(x * 10 + y, 0, 0));
    const struct { int left, top, w, h; std::vector<uint8_t> reds; } cases[] = {
        {1, 1, -1, -1, {11, 21, 12, 22}},  // the bitmap's own size from (1, 1)
        {2, 0, 1, 2, {20, 0, 21, 0}},       // one column: the rest stays black
        {3, 2, -1, -1, {32, 0, 0, 0}},      // only what lies on the source
        {-1, 0, -1, -1, {0, 0, 0, 1}},      // starts left of the source: that column stays black
        {9, 9, -1, -1, {0, 0, 0, 0}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message() << c.left << "," << c.top);
        cDIBSection b;
        ASSERT_TRUE(b.Create(2, 2));
        b.LoadPictureBlt(source, c.left, c.top, c.w, c.h);
        std::vector<uint8_t> reds;
        for (int y = 0; y < 2; ++y)
            for (int x = 0; x < 2; ++x) reds.push_back(b.image().constScanLine(y)[x * 3 + 2]);
        EXPECT_EQ(reds, c.reds);
    }
}

TEST(DibSection, PaintPictureCopiesOutWithTheOperation) {
    cDIBSection b;
    ASSERT_TRUE(b.Create(2, 1));
    b.LoadPictureBlt(uniform(2, 1, qRgb(0x0F, 0xF0, 0x33)));
    QImage target = uniform(4, 3, qRgb(0xFF, 0xFF, 0xFF));
    b.PaintPicture(target, 1, 2);
    EXPECT_EQ(target.pixel(0, 2), qRgb(0xFF, 0xFF, 0xFF));
    EXPECT_EQ(target.pixel(1, 2), qRgb(0x0F, 0xF0, 0x33));
    EXPECT_EQ(target.pixel(2, 2), qRgb(0x0F, 0xF0, 0x33));
    EXPECT_EQ(target.pixel(3, 2), qRgb(0xFF, 0xFF, 0xFF));
    EXPECT_EQ(target.pixel(1, 1), qRgb(0xFF, 0xFF, 0xFF));
    b.PaintPicture(target, 0, 0, 1, 1, 1, 0, RasterOp::SrcInvert);
    EXPECT_EQ(target.pixel(0, 0), qRgb(0xF0, 0x0F, 0xCC));
    EXPECT_EQ(target.pixel(1, 0), qRgb(0xFF, 0xFF, 0xFF));
}

TEST(DibSection, ResampleToTheSameSizeIsAnIdenticalCopy) {
    const struct { int w, h; } sizes[] = {{1, 1}, {5, 3}, {33, 17}};
    for (const auto& s : sizes) {
        cDIBSection b;
        ASSERT_TRUE(b.Create(s.w, s.h));
        b.RandomiseBits(false, 7);
        const auto copy = b.Resample(s.h, s.w);
        ASSERT_NE(copy, nullptr);
        EXPECT_EQ(bytesOf(*copy), bytesOf(b));
        EXPECT_NE(copy->DIBSectionBitsPtr(), b.DIBSectionBitsPtr());
    }
}

TEST(DibSection, ResampleScalesTheWholePicture) {
    // Left half black, right half white, 8 x 2, to 4 x 6 (height first) and to 16 x 1.
    QImage source(8, 2, QImage::Format_RGB32);
    for (int x = 0; x < 8; ++x)
        for (int y = 0; y < 2; ++y) source.setPixel(x, y, x < 4 ? qRgb(0, 0, 0) : qRgb(255, 255, 255));
    cDIBSection b;
    b.CreateFromPicture(source);
    const struct { int h, w; } cases[] = {{6, 4}, {1, 16}};
    for (const auto& c : cases) {
        const auto scaled = b.Resample(c.h, c.w);
        ASSERT_NE(scaled, nullptr);
        EXPECT_EQ(scaled->Width(), c.w);
        EXPECT_EQ(scaled->Height(), c.h);
        for (int y = 0; y < c.h; ++y) {
            const uint8_t* line = scaled->image().constScanLine(y);
            EXPECT_EQ(line[0], 0) << "the left edge stays black";
            EXPECT_EQ(line[(c.w - 1) * 3], 255) << "the right edge stays white";
            for (int x = 1; x < c.w; ++x) EXPECT_LE(line[(x - 1) * 3], line[x * 3]) << "x " << x;
        }
    }
    EXPECT_EQ(b.Resample(0, 4), nullptr);
}

TEST(DibSection, RandomiseBits) {
    cDIBSection a, b;
    ASSERT_TRUE(a.Create(16, 16));
    ASSERT_TRUE(b.Create(16, 16));
    a.RandomiseBits(true, 42);
    int differentPixels = 0;
    for (int y = 0; y < 16; ++y)
        for (int x = 0; x < 16; ++x) {
            const uint8_t* p = a.image().constScanLine(y) + x * 3;
            EXPECT_TRUE(p[0] == p[1] && p[1] == p[2]);
            differentPixels += p[0] != a.image().constScanLine(0)[0];
        }
    EXPECT_GT(differentPixels, 200);
    b.RandomiseBits(true, 42);
    EXPECT_EQ(bytesOf(a), bytesOf(b));
    b.RandomiseBits(false, 43);
    int colouredPixels = 0;
    for (int x = 0; x < 16; ++x) {
        const uint8_t* p = b.image().constScanLine(3) + x * 3;
        colouredPixels += !(p[0] == p[1] && p[1] == p[2]);
    }
    EXPECT_GT(colouredPixels, 12);
}

TEST(DibSection, CopyAsDibOnlySaysItCannot) {
    cDIBSection b;
    ASSERT_TRUE(b.Create(2, 2));
    QStringList shown;
    EXPECT_FALSE(b.CopyToClipboard(nullptr, true, [&](const QString& m) { shown << m; }));
    EXPECT_EQ(shown, QStringList{QStringLiteral("I don't know how to put a DIB on the clipboard! Copy as bitmap instead!!!")});
    EXPECT_FALSE(b.CopyToClipboard(nullptr, false, [&](const QString& m) { shown << m; }));
    EXPECT_EQ(shown.size(), 1);
}

TEST(DibSection, BitmapFileIsAWindowsBitmap) {
    QImage picture(3, 2, QImage::Format_RGB32);
    picture.fill(qRgb(0, 0, 0));
    picture.setPixel(0, 0, qRgb(0x11, 0x22, 0x33));  // top left: last line in the file
    picture.setPixel(2, 1, qRgb(0x44, 0x55, 0x66));  // bottom right: first line in the file
    cDIBSection b;
    b.CreateFromPicture(picture);
    const QByteArray file = b.BitmapFileBytes();
    const QByteArray expected = QByteArray::fromHex(
        "424d" "4e000000" "00000000" "36000000"                       // BM, 78 bytes, offset 54
        "28000000" "03000000" "02000000" "0100" "1800" "00000000"      // 40, 3 x 2, 1 plane, 24 bits, RGB
        "18000000" "c40e0000" "c40e0000" "00000000" "00000000"         // 24 image bytes, 96 dpi
        "000000" "000000" "665544" "000000"                            // bottom line, padded
        "332211" "000000" "000000" "000000");                          // top line, padded
    EXPECT_EQ(file.toHex(), expected.toHex());
    QBuffer buffer;
    buffer.setData(file);
    QImageReader reader(&buffer, "bmp");
    const QImage back = reader.read();
    ASSERT_FALSE(back.isNull()) << reader.errorString().toStdString();
    EXPECT_EQ(back.convertToFormat(QImage::Format_RGB32), picture);
}

}  // namespace
