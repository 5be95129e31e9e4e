// The BMP codec and the library's entry points: every layout a BMP file can take, hostile
// headers, and saving (round trips, format by name, never a half-written file).
#include "../DecodedPicture.h"
#include "imagelib/core/DibHeader.h"
#include "imagelib/imagelib.h"

#include <gtest/gtest.h>

#include <array>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <unistd.h>
#include <vector>

using namespace imagelib;

namespace {

using Bytes = std::vector<std::uint8_t>;

struct Bmp {
    int width = 3;
    int height = 2;
    int bitCount = 24;
    std::uint32_t compression = kBiRgb;
    bool topDown = false;
    std::uint32_t headerSize = 40;
    std::vector<RgbQuad> palette;
    std::vector<std::uint32_t> masks; // red, green, blue for bit fields
    Bytes rows;                       // file order, already padded
};

void put16(Bytes& b, std::uint16_t v) {
    b.push_back(static_cast<std::uint8_t>(v));
    b.push_back(static_cast<std::uint8_t>(v >> 8));
}
void put32(Bytes& b, std::uint32_t v) {
    for (int i = 0; i < 4; ++i)
        b.push_back(static_cast<std::uint8_t>(v >> (8 * i)));
}

Bytes file(const Bmp& m) {
    Bytes h;
    put32(h, m.headerSize);
    put32(h, static_cast<std::uint32_t>(m.width));
    put32(h, static_cast<std::uint32_t>(m.topDown ? -m.height : m.height));
    put16(h, 1);
    put16(h, static_cast<std::uint16_t>(m.bitCount));
    put32(h, m.compression);
    put32(h, static_cast<std::uint32_t>(m.rows.size()));
    put32(h, 2835);
    put32(h, 2835);
    put32(h, static_cast<std::uint32_t>(m.palette.size()));
    put32(h, 0);
    h.resize(m.headerSize, 0);
    for (std::uint32_t mask : m.masks)
        put32(h, mask);
    for (const RgbQuad& q : m.palette)
        h.insert(h.end(), {q.blue, q.green, q.red, 0});
    Bytes f = {'B', 'M'};
    put32(f, static_cast<std::uint32_t>(14 + h.size() + m.rows.size()));
    put32(f, 0);
    put32(f, static_cast<std::uint32_t>(14 + h.size()));
    f.insert(f.end(), h.begin(), h.end());
    f.insert(f.end(), m.rows.begin(), m.rows.end());
    return f;
}

struct Decoded : DecodedPicture {
    // Blue, green, red of the pixel at (x, y) counted from the top left.
    std::array<int, 3> bgr(int x, int y) const {
        const auto& h = header();
        const auto* base = static_cast<const std::uint8_t*>(dib.get()) + 40;
        const std::size_t colours =
            h.bitCount <= 8 ? (h.clrUsed ? h.clrUsed : 1u << h.bitCount) : 0;
        const std::uint8_t* row =
            base + colours * 4 +
            dibStride(h.width, h.bitCount) * static_cast<std::size_t>(h.height - 1 - y);
        int index = 0;
        switch (h.bitCount) {
        case 1:
            index = (row[x / 8] >> (7 - x % 8)) & 1;
            break;
        case 4:
            index = (x & 1) ? row[x / 2] & 0x0F : row[x / 2] >> 4;
            break;
        case 8:
            index = row[x];
            break;
        case 16: {
            const int p = readLe16(row + 2 * x);
            return {(p & 31) * 255 / 31, ((p >> 5) & 31) * 255 / 31, ((p >> 10) & 31) * 255 / 31};
        }
        default: {
            const std::uint8_t* px = row + x * (h.bitCount / 8);
            return {px[0], px[1], px[2]};
        }
        }
        const std::uint8_t* q = base + index * 4;
        return {q[0], q[1], q[2]};
    }
};

Decoded open(const Bytes& bytes) {
    Decoded d;
    d.dib.reset(ImageLib_OpenMemory(bytes.data(), bytes.size(), &d.params));
    return d;
}

std::filesystem::path tempDir() {
    auto dir =
        std::filesystem::temp_directory_path() / ("imagelib-bmp-" + std::to_string(::getpid()));
    std::filesystem::create_directories(dir);
    return dir;
}

void writeFile(const std::filesystem::path& p, const Bytes& b) {
    std::ofstream(p, std::ios::binary)
        .write(reinterpret_cast<const char*>(b.data()), static_cast<std::streamsize>(b.size()));
}

// A 3 x 2 picture: top row red, green, blue; bottom row white, black, grey.
constexpr std::array<std::array<int, 3>, 6> kExpected = {
    {{0, 0, 255}, {0, 255, 0}, {255, 0, 0}, {255, 255, 255}, {0, 0, 0}, {128, 128, 128}}};

Bmp depth24(bool topDown) {
    Bmp m;
    m.topDown = topDown;
    const Bytes top = {0, 0, 255, 0, 255, 0, 255, 0, 0, 0, 0, 0};
    const Bytes bottom = {255, 255, 255, 0, 0, 0, 128, 128, 128, 0, 0, 0};
    m.rows = topDown ? top : bottom;
    m.rows.insert(m.rows.end(), (topDown ? bottom : top).begin(), (topDown ? bottom : top).end());
    return m;
}

Bmp paletted(int bits) {
    Bmp m;
    m.bitCount = bits;
    m.palette = {{0, 0, 255, 0},     {0, 255, 0, 0}, {255, 0, 0, 0},
                 {255, 255, 255, 0}, {0, 0, 0, 0},   {128, 128, 128, 0}};
    if (bits == 8)
        m.rows = {3, 4, 5, 0, 0, 1, 2, 0};
    else // 4 bits: two pixels a byte, high nibble first
        m.rows = {0x34, 0x50, 0, 0, 0x01, 0x20, 0, 0};
    return m;
}

} // namespace

TEST(BmpCodec, DecodesEveryLayoutToTheSamePixels) {
    struct Row {
        const char* name;
        Bmp bmp;
        int outBits;
    };
    Bmp rle8 = paletted(8);
    rle8.compression = kBiRle8;
    // Bottom row: an absolute run of three; then end of line; top row: encoded runs.
    rle8.rows = {0, 3, 3, 4, 5, 0, 0, 0, 1, 0, 1, 1, 1, 2, 0, 1};
    Bmp rle4 = paletted(4);
    rle4.compression = kBiRle4;
    rle4.rows = {0, 3, 0x34, 0x50, 0, 0, 2, 0x01, 1, 0x22, 0, 1};
    Bmp v5 = depth24(false);
    v5.headerSize = 124;
    Bmp fields32 = depth24(false);
    fields32.bitCount = 32;
    fields32.compression = kBiBitfields;
    fields32.masks = {0x00FF0000, 0x0000FF00, 0x000000FF};
    fields32.rows = {255, 255, 255, 0, 0, 0,   0, 0, 128, 128, 128, 0,
                     0,   0,   255, 0, 0, 255, 0, 0, 255, 0,   0,   0};
    const std::vector<Row> rows = {
        {"24-bit bottom-up", depth24(false), 24},
        {"24-bit top-down", depth24(true), 24},
        {"V5 header", v5, 24},
        {"8-bit palette", paletted(8), 8},
        {"4-bit palette", paletted(4), 4},
        {"RLE8", rle8, 8},
        {"RLE4", rle4, 4},
        {"32-bit standard fields", fields32, 32},
    };
    for (const Row& r : rows) {
        SCOPED_TRACE(r.name);
        const Decoded d = open(file(r.bmp));
        ASSERT_TRUE(d.dib) << d.error();
        EXPECT_EQ(d.params.format, IMAGELIB_FMT_BMP);
        EXPECT_EQ(d.params.pageCount, 1);
        EXPECT_EQ(d.header().bitCount, r.outBits);
        EXPECT_EQ(d.header().width, 3);
        EXPECT_EQ(d.header().height, 2);
        for (int i = 0; i < 6; ++i)
            EXPECT_EQ(d.bgr(i % 3, i / 3), kExpected[static_cast<std::size_t>(i)]) << i;
    }
}

TEST(BmpCodec, OddBitFieldsBecome24BitAnd555Stays16) {
    Bmp m;
    m.width = 2;
    m.height = 1;
    m.bitCount = 16;
    m.compression = kBiBitfields;
    m.masks = {0xF800, 0x07E0, 0x001F}; // 5-6-5
    m.rows = {0x00, 0xF8, 0x1F, 0x00};  // pure red, pure blue
    Decoded d = open(file(m));
    ASSERT_TRUE(d.dib) << d.error();
    EXPECT_EQ(d.header().bitCount, 24);
    EXPECT_EQ(d.bgr(0, 0), (std::array<int, 3>{0, 0, 255}));
    EXPECT_EQ(d.bgr(1, 0), (std::array<int, 3>{255, 0, 0}));

    m.compression = kBiRgb;
    m.masks.clear();
    m.rows = {0x00, 0x7C, 0x1F, 0x00}; // 5-5-5 red, blue
    d = open(file(m));
    ASSERT_TRUE(d.dib) << d.error();
    EXPECT_EQ(d.header().bitCount, 16);
    EXPECT_EQ(d.bgr(0, 0), (std::array<int, 3>{0, 0, 255}));
}

TEST(BmpCodec, HostileFilesGiveATextNeverACrash) {
    Bytes truncated = file(depth24(false));
    truncated.resize(truncated.size() - 5);
    Bmp huge = depth24(false);
    huge.width = 60000;
    huge.height = 60000;
    Bmp bomb = paletted(8);
    bomb.compression = kBiRle8;
    bomb.width = 30000;
    bomb.height = 30000;
    bomb.rows = {0, 1};
    Bmp badHeader = depth24(false);
    badHeader.headerSize = 20;
    Bmp rleTopDown = paletted(8);
    rleTopDown.compression = kBiRle8;
    rleTopDown.topDown = true;
    const std::vector<std::pair<const char*, Bytes>> cases = {
        {"truncated rows", truncated},
        {"size beyond any memory", file(huge)},
        {"compressed picture far larger than its data", file(bomb)},
        {"unknown header", file(badHeader)},
        {"top-down RLE", file(rleTopDown)},
        {"header only", Bytes{'B', 'M', 1, 2, 3}},
        {"not an image", Bytes{'h', 'e', 'l', 'l', 'o'}},
    };
    for (const auto& [name, bytes] : cases) {
        SCOPED_TRACE(name);
        const Decoded d = open(bytes);
        EXPECT_FALSE(d.dib);
        EXPECT_FALSE(d.error().empty());
    }
}

TEST(ImageLibSave, RoundTripsEveryDepthAndPicksTheFormatByName) {
    const auto dir = tempDir();
    for (const Bmp& m : {paletted(4), paletted(8), depth24(true)}) {
        const Decoded d = open(file(m));
        ASSERT_TRUE(d.dib);
        ImageIoParams save{}; // all zero: the ".bmp" in the name decides
        const auto path = (dir / "round.bmp").string();
        ASSERT_TRUE(ImageLib_Save(path.c_str(), d.dib.get(), &save));
        Decoded back;
        back.dib.reset(ImageLib_Open(path.c_str(), &back.params));
        ASSERT_TRUE(back.dib) << back.error();
        ASSERT_EQ(ImageLib_DibSize(back.dib.get()), ImageLib_DibSize(d.dib.get()));
        EXPECT_EQ(0, std::memcmp(back.dib.get(), d.dib.get(), ImageLib_DibSize(d.dib.get())));
    }
    std::filesystem::remove_all(dir);
}

TEST(ImageLibSave, AFailedSaveLeavesTheOldFileAndNoTemporaryFiles) {
    const auto dir = tempDir();
    const auto path = dir / "keep.bmp";
    const Bytes original = file(depth24(false));
    writeFile(path, original);
    const Decoded d = open(original);
    ASSERT_TRUE(d.dib);

    ImageIoParams unknown{};
    EXPECT_FALSE(ImageLib_Save((dir / "keep.xyz").c_str(), d.dib.get(), &unknown));
    ImageIoParams bmp{};
    bmp.format = IMAGELIB_FMT_BMP;
    const BitmapInfoHeader bad{}; // not a picture at all
    EXPECT_FALSE(ImageLib_Save(path.c_str(), &bad, &bmp));
    EXPECT_NE(bmp.errorText[0], u'\0');
    EXPECT_EQ(std::filesystem::file_size(path), original.size());
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(dir),
                            std::filesystem::directory_iterator()),
              1);
    EXPECT_EQ(ImageLib_CanSave(d.dib.get(), &bmp), 1);
    std::filesystem::remove_all(dir);
}

TEST(ImageLibOpen, FilesAreRecognisedByContentNotByName) {
    const auto dir = tempDir();
    const auto misnamed = dir / "really-a-bitmap.jpg";
    writeFile(misnamed, file(depth24(false)));
    Decoded d;
    d.dib.reset(ImageLib_Open(misnamed.c_str(), &d.params));
    EXPECT_TRUE(d.dib);
    EXPECT_EQ(d.params.format, IMAGELIB_FMT_BMP);

    Decoded missing;
    missing.dib.reset(ImageLib_Open((dir / "absent.bmp").c_str(), &missing.params));
    EXPECT_FALSE(missing.dib);
    EXPECT_EQ(missing.error(), "The file does not exist.");
    std::filesystem::remove_all(dir);
}
