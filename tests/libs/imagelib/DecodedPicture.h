#pragma once

#include "imagelib/core/DibHeader.h"
#include "imagelib/imagelib.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

// A picture the library returned, with its parameter block: what every codec suite reads.
struct DecodedPicture {
    std::unique_ptr<void, decltype(&ImageLib_Free)> dib{nullptr, &ImageLib_Free};
    ImageIoParams params{};

    // The library's texts are ASCII sentences.
    std::string error() const {
        std::string s;
        for (const char16_t* p = params.errorText; *p; ++p)
            s += static_cast<char>(*p);
        return s;
    }
    const imagelib::BitmapInfoHeader& header() const {
        return *static_cast<const imagelib::BitmapInfoHeader*>(dib.get());
    }
    // Row y counted from the top, past the colour table the header announces.
    const std::uint8_t* topRow(int y) const {
        const auto& h = header();
        const std::size_t colours = h.bitCount <= 8 ? h.clrUsed : 0;
        return static_cast<const std::uint8_t*>(dib.get()) + 40 + colours * 4 +
               imagelib::dibStride(h.width, h.bitCount) *
                   static_cast<std::size_t>(h.height - 1 - y);
    }
};
