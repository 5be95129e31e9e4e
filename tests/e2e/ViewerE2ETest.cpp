// The viewer as a user meets it: started on a file, it shows the picture, copies it for
// other programs, steps through the folder and the pages of a TIFF, and pastes a picture
// another program copied as a new untitled one.
#include "LanmiraRun.h"
#include "acquire/DibLayout.h"
#include "acquire/PackedDib.h"
#include "imagelib/imagelib.h"

#include <QElapsedTimer>
#include <QFile>
#include <QImage>
#include <QThread>

#include <gtest/gtest.h>

#include <functional>

using lanmira::e2e::LanmiraRun;
using lanmira::e2e::runTool;
using lanmira::e2e::waitFor;

namespace {

const QString kViewer = QStringLiteral("^Lanmira Viewer$");

void put32(QByteArray& b, quint32 v) {
    for (int i = 0; i < 4; ++i)
        b.append(char((v >> (8 * i)) & 0xFF));
}

// A w × h 24-bit picture of one colour, as a packed bitmap.
QByteArray solidDib(int w, int h, QRgb colour) {
    QByteArray b;
    for (quint32 v : {40u, quint32(w), quint32(h)})
        put32(b, v);
    put32(b, 1 | (24 << 16));
    for (int i = 0; i < 6; ++i)
        put32(b, 0);
    const int stride = (w * 3 + 3) / 4 * 4;
    QByteArray row(stride, '\0');
    for (int x = 0; x < w; ++x) {
        row[3 * x] = char(qBlue(colour));
        row[3 * x + 1] = char(qGreen(colour));
        row[3 * x + 2] = char(qRed(colour));
    }
    for (int y = 0; y < h; ++y)
        b.append(row);
    return b;
}

// What another program reads from the clipboard as image/bmp: a BMP file.
QByteArray bmpFile(const QByteArray& dib) {
    const auto layout = lanmira::DibLayout::read(
        reinterpret_cast<const std::uint8_t*>(dib.constData()), std::size_t(dib.size()));
    QByteArray file("BM");
    put32(file, quint32(14 + dib.size()));
    put32(file, 0);
    put32(file, quint32(14 + (layout ? layout->pixelOffset : 0)));
    return file + dib;
}

bool save(const QString& path, const QByteArray& dib, std::uint32_t format, bool append = false) {
    ImageIoParams params{};
    params.format = format;
    params.optionBytes[0] = append ? IMAGELIB_OPT_APPEND_PAGE : 0;
    return ImageLib_Save(QFile::encodeName(path).constData(), dib.constData(), &params) != 0;
}

// The file's page as the image library decodes it.
QByteArray decoded(const QString& path, int page = 0) {
    ImageIoParams params{};
    params.pageIndex = page;
    return lanmira::dibToBytes(
        lanmira::dibFromImageLib(ImageLib_Open(QFile::encodeName(path).constData(), &params)));
}

QByteArray clipboardBmp() {
    return runTool(QStringLiteral("xclip"),
                   {QStringLiteral("-selection"), QStringLiteral("clipboard"), QStringLiteral("-o"),
                    QStringLiteral("-t"), QStringLiteral("image/bmp")});
}

class ViewerE2E : public testing::Test {
protected:
    void SetUp() override {
        folder = run.scratch() + QStringLiteral("/pictures");
        ASSERT_TRUE(QDir().mkpath(folder));
        first = folder + QStringLiteral("/a_first.bmp");
        pages = folder + QStringLiteral("/b_pages.tif");
        QFile f(first);
        ASSERT_TRUE(f.open(QIODevice::WriteOnly));
        f.write(bmpFile(solidDib(400, 300, kFirstColour)));
        f.close();
        const QRgb pageColours[] = {qRgb(200, 0, 0), qRgb(0, 160, 0), qRgb(0, 0, 220),
                                    qRgb(90, 90, 90), qRgb(250, 250, 0)};
        for (int p = 0; p < 5; ++p)
            ASSERT_TRUE(
                save(pages, solidDib(120 + p, 80, pageColours[p]), IMAGELIB_FMT_TIFF, true));
        ASSERT_TRUE(save(folder + QStringLiteral("/c_last.png"), solidDib(50, 40, qRgb(1, 2, 3)),
                         IMAGELIB_FMT_PNG));
    }

    // To the viewer window, or (toWindow false) to whatever has the keyboard, such as a menu.
    void key(const QString& keys, bool toWindow = true) {
        QStringList args{QStringLiteral("key")};
        if (toWindow)
            args << QStringLiteral("--window") << window;
        LanmiraRun::xdotool(args << keys);
        QThread::msleep(200);
    }

    // Copy Image, then what another program pastes equals `expected`.
    bool copiedEquals(const QByteArray& expected) {
        key(QStringLiteral("ctrl+c"));
        return waitFor([&] { return clipboardBmp() == expected; }, 5000);
    }

    static constexpr QRgb kFirstColour = qRgb(30, 144, 255);
    LanmiraRun run;
    QString folder, first, pages, window;
};

TEST_F(ViewerE2E, ShowsCopiesStepsAndPastesPictures) {
    run.start({first});
    ASSERT_TRUE(run.waitForOwnWindow(kViewer, 30000, &window)) << run.diagnose();
    LanmiraRun::xdotool({QStringLiteral("windowfocus"), QStringLiteral("--sync"), window});

    // Painted: the middle of the window is the middle of the fitted picture.
    const auto middlePixel = [&] {
        const QImage shot =
            QImage::fromData(runTool(QStringLiteral("import"),
                                     {QStringLiteral("-window"), window, QStringLiteral("png:-")}));
        return shot.isNull() ? QRgb(0)
                             : shot.pixel(shot.width() / 2, shot.height() / 2) | 0xFF000000u;
    };
    EXPECT_TRUE(waitFor([&] { return middlePixel() == kFirstColour; }, 10000))
        << std::hex << middlePixel();

    ASSERT_TRUE(copiedEquals(bmpFile(decoded(first)))) << clipboardBmp().left(64).toHex().data();

    // The next file of the folder is the TIFF at its first page; PageDown is its next page.
    key(QStringLiteral("ctrl+Next"));
    EXPECT_TRUE(copiedEquals(bmpFile(decoded(pages, 0))));
    key(QStringLiteral("Next"));
    EXPECT_TRUE(copiedEquals(bmpFile(decoded(pages, 1))));

    // Another program copies a picture; Paste as New File shows it untitled, so Save asks
    // where to save it.
    const QByteArray pasted = bmpFile(solidDib(300, 200, qRgb(255, 0, 255)));
    runTool(QStringLiteral("xclip"),
            {QStringLiteral("-selection"), QStringLiteral("clipboard"), QStringLiteral("-t"),
             QStringLiteral("image/bmp"), QStringLiteral("-i")},
            pasted);
    key(QStringLiteral("alt+f"));
    key(QStringLiteral("n"), false);
    EXPECT_TRUE(waitFor([&] { return middlePixel() == qRgb(255, 0, 255); }, 5000));
    EXPECT_TRUE(copiedEquals(pasted));
    key(QStringLiteral("ctrl+s"));
    EXPECT_TRUE(run.waitForOwnWindow(QStringLiteral("^Save As$"), 5000)) << run.diagnose();
}

} // namespace
