// The browser's responsiveness:
//   worker latency  how late a 10 ms timer on the user-interface thread fires while the
//                   thumbnail worker decodes 200 JPEGs of 2000 x 1500 (no cache, so every
//                   file is decoded); target: max_late_ms under 100. Every 100 ms the
//                   timer also takes the list as a refresh does: max_lock_wait_ms is the
//                   longest that waited for the worker to let go;
//   view 50,000     scanning, sorting and laying out a folder of 50,000 images in the grid
//                   view (layout_ms: the grid alone), then painting the first screen and
//                   the last one.
// The pictures and the big folder are made once and kept in the temp folder between runs.
#include "BenchJpeg.h"
#include "browser/BrowserList.h"
#include "browser/CView1.h"
#include "browser/grid/GridLayout.h"
#include "browser/thumbnails/ThumbnailWorker.h"

#include <QApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QFile>
#include <QScrollBar>
#include <QTimer>

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <jpeglib.h>
#include <vector>

using namespace lanmira;
namespace fs = std::filesystem;

namespace {

constexpr int kJpegs = 200;
constexpr int kJpegWidth = 2000;
constexpr int kJpegHeight = 1500;
constexpr int kBigFolder = 50'000;
constexpr int kTimerMs = 10;

QApplication& app() {
    static int argc = 1;
    static char name[] = "bench_browser";
    static char* argv[] = {name, nullptr};
    if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    static QApplication application(argc, argv);
    return application;
}

QString folderNamed(const char* name) {
    return QString::fromStdString((fs::temp_directory_path() / name).string()) + u'/';
}

bool writeJpeg(const fs::path& path) {
    std::vector<unsigned char> rgb(static_cast<std::size_t>(kJpegWidth) * kJpegHeight * 3);
    std::uint32_t seed = 99;
    for (std::size_t i = 0; i < rgb.size(); ++i) {
        seed = seed * 1664525u + 1013904223u;
        const std::size_t x = i / 3 % kJpegWidth;
        const std::size_t y = i / 3 / kJpegWidth;
        rgb[i] = static_cast<unsigned char>(((x / 7) ^ (y / 5)) * 3 + (seed >> 28));
    }
    return bench::writeFile(path.string(),
                            bench::encodeJpeg(rgb.data(), kJpegWidth, kJpegHeight, JCS_RGB));
}

// 200 copies of one camera-sized JPEG: every decode costs the same.
QString jpegFolder() {
    const QString folder = folderNamed("lanmira-bench-worker");
    const fs::path dir = folder.toStdString();
    std::error_code ec;
    fs::create_directories(dir, ec);
    const fs::path first = dir / "img000.jpg";
    if (!fs::exists(first) && !writeJpeg(first))
        return {};
    for (int k = 1; k < kJpegs; ++k) {
        char name[32];
        std::snprintf(name, sizeof name, "img%03d.jpg", k);
        if (!fs::exists(dir / name))
            fs::copy_file(first, dir / name, ec);
    }
    return folder;
}

// Empty files are enough: the view lists by name and this measure starts no worker.
QString bigFolder() {
    const QString folder = folderNamed("lanmira-bench-50k");
    const fs::path dir = folder.toStdString();
    std::error_code ec;
    fs::create_directories(dir, ec);
    for (int k = 0; k < kBigFolder; ++k) {
        char name[32];
        std::snprintf(name, sizeof name, "img%05d.jpg", k);
        if (fs::exists(dir / name))
            continue;
        if (std::FILE* f = std::fopen((dir / name).c_str(), "wb"))
            std::fclose(f);
    }
    return folder;
}

void BM_WorkerEventLoopLatency(benchmark::State& state) {
    app();
    const QString folder = jpegFolder();
    if (folder.isEmpty()) {
        state.SkipWithError("cannot write the test pictures");
        return;
    }
    BrowserList list;
    list.currentFolder = folder;
    {
        std::lock_guard lock(list.lock());
        list.fullScan();
    }
    // What the view does with each finished cell: one queued call per burst.
    QObject receiver;
    std::atomic<bool> queued{false};
    ThumbnailWorker worker(list, nullptr, 0, [&](int) {
        if (!queued.exchange(true))
            QMetaObject::invokeMethod(
                &receiver, [&] { queued = false; }, Qt::QueuedConnection);
    });
    worker.start();

    std::vector<double> late;
    std::vector<double> lockWaits;
    int ticks = 0;
    double seconds = 0;
    for (auto _ : state) {
        {
            std::lock_guard lock(list.lock());
            for (auto& item : list.items())
                item->dropThumbnails();
        }
        list.thumbnailsComplete.store(0);
        list.stopRequest.store(BrowserList::kStopRun);
        QEventLoop loop;
        QTimer timer;
        timer.setTimerType(Qt::PreciseTimer);
        QElapsedTimer clock;
        clock.start();
        qint64 last = clock.nsecsElapsed();
        QObject::connect(&timer, &QTimer::timeout, [&] {
            const qint64 now = clock.nsecsElapsed();
            late.push_back(std::max(0.0, (now - last) / 1e6 - kTimerMs));
            last = now;
            if (list.thumbnailsComplete.load() == 1) {
                loop.quit();
                return;
            }
            // Every 100 ms the user-interface thread takes the list the way a refresh does;
            // it waits for the item in progress.
            if (++ticks % 10 == 0) {
                QElapsedTimer wait;
                wait.start();
                list.stopRequest.store(BrowserList::kStopAbandon);
                std::unique_lock lock(list.lock());
                lockWaits.push_back(wait.nsecsElapsed() / 1e6);
                lock.unlock();
                list.stopRequest.store(BrowserList::kStopRun);
                worker.wake();
            }
        });
        timer.start(kTimerMs);
        worker.wake();
        loop.exec();
        seconds += clock.nsecsElapsed() / 1e9;
    }
    worker.stop();

    std::sort(late.begin(), late.end());
    const std::size_t p99 = std::min(late.size() - 1, late.size() * 99 / 100);
    state.counters["max_late_ms"] = late.empty() ? 0 : late.back();
    state.counters["p99_late_ms"] = late.empty() ? 0 : late[p99];
    state.counters["max_lock_wait_ms"] =
        lockWaits.empty() ? 0 : *std::max_element(lockWaits.begin(), lockWaits.end());
    state.counters["thumbs_per_s"] =
        seconds > 0 ? static_cast<double>(state.iterations()) * kJpegs / seconds : 0;
}
BENCHMARK(BM_WorkerEventLoopLatency)->Iterations(2)->Unit(benchmark::kMillisecond);

void BM_View50kScanLayoutPaint(benchmark::State& state) {
    app();
    const QString folder = bigFolder();
    double scanMs = 0, layoutMs = 0, firstPaintMs = 0, lastPaintMs = 0;
    for (auto _ : state) {
        CView1 view(QStringLiteral("Vornalt"), QStringLiteral("Lanmira"), folder);
        view.resize(1280, 800);
        view.show();
        QElapsedTimer clock;
        clock.start();
        view.openFolder(folder);
        scanMs += clock.nsecsElapsed() / 1e6;
        clock.restart();
        benchmark::DoNotOptimize(view.viewport()->grab());
        firstPaintMs += clock.nsecsElapsed() / 1e6;
        view.verticalScrollBar()->setValue(view.verticalScrollBar()->maximum());
        clock.restart();
        benchmark::DoNotOptimize(view.viewport()->grab());
        lastPaintMs += clock.nsecsElapsed() / 1e6;
        // The grid alone, to tell it apart from the scan and the sort.
        clock.restart();
        GridLayout::layOut(BrowserList::instance(),
                           {kBigFolder, true, view.viewport()->size(), 16, true, 16, false});
        layoutMs += clock.nsecsElapsed() / 1e6;
        if (BrowserList::instance().items().size() != static_cast<std::size_t>(kBigFolder))
            state.SkipWithError("the folder was not listed whole");
    }
    const auto n = static_cast<double>(state.iterations());
    state.counters["scan_layout_ms"] = scanMs / n;
    state.counters["layout_ms"] = layoutMs / n;
    state.counters["first_paint_ms"] = firstPaintMs / n;
    state.counters["last_paint_ms"] = lastPaintMs / n;
    std::lock_guard lock(BrowserList::instance().lock());
    BrowserList::instance().items().clear();
}
BENCHMARK(BM_View50kScanLayoutPaint)->Iterations(3)->Unit(benchmark::kMillisecond);

} // namespace
