// The forms a scanned page leaves the source in: one small page per pixel type, with
// values chosen so that a swapped colour order, a missed flip or an uninverted bit shows.

#include "sane/PageConvert.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <memory>

using namespace twaindsm;

namespace {

struct Block {
    std::unique_ptr<std::uint8_t, decltype(&std::free)> p{nullptr, &std::free};
    const std::uint8_t* rows(std::uint32_t colours) const { return p.get() + 40 + 4 * colours; }
};

Block dibOf(const ScanPage& page) {
    return {std::unique_ptr<std::uint8_t, decltype(&std::free)>(
        static_cast<std::uint8_t*>(PageConvert::toDib(page)), &std::free)};
}

TEST(PageConvert, ColourRowsAreBgrAndBottomUp) {
    ScanPage page;
    page.kind = ScanPage::Kind::Rgb;
    page.width = 2;
    page.height = 2;
    page.bytesPerLine = 6;
    page.dpi = 254;
    // Top row red, green; bottom row blue, white.
    page.data = {255, 0, 0, 0, 255, 0, 0, 0, 255, 255, 255, 255};
    const Block b = dibOf(page);
    ASSERT_TRUE(b.p);
    std::int32_t ppm;
    std::memcpy(&ppm, b.p.get() + 24, 4);
    EXPECT_EQ(ppm, 10000);
    const std::uint8_t* bottom = b.rows(0);
    const std::uint8_t* top = bottom + 8; // six bytes padded to eight
    EXPECT_EQ(std::vector<int>(top, top + 6), (std::vector<int>{0, 0, 255, 0, 255, 0}));
    EXPECT_EQ(std::vector<int>(bottom, bottom + 8),
              (std::vector<int>{255, 0, 0, 255, 255, 255, 0, 0}));
    EXPECT_EQ(PageConvert::dibSize(page), 40u + 16u);
}

// A scan that ends early (the scanner announced four rows and sent two) leaves the same
// bitmap as a two-row page converted whole.
TEST(PageConvert, BitmapBuiltRowByRowCanEndEarly) {
    ScanPage page;
    page.kind = ScanPage::Kind::Rgb;
    page.width = 2;
    page.height = 4;
    page.bytesPerLine = 6;
    page.dpi = 254;
    const std::vector<std::uint8_t> rows = {255, 0, 0, 0, 255, 0, 0, 0, 255, 255, 255, 255};
    std::unique_ptr<void, decltype(&std::free)> built(PageConvert::allocDib(page), &std::free);
    ASSERT_TRUE(built);
    PageConvert::putRow(page, built.get(), 0, rows.data());
    PageConvert::putRow(page, built.get(), 1, rows.data() + 6);
    PageConvert::shortenDib(page, built.get(), 2);
    EXPECT_EQ(page.height, 2);

    page.data = rows;
    const Block whole = dibOf(page);
    ASSERT_TRUE(whole.p);
    EXPECT_EQ(std::memcmp(built.get(), whole.p.get(), PageConvert::dibSize(page)), 0);
}

TEST(PageConvert, BlackAndWhiteIsInvertedAndPadded) {
    ScanPage page;
    page.kind = ScanPage::Kind::BlackWhite;
    page.width = 10; // two bytes a row, six bits spare
    page.height = 1;
    page.bytesPerLine = 2;
    page.data = {0x80, 0x40}; // first pixel black, tenth black
    const Block b = dibOf(page);
    ASSERT_TRUE(b.p);
    // Index 0 of the palette is black, 1 white.
    EXPECT_EQ(b.p.get()[40], 0);
    EXPECT_EQ(b.p.get()[44], 255);
    const std::uint8_t* row = b.rows(2);
    EXPECT_EQ(row[0], 0x7F);
    EXPECT_EQ(row[1], 0x80); // the spare bits stay clear
    EXPECT_EQ(row[2], 0);
    std::uint8_t strip[2];
    PageConvert::copyRows(page, 0, 1, strip);
    EXPECT_EQ(strip[0], 0x7F);
    EXPECT_EQ(PageConvert::rowBytes(page), 2u);
}

TEST(PageConvert, GreyHasARampAndMemoryRowsStayTopDown) {
    ScanPage page;
    page.kind = ScanPage::Kind::Gray;
    page.width = 3;
    page.height = 2;
    page.bytesPerLine = 4; // the scanner pads too
    page.data = {10, 20, 30, 0, 40, 50, 60, 0};
    const Block b = dibOf(page);
    ASSERT_TRUE(b.p);
    EXPECT_EQ(b.p.get()[40 + 4 * 200], 200);
    EXPECT_EQ(b.rows(256)[0], 40);
    std::uint8_t strip[6];
    PageConvert::copyRows(page, 0, 2, strip);
    EXPECT_EQ(std::vector<int>(strip, strip + 6), (std::vector<int>{10, 20, 30, 40, 50, 60}));
}

TEST(PageConvert, MalformedPagesAreRefused) {
    ScanPage page;
    page.kind = ScanPage::Kind::Rgb;
    page.width = 4;
    page.height = 4;
    page.bytesPerLine = 12;
    page.data.resize(47); // one byte short
    EXPECT_EQ(PageConvert::toDib(page), nullptr);
    page.bytesPerLine = 11; // shorter than a row
    page.data.resize(48);
    EXPECT_EQ(PageConvert::toDib(page), nullptr);
    page.width = 0;
    EXPECT_EQ(PageConvert::toDib(page), nullptr);
    std::string error;
    page.width = 4;
    page.bytesPerLine = 12;
    EXPECT_FALSE(PageConvert::toFile(page, "/tmp/x.gif", 99, error));
    EXPECT_FALSE(error.empty());
}

} // namespace
