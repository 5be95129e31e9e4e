#include "imagelib/bmp/BmpCodec.h"

#include "imagelib/core/BoxShrinker.h"
#include "imagelib/core/MaskChannel.h"
#include "imagelib/core/WriteAll.h"
#include "imagelib/imagelib.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <vector>

namespace imagelib {
namespace {

constexpr std::size_t kFileHeader = 14;
constexpr char kTruncated[] = "The BMP file is damaged or incomplete.";

struct Fields {
    std::int64_t width = 0;
    std::int64_t height = 0; // positive; topDown says how the rows lie in the file
    bool topDown = false;
    int bitCount = 0;
    std::uint32_t compression = kBiRgb;
    std::uint32_t masks[3] = {0, 0, 0}; // red, green, blue
    std::size_t paletteOffset = 0;
    std::size_t paletteEntrySize = 4;
    std::size_t colours = 0;
    std::int32_t xPelsPerMeter = 0;
    std::int32_t yPelsPerMeter = 0;
};

bool readFields(std::span<const std::uint8_t> b, Fields& f, std::string& error) {
    if (b.size() < kFileHeader + 12) {
        error = kTruncated;
        return false;
    }
    const std::uint32_t headerSize = readLe32(&b[kFileHeader]);
    const std::uint8_t* h = &b[kFileHeader];
    if (headerSize == 12) { // OS/2 core header
        f.width = readLe16(h + 4);
        f.height = readLe16(h + 6);
        f.bitCount = readLe16(h + 10);
        f.paletteEntrySize = 3;
    } else if (headerSize >= 40 && headerSize <= 124 && b.size() >= kFileHeader + headerSize) {
        f.width = static_cast<std::int32_t>(readLe32(h + 4));
        const auto height = static_cast<std::int32_t>(readLe32(h + 8));
        f.topDown = height < 0;
        f.height = height < 0 ? -static_cast<std::int64_t>(height) : height;
        f.bitCount = readLe16(h + 14);
        f.compression = readLe32(h + 16);
        f.colours = readLe32(h + 32);
        f.xPelsPerMeter = static_cast<std::int32_t>(readLe32(h + 24));
        f.yPelsPerMeter = static_cast<std::int32_t>(readLe32(h + 28));
        if (f.compression == kBiBitfields || f.compression == 6 /* alpha bit fields */) {
            // The masks follow a 40-byte header, or sit inside a V4/V5 header.
            const std::size_t at = kFileHeader + 40;
            if (b.size() < at + 12) {
                error = kTruncated;
                return false;
            }
            for (int i = 0; i < 3; ++i)
                f.masks[i] = readLe32(&b[at + 4 * static_cast<std::size_t>(i)]);
            f.compression = kBiBitfields;
        }
    } else {
        error = "The BMP file has a header this program does not know.";
        return false;
    }
    f.paletteOffset = kFileHeader + headerSize;
    if (headerSize == 40 && f.compression == kBiBitfields)
        f.paletteOffset += 12;

    const int d = f.bitCount;
    const bool rle = f.compression == kBiRle8 || f.compression == kBiRle4;
    if (!(d == 1 || d == 4 || d == 8 || d == 16 || d == 24 || d == 32) ||
        (f.compression == kBiRle8 && d != 8) || (f.compression == kBiRle4 && d != 4) ||
        (f.compression == kBiBitfields && d != 16 && d != 32) ||
        (f.compression != kBiRgb && !rle && f.compression != kBiBitfields)) {
        error = "The BMP file uses a kind of compression or depth this program cannot read.";
        return false;
    }
    if (rle && f.topDown) {
        error = "The BMP file is damaged (compressed rows cannot run top-down).";
        return false;
    }
    if (d <= 8) {
        const std::size_t full = std::size_t{1} << d;
        if (f.colours == 0 || f.colours > full)
            f.colours = full;
    } else {
        f.colours = 0;
    }
    return DibBuffer::sizeAcceptable(f.width, f.height, d, error);
}

void readPalette(std::span<const std::uint8_t> b, const Fields& f, DibBuffer& dib) {
    RgbQuad* pal = dib.palette();
    for (std::size_t i = 0; i < f.colours; ++i) {
        const std::size_t at = f.paletteOffset + i * f.paletteEntrySize;
        if (at + 3 > b.size())
            break; // a short table leaves black entries rather than failing the picture
        pal[i] = {b[at], b[at + 1], b[at + 2], 0};
    }
}

// Walks the runs of an RLE4 or RLE8 stream, bottom row first, handing each pixel to
// put(x, y, index); positions outside the picture are put's to ignore.
template <typename Put>
bool walkRle(std::span<const std::uint8_t> data, bool four, int h, Put&& put) {
    std::size_t i = 0;
    int x = 0;
    int y = 0;
    while (i + 1 < data.size() && y < h) {
        const int count = data[i];
        const int value = data[i + 1];
        i += 2;
        if (count > 0) {
            for (int k = 0; k < count; ++k, ++x)
                put(x, y, four ? ((k & 1) ? value & 0x0F : value >> 4) : value);
            continue;
        }
        if (value == 0) { // end of line
            x = 0;
            ++y;
        } else if (value == 1) { // end of picture
            return true;
        } else if (value == 2) { // delta
            if (i + 1 >= data.size())
                return false;
            x += data[i];
            y += data[i + 1];
            i += 2;
        } else { // absolute run of `value` pixels, padded to a 16-bit boundary
            const std::size_t bytes =
                four ? (static_cast<std::size_t>(value) + 1) / 2 : static_cast<std::size_t>(value);
            if (i + bytes > data.size())
                return false;
            for (int k = 0; k < value; ++k, ++x) {
                const std::uint8_t b = data[i + (four ? static_cast<std::size_t>(k) / 2
                                                      : static_cast<std::size_t>(k))];
                put(x, y, four ? ((k & 1) ? b & 0x0F : b >> 4) : b);
            }
            i += (bytes + 1) & ~std::size_t{1};
        }
    }
    // Running out of data before the end marker: what arrived is kept, the rest is index 0.
    return y > 0 || x > 0;
}

// RLE4 and RLE8: absolute runs, encoded runs, end of line, end of picture and deltas. Pixels
// a file never sets stay index 0, as in every reader of this format.
bool decodeRle(std::span<const std::uint8_t> data, const Fields& f, DibBuffer& dib) {
    const int w = dib.width();
    const int h = dib.height();
    const bool four = f.compression == kBiRle4;
    for (int y = 0; y < h; ++y)
        std::memset(dib.row(y), 0, dib.stride());
    return walkRle(data, four, h, [&](int x, int y, int index) {
        if (x < 0 || x >= w || y < 0 || y >= h)
            return;
        std::uint8_t* row = dib.row(y);
        if (four) {
            std::uint8_t& byte = row[x / 2];
            byte = (x & 1) ? static_cast<std::uint8_t>((byte & 0xF0) | (index & 0x0F))
                           : static_cast<std::uint8_t>((byte & 0x0F) | (index << 4));
        } else {
            row[x] = static_cast<std::uint8_t>(index);
        }
    });
}

// A thumbnail: each row turned into RGB and box-averaged as it comes, so that a picture of
// any size costs a few rows and the small result. Rows are taken in file order, bottom-up
// ones upside down, and the result is turned the right way up at the end.
bool decodeShrunk(std::span<const std::uint8_t> b, std::span<const std::uint8_t> data,
                  const Fields& f, std::uint32_t factor, DecodeResult& r) {
    const auto w = static_cast<std::uint32_t>(f.width);
    const auto h = static_cast<std::uint32_t>(f.height);
    BoxShrinker shrink;
    BoxShrinker::Shape shape;
    shape.width = w;
    shape.height = h;
    shape.factor = factor;
    shape.channels = 3;
    shape.blockWidth = w;
    shape.samplesPerPixel = 3;
    if (!shrink.start(shape, r.error))
        return false;
    std::uint8_t palette[256][3] = {};
    for (std::size_t i = 0; i < f.colours; ++i) {
        const std::size_t at = f.paletteOffset + i * f.paletteEntrySize;
        if (at + 3 > b.size())
            break;
        palette[i][0] = b[at + 2];
        palette[i][1] = b[at + 1];
        palette[i][2] = b[at];
    }
    std::vector<std::uint8_t> rgb(std::size_t{w} * 3);
    const auto fromIndices = [&](const auto& indexAt) {
        for (std::uint32_t x = 0; x < w; ++x)
            std::memcpy(&rgb[3 * std::size_t{x}], palette[indexAt(x)], 3);
    };
    const bool rle = f.compression == kBiRle8 || f.compression == kBiRle4;
    if (rle) {
        std::vector<std::uint8_t> indices(w, 0);
        std::uint32_t next = 0; // the first row not yet handed on
        bool stopped = false;
        const auto flushBelow = [&](std::uint32_t y) {
            for (; next < y && next < h && !stopped; ++next) {
                fromIndices([&](std::uint32_t x) { return indices[x]; });
                stopped = !shrink.addRow(next, rgb.data());
                std::fill(indices.begin(), indices.end(), 0);
            }
        };
        const bool ok = walkRle(
            data, f.compression == kBiRle4, static_cast<int>(h), [&](int x, int y, int index) {
                if (x < 0 || x >= f.width || y < 0 || y >= f.height || stopped)
                    return;
                flushBelow(static_cast<std::uint32_t>(y));
                indices[static_cast<std::size_t>(x)] = static_cast<std::uint8_t>(index);
            });
        if (!ok) {
            r.error = kTruncated;
            return false;
        }
        flushBelow(h);
        if (stopped)
            return false;
    } else {
        const std::size_t fileStride = dibStride(w, static_cast<std::uint32_t>(f.bitCount));
        const MaskChannel red(f.masks[0]), green(f.masks[1]), blue(f.masks[2]);
        const bool fields = f.compression == kBiBitfields;
        const MaskChannel red16(0x7C00), green16(0x03E0), blue16(0x001F);
        for (std::uint32_t y = 0; y < h; ++y) {
            const std::uint8_t* src = &data[std::size_t{y} * fileStride];
            switch (f.bitCount) {
            case 1:
                fromIndices([&](std::uint32_t x) { return (src[x / 8] >> (7 - x % 8)) & 1; });
                break;
            case 4:
                fromIndices(
                    [&](std::uint32_t x) { return (x & 1) ? src[x / 2] & 0x0F : src[x / 2] >> 4; });
                break;
            case 8:
                fromIndices([&](std::uint32_t x) { return src[x]; });
                break;
            case 16:
                for (std::uint32_t x = 0; x < w; ++x) {
                    const std::uint32_t p = readLe16(src + 2 * x);
                    rgb[3 * x] = fields ? red.value(p) : red16.value(p);
                    rgb[3 * x + 1] = fields ? green.value(p) : green16.value(p);
                    rgb[3 * x + 2] = fields ? blue.value(p) : blue16.value(p);
                }
                break;
            default: // 24 and 32
                for (std::uint32_t x = 0; x < w; ++x) {
                    if (fields) {
                        const std::uint32_t p = readLe32(src + 4 * x);
                        rgb[3 * x] = red.value(p);
                        rgb[3 * x + 1] = green.value(p);
                        rgb[3 * x + 2] = blue.value(p);
                    } else {
                        const std::uint8_t* px = src + std::size_t{x} * (f.bitCount / 8);
                        rgb[3 * x] = px[2];
                        rgb[3 * x + 1] = px[1];
                        rgb[3 * x + 2] = px[0];
                    }
                }
                break;
            }
            if (!shrink.addRow(y, rgb.data()))
                return false;
        }
    }
    r.dib = std::move(shrink.dib());
    if (!f.topDown) {
        std::vector<std::uint8_t> swap(r.dib.stride());
        for (int y = 0, z = r.dib.height() - 1; y < z; ++y, --z) {
            std::memcpy(swap.data(), r.dib.row(y), swap.size());
            std::memcpy(r.dib.row(y), r.dib.row(z), swap.size());
            std::memcpy(r.dib.row(z), swap.data(), swap.size());
        }
    }
    return true;
}

bool standardMasks(const Fields& f) {
    if (f.compression != kBiBitfields)
        return true;
    if (f.bitCount == 16)
        return f.masks[0] == 0x7C00 && f.masks[1] == 0x03E0 && f.masks[2] == 0x001F;
    return f.masks[0] == 0x00FF0000 && f.masks[1] == 0x0000FF00 && f.masks[2] == 0x000000FF;
}

} // namespace

std::uint32_t BmpCodec::format() const {
    return IMAGELIB_FMT_BMP;
}

bool BmpCodec::probe(std::span<const std::uint8_t> head) const {
    return head.size() >= 2 && head[0] == 'B' && head[1] == 'M';
}

DecodeResult BmpCodec::decode(std::span<const std::uint8_t> b, const DecodeRequest& request) const {
    DecodeResult r;
    Fields f;
    if (!readFields(b, f, r.error))
        return r;
    const std::uint32_t offBits = readLe32(&b[10]);
    if (offBits >= b.size()) {
        r.error = kTruncated;
        return r;
    }
    const auto data = b.subspan(offBits);
    const bool rle = f.compression == kBiRle8 || f.compression == kBiRle4;
    const std::size_t fileStride =
        dibStride(static_cast<std::uint64_t>(f.width), static_cast<std::uint32_t>(f.bitCount));
    if (!rle && data.size() < fileStride * static_cast<std::size_t>(f.height)) {
        r.error = kTruncated;
        return r;
    }
    if (rle &&
        static_cast<std::uint64_t>(f.width) * static_cast<std::uint64_t>(f.height) >
            std::max<std::uint64_t>(std::uint64_t{64} << 20, data.size() * std::uint64_t{2048})) {
        r.error = "The BMP file claims a picture far larger than its data.";
        return r;
    }

    r.fullWidth = static_cast<int>(f.width);
    r.fullHeight = static_cast<int>(f.height);
    r.fullBitCount = f.bitCount;
    if (const std::uint32_t factor = BoxShrinker::factorFor(static_cast<std::uint32_t>(f.width),
                                                            static_cast<std::uint32_t>(f.height),
                                                            request.boxWidth, request.boxHeight);
        factor > 1) {
        if (!decodeShrunk(b, data, f, factor, r))
            r.dib = {};
        return r;
    }
    // Odd bit fields cannot stay packed as they are: such pictures become 24-bit.
    const bool convert = f.bitCount >= 16 && !standardMasks(f);
    const int outDepth = convert ? 24 : f.bitCount;
    r.dib = DibBuffer::create(f.width, f.height, outDepth, static_cast<int>(f.colours), r.error);
    if (!r.dib)
        return r;
    r.dib.header().xPelsPerMeter = f.xPelsPerMeter;
    r.dib.header().yPelsPerMeter = f.yPelsPerMeter;
    if (f.colours)
        readPalette(b, f, r.dib);

    if (rle) {
        if (!decodeRle(data, f, r.dib)) {
            r.dib = {};
            r.error = kTruncated;
        }
        return r;
    }
    const int h = r.dib.height();
    const int w = r.dib.width();
    if (!convert) {
        const std::size_t n = std::min(fileStride, r.dib.stride());
        for (int y = 0; y < h; ++y) {
            const std::uint8_t* src = &data[static_cast<std::size_t>(y) * fileStride];
            std::uint8_t* dst = f.topDown ? r.dib.topRow(y) : r.dib.row(y);
            std::memcpy(dst, src, n);
        }
        return r;
    }
    const MaskChannel red(f.masks[0]), green(f.masks[1]), blue(f.masks[2]);
    for (int y = 0; y < h; ++y) {
        const std::uint8_t* src = &data[static_cast<std::size_t>(y) * fileStride];
        std::uint8_t* dst = f.topDown ? r.dib.topRow(y) : r.dib.row(y);
        for (int x = 0; x < w; ++x) {
            const std::uint32_t p =
                f.bitCount == 16 ? readLe16(src + 2 * x) : readLe32(src + 4 * x);
            dst[3 * x] = blue.value(p);
            dst[3 * x + 1] = green.value(p);
            dst[3 * x + 2] = red.value(p);
        }
        std::memset(dst + 3 * static_cast<std::size_t>(w), 0,
                    r.dib.stride() - 3 * static_cast<std::size_t>(w));
    }
    return r;
}

bool BmpCodec::canSave(const DibView& dib) const {
    return dib.valid();
}

bool BmpCodec::save(const DibView& dib, const SaveRequest& /*request*/, int fd,
                    std::string& error) const {
    const BitmapInfoHeader& h = dib.header();
    const bool fields = h.compression == kBiBitfields;
    const std::size_t table = dib.palette().size() * sizeof(RgbQuad) + (fields ? 12 : 0);
    const std::size_t pixels = dib.stride() * static_cast<std::size_t>(dib.height());
    const std::size_t offBits = kFileHeader + sizeof(BitmapInfoHeader) + table;

    std::uint8_t head[kFileHeader + sizeof(BitmapInfoHeader)];
    head[0] = 'B';
    head[1] = 'M';
    writeLe32(head + 2, static_cast<std::uint32_t>(offBits + pixels));
    writeLe32(head + 6, 0);
    writeLe32(head + 10, static_cast<std::uint32_t>(offBits));
    BitmapInfoHeader out = h;
    out.sizeImage = static_cast<std::uint32_t>(pixels);
    out.clrUsed = static_cast<std::uint32_t>(dib.palette().size());
    std::memcpy(head + kFileHeader, &out, sizeof(out));

    std::vector<std::uint8_t> extra;
    if (fields) {
        extra.resize(12);
        writeLe32(&extra[0], dib.redMask());
        writeLe32(&extra[4], dib.greenMask());
        writeLe32(&extra[8], dib.blueMask());
    }
    const auto* palette = reinterpret_cast<const std::uint8_t*>(dib.palette().data());
    if (!writeAll(fd, head, sizeof(head)) || !writeAll(fd, extra.data(), extra.size()) ||
        !writeAll(fd, palette, dib.palette().size() * sizeof(RgbQuad)) ||
        !writeAll(fd, dib.row(0), pixels)) {
        error = "The file could not be written (the disk may be full).";
        return false;
    }
    return true;
}

const Codec& bmpCodec() {
    static const BmpCodec codec;
    return codec;
}

} // namespace imagelib
