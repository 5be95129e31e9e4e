#pragma once

#include <cstdint>
#include <cstdlib>
#include <memory>
#include <vector>

namespace twaindsm {

// One scanned page as the scanner delivered it: rows top-down, each `bytesPerLine` long;
// black-and-white pages with 1 meaning black, colour pages as R, G, B bytes.
struct ScanPage {
    enum class Kind { BlackWhite, Gray, Rgb };
    Kind kind = Kind::Gray;
    std::int32_t width = 0;
    std::int32_t height = 0;
    std::uint32_t bytesPerLine = 0;
    double dpi = 0;
    std::vector<std::uint8_t> data;
    // The page as a packed bitmap (a malloc block), made on the scan thread when the
    // application takes native transfers; `data` is then released.
    std::unique_ptr<void, decltype(&std::free)> dib{nullptr, &std::free};

    int bitsPerPixel() const { return kind == Kind::BlackWhite ? 1 : kind == Kind::Gray ? 8 : 24; }
};

} // namespace twaindsm
