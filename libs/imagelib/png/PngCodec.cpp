#include "imagelib/png/PngCodec.h"

#include "imagelib/imagelib.h"

namespace imagelib {

std::uint32_t PngCodec::format() const {
    return IMAGELIB_FMT_PNG;
}

bool PngCodec::probe(std::span<const std::uint8_t> /*head*/) const {
    return false;
}

DecodeResult PngCodec::decode(std::span<const std::uint8_t> /*bytes*/,
                              const DecodeRequest& /*request*/) const {
    DecodeResult r;
    r.error = "This program cannot read this kind of file yet.";
    return r;
}

const Codec& pngCodec() {
    static const PngCodec codec;
    return codec;
}

} // namespace imagelib
