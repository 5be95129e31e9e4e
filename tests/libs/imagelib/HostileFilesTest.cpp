// Small files that claim huge pictures, made here with the formats' own libraries: each must
// be refused, or give its thumbnail, within bounds of memory and time. The memory bound is an
// address-space cap, so an allocation past it fails the case instead of succeeding slowly.
#include "../../support/MemoryCap.h"
#include "DecodedPicture.h"
#include "ScratchDir.h"

#include <gtest/gtest.h>

#include <csetjmp>
#include <cstdio>
#include <functional>
#include <jpeglib.h>
#include <tiffio.h>
#include <zlib.h>

namespace {

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

// An all-white 1-bit grey PNG; interlaced ones hold the seven passes. `keep` below 1 cuts the
// compressed data short, as a broken download would.
Bytes whitePng(std::uint32_t side, bool interlaced, double keep = 1.0) {
    Bytes file = {0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'};
    Bytes ihdr;
    putBe32(ihdr, side);
    putBe32(ihdr, side);
    ihdr.insert(ihdr.end(), {1, 0, 0, 0, static_cast<std::uint8_t>(interlaced ? 1 : 0)});
    chunk(file, "IHDR", ihdr);

    z_stream z{};
    deflateInit(&z, 6);
    Bytes out;
    std::vector<std::uint8_t> buffer(1 << 16);
    const auto feed = [&](Bytes& row, int flush) {
        z.next_in = row.data();
        z.avail_in = static_cast<uInt>(row.size());
        do {
            z.next_out = buffer.data();
            z.avail_out = static_cast<uInt>(buffer.size());
            deflate(&z, flush);
            out.insert(out.end(), buffer.data(), z.next_out);
        } while (z.avail_out == 0);
    };
    struct Pass {
        std::uint32_t x0, y0, dx, dy;
    };
    const std::vector<Pass> passes =
        interlaced ? std::vector<Pass>{{0, 0, 8, 8}, {4, 0, 8, 8}, {0, 4, 4, 8}, {2, 0, 4, 4},
                                       {0, 2, 2, 4}, {1, 0, 2, 2}, {0, 1, 1, 2}}
                   : std::vector<Pass>{{0, 0, 1, 1}};
    for (const Pass& p : passes) {
        const std::uint32_t cols = side > p.x0 ? (side - p.x0 + p.dx - 1) / p.dx : 0;
        const std::uint32_t rows = side > p.y0 ? (side - p.y0 + p.dy - 1) / p.dy : 0;
        if (cols == 0)
            continue;
        Bytes row((cols + 7) / 8 + 1, 0xFF);
        row[0] = 0;
        for (std::uint32_t y = 0; y < rows; ++y)
            feed(row, Z_NO_FLUSH);
    }
    Bytes none;
    feed(none, Z_FINISH);
    deflateEnd(&z);
    out.resize(static_cast<std::size_t>(static_cast<double>(out.size()) * keep));
    chunk(file, "IDAT", out);
    chunk(file, "IEND", {});
    return file;
}

// An all-white bilevel TIFF in one G4 strip, as scanners write them.
Bytes whiteFax(const std::string& path, std::uint32_t side) {
    TIFF* tif = TIFFOpen(path.c_str(), "w");
    TIFFSetField(tif, TIFFTAG_IMAGEWIDTH, side);
    TIFFSetField(tif, TIFFTAG_IMAGELENGTH, side);
    TIFFSetField(tif, TIFFTAG_BITSPERSAMPLE, 1);
    TIFFSetField(tif, TIFFTAG_SAMPLESPERPIXEL, 1);
    TIFFSetField(tif, TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_MINISWHITE);
    TIFFSetField(tif, TIFFTAG_COMPRESSION, COMPRESSION_CCITTFAX4);
    TIFFSetField(tif, TIFFTAG_ROWSPERSTRIP, side);
    std::vector<std::uint8_t> row((side + 7) / 8, 0);
    for (std::uint32_t y = 0; y < side; ++y)
        TIFFWriteScanline(tif, row.data(), y, 0);
    TIFFClose(tif);
    return readFile(path);
}

// A small progressive, arithmetic-coded JPEG whose frame header then claims `side` square.
Bytes claimingJpeg(std::uint16_t side) {
    jpeg_compress_struct c{};
    jpeg_error_mgr err{};
    c.err = jpeg_std_error(&err);
    jpeg_create_compress(&c);
    unsigned char* data = nullptr;
    unsigned long size = 0;
    jpeg_mem_dest(&c, &data, &size);
    c.image_width = 64;
    c.image_height = 64;
    c.input_components = 1;
    c.in_color_space = JCS_GRAYSCALE;
    jpeg_set_defaults(&c);
    c.arith_code = TRUE;
    jpeg_simple_progression(&c);
    jpeg_start_compress(&c, TRUE);
    std::vector<JSAMPLE> row(64, 200);
    JSAMPROW rows[1] = {row.data()};
    while (c.next_scanline < c.image_height)
        jpeg_write_scanlines(&c, rows, 1);
    jpeg_finish_compress(&c);
    jpeg_destroy_compress(&c);
    Bytes file(data, data + size);
    std::free(data);
    for (std::size_t i = 2; i + 9 < file.size(); ++i) {
        if (file[i] == 0xFF && (file[i + 1] == 0xC2 || file[i + 1] == 0xCA)) {
            for (std::size_t at : {i + 5, i + 7}) {
                file[at] = static_cast<std::uint8_t>(side >> 8);
                file[at + 1] = static_cast<std::uint8_t>(side);
            }
            break;
        }
    }
    return file;
}

// A bitmap file of a run-length stream that ends at once: a handful of bytes for any size.
Bytes rleBmp(std::int32_t width, std::int32_t height) {
    Bytes b = {'B', 'M'};
    const auto le32 = [&](std::uint32_t v) {
        for (int k = 0; k < 4; ++k)
            b.push_back(static_cast<std::uint8_t>(v >> (8 * k)));
    };
    le32(14 + 40 + 1024 + 2);
    le32(0);
    le32(14 + 40 + 1024);
    le32(40);
    le32(static_cast<std::uint32_t>(width));
    le32(static_cast<std::uint32_t>(height));
    b.insert(b.end(), {1, 0, 8, 0});
    le32(1); // RLE8
    le32(2);
    for (int k = 0; k < 4; ++k)
        le32(0);
    b.insert(b.end(), 1024, 0);
    b.insert(b.end(), {0, 1});
    return b;
}

// Junk after the end, as hostile files carry to pass checks of the claim against the size.
Bytes padded(Bytes file, std::size_t size) {
    if (file.size() < size)
        file.resize(size, 0x5A);
    return file;
}

std::string errorText(const DecodedPicture& d) {
    std::string s;
    for (const char16_t* p = d.params.errorText; *p; ++p)
        s += *p == u'\u00d7' ? std::string("x") : std::string(1, static_cast<char>(*p));
    return s;
}

enum class Mode { Open, Thumbnail };

struct Case {
    const char* name;
    std::function<Bytes(const std::string& path)> make;
    Mode mode;
    // Empty: a picture is expected.
    std::string error;
    std::uint64_t allowanceMb;
    double seconds;
};

TEST(HostileFiles, AreRefusedOrThumbnailedWithinBounds) {
    ScratchDir dir;
    const auto png = [](std::uint32_t side, bool interlaced, double keep = 1.0,
                        std::size_t size = 0) {
        return [=](const std::string&) { return padded(whitePng(side, interlaced, keep), size); };
    };
    const auto fax = [](std::uint32_t side) {
        return [=](const std::string& path) { return padded(whiteFax(path, side), 9500); };
    };
    const auto jpeg = [](std::uint16_t side) {
        return [=](const std::string&) { return padded(claimingJpeg(side), 12700); };
    };
    const auto rle = [](std::int32_t width, std::int32_t height) {
        return [=](const std::string&) { return padded(rleBmp(width, height), 720000); };
    };
    const std::string tooLarge37800 = "The picture is 37800 x 37800 pixels, too large to open.";
    const Case cases[] = {
        {"1-bit PNG 37800 square, opened", png(37800, false), Mode::Open, tooLarge37800, 64, 0.5},
        {"1-bit PNG 37800 square, thumbnail", png(37800, false), Mode::Thumbnail, "", 100, 30},
        {"interlaced PNG 37800 square, thumbnail", png(37800, true), Mode::Thumbnail, "", 100, 30},
        {"broken interlaced PNG 46000 square, opened", png(46000, true, 0.5, 250000), Mode::Open,
         "The picture is 46000 x 46000 pixels, too large to open.", 64, 0.5},
        {"broken interlaced PNG 46000 square, thumbnail", png(46000, true, 0.5, 250000),
         Mode::Thumbnail, "", 100, 30}, // the first pass arrived whole
        {"G4 fax 37800 square, opened", fax(37800), Mode::Open, tooLarge37800, 64, 0.5},
        {"G4 fax 37800 square, thumbnail", fax(37800), Mode::Thumbnail, "", 100, 30},
        {"progressive JPEG 23168 square, opened", jpeg(23168), Mode::Open,
         "The picture is 23168 x 23168 pixels, too large to open.", 64, 0.5},
        {"progressive JPEG 23168 square, thumbnail", jpeg(23168), Mode::Thumbnail,
         "The picture is 23168 x 23168 pixels, too large to open.", 64, 0.5},
        {"RLE bitmap 65535 x 21845, opened", rle(65535, 21845), Mode::Open,
         "The picture is 65535 x 21845 pixels, too large to open.", 64, 0.5},
        {"RLE bitmap 65535 x 21845, thumbnail", rle(65535, 21845), Mode::Thumbnail, "", 100, 30},
        {"RLE bitmap within the budget, opened", rle(8000, 6000), Mode::Open, "", 100, 5},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        const std::string path = dir.file("hostile");
        const Bytes file = c.make(path);
        writeFile(path, file);
        DecodedPicture d;
        ImageLibFullInfo full{};
        const auto spent = memorycap::run(c.allowanceMb, [&] {
            if (c.mode == Mode::Open)
                d = openFile(path);
            else
                d = openScaled(path, 96, full);
        });
        EXPECT_LE(spent.seconds, c.seconds);
        EXPECT_EQ(errorText(d), c.error);
        EXPECT_EQ(d.dib != nullptr, c.error.empty());
        if (d.dib && c.mode == Mode::Thumbnail) {
            EXPECT_GE(d.header().width, 192);
            EXPECT_LE(std::int64_t{d.header().width} * d.header().height, 4 << 20)
                << "a thumbnail's picture stays small";
            EXPECT_GT(full.width, d.header().width);
        }
    }
}

// A streamed thumbnail is the mean of each block of the picture opened whole, the right way
// up, whatever the depth.
TEST(HostileFiles, StreamedThumbnailsAverageThePictureOpenedWhole) {
    ScratchDir dir;
    constexpr int kW = 800, kH = 600;
    std::vector<imagelib::RgbQuad> palette;
    for (int i = 0; i < 256; ++i)
        palette.push_back({static_cast<std::uint8_t>(i), static_cast<std::uint8_t>(255 - i),
                           static_cast<std::uint8_t>(i * 7), 0});
    Bytes indices(std::size_t{kW} * kH), rgb(std::size_t{kW} * kH * 3);
    for (int y = 0; y < kH; ++y)
        for (int x = 0; x < kW; ++x) {
            const std::size_t i = std::size_t{static_cast<unsigned>(y)} * kW + x;
            indices[i] = static_cast<std::uint8_t>((x / 7 + y / 5 * 3) & 255);
            for (int c = 0; c < 3; ++c)
                rgb[3 * i + c] = static_cast<std::uint8_t>(x * (c + 1) / 4 + y * (3 - c) / 3);
        }
    const Bytes paletted = makeDib(kW, kH, 8, palette, indices);
    const Bytes colour = makeDib(kW, kH, 24, {}, rgb);
    const Bytes grey = makeDib(kW, kH, 8, greyRamp(256), indices);
    Bytes bits(std::size_t{(kW + 7) / 8} * kH);
    for (std::size_t i = 0; i < bits.size(); ++i)
        bits[i] = static_cast<std::uint8_t>(i * 37 / 5);
    const Bytes bilevel = makeDib(kW, kH, 1, {{0, 0, 0, 0}, {255, 255, 255, 0}}, bits);
    const std::tuple<const char*, const Bytes*, std::uint32_t> cases[] = {
        {"8-bit.bmp", &paletted, IMAGELIB_FMT_BMP},  {"24-bit.bmp", &colour, IMAGELIB_FMT_BMP},
        {"8-bit.png", &paletted, IMAGELIB_FMT_PNG},  {"24-bit.png", &colour, IMAGELIB_FMT_PNG},
        {"grey.png", &grey, IMAGELIB_FMT_PNG},       {"1-bit.png", &bilevel, IMAGELIB_FMT_PNG},
        {"1-bit.bmp", &bilevel, IMAGELIB_FMT_BMP},   {"1-bit.tif", &bilevel, IMAGELIB_FMT_TIFF},
        {"8-bit.tif", &paletted, IMAGELIB_FMT_TIFF}, {"24-bit.tif", &colour, IMAGELIB_FMT_TIFF}};
    for (const auto& [name, dib, format] : cases) {
        SCOPED_TRACE(name);
        const std::string path = dir.file(name);
        ImageIoParams params = saveParams(format);
        ASSERT_TRUE(ImageLib_Save(path.c_str(), dib->data(), &params));
        const DecodedPicture whole = openFile(path);
        ImageLibFullInfo full{};
        const DecodedPicture small = openScaled(path, 96, full);
        ASSERT_TRUE(whole.dib && small.dib);
        EXPECT_EQ(std::tuple(full.width, full.height), std::tuple(kW, kH));
        // 3 is the largest block that keeps twice the box on both sides of 800 x 600.
        ASSERT_EQ(std::tuple(small.header().width, small.header().height), std::tuple(267, 200));
        for (const auto& [sx, sy] : {std::pair{0, 0}, {10, 7}, {266, 199}, {133, 50}}) {
            int sum[3] = {0, 0, 0};
            int n = 0;
            for (int y = 3 * sy; y < std::min(kH, 3 * sy + 3); ++y)
                for (int x = 3 * sx; x < std::min(kW, 3 * sx + 3); ++x, ++n)
                    for (int c = 0; c < 3; ++c)
                        sum[c] += whole.pixel(x, y)[static_cast<std::size_t>(c)];
            const Bgra got = small.pixel(sx, sy);
            for (int c = 0; c < 3; ++c)
                EXPECT_NEAR(got[static_cast<std::size_t>(c)], (sum[c] + n / 2) / n, 1)
                    << sx << "," << sy << " channel " << c;
        }
    }
}

} // namespace
