#include "camera/CameraRecord.h"
#include "camera/frame/AutoCapture.h"
#include "camera/frame/CameraMenuModel.h"
#include "camera/frame/CaptureNamer.h"
#include "camera/frame/VideoCommandState.h"
#include "camera/frame/VideoZoom.h"
#include "platform/CommandIds.h"

#include <QSet>

#include <gtest/gtest.h>

#include <limits>

using namespace lanmira;
using namespace Qt::StringLiterals;

namespace {

TEST(VideoZoom, StepsBetweenQuartersAndNeverBeyondActualSize) {
    const struct {
        int num, den, code;
        std::optional<int> percent; // nothing: no change
    } cases[] = {
        {60, 100, VideoZoom::kZoomIn, 75},    {60, 100, VideoZoom::kZoomOut, 50},
        {100, 100, VideoZoom::kZoomIn, {}},   {20, 100, VideoZoom::kZoomOut, {}},
        {100, 100, VideoZoom::kActual, {}},   {50, 100, VideoZoom::kActual, 100},
        {200, 100, VideoZoom::kZoomOut, 100}, {200, 100, VideoZoom::kZoomIn, {}},
        {1, 2, VideoZoom::kZoomIn, 75},       {3, 4, VideoZoom::kZoomOut, 50},
        {1, 4, VideoZoom::kZoomOut, {}},      {1, 4, VideoZoom::kZoomIn, 50},
        {10, 100, VideoZoom::kZoomIn, 25},    {99, 100, VideoZoom::kZoomIn, 100},
        {1, 1, VideoZoom::kActual, {}},       {60, 100, 7, {}},
        {60, 0, VideoZoom::kZoomOut, 100}, // a broken fraction is repaired
    };
    for (const auto& c : cases) {
        const auto next = VideoZoom::step({c.num, c.den}, c.code);
        SCOPED_TRACE(testing::Message() << c.num << "/" << c.den << " code " << c.code);
        ASSERT_EQ(next.has_value(), c.percent.has_value());
        if (next) {
            EXPECT_EQ(next->numerator, *c.percent);
            EXPECT_EQ(next->denominator, 100);
        }
    }
    EXPECT_TRUE((VideoZoom{50, 100}.sameValue({1, 2})));
    EXPECT_FALSE((VideoZoom{50, 100}.sameValue({1, 3})));
}

TEST(CaptureNamer, CounterHasAtLeastFourDigitsLikePrintf) {
    EXPECT_EQ(CaptureNamer::name(u"Lanmira"_s, 7, u"jpg"_s), u"Lanmira0007.jpg"_s);
    EXPECT_EQ(CaptureNamer::name(u"Lanmira"_s, 12345, u"jpg"_s), u"Lanmira12345.jpg"_s);
    EXPECT_EQ(CaptureNamer::name(u"Lanmira"_s, -1, u"jpg"_s), u"Lanmira-001.jpg"_s);
    EXPECT_EQ(CaptureNamer::name(u"/tmp/50%d_"_s, 1, u"png"_s), u"/tmp/50%d_0001.png"_s);
}

TEST(CaptureNamer, AdvancePastTakenNamesOrSkipWithout) {
    const QSet<QString> present{u"Lanmira0000.jpg"_s, u"Lanmira0001.jpg"_s};
    const auto exists = [&](const QString& path) { return present.contains(path); };

    int counter = 0;
    EXPECT_EQ(CaptureNamer::next(u"Lanmira"_s, counter, u"jpg"_s, true, exists),
              u"Lanmira0002.jpg"_s);
    EXPECT_EQ(counter, 2) << "the caller adds 1 after saving";

    counter = 1;
    EXPECT_EQ(CaptureNamer::next(u"Lanmira"_s, counter, u"jpg"_s, false, exists), std::nullopt);
    EXPECT_EQ(counter, 1);
    counter = 5;
    EXPECT_EQ(CaptureNamer::next(u"Lanmira"_s, counter, u"jpg"_s, false, exists),
              u"Lanmira0005.jpg"_s);
    EXPECT_EQ(counter, 5);

    counter = std::numeric_limits<int>::max();
    EXPECT_EQ(
        CaptureNamer::next(u"x"_s, counter, u"jpg"_s, true, [](const QString&) { return true; }),
        std::nullopt);
    EXPECT_EQ(counter, std::numeric_limits<int>::max());
}

TEST(AutoCapture, LimitedCountStopsAtTheTickAfterTheLast) {
    AutoCapture capture;
    EXPECT_EQ(capture.tick(), AutoCapture::Tick::Stop) << "idle";
    capture.start(true, 3);
    for (int i = 0; i < 3; ++i)
        EXPECT_EQ(capture.tick(), AutoCapture::Tick::Capture) << i;
    EXPECT_EQ(capture.tick(), AutoCapture::Tick::Stop);
    EXPECT_EQ(capture.state(), AutoCapture::State::Idle);
    EXPECT_EQ(capture.tick(), AutoCapture::Tick::Stop);

    capture.start(true, -5);
    EXPECT_EQ(capture.tick(), AutoCapture::Tick::Stop);
}

TEST(AutoCapture, UnlimitedRunsUntilStopped) {
    AutoCapture capture;
    capture.start(false, 3);
    EXPECT_EQ(capture.remaining(), AutoCapture::kUnlimited);
    for (int i = 0; i < 1000; ++i)
        ASSERT_EQ(capture.tick(), AutoCapture::Tick::Capture);
    EXPECT_TRUE(capture.running());
    capture.stop();
    EXPECT_FALSE(capture.running());
    EXPECT_EQ(capture.tick(), AutoCapture::Tick::Stop);
}

struct Expect {
    bool enabled;
    bool checked = false;
};

CommandState stateOf(int id, const VideoSessionFacts& facts, bool dialogExists = true) {
    CommandState state;
    EXPECT_TRUE(videoCommandState(id, facts, dialogExists, state)) << id;
    return state;
}

TEST(VideoCommandState, RulesMatrix) {
    const VideoSessionFacts idle{.hasSource = true, .canGrab = true};
    VideoSessionFacts autoRun = idle;
    autoRun.autoCapture = true;
    VideoSessionFacts recording = idle;
    recording.recording = true;
    VideoSessionFacts lost = recording;
    lost.autoCapture = true;
    lost.lost = true;
    lost.topmost = true;
    VideoSessionFacts lostIdle = idle;
    lostIdle.lost = true;
    const VideoSessionFacts noSource{};

    const struct {
        const char* name;
        const VideoSessionFacts& facts;
        int id;
        Expect expect;
    } cases[] = {
        {"idle", idle, cmd::ID_VIDEO_CAPTURE_FRAME, {true}},
        {"idle", idle, cmd::ID_EDIT_COPY, {true}},
        {"idle", idle, cmd::ID_VIDEO_AUTO_CAPTURE, {true, false}},
        {"idle", idle, cmd::ID_VIDEO_START_RECORD, {true}},
        {"idle", idle, cmd::ID_VIDEO_STOP_RECORD, {false}},
        {"idle", idle, cmd::ID_VIDEO_VIEW_PROPERTIES, {true}},
        {"idle", idle, cmd::ID_CAMERA_DIALOG_FIRST, {true}},
        {"idle", idle, cmd::ID_VIDEO_TOPMOST, {true, false}},
        {"auto", autoRun, cmd::ID_VIDEO_CAPTURE_FRAME, {false}},
        {"auto", autoRun, cmd::ID_EDIT_COPY, {false}},
        {"auto", autoRun, cmd::ID_VIDEO_START_RECORD, {false}},
        {"auto", autoRun, cmd::ID_VIDEO_AUTO_CAPTURE, {true, true}},
        {"recording", recording, cmd::ID_CAMERA_DIALOG_LAST, {false}},
        {"recording", recording, cmd::ID_VIDEO_START_RECORD, {false}},
        {"recording", recording, cmd::ID_VIDEO_STOP_RECORD, {true}},
        {"lost", lost, cmd::ID_VIDEO_CAPTURE_FRAME, {false}},
        {"lost", lost, cmd::ID_VIDEO_VIEW_PROPERTIES, {false}},
        {"lost", lost, cmd::ID_CAMERA_DIALOG_FIRST + 3, {false}},
        {"lost", lost, cmd::ID_VIDEO_STOP_RECORD, {true}},
        {"lost", lost, cmd::ID_VIDEO_AUTO_CAPTURE, {true, true}}, // it can still be stopped
        {"lost", lost, cmd::ID_VIDEO_TOPMOST, {true, true}},
        {"lost idle", lostIdle, cmd::ID_VIDEO_AUTO_CAPTURE, {false, false}},
        {"lost idle", lostIdle, cmd::ID_VIDEO_START_RECORD, {false}},
        {"no source", noSource, cmd::ID_VIDEO_CAPTURE_FRAME, {false}},
        {"no source", noSource, cmd::ID_VIDEO_START_RECORD, {false}},
        {"no source", noSource, cmd::ID_VIDEO_VIEW_PROPERTIES, {false}},
    };
    for (const auto& c : cases) {
        const CommandState state = stateOf(c.id, c.facts);
        EXPECT_EQ(state.enabled, c.expect.enabled) << c.name << " " << c.id;
        EXPECT_EQ(state.checked, c.expect.checked) << c.name << " " << c.id;
    }
    EXPECT_FALSE(stateOf(cmd::ID_CAMERA_DIALOG_FIRST, idle, false).enabled);
    EXPECT_TRUE(stateOf(cmd::ID_VIDEO_AUTO_CAPTURE, idle).checkable);
    EXPECT_FALSE(stateOf(cmd::ID_VIDEO_CAPTURE_FRAME, idle).checkable);

    for (int other :
         {cmd::ID_CAMERA_DIALOG_FIRST - 1, cmd::ID_CAMERA_DIALOG_LAST + 1, cmd::ID_CAMERA_FIRST}) {
        CommandState untouched;
        untouched.enabled = false;
        EXPECT_FALSE(videoCommandState(other, idle, true, untouched)) << other;
        EXPECT_FALSE(untouched.enabled);
    }
}

std::vector<CameraRecord> cameras(int count) {
    std::vector<CameraRecord> list;
    for (int i = 0; i < count; ++i)
        list.push_back({u"usb-%1"_s.arg(i), u"Camera %1"_s.arg(i), 0});
    return list;
}

TEST(CameraMenuModel, NoCameraGivesOneGreyedEntry) {
    const auto entries = cameraMenuEntries({}, {}, false, u"No device"_s);
    ASSERT_EQ(entries.size(), 1u);
    EXPECT_EQ(entries[0].id, 52797);
    EXPECT_EQ(entries[0].text, u"No device"_s);
    EXPECT_FALSE(entries[0].enabled);
    EXPECT_FALSE(entries[0].checked);
}

TEST(CameraMenuModel, CurrentCheckedByExactIdentifierAndAllGreyedWhileOpen) {
    auto list = cameras(3);
    list[2].id = u"USB-1"_s;
    const auto open = cameraMenuEntries(list, u"usb-1"_s, true, u"No device"_s);
    ASSERT_EQ(open.size(), 3u);
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(open[i].id, cmd::ID_CAMERA_FIRST + i);
        EXPECT_EQ(open[i].text, list[i].name);
        EXPECT_FALSE(open[i].enabled);
        EXPECT_EQ(open[i].checked, i == 1) << i;
    }

    list[0].id.clear();
    for (const auto& entry : cameraMenuEntries(list, {}, false, u"No device"_s)) {
        EXPECT_TRUE(entry.enabled);
        EXPECT_FALSE(entry.checked) << "nothing is current without an open camera";
    }
}

TEST(CameraMenuModel, OnlyTheReservedCommandsAreUsed) {
    const auto entries = cameraMenuEntries(cameras(30), u"usb-29"_s, false, u"No device"_s);
    ASSERT_EQ(entries.size(), 27u);
    EXPECT_EQ(entries.back().id, cmd::ID_CAMERA_LAST);
    for (const auto& entry : entries)
        EXPECT_FALSE(entry.checked);
}

} // namespace
