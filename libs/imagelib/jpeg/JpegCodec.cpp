#include "imagelib/jpeg/JpegCodec.h"

#include "imagelib/imagelib.h"

namespace imagelib {

std::uint32_t JpegCodec::format() const {
    return IMAGELIB_FMT_JPEG;
}

bool JpegCodec::probe(std::span<const std::uint8_t> /*head*/) const {
    return false;
}

DecodeResult JpegCodec::decode(std::span<const std::uint8_t> /*bytes*/,
                               const DecodeRequest& /*request*/) const {
    DecodeResult r;
    r.error = "This program cannot read this kind of file yet.";
    return r;
}

const Codec& jpegCodec() {
    static const JpegCodec codec;
    return codec;
}

} // namespace imagelib
