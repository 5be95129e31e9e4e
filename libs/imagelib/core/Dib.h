#pragma once

#include "imagelib/core/DibHeader.h"
#include "imagelib/imagelib.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

namespace imagelib {

// Ceiling for one decoded picture; larger claims are refused before anything is allocated.
inline constexpr std::uint64_t kMaxDibBytes = 0x7FFF0000;
inline constexpr std::int64_t kMaxDimension = 1 << 20;
// The pixel budget of a full decode, about 11585 x 11585: a picture over it is refused with
// a sentence naming its size before anything is allocated. Thumbnails that stream their rows
// into a reduced picture are not bound by it.
inline constexpr std::uint64_t kMaxPixels = IMAGELIB_MAX_PIXELS;

// "The picture is W × H pixels, too large to open."
std::string tooLargeText(std::int64_t width, std::int64_t height);
// Within the pixel budget; otherwise false with tooLargeText in `error`.
bool withinPixelBudget(std::int64_t width, std::int64_t height, std::string& error);
// A shape a streaming reduced decode can take: both sides in 1..kMaxDimension.
bool shapeAcceptable(std::int64_t width, std::int64_t height, std::string& error);

// A packed bitmap being built: one malloc'd block (header, colour table, rows bottom-up),
// handed to the caller with release() and freed with ImageLib_Free. Nothing is zero-filled
// on purpose: decoders write every byte of every row, padding included.
class DibBuffer {
public:
    DibBuffer() = default;
    DibBuffer(DibBuffer&& other) noexcept;
    DibBuffer& operator=(DibBuffer&& other) noexcept;
    DibBuffer(const DibBuffer&) = delete;
    DibBuffer& operator=(const DibBuffer&) = delete;
    ~DibBuffer();

    // A picture of width x height at bitCount (1, 4, 8, 16, 24 or 32) with `colours` table
    // entries (0 for none). Fails, with a reason, when the size is absurd, over the pixel
    // budget, or memory short.
    static DibBuffer create(std::int64_t width, std::int64_t height, int bitCount, int colours,
                            std::string& error);
    // Checks the bytes a picture of that size would need, without allocating. The pixel
    // budget is left to create(), as reduced decodes stream pictures of any size.
    static bool sizeAcceptable(std::int64_t width, std::int64_t height, int bitCount,
                               std::string& error);

    explicit operator bool() const { return m_block != nullptr; }
    BitmapInfoHeader& header() { return *reinterpret_cast<BitmapInfoHeader*>(m_block); }
    RgbQuad* palette() { return reinterpret_cast<RgbQuad*>(m_block + sizeof(BitmapInfoHeader)); }
    int width() const { return m_width; }
    int height() const { return m_height; }
    int bitCount() const { return m_bitCount; }
    std::size_t stride() const { return m_stride; }
    std::size_t size() const { return m_size; }
    // Memory row y, 0 being the bottom row.
    std::uint8_t* row(int y) { return m_pixels + static_cast<std::size_t>(y) * m_stride; }
    // Row y counted from the top, as decoders deliver them.
    std::uint8_t* topRow(int y) { return row(m_height - 1 - y); }
    std::uint8_t* data() { return m_block; }

    // Ownership goes to the caller.
    void* release();

private:
    std::uint8_t* m_block = nullptr;
    std::uint8_t* m_pixels = nullptr;
    std::size_t m_size = 0;
    std::size_t m_stride = 0;
    int m_width = 0;
    int m_height = 0;
    int m_bitCount = 0;
};

// A packed bitmap that someone else owns, read for saving. Checks its header once.
class DibView {
public:
    // Accepts 40-byte headers with bitCount 1, 4, 8, 16, 24 or 32, compression 0 or 3,
    // positive width and height; anything else leaves the view invalid.
    explicit DibView(const void* block);

    bool valid() const { return m_valid; }
    const BitmapInfoHeader& header() const { return m_header; }
    int width() const { return m_header.width; }
    int height() const { return m_header.height; }
    int bitCount() const { return m_header.bitCount; }
    std::size_t stride() const { return m_stride; }
    std::span<const RgbQuad> palette() const { return m_palette; }
    const std::uint8_t* row(int y) const {
        return m_pixels + static_cast<std::size_t>(y) * m_stride;
    }
    const std::uint8_t* topRow(int y) const { return row(m_header.height - 1 - y); }
    // The three masks of a bit-field picture (red, green, blue), or the defaults.
    std::uint32_t redMask() const { return m_masks[0]; }
    std::uint32_t greenMask() const { return m_masks[1]; }
    std::uint32_t blueMask() const { return m_masks[2]; }
    // True when every palette entry is grey (r == g == b) and the palette is the ramp
    // 0..n-1 scaled to 0..255, so the picture can be stored as plain grey.
    bool isGreyRamp() const;

private:
    bool m_valid = false;
    BitmapInfoHeader m_header{};
    std::span<const RgbQuad> m_palette;
    const std::uint8_t* m_pixels = nullptr;
    std::size_t m_stride = 0;
    std::uint32_t m_masks[3] = {0, 0, 0};
};

} // namespace imagelib
