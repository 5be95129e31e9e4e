// Listing a camera folder: scanning 10,000 empty image files and sorting them by name
// (target: under 150 ms together), and the heap one listed item costs once both of its
// thumbnails are filled (target: under 45 KiB).
#include "browser/BrowserList.h"

#include <QFile>
#include <QString>

#include <benchmark/benchmark.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <malloc.h>
#include <unistd.h>

using namespace lanmira;

namespace {

constexpr int kFiles = 10'000;

// Names as cameras and this program's own captures write them.
std::string cameraName(int i) {
    char name[64];
    switch (i % 3) {
    case 0:
        std::snprintf(name, sizeof name, "IMG_%04d.JPG", i);
        break;
    case 1:
        std::snprintf(name, sizeof name, "DSC_%05d.jpg", i);
        break;
    default:
        std::snprintf(name, sizeof name, "Capture%04d.tif", i);
        break;
    }
    return name;
}

struct CameraFolder {
    std::filesystem::path dir;

    CameraFolder() {
        dir = std::filesystem::temp_directory_path() /
              ("lanmira-bench-list-" + std::to_string(::getpid()));
        std::filesystem::create_directories(dir);
        for (int i = 0; i < kFiles; ++i)
            std::ofstream(dir / cameraName(i));
    }
    ~CameraFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(dir, ignored);
    }
    QString path() const { return QFile::decodeName(dir.string().c_str()) + u'/'; }
};

void BM_ScanAndSortByName(benchmark::State& state) {
    const CameraFolder folder;
    BrowserList list;
    list.currentFolder = folder.path();
    list.sortKey = static_cast<std::int32_t>(SortKey::Name);
    for (auto _ : state) {
        list.fullScan();
        list.sort();
        benchmark::DoNotOptimize(list.items().data());
    }
    if (list.items().size() != static_cast<std::size_t>(kFiles))
        state.SkipWithError("the folder was not listed whole");
    state.counters["items"] = static_cast<double>(list.items().size());
}
BENCHMARK(BM_ScanAndSortByName)->Unit(benchmark::kMillisecond);

void fillThumbnail(Thumbnail& thumbnail, int width, int height) {
    thumbnail.width = width;
    thumbnail.height = height;
    thumbnail.pixels.assign(Thumbnail::stride(width) * static_cast<std::uint64_t>(height), 0x80);
}

// The heap as malloc sees it, so per-allocation overhead counts too.
void BM_ItemMemory(benchmark::State& state) {
    const QString folder = QStringLiteral("/home/user/Pictures/Microscope/2024-05-17/");
    double bytesPerItem = 0;
    for (auto _ : state) {
        BrowserList list;
        const std::size_t before = ::mallinfo2().uordblks;
        list.items().reserve(kFiles);
        for (int i = 0; i < kFiles; ++i) {
            auto item =
                std::make_unique<BrowserItem>(folder + QString::fromStdString(cameraName(i)), 2u);
            fillThumbnail(item->large, 96, 72);
            fillThumbnail(item->small, 32, 24);
            list.items().push_back(std::move(item));
        }
        const std::size_t after = ::mallinfo2().uordblks;
        bytesPerItem = static_cast<double>(after - before) / kFiles;
        benchmark::DoNotOptimize(list.items().data());
    }
    state.counters["bytes_per_item"] = bytesPerItem;
    state.counters["KiB_per_item"] = bytesPerItem / 1024;
}
BENCHMARK(BM_ItemMemory)->Iterations(1)->Unit(benchmark::kMillisecond);

} // namespace
