#pragma once

#include "browser/BrowserItem.h"

#include <QString>

#include <cstdint>
#include <functional>
#include <vector>

namespace lanmira {

class BrowserList;

// One file per image under the cache root holding both thumbnails and the image's size
// and depth: the 520-byte UTF-16LE path field, then for each thumbnail a 40-byte
// information header (full image width, height and depth in its resolution and
// colours-used fields) and its 24-bit rows. Every failure is silent: a bad file is deleted
// and the thumbnails are made again.
class ThumbnailCache {
public:
    enum Change { Unchanged = 0, Gone = 1, Changed = 2 };

    // `root` ends with '/': $XDG_CACHE_HOME/Vornalt/cache/. Creates it; empty when it
    // cannot be made, which means no cache.
    static QString defaultRoot();
    explicit ThumbnailCache(QString root);

    const QString& root() const { return m_root; }

    // Root + two hex digits + '/' + thirty hex digits: the MD5 of the path's UTF-16LE code
    // units. Empty for a path that is not eligible or does not fit the 260-unit field.
    QString fileNameFor(const QString& imagePath) const;

    // Reads the times of the shortcut and the image into the item and, when the cache file
    // is newer than the image and whole, both thumbnails and the sizes; then marks the item
    // done. A failed check deletes the cache file.
    bool read(BrowserItem& item) const;
    // Writes atomically (temporary name, then rename); nothing unless both thumbnails exist
    // and the path is eligible.
    void write(const BrowserItem& item) const;
    // The periodic check of one item.
    Change checkForChange(BrowserItem& item, const BrowserList& list) const;
    // One pass of the clean-up over one of the 256 sub-folders, chosen by `pick` (0..255).
    void clean(int pick) const;

    // The whole file for an item (for tests and the fuzz target's seeds).
    static std::vector<std::uint8_t> encode(const QString& imagePath, const BrowserItem& item);
    // Parses a whole file; false on any failed check. Fills the item's thumbnails and sizes.
    static bool decode(const std::uint8_t* data, std::size_t size, const QString& imagePath,
                       BrowserItem& item);

private:
    QString m_root;
};

// The last-modification time of a file; 0 with `exists` false when it cannot be read.
FileTime fileTimeOf(const QString& path, bool* exists = nullptr, int* error = nullptr);
// The same for a symbolic link itself, not what it points to.
FileTime linkTimeOf(const QString& path, bool* exists = nullptr, int* error = nullptr);

} // namespace lanmira
