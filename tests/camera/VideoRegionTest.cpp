#include "camera/view/RegionEditor.h"
#include "camera/view/VideoGeometry.h"

#include <gtest/gtest.h>

#include <limits>
#include <ostream>

namespace lanmira {

void PrintTo(const RegionF& r, std::ostream* os) {
    *os << "(" << r.left << ", " << r.top << ", " << r.right << ", " << r.bottom << ")";
}

void PrintTo(const RegionI& r, std::ostream* os) {
    *os << "(" << r.left << ", " << r.top << ", " << r.right << ", " << r.bottom << ")";
}

} // namespace lanmira

using namespace lanmira;

namespace {

TEST(VideoGeometry, MulDivRoundsHalvesAwayFromZeroAndToleratesZeroDivisor) {
    const int max = std::numeric_limits<int>::max();
    const int cases[][4] = {{5, 1, 2, 3},        {-5, 1, 2, -3}, {5, -1, 2, -3},  {2, 1, 3, 1},
                            {641, 50, 100, 321}, {1, 1, 0, 0},   {max, 2, 1, max}};
    for (const auto& c : cases)
        EXPECT_EQ(VideoGeometry::mulDiv(c[0], c[1], c[2]), c[3])
            << c[0] << "*" << c[1] << "/" << c[2];
}

TEST(VideoGeometry, PictureRectSitsTwoPixelsPastTheCentreOrAtTheEdge) {
    const struct {
        QSize client, video;
        int num;
        QRect expected;
    } cases[] = {
        {{800, 600}, {640, 480}, 100, {82, 62, 640, 480}},
        {{801, 601}, {640, 480}, 100, {82, 62, 640, 480}}, // odd slack rounds down
        {{600, 400}, {640, 480}, 100, {0, 0, 640, 480}},
        {{640, 600}, {640, 480}, 100, {0, 62, 640, 480}}, // equal is not wider
        {{800, 600}, {641, 481}, 50, {241, 181, 321, 241}},
    };
    for (const auto& c : cases)
        EXPECT_EQ(VideoGeometry::pictureRect(c.client, c.video, c.num, 100), c.expected)
            << c.client.width() << "x" << c.client.height() << " at " << c.num;
}

TEST(VideoGeometry, ScreenRegionTruncatesEachEdgeThenShifts) {
    const QRect picture(82, 62, 320, 240);
    EXPECT_EQ(VideoGeometry::screenRegion({10.9f, 20.5f, 100.99f, 50}, picture, 50, 100),
              (RegionI{87, 72, 132, 87}));
    EXPECT_EQ(VideoGeometry::screenRegion({-3.5f, 0, 7.9f, 1}, picture, 1, 1),
              (RegionI{79, 62, 89, 63}));
    EXPECT_EQ(VideoGeometry::screenRegion({10, 10, 20, 20}, picture, 1, 0),
              (RegionI{82, 62, 82, 62}));

    const RegionI r{10, 20, 31, 41};
    const QPoint points[] = {{10, 20}, {20, 20}, {31, 20}, {31, 30},
                             {31, 41}, {20, 41}, {10, 41}, {10, 30}};
    for (int code = 1; code <= 8; ++code)
        EXPECT_EQ(VideoGeometry::handlePoint(r, code), points[code - 1]) << code;
}

TEST(RegionEditor, HitTestPrefersHandlesThenTheInside) {
    const RegionI r{100, 100, 200, 180};
    const struct {
        QPoint point;
        int code;
    } cases[] = {
        {{96, 96}, 1},    {{204, 96}, 3},   {{204, 184}, 5}, {{96, 184}, 7}, // 4 px outside corners
        {{150, 102}, 2},  {{198, 140}, 4},  {{150, 178}, 6}, {{102, 140}, 8}, // 2 px inside edges
        {{95, 95}, 1},    {{105, 100}, -1}, // a handle covers 10 pixels: -5 up to +4
        {{150, 140}, 0},  {{106, 110}, 0},  {{196, 110}, 0}, {{197, 110}, -1},
        {{130, 101}, -1}, {{300, 300}, -1},
    };
    for (const auto& c : cases)
        EXPECT_EQ(RegionEditor::hitTest(r, c.point), c.code) << c.point.x() << "," << c.point.y();

    // In a tiny region every point is near a handle, so it can only be resized.
    EXPECT_EQ(RegionEditor::hitTest({100, 100, 104, 104}, {102, 102}), 1);
}

TEST(RegionEditor, MoveStopsAtTheBorderWithoutChangingSize) {
    RegionF r{600, 10, 630, 40};
    EXPECT_TRUE(RegionEditor::move(r, 50, -20, 640, 480));
    EXPECT_EQ(r, (RegionF{610, 0, 640, 30}));
    EXPECT_FALSE(RegionEditor::move(r, 5, -5, 640, 480)) << "in the corner already";
    EXPECT_EQ(r, (RegionF{610, 0, 640, 30}));
    EXPECT_TRUE(RegionEditor::move(r, 5, 3, 640, 480));
    EXPECT_EQ(r, (RegionF{610, 3, 640, 33}));

    EXPECT_FALSE(RegionEditor::move(r, 0.005f, -0.005f, 640, 480));
    EXPECT_FALSE(RegionEditor::move(r, -5, 0, 0, 480));
    RegionF outside{-5, 10, 20, 20};
    EXPECT_FALSE(RegionEditor::move(outside, -3, 0, 640, 480)) << "never pulled back";
    EXPECT_EQ(outside.left, -5);
}

TEST(RegionEditor, ResizeSwapsCrossedEdgesAndMirrorsTheHandle) {
    const RegionF start{100, 100, 200, 200};
    const struct {
        int code;
        float dx, dy;
        int newCode;
        RegionF expected;
    } cases[] = {
        {1, 150, 150, 5, {200, 200, 250, 250}},
        {1, 150, 0, 3, {200, 100, 250, 200}},
        {1, 0, 150, 7, {100, 200, 200, 250}},
        {1, 20, 30, 1, {120, 130, 200, 200}},
        {2, 150, 150, 6, {100, 200, 200, 250}},
        {3, -150, 150, 7, {50, 200, 100, 250}},
        {3, -150, 0, 1, {50, 100, 100, 200}},
        {4, -150, 0, 8, {50, 100, 100, 200}},
        {5, -150, -150, 1, {50, 50, 100, 100}},
        {5, 0, -150, 3, {100, 50, 200, 100}},
        {6, 0, -150, 2, {100, 50, 200, 100}},
        {7, 150, -150, 3, {200, 50, 250, 100}},
        {7, 150, 0, 5, {200, 100, 250, 200}},
        {8, 150, 0, 4, {200, 100, 250, 200}},
        {8, 100, 0, 8, {200, 100, 200, 200}}, // meeting is not crossing
        {8, -500, 0, 8, {0, 100, 200, 200}},
        {5, 1000, 1000, 5, {100, 100, 640, 480}},
        {4, -500, 0, 8, {0, 100, 100, 200}}, // clamped at 0, then crossed
        {0, 50, 50, 0, start},
        {2, 0.001f, 0.001f, 2, start},
    };
    for (const auto& c : cases) {
        RegionF r = start;
        EXPECT_EQ(RegionEditor::resize(r, c.code, c.dx, c.dy, 640, 480), c.newCode)
            << c.code << " by " << c.dx << "," << c.dy;
        EXPECT_EQ(r, c.expected) << c.code << " by " << c.dx << "," << c.dy;
    }
    EXPECT_EQ(RegionEditor::mirrored(2, true, false), 2);
    EXPECT_EQ(RegionEditor::mirrored(8, true, true), 4);
    EXPECT_EQ(RegionEditor::mirrored(-1, true, true), -1);
}

TEST(RegionEditor, CameraRegionFollowsTheFlipsAndIsTruncatedInOrder) {
    const RegionF leftQuarter{0, 0, 200, 150};
    EXPECT_EQ(RegionEditor::toCamera(leftQuarter, false, false, 800, 600),
              (RegionI{0, 0, 200, 150}));
    EXPECT_EQ(RegionEditor::toCamera(leftQuarter, true, false, 800, 600),
              (RegionI{600, 0, 800, 150}));
    EXPECT_EQ(RegionEditor::toCamera(leftQuarter, false, true, 800, 600),
              (RegionI{0, 450, 200, 600}));
    EXPECT_EQ(RegionEditor::toCamera(leftQuarter, true, true, 800, 600),
              (RegionI{600, 450, 800, 600}));

    EXPECT_EQ(RegionEditor::toCamera({10.7f, 20.2f, 100.9f, 80.5f}, true, false, 800, 600),
              (RegionI{699, 20, 789, 80}));
    EXPECT_EQ(RegionEditor::toCamera({200, 50, 100, 0}, false, false, 800, 600),
              (RegionI{100, 0, 200, 50}));

    for (bool h : {false, true})
        for (bool v : {false, true}) {
            const RegionF region{12, 34, 356, 478};
            EXPECT_EQ(RegionEditor::fromCamera(RegionEditor::toCamera(region, h, v, 800, 600), h, v,
                                               800, 600),
                      region)
                << h << v;
        }
}

} // namespace
