#pragma once

#include "browser/BrowserItem.h"

#include <QString>

#include <array>
#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>
#include <vector>

namespace lanmira {

enum class SortKey : std::int32_t {
    Name = 0,
    Type = 1,
    Size = 2,
    Width = 3,
    Height = 4,
    Extension = 5
};

// The process-wide list of the current folder's images. The worker thread and the
// user-interface thread share it under `lock()`; the user-interface thread stores
// kStopAbandon in `stopRequest` before taking the lock, so a running pass lets go after at
// most one more item.
class BrowserList {
public:
    enum Stop : std::int32_t { kStopRun = 1, kStopAbandon = 2, kStopRestart = 3 };
    static constexpr std::uint32_t kDefaultFormatWord = 5;

    static BrowserList& instance();

    std::mutex& lock() { return m_lock; }
    std::vector<std::unique_ptr<BrowserItem>>& items() { return m_items; }
    const std::vector<std::unique_ptr<BrowserItem>>& items() const { return m_items; }

    // Ends with '/'; empty: no folder shown.
    QString currentFolder;
    std::int32_t sortKey = 0;       // SortKey
    std::int32_t sortDirection = 0; // 0 ascending, 1 descending
    std::int32_t largeMode = 1;
    std::array<std::uint32_t, 16> formatFilter{};

    std::atomic<std::int32_t> thumbnailsComplete{0};
    std::atomic<std::int32_t> stopRequest{kStopRun};
    std::atomic<std::int32_t> firstVisible{0};

    // Whether files of this format (absolute number) are listed.
    bool listed(std::uint32_t format) const;

    // Caller holds the lock. Empties the list, then lists the current folder's images in
    // directory order.
    void fullScan();
    // Caller holds the lock. Appends, at the end, images that are not yet items; true when
    // any was added. Items whose files vanished stay.
    bool rescanForAdditions();
    // Caller holds the lock. Sorts with the current key and direction; true when the order
    // changed.
    bool sort();
    void clear();

    // Changes whenever items may have been freed, moved or had their thumbnails dropped;
    // the worker, which decodes without the lock, keeps its result only when this has not
    // changed meanwhile. Read and changed under the lock.
    std::uint64_t generation() const { return m_generation; }
    void touch() { ++m_generation; }

    // Strict before-test of the current key and direction.
    static bool before(const BrowserItem& a, const BrowserItem& b, std::int32_t key,
                       std::int32_t direction);

    // Selection: the selected bit of each item.
    void selectAll();
    void invertSelection();
    int selectedCount() const;
    std::vector<QString> selectedPaths() const;

    // Caller holds the lock. Removes selected items whose files no longer exist; true when
    // any left.
    bool removeSelectedGone();
    // Caller holds the lock. Removes the item with exactly this path; its former index, or
    // -1 when none matched.
    int removePath(const QString& path);

    // For tests: a list that is not the process-wide one.
    BrowserList();

private:
    std::mutex m_lock;
    std::vector<std::unique_ptr<BrowserItem>> m_items;
    std::uint64_t m_generation = 0;
};

} // namespace lanmira
