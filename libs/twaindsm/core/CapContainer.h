#pragma once

#include "twain/twain.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

namespace twaindsm {

// A capability's value as the four containers carry it. Items are kept as the 32-bit words
// a one-value container holds them in (a TW_FIX32 in its memory layout), so every numeric
// item type round-trips unchanged. Frames and strings are not used by our capabilities and
// are refused.
struct CapContainer {
    TW_UINT16 conType = TWON_ONEVALUE;
    TW_UINT16 itemType = TWTY_UINT16;
    std::vector<TW_UINT32> items; // one-value: 1; range: min, max, step, default, current
    TW_UINT32 currentIndex = 0;   // enumeration
    TW_UINT32 defaultIndex = 0;   // enumeration

    static CapContainer oneValue(TW_UINT16 type, TW_UINT32 item) {
        return {TWON_ONEVALUE, type, {item}, 0, 0};
    }

    // The value a set means: the one value, the enumeration's current item or the range's
    // current value; nullopt for an array or an index out of the list.
    std::optional<TW_UINT32> current() const;

    // Reads a container of `conType` from `size` bytes; nullopt when the bytes are too few
    // for what the header claims, or the item type has no numeric word.
    static std::optional<CapContainer> read(TW_UINT16 conType, const void* data, std::size_t size);
    // A block made with malloc, for the receiver to free; null when memory is short.
    void* write() const;
};

// Bytes one item takes in an enumeration or array; 0 for item types we refuse.
std::size_t capItemSize(TW_UINT16 itemType);
// Sign-extends an item word of its type into a plain integer.
std::int64_t capItemToInt(TW_UINT16 itemType, TW_UINT32 word);

TW_UINT32 fix32Word(double value);
double fix32Value(TW_UINT32 word);

} // namespace twaindsm
