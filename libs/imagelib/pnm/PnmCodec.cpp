#include "imagelib/pnm/PnmCodec.h"

#include "imagelib/imagelib.h"

namespace imagelib {

std::uint32_t PnmCodec::format() const {
    return IMAGELIB_FMT_PNM;
}

bool PnmCodec::probe(std::span<const std::uint8_t> /*head*/) const {
    return false;
}

DecodeResult PnmCodec::decode(std::span<const std::uint8_t> /*bytes*/,
                              const DecodeRequest& /*request*/) const {
    DecodeResult r;
    r.error = "This program cannot read this kind of file yet.";
    return r;
}

const Codec& pnmCodec() {
    static const PnmCodec codec;
    return codec;
}

} // namespace imagelib
