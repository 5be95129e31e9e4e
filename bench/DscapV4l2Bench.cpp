// Motion-JPEG 1920x1080 from a V4L2 device (the fake, unpaced, so only our work is timed):
// decoding alone, then decoding and the full software processing. Target: 30 frames a second
// in at most half a core.
#include "../tests/libs/dscap/FakeV4l2System.h"
#include "dscap/processing/FrameProcessor.h"
#include "dscap/v4l2/V4l2Provider.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cmath>
#include <ctime>
#include <stdexcept>

using namespace dscap;
using namespace dscap::v4l2;

namespace {

constexpr int kWidth = 1920;
constexpr int kHeight = 1080;
constexpr double kTargetFps = 30;

// A stained slide as a webcam sees it: a bright uneven background, cells with darker nuclei,
// fibres and sensor noise, so the JPEG carries as much detail as a real frame.
Bytes slide() {
    Bytes bgr(std::size_t(kWidth) * kHeight * 3);
    std::uint32_t noise = 7;
    for (int y = 0; y < kHeight; ++y) {
        for (int x = 0; x < kWidth; ++x) {
            double r = 235 - 20.0 * y / kHeight;
            double g = 225 - 15.0 * x / kWidth;
            double b = 230;
            // Cells on a jittered grid.
            const int cx = (x / 90) * 90 + 45 + int(20 * std::sin(y / 90 * 1.7));
            const int cy = (y / 90) * 90 + 45 + int(20 * std::cos(x / 90 * 2.3));
            const double d = std::hypot(x - cx, y - cy);
            if (d < 32) {
                r -= 60;
                g -= 110;
                b -= 30;
                if (d < 11) {
                    r -= 90;
                    g -= 60;
                    b -= 20;
                }
            }
            const double fibre = std::sin(x * 0.021 + 9 * std::sin(y * 0.007));
            if (fibre > 0.97) {
                r -= 40;
                g -= 70;
            }
            noise = noise * 1664525u + 1013904223u;
            const double n = double(noise >> 24) / 32.0 - 4.0;
            std::uint8_t* p = &bgr[(std::size_t(y) * kWidth + x) * 3];
            p[0] = std::uint8_t(std::clamp(b + n, 0.0, 255.0));
            p[1] = std::uint8_t(std::clamp(g + n, 0.0, 255.0));
            p[2] = std::uint8_t(std::clamp(r + n, 0.0, 255.0));
        }
    }
    return bgr;
}

struct Stream {
    std::shared_ptr<FakeV4l2System> system = std::make_shared<FakeV4l2System>();
    std::unique_ptr<CameraSource> camera;
    std::size_t jpegBytes = 0;

    Stream() {
        FakeNode node = FakeV4l2System::webcam("/dev/video0", "usb-Bench_Camera-video-index0");
        system->addNode(node);
        const Bytes picture = slide();
        Bytes jpeg = FakeV4l2System::makeMjpeg(picture.data(), kWidth, kHeight, 80);
        jpegBytes = jpeg.size();
        system->setFrames(node.path, V4L2_PIX_FMT_MJPEG, kWidth, kHeight, {std::move(jpeg)});
        system->setPaced(false);
        std::string error;
        camera = makeV4l2Provider(system)->open("v4l2:" + node.stableName, error);
        if (!camera || !camera->start(0))
            throw std::runtime_error("cannot stream from the fake camera: " + error);
    }
};

double threadCpuSeconds() {
    timespec t{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &t);
    return double(t.tv_sec) + t.tv_nsec / 1e9;
}

void report(benchmark::State& state, double cpuSeconds, std::size_t jpegBytes) {
    const double perFrame = cpuSeconds / double(state.iterations());
    state.counters["cpu_ms_per_frame"] = perFrame * 1e3;
    state.counters["fps"] = 1.0 / perFrame;
    state.counters["core_share_at_30fps"] = perFrame * kTargetFps;
    state.counters["jpeg_kb"] = double(jpegBytes) / 1024.0;
}

void BM_V4l2MjpegDecode(benchmark::State& state) {
    Stream stream;
    SourceFrame frame;
    const double start = threadCpuSeconds();
    for (auto _ : state) {
        if (stream.camera->read(frame, 100) != ReadStatus::Frame)
            state.SkipWithError("no frame");
        benchmark::DoNotOptimize(frame.bgr);
    }
    report(state, threadCpuSeconds() - start, stream.jpegBytes);
}
BENCHMARK(BM_V4l2MjpegDecode)->Unit(benchmark::kMillisecond);

void BM_V4l2MjpegDecodeAndProcess(benchmark::State& state) {
    Stream stream;
    ProcessingParams params;
    params.gainB = 0.82;
    params.gainG = 1.0;
    params.gainR = 1.21;
    params.hue = 12;
    params.saturation = 160;
    params.brightness = 6;
    params.contrast = 15;
    params.gamma = 120;
    params.low = {8, 8, 8, 0};
    params.high = {245, 240, 250, 255};
    params.horizontalFlip = true;
    params.verticalFlip = true;
    FrameProcessor processor;
    processor.setParams(params);
    Image out;
    Histogram histogram;
    SourceFrame frame;
    const double start = threadCpuSeconds();
    for (auto _ : state) {
        if (stream.camera->read(frame, 100) != ReadStatus::Frame)
            state.SkipWithError("no frame");
        histogram.clear();
        processor.process(frame, out, &histogram);
        benchmark::DoNotOptimize(out.data());
    }
    report(state, threadCpuSeconds() - start, stream.jpegBytes);
}
BENCHMARK(BM_V4l2MjpegDecodeAndProcess)->Unit(benchmark::kMillisecond);

} // namespace
