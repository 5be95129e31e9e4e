#include "imagelib/core/WriteAll.h"
#include "imagelib/jpeg/JpegCodec.h"
#include "imagelib/jpeg/JpegErrorTrap.h"
#include "imagelib/jpeg/JpegSegments.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>
#include <functional>
#include <span>
#include <thread>
#include <vector>

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

// Where a band's bytes go: straight to the file, or into a malloc block of libjpeg's.
struct Output {
    int fd = -1;
    unsigned char* memory = nullptr;
    unsigned long memorySize = 0;
};

// Codes rows [first, first + count) of the picture as a picture of its own, with a restart
// marker every `restartRows` rows of blocks (0: none). Owns the libjpeg state, so the setjmp
// lives here; nothing with a destructor is created between it and a libjpeg call that may
// jump back.
bool encodeBand(const DibView& dib, const SaveRequest& request, Output& output, int first,
                int count, int restartRows, const std::array<std::uint8_t, 256>* greyOfIndex,
                std::string& error) {
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
    if (output.fd >= 0) {
        dest.fd = output.fd;
        dest.manager.init_destination = startBuffer;
        dest.manager.empty_output_buffer = flushBuffer;
        dest.manager.term_destination = flushRest;
        cinfo.dest = &dest.manager;
    } else {
        jpeg_mem_dest(&cinfo, &output.memory, &output.memorySize);
    }

    const bool grey = dib.bitCount() == 8;
    cinfo.image_width = static_cast<JDIMENSION>(dib.width());
    cinfo.image_height = static_cast<JDIMENSION>(count);
    cinfo.input_components = grey ? 1 : 3;
    cinfo.in_color_space = grey ? JCS_GRAYSCALE : JCS_EXT_BGR;
    jpeg_set_defaults(&cinfo);
    const int quality =
        request.option1 == 0 ? kDefaultQuality : static_cast<int>(std::min(request.option1, 100u));
    jpeg_set_quality(&cinfo, quality, TRUE);
    if (request.option2 & kProgressive)
        jpeg_simple_progression(&cinfo);
    cinfo.restart_in_rows = restartRows;
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
    while (cinfo.next_scanline < cinfo.image_height) {
        const int done = static_cast<int>(cinfo.next_scanline);
        const int batch = std::min(kRowBatch, count - done);
        for (int i = 0; i < batch; ++i) {
            // libjpeg only reads the rows it is given.
            auto* src = const_cast<JSAMPLE*>(dib.topRow(first + done + i));
            if (greyOfIndex) {
                for (JDIMENSION x = 0; x < cinfo.image_width; ++x)
                    mapped[i][x] = (*greyOfIndex)[src[x]];
                src = mapped[i];
            }
            rows[i] = src;
        }
        jpeg_write_scanlines(&cinfo, rows, static_cast<JDIMENSION>(batch));
    }
    jpeg_finish_compress(&cinfo);
    jpeg_destroy_compress(&cinfo);
    return true;
}

// A large baseline picture is coded in bands, one a core, joined at restart markers: the
// file decodes to exactly the same pixels, in a fraction of the time.
constexpr std::int64_t kBandedPixels = 2'000'000;
constexpr unsigned kMaxBands = 4;
constexpr long kMaxRestartInterval = 65535; // blocks between markers, a 16-bit field

bool encodeBanded(const DibView& dib, const SaveRequest& request, int fd,
                  const std::array<std::uint8_t, 256>* greyOfIndex, unsigned bands,
                  std::string& error) {
    // Rows of blocks: 16 pixels with colour's halved chroma, 8 for grey.
    const int blockRows = dib.bitCount() == 8 ? 8 : 16;
    const long blocksPerRow = (dib.width() + blockRows - 1) / blockRows;
    const int height = dib.height();
    const int totalBlockRows = (height + blockRows - 1) / blockRows;
    const int perBand = (totalBlockRows + int(bands) - 1) / int(bands);
    const int restartRows =
        static_cast<int>(std::min<long>(perBand, kMaxRestartInterval / blocksPerRow));
    const int bandRows = (perBand + restartRows - 1) / restartRows * restartRows * blockRows;

    struct Band {
        Output output;
        int first = 0, count = 0;
        bool ok = false;
        std::string error;
    };
    std::vector<Band> parts;
    for (int first = 0; first < height; first += bandRows)
        parts.push_back({{}, first, std::min(bandRows, height - first), false, {}});
    const auto run = [&](Band& b) {
        b.ok =
            encodeBand(dib, request, b.output, b.first, b.count, restartRows, greyOfIndex, b.error);
    };
    std::vector<std::thread> helpers;
    for (std::size_t i = 1; i < parts.size(); ++i)
        helpers.emplace_back(run, std::ref(parts[i]));
    run(parts[0]);
    for (std::thread& t : helpers)
        t.join();

    std::vector<std::span<const std::uint8_t>> coded;
    bool ok = true;
    for (Band& b : parts) {
        if (!b.ok && ok) {
            ok = false;
            error = b.error;
        }
        coded.emplace_back(b.output.memory, b.output.memorySize);
    }
    std::vector<std::uint8_t> joined;
    if (ok)
        joined = joinJpegBands(coded, static_cast<std::uint16_t>(height));
    for (Band& b : parts)
        std::free(b.output.memory);
    if (!ok)
        return false;
    if (joined.empty()) {
        error = "The picture could not be coded.";
        return false;
    }
    if (!writeAll(fd, joined.data(), joined.size())) {
        error = "The file could not be written (the disk may be full).";
        return false;
    }
    return true;
}

bool compress(const DibView& dib, const SaveRequest& request, int fd,
              const std::array<std::uint8_t, 256>* greyOfIndex, std::string& error) {
    const unsigned cores = std::thread::hardware_concurrency();
    const unsigned bands = std::min(kMaxBands, cores == 0 ? 1u : cores);
    const int blockRows = dib.bitCount() == 8 ? 8 : 16;
    const bool banded = bands > 1 && !(request.option2 & kProgressive) &&
                        std::int64_t(dib.width()) * dib.height() >= kBandedPixels &&
                        dib.height() >= 2 * blockRows &&
                        (dib.width() + blockRows - 1) / blockRows <= kMaxRestartInterval &&
                        dib.height() <= 0xFFFF;
    if (banded)
        return encodeBanded(dib, request, fd, greyOfIndex, bands, error);
    Output output;
    output.fd = fd;
    return encodeBand(dib, request, output, 0, dib.height(), 0, greyOfIndex, error);
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
