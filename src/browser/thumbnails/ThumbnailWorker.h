#pragma once

#include "platform/ReceiverRegistry.h"

#include <condition_variable>
#include <functional>
#include <mutex>
#include <thread>

namespace lanmira {

class BrowserList;
class ThumbnailCache;
struct BrowserItem;

// The one background thread that fills in thumbnails, at idle scheduling priority. Woken
// by `wake()`, it holds the list lock for a pass except while it reads the cache, decodes
// or writes the cache: pass A from `firstVisible` to the
// end, pass B from the start; after each item it honours the list's stop word (abandon, or
// restart at the new first visible item). A finished pass sets `thumbnailsComplete` and
// posts BROWSER_RESORT to the view.
class ThumbnailWorker {
public:
    // Makes one item's thumbnails when the cache has none: fills the thumbnails and the
    // image's size and depth, nothing else (the real maker by default; tests pass their
    // own). The worker then marks the item done, even when nothing could be made, and
    // caches what was made.
    using ItemMaker = std::function<void(BrowserItem&)>;
    // Called on the worker thread, list lock held, after an item was looked at (from the
    // cache or made): the view posts itself a repaint of that cell. Receives the item's
    // index.
    using CellDone = std::function<void(int index)>;

    ThumbnailWorker(BrowserList& list, const ThumbnailCache* cache, ReceiverToken view,
                    CellDone cellDone, ItemMaker maker = {});
    ~ThumbnailWorker(); // stop(): abandon, end the loop, wait for the thread
    ThumbnailWorker(const ThumbnailWorker&) = delete;
    ThumbnailWorker& operator=(const ThumbnailWorker&) = delete;

    void start();
    void stop();
    // The wake event (auto-reset).
    void wake();

    // The default ItemMaker: decodes the image (the target of a shortcut).
    static void makeFromFile(BrowserItem& item);

private:
    void run();
    enum class Walk { Finished, Abandoned, Restart };
    // False when the pass was abandoned.
    bool runPass(std::unique_lock<std::mutex>& listLock);
    Walk walk(std::unique_lock<std::mutex>& listLock, int from);
    // False when the list changed while the item was being decoded.
    bool process(std::unique_lock<std::mutex>& listLock, BrowserItem& item, int index);

    BrowserList& m_list;
    const ThumbnailCache* m_cache;
    ReceiverToken m_view;
    CellDone m_cellDone;
    ItemMaker m_maker;
    // Guards m_signalled and m_running.
    std::mutex m_wakeLock;
    std::condition_variable m_wakeCv;
    bool m_signalled = false;
    bool m_running = false;
    std::thread m_thread;
};

} // namespace lanmira
