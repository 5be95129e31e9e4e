#include "app/CPellanoApp.h"

#include "../../tools/ProfileWriter.h"
#include "../libs/dscap/FakeV4l2System.h"
#include "acquire/ClipboardImage.h"
#include "app/CAboutDlg.h"
#include "app/ProductProfile.h"
#include "app/SingleInstance.h"
#include "browser/BrowserList.h"
#include "browser/CMainFrame1.h"
#include "dscap/core/DemoProvider.h"
#include "dscap/core/Library.h"
#include "dscap/v4l2/V4l2Provider.h"
#include "platform/CommandIds.h"
#include "platform/CommandRouter.h"
#include "platform/Messages.h"
#include "platform/PostedMessage.h"
#include "viewer/CMainFrame2.h"
#include "viewer/CView2.h"
#include "viewer/ViewerReceiver.h"

#include <QAbstractButton>
#include <QApplication>
#include <QClipboard>
#include <QDir>
#include <QFile>
#include <QImage>
#include <QLabel>
#include <QMenu>
#include <QMessageBox>
#include <QMimeData>
#include <QProcess>
#include <QSysInfo>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>

#include <gtest/gtest.h>

#include <fstream>

using namespace lanmira;
using namespace Qt::StringLiterals;

namespace {

const std::string kDefaultXml =
    R"(<lanmira><oem company="Vornalt" app="Lanmira" url="https://vornalt.example/lanmira" display="Vornalt Lanmira"/></lanmira>)";

// A fake installation: <tmp>/prefix/bin/lanmira (never run), its profile in <tmp>/prefix,
// and the settings under <tmp>/config.
class AppFixture : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(m_dir.isValid());
        QDir().mkpath(prefix() + u"/bin"_s);
        qputenv("XDG_CONFIG_HOME", configHome().toUtf8());
        qputenv("XDG_CACHE_HOME", (m_dir.path() + u"/cache"_s).toUtf8());
    }

    QString prefix() const { return m_dir.path() + u"/prefix"_s; }
    QString configHome() const { return m_dir.path() + u"/config"_s; }
    QString exe() const { return prefix() + u"/bin/lanmira"_s; }

    void writeProfile(const std::string& xml) {
        std::string error;
        auto writer =
            ProfileWriter::fromPemFile(LANMIRA_SOURCE_DIR "/tools/default-profile-key.pem", error);
        ASSERT_TRUE(writer) << error;
        std::vector<std::uint8_t> exml;
        ASSERT_TRUE(writer->write({reinterpret_cast<const std::uint8_t*>(xml.data()), xml.size()},
                                  exml, error))
            << error;
        std::ofstream out(QString(prefix() + u"/lanmira.exml"_s).toStdString(), std::ios::binary);
        out.write(reinterpret_cast<const char*>(exml.data()),
                  static_cast<std::streamsize>(exml.size()));
    }

    void writeSettings(const QString& relative, const QByteArray& text) {
        const QString path = configHome() + u'/' + relative;
        QDir().mkpath(QFileInfo(path).absolutePath());
        QFile f(path);
        ASSERT_TRUE(f.open(QIODevice::WriteOnly));
        f.write(text);
    }

    QString readSettings(const QString& relative) const {
        QFile f(configHome() + u'/' + relative);
        return f.open(QIODevice::ReadOnly) ? QString::fromUtf8(f.readAll()) : QString();
    }

    CPellanoApp::Options options() {
        return {.path = {}, .executablePath = exe(), .reportFailure = [this](const QString& t) {
                    m_failures << t;
                }};
    }

    // Writes the default profile and starts the program, opening `path` if given.
    std::unique_ptr<CPellanoApp> start(const QString& path = {}) {
        writeProfile(kDefaultXml);
        CPellanoApp::Options opts = options();
        opts.path = path;
        auto app = std::make_unique<CPellanoApp>(opts);
        return app->initInstance() ? std::move(app) : nullptr;
    }

    QTemporaryDir m_dir;
    QStringList m_failures;
};

// Presses `button` in the next message box; counts the boxes seen.
void answerNextBox(QMessageBox::StandardButton button, int* seen = nullptr) {
    QTimer::singleShot(0, [=] {
        if (auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget())) {
            if (seen)
                ++*seen;
            box->button(button)->click();
        }
    });
}

// 2 x 2, 16 bits with 5-6-5 bit fields, the form some programs put on the clipboard: red,
// green on the bottom row; blue, white on top.
const QByteArray kBitFieldDib = QByteArray::fromHex(
    "28000000020000000200000001001000030000000000000000000000000000000000000000000000"
    "00f80000e00700001f00000000f8e0071f00ffff");

} // namespace

TEST_F(AppFixture, StartsInBrowserModeWithDefaultsOnACleanAccount) {
    const auto app = start();
    ASSERT_TRUE(app);
    EXPECT_TRUE(m_failures.isEmpty());
    EXPECT_EQ(app->mode(), 0u);
    EXPECT_TRUE(app->browserFrame()->isVisible());
    EXPECT_FALSE(app->viewerFrame()->isVisible());
    EXPECT_EQ(app->mainWindow(), app->browserFrame());
    EXPECT_EQ(app->programFolder(), prefix() + u"/bin/"_s);
    EXPECT_EQ(app->company(), u"Vornalt"_s);
    EXPECT_EQ(app->cameraModule(), u"orbicam.dll"_s);
    EXPECT_EQ(app->secondCameraModule(), u"orbinam.dll"_s);
    EXPECT_EQ(app->slideInterval(), 2000u);
    EXPECT_TRUE(app->promptFlag());
    EXPECT_TRUE(app->previewFlag());
    EXPECT_EQ(app->captureTitle(), u"Lanmira"_s);
    EXPECT_EQ(app->captureExtension(), u"jpg"_s);
    EXPECT_NE(app->captureFormat(), 0);
    EXPECT_TRUE(app->captureFormatList().contains(u"tif"_s));
    // The demo camera is always there, after any real one.
    ASSERT_FALSE(app->cameras().empty());
    EXPECT_EQ(app->cameras().back().id, u"demo:colour"_s);
    EXPECT_EQ(app->exitInstance(0), 0);

    const QString written = readSettings(u"Vornalt/Lanmira/Lanmira.conf"_s);
    // Shutdown writes the five values in their order.
    const qsizetype slide = written.indexOf(u"slide=2000"_s);
    const qsizetype preview = written.indexOf(u"Preview=1"_s);
    const qsizetype prompt = written.indexOf(u"Prompt=1"_s);
    EXPECT_GE(slide, 0);
    EXPECT_GT(preview, slide);
    EXPECT_GT(prompt, preview);
    EXPECT_TRUE(written.contains(u"title=Lanmira"_s));
    EXPECT_TRUE(written.contains(u"ext=jpg"_s));
}

TEST_F(AppFixture, StoredValuesAreClampedWhenReadAndWrittenBackClamped) {
    writeProfile(kDefaultXml);
    // The stored and used interval, then the stored extension, the one used and its format.
    const std::tuple<const char*, std::uint32_t, const char*, const char*, int> rows[] = {
        {"0", 1000, "", "jpg", 2},          {"500", 1000, "PNG", "PNG", 3},
        {"5000000", 3600000, "", "jpg", 2}, {"-1", 3600000, "", "jpg", 2},
        {"2500", 2500, "", "jpg", 2},       {"nonsense", 2000, "xyz", "xyz", 0},
    };
    for (const auto& [stored, used, ext, usedExt, format] : rows) {
        SCOPED_TRACE(stored);
        writeSettings(u"Vornalt/Lanmira/Lanmira.conf"_s, QByteArray("[options]\nslide=") + stored +
                                                             "\nPrompt=0\n[titleext]\next=" + ext +
                                                             "\ntitle=Slide\n");
        CPellanoApp app(options());
        ASSERT_TRUE(app.initInstance());
        EXPECT_EQ(app.slideInterval(), used);
        EXPECT_FALSE(app.promptFlag());
        EXPECT_EQ(app.captureExtension(), QString::fromUtf8(usedExt));
        EXPECT_EQ(app.captureFormat(), format);
        EXPECT_EQ(app.captureTitle(), u"Slide"_s);
        app.exitInstance(0);
        EXPECT_TRUE(
            readSettings(u"Vornalt/Lanmira/Lanmira.conf"_s).contains(u"slide=%1"_s.arg(used)));
    }
}

TEST_F(AppFixture, ProfileFaultsAreReportedAndNothingIsWritten) {
    for (const bool present : {false, true}) {
        if (present)
            writeProfile("<other/>");
        CPellanoApp app(options());
        EXPECT_FALSE(app.initInstance());
        app.exitInstance(0);
    }
    EXPECT_EQ(m_failures,
              QStringList({u"The exml file is missing."_s, u"Bad syntax in the exml file ."_s}));
    EXPECT_FALSE(QDir(configHome()).exists());
}

TEST_F(AppFixture, ClosingOneFrameClosesTheOtherAndEndsTheEventLoop) {
    const auto app = start();
    ASSERT_TRUE(app);
    bool quitByApp = false;
    QTimer::singleShot(0, [&] { app->browserFrame()->close(); });
    // A hang here would mean the viewer frame was never asked to close.
    QTimer::singleShot(10000, [&] { QCoreApplication::exit(99); });
    quitByApp = QApplication::exec() == 0;
    EXPECT_TRUE(quitByApp);
    EXPECT_FALSE(app->browserFrame()->isVisible());
    EXPECT_FALSE(app->viewerFrame()->isVisible());
    app->exitInstance(0);
}

TEST_F(AppFixture, ExitAndAboutAreAlwaysAvailableAndUnknownCommandsAreNot) {
    const auto app = start();
    ASSERT_TRUE(app);
    CommandRouter& router = app->browserFrame()->router();
    EXPECT_TRUE(router.query(cmd::ID_APP_EXIT).enabled);
    EXPECT_TRUE(router.query(cmd::ID_APP_ABOUT).enabled);
    EXPECT_FALSE(router.query(cmd::ID_FILE_SAVE).enabled);
    EXPECT_FALSE(router.dispatch(cmd::ID_FILE_SAVE));
    EXPECT_TRUE(app->viewerFrame()->router().query(cmd::ID_APP_EXIT).enabled);
    app->exitInstance(0);
}

TEST_F(AppFixture, ModesTakeTurnsInOnePlaceAndAChangedPictureMayKeepTheViewer) {
    const auto app = start();
    ASSERT_TRUE(app);
    CMainFrame1* browser = app->browserFrame();
    CMainFrame2* viewer = app->viewerFrame();
    browser->setGeometry(40, 50, 700, 500);

    ASSERT_TRUE(app->switchMode(1));
    EXPECT_EQ(app->mode(), 1u);
    EXPECT_TRUE(viewer->isVisible());
    EXPECT_FALSE(browser->isVisible());
    EXPECT_EQ(viewer->geometry(), QRect(40, 50, 700, 500));
    EXPECT_EQ(BrowserList::instance().stopRequest.load(), BrowserList::kStopAbandon);
    EXPECT_TRUE(ViewerReceiver::isSet());
    EXPECT_TRUE(app->switchMode(1));

    // An untitled, changed picture: Cancel keeps the viewer, No lets it go.
    viewer->view()->adopt(dibFromBytes(kBitFieldDib));
    int boxes = 0;
    answerNextBox(QMessageBox::Cancel, &boxes);
    EXPECT_FALSE(app->switchMode(0));
    EXPECT_EQ(app->mode(), 1u);
    EXPECT_TRUE(viewer->isVisible());
    answerNextBox(QMessageBox::No, &boxes);
    EXPECT_TRUE(app->switchMode(0));
    EXPECT_EQ(boxes, 2);
    EXPECT_TRUE(browser->isVisible());
    EXPECT_FALSE(viewer->isVisible());

    // With the prompt flag off, nobody is asked.
    browser->router().dispatch(cmd::ID_PROMPT_TO_SAVE);
    EXPECT_FALSE(browser->router().query(cmd::ID_PROMPT_TO_SAVE).checked);
    ASSERT_TRUE(app->switchMode(1));
    answerNextBox(QMessageBox::Cancel, &boxes);
    EXPECT_TRUE(app->switchMode(0));
    QApplication::processEvents();
    EXPECT_EQ(boxes, 2);
    app->exitInstance(0);
}

TEST_F(AppFixture, PasteAsNewFileTakesOnlyAPictureAndShowsItUntitledIn24Bits) {
    const auto app = start();
    ASSERT_TRUE(app);
    CommandRouter& router = app->browserFrame()->router();
    QApplication::clipboard()->setText(u"no picture"_s);
    EXPECT_FALSE(router.query(cmd::ID_PASTE_AS_NEW_FILE).enabled);

    auto* mime = new QMimeData;
    mime->setData(u"image/bmp"_s, kBitFieldDib);
    QApplication::clipboard()->setMimeData(mime);
    ASSERT_TRUE(router.query(cmd::ID_PASTE_AS_NEW_FILE).enabled);
    ASSERT_TRUE(router.dispatch(cmd::ID_PASTE_AS_NEW_FILE));
    EXPECT_EQ(app->mode(), 1u);
    const ImageDocument& doc = app->viewerFrame()->view()->document();
    ASSERT_TRUE(QTest::qWaitFor([&] { return doc.hasPicture(); }, 5000));
    EXPECT_TRUE(doc.filePath().isEmpty());
    EXPECT_TRUE(doc.modified());
    const QByteArray shown = dibToBytes(doc.image());
    EXPECT_EQ(shown[14], char(24));                                 // bit count
    EXPECT_EQ(shown[16], char(0));                                  // compression
    EXPECT_EQ(shown.mid(40, 6), QByteArray("\0\0\xFF\0\xFF\0", 6)); // red, green
    app->exitInstance(0);
}

TEST_F(AppFixture, AFileOnTheCommandLineOpensInTheViewerWithItsFolderListed) {
    const QString folder = m_dir.path() + u"/pictures"_s;
    QDir().mkpath(folder);
    for (const char* name : {"a.bmp", "b.bmp", "c.bmp"}) {
        QImage image(8, 6, QImage::Format_RGB32);
        image.fill(Qt::blue);
        ASSERT_TRUE(image.save(folder + u'/' + QString::fromLatin1(name), "BMP"));
    }
    const QString path = folder + u"/b.bmp"_s;
    const auto app = start(path);
    ASSERT_TRUE(app);
    const ImageDocument& doc = app->viewerFrame()->view()->document();
    CommandRouter& router = app->viewerFrame()->router();
    // The folder is listed before the shown file is looked up in it, so both steps work.
    ASSERT_TRUE(QTest::qWaitFor(
        [&] { return doc.hasPicture() && router.query(cmd::ID_IMAGE_NEXT).enabled; }, 10000));
    EXPECT_EQ(app->mode(), 1u);
    EXPECT_EQ(doc.filePath(), path);
    EXPECT_EQ(BrowserList::instance().items().size(), 3u);
    EXPECT_TRUE(router.query(cmd::ID_IMAGE_PREVIOUS).enabled);
    EXPECT_FALSE(app->browserFrame()->isVisible());
    app->exitInstance(0);
}

TEST_F(AppFixture, ClosingWithAChangedPictureAsksOnceAndCancelKeepsTheProgram) {
    const auto app = start();
    ASSERT_TRUE(app);
    app->viewerFrame()->view()->adopt(dibFromBytes(kBitFieldDib));
    int boxes = 0;
    answerNextBox(QMessageBox::Cancel, &boxes);
    EXPECT_FALSE(app->browserFrame()->close());
    EXPECT_TRUE(app->browserFrame()->isVisible());

    // No: both frames go, and the hidden one does not ask again.
    QTimer::singleShot(0, [&] {
        answerNextBox(QMessageBox::No, &boxes);
        app->browserFrame()->close();
    });
    QTimer watchdog; // gone with the test, so it cannot end a later test's event loop
    QObject::connect(&watchdog, &QTimer::timeout, [] { QCoreApplication::exit(99); });
    watchdog.start(10000);
    EXPECT_EQ(QApplication::exec(), 0);
    EXPECT_EQ(boxes, 2);
    EXPECT_FALSE(app->viewerFrame()->isVisible());
    app->exitInstance(0);
}

TEST(AboutBox, ShowsVersionAndBuildDate) {
    CAboutDlg about;
    const auto* version = about.findChild<QLabel*>(u"version"_s);
    const auto* build = about.findChild<QLabel*>(u"buildDate"_s);
    ASSERT_TRUE(version && build);
    EXPECT_TRUE(version->text().contains(u"1.1.4004"_s));
    EXPECT_TRUE(build->text().contains(CAboutDlg::buildDate()));
    EXPECT_FALSE(CAboutDlg::buildDate().isEmpty());
}

TEST(SingleInstanceLock, SecondHolderIsRefusedAndADeadOwnersLockIsTakenOver) {
    QTemporaryDir dir;
    {
        SingleInstance first(dir.path());
        SingleInstance second(dir.path());
        ASSERT_TRUE(first.acquire());
        EXPECT_FALSE(second.acquire());
    }
    SingleInstance again(dir.path());
    EXPECT_TRUE(again.acquire());

    // A lock file left by a process that no longer runs.
    QTemporaryDir stale;
    QProcess done;
    done.start(u"true"_s);
    ASSERT_TRUE(done.waitForFinished());
    const qint64 deadPid = done.processId() ? done.processId() : 999999;
    SingleInstance probe(stale.path());
    QFile f(probe.lockPath());
    ASSERT_TRUE(f.open(QIODevice::WriteOnly));
    f.write(QByteArray::number(deadPid) + "\nlanmira\n" + QSysInfo::machineHostName().toUtf8() +
            "\n");
    f.close();
    EXPECT_TRUE(probe.acquire());
}

// The camera list follows the capture devices; a camera window stands beside the mode's
// frame, greys the list, and outlives a closed browser until it is closed itself.
TEST_F(AppFixture, CameraWindowStandsBesideTheModesAndEndsTheProgramLast) {
    auto system = std::make_shared<dscap::v4l2::FakeV4l2System>();
    std::vector<std::unique_ptr<dscap::CameraProvider>> providers;
    providers.push_back(dscap::v4l2::makeV4l2Provider(system));
    providers.push_back(std::make_unique<dscap::DemoProvider>(dscap::DemoOptions{}, false));
    dscap::Library::instance().setProviders(std::move(providers));
    const auto app = start();
    ASSERT_TRUE(app);
    ASSERT_EQ(app->cameras().size(), 1u);
    EXPECT_EQ(app->cameras()[0].id, u"demo:colour"_s);

    // A camera plugged in is listed first once the browser frame has enumerated again.
    system->addNode(dscap::v4l2::FakeV4l2System::webcam("/dev/video0", "usb-Acme-video-index0"));
    postMessage(app->browserFrame(), msg::ENUMERATE_CAMERAS);
    ASSERT_TRUE(QTest::qWaitFor([&] { return app->cameras().size() == 2; }, 3000));
    EXPECT_EQ(app->cameras()[1].id, u"demo:colour"_s);

    CommandRouter& router = app->browserFrame()->router();
    EXPECT_TRUE(router.query(cmd::ID_CAMERA_FIRST + 1).enabled);
    EXPECT_FALSE(router.query(cmd::ID_CAMERA_FIRST + 2).enabled);
    ASSERT_TRUE(router.dispatch(cmd::ID_CAMERA_FIRST + 1));
    ASSERT_TRUE(app->cameraFrame());
    ASSERT_TRUE(QTest::qWaitFor([&] { return app->currentCameraId() == u"demo:colour"_s; }, 5000));
    // A second camera cannot be opened while one is.
    EXPECT_FALSE(router.dispatch(cmd::ID_CAMERA_FIRST));

    QMenu menu;
    app->fillCameraListMenu(&menu);
    ASSERT_EQ(menu.actions().size(), 2);
    for (QAction* a : menu.actions())
        EXPECT_FALSE(a->isEnabled());
    EXPECT_FALSE(menu.actions()[0]->isChecked());
    EXPECT_TRUE(menu.actions()[1]->isChecked());

    bool quitByApp = false;
    QTimer::singleShot(0, [&] {
        app->browserFrame()->close();
        EXPECT_FALSE(app->browserFrame()->isVisible());
        ASSERT_TRUE(app->cameraFrame());
        EXPECT_TRUE(app->cameraFrame()->isVisible());
        QTimer::singleShot(300, [&] { app->cameraFrame()->close(); });
    });
    QTimer::singleShot(10000, [&] { QCoreApplication::exit(99); });
    quitByApp = QApplication::exec() == 0;
    EXPECT_TRUE(quitByApp);
    EXPECT_TRUE(app->currentCameraId().isEmpty());
    app->exitInstance(0);
    dscap::Library::instance().setProviders({});
}

TEST_F(AppFixture, WithoutCamerasTheListHoldsOneGreyedEntryThatOpensNothing) {
    std::vector<std::unique_ptr<dscap::CameraProvider>> providers;
    providers.push_back(
        dscap::v4l2::makeV4l2Provider(std::make_shared<dscap::v4l2::FakeV4l2System>()));
    dscap::Library::instance().setProviders(std::move(providers));
    const auto app = start();
    ASSERT_TRUE(app);
    QMenu menu;
    app->fillCameraListMenu(&menu);
    ASSERT_EQ(menu.actions().size(), 1);
    EXPECT_FALSE(menu.actions()[0]->isEnabled());
    EXPECT_FALSE(app->browserFrame()->router().dispatch(cmd::ID_CAMERA_FIRST));
    EXPECT_FALSE(app->cameraFrame());
    app->exitInstance(0);
    dscap::Library::instance().setProviders({});
}
