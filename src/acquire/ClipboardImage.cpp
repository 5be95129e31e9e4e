#include "acquire/ClipboardImage.h"

#include "acquire/DibLayout.h"

#include <QBuffer>
#include <QClipboard>
#include <QGuiApplication>
#include <QImage>
#include <QMimeData>
#include <QStringList>
#include <QThreadPool>

#include <cstring>
#include <future>
#include <memory>

namespace lanmira {
namespace {

using namespace Qt::StringLiterals;

const QString kBmp = u"image/bmp"_s;
const QString kPng = u"image/png"_s;
constexpr qsizetype kFileHeaderSize = 14;
// Compression level 1: a big picture still encodes in a fraction of a second, and most of
// the gain of the slower levels is already there.
constexpr int kPngQuality = 80;

std::uint32_t le32(const char* p) {
    const auto* u = reinterpret_cast<const unsigned char*>(p);
    return u[0] | (std::uint32_t{u[1]} << 8) | (std::uint32_t{u[2]} << 16) |
           (std::uint32_t{u[3]} << 24);
}

void put16(char* p, std::uint32_t v) {
    p[0] = static_cast<char>(v & 0xFF);
    p[1] = static_cast<char>((v >> 8) & 0xFF);
}

void put32(char* p, std::uint32_t v) {
    put16(p, v & 0xFFFF);
    put16(p + 2, v >> 16);
}

QByteArray bmpFile(const PackedDib& picture) {
    const auto layout = DibLayout::read(picture.data(), picture.size());
    if (!layout)
        return {};
    const QByteArray dib = dibToBytes(picture);
    if (dib.isEmpty())
        return {};
    QByteArray file(kFileHeaderSize, '\0');
    file[0] = 'B';
    file[1] = 'M';
    put32(file.data() + 2, static_cast<std::uint32_t>(kFileHeaderSize + dib.size()));
    put32(file.data() + 10, static_cast<std::uint32_t>(kFileHeaderSize + layout->pixelOffset));
    return file + dib;
}

// Rows bottom-up in BGR order, as the viewer holds them.
PackedDib dibFromImage(const QImage& source) {
    if (source.isNull())
        return {};
    const QImage image = source.convertToFormat(QImage::Format_BGR888);
    if (image.isNull())
        return {};
    const auto width = static_cast<std::uint32_t>(image.width());
    const auto height = static_cast<std::uint32_t>(image.height());
    const std::uint64_t stride = DibLayout::rowStride(width, 24);
    PackedDib dib = PackedDib::allocate(DibLayout::kInfoHeaderSize + stride * height);
    if (!dib)
        return {};
    auto* header = reinterpret_cast<char*>(dib.data());
    std::memset(header, 0, DibLayout::kInfoHeaderSize);
    put32(header, DibLayout::kInfoHeaderSize);
    put32(header + 4, width);
    put32(header + 8, height);
    put16(header + 12, 1);
    put16(header + 14, 24);
    put32(header + 20, static_cast<std::uint32_t>(stride * height));
    put32(header + 24, static_cast<std::uint32_t>(std::max(0, image.dotsPerMeterX())));
    put32(header + 28, static_cast<std::uint32_t>(std::max(0, image.dotsPerMeterY())));
    const std::size_t rowBytes = std::size_t{width} * 3;
    for (std::uint32_t y = 0; y < height; ++y) {
        std::uint8_t* row = dib.data() + DibLayout::kInfoHeaderSize + stride * (height - 1 - y);
        std::memcpy(row, image.constScanLine(static_cast<int>(y)), rowBytes);
        std::memset(row + rowBytes, 0, stride - rowBytes);
    }
    return dib;
}

QImage imageFromDib(const PackedDib& picture) {
    const PackedDib rgb = dibToRgb24(picture);
    const auto layout = DibLayout::read(rgb.data(), rgb.size());
    if (!layout)
        return {};
    const QImage bottomUp(rgb.data() + layout->pixelOffset, layout->width, layout->height,
                          static_cast<qsizetype>(layout->stride), QImage::Format_BGR888);
    return bottomUp.mirrored(false, true);
}

// image/bmp as other programs write it: a BMP file, or now and then the bare bitmap.
PackedDib dibFromBmpData(const QByteArray& data) {
    if (data.size() < 4)
        return {};
    qsizetype skip = 0;
    if (data.startsWith("BM") && data.size() >= kFileHeaderSize + 4)
        skip = kFileHeaderSize;
    const std::uint32_t headerSize = le32(data.constData() + skip);
    // Version 4 and 5 headers read here as the old core header would lose the picture; the
    // toolkit's reader knows them.
    if (headerSize == 108 || headerSize == 124 || headerSize == 52 || headerSize == 56) {
        QByteArray file = data;
        if (skip == 0) {
            QByteArray header(kFileHeaderSize, '\0');
            header[0] = 'B';
            header[1] = 'M';
            file = header + data;
        }
        return dibFromImage(QImage::fromData(file, "BMP"));
    }
    return dibFromBytes(data.constData() + skip, static_cast<std::size_t>(data.size() - skip));
}

// The picture as the viewer can hold it: no compression, bottom-up rows, the 40-byte header.
PackedDib uncompressed(PackedDib dib) {
    const auto layout = DibLayout::read(dib.data(), dib.size());
    if (!layout)
        return {};
    if (layout->compression != DibLayout::kRgb || layout->topDown || layout->coreHeader)
        return dibToRgb24(dib);
    return dib;
}

QByteArray pngOf(const QByteArray& bmp) {
    QByteArray png;
    const QImage image = imageFromDib(dibFromBmpData(bmp));
    QBuffer buffer(&png);
    if (image.isNull() || !buffer.open(QIODevice::WriteOnly) ||
        !image.save(&buffer, "PNG", kPngQuality))
        png.clear();
    return png;
}

// The PNG is made on a worker as soon as the picture is on the clipboard: encoding a big
// picture takes longer than the copy itself, and a program asking for it must not find the
// window frozen meanwhile. The bitmap is there at once.
class PictureMimeData final : public QMimeData {
public:
    explicit PictureMimeData(QByteArray bmp) : m_bmp(std::move(bmp)) {
        auto promise = std::make_shared<std::promise<QByteArray>>();
        m_png = promise->get_future().share();
        QThreadPool::globalInstance()->start(
            [promise, bmp = m_bmp] { promise->set_value(pngOf(bmp)); });
    }

    QStringList formats() const override { return {kBmp, kPng}; }
    bool hasFormat(const QString& mimeType) const override {
        return mimeType == kBmp || mimeType == kPng;
    }

protected:
    QVariant retrieveData(const QString& mimeType, QMetaType /*type*/) const override {
        if (mimeType == kBmp)
            return m_bmp;
        if (mimeType != kPng)
            return {};
        // Asked for within moments of the copy: the rest of the encoding is waited for.
        return m_png.get();
    }

private:
    QByteArray m_bmp;
    std::shared_future<QByteArray> m_png;
};

} // namespace

QMimeData* dibToMimeData(const PackedDib& picture) {
    QByteArray bmp = bmpFile(picture);
    if (bmp.isEmpty())
        return nullptr;
    return new PictureMimeData(std::move(bmp));
}

bool mimeHasPicture(const QMimeData* mime) {
    return mime && (mime->hasFormat(kBmp) || mime->hasFormat(kPng) || mime->hasImage());
}

PackedDib dibFromMimeData(const QMimeData* mime) {
    if (!mime)
        return {};
    PackedDib dib;
    if (mime->hasFormat(kBmp))
        dib = dibFromBmpData(mime->data(kBmp));
    if (!dib && mime->hasFormat(kPng))
        dib = dibFromImage(QImage::fromData(mime->data(kPng), "PNG"));
    if (!dib && mime->hasImage())
        dib = dibFromImage(qvariant_cast<QImage>(mime->imageData()));
    return uncompressed(std::move(dib));
}

bool copyDibToClipboard(const PackedDib& picture) {
    QClipboard* clipboard = qobject_cast<QGuiApplication*>(QCoreApplication::instance())
                                ? QGuiApplication::clipboard()
                                : nullptr;
    if (!clipboard)
        return false;
    QMimeData* mime = dibToMimeData(picture);
    if (!mime)
        return false;
    clipboard->setMimeData(mime); // the clipboard owns it from here
    return true;
}

PackedDib dibFromClipboard() {
    if (!qobject_cast<QGuiApplication*>(QCoreApplication::instance()))
        return {};
    return dibFromMimeData(QGuiApplication::clipboard()->mimeData());
}

bool clipboardHasPicture() {
    if (!qobject_cast<QGuiApplication*>(QCoreApplication::instance()))
        return false;
    return mimeHasPicture(QGuiApplication::clipboard()->mimeData());
}

} // namespace lanmira
