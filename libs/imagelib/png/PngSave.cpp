#include "imagelib/core/MaskChannel.h"
#include "imagelib/core/WriteAll.h"
#include "imagelib/png/PngCodec.h"
#include "imagelib/png/PngGlue.h"

#include <algorithm>
#include <bit>
#include <vector>

namespace imagelib {
namespace {

using pngglue::guarded;

struct Sink {
    int fd = -1;
    bool failed = false;
};

void writeToFd(png_structp png, png_bytep data, std::size_t n) {
    auto* sink = static_cast<Sink*>(png_get_io_ptr(png));
    if (!writeAll(sink->fd, data, n)) {
        sink->failed = true;
        png_error(png, "write failed");
    }
}

// The temporary file is flushed once, when it is committed.
void flushNothing(png_structp /*png*/) {}

class Writer {
public:
    Writer()
        : png(png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, pngglue::jumpOnError,
                                      pngglue::ignoreWarning)),
          info(png ? png_create_info_struct(png) : nullptr) {}
    ~Writer() { png_destroy_write_struct(&png, info ? &info : nullptr); }
    Writer(const Writer&) = delete;
    Writer& operator=(const Writer&) = delete;

    png_structp png;
    png_infop info;
};

enum class Kind { Palette, Grey, Rgb, RgbFromFields, Rgba };

Kind kindOf(const DibView& dib) {
    const int bits = dib.bitCount();
    if (bits <= 8) {
        // Only depths that read back as themselves are written as grey: 4-bit grey would
        // come back as 8-bit.
        const bool fullRamp = dib.palette().size() == (std::size_t{1} << bits);
        return (bits == 1 || bits == 8) && fullRamp && dib.isGreyRamp() ? Kind::Grey
                                                                        : Kind::Palette;
    }
    if (bits == 24)
        return Kind::Rgb;
    if (bits == 32 && dib.header().compression == kBiRgb)
        return Kind::Rgba;
    return Kind::RgbFromFields;
}

// PNG refuses indices past its palette, and bitmaps may hold them; the palette written
// covers every index used (extra entries black).
int paletteEntries(const DibView& dib) {
    const int bits = dib.bitCount();
    int highest = static_cast<int>(dib.palette().size()) - 1;
    for (int y = 0; y < dib.height(); ++y) {
        const std::uint8_t* row = dib.row(y);
        for (int x = 0; x < dib.width(); ++x) {
            const int index = bits == 8   ? row[x]
                              : bits == 4 ? ((x & 1) ? row[x / 2] & 0x0F : row[x / 2] >> 4)
                                          : (row[x / 8] >> (7 - x % 8)) & 1;
            highest = std::max(highest, index);
        }
    }
    return highest + 1;
}

void fieldsToRgb(const DibView& dib, const std::uint8_t* src, std::uint8_t* dst,
                 const MaskChannel (&channels)[3]) {
    for (int x = 0; x < dib.width(); ++x) {
        const std::uint32_t pixel =
            dib.bitCount() == 16 ? readLe16(src + 2 * x) : readLe32(src + 4 * x);
        for (int c = 0; c < 3; ++c)
            dst[3 * x + c] = channels[c].value(pixel);
    }
}

// Option 1 is the zlib level plus one, so that 0 can mean the default.
int compressionLevel(std::uint32_t option1) {
    return option1 == 0 ? 6 : static_cast<int>(std::min<std::uint32_t>(option1, 10)) - 1;
}

} // namespace

bool PngCodec::canSave(const DibView& dib) const {
    return dib.valid();
}

bool PngCodec::save(const DibView& dib, const SaveRequest& request, int fd,
                    std::string& error) const {
    const Kind kind = kindOf(dib);
    const int width = dib.width();
    const int height = dib.height();
    int depth = 8;
    int colourType = PNG_COLOR_TYPE_RGB;
    std::vector<png_color> palette;
    switch (kind) {
    case Kind::Palette:
        depth = dib.bitCount();
        colourType = PNG_COLOR_TYPE_PALETTE;
        palette.resize(static_cast<std::size_t>(paletteEntries(dib)));
        for (std::size_t i = 0; i < dib.palette().size(); ++i)
            palette[i] = {dib.palette()[i].red, dib.palette()[i].green, dib.palette()[i].blue};
        break;
    case Kind::Grey:
        depth = dib.bitCount();
        colourType = PNG_COLOR_TYPE_GRAY;
        break;
    case Kind::Rgba:
        colourType = PNG_COLOR_TYPE_RGB_ALPHA;
        break;
    default:
        break;
    }
    const MaskChannel channels[3] = {MaskChannel(dib.redMask()), MaskChannel(dib.greenMask()),
                                     MaskChannel(dib.blueMask())};
    std::vector<std::uint8_t> converted(
        kind == Kind::RgbFromFields ? 3 * static_cast<std::size_t>(width) : 0);

    Writer writer;
    Sink sink{fd};
    if (!writer.info) {
        error = "There is not enough memory to save the image.";
        return false;
    }
    png_structp png = writer.png;
    png_infop info = writer.info;
    const bool ok = guarded(png, [&] {
        png_set_write_fn(png, &sink, writeToFd, flushNothing);
        // libpng's default limits are below the pictures a bitmap can hold.
        png_set_user_limits(png, PNG_UINT_31_MAX, PNG_UINT_31_MAX);
        png_set_IHDR(png, info, static_cast<png_uint_32>(width), static_cast<png_uint_32>(height),
                     depth, colourType, PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT,
                     PNG_FILTER_TYPE_DEFAULT);
        if (!palette.empty())
            png_set_PLTE(png, info, palette.data(), static_cast<int>(palette.size()));
        const BitmapInfoHeader& h = dib.header();
        if (h.xPelsPerMeter > 0 && h.yPelsPerMeter > 0)
            png_set_pHYs(png, info, static_cast<png_uint_32>(h.xPelsPerMeter),
                         static_cast<png_uint_32>(h.yPelsPerMeter), PNG_RESOLUTION_METER);
        png_set_compression_level(png, compressionLevel(request.option1));
        png_write_info(png, info);
        if (kind == Kind::Rgb || kind == Kind::Rgba)
            png_set_bgr(png);
        for (int y = 0; y < height; ++y) {
            if (kind == Kind::RgbFromFields) {
                fieldsToRgb(dib, dib.topRow(y), converted.data(), channels);
                png_write_row(png, converted.data());
            } else {
                png_write_row(png, dib.topRow(y));
            }
        }
        png_write_end(png, nullptr);
    });
    if (!ok) {
        error = sink.failed ? "The file could not be written (the disk may be full)."
                            : "The PNG file could not be written.";
        return false;
    }
    return true;
}

} // namespace imagelib
