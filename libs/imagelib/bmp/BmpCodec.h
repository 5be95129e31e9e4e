#pragma once

#include "imagelib/core/Codec.h"

namespace imagelib {

// Windows bitmaps: our own reader (core, information and V4/V5 headers; 1, 4, 8 bits with a
// palette, RLE4 and RLE8, 16 and 32 bits with or without bit fields, 24 bits, top-down
// files) and writer (every depth a packed bitmap can hold).
class BmpCodec final : public Codec {
public:
    std::uint32_t format() const override;
    bool probe(std::span<const std::uint8_t> head) const override;
    DecodeResult decode(std::span<const std::uint8_t> bytes,
                        const DecodeRequest& request) const override;
    bool canSave(const DibView& dib) const override;
    bool save(const DibView& dib, const SaveRequest& request, int fd,
              std::string& error) const override;
};

const Codec& bmpCodec();

} // namespace imagelib
