#include "camera/CaptureHooks.h"

#include "dscap/core/DemoProvider.h"
#include "dscap/core/Library.h"
#include "dscap/dscap.h"
#include "platform/PostedMessage.h"
#include "platform/ReceiverRegistry.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QScopeGuard>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace lanmira;

namespace {

class Receiver : public QObject {
public:
    std::vector<std::pair<int, quintptr>> got;
    bool event(QEvent* e) override {
        if (const auto* m = dynamic_cast<PostedMessage*>(e)) {
            got.emplace_back(m->message(), m->wParam());
            return true;
        }
        return QObject::event(e);
    }
};

TEST(CaptureHooksTest, ChosenFileGetsTheTypesExtensionWhenItHasNone) {
    EXPECT_EQ(CaptureHooks::withVideoExtension(QStringLiteral("/v/clip"), false),
              QStringLiteral("/v/clip.mp4"));
    EXPECT_EQ(CaptureHooks::withVideoExtension(QStringLiteral("/v/clip"), true),
              QStringLiteral("/v/clip.mkv"));
    EXPECT_EQ(CaptureHooks::withVideoExtension(QStringLiteral("/v/clip.MOV"), true),
              QStringLiteral("/v/clip.MOV"));
    EXPECT_EQ(CaptureHooks::withVideoExtension(QString(), false), QString());
}

// The demo camera's frames reach the view as messages while it lives, and stop mattering
// once it is gone.
TEST(CaptureHooksTest, LibraryPostsReachLiveReceiversOnly) {
    QTemporaryDir config;
    // The library saves a closed camera's settings in the background: let it finish before
    // the folder goes.
    const auto settle = qScopeGuard([] { dscap::Library::instance().waitForBackgroundWork(); });
    const dscap_messages messages{0x465, 0x470, 0x466, 32830, 0x473};
    dscap_init(config.path().toUtf8().constData(), "Vornalt", "Lanmira", "", "", &messages);
    CaptureHooks::install();
    std::vector<std::unique_ptr<dscap::CameraProvider>> providers;
    providers.push_back(std::make_unique<dscap::DemoProvider>(dscap::DemoOptions{}, false));
    dscap::Library::instance().setProviders(std::move(providers));

    Receiver view;
    auto registration = std::make_unique<ReceiverRegistration>(&view);
    dscap_dsvi camera{const_cast<char*>("demo:colour"), const_cast<char*>("Demo"), 0};
    dscap_handle h = dscap_device(nullptr, registration->context(), &camera);
    ASSERT_NE(h, nullptr);
    ASSERT_EQ(dscap_start(h, 0, 0, 0, 0, 0), 1);
    QElapsedTimer timer;
    timer.start();
    // Seconds under a sanitizer on a busy machine.
    while (view.got.size() < 2 && timer.elapsed() < 30000)
        QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
    ASSERT_GE(view.got.size(), 2u);
    EXPECT_EQ(view.got[0].first, 0x470); // the video size first, then the frame
    EXPECT_EQ(view.got[0].second, 2592u);
    EXPECT_EQ(view.got[1].first, 0x465);
    registration.reset();
    dscap_notify(h, 0, 0);
    const std::size_t before = view.got.size();
    timer.restart();
    while (timer.elapsed() < 300)
        QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
    EXPECT_EQ(view.got.size(), before);
    dscap_stop(h);
    dscap::Library::instance().setProviders({});
}

} // namespace
