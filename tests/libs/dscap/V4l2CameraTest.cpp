#include "FakeV4l2System.h"
#include "dscap/v4l2/MjpegDecoder.h"
#include "dscap/v4l2/V4l2Provider.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <thread>
#include <tuple>

using namespace dscap;
using namespace dscap::v4l2;

namespace {

const std::string kNode = "/dev/video0";
const std::string kStable = "usb-Acme_Microscope_0001-video-index0";
const std::string kId = "v4l2:" + kStable;

// Red, green, blue and white quarters: a swapped channel, a flip or a wrong stride shows.
constexpr std::uint8_t kQuarters[4][3] = {
    {40, 40, 220}, {40, 200, 40}, {210, 50, 50}, {230, 230, 230}};

Bytes quarters(int width, int height) {
    Bytes bgr(std::size_t(width) * height * 3);
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            const auto& c = kQuarters[(y >= height / 2) * 2 + (x >= width / 2)];
            std::copy(c, c + 3, &bgr[(std::size_t(y) * width + x) * 3]);
        }
    }
    return bgr;
}

void expectQuarters(const SourceFrame& f, int tolerance) {
    for (int q = 0; q < 4; ++q) {
        const int x = f.width / 4 + (q % 2) * f.width / 2;
        const int y = f.height / 4 + (q / 2) * f.height / 2;
        const std::uint8_t* p = f.bgr + std::size_t(y) * f.stride + x * 3;
        for (int c = 0; c < 3; ++c)
            EXPECT_NEAR(p[c], kQuarters[q][c], tolerance) << "quarter " << q << " channel " << c;
    }
}

FakeNode webcamWith(void (*edit)(FakeNode&)) {
    FakeNode n = FakeV4l2System::webcam(kNode, kStable);
    edit(n);
    return n;
}

struct Rig {
    std::shared_ptr<FakeV4l2System> system = std::make_shared<FakeV4l2System>();
    std::unique_ptr<CameraProvider> provider = makeV4l2Provider(system);
    std::unique_ptr<CameraSource> camera;

    explicit Rig(FakeNode node = FakeV4l2System::webcam(kNode, kStable)) {
        system->addNode(std::move(node));
        std::string error;
        camera = provider->open(kId, error);
        EXPECT_TRUE(camera) << error;
    }
    bool start(int width, int height) {
        const auto r = camera->resolutions();
        return camera->start(
            int(std::find(r.begin(), r.end(), Resolution{width, height}) - r.begin()));
    }
    ReadStatus read(SourceFrame& f) { return camera->read(f, 2000); }
};

} // namespace

TEST(V4l2Provider, ListsStreamingCaptureNodesWithStableIdsAndDistinctNames) {
    const std::uint32_t capture = V4L2_CAP_VIDEO_CAPTURE | V4L2_CAP_STREAMING;
    const std::tuple<const char*, const char*, std::uint32_t> table[] = {
        {"usb-Acme-video-index0", "Acme Microscope", capture},
        {"usb-Acme-video-index1", "Acme Microscope", V4L2_CAP_META_CAPTURE | V4L2_CAP_STREAMING},
        {"pci-0000:00:14.0-usb-0:2:1.0-video-index0", "Acme Microscope", capture},
        {"", "Old Cam", capture},
        {"", "Read Only", V4L2_CAP_VIDEO_CAPTURE | V4L2_CAP_READWRITE},
        {"", "Encoder", V4L2_CAP_VIDEO_OUTPUT | V4L2_CAP_STREAMING},
        {"", "Locked", capture},
    };
    std::vector<FakeNode> nodes;
    for (const auto& [stable, card, caps] : table) {
        const std::string path = "/dev/video" + std::to_string(nodes.size());
        nodes.push_back(FakeV4l2System::webcam(path, stable, card));
        nodes.back().capabilities = caps;
        nodes.back().deviceCaps = caps;
    }
    // The metadata node shares the card's capabilities but not the node's own.
    nodes[1].capabilities = capture | V4L2_CAP_META_CAPTURE;
    nodes[3].deviceCaps.reset(); // an old driver
    nodes[6].openError = EACCES;
    auto system = std::make_shared<FakeV4l2System>();
    for (const FakeNode& n : nodes)
        system->addNode(n);

    std::vector<std::pair<std::string, std::string>> listed;
    for (const CameraInfo& c : makeV4l2Provider(system)->list())
        listed.emplace_back(c.id, c.name);
    const decltype(listed) expected = {
        {"v4l2:usb-Acme-video-index0", "Acme Microscope"},
        {"v4l2:pci-0000:00:14.0-usb-0:2:1.0-video-index0", "Acme Microscope (2)"},
        {"v4l2:/dev/video3", "Old Cam"}};
    EXPECT_EQ(listed, expected);
    EXPECT_EQ(system->state("/dev/video0").openHandles, 0) << "listing leaves nodes closed";
}

TEST(V4l2Provider, OpensByIdWhereverTheNodeMovedAndExplainsFailures) {
    Rig rig;
    rig.camera.reset();
    rig.system->moveNode(kStable, "/dev/video7");
    std::string error;
    auto camera = rig.provider->open(kId, error);
    ASSERT_TRUE(camera) << error;
    ASSERT_TRUE(camera->start(0));
    EXPECT_TRUE(rig.system->state("/dev/video7").streaming);
    camera.reset();

    EXPECT_FALSE(rig.provider->open("v4l2:usb-Nobody-video-index0", error));
    EXPECT_EQ(error, "The camera is not connected.");
    rig.system->setOpenError("/dev/video7", EBUSY);
    EXPECT_FALSE(rig.provider->open(kId, error));
    EXPECT_EQ(error, "The camera is busy: another program is using it.");
}

TEST(V4l2Camera, OffersDecodableSizesLargestFirstAndDecodesTheFormatPickedPerSize) {
    Rig rig;
    const std::vector<Resolution> expected = {{1920, 1080}, {1280, 720}, {800, 600}, {640, 480}};
    EXPECT_EQ(rig.camera->resolutions(), expected) << "H.264-only 3840x2160 is not offered";
    const std::tuple<Resolution, std::uint32_t, int> cases[] = {
        {{1920, 1080}, V4L2_PIX_FMT_MJPEG, 6}, // large: MJPEG even though YUYV has the size
        {{1280, 720}, V4L2_PIX_FMT_MJPEG, 6},
        {{800, 600}, V4L2_PIX_FMT_MJPEG, 6}, // small but MJPEG is faster (30 against 10 fps)
        // Small and as fast: no decoding cost. libv4lconvert's integer YUV maths is coarse on
        // saturated blue.
        {{640, 480}, V4L2_PIX_FMT_YUYV, 24},
    };
    for (const auto& [size, format, tolerance] : cases) {
        SCOPED_TRACE(size.width);
        const Bytes bgr = quarters(size.width, size.height);
        rig.system->setFrames(
            kNode, format, size.width, size.height,
            {format == V4L2_PIX_FMT_MJPEG
                 ? FakeV4l2System::makeMjpeg(bgr.data(), size.width, size.height)
                 : FakeV4l2System::makeYuyv(bgr.data(), size.width, size.height)});
        ASSERT_TRUE(rig.start(size.width, size.height));
        const FakeStreamState s = rig.system->state(kNode);
        EXPECT_EQ(s.pixelFormat, format);
        EXPECT_EQ(s.width, size.width);
        SourceFrame f;
        ASSERT_EQ(rig.read(f), ReadStatus::Frame) << rig.camera->lastError();
        EXPECT_EQ(f.width, size.width);
        EXPECT_EQ(f.stride, size.width * 3);
        expectQuarters(f, tolerance);
        timespec now{};
        clock_gettime(CLOCK_MONOTONIC, &now);
        EXPECT_NEAR(double(f.timestampNs) / 1e9, double(now.tv_sec) + now.tv_nsec / 1e9, 1.0);
    }
}

TEST(V4l2Camera, OffersCommonSizesWithinAStepwiseRange) {
    Rig rig(webcamWith([](FakeNode& n) {
        n.formats = {{V4L2_PIX_FMT_YUYV, {}, FakeStepwise{160, 1280, 16, 120, 960, 8}}};
    }));
    const std::vector<Resolution> expected = {{1280, 960}, {1280, 720}, {1024, 768},
                                              {800, 600},  {640, 480},  {320, 240}};
    EXPECT_EQ(rig.camera->resolutions(), expected);
    EXPECT_FALSE(rig.camera->features() & kFeatureSpeed);
}

TEST(V4l2Camera, SkipsBadFramesAndDecodesTheNextOne) {
    const std::pair<int, FakeFault> cases[] = {
        {1920, FakeFault::Corrupt}, {1920, FakeFault::ErrorFlag}, {1920, FakeFault::Empty},
        {640, FakeFault::Short},    {640, FakeFault::Corrupt},    {640, FakeFault::ErrorFlag},
    };
    for (const auto& [width, fault] : cases) {
        SCOPED_TRACE(int(fault));
        Rig rig;
        rig.system->setFrameFault(kNode, 1, fault);
        ASSERT_TRUE(rig.start(width, width == 640 ? 480 : 1080));
        SourceFrame f;
        ASSERT_EQ(rig.read(f), ReadStatus::Frame);
        const std::uint8_t* first = f.bgr;
        // Noise in an uncompressed frame is still a picture; everything else is refused.
        const bool picture = fault == FakeFault::Corrupt && width == 640;
        EXPECT_EQ(rig.read(f), picture ? ReadStatus::Frame : ReadStatus::Skipped);
        ASSERT_EQ(rig.read(f), ReadStatus::Frame);
        EXPECT_EQ(f.width, width);
        if (!picture) {
            EXPECT_NE(f.bgr, first) << "frames alternate between two buffers";
        }
    }
}

TEST(MjpegDecoder, AcceptsWholeFramesOnly) {
    constexpr int kW = 320;
    constexpr int kH = 240;
    Bytes bgr = quarters(kW, kH);
    for (std::size_t k = 0; k < bgr.size(); k += 7)
        bgr[k] = std::uint8_t(bgr[k] + k % 11); // texture, so there is entropy data to damage
    const Bytes whole = FakeV4l2System::makeMjpeg(bgr.data(), kW, kH, 80);
    // Motion-JPEG as many cameras send it: no Huffman tables, the decoder's standard ones.
    Bytes noTables(whole.begin(), whole.begin() + 2);
    std::size_t i = 2;
    while (whole[i] == 0xFF && whole[i + 1] != 0xDA) {
        const std::size_t length = 2 + (whole[i + 2] << 8 | whole[i + 3]);
        if (whole[i + 1] != 0xC4)
            noTables.insert(noTables.end(), whole.begin() + i, whole.begin() + i + length);
        i += length;
    }
    noTables.insert(noTables.end(), whole.begin() + i, whole.end());
    ASSERT_LT(noTables.size(), whole.size());
    Bytes padded = whole;
    padded.resize(whole.size() + 300, 0);
    // Stray bytes before the end marker, which many cameras send with every frame.
    Bytes stray(whole.begin(), whole.end() - 2);
    stray.insert(stray.end(), {0x12, 0x34, 0x56, 0xFF, 0xD9});
    const std::size_t twoThirds = whole.size() * 2 / 3;
    // Flipped bits in the entropy data: decoding ends early with much of the data unread.
    Bytes damaged = whole;
    for (std::size_t k = twoThirds; k < twoThirds + 40; ++k)
        damaged[k] ^= 0x5A;
    const Bytes garbage(500, 0xA7);
    Bytes brokenHeader = garbage;
    brokenHeader[0] = 0xFF;
    brokenHeader[1] = 0xD8;

    const std::tuple<const char*, Bytes, int, bool> cases[] = {
        {"broken header", brokenHeader, kW, false}, // and the decoder recovers from it
        {"whole", whole, kW, true},
        {"without Huffman tables", noTables, kW, true},
        {"padded", padded, kW, true},
        {"stray bytes", stray, kW, true},
        {"cut short", Bytes(whole.begin(), whole.begin() + twoThirds), kW, false},
        {"damaged", damaged, kW, false},
        {"garbage", garbage, kW, false},
        {"other size", whole, kW / 2, false},
    };
    MjpegDecoder decoder;
    Bytes out(kW * kH * 3);
    for (const auto& [name, data, width, ok] : cases)
        EXPECT_EQ(decoder.decode(data.data(), data.size(), width, kH, out.data()), ok) << name;
    ASSERT_TRUE(decoder.decode(noTables.data(), noTables.size(), kW, kH, out.data()));
    expectQuarters({out.data(), kW, kH, kW * 3, 0}, 8);
}

TEST(V4l2Camera, MapsSettingsOntoDeviceControlsWritingOnlyWhatChanged) {
    Rig rig(webcamWith([](FakeNode& n) {
        for (FakeControl& c : n.controls) {
            if (c.id == V4L2_CID_EXPOSURE_ABSOLUTE)
                c.granularity = 3; // whole sensor lines: the time read back differs
        }
    }));
    const auto exposure = rig.camera->exposureRange();
    EXPECT_EQ(std::tuple(exposure.min, exposure.max, exposure.def),
              std::tuple(100u, 500000u, 15600u));
    const auto gain = rig.camera->gainRange();
    EXPECT_EQ(std::tuple(gain.min, gain.max, gain.def), std::tuple(100, 200, 100));

    const SensorSettings base;
    rig.camera->apply(base);
    const auto first = rig.system->controlWrites(kNode);
    // Manual exposure before the time, automatic white balance off before the temperature.
    const auto at = [&](std::uint32_t id) {
        return std::find_if(first.begin(), first.end(), [&](auto& w) { return w.id == id; }) -
               first.begin();
    };
    EXPECT_LT(at(V4L2_CID_EXPOSURE_AUTO), at(V4L2_CID_EXPOSURE_ABSOLUTE));
    EXPECT_LT(at(V4L2_CID_AUTO_WHITE_BALANCE), at(V4L2_CID_WHITE_BALANCE_TEMPERATURE));
    EXPECT_EQ(rig.system->controlValue(kNode, V4L2_CID_EXPOSURE_AUTO), V4L2_EXPOSURE_MANUAL);
    EXPECT_EQ(rig.system->controlValue(kNode, V4L2_CID_AUTO_WHITE_BALANCE), 0);

    using S = SensorSettings;
    const std::tuple<void (*)(S&), std::uint32_t, std::int32_t> cases[] = {
        {[](S& s) { s.exposureUs = 10000; }, V4L2_CID_EXPOSURE_ABSOLUTE, 100},
        {[](S& s) { s.exposureUs = 15049; }, V4L2_CID_EXPOSURE_ABSOLUTE, 150},
        {[](S& s) { s.gain = 150; }, V4L2_CID_GAIN, 50},
        {[](S& s) { s.gain = 200; }, V4L2_CID_GAIN, 100},
        {[](S& s) { s.lightSource = kLightAc60Hz; }, V4L2_CID_POWER_LINE_FREQUENCY, 2},
        {[](S& s) { s.lightSource = kLightDc; }, V4L2_CID_POWER_LINE_FREQUENCY, 0},
        {[](S& s) { s.hue = -180; }, V4L2_CID_HUE, -40},
        {[](S& s) { s.hue = 90; }, V4L2_CID_HUE, 20},
        {[](S& s) { s.saturation = 255; }, V4L2_CID_SATURATION, 128},
        {[](S& s) { s.saturation = 64; }, V4L2_CID_SATURATION, 32},
        {[](S& s) { s.saturation = 192; }, V4L2_CID_SATURATION, 96},
        {[](S& s) { s.brightness = -64; }, V4L2_CID_BRIGHTNESS, -64},
        {[](S& s) { s.contrast = -100; }, V4L2_CID_CONTRAST, 0},
        {[](S& s) { s.contrast = 50; }, V4L2_CID_CONTRAST, 48},
        {[](S& s) { s.gamma = 20; }, V4L2_CID_GAMMA, 72},
        {[](S& s) { s.gamma = 140; }, V4L2_CID_GAMMA, 300},
        {[](S& s) { s.gamma = 180; }, V4L2_CID_GAMMA, 500},
        {[](S& s) { s.horizontalFlip = true; }, V4L2_CID_HFLIP, 1},
        {[](S& s) { s.verticalFlip = true; }, V4L2_CID_VFLIP, 1},
        {[](S& s) { s.temperature = 3200; }, V4L2_CID_WHITE_BALANCE_TEMPERATURE, 3200},
        {[](S& s) { s.temperature = 2000; }, V4L2_CID_WHITE_BALANCE_TEMPERATURE, 2800},
    };
    for (const auto& [change, id, value] : cases) {
        S s = base;
        change(s);
        rig.system->clearControlWrites(kNode);
        rig.camera->apply(s);
        rig.camera->apply(s);
        EXPECT_EQ(rig.system->controlWrites(kNode), (std::vector<FakeControlWrite>{{id, value}}))
            << std::hex << id;
        rig.camera->apply(base);
    }
    SensorSettings s = base;
    s.exposureUs = 10000;
    rig.camera->apply(s);
    EXPECT_EQ(rig.camera->realExposureTime(), 9900u);
}

TEST(V4l2Camera, SpeedsAreTheSizesFrameIntervalsSlowestFirst) {
    Rig rig;
    ASSERT_TRUE(rig.camera->features() & kFeatureSpeed);
    SensorSettings s;
    s.speed = 0;
    rig.camera->apply(s);
    ASSERT_TRUE(rig.start(640, 480));
    EXPECT_EQ(rig.camera->maxSpeed(), 2); // 10, 15 and 30 fps
    EXPECT_EQ(rig.system->state(kNode).interval, (FakeInterval{1, 10}));

    const FakeInterval expected[] = {{1, 10}, {1, 15}, {1, 30}, {1, 30}};
    for (int speed = 0; speed < 4; ++speed) {
        s.speed = speed;
        rig.camera->apply(s); // while streaming: the stream restarts at the new interval
        EXPECT_EQ(rig.system->state(kNode).interval, expected[speed]) << speed;
        SourceFrame f;
        EXPECT_EQ(rig.read(f), ReadStatus::Frame) << speed;
    }
    ASSERT_TRUE(rig.start(1920, 1080));
    EXPECT_EQ(rig.camera->maxSpeed(), 1);
    EXPECT_EQ(rig.system->state(kNode).interval, (FakeInterval{1, 30}));
}

TEST(V4l2Camera, LeavesMissingControlsToSoftware) {
    Rig rig(webcamWith([](FakeNode& n) {
        std::erase_if(n.controls, [](const FakeControl& c) {
            return c.id != V4L2_CID_BRIGHTNESS && c.id != V4L2_CID_EXPOSURE_AUTO &&
                   c.id != V4L2_CID_SHARPNESS;
        });
    }));
    EXPECT_EQ(rig.camera->features(),
              std::uint32_t{kFeatureBrightness | kFeatureNativeAutoExposure | kFeatureSpeed});
    EXPECT_EQ(rig.camera->exposureRange().max, 0u);
    EXPECT_EQ(rig.camera->gainRange().max, 0);

    SensorSettings s;
    s.nativeAutoExposure = true;
    s.exposureUs = 20000;
    rig.camera->apply(s);
    EXPECT_EQ(rig.system->controlValue(kNode, V4L2_CID_EXPOSURE_AUTO),
              V4L2_EXPOSURE_APERTURE_PRIORITY);
    EXPECT_EQ(rig.camera->realExposureTime(), 20000u);
    s.nativeAutoExposure = false;
    rig.camera->apply(s);
    EXPECT_EQ(rig.system->controlValue(kNode, V4L2_CID_EXPOSURE_AUTO), V4L2_EXPOSURE_MANUAL);
}

TEST(V4l2Camera, OffersTheOtherControlsAsExtras) {
    Rig rig;
    const auto extras = rig.camera->extraControls();
    std::vector<std::string> names;
    for (const ExtraControl& e : extras)
        names.push_back(e.name);
    const std::vector<std::string> expected = {"Sharpness", "Backlight Compensation",
                                               "Exposure, Dynamic Framerate", "Focus, Absolute",
                                               "Focus, Automatic Continuous"};
    EXPECT_EQ(names, expected);
    EXPECT_EQ(extras[3].kind, ExtraControl::Integer);
    EXPECT_EQ(extras[3].max, 1023);
    EXPECT_EQ(extras[4].kind, ExtraControl::Boolean);
    EXPECT_EQ(extras[4].value, 1);

    EXPECT_TRUE(rig.camera->setExtraControl(V4L2_CID_SHARPNESS, 5));
    EXPECT_EQ(rig.system->controlValue(kNode, V4L2_CID_SHARPNESS), 5);
    EXPECT_FALSE(rig.camera->setExtraControl(V4L2_CID_SHARPNESS, 7)) << "out of range";
    EXPECT_FALSE(rig.camera->setExtraControl(V4L2_CID_BRIGHTNESS, 1)) << "mapped, not extra";
    EXPECT_EQ(rig.system->controlValue(kNode, V4L2_CID_SHARPNESS), 5);
}

TEST(V4l2Camera, UnplugWakesTheReaderAndTheCameraStaysLost) {
    Rig rig;
    ASSERT_TRUE(rig.camera->start(0));
    std::atomic<int> frames{0};
    std::thread reader([&] {
        SourceFrame f;
        for (ReadStatus s; (s = rig.camera->read(f, 5000)) != ReadStatus::Lost;)
            frames += s == ReadStatus::Frame;
    });
    // Unplug mid-stream: after the first frame, however slow the build.
    for (int i = 0; i < 500 && frames == 0; ++i)
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    const auto unplugged = std::chrono::steady_clock::now();
    rig.system->unplug(kNode);
    reader.join();
    EXPECT_LT(std::chrono::steady_clock::now() - unplugged, std::chrono::seconds(2));
    EXPECT_GT(frames, 0);
    EXPECT_EQ(rig.camera->lastError(), "The camera was disconnected.");
    SourceFrame f;
    EXPECT_EQ(rig.read(f), ReadStatus::Lost);
    rig.camera->apply(SensorSettings{});
    EXPECT_TRUE(rig.camera->extraControls().empty());
    EXPECT_FALSE(rig.camera->setExtraControl(V4L2_CID_SHARPNESS, 1));
    rig.camera->stop();
    EXPECT_EQ(rig.system->state(kNode).mappedBuffers, 0);
    EXPECT_FALSE(rig.camera->start(0));
    EXPECT_TRUE(rig.provider->list().empty());
    rig.camera.reset();
    EXPECT_EQ(rig.system->state(kNode).openHandles, 0);
}

TEST(V4l2Camera, RestartsAtAnotherSizeAndReleasesEverythingWhenStartFails) {
    Rig rig;
    const auto expectReleased = [&] {
        const FakeStreamState s = rig.system->state(kNode);
        EXPECT_FALSE(s.streaming);
        EXPECT_EQ(s.buffers, 0);
        EXPECT_EQ(s.mappedBuffers, 0);
    };
    ASSERT_TRUE(rig.camera->start(0));
    SourceFrame f;
    ASSERT_EQ(rig.read(f), ReadStatus::Frame);
    rig.camera->stop();
    expectReleased();

    ASSERT_TRUE(rig.camera->start(3));
    EXPECT_EQ(rig.system->state(kNode).buffers, 4);
    ASSERT_EQ(rig.read(f), ReadStatus::Frame);
    EXPECT_EQ(f.width, 640);
    EXPECT_EQ(f.height, 480);

    rig.system->failIoctlOnce(kNode, VIDIOC_STREAMON, ENOSPC);
    EXPECT_FALSE(rig.camera->start(0));
    EXPECT_NE(rig.camera->lastError().find("USB"), std::string::npos);
    expectReleased();
    EXPECT_TRUE(rig.camera->start(0)) << "a refused start is not the end";
}
