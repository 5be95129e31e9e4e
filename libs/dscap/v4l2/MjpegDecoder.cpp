#include "dscap/v4l2/MjpegDecoder.h"

#include <cstdio>
#include <turbojpeg.h>

namespace dscap::v4l2 {
namespace {

// Many cameras leave a few stray bytes before the end-of-image marker of every frame, which
// libjpeg reports though the picture is whole. Any other warning (a frame cut short by a
// lost USB packet, damaged entropy data, which also leaves many unread bytes) means grey or
// garbled blocks, and the frame is dropped instead.
bool harmlessWarning(void* handle) {
    constexpr unsigned kMaxStrayBytes = 64;
    const char* text = tjGetErrorStr2(handle);
    unsigned count = 0;
    unsigned marker = 0;
    return text &&
           std::sscanf(text, "Corrupt JPEG data: %u extraneous bytes before marker 0x%x", &count,
                       &marker) == 2 &&
           count <= kMaxStrayBytes && marker == 0xD9;
}

} // namespace

MjpegDecoder::MjpegDecoder() : handle_(tjInitDecompress()) {}

MjpegDecoder::~MjpegDecoder() {
    if (handle_)
        tjDestroy(handle_);
}

// A handle whose header read failed stays stuck in that state and fails every later frame,
// so a failure costs the handle.
void MjpegDecoder::reset() {
    if (handle_)
        tjDestroy(handle_);
    handle_ = tjInitDecompress();
}

bool MjpegDecoder::decode(const std::uint8_t* data, std::size_t size, int width, int height,
                          std::uint8_t* bgr) {
    if (!handle_ || !data || size < 4 || data[0] != 0xFF || data[1] != 0xD8)
        return false;
    int w = 0;
    int h = 0;
    int subsampling = 0;
    int colourspace = 0;
    if (tjDecompressHeader3(handle_, data, static_cast<unsigned long>(size), &w, &h, &subsampling,
                            &colourspace) != 0) {
        reset();
        return false;
    }
    if (w != width || h != height)
        return false;
    // The accurate transform costs little more than the fast one with SIMD and keeps the
    // fine detail a microscope shows.
    if (tjDecompress2(handle_, data, static_cast<unsigned long>(size), bgr, width, width * 3,
                      height, TJPF_BGR, 0) == 0)
        return true;
    if (tjGetErrorCode(handle_) == TJERR_WARNING && harmlessWarning(handle_))
        return true;
    reset();
    return false;
}

} // namespace dscap::v4l2
