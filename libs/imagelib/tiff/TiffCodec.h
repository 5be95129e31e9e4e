#pragma once

#include "imagelib/core/Codec.h"

namespace imagelib {

// TIFF and BigTIFF through libtiff, read from memory: every page, strips and tiles, planar and
// interleaved samples, grey, palette, RGB(A), and CMYK, YCbCr and the rest through libtiff's
// RGBA conversion. Saves one page a call, as a new file or appended to the file's pages.
class TiffCodec final : public Codec {
public:
    std::uint32_t format() const override;
    bool probe(std::span<const std::uint8_t> head) const override;
    DecodeResult decode(std::span<const std::uint8_t> bytes,
                        const DecodeRequest& request) const override;
    bool canSave(const DibView& dib) const override;
    bool save(const DibView& dib, const SaveRequest& request, int fd,
              std::string& error) const override;
};

const Codec& tiffCodec();

} // namespace imagelib
