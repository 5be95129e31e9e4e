#pragma once

#include "dscap/v4l2/MjpegDecoder.h"

#include <linux/videodev2.h>

#include <cstddef>
#include <cstdint>
#include <string>

struct v4lconvert_data;

namespace dscap::v4l2 {

class V4l2Device;

// Turns the frames of one device format into packed BGR rows (width * 3 bytes each):
// Motion-JPEG with libjpeg-turbo, the rest with libv4lconvert. Uncompressed frames shorter
// than their format are refused before they reach a converter, which would read past them.
class FrameDecoder {
public:
    // libv4lconvert asks the device about its formats and controls when first needed, so the
    // device must outlive the decoder.
    explicit FrameDecoder(V4l2Device& device);
    ~FrameDecoder();
    FrameDecoder(const FrameDecoder&) = delete;
    FrameDecoder& operator=(const FrameDecoder&) = delete;

    // Whether frames of this pixel format can be decoded at all.
    static bool canDecode(std::uint32_t pixelFormat);
    static bool isJpeg(std::uint32_t pixelFormat);
    // Lower is preferred: Motion-JPEG, YUYV, then the others; -1 for undecodable formats.
    static int preference(std::uint32_t pixelFormat);

    // The format the device streams (as S_FMT returned it); false when it cannot be decoded.
    bool setFormat(const v4l2_pix_format& format);
    int width() const { return static_cast<int>(format_.width); }
    int height() const { return static_cast<int>(format_.height); }

    // bgr holds width * height * 3 bytes. False for a broken or short frame.
    bool decode(const std::uint8_t* data, std::size_t size, std::uint8_t* bgr);

    std::string lastError() const { return error_; }

private:
    bool ensureConverter();

    V4l2Device& device_;
    MjpegDecoder jpeg_;
    v4lconvert_data* converter_ = nullptr;
    v4l2_pix_format format_{};
    std::size_t minimumBytes_ = 0; // an uncompressed frame's least size
    std::string error_;
};

} // namespace dscap::v4l2
