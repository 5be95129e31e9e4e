#pragma once

#include <cstddef>
#include <cstdint>

namespace dscap::v4l2 {

// Motion-JPEG frames to packed BGR. One handle is kept for all frames; nothing in a frame
// is trusted.
class MjpegDecoder {
public:
    MjpegDecoder();
    ~MjpegDecoder();
    MjpegDecoder(const MjpegDecoder&) = delete;
    MjpegDecoder& operator=(const MjpegDecoder&) = delete;

    // Decodes a frame of exactly width x height into rows of width * 3 bytes; false for a
    // frame of another size or one that is broken or cut short.
    bool decode(const std::uint8_t* data, std::size_t size, int width, int height,
                std::uint8_t* bgr);

private:
    void reset();

    void* handle_ = nullptr;
};

} // namespace dscap::v4l2
