#include "vnupdate/vnupdate.h"

#include <gtest/gtest.h>

namespace {

// The store is process-wide, so one test walks it from empty through replacements.
TEST(VnUpdate, KeepsItsValuesAndEarlierAnswersStayReadable) {
    EXPECT_STREQ(vnupdate_get(VNUPDATE_PRODUCT), "");
    vnupdate_init("Lanmira", "1.1.4004");
    EXPECT_STREQ(vnupdate_get(VNUPDATE_PRODUCT), "Lanmira");
    EXPECT_STREQ(vnupdate_get(VNUPDATE_VERSION), "1.1.4004");
    EXPECT_STREQ(vnupdate_get(-1), "");
    EXPECT_STREQ(vnupdate_get(3), "");

    const char* text = "  Über <b>2.0</b>\tverfügbar\n"; // kept byte for byte
    vnupdate_update(text);
    const char* first = vnupdate_get(VNUPDATE_TEXT);
    vnupdate_update("second");
    EXPECT_STREQ(first, text);
    EXPECT_STREQ(vnupdate_get(VNUPDATE_TEXT), "second");
    vnupdate_update(nullptr);
    EXPECT_STREQ(vnupdate_get(VNUPDATE_TEXT), "");
}

} // namespace
