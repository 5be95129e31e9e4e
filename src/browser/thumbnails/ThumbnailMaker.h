#pragma once

#include "browser/BrowserItem.h"

#include <QSize>
#include <QString>

#include <cstdint>

namespace lanmira {

// Makes the two thumbnails of an image: 96 × 96 and 32 × 32 boxes, never enlarged.
class ThumbnailMaker {
public:
    static constexpr int kLargeBox = 96;
    static constexpr int kSmallBox = 32;

    struct Result {
        Thumbnail large;
        Thumbnail small;
        std::int32_t imageWidth = 0; // of the full image
        std::int32_t imageHeight = 0;
        std::uint32_t bitsPerPixel = 0;
    };

    // Both thumbnails empty when the file cannot be decoded.
    static Result make(const QString& path);

    // The thumbnail size of a w × h image in a box (the reduced side keeps the parity of
    // the box side; each side at least 1).
    static QSize fit(std::int32_t w, std::int32_t h, std::int32_t boxW, std::int32_t boxH);

    // 24-bit resampling: area-weighted mean when shrinking in both directions, else
    // bilinear. `src` rows are bottom-up with the given stride.
    static Thumbnail scale24(const std::uint8_t* src, std::int32_t srcW, std::int32_t srcH,
                             std::uint64_t srcStride, std::int32_t w, std::int32_t h);
    // Nearest-neighbour stretch of a 24-bit picture (pictures of other depths are stretched
    // the same way, their picked rows turned into 24 bits one at a time).
    static Thumbnail stretch24(const std::uint8_t* src, std::int32_t srcW, std::int32_t srcH,
                               std::uint64_t srcStride, std::int32_t w, std::int32_t h);
};

} // namespace lanmira
