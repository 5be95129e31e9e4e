#include "../DecodedPicture.h"
#include "../ScratchDir.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <tiffio.h>

using namespace imagelib;

namespace {

constexpr int kW = 21; // odd and wider than one 16-pixel tile
constexpr int kH = 18;

constexpr std::uint16_t kRaw = COMPRESSION_NONE, kLzw = COMPRESSION_LZW,
                        kPackBits = COMPRESSION_PACKBITS, kZip = COMPRESSION_ADOBE_DEFLATE,
                        kG4 = COMPRESSION_CCITTFAX4, kJpeg = COMPRESSION_JPEG;
enum Kind { Grey, White, Palette, Rgb, Cmyk, YCbCrJpeg };
enum Flag { kSeparate = 1, kTiled = 2, kEightBitMap = 4, kAlpha = 8, kPremultiplied = 16 };

// A sample layout written with libtiff: its tags and how its samples are made.
struct Layout {
    Kind kind;
    int bps;
    int spp;
    std::uint16_t compression = kRaw;
    int flags = 0;
    int width = kW;
    int height = kH;

    bool has(Flag f) const { return flags & f; }
    std::uint16_t extra() const {
        return has(kAlpha)           ? EXTRASAMPLE_UNASSALPHA
               : has(kPremultiplied) ? EXTRASAMPLE_ASSOCALPHA
                                     : EXTRASAMPLE_UNSPECIFIED;
    }
};

unsigned levels(int bps) {
    return bps == 16 ? 65536u : 1u << bps;
}

// Sample c of pixel (x, y): a pattern that visits many levels of every channel. Alpha stays
// high so that premultiplied colour keeps its precision.
unsigned sampleValue(const Layout& s, int x, int y, int c) {
    if (s.kind == YCbCrJpeg) // smooth: chroma is subsampled and quantised
        return c == 0 ? 40 + 8 * x : c == 1 ? 30 + 9 * y : 160;
    if (s.extra() && c == s.spp - 1)
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
    return static_cast<std::uint16_t>(s.has(kEightBitMap) ? v : v * 257);
}

Bgra expected(const Layout& s, int x, int y) {
    const auto v = [&](int c) { return sampleValue(s, x, y, c); };
    const int alpha = s.extra() ? to8(v(s.spp - 1), s.bps) : 255;
    switch (s.kind) {
    case Grey:
    case White: {
        const int g = s.kind == White ? 255 - to8(v(0), s.bps) : to8(v(0), s.bps);
        return {g, g, g, alpha};
    }
    case Palette: {
        const auto e = [&](int c) {
            return colourMapEntry(s, c, v(0)) >> (s.has(kEightBitMap) ? 0 : 8);
        };
        return {e(2), e(1), e(0), 255};
    }
    case Cmyk: {
        const auto rgb = [&](int c) {
            return (255 - static_cast<int>(v(c))) * (255 - static_cast<int>(v(3))) / 255;
        };
        return {rgb(2), rgb(1), rgb(0), 255};
    }
    default: {
        const int a = s.has(kPremultiplied) ? alpha : 255;
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

void setTags(TIFF* tif, const Layout& s) {
    const std::uint16_t photometric[] = {PHOTOMETRIC_MINISBLACK, PHOTOMETRIC_MINISWHITE,
                                         PHOTOMETRIC_PALETTE,    PHOTOMETRIC_RGB,
                                         PHOTOMETRIC_SEPARATED,  PHOTOMETRIC_YCBCR};
    TIFFSetField(tif, TIFFTAG_IMAGEWIDTH, s.width);
    TIFFSetField(tif, TIFFTAG_IMAGELENGTH, s.height);
    TIFFSetField(tif, TIFFTAG_BITSPERSAMPLE, s.bps);
    TIFFSetField(tif, TIFFTAG_SAMPLESPERPIXEL, s.spp);
    TIFFSetField(tif, TIFFTAG_COMPRESSION, s.compression);
    TIFFSetField(tif, TIFFTAG_PHOTOMETRIC, photometric[s.kind]);
    TIFFSetField(tif, TIFFTAG_PLANARCONFIG,
                 s.has(kSeparate) ? PLANARCONFIG_SEPARATE : PLANARCONFIG_CONTIG);
    if (s.kind == YCbCrJpeg)
        TIFFSetField(tif, TIFFTAG_JPEGCOLORMODE, JPEGCOLORMODE_RGB);
    if (const std::uint16_t extra = s.extra())
        TIFFSetField(tif, TIFFTAG_EXTRASAMPLES, 1, &extra);
    if (s.kind == Palette) {
        std::vector<std::uint16_t> map[3];
        for (int c = 0; c < 3; ++c)
            for (unsigned i = 0; i < levels(s.bps); ++i)
                map[c].push_back(colourMapEntry(s, c, i));
        TIFFSetField(tif, TIFFTAG_COLORMAP, map[0].data(), map[1].data(), map[2].data());
    }
    TIFFSetField(tif, TIFFTAG_XRESOLUTION, 300.0);
    TIFFSetField(tif, TIFFTAG_YRESOLUTION, 300.0);
    if (s.has(kTiled)) {
        TIFFSetField(tif, TIFFTAG_TILEWIDTH, 16);
        TIFFSetField(tif, TIFFTAG_TILELENGTH, 16);
    } else {
        TIFFSetField(tif, TIFFTAG_ROWSPERSTRIP, s.kind == YCbCrJpeg ? 16 : 5);
    }
}

// A one-page file of `s`, made with libtiff.
Bytes makeTiff(const Layout& s) {
    const ScratchDir dir;
    const std::string path = dir.file("made.tif");
    TIFF* tif = TIFFOpen(path.c_str(), "w");
    setTags(tif, s);
    const int planes = s.has(kSeparate) ? s.spp : 1;
    const int perPixel = s.has(kSeparate) ? 1 : s.spp;
    const int bw = s.has(kTiled) ? 16 : s.width;
    const int bh = s.has(kTiled) ? 16 : 1;
    const std::size_t rowBytes = (static_cast<std::size_t>(bw) * perPixel * s.bps + 7) / 8;
    for (int p = 0; p < planes; ++p)
        for (int y0 = 0; y0 < s.height; y0 += bh)
            for (int x0 = 0; x0 < s.width; x0 += bw) {
                Bytes block(rowBytes * bh, 0);
                for (int y = y0; y < std::min(s.height, y0 + bh); ++y)
                    for (int x = x0; x < std::min(s.width, x0 + bw); ++x)
                        for (int c = 0; c < perPixel; ++c)
                            packSample(&block[(y - y0) * rowBytes],
                                       static_cast<std::size_t>((x - x0) * perPixel + c), s.bps,
                                       sampleValue(s, x, y, planes > 1 ? p : c));
                const auto sample = static_cast<std::uint16_t>(p);
                const bool ok = s.has(kTiled)
                                    ? TIFFWriteTile(tif, block.data(), x0, y0, 0, sample) >= 0
                                    : TIFFWriteScanline(tif, block.data(), y0, sample) >= 0;
                EXPECT_TRUE(ok);
            }
    TIFFClose(tif);
    return readFile(path);
}

// Mean absolute difference of two pictures' colour channels.
double meanError(const DecodedPicture& a, const DecodedPicture& b) {
    double sum = 0;
    for (int y = 0; y < kH; ++y)
        for (int x = 0; x < kW; ++x)
            for (int c = 0; c < 3; ++c)
                sum += std::abs(a.pixel(x, y)[c] - b.pixel(x, y)[c]);
    return sum / (3.0 * kW * kH);
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
    const bool isShort = readLe16(e + 2) == TIFF_SHORT;
    std::uint8_t* at = &b[readLe32(e + 8) + (isShort ? 2 : 4) * i];
    if (isShort)
        writeLe16(at, static_cast<std::uint16_t>(readLe16(at) / 2));
    else
        writeLe32(at, readLe32(at) / 2);
}

// Thumbnails are decoded from a file, as the browser asks for them.
DecodedPicture openScaled(const Bytes& bytes, int box, ImageLibFullInfo& full) {
    const ScratchDir dir;
    writeFile(dir.file("thumb.tif"), bytes);
    return openScaled(dir.file("thumb.tif"), box, full);
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
        {"1-bit min-is-black", {Grey, 1, 1}, 1, 2},
        {"1-bit min-is-white G4", {White, 1, 1, kG4}, 1, 2},
        {"2-bit grey", {Grey, 2, 1, kLzw}, 4, 4},
        {"4-bit min-is-white", {White, 4, 1, kLzw}, 4, 16},
        {"8-bit grey tiles", {Grey, 8, 1, kZip, kTiled}, 8, 256},
        {"16-bit grey", {Grey, 16, 1, kPackBits}, 8, 256},
        {"grey and alpha", {Grey, 8, 2, kRaw, kAlpha}, 32, 0},
        {"1-bit palette", {Palette, 1, 1}, 1, 2},
        {"4-bit palette tiles", {Palette, 4, 1, kPackBits, kTiled}, 4, 16},
        {"8-bit palette, 8-bit map", {Palette, 8, 1, kLzw, kEightBitMap}, 8, 256},
        {"RGB", {Rgb, 8, 3, kLzw}, 24, 0},
        {"RGB planes in tiles", {Rgb, 8, 3, kZip, kSeparate | kTiled}, 24, 0},
        {"16-bit RGB planes", {Rgb, 16, 3, kRaw, kSeparate}, 24, 0},
        {"RGBA", {Rgb, 8, 4, kLzw, kAlpha}, 32, 0},
        {"premultiplied planes", {Rgb, 8, 4, kRaw, kPremultiplied | kSeparate}, 32, 0, 2},
        {"CMYK", {Cmyk, 8, 4, kLzw}, 24, 0, 1},
        {"YCbCr JPEG", {YCbCrJpeg, 8, 3, kJpeg}, 24, 0, 12},
    };
    for (const Row& r : rows) {
        SCOPED_TRACE(r.name);
        const DecodedPicture d = openMemory(makeTiff(r.layout));
        ASSERT_TRUE(d.dib) << d.error();
        EXPECT_EQ(d.params.format, IMAGELIB_FMT_TIFF);
        EXPECT_EQ(d.params.pageCount, 1);
        EXPECT_EQ(d.header().width, kW);
        EXPECT_EQ(d.header().height, kH);
        EXPECT_EQ(d.header().bitCount, r.outBits);
        EXPECT_EQ(d.header().clrUsed, static_cast<std::uint32_t>(r.colours));
        EXPECT_EQ(d.header().xPelsPerMeter, 11811); // 300 dots per inch
        for (int y = 0; y < kH; ++y)
            for (int x = 0; x < kW; ++x)
                for (int c = 0; c < 4; ++c)
                    ASSERT_NEAR(d.pixel(x, y)[c], expected(r.layout, x, y)[c], r.tolerance)
                        << "pixel " << x << "," << y << " channel " << c;
    }
}

TEST(TiffCodec, SavesEveryDepthWithEveryCompression) {
    const ScratchDir dir;
    const std::string path = dir.file("round.tiff");
    const std::vector<Layout> sources = {
        {Grey, 1, 1},    {White, 1, 1}, {Grey, 4, 1}, {Palette, 4, 1},
        {Palette, 8, 1}, {Grey, 8, 1},  {Rgb, 8, 3},  {Rgb, 8, 4, kRaw, kAlpha},
    };
    for (const Layout& s : sources) {
        const DecodedPicture original = openMemory(makeTiff(s));
        ASSERT_TRUE(original.dib) << original.error();
        const int bits = original.header().bitCount;
        for (std::uint32_t compression : {0u, 1u, 5u, 8u, 32773u, 7u}) {
            SCOPED_TRACE("depth " + std::to_string(bits) + ", compression " +
                         std::to_string(compression));
            // Format 0: the name decides.
            const DecodedPicture back =
                saveAndOpen(path, original.dib.get(), saveParams(0, compression));
            ASSERT_TRUE(back.dib) << back.error();
            ASSERT_EQ(back.size(), original.size());
            if (compression == 7 && (bits == 24 || (bits == 8 && s.kind == Grey)))
                // Halved chroma costs the noisy colour pattern more than grey; swapped or
                // shifted channels would cost far more than either.
                EXPECT_LT(meanError(back, original), s.kind == Rgb ? 24.0 : 8.0);
            else
                EXPECT_EQ(back.bytes(), original.bytes());
        }
    }
}

TEST(TiffCodec, SavesBitmapsNoDecoderMakes) {
    const ScratchDir dir;
    const std::string path = dir.file("made.tif");
    // Red then blue in 5-5-5 bits and in 32 bits whose fourth byte is unused (not transparent).
    const std::vector<std::pair<const char*, Bytes>> cases = {
        {"16-bit", makeDib(2, 1, 16, {}, {0x00, 0x7C, 0x1F, 0x00})},
        {"32-bit, no alpha", makeDib(2, 1, 32, {}, {0, 0, 255, 0, 255, 0, 0, 0})},
    };
    for (const auto& [name, bytes] : cases) {
        SCOPED_TRACE(name);
        const ImageIoParams save = saveParams(IMAGELIB_FMT_TIFF);
        ASSERT_EQ(ImageLib_CanSave(bytes.data(), &save), 1);
        const DecodedPicture back = saveAndOpen(path, bytes.data(), save);
        ASSERT_TRUE(back.dib) << back.error();
        EXPECT_EQ(back.header().bitCount, 24);
        EXPECT_EQ(back.pixel(0, 0), (Bgra{0, 0, 255, 255}));
        EXPECT_EQ(back.pixel(1, 0), (Bgra{255, 0, 0, 255}));
    }
}

TEST(TiffCodec, AppendsPagesOneByOneAndOpensEach) {
    const ScratchDir dir;
    const std::string path = dir.file("pages.tif");
    std::vector<DecodedPicture> sources;
    for (const Layout& s :
         {Layout{White, 1, 1}, Layout{Palette, 8, 1}, Layout{Rgb, 8, 4, kRaw, kAlpha}})
        sources.push_back(openMemory(makeTiff(s)));
    ImageIoParams save = saveParams(IMAGELIB_FMT_TIFF);
    save.optionBytes[0] = IMAGELIB_OPT_APPEND_PAGE;
    for (const DecodedPicture& s : sources) {
        ASSERT_TRUE(s.dib) << s.error();
        ASSERT_TRUE(ImageLib_Save(path.c_str(), s.dib.get(), &save));
    }
    for (int p = 0; p < 3; ++p) {
        SCOPED_TRACE(p);
        const DecodedPicture back = openFile(path, p);
        ASSERT_TRUE(back.dib) << back.error();
        EXPECT_EQ(back.params.pageCount, 3);
        EXPECT_EQ(back.bytes(), sources[p].bytes());
    }
    const DecodedPicture beyond = openFile(path, 3);
    EXPECT_FALSE(beyond.dib);
    EXPECT_EQ(beyond.params.pageCount, 3);
    EXPECT_EQ(beyond.error(), "The TIFF file has no page 4.");

    // A page cannot be added to a file of another kind; that file stays as it was.
    const std::string other = dir.file("notes.tif");
    writeFile(other, Bytes(100, 'x'));
    EXPECT_FALSE(ImageLib_Save(other.c_str(), sources[0].dib.get(), &save));
    EXPECT_NE(save.errorText[0], u'\0');
    EXPECT_EQ(readFile(other), Bytes(100, 'x'));
}

TEST(TiffCodec, DamagedFilesGiveASentence) {
    const Bytes plain = makeTiff({Rgb, 8, 3});
    const Bytes lzw = makeTiff({Rgb, 8, 3, kLzw});
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

    const std::string damaged = "The TIFF file is damaged or incomplete.";
    expectRefused({
        {"truncated LZW strip", lzwCut, damaged},
        {"truncated plain strip", plainCut, damaged},
        {"directory outside the file", outside, damaged},
        {"garbage after the signature", {'I', 'I', 42, 0, 8, 0, 0, 0, 0xFF, 0xFF, 1, 2}, damaged},
        {"absurd width", huge, "The image is too large to open."},
        {"tiny data, vast picture", bomb,
         "The TIFF file claims a picture far larger than its data."},
        {"unknown compression", unknownCompression,
         "The TIFF file uses a kind of compression this program cannot read."},
    });

    // A directory that points back at itself ends the page count instead of looping.
    Bytes looped = plain;
    const std::uint32_t ifd = readLe32(&looped[4]);
    writeLe32(&looped[ifd + 2 + 12 * readLe16(&looped[ifd])], ifd);
    const DecodedPicture d = openMemory(looped);
    ASSERT_TRUE(d.dib) << d.error();
    EXPECT_EQ(d.params.pageCount, 1);
}

// Thumbnails of grey and RGB pictures are averaged straight from the samples: factors that do
// not divide the size, strip heights or tile sizes, and both ways of storing the channels.
TEST(TiffCodec, ThumbnailDecodeAveragesEachBlockOfSamples) {
    struct Row {
        const char* name;
        Layout layout;
        int box;
        int factor; // the largest whose result still covers twice the box
    };
    const std::vector<Row> rows = {
        {"16-bit RGB strips", {Rgb, 16, 3, kRaw, 0, 1001, 767}, 96, 4},
        {"16-bit planes in tiles", {Rgb, 16, 3, kRaw, kSeparate | kTiled, 1001, 767}, 120, 3},
        {"8-bit RGB tiles", {Rgb, 8, 3, kLzw, kTiled, 1001, 767}, 120, 3},
        {"8-bit RGB planes", {Rgb, 8, 3, kRaw, kSeparate, 1001, 767}, 96, 4},
        {"16-bit grey", {Grey, 16, 1, kPackBits, 0, 700, 1301}, 96, 3},
        {"8-bit min-is-white tiles", {White, 8, 1, kRaw, kTiled, 389, 397}, 30, 6},
    };
    for (const Row& r : rows) {
        SCOPED_TRACE(r.name);
        const Layout& s = r.layout;
        ImageLibFullInfo full{};
        const DecodedPicture d = openScaled(makeTiff(s), r.box, full);
        ASSERT_TRUE(d.dib) << d.error();
        const int colours = s.kind == Rgb ? 3 : 1;
        EXPECT_EQ(full.width, s.width);
        EXPECT_EQ(full.height, s.height);
        EXPECT_EQ(full.bitCount, colours == 3 ? 24 : 8);
        EXPECT_EQ(d.header().bitCount, colours == 3 ? 24 : 8);
        const int k = r.factor;
        ASSERT_EQ(d.header().width, (s.width + k - 1) / k);
        ASSERT_EQ(d.header().height, (s.height + k - 1) / k);
        EXPECT_GE(std::min(d.header().width, d.header().height), 2 * r.box);
        EXPECT_LT(std::min((s.width + k) / (k + 1), (s.height + k) / (k + 1)), 2 * r.box);
        EXPECT_EQ(d.header().xPelsPerMeter, 11811);

        const double max = levels(s.bps) - 1;
        for (int oy = 0; oy < d.header().height; ++oy)
            for (int ox = 0; ox < d.header().width; ++ox) {
                Bgra want{0, 0, 0, 255};
                for (int c = 0; c < colours; ++c) {
                    double sum = 0;
                    int n = 0;
                    for (int y = oy * k; y < std::min(s.height, oy * k + k); ++y)
                        for (int x = ox * k; x < std::min(s.width, ox * k + k); ++x, ++n)
                            sum += sampleValue(s, x, y, c);
                    const double level = sum / n / max * 255;
                    want[2 - c] =
                        static_cast<int>(std::lround(s.kind == White ? 255 - level : level));
                }
                if (colours == 1)
                    want[0] = want[1] = want[2];
                const Bgra got = d.pixel(ox, oy);
                for (int c = 0; c < 4; ++c)
                    ASSERT_NEAR(got[c], want[c], 1)
                        << "pixel " << ox << "," << oy << " channel " << c;
            }
    }
}

// Where averaging is no gain or would lose something, a thumbnail decode is the full decode,
// errors included.
TEST(TiffCodec, ThumbnailDecodeOfOtherPicturesIsTheFullDecode) {
    Bytes cut = makeTiff({Rgb, 16, 3, kRaw, 0, 400, 400});
    halveElement(cut, TIFFTAG_STRIPBYTECOUNTS, 400 / 5 - 1);
    const std::vector<std::pair<const char*, Bytes>> cases = {
        {"less than twice the box", makeTiff({Rgb, 16, 3, kRaw, 0, 381, 1001})},
        {"alpha", makeTiff({Rgb, 8, 4, kRaw, kAlpha, 400, 400})},
        {"CMYK", makeTiff({Cmyk, 8, 4, kRaw, 0, 400, 400})},
        {"truncated strip", cut},
    };
    for (const auto& [name, bytes] : cases) {
        SCOPED_TRACE(name);
        const DecodedPicture whole = openMemory(bytes);
        ImageLibFullInfo full{};
        const DecodedPicture thumb = openScaled(bytes, 96, full);
        EXPECT_EQ(thumb.error(), whole.error());
        ASSERT_EQ(thumb.dib == nullptr, whole.dib == nullptr);
        if (!whole.dib) {
            EXPECT_EQ(whole.error(), "The TIFF file is damaged or incomplete.");
            continue;
        }
        EXPECT_EQ(full.width, whole.header().width);
        EXPECT_EQ(full.height, whole.header().height);
        EXPECT_EQ(full.bitCount, whole.header().bitCount);
        EXPECT_EQ(thumb.bytes(), whole.bytes());
    }
}
