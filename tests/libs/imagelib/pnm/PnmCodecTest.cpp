// The PNM codec: every kind of anymap read to the same pixels, hostile headers refused
// before allocating, and each savable depth written and read back.
#include "../DecodedPicture.h"
#include "imagelib/core/DibHeader.h"
#include "imagelib/imagelib.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <tuple>
#include <unistd.h>
#include <vector>

using namespace imagelib;

namespace {

using Bytes = std::vector<std::uint8_t>;
using Bgr = std::array<int, 3>;

Bytes bytes(const std::string& text, const Bytes& tail = {}) {
    Bytes b(text.begin(), text.end());
    b.insert(b.end(), tail.begin(), tail.end());
    return b;
}

struct Decoded : DecodedPicture {
    Bgr bgr(int x, int y) const {
        const auto& h = header();
        const std::uint8_t* row = topRow(y);
        if (h.bitCount == 24)
            return {row[3 * x], row[3 * x + 1], row[3 * x + 2]};
        const int index = h.bitCount == 1 ? (row[x / 8] >> (7 - x % 8)) & 1 : row[x];
        const auto* q = static_cast<const std::uint8_t*>(dib.get()) + 40 + index * 4;
        return {q[0], q[1], q[2]};
    }
};

Decoded open(const Bytes& b) {
    Decoded d;
    d.dib.reset(ImageLib_OpenMemory(b.data(), b.size(), &d.params));
    return d;
}

// A packed bitmap built by hand from top-down rows without padding.
Bytes dib(int width, int height, int bitCount, const std::vector<RgbQuad>& palette,
          const Bytes& rows) {
    Bytes b(40 + palette.size() * 4);
    BitmapInfoHeader h{};
    h.size = 40;
    h.width = width;
    h.height = height;
    h.planes = 1;
    h.bitCount = static_cast<std::uint16_t>(bitCount);
    h.sizeImage = static_cast<std::uint32_t>(dibStride(width, bitCount) * height);
    h.clrUsed = static_cast<std::uint32_t>(palette.size());
    std::memcpy(b.data(), &h, 40);
    if (!palette.empty())
        std::memcpy(b.data() + 40, palette.data(), palette.size() * 4);
    const std::size_t used = (static_cast<std::size_t>(width) * bitCount + 7) / 8;
    for (int y = height - 1; y >= 0; --y) {
        b.insert(b.end(), rows.begin() + y * used, rows.begin() + (y + 1) * used);
        b.resize(b.size() + dibStride(width, bitCount) - used, 0);
    }
    return b;
}

std::filesystem::path tempDir() {
    auto dir =
        std::filesystem::temp_directory_path() / ("imagelib-pnm-" + std::to_string(::getpid()));
    std::filesystem::create_directories(dir);
    return dir;
}

Bytes readFile(const std::filesystem::path& p) {
    std::ifstream in(p, std::ios::binary);
    return Bytes(std::istreambuf_iterator<char>(in), {});
}

constexpr Bgr kRed{0, 0, 255}, kGreen{0, 255, 0}, kBlue{255, 0, 0};
constexpr Bgr kWhite{255, 255, 255}, kBlack{0, 0, 0}, kGrey{128, 128, 128};

const RgbQuad kPalWhite{255, 255, 255, 0};
const RgbQuad kPalBlack{0, 0, 0, 0};

} // namespace

TEST(PnmCodec, DecodesEveryKindToTheSamePixels) {
    struct Row {
        const char* name;
        Bytes file;
        int bitCount;
        std::vector<Bgr> pixels; // 3 x 2, top row first
    };
    const std::vector<Bgr> colour = {kRed, kGreen, kBlue, kWhite, kBlack, kGrey};
    const std::vector<Bgr> grey = {kBlack, kGrey, kWhite, {1, 1, 1}, {2, 2, 2}, {3, 3, 3}};
    const std::vector<Row> rows = {
        {"P3 with comments",
         bytes("P3\n# by hand\n3 #w\n2\n255\n255 0 0 0 255 0 0 0 255\n"
               "255 255 255 0 0 0 128 128 128\n"),
         24, colour},
        {"P6",
         bytes("P6 3 2 255\n",
               {255, 0, 0, 0, 255, 0, 0, 0, 255, 255, 255, 255, 0, 0, 0, 128, 128, 128}),
         24, colour},
        {"P6 16-bit",
         bytes("P6 3 2 65535\n",
               {255, 255, 0,   0,   0,   0,   0, 0, 255, 255, 0, 0, 0,   0,   0,   0,   255, 255,
                255, 255, 255, 255, 255, 255, 0, 0, 0,   0,   0, 0, 128, 128, 128, 128, 128, 128}),
         24, colour},
        {"P3 maxval 15, a sample above it",
         bytes("P3 3 2 15 15 0 0 0 15 0 0 0 15 15 99 15 0 0 0 8 8 8\n"),
         24,
         {kRed, kGreen, kBlue, kWhite, kBlack, {136, 136, 136}}},
        {"P2", bytes("P2 3 2 255\n0 128 255\n1 2 3\n"), 8, grey},
        {"P5", bytes("P5 3 2 255\r", {0, 128, 255, 1, 2, 3}), 8, grey},
        {"P5 16-bit",
         bytes("P5 3 2 65535\n", {0, 0, 128, 128, 255, 255, 1, 0, 2, 0, 3, 0}),
         8,
         {kBlack, kGrey, kWhite, {1, 1, 1}, {2, 2, 2}, {3, 3, 3}}},
        {"P1 without separators",
         bytes("P1\n3 2\n100\n0 1 1"),
         1,
         {kBlack, kWhite, kWhite, kWhite, kBlack, kBlack}},
        {"P4",
         bytes("P4 3 2\n", {0x9F, 0x60}),
         1,
         {kBlack, kWhite, kWhite, kWhite, kBlack, kBlack}},
    };
    for (const Row& r : rows) {
        SCOPED_TRACE(r.name);
        const Decoded d = open(r.file);
        ASSERT_TRUE(d.dib) << d.error();
        EXPECT_EQ(d.params.format, IMAGELIB_FMT_PNM);
        EXPECT_EQ(d.params.pageCount, 1);
        EXPECT_EQ(d.header().bitCount, r.bitCount);
        EXPECT_EQ(d.header().width, 3);
        EXPECT_EQ(d.header().height, 2);
        for (int i = 0; i < 6; ++i)
            EXPECT_EQ(d.bgr(i % 3, i / 3), r.pixels[static_cast<std::size_t>(i)]) << i;
        // Bits and bytes past the last pixel are cleared, whatever the file had there.
        const std::size_t used = r.bitCount == 1 ? 1 : 3 * static_cast<std::size_t>(r.bitCount) / 8;
        EXPECT_EQ(d.topRow(0)[used], 0);
        if (r.bitCount == 1) {
            EXPECT_EQ(d.topRow(0)[0] & 0x1F, 0);
        }
    }
}

TEST(PnmCodec, HostileFilesGiveATextNeverACrash) {
    const std::string damaged = "The PNM file is damaged or incomplete.";
    const std::string badHeader = "The PNM file's header is invalid.";
    // Cases are (what is wrong, the file, the text it gives).
    const std::vector<std::tuple<const char*, Bytes, std::string>> cases = {
        {"raw rows cut short", bytes("P6 3 2 255\n", Bytes(17, 7)), damaged},
        {"plain samples run out", bytes("P2 4 1 255\n1 2 3        "), damaged},
        {"letter among samples", bytes("P2 2 1 255\n1 x\n"), damaged},
        {"plain bitmap with a 2", bytes("P1 2 1 12"), damaged},
        {"claimed size far beyond the data", bytes("P6 30000 20000 255\n", {1, 2, 3}), damaged},
        {"plain claim far beyond the data", bytes("P1 30000 30000\n0101"), damaged},
        {"width beyond any picture", bytes("P5 2000000 1 255\n", Bytes(64, 0)),
         "The image is too large to open."},
        {"overlong number", bytes("P5 00000000001 1 255\n", {0}), badHeader},
        {"number glued to a letter", bytes("P5 1x 1 255\n", {0}), badHeader},
        {"comment straight after maxval", bytes("P5 1 1 255#\n", {0}), badHeader},
        {"header ends early", bytes("P6 3 2"), damaged},
        {"maxval too large", bytes("P5 1 1 65536\n", {0, 0}),
         "The PNM file's maximum sample value is outside 1 to 65535."},
    };
    for (const auto& [name, file, text] : cases) {
        SCOPED_TRACE(name);
        const Decoded d = open(file);
        EXPECT_FALSE(d.dib);
        EXPECT_EQ(d.error(), text);
    }
    // Not anymaps at all: no codec claims them.
    for (const char* text : {"P7 1 1", "P", "PX"})
        EXPECT_FALSE(open(bytes(text)).dib) << text;
}

TEST(PnmCodec, SavesTheDepthsItCanHoldAndReadsThemBack) {
    struct Row {
        const char* name;
        Bytes picture;
        const char* magic;
        bool sameBlock; // the reread block equals the saved one byte for byte
    };
    std::vector<RgbQuad> ramp(256);
    for (std::size_t i = 0; i < 256; ++i) {
        const auto v = static_cast<std::uint8_t>(i);
        ramp[i] = {v, v, v, 0};
    }
    // 9 x 2 at 1 bit: the second byte of each row holds the ninth pixel.
    const Bytes bits = {0xA5, 0x80, 0x3C, 0x00};
    const std::vector<Row> rows = {
        {"1-bit white then black", dib(9, 2, 1, {kPalWhite, kPalBlack}, bits), "P4", true},
        {"1-bit black then white", dib(9, 2, 1, {kPalBlack, kPalWhite}, bits), "P4", false},
        {"8-bit grey ramp", dib(3, 2, 8, ramp, {0, 100, 255, 7, 8, 9}), "P5", true},
        {"8-bit colour palette",
         dib(3, 2, 8, {{0, 0, 255, 0}, {255, 0, 0, 0}, {9, 8, 7, 0}}, {0, 1, 2, 2, 1, 0}), "P6",
         false},
        {"24-bit", dib(3, 2, 24, {}, {1, 2, 3, 4, 5, 6, 7, 8, 9, 9, 8, 7, 6, 5, 4, 3, 2, 1}), "P6",
         true},
    };
    const auto dir = tempDir();
    const auto path = dir / "round.pnm";
    ImageIoParams pnm{};
    pnm.format = IMAGELIB_FMT_PNM;
    for (const Row& r : rows) {
        SCOPED_TRACE(r.name);
        ImageIoParams save{}; // all zero: the extension decides
        ASSERT_EQ(ImageLib_CanSave(r.picture.data(), &pnm), 1);
        ASSERT_TRUE(ImageLib_Save(path.c_str(), r.picture.data(), &save));
        const Bytes written = readFile(path);
        ASSERT_GE(written.size(), 2u);
        EXPECT_EQ(std::string(written.begin(), written.begin() + 2), r.magic);

        Decoded back;
        back.dib.reset(ImageLib_Open(path.c_str(), &back.params));
        ASSERT_TRUE(back.dib) << back.error();
        Decoded original;
        original.dib.reset(std::malloc(r.picture.size()));
        std::memcpy(original.dib.get(), r.picture.data(), r.picture.size());
        const int w = original.header().width;
        for (int y = 0; y < 2; ++y)
            for (int x = 0; x < w; ++x)
                EXPECT_EQ(back.bgr(x, y), original.bgr(x, y)) << x << "," << y;
        if (r.sameBlock) {
            ASSERT_EQ(ImageLib_DibSize(back.dib.get()), r.picture.size());
            EXPECT_EQ(0, std::memcmp(back.dib.get(), r.picture.data(), r.picture.size()));
        }
    }
    std::filesystem::remove_all(dir);

    // Colour bitmaps, 4 bits and alpha have no anymap kind.
    for (const Bytes& b :
         {dib(1, 1, 1, {{0, 0, 255, 0}, kPalWhite}, {0}), dib(1, 1, 4, {kPalBlack, kPalWhite}, {0}),
          dib(1, 1, 32, {}, {1, 2, 3, 4})})
        EXPECT_EQ(ImageLib_CanSave(b.data(), &pnm), 0);
}
