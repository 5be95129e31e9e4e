#include "camera/pane/AnchorLayout.h"
#include "camera/pane/PaneGroups.h"
#include "camera/panels/ExposureTimeInput.h"
#include "camera/panels/ExposureTimeScale.h"
#include "camera/panels/HistogramGeometry.h"
#include "camera/panels/HistogramLevels.h"
#include "camera/panels/ResolutionChoices.h"

#include <gtest/gtest.h>

#include <map>

using namespace lanmira;
using Verdict = ExposureTimeInput::Verdict;

// A 232-wide panel at x 0 grown to 300 (and shrunk to 201, odd, to catch rounding).
TEST(AnchorLayout, EachAnchorKindAtTwoWidths) {
    const TemplateRect panel{0, 0, 232, 100};
    const TemplateRect c{8, 10, 108, 30}; // 100 wide
    struct Row {
        int anchor;
        int width;
        TemplateRect expected;
    };
    const Row rows[] = {
        {kAnchorStretch, 300, {8, 10, 176, 30}},
        {kAnchorStretch, 201, {8, 10, 77, 30}},
        {kAnchorRight, 300, {76, 10, 176, 30}},
        {kAnchorCentre, 300, {100, 10, 200, 30}},
        {kAnchorCentre, 201, {50, 10, 150, 30}},
        {kAnchorLeftHalf, 300, {25, 10, 125, 30}},
        {kAnchorLeftHalf, 201, {0, 10, 100, 30}},
        {kAnchorRightHalf, 300, {175, 10, 275, 30}},
        {kAnchorRightHalf, 201, {100, 10, 200, 30}},
        {kAnchorStretchLeftHalf, 300, {8, 10, 142, 30}},
        {kAnchorStretchLeftHalf, 201, {8, 10, 92, 30}},
        {kAnchorStretchRightHalf, 300, {42, 10, 176, 30}},
        {kAnchorStretchRightHalf, 201, {-8, 10, 77, 30}},
        {kAnchorNone, 300, c},
        {3, 300, c}, // not a kind: left alone
    };
    for (const Row& r : rows)
        EXPECT_EQ(anchoredRect(r.anchor, c, panel, r.width), r.expected)
            << "anchor " << r.anchor << " width " << r.width;
    // At the template's own width every kind of control stays where the template put it.
    const TemplateRect half{4, 0, 112, 20};
    EXPECT_EQ(anchoredRect(kAnchorStretchRightHalf, half, panel, 232), half);
    EXPECT_EQ(anchoredRect(kAnchorStretch, c, panel, 232), c);
    // A panel not at the left edge does not stretch its controls.
    EXPECT_EQ(anchoredRect(kAnchorStretch, c, TemplateRect{5, 0, 237, 100}, 300), c);
}

TEST(ExposureTimeScale, LimitsMapExactlyAndPositionsStayInRange) {
    const ExposureTimeScale s(100, 1000000);
    EXPECT_EQ(s.lastPosition(), 1000);
    EXPECT_EQ(s.firstPosition(), 47); // cbrt(1e14) = 46415.9 → 46.4 + 1
    EXPECT_EQ(s.timeOf(s.firstPosition()), 100u);
    EXPECT_EQ(s.timeOf(s.lastPosition()), 1000000u);
    // The first position's cube lies just above the minimum, the one before below it.
    EXPECT_GT(s.timeOf(s.firstPosition() + 1), 100u);
    EXPECT_EQ(s.timeOf(500), 125000u);
    EXPECT_EQ(s.positionOf(125000), 499); // cbrt(0.125) lands a hair under 0.5, truncated
    EXPECT_EQ(s.positionOf(0), s.firstPosition());
    EXPECT_EQ(s.positionOf(5000000), s.lastPosition());
    for (int p = s.firstPosition(); p <= s.lastPosition(); ++p) {
        const std::uint32_t t = s.timeOf(p);
        ASSERT_GE(t, 100u);
        ASSERT_LE(t, 1000000u);
        ASSERT_LE(s.positionOf(t), p); // truncation never moves a time past its position
    }
}

TEST(ExposureTimeScale, EqualLimitsAndTinyRangesMapToTheLimits) {
    const ExposureTimeScale same(10000, 10000);
    EXPECT_GT(same.firstPosition(), same.lastPosition());
    for (int p : {same.firstPosition(), same.lastPosition(), 0, 5})
        EXPECT_EQ(same.timeOf(p), 10000u);
    EXPECT_EQ(same.positionOf(10000), same.lastPosition());
    // Under a millisecond the slider has one position; nothing divides by zero.
    const ExposureTimeScale tiny(10, 900);
    EXPECT_EQ(tiny.lastPosition(), 0);
    EXPECT_EQ(tiny.positionOf(500), 0);
    EXPECT_EQ(tiny.timeOf(0), 900u);
    const ExposureTimeScale none(0, 0);
    EXPECT_EQ(none.timeOf(none.positionOf(120)), 0u);
}

TEST(ExposureTimeInput, TypedMillisecondsAreCheckedLikeTheDialogDoes) {
    struct Row {
        const char* text;
        Verdict verdict;
        std::uint32_t us;
    };
    const Row rows[] = {{"12.5", Verdict::Ok, 12500},     {"  12.5", Verdict::Ok, 12500},
                        {"0.1", Verdict::Ok, 100},        {"2000", Verdict::Ok, 2000000},
                        {"12.5x", Verdict::Invalid, 0},   {"12,5", Verdict::Invalid, 0},
                        {"abc", Verdict::Invalid, 0},     {"12.5 ", Verdict::Invalid, 0},
                        {"nan", Verdict::Invalid, 0},     {"", Verdict::Empty, 0},
                        {"0.09", Verdict::OutOfRange, 0}, {"2000.001", Verdict::OutOfRange, 0},
                        {"-1", Verdict::OutOfRange, 0},   {"1e30", Verdict::OutOfRange, 0}};
    for (const Row& r : rows) {
        const auto in = ExposureTimeInput::parse(QString::fromUtf8(r.text), 100, 2000000);
        EXPECT_EQ(in.verdict, r.verdict) << r.text;
        if (r.verdict == Verdict::Ok) {
            EXPECT_EQ(in.microseconds, r.us) << r.text;
        }
    }
}

TEST(HistogramLevels, TypedEdgesSwapWhenTheyCross) {
    HistogramLevels l;
    l.low = {10, 20, 30, 40};
    l.high = {200, 210, 220, 230};
    HistogramLevels one = l;
    one.typeLow(1, 255); // "300" arrives clamped to 255 and crosses the high edge
    EXPECT_EQ(one.low[1], 210);
    EXPECT_EQ(one.high[1], 255);
    one.typeHigh(1, 210); // equal is allowed for typed edges
    EXPECT_EQ(one.low[1], 210);
    EXPECT_EQ(one.high[1], 210);
    EXPECT_EQ(one.low[0], 10); // other channels untouched

    HistogramLevels all = l;
    EXPECT_EQ(all.lowEdge(HistogramLevels::kAllColours), 10);
    EXPECT_EQ(all.highEdge(HistogramLevels::kAllColours), 220);
    all.typeLow(HistogramLevels::kAllColours, 240); // crosses the largest colour high
    for (int c = 0; c < 3; ++c) {
        EXPECT_EQ(all.low[static_cast<std::size_t>(c)], 220);
        EXPECT_EQ(all.high[static_cast<std::size_t>(c)], 240);
    }
    EXPECT_EQ(all.low[3], 40); // grey is not a colour channel
    all.typeHigh(HistogramLevels::kAllColours, 5);
    EXPECT_EQ(all.low[0], 5);
    EXPECT_EQ(all.high[2], 220);

    HistogramLevels joined = l;
    joined.joinColours();
    EXPECT_EQ(joined.low, (std::array<std::uint16_t, 4>{10, 10, 10, 40}));
    EXPECT_EQ(joined.high, (std::array<std::uint16_t, 4>{220, 220, 220, 230}));
}

TEST(HistogramLevels, DroppedMarkersCrossSwapAndEqualEdgesPullApart) {
    HistogramLevels l;
    l.low[3] = 50;
    l.high[3] = 100;
    l.dropLow(3, 100);
    EXPECT_EQ(l.low[3], 99);
    EXPECT_EQ(l.high[3], 101);
    l.dropHigh(3, 20); // crosses: swapped to 20..99
    EXPECT_EQ(l.low[3], 20);
    EXPECT_EQ(l.high[3], 99);
    l.dropLow(3, 0);
    l.dropHigh(3, 0); // both at 0: the low edge cannot go below 0
    EXPECT_EQ(l.low[3], 0);
    EXPECT_EQ(l.high[3], 1);
    HistogramLevels top;
    top.dropLow(0, 255);
    EXPECT_EQ(top.low[0], 254);
    EXPECT_EQ(top.high[0], 255);
    // All colours: set without any crossing test, grey left alone.
    HistogramLevels all;
    all.dropLow(HistogramLevels::kAllColours, 255);
    EXPECT_EQ(all.low, (std::array<std::uint16_t, 4>{255, 255, 255, 0}));
    EXPECT_EQ(all.high[0], 255);
}

TEST(HistogramGeometry, LevelsMarkersAndPolygon) {
    const HistogramGeometry g(QRect(0, 0, 255, 120));
    EXPECT_EQ(g.graph(), QRect(0, 0, 255, 100));
    EXPECT_EQ(g.xOfLevel(0), 0);
    EXPECT_EQ(g.xOfLevel(255), 255);
    EXPECT_EQ(g.levelOfX(-10), 0);
    EXPECT_EQ(g.levelOfX(0), 0);
    EXPECT_EQ(g.levelOfX(128), 128);
    EXPECT_EQ(g.levelOfX(400), 255);
    EXPECT_TRUE(g.onMarker(50, 52));
    EXPECT_FALSE(g.onMarker(50, 53));
    const HistogramGeometry narrow(QRect(10, 0, 100, 120));
    EXPECT_EQ(narrow.xOfLevel(128), 10 + 128 * 100 / 255);
    EXPECT_EQ(narrow.levelOfX(10 + 50), 127);
    EXPECT_EQ(narrow.tickX(50), 10 + 19);
    EXPECT_FALSE(HistogramGeometry(QRect(0, 0, 3, 50)).usable());

    double bins[256] = {};
    EXPECT_TRUE(g.polygon(bins).empty()); // an empty channel is skipped
    bins[0] = 10;
    bins[255] = 5;
    bins[128] = 2.5;
    const auto points = g.polygon(bins);
    ASSERT_EQ(points.size(), 258u);
    EXPECT_EQ(points[0], QPoint(0, 100 - 100 - 1));    // the largest bin reaches the top
    EXPECT_EQ(points[255], QPoint(255, 100 - 50 - 1)); // scaled to its own largest
    EXPECT_EQ(points[128], QPoint(128, 100 - 25 - 1));
    EXPECT_EQ(points[1], QPoint(1, 99));
    EXPECT_EQ(points[256], QPoint(255, 100));
    EXPECT_EQ(points[257], QPoint(0, 100));
}

TEST(PaneGroups, FirstStartOpensTheResolutionGroupOnlyAndStatesRoundTrip) {
    std::map<QString, int> store;
    auto read = [&](const QString& key, int def) {
        auto it = store.find(key);
        return it == store.end() ? def : it->second;
    };
    const CollapsedGroups first = CollapsedGroups::read(read);
    EXPECT_FALSE(first.collapsed[0]);
    for (int i = 1; i < kGroupCount; ++i)
        EXPECT_TRUE(first.collapsed[static_cast<std::size_t>(i)]) << i;

    CollapsedGroups changed = first;
    changed.collapsed[kGroupHistogram] = false;
    changed.collapsed[kGroupResolution] = true; // never stored
    changed.write([&](const QString& key, int value) { store[key] = value; });
    EXPECT_EQ(store.size(), 9u);
    EXPECT_EQ(store.count(QStringLiteral("0")), 0u);
    EXPECT_EQ(store[QStringLiteral("9")], 0);
    EXPECT_EQ(store[QStringLiteral("1")], 1);
    const CollapsedGroups again = CollapsedGroups::read(read);
    EXPECT_FALSE(again.collapsed[kGroupHistogram]);
    EXPECT_FALSE(again.collapsed[kGroupResolution]);
}

TEST(PaneGroups, RegionsFollowTheirGroupsAndColour) {
    using P = RegionReporter::Post;
    RegionReporter r;
    EXPECT_EQ(r.attached(true, false, true), (std::vector<P>{{true, 1}, {false, 0}}));
    EXPECT_TRUE(r.groupsChanged(true, false, true).empty());
    EXPECT_EQ(r.groupsChanged(true, true, true), (std::vector<P>{{true, 0}}));
    EXPECT_EQ(r.groupsChanged(false, false, true), (std::vector<P>{{false, 1}, {false, 0}}));
    // A monochrome camera never shows the white balance region, even with its group open.
    RegionReporter mono;
    EXPECT_EQ(mono.attached(true, true, false), (std::vector<P>{{false, 1}, {true, 0}}));
    EXPECT_EQ(mono.groupsChanged(false, true, false), (std::vector<P>{{false, 1}}));
    EXPECT_EQ(mono.groupsChanged(true, true, false), (std::vector<P>{{false, 1}}));
}

TEST(ResolutionChoices, CapabilityTableListsEachSizeOnceAndSelectsTheCurrent) {
    const std::vector<std::pair<int, int>> table{
        {640, 480}, {1280, 720}, {640, 480}, {1920, 1080}, {1280, 720}};
    const std::pair<int, int> current{1920, 1080};
    const auto c = ResolutionChoices::fromCapability(table, &current);
    EXPECT_EQ(c.texts, (QStringList{QStringLiteral("640 * 480"), QStringLiteral("1280 * 720"),
                                    QStringLiteral("1920 * 1080")}));
    EXPECT_EQ(c.selected, 2);
    EXPECT_EQ(ResolutionChoices::fromCapability(table, nullptr).selected, -1);
    const std::pair<int, int> unknown{800, 600};
    EXPECT_EQ(ResolutionChoices::fromCapability(table, &unknown).selected, -1);
    EXPECT_EQ(ResolutionChoices::fromInterface(table, 7).selected, -1);
    EXPECT_EQ(ResolutionChoices::fromInterface(table, 1).texts.size(), 5);
}
