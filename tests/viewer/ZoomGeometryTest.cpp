#include "viewer/ZoomGeometry.h"

#include <gtest/gtest.h>

using namespace lanmira;

namespace {

const ViewClient kClient{{800, 600}};
// The same window with both scroll bars shown.
const ViewClient kBarred{{783, 583}, true, true, 17, 17};
const QSize kLarge(1000, 500), kSmall(300, 200);

std::pair<int, int> zoomOf(const ZoomGeometry& z) {
    return {z.zoomNum(), z.zoomDen()};
}

TEST(ZoomGeometry, MulDivRoundsHalvesAwayFromZeroIn64Bits) {
    const int cases[][4] = {{5, 1, 2, 3}, {-5, 1, 2, -3}, {5, -1, 2, -3},
                            {2, 1, 3, 1}, {1, 1, 3, 0},   {1000000, 3000, 4000, 750000},
                            {1, 1, 0, -1}};
    for (const auto& c : cases)
        EXPECT_EQ(ZoomGeometry::mulDiv(c[0], c[1], c[2]), c[3])
            << c[0] << "*" << c[1] << "/" << c[2];
}

TEST(ZoomGeometry, BestFitTruncatesTheSmallerRatioAndAddsBackShownScrollBars) {
    const struct {
        QSize picture;
        ViewClient client;
        std::pair<int, int> zoom;
    } cases[] = {
        {kLarge, kClient, {80, 100}},
        {kSmall, kClient, {266, 100}}, // ry 3.0, rx 2.666...
        {kLarge, kBarred, {80, 100}},
        {kLarge, ViewClient{{783, 583}, false, false, 17, 17}, {78, 100}},
        {{}, kClient, {1, 1}},
    };
    for (const auto& c : cases) {
        ZoomGeometry z;
        z.bestFit(c.picture, c.client);
        EXPECT_EQ(zoomOf(z), c.zoom) << c.picture.width() << "x" << c.picture.height();
    }
}

TEST(ZoomGeometry, PictureRectAndRepaintOnlyWhenTheSizeChanges) {
    ZoomGeometry z;
    EXPECT_EQ(z.pictureRect({301, 201}, {800, 600}), QRect(249, 199, 301, 201));
    EXPECT_EQ(z.pictureRect({900, 100}, {800, 600}), QRect(0, 250, 900, 100));
    EXPECT_TRUE(z.pictureRect({}, {800, 600}).isEmpty());
    EXPECT_TRUE(z.setZoom(80, 100, kLarge));
    EXPECT_EQ(z.pictureRect(kLarge, {800, 600}), QRect(0, 100, 800, 400));
    EXPECT_FALSE(z.setZoom(4, 5, kLarge));
    EXPECT_FALSE(z.setZoom(100, 100, {}));
    EXPECT_TRUE(z.actualSize()) << "100/100 is 1:1 too";
}

TEST(ZoomGeometry, EachFitModeOnANewPicture) {
    const struct {
        int mode;
        QSize picture;
        ViewClient client;
        std::pair<int, int> zoom;
    } cases[] = {
        {0, kLarge, kClient, {1, 1}},
        {1, kSmall, kClient, {1, 1}},
        {1, {800, 600}, kClient, {1, 1}},
        {1, kLarge, kClient, {80, 100}},
        {2, {1000, 700}, kClient, {1, 1}},
        {2, kLarge, kClient, {80, 100}},
        {2, kSmall, kClient, {266, 100}},
        {3, kSmall, kClient, {266, 100}},
        {3, kLarge, kClient, {80, 100}},
        // Compared with the plain client, fitted to the one without scroll bars.
        {1, {790, 590}, kBarred, {101, 100}},
    };
    for (const auto& c : cases) {
        ZoomGeometry z;
        if (!(c.mode & ZoomGeometry::kAutoShrink))
            z.toggleAutoShrink({10, 10}, kClient);
        if (c.mode & ZoomGeometry::kAutoEnlarge)
            z.toggleAutoEnlarge({10, 10}, kClient);
        ASSERT_EQ(z.fitMode(), c.mode);
        z.setZoom(37, 100, {});
        EXPECT_TRUE(z.applyFitMode(c.picture, c.client));
        EXPECT_EQ(zoomOf(z), c.zoom) << "mode " << c.mode << ", " << c.picture.width();
    }
}

TEST(ZoomGeometry, LockAndTheAutoModeToggles) {
    ZoomGeometry z;
    z.setZoom(50, 100, kLarge);
    EXPECT_TRUE(z.toggleLock(kLarge, kClient) && z.locked());
    EXPECT_TRUE(z.applyFitMode(kSmall, kClient)) << "locked still repaints";
    EXPECT_EQ(zoomOf(z), std::pair(50, 100));
    EXPECT_FALSE(z.toggleAutoShrink(kLarge, kClient) || z.locked()) << "unlocked, zoom kept";
    EXPECT_EQ(zoomOf(z), std::pair(50, 100)) << "turning shrink off keeps the zoom";
    z.toggleLock(kSmall, kClient);
    EXPECT_TRUE(z.toggleAutoEnlarge(kSmall, kClient));
    EXPECT_FALSE(z.locked());
    EXPECT_EQ(zoomOf(z), std::pair(266, 100));
    EXPECT_FALSE(z.toggleAutoShrink(kSmall, kClient)) << "nothing to shrink";
    EXPECT_FALSE(z.toggleAutoEnlarge(kLarge, kClient)) << "off: the zoom stays";
    EXPECT_EQ(zoomOf(z), std::pair(266, 100));
    z.toggleLock(kLarge, kClient);
    z.toggleLock(kLarge, kClient);
    EXPECT_EQ(zoomOf(z), std::pair(80, 100)) << "unlocking applies the fit mode";
    EXPECT_FALSE(z.toggleAutoEnlarge({}, kClient));
    EXPECT_EQ(z.fitMode(), ZoomGeometry::kAutoShrink) << "without a picture: no toggle";
}

} // namespace
