// The demo camera measured like a real one: response to exposure and gain, clipping, noise,
// binning, the lamp's flicker against the light-source setting, frame pacing, colour.
#include "dscap/demo/DemoCamera.h"

#include "dscap/demo/Defocus.h"
#include "dscap/processing/ColourTemperature.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <memory>
#include <numeric>
#include <utility>
#include <vector>

using namespace dscap;

namespace {

// A frame copied out of the camera's buffers.
struct Picture {
    int width = 0;
    int height = 0;
    std::int64_t timestampNs = 0;
    std::vector<std::uint8_t> bgr;
    int at(int x, int y, int c) const {
        return bgr[(static_cast<std::size_t>(y) * width + x) * 3 + c];
    }
};

Picture grab(CameraSource& camera) {
    SourceFrame f;
    EXPECT_EQ(camera.read(f, 5000), ReadStatus::Frame);
    Picture p{f.width, f.height, f.timestampNs, {}};
    for (int y = 0; y < f.height; ++y)
        p.bgr.insert(p.bgr.end(), f.bgr + static_cast<std::ptrdiff_t>(y) * f.stride,
                     f.bgr + static_cast<std::ptrdiff_t>(y) * f.stride + f.width * 3);
    return p;
}

SensorSettings settingsOf(std::uint32_t exposureUs, std::uint16_t gain = 100, int light = kLightDc,
                          int sampling = kSamplingBin, int speed = 2) {
    SensorSettings s;
    s.exposureUs = exposureUs;
    s.gain = gain;
    s.lightSource = light;
    s.sampling = sampling;
    s.speed = speed;
    return s;
}

// Offsets of the clear glass's pixels: the brightest green, which every stain absorbs.
std::vector<std::size_t> background(const Picture& p) {
    std::vector<int> green;
    for (std::size_t i = 1; i < p.bgr.size(); i += 3)
        green.push_back(p.bgr[i]);
    std::nth_element(green.begin(), green.begin() + green.size() * 9 / 10, green.end());
    const int threshold = green[green.size() * 9 / 10] * 9 / 10;
    std::vector<std::size_t> pixels;
    for (std::size_t i = 0; i < p.bgr.size(); i += 3)
        if (p.bgr[i + 1] >= threshold)
            pixels.push_back(i);
    return pixels;
}

double mean(const Picture& p, const std::vector<std::size_t>& pixels, int c) {
    double sum = 0;
    for (const std::size_t i : pixels)
        sum += p.bgr[i + c];
    return sum / static_cast<double>(pixels.size());
}

// Noise of one frame, from two frames of a still slide: the content cancels.
double noise(const Picture& a, const Picture& b, const std::vector<std::size_t>& pixels) {
    double sum = 0, sq = 0;
    for (const std::size_t i : pixels) {
        const double d = a.bgr[i + 1] - b.bgr[i + 1];
        sum += d;
        sq += d * d;
    }
    const double n = static_cast<double>(pixels.size());
    return std::sqrt((sq / n - (sum / n) * (sum / n)) / 2);
}

// Relative spread of a's green row means divided by b's, over the middle half of the rows.
double bandSpread(const Picture& a, const Picture& b) {
    std::vector<double> ratio;
    for (int y = a.height / 4; y < a.height * 3 / 4; ++y) {
        double sa = 0, sb = 0;
        for (int x = 0; x < a.width; ++x) {
            sa += a.at(x, y, 1);
            sb += b.at(x, y, 1);
        }
        ratio.push_back(sa / sb);
    }
    const double m = std::accumulate(ratio.begin(), ratio.end(), 0.0) / ratio.size();
    double sq = 0;
    for (const double r : ratio)
        sq += (r - m) * (r - m);
    return std::sqrt(sq / ratio.size()) / m;
}

class DemoCameraTest : public ::testing::Test {
protected:
    // One still, unpaced camera for the suite: the slide takes a moment to paint.
    static void SetUpTestSuite() { camera_ = makeDemoCamera({.drift = false, .unpaced = true}); }
    static void TearDownTestSuite() { camera_.reset(); }
    Picture take(const SensorSettings& s, int resolution) {
        camera_->apply(s);
        EXPECT_TRUE(camera_->start(resolution));
        return grab(*camera_);
    }
    static std::unique_ptr<CameraSource> camera_;
};
std::unique_ptr<CameraSource> DemoCameraTest::camera_;

TEST_F(DemoCameraTest, EachResolutionAndSamplingGivesFramesOfItsSize) {
    const std::vector<Resolution> sizes = camera_->resolutions();
    ASSERT_EQ(sizes, (std::vector<Resolution>{{2592, 1944}, {1296, 972}, {648, 486}}));
    for (int index = 0; index < 3; ++index)
        for (const int sampling : {kSamplingBin, kSamplingSkip}) {
            const Picture p = take(settingsOf(30000, 100, kLightAc50Hz, sampling), index);
            EXPECT_EQ(p.width, sizes[index].width);
            EXPECT_EQ(p.height, sizes[index].height);
        }
    EXPECT_FALSE(camera_->start(3));
    EXPECT_FALSE(camera_->lastError().empty());
    EXPECT_FALSE(camera_->start(-1));

    SourceFrame f;
    camera_->stop();
    EXPECT_EQ(camera_->read(f, 1), ReadStatus::Timeout) << "stopped";
    EXPECT_EQ(makeDemoCamera({.unpaced = true})->read(f, 1), ReadStatus::Timeout) << "not started";
}

TEST_F(DemoCameraTest, LevelFollowsExposureUntilItClips) {
    const Picture reference = take(settingsOf(30000), 1);
    const auto glass = background(reference);
    // The lamp is warm and the sensor balanced for daylight.
    const RgbGains lamp = lightColour(3200);
    const double b = mean(reference, glass, 0), g = mean(reference, glass, 1),
                 r = mean(reference, glass, 2);
    EXPECT_GT(r, g);
    EXPECT_GT(g, b);
    EXPECT_NEAR(b / g, lamp.b, lamp.b * 0.05);
    EXPECT_NEAR(r / g, lamp.r, lamp.r * 0.05);
    EXPECT_LT(r, 245) << "the glass must stay clear of clipping for one-push white balance";

    const double shortGreen = mean(take(settingsOf(6000), 1), glass, 1);
    const double doubled = mean(take(settingsOf(12000), 1), glass, 1);
    EXPECT_NEAR(doubled / shortGreen, 2.0, 0.2);
    const double gained = mean(take(settingsOf(6000, 300), 1), glass, 1);
    EXPECT_NEAR(gained / shortGreen, 3.0, 0.3);

    const Picture white = take(settingsOf(2'000'000), 1);
    for (int c = 0; c < 3; ++c)
        EXPECT_EQ(mean(white, glass, c), 255.0);
}

TEST_F(DemoCameraTest, NoiseGrowsWithGainAndBinningLowersIt) {
    const auto noiseAt = [&](const SensorSettings& s, const std::vector<std::size_t>& glass) {
        const Picture a = take(s, 1);
        const Picture b = grab(*camera_);
        return noise(a, b, glass);
    };
    const auto glass = background(take(settingsOf(30000), 1));
    // The same level with four times the gain.
    const double low = noiseAt(settingsOf(24000, 100), glass);
    const double high = noiseAt(settingsOf(6000, 400), glass);
    EXPECT_GT(low, 0.5);
    EXPECT_NEAR(high / low, 4.0, 1.0);

    const double binned = noiseAt(settingsOf(24000, 100, kLightDc, kSamplingBin), glass);
    const double skipped = noiseAt(settingsOf(24000, 100, kLightDc, kSamplingSkip), glass);
    EXPECT_NEAR(skipped / binned, 2.0, 0.5);
}

TEST_F(DemoCameraTest, FlickerBandsShowUnlessTheLightSourceMatches) {
    // 25 ms is two and a half ripple periods of the 50 Hz lamp: the 60 Hz setting keeps it.
    const Picture steady = take(settingsOf(25000, 100, kLightDc), 2);
    struct Case {
        int light;
        bool bands;
    };
    for (const Case c :
         {Case{kLightAc60Hz, true}, Case{kLightAc50Hz, false}, Case{kLightDc, false}}) {
        SCOPED_TRACE(c.light);
        const Picture first = take(settingsOf(25000, 100, c.light), 2);
        const Picture second = grab(*camera_);
        if (c.bands) {
            EXPECT_GT(bandSpread(first, steady), 0.02);
            EXPECT_GT(bandSpread(second, first), 0.02) << "the bands roll from frame to frame";
        } else {
            EXPECT_LT(bandSpread(first, steady), 0.005);
            EXPECT_LT(bandSpread(second, first), 0.005);
        }
    }
}

TEST_F(DemoCameraTest, RealExposureIsSnappedToTheMainsUnderAcLight) {
    struct Case {
        std::uint32_t asked;
        int light;
        std::uint32_t real;
    };
    for (const Case c : {Case{25000, kLightAc60Hz, 25000}, Case{25000, kLightAc50Hz, 30000},
                         Case{25000, kLightDc, 25000}, Case{9000, kLightAc60Hz, 8333},
                         Case{14000, kLightAc50Hz, 10000}, Case{4000, kLightAc50Hz, 4000},
                         Case{50, kLightDc, 100}, Case{5'000'000, kLightDc, 2'000'000}}) {
        camera_->apply(settingsOf(c.asked, 100, c.light));
        EXPECT_EQ(camera_->realExposureTime(), c.real) << c.asked << " us, light " << c.light;
    }
}

TEST(DemoCamera, FramePeriodFollowsSpeedAndLongExposures) {
    const auto camera = makeDemoCamera({.drift = false});
    struct Case {
        int speed;
        std::uint32_t exposureUs;
        std::int64_t periodNs;
    };
    ASSERT_TRUE(camera->start(2));
    for (const Case c :
         {Case{2, 10000, 16'666'666}, Case{0, 10000, 66'666'666}, Case{2, 120'000, 120'000'000}}) {
        SCOPED_TRACE(c.speed);
        camera->apply(settingsOf(c.exposureUs, 100, kLightDc, kSamplingBin, c.speed));
        grab(*camera);
        const auto began = std::chrono::steady_clock::now();
        const Picture a = grab(*camera);
        const Picture b = grab(*camera);
        const auto took = std::chrono::steady_clock::now() - began;
        // A reader held up for more than a period skips frames, as with a real camera.
        const std::int64_t gap = b.timestampNs - a.timestampNs;
        EXPECT_GT(gap, 0);
        EXPECT_EQ(gap % c.periodNs, 0) << gap;
        EXPECT_GE(std::chrono::duration_cast<std::chrono::nanoseconds>(took).count(),
                  c.periodNs * 3 / 2);
    }
    // The next frame is 120 ms away: a short wait gives up on time.
    SourceFrame f;
    const auto began = std::chrono::steady_clock::now();
    EXPECT_EQ(camera->read(f, 10), ReadStatus::Timeout);
    EXPECT_LT(std::chrono::steady_clock::now() - began, std::chrono::milliseconds(60));
}

TEST(DemoCamera, MonochromeGivesTheLumaOfTheColourSensor) {
    const auto colour = makeDemoCamera({.drift = false, .unpaced = true});
    const auto grey = makeDemoCamera({.colour = false, .drift = false, .unpaced = true});
    EXPECT_TRUE(colour->isColour());
    EXPECT_FALSE(grey->isColour());
    ASSERT_TRUE(colour->start(1));
    ASSERT_TRUE(grey->start(1));
    const Picture c = grab(*colour);
    const Picture g = grab(*grey);
    std::size_t unequal = 0;
    for (std::size_t i = 0; i < g.bgr.size(); i += 3)
        unequal += g.bgr[i] != g.bgr[i + 1] || g.bgr[i] != g.bgr[i + 2];
    EXPECT_EQ(unequal, 0u);
    std::vector<std::size_t> all(c.bgr.size() / 3);
    for (std::size_t i = 0; i < all.size(); ++i)
        all[i] = 3 * i;
    const double luma = 0.114 * mean(c, all, 0) + 0.587 * mean(c, all, 1) + 0.299 * mean(c, all, 2);
    EXPECT_NEAR(mean(g, all, 1), luma, luma * 0.03);
}

double meanChange(const Picture& a, const Picture& b) {
    double sum = 0;
    for (std::size_t i = 1; i < a.bgr.size(); i += 3)
        sum += std::abs(a.bgr[i] - b.bgr[i]);
    return sum / static_cast<double>(a.bgr.size() / 3);
}

TEST_F(DemoCameraTest, DriftMovesTheSlideWithinItsMargin) {
    const auto camera = makeDemoCamera({.unpaced = true});
    // Unpaced frames are stamped a period apart, so minutes of stage drift pass in a moment;
    // every offset along the path must stay inside the painted slide.
    camera->apply(settingsOf(2'000'000));
    SourceFrame f;
    for (const auto& [index, frames] : {std::pair{0, 6}, {1, 30}, {2, 200}}) {
        ASSERT_TRUE(camera->start(index));
        for (int i = 0; i < frames; ++i)
            ASSERT_EQ(camera->read(f, 0), ReadStatus::Frame);
    }
    const SensorSettings slow = settingsOf(30000, 100, kLightDc, kSamplingBin, 0);
    camera->apply(slow);
    ASSERT_TRUE(camera->start(2));
    const Picture first = grab(*camera);
    for (int i = 0; i < 300; ++i) // twenty seconds at 15 frames a second
        ASSERT_EQ(camera->read(f, 0), ReadStatus::Frame);
    const Picture later = grab(*camera);

    const Picture still = take(slow, 2);
    const double noiseOnly = meanChange(still, grab(*camera_));
    EXPECT_GT(meanChange(first, later), 3 * noiseOnly);
}

TEST(Defocus, SpreadsAnEdgeOverTheWindowAndKeepsFlatAreas) {
    SlideTexture t;
    t.width = 40;
    t.height = 12;
    t.channels = 3;
    t.samples.assign(t.stride() * t.height, 200);
    for (int y = 0; y < t.height; ++y)
        for (int x = 20; x < t.width; ++x)
            for (int c = 0; c < 3; ++c)
                t.row(y)[x * 3 + c] = 20;
    EXPECT_EQ(defocus(t, 0).samples, t.samples);
    const SlideTexture soft = defocus(t, 3);
    ASSERT_EQ(soft.samples.size(), t.samples.size());
    for (int y : {0, 6, 11}) {
        const std::uint8_t* row = soft.row(y);
        EXPECT_EQ(row[5 * 3 + 1], 200) << "flat, edges included";
        EXPECT_EQ(row[35 * 3 + 1], 20);
        EXPECT_EQ(row[16 * 3 + 1], 200) << "just outside the window";
        EXPECT_EQ(row[23 * 3 + 1], 20);
        // Inside it a ramp, falling step by step.
        for (int x = 17; x < 23; ++x)
            EXPECT_GT(row[x * 3 + 1], row[(x + 1) * 3 + 1]) << x;
    }
}

} // namespace
