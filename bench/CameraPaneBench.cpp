// The camera control pane with the demo camera at 2592x1944 and every processing stage on:
// one slider step from the user's move to the camera and the panel's repaint, and painting
// the histogram graph with all colour channels.
#include "camera/pane/CCameraPane.h"
#include "camera/panels/CCameraHSBDlg.h"
#include "camera/panels/CHistogramGraph.h"
#include "dscap/ICameraControl.h"
#include "dscap/core/DemoProvider.h"
#include "dscap/core/Library.h"
#include "dscap/dscap.h"

#include <QApplication>
#include <QImage>
#include <QPainter>
#include <QSlider>

#include <benchmark/benchmark.h>

#include <cmath>
#include <filesystem>
#include <unistd.h>

namespace {

QApplication& app() {
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    static int argc = 1;
    static char name[] = "bench_camera_pane";
    static char* argv[] = {name, nullptr};
    static QApplication* a = new QApplication(argc, argv);
    return *a;
}

void histogramPaint(benchmark::State& state) {
    app();
    lanmira::HistogramPicture pic;
    pic.attached = true;
    for (std::size_t c = 0; c < 4; ++c)
        for (int i = 0; i < 256; ++i)
            pic.bins[c][static_cast<std::size_t>(i)] =
                1000.0 * std::exp(-((i - 60.0 - 40.0 * c) * (i - 60.0 - 40.0 * c)) / 800.0);
    pic.levels.low = {20, 20, 20, 20};
    pic.levels.high = {230, 230, 230, 230};
    QImage image(216, 120, QImage::Format_RGB32);
    for (auto _ : state) {
        QPainter p(&image);
        lanmira::CHistogramGraph::paintGraph(p, image.rect(), pic, 0, 0);
    }
}
BENCHMARK(histogramPaint)->Unit(benchmark::kMicrosecond);

// Saturation slider moved one step at a time while the demo camera previews at full size:
// the step reaches the camera, the value text changes and the panel repaints.
void sliderStep(benchmark::State& state) {
    app();
    const auto dir = std::filesystem::temp_directory_path() /
                     ("lanmira-pane-bench-" + std::to_string(::getpid()));
    std::filesystem::create_directories(dir);
    const dscap_messages messages{0x465, 0x470, 0x466, 32830, 0x473};
    dscap_init(dir.c_str(), "Vornalt", "LanmiraBench", "", "", &messages);
    std::vector<std::unique_ptr<dscap::CameraProvider>> providers;
    providers.push_back(std::make_unique<dscap::DemoProvider>(dscap::DemoOptions{}, false));
    dscap::Library::instance().setProviders(std::move(providers));
    dscap_dsvi camera{const_cast<char*>("demo:colour"), const_cast<char*>("Demo"), 0};
    dscap_handle h = dscap_device(nullptr, nullptr, &camera);
    dscap_start(h, 0, 0, 0, 0, 0);
    ICameraControl* c = dscap_get_interface(h, 0);
    const std::int32_t sizes = c->GetResolutionCount();
    for (std::int32_t i = 0; i < sizes; ++i) {
        std::int32_t w = 0, hh = 0;
        if (c->GetResolution(i, &w, &hh) >= 0 && w == 2592)
            dscap_set_esize(h, i, 0);
    }
    c->SetAutoExposure(0);
    c->SetTempTint(3200, 1000);
    c->SetGamma(120);
    c->SetContrast(10);
    const std::uint16_t low[4] = {10, 10, 10, 10}, high[4] = {240, 240, 240, 240};
    c->SetLevelRange(low, high);
    c->SetHorizontalFlip(1);

    QObject frame;
    lanmira::CCameraPane pane(&frame, [](const QString&, int) { return 0; }, {});
    pane.resize(260, 900);
    pane.show();
    pane.SetCamera(h, c, 1);
    QApplication::processEvents();
    auto* slider =
        pane.panel(lanmira::kGroupColourAdjust)
            ->findChild<QSlider*>(QStringLiteral("id%1").arg(lanmira::CCameraHSBDlg::kSaturation));
    int v = 100;
    for (auto _ : state) {
        v = v >= 200 ? 100 : v + 1;
        slider->setValue(v);
        pane.panel(lanmira::kGroupColourAdjust)->repaint();
        QApplication::processEvents();
    }
    pane.SetCamera(nullptr, nullptr, 0);
    dscap_stop(h);
    std::filesystem::remove_all(dir);
}
BENCHMARK(sliderStep)->Unit(benchmark::kMillisecond)->Iterations(200);

} // namespace
