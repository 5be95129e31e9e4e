#include "dscap/v4l2/FrameDecoder.h"

#include "dscap/v4l2/V4l2System.h"

#include <libv4l-plugin.h>
#include <libv4lconvert.h>

#include <algorithm>
#include <cerrno>

namespace dscap::v4l2 {
namespace {

int deviceIoctl(void* device, int /*fd*/, unsigned long request, void* arg) {
    return static_cast<V4l2Device*>(device)->ioctl(request, arg);
}
void keepOpen(void* /*device*/) {}
ssize_t noRead(void* /*device*/, int /*fd*/, void* /*buffer*/, size_t /*n*/) {
    errno = ENOSYS;
    return -1;
}
ssize_t noWrite(void* /*device*/, int /*fd*/, const void* /*buffer*/, size_t /*n*/) {
    errno = ENOSYS;
    return -1;
}

// libv4lconvert reaches the device only through these, so it works on a fake device too;
// the device is closed by its owner, never by the converter.
const libv4l_dev_ops kDeviceOps = {nullptr, keepOpen, deviceIoctl, noRead,  noWrite, nullptr,
                                   nullptr, nullptr,  nullptr,     nullptr, nullptr, nullptr};

struct Packing {
    std::uint32_t pixelFormat;
    bool planar420;    // a full luma plane and two quarter chroma planes
    int bytesPerPixel; // packed formats
    bool evenWidth;    // the converters work on pixel pairs, and on row pairs for 4:2:0 and
    bool evenHeight;   // raw sensor data; no camera sends odd sizes in those formats
};

// What libv4lconvert turns into BGR24, in order of preference after Motion-JPEG and YUYV.
constexpr Packing kConvertible[] = {
    {V4L2_PIX_FMT_YUYV, false, 2, true, false},    {V4L2_PIX_FMT_BGR24, false, 3, false, false},
    {V4L2_PIX_FMT_RGB24, false, 3, false, false},  {V4L2_PIX_FMT_UYVY, false, 2, true, false},
    {V4L2_PIX_FMT_YVYU, false, 2, true, false},    {V4L2_PIX_FMT_NV12, true, 1, true, true},
    {V4L2_PIX_FMT_YUV420, true, 1, true, true},    {V4L2_PIX_FMT_YVU420, true, 1, true, true},
    {V4L2_PIX_FMT_RGB565, false, 2, false, false}, {V4L2_PIX_FMT_SBGGR8, false, 1, true, true},
    {V4L2_PIX_FMT_SGBRG8, false, 1, true, true},   {V4L2_PIX_FMT_SGRBG8, false, 1, true, true},
    {V4L2_PIX_FMT_SRGGB8, false, 1, true, true},   {V4L2_PIX_FMT_GREY, false, 1, false, false},
    {V4L2_PIX_FMT_Y16, false, 2, false, false},
};

const Packing* packingOf(std::uint32_t pixelFormat) {
    for (const Packing& p : kConvertible) {
        if (p.pixelFormat == pixelFormat)
            return &p;
    }
    return nullptr;
}

constexpr std::uint32_t kMaxSide = 16384;
// libv4lconvert's raw-sensor interpolation writes past pictures only a few pixels wide; no
// camera streams below this.
constexpr std::uint32_t kMinConvertedSide = 16;
constexpr std::uint32_t kMaxRowBytes = kMaxSide * 4;

} // namespace

FrameDecoder::FrameDecoder(V4l2Device& device) : device_(device) {}

FrameDecoder::~FrameDecoder() {
    if (converter_)
        v4lconvert_destroy(converter_);
}

bool FrameDecoder::isJpeg(std::uint32_t pixelFormat) {
    return pixelFormat == V4L2_PIX_FMT_MJPEG || pixelFormat == V4L2_PIX_FMT_JPEG;
}

bool FrameDecoder::canDecode(std::uint32_t pixelFormat) {
    return isJpeg(pixelFormat) || packingOf(pixelFormat) != nullptr;
}

int FrameDecoder::preference(std::uint32_t pixelFormat) {
    if (isJpeg(pixelFormat))
        return 0;
    for (std::size_t i = 0; i < std::size(kConvertible); ++i) {
        if (kConvertible[i].pixelFormat == pixelFormat)
            return static_cast<int>(i) + 1;
    }
    return -1;
}

bool FrameDecoder::setFormat(const v4l2_pix_format& format) {
    format_ = {};
    minimumBytes_ = 0;
    if (format.width == 0 || format.height == 0 || format.width > kMaxSide ||
        format.height > kMaxSide || format.bytesperline > kMaxRowBytes) {
        error_ = "The camera reported an impossible picture size.";
        return false;
    }
    if (isJpeg(format.pixelformat)) {
        format_ = format;
        return true;
    }
    const Packing* packing = packingOf(format.pixelformat);
    if (!packing || (packing->evenWidth && format.width % 2 != 0) ||
        (packing->evenHeight && format.height % 2 != 0) || format.width < kMinConvertedSide ||
        format.height < kMinConvertedSide) {
        error_ = "The camera's picture format cannot be decoded.";
        return false;
    }
    // The converters take the row length as given, so one shorter than a row of pixels
    // (some drivers leave it 0) would make them read outside the frame.
    const std::uint32_t rowBytes = format.width * (packing->planar420 ? 1 : packing->bytesPerPixel);
    format_ = format;
    format_.bytesperline = std::max(format.bytesperline, rowBytes);
    const std::size_t rows =
        packing->planar420 ? std::size_t(format.height) * 3 / 2 : format.height;
    minimumBytes_ =
        std::max<std::size_t>(std::size_t(format_.bytesperline) * rows, format.sizeimage);
    if (!ensureConverter()) {
        format_ = {};
        return false;
    }
    return true;
}

bool FrameDecoder::ensureConverter() {
    if (converter_)
        return true;
    converter_ = v4lconvert_create_with_dev_ops(device_.fd(), &device_, &kDeviceOps);
    if (!converter_)
        error_ = "The picture converter could not be set up for the camera.";
    return converter_ != nullptr;
}

bool FrameDecoder::decode(const std::uint8_t* data, std::size_t size, std::uint8_t* bgr) {
    if (format_.width == 0)
        return false;
    const int w = static_cast<int>(format_.width);
    const int h = static_cast<int>(format_.height);
    if (isJpeg(format_.pixelformat)) {
        if (jpeg_.decode(data, size, w, h, bgr))
            return true;
        error_ = "A picture from the camera could not be decoded.";
        return false;
    }
    if (size < minimumBytes_) {
        error_ = "A picture from the camera arrived incomplete.";
        return false;
    }
    v4l2_format src{};
    src.type = V4L2_BUF_TYPE_VIDEO_CAPTURE;
    src.fmt.pix = format_;
    v4l2_format dst = src;
    dst.fmt.pix.pixelformat = V4L2_PIX_FMT_BGR24;
    dst.fmt.pix.bytesperline = format_.width * 3;
    dst.fmt.pix.sizeimage = format_.width * format_.height * 3;
    const int bytes = static_cast<int>(dst.fmt.pix.sizeimage);
    // The converter never writes to its source; its prototype just predates const.
    if (v4lconvert_convert(converter_, &src, &dst, const_cast<std::uint8_t*>(data),
                           static_cast<int>(std::min<std::size_t>(size, 0x7fffffff)), bgr,
                           bytes) != bytes) {
        error_ = "A picture from the camera could not be converted.";
        return false;
    }
    return true;
}

} // namespace dscap::v4l2
