#include "imagelib/jpeg/JpegCodec.h"

#include "imagelib/imagelib.h"
#include "imagelib/jpeg/JpegErrorTrap.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace imagelib {
namespace {

constexpr int kRowBatch = 16;
// Real progressive files have a dozen scans; thousands of tiny ones only burn time.
constexpr int kMaxScans = 256;
// libjpeg's own buffers (a progressive file keeps every coefficient of the picture).
constexpr long kMaxLibraryMemory = 1L << 30;
// A Huffman-coded file spends at least a bit on the DC value of every 8x8 block, so even a
// flat picture stays under 300 pixels a byte; arithmetic coding packs one into a few hundred
// bytes in all. Claims far beyond that are hostile and refused before anything is decoded.
constexpr std::uint64_t kHuffmanPixelsPerByte = 4096;
constexpr std::uint64_t kArithmeticPixelsPerByte = 1 << 17;
constexpr std::uint64_t kPixelsAlwaysAllowed = 1 << 20;

// Each scan of a multi-scan file passes over the whole coefficient buffer; the scans a file
// may have are bounded so that their total stays within this many pixel visits.
constexpr std::uint64_t kMaxScanWork = kMaxPixels * 16;

struct ScanBudget {
    jpeg_progress_mgr manager; // first: libjpeg hands the monitor a pointer to it
    int maxScans;
};

void checkScanCount(j_common_ptr cinfo) {
    const auto* budget = reinterpret_cast<const ScanBudget*>(cinfo->progress);
    if (reinterpret_cast<j_decompress_ptr>(cinfo)->input_scan_number > budget->maxScans)
        JpegErrorTrap::fail(cinfo, JpegErrorTrap::kTooManyScans);
}

int scansAllowed(const jpeg_decompress_struct& cinfo) {
    const std::uint64_t pixels =
        std::max<std::uint64_t>(1, std::uint64_t{cinfo.image_width} * cinfo.image_height);
    return static_cast<int>(std::clamp<std::uint64_t>(kMaxScanWork / pixels, 1, kMaxScans));
}

bool claimFitsData(const jpeg_decompress_struct& cinfo, std::size_t bytes) {
    const std::uint64_t pixels = static_cast<std::uint64_t>(cinfo.image_width) * cinfo.image_height;
    const std::uint64_t perByte =
        cinfo.arith_code ? kArithmeticPixelsPerByte : kHuffmanPixelsPerByte;
    return pixels <= std::max<std::uint64_t>(kPixelsAlwaysAllowed, bytes * perByte);
}

// The smallest of libjpeg's n/8 scales whose output still covers twice the box.
void chooseScale(jpeg_decompress_struct& cinfo, int boxWidth, int boxHeight) {
    cinfo.scale_denom = 8;
    for (unsigned num = 1; num <= 8; ++num) {
        cinfo.scale_num = num;
        jpeg_calc_output_dimensions(&cinfo);
        if (cinfo.output_width >= 2u * static_cast<unsigned>(boxWidth) &&
            cinfo.output_height >= 2u * static_cast<unsigned>(boxHeight))
            return;
    }
}

std::int32_t pixelsPerMetre(unsigned density, int unit) {
    if (unit == 1) // dots per inch
        return static_cast<std::int32_t>(std::lround(density / 0.0254));
    if (unit == 2) // dots per centimetre
        return static_cast<std::int32_t>(density * 100);
    return 0;
}

// Adobe writes CMYK (and YCCK, which libjpeg turns into CMYK) inverted: 255 means no ink.
void cmykToBgr(const JSAMPLE* in, std::uint8_t* out, unsigned width, bool inverted) {
    for (unsigned x = 0; x < width; ++x, in += 4, out += 3) {
        const unsigned k = inverted ? in[3] : 255u - in[3];
        for (int c = 0; c < 3; ++c) {
            const unsigned ink = inverted ? in[2 - c] : 255u - in[2 - c];
            out[c] = static_cast<std::uint8_t>((ink * k + 127) / 255);
        }
    }
}

// Owns the libjpeg state, so the setjmp lives here; nothing with a destructor is created
// between it and a libjpeg call that may jump back.
bool decompress(std::span<const std::uint8_t> bytes, const DecodeRequest& request,
                DecodeResult& r) {
    jpeg_decompress_struct cinfo;
    JpegErrorTrap trap;
    ScanBudget progress{};
    JSAMPROW rows[kRowBatch];
    cinfo.err = trap.install();
    if (setjmp(trap.jump)) {
        jpeg_destroy_decompress(&cinfo);
        if (trap.completePicture)
            return true; // only the trailer after the last row was bad
        r.dib = DibBuffer();
        r.error = trap.decodeError();
        return false;
    }
    jpeg_create_decompress(&cinfo);
    cinfo.mem->max_memory_to_use = kMaxLibraryMemory;
    progress.manager.progress_monitor = checkScanCount;
    progress.maxScans = kMaxScans;
    cinfo.progress = &progress.manager;
    jpeg_mem_src(&cinfo, bytes.data(), static_cast<unsigned long>(bytes.size()));
    jpeg_read_header(&cinfo, TRUE);

    bool cmyk = false;
    switch (cinfo.jpeg_color_space) {
    case JCS_GRAYSCALE:
        cinfo.out_color_space = JCS_GRAYSCALE;
        break;
    case JCS_YCbCr:
    case JCS_RGB:
        cinfo.out_color_space = JCS_EXT_BGR;
        break;
    case JCS_CMYK:
    case JCS_YCCK:
        cinfo.out_color_space = JCS_CMYK;
        cmyk = true;
        break;
    default:
        jpeg_destroy_decompress(&cinfo);
        r.error = "The JPEG file uses a colour layout this program cannot read.";
        return false;
    }
    const int bitCount = cinfo.out_color_space == JCS_GRAYSCALE ? 8 : 24;
    r.fullWidth = static_cast<int>(cinfo.image_width);
    r.fullHeight = static_cast<int>(cinfo.image_height);
    r.fullBitCount = bitCount;
    if (!claimFitsData(cinfo, bytes.size())) {
        jpeg_destroy_decompress(&cinfo);
        r.error = "The JPEG file claims a picture far larger than its data could hold.";
        return false;
    }

    // A multi-scan file keeps every coefficient of the whole picture however small the
    // output, so its full size is held to the pixel budget even for a thumbnail.
    if (jpeg_has_multiple_scans(&cinfo) &&
        !withinPixelBudget(cinfo.image_width, cinfo.image_height, r.error)) {
        jpeg_destroy_decompress(&cinfo);
        return false;
    }
    progress.maxScans = scansAllowed(cinfo);

    const bool reduced = request.boxWidth > 0 || request.boxHeight > 0;
    if (reduced) {
        // Thumbnails: speed over the last bit of fidelity.
        cinfo.dct_method = JDCT_IFAST;
        cinfo.do_fancy_upsampling = FALSE;
        chooseScale(cinfo, request.boxWidth, request.boxHeight);
    } else {
        jpeg_calc_output_dimensions(&cinfo);
    }
    r.dib = DibBuffer::create(cinfo.output_width, cinfo.output_height, bitCount,
                              bitCount == 8 ? 256 : 0, r.error);
    if (!r.dib) {
        jpeg_destroy_decompress(&cinfo);
        return false;
    }
    DibBuffer& dib = r.dib;
    if (bitCount == 8) {
        RgbQuad* pal = dib.palette();
        for (int i = 0; i < 256; ++i) {
            const auto v = static_cast<std::uint8_t>(i);
            pal[i] = {v, v, v, 0};
        }
    }
    if (!reduced && cinfo.saw_JFIF_marker) {
        dib.header().xPelsPerMeter = pixelsPerMetre(cinfo.X_density, cinfo.density_unit);
        dib.header().yPelsPerMeter = pixelsPerMetre(cinfo.Y_density, cinfo.density_unit);
    }

    jpeg_start_decompress(&cinfo);
    const unsigned width = cinfo.output_width;
    const int height = static_cast<int>(cinfo.output_height);
    if (static_cast<int>(width) != dib.width() || height != dib.height()) {
        jpeg_destroy_decompress(&cinfo);
        r.dib = DibBuffer();
        r.error = "The JPEG file is damaged (its size changed while decoding).";
        return false;
    }
    const std::size_t rowBytes = static_cast<std::size_t>(width) * (bitCount / 8);
    const std::size_t padding = dib.stride() - rowBytes;
    JSAMPARRAY cmykRows = nullptr;
    if (cmyk)
        cmykRows = cinfo.mem->alloc_sarray(reinterpret_cast<j_common_ptr>(&cinfo), JPOOL_IMAGE,
                                           width * 4, kRowBatch);
    const bool inverted = cinfo.saw_Adobe_marker;
    while (cinfo.output_scanline < cinfo.output_height) {
        const int first = static_cast<int>(cinfo.output_scanline);
        const int wanted = std::min(kRowBatch, height - first);
        for (int i = 0; i < wanted; ++i)
            rows[i] = dib.topRow(first + i);
        const int got = static_cast<int>(
            jpeg_read_scanlines(&cinfo, cmyk ? cmykRows : rows, static_cast<JDIMENSION>(wanted)));
        if (got <= 0)
            JpegErrorTrap::fail(reinterpret_cast<j_common_ptr>(&cinfo), JWRN_JPEG_EOF);
        for (int i = 0; i < got; ++i) {
            if (cmyk)
                cmykToBgr(cmykRows[i], rows[i], width, inverted);
            if (padding)
                std::memset(rows[i] + rowBytes, 0, padding);
        }
    }
    // A scan that never came leaves whole components blank without any complaint.
    if (trap.sawEndOfData && jpeg_has_multiple_scans(&cinfo))
        JpegErrorTrap::fail(reinterpret_cast<j_common_ptr>(&cinfo), JWRN_JPEG_EOF);
    trap.completePicture = true;
    jpeg_finish_decompress(&cinfo);
    jpeg_destroy_decompress(&cinfo);
    return true;
}

} // namespace

std::uint32_t JpegCodec::format() const {
    return IMAGELIB_FMT_JPEG;
}

bool JpegCodec::probe(std::span<const std::uint8_t> head) const {
    return head.size() >= 3 && head[0] == 0xFF && head[1] == 0xD8 && head[2] == 0xFF;
}

DecodeResult JpegCodec::decode(std::span<const std::uint8_t> bytes,
                               const DecodeRequest& request) const {
    DecodeResult r;
    if (bytes.size() < 4) {
        r.error = "The JPEG file is damaged or incomplete.";
        return r;
    }
    decompress(bytes, request, r);
    return r;
}

const Codec& jpegCodec() {
    static const JpegCodec codec;
    return codec;
}

} // namespace imagelib
