#pragma once

#include <array>
#include <cstdint>

namespace lanmira {

// The camera's input levels: a low and a high edge per channel, blue, green, red, grey.
// Channel 4 means the three colours together; their common edges are the outermost ones.
struct HistogramLevels {
    static constexpr int kGrey = 3;
    static constexpr int kAllColours = 4;

    // As pre-set before every read, so a failed read leaves the full range.
    std::array<std::uint16_t, 4> low{0, 0, 0, 0};
    std::array<std::uint16_t, 4> high{255, 255, 255, 255};

    // The edges the edits and markers show for a channel (0..4).
    int lowEdge(int channel) const;
    int highEdge(int channel) const;

    // Choosing "all colours": every colour channel takes the common edges.
    void joinColours();

    // A typed edge (already clamped to 0..255). An edge typed past the other swaps with it.
    void typeLow(int channel, int value);
    void typeHigh(int channel, int value);

    // A dropped marker. With all colours the edge is set without any crossing test; with one
    // channel a crossing swaps, and equal edges are pulled one apart so both stay draggable.
    void dropLow(int channel, int value);
    void dropHigh(int channel, int value);

    friend bool operator==(const HistogramLevels&, const HistogramLevels&) = default;

private:
    void setColours(int lowValue, int highValue);
};

} // namespace lanmira
