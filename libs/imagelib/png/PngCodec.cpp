#include "imagelib/png/PngCodec.h"

#include "imagelib/core/BoxShrinker.h"
#include "imagelib/imagelib.h"
#include "imagelib/png/PngGlue.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <vector>

namespace imagelib {
namespace {

using pngglue::guarded;

constexpr std::uint8_t kSignature[8] = {0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'};
constexpr char kDamaged[] = "The PNG file is damaged or incomplete.";
// Deflate expands data by at most about 1032 to 1; a picture needing more than this many
// bytes per byte of file cannot be in the file.
constexpr std::uint64_t kMaxExpansion = 1100;
constexpr png_alloc_size_t kMaxChunkBytes = 8 << 20;

struct Source {
    std::span<const std::uint8_t> data;
    std::size_t pos = 0;
    bool tooLarge = false;
};

void readFromMemory(png_structp png, png_bytep out, std::size_t n) {
    auto* s = static_cast<Source*>(png_get_io_ptr(png));
    if (n > s->data.size() - s->pos)
        png_error(png, "unexpected end of data");
    std::memcpy(out, s->data.data() + s->pos, n);
    s->pos += n;
}

void noteWarning(png_structp png, png_const_charp message) {
    // A size beyond our limits arrives as this warning just before the error that ends
    // reading; it deserves a different sentence from damage.
    if (std::strstr(message, "user limit"))
        static_cast<Source*>(png_get_error_ptr(png))->tooLarge = true;
}

class Reader {
public:
    explicit Reader(Source& source)
        : png(png_create_read_struct(PNG_LIBPNG_VER_STRING, &source, pngglue::jumpOnError,
                                     noteWarning)),
          info(png ? png_create_info_struct(png) : nullptr) {}
    ~Reader() { png_destroy_read_struct(&png, info ? &info : nullptr, nullptr); }
    Reader(const Reader&) = delete;
    Reader& operator=(const Reader&) = delete;

    png_structp png;
    png_infop info;
};

// What the file's header chunks say. Plain data: it is filled inside a guarded step.
struct Header {
    png_uint_32 width = 0;
    png_uint_32 height = 0;
    int bitDepth = 0;
    int colourType = 0;
    int interlace = 0;
    int channels = 0;
    bool transparency = false;
    int paletteSize = 0;
    png_color palette[PNG_MAX_PALETTE_LENGTH] = {};
    png_uint_32 xPelsPerMeter = 0;
    png_uint_32 yPelsPerMeter = 0;
};

void readHeader(png_structp png, png_infop info, Source& source, Header& h) {
    png_set_read_fn(png, &source, readFromMemory);
#ifdef FUZZING_BUILD_MODE_UNSAFE_FOR_PRODUCTION
    // Mutated inputs almost never keep their checksums right; checked, they would stop the
    // fuzzer at the first chunk.
    png_set_crc_action(png, PNG_CRC_QUIET_USE, PNG_CRC_QUIET_USE);
    png_set_option(png, PNG_IGNORE_ADLER32, PNG_OPTION_ON);
#endif
    png_set_user_limits(png, static_cast<png_uint_32>(kMaxDimension),
                        static_cast<png_uint_32>(kMaxDimension));
    png_set_chunk_malloc_max(png, kMaxChunkBytes);
    // Text, profiles and the like change nothing we deliver; not inflating them saves time
    // and keeps hostile chunks away. The resolution is kept for the header.
    png_set_keep_unknown_chunks(png, PNG_HANDLE_CHUNK_NEVER, nullptr, -1);
    png_set_keep_unknown_chunks(png, PNG_HANDLE_CHUNK_AS_DEFAULT,
                                reinterpret_cast<png_const_bytep>("pHYs"), 1);
    png_read_info(png, info);
    png_get_IHDR(png, info, &h.width, &h.height, &h.bitDepth, &h.colourType, &h.interlace, nullptr,
                 nullptr);
    h.channels = png_get_channels(png, info);
    h.transparency = png_get_valid(png, info, PNG_INFO_tRNS) != 0;
    png_colorp palette = nullptr;
    int count = 0;
    if (png_get_PLTE(png, info, &palette, &count) && palette) {
        h.paletteSize = std::clamp(count, 0, PNG_MAX_PALETTE_LENGTH);
        std::memcpy(h.palette, palette,
                    sizeof(png_color) * static_cast<std::size_t>(h.paletteSize));
    }
    int unit = 0;
    if (!png_get_pHYs(png, info, &h.xPelsPerMeter, &h.yPelsPerMeter, &unit) ||
        unit != PNG_RESOLUTION_METER)
        h.xPelsPerMeter = h.yPelsPerMeter = 0;
}

// How the file's pixels land in the packed bitmap.
struct Layout {
    int bitCount = 0;         // 1, 4, 8, 24 or 32
    int colours = 0;          // colour-table entries
    bool paletted = false;    // indices into the file's palette
    bool twoBit = false;      // 2-bit indices, widened to 4 after reading
    std::size_t rowBytes = 0; // what libpng delivers per row after the transforms
};

Layout chooseLayout(const Header& h) {
    Layout l;
    const std::size_t w = h.width;
    switch (h.colourType) {
    case PNG_COLOR_TYPE_PALETTE:
        // A palette's transparency has no place in a paletted bitmap and is dropped.
        l.paletted = true;
        l.twoBit = h.bitDepth == 2;
        l.bitCount = l.twoBit ? 4 : h.bitDepth;
        l.colours = std::min(h.paletteSize, 1 << l.bitCount);
        l.rowBytes = (w * static_cast<std::size_t>(h.bitDepth) + 7) / 8;
        break;
    case PNG_COLOR_TYPE_GRAY:
        if (h.transparency) {
            l.bitCount = 32;
        } else if (h.bitDepth == 1) {
            l.bitCount = 1;
            l.colours = 2;
            l.rowBytes = (w + 7) / 8;
        } else {
            l.bitCount = 8;
            l.colours = 256;
            l.rowBytes = w;
        }
        break;
    case PNG_COLOR_TYPE_RGB:
        l.bitCount = h.transparency ? 32 : 24;
        break;
    default: // grey with alpha, RGBA
        l.bitCount = 32;
        break;
    }
    if (l.bitCount >= 24)
        l.rowBytes = w * static_cast<std::size_t>(l.bitCount / 8);
    return l;
}

void setTransforms(png_structp png, png_infop info, const Header& h, const Layout& l) {
    // (v * 255 + 32767) / 65535: rounds, where dropping the low byte would darken.
    if (h.bitDepth == 16)
        png_set_scale_16(png);
    // Only for grey: in libpng this also turns palette pictures into RGB.
    if (!l.paletted && l.bitCount == 8)
        png_set_expand_gray_1_2_4_to_8(png);
    if (l.bitCount >= 24) {
        if (h.transparency)
            png_set_tRNS_to_alpha(png);
        if (!(h.colourType & PNG_COLOR_MASK_COLOR)) {
            png_set_expand_gray_1_2_4_to_8(png);
            png_set_gray_to_rgb(png);
        }
        png_set_bgr(png);
    }
    png_set_interlace_handling(png);
    png_read_update_info(png, info);
}

void fillPalette(DibBuffer& dib, const Header& h, const Layout& l) {
    RgbQuad* table = dib.palette();
    if (l.paletted) {
        for (int i = 0; i < l.colours; ++i)
            table[i] = {h.palette[i].blue, h.palette[i].green, h.palette[i].red, 0};
        return;
    }
    for (int i = 0; i < l.colours; ++i) {
        const auto v = static_cast<std::uint8_t>(i * 255 / (l.colours - 1));
        table[i] = {v, v, v, 0};
    }
}

int indexAt(const std::uint8_t* row, int x, int bitCount) {
    switch (bitCount) {
    case 1:
        return (row[x / 8] >> (7 - x % 8)) & 1;
    case 2:
        return (row[x / 4] >> (6 - 2 * (x % 4))) & 3;
    case 4:
        return (x & 1) ? row[x / 2] & 0x0F : row[x / 2] >> 4;
    default:
        return row[x];
    }
}

void twoBitToFour(const std::uint8_t* src, std::uint8_t* dst, int width) {
    for (int x = 0; x < width; x += 2) {
        const int low = x + 1 < width ? indexAt(src, x + 1, 2) : 0;
        dst[x / 2] = static_cast<std::uint8_t>(indexAt(src, x, 2) << 4 | low);
    }
}

// Files may use indices past the end of their palette. Rather than leave readers of the
// bitmap to look past its table, such pictures get the full table, the extra entries black.
bool coverAllIndices(DibBuffer& dib, std::string& error) {
    const int colours = static_cast<int>(dib.header().clrUsed);
    const int bits = dib.bitCount();
    if (colours >= (1 << bits))
        return true;
    int highest = 0;
    for (int y = 0; y < dib.height() && highest < colours; ++y)
        for (int x = 0; x < dib.width(); ++x)
            highest = std::max(highest, indexAt(dib.row(y), x, bits));
    if (highest < colours)
        return true;
    DibBuffer full = DibBuffer::create(dib.width(), dib.height(), bits, 1 << bits, error);
    if (!full)
        return false;
    std::memcpy(full.palette(), dib.palette(), sizeof(RgbQuad) * static_cast<std::size_t>(colours));
    std::memcpy(full.row(0), dib.row(0), dib.stride() * static_cast<std::size_t>(dib.height()));
    full.header().xPelsPerMeter = dib.header().xPelsPerMeter;
    full.header().yPelsPerMeter = dib.header().yPelsPerMeter;
    dib = std::move(full);
    return true;
}

// The picture of an interlaced file's first pass: every eighth pixel each way.
png_uint_32 firstPassSide(png_uint_32 side) {
    return (side + 7) / 8;
}

// A thumbnail streamed row by row into the box average, so that memory stays a few rows and
// the reduced picture whatever the size. An interlaced file gives its first pass only, a
// picture of every eighth pixel that arrives first in the file. Grey stays one channel;
// colour and palettes become RGB; alpha is dropped, as the thumbnail ignores it.
bool decodeShrunk(Reader& reader, const Header& h, std::uint32_t width, std::uint32_t height,
                  std::uint32_t factor, DecodeResult& r) {
    const bool grey = !(h.colourType & PNG_COLOR_MASK_COLOR);
    BoxShrinker shrink;
    BoxShrinker::Shape shape;
    shape.width = width;
    shape.height = height;
    shape.factor = factor;
    shape.channels = grey ? 1 : 3;
    shape.blockWidth = width;
    shape.samplesPerPixel = static_cast<std::uint32_t>(shape.channels);
    if (!shrink.start(shape, r.error))
        return false;
    std::vector<std::uint8_t> row(std::size_t{h.width} * static_cast<std::size_t>(shape.channels));
    const bool ok = guarded(reader.png, [&] {
        png_structp png = reader.png;
        if (h.bitDepth == 16)
            png_set_scale_16(png);
        if (h.colourType == PNG_COLOR_TYPE_PALETTE)
            png_set_palette_to_rgb(png);
        if (grey)
            png_set_expand_gray_1_2_4_to_8(png);
        // Expanding a palette also turns its transparency into alpha.
        if ((h.colourType & PNG_COLOR_MASK_ALPHA) || h.transparency)
            png_set_strip_alpha(png);
        png_read_update_info(png, reader.info);
        if (png_get_rowbytes(png, reader.info) > row.size())
            png_error(png, "unexpected row size");
        for (std::uint32_t y = 0; y < height; ++y) {
            png_read_row(png, row.data(), nullptr);
            if (!shrink.addRow(y, row.data()))
                png_error(png, "stopped");
        }
    });
    if (!ok) {
        r.error = kDamaged;
        return false;
    }
    r.dib = std::move(shrink.dib());
    if (grey) {
        RgbQuad* table = r.dib.palette();
        for (int i = 0; i < 256; ++i) {
            const auto v = static_cast<std::uint8_t>(i);
            table[i] = {v, v, v, 0};
        }
    }
    return true;
}

} // namespace

std::uint32_t PngCodec::format() const {
    return IMAGELIB_FMT_PNG;
}

bool PngCodec::probe(std::span<const std::uint8_t> head) const {
    return head.size() >= sizeof(kSignature) &&
           std::equal(std::begin(kSignature), std::end(kSignature), head.begin());
}

DecodeResult PngCodec::decode(std::span<const std::uint8_t> bytes,
                              const DecodeRequest& request) const {
    DecodeResult r;
    if (!probe(bytes)) {
        r.error = "The file is not a PNG image.";
        return r;
    }
    Source source{bytes};
    Reader reader(source);
    if (!reader.info) {
        r.error = "There is not enough memory to open the image.";
        return r;
    }
    Header h;
    if (!guarded(reader.png, [&] { readHeader(reader.png, reader.info, source, h); })) {
        r.error = source.tooLarge ? "The image is too large to open." : kDamaged;
        return r;
    }
    const Layout l = chooseLayout(h);
    if (l.paletted && l.colours == 0) {
        r.error = kDamaged;
        return r;
    }
    const std::uint64_t fileRowBytes =
        (std::uint64_t{h.width} * static_cast<std::uint64_t>(h.channels * h.bitDepth) + 7) / 8;
    if ((fileRowBytes + 1) * h.height > bytes.size() * kMaxExpansion) {
        r.error = "The PNG file claims a picture far larger than its data.";
        return r;
    }
    if (request.boxWidth > 0 || request.boxHeight > 0) {
        const bool interlaced = h.interlace != PNG_INTERLACE_NONE;
        const png_uint_32 w = interlaced ? firstPassSide(h.width) : h.width;
        const png_uint_32 ht = interlaced ? firstPassSide(h.height) : h.height;
        const std::uint32_t factor =
            BoxShrinker::factorFor(w, ht, request.boxWidth, request.boxHeight);
        const bool covers = w >= 2u * static_cast<std::uint32_t>(std::max(0, request.boxWidth)) &&
                            ht >= 2u * static_cast<std::uint32_t>(std::max(0, request.boxHeight));
        if ((interlaced && covers) || factor > 1) {
            r.fullWidth = static_cast<int>(h.width);
            r.fullHeight = static_cast<int>(h.height);
            r.fullBitCount = l.bitCount;
            if (!shapeAcceptable(h.width, h.height, r.error) ||
                !decodeShrunk(reader, h, w, ht, factor, r))
                r.dib = {};
            return r;
        }
    }
    r.dib = DibBuffer::create(h.width, h.height, l.bitCount, l.colours, r.error);
    if (!r.dib)
        return r;
    fillPalette(r.dib, h, l);
    if (h.xPelsPerMeter <= std::numeric_limits<std::int32_t>::max() &&
        h.yPelsPerMeter <= std::numeric_limits<std::int32_t>::max()) {
        r.dib.header().xPelsPerMeter = static_cast<std::int32_t>(h.xPelsPerMeter);
        r.dib.header().yPelsPerMeter = static_cast<std::int32_t>(h.yPelsPerMeter);
    }
    r.fullWidth = r.dib.width();
    r.fullHeight = r.dib.height();
    r.fullBitCount = l.bitCount;

    std::size_t delivered = 0;
    if (!guarded(reader.png,
                 [&] {
                     setTransforms(reader.png, reader.info, h, l);
                     delivered = png_get_rowbytes(reader.png, reader.info);
                 }) ||
        delivered != l.rowBytes) {
        r.dib = {};
        r.error = kDamaged;
        return r;
    }

    // 2-bit rows go through a buffer of their own; all others land in the bitmap directly.
    const int height = r.dib.height();
    std::vector<std::uint8_t> twoBitRows(l.twoBit ? l.rowBytes * static_cast<std::size_t>(height)
                                                  : 0);
    std::vector<png_bytep> rows(static_cast<std::size_t>(height));
    for (int y = 0; y < height; ++y) {
        rows[static_cast<std::size_t>(y)] =
            l.twoBit ? &twoBitRows[l.rowBytes * static_cast<std::size_t>(y)] : r.dib.topRow(y);
        // Interlaced passes merge into the bytes already there, so those must be defined.
        if (!l.twoBit && h.interlace != PNG_INTERLACE_NONE)
            std::memset(r.dib.topRow(y), 0, r.dib.stride());
    }
    if (!guarded(reader.png, [&] { png_read_image(reader.png, rows.data()); })) {
        r.dib = {};
        r.error = kDamaged;
        return r;
    }
    const std::size_t written =
        l.twoBit ? (static_cast<std::size_t>(r.dib.width()) + 1) / 2 : l.rowBytes;
    for (int y = 0; y < height; ++y) {
        std::uint8_t* dst = r.dib.topRow(y);
        if (l.twoBit)
            twoBitToFour(rows[static_cast<std::size_t>(y)], dst, r.dib.width());
        std::memset(dst + written, 0, r.dib.stride() - written);
    }
    if (l.paletted && !coverAllIndices(r.dib, r.error))
        r.dib = {};
    return r;
}

const Codec& pngCodec() {
    static const PngCodec codec;
    return codec;
}

} // namespace imagelib
