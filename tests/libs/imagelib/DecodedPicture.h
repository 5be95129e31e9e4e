#pragma once

#include "imagelib/core/DibHeader.h"
#include "imagelib/imagelib.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

using Bytes = std::vector<std::uint8_t>;
using Bgra = std::array<int, 4>; // alpha 255 for depths without one

// Pixel (x, y) from the top left of a packed bitmap, through the palette up to 8 bits.
inline Bgra pixelAt(const void* dib, int x, int y) {
    const auto& h = *static_cast<const imagelib::BitmapInfoHeader*>(dib);
    const auto* table = static_cast<const std::uint8_t*>(dib) + 40;
    const std::size_t colours = h.bitCount <= 8 ? (h.clrUsed ? h.clrUsed : 1u << h.bitCount) : 0;
    const std::uint8_t* row = table + colours * 4 +
                              imagelib::dibStride(static_cast<std::uint64_t>(h.width), h.bitCount) *
                                  static_cast<std::size_t>(h.height - 1 - y);
    switch (h.bitCount) {
    case 1:
    case 4:
    case 8: {
        const int index = h.bitCount == 8   ? row[x]
                          : h.bitCount == 4 ? (x & 1 ? row[x / 2] & 15 : row[x / 2] >> 4)
                                            : (row[x / 8] >> (7 - x % 8)) & 1;
        const std::uint8_t* q = table + 4 * index;
        return {q[0], q[1], q[2], 255};
    }
    case 16: { // 5-5-5
        const int p = imagelib::readLe16(row + 2 * x);
        auto scale = [](int v) { return (v * 255 + 15) / 31; };
        return {scale(p & 31), scale((p >> 5) & 31), scale((p >> 10) & 31), 255};
    }
    default: {
        const std::uint8_t* p = row + x * (h.bitCount / 8);
        return {p[0], p[1], p[2], h.bitCount == 32 ? p[3] : 255};
    }
    }
}

inline void expectNear(const Bgra& got, const Bgra& want, int tolerance) {
    for (std::size_t i = 0; i < 4; ++i)
        EXPECT_NEAR(got[i], want[i], tolerance) << "channel " << i;
}

// A picture the library returned, with its parameter block: what every codec suite reads.
struct DecodedPicture {
    std::unique_ptr<void, decltype(&ImageLib_Free)> dib{nullptr, &ImageLib_Free};
    ImageIoParams params{};

    // The library's texts are ASCII sentences.
    std::string error() const {
        std::string s;
        for (const char16_t* p = params.errorText; *p; ++p)
            s += static_cast<char>(*p);
        return s;
    }
    const imagelib::BitmapInfoHeader& header() const {
        return *static_cast<const imagelib::BitmapInfoHeader*>(dib.get());
    }
    std::size_t size() const { return ImageLib_DibSize(dib.get()); }
    Bytes bytes() const {
        const auto* p = static_cast<const std::uint8_t*>(dib.get());
        return Bytes(p, p + size());
    }
    Bgra pixel(int x, int y) const { return pixelAt(dib.get(), x, y); }
    // Row y counted from the top, past the colour table the header announces.
    const std::uint8_t* topRow(int y) const {
        const auto& h = header();
        const std::size_t colours = h.bitCount <= 8 ? h.clrUsed : 0;
        return static_cast<const std::uint8_t*>(dib.get()) + 40 + colours * 4 +
               imagelib::dibStride(h.width, h.bitCount) *
                   static_cast<std::size_t>(h.height - 1 - y);
    }
};

inline DecodedPicture openMemory(const Bytes& bytes, int page = 0) {
    DecodedPicture d;
    d.params.pageIndex = page;
    d.dib.reset(ImageLib_OpenMemory(bytes.data(), bytes.size(), &d.params));
    return d;
}

inline DecodedPicture openFile(const std::string& path, int page = 0) {
    DecodedPicture d;
    d.params.pageIndex = page;
    d.dib.reset(ImageLib_Open(path.c_str(), &d.params));
    return d;
}

inline DecodedPicture openScaled(const std::string& path, int box, ImageLibFullInfo& full) {
    DecodedPicture d;
    d.dib.reset(ImageLib_OpenScaled(path.c_str(), &d.params, box, box, &full));
    return d;
}

inline ImageIoParams saveParams(std::uint32_t format, std::uint32_t option = 0,
                                std::uint32_t flags = 0) {
    ImageIoParams p{};
    p.format = format;
    p.formatOption = option;
    imagelib::writeLe32(p.optionFlags, flags);
    return p;
}

// Saves through the library and reads the file back.
inline DecodedPicture saveAndOpen(const std::string& path, const void* dib,
                                  ImageIoParams params = {}) {
    EXPECT_TRUE(ImageLib_Save(path.c_str(), dib, &params));
    return openFile(path);
}

// A file the library must refuse, and the text it must give for it.
struct Refusal {
    const char* name;
    Bytes file;
    testing::Matcher<std::string> error = testing::Not(testing::IsEmpty());
    int page = 0;
};

inline void expectRefused(const std::vector<Refusal>& cases) {
    for (const Refusal& c : cases) {
        SCOPED_TRACE(c.name);
        const DecodedPicture d = openMemory(c.file, c.page);
        EXPECT_FALSE(d.dib);
        EXPECT_THAT(d.error(), c.error);
    }
}

// Every pixel of `d` against the packed bitmap `want`; without `alpha` the wanted alpha is 255.
inline void expectSamePixels(const DecodedPicture& d, const void* want, bool alpha = true) {
    const auto& h = *static_cast<const imagelib::BitmapInfoHeader*>(want);
    ASSERT_EQ(d.header().width, h.width);
    ASSERT_EQ(d.header().height, h.height);
    for (int y = 0; y < h.height; ++y)
        for (int x = 0; x < h.width; ++x) {
            Bgra w = pixelAt(want, x, y);
            w[3] = alpha ? w[3] : 255;
            ASSERT_EQ(d.pixel(x, y), w) << x << "," << y;
        }
}

// A packed bitmap built by hand from top-down rows without padding.
inline Bytes makeDib(int width, int height, int bits, const std::vector<imagelib::RgbQuad>& palette,
                     const Bytes& rows) {
    const auto stride = static_cast<std::size_t>(imagelib::dibStride(width, bits));
    imagelib::BitmapInfoHeader h{40,
                                 width,
                                 height,
                                 1,
                                 static_cast<std::uint16_t>(bits),
                                 0,
                                 static_cast<std::uint32_t>(stride * height),
                                 0,
                                 0,
                                 static_cast<std::uint32_t>(palette.size()),
                                 0};
    Bytes b(40 + palette.size() * 4);
    std::memcpy(b.data(), &h, 40);
    if (!palette.empty())
        std::memcpy(b.data() + 40, palette.data(), palette.size() * 4);
    const std::size_t used = (static_cast<std::size_t>(width) * bits + 7) / 8;
    for (int y = height - 1; y >= 0; --y) {
        b.insert(b.end(), rows.begin() + y * used, rows.begin() + (y + 1) * used);
        b.resize(b.size() + stride - used, 0);
    }
    return b;
}

// 21 x 5 pixels at 96 dpi with a pattern fit for the depth: indices over the whole palette; 5-5-5
// pure colours, white and black (exact whatever the rounding); anything in 24 and 32 bits.
inline Bytes patternDib(int bits, const std::vector<imagelib::RgbQuad>& palette = {}) {
    constexpr int kWidth = 21, kHeight = 5;
    const std::size_t used = (static_cast<std::size_t>(kWidth) * bits + 7) / 8;
    Bytes rows(used * kHeight, 0);
    for (int y = 0; y < kHeight; ++y)
        for (int x = 0; x < kWidth; ++x) {
            std::uint8_t* p = &rows[used * static_cast<std::size_t>(y) + x * bits / 8];
            if (bits <= 8)
                *p |= static_cast<std::uint8_t>(((x + 3 * y) % palette.size())
                                                << (8 - bits - x * bits % 8));
            else if (bits == 16)
                imagelib::writeLe16(p, static_cast<std::uint16_t>(x < 10 ? 0x7C00 >> (5 * (y % 3))
                                                                         : 0x7FFF * (x & 1)));
            else
                for (int i = 0; i < bits / 8; ++i)
                    p[i] = static_cast<std::uint8_t>(x * 40 + y * 9 + i * 71);
        }
    Bytes dib = makeDib(kWidth, kHeight, bits, palette, rows);
    auto* h = reinterpret_cast<imagelib::BitmapInfoHeader*>(dib.data());
    h->xPelsPerMeter = h->yPelsPerMeter = 3780; // 96 dpi
    return dib;
}

inline std::vector<imagelib::RgbQuad> greyRamp(int n) {
    std::vector<imagelib::RgbQuad> ramp;
    for (int i = 0; i < n; ++i) {
        const auto v = static_cast<std::uint8_t>(i * 255 / (n - 1));
        ramp.push_back({v, v, v, 0});
    }
    return ramp;
}
