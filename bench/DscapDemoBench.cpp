// The demo camera's frame rendering at each resolution and sampling, then rendering plus the
// library's full software processing, against the frame rates the camera window aims for
// (15 fps at full size, 30 fps at half). Frames are read unpaced, so only CPU time counts.

#include "dscap/demo/DemoCamera.h"
#include "dscap/processing/ColourTemperature.h"
#include "dscap/processing/FrameProcessor.h"

#include <benchmark/benchmark.h>

#include <ctime>
#include <memory>

namespace {

using namespace dscap;

// Frames a second the window aims for, by resolution index.
constexpr double kTargetFps[3] = {15, 30, 60};

double threadCpuSeconds() {
    timespec ts{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &ts);
    return double(ts.tv_sec) + double(ts.tv_nsec) * 1e-9;
}

std::unique_ptr<CameraSource> openCamera(bool colour, int resolution, int sampling) {
    DemoOptions options;
    options.colour = colour;
    options.unpaced = true;
    auto camera = makeDemoCamera(options);
    SensorSettings s;
    s.exposureUs = 30000;
    s.gain = 100;
    s.lightSource = kLightAc50Hz;
    s.sampling = sampling;
    s.speed = 2;
    camera->apply(s);
    camera->start(resolution);
    return camera;
}

void render(benchmark::State& state, bool colour) {
    const int resolution = static_cast<int>(state.range(0));
    const int sampling = static_cast<int>(state.range(1));
    const auto camera = openCamera(colour, resolution, sampling);
    SourceFrame frame;
    camera->read(frame, 0);

    const double start = threadCpuSeconds();
    for (auto _ : state) {
        camera->read(frame, 0);
        benchmark::DoNotOptimize(frame.bgr);
        benchmark::ClobberMemory();
    }
    const double ms = (threadCpuSeconds() - start) * 1e3 / double(state.iterations());
    state.counters["ms_per_frame"] = ms;
    state.counters["fps"] = 1e3 / ms;
    state.counters["core_at_target"] = ms * kTargetFps[resolution] / 1e3;
}

// White balance for the lamp, colour, levels, contrast, brightness, gamma, both flips and
// the histogram: everything the library can do to a frame at once.
void renderAndProcess(benchmark::State& state) {
    const int resolution = static_cast<int>(state.range(0));
    const auto camera = openCamera(true, resolution, kSamplingBin);
    ProcessingParams params;
    const RgbGains gains = whiteBalanceGains(3200, 1000);
    params.gainB = gains.b;
    params.gainG = gains.g;
    params.gainR = gains.r;
    params.hue = 10;
    params.saturation = 150;
    params.low = {10, 10, 10, 10};
    params.high = {240, 240, 240, 240};
    params.contrast = 10;
    params.brightness = 5;
    params.gamma = 120;
    params.horizontalFlip = params.verticalFlip = true;
    FrameProcessor processor;
    processor.setParams(params);
    Image out;
    Histogram histogram;
    SourceFrame frame;
    camera->read(frame, 0);
    processor.process(frame, out, &histogram); // sizes the output outside the timing

    double renderSeconds = 0, processSeconds = 0;
    for (auto _ : state) {
        const double t0 = threadCpuSeconds();
        camera->read(frame, 0);
        const double t1 = threadCpuSeconds();
        processor.process(frame, out, &histogram);
        const double t2 = threadCpuSeconds();
        renderSeconds += t1 - t0;
        processSeconds += t2 - t1;
        benchmark::DoNotOptimize(out.data());
        benchmark::ClobberMemory();
    }
    const double n = double(state.iterations());
    const double ms = (renderSeconds + processSeconds) * 1e3 / n;
    state.counters["render_ms"] = renderSeconds * 1e3 / n;
    state.counters["process_ms"] = processSeconds * 1e3 / n;
    state.counters["ms_per_frame"] = ms;
    state.counters["fps"] = 1e3 / ms;
    state.counters["core_at_target"] = ms * kTargetFps[resolution] / 1e3;
}

} // namespace

// Arguments: resolution index (2592, 1296, 648 wide), sampling (0 bin, 1 skip).
BENCHMARK_CAPTURE(render, colour, true)
    ->ArgsProduct({{0, 1, 2}, {0, 1}})
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(render, grey, false)->Args({0, 0})->Args({1, 0})->Unit(benchmark::kMillisecond);
BENCHMARK(renderAndProcess)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);
