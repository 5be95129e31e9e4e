// The camera window as a user meets it: chosen from the browser's camera list, it shows the
// demo camera live, captures numbered files and to the clipboard, records a video that a
// player reads, and closes back to the browser, which goes on.
#include "LanmiraRun.h"
#include "WindowClose.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QThread>

#include <gtest/gtest.h>

#include <functional>

using lanmira::e2e::askToClose;
using lanmira::e2e::LanmiraRun;
using lanmira::e2e::runTool;
using lanmira::e2e::waitFor;

namespace {

const QString kBrowser = QStringLiteral("^Lanmira$");
const QString kCamera = QStringLiteral("^Demo Microscope Camera$");

class CameraE2E : public testing::Test {
protected:
    void SetUp() override {
        folder = run.scratch() + QStringLiteral("/captures");
        ASSERT_TRUE(QDir().mkpath(folder));
        // Captures go where the title says.
        const QString settings = run.configHome() + QStringLiteral("/Vornalt/Lanmira");
        ASSERT_TRUE(QDir().mkpath(settings));
        QFile f(settings + QStringLiteral("/Lanmira.conf"));
        ASSERT_TRUE(f.open(QIODevice::WriteOnly));
        f.write(QStringLiteral("[titleext]\ntitle=%1/Lanmira\next=jpg\n").arg(folder).toUtf8());
    }

    void key(const QString& window, const QString& keys) {
        LanmiraRun::xdotool({QStringLiteral("windowfocus"), QStringLiteral("--sync"), window});
        LanmiraRun::xdotool(
            QStringList{QStringLiteral("key"), QStringLiteral("--delay"), QStringLiteral("150")}
            << keys.split(u' '));
        QThread::msleep(300);
    }

    QString capture(int n) const {
        return folder + QStringLiteral("/Lanmira%1.jpg").arg(n, 4, 10, QLatin1Char('0'));
    }

    LanmiraRun run;
    QString folder;
};

TEST_F(CameraE2E, LiveDemoCapturesRecordsAndClosesBackToTheBrowser) {
    run.start({folder});
    QString browser, camera;
    ASSERT_TRUE(run.waitForOwnWindow(kBrowser, 30000, &browser)) << run.diagnose();

    // File → Camera List → the demo camera, the last camera of the list.
    // The first keys may come before the window takes them: try again until it opens.
    ASSERT_TRUE(waitFor(
        [&] {
            key(browser, QStringLiteral("Escape Escape alt+f l End Return"));
            return run.waitForOwnWindow(kCamera, 3000, &camera);
        },
        30000))
        << run.diagnose();

    for (int i = 0; i < 3; ++i) {
        // Capt&ure a Frame; the first waits for the first picture.
        ASSERT_TRUE(waitFor(
            [&] {
                key(camera, QStringLiteral("alt+f u"));
                return QFileInfo::exists(capture(i));
            },
            15000))
            << run.diagnose();
    }
    EXPECT_TRUE(waitFor([&] { return QFileInfo(capture(2)).size() > 10000; }, 10000));
    EXPECT_FALSE(QFileInfo::exists(capture(3)));
    const QByteArray identified = runTool(QStringLiteral("identify"), {capture(0)});
    EXPECT_TRUE(identified.contains("JPEG 2592x1944")) << identified.data();

    // Ctrl+C: another program reads a BMP file of the whole frame.
    key(camera, QStringLiteral("ctrl+c"));
    QByteArray bmp;
    EXPECT_TRUE(waitFor(
        [&] {
            bmp = runTool(QStringLiteral("xclip"),
                          {QStringLiteral("-o"), QStringLiteral("-selection"),
                           QStringLiteral("clipboard"), QStringLiteral("-t"),
                           QStringLiteral("image/bmp")});
            return bmp.startsWith("BM");
        },
        10000));
    EXPECT_EQ(bmp.size(), 14 + 40 + 2592 * 3 * 1944);

    // Start Record..., a name typed into the file dialog, three seconds, Stop Record.
    const QString video = folder + QStringLiteral("/clip.mp4");
    key(camera, QStringLiteral("alt+f s"));
    QString dialog;
    ASSERT_TRUE(run.waitForOwnWindow(QStringLiteral("Record Video"), 10000, &dialog))
        << run.diagnose();
    LanmiraRun::xdotool({QStringLiteral("windowfocus"), QStringLiteral("--sync"), dialog});
    LanmiraRun::xdotool({QStringLiteral("key"), QStringLiteral("ctrl+a")});
    LanmiraRun::xdotool(
        {QStringLiteral("type"), QStringLiteral("--delay"), QStringLiteral("20"), video});
    LanmiraRun::xdotool({QStringLiteral("key"), QStringLiteral("Return")});
    ASSERT_TRUE(waitFor([&] { return QFileInfo(video).size() > 0; }, 10000)) << run.diagnose();
    QThread::msleep(3000);
    key(camera, QStringLiteral("alt+f p"));
    EXPECT_TRUE(waitFor(
        [&] {
            const QByteArray probe =
                runTool(QStringLiteral("ffprobe"),
                        {QStringLiteral("-v"), QStringLiteral("error"),
                         QStringLiteral("-show_entries"), QStringLiteral("stream=codec_name,width"),
                         QStringLiteral("-of"), QStringLiteral("csv=p=0"), video});
            return probe.trimmed() == "h264,2592";
        },
        10000));

    // Closing the camera window leaves the browser running.
    askToClose(camera);
    EXPECT_TRUE(waitFor([&] { return !run.ownWindowShown(camera); }, 10000)) << run.diagnose();
    EXPECT_TRUE(run.ownWindowShown(browser));
    EXPECT_EQ(run.process().state(), QProcess::Running);
    askToClose(browser);
    EXPECT_TRUE(run.waitForExit(15000)) << run.diagnose();
}

} // namespace
