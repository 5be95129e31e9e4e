// The capture library's software processing: white balance model, region means, auto
// levels, auto exposure against a simulated linear sensor, and the frame processor.
#include "dscap/processing/AutoExposure.h"
#include "dscap/processing/ColourTemperature.h"
#include "dscap/processing/FrameProcessor.h"
#include "dscap/processing/RegionStats.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <numeric>
#include <random>
#include <vector>

using namespace dscap;

namespace {

using Pixel = std::array<int, 3>; // B, G, R
using Pair = std::pair<int, int>;

TEST(ColourTemperature, NeutralisesALampRoundTripsAndLimits) {
    const RgbGains daylight = whiteBalanceGains(kTemperatureDefault, kTintDefault);
    for (const double gain : {daylight.b, daylight.g, daylight.r})
        EXPECT_NEAR(gain, 1.0, 1e-9);
    for (const auto& [kelvin, tint] :
         std::vector<Pair>{{3200, 1000}, {2500, 800}, {4000, 1300}, {9000, 600}, {14000, 2200}}) {
        SCOPED_TRACE(kelvin);
        const RgbGains light = lightColour(kelvin);
        const double b = 100 * light.b, g = 100 / std::sqrt(1000.0 / tint), r = 100 * light.r;
        const auto [t, n] = tempTintForNeutral(b, g, r);
        EXPECT_NEAR(t, kelvin, kelvin * 0.003);
        EXPECT_NEAR(n, tint, tint * 0.005);
        const RgbGains gains = whiteBalanceGains(t, n);
        EXPECT_NEAR(b * gains.b / (g * gains.g), 1.0, 0.01);
        EXPECT_NEAR(r * gains.r / (g * gains.g), 1.0, 0.01);
    }
    EXPECT_EQ(tempTintForNeutral(0, 100, 100), Pair(6503, 1000));
    EXPECT_EQ(tempTintForNeutral(NAN, 100, 100), Pair(6503, 1000));
    EXPECT_EQ(tempTintForNeutral(250, 1, 2), Pair(kTemperatureMax, kTintMin));
    EXPECT_EQ(tempTintForNeutral(1, 250, 250), Pair(kTemperatureMin, kTintMax));
}

// A frame owning its pixels, with padding at the end of each row.
struct TestFrame {
    int width, height, stride;
    std::vector<std::uint8_t> bytes;
    TestFrame(int w, int h) : width(w), height(h), stride(w * 3 + 5), bytes(stride * h, 0) {}
    std::uint8_t* at(int x, int y) { return &bytes[y * stride + x * 3]; }
    void set(int x, int y, Pixel p) {
        for (int c = 0; c < 3; ++c)
            at(x, y)[c] = static_cast<std::uint8_t>(p[c]);
    }
    SourceFrame source() const { return {bytes.data(), width, height, stride, 0}; }
};

Pixel pixelOf(const Image& image, int x, int y) {
    const std::uint8_t* p = image.row(y) + x * 3;
    return {p[0], p[1], p[2]};
}

TEST(RegionStats, MeansOverClippedAndSampledRegions) {
    TestFrame frame(1500, 1000);
    for (int y = 0; y < 1000; ++y)
        for (int x = 0; x < 1500; ++x)
            frame.set(x, y, x < 20 ? Pixel{10, 20, 30} : Pixel{110, 120, y * 255 / 999});
    const RegionMeans left = regionMeans(frame.source(), {-30, -5, 20, 10});
    ASSERT_TRUE(left.valid);
    EXPECT_DOUBLE_EQ(left.b, 10);
    EXPECT_NEAR(left.luma, 0.114 * 10 + 0.587 * 20 + 0.299 * 30, 1e-9);
    EXPECT_DOUBLE_EQ(regionMeans(frame.source(), {10, 0, 30, 10}).g, 70);
    const RegionMeans whole = regionMeans(frame.source(), {20, 0, 2000, 1000}); // sampled
    EXPECT_DOUBLE_EQ(whole.b, 110);
    EXPECT_NEAR(whole.r, 127, 1.5);
    EXPECT_FALSE(regionMeans(frame.source(), {1500, 0, 1600, 20}).valid);
    EXPECT_FALSE(regionMeans(frame.source(), {10, 10, 10, 20}).valid);
}

TEST(Histogram, AutoLevelsCutTheOutermostCounts) {
    Histogram h;
    for (int v = 20; v < 220; ++v)
        h.bins[kBlue][v] = 5;
    h.bins[kBlue][0] = h.bins[kBlue][255] = 3; // a few dead and hot pixels
    h.bins[kGreen][90] = 1000;                 // one level only
    h.bins[kGrey][40] = h.bins[kGrey][200] = 100;
    LevelArray low{7, 7, 7, 7}, high{250, 250, 250, 250};
    autoLevels(h, false, low, high);
    EXPECT_EQ(low, (LevelArray{20, 89, 0, 7}));
    EXPECT_EQ(high, (LevelArray{219, 91, 255, 250}));

    low = {7, 7, 7, 7};
    high = {250, 250, 250, 250};
    autoLevels(h, true, low, high);
    EXPECT_EQ(low, (LevelArray{7, 7, 7, 40}));
    EXPECT_EQ(high, (LevelArray{250, 250, 250, 200}));
}

// time 100 us..2 s, gain 1x..16x, at most 100 ms before gain is added.
const AutoExposure::Limits kLimits{{100, 2000000, 10000}, {100, 1600, 100}, 100000, kLightDc};

TEST(AutoExposure, ConvergesOnALinearSensorAndSettles) {
    struct Case {
        const char* name;
        double totalForTarget; // time x gain factor that gives level 120
        Exposure start;
        int lightSource;
    };
    const Case cases[] = {
        {"too dark", 30000, {1000, 100}, kLightDc},
        {"too bright", 3000, {20000, 100}, kLightDc},
        {"needs gain", 400000, {10000, 100}, kLightDc},
        {"dark at 50 Hz", 47000, {1000, 100}, kLightAc50Hz},
        {"bright at 60 Hz", 25000, {50000, 200}, kLightAc60Hz},
    };
    const AutoExposure ae;
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        AutoExposure::Limits limits = kLimits;
        limits.lightSource = c.lightSource;
        const auto level = [&](Exposure e) {
            return std::min(255.0, 120.0 * e.timeUs * e.gain / 100 / c.totalForTarget);
        };
        Exposure e = c.start;
        int steps = 0;
        for (; std::abs(level(e) - 120) > 4 && steps < 15; ++steps) {
            e = ae.step(level(e), 120, e, limits);
            EXPECT_LE(e.timeUs, limits.maxAutoTimeUs);
            if (c.lightSource == kLightDc && e.gain > 100) {
                EXPECT_EQ(e.timeUs, limits.maxAutoTimeUs) << "gain raised before time";
            }
            const double half = c.lightSource == kLightAc60Hz ? 1e6 / 120 : 1e6 / 100;
            if (c.lightSource != kLightDc && e.timeUs >= half) {
                EXPECT_LE(std::abs(std::remainder(e.timeUs, half)), 0.5) << e.timeUs;
            }
        }
        EXPECT_LT(steps, 10);
        EXPECT_EQ(ae.step(level(e), 120, e, limits), e);
    }
}

TEST(AutoExposure, DeadBandAndSmallErrors) {
    const AutoExposure ae;
    const Exposure e{100000, 150};
    for (const double level : {116.0, 120.0, 124.0})
        EXPECT_EQ(ae.step(level, 120, e, kLimits), e) << level;
    EXPECT_GT(ae.step(115, 120, e, kLimits).gain, e.gain);
    EXPECT_LT(ae.step(125, 120, e, kLimits).gain, e.gain);
    EXPECT_LT(ae.step(255, 120, e, kLimits).gain, e.gain); // saturated: far too bright
    // Coarse gain steps must not stall a small error.
    const AutoExposure::Limits coarse{{100, 100000, 10000}, {1, 8, 1}, 100000, kLightDc};
    EXPECT_EQ(ae.step(110, 120, {100000, 4}, coarse).gain, 5);
}

Image processed(const ProcessingParams& params, const TestFrame& frame,
                Histogram* histogram = nullptr) {
    FrameProcessor processor;
    processor.setParams(params);
    Image out;
    processor.process(frame.source(), out, histogram);
    return out;
}

std::vector<Pixel> processPixels(const ProcessingParams& params, const std::vector<Pixel>& in) {
    TestFrame frame(int(in.size()), 1);
    for (std::size_t i = 0; i < in.size(); ++i)
        frame.set(int(i), 0, in[i]);
    const Image out = processed(params, frame);
    std::vector<Pixel> result;
    for (int x = 0; x < out.width(); ++x)
        result.push_back(pixelOf(out, x, 0));
    return result;
}

TEST(FrameProcessor, IdentityAndFlipsMovePixelsOnly) {
    TestFrame frame(5, 3);
    std::mt19937 random(7);
    for (auto& b : frame.bytes)
        b = static_cast<std::uint8_t>(random());
    for (const int flips : {0, 1, 2, 3}) {
        const bool h = flips & 1, v = flips & 2;
        SCOPED_TRACE(flips);
        ProcessingParams params;
        params.horizontalFlip = h;
        params.verticalFlip = v;
        const Image out = processed(params, frame);
        ASSERT_EQ(out.width(), 5);
        ASSERT_EQ(out.height(), 3);
        for (int y = 0; y < 3; ++y)
            for (int x = 0; x < 5; ++x)
                EXPECT_EQ(pixelOf(out, h ? 4 - x : x, v ? 2 - y : y),
                          (Pixel{frame.at(x, y)[0], frame.at(x, y)[1], frame.at(x, y)[2]}));
    }
}

TEST(FrameProcessor, LevelStagesOnChosenValues) {
    struct Case {
        const char* name;
        int low, high, contrast, brightness, gamma, in, out;
    };
    const Case cases[] = {
        {"levels below", 50, 200, 0, 0, 100, 20, 0},
        {"levels inside", 50, 200, 0, 0, 100, 110, 102},
        {"step at low, at", 100, 100, 0, 0, 100, 100, 0},
        {"step at low, above", 100, 90, 0, 0, 100, 101, 255},
        {"contrast up", 0, 255, 50, 0, 100, 200, 236},
        {"contrast down", 0, 255, -50, 0, 100, 0, 64},
        {"brightness", 0, 255, 0, -20, 100, 100, 80},
        {"gamma lifts", 0, 255, 0, 0, 200, 64, 128},
        {"gamma lowers", 0, 255, 0, 0, 50, 128, 64},
        {"levels clip before brightness", 0, 127, 0, -30, 100, 200, 225},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        ProcessingParams params;
        const auto low = std::uint16_t(c.low), high = std::uint16_t(c.high);
        params.low = {low, low, low, 0};
        params.high = {high, high, high, 255};
        params.contrast = c.contrast;
        params.brightness = c.brightness;
        params.gamma = c.gamma;
        EXPECT_EQ(processPixels(params, {{c.in, c.in, c.in}})[0], (Pixel{c.out, c.out, c.out}));
    }
}

TEST(FrameProcessor, WhiteBalanceHueSaturationAndGrey) {
    ProcessingParams params;
    params.gainB = 2.0;
    params.gainR = 0.5;
    params.low[kGreen] = 100; // each channel has its own edges
    EXPECT_EQ(processPixels(params, {{100, 100, 100}, {200, 150, 200}}),
              (std::vector<Pixel>{{200, 0, 50}, {255, 82, 100}}));

    params = {};
    params.hue = 180; // chroma turned to its opposite around luma 131.1
    EXPECT_EQ(processPixels(params, {{60, 120, 180}})[0], (Pixel{202, 142, 82}));
    params.hue = 75; // keeps luma; a grey pixel has no chroma to turn
    const std::vector<Pixel> turned = processPixels(params, {{60, 120, 180}, {90, 90, 90}});
    EXPECT_NEAR(0.114 * turned[0][0] + 0.587 * turned[0][1] + 0.299 * turned[0][2], 131.1, 1.0);
    EXPECT_EQ(turned[1], (Pixel{90, 90, 90}));
    params.hue = 0;
    params.saturation = 0;
    params.gainB = 2.0; // gains come before the mix
    EXPECT_EQ(processPixels(params, {{30, 120, 180}})[0], (Pixel{131, 131, 131}));

    params = {};
    params.monochrome = true;
    params.high = {10, 10, 10, 131}; // only the grey edges apply
    EXPECT_EQ(processPixels(params, {{60, 120, 180}, {45, 45, 45}}),
              (std::vector<Pixel>{{255, 255, 255}, {88, 88, 88}}));
    params.hue = 30;
    EXPECT_EQ(processPixels(params, {{45, 45, 45}})[0], (Pixel{88, 88, 88}));
}

TEST(FrameProcessor, MixAgreesWithTheDirectPath) {
    // Huge gains leave fewer bits for the fraction; the result must still hold. Blue stays
    // below clipping, where the two paths part ways.
    for (const double gainB : {1.3, 40.0}) {
        SCOPED_TRACE(gainB);
        std::vector<Pixel> pixels;
        std::mt19937 random(3);
        const int blueLimit = int(255 / gainB) + 1;
        for (int i = 0; i < 4096; ++i)
            pixels.push_back({int(random() % blueLimit), int(random() % 256), int(random() % 256)});
        ProcessingParams direct;
        direct.gainB = gainB;
        direct.gainR = 0.8;
        ProcessingParams mixed = direct;
        mixed.saturation = 129; // barely more chroma, but through the mix
        const std::vector<Pixel> a = processPixels(direct, pixels);
        const std::vector<Pixel> b = processPixels(mixed, pixels);
        int worst = 0;
        for (std::size_t i = 0; i < a.size(); ++i)
            for (int c = 0; c < 3; ++c)
                worst = std::max(worst, std::abs(a[i][c] - b[i][c]));
        EXPECT_LE(worst, 2);
    }
}

TEST(FrameProcessor, HistogramCountsSubsampledPreLevelValues) {
    for (const int saturation : {128, 129}) { // 129 goes through the mix, too little to show
        SCOPED_TRACE(saturation);
        TestFrame frame(5, 3); // samples at x 0, 2, 4 of rows 0 and 2
        for (int y = 0; y < 3; ++y)
            for (int x = 0; x < 5; ++x)
                frame.set(x, y, (x % 2 || y % 2) ? Pixel{1, 2, 3} : Pixel{40, 50, 60});
        frame.set(4, 2, {200, 200, 200});
        ProcessingParams params;
        params.gainB = 2.0;
        params.saturation = saturation;
        params.low = {100, 100, 100, 100}; // levels come after the count
        Histogram h;
        h.bins[kRed][7] = 99; // stale counts are cleared
        processed(params, frame, &h);
        for (int c = 0; c < 4; ++c)
            EXPECT_EQ(std::accumulate(h.bins[c].begin(), h.bins[c].end(), 0.0), 6) << c;
        EXPECT_EQ(h.bins[kBlue][80], 5);
        EXPECT_EQ(h.bins[kBlue][255], 1);
        EXPECT_EQ(h.bins[kGreen][50], 5);
        EXPECT_EQ(h.bins[kRed][60], 5);
        EXPECT_EQ(h.bins[kGrey][56], 5);  // luma of 80, 50, 60
        EXPECT_EQ(h.bins[kGrey][206], 1); // luma of 255, 200, 200
    }
}

} // namespace
