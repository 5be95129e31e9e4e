#include "acquire/DibLayout.h"
#include "acquire/PackedDib.h"
#include "imagelib/imagelib.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstring>

namespace lanmira {
namespace {

// A 24-bit copy of a picture beyond this is refused rather than attempted.
constexpr std::uint64_t kMaxRgb24Bytes = std::uint64_t{1} << 32;

std::uint32_t le32(const std::uint8_t* p) {
    return static_cast<std::uint32_t>(p[0]) | (static_cast<std::uint32_t>(p[1]) << 8) |
           (static_cast<std::uint32_t>(p[2]) << 16) | (static_cast<std::uint32_t>(p[3]) << 24);
}

struct Bgr {
    std::uint8_t b = 0, g = 0, r = 0;
};

// Indices past the colour table come out black, as they do on screen.
using Palette = std::array<Bgr, 256>;

Palette readPalette(const DibLayout& l, const std::uint8_t* block) {
    Palette palette{};
    const std::uint8_t* table = block + l.headerSize + l.maskBytes;
    const std::uint32_t entry = l.tableEntrySize();
    for (std::uint32_t i = 0; i < l.usablePaletteEntries(); ++i)
        palette[i] = {table[i * entry], table[i * entry + 1], table[i * entry + 2]};
    return palette;
}

// One colour channel of a 16- or 32-bit pixel. Fields narrower than 8 bits repeat their
// bits downwards, so 5 bits give (v << 3) | (v >> 2) and 6 bits (v << 2) | (v >> 4): full
// scale is 255, as the screen shows it.
class Channel {
public:
    explicit Channel(std::uint32_t mask)
        : m_mask(mask), m_shift(mask ? std::countr_zero(mask) : 0),
          m_bits(mask ? std::bit_width(mask >> m_shift) : 0) {}

    std::uint8_t operator()(std::uint32_t pixel) const {
        if (m_bits == 0)
            return 0;
        const std::uint32_t v = (pixel & m_mask) >> m_shift;
        if (m_bits >= 8)
            return static_cast<std::uint8_t>(v >> (m_bits - 8));
        std::uint32_t out = 0;
        for (int filled = 0; filled < 8; filled += m_bits)
            out |= (v << (8 - m_bits)) >> filled;
        return static_cast<std::uint8_t>(out);
    }

private:
    std::uint32_t m_mask;
    int m_shift;
    int m_bits;
};

struct Masks {
    Channel red, green, blue;
};

Masks readMasks(const DibLayout& l, const std::uint8_t* block) {
    if (l.compression == DibLayout::kBitFields) {
        const std::uint8_t* m = block + l.headerSize;
        return {Channel(le32(m)), Channel(le32(m + 4)), Channel(le32(m + 8))};
    }
    if (l.bitCount == 16)
        return {Channel(0x7C00), Channel(0x03E0), Channel(0x001F)};
    return {Channel(0x00FF0000), Channel(0x0000FF00), Channel(0x000000FF)};
}

void put(std::uint8_t* out, const Bgr& c) {
    out[0] = c.b;
    out[1] = c.g;
    out[2] = c.r;
}

void convertRow(const DibLayout& l, const Palette& palette, const Masks& masks,
                const std::uint8_t* in, std::uint8_t* out) {
    const std::int32_t w = l.width;
    switch (l.bitCount) {
    case 1:
        for (std::int32_t x = 0; x < w; ++x)
            put(out + 3 * x, palette[(in[x >> 3] >> (7 - (x & 7))) & 1]);
        break;
    case 4:
        for (std::int32_t x = 0; x < w; ++x)
            put(out + 3 * x, palette[(in[x >> 1] >> ((x & 1) ? 0 : 4)) & 0x0F]);
        break;
    case 8:
        for (std::int32_t x = 0; x < w; ++x)
            put(out + 3 * x, palette[in[x]]);
        break;
    case 16:
        for (std::int32_t x = 0; x < w; ++x) {
            const std::uint32_t v = in[2 * x] | (in[2 * x + 1] << 8);
            put(out + 3 * x, {masks.blue(v), masks.green(v), masks.red(v)});
        }
        break;
    case 24:
        std::memcpy(out, in, 3 * static_cast<std::size_t>(w));
        break;
    case 32:
        if (l.compression != DibLayout::kBitFields) {
            for (std::int32_t x = 0; x < w; ++x)
                std::memcpy(out + 3 * x, in + 4 * x, 3);
        } else {
            for (std::int32_t x = 0; x < w; ++x) {
                const std::uint32_t v = le32(in + 4 * x);
                put(out + 3 * x, {masks.blue(v), masks.green(v), masks.red(v)});
            }
        }
        break;
    }
}

// Runs of RLE8 or RLE4 drawn onto a black picture: pixels the stream skips or never
// reaches stay black, and runs past the right edge are clipped.
void decodeRle(const DibLayout& l, const Palette& palette, const std::uint8_t* s, std::uint64_t n,
               std::uint8_t* outPixels, std::uint64_t outStride) {
    const bool four = l.compression == DibLayout::kRle4;
    std::int64_t x = 0;
    std::int64_t y = 0;
    auto draw = [&](unsigned index) {
        if (x < l.width && y < l.height)
            put(outPixels + static_cast<std::uint64_t>(y) * outStride + 3 * x, palette[index]);
        ++x;
    };
    std::uint64_t i = 0;
    while (i + 2 <= n && y < l.height) {
        const unsigned count = s[i];
        const unsigned value = s[i + 1];
        i += 2;
        if (count > 0) {
            const auto visible =
                static_cast<unsigned>(std::clamp<std::int64_t>(l.width - x, 0, count));
            for (unsigned k = 0; k < visible; ++k)
                draw(four ? ((k & 1) ? value & 0x0F : value >> 4) : value);
            x += count - visible;
        } else if (value == 0) {
            x = 0;
            ++y;
        } else if (value == 1) {
            break;
        } else if (value == 2) {
            if (i + 2 > n)
                break;
            x += s[i];
            y += s[i + 1];
            i += 2;
        } else {
            const std::uint64_t bytes = four ? (value + 1) / 2 : value;
            const std::uint64_t available = std::min(bytes, n - i);
            const unsigned pixels =
                four ? static_cast<unsigned>(std::min<std::uint64_t>(value, 2 * available))
                     : static_cast<unsigned>(available);
            for (unsigned k = 0; k < pixels; ++k)
                draw(four ? (s[i + k / 2] >> ((k & 1) ? 0 : 4)) & 0x0F : s[i + k]);
            if (available < bytes)
                break;
            i += (bytes + 1) & ~std::uint64_t{1};
        }
    }
}

} // namespace

PackedDib dibToRgb24(const PackedDib& dib) {
    const auto layout = DibLayout::read(dib.data(), dib.size());
    if (!layout)
        return {};
    const DibLayout& l = *layout;
    const std::uint64_t outStride = DibLayout::rowStride(static_cast<std::uint64_t>(l.width), 24);
    const std::uint64_t outSize =
        DibLayout::kInfoHeaderSize + outStride * static_cast<std::uint64_t>(l.height);
    // A few hundred bytes of run-length data may claim billions of pixels: such a claim is
    // refused before the picture it would take is allocated.
    if (static_cast<std::uint64_t>(l.width) * static_cast<std::uint64_t>(l.height) >
        IMAGELIB_MAX_PIXELS)
        return {};
    if (outSize > kMaxRgb24Bytes)
        return {};
    PackedDib out = PackedDib::allocate(static_cast<std::size_t>(outSize));
    if (!out)
        return {};

    std::uint8_t* h = out.data();
    std::memset(h, 0, DibLayout::kInfoHeaderSize);
    const auto put32 = [](std::uint8_t* p, std::uint32_t v) {
        for (int k = 0; k < 4; ++k)
            p[k] = static_cast<std::uint8_t>(v >> (8 * k));
    };
    put32(h, DibLayout::kInfoHeaderSize);
    put32(h + 4, static_cast<std::uint32_t>(l.width));
    put32(h + 8, static_cast<std::uint32_t>(l.height));
    h[12] = 1;
    h[14] = 24;

    std::uint8_t* outPixels = h + DibLayout::kInfoHeaderSize;
    const std::uint8_t* inPixels = dib.data() + l.pixelOffset;
    const Palette palette = readPalette(l, dib.data());
    if (l.compressed()) {
        std::memset(outPixels, 0, outStride * static_cast<std::uint64_t>(l.height));
        decodeRle(l, palette, inPixels, l.pixelBytes, outPixels, outStride);
        return out;
    }
    const Masks masks = readMasks(l, dib.data());
    const std::uint64_t rowBytes = 3 * static_cast<std::uint64_t>(l.width);
    for (std::int32_t y = 0; y < l.height; ++y) {
        const std::int32_t outY = l.topDown ? l.height - 1 - y : y;
        std::uint8_t* row = outPixels + static_cast<std::uint64_t>(outY) * outStride;
        convertRow(l, palette, masks, inPixels + static_cast<std::uint64_t>(y) * l.stride, row);
        std::memset(row + rowBytes, 0, outStride - rowBytes);
    }
    return out;
}

struct Rgb24Rows::State {
    DibLayout layout;
    const std::uint8_t* pixels;
    Palette palette;
    Masks masks;
};

Rgb24Rows::Rgb24Rows(const PackedDib& dib) : m_state(nullptr) {
    const auto layout = DibLayout::read(dib.data(), dib.size());
    if (!layout || layout->compressed())
        return;
    m_state = new State{*layout, dib.data() + layout->pixelOffset, readPalette(*layout, dib.data()),
                        readMasks(*layout, dib.data())};
}

Rgb24Rows::~Rgb24Rows() {
    delete m_state;
}

bool Rgb24Rows::valid() const {
    return m_state != nullptr;
}

std::int32_t Rgb24Rows::width() const {
    return m_state ? m_state->layout.width : 0;
}

std::int32_t Rgb24Rows::height() const {
    return m_state ? m_state->layout.height : 0;
}

void Rgb24Rows::read(std::int32_t y, std::uint8_t* out) const {
    if (!m_state || y < 0 || y >= m_state->layout.height)
        return;
    const DibLayout& l = m_state->layout;
    const std::int32_t stored = l.topDown ? l.height - 1 - y : y;
    convertRow(l, m_state->palette, m_state->masks,
               m_state->pixels + static_cast<std::uint64_t>(stored) * l.stride, out);
}

} // namespace lanmira
