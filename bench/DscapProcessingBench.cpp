// Software processing of one camera frame, stage by stage, at the demo camera's full and
// half resolution. The figures to watch are ms per frame and the share of one core at the
// frame rates the camera window aims for (15 fps at full size, 30 fps at half).

#include "dscap/processing/ColourTemperature.h"
#include "dscap/processing/FrameProcessor.h"

#include <benchmark/benchmark.h>

#include <cmath>
#include <cstdint>
#include <ctime>
#include <vector>

namespace {

using namespace dscap;

// A slide-like picture: smooth shading and round blobs in warm colours, with a little
// grain, so the tables see many different values as they would on a real frame.
std::vector<std::uint8_t> makePicture(int width, int height) {
    std::vector<std::uint8_t> pixels(static_cast<std::size_t>(width) * height * 3);
    std::uint32_t seed = 12345;
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            const double u = double(x) / width, v = double(y) / height;
            const double blobs = 0.5 + 0.5 * std::sin(u * 37.0) * std::cos(v * 29.0);
            const double shade =
                0.75 + 0.25 * std::cos((u - 0.5) * 3.0) * std::cos((v - 0.5) * 3.0);
            seed = seed * 1664525u + 1013904223u;
            const double grain = double(seed >> 24) / 255.0 * 12.0 - 6.0;
            std::uint8_t* p = &pixels[(static_cast<std::size_t>(y) * width + x) * 3];
            const auto put = [](double value) {
                return static_cast<std::uint8_t>(
                    std::lround(std::fmin(255.0, std::fmax(0.0, value))));
            };
            p[0] = put(shade * (120.0 - 70.0 * blobs) + grain);
            p[1] = put(shade * (200.0 - 120.0 * blobs) + grain);
            p[2] = put(shade * (235.0 - 40.0 * blobs) + grain);
        }
    }
    return pixels;
}

double threadCpuSeconds() {
    timespec ts{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &ts);
    return double(ts.tv_sec) + double(ts.tv_nsec) * 1e-9;
}

constexpr unsigned kIdentity = 0;
constexpr unsigned kWhiteBalance = 1u << 0;
constexpr unsigned kHueSaturation = 1u << 1;
constexpr unsigned kLevels = 1u << 2; // levels, contrast, brightness, gamma
constexpr unsigned kFlips = 1u << 3;
constexpr unsigned kHistogram = 1u << 4;
constexpr unsigned kGrey = 1u << 5;
constexpr unsigned kAll = kWhiteBalance | kHueSaturation | kLevels | kFlips | kHistogram;
constexpr unsigned kAllGrey = kAll | kGrey;

void processFrames(benchmark::State& state, unsigned stages) {
    const int width = static_cast<int>(state.range(0));
    const int height = static_cast<int>(state.range(1));
    const std::vector<std::uint8_t> pixels = makePicture(width, height);
    const SourceFrame frame{pixels.data(), width, height, width * 3, 0};

    ProcessingParams params;
    if (stages & kWhiteBalance) {
        const RgbGains gains = whiteBalanceGains(3200, 1100);
        params.gainB = gains.b;
        params.gainG = gains.g;
        params.gainR = gains.r;
    }
    if (stages & kHueSaturation) {
        params.hue = 20;
        params.saturation = 170;
    }
    if (stages & kLevels) {
        params.low = {12, 10, 8, 10};
        params.high = {240, 245, 250, 245};
        params.contrast = 20;
        params.brightness = 6;
        params.gamma = 130;
    }
    params.horizontalFlip = params.verticalFlip = (stages & kFlips) != 0;
    params.monochrome = (stages & kGrey) != 0;

    FrameProcessor processor;
    processor.setParams(params);
    Image out;
    Histogram histogram;
    Histogram* wanted = (stages & kHistogram) ? &histogram : nullptr;
    processor.process(frame, out, wanted); // sizes the output outside the timing

    const double start = threadCpuSeconds();
    for (auto _ : state) {
        processor.process(frame, out, wanted);
        benchmark::DoNotOptimize(out.data());
        benchmark::ClobberMemory();
    }
    const double msPerFrame = (threadCpuSeconds() - start) * 1e3 / double(state.iterations());
    state.counters["ms_per_frame"] = msPerFrame;
    state.counters["fps"] = 1e3 / msPerFrame;
    state.counters["core_at_15fps"] = msPerFrame * 15.0 / 1e3;
    state.counters["core_at_30fps"] = msPerFrame * 30.0 / 1e3;
}

void sizes(benchmark::internal::Benchmark* b) {
    b->Args({2592, 1944})->Args({1296, 972})->Unit(benchmark::kMillisecond);
}

} // namespace

// Each stage alone on top of the identity, then everything together (the figure for the
// frame-rate targets), then everything with grey output.
BENCHMARK_CAPTURE(processFrames, identity, kIdentity)->Apply(sizes);
BENCHMARK_CAPTURE(processFrames, white_balance, kWhiteBalance)->Apply(sizes);
BENCHMARK_CAPTURE(processFrames, hue_saturation, kHueSaturation)->Apply(sizes);
BENCHMARK_CAPTURE(processFrames, levels_contrast_gamma, kLevels)->Apply(sizes);
BENCHMARK_CAPTURE(processFrames, flips, kFlips)->Apply(sizes);
BENCHMARK_CAPTURE(processFrames, histogram, kHistogram)->Apply(sizes);
BENCHMARK_CAPTURE(processFrames, all, kAll)->Apply(sizes);
BENCHMARK_CAPTURE(processFrames, all_grey, kAllGrey)->Apply(sizes);
