#pragma once

#include "imagelib/core/Codec.h"

namespace imagelib {

// GIF through giflib, from memory. Each frame is a page: the frame alone, drawn onto the
// logical screen filled with the background colour, as an 8-bit picture with the frame's
// colour table. Saves pictures of 8 bits or less as a single frame.
class GifCodec final : public Codec {
public:
    std::uint32_t format() const override;
    bool probe(std::span<const std::uint8_t> head) const override;
    DecodeResult decode(std::span<const std::uint8_t> bytes,
                        const DecodeRequest& request) const override;
    bool canSave(const DibView& dib) const override;
    bool save(const DibView& dib, const SaveRequest& request, int fd,
              std::string& error) const override;
};

const Codec& gifCodec();

} // namespace imagelib
