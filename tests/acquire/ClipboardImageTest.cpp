#include "acquire/ClipboardImage.h"

#include "../support/MemoryCap.h"
#include "DibMaker.h"
#include "acquire/DibLayout.h"

#include <QBuffer>
#include <QImage>
#include <QMimeData>

#include <gtest/gtest.h>

#include <memory>
#include <vector>

using namespace lanmira;
using namespace dibmaker;

namespace {

QByteArray bytesOf(const Bytes& b) {
    return QByteArray(reinterpret_cast<const char*>(b.data()), static_cast<qsizetype>(b.size()));
}

std::unique_ptr<QMimeData> mimeWith(const char* format, const QByteArray& data) {
    auto mime = std::make_unique<QMimeData>();
    mime->setData(QString::fromLatin1(format), data);
    return mime;
}

// The picture seen as another program sees it, to compare pixels whatever the layout.
QImage asImage(const PackedDib& dib) {
    const auto layout = DibLayout::read(dib.data(), dib.size());
    QByteArray file("BM");
    file += QByteArray(12, '\0') + dibToBytes(dib);
    file[10] = static_cast<char>(14 + (layout ? layout->pixelOffset : 0));
    return QImage::fromData(file, "BMP");
}

Bytes v4Header() {
    Bytes b;
    for (std::uint32_t v : {108u, 2u, 2u, 1u | (24u << 16)})
        put32(b, v);
    return cat(b, {}, 108 - 16);
}

// Red, green on the bottom row; blue, white on the top row.
TEST(ClipboardImage, PastesArriveAs24BitUncompressedBottomUpWithTheSamePixels) {
    const std::vector<std::pair<const char*, Bytes>> rows = {
        {"5-6-5 bit fields", cat(withMasks(infoHeader(2, 2, 16, 3), 0xF800, 0x07E0, 0x001F),
                                 {0x00, 0xF8, 0xE0, 0x07, 0x1F, 0x00, 0xFF, 0xFF})},
        // Colour masks in an unusual order, alpha in the top byte.
        {"32-bit fields",
         cat(withMasks(infoHeader(2, 2, 32, 3), 0xFF, 0xFF00, 0xFF0000),
             {0xFF, 0, 0, 0x80, 0, 0xFF, 0, 0x80, 0, 0, 0xFF, 0x80, 0xFF, 0xFF, 0xFF, 0x80})},
        {"top-down",
         cat(infoHeader(2, -2, 24), {255, 0, 0, 255, 255, 255, 0, 0, 0, 0, 255, 0, 255, 0, 0, 0})},
        // Read as the old core header, it would be a different picture.
        {"version 4 header",
         cat(v4Header(), {0, 0, 255, 0, 255, 0, 0, 0, 255, 0, 0, 255, 255, 255, 0, 0})},
    };
    for (const auto& [name, block] : rows) {
        SCOPED_TRACE(name);
        const PackedDib dib = dibFromMimeData(mimeWith("image/bmp", bytesOf(block)).get());
        ASSERT_TRUE(dib);
        const QByteArray b = dibToBytes(dib);
        EXPECT_EQ(b.left(20),
                  bytesOf(infoHeader(2, 2, 24)).left(20)); // 2 x 2, 24 bits, uncompressed
        EXPECT_EQ(b.mid(40), QByteArray("\0\0\xFF\0\xFF\0\0\0\xFF\0\0\xFF\xFF\xFF\0\0", 16));
    }
}

TEST(ClipboardImage, CopyOffersABmpFileThatPastesBackUnchangedAndTheSamePng) {
    // 8 bits with a 4-entry colour table, which moves the pixel offset in the file header.
    Bytes block = infoHeader(3, 2, 8, 0, 4);
    for (std::uint8_t i : {0, 1, 2, 3})
        block = cat(block, {static_cast<std::uint8_t>(i * 80), 10, 20, 0});
    block = cat(block, {0, 1, 2, 0, 3, 2, 1, 0});
    const PackedDib picture = toDib(block);
    const std::unique_ptr<QMimeData> mime(dibToMimeData(picture));
    ASSERT_TRUE(mime);

    const QByteArray bmp = mime->data(QStringLiteral("image/bmp"));
    EXPECT_EQ(bmp.left(14), QByteArray("BM\x4E\0\0\0\0\0\0\0\x46\0\0\0", 14)); // 78, 0, 70
    EXPECT_EQ(bmp.mid(14), bytesOf(block));
    EXPECT_EQ(dibToBytes(dibFromMimeData(mime.get())), bytesOf(block));

    const QImage png = QImage::fromData(mime->data(QStringLiteral("image/png")), "PNG");
    EXPECT_EQ(png.convertToFormat(QImage::Format_RGB32),
              asImage(picture).convertToFormat(QImage::Format_RGB32));
    EXPECT_EQ(png.pixel(1, 1), qRgb(20, 10, 80)); // bottom row, index 1
    EXPECT_FALSE(dibToMimeData(PackedDib()));
}

TEST(ClipboardImage, OddDataGivesNothingAndGarbageDoesNotHideAGoodPng) {
    Bytes lying{'B', 'M', 66, 0, 0, 0, 0, 0, 0, 0, 54, 0, 0, 0};
    const Bytes huge = infoHeader(1000, 1000, 24);
    lying.insert(lying.end(), huge.begin(), huge.end());
    for (const QByteArray& data :
         {QByteArray("no picture, just text"), QByteArray(), QByteArray("BM\x10\0\0\0", 6),
          bytesOf(cat(lying, {1, 2, 3}, 9)), bytesOf(infoHeader(2, 2, 24)).left(30)}) {
        const auto mime = mimeWith("image/bmp", data);
        EXPECT_TRUE(mimeHasPicture(mime.get()));
        EXPECT_FALSE(dibFromMimeData(mime.get())) << data.toHex().data();
    }
    EXPECT_FALSE(mimeHasPicture(mimeWith("text/plain", "hello").get()));
    EXPECT_FALSE(dibFromMimeData(nullptr));

    QImage image(3, 2, QImage::Format_ARGB32);
    image.fill(qRgb(10, 20, 30));
    image.setPixel(0, 0, qRgb(200, 100, 50));
    QByteArray png;
    QBuffer buffer(&png);
    ASSERT_TRUE(buffer.open(QIODevice::WriteOnly) && image.save(&buffer, "PNG"));
    auto mime = mimeWith("image/bmp", "junk");
    mime->setData(QStringLiteral("image/png"), png);
    const PackedDib fromPng = dibFromMimeData(mime.get());
    EXPECT_EQ(dibToBytes(fromPng).mid(14, 2), QByteArray("\x18\0", 2));
    EXPECT_EQ(asImage(fromPng), image.convertToFormat(QImage::Format_RGB32));
}

// Any program can own the clipboard: a kilobyte of run-length data claiming 65535 x 21845
// pixels must not cost 4 GB.
TEST(ClipboardImage, HugeClaimsAreRefusedBeforeAnythingIsAllocated) {
    const Bytes rle8 = cat(cat(infoHeader(65535, 21845, 8, 1, 256, 2), {}, 1024), {0, 1});
    const Bytes rle4 = cat(cat(infoHeader(65535, 65535, 4, 2, 16, 2), {}, 64), {0, 1});
    ASSERT_EQ(rle8.size(), 1066u);
    for (const Bytes& picture : {rle8, rle4}) {
        const auto mime = mimeWith("image/bmp", bytesOf(picture));
        const auto spent = memorycap::run(64, [&] { EXPECT_FALSE(dibFromMimeData(mime.get())); });
        EXPECT_LT(spent.seconds, 0.5);
    }
    // A big picture within the budget still arrives.
    const Bytes fine = cat(cat(infoHeader(4000, 3000, 8, 1, 256, 2), {}, 1024), {0, 1});
    EXPECT_TRUE(dibFromMimeData(mimeWith("image/bmp", bytesOf(fine)).get()));
}

} // namespace
