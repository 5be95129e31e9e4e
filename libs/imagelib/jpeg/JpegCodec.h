#pragma once

#include "imagelib/core/Codec.h"

namespace imagelib {

// JPEG through libjpeg-turbo: baseline, progressive and arithmetic-coded files; greyscale
// becomes 8 bits with a grey ramp, colour, CMYK and YCCK become 24 bits. A thumbnail box
// decodes at the smallest DCT scale that still covers twice the box. Saves 8-bit grey and
// 24-bit pictures with a quality (option1, 1..100, 0 = 90) and progressive (option2 bit 0).
class JpegCodec final : public Codec {
public:
    std::uint32_t format() const override;
    bool probe(std::span<const std::uint8_t> head) const override;
    DecodeResult decode(std::span<const std::uint8_t> bytes,
                        const DecodeRequest& request) const override;
    bool canSave(const DibView& dib) const override;
    bool save(const DibView& dib, const SaveRequest& request, int fd,
              std::string& error) const override;
};

const Codec& jpegCodec();

} // namespace imagelib
