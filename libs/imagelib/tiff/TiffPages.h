#pragma once

#include <cstdint>
#include <span>

namespace imagelib {

inline constexpr int kMaxTiffPages = 10000;

// Directories in a TIFF or BigTIFF file, found by following the chain from the header
// without parsing them. The walk ends at an offset outside the file, at one already seen (a
// loop) and after kMaxTiffPages; 0 means the header leads to no directory at all.
int countTiffPages(std::span<const std::uint8_t> bytes);

} // namespace imagelib
