#include "imagelib/bmp/BmpCodec.h"
#include "imagelib/core/Codec.h"
#include "imagelib/gif/GifCodec.h"
#include "imagelib/jpeg/JpegCodec.h"
#include "imagelib/png/PngCodec.h"
#include "imagelib/pnm/PnmCodec.h"
#include "imagelib/tiff/TiffCodec.h"
#include "imagelib/webp/WebpCodec.h"

#include <algorithm>

namespace imagelib {

bool Codec::save(const DibView& /*dib*/, const SaveRequest& /*request*/, int /*fd*/,
                 std::string& error) const {
    error = "This program cannot write files in that format.";
    return false;
}

const std::vector<const Codec*>& allCodecs() {
    static const std::vector<const Codec*> codecs = {&bmpCodec(),  &jpegCodec(), &pngCodec(),
                                                     &tiffCodec(), &gifCodec(),  &webpCodec(),
                                                     &pnmCodec()};
    return codecs;
}

const Codec* codecForFormat(std::uint32_t format) {
    for (const Codec* c : allCodecs())
        if (c->format() == format)
            return c;
    return nullptr;
}

const Codec* codecForBytes(std::span<const std::uint8_t> bytes) {
    const auto head = bytes.first(std::min<std::size_t>(bytes.size(), 64));
    for (const Codec* c : allCodecs())
        if (c->probe(head))
            return c;
    return nullptr;
}

} // namespace imagelib
