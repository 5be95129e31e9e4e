// One input, two frames through the V4L2 backend's decoder: the bytes as a Motion-JPEG frame
// at the size its header claims, and after a three-byte prefix (width, height, format) as an
// uncompressed frame for libv4lconvert, whose length must be checked before it is read.
#include "dscap/v4l2/FrameDecoder.h"
#include "dscap/v4l2/V4l2System.h"

#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <turbojpeg.h>
#include <vector>

namespace {

// Just enough of a device for libv4lconvert to set itself up.
class NoDevice final : public dscap::v4l2::V4l2Device {
public:
    int ioctl(unsigned long request, void* arg) override {
        if (request == VIDIOC_QUERYCAP) {
            auto& cap = *static_cast<v4l2_capability*>(arg);
            cap = {};
            std::memcpy(cap.card, "fuzz", 5);
            cap.capabilities = V4L2_CAP_VIDEO_CAPTURE | V4L2_CAP_STREAMING;
            return 0;
        }
        errno = EINVAL;
        return -1;
    }
    void* mmap(std::size_t, std::uint32_t) override { return nullptr; }
    void munmap(void*, std::size_t) override {}
    dscap::v4l2::WaitResult wait(int) override { return dscap::v4l2::WaitResult::Error; }
};

constexpr std::uint32_t kRawFormats[] = {
    V4L2_PIX_FMT_YUYV,   V4L2_PIX_FMT_UYVY,   V4L2_PIX_FMT_YVYU,   V4L2_PIX_FMT_BGR24,
    V4L2_PIX_FMT_RGB24,  V4L2_PIX_FMT_NV12,   V4L2_PIX_FMT_YUV420, V4L2_PIX_FMT_YVU420,
    V4L2_PIX_FMT_RGB565, V4L2_PIX_FMT_SBGGR8, V4L2_PIX_FMT_SRGGB8, V4L2_PIX_FMT_GREY,
    V4L2_PIX_FMT_Y16,
};

constexpr int kMaxJpegSide = 2048; // keeps the output buffer small enough for the fuzzer

void decodeAs(dscap::v4l2::FrameDecoder& decoder, std::uint32_t pixelFormat, int width, int height,
              const std::uint8_t* data, std::size_t size) {
    v4l2_pix_format format{};
    format.pixelformat = pixelFormat;
    format.width = static_cast<std::uint32_t>(width);
    format.height = static_cast<std::uint32_t>(height);
    if (!decoder.setFormat(format))
        return;
    // The converters are not instrumented, so a write past the picture is caught by a guard
    // band instead of by the sanitizer.
    constexpr std::size_t kGuard = 4096;
    const std::size_t bytes = std::size_t(width) * height * 3;
    std::vector<std::uint8_t> bgr(bytes + kGuard, 0xA5);
    decoder.decode(data, size, bgr.data());
    for (std::size_t i = bytes; i < bgr.size(); ++i) {
        if (bgr[i] != 0xA5)
            __builtin_trap();
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static NoDevice device;
    static dscap::v4l2::FrameDecoder decoder(device);
    static tjhandle header = tjInitDecompress();

    int width = 0;
    int height = 0;
    int subsampling = 0;
    int colourspace = 0;
    if (tjDecompressHeader3(header, data, static_cast<unsigned long>(size), &width, &height,
                            &subsampling, &colourspace) == 0 &&
        width <= kMaxJpegSide && height <= kMaxJpegSide) {
        decodeAs(decoder, V4L2_PIX_FMT_MJPEG, width, height, data, size);
    } else {
        // A failed header read leaves the handle stuck.
        tjDestroy(header);
        header = tjInitDecompress();
    }

    if (size < 3)
        return 0;
    const int rawWidth = 1 + data[0];
    const int rawHeight = 1 + data[1];
    const std::uint32_t rawFormat = kRawFormats[data[2] % std::size(kRawFormats)];
    decodeAs(decoder, rawFormat, rawWidth, rawHeight, data + 3, size - 3);
    return 0;
}
