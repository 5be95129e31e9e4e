#pragma once

#include <bit>
#include <cstdint>

namespace imagelib {

// One colour channel of a 16- or 32-bit bit-field pixel, scaled to 8 bits: wide channels
// keep their top bits, narrow ones are stretched with rounding (5 bits: 31 -> 255).
class MaskChannel {
public:
    explicit MaskChannel(std::uint32_t mask)
        : m_mask(mask), m_shift(mask ? std::countr_zero(mask) : 0),
          m_bits(mask ? std::popcount(mask >> m_shift) : 0) {}

    std::uint8_t value(std::uint32_t pixel) const {
        if (!m_bits)
            return 0;
        const std::uint32_t v = (pixel & m_mask) >> m_shift;
        if (m_bits >= 8)
            return static_cast<std::uint8_t>(v >> (m_bits - 8));
        const std::uint32_t max = (1u << m_bits) - 1;
        return static_cast<std::uint8_t>((v * 255 + max / 2) / max);
    }

private:
    std::uint32_t m_mask;
    int m_shift;
    int m_bits;
};

} // namespace imagelib
