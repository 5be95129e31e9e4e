// Recording video: the colour conversion and the encoding per frame on a moving, noisy
// slide (1296 x 972, and the full sensor for comparison), then the recorder as the library
// drives it at 1296 x 972, at camera pace (30 frames a second for 5 s, which must drop
// nothing) and as fast as frames can be pushed. CPU figures are for the whole process less
// the thread that makes the pictures.
#include "dscap/record/VideoEncoder.h"
#include "dscap/record/VideoRecorder.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <ctime>
#include <filesystem>
#include <map>
#include <memory>
#include <string>
#include <thread>
#include <unistd.h>
#include <vector>

namespace {

namespace fs = std::filesystem;

constexpr int kWidth = 1296;
constexpr int kHeight = 972;
constexpr double kTargetFps = 30.0;
constexpr int kNoiseSpan = 65536;
constexpr std::int64_t kFrameStepNs = 33'333'333;

double cpuSeconds(clockid_t clock) {
    timespec t{};
    clock_gettime(clock, &t);
    return static_cast<double>(t.tv_sec) + static_cast<double>(t.tv_nsec) * 1e-9;
}

// A stained slide larger than the frame: cells, fibres and a bright background. Each frame
// is a window that drifts across it, with sensor noise added, so the encoder sees what a
// microscope camera shows.
class MovingSlide {
public:
    MovingSlide(int width, int height)
        : width_(width), height_(height), slideWidth_(width + 400), slideHeight_(height + 300) {
        slide_.resize(static_cast<std::size_t>(slideWidth_) * slideHeight_ * 3);
        std::uint32_t seed = 2024;
        auto random = [&seed] {
            seed = seed * 1664525u + 1013904223u;
            return static_cast<int>(seed >> 8);
        };
        for (int y = 0; y < slideHeight_; ++y) {
            for (int x = 0; x < slideWidth_; ++x) {
                std::uint8_t* p = pixel(x, y);
                const double fibre =
                    0.5 + 0.5 * std::sin(x * 0.031 + y * 0.017 + 3.0 * std::sin(y * 0.004));
                p[0] = static_cast<std::uint8_t>(225 - 30 * fibre);
                p[1] = static_cast<std::uint8_t>(215 - 40 * fibre);
                p[2] = static_cast<std::uint8_t>(230 - 25 * fibre);
            }
        }
        for (int cell = 0; cell < 600; ++cell) {
            const int cx = random() % slideWidth_;
            const int cy = random() % slideHeight_;
            const int radius = 8 + random() % 30;
            const bool nucleusStain = cell % 3 == 0;
            for (int y = std::max(0, cy - radius); y < std::min(slideHeight_, cy + radius); ++y) {
                for (int x = std::max(0, cx - radius); x < std::min(slideWidth_, cx + radius);
                     ++x) {
                    const double r = std::hypot(x - cx, y - cy) / radius;
                    if (r >= 1.0)
                        continue;
                    const double depth = r < 0.35 ? 0.75 : 0.35 * (1.0 - r * r);
                    std::uint8_t* p = pixel(x, y);
                    p[0] = static_cast<std::uint8_t>(p[0] *
                                                     (1.0 - depth * (nucleusStain ? 0.3 : 0.6)));
                    p[1] = static_cast<std::uint8_t>(p[1] * (1.0 - depth * 0.8));
                    p[2] = static_cast<std::uint8_t>(p[2] *
                                                     (1.0 - depth * (nucleusStain ? 0.7 : 0.2)));
                }
            }
        }
        noise_.resize(static_cast<std::size_t>(width_) * 3 * height_ + kNoiseSpan);
        for (auto& n : noise_)
            n = static_cast<std::int8_t>(random() % 13 - 6);
        frame_.resize(static_cast<std::size_t>(width_) * 3 * height_);
    }

    const std::uint8_t* frame(int index) {
        const int ox = static_cast<int>(std::lround(200 + 180 * std::sin(index * 0.01)));
        const int oy = static_cast<int>(std::lround(150 + 130 * std::sin(index * 0.007 + 1.0)));
        const std::int8_t* noise = noise_.data() + (index * 7919) % kNoiseSpan;
        const std::size_t rowBytes = static_cast<std::size_t>(width_) * 3;
        for (int y = 0; y < height_; ++y) {
            const std::uint8_t* in = pixel(ox, oy + y);
            std::uint8_t* out = frame_.data() + y * rowBytes;
            const std::int8_t* n = noise + y * rowBytes;
            for (std::size_t i = 0; i < rowBytes; ++i)
                out[i] = static_cast<std::uint8_t>(std::clamp(in[i] + n[i], 0, 255));
        }
        return frame_.data();
    }

private:
    std::uint8_t* pixel(int x, int y) {
        return slide_.data() + (static_cast<std::size_t>(y) * slideWidth_ + x) * 3;
    }

    int width_;
    int height_;
    int slideWidth_;
    int slideHeight_;
    std::vector<std::uint8_t> slide_;
    std::vector<std::int8_t> noise_;
    std::vector<std::uint8_t> frame_;
};

MovingSlide& slide(int width, int height) {
    static std::map<std::pair<int, int>, std::unique_ptr<MovingSlide>> slides;
    auto& s = slides[{width, height}];
    if (!s)
        s = std::make_unique<MovingSlide>(width, height);
    return *s;
}

fs::path scratchFile(const char* name) {
    return fs::temp_directory_path() /
           ("lanmira-record-bench-" + std::to_string(::getpid()) + "-" + name);
}

// Arguments: width, height, frames a second.
void BM_ConvertAndEncode(benchmark::State& state) {
    const int width = static_cast<int>(state.range(0));
    const int height = static_cast<int>(state.range(1));
    const double fps = static_cast<double>(state.range(2));
    MovingSlide& source = slide(width, height);
    const fs::path path = scratchFile("encode.mp4");
    std::string error;
    auto encoder = dscap::VideoEncoder::open({path, width, height, fps}, error);
    if (!encoder) {
        state.SkipWithError(error.c_str());
        return;
    }
    double convertCpu = 0;
    double makeCpu = 0;
    std::int64_t frames = 0;
    const double processStart = cpuSeconds(CLOCK_PROCESS_CPUTIME_ID);
    for (auto _ : state) {
        const double t0 = cpuSeconds(CLOCK_THREAD_CPUTIME_ID);
        const std::uint8_t* bgr = source.frame(static_cast<int>(frames));
        const double t1 = cpuSeconds(CLOCK_THREAD_CPUTIME_ID);
        encoder->convert(bgr, width * 3);
        const double t2 = cpuSeconds(CLOCK_THREAD_CPUTIME_ID);
        if (!encoder->encode(static_cast<std::int64_t>(static_cast<double>(frames) * 1e9 / fps))) {
            state.SkipWithError(encoder->error().c_str());
            break;
        }
        makeCpu += t1 - t0;
        convertCpu += t2 - t1;
        ++frames;
    }
    encoder->finish();
    const double recordCpu = cpuSeconds(CLOCK_PROCESS_CPUTIME_ID) - processStart - makeCpu;
    const double perFrame = recordCpu / static_cast<double>(std::max<std::int64_t>(frames, 1));
    state.counters["convert_ms"] = 1e3 * convertCpu / static_cast<double>(frames);
    // The encoder may run threads of its own; its share is the rest of the process time.
    state.counters["encode_ms"] = 1e3 * (perFrame - convertCpu / static_cast<double>(frames));
    state.counters["cpu_ms_per_frame"] = 1e3 * perFrame;
    state.counters["core_at_target_fps"] = perFrame * fps;
    state.counters["file_MB_per_s"] =
        static_cast<double>(fs::file_size(path)) / 1e6 / (static_cast<double>(frames) / fps);
    state.SetLabel(encoder->codecName());
    encoder.reset();
    fs::remove(path);
}

// Pushes frames as the capture thread would; paced = one every 33.3 ms, else as fast as the
// recorder takes them (a refused frame is offered again, and counted).
void recordFor(benchmark::State& state, bool paced) {
    MovingSlide& source = slide(kWidth, kHeight);
    constexpr int kFrames = 150;
    const fs::path path = scratchFile(paced ? "paced.mp4" : "flat-out.mp4");
    for (auto _ : state) {
        std::string error;
        auto recorder = dscap::VideoRecorder::open({path, kWidth, kHeight, kTargetFps}, error);
        if (!recorder) {
            state.SkipWithError(error.c_str());
            return;
        }
        const double processStart = cpuSeconds(CLOCK_PROCESS_CPUTIME_ID);
        const double threadStart = cpuSeconds(CLOCK_THREAD_CPUTIME_ID);
        const auto start = std::chrono::steady_clock::now();
        std::int64_t refused = 0;
        for (int i = 0; i < kFrames; ++i) {
            if (paced)
                std::this_thread::sleep_until(start + std::chrono::nanoseconds(i * kFrameStepNs));
            const std::uint8_t* bgr = source.frame(i);
            if (paced) {
                recorder->push(bgr, kWidth * 3, i * kFrameStepNs);
                continue;
            }
            while (!recorder->push(bgr, kWidth * 3, i * kFrameStepNs) && !recorder->failed()) {
                ++refused;
                std::this_thread::sleep_for(std::chrono::microseconds(500));
            }
        }
        recorder->close();
        const double wall =
            std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
        // The pushing thread's own share is making the pictures and copying them in.
        const double recordCpu = cpuSeconds(CLOCK_PROCESS_CPUTIME_ID) - processStart;
        const double pushCpu = cpuSeconds(CLOCK_THREAD_CPUTIME_ID) - threadStart;
        if (recorder->failed())
            state.SkipWithError(recorder->error().c_str());
        const auto written = static_cast<double>(recorder->framesWritten());
        state.counters["frames_written"] = written;
        state.counters[paced ? "frames_dropped" : "pushes_refused"] =
            static_cast<double>(paced ? recorder->framesDropped() : refused);
        state.counters["wall_fps"] = written / wall;
        state.counters["cpu_ms_per_frame"] = 1e3 * (recordCpu - pushCpu) / written;
        state.counters["core_at_30fps"] = (recordCpu - pushCpu) / written * kTargetFps;
        state.counters["push_thread_ms_per_frame"] = 1e3 * pushCpu / kFrames;
        state.SetIterationTime(wall);
    }
    fs::remove(path);
}

void BM_RecorderAtCameraPace(benchmark::State& state) {
    recordFor(state, true);
}

void BM_RecorderFlatOut(benchmark::State& state) {
    recordFor(state, false);
}

} // namespace

BENCHMARK(BM_ConvertAndEncode)
    ->Unit(benchmark::kMillisecond)
    ->Iterations(300)
    ->Args({kWidth, kHeight, 30})
    ->Args({2592, 1944, 15});
BENCHMARK(BM_RecorderAtCameraPace)->Unit(benchmark::kMillisecond)->Iterations(1)->UseManualTime();
BENCHMARK(BM_RecorderFlatOut)->Unit(benchmark::kMillisecond)->Iterations(1)->UseManualTime();
