// The viewer with 4000 x 3000 camera JPEGs in a 1920 x 1080 window:
//   decode     ImageLib_Open + ImageLib_Free of a file alone;
//   next       from dispatching Next (or Previous) to the new picture painted (target: at
//              most 1.3 x the decode, the "ratio" counter, and "cpu_ratio" in this
//              thread's CPU time; "cpu_settle_ms" is the averaged version of the reduced
//              picture that follows on the event loop);
//   repaint    a repaint of the fitted picture (target: under 16 ms).
// The pictures are made once and kept in the temp folder between runs.
#include "BenchJpeg.h"
#include "acquire/PackedDib.h"
#include "browser/BrowserList.h"
#include "i18n/i18n.h"
#include "imagelib/imagelib.h"
#include "platform/CommandIds.h"
#include "platform/CommandRouter.h"
#include "platform/FrameHost.h"
#include "viewer/CMainFrame2.h"
#include "viewer/CView2.h"
#include "viewer/ViewerHost.h"

#include <QApplication>
#include <QString>

#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <filesystem>
#include <memory>
#include <mutex>
#include <string>
#include <time.h>
#include <vector>

using namespace lanmira;
namespace fs = std::filesystem;

namespace {

// As the program does at start, so that pictures reuse freed blocks.
const bool g_retained = (PackedDib::retainLargeBlocks(), true);

constexpr int kWidth = 4000;
constexpr int kHeight = 3000;

// Smooth illumination, round cells with dark rims and sensor noise: decodes like a
// microscope picture, which flat colour does not.
std::vector<unsigned char> makeScene(int variant) {
    std::vector<unsigned char> bgr(static_cast<std::size_t>(kWidth) * kHeight * 3);
    std::uint32_t seed = 777u + static_cast<std::uint32_t>(variant) * 7919u;
    const int period = 230 + variant * 9;
    for (int y = 0; y < kHeight; ++y) {
        unsigned char* p = &bgr[static_cast<std::size_t>(y) * kWidth * 3];
        for (int x = 0; x < kWidth; ++x, p += 3) {
            const double light = 0.6 + 0.4 * std::sin(x * 0.0011 + variant) * std::cos(y * 0.0017);
            const int cx = (x + variant * 31) % period - period / 2;
            const int cy = (y + variant * 17) % period - period / 2;
            const int r2 = cx * cx + cy * cy, inner = period / 3;
            seed = seed * 1664525u + 1013904223u;
            const int noise = static_cast<int>(seed >> 27) - 16;
            double b = 200 * light, g = 170 * light, r = 150 * light;
            if (r2 < inner * inner) {
                b *= 0.7;
                g *= 0.55;
                r *= 0.8;
                if (r2 > (inner - 8) * (inner - 8))
                    b = g = r = 40;
            }
            p[0] = static_cast<unsigned char>(std::clamp(int(b) + noise, 0, 255));
            p[1] = static_cast<unsigned char>(std::clamp(int(g) + noise, 0, 255));
            p[2] = static_cast<unsigned char>(std::clamp(int(r) + noise, 0, 255));
        }
    }
    return bgr;
}

const std::vector<std::string>& pictures() {
    static const std::vector<std::string> files = [] {
        const fs::path dir = fs::temp_directory_path() / "lanmira-viewerbench-4000x3000";
        fs::create_directories(dir);
        std::vector<std::string> made;
        for (int i = 0; i < 2; ++i) {
            const std::string path = (dir / ("photo" + std::to_string(i) + ".jpg")).string();
            if (!fs::exists(path)) {
                const std::vector<unsigned char> bgr = makeScene(i);
                bench::writeFile(path, bench::encodeJpeg(bgr.data(), kWidth, kHeight, JCS_EXT_BGR));
            }
            made.push_back(path);
        }
        return made;
    }();
    return files;
}

// Wall time and this thread's CPU time: the machine is shared, and the CPU time shows the
// work itself when other processes take turns on the cores.
struct Stamp {
    std::chrono::steady_clock::time_point wall = std::chrono::steady_clock::now();
    double cpu = [] {
        timespec t{};
        clock_gettime(CLOCK_THREAD_CPUTIME_ID, &t);
        return static_cast<double>(t.tv_sec) + static_cast<double>(t.tv_nsec) / 1e9;
    }();
};

struct Span {
    double wall = 0;
    double cpu = 0;
    void add(const Stamp& from, const Stamp& to) {
        wall += std::chrono::duration<double>(to.wall - from.wall).count();
        cpu += to.cpu - from.cpu;
    }
};

Span decode(const std::string& path) {
    const Stamp t0;
    ImageIoParams params{};
    void* dib = ImageLib_Open(path.c_str(), &params);
    ImageLib_Free(dib);
    Span s;
    s.add(t0, Stamp());
    return s;
}

struct Host final : ViewerHost, FrameHost, CommandTarget {
    bool promptToSave() const override { return false; }
    std::uint32_t slideDelay() const override { return 2000; }
    QString chooseFileToOpen(QWidget*) override { return {}; }
    int deleteFile(const QString&, bool) override { return -1; }
    int readTrackMode() override { return 1; }
    void writeTrackMode(int) override {}
    bool queryClose(QMainWindow*) override { return true; }
    void frameClosed(QMainWindow*) override {}
    CommandTarget* applicationCommands() override { return this; }
    bool onCommand(int) override { return false; }
    bool onUpdateCommand(int, CommandState&) override { return false; }
};

// The viewer as the program shows it: its frame at 1920 x 1080, the folder
// list holding both pictures, the first one shown.
struct Viewer {
    Viewer() {
        if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
            qputenv("QT_QPA_PLATFORM", "offscreen");
        static int argc = 1;
        static char name[] = "bench_viewer";
        static char* argv[] = {name, nullptr};
        // Never destroyed: at exit Qt's own globals are gone before function statics.
        static QApplication* app = new QApplication(argc, argv);
        (void)app;
        i18n_init(QString::fromUtf8(LANMIRA_BUILD_DIR "/share/lanmira/i18n"), 0);
        BrowserList& list = BrowserList::instance();
        {
            std::lock_guard lock(list.lock());
            list.items().clear();
            for (const std::string& f : pictures())
                list.items().push_back(
                    std::make_unique<BrowserItem>(QString::fromStdString(f), IMAGELIB_FMT_JPEG));
            list.items().front()->setSelected(true);
        }
        frame = std::make_unique<CMainFrame2>(host, host);
        frame->resize(1920, 1080);
        frame->show();
        QCoreApplication::processEvents();
        frame->enterViewer();
        frame->view()->openFile(QString::fromStdString(pictures().front()));
        frame->view()->viewport()->repaint();
        QCoreApplication::processEvents();
    }
    ~Viewer() {
        frame.reset();
        BrowserList& list = BrowserList::instance();
        std::lock_guard lock(list.lock());
        list.items().clear();
    }
    Host host;
    std::unique_ptr<CMainFrame2> frame;
};

void BM_Decode(benchmark::State& state) {
    std::size_t i = 0;
    for (auto _ : state)
        state.SetIterationTime(decode(pictures()[i++ % 2]).wall);
}

void BM_NextToPainted(benchmark::State& state) {
    Viewer viewer;
    CView2* view = viewer.frame->view();
    Span next, decoded, settle;
    bool forward = true;
    for (auto _ : state) {
        const Stamp t0;
        viewer.frame->router().dispatch(forward ? cmd::ID_IMAGE_NEXT : cmd::ID_IMAGE_PREVIOUS);
        view->viewport()->repaint();
        const Stamp t1;
        QCoreApplication::processEvents();
        const Stamp t2;
        state.SetIterationTime(std::chrono::duration<double>(t1.wall - t0.wall).count());
        next.add(t0, t1);
        settle.add(t1, t2);
        // The same file decoded alone, in the same run.
        const Span d = decode(view->document().filePath().toStdString());
        decoded.wall += d.wall;
        decoded.cpu += d.cpu;
        forward = !forward;
    }
    const auto n = static_cast<double>(std::max<std::int64_t>(1, state.iterations()));
    state.counters["decode_ms"] = 1000 * decoded.wall / n;
    state.counters["ratio"] = decoded.wall > 0 ? next.wall / decoded.wall : 0;
    state.counters["cpu_decode_ms"] = 1000 * decoded.cpu / n;
    state.counters["cpu_next_ms"] = 1000 * next.cpu / n;
    state.counters["cpu_ratio"] = decoded.cpu > 0 ? next.cpu / decoded.cpu : 0;
    state.counters["cpu_settle_ms"] = 1000 * settle.cpu / n;
}

void BM_RepaintFitted(benchmark::State& state) {
    Viewer viewer;
    CView2* view = viewer.frame->view();
    state.SetLabel(view->paneText(cmd::ID_PANE_ZOOM).toStdString());
    for (auto _ : state)
        view->viewport()->repaint();
}

// Medians of three repetitions: other processes share the machine.
BENCHMARK(BM_Decode)
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond)
    ->Repetitions(3)
    ->ReportAggregatesOnly(true);
BENCHMARK(BM_NextToPainted)
    ->UseManualTime()
    ->MinTime(2.0)
    ->Unit(benchmark::kMillisecond)
    ->Repetitions(3)
    ->ReportAggregatesOnly(true);
BENCHMARK(BM_RepaintFitted)
    ->Unit(benchmark::kMillisecond)
    ->Repetitions(3)
    ->ReportAggregatesOnly(true);

} // namespace
