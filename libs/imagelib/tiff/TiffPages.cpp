#include "imagelib/tiff/TiffPages.h"

#include <unordered_set>

namespace imagelib {
namespace {

struct Reader {
    std::span<const std::uint8_t> bytes;
    bool bigEndian;

    // Callers check that the bytes exist.
    std::uint64_t read(std::uint64_t at, int size) const {
        std::uint64_t v = 0;
        for (int i = 0; i < size; ++i) {
            const int shift = bigEndian ? 8 * (size - 1 - i) : 8 * i;
            v |= static_cast<std::uint64_t>(bytes[at + static_cast<std::uint64_t>(i)]) << shift;
        }
        return v;
    }
    bool has(std::uint64_t at, std::uint64_t size) const {
        return at <= bytes.size() && size <= bytes.size() - at;
    }
};

} // namespace

int countTiffPages(std::span<const std::uint8_t> bytes) {
    if (bytes.size() < 8 ||
        !((bytes[0] == 'I' && bytes[1] == 'I') || (bytes[0] == 'M' && bytes[1] == 'M')))
        return 0;
    const Reader r{bytes, bytes[0] == 'M'};
    const auto magic = r.read(2, 2);
    const bool big = magic == 43;
    if (!big && magic != 42)
        return 0;
    if (big && (!r.has(0, 16) || r.read(4, 2) != 8))
        return 0;
    // Classic: 2-byte entry count, 12-byte entries, 4-byte link; BigTIFF: 8, 20 and 8.
    const int countSize = big ? 8 : 2;
    const std::uint64_t entrySize = big ? 20 : 12;
    const int linkSize = big ? 8 : 4;

    std::uint64_t offset = big ? r.read(8, 8) : r.read(4, 4);
    std::unordered_set<std::uint64_t> seen;
    int pages = 0;
    while (pages < kMaxTiffPages && offset != 0 && r.has(offset, countSize) &&
           seen.insert(offset).second) {
        const std::uint64_t entries = r.read(offset, countSize);
        if (entries == 0 || entries > bytes.size() / entrySize ||
            !r.has(offset + countSize, entries * entrySize))
            break;
        ++pages;
        const std::uint64_t link = offset + countSize + entries * entrySize;
        if (!r.has(link, linkSize))
            break;
        offset = r.read(link, linkSize);
    }
    return pages;
}

} // namespace imagelib
