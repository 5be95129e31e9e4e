#pragma once

#include <QRect>
#include <QString>

#include <atomic>
#include <cstdint>
#include <vector>

namespace lanmira {

// A thumbnail: 24-bit rows, bottom-up, B G R, each row padded to 4 bytes.
struct Thumbnail {
    std::vector<std::uint8_t> pixels; // empty: none
    std::int32_t width = 0;
    std::int32_t height = 0;

    bool empty() const { return pixels.empty(); }
    static std::uint64_t stride(std::int32_t w) {
        return (static_cast<std::uint64_t>(w) * 24 + 31) / 32 * 4;
    }
    void clear() {
        pixels.clear();
        pixels.shrink_to_fit();
        width = height = 0;
    }
};

// Nanoseconds since the epoch, the file's last modification.
using FileTime = std::int64_t;

// One listed file. The worker fills the thumbnail fields, sizes and times, then sets
// kThumbnailDone with release order; the user-interface thread reads them only after
// seeing that bit. Only the user-interface thread changes kSelected and the cells.
struct BrowserItem {
    enum Flag : std::uint32_t { kSelected = 1, kThumbnailDone = 2 };

    QString path;       // the full path of the file
    QString linkTarget; // the resolved target for a shortcut (symbolic link), else empty
    Thumbnail large;
    Thumbnail small;
    QRect largeCell;
    QRect smallCell;
    std::atomic<std::uint32_t> flags{0};
    FileTime imageTime = 0; // of the target for a shortcut
    FileTime linkTime = 0;  // of the shortcut itself
    std::uint32_t format = 0;
    std::int32_t imageWidth = 0;
    std::int32_t imageHeight = 0;
    std::uint32_t bitsPerPixel = 0;

    BrowserItem(QString p, std::uint32_t fmt, QString target = {})
        : path(std::move(p)), linkTarget(std::move(target)), format(fmt) {}

    bool isShortcut() const { return !linkTarget.isEmpty(); }
    // What is decoded and hashed: the target of a shortcut, else the path.
    const QString& imagePath() const { return isShortcut() ? linkTarget : path; }

    bool selected() const { return flags.load(std::memory_order_relaxed) & kSelected; }
    void setSelected(bool on) {
        if (on)
            flags.fetch_or(kSelected, std::memory_order_relaxed);
        else
            flags.fetch_and(~std::uint32_t{kSelected}, std::memory_order_relaxed);
    }
    bool thumbnailDone() const { return flags.load(std::memory_order_acquire) & kThumbnailDone; }
    void markThumbnailDone() { flags.fetch_or(kThumbnailDone, std::memory_order_release); }
    // Drops both thumbnails and what was learned of the image (the change check).
    void dropThumbnails() {
        flags.fetch_and(~std::uint32_t{kThumbnailDone}, std::memory_order_acq_rel);
        bitsPerPixel = 0;
        large.clear();
        small.clear();
    }
    const QRect& cell(bool largeMode) const { return largeMode ? largeCell : smallCell; }
};

} // namespace lanmira
