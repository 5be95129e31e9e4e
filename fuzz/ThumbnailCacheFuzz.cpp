// Thumbnail cache files as anything on the disk may have left them. The image path is taken
// from the input's own path field (its letter case changed where the input says so), so the
// fuzzer gets past the path check to the headers and rows. Whatever is accepted must
// survive writing it again unchanged. The same bytes also go through the mount-table parser.
#include "browser/BrowserItem.h"
#include "browser/thumbnails/CacheEligibility.h"
#include "browser/thumbnails/ThumbnailCache.h"

#include <QString>

#include <cstddef>
#include <cstdint>
#include <cstdlib>

using namespace lanmira;

namespace {

QString storedPath(const std::uint8_t* data, std::size_t size) {
    QString path;
    for (std::size_t i = 0; i + 1 < size && i < 520; i += 2) {
        const auto unit = static_cast<char16_t>(data[i] | (data[i + 1] << 8));
        if (unit == 0)
            break;
        path.append(QChar(unit));
    }
    // The last byte of the path field, normally past the terminator, asks for upper case.
    if (size > 519 && (data[519] & 1))
        path = path.toUpper();
    return path;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const QString path = storedPath(data, size);
    BrowserItem item(path, 2);
    if (ThumbnailCache::decode(data, size, path, item)) {
        // Accepted rows are exactly what the sizes say.
        if (item.large.pixels.size() != Thumbnail::stride(item.large.width) * item.large.height ||
            item.small.pixels.size() != Thumbnail::stride(item.small.width) * item.small.height)
            std::abort();
        const std::vector<std::uint8_t> again = ThumbnailCache::encode(path, item);
        BrowserItem back(path, 2);
        if (!ThumbnailCache::decode(again.data(), again.size(), path, back) ||
            back.large.pixels != item.large.pixels || back.small.pixels != item.small.pixels ||
            back.imageWidth != item.imageWidth || back.bitsPerPixel != item.bitsPerPixel)
            std::abort();
    }
    if (size < 4096) {
        const QString text =
            QString::fromUtf8(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));
        CacheEligibility::onFixedStorage(QStringLiteral("/home/me/a b/x.jpg"), text,
                                         QStringLiteral("/nonexistent-sysfs"));
    }
    return 0;
}
