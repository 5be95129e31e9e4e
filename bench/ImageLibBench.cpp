// Image library costs measured beside the work they cannot avoid: a 4000 x 3000 photo-like
// JPEG decoded by libjpeg-turbo itself (into a reused buffer, a fresh one, and at 1/8
// scale) and by ImageLib_Open / ImageLib_OpenScaled from a file.
#include "BenchJpeg.h"
#include "imagelib/imagelib.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <jpeglib.h>
#include <string>
#include <unistd.h>
#include <vector>

namespace {

constexpr int kWidth = 4000;
constexpr int kHeight = 3000;

struct Photo {
    std::filesystem::path dir;
    std::string path;
    std::vector<unsigned char> bytes;
    ~Photo() { std::filesystem::remove_all(dir); }
};

// Smooth illumination, round "cells" with sharp rims and sensor noise: compresses like a
// microscope picture, unlike flat colour or pure noise.
std::vector<unsigned char> makeScene() {
    std::vector<unsigned char> bgr(static_cast<std::size_t>(kWidth) * kHeight * 3);
    std::uint32_t seed = 12345;
    for (int y = 0; y < kHeight; ++y) {
        for (int x = 0; x < kWidth; ++x) {
            const double light = 0.6 + 0.4 * std::sin(x * 0.0011) * std::cos(y * 0.0017);
            const int cx = x % 250 - 125;
            const int cy = y % 250 - 125;
            const int r2 = cx * cx + cy * cy;
            const bool cell = r2 < 80 * 80;
            const bool rim = cell && r2 > 72 * 72;
            seed = seed * 1664525u + 1013904223u;
            const int noise = static_cast<int>(seed >> 28) - 8;
            double b = 200 * light, g = 170 * light, r = 150 * light;
            if (cell) {
                b *= 0.7;
                g *= 0.55;
                r *= 0.8;
            }
            if (rim)
                b = g = r = 40;
            unsigned char* p = &bgr[(static_cast<std::size_t>(y) * kWidth + x) * 3];
            p[0] = static_cast<unsigned char>(std::clamp(static_cast<int>(b) + noise, 0, 255));
            p[1] = static_cast<unsigned char>(std::clamp(static_cast<int>(g) + noise, 0, 255));
            p[2] = static_cast<unsigned char>(std::clamp(static_cast<int>(r) + noise, 0, 255));
        }
    }
    return bgr;
}

const Photo& photo() {
    static const Photo p = [] {
        Photo made;
        made.dir = std::filesystem::temp_directory_path() /
                   ("lanmira-bench-" + std::to_string(::getpid()));
        std::filesystem::create_directories(made.dir);
        made.path = (made.dir / "photo.jpg").string();
        const std::vector<unsigned char> bgr = makeScene();
        made.bytes = bench::encodeJpeg(bgr.data(), kWidth, kHeight, JCS_EXT_BGR);
        bench::writeFile(made.path, made.bytes);
        return made;
    }();
    return p;
}

// libjpeg-turbo with its default settings, B, G, R rows top-down into `pixels` (nullptr:
// a fresh buffer of the decoded size, freed afterwards).
void plainDecode(const std::vector<unsigned char>& bytes, unsigned char* pixels,
                 unsigned scaleNum) {
    jpeg_decompress_struct d;
    jpeg_error_mgr err;
    d.err = jpeg_std_error(&err);
    jpeg_create_decompress(&d);
    jpeg_mem_src(&d, bytes.data(), bytes.size());
    jpeg_read_header(&d, TRUE);
    d.out_color_space = JCS_EXT_BGR;
    d.scale_num = scaleNum;
    d.scale_denom = 8;
    jpeg_start_decompress(&d);
    const std::size_t stride = (d.output_width * 3 + 3) & ~std::size_t{3};
    unsigned char* fresh = nullptr;
    if (!pixels)
        pixels = fresh = static_cast<unsigned char*>(std::malloc(stride * d.output_height));
    while (d.output_scanline < d.output_height) {
        unsigned char* row = pixels + d.output_scanline * stride;
        jpeg_read_scanlines(&d, &row, 1);
    }
    jpeg_finish_decompress(&d);
    jpeg_destroy_decompress(&d);
    benchmark::DoNotOptimize(pixels[0]);
    std::free(fresh);
}

void checkOpened(benchmark::State& state, const void* dib) {
    if (!dib)
        state.SkipWithError("ImageLib could not open the benchmark picture");
}

void BM_JpegLibjpegReusedBuffer(benchmark::State& state) {
    const Photo& p = photo();
    std::vector<unsigned char> pixels(static_cast<std::size_t>(kWidth) * kHeight * 3);
    state.SetLabel("file of " + std::to_string(p.bytes.size() / 1024) + " KiB");
    for (auto _ : state)
        plainDecode(p.bytes, pixels.data(), 8);
}

void BM_JpegLibjpegFreshBuffer(benchmark::State& state) {
    const Photo& p = photo();
    for (auto _ : state)
        plainDecode(p.bytes, nullptr, 8);
}

void BM_JpegImageLibOpen(benchmark::State& state) {
    const Photo& p = photo();
    for (auto _ : state) {
        ImageIoParams params{};
        void* dib = ImageLib_Open(p.path.c_str(), &params);
        checkOpened(state, dib);
        ImageLib_Free(dib);
    }
}

void BM_JpegLibjpegEighthFreshBuffer(benchmark::State& state) {
    const Photo& p = photo();
    for (auto _ : state)
        plainDecode(p.bytes, nullptr, 1);
}

void BM_JpegImageLibThumbnail96(benchmark::State& state) {
    const Photo& p = photo();
    for (auto _ : state) {
        ImageIoParams params{};
        ImageLibFullInfo full{};
        void* dib = ImageLib_OpenScaled(p.path.c_str(), &params, 96, 96, &full);
        checkOpened(state, dib);
        ImageLib_Free(dib);
    }
}

// Five repetitions each, compared by their medians: other processes share the machine.
#define LANMIRA_JPEG_BENCH(fn)                                                                     \
    BENCHMARK(fn)->Unit(benchmark::kMillisecond)->Repetitions(5)->ReportAggregatesOnly(true)

LANMIRA_JPEG_BENCH(BM_JpegLibjpegReusedBuffer);
LANMIRA_JPEG_BENCH(BM_JpegLibjpegFreshBuffer);
LANMIRA_JPEG_BENCH(BM_JpegImageLibOpen);
LANMIRA_JPEG_BENCH(BM_JpegLibjpegEighthFreshBuffer);
LANMIRA_JPEG_BENCH(BM_JpegImageLibThumbnail96);

} // namespace
