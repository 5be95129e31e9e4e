#include "imagelib/core/Dib.h"

#include <cstdlib>
#include <cstring>
#include <utility>

namespace imagelib {
namespace {

bool validDepth(int bitCount) {
    return bitCount == 1 || bitCount == 4 || bitCount == 8 || bitCount == 16 || bitCount == 24 ||
           bitCount == 32;
}

} // namespace

std::string tooLargeText(std::int64_t width, std::int64_t height) {
    return "The picture is " + std::to_string(width) + " × " + std::to_string(height) +
           " pixels, too large to open.";
}

bool withinPixelBudget(std::int64_t width, std::int64_t height, std::string& error) {
    if (width > 0 && height > 0 &&
        static_cast<std::uint64_t>(width) * static_cast<std::uint64_t>(height) > kMaxPixels) {
        error = tooLargeText(width, height);
        return false;
    }
    return true;
}

bool shapeAcceptable(std::int64_t width, std::int64_t height, std::string& error) {
    if (width <= 0 || height <= 0) {
        error = "The image has no pixels (its width or height is zero).";
        return false;
    }
    if (width > kMaxDimension || height > kMaxDimension) {
        error = "The image is too large to open.";
        return false;
    }
    return true;
}

DibBuffer::DibBuffer(DibBuffer&& other) noexcept {
    *this = std::move(other);
}

DibBuffer& DibBuffer::operator=(DibBuffer&& other) noexcept {
    if (this != &other) {
        std::free(m_block);
        m_block = std::exchange(other.m_block, nullptr);
        m_pixels = std::exchange(other.m_pixels, nullptr);
        m_size = std::exchange(other.m_size, 0);
        m_stride = std::exchange(other.m_stride, 0);
        m_width = std::exchange(other.m_width, 0);
        m_height = std::exchange(other.m_height, 0);
        m_bitCount = std::exchange(other.m_bitCount, 0);
    }
    return *this;
}

DibBuffer::~DibBuffer() {
    std::free(m_block);
}

bool DibBuffer::sizeAcceptable(std::int64_t width, std::int64_t height, int bitCount,
                               std::string& error) {
    if (!shapeAcceptable(width, height, error))
        return false;
    if (!validDepth(bitCount)) {
        error = "The image uses a colour depth that is not supported.";
        return false;
    }
    if (dibStride(static_cast<std::uint64_t>(width), static_cast<std::uint32_t>(bitCount)) *
            static_cast<std::uint64_t>(height) >
        kMaxDibBytes) {
        error = "The image is too large to open.";
        return false;
    }
    return true;
}

DibBuffer DibBuffer::create(std::int64_t width, std::int64_t height, int bitCount, int colours,
                            std::string& error) {
    DibBuffer dib;
    // The budget is checked last, so that a decoder's own finding (a claim its data cannot
    // hold) is what the user reads when there is one.
    if (!sizeAcceptable(width, height, bitCount, error) || !withinPixelBudget(width, height, error))
        return dib;
    if (colours < 0 || colours > 256) {
        error = "The image's colour table is invalid.";
        return dib;
    }
    const std::size_t stride =
        dibStride(static_cast<std::uint64_t>(width), static_cast<std::uint32_t>(bitCount));
    const std::size_t tableBytes = static_cast<std::size_t>(colours) * sizeof(RgbQuad);
    const std::size_t size =
        sizeof(BitmapInfoHeader) + tableBytes + stride * static_cast<std::size_t>(height);
    auto* block = static_cast<std::uint8_t*>(std::malloc(size));
    if (!block) {
        error = "There is not enough memory to open the image.";
        return dib;
    }
    dib.m_block = block;
    dib.m_pixels = block + sizeof(BitmapInfoHeader) + tableBytes;
    dib.m_size = size;
    dib.m_stride = stride;
    dib.m_width = static_cast<int>(width);
    dib.m_height = static_cast<int>(height);
    dib.m_bitCount = bitCount;
    BitmapInfoHeader& h = dib.header();
    h = {};
    h.size = sizeof(BitmapInfoHeader);
    h.width = static_cast<std::int32_t>(width);
    h.height = static_cast<std::int32_t>(height);
    h.planes = 1;
    h.bitCount = static_cast<std::uint16_t>(bitCount);
    h.compression = kBiRgb;
    h.sizeImage = static_cast<std::uint32_t>(stride * static_cast<std::size_t>(height));
    h.clrUsed = static_cast<std::uint32_t>(colours);
    if (tableBytes)
        std::memset(dib.palette(), 0, tableBytes);
    return dib;
}

void* DibBuffer::release() {
    m_pixels = nullptr;
    m_size = m_stride = 0;
    m_width = m_height = m_bitCount = 0;
    return std::exchange(m_block, nullptr);
}

DibView::DibView(const void* block) {
    if (!block)
        return;
    const auto* bytes = static_cast<const std::uint8_t*>(block);
    std::memcpy(&m_header, bytes, sizeof(m_header));
    const BitmapInfoHeader& h = m_header;
    if (h.size != sizeof(BitmapInfoHeader) || h.width <= 0 || h.height <= 0 ||
        !validDepth(h.bitCount) || (h.compression != kBiRgb && h.compression != kBiBitfields))
        return;
    if (h.compression == kBiBitfields && h.bitCount != 16 && h.bitCount != 32)
        return;
    const std::uint64_t pixelBytes = dibStride(static_cast<std::uint64_t>(h.width), h.bitCount) *
                                     static_cast<std::uint64_t>(h.height);
    if (pixelBytes > kMaxDibBytes)
        return;
    std::size_t offset = sizeof(BitmapInfoHeader);
    if (h.compression == kBiBitfields) {
        std::memcpy(m_masks, bytes + offset, sizeof(m_masks));
        offset += sizeof(m_masks);
    } else if (h.bitCount == 16) {
        m_masks[0] = 0x7C00;
        m_masks[1] = 0x03E0;
        m_masks[2] = 0x001F;
    } else if (h.bitCount == 32) {
        m_masks[0] = 0x00FF0000;
        m_masks[1] = 0x0000FF00;
        m_masks[2] = 0x000000FF;
    }
    std::size_t colours = h.clrUsed;
    if (h.bitCount <= 8) {
        const std::size_t full = std::size_t{1} << h.bitCount;
        if (colours == 0)
            colours = full;
        else if (colours > full)
            return; // the rows would start past a table no index can reach
    } else {
        colours = 0;
    }
    m_palette = {reinterpret_cast<const RgbQuad*>(bytes + offset), colours};
    offset += colours * sizeof(RgbQuad);
    m_pixels = bytes + offset;
    m_stride = dibStride(static_cast<std::uint64_t>(h.width), h.bitCount);
    m_valid = true;
}

bool DibView::isGreyRamp() const {
    const std::size_t n = m_palette.size();
    if (n < 2)
        return false;
    for (std::size_t i = 0; i < n; ++i) {
        const RgbQuad& q = m_palette[i];
        const auto expected = static_cast<std::uint8_t>(i * 255 / (n - 1));
        if (q.red != expected || q.green != expected || q.blue != expected)
            return false;
    }
    return true;
}

} // namespace imagelib
