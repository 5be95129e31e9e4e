#include "../DecodedPicture.h"
#include "../ScratchDir.h"
#include "imagelib/iopt.h"

#include <webp/encode.h>
#include <webp/types.h>

#include <gtest/gtest.h>

#include <filesystem>

using namespace imagelib;

namespace {

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

Bytes encode(const Bytes& rows, int w, int h, bool alpha, bool lossless) {
    std::uint8_t* out = nullptr;
    const int stride = w * (alpha ? 4 : 3);
    std::size_t n = 0;
    if (alpha)
        n = lossless ? WebPEncodeLosslessBGRA(rows.data(), w, h, stride, &out)
                     : WebPEncodeBGRA(rows.data(), w, h, stride, 100, &out);
    else
        n = lossless ? WebPEncodeLosslessBGR(rows.data(), w, h, stride, &out)
                     : WebPEncodeBGR(rows.data(), w, h, stride, 100, &out);
    Bytes b(out, out + n);
    WebPFree(out);
    return b;
}

void put(Bytes& b, std::uint32_t v, int bytes) {
    for (int i = 0; i < bytes; ++i)
        b.push_back(static_cast<std::uint8_t>(v >> (8 * i)));
}

void chunk(Bytes& b, const char* fourcc, const Bytes& payload) {
    b.insert(b.end(), fourcc, fourcc + 4);
    put(b, static_cast<std::uint32_t>(payload.size()), 4);
    b.insert(b.end(), payload.begin(), payload.end());
    if (payload.size() % 2)
        b.push_back(0);
}

Bytes riff(const Bytes& body) {
    Bytes b = {'R', 'I', 'F', 'F'};
    put(b, static_cast<std::uint32_t>(4 + body.size()), 4);
    b.insert(b.end(), {'W', 'E', 'B', 'P'});
    b.insert(b.end(), body.begin(), body.end());
    return b;
}

Bytes riffChunk(const char* fourcc, const Bytes& payload) {
    Bytes body;
    chunk(body, fourcc, payload);
    return riff(body);
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
    Bytes body;
    chunk(body, "VP8X", vp8x);
    chunk(body, "ANIM", Bytes(6, 0)); // background and loop count
    for (const Frame& f : frames) {
        Bytes rows;
        for (int i = 0; i < f.w * f.h; ++i)
            rows.insert(rows.end(), f.colour.begin(), f.colour.begin() + 3);
        const Bytes still = encode(rows, f.w, f.h, false, true);
        Bytes anmf;
        for (int v : {f.x / 2, f.y / 2, f.w - 1, f.h - 1, 100}) // the last is the duration
            put(anmf, static_cast<std::uint32_t>(v), 3);
        anmf.push_back(0x02);                                     // no blending
        anmf.insert(anmf.end(), still.begin() + 12, still.end()); // the VP8L chunk
        chunk(body, "ANMF", anmf);
    }
    return riff(body);
}

constexpr int kW = 34; // odd stride at 24 bits: two bytes of padding a row
constexpr int kH = 16;

} // namespace

TEST(WebpCodec, DecodesLossyAndLosslessWithAndWithoutAlpha) {
    for (const bool alpha : {false, true})
        for (const bool lossless : {false, true}) {
            SCOPED_TRACE(std::string(lossless ? "lossless" : "lossy") + (alpha ? " alpha" : ""));
            const DecodedPicture d =
                openMemory(encode(quarters(kW, kH, alpha ? 4 : 3), kW, kH, alpha, lossless));
            ASSERT_TRUE(d.dib) << d.error();
            EXPECT_EQ(d.params.format, IMAGELIB_FMT_WEBP);
            EXPECT_EQ(d.params.pageCount, 1);
            EXPECT_EQ(d.header().bitCount, alpha ? 32 : 24);
            EXPECT_EQ(d.header().width, kW);
            EXPECT_EQ(d.header().height, kH);
            for (const auto& [x, y] : {std::pair{4, 3}, {28, 3}, {4, 12}, {28, 12}}) {
                Bgra want = quarterAt(x, y, kW, kH);
                if (!alpha)
                    want[3] = 255;
                expectNear(d.pixel(x, y), want, lossless ? 0 : 12);
            }
            for (int y = 0; y < kH && !alpha; ++y)
                EXPECT_EQ(readLe16(d.topRow(y) + 3 * kW), 0) << "padding of row " << y;
        }
}

TEST(WebpCodec, ThumbnailDecodeIsReducedButReportsTheWholePicture) {
    const ScratchDir dir;
    const std::string path = dir.file("wide.webp");
    struct Row {
        int width, height, outWidth, outHeight;
    };
    // Twice the box in height and the width by the picture's shape; a picture already below
    // twice the box is decoded whole.
    for (const Row& r : {Row{640, 320, 384, 192}, Row{kW, kH, kW, kH}}) {
        writeFile(path, encode(quarters(r.width, r.height, 3), r.width, r.height, false, true));
        ImageLibFullInfo full{};
        const DecodedPicture d = openScaled(path, 96, full);
        ASSERT_TRUE(d.dib);
        EXPECT_EQ(d.header().width, r.outWidth);
        EXPECT_EQ(d.header().height, r.outHeight);
        EXPECT_EQ(full.width, r.width);
        EXPECT_EQ(full.height, r.height);
        EXPECT_EQ(full.bitCount, 24);
        expectNear(d.pixel(r.outWidth * 4 / 5, 1), {0, 255, 0, 255}, 2);
        expectNear(d.pixel(1, r.outHeight - 2), {255, 0, 0, 255}, 2);
    }
}

TEST(WebpCodec, AnimationFramesArePagesComposedOnTheCanvas) {
    const Bgra red{0, 0, 255, 255}, green{0, 255, 0, 255}, blue{255, 0, 0, 255};
    const Bytes file =
        animation(4, 4, {{0, 0, 4, 4, red}, {2, 2, 2, 2, green}, {0, 0, 4, 4, blue}});
    for (int page = 0; page < 3; ++page) {
        SCOPED_TRACE(page);
        const DecodedPicture d = openMemory(file, page);
        ASSERT_TRUE(d.dib) << d.error();
        EXPECT_EQ(d.params.pageCount, 3);
        EXPECT_EQ(d.header().bitCount, 24);
        EXPECT_EQ(d.pixel(0, 0), page == 2 ? blue : red);
        EXPECT_EQ(d.pixel(3, 3), page == 0 ? red : page == 1 ? green : blue);
        EXPECT_EQ(d.pixel(1, 3), page == 2 ? blue : red);
    }
    const DecodedPicture past = openMemory(file, 3);
    EXPECT_FALSE(past.dib);
    EXPECT_EQ(past.error(), "The WebP file has no page 4.");
}

TEST(WebpCodec, DamagedAndHostileFilesGiveAText) {
    const Bytes lossless = encode(quarters(kW, kH, 3), kW, kH, false, true);
    const Bytes lossy = encode(quarters(kW, kH, 3), kW, kH, false, false);
    const Bytes anim = animation(4, 4, {{0, 0, 4, 4, {}}, {0, 0, 4, 4, {}}});
    Bytes vp8lHuge = {0x2F};
    put(vp8lHuge, 16382 | (16382u << 14), 4); // 16383 x 16383 from a handful of bytes
    vp8lHuge.resize(24, 0x55);
    expectRefused({
        {"lossless cut in half", Bytes(lossless.begin(), lossless.begin() + lossless.size() / 2)},
        {"lossy cut in half", Bytes(lossy.begin(), lossy.begin() + lossy.size() / 2)},
        {"animation cut short", Bytes(anim.begin(), anim.end() - 10)},
        {"garbage after the header", riffChunk("VP8L", Bytes(40, 0xA7))},
        {"nothing after the header", riff({})},
        {"huge claim", riffChunk("VP8L", vp8lHuge),
         "The WebP file claims a picture far larger than its data."},
        {"page past a still picture", lossless, "The WebP file has no page 2.", 1},
    });
}

TEST(WebpCodec, LosslessSavesKeepEveryDepthsPixels) {
    Bytes noAlpha = quarters(kW, kH, 4);
    for (std::size_t i = 3; i < noAlpha.size(); i += 4)
        noAlpha[i] = 0;
    const std::vector<std::tuple<const char*, Bytes, int>> rows = {
        // bits read back
        {"24-bit", makeDib(kW, kH, 24, {}, quarters(kW, kH, 3)), 24},
        {"32-bit with alpha", makeDib(kW, kH, 32, {}, quarters(kW, kH, 4)), 32},
        {"32-bit whose fourth bytes are unset", makeDib(kW, kH, 32, {}, noAlpha), 24},
        {"8-bit grey", makeDib(3, 1, 8, greyRamp(256), {0, 77, 255}), 24},
        {"8-bit colour palette", makeDib(3, 1, 8, {{1, 2, 3, 0}, {250, 0, 9, 0}}, {1, 0, 1}), 24},
    };
    const ScratchDir dir;
    const std::string path = dir.file("round.webp");
    for (const auto& [name, picture, bitCount] : rows) {
        SCOPED_TRACE(name);
        const ImageIoParams save = saveParams(IMAGELIB_FMT_WEBP, 0, IOPT_WEBP_LOSSLESS);
        ASSERT_EQ(ImageLib_CanSave(picture.data(), &save), 1);
        const DecodedPicture back = saveAndOpen(path, picture.data(), save);
        ASSERT_TRUE(back.dib) << back.error();
        EXPECT_EQ(back.header().bitCount, bitCount);
        expectSamePixels(back, picture.data(), bitCount == 32);
    }
}

TEST(WebpCodec, SaveHonoursQualityAndRefusesOtherDepths) {
    // Noise, so that quality changes the size.
    Bytes rows(64 * 64 * 3);
    std::uint32_t seed = 12345;
    for (std::uint8_t& b : rows) {
        seed = seed * 1103515245 + 12345;
        b = static_cast<std::uint8_t>(seed >> 16);
    }
    const Bytes picture = makeDib(64, 64, 24, {}, rows);
    const ScratchDir dir;
    auto sizeAt = [&](std::uint32_t quality) {
        ImageIoParams p = saveParams(IMAGELIB_FMT_WEBP, quality);
        const std::string path = dir.file("q" + std::to_string(quality) + ".webp");
        EXPECT_TRUE(ImageLib_Save(path.c_str(), picture.data(), &p));
        return std::filesystem::file_size(path);
    };
    EXPECT_LT(sizeAt(1), sizeAt(100));
    EXPECT_EQ(sizeAt(0), sizeAt(90)); // 0 stands for the default

    const ImageIoParams webp = saveParams(IMAGELIB_FMT_WEBP);
    for (const Bytes& b : {makeDib(1, 1, 1, greyRamp(2), {0}), makeDib(1, 1, 4, greyRamp(2), {0}),
                           makeDib(2, 1, 16, {}, {0, 0, 0, 0})})
        EXPECT_EQ(ImageLib_CanSave(b.data(), &webp), 0);
}
