#include "imagelib/webp/WebpCodec.h"

#include "imagelib/imagelib.h"

namespace imagelib {

std::uint32_t WebpCodec::format() const {
    return IMAGELIB_FMT_WEBP;
}

bool WebpCodec::probe(std::span<const std::uint8_t> /*head*/) const {
    return false;
}

DecodeResult WebpCodec::decode(std::span<const std::uint8_t> /*bytes*/,
                               const DecodeRequest& /*request*/) const {
    DecodeResult r;
    r.error = "This program cannot read this kind of file yet.";
    return r;
}

const Codec& webpCodec() {
    static const WebpCodec codec;
    return codec;
}

} // namespace imagelib
