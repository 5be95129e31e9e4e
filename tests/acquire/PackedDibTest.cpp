#include "acquire/PackedDib.h"

#include "DibMaker.h"
#include "imagelib/imagelib.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdlib>
#include <cstring>
#include <string>

using namespace lanmira;
using namespace dibmaker;

namespace {

using Sizes = std::array<std::uint64_t, 5>; // table, colours, stride, block, drawing offset

Sizes sizesOf(const PackedDib& dib) {
    return {dibColourTableSize(dib), dibColourCount(dib), dibRowStride(dib), dibBlockSize(dib),
            dibPixelOffsetForDrawing(dib)};
}

Bytes prefix(Bytes b, std::size_t n) {
    b.resize(n);
    return b;
}

} // namespace

TEST(PackedDib, SizesFollowTheHeader) {
    const std::vector<std::tuple<const char*, Bytes, Sizes>> rows = {
        {"16 colours of 8 bits",
         cat(infoHeader(4, 2, 8, 0, 16), {}, 64 + 8),
         {64, 16, 4, 112, 1064}},
        {"full 8-bit table", cat(infoHeader(4, 2, 8), {}, 1024 + 8), {1024, 256, 4, 1072, 1064}},
        {"1 bit, 33 wide", cat(infoHeader(33, 2, 1), {}, 8 + 16), {8, 2, 8, 64, 48}},
        {"table on 24 bits", cat(infoHeader(2, 2, 24, 0, 3), {}, 12 + 16), {12, 3, 8, 68, 40}},
        // 16385 entries are 65540 bytes, which the 16-bit rule makes 4.
        {"colours used wrap",
         cat(infoHeader(4, 1, 8, 0, 16385), {}, 4 + 4),
         {4, 16385, 4, 48, 1064}},
        {"bit field masks", cat(infoHeader(3, 2, 16, 3), {}, 12 + 16), {0, 0, 8, 68, 52}},
        {"core header", cat(coreHeader(2, 2, 8), {}, 768 + 8), {768, 256, 4, 788, 1036}},
        {"RLE8 stream",
         cat(infoHeader(4, 2, 8, 1, 0, 6), {}, 1024 + 6),
         {1024, 256, 4, 1070, 1064}},
        {"top-down", cat(infoHeader(2, -3, 24), {}, 24), {0, 0, 8, 64, 40}},
    };
    for (const auto& [name, block, sizes] : rows) {
        SCOPED_TRACE(name);
        const PackedDib dib = toDib(block);
        ASSERT_TRUE(dib);
        EXPECT_EQ(sizesOf(dib), sizes);
    }
}

TEST(PackedDib, MalformedBlocksAreRefusedEverywhere) {
    const std::vector<std::pair<const char*, Bytes>> rows = {
        {"header cut short", prefix(infoHeader(2, 2, 24), 20)},
        {"rows missing", cat(infoHeader(2, 2, 24), {}, 8)},
        {"table missing", cat(infoHeader(2, 2, 8), {}, 100)},
        {"RLE longer than the block", cat(infoHeader(4, 2, 8, 1, 0, 99), {}, 1030)},
        {"width zero", cat(infoHeader(0, 2, 24), {}, 8)},
        {"7 bits", cat(infoHeader(2, 2, 7), {}, 16)},
        {"RLE8 on 24 bits", cat(infoHeader(2, 2, 24, 1), {}, 16)},
        {"top-down RLE", cat(infoHeader(2, -2, 8, 1), {}, 1040)},
        {"header size huge", cat({0x0C, 0, 0, 0xFF, 1, 0, 1, 0, 1, 0, 24, 0}, {}, 4)},
    };
    for (const auto& [name, b] : rows) {
        SCOPED_TRACE(name);
        EXPECT_FALSE(dibFromBytes(b.data(), b.size()));
        PackedDib dib = PackedDib::allocate(b.size());
        std::memcpy(dib.data(), b.data(), b.size());
        EXPECT_EQ(sizesOf(dib), Sizes{});
        EXPECT_TRUE(dibToBytes(dib).isEmpty());
        EXPECT_FALSE(dibToRgb24(dib));
    }
}

TEST(PackedDibHandOver, CopiesTheWholeBufferInAndTheBlockOut) {
    const Bytes b = cat(infoHeader(3, 2, 24), {0x11}, 23 + 1); // one byte past the block
    PackedDib dib = toDib(b);
    ASSERT_TRUE(dib);
    EXPECT_EQ(dib.size(), b.size());
    const QByteArray out = dibToBytes(dib);
    ASSERT_EQ(out.size(), 64);
    EXPECT_EQ(std::memcmp(out.constData(), b.data(), 64), 0);

    const PackedDib moved = std::move(dib);
    EXPECT_EQ(moved.size(), b.size());
    EXPECT_FALSE(dib);
    EXPECT_EQ(dib.size(), 0u);
    EXPECT_FALSE(dibFromBytes(b.data(), 0));
    EXPECT_FALSE(dibFromBytes(QByteArray()));
}

TEST(PackedDibHandOver, AdoptsImageLibraryBlocksWithoutCopying) {
    EXPECT_FALSE(dibFromImageLib(nullptr));
    Bytes file{'B', 'M'};
    for (std::uint32_t v : {14u + 56u, 0u, 54u})
        put32(file, v);
    const Bytes dib = cat(infoHeader(2, 2, 24), {}, 16);
    file.insert(file.end(), dib.begin(), dib.end());
    ImageIoParams params{};
    void* block = ImageLib_OpenMemory(file.data(), file.size(), &params);
    ASSERT_NE(block, nullptr);
    const PackedDib adopted = dibFromImageLib(block);
    EXPECT_EQ(adopted.data(), block);
    EXPECT_EQ(dibBlockSize(adopted), 56u);
}

Bytes greyTable(Bytes b, int entries) {
    for (int i = 0; i < entries; ++i)
        b = cat(b, {static_cast<std::uint8_t>(i), static_cast<std::uint8_t>(i),
                    static_cast<std::uint8_t>(i), 0});
    return b;
}

Bytes grey(std::initializer_list<std::uint8_t> levels) {
    Bytes out;
    for (std::uint8_t v : levels)
        out = cat(out, {v, v, v});
    return out;
}

// Width and height as a core or information header gives them, the height made positive.
std::pair<std::int32_t, std::int32_t> dimensions(const Bytes& b) {
    if (b[0] == 12)
        return {b[4] | b[5] << 8, b[6] | b[7] << 8};
    std::int32_t size[2];
    std::memcpy(size, &b[4], sizeof size);
    return {size[0], std::abs(size[1])};
}

TEST(PackedDib, ToRgb24GivesScreenPixels) {
    struct Row {
        const char* name;
        Bytes block;
        Bytes pixels; // B, G, R per pixel, bottom row first, without padding
    };
    const std::vector<Row> rows = {
        {"1 bit",
         cat(infoHeader(10, 1, 1), {1, 2, 3, 0, 200, 100, 50, 0, 0b10100000, 0b01000000}, 2),
         {200, 100, 50, 1, 2, 3, 200, 100, 50, 1, 2, 3, 1,   2,   3,
          1,   2,   3,  1, 2, 3, 1,   2,   3,  1, 2, 3, 200, 100, 50}},
        {"4-bit index past a short table",
         cat(infoHeader(3, 1, 4, 0, 2), {10, 20, 30, 0, 40, 50, 60, 0, 0x01, 0x50}, 2),
         {10, 20, 30, 40, 50, 60, 0, 0, 0}},
        {"8 bits, wrapped table",
         cat(infoHeader(2, 1, 8, 0, 16385), {7, 8, 9, 0, 0, 1}, 2),
         {7, 8, 9, 0, 0, 0}},
        {"5-5-5",
         cat(infoHeader(3, 1, 16), {0xFF, 0x7F, 0x21, 0x04, 0x00, 0x7C}, 2),
         {255, 255, 255, 8, 8, 8, 0, 0, 255}},
        {"5-6-5 bit fields",
         cat(withMasks(infoHeader(3, 1, 16, 3), 0xF800, 0x07E0, 0x001F),
             {0x00, 0xF8, 0x20, 0x00, 0x1F, 0x00}, 2),
         {0, 0, 255, 0, 4, 0, 255, 0, 0}},
        {"32 bits ignore alpha", cat(infoHeader(1, 1, 32), {1, 2, 3, 0x99}), {1, 2, 3}},
        {"10-bit fields",
         cat(withMasks(infoHeader(1, 1, 32, 3), 0x3FF00000, 0x000FFC00, 0x000003FF),
             {0x01, 0x00, 0xF8, 0x3F}),
         {0, 0x80, 0xFF}},
        {"top-down turned bottom-up",
         cat(infoHeader(1, -2, 24), {1, 2, 3, 0, 4, 5, 6, 0}),
         {4, 5, 6, 1, 2, 3}},
        {"core header, 3-byte table",
         cat(cat(coreHeader(1, 1, 8), {0, 0, 0, 7, 8, 9}, 762), {1}, 3),
         {7, 8, 9}},
        // A run clipped at the right edge, end of line; three literal pixels padded to a
        // word, end of line; a move right by two, a run, end of picture.
        {"RLE8", cat(greyTable(infoHeader(4, 3, 8, 1, 0, 20), 256), {6, 5, 0, 0, 0, 3, 1, 2, 3, 0,
                                                                     0, 0, 0, 2, 2, 0, 2, 9, 0, 1}),
         grey({5, 5, 5, 5, 1, 2, 3, 0, 0, 0, 9, 9})},
        {"RLE4",
         cat(greyTable(infoHeader(8, 1, 4, 2, 0, 8), 16), {3, 0x12, 0, 4, 0x34, 0x56, 0, 1}),
         grey({1, 2, 1, 3, 4, 5, 6, 0})},
        {"RLE8 literal cut short", cat(greyTable(infoHeader(4, 1, 8, 1, 0, 4), 256), {0, 6, 1, 2}),
         grey({1, 2, 0, 0})},
    };
    for (const Row& r : rows) {
        SCOPED_TRACE(r.name);
        const auto [width, height] = dimensions(r.block);
        const PackedDib out = dibToRgb24(toDib(r.block));
        ASSERT_TRUE(out);
        const std::size_t stride = ((24 * static_cast<std::size_t>(width) + 31) / 32) * 4;
        ASSERT_EQ(out.size(), 40 + stride * height);
        Bytes header = infoHeader(width, height, 24);
        std::memset(header.data() + 16, 0, 24);
        EXPECT_EQ(Bytes(out.data(), out.data() + 40), header);
        Bytes pixels;
        for (std::int32_t y = 0; y < height; ++y) {
            const std::uint8_t* row = out.data() + 40 + y * stride;
            pixels.insert(pixels.end(), row, row + 3 * width);
            for (std::size_t pad = 3 * width; pad < stride; ++pad)
                EXPECT_EQ(row[pad], 0) << "padding of row " << y;
        }
        EXPECT_EQ(pixels, r.pixels);
    }
}
