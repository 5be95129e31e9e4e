#include "imagelib/core/WriteAll.h"
#include "imagelib/jpeg/JpegCodec.h"
#include "imagelib/jpeg/JpegErrorTrap.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace imagelib {
namespace {

constexpr int kRowBatch = 16;
constexpr int kDefaultQuality = 90;
constexpr std::uint32_t kProgressive = 0x01;

// Writes straight to the temporary file the library gave us, in buffer-sized pieces.
struct FdDestination {
    jpeg_destination_mgr manager; // first: libjpeg hands callbacks a pointer to it
    int fd;
    JOCTET buffer[64 * 1024];
};

FdDestination& destinationOf(j_compress_ptr cinfo) {
    return *reinterpret_cast<FdDestination*>(cinfo->dest);
}

void startBuffer(j_compress_ptr cinfo) {
    FdDestination& d = destinationOf(cinfo);
    d.manager.next_output_byte = d.buffer;
    d.manager.free_in_buffer = sizeof(d.buffer);
}

boolean flushBuffer(j_compress_ptr cinfo) {
    FdDestination& d = destinationOf(cinfo);
    if (!writeAll(d.fd, d.buffer, sizeof(d.buffer)))
        JpegErrorTrap::fail(reinterpret_cast<j_common_ptr>(cinfo), JpegErrorTrap::kWriteFailed);
    startBuffer(cinfo);
    return TRUE;
}

void flushRest(j_compress_ptr cinfo) {
    FdDestination& d = destinationOf(cinfo);
    if (!writeAll(d.fd, d.buffer, sizeof(d.buffer) - d.manager.free_in_buffer))
        JpegErrorTrap::fail(reinterpret_cast<j_common_ptr>(cinfo), JpegErrorTrap::kWriteFailed);
}

UINT16 dotsPerInch(std::int32_t pixelsPerMetre) {
    return static_cast<UINT16>(std::clamp<long>(std::lround(pixelsPerMetre * 0.0254), 1, 65535));
}

// Owns the libjpeg state, so the setjmp lives here; nothing with a destructor is created
// between it and a libjpeg call that may jump back.
bool compress(const DibView& dib, const SaveRequest& request, int fd,
              const std::array<std::uint8_t, 256>* greyOfIndex, std::string& error) {
    jpeg_compress_struct cinfo;
    JpegErrorTrap trap;
    FdDestination dest;
    JSAMPROW rows[kRowBatch];
    cinfo.err = trap.install();
    if (setjmp(trap.jump)) {
        jpeg_destroy_compress(&cinfo);
        error = trap.encodeError();
        return false;
    }
    jpeg_create_compress(&cinfo);
    dest.fd = fd;
    dest.manager.init_destination = startBuffer;
    dest.manager.empty_output_buffer = flushBuffer;
    dest.manager.term_destination = flushRest;
    cinfo.dest = &dest.manager;

    const bool grey = dib.bitCount() == 8;
    cinfo.image_width = static_cast<JDIMENSION>(dib.width());
    cinfo.image_height = static_cast<JDIMENSION>(dib.height());
    cinfo.input_components = grey ? 1 : 3;
    cinfo.in_color_space = grey ? JCS_GRAYSCALE : JCS_EXT_BGR;
    jpeg_set_defaults(&cinfo);
    const int quality =
        request.option1 == 0 ? kDefaultQuality : static_cast<int>(std::min(request.option1, 100u));
    jpeg_set_quality(&cinfo, quality, TRUE);
    if (request.option2 & kProgressive)
        jpeg_simple_progression(&cinfo);
    const BitmapInfoHeader& h = dib.header();
    if (h.xPelsPerMeter > 0) {
        cinfo.density_unit = 1;
        cinfo.X_density = dotsPerInch(h.xPelsPerMeter);
        cinfo.Y_density = dotsPerInch(h.yPelsPerMeter > 0 ? h.yPelsPerMeter : h.xPelsPerMeter);
    }
    jpeg_start_compress(&cinfo, TRUE);

    JSAMPARRAY mapped = nullptr;
    if (greyOfIndex)
        mapped = cinfo.mem->alloc_sarray(reinterpret_cast<j_common_ptr>(&cinfo), JPOOL_IMAGE,
                                         cinfo.image_width, kRowBatch);
    const int height = dib.height();
    while (cinfo.next_scanline < cinfo.image_height) {
        const int first = static_cast<int>(cinfo.next_scanline);
        const int count = std::min(kRowBatch, height - first);
        for (int i = 0; i < count; ++i) {
            // libjpeg only reads the rows it is given.
            auto* src = const_cast<JSAMPLE*>(dib.topRow(first + i));
            if (greyOfIndex) {
                for (JDIMENSION x = 0; x < cinfo.image_width; ++x)
                    mapped[i][x] = (*greyOfIndex)[src[x]];
                src = mapped[i];
            }
            rows[i] = src;
        }
        jpeg_write_scanlines(&cinfo, rows, static_cast<JDIMENSION>(count));
    }
    jpeg_finish_compress(&cinfo);
    jpeg_destroy_compress(&cinfo);
    return true;
}

} // namespace

bool JpegCodec::canSave(const DibView& dib) const {
    return dib.header().compression == kBiRgb &&
           (dib.bitCount() == 24 || (dib.bitCount() == 8 && dib.isGreyRamp()));
}

bool JpegCodec::save(const DibView& dib, const SaveRequest& request, int fd,
                     std::string& error) const {
    if (!canSave(dib)) {
        error = "The picture's colour depth cannot be stored in that format.";
        return false;
    }
    // A short grey ramp (say 16 levels) needs its indices turned into grey values; the full
    // ramp is the identity and the rows go to libjpeg as they are.
    std::array<std::uint8_t, 256> greyOfIndex{};
    const auto palette = dib.palette();
    const bool identity = dib.bitCount() != 8 || palette.size() == 256;
    for (std::size_t i = 0; i < palette.size(); ++i)
        greyOfIndex[i] = palette[i].red;
    return compress(dib, request, fd, identity ? nullptr : &greyOfIndex, error);
}

} // namespace imagelib
