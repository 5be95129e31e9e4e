#include "FakeCameraControl.h"
#include "camera/pane/CCameraPane.h"
#include "camera/pane/CTaskGroup.h"
#include "camera/pane/CTaskPane.h"
#include "camera/panels/CCameraExposureDlg.h"
#include "camera/panels/CCameraHSBDlg.h"
#include "camera/panels/CCameraHistogramDlg.h"
#include "camera/panels/CCameraLsDlg.h"
#include "camera/panels/CCameraModeDlg.h"
#include "camera/panels/CCameraPreviewDlg.h"
#include "camera/panels/CCameraWBDlg.h"
#include "camera/panels/CExposureTimeDlg.h"
#include "camera/panels/CHistogramGraph.h"
#include "camera/panels/CMFCEditWithReturn.h"
#include "i18n/i18n.h"
#include "platform/Messages.h"
#include "platform/PostedMessage.h"

#include <QAbstractButton>
#include <QApplication>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QRadioButton>
#include <QSlider>
#include <QTest>
#include <QToolButton>

#include <gtest/gtest.h>

#include <map>
#include <memory>

using namespace lanmira;

namespace {

// Stands in for the camera window: keeps what the pane posts to it.
class FrameSpy final : public QObject {
public:
    std::vector<std::tuple<int, quintptr, qintptr>> posts;
    std::vector<std::tuple<int, quintptr, qintptr>> of(int message) const {
        std::vector<std::tuple<int, quintptr, qintptr>> out;
        for (const auto& p : posts)
            if (std::get<0>(p) == message)
                out.push_back(p);
        return out;
    }

protected:
    void customEvent(QEvent* e) override {
        if (auto* m = PostedMessage::from(e))
            posts.emplace_back(m->message(), m->wParam(), m->lParam());
    }
};

void settle() {
    QCoreApplication::processEvents();
    QCoreApplication::processEvents();
}

template <class T> T* child(QWidget* panel, int id) {
    return panel->findChild<T*>(QStringLiteral("id%1").arg(id));
}

class CameraPaneTest : public ::testing::Test {
protected:
    static void SetUpTestSuite() {
        i18n_init(QString::fromUtf8(LANMIRA_BUILD_DIR "/share/lanmira/i18n"), 0);
    }
    static void TearDownTestSuite() { i18n_reset(); }

    std::unique_ptr<CCameraPane> makePane() {
        return std::make_unique<CCameraPane>(
            &frame,
            [this](const QString& key, int def) {
                auto it = store.find(key);
                return it == store.end() ? def : it->second;
            },
            [this](const QString& key, int value) { store[key] = value; });
    }
    template <class T> T* panel(CCameraPane& pane, int group) {
        return static_cast<T*>(pane.panel(group));
    }

    FrameSpy frame;
    FakeCameraControl camera;
    std::map<QString, int> store;
};

} // namespace

TEST_F(CameraPaneTest, AttachRunsInGroupOrderAndReportsTheRegions) {
    auto pane = makePane();
    pane->setGroupOpen(kGroupWhiteBalance, true);
    settle();
    frame.posts.clear();
    pane->SetCamera(nullptr, &camera, 1);
    // Each panel: option 0, then the colour question, then its own reads; ten panels.
    ASSERT_EQ(camera.count("SetCameraOption"), 10);
    ASSERT_EQ(camera.count("IsColour"), 10);
    EXPECT_EQ(camera.calls[0], "SetCameraOption(0)");
    EXPECT_EQ(camera.calls[1], "IsColour");
    EXPECT_EQ(camera.calls[2], "GetResolutionCount"); // the resolution panel comes first
    const auto firstHistogramRead =
        std::find(camera.calls.begin(), camera.calls.end(), "GetLevelRange");
    const auto firstExposureRead =
        std::find(camera.calls.begin(), camera.calls.end(), "GetExposureGainRange");
    EXPECT_LT(firstExposureRead, firstHistogramRead);
    settle();
    using Post = std::tuple<int, quintptr, qintptr>;
    EXPECT_EQ(frame.of(msg::VIDEO_SHOW_REGION),
              (std::vector<Post>{{msg::VIDEO_SHOW_REGION, 1, 1}, {msg::VIDEO_SHOW_REGION, 0, 0}}));

    // Opening the exposure group shows its region; nothing else is reported again.
    frame.posts.clear();
    pane->taskPane()->group(kGroupExposure)->captionButton()->click();
    settle();
    EXPECT_EQ(frame.of(msg::VIDEO_SHOW_REGION),
              (std::vector<Post>{{msg::VIDEO_SHOW_REGION, 1, 0}}));
    pane->SetCamera(nullptr, nullptr, 0);
}

TEST_F(CameraPaneTest, FirstStartOpensOnlyResolutionAndClosingStoresTheGroups) {
    {
        auto pane = makePane();
        EXPECT_TRUE(pane->groupOpen(kGroupResolution));
        for (int g = 1; g < kGroupCount; ++g)
            EXPECT_FALSE(pane->groupOpen(g)) << g;
        pane->taskPane()->group(kGroupHistogram)->captionButton()->click();
    }
    EXPECT_EQ(store[QStringLiteral("9")], 0);
    EXPECT_EQ(store[QStringLiteral("1")], 1);
    auto again = makePane();
    EXPECT_TRUE(again->groupOpen(kGroupHistogram));
    EXPECT_FALSE(again->groupOpen(kGroupExposure));
}

TEST_F(CameraPaneTest, ColourAndMonochromeEnablingMatrix) {
    for (bool colour : {true, false}) {
        SCOPED_TRACE(colour ? "colour" : "monochrome");
        FakeCameraControl cam;
        cam.colour = colour;
        auto pane = makePane();
        pane->setGroupOpen(kGroupWhiteBalance, true);
        settle();
        frame.posts.clear();
        pane->SetCamera(nullptr, &cam, 1);
        settle();
        auto* wb = pane->panel(kGroupWhiteBalance);
        auto* hsb = pane->panel(kGroupColourAdjust);
        auto* mode = pane->panel(kGroupColourMode);
        auto* histogram = panel<CCameraHistogramDlg>(*pane, kGroupHistogram);
        EXPECT_EQ(child<QSlider>(wb, CCameraWBDlg::kTemperature)->isEnabled(), colour);
        EXPECT_EQ(child<QAbstractButton>(wb, CCameraWBDlg::kOnePush)->isEnabled(), colour);
        EXPECT_EQ(child<QSlider>(hsb, CCameraHSBDlg::kGamma)->isEnabled(), colour);
        EXPECT_EQ(child<QRadioButton>(mode, CCameraModeDlg::kGrey)->isEnabled(), colour);
        EXPECT_EQ(child<QRadioButton>(mode, CCameraModeDlg::kGrey)->isChecked(), !colour);
        EXPECT_EQ(histogram->channelList()->count(), colour ? 4 : 1);
        EXPECT_EQ(histogram->channel(), colour ? 4 : 3);
        // The white balance region shows only for colour, though its group is open.
        EXPECT_EQ(std::get<1>(frame.of(msg::VIDEO_SHOW_REGION).at(0)), colour ? 1u : 0u);
        if (colour) {
            EXPECT_EQ(child<QSlider>(hsb, CCameraHSBDlg::kHue)->value(), 5);
            EXPECT_EQ(child<QSlider>(wb, CCameraWBDlg::kTemperature)->value(), 5000);
        }
        if (!colour) {
            // Defaults shown, never written to a monochrome camera.
            EXPECT_EQ(child<QSlider>(hsb, CCameraHSBDlg::kSaturation)->value(), 128);
            EXPECT_EQ(child<QLabel>(hsb, 1140)->text(), QStringLiteral("1.00"));
            EXPECT_EQ(cam.count("SetSaturation") + cam.count("SetTempTint") +
                          cam.count("SetMonochrome"),
                      0);
        }
        pane->SetCamera(nullptr, nullptr, 0);
    }
}

TEST_F(CameraPaneTest, StoppingTheCameraDisablesEveryPanelAndRemovesEveryCallback) {
    auto pane = makePane();
    pane->SetCamera(nullptr, &camera, 1);
    EXPECT_TRUE(camera.exposureCb && camera.histogramCb && camera.notifyCb);
    const ReceiverToken exposureToken = ReceiverRegistry::fromContext(camera.exposureCtx);
    pane->SetCamera(nullptr, nullptr, 0);
    EXPECT_FALSE(camera.anyCallback());
    for (int g = 0; g < kGroupCount; ++g) {
        for (QWidget* w : pane->panel(g)->findChildren<QWidget*>()) {
            if (qobject_cast<QAbstractSlider*>(w) || qobject_cast<QAbstractButton*>(w) ||
                qobject_cast<QComboBox*>(w) || qobject_cast<QLineEdit*>(w)) {
                EXPECT_FALSE(w->isEnabled()) << g << " " << w->objectName().toStdString();
            }
        }
    }
    // A callback already on its way when the window went does nothing.
    pane.reset();
    EXPECT_FALSE(ReceiverRegistry::alive(exposureToken));
    EXPECT_FALSE(ReceiverRegistry::post(exposureToken, msg::EXPOSURE_CHANGED));
}

TEST_F(CameraPaneTest, SlidersWriteTheCameraAndOnePushResultIsNotWrittenBack) {
    auto pane = makePane();
    pane->SetCamera(nullptr, &camera, 1);
    auto* wb = pane->panel(kGroupWhiteBalance);
    settle();
    camera.clear();
    child<QSlider>(wb, CCameraWBDlg::kTint)->setValue(1500);
    EXPECT_EQ(camera.calls, (std::vector<std::string>{"SetTempTint(5000,1500)"}));

    child<QAbstractButton>(wb, CCameraWBDlg::kOnePush)->click();
    ASSERT_TRUE(camera.wbCb);
    camera.clear();
    camera.wbCb(4200, 1100, camera.wbCtx); // as from the library's thread
    settle();
    EXPECT_EQ(child<QSlider>(wb, CCameraWBDlg::kTemperature)->value(), 4200);
    EXPECT_EQ(child<QLabel>(wb, CCameraWBDlg::kTintText)->text(), QStringLiteral("1100"));
    EXPECT_TRUE(camera.calls.empty());

    auto* hsb = pane->panel(kGroupColourAdjust);
    child<QSlider>(hsb, CCameraHSBDlg::kGamma)->setValue(20);
    EXPECT_EQ(camera.gamma, 20);
    EXPECT_EQ(child<QLabel>(hsb, 1140)->text(), QStringLiteral("0.20"));
    pane->SetCamera(nullptr, nullptr, 0);
}

TEST_F(CameraPaneTest, ExposurePanelFollowsTheCameraAndTheTimeDialogRefusesBadText) {
    camera.autoExposure = 1;
    auto pane = makePane();
    pane->SetCamera(nullptr, &camera, 1);
    auto* exposure = panel<CCameraExposureDlg>(*pane, kGroupExposure);
    auto* ls = pane->panel(kGroupLightSource);
    settle();
    EXPECT_FALSE(child<QSlider>(exposure, CCameraExposureDlg::kTime)->isEnabled());
    EXPECT_TRUE(child<QSlider>(exposure, CCameraExposureDlg::kTarget)->isEnabled());
    // Auto exposure on: light source fixed, its check kept.
    EXPECT_FALSE(child<QRadioButton>(ls, CCameraLsDlg::kAc50)->isEnabled());
    EXPECT_TRUE(child<QRadioButton>(ls, CCameraLsDlg::kAc50)->isChecked());

    camera.time = 64000;
    camera.realTime = 64000;
    camera.gain = 300;
    camera.exposureCb(camera.exposureCtx);
    settle();
    EXPECT_EQ(exposure->currentTime(), 64000u);
    EXPECT_EQ(child<QAbstractButton>(exposure, CCameraExposureDlg::kTimeButton)->text(),
              QStringLiteral("64.000ms"));
    EXPECT_EQ(child<QLabel>(exposure, CCameraExposureDlg::kGainText)->text(),
              QStringLiteral("3.00"));

    child<QAbstractButton>(exposure, CCameraExposureDlg::kAuto)->click();
    settle();
    EXPECT_EQ(camera.autoExposure, 0);
    EXPECT_TRUE(child<QSlider>(exposure, CCameraExposureDlg::kTime)->isEnabled());
    EXPECT_TRUE(child<QRadioButton>(ls, CCameraLsDlg::kAc60)->isEnabled());

    exposure->openTimeDialog();
    CExposureTimeDlg* dialog = exposure->timeDialog();
    ASSERT_TRUE(dialog);
    EXPECT_EQ(dialog->edit()->text(), QStringLiteral("64.000"));
    for (const auto& [text, name] :
         {std::pair{"", "ids_calvora_camerapane_timeempty"},
          std::pair{"12.5x", "ids_calvora_camerapane_timeinvalid"},
          std::pair{"5000", "ids_calvora_camerapane_timeinoutofrange"}}) {
        dialog->edit()->setText(QString::fromUtf8(text));
        dialog->accept();
        EXPECT_TRUE(dialog->isVisible()) << text;
        EXPECT_EQ(dialog->lastMessage(), i18n_stringW(name));
    }
    for (auto* box : dialog->findChildren<QDialog*>())
        box->close();
    camera.clear();
    dialog->edit()->setText(QStringLiteral("12.5"));
    dialog->accept();
    settle();
    EXPECT_EQ(camera.time, 12500u);
    EXPECT_EQ(exposure->currentTime(), 12500u);
    pane->SetCamera(nullptr, nullptr, 0);
}

TEST_F(CameraPaneTest, HistogramEditsAndMarkersSetTheLevels) {
    auto pane = makePane();
    pane->SetCamera(nullptr, &camera, 1);
    auto* h = panel<CCameraHistogramDlg>(*pane, kGroupHistogram);
    h->resize(232, h->height());
    EXPECT_EQ(h->lowEdit()->text(), QStringLiteral("10"));
    EXPECT_EQ(h->highEdit()->text(), QStringLiteral("220"));

    h->lowEdit()->setText(QStringLiteral("300")); // clamped to 255, swapped with the high edge
    QTest::keyClick(h->lowEdit(), Qt::Key_Return);
    settle();
    for (std::size_t c = 0; c < 3; ++c) {
        EXPECT_EQ(camera.low[c], 220);
        EXPECT_EQ(camera.high[c], 255);
    }
    h->highEdit()->setText(QStringLiteral("x"));
    camera.clear();
    QTest::keyClick(h->highEdit(), Qt::Key_Return);
    settle();
    EXPECT_EQ(camera.count("SetLevelRange"), 0);

    h->chooseEntry(2); // red
    h->defaultLevels();
    EXPECT_EQ(camera.low, (std::array<std::uint16_t, 4>{0, 0, 0, 0}));
    EXPECT_EQ(camera.high[3], 255);
    // Drag red's high marker onto its low marker: they end one apart.
    CHistogramGraph* graph = h->graph();
    const QRect area = graph->rect();
    const int width = area.width();
    const int highX = width; // level 255
    QTest::mousePress(graph, Qt::LeftButton, {}, QPoint(highX - 1, 10));
    QTest::mouseMove(graph, QPoint(0, 10));
    QTest::mouseRelease(graph, Qt::LeftButton, {}, QPoint(0, 10));
    EXPECT_EQ(camera.low[2], 0);
    EXPECT_EQ(camera.high[2], 1);
    // The grey channel cannot be dragged while the output is colour: nothing is written.
    camera.clear();
    graph->picture().channel = HistogramLevels::kGrey;
    QTest::mousePress(graph, Qt::LeftButton, {}, QPoint(1, 10));
    QTest::mouseRelease(graph, Qt::LeftButton, {}, QPoint(width / 2, 10));
    EXPECT_EQ(camera.count("SetLevelRange"), 0);
    pane->SetCamera(nullptr, nullptr, 0);
}

TEST_F(CameraPaneTest, ResolutionListFollowsRecordingAndPostsOnlyRealChanges) {
    auto pane = makePane();
    pane->SetCamera(nullptr, &camera, 1);
    auto* preview = panel<CCameraPreviewDlg>(*pane, kGroupResolution);
    QComboBox* list = preview->resolutionList();
    ASSERT_EQ(list->count(), 3);
    EXPECT_EQ(list->currentText(), QStringLiteral("1296 * 972"));
    EXPECT_TRUE(list->isEnabled());
    frame.posts.clear();
    list->setCurrentIndex(1);
    list->setCurrentIndex(2);
    settle();
    using Post = std::tuple<int, quintptr, qintptr>;
    EXPECT_EQ(frame.of(msg::VIDEO_SET_RESOLUTION),
              (std::vector<Post>{{msg::VIDEO_SET_RESOLUTION, 2, 0}}));

    pane->SetStateFlag(true, CCameraBaseDlg::kRecording);
    EXPECT_FALSE(list->isEnabled());
    EXPECT_TRUE(preview->recordShowsStop());
    pane->SetStateFlag(false, CCameraBaseDlg::kRecording);
    EXPECT_TRUE(list->isEnabled());
    EXPECT_FALSE(preview->recordShowsStop());

    child<QAbstractButton>(preview, CCameraPreviewDlg::kSnap)->click();
    settle();
    EXPECT_EQ(frame.of(msg::VIDEO_RUN_COMMAND),
              (std::vector<Post>{{msg::VIDEO_RUN_COMMAND, 32861, 0}}));
    pane->SetCamera(nullptr, nullptr, 0);
}

TEST_F(CameraPaneTest, FailedReadsLeaveControlsAndMissingLightSourceClearsIt) {
    auto pane = makePane();
    pane->SetCamera(nullptr, &camera, 1);
    auto* hsb = pane->panel(kGroupColourAdjust);
    auto* ls = pane->panel(kGroupLightSource);
    camera.failReads = true;
    camera.hue = 90;
    camera.hasLightSource = false;
    pane->SetCamera(nullptr, &camera, 1);
    EXPECT_EQ(child<QSlider>(hsb, CCameraHSBDlg::kHue)->value(), 5);
    for (int id : {CCameraLsDlg::kAc50, CCameraLsDlg::kAc60, CCameraLsDlg::kDc}) {
        EXPECT_FALSE(child<QRadioButton>(ls, id)->isChecked());
        EXPECT_FALSE(child<QRadioButton>(ls, id)->isEnabled());
    }
    pane->SetCamera(nullptr, nullptr, 0);
}

// The pane follows the dock's width: anchored controls move, the panel is redone in one pass.
TEST_F(CameraPaneTest, PanelsFollowThePaneWidth) {
    auto pane = makePane();
    pane->setGroupOpen(kGroupExposure, true);
    pane->resize(400, 600);
    pane->show();
    settle();
    auto* exposure = pane->panel(kGroupExposure);
    const int w = exposure->width();
    ASSERT_GT(w, 232);
    EXPECT_EQ(exposure->controlRect(CCameraExposureDlg::kTimeButton).right() + 1, 224 + w - 232);
    EXPECT_EQ(exposure->controlRect(CCameraExposureDlg::kDefaults).left(), (w - 92) / 2);
}
