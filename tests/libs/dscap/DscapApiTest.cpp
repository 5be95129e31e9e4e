// The capture library driven through its API the way the camera windows drive it.
#include "FakeV4l2System.h"
#include "dscap/ICameraControl.h"
#include "dscap/core/CameraSettings.h"
#include "dscap/core/DemoProvider.h"
#include "dscap/core/Library.h"
#include "dscap/dscap.h"
#include "dscap/v4l2/V4l2Provider.h"

#include <sys/stat.h>
#include <sys/wait.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cmath>
#include <condition_variable>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <functional>
#include <mutex>
#include <string>
#include <thread>
#include <tuple>
#include <unistd.h>
#include <vector>

namespace fs = std::filesystem;
using namespace std::chrono_literals;

namespace {

constexpr unsigned kNotify = 0x465, kRecording = 0x466, kVideoSize = 0x470, kEvent = 0x473;

struct Posted {
    void* window;
    unsigned message;
    std::uintptr_t wParam;
    std::intptr_t lParam;
};

// What the library posted and what its callbacks said, shared with the test thread.
struct Inbox {
    std::mutex mutex;
    std::condition_variable changed;
    std::vector<Posted> posted;
    int histograms = 0;
    double histogramTotal = 0;
    int exposureCalls = 0;
    int notifyCalls = 0;
    int wbTemperature = 0, wbTint = 0;
    bool wbDone = false;
    std::string recordPath;
    std::function<void()> whileAsking; // what happens while the file dialog is open
    int dialogShown = 0;

    int count(unsigned message) {
        std::lock_guard lock(mutex);
        return static_cast<int>(std::count_if(
            posted.begin(), posted.end(), [&](const Posted& p) { return p.message == message; }));
    }
    bool waitUntil(const std::function<bool()>& done, std::chrono::milliseconds timeout = 5s) {
        std::unique_lock lock(mutex);
        return changed.wait_for(lock, timeout, done);
    }
};

Inbox* inbox = nullptr;

void postHook(void* window, unsigned message, std::uintptr_t wParam, std::intptr_t lParam) {
    std::lock_guard lock(inbox->mutex);
    inbox->posted.push_back({window, message, wParam, lParam});
    inbox->changed.notify_all();
}

int recordFileHook(void*, const char*, char* path, std::size_t size) {
    if (inbox->whileAsking)
        inbox->whileAsking();
    std::lock_guard lock(inbox->mutex);
    if (inbox->recordPath.empty() || inbox->recordPath.size() + 1 > size)
        return 0;
    std::memcpy(path, inbox->recordPath.c_str(), inbox->recordPath.size() + 1);
    return 1;
}

int showDialogHook(void*, dscap_handle, int command) {
    std::lock_guard lock(inbox->mutex);
    inbox->dialogShown = command;
    return 1;
}

void onHistogram(const double* b, const double* g, const double* r, const double* y, void* ctx) {
    auto* box = static_cast<Inbox*>(ctx);
    std::lock_guard lock(box->mutex);
    ++box->histograms;
    box->histogramTotal = 0;
    for (int i = 0; i < 256; ++i)
        box->histogramTotal += b[i] + g[i] + r[i] + y[i];
    box->changed.notify_all();
}

void onExposure(void* ctx) {
    auto* box = static_cast<Inbox*>(ctx);
    std::lock_guard lock(box->mutex);
    ++box->exposureCalls;
    box->changed.notify_all();
}

void onNotify(void* ctx) {
    auto* box = static_cast<Inbox*>(ctx);
    std::lock_guard lock(box->mutex);
    ++box->notifyCalls;
    box->changed.notify_all();
}

void onWhiteBalance(std::int32_t temperature, std::int32_t tint, void* ctx) {
    auto* box = static_cast<Inbox*>(ctx);
    std::lock_guard lock(box->mutex);
    box->wbTemperature = temperature;
    box->wbTint = tint;
    box->wbDone = true;
    box->changed.notify_all();
}

// A grabbed frame as top-down BGR rows.
struct Frame {
    int width = 0, height = 0;
    std::vector<std::uint8_t> bgr;

    const std::uint8_t* at(int x, int y) const { return &bgr[(std::size_t(y) * width + x) * 3]; }
    // Mean of one channel (0 B, 1 G, 2 R) over a rectangle.
    double mean(int channel, int left, int top, int right, int bottom) const {
        double sum = 0;
        for (int y = top; y < bottom; ++y)
            for (int x = left; x < right; ++x)
                sum += at(x, y)[channel];
        return sum / (double(right - left) * (bottom - top));
    }
};

std::string runCommand(const std::string& command) {
    std::string out;
    if (FILE* p = popen(command.c_str(), "r")) {
        char buffer[256];
        while (std::fgets(buffer, sizeof buffer, p))
            out += buffer;
        pclose(p);
    }
    return out;
}

// What ffprobe says of a recorded file's video stream, `entries` plus the decoded frames.
std::string probe(const fs::path& file, const std::string& entries = "") {
    return runCommand("ffprobe -v error -count_frames -select_streams v:0 -show_entries stream=" +
                      entries + "nb_read_frames -of default=nw=1 '" + file.string() + "'");
}

int framesIn(const std::string& probed) {
    const auto at = probed.find("nb_read_frames=");
    return at == std::string::npos ? -1 : std::stoi(probed.substr(at + 15));
}

class DscapApiTest : public ::testing::Test {
protected:
    void SetUp() override {
        inbox = &box;
        dir = fs::temp_directory_path() /
              ("dscap-api-" + std::to_string(::getpid()) + "-" +
               ::testing::UnitTest::GetInstance()->current_test_info()->name());
        fs::remove_all(dir);
        fs::create_directories(dir);
        const dscap_messages messages{kNotify, kVideoSize, kRecording, 32830, kEvent};
        dscap_init(dir.c_str(), "Vornalt", "Lanmira", "orbicam.dll", "orbinam.dll", &messages);
        const dscap_hooks hooks{postHook, recordFileHook, showDialogHook};
        dscap_set_hooks(&hooks);
        std::vector<std::unique_ptr<dscap::CameraProvider>> providers;
        providers.push_back(
            std::make_unique<dscap::DemoProvider>(dscap::DemoOptions{true, false, 7}, true));
        dscap::Library::instance().setProviders(std::move(providers));
    }
    void TearDown() override {
        if (handle)
            dscap_stop(handle);
        dscap::Library::instance().waitForBackgroundWork(); // it writes into dir
        dscap::Library::instance().setProviders({});
        fs::remove_all(dir);
        inbox = nullptr;
    }

    // Opens and starts a camera (the demo unless told) and waits for its first frame.
    ICameraControl* openCamera(const char* id = dscap::DemoProvider::kColourId) {
        dscap_dsvi record{const_cast<char*>(id), const_cast<char*>("demo"), 0};
        handle = dscap_device(&frameWindow, &viewWindow, &record);
        EXPECT_NE(handle, nullptr);
        EXPECT_EQ(dscap_start(handle, 0, 0, 0, 0, 0), 1);
        // The demo camera's slide is painted first: seconds in a sanitizer build.
        EXPECT_TRUE(box.waitUntil([&] { return countLocked(kNotify) > 0; }, 30s));
        return dscap_get_interface(handle, 0);
    }
    int countLocked(unsigned message) {
        return static_cast<int>(
            std::count_if(box.posted.begin(), box.posted.end(),
                          [&](const Posted& p) { return p.message == message; }));
    }
    // Most checks need no full-size picture; the smallest keeps sanitizer runs quick.
    void useSmallPicture() {
        ASSERT_EQ(dscap_set_esize(handle, 2, 0), 1);
        ASSERT_TRUE(box.waitUntil([&] {
            return std::any_of(box.posted.begin(), box.posted.end(), [](const Posted& p) {
                return p.message == kVideoSize && p.wParam == 648;
            });
        }));
    }
    // Lets n more frames through, the way the view's repaint re-arms the notify message.
    void waitFrames(int n) {
        for (int i = 0; i < n; ++i) {
            const int before = box.count(kNotify);
            dscap_notify(handle, 0, 0);
            ASSERT_TRUE(box.waitUntil([&] { return countLocked(kNotify) > before; }, 5s));
        }
    }
    Frame grab() {
        Frame f;
        int w = 0, h = 0;
        if (!dscap_video_size(handle, &w, &h))
            return f;
        const std::size_t stride = ((std::size_t(w) * 24 + 31) / 32) * 4;
        std::vector<std::uint8_t> dib(stride * h + 40);
        if (!dscap_grabber(handle, dib.data(), 0, 0, 0, 0, 0))
            return f;
        f.width = w;
        f.height = h;
        f.bgr.resize(std::size_t(w) * h * 3);
        for (int y = 0; y < h; ++y)
            std::memcpy(&f.bgr[std::size_t(y) * w * 3], &dib[40 + stride * (h - 1 - y)],
                        std::size_t(w) * 3);
        return f;
    }
    // The brightest flat block of the picture: bare slide, the white area a user picks.
    static dscap::Region whiteArea(const Frame& f, int size) {
        dscap::Region best{};
        double bestScore = -1;
        for (int y = 0; y + size <= f.height; y += size / 2)
            for (int x = 0; x + size <= f.width; x += size / 2) {
                const double g = f.mean(1, x, y, x + size, y + size);
                if (g > bestScore) {
                    bestScore = g;
                    best = {x, y, x + size, y + size};
                }
            }
        return best;
    }

    Inbox box;
    fs::path dir;
    dscap_handle handle = nullptr;
    int frameWindow = 0, viewWindow = 0;
};

TEST_F(DscapApiTest, ListsTheDemoCamerasAndRefusesBadHandles) {
    dscap_dsvi* list = dscap_enum_device(0);
    ASSERT_NE(list, nullptr);
    EXPECT_STREQ(list[0].id, "demo:colour");
    EXPECT_STREQ(list[1].id, "demo:mono");
    EXPECT_EQ(list[2].id, nullptr);
    dscap_free_dsvi(list);

    dscap_dsvi unknown{const_cast<char*>("v4l2:nothing"), const_cast<char*>("x"), 0};
    EXPECT_EQ(dscap_device(nullptr, nullptr, &unknown), nullptr);
    EXPECT_EQ(dscap_device(nullptr, nullptr, nullptr), nullptr);

    // Null, never-issued and stopped handles all fail without harm.
    ICameraControl* control = openCamera();
    ASSERT_NE(control, nullptr);
    const dscap_handle stale = handle;
    EXPECT_EQ(dscap_stop(handle), 1);
    handle = nullptr;
    for (dscap_handle h : {dscap_handle(nullptr), reinterpret_cast<dscap_handle>(0xdead), stale}) {
        int w = 0, hh = 0;
        std::uint8_t dib[64];
        EXPECT_EQ(dscap_start(h, 0, 0, 0, 0, 0), 0);
        EXPECT_EQ(dscap_fPreviewing(h), 0);
        EXPECT_EQ(dscap_video_size(h, &w, &hh), 0);
        EXPECT_EQ(dscap_grabber(h, dib, 0, 0, 0, 0, 0), 0);
        EXPECT_EQ(dscap_start_capture(h), 0);
        EXPECT_EQ(dscap_set_esize(h, 1, 0), 0);
        EXPECT_EQ(dscap_set_control(h, 1, 1), 0);
        EXPECT_EQ(dscap_get_interface(h, 0), nullptr);
        EXPECT_EQ(dscap_stop(h), 0);
    }
    std::uint32_t t = 0;
    EXPECT_EQ(control->GetExposureTime(&t), ICameraControl::kNotAvailable);
    EXPECT_EQ(control->SetHue(10), ICameraControl::kNotAvailable);
    // The slots that return a value return a negative status, never a colour or a count.
    EXPECT_LT(control->IsColour(), 0);
    EXPECT_LT(control->GetMaxSpeed(), 0);
    EXPECT_LT(control->GetResolutionCount(), 0);
}

TEST_F(DscapApiTest, StartsOnceAndGrabsOnlyWhenAFrameExists) {
    dscap_dsvi record{const_cast<char*>("demo:colour"), const_cast<char*>("demo"), 0};
    handle = dscap_device(&frameWindow, &viewWindow, &record);
    ASSERT_NE(handle, nullptr);
    EXPECT_EQ(dscap_fSource(handle), 1);
    EXPECT_EQ(dscap_fPreviewing(handle), 0);
    EXPECT_EQ(dscap_can_grabber(handle), 0);
    EXPECT_EQ(dscap_start(handle, 0, 0, 0, 0, 0), 1);
    EXPECT_EQ(dscap_start(handle, 0, 0, 0, 0, 0), 0);
    EXPECT_EQ(dscap_fPreviewing(handle), 1);
    ASSERT_TRUE(box.waitUntil([&] { return countLocked(kVideoSize) > 0; }, 30s));
    {
        std::lock_guard lock(box.mutex);
        const auto it = std::find_if(box.posted.begin(), box.posted.end(),
                                     [](const Posted& p) { return p.message == kVideoSize; });
        EXPECT_EQ(it->window, &viewWindow);
        EXPECT_EQ(it->wParam, 2592u);
        EXPECT_EQ(it->lParam, 1944);
    }
    EXPECT_EQ(dscap_can_grabber(handle), 1);
    const Frame f = grab();
    EXPECT_EQ(f.width, 2592);
    EXPECT_EQ(f.height, 1944);
    EXPECT_EQ(dscap_draw(
                  handle,
                  [](void* ctx, const dscap_image* image) {
                      *static_cast<int*>(ctx) = image->width * 10000 + image->height;
                  },
                  &frameWindow),
              1);
    EXPECT_EQ(frameWindow, 2592 * 10000 + 1944);
    std::this_thread::sleep_for(1100ms);
    double camera = 0, shown = 0;
    ASSERT_EQ(dscap_get_property(handle, &camera, &shown), 1);
    EXPECT_GT(camera, 0.0);
    EXPECT_LE(camera, 16.0) << "15 frames a second at most at full size";
}

// The sizes themselves are checked where frames are grabbed; here the edges of each range.
TEST_F(DscapApiTest, DemoRangesRefuseWhatLiesOutside) {
    ICameraControl* c = openCamera();
    ASSERT_NE(c, nullptr);
    std::uint32_t tmin = 0, tmax = 0, tdef = 0;
    ASSERT_EQ(c->GetExposureTimeRange(&tmin, &tmax, &tdef), 0);
    EXPECT_EQ(std::tuple(tmin, tmax, tdef), std::tuple(100u, 2000000u, 30000u));
    ASSERT_EQ(c->GetResolutionCount(), 3);
    std::int32_t w = 0, h = 0, v = -1;
    EXPECT_LT(c->GetResolution(3, &w, &h), 0);
    std::uint16_t low[4], high[4];
    ASSERT_EQ(c->GetLevelRange(low, high), 0);
    EXPECT_EQ(std::tuple(low[1], high[1]), std::tuple(0, 255));
    EXPECT_EQ(c->SetCameraOption(0), 0);
    EXPECT_LT(c->Reserved0(), 0);

    // Out of range: refused, the value stays.
    EXPECT_LT(c->SetHue(181), 0);
    EXPECT_LT(c->SetGamma(19), 0);
    EXPECT_LT(c->SetExposureTime(50), 0);
    EXPECT_LT(c->SetExposureGain(501), 0);
    EXPECT_LT(c->SetSpeed(3), 0);
    EXPECT_LT(c->SetLightSource(3), 0);
    EXPECT_LT(c->SetTempTint(1999, 1000), 0);
    EXPECT_LT(c->SetWhiteBalanceRegion(100, 100, 50, 200), 0);
    EXPECT_LT(c->GetHue(nullptr), 0);
    EXPECT_EQ((c->GetHue(&v), v), 0);
}

TEST_F(DscapApiTest, ExposureTimeAndGainScaleTheLevel) {
    ICameraControl* c = openCamera();
    useSmallPicture();
    ASSERT_EQ(c->SetAutoExposure(0), 0);
    ASSERT_EQ(c->SetLightSource(2), 0); // no mains snapping: the times are as asked
    auto level = [&](std::uint32_t time, std::uint16_t gain) {
        EXPECT_EQ(c->SetExposureTime(time), 0);
        EXPECT_EQ(c->SetExposureGain(gain), 0);
        waitFrames(3);
        const Frame f = grab();
        return f.mean(1, 0, 0, f.width, f.height);
    };
    const double base = level(6000, 100);
    EXPECT_NEAR(level(12000, 100) / base, 2.0, 0.2);
    EXPECT_NEAR(level(6000, 200) / base, 2.0, 0.2);
    std::uint32_t real = 0;
    ASSERT_EQ(c->GetRealExposureTime(&real), 0);
    EXPECT_EQ(real, 6000u);
}

TEST_F(DscapApiTest, OnePushWhiteBalanceMakesAWhiteAreaNeutral) {
    ICameraControl* c = openCamera();
    useSmallPicture();
    ASSERT_EQ(c->SetAutoExposure(0), 0);
    ASSERT_EQ(c->SetExposureTime(20000), 0);
    waitFrames(3);
    Frame before = grab();
    const dscap::Region white = whiteArea(before, 24);
    const double b0 = before.mean(0, white.left, white.top, white.right, white.bottom);
    const double r0 = before.mean(2, white.left, white.top, white.right, white.bottom);
    EXPECT_GT(r0, 1.3 * b0) << "the lamp makes the raw picture warm";
    ASSERT_EQ(c->SetWhiteBalanceRegion(white.left, white.top, white.right, white.bottom), 0);
    ASSERT_EQ(c->WhiteBalanceOnce(onWhiteBalance, &box), 0);
    ASSERT_TRUE(box.waitUntil([&] { return box.wbDone; }));
    EXPECT_NEAR(box.wbTemperature, 3200, 400);
    EXPECT_NEAR(box.wbTint, 1000, 150);
    std::int32_t temperature = 0, tint = 0;
    ASSERT_EQ(c->GetTempTint(&temperature, &tint), 0);
    EXPECT_EQ(temperature, box.wbTemperature);
    waitFrames(3);
    const Frame after = grab();
    const double b = after.mean(0, white.left, white.top, white.right, white.bottom);
    const double g = after.mean(1, white.left, white.top, white.right, white.bottom);
    const double r = after.mean(2, white.left, white.top, white.right, white.bottom);
    EXPECT_NEAR(b / g, 1.0, 0.04);
    EXPECT_NEAR(r / g, 1.0, 0.04);
}

TEST_F(DscapApiTest, AutoExposureReachesTheTargetAndSaysSo) {
    ICameraControl* c = openCamera();
    useSmallPicture();
    ASSERT_EQ(c->SetExposureCallback(onExposure, &box), 0);
    ASSERT_EQ(c->SetAutoExposure(0), 0);
    ASSERT_EQ(c->SetExposureTime(2000), 0); // far too dark
    waitFrames(2);
    ASSERT_EQ(c->SetAutoExposureRegion(200, 150, 450, 350), 0);
    ASSERT_EQ(c->SetAutoExposureTarget(120), 0);
    ASSERT_EQ(c->SetAutoExposure(1), 0);
    EXPECT_TRUE(box.waitUntil([&] { return box.exposureCalls > 0; }));
    std::this_thread::sleep_for(2500ms);
    waitFrames(2);
    const Frame f = grab();
    const double luma = 0.114 * f.mean(0, 200, 150, 450, 350) +
                        0.587 * f.mean(1, 200, 150, 450, 350) +
                        0.299 * f.mean(2, 200, 150, 450, 350);
    EXPECT_NEAR(luma, 120, 14);
    std::uint32_t time = 0, real = 0;
    ASSERT_EQ(c->GetExposureTime(&time), 0);
    ASSERT_EQ(c->GetRealExposureTime(&real), 0);
    EXPECT_GT(time, 2000u);
    if (real >= 10000) {
        EXPECT_EQ(real % 10000, 0u) << "auto exposure keeps to whole mains half periods";
    }
    ASSERT_EQ(c->SetExposureCallback(nullptr, nullptr), 0);
}

TEST_F(DscapApiTest, HistogramArrivesSteadilyAndSetsAutoLevels) {
    ICameraControl* c = openCamera();
    useSmallPicture();
    ASSERT_EQ(c->SetHistogramCallback(onHistogram, &box), 0);
    std::this_thread::sleep_for(1000ms);
    ASSERT_EQ(c->SetHistogramCallback(nullptr, nullptr), 0);
    int calls = 0;
    {
        std::lock_guard lock(box.mutex);
        calls = box.histograms;
        EXPECT_GT(box.histogramTotal, 0);
    }
    EXPECT_GE(calls, 5);
    EXPECT_LE(calls, 12);
    std::this_thread::sleep_for(200ms);
    {
        std::lock_guard lock(box.mutex);
        EXPECT_EQ(box.histograms, calls) << "no calls after removal";
    }
    ASSERT_EQ(c->AutoLevelRange(), 0);
    std::uint16_t low[4], high[4];
    ASSERT_EQ(c->GetLevelRange(low, high), 0);
    EXPECT_GT(low[1], 0);
    EXPECT_LT(low[1], high[1]);
}

TEST_F(DscapApiTest, ControlsChangeTheGrabbedPicture) {
    ICameraControl* c = openCamera();
    useSmallPicture();
    ASSERT_EQ(c->SetAutoExposure(0), 0);
    ASSERT_EQ(c->SetExposureTime(20000), 0);
    waitFrames(3);
    const Frame plain = grab();
    const int w = plain.width, h = plain.height;
    auto after = [&](const std::function<void()>& set, const std::function<void()>& reset) {
        set();
        waitFrames(3);
        Frame f = grab();
        reset();
        return f;
    };
    // Grey output.
    const Frame grey = after([&] { c->SetMonochrome(1); }, [&] { c->SetMonochrome(0); });
    for (int i = 0; i < 50; ++i) {
        const std::uint8_t* p = grey.at((i * 53) % w, (i * 37) % h);
        EXPECT_EQ(p[0], p[1]);
        EXPECT_EQ(p[1], p[2]);
    }
    // A horizontal flip mirrors the picture: compare column means, which noise hardly moves.
    const Frame mirrored =
        after([&] { c->SetHorizontalFlip(1); }, [&] { c->SetHorizontalFlip(0); });
    double diffMirror = 0, diffSame = 0;
    for (int x = 0; x < w; x += 16) {
        const double m = plain.mean(1, x, 0, x + 1, h);
        diffMirror += std::abs(m - mirrored.mean(1, w - 1 - x, 0, w - x, h));
        diffSame += std::abs(m - mirrored.mean(1, x, 0, x + 1, h));
    }
    EXPECT_LT(diffMirror * 3, diffSame);
    // Brightness, gamma and saturation move the levels the way their names say.
    const double mean0 = plain.mean(1, 0, 0, w, h);
    const Frame bright = after([&] { c->SetBrightness(64); }, [&] { c->SetBrightness(0); });
    EXPECT_GT(bright.mean(1, 0, 0, w, h), mean0 + 20);
    const Frame lifted = after([&] { c->SetGamma(180); }, [&] { c->SetGamma(100); });
    EXPECT_GT(lifted.mean(1, 0, 0, w, h), mean0 + 10);
    const Frame pale = after([&] { c->SetSaturation(0); }, [&] { c->SetSaturation(128); });
    EXPECT_NEAR(pale.mean(0, 0, 0, w, h), pale.mean(2, 0, 0, w, h), 3.0);
}

TEST_F(DscapApiTest, ResolutionSwitchTellsTheViewAndTheListeners) {
    ICameraControl* c = openCamera();
    ASSERT_EQ(c->SetNotifyCallback(onNotify, &box), 0);
    ASSERT_EQ(dscap_set_esize(handle, 1, 0), 1);
    std::int32_t index = 0;
    EXPECT_EQ((c->GetResolutionIndex(&index), index), 1);
    ASSERT_TRUE(box.waitUntil([&] {
        return std::any_of(box.posted.begin(), box.posted.end(), [](const Posted& p) {
            return p.message == kVideoSize && p.wParam == 1296 && p.lParam == 972;
        });
    }));
    EXPECT_TRUE(box.waitUntil([&] { return box.notifyCalls > 0; }));
    waitFrames(1);
    const Frame f = grab();
    EXPECT_EQ(f.width, 1296);
    EXPECT_EQ(f.height, 972);
    int count = 0;
    dscap_capability* table = dscap_get_capability(handle, &count);
    ASSERT_EQ(count, 3);
    EXPECT_EQ(table[2].width, 648);
    dscap_free_capability(table);
}

TEST_F(DscapApiTest, RecordsAPlayableFile) {
    openCamera();
    useSmallPicture();
    waitFrames(2);
    // Cancelled in the file dialog: nothing starts.
    EXPECT_EQ(dscap_start_capture(handle), 0);
    const fs::path file = dir / "clip.mp4";
    box.recordPath = file.string();
    ASSERT_EQ(dscap_start_capture(handle), 1);
    EXPECT_EQ(dscap_fCapturing(handle), 1);
    EXPECT_EQ(dscap_set_esize(handle, 1, 0), 0) << "no size change while recording";
    std::this_thread::sleep_for(2000ms);
    ASSERT_EQ(dscap_stop_capture(handle), 1);
    EXPECT_EQ(dscap_fCapturing(handle), 0) << "not recording once stop returns";
    EXPECT_EQ(dscap_stop_capture(handle), 0);
    // The file is finished in the background; "stopped" comes when it is complete.
    ASSERT_TRUE(box.waitUntil([&] { return countLocked(kRecording) == 2; }));
    const std::string probed = probe(file, "codec_name,width,");
    EXPECT_NE(probed.find("codec_name=h264"), std::string::npos) << probed;
    EXPECT_NE(probed.find("width=648"), std::string::npos) << probed;
    EXPECT_GE(framesIn(probed), 10) << probed;
}

TEST_F(DscapApiTest, CameraSettingsComeBackWhenItOpensAgain) {
    ICameraControl* c = openCamera();
    ASSERT_EQ(c->SetAutoExposure(0), 0);
    ASSERT_EQ(c->SetExposureGain(321), 0);
    ASSERT_EQ(c->SetHue(-45), 0);
    ASSERT_EQ(c->SetVerticalFlip(1), 0);
    ASSERT_EQ(c->SetLightSource(0), 0);
    ASSERT_EQ(dscap_set_esize(handle, 2, 0), 1);
    ASSERT_EQ(dscap_stop(handle), 1);
    handle = nullptr;

    c = openCamera();
    std::int32_t v = 0;
    std::uint16_t gain = 0;
    EXPECT_EQ((c->GetAutoExposure(&v), v), 0);
    EXPECT_EQ((c->GetExposureGain(&gain), gain), 321);
    EXPECT_EQ((c->GetHue(&v), v), -45);
    EXPECT_EQ((c->GetVerticalFlip(&v), v), 1);
    EXPECT_EQ((c->GetLightSource(&v), v), 0);
    EXPECT_EQ((c->GetResolutionIndex(&v), v), 2);
    // Another camera keeps its own values.
    dscap_stop(handle);
    c = openCamera(dscap::DemoProvider::kMonochromeId);
    EXPECT_EQ((c->GetHue(&v), v), 0);
    EXPECT_EQ(c->IsColour(), 0);
    EXPECT_EQ((c->GetMonochrome(&v), v), 1);
    EXPECT_LT(c->SetMonochrome(0), 0);
    std::int32_t t = 0, tint = 0;
    EXPECT_LT(c->GetTempTint(&t, &tint), 0);
    EXPECT_LT(c->WhiteBalanceOnce(onWhiteBalance, &box), 0);
}

// The program ends as soon as the camera window closes: the settings the camera is
// released with in the background must still reach the disk, whole.
TEST_F(DscapApiTest, SettingsOfACameraClosedJustBeforeExitAreKept) {
    const pid_t child = ::fork();
    ASSERT_NE(child, -1);
    if (child == 0) {
        ICameraControl* c = openCamera();
        const bool set = c && c->SetHue(-45) == 0 && dscap_stop(handle) == 1;
        std::exit(set ? 0 : 2); // static destructors run, as at the end of the program
    }
    int status = 0;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    ASSERT_TRUE(WIFEXITED(status));
    ASSERT_EQ(WEXITSTATUS(status), 0);
    for (const auto& entry : fs::recursive_directory_iterator(dir))
        EXPECT_EQ(entry.path().filename().string().rfind(".dscap", 0), std::string::npos)
            << entry.path();
    ICameraControl* c = openCamera();
    std::int32_t hue = 0;
    EXPECT_EQ((c->GetHue(&hue), hue), -45);
}

// A USB camera through the same calls: listed first, its own controls used, its frames
// decoded, and pulled out while recording.
TEST_F(DscapApiTest, V4l2CameraPreviewsAndSurvivesUnplugWhileRecording) {
    using dscap::v4l2::FakeV4l2System;
    const std::string node = "/dev/video3";
    auto system = std::make_shared<FakeV4l2System>();
    system->addNode(FakeV4l2System::webcam(node, "usb-Acme_Scope_42-video-index0", "Acme Scope"));
    std::vector<std::uint8_t> picture(std::size_t(1920) * 1080 * 3);
    for (std::size_t i = 0; i < picture.size(); i += 3) {
        picture[i] = 40;
        picture[i + 1] = 120;
        picture[i + 2] = 200;
    }
    system->setFrames(node, V4L2_PIX_FMT_MJPEG, 1920, 1080,
                      {FakeV4l2System::makeMjpeg(picture.data(), 1920, 1080)});
    std::vector<std::unique_ptr<dscap::CameraProvider>> providers;
    providers.push_back(dscap::v4l2::makeV4l2Provider(system));
    providers.push_back(std::make_unique<dscap::DemoProvider>(dscap::DemoOptions{}, false));
    dscap::Library::instance().setProviders(std::move(providers));

    dscap_dsvi* list = dscap_enum_device(0);
    ASSERT_NE(list, nullptr);
    EXPECT_STREQ(list[0].id, "v4l2:usb-Acme_Scope_42-video-index0");
    EXPECT_STREQ(list[0].name, "Acme Scope");
    EXPECT_STREQ(list[1].id, "demo:colour");
    ICameraControl* c = openCamera(list[0].id);
    dscap_free_dsvi(list);
    ASSERT_NE(c, nullptr);

    ASSERT_EQ(c->SetAutoExposure(0), 0);
    system->clearControlWrites(node);
    EXPECT_EQ(c->SetBrightness(32), 0);
    EXPECT_EQ(c->SetExposureTime(20000), 0);
    EXPECT_EQ(c->SetLightSource(0), 0);
    std::uint32_t min = 0, max = 0, def = 0;
    ASSERT_EQ(c->GetExposureTimeRange(&min, &max, &def), 0);
    EXPECT_EQ(min, 100u);
    EXPECT_EQ(max, 500000u);
    std::int32_t mode = 0;
    EXPECT_LT(c->GetSamplingMode(&mode), 0) << "a webcam has no bin or skip";
    waitFrames(3);
    const auto writes = system->controlWrites(node);
    auto wrote = [&](std::uint32_t id, std::int32_t value) {
        return std::find(writes.begin(), writes.end(), dscap::v4l2::FakeControlWrite{id, value}) !=
               writes.end();
    };
    EXPECT_TRUE(wrote(V4L2_CID_BRIGHTNESS, 32));
    EXPECT_TRUE(wrote(V4L2_CID_EXPOSURE_ABSOLUTE, 200));
    EXPECT_TRUE(wrote(V4L2_CID_POWER_LINE_FREQUENCY, 2));

    // What the interface does not cover is on the camera's property dialog.
    ASSERT_EQ(dscap_fDialog(handle, 32830), 1);
    EXPECT_EQ(dscap_fDialog(handle, 32831), 0);
    char name[64] = {};
    ASSERT_EQ(dscap_dialog_name(handle, 32830, name, sizeof name), 1);
    EXPECT_STREQ(name, "Camera Controls");
    int count = 0;
    dscap_control* controls = dscap_get_controls(handle, &count);
    ASSERT_NE(controls, nullptr);
    const dscap_control* sharpness =
        std::find_if(controls, controls + count,
                     [](const dscap_control& k) { return k.id == V4L2_CID_SHARPNESS; });
    ASSERT_NE(sharpness, controls + count);
    EXPECT_EQ(sharpness->max, 6);
    EXPECT_EQ(sharpness->kind, DSCAP_CONTROL_INTEGER);
    dscap_free_controls(controls, count);
    EXPECT_EQ(dscap_set_control(handle, V4L2_CID_SHARPNESS, 5), 1);
    EXPECT_EQ(system->controlValue(node, V4L2_CID_SHARPNESS), 5);
    EXPECT_EQ(dscap_view_property(handle, &frameWindow), 1);
    EXPECT_EQ(box.dialogShown, 32830);

    const Frame f = grab();
    ASSERT_EQ(f.width, 1920);
    ASSERT_EQ(f.height, 1080);
    EXPECT_NEAR(f.at(960, 540)[0], 40, 6);
    EXPECT_NEAR(f.at(960, 540)[1], 120, 6);
    EXPECT_NEAR(f.at(960, 540)[2], 200, 6);

    const fs::path file = dir / "unplugged.mkv";
    box.recordPath = file.string();
    ASSERT_EQ(dscap_start_capture(handle), 1);
    std::this_thread::sleep_for(1500ms);
    system->unplug(node);
    ASSERT_TRUE(box.waitUntil([&] {
        return std::any_of(box.posted.begin(), box.posted.end(), [&](const Posted& p) {
            return p.message == kEvent && p.wParam == DSCAP_EVENT_DEVICE_LOST &&
                   p.window == &frameWindow;
        });
    }));
    EXPECT_EQ(box.count(kRecording), 2) << "recording started, then stopped by the unplug";
    EXPECT_EQ(dscap_fPreviewing(handle), 0);
    EXPECT_EQ(dscap_fCapturing(handle), 0);
    EXPECT_EQ(c->SetBrightness(0), ICameraControl::kNotAvailable);
    EXPECT_GE(framesIn(probe(file)), 10);
    EXPECT_EQ(dscap_stop(handle), 1);
    handle = nullptr;
}

TEST_F(DscapApiTest, AskingForSizeOrGrabbingDoesNotHideFramesFromTheShownRate) {
    openCamera();
    useSmallPicture();
    // The window's command states ask for the size and whether a grab is possible on every
    // repaint, before drawing.
    const auto t0 = std::chrono::steady_clock::now();
    int drawn = 0;
    while (std::chrono::steady_clock::now() - t0 < 1500ms) {
        const int before = box.count(kNotify);
        dscap_notify(handle, 0, 0);
        ASSERT_TRUE(box.waitUntil([&] { return countLocked(kNotify) > before; }));
        for (int i = 0; i < 5; ++i) {
            int w = 0, h = 0;
            EXPECT_EQ(dscap_can_grabber(handle), 1);
            EXPECT_EQ(dscap_video_size(handle, &w, &h), 1);
        }
        drawn += dscap_draw(
            handle, [](void*, const dscap_image*) {}, nullptr);
    }
    EXPECT_GT(drawn, 0);
    double camera = 0, shown = 0;
    ASSERT_EQ(dscap_get_property(handle, &camera, &shown), 1);
    ASSERT_GT(camera, 2.0); // far fewer than the 60 a second under a sanitizer
    EXPECT_GE(shown, camera * 0.8) << "camera " << camera;
}

TEST_F(DscapApiTest, RecordingIsRefusedWhenTheCameraStopsWhileTheFileIsChosen) {
    openCamera();
    useSmallPicture();
    waitFrames(1);
    // The user's own file, chosen to be overwritten, must survive the refusal.
    const fs::path file = dir / "keep.mp4";
    { std::ofstream(file) << "precious"; }
    box.recordPath = file.string();
    ICameraControl* control = dscap_get_interface(handle, 0);
    box.whileAsking = [&] {
        dscap_stop(handle);
        handle = nullptr;
    };
    const dscap_handle asked = handle;
    EXPECT_EQ(dscap_start_capture(asked), 0);
    EXPECT_EQ(dscap_fCapturing(asked), 0);
    EXPECT_EQ(box.count(kRecording), 0);
    EXPECT_EQ(fs::file_size(file), 8u);
    EXPECT_LT(control->IsColour(), 0);
}

TEST_F(DscapApiTest, RecordingIsRefusedWhenTheCameraIsPulledWhileTheFileIsChosen) {
    using dscap::v4l2::FakeV4l2System;
    const std::string node = "/dev/video5";
    auto system = std::make_shared<FakeV4l2System>();
    system->addNode(FakeV4l2System::webcam(node, "usb-Acme_Scope_7-video-index0", "Acme"));
    std::vector<std::uint8_t> picture(std::size_t(640) * 480 * 3, 128);
    system->setFrames(node, V4L2_PIX_FMT_MJPEG, 640, 480,
                      {FakeV4l2System::makeMjpeg(picture.data(), 640, 480)});
    std::vector<std::unique_ptr<dscap::CameraProvider>> providers;
    providers.push_back(dscap::v4l2::makeV4l2Provider(system));
    dscap::Library::instance().setProviders(std::move(providers));
    openCamera("v4l2:usb-Acme_Scope_7-video-index0");
    waitFrames(1);

    const fs::path file = dir / "never.mkv";
    box.recordPath = file.string();
    box.whileAsking = [&] {
        system->unplug(node);
        box.waitUntil([&] {
            return std::any_of(box.posted.begin(), box.posted.end(), [](const Posted& p) {
                return p.message == kEvent && p.wParam == DSCAP_EVENT_DEVICE_LOST;
            });
        });
    };
    EXPECT_EQ(dscap_start_capture(handle), 0);
    EXPECT_EQ(dscap_fCapturing(handle), 0);
    EXPECT_EQ(dscap_fSource(handle), 0);
    EXPECT_EQ(box.count(kRecording), 0);
    EXPECT_FALSE(fs::exists(file));
    char text[256] = {};
    EXPECT_EQ(dscap_last_error(handle, text, sizeof text), 1);
}

TEST_F(DscapApiTest, StoppingARecordingReturnsAtOnceAndTheFileCompletesBehind) {
    openCamera();
    useSmallPicture();
    waitFrames(2);
    const fs::path first = dir / "first.mp4", second = dir / "second.mkv";
    box.recordPath = first.string();
    ASSERT_EQ(dscap_start_capture(handle), 1);
    std::this_thread::sleep_for(700ms);
    ASSERT_EQ(dscap_stop_capture(handle), 1);
    EXPECT_EQ(dscap_fCapturing(handle), 0);
    EXPECT_EQ(dscap_fPreviewing(handle), 1);
    // Recording again at once is allowed; it waits for the first file, so both are whole.
    box.recordPath = second.string();
    ASSERT_EQ(dscap_start_capture(handle), 1);
    std::this_thread::sleep_for(700ms);
    // Closing the camera while recording hands the file over too.
    ASSERT_EQ(dscap_stop(handle), 1);
    handle = nullptr;
    ASSERT_TRUE(box.waitUntil([&] { return countLocked(kRecording) == 4; }));
    {
        std::lock_guard lock(box.mutex);
        std::vector<std::uintptr_t> order;
        for (const Posted& p : box.posted)
            if (p.message == kRecording)
                order.push_back(p.wParam);
        EXPECT_EQ(order, (std::vector<std::uintptr_t>{1, 0, 1, 0}));
    }
    for (const fs::path& file : {first, second})
        EXPECT_GE(framesIn(probe(file)), 2) << file;
}

TEST_F(DscapApiTest, RealExposureIsKnownAsSoonAsTheTimeIsSet) {
    ICameraControl* c = openCamera();
    ASSERT_EQ(c->SetAutoExposure(0), 0);
    ASSERT_EQ(c->SetLightSource(1), 0); // 50 Hz: whole half periods
    for (const std::uint32_t asked : {25000u, 34000u, 3000u}) {
        ASSERT_EQ(c->SetExposureTime(asked), 0);
        std::uint32_t now = 0, later = 0;
        ASSERT_EQ(c->GetRealExposureTime(&now), 0);
        waitFrames(2);
        ASSERT_EQ(c->GetRealExposureTime(&later), 0);
        EXPECT_EQ(now, later) << asked;
        if (asked >= 10000) {
            EXPECT_EQ(now % 10000, 0u) << asked;
        }
    }
}

TEST_F(DscapApiTest, DemoCameraHasItsOwnControlsOnItsPropertyDialog) {
    ICameraControl* c = openCamera();
    useSmallPicture();
    ASSERT_EQ(c->SetAutoExposure(0), 0);
    ASSERT_EQ(c->SetLightSource(2), 0);
    ASSERT_EQ(c->SetExposureTime(15000), 0);
    ASSERT_EQ(dscap_fDialog(handle, 32830), 1);
    EXPECT_EQ(dscap_fDialog(handle, 32831), 0);
    int count = 0;
    dscap_control* controls = dscap_get_controls(handle, &count);
    ASSERT_NE(controls, nullptr);
    auto named = [&](const char* name) -> const dscap_control* {
        const auto* it = std::find_if(controls, controls + count, [&](const dscap_control& k) {
            return std::strcmp(k.name, name) == 0;
        });
        return it == controls + count ? nullptr : it;
    };
    const dscap_control* focus = named("Focus");
    const dscap_control* lamp = named("Lamp intensity");
    const dscap_control* drift = named("Stage drift");
    const dscap_control* filter = named("Lamp filter");
    ASSERT_TRUE(focus && lamp && drift && filter);
    EXPECT_EQ(focus->kind, DSCAP_CONTROL_INTEGER);
    EXPECT_EQ(focus->value, focus->def);
    EXPECT_EQ(drift->kind, DSCAP_CONTROL_BOOLEAN);
    EXPECT_EQ(drift->value, 0) << "this test's demo camera holds still";
    EXPECT_EQ(filter->kind, DSCAP_CONTROL_MENU);
    ASSERT_EQ(filter->menuCount, 3);
    const std::uint32_t focusId = focus->id, lampId = lamp->id, filterId = filter->id;
    const std::int32_t green = filter->menu[2].value;
    const std::int32_t best = focus->def;
    dscap_free_controls(controls, count);

    waitFrames(3);
    const Frame sharp = grab();
    // Detail: the mean step between neighbours along the rows.
    auto detail = [](const Frame& f) {
        double sum = 0;
        for (int y = 0; y < f.height; y += 4)
            for (int x = 1; x < f.width; ++x)
                sum += std::abs(f.at(x, y)[1] - f.at(x - 1, y)[1]);
        return sum;
    };
    auto after = [&](std::uint32_t id, std::int32_t value) {
        EXPECT_EQ(dscap_set_control(handle, id, value), 1);
        waitFrames(3);
        return grab();
    };
    const Frame blurred = after(focusId, best + 40);
    EXPECT_LT(detail(blurred), detail(sharp) * 0.7);
    EXPECT_NEAR(blurred.mean(1, 0, 0, blurred.width, blurred.height),
                sharp.mean(1, 0, 0, sharp.width, sharp.height), 3.0);
    after(focusId, best);

    const Frame dim = after(lampId, 50);
    EXPECT_NEAR(dim.mean(1, 0, 0, dim.width, dim.height) /
                    sharp.mean(1, 0, 0, sharp.width, sharp.height),
                0.5, 0.05);
    after(lampId, 100);

    const Frame greenish = after(filterId, green);
    const int w = greenish.width, h = greenish.height;
    EXPECT_GT(greenish.mean(1, 0, 0, w, h), 3 * greenish.mean(2, 0, 0, w, h));
    EXPECT_GT(greenish.mean(1, 0, 0, w, h), 3 * greenish.mean(0, 0, 0, w, h));

    EXPECT_EQ(dscap_set_control(handle, focusId, 101), 0);
    EXPECT_EQ(dscap_set_control(handle, filterId, 3), 0);
    EXPECT_EQ(dscap_set_control(handle, 999, 0), 0);
    EXPECT_EQ(dscap_view_property(handle, &frameWindow), 1);
    EXPECT_EQ(box.dialogShown, 32830);
}

} // namespace

// A settings file that is there but cannot be read (here a pipe, and a file far too large
// to be settings) belongs to the user: saving a camera's values never replaces it.
TEST(CameraSettingsFile, UnreadableFileIsNeverReplaced) {
    const std::filesystem::path home =
        std::filesystem::temp_directory_path() / ("dscap-settings-" + std::to_string(getpid()));
    std::filesystem::remove_all(home);
    dscap::CameraSettings settings(home, "Vornalt", "Lanmira");
    std::filesystem::create_directories(settings.file().parent_path());
    ASSERT_EQ(mkfifo(settings.file().c_str(), 0600), 0);
    EXPECT_FALSE(settings.save("demo:colour", dscap::ControlValues{}));
    EXPECT_TRUE(std::filesystem::is_fifo(settings.file()));

    std::filesystem::remove(settings.file());
    {
        std::ofstream big(settings.file(), std::ios::binary);
        big << "[mine]\nkept=1\n";
        big.seekp(static_cast<std::streamoff>(65) << 20);
        big << '\n';
    }
    const auto size = std::filesystem::file_size(settings.file());
    EXPECT_FALSE(settings.save("demo:colour", dscap::ControlValues{}));
    EXPECT_EQ(std::filesystem::file_size(settings.file()), size);
    std::filesystem::remove_all(home);
}
