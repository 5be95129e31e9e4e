#pragma once

#include "acquire/PackedDib.h"

#include <cstdint>
#include <initializer_list>
#include <vector>

// Builds packed bitmaps byte by byte, so tests say exactly what a block holds.
namespace dibmaker {

using Bytes = std::vector<std::uint8_t>;

inline void put16(Bytes& b, std::uint32_t v) {
    b.push_back(static_cast<std::uint8_t>(v));
    b.push_back(static_cast<std::uint8_t>(v >> 8));
}

inline void put32(Bytes& b, std::uint32_t v) {
    put16(b, v & 0xFFFF);
    put16(b, v >> 16);
}

inline Bytes infoHeader(std::int32_t width, std::int32_t height, int bitCount,
                        std::uint32_t compression = 0, std::uint32_t coloursUsed = 0,
                        std::uint32_t imageSize = 0) {
    Bytes b;
    for (std::uint32_t v :
         {40u, static_cast<std::uint32_t>(width), static_cast<std::uint32_t>(height)})
        put32(b, v);
    put16(b, 1);
    put16(b, static_cast<std::uint32_t>(bitCount));
    // 72 dpi, so a test can see the resolution survive.
    for (std::uint32_t v : {compression, imageSize, 2835u, 2835u, coloursUsed, 0u})
        put32(b, v);
    return b;
}

inline Bytes coreHeader(std::uint16_t width, std::uint16_t height, int bitCount) {
    Bytes b;
    put32(b, 12);
    put16(b, width);
    put16(b, height);
    put16(b, 1);
    put16(b, static_cast<std::uint32_t>(bitCount));
    return b;
}

inline Bytes withMasks(Bytes b, std::uint32_t red, std::uint32_t green, std::uint32_t blue) {
    for (std::uint32_t v : {red, green, blue})
        put32(b, v);
    return b;
}

// `head` followed by `bytes` and then `zeros` zero bytes.
inline Bytes cat(Bytes head, std::initializer_list<std::uint8_t> bytes, std::size_t zeros = 0) {
    head.insert(head.end(), bytes);
    head.insert(head.end(), zeros, 0);
    return head;
}

inline lanmira::PackedDib toDib(const Bytes& b) {
    return lanmira::dibFromBytes(b.data(), b.size());
}

} // namespace dibmaker
