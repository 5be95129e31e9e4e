#pragma once

#include "imagelib/core/Codec.h"

namespace imagelib {

// Portable anymaps, our own reader and writer. Reads plain and raw bitmaps, grey maps and
// pixmaps (P1 to P6) with any maximum value up to 65535; writes raw P4 (black and white),
// P5 (grey palettes) and P6 (24-bit and colour palettes).
class PnmCodec final : public Codec {
public:
    std::uint32_t format() const override;
    bool probe(std::span<const std::uint8_t> head) const override;
    DecodeResult decode(std::span<const std::uint8_t> bytes,
                        const DecodeRequest& request) const override;
    bool canSave(const DibView& dib) const override;
    bool save(const DibView& dib, const SaveRequest& request, int fd,
              std::string& error) const override;
};

const Codec& pnmCodec();

} // namespace imagelib
