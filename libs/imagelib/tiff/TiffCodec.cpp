#include "imagelib/tiff/TiffCodec.h"

#include "imagelib/imagelib.h"

namespace imagelib {

std::uint32_t TiffCodec::format() const {
    return IMAGELIB_FMT_TIFF;
}

bool TiffCodec::probe(std::span<const std::uint8_t> /*head*/) const {
    return false;
}

DecodeResult TiffCodec::decode(std::span<const std::uint8_t> /*bytes*/,
                               const DecodeRequest& /*request*/) const {
    DecodeResult r;
    r.error = "This program cannot read this kind of file yet.";
    return r;
}

const Codec& tiffCodec() {
    static const TiffCodec codec;
    return codec;
}

} // namespace imagelib
