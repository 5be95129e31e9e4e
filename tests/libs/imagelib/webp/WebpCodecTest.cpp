// The WebP codec: lossy and lossless files with and without alpha, reduced thumbnail decodes,
// animations as pages, damaged files, and saving with the quality and lossless options.
#include "../DecodedPicture.h"
#include "imagelib/core/DibHeader.h"
#include "imagelib/imagelib.h"
#include "imagelib/iopt.h"

#include <webp/encode.h>
#include <webp/types.h>

#include <gtest/gtest.h>

#include <array>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <unistd.h>
#include <vector>

using namespace imagelib;

namespace {

using Bytes = std::vector<std::uint8_t>;
using Bgra = std::array<int, 4>; // alpha 255 for pictures without

struct Decoded : DecodedPicture {
    Bgra pixel(int x, int y) const {
        const std::uint8_t* row = topRow(y);
        switch (header().bitCount) {
        case 32:
            return {row[4 * x], row[4 * x + 1], row[4 * x + 2], row[4 * x + 3]};
        case 24:
            return {row[3 * x], row[3 * x + 1], row[3 * x + 2], 255};
        default: {
            const auto* q = static_cast<const std::uint8_t*>(dib.get()) + 40 + row[x] * 4;
            return {q[0], q[1], q[2], 255};
        }
        }
    }
};

Decoded open(const Bytes& b) {
    Decoded d;
    d.dib.reset(ImageLib_OpenMemory(b.data(), b.size(), &d.params));
    return d;
}

// Four flat quarters, so that lossy coding keeps their middles close to the colour.
constexpr std::array<Bgra, 4> kQuarters = {
    {{0, 0, 255, 255}, {0, 255, 0, 128}, {255, 0, 0, 40}, {128, 128, 128, 200}}};

Bgra quarterAt(int x, int y, int w, int h) {
    return kQuarters[static_cast<std::size_t>((y >= h / 2 ? 2 : 0) + (x >= w / 2 ? 1 : 0))];
}

// Top-down rows, 3 or 4 bytes a pixel, no padding.
Bytes quarters(int w, int h, int channels) {
    Bytes b;
    for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x) {
            const Bgra c = quarterAt(x, y, w, h);
            b.insert(b.end(), c.begin(), c.begin() + channels);
        }
    return b;
}

Bytes encode(const Bytes& rows, int w, int h, bool alpha, bool lossless, float quality = 100) {
    std::uint8_t* out = nullptr;
    const int stride = w * (alpha ? 4 : 3);
    std::size_t n = 0;
    if (alpha)
        n = lossless ? WebPEncodeLosslessBGRA(rows.data(), w, h, stride, &out)
                     : WebPEncodeBGRA(rows.data(), w, h, stride, quality, &out);
    else
        n = lossless ? WebPEncodeLosslessBGR(rows.data(), w, h, stride, &out)
                     : WebPEncodeBGR(rows.data(), w, h, stride, quality, &out);
    Bytes b(out, out + n);
    WebPFree(out);
    return b;
}

void put(Bytes& b, std::uint32_t v, int bytes) {
    for (int i = 0; i < bytes; ++i)
        b.push_back(static_cast<std::uint8_t>(v >> (8 * i)));
}

Bytes chunk(const char* fourcc, const Bytes& payload) {
    Bytes b(fourcc, fourcc + 4);
    put(b, static_cast<std::uint32_t>(payload.size()), 4);
    b.insert(b.end(), payload.begin(), payload.end());
    if (payload.size() % 2)
        b.push_back(0);
    return b;
}

Bytes riff(const Bytes& body) {
    Bytes b = {'R', 'I', 'F', 'F'};
    put(b, static_cast<std::uint32_t>(4 + body.size()), 4);
    b.insert(b.end(), {'W', 'E', 'B', 'P'});
    b.insert(b.end(), body.begin(), body.end());
    return b;
}

struct Frame {
    int x, y, w, h;
    Bgra colour;
};

// An animation assembled chunk by chunk; every frame replaces what lies under it.
Bytes animation(int w, int h, const std::vector<Frame>& frames) {
    Bytes vp8x = {0x02, 0, 0, 0}; // animated, no alpha
    put(vp8x, static_cast<std::uint32_t>(w - 1), 3);
    put(vp8x, static_cast<std::uint32_t>(h - 1), 3);
    Bytes body = chunk("VP8X", vp8x);
    const Bytes anim = chunk("ANIM", Bytes(6, 0)); // background and loop count
    body.insert(body.end(), anim.begin(), anim.end());
    for (const Frame& f : frames) {
        Bytes rows;
        for (int i = 0; i < f.w * f.h; ++i)
            rows.insert(rows.end(), f.colour.begin(), f.colour.begin() + 3);
        const Bytes still = encode(rows, f.w, f.h, false, true);
        Bytes anmf;
        put(anmf, static_cast<std::uint32_t>(f.x / 2), 3);
        put(anmf, static_cast<std::uint32_t>(f.y / 2), 3);
        put(anmf, static_cast<std::uint32_t>(f.w - 1), 3);
        put(anmf, static_cast<std::uint32_t>(f.h - 1), 3);
        put(anmf, 100, 3);                                        // duration
        anmf.push_back(0x02);                                     // no blending
        anmf.insert(anmf.end(), still.begin() + 12, still.end()); // the VP8L chunk
        const Bytes c = chunk("ANMF", anmf);
        body.insert(body.end(), c.begin(), c.end());
    }
    return riff(body);
}

// A packed bitmap built by hand from top-down rows without padding.
Bytes dib(int width, int height, int bitCount, const std::vector<RgbQuad>& palette,
          const Bytes& rows) {
    Bytes b(40 + palette.size() * 4);
    BitmapInfoHeader h{};
    h.size = 40;
    h.width = width;
    h.height = height;
    h.planes = 1;
    h.bitCount = static_cast<std::uint16_t>(bitCount);
    h.clrUsed = static_cast<std::uint32_t>(palette.size());
    std::memcpy(b.data(), &h, 40);
    if (!palette.empty())
        std::memcpy(b.data() + 40, palette.data(), palette.size() * 4);
    const std::size_t used = (static_cast<std::size_t>(width) * bitCount + 7) / 8;
    for (int y = height - 1; y >= 0; --y) {
        b.insert(b.end(), rows.begin() + y * used, rows.begin() + (y + 1) * used);
        b.resize(b.size() + dibStride(width, bitCount) - used, 0);
    }
    return b;
}

std::filesystem::path tempDir() {
    auto dir =
        std::filesystem::temp_directory_path() / ("imagelib-webp-" + std::to_string(::getpid()));
    std::filesystem::create_directories(dir);
    return dir;
}

void writeFile(const std::filesystem::path& p, const Bytes& b) {
    std::ofstream(p, std::ios::binary)
        .write(reinterpret_cast<const char*>(b.data()), static_cast<std::streamsize>(b.size()));
}

ImageIoParams saveParams(std::uint32_t quality, std::uint32_t flags) {
    ImageIoParams p{};
    p.format = IMAGELIB_FMT_WEBP;
    p.formatOption = quality;
    writeLe32(p.optionFlags, flags);
    return p;
}

void expectNear(const Bgra& got, const Bgra& want, int tolerance) {
    for (std::size_t i = 0; i < 4; ++i)
        EXPECT_NEAR(got[i], want[i], tolerance) << "channel " << i;
}

constexpr int kW = 34; // odd stride at 24 bits: two bytes of padding a row
constexpr int kH = 16;

} // namespace

TEST(WebpCodec, DecodesLossyAndLosslessWithAndWithoutAlpha) {
    struct Row {
        const char* name;
        bool alpha;
        bool lossless;
        int tolerance;
    };
    const Row rows[] = {
        {"lossless", false, true, 0},
        {"lossy", false, false, 12},
        {"lossless with alpha", true, true, 0},
        {"lossy with alpha", true, false, 12},
    };
    for (const Row& r : rows) {
        SCOPED_TRACE(r.name);
        const Decoded d =
            open(encode(quarters(kW, kH, r.alpha ? 4 : 3), kW, kH, r.alpha, r.lossless));
        ASSERT_TRUE(d.dib) << d.error();
        EXPECT_EQ(d.params.format, IMAGELIB_FMT_WEBP);
        EXPECT_EQ(d.params.pageCount, 1);
        EXPECT_EQ(d.header().bitCount, r.alpha ? 32 : 24);
        EXPECT_EQ(d.header().width, kW);
        EXPECT_EQ(d.header().height, kH);
        for (const auto& [x, y] : {std::pair{4, 3}, {28, 3}, {4, 12}, {28, 12}}) {
            SCOPED_TRACE(std::to_string(x) + "," + std::to_string(y));
            Bgra want = quarterAt(x, y, kW, kH);
            if (!r.alpha)
                want[3] = 255;
            expectNear(d.pixel(x, y), want, r.tolerance);
        }
        if (!r.alpha) {
            for (int y = 0; y < kH; ++y)
                EXPECT_EQ(readLe16(d.topRow(y) + 3 * kW), 0) << "padding of row " << y;
        }
    }
}

TEST(WebpCodec, ThumbnailDecodeIsReducedButReportsTheWholePicture) {
    const auto dir = tempDir();
    const auto path = dir / "wide.webp";
    writeFile(path, encode(quarters(640, 320, 3), 640, 320, false, true));
    ImageIoParams params{};
    ImageLibFullInfo full{};
    Decoded d;
    d.dib.reset(ImageLib_OpenScaled(path.c_str(), &params, 96, 96, &full));
    ASSERT_TRUE(d.dib);
    // Twice the box in height; the width follows the picture's shape.
    EXPECT_EQ(d.header().width, 384);
    EXPECT_EQ(d.header().height, 192);
    EXPECT_EQ(full.width, 640);
    EXPECT_EQ(full.height, 320);
    EXPECT_EQ(full.bitCount, 24);
    expectNear(d.pixel(300, 20), {0, 255, 0, 255}, 2);
    expectNear(d.pixel(50, 170), {255, 0, 0, 255}, 2);

    // A picture already below twice the box is decoded whole.
    writeFile(path, encode(quarters(kW, kH, 3), kW, kH, false, true));
    d.dib.reset(ImageLib_OpenScaled(path.c_str(), &params, 96, 96, &full));
    ASSERT_TRUE(d.dib);
    EXPECT_EQ(d.header().width, kW);
    EXPECT_EQ(d.header().height, kH);
    std::filesystem::remove_all(dir);
}

TEST(WebpCodec, AnimationFramesArePagesComposedOnTheCanvas) {
    const Bgra red{0, 0, 255, 255}, green{0, 255, 0, 255}, blue{255, 0, 0, 255};
    const Bytes file =
        animation(4, 4, {{0, 0, 4, 4, red}, {2, 2, 2, 2, green}, {0, 0, 4, 4, blue}});
    for (int page = 0; page < 3; ++page) {
        SCOPED_TRACE(page);
        Decoded d;
        d.params.pageIndex = page;
        d.dib.reset(ImageLib_OpenMemory(file.data(), file.size(), &d.params));
        ASSERT_TRUE(d.dib) << d.error();
        EXPECT_EQ(d.params.pageCount, 3);
        EXPECT_EQ(d.header().bitCount, 24);
        EXPECT_EQ(d.pixel(0, 0), page == 2 ? blue : red);
        EXPECT_EQ(d.pixel(3, 3), page == 0 ? red : page == 1 ? green : blue);
        EXPECT_EQ(d.pixel(1, 3), page == 2 ? blue : red);
    }
    Decoded past;
    past.params.pageIndex = 3;
    past.dib.reset(ImageLib_OpenMemory(file.data(), file.size(), &past.params));
    EXPECT_FALSE(past.dib);
    EXPECT_EQ(past.error(), "The WebP file has no page 4.");

    Bytes cut = file;
    cut.resize(cut.size() - 10);
    EXPECT_FALSE(open(cut).dib);
}

TEST(WebpCodec, DamagedAndHostileFilesGiveAText) {
    const Bytes lossless = encode(quarters(kW, kH, 3), kW, kH, false, true);
    const Bytes lossy = encode(quarters(kW, kH, 3), kW, kH, false, false);
    Bytes vp8lHuge = {0x2F};
    put(vp8lHuge, 16382 | (16382u << 14), 4); // 16383 x 16383 from a handful of bytes
    vp8lHuge.resize(24, 0x55);
    const Bytes junk = chunk("VP8L", Bytes(40, 0xA7));
    const std::vector<std::pair<const char*, Bytes>> cases = {
        {"lossless cut in half", Bytes(lossless.begin(), lossless.begin() + lossless.size() / 2)},
        {"lossy cut in half", Bytes(lossy.begin(), lossy.begin() + lossy.size() / 2)},
        {"garbage after the header", riff(junk)},
        {"nothing after the header", riff({})},
        {"huge claim", riff(chunk("VP8L", vp8lHuge))},
    };
    for (const auto& [name, file] : cases) {
        SCOPED_TRACE(name);
        const Decoded d = open(file);
        EXPECT_FALSE(d.dib);
        EXPECT_FALSE(d.error().empty());
    }
    EXPECT_EQ(open(riff(chunk("VP8L", vp8lHuge))).error(),
              "The WebP file claims a picture far larger than its data.");
    Decoded second;
    second.params.pageIndex = 1;
    second.dib.reset(ImageLib_OpenMemory(lossless.data(), lossless.size(), &second.params));
    EXPECT_EQ(second.error(), "The WebP file has no page 2.");
}

TEST(WebpCodec, LosslessSavesKeepEveryDepthsPixels) {
    std::vector<RgbQuad> ramp(256);
    for (int i = 0; i < 256; ++i) {
        const auto v = static_cast<std::uint8_t>(i);
        ramp[static_cast<std::size_t>(i)] = {v, v, v, 0};
    }
    Bytes noAlpha = quarters(kW, kH, 4);
    for (std::size_t i = 3; i < noAlpha.size(); i += 4)
        noAlpha[i] = 0;
    struct Row {
        const char* name;
        Bytes picture;
        int bitCount; // read back
    };
    const std::vector<Row> rows = {
        {"24-bit", dib(kW, kH, 24, {}, quarters(kW, kH, 3)), 24},
        {"32-bit with alpha", dib(kW, kH, 32, {}, quarters(kW, kH, 4)), 32},
        {"32-bit whose fourth bytes are unset", dib(kW, kH, 32, {}, noAlpha), 24},
        {"8-bit grey", dib(3, 1, 8, ramp, {0, 77, 255}), 24},
        {"8-bit colour palette", dib(3, 1, 8, {{1, 2, 3, 0}, {250, 0, 9, 0}}, {1, 0, 1}), 24},
    };
    const auto dir = tempDir();
    const auto path = dir / "round.webp";
    for (const Row& r : rows) {
        SCOPED_TRACE(r.name);
        ImageIoParams save = saveParams(0, IOPT_WEBP_LOSSLESS);
        ASSERT_EQ(ImageLib_CanSave(r.picture.data(), &save), 1);
        ASSERT_TRUE(ImageLib_Save(path.c_str(), r.picture.data(), &save));
        Decoded back;
        back.dib.reset(ImageLib_Open(path.c_str(), &back.params));
        ASSERT_TRUE(back.dib) << back.error();
        EXPECT_EQ(back.header().bitCount, r.bitCount);
        Decoded original;
        original.dib.reset(std::malloc(r.picture.size()));
        std::memcpy(original.dib.get(), r.picture.data(), r.picture.size());
        for (int y = 0; y < original.header().height; ++y)
            for (int x = 0; x < original.header().width; ++x) {
                Bgra want = original.pixel(x, y);
                if (r.bitCount == 24)
                    want[3] = 255;
                ASSERT_EQ(back.pixel(x, y), want) << x << "," << y;
            }
    }
    std::filesystem::remove_all(dir);
}

TEST(WebpCodec, SaveHonoursQualityAndRefusesOtherDepths) {
    // Noise, so that quality changes the size.
    Bytes rows(64 * 64 * 3);
    std::uint32_t seed = 12345;
    for (std::uint8_t& b : rows) {
        seed = seed * 1103515245 + 12345;
        b = static_cast<std::uint8_t>(seed >> 16);
    }
    const Bytes picture = dib(64, 64, 24, {}, rows);
    const auto dir = tempDir();
    auto sizeAt = [&](std::uint32_t quality) {
        ImageIoParams p = saveParams(quality, 0);
        const auto path = dir / ("q" + std::to_string(quality) + ".webp");
        EXPECT_TRUE(ImageLib_Save(path.c_str(), picture.data(), &p));
        return std::filesystem::file_size(path);
    };
    EXPECT_LT(sizeAt(1), sizeAt(100));
    EXPECT_EQ(sizeAt(0), sizeAt(90)); // 0 stands for the default

    const ImageIoParams webp = saveParams(0, 0);
    for (const Bytes& b : {dib(1, 1, 1, {{0, 0, 0, 0}, {255, 255, 255, 0}}, {0}),
                           dib(1, 1, 4, {{0, 0, 0, 0}}, {0}), dib(2, 1, 16, {}, {0, 0, 0, 0})})
        EXPECT_EQ(ImageLib_CanSave(b.data(), &webp), 0);
    std::filesystem::remove_all(dir);
}
