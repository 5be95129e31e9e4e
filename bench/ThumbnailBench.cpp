// Thumbnail costs per file for 4000 x 3000 camera pictures, single-threaded:
//   baseline   libjpeg-turbo at 1/8 scale and a plain box average to 96 x 72 and 32 x 24;
//   cold       ThumbnailMaker::make + ThumbnailCache::write into an empty cache
//              (target: at most 1.15 x the baseline);
//   warm       ThumbnailCache::read of an existing cache file (target: under 0.2 ms);
//   desktop    vipsthumbnail and gdk-pixbuf-thumbnailer, when installed, as CPU time of the
//              child processes per file (wall time in the "wall_ms" counter).
// The same for progressive JPEG, PNG and 16-bit TIFF. The pictures are made once and kept in
// the temp folder between runs.
#include "BenchJpeg.h"
#include "browser/BrowserItem.h"
#include "browser/thumbnails/CacheEligibility.h"
#include "browser/thumbnails/ThumbnailCache.h"
#include "browser/thumbnails/ThumbnailMaker.h"

#include <sys/resource.h>

#include <QString>

#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <jpeglib.h>
#include <string>
#include <unistd.h>
#include <vector>

using namespace lanmira;
namespace fs = std::filesystem;

namespace {

constexpr int kWidth = 4000;
constexpr int kHeight = 3000;
constexpr int kPlainJpegs = 20;
constexpr int kOthers = 3;

enum Kind { Baseline = 0, Progressive = 1, Png = 2, Tiff16 = 3 };
const char* const kKindNames[] = {"jpeg", "progressive", "png", "tiff16"};

// Smooth illumination, round "cells" with dark rims, fine texture and sensor noise: decodes
// like a microscope picture, which flat colour does not.
std::vector<unsigned char> makeScene(int variant) {
    std::vector<unsigned char> bgr(static_cast<std::size_t>(kWidth) * kHeight * 3);
    std::vector<double> across(kWidth);
    for (int x = 0; x < kWidth; ++x)
        across[x] = std::sin(x * 0.0011 + variant * 0.7);
    std::uint32_t seed = 12345u + static_cast<std::uint32_t>(variant) * 7919u;
    const int period = 230 + variant * 7;
    for (int y = 0; y < kHeight; ++y) {
        const double down = std::cos(y * 0.0017 + variant * 0.3);
        unsigned char* p = &bgr[static_cast<std::size_t>(y) * kWidth * 3];
        for (int x = 0; x < kWidth; ++x, p += 3) {
            const double light = 0.6 + 0.4 * across[x] * down;
            const int cx = (x + variant * 31) % period - period / 2;
            const int cy = (y + variant * 17) % period - period / 2;
            const int r2 = cx * cx + cy * cy;
            const int inner = period / 3;
            seed = seed * 1664525u + 1013904223u;
            const int noise = static_cast<int>(seed >> 27) - 16;
            const int texture = ((x ^ y) & 8) ? 6 : -6;
            double b = 200 * light, g = 170 * light, r = 150 * light;
            if (r2 < inner * inner) {
                b *= 0.7;
                g *= 0.55;
                r *= 0.8;
                if (r2 > (inner - 8) * (inner - 8))
                    b = g = r = 40;
            }
            p[0] = static_cast<unsigned char>(std::clamp(int(b) + noise + texture, 0, 255));
            p[1] = static_cast<unsigned char>(std::clamp(int(g) + noise + texture, 0, 255));
            p[2] = static_cast<unsigned char>(std::clamp(int(r) + noise - texture, 0, 255));
        }
    }
    return bgr;
}

void writeJpeg(const std::string& path, const std::vector<unsigned char>& bgr, bool progressive) {
    bench::writeFile(path,
                     bench::encodeJpeg(bgr.data(), kWidth, kHeight, JCS_EXT_BGR, progressive));
}

void writePpm(const std::string& path, const std::vector<unsigned char>& bgr) {
    std::ofstream out(path, std::ios::binary);
    out << "P6\n" << kWidth << ' ' << kHeight << "\n255\n";
    std::vector<unsigned char> rgb(bgr.size());
    for (std::size_t i = 0; i < bgr.size(); i += 3) {
        rgb[i] = bgr[i + 2];
        rgb[i + 1] = bgr[i + 1];
        rgb[i + 2] = bgr[i];
    }
    out.write(reinterpret_cast<const char*>(rgb.data()), static_cast<std::streamsize>(rgb.size()));
}

bool haveCommand(const char* name) {
    return std::system((std::string("command -v ") + name + " >/dev/null 2>&1").c_str()) == 0;
}

struct Pictures {
    fs::path dir;
    std::vector<std::string> files[4];
};

const Pictures& pictures() {
    static const Pictures p = [] {
        Pictures made;
        made.dir = fs::temp_directory_path() /
                   ("lanmira-thumbbench-" + std::to_string(kWidth) + "x" + std::to_string(kHeight));
        fs::create_directories(made.dir);
        const bool convert = haveCommand("convert");
        for (int i = 0; i < kPlainJpegs; ++i) {
            const std::string base = (made.dir / ("photo" + std::to_string(i))).string();
            const bool other = i < kOthers;
            const std::string jpg = base + ".jpg", prog = base + "-progressive.jpg";
            const std::string png = base + ".png", tif = base + "-16bit.tif";
            const bool missing = !fs::exists(jpg) ||
                                 (other && (!fs::exists(prog) ||
                                            (convert && (!fs::exists(png) || !fs::exists(tif)))));
            if (missing) {
                const std::vector<unsigned char> bgr = makeScene(i);
                writeJpeg(jpg, bgr, false);
                if (other) {
                    writeJpeg(prog, bgr, true);
                    if (convert) {
                        const std::string ppm = base + ".ppm";
                        writePpm(ppm, bgr);
                        std::system(("convert '" + ppm + "' '" + png + "' && convert '" + ppm +
                                     "' -depth 16 -compress none '" + tif + "'")
                                        .c_str());
                        fs::remove(ppm);
                    }
                }
            }
            made.files[Baseline].push_back(jpg);
            if (other) {
                made.files[Progressive].push_back(prog);
                if (fs::exists(png))
                    made.files[Png].push_back(png);
                if (fs::exists(tif))
                    made.files[Tiff16].push_back(tif);
            }
        }
        return made;
    }();
    return p;
}

// A straightforward thumbnailer: libjpeg-turbo at 1/8 scale, then a box average over whole
// source pixels.
void boxAverage(const std::vector<unsigned char>& src, unsigned sw, unsigned sh, unsigned dw,
                unsigned dh, std::vector<unsigned char>& dst) {
    dst.assign(std::size_t{dw} * dh * 3, 0);
    for (unsigned y = 0; y < dh; ++y) {
        const unsigned y0 = y * sh / dh, y1 = std::max(y0 + 1, (y + 1) * sh / dh);
        for (unsigned x = 0; x < dw; ++x) {
            const unsigned x0 = x * sw / dw, x1 = std::max(x0 + 1, (x + 1) * sw / dw);
            unsigned sum[3] = {0, 0, 0};
            for (unsigned j = y0; j < y1; ++j)
                for (unsigned i = x0; i < x1; ++i)
                    for (int c = 0; c < 3; ++c)
                        sum[c] += src[(std::size_t{j} * sw + i) * 3 + c];
            const unsigned n = (y1 - y0) * (x1 - x0);
            for (int c = 0; c < 3; ++c)
                dst[(std::size_t{y} * dw + x) * 3 + c] = static_cast<unsigned char>(sum[c] / n);
        }
    }
}

void plainThumbnails(const std::string& path) {
    FILE* f = std::fopen(path.c_str(), "rb");
    if (!f)
        return;
    jpeg_decompress_struct d;
    jpeg_error_mgr err;
    d.err = jpeg_std_error(&err);
    jpeg_create_decompress(&d);
    jpeg_stdio_src(&d, f);
    jpeg_read_header(&d, TRUE);
    d.out_color_space = JCS_EXT_BGR;
    d.scale_num = 1;
    d.scale_denom = 8;
    jpeg_start_decompress(&d);
    const unsigned w = d.output_width, h = d.output_height;
    std::vector<unsigned char> pixels(std::size_t{w} * h * 3);
    while (d.output_scanline < h) {
        unsigned char* row = &pixels[std::size_t{d.output_scanline} * w * 3];
        jpeg_read_scanlines(&d, &row, 1);
    }
    jpeg_finish_decompress(&d);
    jpeg_destroy_decompress(&d);
    std::fclose(f);
    std::vector<unsigned char> large, small;
    boxAverage(pixels, w, h, 96, 72, large);
    boxAverage(pixels, w, h, 32, 24, small);
    benchmark::DoNotOptimize(large.data());
    benchmark::DoNotOptimize(small.data());
}

void BM_BaselineLibjpeg(benchmark::State& state) {
    const std::vector<std::string>& files = pictures().files[Baseline];
    std::size_t i = 0;
    for (auto _ : state)
        plainThumbnails(files[i++ % files.size()]);
}

// The temp folder may be on a RAM disk; the cache must still be written.
struct EmptyCache {
    EmptyCache() {
        CacheEligibility::setClassifier([](const QString&) { return true; });
        fs::create_directories(dir);
    }
    ~EmptyCache() {
        fs::remove_all(dir);
        CacheEligibility::setClassifier({});
    }
    fs::path dir =
        fs::temp_directory_path() / ("lanmira-thumbbench-cache-" + std::to_string(::getpid()));
    ThumbnailCache cache{QString::fromStdString(dir.string() + "/")};
};

void BM_OursCold(benchmark::State& state) {
    const std::vector<std::string>& files = pictures().files[state.range(0)];
    if (files.empty()) {
        state.SkipWithError("no pictures of this kind (ImageMagick's convert is missing)");
        return;
    }
    state.SetLabel(kKindNames[state.range(0)]);
    EmptyCache empty;
    std::size_t i = 0;
    for (auto _ : state) {
        const QString path = QString::fromStdString(files[i++ % files.size()]);
        ThumbnailMaker::Result r = ThumbnailMaker::make(path);
        if (r.large.empty()) {
            state.SkipWithError("a picture could not be decoded");
            break;
        }
        BrowserItem item(path, 2);
        item.large = std::move(r.large);
        item.small = std::move(r.small);
        item.imageWidth = r.imageWidth;
        item.imageHeight = r.imageHeight;
        item.bitsPerPixel = r.bitsPerPixel;
        empty.cache.write(item);
        state.PauseTiming();
        fs::remove_all(empty.dir);
        fs::create_directories(empty.dir);
        state.ResumeTiming();
    }
}

void BM_OursWarm(benchmark::State& state) {
    const std::vector<std::string>& files = pictures().files[Baseline];
    EmptyCache warm;
    for (const std::string& f : files) {
        const QString path = QString::fromStdString(f);
        ThumbnailMaker::Result r = ThumbnailMaker::make(path);
        BrowserItem item(path, 2);
        item.large = std::move(r.large);
        item.small = std::move(r.small);
        warm.cache.write(item);
    }
    std::vector<QString> paths;
    for (const std::string& f : files)
        paths.push_back(QString::fromStdString(f));
    std::size_t i = 0;
    for (auto _ : state) {
        BrowserItem item(paths[i++ % paths.size()], 2);
        if (!warm.cache.read(item)) {
            state.SkipWithError("the cache file was not accepted");
            break;
        }
        benchmark::DoNotOptimize(item.large.pixels.data());
    }
}

double childCpuSeconds() {
    rusage u{};
    ::getrusage(RUSAGE_CHILDREN, &u);
    return u.ru_utime.tv_sec + u.ru_stime.tv_sec + (u.ru_utime.tv_usec + u.ru_stime.tv_usec) / 1e6;
}

// Runs `command` once per iteration and reports the children's CPU time per file.
void runExternal(benchmark::State& state, const char* tool, const std::vector<std::string>& files,
                 const std::function<std::string()>& oneRun) {
    if (!haveCommand(tool)) {
        state.SkipWithError((std::string(tool) + " is not installed").c_str());
        return;
    }
    if (files.empty()) {
        state.SkipWithError("no pictures of this kind (ImageMagick's convert is missing)");
        return;
    }
    double wall = 0;
    for (auto _ : state) {
        const std::string command = oneRun();
        const double cpu0 = childCpuSeconds();
        const auto t0 = std::chrono::steady_clock::now();
        const int rc = std::system(command.c_str());
        const double seconds =
            std::chrono::duration<double>(std::chrono::steady_clock::now() - t0).count();
        if (rc != 0) {
            state.SkipWithError((std::string(tool) + " failed").c_str());
            break;
        }
        wall += seconds;
        state.SetIterationTime((childCpuSeconds() - cpu0) / static_cast<double>(files.size()));
    }
    state.counters["wall_ms"] = 1000 * wall /
                                static_cast<double>(std::max<std::int64_t>(1, state.iterations())) /
                                static_cast<double>(files.size());
}

void BM_Vipsthumbnail(benchmark::State& state) {
    const Pictures& p = pictures();
    const std::vector<std::string>& files = p.files[state.range(0)];
    state.SetLabel(kKindNames[state.range(0)]);
    const fs::path out =
        fs::temp_directory_path() / ("lanmira-thumbbench-vips-" + std::to_string(::getpid()));
    fs::create_directories(out);
    std::string list;
    for (const std::string& f : files)
        list += " '" + f + "'";
    // One worker thread, as our worker has.
    runExternal(state, "vipsthumbnail", files, [&] {
        return "VIPS_CONCURRENCY=1 vipsthumbnail -s 96 -o '" + out.string() + "/%s.jpg'" + list;
    });
    fs::remove_all(out);
}

void BM_GdkPixbufThumbnailer(benchmark::State& state) {
    const std::vector<std::string>& files = pictures().files[Baseline];
    const fs::path out = fs::temp_directory_path() /
                         ("lanmira-thumbbench-gdk-" + std::to_string(::getpid()) + ".png");
    std::string script;
    for (const std::string& f : files)
        script += "gdk-pixbuf-thumbnailer -s 96 '" + f + "' '" + out.string() + "' && ";
    script += "true";
    runExternal(state, "gdk-pixbuf-thumbnailer", files, [&] { return script; });
    fs::remove(out);
}

// Medians of three repetitions: other processes share the machine.
BENCHMARK(BM_BaselineLibjpeg)
    ->Unit(benchmark::kMillisecond)
    ->Repetitions(3)
    ->ReportAggregatesOnly(true);
BENCHMARK(BM_OursCold)
    ->Arg(Baseline)
    ->Arg(Progressive)
    ->Arg(Png)
    ->Arg(Tiff16)
    ->Unit(benchmark::kMillisecond)
    ->Repetitions(3)
    ->ReportAggregatesOnly(true);
BENCHMARK(BM_OursWarm)->Unit(benchmark::kMicrosecond)->Repetitions(3)->ReportAggregatesOnly(true);
BENCHMARK(BM_Vipsthumbnail)
    ->Arg(Baseline)
    ->Arg(Progressive)
    ->Arg(Png)
    ->Arg(Tiff16)
    ->UseManualTime()
    ->Iterations(2)
    ->Unit(benchmark::kMillisecond);
BENCHMARK(BM_GdkPixbufThumbnailer)->UseManualTime()->Iterations(1)->Unit(benchmark::kMillisecond);

// The scaler alone, from what a 1/8-scale decode of a camera picture gives and from a whole
// picture (PNG and TIFF have no reduced decode): target well under 1 ms for the first.
void BM_AreaAverage(benchmark::State& state) {
    const auto w = static_cast<std::int32_t>(state.range(0));
    const auto h = static_cast<std::int32_t>(state.range(1));
    const std::uint64_t stride = Thumbnail::stride(w);
    const std::vector<unsigned char> scene = makeScene(0);
    std::vector<unsigned char> src(stride * static_cast<std::uint64_t>(h));
    for (std::int32_t y = 0; y < h; ++y)
        std::copy_n(&scene[static_cast<std::size_t>(y * kHeight / h) * kWidth * 3],
                    static_cast<std::size_t>(w) * 3, &src[y * stride]);
    for (auto _ : state) {
        const Thumbnail large = ThumbnailMaker::scale24(src.data(), w, h, stride, 96, 72);
        const Thumbnail small = ThumbnailMaker::scale24(src.data(), w, h, stride, 32, 24);
        benchmark::DoNotOptimize(large.pixels.data());
        benchmark::DoNotOptimize(small.pixels.data());
    }
}
BENCHMARK(BM_AreaAverage)->Args({500, 375})->Args({4000, 3000})->Unit(benchmark::kMicrosecond);

} // namespace
