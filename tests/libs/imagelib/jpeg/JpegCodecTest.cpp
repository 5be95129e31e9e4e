// The JPEG codec: every colour layout and coding a file can use, reduced decodes for
// thumbnails, saving with its options, and broken or hostile files.
#include "imagelib/jpeg/JpegCodec.h"

#include "../DecodedPicture.h"
#include "imagelib/core/DibHeader.h"
#include "imagelib/imagelib.h"
#include "imagelib/iopt.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <jpeglib.h>
#include <memory>
#include <string>
#include <unistd.h>
#include <vector>

using namespace imagelib;

namespace {

using Bytes = std::vector<std::uint8_t>;
using Rgb = std::array<int, 3>;

// Three vertical bands (red, green, blue) over a white bottom strip; band edges sit on
// 16-pixel boundaries so that subsampled chroma stays clean inside each band.
Rgb scene(int x, int y, int height) {
    if (y >= height - 8)
        return {255, 255, 255};
    if (x < 16)
        return {255, 0, 0};
    if (x < 32)
        return {0, 255, 0};
    return {0, 0, 255};
}

// Points well inside the bands of the scene, where a lossy coding is nearly exact.
constexpr std::pair<int, int> kBandCentres[] = {{5, 5}, {24, 9}, {40, 3}, {20, 22}};

struct Encoding {
    const char* name;
    J_COLOR_SPACE input = JCS_RGB; // JCS_GRAYSCALE, JCS_RGB or JCS_CMYK
    J_COLOR_SPACE stored = JCS_YCbCr;
    bool progressive = false;
    bool arithmetic = false;
    bool adobeMarker = true; // CMYK only: whether the values are stored inverted
    int width = 45;
    int height = 26;
};

Bytes encode(const Encoding& e, int quality = 95) {
    jpeg_compress_struct c;
    jpeg_error_mgr err;
    c.err = jpeg_std_error(&err);
    jpeg_create_compress(&c);
    unsigned char* out = nullptr;
    unsigned long size = 0;
    jpeg_mem_dest(&c, &out, &size);
    c.image_width = static_cast<JDIMENSION>(e.width);
    c.image_height = static_cast<JDIMENSION>(e.height);
    c.input_components = e.input == JCS_GRAYSCALE ? 1 : e.input == JCS_CMYK ? 4 : 3;
    c.in_color_space = e.input;
    jpeg_set_defaults(&c);
    jpeg_set_colorspace(&c, e.stored);
    jpeg_set_quality(&c, quality, TRUE);
    if (e.progressive)
        jpeg_simple_progression(&c);
    c.arith_code = e.arithmetic ? TRUE : FALSE;
    if (e.input == JCS_CMYK)
        c.write_Adobe_marker = e.adobeMarker ? TRUE : FALSE;
    jpeg_start_compress(&c, TRUE);
    std::vector<JSAMPLE> row(static_cast<std::size_t>(e.width * c.input_components));
    for (int y = 0; y < e.height; ++y) {
        for (int x = 0; x < e.width; ++x) {
            const Rgb px = scene(x, y, e.height);
            JSAMPLE* p = &row[static_cast<std::size_t>(x * c.input_components)];
            if (e.input == JCS_GRAYSCALE) {
                p[0] = static_cast<JSAMPLE>((px[0] + px[1] + px[2]) / 3);
            } else if (e.input == JCS_CMYK) {
                // Pure colours need no black ink; Adobe stores 255 for "no ink".
                for (int i = 0; i < 3; ++i)
                    p[i] = static_cast<JSAMPLE>(e.adobeMarker ? px[i] : 255 - px[i]);
                p[3] = e.adobeMarker ? 255 : 0;
            } else {
                for (int i = 0; i < 3; ++i)
                    p[i] = static_cast<JSAMPLE>(px[i]);
            }
        }
        JSAMPROW r = row.data();
        jpeg_write_scanlines(&c, &r, 1);
    }
    jpeg_finish_compress(&c);
    jpeg_destroy_compress(&c);
    Bytes bytes(out, out + size);
    std::free(out);
    return bytes;
}

struct Decoded : DecodedPicture {
    ImageLibFullInfo full{};
    // Red, green, blue at (x, y) from the top left, through the palette for 8 bits.
    Rgb rgb(int x, int y) const {
        const std::uint8_t* row = topRow(y);
        if (header().bitCount == 8) {
            const auto* q = static_cast<const std::uint8_t*>(dib.get()) + 40 + row[x] * 4;
            return {q[2], q[1], q[0]};
        }
        const std::uint8_t* p = row + x * 3;
        return {p[2], p[1], p[0]};
    }
};

Decoded open(const Bytes& bytes) {
    Decoded d;
    d.dib.reset(ImageLib_OpenMemory(bytes.data(), bytes.size(), &d.params));
    return d;
}

struct TempDir {
    const std::filesystem::path path =
        std::filesystem::temp_directory_path() / ("imagelib-jpeg-" + std::to_string(::getpid()));
    TempDir() { std::filesystem::create_directories(path); }
    ~TempDir() { std::filesystem::remove_all(path); }
    std::string file(const char* name, const Bytes& bytes = {}) const {
        if (!bytes.empty())
            std::ofstream(path / name, std::ios::binary)
                .write(reinterpret_cast<const char*>(bytes.data()),
                       static_cast<std::streamsize>(bytes.size()));
        return (path / name).string();
    }
};

void expectNear(const Rgb& got, const Rgb& want, int tolerance) {
    for (int i = 0; i < 3; ++i)
        EXPECT_NEAR(got[static_cast<std::size_t>(i)], want[static_cast<std::size_t>(i)], tolerance)
            << "channel " << i;
}

// Offset of the first byte after a marker, for patching headers.
std::size_t markerAt(const Bytes& b, std::uint8_t marker) {
    for (std::size_t i = 2; i + 1 < b.size(); ++i)
        if (b[i] == 0xFF && b[i + 1] == marker)
            return i + 2;
    return 0;
}

} // namespace

TEST(JpegCodec, DecodesEveryLayoutAndCoding) {
    const std::vector<Encoding> rows = {
        {"baseline YCbCr", JCS_RGB, JCS_YCbCr},
        {"progressive", JCS_RGB, JCS_YCbCr, true},
        {"arithmetic", JCS_RGB, JCS_YCbCr, false, true},
        {"stored as RGB", JCS_RGB, JCS_RGB},
        {"greyscale", JCS_GRAYSCALE, JCS_GRAYSCALE},
        {"greyscale progressive", JCS_GRAYSCALE, JCS_GRAYSCALE, true},
        {"Adobe CMYK", JCS_CMYK, JCS_CMYK},
        {"Adobe YCCK", JCS_CMYK, JCS_YCCK, true},
        {"plain CMYK", JCS_CMYK, JCS_CMYK, false, false, false},
    };
    for (const Encoding& e : rows) {
        SCOPED_TRACE(e.name);
        const Decoded d = open(encode(e));
        ASSERT_TRUE(d.dib) << d.error();
        EXPECT_EQ(d.params.format, IMAGELIB_FMT_JPEG);
        EXPECT_EQ(d.params.pageCount, 1);
        const bool grey = e.input == JCS_GRAYSCALE;
        const auto& h = d.header();
        EXPECT_EQ(h.bitCount, grey ? 8 : 24);
        EXPECT_EQ(h.clrUsed, grey ? 256u : 0u);
        EXPECT_EQ(h.width, e.width);
        EXPECT_EQ(h.height, e.height);
        for (const auto& [x, y] : kBandCentres) {
            Rgb want = scene(x, y, e.height);
            if (grey)
                want.fill((want[0] + want[1] + want[2]) / 3);
            expectNear(d.rgb(x, y), want, 8);
        }
        // Rows are padded to 4 bytes; the padding must be written, not left as garbage.
        const int rowBytes = e.width * h.bitCount / 8;
        const auto stride = static_cast<int>(dibStride(h.width, h.bitCount));
        for (int y = 0; y < e.height; ++y)
            for (int x = rowBytes; x < stride; ++x)
                ASSERT_EQ(d.topRow(y)[x], 0) << "row " << y;
    }
}

TEST(JpegCodec, ThumbnailDecodeCoversTwiceTheBoxAndReportsTheFullPicture) {
    struct Row {
        int width, height, box;
        bool grey;
        int outWidth, outHeight;
    };
    const std::vector<Row> rows = {
        {1600, 1200, 96, false, 400, 300}, // 1/8 would give 150 rows, less than 192
        {1600, 1200, 16, false, 200, 150}, // 1/8
        {1600, 1200, 96, true, 400, 300},
        {1000, 120, 96, false, 1000, 120}, // too short to reduce at all
        {1000, 800, 100, false, 250, 200}, // exactly twice the box at 2/8
    };
    const TempDir dir;
    for (const Row& r : rows) {
        SCOPED_TRACE(std::to_string(r.width) + "x" + std::to_string(r.height) + " box " +
                     std::to_string(r.box));
        Encoding e{"thumb"};
        e.width = r.width;
        e.height = r.height;
        if (r.grey)
            e.input = e.stored = JCS_GRAYSCALE;
        const std::string path = dir.file("thumb.jpg", encode(e, 75));
        Decoded d;
        d.dib.reset(ImageLib_OpenScaled(path.c_str(), &d.params, r.box, r.box, &d.full));
        ASSERT_TRUE(d.dib) << d.error();
        EXPECT_EQ(d.header().width, r.outWidth);
        EXPECT_EQ(d.header().height, r.outHeight);
        EXPECT_EQ(d.header().bitCount, r.grey ? 8 : 24);
        EXPECT_EQ(d.full.width, r.width);
        EXPECT_EQ(d.full.height, r.height);
        EXPECT_EQ(d.full.bitCount, r.grey ? 8 : 24);
        // The right-hand band is blue (grey 85) whatever the scale.
        const Rgb blue = r.grey ? Rgb{85, 85, 85} : Rgb{0, 0, 255};
        expectNear(d.rgb(r.outWidth - 1, 0), blue, 12);
    }
}

TEST(JpegCodec, SavesGreyAnd24BitWithItsOptions) {
    const TempDir dir;
    Encoding colour{"colour"};
    Encoding grey{"grey", JCS_GRAYSCALE, JCS_GRAYSCALE};
    for (const Encoding& e : {colour, grey}) {
        SCOPED_TRACE(e.name);
        Decoded d = open(encode(e));
        ASSERT_TRUE(d.dib);
        auto& h = *static_cast<BitmapInfoHeader*>(d.dib.get());
        h.xPelsPerMeter = h.yPelsPerMeter = 11811; // 300 dpi
        ImageIoParams params{};
        params.format = IMAGELIB_FMT_JPEG;
        ASSERT_EQ(ImageLib_CanSave(d.dib.get(), &params), 1);
        const std::string path = dir.file("saved.jpg");
        ASSERT_TRUE(ImageLib_Save(path.c_str(), d.dib.get(), &params));
        Decoded back;
        back.dib.reset(ImageLib_Open(path.c_str(), &back.params));
        ASSERT_TRUE(back.dib) << back.error();
        EXPECT_EQ(back.header().bitCount, h.bitCount);
        EXPECT_EQ(back.header().xPelsPerMeter, 11811);
        for (const auto& [x, y] : kBandCentres)
            expectNear(back.rgb(x, y), d.rgb(x, y), 6);
    }

    // Quality trades size; the progressive flag changes the frame type.
    Decoded d = open(encode(colour));
    std::vector<std::uintmax_t> sizes;
    for (const auto& [quality, flags] : std::vector<std::pair<std::uint32_t, std::uint32_t>>{
             {10, 0}, {100, 0}, {100, IOPT_JPEG_PROGRESSIVE}}) {
        ImageIoParams params{};
        params.format = IMAGELIB_FMT_JPEG;
        params.formatOption = quality;
        params.optionFlags[0] = static_cast<std::uint8_t>(flags);
        const std::string path = dir.file("options.jpg");
        ASSERT_TRUE(ImageLib_Save(path.c_str(), d.dib.get(), &params));
        std::ifstream in(path, std::ios::binary);
        const Bytes bytes((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
        EXPECT_EQ(markerAt(bytes, 0xC2) != 0, flags != 0);
        sizes.push_back(bytes.size());
    }
    EXPECT_LT(sizes[0], sizes[1]);
}

TEST(JpegCodec, AFullDiskIsReported) {
    const Decoded d = open(encode(Encoding{"colour"}));
    ASSERT_TRUE(d.dib);
    const int fd = ::open("/dev/full", O_WRONLY | O_CLOEXEC);
    if (fd < 0)
        GTEST_SKIP() << "/dev/full is not available";
    std::string error;
    EXPECT_FALSE(jpegCodec().save(DibView(d.dib.get()), SaveRequest{}, fd, error));
    ::close(fd);
    EXPECT_EQ(error, "The file could not be written; the disk may be full.");
}

TEST(JpegCodec, AShortGreyRampSavesAsGreyAndOtherPalettesAreRefused) {
    // An 8-bit picture with a 16-level grey table, 4 x 2: indices 0, 2, 4, 6 in the bottom row
    // and 8 to 14 in the top row.
    Bytes block(40 + 16 * 4 + 8);
    auto& h = *reinterpret_cast<BitmapInfoHeader*>(block.data());
    h = {40, 4, 2, 1, 8, kBiRgb, 8, 0, 0, 16, 0};
    for (int i = 0; i < 16; ++i) {
        const auto v = static_cast<std::uint8_t>(i * 17);
        block[static_cast<std::size_t>(40 + i * 4)] = v;
        block[static_cast<std::size_t>(41 + i * 4)] = v;
        block[static_cast<std::size_t>(42 + i * 4)] = v;
    }
    for (int i = 0; i < 8; ++i)
        block[static_cast<std::size_t>(104 + i)] = static_cast<std::uint8_t>(i * 2);
    const TempDir dir;
    const std::string path = dir.file("ramp.jpg");
    ImageIoParams params{};
    params.format = IMAGELIB_FMT_JPEG;
    params.formatOption = 100;
    ASSERT_TRUE(ImageLib_Save(path.c_str(), block.data(), &params));
    Decoded back;
    back.dib.reset(ImageLib_Open(path.c_str(), &back.params));
    ASSERT_TRUE(back.dib) << back.error();
    EXPECT_EQ(back.header().bitCount, 8);
    expectNear(back.rgb(0, 1), {0, 0, 0}, 4);
    expectNear(back.rgb(3, 0), {238, 238, 238}, 8); // index 14

    block[40 + 5 * 4] = 200; // a coloured entry: no longer grey
    EXPECT_EQ(ImageLib_CanSave(block.data(), &params), 0);
    EXPECT_FALSE(ImageLib_Save(path.c_str(), block.data(), &params));
    h.bitCount = 4;
    EXPECT_EQ(ImageLib_CanSave(block.data(), &params), 0);
}

TEST(JpegCodec, BrokenFilesGiveASentence) {
    Encoding e{"base"};
    e.width = 64;
    e.height = 64;
    const Bytes good = encode(e);
    const auto cut = [](const Encoding& layout, std::size_t percent) {
        Bytes b = encode(layout);
        b.resize(b.size() * percent / 100);
        return b;
    };
    Bytes huge = good;
    const std::size_t sof = markerAt(huge, 0xC0);
    ASSERT_GT(sof, 0u);
    huge.at(sof + 3) = huge.at(sof + 5) = 0x75; // 30000 x 30000 from a few kilobytes
    huge.at(sof + 4) = huge.at(sof + 6) = 0x30;
    Bytes twelveBit = good;
    twelveBit.at(sof + 2) = 12;
    Bytes lossless = good;
    lossless.at(sof - 1) = 0xC3;
    Bytes garbage = {0xFF, 0xD8, 0xFF};
    for (int i = 0; i < 200; ++i)
        garbage.push_back(static_cast<std::uint8_t>(i * 37 + 11));

    const std::vector<std::pair<const char*, Bytes>> cases = {
        {"cut in the middle of the data", cut(e, 50)},
        {"progressive cut between scans", cut({"p", JCS_RGB, JCS_YCbCr, true}, 60)},
        {"arithmetic cut in the middle", cut({"a", JCS_RGB, JCS_YCbCr, false, true}, 70)},
        {"cut inside the header", cut(e, 5)},
    };
    for (const auto& [name, bytes] : cases) {
        SCOPED_TRACE(name);
        const Decoded d = open(bytes);
        EXPECT_FALSE(d.dib);
        EXPECT_EQ(d.error(), "The JPEG file is damaged or incomplete.");
    }
    const std::vector<std::pair<const char*, Bytes>> others = {
        {"claims far more than its data", huge},
        {"12-bit samples", twelveBit},
        {"lossless coding", lossless},
        {"garbage after the signature", garbage},
    };
    for (const auto& [name, bytes] : others) {
        SCOPED_TRACE(name);
        const Decoded d = open(bytes);
        EXPECT_FALSE(d.dib);
        EXPECT_EQ(d.error().rfind("The JPEG file ", 0), 0u) << d.error();
    }
    EXPECT_EQ(open(huge).error(),
              "The JPEG file claims a picture far larger than its data could hold.");

    // Only the end marker missing: every row is there, so the picture is kept.
    const Bytes noEnd(good.begin(), good.end() - 2);
    const Decoded d = open(noEnd);
    ASSERT_TRUE(d.dib) << d.error();
    expectNear(d.rgb(60, 0), {0, 0, 255}, 8);
}
