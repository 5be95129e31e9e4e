// Small files that claim huge pictures, made here with the formats' own libraries: each must
// be refused, or give its thumbnail, within bounds of memory and time. The memory bound is an
// address-space cap, so an allocation past it fails the case instead of succeeding slowly.
#include "../../support/HostileFiles.h"

#include "../../support/MemoryCap.h"
#include "DecodedPicture.h"
#include "ScratchDir.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <functional>
#include <thread>

namespace {

// Sanitizer builds run unoptimised and check every access: their time bounds are looser.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr double kSlowBuild = 10.0;
#else
constexpr double kSlowBuild = 1.0;
#endif

using namespace hostile;

std::string errorText(const DecodedPicture& d) {
    std::string s;
    for (const char16_t* p = d.params.errorText; *p; ++p)
        s += *p == u'\u00d7' ? std::string("x") : std::string(1, static_cast<char>(*p));
    return s;
}

enum class Mode { Open, Thumbnail };

struct Case {
    const char* name;
    std::function<Bytes(const std::string& path)> make;
    Mode mode;
    // Empty: a picture is expected.
    std::string error;
    std::uint64_t allowanceMb;
    double seconds;
};

TEST(HostileFiles, AreRefusedOrThumbnailedWithinBounds) {
    ScratchDir dir;
    const auto png = [](std::uint32_t side, bool interlaced, double keep = 1.0,
                        std::size_t size = 0) {
        return [=](const std::string&) { return padded(whitePng(side, interlaced, keep), size); };
    };
    const auto fax = [](std::uint32_t side) {
        return [=](const std::string& path) { return padded(whiteFax(path, side), 9500); };
    };
    const auto jpeg = [](std::uint16_t side) {
        return [=](const std::string&) { return padded(claimingJpeg(side), 12700); };
    };
    const auto gif = [](std::uint16_t side) {
        return [=](const std::string&) { return padded(tinyFrameGif(side, side), 100000); };
    };
    const auto rle = [](std::int32_t width, std::int32_t height) {
        return [=](const std::string&) { return padded(rleBmp(width, height), 720000); };
    };
    const std::string tooLarge37800 = "The picture is 37800 x 37800 pixels, too large to open.";
    const Case cases[] = {
        {"1-bit PNG 37800 square, opened", png(37800, false), Mode::Open, tooLarge37800, 64, 0.5},
        {"1-bit PNG 37800 square, thumbnail", png(37800, false), Mode::Thumbnail, "", 100, 30},
        {"interlaced PNG 37800 square, thumbnail", png(37800, true), Mode::Thumbnail, "", 100, 30},
        {"broken interlaced PNG 46000 square, opened", png(46000, true, 0.5, 250000), Mode::Open,
         "The picture is 46000 x 46000 pixels, too large to open.", 64, 0.5},
        {"broken interlaced PNG 46000 square, thumbnail", png(46000, true, 0.5, 250000),
         Mode::Thumbnail, "", 100, 30}, // the first pass arrived whole
        {"G4 fax 37800 square, opened", fax(37800), Mode::Open, tooLarge37800, 64, 0.5},
        {"G4 fax 37800 square, thumbnail", fax(37800), Mode::Thumbnail, "", 100, 30},
        {"progressive JPEG 23168 square, opened", jpeg(23168), Mode::Open,
         "The picture is 23168 x 23168 pixels, too large to open.", 64, 0.5},
        {"progressive JPEG 23168 square, thumbnail", jpeg(23168), Mode::Thumbnail,
         "The picture is 23168 x 23168 pixels, too large to open.", 64, 0.5},
        {"RLE bitmap 65535 x 21845, opened", rle(65535, 21845), Mode::Open,
         "The picture is 65535 x 21845 pixels, too large to open.", 64, 0.5},
        {"RLE bitmap 65535 x 21845, thumbnail", rle(65535, 21845), Mode::Thumbnail, "", 100, 30},
        {"GIF screen 20000 square, opened", gif(20000), Mode::Open,
         "The picture is 20000 x 20000 pixels, too large to open.", 64, 0.5},
        {"GIF screen 20000 square, thumbnail", gif(20000), Mode::Thumbnail, "", 100, 30},
        {"RLE bitmap within the budget, opened", rle(8000, 6000), Mode::Open, "", 100, 5},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        const std::string path = dir.file("hostile");
        const Bytes file = c.make(path);
        writeFile(path, file);
        DecodedPicture d;
        ImageLibFullInfo full{};
        const auto spent = memorycap::run(c.allowanceMb, [&] {
            if (c.mode == Mode::Open)
                d = openFile(path);
            else
                d = openScaled(path, 96, full);
        });
        EXPECT_LE(spent.seconds, c.seconds * kSlowBuild);
        EXPECT_EQ(errorText(d), c.error);
        EXPECT_EQ(d.dib != nullptr, c.error.empty());
        if (d.dib && c.mode == Mode::Thumbnail) {
            EXPECT_GE(d.header().width, 192);
            EXPECT_LE(std::int64_t{d.header().width} * d.header().height, 4 << 20)
                << "a thumbnail's picture stays small";
            EXPECT_GT(full.width, d.header().width);
        }
    }
}

// A streamed thumbnail is the mean of each block of the picture opened whole, the right way
// up, whatever the depth.
TEST(HostileFiles, StreamedThumbnailsAverageThePictureOpenedWhole) {
    ScratchDir dir;
    constexpr int kW = 800, kH = 600;
    std::vector<imagelib::RgbQuad> palette;
    for (int i = 0; i < 256; ++i)
        palette.push_back({static_cast<std::uint8_t>(i), static_cast<std::uint8_t>(255 - i),
                           static_cast<std::uint8_t>(i * 7), 0});
    Bytes indices(std::size_t{kW} * kH), rgb(std::size_t{kW} * kH * 3);
    for (int y = 0; y < kH; ++y)
        for (int x = 0; x < kW; ++x) {
            const std::size_t i = std::size_t{static_cast<unsigned>(y)} * kW + x;
            indices[i] = static_cast<std::uint8_t>((x / 7 + y / 5 * 3) & 255);
            for (int c = 0; c < 3; ++c)
                rgb[3 * i + c] = static_cast<std::uint8_t>(x * (c + 1) / 4 + y * (3 - c) / 3);
        }
    const Bytes paletted = makeDib(kW, kH, 8, palette, indices);
    const Bytes colour = makeDib(kW, kH, 24, {}, rgb);
    const Bytes grey = makeDib(kW, kH, 8, greyRamp(256), indices);
    Bytes bits(std::size_t{(kW + 7) / 8} * kH);
    for (std::size_t i = 0; i < bits.size(); ++i)
        bits[i] = static_cast<std::uint8_t>(i * 37 / 5);
    const Bytes bilevel = makeDib(kW, kH, 1, {{0, 0, 0, 0}, {255, 255, 255, 0}}, bits);
    const std::tuple<const char*, const Bytes*, std::uint32_t> cases[] = {
        {"8-bit.bmp", &paletted, IMAGELIB_FMT_BMP},  {"24-bit.bmp", &colour, IMAGELIB_FMT_BMP},
        {"8-bit.png", &paletted, IMAGELIB_FMT_PNG},  {"24-bit.png", &colour, IMAGELIB_FMT_PNG},
        {"grey.png", &grey, IMAGELIB_FMT_PNG},       {"1-bit.png", &bilevel, IMAGELIB_FMT_PNG},
        {"1-bit.bmp", &bilevel, IMAGELIB_FMT_BMP},   {"1-bit.tif", &bilevel, IMAGELIB_FMT_TIFF},
        {"8-bit.tif", &paletted, IMAGELIB_FMT_TIFF}, {"24-bit.tif", &colour, IMAGELIB_FMT_TIFF},
        {"1-bit.pnm", &bilevel, IMAGELIB_FMT_PNM},   {"grey.pnm", &grey, IMAGELIB_FMT_PNM},
        {"24-bit.pnm", &colour, IMAGELIB_FMT_PNM},   {"8-bit.gif", &paletted, IMAGELIB_FMT_GIF}};
    for (const auto& [name, dib, format] : cases) {
        SCOPED_TRACE(name);
        const std::string path = dir.file(name);
        ImageIoParams params = saveParams(format);
        ASSERT_TRUE(ImageLib_Save(path.c_str(), dib->data(), &params));
        const DecodedPicture whole = openFile(path);
        ImageLibFullInfo full{};
        const DecodedPicture small = openScaled(path, 96, full);
        ASSERT_TRUE(whole.dib && small.dib);
        EXPECT_EQ(std::tuple(full.width, full.height), std::tuple(kW, kH));
        // 3 is the largest block that keeps twice the box on both sides of 800 x 600.
        ASSERT_EQ(std::tuple(small.header().width, small.header().height), std::tuple(267, 200));
        for (const auto& [sx, sy] : {std::pair{0, 0}, {10, 7}, {266, 199}, {133, 50}}) {
            int sum[3] = {0, 0, 0};
            int n = 0;
            for (int y = 3 * sy; y < std::min(kH, 3 * sy + 3); ++y)
                for (int x = 3 * sx; x < std::min(kW, 3 * sx + 3); ++x, ++n)
                    for (int c = 0; c < 3; ++c)
                        sum[c] += whole.pixel(x, y)[static_cast<std::size_t>(c)];
            const Bgra got = small.pixel(sx, sy);
            for (int c = 0; c < 3; ++c)
                EXPECT_NEAR(got[static_cast<std::size_t>(c)], (sum[c] + n / 2) / n, 1)
                    << sx << "," << sy << " channel " << c;
        }
    }
}

// Whoever waits for the thread that streams a huge thumbnail can make it give up at once.
TEST(HostileFiles, AStreamedThumbnailGivesUpWhenItsThreadIsToldToStop) {
    ScratchDir dir;
    const std::string path = dir.file("huge.png");
    writeFile(path, whitePng(37800, false));
    std::atomic<std::int32_t> word{0};
    ImageLib_SetStopWord(&word, 2);
    std::thread stopper([&] {
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
        word.store(2);
    });
    ImageLibFullInfo full{};
    const auto spent = memorycap::run(100, [&] { EXPECT_FALSE(openScaled(path, 96, full).dib); });
    stopper.join();
    EXPECT_EQ(ImageLib_GaveUp(), 1) << "given up, not failed on the file";
    ImageLib_SetStopWord(nullptr, 0);
    EXPECT_LT(spent.seconds, 1.0);
    EXPECT_TRUE(openScaled(path, 96, full).dib);
    EXPECT_EQ(ImageLib_GaveUp(), 0);
}

} // namespace
