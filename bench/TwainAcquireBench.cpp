// A 300 dpi colour scan of the test backend's whole bed (200 x 200 mm, the largest it
// offers; an A4 page does not fit) from the acquire command to a saved JPEG, beside
// scanimage making the same scan into a file, in the same run. The "ratio" counter is
// ours over scanimage's.

#include "acquire/CTwain.h"
#include "acquire/NativeImage.h"
#include "acquire/TwainManagerLibrary.h"
#include "acquire/TwainSettings.h"
#include "camera/frame/CaptureWriter.h"
#include "imagelib/imagelib.h"

#include <QApplication>
#include <QDir>
#include <QElapsedTimer>

#include <benchmark/benchmark.h>

#include <chrono>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <string>
#include <unistd.h>
#include <vector>

namespace fs = std::filesystem;
using namespace lanmira;

namespace {

const fs::path& scratch() {
    static const fs::path root = [] {
        const fs::path p =
            fs::temp_directory_path() / ("lanmira-twain-bench-" + std::to_string(::getpid()));
        fs::create_directories(p / "sane");
        fs::create_directories(p / "out");
        fs::create_directories(p / "config");
        std::ofstream(p / "sane" / "dll.conf") << "test\n";
        ::setenv("SANE_CONFIG_DIR", (p / "sane").c_str(), 1);
        ::setenv("XDG_CONFIG_HOME", (p / "config").c_str(), 1);
        ::setenv("LANMIRA_TWAIN_SOURCES", LANMIRA_BUILD_DIR "/bin", 1);
        return p;
    }();
    return root;
}

QApplication& app() {
    static int argc = 1;
    static char name[] = "bench_twain";
    static char* argv[] = {name, nullptr};
    if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    static QApplication application(argc, argv);
    return application;
}

// What the browser frame does with a scan, without the rest of the frame.
class Scanner final : public CTwain {
public:
    CaptureWriter saver;
    CaptureFormat format;
    int counter = 0;
    bool saved = false;

    Scanner() {
        setShowUi(false);
        format.title = QString::fromStdString((scratch() / "out" / "Lanmira").string());
        format.extension = QStringLiteral("jpg");
        format.format = IMAGELIB_FMT_JPEG;
        QObject::connect(&saver, &CaptureWriter::saved, [this] { saved = true; });
        QObject::connect(&saver, &CaptureWriter::failed, [this] { saved = true; });
    }

protected:
    bool NegotiateCapabilities() override {
        return SetCapability(CAP_XFERCOUNT, TWTY_INT16, 1) &&
               SetCapability(ICAP_PIXELTYPE, TWTY_UINT16, TWPT_RGB) &&
               SetCapability(ICAP_XRESOLUTION, TWTY_FIX32, twainFixedValue(300));
    }
    void OnNativeImage(TW_HANDLE handle) override {
        saver.saveNext(dibFromNativeHandle(handle), format, counter, true);
    }

    void OnCloseRequest() override { ReturnToState(returnState()); }
};

double lanmiraSeconds() {
    app();
    Scanner s;
    QElapsedTimer timer;
    timer.start();
    if (!s.Acquire())
        return -1;
    // Waiting as the program's event loop does: asleep until something arrives, not
    // spinning on a core the save could use.
    while (!s.saved)
        QCoreApplication::processEvents(QEventLoop::AllEvents | QEventLoop::WaitForMoreEvents);
    return timer.nsecsElapsed() / 1e9;
}

double scanimageSeconds(const std::string& picture, const char* format) {
    const fs::path out = scratch() / "out" / (std::string("scanimage.") + format);
    const std::string command =
        "scanimage -d test:0 --mode Color --depth 8 --resolution 300 --test-picture '" + picture +
        "' -l 0 -t 0 -x 200 -y 200 --format=" + format + " -o '" + out.string() + "'";
    const auto start = std::chrono::steady_clock::now();
    if (std::system(command.c_str()) != 0)
        return -1;
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

void scanToSavedFile(benchmark::State& state, const std::string& picture) {
    scratch();
    ::setenv("LANMIRA_SANE_OPTIONS", ("test-picture=" + picture).c_str(), 1);
    TwainManagerLibrary::setCandidates({QStringLiteral(LANMIRA_BUILD_DIR "/bin/libtwaindsm.so")});
    double ours = 0, pnm = 0, jpeg = 0;
    for (auto _ : state) {
        const double a = scanimageSeconds(picture, "pnm");
        const double b = scanimageSeconds(picture, "jpeg");
        const double c = lanmiraSeconds();
        if (a < 0 || b < 0 || c < 0) {
            state.SkipWithError("scanimage or the acquisition failed");
            return;
        }
        pnm += a;
        jpeg += b;
        ours += c;
        state.SetIterationTime(c);
    }
    const double n = static_cast<double>(state.iterations());
    state.counters["lanmira_ms"] = ours / n * 1000;
    state.counters["scanimage_pnm_ms"] = pnm / n * 1000;
    state.counters["scanimage_jpeg_ms"] = jpeg / n * 1000;
    state.counters["ratio_pnm"] = ours / pnm;
    state.counters["ratio_jpeg"] = ours / jpeg;
    std::error_code ec;
    fs::remove_all(scratch() / "out", ec);
    fs::create_directories(scratch() / "out", ec);
}

// The backend's default page, solid black.
void BM_ScanBlackPage(benchmark::State& state) {
    scanToSavedFile(state, "Solid black");
}
// Its colour pattern, a grid of one-pixel lines: the worst case for the JPEG coder.
void BM_ScanColourPattern(benchmark::State& state) {
    scanToSavedFile(state, "Color pattern");
}

// The part of the path that is the image library's: a black page of the same size saved as
// the capture format (JPEG, through a temporary file made durable before it is renamed).
void BM_SavePageOnly(benchmark::State& state) {
    constexpr int kSide = 2362;
    const std::uint64_t stride = ((24ull * kSide + 31) / 32) * 4;
    std::vector<std::uint8_t> dib(40 + stride * kSide, 0);
    const std::uint32_t header[] = {40, kSide, kSide};
    std::memcpy(dib.data(), header, sizeof header);
    dib[12] = 1;
    dib[14] = 24;
    const std::string path = (scratch() / "out" / "page.jpg").string();
    for (auto _ : state) {
        ImageIoParams params{};
        params.format = IMAGELIB_FMT_JPEG;
        if (!ImageLib_Save(path.c_str(), dib.data(), &params))
            state.SkipWithError("the save failed");
    }
}

} // namespace

BENCHMARK(BM_SavePageOnly)->Iterations(5)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_ScanBlackPage)->Iterations(5)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(BM_ScanColourPattern)->Iterations(5)->UseManualTime()->Unit(benchmark::kMillisecond);
