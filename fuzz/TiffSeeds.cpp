// Writes a small seed corpus for fuzz_tiff: one file per layout the decoder has a path for,
// each behind the harness's first byte (the page to decode).
// Usage: make-tiff-seeds OUT_DIR
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <string>
#include <tiffio.h>
#include <vector>

namespace {

struct Page {
    std::uint16_t photometric;
    std::uint16_t bps;
    std::uint16_t spp;
    std::uint16_t compression;
    bool tiled = false;
    bool separate = false;
    std::uint16_t extra = 0;
    std::uint32_t width = 16;
    std::uint32_t height = 12;
};

void writePage(TIFF* tif, const Page& p) {
    TIFFSetField(tif, TIFFTAG_IMAGEWIDTH, p.width);
    TIFFSetField(tif, TIFFTAG_IMAGELENGTH, p.height);
    TIFFSetField(tif, TIFFTAG_BITSPERSAMPLE, p.bps);
    TIFFSetField(tif, TIFFTAG_SAMPLESPERPIXEL, p.spp);
    TIFFSetField(tif, TIFFTAG_COMPRESSION, p.compression);
    TIFFSetField(tif, TIFFTAG_PHOTOMETRIC, p.photometric);
    TIFFSetField(tif, TIFFTAG_PLANARCONFIG,
                 p.separate ? PLANARCONFIG_SEPARATE : PLANARCONFIG_CONTIG);
    if (p.extra)
        TIFFSetField(tif, TIFFTAG_EXTRASAMPLES, 1, &p.extra);
    if (p.photometric == PHOTOMETRIC_PALETTE) {
        std::vector<std::uint16_t> map(std::size_t{1} << p.bps);
        for (std::size_t i = 0; i < map.size(); ++i)
            map[i] = static_cast<std::uint16_t>(i * 4099);
        TIFFSetField(tif, TIFFTAG_COLORMAP, map.data(), map.data(), map.data());
    }
    if (p.photometric == PHOTOMETRIC_YCBCR && p.compression == COMPRESSION_JPEG)
        TIFFSetField(tif, TIFFTAG_JPEGCOLORMODE, JPEGCOLORMODE_RGB);
    if (p.tiled) {
        TIFFSetField(tif, TIFFTAG_TILEWIDTH, 16);
        TIFFSetField(tif, TIFFTAG_TILELENGTH, 16);
    } else {
        // JPEG wants whole MCU rows per strip.
        TIFFSetField(tif, TIFFTAG_ROWSPERSTRIP, p.compression == COMPRESSION_JPEG ? 16 : 8);
    }
    const int planes = p.separate ? p.spp : 1;
    const tmsize_t size = p.tiled ? TIFFTileSize(tif) : TIFFScanlineSize(tif);
    std::vector<std::uint8_t> buf(static_cast<std::size_t>(size));
    for (int s = 0; s < planes; ++s) {
        if (p.tiled) {
            for (std::uint32_t y = 0; y < p.height; y += 16)
                for (std::uint32_t x = 0; x < p.width; x += 16) {
                    for (std::size_t i = 0; i < buf.size(); ++i)
                        buf[i] = static_cast<std::uint8_t>(i * 7 + x + y * 3 + s * 50);
                    TIFFWriteTile(tif, buf.data(), x, y, 0, static_cast<std::uint16_t>(s));
                }
        } else {
            for (std::uint32_t y = 0; y < p.height; ++y) {
                for (std::size_t i = 0; i < buf.size(); ++i)
                    buf[i] = static_cast<std::uint8_t>((i / 3) * 9 + y * 5 + s * 50);
                TIFFWriteScanline(tif, buf.data(), y, static_cast<std::uint16_t>(s));
            }
        }
    }
    TIFFWriteDirectory(tif);
}

// Subsampled YCbCr without compression: libtiff cannot write it from pixels, so the data
// units (four luma samples, then Cb and Cr) are made here.
void writeRawYCbCr(TIFF* tif) {
    const std::uint32_t w = 16, h = 8;
    TIFFSetField(tif, TIFFTAG_IMAGEWIDTH, w);
    TIFFSetField(tif, TIFFTAG_IMAGELENGTH, h);
    TIFFSetField(tif, TIFFTAG_BITSPERSAMPLE, 8);
    TIFFSetField(tif, TIFFTAG_SAMPLESPERPIXEL, 3);
    TIFFSetField(tif, TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_YCBCR);
    TIFFSetField(tif, TIFFTAG_YCBCRSUBSAMPLING, 2, 2);
    TIFFSetField(tif, TIFFTAG_ROWSPERSTRIP, h);
    std::vector<std::uint8_t> units((w / 2) * (h / 2) * 6);
    for (std::size_t i = 0; i < units.size(); ++i)
        units[i] = static_cast<std::uint8_t>(i % 6 < 4 ? 40 + i : 128 + (i % 6) * 10);
    TIFFWriteRawStrip(tif, 0, units.data(), static_cast<tmsize_t>(units.size()));
    TIFFWriteDirectory(tif);
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: %s OUT_DIR\n", argv[0]);
        return 2;
    }
    const std::filesystem::path out = argv[1];
    std::filesystem::create_directories(out);
    const std::string scratch = (out / ".scratch.tif").string();
    const auto seed = [&](const char* name, const char* mode, std::vector<std::uint8_t> pages,
                          const std::function<void(TIFF*)>& write) {
        TIFF* tif = TIFFOpen(scratch.c_str(), mode);
        if (!tif)
            return;
        write(tif);
        TIFFClose(tif);
        std::ifstream in(scratch, std::ios::binary);
        const std::vector<char> bytes(std::istreambuf_iterator<char>(in), {});
        for (std::uint8_t page : pages) {
            std::ofstream file(out / (std::string(name) + "-" + std::to_string(page)),
                               std::ios::binary);
            file.put(static_cast<char>(page));
            file.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
        }
    };
    const auto one = [&](const char* name, const Page& p, const char* mode = "w") {
        seed(name, mode, {0}, [&](TIFF* tif) { writePage(tif, p); });
    };
    one("grey8-lzw", {PHOTOMETRIC_MINISBLACK, 8, 1, COMPRESSION_LZW});
    one("grey16-be", {PHOTOMETRIC_MINISBLACK, 16, 1, COMPRESSION_NONE}, "wb");
    one("white4-packbits", {PHOTOMETRIC_MINISWHITE, 4, 1, COMPRESSION_PACKBITS});
    one("bilevel-g4", {PHOTOMETRIC_MINISWHITE, 1, 1, COMPRESSION_CCITTFAX4});
    one("bilevel-g3", {PHOTOMETRIC_MINISWHITE, 1, 1, COMPRESSION_CCITTFAX3});
    one("palette4-tiles", {PHOTOMETRIC_PALETTE, 4, 1, COMPRESSION_NONE, true});
    one("palette8-deflate", {PHOTOMETRIC_PALETTE, 8, 1, COMPRESSION_ADOBE_DEFLATE});
    one("rgb-planes-tiles", {PHOTOMETRIC_RGB, 8, 3, COMPRESSION_ADOBE_DEFLATE, true, true});
    one("rgba16", {PHOTOMETRIC_RGB, 16, 4, COMPRESSION_LZW, false, false, EXTRASAMPLE_UNASSALPHA});
    one("greyalpha-assoc",
        {PHOTOMETRIC_MINISBLACK, 8, 2, COMPRESSION_NONE, false, true, EXTRASAMPLE_ASSOCALPHA});
    one("cmyk", {PHOTOMETRIC_SEPARATED, 8, 4, COMPRESSION_LZW});
    one("lab", {PHOTOMETRIC_CIELAB, 8, 3, COMPRESSION_NONE});
    one("ycbcr-jpeg", {PHOTOMETRIC_YCBCR, 8, 3, COMPRESSION_JPEG, false, false, 0, 16, 16});
    one("rgb-bigtiff", {PHOTOMETRIC_RGB, 8, 3, COMPRESSION_PACKBITS}, "w8");
    seed("ycbcr-raw", "w", {0}, writeRawYCbCr);
    seed("pages", "w", {0, 1, 2}, [](TIFF* tif) {
        writePage(tif, {PHOTOMETRIC_MINISBLACK, 8, 1, COMPRESSION_LZW, false, false, 0, 5, 4});
        writePage(tif, {PHOTOMETRIC_RGB, 8, 3, COMPRESSION_NONE, true, false, 0, 20, 3});
        writePage(tif,
                  {PHOTOMETRIC_MINISWHITE, 1, 1, COMPRESSION_CCITTFAX4, false, false, 0, 9, 2});
    });
    std::filesystem::remove(scratch);
    return 0;
}
