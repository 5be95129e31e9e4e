#include "imagelib/jpeg/JpegCodec.h"

#include "../DecodedPicture.h"
#include "../ScratchDir.h"
#include "imagelib/iopt.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <jpeglib.h>

using namespace imagelib;

namespace {

// Three vertical bands (red, green, blue) over a white bottom strip; band edges sit on
// 16-pixel boundaries so that subsampled chroma stays clean inside each band.
Bgra scene(int x, int y, int height) {
    if (y >= height - 8)
        return {255, 255, 255, 255};
    return x < 16 ? Bgra{0, 0, 255, 255} : x < 32 ? Bgra{0, 255, 0, 255} : Bgra{255, 0, 0, 255};
}

Bgra grey(Bgra c) {
    const int v = (c[0] + c[1] + c[2]) / 3;
    return {v, v, v, 255};
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
            const Bgra px = scene(x, y, e.height);
            JSAMPLE* p = &row[static_cast<std::size_t>(x * c.input_components)];
            if (e.input == JCS_GRAYSCALE) {
                p[0] = static_cast<JSAMPLE>(grey(px)[0]);
                continue;
            }
            // Pure colours need no black ink; Adobe stores 255 for "no ink".
            const bool inverted = e.input == JCS_CMYK && !e.adobeMarker;
            for (int i = 0; i < 3; ++i)
                p[i] = static_cast<JSAMPLE>(inverted ? 255 - px[2 - i] : px[2 - i]);
            if (e.input == JCS_CMYK)
                p[3] = e.adobeMarker ? 255 : 0;
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
        {"greyscale progressive", JCS_GRAYSCALE, JCS_GRAYSCALE, true},
        {"Adobe CMYK", JCS_CMYK, JCS_CMYK},
        {"Adobe YCCK", JCS_CMYK, JCS_YCCK, true},
        {"plain CMYK", JCS_CMYK, JCS_CMYK, false, false, false},
    };
    for (const Encoding& e : rows) {
        SCOPED_TRACE(e.name);
        const DecodedPicture d = openMemory(encode(e));
        ASSERT_TRUE(d.dib) << d.error();
        EXPECT_EQ(d.params.format, IMAGELIB_FMT_JPEG);
        const bool isGrey = e.input == JCS_GRAYSCALE;
        const auto& h = d.header();
        EXPECT_EQ(h.bitCount, isGrey ? 8 : 24);
        EXPECT_EQ(h.clrUsed, isGrey ? 256u : 0u);
        EXPECT_EQ(h.width, e.width);
        EXPECT_EQ(h.height, e.height);
        for (const auto& [x, y] : kBandCentres) {
            const Bgra want = scene(x, y, e.height);
            expectNear(d.pixel(x, y), isGrey ? grey(want) : want, 8);
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
    const ScratchDir dir;
    const std::string path = dir.file("thumb.jpg");
    for (const Row& r : rows) {
        SCOPED_TRACE(testing::Message() << r.width << "x" << r.height << " box " << r.box);
        Encoding e{"thumb"};
        e.width = r.width;
        e.height = r.height;
        if (r.grey)
            e.input = e.stored = JCS_GRAYSCALE;
        writeFile(path, encode(e, 75));
        ImageLibFullInfo full{};
        const DecodedPicture d = openScaled(path, r.box, full);
        ASSERT_TRUE(d.dib) << d.error();
        EXPECT_EQ(d.header().width, r.outWidth);
        EXPECT_EQ(d.header().height, r.outHeight);
        EXPECT_EQ(d.header().bitCount, r.grey ? 8 : 24);
        EXPECT_EQ(full.width, r.width);
        EXPECT_EQ(full.height, r.height);
        EXPECT_EQ(full.bitCount, r.grey ? 8 : 24);
        // The right-hand band is blue whatever the scale.
        const Bgra blue{255, 0, 0, 255};
        expectNear(d.pixel(r.outWidth - 1, 0), r.grey ? grey(blue) : blue, 12);
    }
}

TEST(JpegCodec, SavesGreyAnd24BitWithItsOptions) {
    const ScratchDir dir;
    const std::string path = dir.file("saved.jpg");
    const Encoding colour{"colour"};
    for (const Encoding& e : {colour, Encoding{"grey", JCS_GRAYSCALE, JCS_GRAYSCALE}}) {
        SCOPED_TRACE(e.name);
        DecodedPicture d = openMemory(encode(e));
        ASSERT_TRUE(d.dib);
        auto& h = *static_cast<BitmapInfoHeader*>(d.dib.get());
        h.xPelsPerMeter = h.yPelsPerMeter = 11811; // 300 dpi
        const DecodedPicture back = saveAndOpen(path, d.dib.get(), saveParams(IMAGELIB_FMT_JPEG));
        ASSERT_TRUE(back.dib) << back.error();
        EXPECT_EQ(back.header().bitCount, h.bitCount);
        EXPECT_EQ(back.header().xPelsPerMeter, 11811);
        for (const auto& [x, y] : kBandCentres)
            expectNear(back.pixel(x, y), d.pixel(x, y), 6);
    }

    // Quality trades size; the progressive flag changes the frame type.
    const DecodedPicture d = openMemory(encode(colour));
    std::vector<std::uintmax_t> sizes;
    for (const auto& [quality, flags] : std::vector<std::pair<std::uint32_t, std::uint32_t>>{
             {10, 0}, {100, 0}, {100, IOPT_JPEG_PROGRESSIVE}}) {
        ImageIoParams params = saveParams(IMAGELIB_FMT_JPEG, quality, flags);
        ASSERT_TRUE(ImageLib_Save(path.c_str(), d.dib.get(), &params));
        const Bytes bytes = readFile(path);
        EXPECT_EQ(markerAt(bytes, 0xC2) != 0, flags != 0);
        sizes.push_back(bytes.size());
    }
    EXPECT_LT(sizes[0], sizes[1]);
}

// A large picture is coded in bands on several cores and joined at restart markers: the
// file must decode without a single warning, every block where it belongs. The wide grey
// picture needs markers inside the bands too (no more than 65535 blocks between two).
TEST(JpegCodec, LargePicturesCodedInBandsDecodeWhole) {
    struct Case {
        int width, height, bits;
    };
    const ScratchDir dir;
    const std::string path = dir.file("large.jpg");
    for (const Case c : {Case{1600, 1400, 24}, Case{20000, 1000, 8}}) {
        SCOPED_TRACE(c.width);
        const int channels = c.bits / 8;
        // Flat 16 x 16 blocks whose value depends on where they are.
        const auto value = [](int x, int y, int channel) {
            return static_cast<std::uint8_t>(((x / 16) * 37 + (y / 16) * 11 + channel * 80) % 200 +
                                             20);
        };
        Bytes rows(static_cast<std::size_t>(c.width) * c.height * channels);
        for (int y = 0; y < c.height; ++y)
            for (int x = 0; x < c.width; ++x)
                for (int ch = 0; ch < channels; ++ch)
                    rows[(std::size_t(y) * c.width + x) * channels + ch] = value(x, y, ch);
        const Bytes dib = makeDib(c.width, c.height, c.bits,
                                  c.bits == 8 ? greyRamp(256) : std::vector<RgbQuad>{}, rows);
        const DecodedPicture back = saveAndOpen(path, dib.data(), saveParams(IMAGELIB_FMT_JPEG));
        ASSERT_TRUE(back.dib) << back.error();
        ASSERT_EQ(back.header().width, c.width);
        ASSERT_EQ(back.header().height, c.height);
        for (int y = 8; y < c.height; y += 16 * 7)
            for (int x = 8; x < c.width; x += 16 * 13) {
                const int v0 = value(x, y, 0), v1 = value(x, y, channels > 1 ? 1 : 0),
                          v2 = value(x, y, channels > 2 ? 2 : 0);
                expectNear(back.pixel(x, y), {v0, v1, v2, 255}, 12);
            }
    }
}

TEST(JpegCodec, AFullDiskIsReported) {
    const DecodedPicture d = openMemory(encode(Encoding{"colour"}));
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
    // 4 x 2 over a 16-level grey table: indices 8 to 14 on top, 0 to 6 below.
    Bytes block = makeDib(4, 2, 8, greyRamp(16), {8, 10, 12, 14, 0, 2, 4, 6});
    const ScratchDir dir;
    const std::string path = dir.file("ramp.jpg");
    ImageIoParams params = saveParams(IMAGELIB_FMT_JPEG, 100);
    const DecodedPicture back = saveAndOpen(path, block.data(), params);
    ASSERT_TRUE(back.dib) << back.error();
    EXPECT_EQ(back.header().bitCount, 8);
    expectNear(back.pixel(0, 1), {0, 0, 0, 255}, 4);
    expectNear(back.pixel(3, 0), {238, 238, 238, 255}, 8); // index 14

    block[40 + 5 * 4] = 200; // a coloured entry: no longer grey
    EXPECT_EQ(ImageLib_CanSave(block.data(), &params), 0);
    EXPECT_FALSE(ImageLib_Save(path.c_str(), block.data(), &params));
    reinterpret_cast<BitmapInfoHeader*>(block.data())->bitCount = 4;
    EXPECT_EQ(ImageLib_CanSave(block.data(), &params), 0);
}

TEST(JpegCodec, BrokenFilesGiveASentence) {
    Encoding e{"base"};
    e.width = e.height = 64;
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

    // The texts that name libjpeg's complaint are checked up to that detail.
    using testing::StartsWith;
    const auto damaged = StartsWith("The JPEG file is damaged or incomplete.");
    expectRefused({
        {"cut in the middle of the data", cut(e, 50), damaged},
        {"progressive cut between scans", cut({"p", JCS_RGB, JCS_YCbCr, true}, 60), damaged},
        {"arithmetic cut in the middle", cut({"a", JCS_RGB, JCS_YCbCr, false, true}, 70), damaged},
        {"cut inside the header", cut(e, 5), damaged},
        {"claims far more than its data", huge,
         StartsWith("The JPEG file claims a picture far larger than its data could hold.")},
        {"12-bit samples", twelveBit, StartsWith("The JPEG file ")},
        {"lossless coding", lossless, StartsWith("The JPEG file ")},
        {"garbage after the signature", garbage, StartsWith("The JPEG file ")},
    });

    // Only the end marker missing: every row is there, so the picture is kept.
    const DecodedPicture d = openMemory(Bytes(good.begin(), good.end() - 2));
    ASSERT_TRUE(d.dib) << d.error();
    expectNear(d.pixel(60, 0), {255, 0, 0, 255}, 8);
}
