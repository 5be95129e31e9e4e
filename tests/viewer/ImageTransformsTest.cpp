#include "viewer/ImageTransforms.h"

#include "acquire/DibMaker.h"

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <tuple>

using namespace lanmira;
using namespace dibmaker;

namespace {

// A picture as plain bytes with slow, obvious pixel access: the reference that the tiled
// and word-wise transforms are checked against.
struct Picture {
    std::int32_t width = 0, height = 0;
    int bitCount = 0;
    std::size_t offset = 0;
    Bytes block;

    std::size_t stride() const { return ((std::size_t(width) * bitCount + 31) / 32) * 4; }
    // Where bit k (most significant first) of pixel (x, y) lies, counted in bits from the
    // block's start; pixels of 16 bits and more are stored little-endian.
    std::size_t bit(std::int32_t x, std::int32_t y, int k) const {
        const std::size_t first = (offset + y * stride()) * 8 + std::size_t(x) * bitCount;
        return first + (bitCount < 8 ? k : bitCount - 8 - k / 8 * 8 + k % 8);
    }
    std::uint32_t get(std::int32_t x, std::int32_t y) const {
        std::uint32_t v = 0;
        for (int k = 0; k < bitCount; ++k) {
            const std::size_t b = bit(x, y, k);
            v = (v << 1) | ((block[b / 8] >> (7 - b % 8)) & 1);
        }
        return v;
    }
    void set(std::int32_t x, std::int32_t y, std::uint32_t v) {
        for (int k = 0; k < bitCount; ++k) {
            const std::size_t b = bit(x, y, k);
            const auto mask = static_cast<std::uint8_t>(0x80 >> (b % 8));
            block[b / 8] = static_cast<std::uint8_t>(
                ((v >> (bitCount - 1 - k)) & 1) ? block[b / 8] | mask : block[b / 8] & ~mask);
        }
    }
    // Same header and table, width x height of zero pixels.
    Picture blank(std::int32_t w, std::int32_t h) const {
        Picture p = *this;
        p.width = w;
        p.height = h;
        p.block.resize(offset);
        p.block.resize(offset + p.stride() * h, 0);
        Bytes size;
        put32(size, static_cast<std::uint32_t>(w));
        put32(size, static_cast<std::uint32_t>(h));
        std::copy(size.begin(), size.end(), p.block.begin() + 4);
        return p;
    }
};

// Random table, masks and pixels; with `dirtyPadding` the row padding is random too.
Picture randomPicture(std::int32_t w, std::int32_t h, int bitCount, bool bitFields,
                      bool dirtyPadding, unsigned seed) {
    std::mt19937 rng(seed);
    Picture p{w, h, bitCount, 0, {}};
    const std::uint32_t colours = bitCount <= 8 ? (1u << bitCount) - 1 : 0;
    p.block = infoHeader(w, h, bitCount, bitFields ? 3 : 0, colours, 12345);
    p.offset = p.block.size() + (bitFields ? 12 : 0) + colours * 4;
    while (p.block.size() < p.offset + p.stride() * h)
        p.block.push_back(static_cast<std::uint8_t>(rng()));
    if (dirtyPadding)
        return p;
    Picture clean = p.blank(w, h);
    for (std::int32_t y = 0; y < h; ++y)
        for (std::int32_t x = 0; x < w; ++x)
            clean.set(x, y, p.get(x, y));
    return clean;
}

Bytes bytesOf(const PackedDib& dib) {
    return dib ? Bytes(dib.data(), dib.data() + dib.size()) : Bytes{};
}

enum class Kind { Ccw, Cw, Half, LeftRight, TopBottom };

Bytes reference(const Picture& in, Kind kind) {
    const std::int32_t w = in.width, h = in.height;
    const bool turn = kind == Kind::Ccw || kind == Kind::Cw;
    Picture out = turn ? in.blank(h, w) : in.blank(w, h);
    for (std::int32_t y = 0; y < h; ++y) {
        for (std::int32_t x = 0; x < w; ++x) {
            const std::uint32_t v = in.get(x, y);
            switch (kind) {
            case Kind::Ccw:
                out.set(h - 1 - y, x, v);
                break;
            case Kind::Cw:
                out.set(y, w - 1 - x, v);
                break;
            case Kind::Half:
                out.set(w - 1 - x, h - 1 - y, v);
                break;
            case Kind::LeftRight:
                out.set(w - 1 - x, y, v);
                break;
            case Kind::TopBottom:
                out.set(x, h - 1 - y, v);
                break;
            }
        }
    }
    return out.block;
}

using Shape = std::tuple<int /*bitCount*/, bool /*bit fields*/, std::int32_t, std::int32_t>;

class EveryDepth : public testing::TestWithParam<Shape> {
protected:
    Picture picture(bool dirty) const {
        const auto& [bits, fields, w, h] = GetParam();
        return randomPicture(w, h, bits, fields, dirty, unsigned(bits * 7919 + w * 31 + h));
    }
};

TEST_P(EveryDepth, MatchesPixelByPixelMapping) {
    const Picture in = picture(true);
    const PackedDib dib = toDib(in.block);
    ASSERT_TRUE(dib);
    EXPECT_EQ(bytesOf(rotateCounterClockwise(dib)), reference(in, Kind::Ccw));
    EXPECT_EQ(bytesOf(rotateClockwise(dib)), reference(in, Kind::Cw));
    EXPECT_EQ(bytesOf(rotate180(dib)), reference(in, Kind::Half));
    EXPECT_EQ(bytesOf(mirrorLeftRight(dib)), reference(in, Kind::LeftRight));
    EXPECT_EQ(bytesOf(mirrorTopBottom(dib)), reference(in, Kind::TopBottom));
    EXPECT_EQ(bytesOf(dib), in.block) << "the input was changed";
}

TEST_P(EveryDepth, OnePassTurnsEqualRepeatedQuarterTurns) {
    const Picture in = picture(false);
    const PackedDib once = rotateCounterClockwise(toDib(in.block));
    const PackedDib twice = rotateCounterClockwise(once);
    const PackedDib thrice = rotateCounterClockwise(twice);
    EXPECT_EQ(bytesOf(rotate180(toDib(in.block))), bytesOf(twice));
    EXPECT_EQ(bytesOf(rotateClockwise(toDib(in.block))), bytesOf(thrice));
    EXPECT_EQ(bytesOf(rotateCounterClockwise(thrice)), in.block);
}

std::string shapeName(const testing::TestParamInfo<Shape>& row) {
    return std::to_string(std::get<0>(row.param)) + (std::get<1>(row.param) ? "fields_" : "bit_") +
           std::to_string(std::get<2>(row.param)) + "x" + std::to_string(std::get<3>(row.param));
}

// 8 wide at 24 bits has no row padding, so a read past a row's end would leave the block;
// 70 x 131 crosses the turn's bands and runs.
INSTANTIATE_TEST_SUITE_P(ImageTransforms, EveryDepth,
                         testing::Combine(testing::Values(1, 4, 8, 16, 24, 32),
                                          testing::Values(false), testing::Values(1, 3, 8, 9, 70),
                                          testing::Values(1, 2, 131)),
                         shapeName);
INSTANTIATE_TEST_SUITE_P(BitFields, EveryDepth,
                         testing::Values(Shape{16, true, 5, 3}, Shape{32, true, 3, 5}), shapeName);

TEST(ImageTransforms, ThreeByTwoCorners) {
    // Top row A B C, bottom row D E F; rows are stored bottom-up.
    const Bytes b =
        cat(infoHeader(3, 2, 24), {'D', 'D', 'D', 'E', 'E', 'E', 'F', 'F', 'F', 0, 0, 0,
                                   'A', 'A', 'A', 'B', 'B', 'B', 'C', 'C', 'C', 0, 0, 0});
    // Two pixels wide: rows of 8 bytes, the top row last.
    const PackedDib ccw = rotateCounterClockwise(toDib(b));
    ASSERT_EQ(ccw.size(), 40u + 3 * 8);
    EXPECT_EQ(ccw.data()[40 + 2 * 8], 'C');
    EXPECT_EQ(rotateClockwise(toDib(b)).data()[40 + 2 * 8], 'D');
}

TEST(ImageTransforms, OneBitWidthNineKeepsPaddingOut) {
    // Every padding bit set: a mirror that read them would shift ones into the picture.
    const Bytes b =
        cat(infoHeader(9, 1, 1), {0, 0, 0, 0, 255, 255, 255, 0, 0x80, 0x7F, 0xFF, 0xFF});
    const PackedDib mirrored = mirrorLeftRight(toDib(b));
    ASSERT_TRUE(mirrored);
    EXPECT_EQ(dibRowStride(mirrored), 4u);
    EXPECT_EQ(Bytes(mirrored.data() + 48, mirrored.data() + 52), (Bytes{0, 0x80, 0, 0}));
}

TEST(ImageTransforms, RefusesPicturesTheViewerDoesNotHold) {
    const Bytes core = cat(coreHeader(2, 2, 24), {}, 16);
    const Bytes topDown = cat(infoHeader(2, -2, 24), {}, 16);
    const Bytes rle = cat(infoHeader(2, 2, 8, 1, 2, 2), {}, 8 + 2);
    for (const Bytes& b : {core, topDown, rle}) {
        const PackedDib dib = toDib(b);
        ASSERT_TRUE(dib);
        EXPECT_FALSE(rotateCounterClockwise(dib) || rotateClockwise(dib) || rotate180(dib) ||
                     mirrorLeftRight(dib) || mirrorTopBottom(dib));
    }
    EXPECT_FALSE(mirrorTopBottom(PackedDib()));
}

} // namespace
