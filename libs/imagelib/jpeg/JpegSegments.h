#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace imagelib {

// Joins baseline JPEG streams that each code one horizontal band of a picture, every band
// but the last a whole number of restart intervals tall and all made with the same tables
// and restart interval, into the one stream a single coder would have made with that
// interval: the first band's headers with the whole height, each band's entropy-coded data
// with a restart marker between bands and the markers inside renumbered in sequence.
// Empty when a band is not such a stream.
std::vector<std::uint8_t> joinJpegBands(std::span<const std::span<const std::uint8_t>> bands,
                                        std::uint16_t height);

} // namespace imagelib
