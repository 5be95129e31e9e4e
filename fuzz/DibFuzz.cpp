// Packed bitmaps as the clipboard or a camera hands them over: the byte hand-over, the
// size rules, the conversion to 24 bits and one transform, picked by the first byte.
#include "acquire/DibLayout.h"
#include "acquire/PackedDib.h"
#include "viewer/ImageTransforms.h"

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace {

// Larger conversions are legal but would only hit the fuzzer's memory limit.
constexpr std::uint64_t kMaxOutputBytes = std::uint64_t{4} << 20;

void touch(const lanmira::PackedDib& dib) {
    volatile std::uint8_t sink = 0;
    for (std::size_t i = 0; i < dib.size(); i += 61)
        sink = sink + dib.data()[i];
    if (dib)
        sink = sink + dib.data()[dib.size() - 1];
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size < 1)
        return 0;
    const std::uint8_t choice = data[0];
    ++data;
    --size;

    // The size rules must hold on blocks the hand-over refuses, too.
    lanmira::PackedDib raw = lanmira::PackedDib::allocate(size);
    if (raw) {
        std::memcpy(raw.data(), data, size);
        volatile std::uint64_t sink = lanmira::dibColourTableSize(raw) +
                                      lanmira::dibColourCount(raw) + lanmira::dibRowStride(raw) +
                                      lanmira::dibBlockSize(raw) +
                                      lanmira::dibPixelOffsetForDrawing(raw);
        (void)sink;
    }

    const lanmira::PackedDib dib = lanmira::dibFromBytes(data, size);
    if (!dib)
        return 0;
    const QByteArray bytes = lanmira::dibToBytes(dib);
    if (bytes.isEmpty() || static_cast<std::uint64_t>(bytes.size()) != lanmira::dibBlockSize(dib))
        __builtin_trap();

    const auto layout = lanmira::DibLayout::read(dib.data(), dib.size());
    const std::uint64_t rgbBytes =
        lanmira::DibLayout::rowStride(static_cast<std::uint64_t>(layout->width), 24) *
        static_cast<std::uint64_t>(layout->height);
    if (rgbBytes <= kMaxOutputBytes)
        touch(lanmira::dibToRgb24(dib));

    switch (choice % 5) {
    case 0:
        touch(lanmira::rotateCounterClockwise(dib));
        break;
    case 1:
        touch(lanmira::rotateClockwise(dib));
        break;
    case 2:
        touch(lanmira::rotate180(dib));
        break;
    case 3:
        touch(lanmira::mirrorLeftRight(dib));
        break;
    default:
        touch(lanmira::mirrorTopBottom(dib));
        break;
    }
    return 0;
}
