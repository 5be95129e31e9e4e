#include "../libs/dscap/FakeV4l2System.h"
#include "MemoryFrameHost.h"
#include "camera/frame/CVideoFrame.h"
#include "camera/frame/VideoFrameHost.h"
#include "camera/view/CVideoView.h"
#include "camera/view/RegionEditor.h"
#include "dscap/ICameraControl.h"
#include "dscap/core/DemoProvider.h"
#include "dscap/core/Library.h"
#include "dscap/v4l2/V4l2Provider.h"
#include "imagelib/imagelib.h"
#include "platform/CommandIds.h"
#include "platform/CommandRouter.h"
#include "platform/Messages.h"
#include "platform/PostedMessage.h"
#include "platform/ReceiverRegistry.h"

#include <QApplication>
#include <QDialog>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QMap>
#include <QPointer>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>

#include <gtest/gtest.h>

#include <cstring>

using namespace lanmira;
using namespace Qt::StringLiterals;
using dscap::v4l2::FakeV4l2System;

namespace {

QString g_recordPath;

int recordFileHook(void*, const char*, char* path, std::size_t size) {
    const QByteArray bytes = g_recordPath.toUtf8();
    if (bytes.isEmpty() || static_cast<std::size_t>(bytes.size()) + 1 > size)
        return 0;
    std::memcpy(path, bytes.constData(), static_cast<std::size_t>(bytes.size()) + 1);
    return 1;
}

void postHook(void* window, unsigned message, std::uintptr_t w, std::intptr_t l) {
    ReceiverRegistry::post(ReceiverRegistry::fromContext(window), static_cast<int>(message),
                           static_cast<quintptr>(w), static_cast<qintptr>(l));
}

// The real capture library with the demo camera and a fake USB webcam, and a frame for
// one of them whose captures land in a scratch folder.
class VideoFrameTest : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(m_config.isValid() && m_pictures.isValid());
        const dscap_messages messages{
            msg::CAPTURE_NOTIFY, msg::CAPTURE_VIDEO_SIZE, msg::CAPTURE_RECORDING,
            static_cast<unsigned>(cmd::ID_CAMERA_DIALOG_FIRST), msg::CAPTURE_EVENT};
        dscap_init(m_config.path().toUtf8().constData(), "Vornalt", "Lanmira", "", "", &messages);
        const dscap_hooks hooks{postHook, recordFileHook, nullptr};
        dscap_set_hooks(&hooks);
        m_system = std::make_shared<FakeV4l2System>();
        m_system->addNode(FakeV4l2System::webcam("/dev/video0", "usb-Acme-video-index0"));
        std::vector<std::unique_ptr<dscap::CameraProvider>> providers;
        providers.push_back(dscap::v4l2::makeV4l2Provider(m_system));
        providers.push_back(std::make_unique<dscap::DemoProvider>(dscap::DemoOptions{}, false));
        dscap::Library::instance().setProviders(std::move(providers));
        dscap_free_dsvi(dscap_enum_device(0)); // the library learns which family owns which id

        m_host.format = {m_pictures.path() + u"/Lanmira"_s, u"bmp"_s, IMAGELIB_FMT_BMP, {0, 0}};
    }

    void TearDown() override {
        delete m_frame.data();
        // Cameras are released and recordings finished in the background: let them end
        // before the scratch folders go.
        dscap::Library::instance().waitForBackgroundWork();
        dscap::Library::instance().setProviders({});
    }

    CVideoFrame& open(const QString& id) {
        m_frame = new CVideoFrame(m_host, {id, u"Camera"_s, 0});
        m_frame->resize(900, 700);
        m_frame->show();
        postMessage(m_frame.data(), msg::VIDEO_START_PREVIEW);
        return *m_frame;
    }

    bool waitForFrames(int painted, int timeoutMs = 20000) {
        const quint64 start = m_frame->view()->paintedFrames();
        return QTest::qWaitFor([&] { return m_frame->view()->paintedFrames() >= start + painted; },
                               timeoutMs);
    }

    QString picture(int n) const {
        return m_pictures.path() + u"/Lanmira"_s + QString::asprintf("%04d", n) + u".bmp"_s;
    }

    QTemporaryDir m_config;
    QTemporaryDir m_pictures;
    std::shared_ptr<FakeV4l2System> m_system;
    MemoryFrameHost m_host;
    QPointer<CVideoFrame> m_frame;
};

TEST_F(VideoFrameTest, PreviewPaintsEveryFrameAndCapturesNeverOverwrite) {
    CVideoFrame& frame = open(u"demo:colour"_s);
    ASSERT_TRUE(waitForFrames(8));
    EXPECT_EQ(m_host.current, u"demo:colour"_s);
    EXPECT_EQ(frame.videoSize(), QSize(2592, 1944));

    // The shown rate counts painted frames; asking for the command states on every paint
    // must not steal them.
    QTest::qWait(1300);
    double camera = 0, shown = 0;
    ASSERT_TRUE(dscap_get_property(frame.session().handle(), &camera, &shown));
    // A sanitizer build on a busy machine may take seconds over its first frames.
    EXPECT_TRUE(QTest::qWaitFor(
        [&] {
            return dscap_get_property(frame.session().handle(), &camera, &shown) && shown > 0.0;
        },
        20000));
    // Sanitizer builds render the demo slide at a few frames a second, too few for a ratio
    // over a one-second window to mean much.
    if (camera >= 8.0) {
        EXPECT_GT(shown, camera * 0.7);
    }
    EXPECT_FALSE(frame.frameRateText().isEmpty());

    for (int n : {0, 1}) {
        QFile f(picture(n));
        ASSERT_TRUE(f.open(QIODevice::WriteOnly));
        f.write("taken");
    }
    ASSERT_TRUE(frame.router().dispatch(cmd::ID_VIDEO_CAPTURE_FRAME));
    EXPECT_EQ(m_host.counter, 3);
    ASSERT_TRUE(QTest::qWaitFor([&] { return QFileInfo(picture(2)).size() > 1000; }, 10000));
    EXPECT_EQ(QFileInfo(picture(0)).size(), 5); // the files that were there stay as they were

    ImageIoParams params{};
    void* dib = ImageLib_Open(QFile::encodeName(picture(2)).constData(), &params);
    ASSERT_NE(dib, nullptr);
    ImageLib_Free(dib);
}

TEST_F(VideoFrameTest, AutoCaptureLocksOtherCapturesAndStopsAfterItsLimit) {
    CVideoFrame& frame = open(u"demo:colour"_s);
    ASSERT_TRUE(waitForFrames(2));
    m_host.settings[u"Auto/Slot"_s] = 1;
    m_host.settings[u"Auto/Times"_s] = 2;
    m_host.settings[u"Auto/Limit"_s] = 1;
    QTimer::singleShot(0, [] {
        if (auto* dialog = qobject_cast<QDialog*>(QApplication::activeModalWidget()))
            dialog->accept();
    });
    ASSERT_TRUE(frame.router().dispatch(cmd::ID_VIDEO_AUTO_CAPTURE));
    ASSERT_TRUE(frame.autoCapturing());

    CommandRouter& router = frame.router();
    EXPECT_TRUE(router.query(cmd::ID_VIDEO_AUTO_CAPTURE).checked);
    EXPECT_FALSE(router.query(cmd::ID_VIDEO_CAPTURE_FRAME).enabled);
    EXPECT_FALSE(router.query(cmd::ID_EDIT_COPY).enabled);
    EXPECT_FALSE(router.query(cmd::ID_VIDEO_START_RECORD).enabled);

    // The second tick meets a name that exists and saves nothing; the third stops.
    QFile blocker(picture(1));
    ASSERT_TRUE(blocker.open(QIODevice::WriteOnly));
    blocker.close();
    ASSERT_TRUE(QTest::qWaitFor([&] { return !frame.autoCapturing(); }, 6000));
    EXPECT_GT(QFileInfo(picture(0)).size(), 1000);
    EXPECT_EQ(QFileInfo(picture(1)).size(), 0);
    EXPECT_FALSE(QFileInfo::exists(picture(2)));
    EXPECT_EQ(m_host.counter, 1);
    EXPECT_TRUE(router.query(cmd::ID_VIDEO_CAPTURE_FRAME).enabled);
    EXPECT_FALSE(router.query(cmd::ID_VIDEO_AUTO_CAPTURE).checked);
}

TEST_F(VideoFrameTest, DraggedRegionReachesTheCameraInItsOwnCoordinates) {
    CVideoFrame& frame = open(u"demo:colour"_s);
    ASSERT_TRUE(waitForFrames(2));
    ICameraControl* control = frame.session().control();
    ASSERT_NE(control, nullptr);
    ASSERT_EQ(control->SetHorizontalFlip(1), 0);
    postMessage(&frame, msg::VIDEO_ZOOM_STEP, VideoZoom::kZoomOut); // 100 % → 75 %
    postMessage(&frame, msg::VIDEO_ZOOM_STEP, VideoZoom::kZoomOut); // → 50 %
    postMessage(&frame, msg::VIDEO_ZOOM_STEP, VideoZoom::kZoomOut); // → 25 %
    QTest::qWait(50);
    EXPECT_EQ(frame.zoom().numerator, 25);

    CVideoView* view = frame.view();
    view->showRegion(CVideoView::Region::Exposure, false);
    view->showRegion(CVideoView::Region::WhiteBalance, true);
    // A region in the left quarter of the picture as seen.
    view->setRegion(CVideoView::Region::WhiteBalance, {100, 100, 500, 400});
    const QRect picture = view->pictureRect();
    const QPoint inside = picture.topLeft() + QPoint(75, 60); // (300, 240) in video pixels
    QTest::mousePress(view, Qt::LeftButton, {}, inside);
    QTest::mouseMove(view, inside + QPoint(10, 5)); // 40 x 20 video pixels
    QTest::mouseRelease(view, Qt::LeftButton, {}, inside + QPoint(10, 5));

    EXPECT_EQ(view->region(CVideoView::Region::WhiteBalance), (RegionF{140, 120, 540, 420}));
    std::int32_t l = 0, t = 0, r = 0, b = 0;
    ASSERT_EQ(control->GetWhiteBalanceRegion(&l, &t, &r, &b), 0);
    // Flipped left to right, the camera sees it in the right part of its picture.
    EXPECT_EQ(l, 2592 - 540);
    EXPECT_EQ(r, 2592 - 140);
    EXPECT_EQ(t, 120);
    EXPECT_EQ(b, 420);
}

TEST_F(VideoFrameTest, UnpluggedCameraStopsRecordingKeepsTheFileAndDisablesCapture) {
    g_recordPath = m_pictures.path() + u"/unplugged.mkv"_s;
    CVideoFrame& frame = open(u"v4l2:usb-Acme-video-index0"_s);
    ASSERT_TRUE(waitForFrames(3));
    ASSERT_TRUE(frame.router().dispatch(cmd::ID_VIDEO_START_RECORD));
    ASSERT_TRUE(frame.session().recording());
    EXPECT_TRUE(frame.router().query(cmd::ID_VIDEO_STOP_RECORD).enabled);
    EXPECT_FALSE(frame.router().query(cmd::ID_CAMERA_DIALOG_FIRST).enabled);
    QTest::qWait(500);

    m_system->unplug("/dev/video0");
    ASSERT_TRUE(QTest::qWaitFor(
        [&] { return frame.session().state() == CameraSession::State::Lost; }, 5000));
    ASSERT_TRUE(QTest::qWaitFor([&] { return !frame.session().recording(); }, 5000));
    CommandRouter& router = frame.router();
    EXPECT_FALSE(router.query(cmd::ID_VIDEO_CAPTURE_FRAME).enabled);
    EXPECT_FALSE(router.query(cmd::ID_EDIT_COPY).enabled);
    EXPECT_FALSE(router.query(cmd::ID_VIDEO_START_RECORD).enabled);
    EXPECT_FALSE(router.query(cmd::ID_VIDEO_AUTO_CAPTURE).enabled);
    EXPECT_GT(QFileInfo(g_recordPath).size(), 0);
}

TEST_F(VideoFrameTest, ClosingWhileRecordingFinishesTheFileAndTellsTheHostOnce) {
    g_recordPath = m_pictures.path() + u"/closing.mp4"_s;
    CVideoFrame& frame = open(u"demo:colour"_s);
    ASSERT_TRUE(waitForFrames(3));
    ASSERT_TRUE(frame.router().dispatch(cmd::ID_VIDEO_START_RECORD));
    QTest::qWait(700);
    frame.close();
    ASSERT_TRUE(QTest::qWaitFor([&] { return m_frame.isNull(); }, 5000));
    EXPECT_EQ(m_host.destroyed, 1);
    EXPECT_EQ(m_host.settings.value(u"options/VideoTopmost"_s, -1), 0);
    ASSERT_TRUE(QTest::qWaitFor([&] { return QFileInfo(g_recordPath).size() > 0; }, 5000));
}

TEST_F(VideoFrameTest, CameraThatCannotBeOpenedLeavesAnEmptyWindowWithoutCommands) {
    CVideoFrame& frame = open(u"v4l2:no-such-camera"_s);
    ASSERT_TRUE(QTest::qWaitFor(
        [&] { return frame.session().state() == CameraSession::State::Failed; }, 3000));
    EXPECT_TRUE(m_host.current.isEmpty());
    EXPECT_FALSE(frame.router().query(cmd::ID_VIDEO_CAPTURE_FRAME).enabled);
    EXPECT_FALSE(frame.router().query(cmd::ID_VIDEO_START_RECORD).enabled);
    EXPECT_FALSE(frame.router().query(cmd::ID_VIDEO_VIEW_PROPERTIES).enabled);
    EXPECT_TRUE(frame.router().query(cmd::ID_VIDEO_TOPMOST).enabled);
    // Nothing to capture: the command does nothing.
    EXPECT_FALSE(frame.router().dispatch(cmd::ID_VIDEO_CAPTURE_FRAME));
    EXPECT_EQ(QDir(m_pictures.path()).entryList(QDir::Files).size(), 0);
}

} // namespace
