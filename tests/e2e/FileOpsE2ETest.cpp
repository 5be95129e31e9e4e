// File commands as a user meets them, with the X clipboard between separate programs: a Copy
// that xclip reads and another copy of the program pastes and links, a cut put there by
// another program that pastes once as a move, and pictures joined into one multi-page TIFF.
#include "BmpFile.h"
#include "LanmiraRun.h"

#include <QDateTime>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QTemporaryDir>
#include <QThread>
#include <QUrl>

#include <gtest/gtest.h>

#include <algorithm>
#include <csignal>
#include <functional>

using lanmira::e2e::kMainWindow;
using lanmira::e2e::kStartMs;
using lanmira::e2e::LanmiraRun;
using lanmira::e2e::runTool;
using lanmira::e2e::waitFor;
using lanmira::e2e::writeBmp;

namespace {

const QString kGnomeFiles = QStringLiteral("x-special/gnome-copied-files");

QByteArray clipboardFiles() {
    return runTool(QStringLiteral("xclip"),
                   {QStringLiteral("-o"), QStringLiteral("-selection"), QStringLiteral("clipboard"),
                    QStringLiteral("-t"), kGnomeFiles});
}

// The verb, then the URIs in any order.
QStringList sortedClipboardLines(const QByteArray& text) {
    QStringList lines = QString::fromUtf8(text).split(u'\n');
    if (lines.size() > 1)
        std::sort(lines.begin() + 1, lines.end());
    return lines;
}

QString uri(const QString& path) {
    return QString::fromLatin1(QUrl::fromLocalFile(path).toEncoded());
}

// Keys through the X server to whatever has the focus in `window`, as typed.
void keys(const QString& window, const QString& sequence) {
    LanmiraRun::xdotool({QStringLiteral("windowfocus"), QStringLiteral("--sync"), window});
    LanmiraRun::xdotool(
        QStringList{QStringLiteral("key"), QStringLiteral("--delay"), QStringLiteral("150")}
        << sequence.split(u' '));
    QThread::msleep(300);
}

// Gives the grid the focus by clicking its empty lower right part.
void clickGrid(const QString& window) {
    LanmiraRun::xdotool({QStringLiteral("windowfocus"), QStringLiteral("--sync"), window});
    LanmiraRun::xdotool({QStringLiteral("mousemove"), QStringLiteral("--window"), window,
                         QStringLiteral("900"), QStringLiteral("600"), QStringLiteral("click"),
                         QStringLiteral("1")});
    QThread::msleep(200);
}

// Everything in a folder, hidden names included (a half-written temporary shows there).
QStringList entries(const QString& folder) {
    return QDir(folder).entryList(
        QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot, QDir::Name);
}

QByteArray contents(const QString& path) {
    QFile f(path);
    return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray();
}

// Sends keys that start an effect that cannot be repeated safely: again only while nothing
// at all has shown after a generous wait (the first keys can reach a window not yet ready).
bool sendUntilSomethingShows(const QString& window, const QString& sequence,
                             const std::function<bool()>& shown, int attempts = 4) {
    for (int k = 0; k < attempts; ++k) {
        keys(window, sequence);
        if (waitFor(shown, 6000))
            return true;
    }
    return false;
}

class FileOpsE2E : public testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(m_disk.isValid());
        for (const char* name : {"pictures", "copies", "links", "cut", "out"})
            ASSERT_TRUE(QDir().mkpath(folder(name)));
        // Names with a space and UTF-8 show the URI encoding; an old time shows it is kept.
        const QStringList names = {QStringLiteral("img0.bmp"), QStringLiteral("img 1.bmp"),
                                   QStringLiteral("grün 2.bmp")};
        for (int i = 0; i < names.size(); ++i) {
            const QString path = folder("pictures") + u'/' + names[i];
            ASSERT_TRUE(writeBmp(path, 40 + 30 * i, 30 + 10 * i, quint8(60 * i)));
            QFile f(path);
            ASSERT_TRUE(f.open(QIODevice::ReadWrite));
            ASSERT_TRUE(f.setFileTime(QDateTime(QDate(2001, 2, 3), QTime(4, 5, 6)),
                                      QFileDevice::FileModificationTime));
            pictures.append(path);
        }
    }
    void TearDown() override {
        for (LanmiraRun* r : {&run, &second, &third})
            r->signal(SIGTERM);
        for (LanmiraRun* r : {&run, &second, &third})
            r->waitForExit(10000);
    }

    QString folder(const char* name) const {
        return m_disk.path() + u'/' + QString::fromLatin1(name);
    }

    // In the build tree: one real file system for a move, whatever /tmp is.
    QTemporaryDir m_disk{QStringLiteral(LANMIRA_BUILD_DIR "/e2e-fileops-XXXXXX")};
    QStringList pictures;
    LanmiraRun run, second, third;
};

TEST_F(FileOpsE2E, CopyIsReadByOtherProgramsAndPastesAndLinksInAnotherCopy) {
    run.start({folder("pictures")});
    QString window;
    ASSERT_TRUE(run.waitForOwnWindow(kMainWindow, kStartMs, &window)) << run.diagnose();

    // Select All, Copy: another program reads the verb and the URIs, without a last newline.
    QStringList expected = {QStringLiteral("copy")};
    for (const QString& p : pictures)
        expected.append(uri(p));
    std::sort(expected.begin() + 1, expected.end());
    QByteArray offered;
    ASSERT_TRUE(waitFor(
        [&] {
            clickGrid(window);
            keys(window, QStringLiteral("ctrl+a ctrl+c"));
            return waitFor(
                [&] {
                    offered = clipboardFiles();
                    return sortedClipboardLines(offered) == expected;
                },
                2000);
        },
        30000))
        << offered.constData() << run.diagnose();
    EXPECT_FALSE(offered.endsWith('\n'));

    // Two more copies of the program, each on its own empty folder, take it from there.
    second.start({folder("copies")});
    third.start({folder("links")});
    QString copies, links;
    ASSERT_TRUE(second.waitForOwnWindow(kMainWindow, kStartMs, &copies)) << second.diagnose();
    ASSERT_TRUE(third.waitForOwnWindow(kMainWindow, kStartMs, &links)) << third.diagnose();

    // Paste: whole copies with their times, and no temporary left behind.
    ASSERT_TRUE(sendUntilSomethingShows(copies, QStringLiteral("ctrl+v"), [&] {
        return !entries(folder("copies")).isEmpty();
    })) << second.diagnose();
    const auto copied = [&] {
        for (const QString& p : pictures) {
            if (contents(folder("copies") + u'/' + QFileInfo(p).fileName()) != contents(p))
                return false;
        }
        return entries(folder("copies")).size() == pictures.size();
    };
    EXPECT_TRUE(waitFor(copied, 15000)) << entries(folder("copies")).join(u' ').toStdString();
    for (const QString& p : pictures)
        EXPECT_EQ(QFileInfo(folder("copies") + u'/' + QFileInfo(p).fileName()).lastModified(),
                  QFileInfo(p).lastModified());

    // Edit → Paste Shortcut, enabled by the Copy: a link per picture, under its name.
    ASSERT_TRUE(sendUntilSomethingShows(links, QStringLiteral("Escape alt+e s"), [&] {
        return !entries(folder("links")).isEmpty();
    })) << third.diagnose();
    EXPECT_TRUE(waitFor([&] { return entries(folder("links")).size() == pictures.size(); }, 10000));
    for (const QString& p : pictures) {
        const QFileInfo link(folder("links") + u'/' + QFileInfo(p).fileName());
        EXPECT_TRUE(link.isSymLink()) << link.filePath().toStdString();
        EXPECT_EQ(link.symLinkTarget(), QFileInfo(p).canonicalFilePath());
    }
    // The copy never touched its sources.
    EXPECT_EQ(entries(folder("pictures")).size(), pictures.size());
}

TEST_F(FileOpsE2E, CutFromAnotherProgramPastesOnceAsAMove) {
    // Another program's cut: a picture and a folder of two, beside the target on one disk.
    QDir().mkpath(folder("cut") + QStringLiteral("/series"));
    QStringList cut = {folder("cut") + QStringLiteral("/single.bmp"),
                       folder("cut") + QStringLiteral("/series")};
    ASSERT_TRUE(writeBmp(cut[0], 64, 48, 10));
    ASSERT_TRUE(writeBmp(cut[1] + QStringLiteral("/s1.bmp"), 50, 40, 90));
    ASSERT_TRUE(writeBmp(cut[1] + QStringLiteral("/s2.bmp"), 52, 40, 170));
    const QByteArray single = contents(cut[0]), s1 = contents(cut[1] + QStringLiteral("/s1.bmp")),
                     s2 = contents(cut[1] + QStringLiteral("/s2.bmp"));
    const QByteArray list = "cut\n" + uri(cut[0]).toLatin1() + '\n' + uri(cut[1]).toLatin1();
    QFile listFile(m_disk.path() + QStringLiteral("/list"));
    ASSERT_TRUE(listFile.open(QIODevice::WriteOnly));
    listFile.write(list);
    listFile.close();
    QProcess xclip; // -quiet: stays in the foreground, so it ends with this test
    xclip.setStandardInputFile(listFile.fileName());
    xclip.start(QStringLiteral("xclip"),
                {QStringLiteral("-quiet"), QStringLiteral("-i"), QStringLiteral("-selection"),
                 QStringLiteral("clipboard"), QStringLiteral("-t"), kGnomeFiles});
    ASSERT_TRUE(xclip.waitForStarted(5000));
    ASSERT_TRUE(waitFor([&] { return clipboardFiles() == list; }, 10000));

    run.start({folder("copies")});
    QString window;
    ASSERT_TRUE(run.waitForOwnWindow(kMainWindow, kStartMs, &window)) << run.diagnose();
    ASSERT_TRUE(sendUntilSomethingShows(window, QStringLiteral("ctrl+v"), [&] {
        return !entries(folder("copies")).isEmpty();
    })) << run.diagnose();

    const QString to = folder("copies");
    EXPECT_TRUE(waitFor([&] { return entries(folder("cut")).isEmpty(); }, 15000))
        << entries(folder("cut")).join(u' ').toStdString();
    EXPECT_EQ(entries(to), QStringList({QStringLiteral("series"), QStringLiteral("single.bmp")}));
    EXPECT_EQ(contents(to + QStringLiteral("/single.bmp")), single);
    EXPECT_EQ(contents(to + QStringLiteral("/series/s1.bmp")), s1);
    EXPECT_EQ(contents(to + QStringLiteral("/series/s2.bmp")), s2);

    // The files have left the place the cut names: it is taken off the clipboard.
    EXPECT_TRUE(waitFor([&] { return !clipboardFiles().startsWith("cut"); }, 10000));
    xclip.kill();
    xclip.waitForFinished(5000);
}

TEST_F(FileOpsE2E, MultiPageTiffJoinsTheSelectedPictures) {
    run.start({folder("pictures")});
    QString window, dialog;
    ASSERT_TRUE(run.waitForOwnWindow(kMainWindow, kStartMs, &window)) << run.diagnose();

    // Select All, then Edit → MultiPage Tiff...: Up from the first item wraps to the last.
    ASSERT_TRUE(waitFor(
        [&] {
            clickGrid(window);
            keys(window, QStringLiteral("ctrl+a Escape alt+e Up Return"));
            return run.waitForOwnWindow(QStringLiteral("^Save As$"), 3000, &dialog);
        },
        30000))
        << run.diagnose();

    const QString output = folder("out") + QStringLiteral("/joined.tif");
    LanmiraRun::xdotool({QStringLiteral("windowfocus"), QStringLiteral("--sync"), dialog});
    LanmiraRun::xdotool({QStringLiteral("key"), QStringLiteral("ctrl+a")});
    LanmiraRun::xdotool(
        {QStringLiteral("type"), QStringLiteral("--delay"), QStringLiteral("20"), output});
    LanmiraRun::xdotool({QStringLiteral("key"), QStringLiteral("Return")});

    // One page per picture, each at its own size; the file appears only once whole.
    QStringList pages;
    EXPECT_TRUE(waitFor(
        [&] {
            pages = QString::fromLatin1(
                        runTool(QStringLiteral("identify"),
                                {QStringLiteral("-format"), QStringLiteral("%wx%h\n"), output}))
                        .split(u'\n', Qt::SkipEmptyParts);
            return !pages.isEmpty();
        },
        20000))
        << run.diagnose();
    pages.sort();
    EXPECT_EQ(pages, QStringList({QStringLiteral("100x50"), QStringLiteral("40x30"),
                                  QStringLiteral("70x40")}));
    EXPECT_EQ(entries(folder("out")), QStringList{QStringLiteral("joined.tif")});
}

} // namespace
