// One decoder, built once per codec (LANMIRA_FUZZ_CODEC names its accessor). The first
// input byte chooses the page, whether a reduced thumbnail decode is asked for and its box:
// the browser's 96, or 1 to 31 so that small inputs reach the reducing paths too.
#include "imagelib/bmp/BmpCodec.h"
#include "imagelib/gif/GifCodec.h"
#include "imagelib/jpeg/JpegCodec.h"
#include "imagelib/png/PngCodec.h"
#include "imagelib/pnm/PnmCodec.h"
#include "imagelib/tiff/TiffCodec.h"
#include "imagelib/webp/WebpCodec.h"

#include <cstddef>
#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size < 1)
        return 0;
    imagelib::DecodeRequest request;
    request.page = data[0] & 0x03;
    if (data[0] & 0x04) {
        const int box = data[0] >> 3;
        request.boxWidth = box ? box : 96;
        request.boxHeight = request.boxWidth;
    }
    const imagelib::Codec& codec = imagelib::LANMIRA_FUZZ_CODEC();
    imagelib::DecodeResult r = codec.decode({data + 1, size - 1}, request);
    if (r.dib) {
        // Touch every row so that a row pointer past the block shows up under ASan.
        volatile std::uint8_t sink = 0;
        for (int y = 0; y < r.dib.height(); ++y)
            sink = sink + r.dib.row(y)[r.dib.stride() - 1];
    }
    return 0;
}
