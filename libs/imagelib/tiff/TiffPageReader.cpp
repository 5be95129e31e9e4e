#include "imagelib/tiff/TiffPageReader.h"

#include "imagelib/core/BoxShrinker.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <memory>
#include <new>
#include <tiffio.h>
#include <vector>

namespace imagelib {
namespace {

constexpr char kDamaged[] = "The TIFF file is damaged or incomplete.";
constexpr char kUnsupported[] = "The TIFF file holds a kind of picture this program cannot read.";
constexpr char kBomb[] = "The TIFF file claims a picture far larger than its data.";
constexpr char kNoMemory[] = "There is not enough memory to open the image.";

// Below this every claim is believed: small pictures are cheap even when the data is short.
constexpr std::uint64_t kAlwaysBelievable = std::uint64_t{16} << 20;
// A strip or tile is decoded whole; no sane file has one this large.
constexpr std::uint64_t kMaxBlockBytes = std::uint64_t{1} << 30;
// Raster the colour-conversion fallback fills at a time.
constexpr std::uint64_t kRgbaChunkBytes = std::uint64_t{16} << 20;

struct Layout {
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    std::uint16_t bps = 1;
    std::uint16_t spp = 1;
    std::uint16_t photometric = 0;
    std::uint16_t planar = PLANARCONFIG_CONTIG;
    std::uint16_t compression = COMPRESSION_NONE;
    std::uint16_t sampleFormat = SAMPLEFORMAT_UINT;
    bool separate() const { return planar == PLANARCONFIG_SEPARATE && spp > 1; }
};

enum class Kind { Grey, Palette, Rgb, Fallback };

// How the samples of one directory become packed-bitmap pixels.
struct Plan {
    Kind kind = Kind::Fallback;
    int outBits = 0;
    int colours = 0;
    bool invert = false;        // min-is-white
    bool premultiplied = false; // associated alpha, stored straight in the bitmap
    bool hasAlpha = false;
    int channels[4] = {0, 0, 0, 0}; // samples read: the colour ones, then alpha
    int channelCount = 0;
};

// How far each compression can plausibly expand its data; generous, as the point is only to
// refuse a tiny file that claims a gigantic picture.
std::uint64_t expansionLimit(std::uint16_t compression) {
    switch (compression) {
    case COMPRESSION_NONE:
        return 1;
    case COMPRESSION_PACKBITS:
        return 130;
    case COMPRESSION_CCITTRLE:
    case COMPRESSION_CCITTFAX3:
    case COMPRESSION_CCITTFAX4:
    case COMPRESSION_CCITTRLEW:
        return 20000; // a blank fax row costs a single bit
    default:
        return 2000; // LZW and Deflate of uniform data stay below this
    }
}

// The first extra sample, when it is alpha; files without the ExtraSamples tag carry none.
int alphaSample(TIFF* tif, const Layout& l, int colourSamples, bool& premultiplied) {
    std::uint16_t count = 0;
    const std::uint16_t* types = nullptr;
    if (l.spp <= colourSamples || !TIFFGetField(tif, TIFFTAG_EXTRASAMPLES, &count, &types) ||
        count == 0 || !types)
        return -1;
    if (types[0] != EXTRASAMPLE_ASSOCALPHA && types[0] != EXTRASAMPLE_UNASSALPHA)
        return -1;
    premultiplied = types[0] == EXTRASAMPLE_ASSOCALPHA;
    return colourSamples;
}

Plan choosePlan(TIFF* tif, Layout& l) {
    Plan p;
    const auto addChannel = [&p](int sample) { p.channels[p.channelCount++] = sample; };
    // JPEG-compressed YCbCr: the JPEG decoder converts to RGB itself.
    if (l.photometric == PHOTOMETRIC_YCBCR && l.compression == COMPRESSION_JPEG &&
        l.planar == PLANARCONFIG_CONTIG && l.bps == 8 && l.spp == 3 &&
        TIFFSetField(tif, TIFFTAG_JPEGCOLORMODE, JPEGCOLORMODE_RGB))
        l.photometric = PHOTOMETRIC_RGB;

    const int bps = l.bps;
    if (l.photometric == PHOTOMETRIC_MINISBLACK || l.photometric == PHOTOMETRIC_MINISWHITE) {
        if (bps != 1 && bps != 2 && bps != 4 && bps != 8 && bps != 16)
            return p;
        p.kind = Kind::Grey;
        p.invert = l.photometric == PHOTOMETRIC_MINISWHITE;
        addChannel(0);
        const int alpha = bps >= 8 ? alphaSample(tif, l, 1, p.premultiplied) : -1;
        if (alpha >= 0) {
            p.hasAlpha = true;
            addChannel(alpha);
            p.outBits = 32;
        } else {
            p.outBits = bps == 2 ? 4 : std::min(bps, 8);
            p.colours = bps >= 8 ? 256 : 1 << bps;
        }
    } else if (l.photometric == PHOTOMETRIC_PALETTE) {
        if (bps != 1 && bps != 2 && bps != 4 && bps != 8)
            return p;
        p.kind = Kind::Palette;
        addChannel(0);
        p.outBits = bps == 2 ? 4 : bps;
        p.colours = 1 << bps;
    } else if (l.photometric == PHOTOMETRIC_RGB) {
        if ((bps != 8 && bps != 16) || l.spp < 3)
            return p;
        p.kind = Kind::Rgb;
        addChannel(0);
        addChannel(1);
        addChannel(2);
        const int alpha = alphaSample(tif, l, 3, p.premultiplied);
        p.hasAlpha = alpha >= 0;
        if (p.hasAlpha)
            addChannel(alpha);
        p.outBits = p.hasAlpha ? 32 : 24;
    }
    return p;
}

// One row of a decoded block: channel c of pixel x is sample x * step + offset[c] of base[c].
struct SampleRow {
    const std::uint8_t* base[4] = {};
    std::size_t offset[4] = {};
    std::size_t step = 1;
};

inline unsigned rawSample(const std::uint8_t* base, std::size_t i, int bps) {
    switch (bps) {
    case 1:
        return (base[i >> 3] >> (7 - (i & 7))) & 1u;
    case 2:
        return (base[i >> 2] >> (6 - 2 * (i & 3))) & 3u;
    case 4:
        return (base[i >> 1] >> ((i & 1) ? 0 : 4)) & 15u;
    case 8:
        return base[i];
    default: {
        std::uint16_t v; // libtiff has already put 16-bit samples in machine order
        std::memcpy(&v, base + 2 * i, 2);
        return v;
    }
    }
}

// 16-bit samples are rounded to the nearest 8-bit value: (v * 255 + 32767) / 65535.
inline std::uint8_t to8(unsigned v, int bps) {
    switch (bps) {
    case 1:
        return v ? 255 : 0;
    case 2:
        return static_cast<std::uint8_t>(v * 85);
    case 4:
        return static_cast<std::uint8_t>(v * 17);
    case 8:
        return static_cast<std::uint8_t>(v);
    default:
        return static_cast<std::uint8_t>((v * 255u + 32767u) / 65535u);
    }
}

inline void putIndex(std::uint8_t* row, std::size_t x, int bits, unsigned index) {
    if (bits == 8) {
        row[x] = static_cast<std::uint8_t>(index);
    } else if (bits == 4) {
        std::uint8_t& b = row[x >> 1];
        b = (x & 1) ? static_cast<std::uint8_t>((b & 0xF0) | index)
                    : static_cast<std::uint8_t>((b & 0x0F) | (index << 4));
    } else {
        std::uint8_t& b = row[x >> 3];
        const auto bit = static_cast<std::uint8_t>(0x80 >> (x & 7));
        b = index ? static_cast<std::uint8_t>(b | bit) : static_cast<std::uint8_t>(b & ~bit);
    }
}

inline std::uint8_t unpremultiply(std::uint8_t c, std::uint8_t a) {
    if (a == 0)
        return 0;
    return static_cast<std::uint8_t>(std::min(255u, (c * 255u + a / 2u) / a));
}

void putRow(const Plan& p, int bps, const SampleRow& s, std::size_t x0, std::size_t cols,
            std::uint8_t* dst) {
    const auto sample = [&](int c, std::size_t x) {
        return rawSample(s.base[c], x * s.step + s.offset[c], bps);
    };
    if (p.outBits <= 8) {
        // Indexed and grey rows whose samples lie packed as the bitmap wants them are copied.
        if (bps == p.outBits && s.step == 1 && (x0 * static_cast<std::size_t>(bps)) % 8 == 0) {
            const std::size_t at = x0 * static_cast<std::size_t>(bps) / 8;
            const std::size_t n = (cols * static_cast<std::size_t>(bps) + 7) / 8;
            std::memcpy(dst + at, s.base[0], n);
            if (p.invert)
                for (std::size_t i = 0; i < n; ++i)
                    dst[at + i] = static_cast<std::uint8_t>(~dst[at + i]);
            return;
        }
        const unsigned max = bps == 16 ? 255u : (1u << bps) - 1u;
        for (std::size_t x = 0; x < cols; ++x) {
            unsigned v = bps == 16 ? to8(sample(0, x), 16) : sample(0, x);
            if (p.invert)
                v = max - v;
            putIndex(dst, x0 + x, p.outBits, v);
        }
        return;
    }
    const std::size_t bytes = static_cast<std::size_t>(p.outBits / 8);
    std::uint8_t* out = dst + x0 * bytes;
    for (std::size_t x = 0; x < cols; ++x, out += bytes) {
        std::uint8_t r, g, b;
        if (p.kind == Kind::Grey) {
            r = to8(sample(0, x), bps);
            if (p.invert)
                r = static_cast<std::uint8_t>(255 - r);
            g = b = r;
        } else {
            r = to8(sample(0, x), bps);
            g = to8(sample(1, x), bps);
            b = to8(sample(2, x), bps);
        }
        if (p.hasAlpha) {
            const std::uint8_t a = to8(sample(p.channelCount - 1, x), bps);
            if (p.premultiplied) {
                r = unpremultiply(r, a);
                g = unpremultiply(g, a);
                b = unpremultiply(b, a);
            }
            out[3] = a;
        }
        out[0] = b;
        out[1] = g;
        out[2] = r;
    }
}

void fillPalette(TIFF* tif, const Plan& p, RgbQuad* pal) {
    if (p.kind == Kind::Grey) {
        for (int i = 0; i < p.colours; ++i) {
            const auto v = static_cast<std::uint8_t>(i * 255 / (p.colours - 1));
            pal[i] = {v, v, v, 0};
        }
        return;
    }
    std::uint16_t *r = nullptr, *g = nullptr, *b = nullptr;
    if (!TIFFGetField(tif, TIFFTAG_COLORMAP, &r, &g, &b) || !r || !g || !b)
        return; // left black
    // Some writers store 8-bit values in the 16-bit table; scale only a true 16-bit one.
    bool sixteen = false;
    for (int i = 0; i < p.colours && !sixteen; ++i)
        sixteen = r[i] > 255 || g[i] > 255 || b[i] > 255;
    const int shift = sixteen ? 8 : 0;
    for (int i = 0; i < p.colours; ++i)
        pal[i] = {static_cast<std::uint8_t>(b[i] >> shift),
                  static_cast<std::uint8_t>(g[i] >> shift),
                  static_cast<std::uint8_t>(r[i] >> shift), 0};
}

// Strips and tiles alike are blocks; a picture in separate planes has one per channel.
struct Blocks {
    bool tiled = false;
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    tmsize_t bytes = 0;
    tmsize_t rowBytes = 0;
    int planes = 1;
};

bool measureBlocks(TIFF* tif, const Layout& l, const Plan& p, std::uint64_t limit, Blocks& b,
                   std::string& error) {
    b.tiled = TIFFIsTiled(tif) != 0;
    b.width = l.width;
    b.height = l.height;
    if (b.tiled) {
        if (!TIFFGetField(tif, TIFFTAG_TILEWIDTH, &b.width) ||
            !TIFFGetField(tif, TIFFTAG_TILELENGTH, &b.height) || b.width == 0 || b.height == 0) {
            error = kDamaged;
            return false;
        }
    } else {
        std::uint32_t rows = 0;
        TIFFGetFieldDefaulted(tif, TIFFTAG_ROWSPERSTRIP, &rows);
        if (rows > 0 && rows < l.height)
            b.height = rows;
    }
    b.bytes = b.tiled ? TIFFTileSize(tif) : TIFFStripSize(tif);
    b.rowBytes = b.tiled ? TIFFTileRowSize(tif) : TIFFScanlineSize(tif);
    if (b.bytes <= 0 || b.rowBytes <= 0 ||
        static_cast<std::uint64_t>(b.rowBytes) * b.height > static_cast<std::uint64_t>(b.bytes)) {
        error = kDamaged;
        return false;
    }
    b.planes = l.separate() ? p.channelCount : 1;
    const std::uint64_t total = static_cast<std::uint64_t>(b.bytes) * b.planes;
    if (total > kMaxBlockBytes || total > limit) {
        error = kBomb;
        return false;
    }
    return true;
}

// Decodes the blocks in order and hands each to block(y0, rows, x0, cols, firstRow, rowBytes),
// its later rows lying rowBytes apart; bandDone(y) follows every row of blocks, y being the
// first picture row below it.
template <typename Block, typename BandDone>
bool walkBlocks(TIFF* tif, const Layout& l, const Plan& p, const Blocks& b, std::string& error,
                Block block, BandDone bandDone) {
    const std::size_t total = static_cast<std::size_t>(b.bytes) * b.planes;
    const std::unique_ptr<std::uint8_t[]> buf(new (std::nothrow) std::uint8_t[total]);
    if (!buf) {
        error = kNoMemory;
        return false;
    }
    const bool separate = l.separate();
    SampleRow first;
    for (int c = 0; c < p.channelCount; ++c) {
        first.base[c] = buf.get() + (separate ? static_cast<std::size_t>(b.bytes) * c : 0);
        first.offset[c] = separate ? 0 : static_cast<std::size_t>(p.channels[c]);
    }
    first.step = separate ? 1 : l.spp;
    for (std::uint32_t y0 = 0; y0 < l.height; y0 += b.height) {
        const std::uint32_t rows = std::min(b.height, l.height - y0);
        for (std::uint32_t x0 = 0; x0 < l.width; x0 += b.width) {
            for (int i = 0; i < b.planes; ++i) {
                const auto sample = static_cast<std::uint16_t>(separate ? p.channels[i] : 0);
                std::uint8_t* dst = buf.get() + static_cast<std::size_t>(b.bytes) * i;
                const tmsize_t got =
                    b.tiled ? TIFFReadEncodedTile(tif, TIFFComputeTile(tif, x0, y0, 0, sample), dst,
                                                  b.bytes)
                            : TIFFReadEncodedStrip(tif, TIFFComputeStrip(tif, y0, sample), dst,
                                                   b.bytes);
                if (got < static_cast<tmsize_t>(rows) * b.rowBytes) {
                    error = kDamaged;
                    return false;
                }
            }
            block(y0, rows, x0, std::min(b.width, l.width - x0), first,
                  static_cast<std::size_t>(b.rowBytes));
        }
        bandDone(y0 + rows);
    }
    return true;
}

bool readBlocks(TIFF* tif, const Layout& l, const Plan& p, std::uint64_t limit, DibBuffer& dib,
                std::string& error) {
    Blocks b;
    if (!measureBlocks(tif, l, p, limit, b, error))
        return false;
    const auto block = [&](std::uint32_t y0, std::uint32_t rows, std::uint32_t x0,
                           std::uint32_t cols, const SampleRow& first, std::size_t rowBytes) {
        SampleRow s = first;
        for (std::uint32_t r = 0; r < rows; ++r) {
            putRow(p, l.bps, s, x0, cols, dib.topRow(static_cast<int>(y0 + r)));
            for (int c = 0; c < p.channelCount; ++c)
                s.base[c] += rowBytes;
        }
    };
    return walkBlocks(tif, l, p, b, error, block, [](std::uint32_t) {});
}

// Whether a thumbnail may be averaged straight from the samples: grey or RGB without alpha in
// whole bytes, the kinds whose full decode is plain grey or 24-bit colour.
bool shrinkable(const Layout& l, const Plan& p) {
    return (p.kind == Kind::Rgb || p.kind == Kind::Grey) && !p.hasAlpha &&
           (l.bps == 8 || l.bps == 16);
}

bool readShrunk(TIFF* tif, const Layout& l, const Plan& p, std::uint64_t limit,
                std::uint32_t factor, DibBuffer& dib, std::string& error) {
    // A picture too large to open whole gets no thumbnail either.
    Blocks b;
    if (!DibBuffer::sizeAcceptable(l.width, l.height, p.outBits, error) ||
        !measureBlocks(tif, l, p, limit, b, error))
        return false;
    BoxShrinker shrink;
    if (!shrink.start({l.width, l.height, factor, p.channelCount, l.bps, p.invert, b.height,
                       std::min(b.width, l.width), l.separate() ? 1u : std::uint32_t{l.spp}},
                      error))
        return false;
    const std::size_t sampleBytes = l.bps / 8;
    const auto block = [&](std::uint32_t y0, std::uint32_t rows, std::uint32_t x0,
                           std::uint32_t cols, const SampleRow& first, std::size_t rowBytes) {
        const std::uint8_t* channel[4];
        for (int c = 0; c < p.channelCount; ++c)
            channel[c] = first.base[c] + first.offset[c] * sampleBytes;
        shrink.addBlock(y0, rows, x0, cols, channel, rowBytes, first.step);
    };
    if (!walkBlocks(tif, l, p, b, error, block, [&](std::uint32_t y) { shrink.rowsDone(y); }))
        return false;
    dib = std::move(shrink.dib());
    return true;
}

// Bilevel, 2- and 4-bit grey and paletted pictures, whose full decode is indexed: their
// thumbnails are averaged from the colours the indices stand for.
bool indexedShrinkable(const Layout& l, const Plan& p) {
    return (p.kind == Kind::Grey && l.bps < 8 && !p.hasAlpha) || p.kind == Kind::Palette;
}

bool readShrunkIndexed(TIFF* tif, const Layout& l, const Plan& p, std::uint64_t limit,
                       std::uint32_t factor, DibBuffer& dib, std::string& error) {
    RgbQuad table[256] = {};
    fillPalette(tif, p, table);
    BoxShrinker::Shape shape;
    shape.width = l.width;
    shape.height = l.height;
    shape.factor = factor;
    // Grey stays one channel, a third of the work of colour.
    const bool grey = p.kind == Kind::Grey;
    const int channels = grey ? 1 : 3;
    shape.channels = channels;
    shape.blockWidth = l.width;
    shape.samplesPerPixel = static_cast<std::uint32_t>(channels);
    const bool tiled = TIFFIsTiled(tif) != 0;
    Blocks b;
    if (tiled || l.separate()) {
        if (!measureBlocks(tif, l, p, limit, b, error))
            return false;
        shape.bandRows = b.height;
    }
    BoxShrinker shrink;
    if (!shrink.start(shape, error))
        return false;
    std::vector<std::uint8_t> rgb(std::size_t{l.width} * 3 + 8);
    const unsigned max = (1u << l.bps) - 1u;
    // Bilevel rows, the common case by far, go a byte (eight pixels) at a time.
    std::uint8_t eight[256][8];
    for (int byte = 0; byte < 256; ++byte)
        for (int bit = 0; bit < 8; ++bit) {
            const unsigned v = (byte >> (7 - bit)) & 1u;
            eight[byte][bit] = table[p.invert ? 1u - v : v].red;
        }
    // Samples x0 .. x0 + cols - 1 of a row as grey or RGB, from the start of the buffer.
    const auto toRgb = [&](const SampleRow& s, std::size_t cols) {
        if (grey && l.bps == 1 && s.step == 1 && s.offset[0] == 0) {
            for (std::size_t i = 0; i < (cols + 7) / 8; ++i)
                std::memcpy(&rgb[8 * i], eight[s.base[0][i]], 8);
            return;
        }
        for (std::size_t x = 0; x < cols; ++x) {
            unsigned v = rawSample(s.base[0], x * s.step + s.offset[0], l.bps);
            if (p.invert)
                v = max - v;
            const RgbQuad& q = table[v & 255];
            if (grey) {
                rgb[x] = q.red;
                continue;
            }
            rgb[3 * x] = q.red;
            rgb[3 * x + 1] = q.green;
            rgb[3 * x + 2] = q.blue;
        }
    };
    const std::uint8_t* channel[3] = {rgb.data(), rgb.data() + 1, rgb.data() + 2};
    if (!tiled && !l.separate()) {
        // Strips a row at a time: a fax page in one strip never needs the whole strip.
        const tmsize_t size = TIFFScanlineSize(tif);
        if (size <= 0 ||
            static_cast<std::uint64_t>(size) * 8 < std::uint64_t{l.width} * l.spp * l.bps) {
            error = kDamaged;
            return false;
        }
        std::vector<std::uint8_t> line(static_cast<std::size_t>(size));
        SampleRow s;
        s.base[0] = line.data();
        s.offset[0] = static_cast<std::size_t>(p.channels[0]);
        s.step = l.spp;
        for (std::uint32_t y = 0; y < l.height; ++y) {
            if (TIFFReadScanline(tif, line.data(), y, 0) < 0) {
                error = kDamaged;
                return false;
            }
            toRgb(s, l.width);
            if (!shrink.addRow(y, rgb.data())) {
                error = kDamaged;
                return false;
            }
        }
    } else {
        const auto block = [&](std::uint32_t y0, std::uint32_t rows, std::uint32_t x0,
                               std::uint32_t cols, const SampleRow& first, std::size_t rowBytes) {
            SampleRow s = first;
            for (std::uint32_t r = 0; r < rows; ++r) {
                toRgb(s, cols);
                shrink.addBlock(y0 + r, 1, x0, cols, channel, 0,
                                static_cast<std::size_t>(channels));
                s.base[0] += rowBytes;
            }
        };
        if (!walkBlocks(tif, l, p, b, error, block, [&](std::uint32_t y) { shrink.rowsDone(y); }))
            return false;
    }
    dib = std::move(shrink.dib());
    if (grey) {
        RgbQuad* ramp = dib.palette();
        for (int i = 0; i < 256; ++i) {
            const auto v = static_cast<std::uint8_t>(i);
            ramp[i] = {v, v, v, 0};
        }
    }
    return true;
}

struct RgbaImage {
    TIFFRGBAImage img{};
    bool begun = false;
    ~RgbaImage() {
        if (begun)
            TIFFRGBAImageEnd(&img);
    }
};

// CMYK, YCbCr, CIE L*a*b* and the rest go through libtiff's own conversion to RGBA, a band of
// rows at a time so that the raster stays small.
bool readRgba(TIFF* tif, const Layout& l, DecodeResult& result) {
    char message[1024];
    RgbaImage rgba;
    if (!TIFFRGBAImageOK(tif, message) || !TIFFRGBAImageBegin(&rgba.img, tif, 1, message)) {
        result.error = kUnsupported;
        return false;
    }
    rgba.begun = true;
    // Rows stay in stored order, as the direct path keeps them.
    rgba.img.req_orientation = rgba.img.orientation;
    const bool alpha = rgba.img.alpha != 0;
    result.dib = DibBuffer::create(l.width, l.height, alpha ? 32 : 24, 0, result.error);
    if (!result.dib)
        return false;

    std::uint32_t unit = l.height;
    if (TIFFIsTiled(tif))
        TIFFGetField(tif, TIFFTAG_TILELENGTH, &unit);
    else
        TIFFGetFieldDefaulted(tif, TIFFTAG_ROWSPERSTRIP, &unit);
    unit = std::clamp<std::uint32_t>(unit, 1, l.height);
    const std::uint64_t rowBytes = std::uint64_t{4} * l.width;
    const std::uint64_t fit = std::max<std::uint64_t>(1, kRgbaChunkBytes / rowBytes / unit) * unit;
    const auto band = static_cast<std::uint32_t>(std::min<std::uint64_t>(fit, l.height));
    const std::unique_ptr<std::uint32_t[]> raster(
        new (std::nothrow) std::uint32_t[static_cast<std::size_t>(band) * l.width]);
    if (!raster) {
        result.dib = {};
        result.error = kNoMemory;
        return false;
    }
    const std::size_t bytes = alpha ? 4 : 3;
    for (std::uint32_t y0 = 0; y0 < l.height; y0 += band) {
        const std::uint32_t rows = std::min(band, l.height - y0);
        rgba.img.row_offset = static_cast<int>(y0);
        rgba.img.col_offset = 0;
        if (!TIFFRGBAImageGet(&rgba.img, raster.get(), l.width, rows)) {
            result.dib = {};
            result.error = kDamaged;
            return false;
        }
        for (std::uint32_t r = 0; r < rows; ++r) {
            const std::uint32_t* src = raster.get() + static_cast<std::size_t>(r) * l.width;
            std::uint8_t* out = result.dib.topRow(static_cast<int>(y0 + r));
            for (std::uint32_t x = 0; x < l.width; ++x, out += bytes) {
                const std::uint32_t px = src[x];
                auto red = static_cast<std::uint8_t>(TIFFGetR(px));
                auto green = static_cast<std::uint8_t>(TIFFGetG(px));
                auto blue = static_cast<std::uint8_t>(TIFFGetB(px));
                if (alpha) {
                    // The conversion hands out premultiplied colour; the bitmap keeps it straight.
                    const auto a = static_cast<std::uint8_t>(TIFFGetA(px));
                    red = unpremultiply(red, a);
                    green = unpremultiply(green, a);
                    blue = unpremultiply(blue, a);
                    out[3] = a;
                }
                out[0] = blue;
                out[1] = green;
                out[2] = red;
            }
        }
    }
    return true;
}

// Zero bits past the last pixel of every row, as a packed bitmap's padding must be.
void clearPadding(DibBuffer& dib) {
    const std::size_t usedBits =
        static_cast<std::size_t>(dib.width()) * static_cast<std::size_t>(dib.bitCount());
    const std::size_t full = usedBits / 8;
    const auto keep = static_cast<std::uint8_t>(0xFF00 >> (usedBits % 8));
    for (int y = 0; y < dib.height(); ++y) {
        std::uint8_t* row = dib.row(y);
        std::size_t from = full;
        if (usedBits % 8)
            row[from++] &= keep;
        std::memset(row + from, 0, dib.stride() - from);
    }
}

std::int32_t pixelsPerMetre(TIFF* tif, ttag_t tag) {
    float value = 0;
    std::uint16_t unit = RESUNIT_INCH;
    if (!TIFFGetField(tif, tag, &value) || !std::isfinite(value) || value <= 0)
        return 0;
    TIFFGetFieldDefaulted(tif, TIFFTAG_RESOLUTIONUNIT, &unit);
    const double perMetre = unit == RESUNIT_INCH         ? value / 0.0254
                            : unit == RESUNIT_CENTIMETER ? value * 100.0
                                                         : 0.0;
    return perMetre < 1e9 ? static_cast<std::int32_t>(std::lround(perMetre)) : 0;
}

} // namespace

void readTiffPage(TIFF* tif, std::size_t fileSize, const DecodeRequest& request,
                  DecodeResult& result) {
    Layout l;
    if (!TIFFGetField(tif, TIFFTAG_IMAGEWIDTH, &l.width) ||
        !TIFFGetField(tif, TIFFTAG_IMAGELENGTH, &l.height) ||
        !TIFFGetField(tif, TIFFTAG_PHOTOMETRIC, &l.photometric)) {
        result.error = kDamaged;
        return;
    }
    TIFFGetFieldDefaulted(tif, TIFFTAG_BITSPERSAMPLE, &l.bps);
    TIFFGetFieldDefaulted(tif, TIFFTAG_SAMPLESPERPIXEL, &l.spp);
    TIFFGetFieldDefaulted(tif, TIFFTAG_PLANARCONFIG, &l.planar);
    TIFFGetFieldDefaulted(tif, TIFFTAG_COMPRESSION, &l.compression);
    TIFFGetFieldDefaulted(tif, TIFFTAG_SAMPLEFORMAT, &l.sampleFormat);
    if (!DibBuffer::sizeAcceptable(l.width, l.height, 1, result.error))
        return;
    if (!TIFFIsCODECConfigured(l.compression)) {
        result.error = "The TIFF file uses a kind of compression this program cannot read.";
        return;
    }
    if ((l.sampleFormat != SAMPLEFORMAT_UINT && l.sampleFormat != SAMPLEFORMAT_VOID) ||
        l.bps == 0 || l.bps > 16 || l.spp == 0) {
        result.error = kUnsupported;
        return;
    }
    const std::uint64_t decoded = (std::uint64_t{l.width} * l.spp * l.bps + 7) / 8 * l.height;
    const std::uint64_t limit =
        std::max(kAlwaysBelievable, std::uint64_t{fileSize} * expansionLimit(l.compression));
    if (decoded > limit) {
        result.error = kBomb;
        return;
    }

    const Plan plan = choosePlan(tif, l);
    const bool indexed = indexedShrinkable(l, plan);
    const std::uint32_t factor =
        shrinkable(l, plan) || indexed
            ? BoxShrinker::factorFor(l.width, l.height, request.boxWidth, request.boxHeight)
            : 1;
    if (plan.kind == Kind::Fallback) {
        if (!readRgba(tif, l, result))
            return;
    } else if (factor > 1 && indexed) {
        if (!readShrunkIndexed(tif, l, plan, limit, factor, result.dib, result.error)) {
            result.dib = {};
            return;
        }
    } else if (factor > 1) {
        if (!readShrunk(tif, l, plan, limit, factor, result.dib, result.error)) {
            result.dib = {};
            return;
        }
        if (plan.colours)
            fillPalette(tif, plan, result.dib.palette());
    } else {
        result.dib = DibBuffer::create(l.width, l.height, plan.outBits, plan.colours, result.error);
        if (!result.dib)
            return;
        if (plan.colours)
            fillPalette(tif, plan, result.dib.palette());
        if (!readBlocks(tif, l, plan, limit, result.dib, result.error)) {
            result.dib = {};
            return;
        }
    }
    clearPadding(result.dib);
    result.dib.header().xPelsPerMeter = pixelsPerMetre(tif, TIFFTAG_XRESOLUTION);
    result.dib.header().yPelsPerMeter = pixelsPerMetre(tif, TIFFTAG_YRESOLUTION);
    result.fullWidth = static_cast<int>(l.width);
    result.fullHeight = static_cast<int>(l.height);
    result.fullBitCount = indexed ? plan.outBits : result.dib.bitCount();
}

} // namespace imagelib
