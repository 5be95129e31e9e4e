#pragma once

#include "imagelib/core/Codec.h"

namespace imagelib {

class WebpCodec final : public Codec {
public:
    std::uint32_t format() const override;
    bool probe(std::span<const std::uint8_t> head) const override;
    DecodeResult decode(std::span<const std::uint8_t> bytes,
                        const DecodeRequest& request) const override;
};

const Codec& webpCodec();

} // namespace imagelib
