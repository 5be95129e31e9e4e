// Auto exposure and one-push white balance as the capture thread steps them, frame by frame,
// without a camera or a thread.
#include "dscap/core/AutoAdjuster.h"

#include "dscap/processing/ColourTemperature.h"

#include <gtest/gtest.h>

#include <vector>

namespace dscap {
namespace {

constexpr int kSide = 64;

// A frame of one colour.
struct Flat {
    std::vector<std::uint8_t> bgr;
    SourceFrame frame;
    Flat(std::uint8_t b, std::uint8_t g, std::uint8_t r) : bgr(kSide * kSide * 3) {
        for (std::size_t i = 0; i < bgr.size(); i += 3) {
            bgr[i] = b;
            bgr[i + 1] = g;
            bgr[i + 2] = r;
        }
        frame = {bgr.data(), kSide, kSide, kSide * 3, 0};
    }
};

constexpr ValueRange<std::uint32_t> kTime{100, 200000, 10000};
constexpr ValueRange<std::uint16_t> kGain{100, 800, 100};

ControlValues exposureValues() {
    ControlValues v;
    v.exposureUs = 10000;
    v.gain = 100;
    v.autoExposureTarget = 120;
    return v;
}

TEST(AutoAdjuster, ExposureStepsOnlyWhenItCanAndWaitsForEachChangeToShow) {
    const Flat dark(20, 20, 20);
    AutoAdjuster fixed(kFeatureGain, kTime, kGain);
    EXPECT_FALSE(fixed.exposureDue()) << "no exposure time to set";

    AutoAdjuster adjuster(kFeatureExposureTime | kFeatureGain, kTime, kGain);
    ControlValues v = exposureValues();
    ASSERT_TRUE(adjuster.exposureDue());
    const auto next = adjuster.nextExposure(dark.frame, v);
    ASSERT_TRUE(next);
    EXPECT_GT(next->timeUs, v.exposureUs) << "a dark picture wants more light";

    adjuster.exposureSet();
    EXPECT_FALSE(adjuster.exposureDue());
    EXPECT_FALSE(adjuster.exposureDue());
    EXPECT_TRUE(adjuster.exposureDue()) << "two frames later the new exposure shows";

    v.autoExposure = false;
    EXPECT_FALSE(adjuster.nextExposure(dark.frame, v));
}

TEST(AutoAdjuster, ExposureKeepsTheGainOfACameraWithoutGainAndStopsAtTheTarget) {
    AutoAdjuster adjuster(kFeatureExposureTime, kTime, kGain);
    ControlValues v = exposureValues();
    v.gain = 300;
    const Flat dark(5, 5, 5);
    const auto next = adjuster.nextExposure(dark.frame, v);
    ASSERT_TRUE(next);
    EXPECT_EQ(next->gain, 300);
    const Flat onTarget(120, 120, 120);
    v = exposureValues();
    EXPECT_FALSE(adjuster.nextExposure(onTarget.frame, v));
}

TEST(AutoAdjuster, SoftwareBalanceIsDoneAfterOneFrame) {
    AutoAdjuster adjuster(0, kTime, kGain);
    const Flat warm(100, 120, 150);
    ControlValues v;
    ASSERT_TRUE(adjuster.balanceDue());
    const AutoAdjuster::Balance b = adjuster.balance(warm.frame, v, 1);
    EXPECT_EQ(b.kind, AutoAdjuster::Balance::Done);
    const auto [temperature, tint] = tempTintForNeutral(100, 120, 150);
    EXPECT_EQ(b.temperature, temperature);
    EXPECT_EQ(b.tint, tint);
    EXPECT_TRUE(adjuster.balanceDue());
}

TEST(AutoAdjuster, DeviceBalanceLooksAgainUntilBalancedOrOutOfRounds) {
    AutoAdjuster adjuster(kFeatureWhiteBalanceTemperature, kTime, kGain);
    ControlValues v;
    v.temperature = 5000;
    const Flat warm(100, 120, 150);
    AutoAdjuster::Balance b = adjuster.balance(warm.frame, v, 1);
    EXPECT_EQ(b.kind, AutoAdjuster::Balance::Again);
    EXPECT_NE(b.temperature, v.temperature);
    EXPECT_FALSE(adjuster.balanceDue());
    EXPECT_FALSE(adjuster.balanceDue());
    EXPECT_TRUE(adjuster.balanceDue()) << "looks again once the new temperature shows";

    b = adjuster.balance(warm.frame, v, 5);
    EXPECT_EQ(b.kind, AutoAdjuster::Balance::Done) << "out of rounds";
    EXPECT_EQ(b.temperature, v.temperature) << "keeps the device's last temperature";

    const Flat neutral(120, 118, 121);
    b = adjuster.balance(neutral.frame, v, 1);
    EXPECT_EQ(b.kind, AutoAdjuster::Balance::Done);
    EXPECT_EQ(b.temperature, v.temperature);
}

} // namespace
} // namespace dscap
