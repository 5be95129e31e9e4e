// The browser as a user meets it: the program started on a folder of pictures fills the
// thumbnail cache, keeps the chosen sort order, and deletes to the trash or for good.
#include "BmpFile.h"
#include "LanmiraRun.h"

#include <QDir>
#include <QDirIterator>
#include <QElapsedTimer>
#include <QFile>
#include <QTemporaryDir>
#include <QThread>

#include <gtest/gtest.h>

#include <csignal>
#include <functional>

using lanmira::e2e::kMainWindow;
using lanmira::e2e::kStartMs;
using lanmira::e2e::LanmiraRun;
using lanmira::e2e::runTool;
using lanmira::e2e::waitFor;
using lanmira::e2e::writeBmp;

namespace {

int filesUnder(const QString& folder) {
    int n = 0;
    for (QDirIterator it(folder, QDir::Files | QDir::Hidden, QDirIterator::Subdirectories);
         it.hasNext(); it.next())
        ++n;
    return n;
}

// Focuses the grid by clicking its empty lower right corner, then sends the keys.
void keysToGrid(const QString& window, const QStringList& keys) {
    LanmiraRun::xdotool({QStringLiteral("windowfocus"), QStringLiteral("--sync"), window});
    LanmiraRun::xdotool({QStringLiteral("mousemove"), QStringLiteral("--window"), window,
                         QStringLiteral("900"), QStringLiteral("600"), QStringLiteral("click"),
                         QStringLiteral("1")});
    for (const QString& k : keys) {
        LanmiraRun::xdotool({QStringLiteral("key"), QStringLiteral("--window"), window, k});
        QThread::msleep(200);
    }
}

// Answers the delete question with Yes, trying again until the box has gone.
bool answerYes(LanmiraRun& run) {
    QString box;
    if (!run.waitForOwnWindow(QStringLiteral("^Delete$"), 10000, &box))
        return false;
    for (int attempt = 0; attempt < 10 && run.ownWindowShown(box); ++attempt) {
        LanmiraRun::xdotool({QStringLiteral("windowfocus"), QStringLiteral("--sync"), box});
        LanmiraRun::xdotool(
            {QStringLiteral("key"), QStringLiteral("--window"), box, QStringLiteral("alt+y")});
        QThread::msleep(500);
    }
    return !run.ownWindowShown(box);
}

class BrowserE2E : public testing::Test {
protected:
    void SetUp() override {
        // Pictures are cached only on local fixed disks, and /tmp may be a RAM file system:
        // the pictures, and the trash beside them, live in the build tree.
        ASSERT_TRUE(m_disk.isValid());
        run.setEnv(QStringLiteral("XDG_DATA_HOME"), m_disk.path() + QStringLiteral("/data"));
        ASSERT_TRUE(QDir().mkpath(folder()));
        for (int i = 0; i < kImages; ++i)
            ASSERT_TRUE(writeBmp(folder() + QStringLiteral("/img%1.bmp").arg(i), 40 + 30 * i,
                                 30 + 10 * i, quint8(20 * i)));
        // Not items, or items that give no thumbnail.
        QDir().mkpath(folder() + QStringLiteral("/sub"));
        QFile(folder() + QStringLiteral("/notes.txt")).open(QIODevice::WriteOnly);
        QFile(folder() + QStringLiteral("/empty.jpg")).open(QIODevice::WriteOnly);
    }
    QString folder() const { return m_disk.path() + QStringLiteral("/pictures"); }
    QString cache() const { return run.scratch() + QStringLiteral("/cache/Vornalt/cache"); }

    static constexpr int kImages = 6;
    QTemporaryDir m_disk{QStringLiteral(LANMIRA_BUILD_DIR "/e2e-browser-XXXXXX")};
    LanmiraRun run;
};

TEST_F(BrowserE2E, CachesEveryThumbnailAndKeepsTheSortOrder) {
    run.start({folder()});
    QString window;
    ASSERT_TRUE(run.waitForOwnWindow(kMainWindow, kStartMs, &window)) << run.diagnose();
    // The zero-byte file is done without a thumbnail and so never cached.
    ASSERT_TRUE(waitFor([&] { return filesUnder(cache()) == kImages; }, 20000))
        << filesUnder(cache()) << run.diagnose();

    // View → Sort by Width, Descending (once the pass has ended: sorting waits for it); both
    // are kept for the next start.
    QThread::msleep(1000);
    keysToGrid(window, {QStringLiteral("alt+v"), QStringLiteral("w")});
    keysToGrid(window, {QStringLiteral("alt+v"), QStringLiteral("d")});
    run.signal(SIGTERM);
    ASSERT_TRUE(run.waitForExit(15000));
    QFile conf(run.configHome() + QStringLiteral("/Vornalt/Lanmira/ibrowser.conf"));
    ASSERT_TRUE(conf.open(QIODevice::ReadOnly));
    const QString text = QString::fromUtf8(conf.readAll());
    EXPECT_TRUE(text.contains(QStringLiteral("sortby=3"))) << text.toStdString();
    EXPECT_TRUE(text.contains(QStringLiteral("sortmode=1"))) << text.toStdString();
}

TEST_F(BrowserE2E, DeleteMovesToTheTrashAndShiftDeleteDeletesForGood) {
    run.start({folder()});
    QString window;
    ASSERT_TRUE(run.waitForOwnWindow(kMainWindow, kStartMs, &window)) << run.diagnose();
    ASSERT_TRUE(waitFor([&] { return filesUnder(cache()) == kImages; }, 20000)) << run.diagnose();

    // Everything to the trash: the six pictures and the empty one.
    keysToGrid(window, {QStringLiteral("ctrl+a"), QStringLiteral("Delete")});
    ASSERT_TRUE(answerYes(run)) << run.diagnose();
    const QString trash = m_disk.path() + QStringLiteral("/data/Trash/files");
    EXPECT_TRUE(waitFor([&] { return filesUnder(trash) == kImages + 1; }, 10000))
        << filesUnder(trash);
    EXPECT_FALSE(QFile::exists(folder() + QStringLiteral("/img0.bmp")));
    EXPECT_TRUE(QFile::exists(folder() + QStringLiteral("/notes.txt")));

    // A new picture is noticed by the periodic check, then goes for good.
    ASSERT_TRUE(writeBmp(folder() + QStringLiteral("/late.bmp"), 64, 48, 200));
    ASSERT_TRUE(waitFor([&] { return filesUnder(cache()) == kImages + 1; }, 20000));
    // This time with the mouse: click the picture, then Shift+click the toolbar's Delete.
    // (Without a window manager the keyboard does not come back to the window after a
    // message box, so the keys above cannot be used twice.)
    const auto click = [&](int x, int y) {
        LanmiraRun::xdotool({QStringLiteral("mousemove"), QStringLiteral("--window"), window,
                             QString::number(x), QString::number(y), QStringLiteral("click"),
                             QStringLiteral("1")});
        QThread::msleep(300);
    };
    click(320, 130);
    LanmiraRun::xdotool({QStringLiteral("keydown"), QStringLiteral("shift")});
    click(167, 45);
    LanmiraRun::xdotool({QStringLiteral("keyup"), QStringLiteral("shift")});
    ASSERT_TRUE(answerYes(run)) << run.diagnose();
    EXPECT_TRUE(
        waitFor([&] { return !QFile::exists(folder() + QStringLiteral("/late.bmp")); }, 10000));
    EXPECT_EQ(filesUnder(trash), kImages + 1);

    run.signal(SIGTERM);
    EXPECT_TRUE(run.waitForExit(15000));
}

} // namespace
