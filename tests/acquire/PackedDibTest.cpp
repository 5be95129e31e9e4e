#include "acquire/PackedDib.h"

#include "DibMaker.h"
#include "imagelib/imagelib.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>

using namespace lanmira;
using namespace dibmaker;

namespace {

struct SizeCase {
    std::string name;
    Bytes block;
    std::uint32_t tableSize, colourCount;
    std::uint64_t stride, blockSize, drawOffset;
};

class SizeRules : public testing::TestWithParam<SizeCase> {};

TEST_P(SizeRules, FollowTheHeader) {
    const SizeCase& c = GetParam();
    const PackedDib dib = toDib(c.block);
    ASSERT_TRUE(dib);
    EXPECT_EQ(dibColourTableSize(dib), c.tableSize);
    EXPECT_EQ(dibColourCount(dib), c.colourCount);
    EXPECT_EQ(dibRowStride(dib), c.stride);
    EXPECT_EQ(dibBlockSize(dib), c.blockSize);
    EXPECT_EQ(dibPixelOffsetForDrawing(dib), c.drawOffset);
}

INSTANTIATE_TEST_SUITE_P(
    PackedDib, SizeRules,
    testing::Values(
        SizeCase{"Colours16Of8Bit", cat(infoHeader(4, 2, 8, 0, 16), {}, 64 + 8), 64, 16, 4, 112,
                 1064},
        SizeCase{"FullTable8Bit", cat(infoHeader(4, 2, 8), {}, 1024 + 8), 1024, 256, 4, 1072, 1064},
        SizeCase{"OneBit33Wide", cat(infoHeader(33, 2, 1), {}, 8 + 16), 8, 2, 8, 64, 48},
        SizeCase{"TableOn24Bit", cat(infoHeader(2, 2, 24, 0, 3), {}, 12 + 16), 12, 3, 8, 68, 40},
        // 16385 entries are 65540 bytes, which the 16-bit rule makes 4.
        SizeCase{"ColoursUsedWrap", cat(infoHeader(4, 1, 8, 0, 16385), {}, 4 + 4), 4, 16385, 4, 48,
                 1064},
        SizeCase{"BitFieldMasks", cat(infoHeader(3, 2, 16, 3), {}, 12 + 16), 0, 0, 8, 68, 52},
        SizeCase{"CoreHeader", cat(coreHeader(2, 2, 8), {}, 768 + 8), 768, 256, 4, 788, 1036},
        SizeCase{"Rle8Stream", cat(infoHeader(4, 2, 8, 1, 0, 6), {}, 1024 + 6), 1024, 256, 4, 1070,
                 1064},
        SizeCase{"TopDown", cat(infoHeader(2, -3, 24), {}, 24), 0, 0, 8, 64, 40}),
    [](const auto& row) { return row.param.name; });

struct BadCase {
    std::string name;
    Bytes block;
};

Bytes prefix(Bytes b, std::size_t n) {
    b.resize(n);
    return b;
}

class Malformed : public testing::TestWithParam<BadCase> {};

TEST_P(Malformed, IsRefusedEverywhere) {
    const Bytes& b = GetParam().block;
    EXPECT_FALSE(dibFromBytes(b.data(), b.size()));
    PackedDib dib = PackedDib::allocate(b.size());
    std::memcpy(dib.data(), b.data(), b.size());
    EXPECT_EQ(dibColourTableSize(dib) + dibColourCount(dib), 0u);
    EXPECT_EQ(dibRowStride(dib) + dibBlockSize(dib) + dibPixelOffsetForDrawing(dib), 0u);
    EXPECT_TRUE(dibToBytes(dib).isEmpty());
    EXPECT_FALSE(dibToRgb24(dib));
}

INSTANTIATE_TEST_SUITE_P(
    PackedDib, Malformed,
    testing::Values(BadCase{"HeaderCutShort", prefix(infoHeader(2, 2, 24), 20)},
                    BadCase{"RowsMissing", cat(infoHeader(2, 2, 24), {}, 8)},
                    BadCase{"TableMissing", cat(infoHeader(2, 2, 8), {}, 100)},
                    BadCase{"RleLongerThanBlock", cat(infoHeader(4, 2, 8, 1, 0, 99), {}, 1030)},
                    BadCase{"WidthZero", cat(infoHeader(0, 2, 24), {}, 8)},
                    BadCase{"BitCount7", cat(infoHeader(2, 2, 7), {}, 16)},
                    BadCase{"Rle8On24Bit", cat(infoHeader(2, 2, 24, 1), {}, 16)},
                    BadCase{"TopDownRle", cat(infoHeader(2, -2, 8, 1), {}, 1040)},
                    BadCase{"HeaderSizeHuge",
                            cat({0x0C, 0, 0, 0xFF, 1, 0, 1, 0, 1, 0, 24, 0}, {}, 4)}),
    [](const auto& row) { return row.param.name; });

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

struct RgbCase {
    std::string name;
    Bytes block;
    std::int32_t width, height;
    Bytes pixels; // B, G, R per pixel, bottom row first, without padding
};

class ToRgb24 : public testing::TestWithParam<RgbCase> {};

TEST_P(ToRgb24, GivesScreenPixels) {
    const RgbCase& c = GetParam();
    const PackedDib out = dibToRgb24(toDib(c.block));
    ASSERT_TRUE(out);
    const std::size_t stride = ((24 * static_cast<std::size_t>(c.width) + 31) / 32) * 4;
    ASSERT_EQ(out.size(), 40 + stride * c.height);
    Bytes header = infoHeader(c.width, c.height, 24);
    std::memset(header.data() + 16, 0, 24);
    EXPECT_EQ(Bytes(out.data(), out.data() + 40), header);
    Bytes pixels;
    for (std::int32_t y = 0; y < c.height; ++y) {
        const std::uint8_t* row = out.data() + 40 + y * stride;
        pixels.insert(pixels.end(), row, row + 3 * c.width);
        for (std::size_t pad = 3 * c.width; pad < stride; ++pad)
            EXPECT_EQ(row[pad], 0) << "padding of row " << y;
    }
    EXPECT_EQ(pixels, c.pixels);
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

Bytes withMasks(Bytes b, std::uint32_t r, std::uint32_t g, std::uint32_t bl) {
    for (std::uint32_t v : {r, g, bl})
        put32(b, v);
    return b;
}

INSTANTIATE_TEST_SUITE_P(
    PackedDib, ToRgb24,
    testing::Values(
        RgbCase{"OneBit",
                cat(infoHeader(10, 1, 1), {1, 2, 3, 0, 200, 100, 50, 0, 0b10100000, 0b01000000}, 2),
                10,
                1,
                {200, 100, 50, 1, 2, 3, 200, 100, 50, 1, 2, 3, 1,   2,   3,
                 1,   2,   3,  1, 2, 3, 1,   2,   3,  1, 2, 3, 200, 100, 50}},
        RgbCase{"FourBitIndexPastShortTable",
                cat(infoHeader(3, 1, 4, 0, 2), {10, 20, 30, 0, 40, 50, 60, 0, 0x01, 0x50}, 2),
                3,
                1,
                {10, 20, 30, 40, 50, 60, 0, 0, 0}},
        RgbCase{"EightBitWrappedTable",
                cat(infoHeader(2, 1, 8, 0, 16385), {7, 8, 9, 0, 0, 1}, 2),
                2,
                1,
                {7, 8, 9, 0, 0, 0}},
        RgbCase{"Rgb555",
                cat(infoHeader(3, 1, 16), {0xFF, 0x7F, 0x21, 0x04, 0x00, 0x7C}, 2),
                3,
                1,
                {255, 255, 255, 8, 8, 8, 0, 0, 255}},
        RgbCase{"BitFields565",
                cat(withMasks(infoHeader(3, 1, 16, 3), 0xF800, 0x07E0, 0x001F),
                    {0x00, 0xF8, 0x20, 0x00, 0x1F, 0x00}, 2),
                3,
                1,
                {0, 0, 255, 0, 4, 0, 255, 0, 0}},
        RgbCase{
            "ThirtyTwoIgnoresAlpha", cat(infoHeader(1, 1, 32), {1, 2, 3, 0x99}), 1, 1, {1, 2, 3}},
        RgbCase{"TenBitFields",
                cat(withMasks(infoHeader(1, 1, 32, 3), 0x3FF00000, 0x000FFC00, 0x000003FF),
                    {0x01, 0x00, 0xF8, 0x3F}),
                1,
                1,
                {0, 0x80, 0xFF}},
        RgbCase{"TopDownTurnedBottomUp",
                cat(infoHeader(1, -2, 24), {1, 2, 3, 0, 4, 5, 6, 0}),
                1,
                2,
                {4, 5, 6, 1, 2, 3}},
        RgbCase{"CoreHeaderThreeByteTable",
                cat(cat(coreHeader(1, 1, 8), {0, 0, 0, 7, 8, 9}, 762), {1}, 3),
                1,
                1,
                {7, 8, 9}},
        // A run clipped at the right edge, end of line; three literal pixels padded to a
        // word, end of line; a move right by two, a run, end of picture.
        RgbCase{"Rle8",
                cat(greyTable(infoHeader(4, 3, 8, 1, 0, 20), 256),
                    {6, 5, 0, 0, 0, 3, 1, 2, 3, 0, 0, 0, 0, 2, 2, 0, 2, 9, 0, 1}),
                4, 3, grey({5, 5, 5, 5, 1, 2, 3, 0, 0, 0, 9, 9})},
        RgbCase{"Rle4",
                cat(greyTable(infoHeader(8, 1, 4, 2, 0, 8), 16), {3, 0x12, 0, 4, 0x34, 0x56, 0, 1}),
                8, 1, grey({1, 2, 1, 3, 4, 5, 6, 0})},
        RgbCase{"Rle8LiteralCutShort",
                cat(greyTable(infoHeader(4, 1, 8, 1, 0, 4), 256), {0, 6, 1, 2}), 4, 1,
                grey({1, 2, 0, 0})}),
    [](const auto& row) { return row.param.name; });

} // namespace
