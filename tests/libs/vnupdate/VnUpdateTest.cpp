#include "vnupdate/vnupdate.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cstring>
#include <string>
#include <thread>
#include <vector>

namespace {

// The store is process-wide: this test has to come first, before anything is set.
TEST(VnUpdate, KeepsWhatItIsGivenAndAnswersEmptyOtherwise) {
    EXPECT_STREQ(vnupdate_get(VNUPDATE_TEXT), "");
    EXPECT_STREQ(vnupdate_get(-1), "");
    EXPECT_STREQ(vnupdate_get(3), "");

    vnupdate_init("Lanmira", "1.1.4004");
    EXPECT_STREQ(vnupdate_get(VNUPDATE_PRODUCT), "Lanmira");
    EXPECT_STREQ(vnupdate_get(VNUPDATE_VERSION), "1.1.4004");
    EXPECT_STREQ(vnupdate_get(VNUPDATE_TEXT), "");

    // Profile text passes unchanged: UTF-8, markup and blanks included.
    const char* text = "  Über <b>2.0</b>\tverfügbar\n";
    vnupdate_update(text);
    EXPECT_STREQ(vnupdate_get(VNUPDATE_TEXT), text);
    EXPECT_STREQ(vnupdate_get(VNUPDATE_PRODUCT), "Lanmira");

    vnupdate_update(nullptr);
    EXPECT_STREQ(vnupdate_get(VNUPDATE_TEXT), "");
}

TEST(VnUpdate, EarlierAnswersStayReadableAfterAReplacement) {
    vnupdate_update("first");
    const char* first = vnupdate_get(VNUPDATE_TEXT);
    vnupdate_update("second");
    EXPECT_STREQ(first, "first");
    EXPECT_STREQ(vnupdate_get(VNUPDATE_TEXT), "second");
}

TEST(VnUpdate, ReadersNeverSeeATornValue) {
    const std::vector<std::string> values = {"alpha", std::string(300, 'b'), "gamma-text"};
    std::atomic<bool> stop{false};
    std::atomic<int> torn{0};
    vnupdate_update(values[0].c_str());
    std::vector<std::thread> readers;
    for (int t = 0; t < 3; ++t) {
        readers.emplace_back([&] {
            while (!stop.load()) {
                const std::string seen = vnupdate_get(VNUPDATE_TEXT);
                if (seen != values[0] && seen != values[1] && seen != values[2])
                    ++torn;
            }
        });
    }
    for (int i = 0; i < 3000; ++i)
        vnupdate_update(values[static_cast<std::size_t>(i) % values.size()].c_str());
    stop = true;
    for (std::thread& t : readers)
        t.join();
    EXPECT_EQ(torn.load(), 0);
}

} // namespace
