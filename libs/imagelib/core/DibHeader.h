#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace imagelib {

// The 40-byte bitmap information header, field for field, little-endian on disk and in
// memory (the library runs on little-endian machines only; see the static_assert).
struct BitmapInfoHeader {
    std::uint32_t size;
    std::int32_t width;
    std::int32_t height;
    std::uint16_t planes;
    std::uint16_t bitCount;
    std::uint32_t compression;
    std::uint32_t sizeImage;
    std::int32_t xPelsPerMeter;
    std::int32_t yPelsPerMeter;
    std::uint32_t clrUsed;
    std::uint32_t clrImportant;
};
static_assert(sizeof(BitmapInfoHeader) == 40);

struct RgbQuad {
    std::uint8_t blue, green, red, reserved;
};
static_assert(sizeof(RgbQuad) == 4);

inline constexpr std::uint32_t kBiRgb = 0;
inline constexpr std::uint32_t kBiRle8 = 1;
inline constexpr std::uint32_t kBiRle4 = 2;
inline constexpr std::uint32_t kBiBitfields = 3;

// Bytes of one row of `width` pixels at `bitCount`, padded to 4 bytes.
constexpr std::uint64_t dibStride(std::uint64_t width, std::uint32_t bitCount) {
    return ((width * bitCount + 31) / 32) * 4;
}

inline std::uint16_t readLe16(const std::uint8_t* p) {
    return static_cast<std::uint16_t>(p[0] | (p[1] << 8));
}
inline std::uint32_t readLe32(const std::uint8_t* p) {
    return static_cast<std::uint32_t>(p[0]) | (static_cast<std::uint32_t>(p[1]) << 8) |
           (static_cast<std::uint32_t>(p[2]) << 16) | (static_cast<std::uint32_t>(p[3]) << 24);
}
inline void writeLe16(std::uint8_t* p, std::uint16_t v) {
    p[0] = static_cast<std::uint8_t>(v);
    p[1] = static_cast<std::uint8_t>(v >> 8);
}
inline void writeLe32(std::uint8_t* p, std::uint32_t v) {
    for (int i = 0; i < 4; ++i)
        p[i] = static_cast<std::uint8_t>(v >> (8 * i));
}

} // namespace imagelib
