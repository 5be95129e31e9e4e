#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>

namespace lanmira {

// Where the parts of a packed bitmap lie, read once from its header and checked against the
// bytes that hold it. Every operation on a PackedDib starts here, so none of them reads
// past its block.
struct DibLayout {
    static constexpr std::uint32_t kInfoHeaderSize = 40;
    static constexpr std::uint32_t kRgb = 0;
    static constexpr std::uint32_t kRle8 = 1;
    static constexpr std::uint32_t kRle4 = 2;
    static constexpr std::uint32_t kBitFields = 3;

    std::uint32_t headerSize = 0;
    // Any header size but 40 is read as the older 12-byte core header.
    bool coreHeader = false;
    std::int32_t width = 0;
    // Rows, always positive; topDown tells a negative header height.
    std::int32_t height = 0;
    bool topDown = false;
    int bitCount = 0;
    std::uint32_t compression = kRgb;
    std::uint32_t colourTableSize = 0;
    std::uint32_t colourCount = 0;
    // The three masks after an information header with bit fields.
    std::uint32_t maskBytes = 0;
    std::uint64_t stride = 0;
    std::uint64_t pixelOffset = 0;
    // Compressed pictures hold their stream's length (the header's image size) here.
    std::uint64_t pixelBytes = 0;
    std::uint64_t blockSize = 0;

    // nullopt when the header is cut short, describes no picture (width or height 0, a
    // depth or compression the layout does not know) or claims more bytes than `size`.
    static std::optional<DibLayout> read(const std::uint8_t* block, std::size_t size);

    // Bytes of a row of `width` pixels, padded to 4 bytes.
    static constexpr std::uint64_t rowStride(std::uint64_t width, std::uint32_t bitCount) {
        return ((bitCount * width + 31) / 32) * 4;
    }

    bool compressed() const { return compression == kRle8 || compression == kRle4; }
    std::uint32_t tableEntrySize() const { return coreHeader ? 3 : 4; }
    // Entries a pixel index can reach; the table may be shorter than the depth allows.
    std::uint32_t usablePaletteEntries() const;
};

} // namespace lanmira
