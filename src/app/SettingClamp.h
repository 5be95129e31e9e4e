#pragma once

#include <cstdint>

namespace lanmira {

// Clamps a stored 32-bit setting compared without sign, so a stored negative value counts
// as a very large number and ends up at `hi`.
constexpr uint32_t clampUnsigned(int32_t stored, uint32_t lo, uint32_t hi) {
    const auto value = static_cast<uint32_t>(stored);
    return value < lo ? lo : (value > hi ? hi : value);
}

} // namespace lanmira
