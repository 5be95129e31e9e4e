#include "sane/PageConvert.h"

#include "imagelib/imagelib.h"
#include "twain/twain.h"

#include <cstdlib>
#include <cstring>
#include <memory>

namespace twaindsm {

namespace {

constexpr std::uint32_t kHeader = 40;
constexpr double kInchesPerMetre = 39.3700787;

std::uint32_t paletteEntries(const ScanPage& page) {
    return page.kind == ScanPage::Kind::BlackWhite ? 2
           : page.kind == ScanPage::Kind::Gray     ? 256
                                                   : 0;
}

std::uint64_t dibStride(const ScanPage& page) {
    return ((std::uint64_t(page.bitsPerPixel()) * std::uint64_t(page.width) + 31) / 32) * 4;
}

bool wellFormed(const ScanPage& page) {
    if (page.width <= 0 || page.height <= 0)
        return false;
    const std::uint64_t needed = (std::uint64_t(page.width) * page.bitsPerPixel() + 7) / 8;
    return page.bytesPerLine >= needed &&
           page.data.size() >= std::uint64_t(page.bytesPerLine) * std::uint64_t(page.height);
}

void put32(std::uint8_t* p, std::uint32_t v) {
    std::memcpy(p, &v, 4);
}
void put16(std::uint8_t* p, std::uint16_t v) {
    std::memcpy(p, &v, 2);
}

} // namespace

std::uint64_t PageConvert::dibSize(const ScanPage& page) {
    return kHeader + 4ull * paletteEntries(page) + dibStride(page) * std::uint64_t(page.height);
}

void* PageConvert::toDib(const ScanPage& page) {
    if (!wellFormed(page))
        return nullptr;
    auto* block = static_cast<std::uint8_t*>(allocDib(page));
    if (!block)
        return nullptr;
    for (std::int32_t y = 0; y < page.height; ++y)
        putRow(page, block, y, page.data.data() + std::size_t(y) * page.bytesPerLine);
    return block;
}

void* PageConvert::allocDib(const ScanPage& page) {
    if (page.width <= 0 || page.height <= 0)
        return nullptr;
    const std::uint64_t size = dibSize(page);
    if (size > 0x7FFFFFFFull)
        return nullptr;
    auto* block = static_cast<std::uint8_t*>(std::malloc(size));
    if (!block)
        return nullptr;
    const std::uint32_t colours = paletteEntries(page);
    const std::uint64_t stride = dibStride(page);
    const auto ppm = static_cast<std::int32_t>(page.dpi * kInchesPerMetre + 0.5);
    std::memset(block, 0, kHeader);
    put32(block, kHeader);
    put32(block + 4, static_cast<std::uint32_t>(page.width));
    put32(block + 8, static_cast<std::uint32_t>(page.height));
    put16(block + 12, 1);
    put16(block + 14, static_cast<std::uint16_t>(page.bitsPerPixel()));
    put32(block + 20, static_cast<std::uint32_t>(stride * std::uint64_t(page.height)));
    put32(block + 24, static_cast<std::uint32_t>(ppm));
    put32(block + 28, static_cast<std::uint32_t>(ppm));
    put32(block + 32, colours);
    std::uint8_t* palette = block + kHeader;
    for (std::uint32_t i = 0; i < colours; ++i) {
        const auto g = static_cast<std::uint8_t>(colours == 2 ? i * 255 : i);
        palette[4 * i] = palette[4 * i + 1] = palette[4 * i + 2] = g;
        palette[4 * i + 3] = 0;
    }
    return block;
}

void PageConvert::putRow(const ScanPage& page, void* dib, std::int32_t y, const std::uint8_t* src) {
    const std::uint64_t stride = dibStride(page);
    std::uint8_t* rows = static_cast<std::uint8_t*>(dib) + kHeader + 4 * paletteEntries(page);
    std::uint8_t* dst = rows + std::size_t(page.height - 1 - y) * stride;
    const std::size_t used = (std::size_t(page.width) * page.bitsPerPixel() + 7) / 8;
    switch (page.kind) {
    case ScanPage::Kind::Rgb:
        for (std::int32_t x = 0; x < page.width; ++x) {
            dst[3 * x] = src[3 * x + 2];
            dst[3 * x + 1] = src[3 * x + 1];
            dst[3 * x + 2] = src[3 * x];
        }
        break;
    case ScanPage::Kind::Gray:
        std::memcpy(dst, src, used);
        break;
    case ScanPage::Kind::BlackWhite:
        // The scanner's 1 is black; the palette's index 1 is white.
        for (std::size_t i = 0; i < used; ++i)
            dst[i] = static_cast<std::uint8_t>(~src[i]);
        if (const int spare = page.width % 8)
            dst[used - 1] &= static_cast<std::uint8_t>(0xFF << (8 - spare));
        break;
    }
    std::memset(dst + used, 0, stride - used);
}

void PageConvert::shortenDib(ScanPage& page, void* dib, std::int32_t rows) {
    if (rows <= 0 || rows >= page.height)
        return;
    const std::uint64_t stride = dibStride(page);
    auto* block = static_cast<std::uint8_t*>(dib);
    std::uint8_t* first = block + kHeader + 4 * paletteEntries(page);
    // Bottom-up: the rows delivered sit at the top end of the block.
    std::memmove(first, first + std::size_t(page.height - rows) * stride,
                 std::size_t(rows) * stride);
    page.height = rows;
    put32(block + 8, static_cast<std::uint32_t>(rows));
    put32(block + 20, static_cast<std::uint32_t>(stride * std::uint64_t(rows)));
}

std::uint32_t PageConvert::rowBytes(const ScanPage& page) {
    return static_cast<std::uint32_t>((std::uint64_t(page.width) * page.bitsPerPixel() + 7) / 8);
}

void PageConvert::copyRows(const ScanPage& page, std::uint32_t first, std::uint32_t count,
                           std::uint8_t* out) {
    const std::uint32_t n = rowBytes(page);
    for (std::uint32_t i = 0; i < count; ++i) {
        const std::uint8_t* src = page.data.data() + std::size_t(first + i) * page.bytesPerLine;
        std::uint8_t* dst = out + std::size_t(i) * n;
        if (page.kind == ScanPage::Kind::BlackWhite)
            for (std::uint32_t b = 0; b < n; ++b)
                dst[b] = static_cast<std::uint8_t>(~src[b]);
        else
            std::memcpy(dst, src, n);
    }
}

bool PageConvert::toFile(const ScanPage& page, const std::string& path, unsigned format,
                         std::string& error) {
    ImageIoParams params{};
    switch (format) {
    case TWFF_BMP:
        params.format = IMAGELIB_FMT_BMP;
        break;
    case TWFF_TIFF:
    case TWFF_TIFFMULTI:
        params.format = IMAGELIB_FMT_TIFF;
        break;
    case TWFF_PNG:
        params.format = IMAGELIB_FMT_PNG;
        break;
    case TWFF_JFIF:
        params.format = IMAGELIB_FMT_JPEG;
        break;
    default:
        error = "This file format is not offered.";
        return false;
    }
    std::unique_ptr<void, decltype(&std::free)> dib(toDib(page), &std::free);
    if (!dib) {
        error = "Not enough memory for the picture.";
        return false;
    }
    if (!ImageLib_Save(path.c_str(), dib.get(), &params)) {
        error.clear();
        for (char16_t c : params.errorText) {
            if (!c)
                break;
            error.push_back(c < 0x80 ? static_cast<char>(c) : '?');
        }
        return false;
    }
    return true;
}

} // namespace twaindsm
