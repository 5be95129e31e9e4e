#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

namespace dscap {

// A processed picture: packed 8-bit BGR rows, top-down, stride = width * 3. Growing keeps
// the old block when it is big enough and never zero-fills, so reuse costs nothing.
class Image {
public:
    void resize(int width, int height) {
        const std::size_t need = static_cast<std::size_t>(width) * height * 3;
        if (need > capacity_) {
            pixels_ = std::make_unique_for_overwrite<std::uint8_t[]>(need);
            capacity_ = need;
        }
        width_ = width;
        height_ = height;
    }
    int width() const { return width_; }
    int height() const { return height_; }
    int stride() const { return width_ * 3; }
    bool empty() const { return width_ <= 0 || height_ <= 0; }
    std::uint8_t* data() { return pixels_.get(); }
    const std::uint8_t* data() const { return pixels_.get(); }
    std::uint8_t* row(int y) { return pixels_.get() + static_cast<std::size_t>(y) * stride(); }
    const std::uint8_t* row(int y) const {
        return pixels_.get() + static_cast<std::size_t>(y) * stride();
    }

private:
    std::unique_ptr<std::uint8_t[]> pixels_;
    std::size_t capacity_ = 0;
    int width_ = 0;
    int height_ = 0;
};

} // namespace dscap
