#include "imagelib/webp/WebpCodec.h"

#include "imagelib/core/WriteAll.h"
#include "imagelib/imagelib.h"
#include "imagelib/iopt.h"

#include <webp/decode.h>
#include <webp/demux.h>
#include <webp/encode.h>

#include <algorithm>
#include <cstring>
#include <memory>
#include <vector>

namespace imagelib {
namespace {

constexpr char kDamaged[] = "The WebP file is damaged or incomplete.";
constexpr int kDefaultQuality = 90;
constexpr int kMaxSide = 16383; // the format's own limit

// How far a WebP stream may expand before a claimed size counts as absurd. The encoder gets
// about 2,300 times out of a flat lossy picture and up to 100,000 times out of a flat
// lossless one, but lossless data can expand without bound (a one-symbol code costs no bits
// at all), so a bound is a choice: pictures up to the floor always open, and larger ones
// need data in proportion, which every real photograph or drawing of that size has. An
// animation's canvas is held twice by the decoder and touched for every frame, so it is
// bounded the same way.
constexpr std::uint64_t kLossyExpansion = 8192;
constexpr std::uint64_t kLosslessExpansion = 16384;
constexpr std::uint64_t kAlwaysPlausible = std::uint64_t{64} << 20;

bool plausible(std::int64_t width, std::int64_t height, int bitCount, bool lossy,
               std::size_t inputSize) {
    const std::uint64_t out =
        dibStride(static_cast<std::uint64_t>(width), static_cast<std::uint32_t>(bitCount)) *
        static_cast<std::uint64_t>(height);
    const std::uint64_t factor = lossy ? kLossyExpansion : kLosslessExpansion;
    return out <= kAlwaysPlausible || out / factor <= inputSize;
}

std::string statusText(VP8StatusCode status) {
    switch (status) {
    case VP8_STATUS_OUT_OF_MEMORY:
        return "There is not enough memory to open the image.";
    case VP8_STATUS_UNSUPPORTED_FEATURE:
        return "The WebP file uses a feature this program cannot read.";
    default:
        return kDamaged;
    }
}

// The smallest size of the picture's shape that still covers twice the box both ways; the
// picture's own size when that would be no reduction.
void reducedSize(int width, int height, const DecodeRequest& request, int& outWidth,
                 int& outHeight) {
    outWidth = width;
    outHeight = height;
    if (request.boxWidth <= 0 || request.boxHeight <= 0)
        return;
    const std::int64_t w = width;
    const std::int64_t h = height;
    const std::int64_t bw = 2 * static_cast<std::int64_t>(request.boxWidth);
    const std::int64_t bh = 2 * static_cast<std::int64_t>(request.boxHeight);
    std::int64_t sw = bw;
    std::int64_t sh = bh;
    if (w * bh >= h * bw)
        sw = (w * bh + h - 1) / h;
    else
        sh = (h * bw + w - 1) / w;
    if (sw < w && sh < h) {
        outWidth = static_cast<int>(sw);
        outHeight = static_cast<int>(sh);
    }
}

void zeroPadding(DibBuffer& dib) {
    const std::size_t used = static_cast<std::size_t>(dib.width()) * (dib.bitCount() / 8);
    if (used == dib.stride())
        return;
    for (int y = 0; y < dib.height(); ++y)
        std::memset(dib.row(y) + used, 0, dib.stride() - used);
}

DecodeResult decodeStill(std::span<const std::uint8_t> bytes, WebPDecoderConfig& config,
                         const DecodeRequest& request) {
    DecodeResult r;
    const WebPBitstreamFeatures& f = config.input;
    const int bitCount = f.has_alpha ? 32 : 24;
    r.fullWidth = f.width;
    r.fullHeight = f.height;
    r.fullBitCount = bitCount;
    if (!DibBuffer::sizeAcceptable(f.width, f.height, bitCount, r.error))
        return r;
    if (!plausible(f.width, f.height, bitCount, f.format == 1, bytes.size())) {
        r.error = "The WebP file claims a picture far larger than its data.";
        return r;
    }
    int width = 0;
    int height = 0;
    reducedSize(f.width, f.height, request, width, height);
    r.dib = DibBuffer::create(width, height, bitCount, 0, r.error);
    if (!r.dib)
        return r;
    if (width != f.width || height != f.height) {
        config.options.use_scaling = 1;
        config.options.scaled_width = width;
        config.options.scaled_height = height;
    }
    // Rows go straight into the bitmap; the flip gives them its bottom-up order.
    config.options.flip = 1;
    config.output.colorspace = f.has_alpha ? MODE_BGRA : MODE_BGR;
    config.output.is_external_memory = 1;
    config.output.u.RGBA.rgba = r.dib.row(0);
    config.output.u.RGBA.stride = static_cast<int>(r.dib.stride());
    config.output.u.RGBA.size = r.dib.stride() * static_cast<std::size_t>(height);
    const VP8StatusCode status = WebPDecode(bytes.data(), bytes.size(), &config);
    WebPFreeDecBuffer(&config.output);
    if (status != VP8_STATUS_OK) {
        r.dib = {};
        r.error = statusText(status);
        return r;
    }
    zeroPadding(r.dib);
    return r;
}

struct AnimDecoderDelete {
    void operator()(WebPAnimDecoder* d) const { WebPAnimDecoderDelete(d); }
};

// Frames are pages. Each is composed on the canvas over the ones before, so page n costs
// decoding the n frames before it too.
DecodeResult decodeAnimation(std::span<const std::uint8_t> bytes, const WebPBitstreamFeatures& f,
                             const DecodeRequest& request) {
    DecodeResult r;
    const int bitCount = f.has_alpha ? 32 : 24;
    r.fullWidth = f.width;
    r.fullHeight = f.height;
    r.fullBitCount = bitCount;
    // The decoder keeps two canvases of its own at four bytes a pixel.
    if (!DibBuffer::sizeAcceptable(f.width, f.height, 32, r.error))
        return r;
    if (!plausible(f.width, f.height, 32, false, bytes.size())) {
        r.error = "The WebP file claims a picture far larger than its data.";
        return r;
    }
    // An animation cannot be decoded reduced, and its two canvases cost twice a picture of
    // the same size: thumbnails included, the canvas is held to half the pixel budget.
    if (std::uint64_t{2} * static_cast<std::uint64_t>(f.width) *
            static_cast<std::uint64_t>(f.height) >
        kMaxPixels) {
        r.error = tooLargeText(f.width, f.height);
        return r;
    }
    WebPAnimDecoderOptions options;
    if (!WebPAnimDecoderOptionsInit(&options)) {
        r.error = "The WebP decoder could not be started.";
        return r;
    }
    options.color_mode = MODE_BGRA;
    options.use_threads = 0;
    const WebPData data{bytes.data(), bytes.size()};
    const std::unique_ptr<WebPAnimDecoder, AnimDecoderDelete> decoder(
        WebPAnimDecoderNew(&data, &options));
    WebPAnimInfo info;
    if (!decoder || !WebPAnimDecoderGetInfo(decoder.get(), &info) || info.frame_count == 0 ||
        info.canvas_width != static_cast<std::uint32_t>(f.width) ||
        info.canvas_height != static_cast<std::uint32_t>(f.height)) {
        r.error = kDamaged;
        return r;
    }
    r.pageCount = static_cast<int>(std::min<std::uint32_t>(info.frame_count, 1 << 30));
    if (request.page >= r.pageCount) {
        r.error = "The WebP file has no page " + std::to_string(request.page + 1) + ".";
        return r;
    }
    std::uint8_t* canvas = nullptr;
    for (int i = 0; i <= request.page; ++i) {
        int timestamp = 0;
        if (!WebPAnimDecoderGetNext(decoder.get(), &canvas, &timestamp)) {
            r.error = kDamaged;
            return r;
        }
    }
    r.dib = DibBuffer::create(f.width, f.height, bitCount, 0, r.error);
    if (!r.dib)
        return r;
    const auto w = static_cast<std::size_t>(f.width);
    for (int y = 0; y < f.height; ++y) {
        const std::uint8_t* src = canvas + static_cast<std::size_t>(y) * w * 4;
        std::uint8_t* dst = r.dib.topRow(y);
        if (bitCount == 32) {
            std::memcpy(dst, src, w * 4);
            continue;
        }
        for (std::size_t x = 0; x < w; ++x)
            std::memcpy(dst + 3 * x, src + 4 * x, 3);
    }
    zeroPadding(r.dib);
    return r;
}

bool standardMasks(const DibView& dib) {
    return dib.redMask() == 0x00FF0000 && dib.greenMask() == 0x0000FF00 &&
           dib.blueMask() == 0x000000FF;
}

// A 32-bit picture whose fourth bytes are all zero has no alpha: those bytes were never
// set. Bit-field pictures have no alpha mask at all.
bool hasAlpha(const DibView& dib) {
    if (dib.header().compression != kBiRgb)
        return false;
    for (int y = 0; y < dib.height(); ++y) {
        const std::uint8_t* row = dib.row(y);
        for (int x = 0; x < dib.width(); ++x)
            if (row[4 * x + 3] != 0)
                return true;
    }
    return false;
}

int writeToFd(const std::uint8_t* data, std::size_t size, const WebPPicture* picture) {
    return writeAll(*static_cast<const int*>(picture->custom_ptr), data, size) ? 1 : 0;
}

struct Picture {
    WebPPicture p;
    Picture() { WebPPictureInit(&p); }
    ~Picture() { WebPPictureFree(&p); }
    Picture(const Picture&) = delete;
    Picture& operator=(const Picture&) = delete;
};

// Rows are handed over top row first with a negative stride, which the importers walk up
// through the bottom-up bitmap without a copy.
bool importPicture(const DibView& dib, WebPPicture& picture) {
    const std::uint8_t* top = dib.topRow(0);
    const int stride = -static_cast<int>(dib.stride());
    switch (dib.bitCount()) {
    case 24:
        return WebPPictureImportBGR(&picture, top, stride) != 0;
    case 32:
        return hasAlpha(dib) ? WebPPictureImportBGRA(&picture, top, stride) != 0
                             : WebPPictureImportBGRX(&picture, top, stride) != 0;
    default: { // 8 bits: the palette is expanded to colour
        const auto w = static_cast<std::size_t>(dib.width());
        const auto pal = dib.palette();
        std::vector<std::uint8_t> rows(w * 3 * static_cast<std::size_t>(dib.height()));
        std::uint8_t* dst = rows.data();
        for (int y = 0; y < dib.height(); ++y) {
            const std::uint8_t* src = dib.topRow(y);
            for (std::size_t x = 0; x < w; ++x, dst += 3) {
                const RgbQuad q = src[x] < pal.size() ? pal[src[x]] : RgbQuad{0, 0, 0, 0};
                dst[0] = q.blue;
                dst[1] = q.green;
                dst[2] = q.red;
            }
        }
        return WebPPictureImportBGR(&picture, rows.data(), static_cast<int>(w * 3)) != 0;
    }
    }
}

} // namespace

std::uint32_t WebpCodec::format() const {
    return IMAGELIB_FMT_WEBP;
}

bool WebpCodec::probe(std::span<const std::uint8_t> head) const {
    return head.size() >= 12 && std::memcmp(head.data(), "RIFF", 4) == 0 &&
           std::memcmp(head.data() + 8, "WEBP", 4) == 0;
}

DecodeResult WebpCodec::decode(std::span<const std::uint8_t> bytes,
                               const DecodeRequest& request) const {
    WebPDecoderConfig config;
    if (!WebPInitDecoderConfig(&config)) {
        DecodeResult r;
        r.error = "The WebP decoder could not be started.";
        return r;
    }
    const VP8StatusCode status = WebPGetFeatures(bytes.data(), bytes.size(), &config.input);
    if (status != VP8_STATUS_OK) {
        DecodeResult r;
        r.error = statusText(status);
        return r;
    }
    if (config.input.has_animation)
        return decodeAnimation(bytes, config.input, request);
    if (request.page > 0) {
        DecodeResult r;
        r.error = "The WebP file has no page " + std::to_string(request.page + 1) + ".";
        return r;
    }
    return decodeStill(bytes, config, request);
}

bool WebpCodec::canSave(const DibView& dib) const {
    if (!dib.valid())
        return false;
    switch (dib.bitCount()) {
    case 8:
    case 24:
        return true;
    case 32:
        return standardMasks(dib);
    default:
        return false;
    }
}

bool WebpCodec::save(const DibView& dib, const SaveRequest& request, int fd,
                     std::string& error) const {
    if (!canSave(dib)) {
        error = "The picture's colour depth cannot be stored in that format.";
        return false;
    }
    if (dib.width() > kMaxSide || dib.height() > kMaxSide) {
        error = "The picture is too large for a WebP file (at most 16383 pixels a side).";
        return false;
    }
    WebPConfig config;
    if (!WebPConfigInit(&config)) {
        error = "The WebP encoder could not be started.";
        return false;
    }
    const std::uint32_t quality = request.option1 == 0 ? kDefaultQuality : request.option1;
    config.quality = static_cast<float>(std::min<std::uint32_t>(quality, 100));
    config.lossless = (request.option2 & IOPT_WEBP_LOSSLESS) ? 1 : 0;

    Picture picture;
    picture.p.width = dib.width();
    picture.p.height = dib.height();
    // Lossless coding works on ARGB, lossy on YUV; importing into the one it uses saves a
    // conversion.
    picture.p.use_argb = config.lossless;
    if (!importPicture(dib, picture.p)) {
        error = "There is not enough memory to save the image.";
        return false;
    }
    int target = fd;
    picture.p.writer = writeToFd;
    picture.p.custom_ptr = &target;
    if (!WebPEncode(&config, &picture.p)) {
        error = picture.p.error_code == VP8_ENC_ERROR_BAD_WRITE
                    ? "The file could not be written (the disk may be full)."
                    : "The picture could not be encoded as WebP.";
        return false;
    }
    return true;
}

const Codec& webpCodec() {
    static const WebpCodec codec;
    return codec;
}

} // namespace imagelib
