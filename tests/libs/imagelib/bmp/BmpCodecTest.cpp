// The BMP codec and the library's entry points: every layout a BMP file can take, hostile
// headers, and saving (round trips, format by name, never a half-written file).
#include "../DecodedPicture.h"
#include "../ScratchDir.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <filesystem>

using namespace imagelib;

namespace {

std::string errorOf(const ImageIoParams& p) {
    std::string s;
    for (const char16_t* c = p.errorText; *c; ++c)
        s += static_cast<char>(*c);
    return s;
}

struct Bmp {
    int width = 3;
    int height = 2;
    int bitCount = 24;
    std::uint32_t compression = kBiRgb;
    bool topDown = false;
    std::uint32_t headerSize = 40;
    std::vector<RgbQuad> palette{};
    std::vector<std::uint32_t> masks{}; // red, green, blue for bit fields
    Bytes rows{};                       // file order, already padded
};

void put(Bytes& b, std::uint32_t v) {
    for (int i = 0; i < 4; ++i)
        b.push_back(static_cast<std::uint8_t>(v >> (8 * i)));
}

Bytes file(const Bmp& m) {
    Bytes h;
    for (std::uint32_t v : {m.headerSize, static_cast<std::uint32_t>(m.width),
                            static_cast<std::uint32_t>(m.topDown ? -m.height : m.height),
                            1u | static_cast<std::uint32_t>(m.bitCount) << 16, m.compression,
                            static_cast<std::uint32_t>(m.rows.size()), 2835u, 2835u,
                            static_cast<std::uint32_t>(m.palette.size()), 0u})
        put(h, v);
    h.resize(m.headerSize, 0);
    for (std::uint32_t mask : m.masks)
        put(h, mask);
    for (const RgbQuad& q : m.palette)
        h.insert(h.end(), {q.blue, q.green, q.red, 0});
    Bytes f = {'B', 'M'};
    for (std::size_t v : {14 + h.size() + m.rows.size(), std::size_t{0}, 14 + h.size()})
        put(f, static_cast<std::uint32_t>(v));
    f.insert(f.end(), h.begin(), h.end());
    f.insert(f.end(), m.rows.begin(), m.rows.end());
    return f;
}

// A 3 x 2 picture: top row red, green, blue; bottom row white, black, grey. The paletted
// files index these colours in this order.
const std::vector<RgbQuad> kColours = {{0, 0, 255, 0},     {0, 255, 0, 0}, {255, 0, 0, 0},
                                       {255, 255, 255, 0}, {0, 0, 0, 0},   {128, 128, 128, 0}};

Bgra expected(int i) {
    const RgbQuad& q = kColours[static_cast<std::size_t>(i)];
    return {q.blue, q.green, q.red, 255};
}

Bmp depth24(bool topDown) {
    Bytes rows = {255, 255, 255, 0, 0,   0, 128, 128, 128, 0, 0, 0,
                  0,   0,   255, 0, 255, 0, 255, 0,   0,   0, 0, 0};
    if (topDown)
        std::rotate(rows.begin(), rows.begin() + 12, rows.end());
    return {.topDown = topDown, .rows = rows};
}

Bmp paletted(int bits, std::uint32_t compression = kBiRgb, Bytes rows = {}) {
    // Uncompressed 4 bits hold two pixels a byte, high nibble first.
    if (rows.empty())
        rows =
            bits == 8 ? Bytes{3, 4, 5, 0, 0, 1, 2, 0} : Bytes{0x34, 0x50, 0, 0, 0x01, 0x20, 0, 0};
    return {.bitCount = bits, .compression = compression, .palette = kColours, .rows = rows};
}

} // namespace

TEST(BmpCodec, DecodesEveryLayoutToTheSamePixels) {
    Bmp v5 = depth24(false);
    v5.headerSize = 124;
    const Bmp fields32{.bitCount = 32,
                       .compression = kBiBitfields,
                       .masks = {0x00FF0000, 0x0000FF00, 0x000000FF},
                       .rows = {255, 255, 255, 0, 0, 0,   0, 0, 128, 128, 128, 0,
                                0,   0,   255, 0, 0, 255, 0, 0, 255, 0,   0,   0}};
    const std::vector<std::tuple<const char*, Bmp, int>> rows = {
        {"24-bit bottom-up", depth24(false), 24},
        {"24-bit top-down", depth24(true), 24},
        {"V5 header", v5, 24},
        {"8-bit palette", paletted(8), 8},
        {"4-bit palette", paletted(4), 4},
        // Bottom row: an absolute run of three; then end of line; top row: encoded runs.
        {"RLE8", paletted(8, kBiRle8, {0, 3, 3, 4, 5, 0, 0, 0, 1, 0, 1, 1, 1, 2, 0, 1}), 8},
        {"RLE4", paletted(4, kBiRle4, {0, 3, 0x34, 0x50, 0, 0, 2, 0x01, 1, 0x22, 0, 1}), 4},
        {"32-bit standard fields", fields32, 32},
    };
    for (const auto& [name, bmp, outBits] : rows) {
        SCOPED_TRACE(name);
        const DecodedPicture d = openMemory(file(bmp));
        ASSERT_TRUE(d.dib) << d.error();
        EXPECT_EQ(d.params.format, IMAGELIB_FMT_BMP);
        EXPECT_EQ(d.header().bitCount, outBits);
        EXPECT_EQ(d.header().width, 3);
        EXPECT_EQ(d.header().height, 2);
        for (int i = 0; i < 6; ++i) {
            Bgra got = d.pixel(i % 3, i / 3);
            got[3] = 255; // bit fields without an alpha mask leave the fourth byte alone
            EXPECT_EQ(got, expected(i)) << i;
        }
    }
}

TEST(BmpCodec, OddBitFieldsBecome24BitAnd555Stays16) {
    // 5-6-5 pure red and pure blue.
    Bmp m{.width = 2,
          .height = 1,
          .bitCount = 16,
          .compression = kBiBitfields,
          .masks = {0xF800, 0x07E0, 0x001F},
          .rows = {0x00, 0xF8, 0x1F, 0x00}};
    DecodedPicture d = openMemory(file(m));
    ASSERT_TRUE(d.dib) << d.error();
    EXPECT_EQ(d.header().bitCount, 24);
    EXPECT_EQ(d.pixel(0, 0), expected(0));
    EXPECT_EQ(d.pixel(1, 0), expected(2));

    m.compression = kBiRgb;
    m.masks.clear();
    m.rows = {0x00, 0x7C, 0x1F, 0x00}; // 5-5-5 red, blue
    d = openMemory(file(m));
    ASSERT_TRUE(d.dib) << d.error();
    EXPECT_EQ(d.header().bitCount, 16);
    EXPECT_EQ(d.pixel(0, 0), expected(0));
}

TEST(BmpCodec, HostileFilesGiveATextNeverACrash) {
    Bytes truncated = file(depth24(false));
    truncated.resize(truncated.size() - 5);
    Bmp bomb = paletted(8, kBiRle8, {0, 1});
    bomb.width = bomb.height = 30000;
    Bmp rleTopDown = paletted(8, kBiRle8);
    rleTopDown.topDown = true;
    expectRefused({
        {"truncated rows", truncated},
        {"size beyond any memory",
         file({.width = 60000, .height = 60000, .rows = depth24(false).rows})},
        {"compressed picture far larger than its data", file(bomb)},
        {"unknown header", file({.headerSize = 20, .rows = depth24(false).rows})},
        {"top-down RLE", file(rleTopDown)},
        {"header only", Bytes{'B', 'M', 1, 2, 3}},
        {"not an image", Bytes{'h', 'e', 'l', 'l', 'o'}},
    });
}

TEST(ImageLibSave, RoundTripsEveryDepthAndPicksTheFormatByName) {
    const ScratchDir dir;
    const std::string path = dir.file("round.bmp");
    for (const Bmp& m : {paletted(4), paletted(8), depth24(true)}) {
        const DecodedPicture d = openMemory(file(m));
        ASSERT_TRUE(d.dib);
        // The resolution travels too (72 dpi).
        const std::int32_t pels = 2835;
        std::memcpy(static_cast<std::uint8_t*>(d.dib.get()) + 24, &pels, 4);
        // All-zero parameters: the ".bmp" in the name decides.
        EXPECT_EQ(saveAndOpen(path, d.dib.get()).bytes(), d.bytes());
    }
}

// Any legal name saves: the longest one, and bytes that are not UTF-8.
TEST(ImageLibSave, NamesOfAnyLengthAndEncodingRoundTrip) {
    const ScratchDir dir;
    const DecodedPicture d = openMemory(file(paletted(8)));
    ASSERT_TRUE(d.dib);
    for (const std::string& name :
         {std::string(251, 'n') + ".bmp", std::string("caf\xe9 \xff\xfe.bmp")}) {
        SCOPED_TRACE(name.size());
        const std::string path = dir.file(name);
        ImageIoParams params{};
        ASSERT_TRUE(ImageLib_Save(path.c_str(), d.dib.get(), &params)) << errorOf(params);
        EXPECT_EQ(openFile(path).bytes(), d.bytes());
        EXPECT_TRUE(ImageLib_Save(path.c_str(), d.dib.get(), &params)) << "and over itself";
        EXPECT_EQ(std::distance(std::filesystem::directory_iterator(dir.path()),
                                std::filesystem::directory_iterator()),
                  1);
        EXPECT_EQ(::unlink(path.c_str()), 0);
    }
}

TEST(ImageLibSave, AFailedSaveLeavesTheOldFileAndNoTemporaryFiles) {
    const ScratchDir dir;
    const std::string path = dir.file("keep.bmp");
    const Bytes original = file(depth24(false));
    writeFile(path, original);
    const DecodedPicture d = openMemory(original);
    ASSERT_TRUE(d.dib);

    ImageIoParams unknown{};
    EXPECT_FALSE(ImageLib_Save(dir.file("keep.xyz").c_str(), d.dib.get(), &unknown));
    ImageIoParams bmp = saveParams(IMAGELIB_FMT_BMP);
    const BitmapInfoHeader bad{}; // not a picture at all
    EXPECT_FALSE(ImageLib_Save(path.c_str(), &bad, &bmp));
    EXPECT_NE(bmp.errorText[0], u'\0');
    EXPECT_EQ(readFile(path), original);
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(dir.path()),
                            std::filesystem::directory_iterator()),
              1);
}

TEST(ImageLibOpen, FilesAreRecognisedByContentNotByName) {
    const ScratchDir dir;
    writeFile(dir.file("really-a-bitmap.jpg"), file(depth24(false)));
    const DecodedPicture d = openFile(dir.file("really-a-bitmap.jpg"));
    EXPECT_TRUE(d.dib);
    EXPECT_EQ(d.params.format, IMAGELIB_FMT_BMP);

    const DecodedPicture missing = openFile(dir.file("absent.bmp"));
    EXPECT_FALSE(missing.dib);
    EXPECT_EQ(missing.error(), "The file does not exist.");
}
