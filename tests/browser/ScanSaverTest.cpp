// Scanned pages under the capture names: never over an existing file, and a page that
// cannot be written leaves nothing under its name.

#include "camera/frame/CaptureWriter.h"
#include "imagelib/imagelib.h"

#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <cstring>

using namespace lanmira;

namespace {

PackedDib greyPage() {
    constexpr int kSide = 16;
    PackedDib dib = PackedDib::allocate(40 + 1024 + kSide * kSide);
    std::memset(dib.data(), 0, dib.size());
    const std::uint32_t header[] = {40, kSide, kSide};
    std::memcpy(dib.data(), header, sizeof header);
    dib.data()[12] = 1;
    dib.data()[14] = 8;
    for (int i = 0; i < 256; ++i)
        std::memset(dib.data() + 40 + 4 * i, i, 3);
    return dib;
}

struct Outcome {
    QStringList saved, failed;
};

Outcome waitFor(CaptureWriter& saver, int count) {
    Outcome o;
    QObject::connect(&saver, &CaptureWriter::saved, [&o](const QString& p) { o.saved << p; });
    QObject::connect(&saver, &CaptureWriter::failed,
                     [&o](const QString& p, const QString&) { o.failed << p; });
    QElapsedTimer timer;
    timer.start();
    while (o.saved.size() + o.failed.size() < count && timer.elapsed() < 10000)
        QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
    return o;
}

TEST(ScanSaver, TakesTheNextFreeNameAndCountsOn) {
    QTemporaryDir dir;
    QFile(dir.filePath(QStringLiteral("Lanmira0000.jpg"))).open(QIODevice::WriteOnly);
    CaptureFormat format{
        dir.filePath(QStringLiteral("Lanmira")), QStringLiteral("jpg"), IMAGELIB_FMT_JPEG, {0, 0}};
    CaptureWriter saver;
    int counter = 0;
    const QString first = saver.saveNext(greyPage(), format, counter, true);
    // Two pages in quick succession: the first is still being written, its name is taken.
    const QString second = saver.saveNext(greyPage(), format, counter, true);
    EXPECT_TRUE(first.endsWith(QStringLiteral("Lanmira0001.jpg")));
    EXPECT_TRUE(second.endsWith(QStringLiteral("Lanmira0002.jpg")));
    EXPECT_EQ(counter, 3);
    const Outcome o = waitFor(saver, 2);
    EXPECT_EQ(o.saved.size(), 2);
    EXPECT_EQ(QFile(dir.filePath(QStringLiteral("Lanmira0000.jpg"))).size(), 0);
}

TEST(ScanSaver, AFailedSaveLeavesNoFile) {
    QTemporaryDir dir;
    CaptureFormat format{dir.filePath(QStringLiteral("gone/Lanmira")),
                         QStringLiteral("jpg"),
                         IMAGELIB_FMT_JPEG,
                         {0, 0}};
    CaptureWriter saver;
    int counter = 0;
    const QString name = saver.saveNext(greyPage(), format, counter, true);
    const Outcome o = waitFor(saver, 1);
    EXPECT_EQ(o.failed, QStringList{name});
    EXPECT_FALSE(QFile::exists(name));
    // An empty page is not named at all.
    EXPECT_TRUE(saver.saveNext(PackedDib(), format, counter, true).isEmpty());
    EXPECT_EQ(counter, 1);
}

} // namespace
