#pragma once

// Small files that claim huge pictures, made with the formats' own libraries: what the
// hostile-file tests and the benchmark feed the image library.
#include <csetjmp>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <jpeglib.h>
#include <string>
#include <tiffio.h>
#include <vector>
#include <zlib.h>

namespace hostile {

using Bytes = std::vector<std::uint8_t>;

inline Bytes readAll(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

inline void putBe32(Bytes& b, std::uint32_t v) {
    for (int i = 3; i >= 0; --i)
        b.push_back(static_cast<std::uint8_t>(v >> (8 * i)));
}

inline void chunk(Bytes& file, const char* type, const Bytes& body) {
    putBe32(file, static_cast<std::uint32_t>(body.size()));
    const std::size_t start = file.size();
    file.insert(file.end(), type, type + 4);
    file.insert(file.end(), body.begin(), body.end());
    putBe32(file, static_cast<std::uint32_t>(
                      crc32(0, &file[start], static_cast<uInt>(file.size() - start))));
}

// An all-white 1-bit grey PNG; interlaced ones hold the seven passes. `keep` below 1 cuts the
// compressed data short, as a broken download would.
inline Bytes whitePng(std::uint32_t side, bool interlaced, double keep = 1.0) {
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
inline Bytes whiteFax(const std::string& path, std::uint32_t side) {
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
    return readAll(path);
}

// A small progressive, arithmetic-coded JPEG whose frame header then claims `side` square.
inline Bytes claimingJpeg(std::uint16_t side) {
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
inline Bytes rleBmp(std::int32_t width, std::int32_t height) {
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
inline Bytes padded(Bytes file, std::size_t size) {
    if (file.size() < size)
        file.resize(size, 0x5A);
    return file;
}

// A GIF whose screen is `width` x `height` and whose one frame is a single pixel at its top
// left: black on a white background.
inline Bytes tinyFrameGif(std::uint16_t width, std::uint16_t height) {
    const auto lo = [](std::uint16_t v) { return static_cast<std::uint8_t>(v & 0xFF); };
    const auto hi = [](std::uint16_t v) { return static_cast<std::uint8_t>(v >> 8); };
    return {'G', 'I', 'F', '8', '9',  'a',  lo(width), hi(width), lo(height), hi(height), 0x80, 1,
            0,   0,   0,   0,   0xFF, 0xFF, 0xFF,      0x2C,      0,          0,          0,    0,
            1,   0,   1,   0,   0,    2,    2,         0x44,      0x01,       0,          0x3B};
}

} // namespace hostile
