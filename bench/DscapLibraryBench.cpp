// The capture library as the camera window runs it: frames a second and the share of a core
// the whole library uses (capture thread, processing, recorder) while previewing, and how
// long the calls the window makes on its own thread take.
#include "../tests/libs/dscap/FakeV4l2System.h"
#include "dscap/ICameraControl.h"
#include "dscap/core/DemoProvider.h"
#include "dscap/core/Library.h"
#include "dscap/dscap.h"
#include "dscap/v4l2/V4l2Provider.h"

#include <sys/resource.h>

#include <benchmark/benchmark.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <string>
#include <thread>
#include <unistd.h>
#include <vector>

namespace fs = std::filesystem;
using namespace std::chrono_literals;

namespace {

std::atomic<int> framesPosted{0};
std::atomic<int> recordingsStopped{0};
std::string recordPath;

void post(void*, unsigned message, std::uintptr_t wParam, std::intptr_t) {
    if (message == 0x465)
        ++framesPosted;
    if (message == 0x466 && wParam == 0)
        ++recordingsStopped;
}

int recordFile(void*, const char*, char* path, std::size_t size) {
    if (recordPath.size() + 1 > size)
        return 0;
    std::memcpy(path, recordPath.c_str(), recordPath.size() + 1);
    return 1;
}

void histogram(const double*, const double*, const double*, const double*, void*) {}

double cpuSeconds() {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    auto seconds = [](const timeval& t) { return double(t.tv_sec) + double(t.tv_usec) * 1e-6; };
    return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

fs::path scratch() {
    const fs::path dir = fs::temp_directory_path() / ("dscap-bench-" + std::to_string(::getpid()));
    fs::create_directories(dir);
    return dir;
}

void setUp(std::vector<std::unique_ptr<dscap::CameraProvider>> providers) {
    const dscap_messages messages{0x465, 0x470, 0x466, 32830, 0x473};
    dscap_init(scratch().c_str(), "Vornalt", "LanmiraBench", "", "", &messages);
    const dscap_hooks hooks{post, recordFile, nullptr};
    dscap_set_hooks(&hooks);
    dscap::Library::instance().setProviders(std::move(providers));
}

// Every processing stage on, as a user who has touched every panel would have it.
void allProcessing(ICameraControl* c) {
    c->SetAutoExposure(0);
    c->SetExposureTime(20000);
    c->SetTempTint(3200, 1000);
    c->SetHue(10);
    c->SetSaturation(150);
    c->SetContrast(10);
    c->SetBrightness(5);
    c->SetGamma(120);
    const std::uint16_t low[4] = {10, 10, 10, 10}, high[4] = {240, 240, 240, 240};
    c->SetLevelRange(low, high);
    c->SetHorizontalFlip(1);
    c->SetVerticalFlip(1);
    c->SetHistogramCallback(histogram, nullptr);
}

// Runs the preview for a few seconds, re-arming the frame message the way the view does,
// and reports frames a second and cores used.
void measure(benchmark::State& state, dscap_handle h, double targetFps) {
    std::this_thread::sleep_for(700ms); // past the first frames and the stream start
    for (auto _ : state) {
        const int before = framesPosted;
        const double cpu0 = cpuSeconds();
        const auto t0 = std::chrono::steady_clock::now();
        while (std::chrono::steady_clock::now() - t0 < 4s) {
            dscap_notify(h, 0, 0);
            std::this_thread::sleep_for(2ms);
        }
        const double wall =
            std::chrono::duration<double>(std::chrono::steady_clock::now() - t0).count();
        const double frames = framesPosted - before;
        const double cpu = cpuSeconds() - cpu0;
        state.counters["fps"] = frames / wall;
        state.counters["cores"] = cpu / wall;
        state.counters["cpu_ms_per_frame"] = frames > 0 ? 1000.0 * cpu / frames : 0;
        state.counters["target_fps"] = targetFps;
    }
}

void demoPreview(benchmark::State& state) {
    std::vector<std::unique_ptr<dscap::CameraProvider>> providers;
    providers.push_back(std::make_unique<dscap::DemoProvider>(dscap::DemoOptions{}, false));
    setUp(std::move(providers));
    dscap_dsvi camera{const_cast<char*>("demo:colour"), const_cast<char*>("Demo"), 0};
    dscap_handle h = dscap_device(nullptr, nullptr, &camera);
    ICameraControl* c = dscap_get_interface(h, 0);
    c->SetSpeed(2);
    dscap_set_esize(h, static_cast<int>(state.range(0)), 0);
    dscap_start(h, 0, 0, 0, 0, 0);
    allProcessing(c);
    if (state.range(1)) {
        recordPath = (scratch() / "bench.mp4").string();
        std::this_thread::sleep_for(500ms);
        dscap_start_capture(h);
    }
    measure(state, h, state.range(0) == 0 ? 15 : 30);
    dscap_stop_capture(h);
    dscap_stop(h);
    dscap::Library::instance().waitForBackgroundWork();
    fs::remove_all(scratch());
}
// 2592x1944 (15 fps target, one core), 1296x972 (30 fps, half a core), and 1296x972 while
// recording.
BENCHMARK(demoPreview)
    ->Args({0, 0})
    ->Args({1, 0})
    ->Args({1, 1})
    ->Iterations(1)
    ->UseRealTime()
    ->Unit(benchmark::kMillisecond);

void webcamMjpegPreview(benchmark::State& state) {
    using dscap::v4l2::FakeV4l2System;
    auto system = std::make_shared<FakeV4l2System>();
    const std::string node = "/dev/video0";
    system->addNode(FakeV4l2System::webcam(node, "usb-Bench_Cam-video-index0"));
    // A picture with detail, so the decoder does real work.
    std::vector<std::uint8_t> picture(std::size_t(1920) * 1080 * 3);
    for (int y = 0; y < 1080; ++y)
        for (int x = 0; x < 1920; ++x) {
            std::uint8_t* p = &picture[(std::size_t(y) * 1920 + x) * 3];
            p[0] = static_cast<std::uint8_t>(128 + 100 * std::sin(x * 0.02) * std::cos(y * 0.03));
            p[1] = static_cast<std::uint8_t>((x ^ y) & 0xFF);
            p[2] = static_cast<std::uint8_t>(128 + 120 * std::sin((x + y) * 0.011));
        }
    system->setFrames(node, V4L2_PIX_FMT_MJPEG, 1920, 1080,
                      {FakeV4l2System::makeMjpeg(picture.data(), 1920, 1080, 80)});
    std::vector<std::unique_ptr<dscap::CameraProvider>> providers;
    providers.push_back(dscap::v4l2::makeV4l2Provider(system));
    setUp(std::move(providers));
    dscap_dsvi camera{const_cast<char*>("v4l2:usb-Bench_Cam-video-index0"),
                      const_cast<char*>("Cam"), 0};
    dscap_handle h = dscap_device(nullptr, nullptr, &camera);
    ICameraControl* c = dscap_get_interface(h, 0);
    dscap_start(h, 0, 0, 0, 0, 0);
    allProcessing(c);
    measure(state, h, 30);
    dscap_stop(h);
    dscap::Library::instance().waitForBackgroundWork();
    fs::remove_all(scratch());
}
BENCHMARK(webcamMjpegPreview)->Iterations(1)->UseRealTime()->Unit(benchmark::kMillisecond);

// The calls the camera window makes on its own thread, each timed alone; every one should
// stay well under 50 ms so the window never stalls.
using Clock = std::chrono::steady_clock;

double millisecondsSince(Clock::time_point t0) {
    return std::chrono::duration<double, std::milli>(Clock::now() - t0).count();
}

void useDemo() {
    std::vector<std::unique_ptr<dscap::CameraProvider>> providers;
    providers.push_back(std::make_unique<dscap::DemoProvider>(dscap::DemoOptions{}, false));
    setUp(std::move(providers));
}

dscap_handle openDemo() {
    dscap_dsvi camera{const_cast<char*>("demo:colour"), const_cast<char*>("Demo"), 0};
    return dscap_device(nullptr, nullptr, &camera);
}

// Re-arms the frame message the way the view's repaint does, until n more have come.
void waitForFrames(dscap_handle h, int n) {
    const int target = framesPosted + n;
    while (framesPosted < target) {
        dscap_notify(h, 0, 0);
        std::this_thread::sleep_for(1ms);
    }
}

// dscap_device and dscap_start together, and how long the first frame takes after them.
void callDeviceAndStart(benchmark::State& state) {
    useDemo();
    double firstFrameMs = 0, deviceMs = 0;
    for (auto _ : state) {
        const int before = framesPosted;
        const auto t0 = Clock::now();
        dscap_handle h = openDemo();
        deviceMs = std::max(deviceMs, millisecondsSince(t0));
        dscap_start(h, 0, 0, 0, 0, 0);
        state.SetIterationTime(millisecondsSince(t0) / 1000);
        while (framesPosted == before)
            std::this_thread::sleep_for(1ms);
        firstFrameMs = std::max(firstFrameMs, millisecondsSince(t0));
        dscap_stop(h);
        // A camera opened again at once waits for its release (stream, settings); a user
        // takes longer than this to choose it again.
        std::this_thread::sleep_for(300ms);
    }
    state.counters["device_ms_max"] = deviceMs;
    state.counters["first_frame_ms_max"] = firstFrameMs;
    dscap::Library::instance().waitForBackgroundWork();
    fs::remove_all(scratch());
}
BENCHMARK(callDeviceAndStart)->Iterations(5)->UseManualTime()->Unit(benchmark::kMillisecond);

// dscap_stop_capture after a second of recording at 2592x1944 with every stage on, and how
// long the file then takes to be complete.
void callStopCapture(benchmark::State& state) {
    useDemo();
    dscap_handle h = openDemo();
    dscap_start(h, 0, 0, 0, 0, 0);
    allProcessing(dscap_get_interface(h, 0));
    waitForFrames(h, 3);
    recordPath = (scratch() / "stop.mp4").string();
    double finishMs = 0;
    for (auto _ : state) {
        dscap_start_capture(h);
        std::this_thread::sleep_for(1s);
        const int stopped = recordingsStopped;
        const auto t0 = Clock::now();
        dscap_stop_capture(h);
        state.SetIterationTime(millisecondsSince(t0) / 1000);
        while (recordingsStopped == stopped)
            std::this_thread::sleep_for(1ms);
        finishMs = std::max(finishMs, millisecondsSince(t0));
    }
    state.counters["file_complete_ms_max"] = finishMs;
    dscap_stop(h);
    dscap::Library::instance().waitForBackgroundWork();
    fs::remove_all(scratch());
}
BENCHMARK(callStopCapture)->Iterations(3)->UseManualTime()->Unit(benchmark::kMillisecond);

// dscap_stop while previewing at 2592x1944 with every stage on.
void callStop(benchmark::State& state) {
    useDemo();
    for (auto _ : state) {
        dscap_handle h = openDemo();
        dscap_start(h, 0, 0, 0, 0, 0);
        allProcessing(dscap_get_interface(h, 0));
        waitForFrames(h, 5);
        const auto t0 = Clock::now();
        dscap_stop(h);
        state.SetIterationTime(millisecondsSince(t0) / 1000);
    }
    dscap::Library::instance().waitForBackgroundWork();
    fs::remove_all(scratch());
}
BENCHMARK(callStop)->Iterations(5)->UseManualTime()->Unit(benchmark::kMillisecond);

// A slider step: SetExposureTime, then GetRealExposureTime for the text beside it, at
// 2592x1944 with every stage on.
void callRealExposureAfterSet(benchmark::State& state) {
    useDemo();
    dscap_handle h = openDemo();
    dscap_start(h, 0, 0, 0, 0, 0);
    ICameraControl* c = dscap_get_interface(h, 0);
    allProcessing(c);
    waitForFrames(h, 3);
    std::uint32_t step = 0;
    double worstMs = 0;
    for (auto _ : state) {
        const auto t0 = Clock::now();
        c->SetExposureTime(20000 + 1000 * (step++ % 20));
        std::uint32_t real = 0;
        c->GetRealExposureTime(&real);
        benchmark::DoNotOptimize(real);
        const double ms = millisecondsSince(t0);
        worstMs = std::max(worstMs, ms);
        state.SetIterationTime(ms / 1000);
        std::this_thread::sleep_for(5ms); // a slider moves a step every few milliseconds
    }
    state.counters["worst_ms"] = worstMs;
    dscap_stop(h);
    dscap::Library::instance().waitForBackgroundWork();
    fs::remove_all(scratch());
}
BENCHMARK(callRealExposureAfterSet)
    ->Iterations(200)
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);

} // namespace
