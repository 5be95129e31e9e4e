// The PNG codec: every colour type, depth and interlacing a file can use, saving every
// bitmap depth with its options, and broken or hostile files. The test files are put
// together here chunk by chunk, so damaged ones are as easy to make as good ones.
#include "../DecodedPicture.h"
#include "imagelib/core/DibHeader.h"
#include "imagelib/imagelib.h"

#include <gtest/gtest.h>

#include <array>
#include <cstring>
#include <filesystem>
#include <memory>
#include <string>
#include <unistd.h>
#include <vector>
#include <zlib.h>

using namespace imagelib;

namespace {

using Bytes = std::vector<std::uint8_t>;
using Bgra = std::array<int, 4>;

enum Type { Grey = 0, Rgb = 2, Palette = 3, GreyAlpha = 4, Rgba = 6 };

void putBe32(Bytes& b, std::uint32_t v) {
    for (int i = 3; i >= 0; --i)
        b.push_back(static_cast<std::uint8_t>(v >> (8 * i)));
}

void chunk(Bytes& file, const char* type, const Bytes& body) {
    putBe32(file, static_cast<std::uint32_t>(body.size()));
    const std::size_t start = file.size();
    file.insert(file.end(), type, type + 4);
    file.insert(file.end(), body.begin(), body.end());
    putBe32(file, static_cast<std::uint32_t>(
                      crc32(0, &file[start], static_cast<uInt>(file.size() - start))));
}

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
    int claimedWidth = 0;
    int claimedHeight = 0;

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
    Bytes row(int y, int x0, int dx) const {
        Bytes out;
        int bits = 0, acc = 0;
        for (int x = x0; x < width; x += dx)
            for (int c = 0; c < channels(); ++c)
                for (int bit = depth - 1; bit >= 0; --bit) { // most significant first
                    acc = acc << 1 | ((sample(x, y, c) >> bit) & 1);
                    if (++bits == 8) {
                        out.push_back(static_cast<std::uint8_t>(acc));
                        bits = acc = 0;
                    }
                }
        if (bits)
            out.push_back(static_cast<std::uint8_t>(acc << (8 - bits)));
        return out;
    }
    Bytes file() const {
        Bytes raw;
        constexpr int kX0[] = {0, 4, 0, 2, 0, 1, 0}, kDx[] = {8, 8, 4, 4, 2, 2, 1};
        constexpr int kY0[] = {0, 0, 4, 0, 2, 0, 1}, kDy[] = {8, 8, 8, 4, 4, 2, 2};
        for (int pass = interlaced ? 0 : 6; pass < 7; ++pass) {
            const int x0 = interlaced ? kX0[pass] : 0, dx = interlaced ? kDx[pass] : 1;
            const int y0 = interlaced ? kY0[pass] : 0, dy = interlaced ? kDy[pass] : 1;
            for (int y = y0; x0 < width && y < height; y += dy) {
                raw.push_back(0); // no filter
                const Bytes r = row(y, x0, dx);
                raw.insert(raw.end(), r.begin(), r.end());
            }
        }
        Bytes idat(compressBound(static_cast<uLong>(raw.size())));
        uLongf size = static_cast<uLongf>(idat.size());
        compress2(idat.data(), &size, raw.data(), static_cast<uLong>(raw.size()), 9);
        idat.resize(size);

        Bytes f = {0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'};
        Bytes ihdr;
        putBe32(ihdr, static_cast<std::uint32_t>(claimedWidth ? claimedWidth : width));
        putBe32(ihdr, static_cast<std::uint32_t>(claimedHeight ? claimedHeight : height));
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

using Decoded = DecodedPicture;

Decoded open(const Bytes& bytes) {
    Decoded d;
    d.dib.reset(ImageLib_OpenMemory(bytes.data(), bytes.size(), &d.params));
    return d;
}

// Blue, green, red, alpha of the pixel at (x, y) from the top left of a packed bitmap;
// alpha is 255 where the depth has none.
Bgra pixel(const void* dib, int x, int y) {
    const auto& h = *static_cast<const BitmapInfoHeader*>(dib);
    const auto* table = static_cast<const std::uint8_t*>(dib) + 40;
    const std::size_t colours = h.bitCount <= 8 ? (h.clrUsed ? h.clrUsed : 1u << h.bitCount) : 0;
    const std::uint8_t* row = table + colours * 4 +
                              dibStride(static_cast<std::uint64_t>(h.width), h.bitCount) *
                                  static_cast<std::size_t>(h.height - 1 - y);
    switch (h.bitCount) {
    case 1:
    case 4:
    case 8: {
        const int index = h.bitCount == 8   ? row[x]
                          : h.bitCount == 4 ? (x & 1 ? row[x / 2] & 15 : row[x / 2] >> 4)
                                            : (row[x / 8] >> (7 - x % 8)) & 1;
        const std::uint8_t* q = table + 4 * index;
        return {q[0], q[1], q[2], 255};
    }
    case 16: {
        const int p = readLe16(row + 2 * x);
        auto scale = [](int v) { return (v * 255 + 15) / 31; };
        return {scale(p & 31), scale((p >> 5) & 31), scale((p >> 10) & 31), 255};
    }
    default: {
        const std::uint8_t* p = row + x * (h.bitCount / 8);
        return {p[0], p[1], p[2], h.bitCount == 32 ? p[3] : 255};
    }
    }
}

// A bitmap with a pattern fit for its depth: indices over the whole palette; 16-bit
// pure colours, white and black (exact whatever the rounding); anything in 24 and 32 bits.
Bytes makeDib(int bits, const std::vector<RgbQuad>& palette = {}) {
    const int width = 21, height = 5;
    const std::size_t stride = dibStride(width, static_cast<std::uint32_t>(bits));
    const std::size_t pixels = 40 + palette.size() * 4;
    Bytes b(pixels + stride * height, 0);
    const BitmapInfoHeader h{40, width, height, 1,    static_cast<std::uint16_t>(bits),
                             0,  0,     3780,   3780, static_cast<std::uint32_t>(palette.size()),
                             0};
    std::memcpy(b.data(), &h, 40);
    if (!palette.empty())
        std::memcpy(b.data() + 40, palette.data(), palette.size() * 4);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) {
            std::uint8_t* p = &b[pixels + stride * static_cast<std::size_t>(y) + x * bits / 8];
            if (bits <= 8)
                *p |= static_cast<std::uint8_t>(((x + 3 * y) % palette.size())
                                                << (8 - bits - x * bits % 8));
            else if (bits == 16)
                writeLe16(p, static_cast<std::uint16_t>(x < 10 ? 0x7C00 >> (5 * (y % 3))
                                                               : 0x7FFF * (x & 1)));
            else
                for (int i = 0; i < bits / 8; ++i)
                    p[i] = static_cast<std::uint8_t>(x * 40 + y * 9 + i * 71);
        }
    return b;
}

std::vector<RgbQuad> greyRamp(int n) {
    std::vector<RgbQuad> ramp;
    for (int i = 0; i < n; ++i) {
        const auto v = static_cast<std::uint8_t>(i * 255 / (n - 1));
        ramp.push_back({v, v, v, 0});
    }
    return ramp;
}

std::filesystem::path tempDir() {
    auto dir =
        std::filesystem::temp_directory_path() / ("imagelib-png-" + std::to_string(::getpid()));
    std::filesystem::create_directories(dir);
    return dir;
}

} // namespace

TEST(PngCodec, DecodesEveryColourTypeDepthAndInterlacing) {
    struct Row {
        Png png;
        int bitCount;
        int colours;
    };
    const std::vector<Row> rows = {
        {{"palette 1", Palette, 1, false, 2}, 1, 2},
        {{"palette 2 becomes 4", Palette, 2, false, 3}, 4, 3},
        {{"palette 2 interlaced", Palette, 2, true, 4}, 4, 4},
        {{"palette 4 interlaced", Palette, 4, true, 16}, 4, 16},
        {{"palette 8, transparency dropped", Palette, 8, false, 200, true}, 8, 200},
        {{"grey 1 stays black and white", Grey, 1}, 1, 2},
        {{"grey 2", Grey, 2}, 8, 256},
        {{"grey 8", Grey, 8}, 8, 256},
        {{"grey 16", Grey, 16}, 8, 256},
        {{"grey 16 interlaced", Grey, 16, true}, 8, 256},
        {{"grey 4 with a transparent value", Grey, 4, false, 0, true}, 32, 0},
        {{"RGB 8", Rgb, 8}, 24, 0},
        {{"RGB 16", Rgb, 16}, 24, 0},
        {{"RGB 16 with a transparent colour", Rgb, 16, false, 0, true}, 32, 0},
        {{"grey and alpha 16", GreyAlpha, 16}, 32, 0},
        {{"RGBA 8", Rgba, 8}, 32, 0},
        {{"RGBA 16 interlaced", Rgba, 16, true}, 32, 0},
    };
    for (const Row& r : rows) {
        SCOPED_TRACE(r.png.name);
        const Decoded d = open(r.png.file());
        ASSERT_TRUE(d.dib) << d.error();
        EXPECT_EQ(d.params.format, IMAGELIB_FMT_PNG);
        EXPECT_EQ(d.params.pageCount, 1);
        EXPECT_EQ(d.header().bitCount, r.bitCount);
        EXPECT_EQ(d.header().clrUsed, static_cast<std::uint32_t>(r.colours));
        ASSERT_EQ(d.header().width, r.png.width);
        ASSERT_EQ(d.header().height, r.png.height);
        for (int y = 0; y < r.png.height; ++y)
            for (int x = 0; x < r.png.width; ++x)
                ASSERT_EQ(pixel(d.dib.get(), x, y), r.png.expected(x, y)) << x << "," << y;
    }
}

TEST(PngCodec, IndicesPastThePaletteGetAFullTable) {
    // The rows use indices 0..15; the file's table is cut to 3 entries.
    const Bytes full = Png{"", Palette, 4, false, 16}.file();
    const std::size_t plte = 33; // after the signature and the header chunk
    Bytes f(full.begin(), full.begin() + plte);
    chunk(f, "PLTE", {1, 2, 3, 4, 5, 6, 7, 8, 9});
    f.insert(f.end(), full.begin() + plte + 12 + 16 * 3, full.end());
    const Decoded d = open(f);
    ASSERT_TRUE(d.dib) << d.error();
    EXPECT_EQ(d.header().clrUsed, 16u);
    EXPECT_EQ(pixel(d.dib.get(), 1, 0), (Bgra{6, 5, 4, 255}));
    EXPECT_EQ(pixel(d.dib.get(), 5, 0), (Bgra{0, 0, 0, 255}));
}

TEST(PngCodec, BrokenAndHostileFilesGiveAClearSentence) {
    const std::string damaged = "The PNG file is damaged or incomplete.";
    Bytes truncated = Png{}.file();
    truncated.resize(truncated.size() - 30);
    Bytes garbage = Png{}.file();
    std::fill(garbage.begin() + 8, garbage.begin() + 40, 0x5A);
    Bytes badCrc = Png{}.file();
    badCrc[29] ^= 1;
    Bytes badZlib = Png{}.file();
    badZlib[41] = 0xFF; // the zlib header of the first IDAT
    Png noPalette{"", Palette, 8};
    noPalette.paletteSize = 1;
    Bytes missingPlte = noPalette.file();
    missingPlte.erase(missingPlte.begin() + 33, missingPlte.begin() + 33 + 15);
    Png wide{"", Grey, 1};
    wide.width = 2000000;
    wide.height = 1;
    Png bomb;
    bomb.claimedWidth = bomb.claimedHeight = 30000;

    const std::vector<std::tuple<const char*, Bytes, std::string>> cases = {
        {"truncated", truncated, damaged},
        {"garbage after the signature", garbage, damaged},
        {"header CRC wrong", badCrc, damaged},
        {"compressed data corrupt", badZlib, damaged},
        {"palette picture without a palette", missingPlte, damaged},
        {"wider than any picture opened", wide.file(), "The image is too large to open."},
        {"far larger than its data", bomb.file(),
         "The PNG file claims a picture far larger than its data."},
        {"signature only", Bytes(garbage.begin(), garbage.begin() + 8), damaged},
    };
    for (const auto& [name, bytes, text] : cases) {
        SCOPED_TRACE(name);
        const Decoded d = open(bytes);
        EXPECT_FALSE(d.dib);
        EXPECT_EQ(d.error(), text);
    }
}

TEST(PngCodec, SaveAndOpenGiveBackEveryDepthAndTheResolution) {
    const std::vector<RgbQuad> colours = {{0, 0, 255, 0},     {0, 255, 0, 0},  {255, 0, 0, 0},
                                          {255, 255, 255, 0}, {9, 99, 199, 0}, {200, 100, 50, 0},
                                          {0, 0, 0, 0}};
    struct Row {
        const char* name;
        Bytes dib;
        int bitCount; // read back
        int colours;
    };
    const std::vector<Row> rows = {
        {"1-bit black and white", makeDib(1, greyRamp(2)), 1, 2},
        {"1-bit colours", makeDib(1, {colours[0], colours[2]}), 1, 2},
        {"4-bit palette", makeDib(4, {colours.begin(), colours.begin() + 5}), 4, 5},
        {"4-bit grey ramp", makeDib(4, greyRamp(16)), 4, 16},
        {"8-bit grey ramp", makeDib(8, greyRamp(256)), 8, 256},
        {"8-bit palette", makeDib(8, colours), 8, 7},
        {"16-bit becomes 24", makeDib(16), 24, 0},
        {"24-bit", makeDib(24), 24, 0},
        {"32-bit with alpha", makeDib(32), 32, 0},
    };
    const auto dir = tempDir();
    for (const Row& r : rows) {
        SCOPED_TRACE(r.name);
        ImageIoParams save{};
        save.format = IMAGELIB_FMT_PNG;
        ASSERT_EQ(ImageLib_CanSave(r.dib.data(), &save), 1);
        const std::string path = (dir / "round.png").string();
        ASSERT_TRUE(ImageLib_Save(path.c_str(), r.dib.data(), &save));
        Decoded back;
        back.dib.reset(ImageLib_Open(path.c_str(), &back.params));
        ASSERT_TRUE(back.dib) << back.error();
        EXPECT_EQ(back.header().bitCount, r.bitCount);
        EXPECT_EQ(back.header().clrUsed, static_cast<std::uint32_t>(r.colours));
        EXPECT_EQ(back.header().xPelsPerMeter, 3780);
        for (int y = 0; y < 5; ++y)
            for (int x = 0; x < 21; ++x)
                ASSERT_EQ(pixel(back.dib.get(), x, y), pixel(r.dib.data(), x, y)) << x << "," << y;
    }
    std::filesystem::remove_all(dir);
}

TEST(PngCodec, SaveHonoursTheCompressionLevel) {
    const Bytes dib = makeDib(24);
    const auto dir = tempDir();
    std::vector<std::uintmax_t> sizes;
    for (std::uint32_t option : {1u, 10u}) { // zlib levels 0 and 9
        ImageIoParams save{};                // format 0: the name decides
        save.formatOption = option;
        const std::string path = (dir / ("level" + std::to_string(option) + ".png")).string();
        ASSERT_TRUE(ImageLib_Save(path.c_str(), dib.data(), &save));
        sizes.push_back(std::filesystem::file_size(path));
    }
    EXPECT_GT(sizes[0], 21u * 5 * 3); // level 0 stores the rows as they are
    EXPECT_LT(sizes[1], sizes[0]);
    std::filesystem::remove_all(dir);
}
