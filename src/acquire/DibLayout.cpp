#include "acquire/DibLayout.h"

#include <algorithm>

namespace lanmira {
namespace {

std::uint16_t le16(const std::uint8_t* p) {
    return static_cast<std::uint16_t>(p[0] | (p[1] << 8));
}

std::uint32_t le32(const std::uint8_t* p) {
    return static_cast<std::uint32_t>(p[0]) | (static_cast<std::uint32_t>(p[1]) << 8) |
           (static_cast<std::uint32_t>(p[2]) << 16) | (static_cast<std::uint32_t>(p[3]) << 24);
}

bool knownDepth(int bitCount) {
    return bitCount == 1 || bitCount == 4 || bitCount == 8 || bitCount == 16 || bitCount == 24 ||
           bitCount == 32;
}

bool compressionFitsDepth(std::uint32_t compression, int bitCount) {
    switch (compression) {
    case DibLayout::kRgb:
        return true;
    case DibLayout::kRle8:
        return bitCount == 8;
    case DibLayout::kRle4:
        return bitCount == 4;
    case DibLayout::kBitFields:
        return bitCount == 16 || bitCount == 32;
    default:
        return false;
    }
}

} // namespace

std::optional<DibLayout> DibLayout::read(const std::uint8_t* block, std::size_t size) {
    if (!block || size < 4)
        return std::nullopt;
    DibLayout l;
    l.headerSize = le32(block);
    std::int64_t width = 0;
    std::int64_t height = 0;
    std::uint32_t coloursUsed = 0;
    std::uint32_t imageSize = 0;
    if (l.headerSize == kInfoHeaderSize) {
        if (size < kInfoHeaderSize)
            return std::nullopt;
        width = static_cast<std::int32_t>(le32(block + 4));
        height = static_cast<std::int32_t>(le32(block + 8));
        l.bitCount = le16(block + 14);
        l.compression = le32(block + 16);
        imageSize = le32(block + 20);
        coloursUsed = le32(block + 32);
    } else {
        // The core header's fields end at byte 12, whatever size the block claims for it.
        if (l.headerSize < 12 || size < 12)
            return std::nullopt;
        l.coreHeader = true;
        width = le16(block + 4);
        height = le16(block + 6);
        l.bitCount = le16(block + 10);
    }
    if (width <= 0 || height == 0 || !knownDepth(l.bitCount) ||
        !compressionFitsDepth(l.compression, l.bitCount))
        return std::nullopt;
    if (height < 0) {
        // Compressed streams only run bottom-up.
        if (l.compressed())
            return std::nullopt;
        l.topDown = true;
        height = -height;
    }
    l.width = static_cast<std::int32_t>(width);
    l.height = static_cast<std::int32_t>(height);

    const bool paletted = l.bitCount <= 8;
    if (l.coreHeader) {
        l.colourTableSize = paletted ? 3u << l.bitCount : 0;
        l.colourCount = paletted ? 1u << l.bitCount : 0;
    } else {
        // Taken to 16 bits, as every reader of these blocks has always done.
        l.colourTableSize =
            coloursUsed ? (coloursUsed * 4u) & 0xFFFFu : (paletted ? 4u << l.bitCount : 0);
        l.colourCount = coloursUsed ? coloursUsed : (paletted ? 1u << l.bitCount : 0);
        l.maskBytes = l.compression == kBitFields ? 12 : 0;
    }
    l.stride = rowStride(static_cast<std::uint64_t>(width), static_cast<std::uint32_t>(l.bitCount));
    l.pixelOffset = std::uint64_t{l.headerSize} + l.maskBytes + l.colourTableSize;
    l.pixelBytes = l.compressed() ? imageSize : l.stride * static_cast<std::uint64_t>(height);
    l.blockSize = l.pixelOffset + l.pixelBytes;
    if (l.blockSize > size)
        return std::nullopt;
    return l;
}

std::uint32_t DibLayout::usablePaletteEntries() const {
    if (bitCount > 8)
        return 0;
    return std::min(colourTableSize / tableEntrySize(), 1u << bitCount);
}

} // namespace lanmira
