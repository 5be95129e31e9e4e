// CTwain over the real manager and SANE source, against SANE's "test" backend, with the
// window system offscreen. Every acquire sets the resolution (25.4 dpi: about a pixel per
// millimetre of the 200 mm bed).

#include "acquire/CTwain.h"

#include "SaneTestEnvironment.h"
#include "acquire/NativeImage.h"
#include "acquire/TwainManagerLibrary.h"
#include "acquire/TwainSettings.h"

#include <QApplication>
#include <QComboBox>
#include <QDialog>
#include <QElapsedTimer>
#include <QFileInfo>
#include <QListWidget>
#include <QPushButton>
#include <QTimer>
#include <QWidget>

#include <gtest/gtest.h>

#include <cstdlib>
#include <vector>

using namespace lanmira;
using S = CTwain::State;

namespace {

class Recorder final : public CTwain {
public:
    std::vector<S> states;
    std::vector<int> errors;
    std::vector<PackedDib> images;
    std::vector<int> pendingAfter;
    int closeRequests = 0;
    bool closeOnRequest = false;
    bool holdTransfers = false;
    TW_UINT16 pixelType = TWPT_RGB;
    int xferCount = 0;
    std::uint32_t memoryRows = 0;
    std::vector<bool> memoryDone;
    std::vector<std::string> files;
    QString filePath;

    Recorder() { setShowUi(false); }
    ~Recorder() override { ReturnToState(S::ManagerUnloaded); }

    bool runUntil(const std::function<bool()>& done, int ms = 10000) {
        QElapsedTimer timer;
        timer.start();
        while (!done() && timer.elapsed() < ms)
            QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
        return done();
    }

protected:
    bool NegotiateCapabilities() override {
        if (xferCount &&
            !SetCapability(CAP_XFERCOUNT, TWTY_INT16, static_cast<TW_UINT32>(xferCount)))
            return false;
        return SetCapability(ICAP_PIXELTYPE, TWTY_UINT16, pixelType) &&
               SetCapability(ICAP_XRESOLUTION, TWTY_FIX32, twainFixedValue(25.4));
    }
    void TransferImages() override {
        if (!holdTransfers)
            CTwain::TransferImages();
    }
    void OnNativeImage(TW_HANDLE handle) override {
        pendingAfter.push_back(pending().Count);
        images.push_back(dibFromNativeHandle(handle));
    }
    void OnCloseRequest() override {
        ++closeRequests;
        if (closeOnRequest)
            ReturnToState(returnState());
    }
    bool OnMemoryRow(std::uint32_t, const std::uint8_t*, std::uint32_t) override {
        ++memoryRows;
        return true;
    }
    void OnMemoryDone(bool complete) override { memoryDone.push_back(complete); }
    bool SetupFile(TW_SETUPFILEXFER& setup) override {
        std::snprintf(setup.FileName, sizeof setup.FileName, "%s", qPrintable(filePath));
        setup.Format = TWFF_PNG;
        return true;
    }
    void OnFileDone(const TW_SETUPFILEXFER* setup) override {
        files.emplace_back(setup ? setup->FileName : "");
    }
    void OnStateChange(State s) override { states.push_back(s); }
    void OnError(int code) override { errors.push_back(code); }
};

class CTwainTest : public ::testing::Test {
protected:
    void SetUp() override {
        TwainManagerLibrary::setCandidates(
            {QStringLiteral(LANMIRA_BUILD_DIR "/bin/libtwaindsm.so")});
    }
    void TearDown() override {
        TwainManagerLibrary::setCandidates({});
        ::unsetenv("LANMIRA_SANE_OPTIONS");
    }
};

TEST_F(CTwainTest, NoManagerIsErrorZeroInStateOne) {
    TwainManagerLibrary::setCandidates({QStringLiteral("/nonexistent/libtwaindsm.so")});
    Recorder t;
    EXPECT_EQ(t.ConditionCode(), TWCC_SEQERROR);
    EXPECT_FALSE(t.Acquire());
    EXPECT_EQ(t.errors, std::vector<int>{CTwain::ErrorManager});
    EXPECT_EQ(t.state(), S::ManagerUnloaded);
    EXPECT_FALSE(t.SelectSource());
    EXPECT_TRUE(t.selectionFailed());
    // A capability outside state 4 is refused with error 3.
    EXPECT_FALSE(t.SetCapability(ICAP_PIXELTYPE, TWTY_UINT16, TWPT_GRAY));
    EXPECT_EQ(t.errors.back(), CTwain::ErrorCapability);
}

TEST_F(CTwainTest, EveryTransitionUpAndDown) {
    Recorder t;
    ASSERT_TRUE(t.Acquire());
    EXPECT_EQ(t.state(), S::SourceEnabled);
    ASSERT_TRUE(t.runUntil([&] { return t.closeRequests > 0; }));
    // The source asked to close after its one page: the session is back in state 5.
    EXPECT_EQ(t.state(), S::SourceEnabled);
    ASSERT_EQ(t.images.size(), 1u);
    EXPECT_EQ(t.ConditionCode(), TWCC_SUCCESS);
    t.ReturnToState(S::ManagerUnloaded);
    EXPECT_EQ(t.states, (std::vector<S>{S::ManagerLoaded, S::ManagerOpen, S::SourceOpen,
                                        S::SourceEnabled, S::TransferReady, S::Transferring,
                                        S::SourceEnabled, S::SourceEnabled, S::SourceOpen,
                                        S::ManagerOpen, S::ManagerLoaded, S::ManagerUnloaded}));
    EXPECT_TRUE(t.errors.empty());
    EXPECT_EQ(t.ConditionCode(), TWCC_SEQERROR);
}

TEST_F(CTwainTest, ResetFromTransferReady) {
    Recorder t;
    t.holdTransfers = true;
    ASSERT_TRUE(t.Acquire());
    ASSERT_TRUE(t.runUntil([&] { return t.state() == S::TransferReady; }));
    t.ReturnToState(S::SourceOpen);
    EXPECT_EQ(t.state(), S::SourceOpen);
    EXPECT_EQ(std::vector<S>(t.states.end() - 3, t.states.end()),
              (std::vector<S>{S::TransferReady, S::SourceEnabled, S::SourceOpen}));
}

TEST_F(CTwainTest, NativeImagesOfEachPixelType) {
    for (TW_UINT16 type : {TWPT_BW, TWPT_GRAY, TWPT_RGB}) {
        SCOPED_TRACE(type);
        Recorder t;
        t.pixelType = type;
        t.closeOnRequest = true;
        ASSERT_TRUE(t.Acquire());
        ASSERT_TRUE(t.runUntil([&] { return t.state() == S::ManagerUnloaded; }));
        ASSERT_EQ(t.images.size(), 1u);
        const std::uint8_t* h = t.images[0].data();
        EXPECT_EQ(h[14], type == TWPT_BW ? 1 : type == TWPT_GRAY ? 8 : 24);
        EXPECT_GT(dibBlockSize(t.images[0]), 40u);
    }
}

TEST_F(CTwainTest, MemoryAndFileTransfers) {
    {
        Recorder t;
        t.setTransferMechanism(TWSX_MEMORY);
        t.closeOnRequest = true;
        ASSERT_TRUE(t.Acquire());
        ASSERT_TRUE(t.runUntil([&] { return t.state() == S::ManagerUnloaded; }));
        EXPECT_EQ(t.memoryDone, std::vector<bool>{true});
        EXPECT_NEAR(t.memoryRows, 200u, 5u);
    }
    Recorder t;
    t.setTransferMechanism(TWSX_FILE);
    t.filePath = QString::fromStdString((twaintest::scratchRoot() / "scan.png").string());
    t.closeOnRequest = true;
    ASSERT_TRUE(t.Acquire());
    ASSERT_TRUE(t.runUntil([&] { return t.state() == S::ManagerUnloaded; }));
    ASSERT_EQ(t.files.size(), 1u);
    EXPECT_EQ(QString::fromStdString(t.files[0]), t.filePath);
    EXPECT_GT(QFileInfo(t.filePath).size(), 0);
}

TEST_F(CTwainTest, PendingPagesAreTakenOneAfterAnother) {
    ::setenv("LANMIRA_SANE_OPTIONS", "source=Automatic Document Feeder", 1);
    Recorder t;
    t.xferCount = 3;
    t.pixelType = TWPT_GRAY;
    t.closeOnRequest = true;
    ASSERT_TRUE(t.Acquire());
    ASSERT_TRUE(t.runUntil([&] { return t.state() == S::ManagerUnloaded; }));
    EXPECT_EQ(t.pendingAfter, (std::vector<int>{2, 1, 0}));
}

TEST_F(CTwainTest, RefusedCapabilityEndsBeforeEnabling) {
    Recorder t;
    t.pixelType = TWPT_PALETTE; // the scanner has no palette mode
    EXPECT_FALSE(t.Acquire());
    EXPECT_EQ(t.errors, std::vector<int>{CTwain::ErrorSource});
    EXPECT_EQ(t.state(), S::ManagerUnloaded);
    EXPECT_EQ(std::count(t.states.begin(), t.states.end(), S::SourceEnabled), 0);
}

// Answers the manager's chooser once it is up: picks a row and accepts, or cancels.
void answerChooser(int row) {
    QTimer::singleShot(20, [row] {
        for (QWidget* w : QApplication::topLevelWidgets()) {
            auto* dialog = qobject_cast<QDialog*>(w);
            if (!dialog || w->objectName() != QLatin1String("SourceChooser") || !w->isVisible())
                continue;
            auto* list = dialog->findChild<QListWidget*>(QStringLiteral("sourceList"));
            if (row < 0 || !list) {
                dialog->reject();
                return;
            }
            list->setCurrentRow(row);
            dialog->accept();
            return;
        }
        answerChooser(row);
    });
}

TEST_F(CTwainTest, SelectSourceListsScannersAndReturnsToItsState) {
    Recorder t;
    answerChooser(1);
    EXPECT_TRUE(t.SelectSource());
    EXPECT_EQ(t.state(), S::ManagerUnloaded);
    // The choice is the default that the next acquire opens.
    t.closeOnRequest = true;
    ASSERT_TRUE(t.Acquire());
    EXPECT_STREQ(t.sourceIdentity().ProductName, "test:1");
    ASSERT_TRUE(t.runUntil([&] { return t.state() == S::ManagerUnloaded; }));
    answerChooser(-1);
    EXPECT_FALSE(t.SelectSource());
    EXPECT_FALSE(t.selectionFailed());
    EXPECT_EQ(t.state(), S::ManagerUnloaded);
}

TEST_F(CTwainTest, ScanDialogScansAndCancels) {
    QWidget owner;
    Recorder t;
    t.setOwner(&owner);
    t.setShowUi(true);
    t.closeOnRequest = true;
    ASSERT_TRUE(t.Acquire());
    QWidget* dialog = nullptr;
    for (QWidget* w : QApplication::topLevelWidgets())
        if (w->objectName() == QLatin1String("ScanDialog") && w->isVisible())
            dialog = w;
    ASSERT_NE(dialog, nullptr);
    auto* mode = dialog->findChild<QComboBox*>();
    ASSERT_NE(mode, nullptr);
    mode->setCurrentIndex(mode->findText(QStringLiteral("Grey")));
    // Scan is the default button.
    QPushButton* scan = nullptr;
    for (QPushButton* b : dialog->findChildren<QPushButton*>())
        if (b->isDefault())
            scan = b;
    ASSERT_NE(scan, nullptr);
    scan->click();
    ASSERT_TRUE(t.runUntil([&] { return t.state() == S::ManagerUnloaded; }));
    ASSERT_EQ(t.images.size(), 1u);
    EXPECT_EQ(t.images[0].data()[14], 8);

    // Cancelling the dialog is a close request and brings no image.
    Recorder u;
    u.setOwner(&owner);
    u.setShowUi(true);
    u.closeOnRequest = true;
    ASSERT_TRUE(u.Acquire());
    for (QWidget* w : QApplication::topLevelWidgets())
        if (w->objectName() == QLatin1String("ScanDialog") && w->isVisible())
            static_cast<QDialog*>(w)->reject();
    ASSERT_TRUE(u.runUntil([&] { return u.state() == S::ManagerUnloaded; }));
    EXPECT_EQ(u.closeRequests, 1);
    EXPECT_TRUE(u.images.empty());
}

} // namespace
