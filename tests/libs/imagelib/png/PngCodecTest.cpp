// Test files are put together chunk by chunk, so damaged ones are as easy to make as good ones.
#include "../../../support/HostileFiles.h"
#include "../DecodedPicture.h"
#include "../ScratchDir.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <zlib.h>

using namespace imagelib;

namespace {

enum Type { Grey = 0, Rgb = 2, Palette = 3, GreyAlpha = 4, Rgba = 6 };

using hostile::chunk;
using hostile::putBe32;

struct Png {
    const char* name = "";
    int type = Rgb;
    int depth = 8;
    bool interlaced = false;
    int paletteSize = 0;
    bool transparency = false;
    int width = 13;
    int height = 11;
    // Non-zero: the size the header claims, whatever the data holds.
    int claimedSize = 0;

    int channels() const { return type == Rgb ? 3 : type == GreyAlpha ? 2 : type == Rgba ? 4 : 1; }
    int maxValue() const { return (1 << depth) - 1; }
    // The sample values the file holds.
    int sample(int x, int y, int c) const {
        if (type == Palette)
            return (x + 2 * y) % paletteSize;
        return static_cast<int>((x * 4099u + y * 13001u + c * 7919u) & maxValue());
    }
    Bytes paletteEntry(int i) const {
        return {static_cast<std::uint8_t>(i * 40), static_cast<std::uint8_t>(255 - i),
                static_cast<std::uint8_t>(i * 7)};
    }
    // What the picture shows at (x, y), samples scaled to 8 bits as the standard says.
    Bgra expected(int x, int y) const {
        auto scale = [&](int v) { return (v * 255 + maxValue() / 2) / maxValue(); };
        if (type == Palette) {
            const Bytes e = paletteEntry(sample(x, y, 0));
            return {e[2], e[1], e[0], 255};
        }
        const bool colour = type == Rgb || type == Rgba;
        const int r = scale(sample(x, y, 0));
        const int g = colour ? scale(sample(x, y, 1)) : r;
        const int b = colour ? scale(sample(x, y, 2)) : r;
        int a = type == GreyAlpha || type == Rgba ? scale(sample(x, y, channels() - 1)) : 255;
        if (transparency && sample(x, y, 0) == sample(0, 0, 0) &&
            (!colour || (sample(x, y, 1) == sample(0, 0, 1) && sample(x, y, 2) == sample(0, 0, 2))))
            a = 0;
        return {b, g, r, a};
    }
    // Filter byte 0, then the samples of every dx-th pixel from x0, most significant bit first.
    void appendRow(Bytes& out, int y, int x0, int dx) const {
        out.push_back(0);
        int bits = 0, acc = 0;
        for (int x = x0; x < width; x += dx)
            for (int c = 0; c < channels(); ++c)
                for (int bit = depth - 1; bit >= 0; --bit) {
                    acc = acc << 1 | ((sample(x, y, c) >> bit) & 1);
                    if (++bits == 8) {
                        out.push_back(static_cast<std::uint8_t>(acc));
                        bits = acc = 0;
                    }
                }
        if (bits)
            out.push_back(static_cast<std::uint8_t>(acc << (8 - bits)));
    }
    Bytes file() const {
        Bytes raw;
        constexpr int kX0[] = {0, 4, 0, 2, 0, 1, 0}, kDx[] = {8, 8, 4, 4, 2, 2, 1};
        constexpr int kY0[] = {0, 0, 4, 0, 2, 0, 1}, kDy[] = {8, 8, 8, 4, 4, 2, 2};
        if (!interlaced)
            for (int y = 0; y < height; ++y)
                appendRow(raw, y, 0, 1);
        for (int pass = 0; interlaced && pass < 7; ++pass)
            for (int y = kY0[pass]; kX0[pass] < width && y < height; y += kDy[pass])
                appendRow(raw, y, kX0[pass], kDx[pass]);
        Bytes idat(compressBound(static_cast<uLong>(raw.size())));
        uLongf size = static_cast<uLongf>(idat.size());
        compress2(idat.data(), &size, raw.data(), static_cast<uLong>(raw.size()), 9);
        idat.resize(size);

        Bytes f = {0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'};
        Bytes ihdr;
        putBe32(ihdr, static_cast<std::uint32_t>(claimedSize ? claimedSize : width));
        putBe32(ihdr, static_cast<std::uint32_t>(claimedSize ? claimedSize : height));
        ihdr.insert(ihdr.end(), {static_cast<std::uint8_t>(depth), static_cast<std::uint8_t>(type),
                                 0, 0, static_cast<std::uint8_t>(interlaced)});
        chunk(f, "IHDR", ihdr);
        Bytes plte, trns;
        for (int i = 0; i < paletteSize; ++i) {
            const Bytes e = paletteEntry(i);
            plte.insert(plte.end(), e.begin(), e.end());
            trns.push_back(static_cast<std::uint8_t>(i * 9));
        }
        if (type != Palette)
            for (int c = 0; c < (type == Rgb ? 3 : 1); ++c)
                trns.insert(trns.end(), {static_cast<std::uint8_t>(sample(0, 0, c) >> 8),
                                         static_cast<std::uint8_t>(sample(0, 0, c))});
        if (paletteSize)
            chunk(f, "PLTE", plte);
        if (transparency)
            chunk(f, "tRNS", trns);
        chunk(f, "IDAT", idat);
        chunk(f, "IEND", {});
        return f;
    }
};

} // namespace

TEST(PngCodec, DecodesEveryColourTypeDepthAndInterlacing) {
    const std::vector<std::tuple<Png, int, int>> rows = {
        // the file, bits and colours out
        {{"palette 1", Palette, 1, false, 2}, 1, 2},
        {{"palette 2 becomes 4", Palette, 2, false, 3}, 4, 3},
        {{"palette 4 interlaced", Palette, 4, true, 16}, 4, 16},
        {{"palette 8, transparency dropped", Palette, 8, false, 200, true}, 8, 200},
        {{"grey 1 stays black and white", Grey, 1}, 1, 2},
        {{"grey 2", Grey, 2}, 8, 256},
        {{"grey 8", Grey, 8}, 8, 256},
        {{"grey 16 interlaced", Grey, 16, true}, 8, 256},
        {{"grey 4 with a transparent value", Grey, 4, false, 0, true}, 32, 0},
        {{"RGB 8", Rgb, 8}, 24, 0},
        {{"RGB 16 with a transparent colour", Rgb, 16, false, 0, true}, 32, 0},
        {{"grey and alpha 16", GreyAlpha, 16}, 32, 0},
        {{"RGBA 8", Rgba, 8}, 32, 0},
        {{"RGBA 16 interlaced", Rgba, 16, true}, 32, 0},
    };
    for (const auto& [png, bitCount, colours] : rows) {
        SCOPED_TRACE(png.name);
        const DecodedPicture d = openMemory(png.file());
        ASSERT_TRUE(d.dib) << d.error();
        EXPECT_EQ(d.params.format, IMAGELIB_FMT_PNG);
        EXPECT_EQ(d.header().bitCount, bitCount);
        EXPECT_EQ(d.header().clrUsed, static_cast<std::uint32_t>(colours));
        ASSERT_EQ(d.header().width, png.width);
        ASSERT_EQ(d.header().height, png.height);
        for (int y = 0; y < png.height; ++y)
            for (int x = 0; x < png.width; ++x)
                ASSERT_EQ(d.pixel(x, y), png.expected(x, y)) << x << "," << y;
    }
}

TEST(PngCodec, IndicesPastThePaletteGetAFullTable) {
    // The rows use indices 0..15; the file's table is cut to 3 entries.
    const Bytes full = Png{"", Palette, 4, false, 16}.file();
    const std::size_t plte = 33; // after the signature and the header chunk
    Bytes f(full.begin(), full.begin() + plte);
    chunk(f, "PLTE", {1, 2, 3, 4, 5, 6, 7, 8, 9});
    f.insert(f.end(), full.begin() + plte + 12 + 16 * 3, full.end());
    const DecodedPicture d = openMemory(f);
    ASSERT_TRUE(d.dib) << d.error();
    EXPECT_EQ(d.header().clrUsed, 16u);
    EXPECT_EQ(d.pixel(1, 0), (Bgra{6, 5, 4, 255}));
    EXPECT_EQ(d.pixel(5, 0), (Bgra{0, 0, 0, 255}));
}

TEST(PngCodec, BrokenAndHostileFilesGiveAClearSentence) {
    const std::string damaged = "The PNG file is damaged or incomplete.";
    const Bytes good = Png{}.file();
    Bytes garbage = Png{}.file();
    std::fill(garbage.begin() + 8, garbage.begin() + 40, 0x5A);
    Bytes badCrc = good;
    badCrc[29] ^= 1;
    Bytes badZlib = good;
    badZlib[41] = 0xFF; // the zlib header of the first IDAT
    Bytes missingPlte = Png{"", Palette, 8, false, 1}.file();
    missingPlte.erase(missingPlte.begin() + 33, missingPlte.begin() + 33 + 15);
    Png wide{"", Grey, 1};
    wide.width = 2000000;
    wide.height = 1;
    Png bomb;
    bomb.claimedSize = 30000;

    expectRefused({
        {"truncated", Bytes(good.begin(), good.end() - 30), damaged},
        {"garbage after the signature", garbage, damaged},
        {"header CRC wrong", badCrc, damaged},
        {"compressed data corrupt", badZlib, damaged},
        {"palette picture without a palette", missingPlte, damaged},
        {"wider than any picture opened", wide.file(), "The image is too large to open."},
        {"far larger than its data", bomb.file(),
         "The PNG file claims a picture far larger than its data."},
        {"signature only", Bytes(good.begin(), good.begin() + 8), damaged},
    });
}

TEST(PngCodec, SaveAndOpenGiveBackEveryDepthAndTheResolution) {
    const std::vector<RgbQuad> colours = {{0, 0, 255, 0},     {0, 255, 0, 0},  {255, 0, 0, 0},
                                          {255, 255, 255, 0}, {9, 99, 199, 0}, {200, 100, 50, 0},
                                          {0, 0, 0, 0}};
    const std::vector<std::tuple<const char*, Bytes, int, int>> rows = {
        // bits, colours back
        {"1-bit black and white", patternDib(1, greyRamp(2)), 1, 2},
        {"1-bit colours", patternDib(1, {colours[0], colours[2]}), 1, 2},
        {"4-bit palette", patternDib(4, {colours.begin(), colours.begin() + 5}), 4, 5},
        {"4-bit grey ramp", patternDib(4, greyRamp(16)), 4, 16},
        {"8-bit grey ramp", patternDib(8, greyRamp(256)), 8, 256},
        {"8-bit palette", patternDib(8, colours), 8, 7},
        {"16-bit becomes 24", patternDib(16), 24, 0},
        {"24-bit", patternDib(24), 24, 0},
        {"32-bit with alpha", patternDib(32), 32, 0},
    };
    const ScratchDir dir;
    const std::string path = dir.file("round.png");
    for (const auto& [name, dib, bitCount, colourCount] : rows) {
        SCOPED_TRACE(name);
        const ImageIoParams save = saveParams(IMAGELIB_FMT_PNG);
        ASSERT_EQ(ImageLib_CanSave(dib.data(), &save), 1);
        const DecodedPicture back = saveAndOpen(path, dib.data(), save);
        ASSERT_TRUE(back.dib) << back.error();
        EXPECT_EQ(back.header().bitCount, bitCount);
        EXPECT_EQ(back.header().clrUsed, static_cast<std::uint32_t>(colourCount));
        EXPECT_EQ(back.header().xPelsPerMeter, 3780);
        expectSamePixels(back, dib.data());
    }
}

TEST(PngCodec, SaveHonoursTheCompressionLevel) {
    const Bytes dib = patternDib(24);
    const ScratchDir dir;
    std::vector<std::uintmax_t> sizes;
    for (std::uint32_t option : {1u, 10u}) { // zlib levels 0 and 9; format 0: the name decides
        ImageIoParams save = saveParams(0, option);
        const std::string path = dir.file("level" + std::to_string(option) + ".png");
        ASSERT_TRUE(ImageLib_Save(path.c_str(), dib.data(), &save));
        sizes.push_back(std::filesystem::file_size(path));
    }
    EXPECT_GT(sizes[0], 21u * 5 * 3); // level 0 stores the rows as they are
    EXPECT_LT(sizes[1], sizes[0]);
}
