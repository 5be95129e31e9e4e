// Thumbnails of small files claiming huge pictures, each made in a child process so that its
// peak memory (the child's maximum resident set) and time are its own:
//   fax37800    an all-white G4 TIFF of 37800 x 37800 in one strip (target: under 100 MB and
//               no slower than vipsthumbnail -s 96 on the same file)
//   png37800    an all-white 1-bit PNG of the same size (same targets)
//   jpeg23168   a progressive arithmetic-coded JPEG claiming 23168 x 23168 (refused, < 0.5 s)
//   rle65535    an RLE8 bitmap claiming 65535 x 21845, padded
//   gif20000    a GIF screen of 20000 x 20000 around a one-pixel frame, padded
//   folder      all of them one after another, as the browser's worker meets them
//               (target: under 300 MB)
//   vips_*      vipsthumbnail on the same files, when installed.
// Counters: peak_mb of the child, ok = 1 when a thumbnail was made.
#include "../tests/support/HostileFiles.h"
#include "browser/thumbnails/ThumbnailMaker.h"

#include <sys/resource.h>
#include <sys/wait.h>

#include <QString>

#include <benchmark/benchmark.h>

#include <chrono>
#include <filesystem>
#include <functional>
#include <unistd.h>

using namespace lanmira;
namespace fs = std::filesystem;

namespace {

struct Files {
    std::vector<std::pair<std::string, std::string>> named; // name, path
    Files() {
        const fs::path dir = fs::temp_directory_path() / "lanmira-hostile-bench";
        fs::create_directories(dir);
        const auto keep = [&](const std::string& name,
                              const std::function<hostile::Bytes()>& make) {
            const fs::path path = dir / name;
            if (!fs::exists(path)) {
                const hostile::Bytes bytes = make();
                std::ofstream(path, std::ios::binary)
                    .write(reinterpret_cast<const char*>(bytes.data()),
                           static_cast<std::streamsize>(bytes.size()));
            }
            named.emplace_back(name, path.string());
        };
        keep("fax37800.tif", [&] {
            return hostile::padded(hostile::whiteFax((dir / "fax.tmp").string(), 37800), 9500);
        });
        keep("png37800.png", [] { return hostile::whitePng(37800, false); });
        keep("jpeg23168.jpg", [] { return hostile::padded(hostile::claimingJpeg(23168), 12700); });
        keep("rle65535.bmp", [] { return hostile::padded(hostile::rleBmp(65535, 21845), 720000); });
        keep("gif20000.gif",
             [] { return hostile::padded(hostile::tinyFrameGif(20000, 20000), 100000); });
    }
    std::string path(const std::string& name) const {
        for (const auto& [n, p] : named)
            if (n == name)
                return p;
        return {};
    }
};

const Files& files() {
    static const Files f;
    return f;
}

// Runs `child` in a fork; the child's exit status is its result (0 = a thumbnail).
void inChild(benchmark::State& state, const std::function<int()>& child) {
    for (auto _ : state) {
        const auto start = std::chrono::steady_clock::now();
        const pid_t pid = ::fork();
        if (pid == 0)
            ::_exit(child());
        int status = 0;
        rusage usage{};
        ::wait4(pid, &status, 0, &usage);
        const double seconds =
            std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
        state.SetIterationTime(seconds);
        state.counters["peak_mb"] = static_cast<double>(usage.ru_maxrss) / 1024.0;
        state.counters["ok"] = WIFEXITED(status) && WEXITSTATUS(status) == 0 ? 1 : 0;
    }
}

int thumbnail(const std::string& path) {
    return ThumbnailMaker::make(QString::fromStdString(path)).large.empty() ? 1 : 0;
}

void BM_Thumbnail(benchmark::State& state, const char* name) {
    const std::string path = files().path(name);
    inChild(state, [&] { return thumbnail(path); });
}

void BM_Folder(benchmark::State& state) {
    inChild(state, [] {
        int made = 0;
        for (const auto& [name, path] : files().named)
            made += thumbnail(path) == 0;
        return made == 4 ? 0 : 1; // all but the refused JPEG
    });
}

void BM_Vips(benchmark::State& state, const char* name) {
    if (::access("/usr/bin/vipsthumbnail", X_OK) != 0) {
        state.SkipWithError("vipsthumbnail is not installed");
        return;
    }
    const std::string path = files().path(name);
    const std::string out = (fs::temp_directory_path() / "lanmira-hostile-vips.jpg").string();
    inChild(state, [&] {
        ::execl("/usr/bin/vipsthumbnail", "vipsthumbnail", path.c_str(), "-s", "96", "-o",
                out.c_str(), static_cast<char*>(nullptr));
        return 127;
    });
}

} // namespace

BENCHMARK_CAPTURE(BM_Thumbnail, fax37800, "fax37800.tif")->UseManualTime()->Iterations(1);
BENCHMARK_CAPTURE(BM_Vips, fax37800, "fax37800.tif")->UseManualTime()->Iterations(1);
BENCHMARK_CAPTURE(BM_Thumbnail, png37800, "png37800.png")->UseManualTime()->Iterations(1);
BENCHMARK_CAPTURE(BM_Vips, png37800, "png37800.png")->UseManualTime()->Iterations(1);
BENCHMARK_CAPTURE(BM_Thumbnail, jpeg23168, "jpeg23168.jpg")->UseManualTime()->Iterations(1);
BENCHMARK_CAPTURE(BM_Thumbnail, rle65535, "rle65535.bmp")->UseManualTime()->Iterations(1);
BENCHMARK_CAPTURE(BM_Thumbnail, gif20000, "gif20000.gif")->UseManualTime()->Iterations(1);
BENCHMARK(BM_Folder)->UseManualTime()->Iterations(1);
