#include "imagelib/pnm/PnmCodec.h"

#include "imagelib/core/BoxShrinker.h"
#include "imagelib/core/WriteAll.h"
#include "imagelib/imagelib.h"

#include <algorithm>
#include <cstring>
#include <vector>

namespace imagelib {
namespace {

constexpr char kDamaged[] = "The PNM file is damaged or incomplete.";
constexpr char kBadHeader[] = "The PNM file's header is invalid.";
constexpr char kWriteFailed[] = "The file could not be written (the disk may be full).";
// No real file needs longer numbers, and the cap keeps the arithmetic far from overflow.
constexpr int kMaxDigits = 10;
constexpr std::size_t kFlushBytes = std::size_t{1} << 20;

bool isSpace(std::uint8_t c) {
    return c == ' ' || c == '\t' || c == '\n' || c == '\r' || c == '\v' || c == '\f';
}
bool isDigit(std::uint8_t c) {
    return c >= '0' && c <= '9';
}

enum class Kind { Bitmap, Grey, Colour };

struct Header {
    Kind kind = Kind::Bitmap;
    bool plain = false; // ASCII raster (P1 to P3)
    std::uint64_t width = 0;
    std::uint64_t height = 0;
    std::uint64_t maxval = 1;
    std::size_t rasterStart = 0;

    int channels() const { return kind == Kind::Colour ? 3 : 1; }
    int bitCount() const { return kind == Kind::Bitmap ? 1 : kind == Kind::Grey ? 8 : 24; }
    std::size_t rawRowBytes() const {
        if (kind == Kind::Bitmap)
            return static_cast<std::size_t>((width + 7) / 8);
        return static_cast<std::size_t>(width) * static_cast<std::size_t>(channels()) *
               (maxval > 255 ? 2 : 1);
    }
};

// The numbers of a header or of a plain raster, separated by whitespace and comments.
class Tokens {
public:
    enum class Result { Ok, End, Bad };

    Tokens(std::span<const std::uint8_t> bytes, std::size_t pos) : m_b(bytes), m_pos(pos) {}

    std::size_t pos() const { return m_pos; }

    // False when only separators are left.
    bool skipSeparators() {
        while (m_pos < m_b.size()) {
            const std::uint8_t c = m_b[m_pos];
            if (c == '#') {
                while (m_pos < m_b.size() && m_b[m_pos] != '\n' && m_b[m_pos] != '\r')
                    ++m_pos;
            } else if (isSpace(c)) {
                ++m_pos;
            } else {
                return true;
            }
        }
        return false;
    }

    Result number(std::uint64_t& value) {
        if (!skipSeparators())
            return Result::End;
        std::uint64_t v = 0;
        int digits = 0;
        while (m_pos < m_b.size() && isDigit(m_b[m_pos])) {
            if (++digits > kMaxDigits)
                return Result::Bad;
            v = v * 10 + (m_b[m_pos++] - '0');
        }
        if (digits == 0 || (m_pos < m_b.size() && !isSpace(m_b[m_pos]) && m_b[m_pos] != '#'))
            return Result::Bad;
        value = v;
        return Result::Ok;
    }

    // A plain bitmap's pixels are single characters that need no separator between them.
    Result bit(int& value) {
        if (!skipSeparators())
            return Result::End;
        const std::uint8_t c = m_b[m_pos++];
        if (c != '0' && c != '1')
            return Result::Bad;
        value = c - '0';
        return Result::Ok;
    }

private:
    std::span<const std::uint8_t> m_b;
    std::size_t m_pos;
};

bool readHeader(std::span<const std::uint8_t> b, Header& h, std::string& error) {
    if (b.size() < 3 || b[0] != 'P' || b[1] < '1' || b[1] > '6' ||
        (!isSpace(b[2]) && b[2] != '#')) {
        error = "The file is not a PNM image.";
        return false;
    }
    const int type = b[1] - '0';
    h.plain = type <= 3;
    h.kind = type % 3 == 1 ? Kind::Bitmap : type % 3 == 2 ? Kind::Grey : Kind::Colour;

    Tokens t(b, 2);
    std::uint64_t* fields[] = {&h.width, &h.height, &h.maxval};
    const int count = h.kind == Kind::Bitmap ? 2 : 3;
    for (int i = 0; i < count; ++i) {
        const Tokens::Result res = t.number(*fields[i]);
        if (res != Tokens::Result::Ok) {
            error = res == Tokens::Result::End ? kDamaged : kBadHeader;
            return false;
        }
    }
    if (h.maxval < 1 || h.maxval > 65535) {
        error = "The PNM file's maximum sample value is outside 1 to 65535.";
        return false;
    }
    h.rasterStart = t.pos();
    if (!h.plain) {
        // A raw raster starts after exactly one whitespace character.
        if (h.rasterStart >= b.size()) {
            error = kDamaged;
            return false;
        }
        if (!isSpace(b[h.rasterStart])) {
            error = kBadHeader;
            return false;
        }
        ++h.rasterStart;
    }
    return DibBuffer::sizeAcceptable(static_cast<std::int64_t>(h.width),
                                     static_cast<std::int64_t>(h.height), h.bitCount(), error);
}

// Samples of any maximum value scaled to 8 bits as round(v * 255 / maxval); for 16-bit
// samples that is (v * 255 + 32767) / 65535. Samples above the maximum count as the maximum.
std::vector<std::uint8_t> scaleTable(std::uint64_t maxval) {
    std::vector<std::uint8_t> table(maxval > 255 ? 65536 : 256, 255);
    for (std::uint64_t v = 0; v < maxval; ++v)
        table[v] = static_cast<std::uint8_t>((v * 255 + maxval / 2) / maxval);
    return table;
}

// Stores one top-down row of 8-bit samples (grey, or R G B) as the DIB wants it.
void storeSamples(const Header& h, const std::uint8_t* samples, DibBuffer& dib, int y) {
    std::uint8_t* dst = dib.topRow(y);
    const auto w = static_cast<std::size_t>(dib.width());
    std::size_t used = w;
    if (h.kind == Kind::Grey) {
        std::memcpy(dst, samples, w);
    } else {
        for (std::size_t x = 0; x < w; ++x) {
            dst[3 * x] = samples[3 * x + 2];
            dst[3 * x + 1] = samples[3 * x + 1];
            dst[3 * x + 2] = samples[3 * x];
        }
        used = 3 * w;
    }
    std::memset(dst + used, 0, dib.stride() - used);
}

void finishBitmapRow(DibBuffer& dib, std::uint8_t* dst) {
    const auto w = static_cast<std::size_t>(dib.width());
    const std::size_t used = (w + 7) / 8;
    if (w % 8)
        dst[used - 1] &= static_cast<std::uint8_t>(0xFF << (8 - w % 8));
    std::memset(dst + used, 0, dib.stride() - used);
}

void readRaw(std::span<const std::uint8_t> raster, const Header& h, DibBuffer& dib) {
    const std::size_t rowBytes = h.rawRowBytes();
    const int rows = dib.height();
    if (h.kind == Kind::Bitmap) {
        for (int y = 0; y < rows; ++y) {
            std::uint8_t* dst = dib.topRow(y);
            std::memcpy(dst, &raster[static_cast<std::size_t>(y) * rowBytes], rowBytes);
            finishBitmapRow(dib, dst);
        }
        return;
    }
    const std::vector<std::uint8_t> scale = scaleTable(h.maxval);
    const bool wide = h.maxval > 255;
    const std::size_t n = static_cast<std::size_t>(dib.width()) * h.channels();
    std::vector<std::uint8_t> samples(n);
    for (int y = 0; y < rows; ++y) {
        const std::uint8_t* src = &raster[static_cast<std::size_t>(y) * rowBytes];
        if (wide) {
            for (std::size_t i = 0; i < n; ++i)
                samples[i] = scale[static_cast<std::size_t>(src[2 * i] << 8 | src[2 * i + 1])];
        } else {
            for (std::size_t i = 0; i < n; ++i)
                samples[i] = scale[src[i]];
        }
        storeSamples(h, samples.data(), dib, y);
    }
}

bool readPlain(std::span<const std::uint8_t> raster, const Header& h, DibBuffer& dib) {
    Tokens t(raster, 0);
    const int rows = dib.height();
    const auto w = static_cast<std::size_t>(dib.width());
    if (h.kind == Kind::Bitmap) {
        for (int y = 0; y < rows; ++y) {
            std::uint8_t* dst = dib.topRow(y);
            std::memset(dst, 0, dib.stride());
            for (std::size_t x = 0; x < w; ++x) {
                int v = 0;
                if (t.bit(v) != Tokens::Result::Ok)
                    return false;
                dst[x / 8] |= static_cast<std::uint8_t>(v << (7 - x % 8));
            }
        }
        return true;
    }
    const std::vector<std::uint8_t> scale = scaleTable(h.maxval);
    const std::size_t n = w * static_cast<std::size_t>(h.channels());
    std::vector<std::uint8_t> samples(n);
    for (int y = 0; y < rows; ++y) {
        for (std::size_t i = 0; i < n; ++i) {
            std::uint64_t v = 0;
            if (t.number(v) != Tokens::Result::Ok)
                return false;
            samples[i] = scale[std::min<std::uint64_t>(v, scale.size() - 1)];
        }
        storeSamples(h, samples.data(), dib, y);
    }
    return true;
}

// A thumbnail: each row scaled to 8-bit samples (a bitmap's to white and black grey) and
// box-averaged as it comes, so that only a row and the small result are held.
bool readShrunk(std::span<const std::uint8_t> raster, const Header& h, std::uint32_t factor,
                DecodeResult& r) {
    const bool colour = h.kind == Kind::Colour;
    const int channels = colour ? 3 : 1;
    BoxShrinker::Shape shape;
    shape.width = static_cast<std::uint32_t>(h.width);
    shape.height = static_cast<std::uint32_t>(h.height);
    shape.factor = factor;
    shape.channels = channels;
    shape.blockWidth = shape.width;
    shape.samplesPerPixel = static_cast<std::uint32_t>(channels);
    BoxShrinker shrink;
    if (!shrink.start(shape, r.error))
        return false;
    const std::size_t w = shape.width;
    const std::size_t n = w * static_cast<std::size_t>(channels);
    const std::vector<std::uint8_t> scale = scaleTable(h.maxval);
    const bool wide = h.maxval > 255;
    const std::size_t rowBytes = h.rawRowBytes();
    std::vector<std::uint8_t> samples(n);
    Tokens t(raster, 0);
    for (std::uint32_t y = 0; y < shape.height; ++y) {
        const std::uint8_t* src = h.plain ? nullptr : &raster[std::size_t{y} * rowBytes];
        if (h.kind == Kind::Bitmap) {
            for (std::size_t x = 0; x < w; ++x) {
                int v = 0;
                if (src)
                    v = (src[x / 8] >> (7 - x % 8)) & 1;
                else if (t.bit(v) != Tokens::Result::Ok)
                    return false;
                samples[x] = v ? 0 : 255; // the format's 1 is black
            }
        } else if (src) {
            for (std::size_t i = 0; i < n; ++i)
                samples[i] = wide
                                 ? scale[static_cast<std::size_t>(src[2 * i] << 8 | src[2 * i + 1])]
                                 : scale[src[i]];
        } else {
            for (std::size_t i = 0; i < n; ++i) {
                std::uint64_t v = 0;
                if (t.number(v) != Tokens::Result::Ok)
                    return false;
                samples[i] = scale[std::min<std::uint64_t>(v, scale.size() - 1)];
            }
        }
        if (!shrink.addRow(y, samples.data()))
            return false;
    }
    r.dib = std::move(shrink.dib());
    if (!colour) {
        RgbQuad* pal = r.dib.palette();
        for (int i = 0; i < 256; ++i) {
            const auto v = static_cast<std::uint8_t>(i);
            pal[i] = {v, v, v, 0};
        }
    }
    return true;
}

// What a picture is written as; None when the format cannot hold it.
enum class Output { None, Bitmap, Grey, Colour };

bool isBlack(const RgbQuad& q) {
    return q.red == 0 && q.green == 0 && q.blue == 0;
}
bool isWhite(const RgbQuad& q) {
    return q.red == 255 && q.green == 255 && q.blue == 255;
}

Output outputFor(const DibView& dib) {
    if (!dib.valid() || dib.header().compression != kBiRgb)
        return Output::None;
    const auto pal = dib.palette();
    switch (dib.bitCount()) {
    case 1:
        return pal.size() == 2 && ((isBlack(pal[0]) && isWhite(pal[1])) ||
                                   (isWhite(pal[0]) && isBlack(pal[1])))
                   ? Output::Bitmap
                   : Output::None;
    case 8:
        return std::all_of(pal.begin(), pal.end(),
                           [](const RgbQuad& q) { return q.red == q.green && q.red == q.blue; })
                   ? Output::Grey
                   : Output::Colour;
    case 24:
        return Output::Colour;
    default:
        return Output::None;
    }
}

// Appends top-down row y in the file's layout.
void appendRow(const DibView& dib, Output kind, int y, std::vector<std::uint8_t>& out) {
    const std::uint8_t* src = dib.topRow(y);
    const auto w = static_cast<std::size_t>(dib.width());
    const auto pal = dib.palette();
    switch (kind) {
    case Output::Bitmap: {
        const std::size_t bytes = (w + 7) / 8;
        // The file's bit 1 is black, whichever entry of the palette black is.
        const std::uint8_t flip = isBlack(pal[0]) ? 0xFF : 0x00;
        const std::size_t at = out.size();
        for (std::size_t i = 0; i < bytes; ++i)
            out.push_back(static_cast<std::uint8_t>(src[i] ^ flip));
        if (w % 8)
            out[at + bytes - 1] &= static_cast<std::uint8_t>(0xFF << (8 - w % 8));
        break;
    }
    case Output::Grey:
        for (std::size_t x = 0; x < w; ++x)
            out.push_back(src[x] < pal.size() ? pal[src[x]].red : 0);
        break;
    case Output::Colour:
        if (dib.bitCount() == 24) {
            for (std::size_t x = 0; x < w; ++x)
                out.insert(out.end(), {src[3 * x + 2], src[3 * x + 1], src[3 * x]});
        } else {
            for (std::size_t x = 0; x < w; ++x) {
                const RgbQuad q = src[x] < pal.size() ? pal[src[x]] : RgbQuad{0, 0, 0, 0};
                out.insert(out.end(), {q.red, q.green, q.blue});
            }
        }
        break;
    case Output::None:
        break;
    }
}

} // namespace

std::uint32_t PnmCodec::format() const {
    return IMAGELIB_FMT_PNM;
}

bool PnmCodec::probe(std::span<const std::uint8_t> head) const {
    return head.size() >= 3 && head[0] == 'P' && head[1] >= '1' && head[1] <= '6' &&
           (isSpace(head[2]) || head[2] == '#');
}

DecodeResult PnmCodec::decode(std::span<const std::uint8_t> bytes,
                              const DecodeRequest& request) const {
    DecodeResult r;
    Header h;
    if (!readHeader(bytes, h, r.error))
        return r;
    r.fullWidth = static_cast<int>(h.width);
    r.fullHeight = static_cast<int>(h.height);
    r.fullBitCount = h.bitCount();

    // The data must be able to hold the picture before anything is allocated: a raw file
    // all its rows, a plain one a character a sample (and a separator between numbers).
    const auto raster = bytes.subspan(h.rasterStart);
    const std::uint64_t samples = h.width * h.height * static_cast<std::uint64_t>(h.channels());
    const std::uint64_t needed = !h.plain                 ? h.rawRowBytes() * h.height
                                 : h.kind == Kind::Bitmap ? samples
                                                          : samples * 2 - 1;
    if (raster.size() < needed) {
        r.error = kDamaged;
        return r;
    }
    if (const std::uint32_t factor = BoxShrinker::factorFor(static_cast<std::uint32_t>(h.width),
                                                            static_cast<std::uint32_t>(h.height),
                                                            request.boxWidth, request.boxHeight);
        factor > 1) {
        if (!readShrunk(raster, h, factor, r)) {
            r.dib = {};
            r.error = kDamaged;
        }
        return r;
    }
    const int colours = h.kind == Kind::Bitmap ? 2 : h.kind == Kind::Grey ? 256 : 0;
    r.dib = DibBuffer::create(static_cast<std::int64_t>(h.width),
                              static_cast<std::int64_t>(h.height), h.bitCount(), colours, r.error);
    if (!r.dib)
        return r;
    RgbQuad* pal = r.dib.palette();
    if (h.kind == Kind::Bitmap) {
        pal[0] = {255, 255, 255, 0}; // the format's 0 is white and 1 black
        pal[1] = {0, 0, 0, 0};
    } else if (h.kind == Kind::Grey) {
        for (int i = 0; i < 256; ++i) {
            const auto v = static_cast<std::uint8_t>(i);
            pal[i] = {v, v, v, 0};
        }
    }
    if (h.plain) {
        if (!readPlain(raster, h, r.dib)) {
            r.dib = {};
            r.error = kDamaged;
        }
    } else {
        readRaw(raster, h, r.dib);
    }
    return r;
}

bool PnmCodec::canSave(const DibView& dib) const {
    return outputFor(dib) != Output::None;
}

bool PnmCodec::save(const DibView& dib, const SaveRequest& /*request*/, int fd,
                    std::string& error) const {
    const Output kind = outputFor(dib);
    if (kind == Output::None) {
        error = "The picture's colour depth cannot be stored in that format.";
        return false;
    }
    const char* magic = kind == Output::Bitmap ? "P4" : kind == Output::Grey ? "P5" : "P6";
    std::string head = std::string(magic) + '\n' + std::to_string(dib.width()) + ' ' +
                       std::to_string(dib.height()) + '\n';
    if (kind != Output::Bitmap)
        head += "255\n";

    std::vector<std::uint8_t> out(head.begin(), head.end());
    out.reserve(kFlushBytes + 3 * static_cast<std::size_t>(dib.width()));
    for (int y = 0; y < dib.height(); ++y) {
        appendRow(dib, kind, y, out);
        if (out.size() >= kFlushBytes || y == dib.height() - 1) {
            if (!writeAll(fd, out.data(), out.size())) {
                error = kWriteFailed;
                return false;
            }
            out.clear();
        }
    }
    return true;
}

const Codec& pnmCodec() {
    static const PnmCodec codec;
    return codec;
}

} // namespace imagelib
