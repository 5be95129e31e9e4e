#include "acquire/TwainSettings.h"

#include <gtest/gtest.h>

#include <map>
#include <string>

using namespace lanmira;

namespace {

TEST(TwainSettings, ReadClampsAndStepsFollowTheOrder) {
    std::map<std::string, int> stored{
        {"XferCount", -7}, {"PixelType", 9}, {"Resolution", 100000}, {"ShowUI", 0}};
    const TwainSettings s = TwainSettings::read([&](const char* key, int def) {
        const auto it = stored.find(key);
        return it == stored.end() ? def : it->second;
    });
    EXPECT_EQ(s.xferCount, -1);
    EXPECT_EQ(s.pixelType, -1); // out of range means "leave it to the source"
    EXPECT_EQ(s.resolution, 9600);
    EXPECT_FALSE(s.showUi);
    const auto steps = s.steps();
    ASSERT_EQ(steps.size(), 2u);
    EXPECT_EQ(steps[0].cap, CAP_XFERCOUNT);
    EXPECT_EQ(steps[0].value, 0xFFFFFFFFu);
    EXPECT_EQ(steps[1].cap, ICAP_XRESOLUTION);
    EXPECT_STREQ(steps[1].question, "ids_lanmira_twain_resolution");

    TwainSettings none;
    none.xferCount = 0;
    none.pixelType = -1;
    none.resolution = 0;
    EXPECT_TRUE(none.steps().empty());
    const auto defaults = TwainSettings{}.steps();
    ASSERT_EQ(defaults.size(), 3u);
    EXPECT_EQ(defaults[1].cap, ICAP_PIXELTYPE);
    EXPECT_EQ(defaults[1].value, TWPT_RGB);
}

TEST(TwainSettings, ResolutionRoundsHalfAwayFromZero) {
    EXPECT_EQ(twainFixedValue(300), 300u << 16);
    EXPECT_EQ(twainFixedValue(72.5), (72u << 16) | 0x8000u);
    // Exactly half a step: away from zero on both sides.
    EXPECT_EQ(twainFixedValue(0.5 / 65536), 1u);
    EXPECT_EQ(twainFixedValue(-0.5 / 65536), 0xFFFFFFFFu);
}

} // namespace
