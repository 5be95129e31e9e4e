#include "imagelib/jpeg/JpegSegments.h"

#include <cstring>

namespace imagelib {
namespace {

constexpr std::uint8_t kMarker = 0xFF;
constexpr std::uint8_t kSoi = 0xD8, kEoi = 0xD9, kSos = 0xDA, kSof0 = 0xC0, kSof1 = 0xC1;
constexpr std::uint8_t kRst0 = 0xD0;

struct Band {
    std::size_t sof = 0;  // offset of the frame header's marker
    std::size_t data = 0; // first byte after the scan header
    std::size_t end = 0;  // offset of the closing EOI
};

// Walks the marker segments up to the scan header; false for anything unexpected.
bool parse(std::span<const std::uint8_t> s, Band& band) {
    if (s.size() < 4 || s[0] != kMarker || s[1] != kSoi || s[s.size() - 2] != kMarker ||
        s[s.size() - 1] != kEoi)
        return false;
    band.end = s.size() - 2;
    bool haveFrame = false;
    for (std::size_t at = 2; at + 4 <= band.end;) {
        if (s[at] != kMarker)
            return false;
        const std::uint8_t code = s[at + 1];
        const std::size_t length = (std::size_t(s[at + 2]) << 8) | s[at + 3];
        if (length < 2 || at + 2 + length > band.end)
            return false;
        if (code == kSof0 || code == kSof1) {
            if (length < 8)
                return false;
            band.sof = at;
            haveFrame = true;
        }
        at += 2 + length;
        if (code == kSos) {
            band.data = at;
            return haveFrame;
        }
    }
    return false;
}

} // namespace

std::vector<std::uint8_t> joinJpegBands(std::span<const std::span<const std::uint8_t>> bands,
                                        std::uint16_t height) {
    std::vector<std::uint8_t> out;
    if (bands.empty())
        return out;
    std::size_t total = 0;
    std::vector<Band> parsed(bands.size());
    for (std::size_t i = 0; i < bands.size(); ++i) {
        if (!parse(bands[i], parsed[i]))
            return out;
        total += bands[i].size();
    }
    out.reserve(total + 2 * bands.size());
    const std::span<const std::uint8_t> first = bands[0];
    out.insert(out.end(), first.begin(), first.begin() + std::ptrdiff_t(parsed[0].data));
    out[parsed[0].sof + 5] = static_cast<std::uint8_t>(height >> 8);
    out[parsed[0].sof + 6] = static_cast<std::uint8_t>(height & 0xFF);
    unsigned restarts = 0;
    for (std::size_t i = 0; i < bands.size(); ++i) {
        if (i > 0) {
            out.push_back(kMarker);
            out.push_back(static_cast<std::uint8_t>(kRst0 + (restarts++ & 7)));
        }
        const std::span<const std::uint8_t> band = bands[i];
        std::size_t from = out.size();
        out.insert(out.end(), band.begin() + std::ptrdiff_t(parsed[i].data),
                   band.begin() + std::ptrdiff_t(parsed[i].end));
        // Coded data never holds 0xFF followed by anything but a stuffed zero or a marker,
        // so a restart marker found here is one.
        for (;;) {
            auto* p = static_cast<std::uint8_t*>(
                std::memchr(out.data() + from, kMarker, out.size() - from));
            if (!p || p + 1 >= out.data() + out.size())
                break;
            if ((p[1] & 0xF8) == kRst0)
                p[1] = static_cast<std::uint8_t>(kRst0 + (restarts++ & 7));
            from = static_cast<std::size_t>(p + 2 - out.data());
        }
    }
    out.push_back(kMarker);
    out.push_back(kEoi);
    return out;
}

} // namespace imagelib
