// The TIFF codec: every sample layout libtiff can write, pages, page append through
// ImageLib_Save, round trips for each compression, and damaged files.
#include "../DecodedPicture.h"
#include "imagelib/core/DibHeader.h"
#include "imagelib/imagelib.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <functional>
#include <memory>
#include <string>
#include <tiffio.h>
#include <tuple>
#include <unistd.h>
#include <vector>

using namespace imagelib;

namespace {

using Bytes = std::vector<std::uint8_t>;
using Bgra = std::array<int, 4>;

class TempDir {
public:
    TempDir()
        : m_path(std::filesystem::temp_directory_path() /
                 ("imagelib-tiff-" + std::to_string(::getpid()) + "-" + std::to_string(++s_n))) {
        std::filesystem::create_directories(m_path);
    }
    ~TempDir() { std::filesystem::remove_all(m_path); }
    std::string file(const char* name) const { return (m_path / name).string(); }

private:
    static inline int s_n = 0;
    std::filesystem::path m_path;
};

Bytes readFile(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    return Bytes(std::istreambuf_iterator<char>(in), {});
}

void writeFile(const std::string& path, const Bytes& b) {
    std::ofstream(path, std::ios::binary)
        .write(reinterpret_cast<const char*>(b.data()), static_cast<std::streamsize>(b.size()));
}

struct Decoded : DecodedPicture {
    std::size_t size() const { return ImageLib_DibSize(dib.get()); }
    // Blue, green, red, alpha (255 below 32 bits) of the pixel at (x, y) from the top left.
    Bgra pixel(int x, int y) const {
        const auto& h = header();
        const auto* base = static_cast<const std::uint8_t*>(dib.get()) + 40;
        const std::size_t colours = h.bitCount <= 8 ? h.clrUsed : 0;
        const std::uint8_t* row =
            base + colours * 4 +
            dibStride(h.width, h.bitCount) * static_cast<std::size_t>(h.height - 1 - y);
        int index = 0;
        if (h.bitCount == 1)
            index = (row[x / 8] >> (7 - x % 8)) & 1;
        else if (h.bitCount == 4)
            index = (x & 1) ? row[x / 2] & 0x0F : row[x / 2] >> 4;
        else if (h.bitCount == 8)
            index = row[x];
        else {
            const std::uint8_t* px = row + x * (h.bitCount / 8);
            return {px[0], px[1], px[2], h.bitCount == 32 ? px[3] : 255};
        }
        const std::uint8_t* q = base + index * 4;
        return {q[0], q[1], q[2], 255};
    }
};

Decoded open(const Bytes& bytes, int page = 0) {
    Decoded d;
    d.params.pageIndex = page;
    d.dib.reset(ImageLib_OpenMemory(bytes.data(), bytes.size(), &d.params));
    return d;
}

Decoded openFile(const std::string& path, int page = 0) {
    Decoded d;
    d.params.pageIndex = page;
    d.dib.reset(ImageLib_Open(path.c_str(), &d.params));
    return d;
}

// A sample layout written with libtiff: its tags and how its samples are made.
struct Layout {
    enum Kind { Grey, White, Palette, Rgb, Cmyk, YCbCrJpeg } kind;
    int bps;
    int spp;
    std::uint16_t compression = COMPRESSION_NONE;
    bool separate = false;
    bool tiled = false;
    std::uint16_t extra = 0; // the one extra sample's type, when spp has one
    bool eightBitColourMap = false;
};

constexpr int kW = 21; // odd and wider than one 16-pixel tile
constexpr int kH = 18;

unsigned levels(int bps) {
    return bps == 16 ? 65536u : 1u << bps;
}

// Sample c of pixel (x, y): a pattern that visits many levels of every channel. Alpha stays
// high so that premultiplied colour keeps its precision.
unsigned sampleValue(const Layout& s, int x, int y, int c) {
    if (s.kind == Layout::YCbCrJpeg) // smooth: chroma is subsampled and quantised
        return c == 0 ? 40 + 8 * x : c == 1 ? 30 + 9 * y : 160;
    if (s.extra && c == s.spp - 1)
        return (levels(s.bps) - 1) - static_cast<unsigned>((x + y) % 4) * (levels(s.bps) / 16);
    const unsigned v = static_cast<unsigned>(x * 7 + y * 13 + c * 29);
    return s.bps == 16 ? (v * 2741u) & 0xFFFF : v % levels(s.bps);
}

int to8(unsigned v, int bps) {
    return bps == 16 ? static_cast<int>((v * 255 + 32767) / 65535)
                     : static_cast<int>(v * 255 / (levels(bps) - 1));
}

std::uint16_t colourMapEntry(const Layout& s, int channel, unsigned index) {
    const unsigned v = (index * (37 + 50 * static_cast<unsigned>(channel)) + 11) % 256;
    return static_cast<std::uint16_t>(s.eightBitColourMap ? v : v * 257);
}

Bgra expected(const Layout& s, int x, int y) {
    const auto v = [&](int c) { return sampleValue(s, x, y, c); };
    const int alpha = s.extra ? to8(v(s.spp - 1), s.bps) : 255;
    switch (s.kind) {
    case Layout::Grey:
    case Layout::White: {
        const int g = s.kind == Layout::White ? 255 - to8(v(0), s.bps) : to8(v(0), s.bps);
        return {g, g, g, alpha};
    }
    case Layout::Palette: {
        const auto e = [&](int c) {
            return colourMapEntry(s, c, v(0)) >> (s.eightBitColourMap ? 0 : 8);
        };
        return {e(2), e(1), e(0), 255};
    }
    case Layout::Cmyk: {
        const auto rgb = [&](int c) {
            return (255 - static_cast<int>(v(c))) * (255 - static_cast<int>(v(3))) / 255;
        };
        return {rgb(2), rgb(1), rgb(0), 255};
    }
    default: {
        const int a = s.extra == EXTRASAMPLE_ASSOCALPHA ? alpha : 255;
        // With associated alpha the stored colour is premultiplied; the bitmap holds it straight.
        const auto c = [&](int i) {
            return a ? std::min(255, (to8(v(i), s.bps) * 255 + a / 2) / a) : 0;
        };
        return {c(2), c(1), c(0), alpha};
    }
    }
}

void packSample(std::uint8_t* row, std::size_t i, int bps, unsigned v) {
    if (bps == 16) {
        const auto w = static_cast<std::uint16_t>(v);
        std::memcpy(row + 2 * i, &w, 2);
    } else if (bps == 8) {
        row[i] = static_cast<std::uint8_t>(v);
    } else {
        const std::size_t bit = i * static_cast<std::size_t>(bps);
        row[bit / 8] |= static_cast<std::uint8_t>(v << (8 - bps - bit % 8));
    }
}

void setTags(TIFF* tif, const Layout& s, int width, int height) {
    const std::uint16_t photometric[] = {PHOTOMETRIC_MINISBLACK, PHOTOMETRIC_MINISWHITE,
                                         PHOTOMETRIC_PALETTE,    PHOTOMETRIC_RGB,
                                         PHOTOMETRIC_SEPARATED,  PHOTOMETRIC_YCBCR};
    TIFFSetField(tif, TIFFTAG_IMAGEWIDTH, width);
    TIFFSetField(tif, TIFFTAG_IMAGELENGTH, height);
    TIFFSetField(tif, TIFFTAG_BITSPERSAMPLE, s.bps);
    TIFFSetField(tif, TIFFTAG_SAMPLESPERPIXEL, s.spp);
    TIFFSetField(tif, TIFFTAG_COMPRESSION, s.compression);
    TIFFSetField(tif, TIFFTAG_PHOTOMETRIC, photometric[s.kind]);
    TIFFSetField(tif, TIFFTAG_PLANARCONFIG,
                 s.separate ? PLANARCONFIG_SEPARATE : PLANARCONFIG_CONTIG);
    if (s.kind == Layout::YCbCrJpeg)
        TIFFSetField(tif, TIFFTAG_JPEGCOLORMODE, JPEGCOLORMODE_RGB);
    if (s.extra)
        TIFFSetField(tif, TIFFTAG_EXTRASAMPLES, 1, &s.extra);
    if (s.kind == Layout::Palette) {
        std::vector<std::uint16_t> map[3];
        for (int c = 0; c < 3; ++c)
            for (unsigned i = 0; i < levels(s.bps); ++i)
                map[c].push_back(colourMapEntry(s, c, i));
        TIFFSetField(tif, TIFFTAG_COLORMAP, map[0].data(), map[1].data(), map[2].data());
    }
    TIFFSetField(tif, TIFFTAG_XRESOLUTION, 300.0);
    TIFFSetField(tif, TIFFTAG_YRESOLUTION, 300.0);
    if (s.tiled) {
        TIFFSetField(tif, TIFFTAG_TILEWIDTH, 16);
        TIFFSetField(tif, TIFFTAG_TILELENGTH, 16);
    } else {
        TIFFSetField(tif, TIFFTAG_ROWSPERSTRIP, s.kind == Layout::YCbCrJpeg ? 16 : 5);
    }
}

// Writes one directory of `s` at the current position of `tif`.
void writePage(TIFF* tif, const Layout& s, int width = kW, int height = kH) {
    setTags(tif, s, width, height);
    const int planes = s.separate ? s.spp : 1;
    const int perPixel = s.separate ? 1 : s.spp;
    const int bw = s.tiled ? 16 : width;
    const int bh = s.tiled ? 16 : 1;
    const std::size_t rowBytes = (static_cast<std::size_t>(bw) * perPixel * s.bps + 7) / 8;
    for (int p = 0; p < planes; ++p)
        for (int y0 = 0; y0 < height; y0 += bh)
            for (int x0 = 0; x0 < width; x0 += bw) {
                Bytes block(rowBytes * bh, 0);
                for (int y = y0; y < std::min(height, y0 + bh); ++y)
                    for (int x = x0; x < std::min(width, x0 + bw); ++x)
                        for (int c = 0; c < perPixel; ++c)
                            packSample(&block[(y - y0) * rowBytes],
                                       static_cast<std::size_t>((x - x0) * perPixel + c), s.bps,
                                       sampleValue(s, x, y, s.separate ? p : c));
                const auto sample = static_cast<std::uint16_t>(p);
                if (s.tiled)
                    ASSERT_GE(TIFFWriteTile(tif, block.data(), x0, y0, 0, sample), 0);
                else
                    ASSERT_GE(TIFFWriteScanline(tif, block.data(), y0, sample), 0);
            }
    ASSERT_TRUE(TIFFWriteDirectory(tif));
}

Bytes makeTiff(const std::function<void(TIFF*)>& pages) {
    const TempDir dir;
    const std::string path = dir.file("made.tif");
    TIFF* tif = TIFFOpen(path.c_str(), "w");
    pages(tif);
    TIFFClose(tif);
    return readFile(path);
}

Bytes makeTiff(const Layout& s) {
    return makeTiff([&](TIFF* tif) { writePage(tif, s); });
}

void expectPixels(const Decoded& d, const std::function<Bgra(int, int)>& want, int tolerance) {
    for (int y = 0; y < d.header().height; ++y)
        for (int x = 0; x < d.header().width; ++x) {
            const Bgra got = d.pixel(x, y);
            const Bgra w = want(x, y);
            for (int c = 0; c < 4; ++c)
                ASSERT_NEAR(got[c], w[c], tolerance)
                    << "pixel " << x << "," << y << " channel " << c;
        }
}

// Mean absolute difference of two pictures' colour channels.
double meanError(const Decoded& a, const Decoded& b) {
    double sum = 0;
    const int w = a.header().width;
    const int h = a.header().height;
    for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x)
            for (int c = 0; c < 3; ++c)
                sum += std::abs(a.pixel(x, y)[c] - b.pixel(x, y)[c]);
    return sum / (3.0 * w * h);
}

// The 12-byte entry of a tag in the first directory of a little-endian file.
std::uint8_t* entry(Bytes& b, std::uint16_t tag) {
    const std::uint32_t ifd = readLe32(&b[4]);
    for (std::uint16_t i = 0; i < readLe16(&b[ifd]); ++i)
        if (readLe16(&b[ifd + 2 + 12 * i]) == tag)
            return &b[ifd + 2 + 12 * i];
    ADD_FAILURE() << "tag " << tag << " not found";
    return nullptr;
}

void setTag(Bytes& b, std::uint16_t tag, std::uint32_t value) {
    std::uint8_t* e = entry(b, tag);
    writeLe16(e + 2, TIFF_LONG);
    writeLe32(e + 8, value);
}

// Halves element i of a SHORT or LONG tag whose values lie outside its entry.
void halveElement(Bytes& b, std::uint16_t tag, std::uint32_t i) {
    const std::uint8_t* e = entry(b, tag);
    if (readLe16(e + 2) == TIFF_SHORT) {
        std::uint8_t* at = &b[readLe32(e + 8) + 2 * i];
        writeLe16(at, static_cast<std::uint16_t>(readLe16(at) / 2));
    } else {
        std::uint8_t* at = &b[readLe32(e + 8) + 4 * i];
        writeLe32(at, readLe32(at) / 2);
    }
}

} // namespace

TEST(TiffCodec, DecodesEverySampleLayout) {
    struct Row {
        const char* name;
        Layout layout;
        int outBits;
        int colours;
        int tolerance = 0;
    };
    const std::vector<Row> rows = {
        {"1-bit min-is-black", {Layout::Grey, 1, 1}, 1, 2},
        {"1-bit min-is-white G4", {Layout::White, 1, 1, COMPRESSION_CCITTFAX4}, 1, 2},
        {"2-bit grey", {Layout::Grey, 2, 1, COMPRESSION_LZW}, 4, 4},
        {"4-bit min-is-white", {Layout::White, 4, 1, COMPRESSION_LZW}, 4, 16},
        {"8-bit grey tiles", {Layout::Grey, 8, 1, COMPRESSION_ADOBE_DEFLATE, false, true}, 8, 256},
        {"16-bit grey", {Layout::Grey, 16, 1, COMPRESSION_PACKBITS}, 8, 256},
        {"grey and alpha",
         {Layout::Grey, 8, 2, COMPRESSION_NONE, false, false, EXTRASAMPLE_UNASSALPHA},
         32,
         0},
        {"1-bit palette", {Layout::Palette, 1, 1}, 1, 2},
        {"4-bit palette tiles", {Layout::Palette, 4, 1, COMPRESSION_PACKBITS, false, true}, 4, 16},
        {"8-bit palette, 8-bit map",
         {Layout::Palette, 8, 1, COMPRESSION_LZW, false, false, 0, true},
         8,
         256},
        {"RGB", {Layout::Rgb, 8, 3, COMPRESSION_LZW}, 24, 0},
        {"RGB planes in tiles", {Layout::Rgb, 8, 3, COMPRESSION_ADOBE_DEFLATE, true, true}, 24, 0},
        {"16-bit RGB planes", {Layout::Rgb, 16, 3, COMPRESSION_NONE, true}, 24, 0},
        {"RGBA", {Layout::Rgb, 8, 4, COMPRESSION_LZW, false, false, EXTRASAMPLE_UNASSALPHA}, 32, 0},
        {"premultiplied RGBA planes",
         {Layout::Rgb, 8, 4, COMPRESSION_NONE, true, false, EXTRASAMPLE_ASSOCALPHA},
         32,
         0,
         2},
        {"CMYK", {Layout::Cmyk, 8, 4, COMPRESSION_LZW}, 24, 0, 1},
        {"YCbCr JPEG", {Layout::YCbCrJpeg, 8, 3, COMPRESSION_JPEG}, 24, 0, 12},
    };
    for (const Row& r : rows) {
        SCOPED_TRACE(r.name);
        const Decoded d = open(makeTiff(r.layout));
        ASSERT_TRUE(d.dib) << d.error();
        EXPECT_EQ(d.params.format, IMAGELIB_FMT_TIFF);
        EXPECT_EQ(d.params.pageCount, 1);
        EXPECT_EQ(d.header().width, kW);
        EXPECT_EQ(d.header().height, kH);
        EXPECT_EQ(d.header().bitCount, r.outBits);
        EXPECT_EQ(d.header().clrUsed, static_cast<std::uint32_t>(r.colours));
        EXPECT_EQ(d.header().xPelsPerMeter, 11811); // 300 dots per inch
        expectPixels(
            d, [&](int x, int y) { return expected(r.layout, x, y); }, r.tolerance);
    }
}

TEST(TiffCodec, EveryPageOfAMultiPageFile) {
    const Bytes file = makeTiff([](TIFF* tif) {
        writePage(tif, {Layout::Grey, 8, 1, COMPRESSION_LZW}, 5, 4);
        writePage(tif, {Layout::Rgb, 8, 3, COMPRESSION_NONE, false, true}, 37, 3);
        writePage(tif, {Layout::White, 1, 1, COMPRESSION_CCITTFAX4}, 9, 2);
    });
    const std::array<std::array<int, 3>, 3> pages = {{{5, 4, 8}, {37, 3, 24}, {9, 2, 1}}};
    for (int p = 0; p < 3; ++p) {
        SCOPED_TRACE(p);
        const Decoded d = open(file, p);
        ASSERT_TRUE(d.dib) << d.error();
        EXPECT_EQ(d.params.pageCount, 3);
        EXPECT_EQ(d.header().width, pages[p][0]);
        EXPECT_EQ(d.header().height, pages[p][1]);
        EXPECT_EQ(d.header().bitCount, pages[p][2]);
    }
    const Decoded beyond = open(file, 3);
    EXPECT_FALSE(beyond.dib);
    EXPECT_EQ(beyond.params.pageCount, 3);
    EXPECT_EQ(beyond.error(), "The TIFF file has no page 4.");
}

TEST(TiffCodec, SavesEveryDepthWithEveryCompression) {
    const TempDir dir;
    const std::string path = dir.file("round.tiff");
    const std::vector<Layout> sources = {
        {Layout::Grey, 1, 1},
        {Layout::White, 1, 1},
        {Layout::Grey, 4, 1},
        {Layout::Palette, 4, 1},
        {Layout::Palette, 8, 1},
        {Layout::Grey, 8, 1},
        {Layout::Rgb, 8, 3},
        {Layout::Rgb, 8, 4, COMPRESSION_NONE, false, false, EXTRASAMPLE_UNASSALPHA},
    };
    for (const Layout& s : sources) {
        const Decoded original = open(makeTiff(s));
        ASSERT_TRUE(original.dib) << original.error();
        for (std::uint32_t compression : {0u, 1u, 5u, 8u, 32773u, 7u}) {
            SCOPED_TRACE("depth " + std::to_string(original.header().bitCount) + ", compression " +
                         std::to_string(compression));
            ImageIoParams save{}; // format 0: the name decides
            save.formatOption = compression;
            ASSERT_TRUE(ImageLib_Save(path.c_str(), original.dib.get(), &save));
            const Decoded back = openFile(path);
            ASSERT_TRUE(back.dib) << back.error();
            ASSERT_EQ(back.size(), original.size());
            const int bits = original.header().bitCount;
            const bool lossy =
                compression == 7 && (bits == 24 || (bits == 8 && s.kind == Layout::Grey));
            if (lossy)
                // Halved chroma costs the noisy colour pattern more than grey; swapped or
                // shifted channels would cost far more than either.
                EXPECT_LT(meanError(back, original), s.kind == Layout::Rgb ? 24.0 : 8.0);
            else
                EXPECT_EQ(0, std::memcmp(back.dib.get(), original.dib.get(), original.size()));
        }
    }
}

TEST(TiffCodec, SavesBitmapsNoDecoderMakes) {
    const TempDir dir;
    const std::string path = dir.file("made.tif");
    // 2 x 1 pictures, red then blue or white then black: 5-5-5 bits; 32 bits whose fourth
    // byte is unused (not transparent); 1 bit whose palette is white, black.
    const auto dib = [](int bits, int colours, std::initializer_list<std::uint8_t> rest) {
        Bytes b(40, 0);
        const BitmapInfoHeader h{40,     2, 1, 1, static_cast<std::uint16_t>(bits),
                                 kBiRgb, 0, 0, 0, static_cast<std::uint32_t>(colours),
                                 0};
        std::memcpy(b.data(), &h, 40);
        b.insert(b.end(), rest);
        return b;
    };
    const std::vector<std::tuple<const char*, Bytes, int>> cases = {
        {"16-bit", dib(16, 0, {0x00, 0x7C, 0x1F, 0x00}), 24},
        {"32-bit, no alpha", dib(32, 0, {0, 0, 255, 0, 255, 0, 0, 0}), 24},
        {"white-is-zero", dib(1, 2, {255, 255, 255, 0, 0, 0, 0, 0, 0x40, 0, 0, 0}), 1},
    };
    for (const auto& [name, bytes, bits] : cases) {
        SCOPED_TRACE(name);
        ImageIoParams save{};
        save.format = IMAGELIB_FMT_TIFF;
        ASSERT_EQ(ImageLib_CanSave(bytes.data(), &save), 1);
        ASSERT_TRUE(ImageLib_Save(path.c_str(), bytes.data(), &save));
        const Decoded back = openFile(path);
        ASSERT_TRUE(back.dib) << back.error();
        EXPECT_EQ(back.header().bitCount, bits);
        const Bgra white{255, 255, 255, 255}, black{0, 0, 0, 255};
        const Bgra red{0, 0, 255, 255}, blue{255, 0, 0, 255};
        EXPECT_EQ(back.pixel(0, 0), bits == 1 ? white : red);
        EXPECT_EQ(back.pixel(1, 0), bits == 1 ? black : blue);
    }
}

TEST(TiffCodec, AppendsPagesOneByOne) {
    const TempDir dir;
    const std::string path = dir.file("pages.tif");
    std::vector<Decoded> sources;
    sources.push_back(open(makeTiff({Layout::White, 1, 1})));
    sources.push_back(open(makeTiff({Layout::Palette, 8, 1})));
    sources.push_back(open(
        makeTiff({Layout::Rgb, 8, 4, COMPRESSION_NONE, false, false, EXTRASAMPLE_UNASSALPHA})));
    for (const Decoded& s : sources) {
        ASSERT_TRUE(s.dib) << s.error();
        ImageIoParams save{};
        save.format = IMAGELIB_FMT_TIFF;
        save.optionBytes[0] = IMAGELIB_OPT_APPEND_PAGE;
        ASSERT_TRUE(ImageLib_Save(path.c_str(), s.dib.get(), &save));
    }
    for (int p = 0; p < 3; ++p) {
        SCOPED_TRACE(p);
        const Decoded back = openFile(path, p);
        ASSERT_TRUE(back.dib) << back.error();
        EXPECT_EQ(back.params.pageCount, 3);
        ASSERT_EQ(back.size(), sources[p].size());
        EXPECT_EQ(0, std::memcmp(back.dib.get(), sources[p].dib.get(), back.size()));
    }

    // A page cannot be added to a file of another kind; that file stays as it was.
    const std::string other = dir.file("notes.tif");
    writeFile(other, Bytes(100, 'x'));
    ImageIoParams save{};
    save.format = IMAGELIB_FMT_TIFF;
    save.optionBytes[0] = IMAGELIB_OPT_APPEND_PAGE;
    EXPECT_FALSE(ImageLib_Save(other.c_str(), sources[0].dib.get(), &save));
    EXPECT_NE(save.errorText[0], u'\0');
    EXPECT_EQ(readFile(other), Bytes(100, 'x'));
}

TEST(TiffCodec, DamagedFilesGiveASentence) {
    const Bytes plain = makeTiff({Layout::Rgb, 8, 3});
    const Bytes lzw = makeTiff({Layout::Rgb, 8, 3, COMPRESSION_LZW});
    // libtiff puts the strips before the directory, so a file cut short loses its directory
    // first; a strip is cut by shortening its byte count instead.
    const std::uint32_t lastStrip = (kH + 4) / 5 - 1;
    Bytes lzwCut = lzw;
    halveElement(lzwCut, TIFFTAG_STRIPBYTECOUNTS, lastStrip);
    Bytes plainCut = plain;
    halveElement(plainCut, TIFFTAG_STRIPBYTECOUNTS, lastStrip);
    Bytes outside = plain;
    writeLe32(&outside[4], static_cast<std::uint32_t>(plain.size() + 1000));
    Bytes huge = plain;
    setTag(huge, TIFFTAG_IMAGEWIDTH, 2000000);
    Bytes bomb = lzw;
    setTag(bomb, TIFFTAG_IMAGEWIDTH, 20000);
    setTag(bomb, TIFFTAG_IMAGELENGTH, 20000);
    setTag(bomb, TIFFTAG_ROWSPERSTRIP, 5000);
    Bytes unknownCompression = plain;
    setTag(unknownCompression, TIFFTAG_COMPRESSION, 61000);

    const char* damaged = "The TIFF file is damaged or incomplete.";
    const std::vector<std::pair<const char*, std::pair<Bytes, const char*>>> cases = {
        {"truncated LZW strip", {lzwCut, damaged}},
        {"truncated plain strip", {plainCut, damaged}},
        {"directory outside the file", {outside, damaged}},
        {"garbage after the signature",
         {Bytes{'I', 'I', 42, 0, 8, 0, 0, 0, 0xFF, 0xFF, 1, 2}, damaged}},
        {"absurd width", {huge, "The image is too large to open."}},
        {"tiny data, vast picture",
         {bomb, "The TIFF file claims a picture far larger than its data."}},
        {"unknown compression",
         {unknownCompression,
          "The TIFF file uses a kind of compression this program cannot read."}},
    };
    for (const auto& [name, c] : cases) {
        SCOPED_TRACE(name);
        const Decoded d = open(c.first);
        EXPECT_FALSE(d.dib);
        EXPECT_EQ(d.error(), c.second);
    }
}

TEST(TiffCodec, DirectoryLoopsEndTheCount) {
    Bytes looped = makeTiff({Layout::Grey, 8, 1});
    const std::uint32_t ifd = readLe32(&looped[4]);
    writeLe32(&looped[ifd + 2 + 12 * readLe16(&looped[ifd])], ifd);
    const Decoded d = open(looped);
    ASSERT_TRUE(d.dib) << d.error();
    EXPECT_EQ(d.params.pageCount, 1);
}
