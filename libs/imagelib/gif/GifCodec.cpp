#include "imagelib/gif/GifCodec.h"

#include "imagelib/imagelib.h"

namespace imagelib {

std::uint32_t GifCodec::format() const {
    return IMAGELIB_FMT_GIF;
}

bool GifCodec::probe(std::span<const std::uint8_t> /*head*/) const {
    return false;
}

DecodeResult GifCodec::decode(std::span<const std::uint8_t> /*bytes*/,
                              const DecodeRequest& /*request*/) const {
    DecodeResult r;
    r.error = "This program cannot read this kind of file yet.";
    return r;
}

const Codec& gifCodec() {
    static const GifCodec codec;
    return codec;
}

} // namespace imagelib
