#pragma once

#include "imagelib/core/Codec.h"

namespace imagelib {

// PNG through libpng, from memory. Palette pictures keep their palette (2-bit ones become
// 4-bit), grey ones become 8-bit grey (1-bit stays black and white), colour 24-bit and
// anything with alpha 32-bit; 16-bit samples are scaled to 8. Saves every depth a packed
// bitmap holds, 16-bit as 24.
class PngCodec final : public Codec {
public:
    std::uint32_t format() const override;
    bool probe(std::span<const std::uint8_t> head) const override;
    DecodeResult decode(std::span<const std::uint8_t> bytes,
                        const DecodeRequest& request) const override;
    bool canSave(const DibView& dib) const override;
    bool save(const DibView& dib, const SaveRequest& request, int fd,
              std::string& error) const override;
};

const Codec& pngCodec();

} // namespace imagelib
