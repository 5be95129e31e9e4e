#pragma once

#include "imagelib/core/Codec.h"

namespace imagelib {

// WebP through libwebp. Still pictures decode to 24 bits, or 32 with alpha, straight into
// the bitmap (reduced for thumbnails); the frames of an animation are its pages, composed
// on the canvas as a player shows them. Saves 8-bit (expanded), 24-bit and 32-bit pictures,
// lossy or lossless.
class WebpCodec final : public Codec {
public:
    std::uint32_t format() const override;
    bool probe(std::span<const std::uint8_t> head) const override;
    DecodeResult decode(std::span<const std::uint8_t> bytes,
                        const DecodeRequest& request) const override;
    bool canSave(const DibView& dib) const override;
    bool save(const DibView& dib, const SaveRequest& request, int fd,
              std::string& error) const override;
};

const Codec& webpCodec();

} // namespace imagelib
