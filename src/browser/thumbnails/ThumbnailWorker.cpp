#include "browser/thumbnails/ThumbnailWorker.h"

#include "browser/BrowserList.h"
#include "browser/thumbnails/ThumbnailCache.h"
#include "browser/thumbnails/ThumbnailMaker.h"
#include "imagelib/imagelib.h"
#include "platform/Messages.h"

#include <algorithm>
#include <pthread.h>
#include <sched.h>

namespace lanmira {
namespace {

void lowerToIdlePriority() {
    sched_param param{};
    param.sched_priority = 0;
    // Failure leaves the normal priority: slower to yield, still correct.
    pthread_setschedparam(pthread_self(), SCHED_IDLE, &param);
}

} // namespace

ThumbnailWorker::ThumbnailWorker(BrowserList& list, const ThumbnailCache* cache, ReceiverToken view,
                                 CellDone cellDone, ItemMaker maker)
    : m_list(list), m_cache(cache), m_view(view), m_cellDone(std::move(cellDone)),
      m_maker(maker ? std::move(maker) : ItemMaker(&ThumbnailWorker::makeFromFile)) {}

ThumbnailWorker::~ThumbnailWorker() {
    stop();
}

void ThumbnailWorker::start() {
    if (m_thread.joinable())
        return;
    {
        std::lock_guard lock(m_wakeLock);
        m_running = true;
        m_signalled = false;
    }
    m_thread = std::thread([this] { run(); });
}

void ThumbnailWorker::stop() {
    m_list.stopRequest.store(BrowserList::kStopAbandon);
    {
        std::lock_guard lock(m_wakeLock);
        m_running = false;
        m_signalled = true;
    }
    m_wakeCv.notify_one();
    if (m_thread.joinable())
        m_thread.join();
}

void ThumbnailWorker::wake() {
    {
        std::lock_guard lock(m_wakeLock);
        m_signalled = true;
    }
    m_wakeCv.notify_one();
}

void ThumbnailWorker::makeFromFile(BrowserItem& item) {
    ThumbnailMaker::Result made = ThumbnailMaker::make(item.imagePath());
    item.imageWidth = made.imageWidth;
    item.imageHeight = made.imageHeight;
    item.bitsPerPixel = made.bitsPerPixel;
    item.large = std::move(made.large);
    item.small = std::move(made.small);
}

void ThumbnailWorker::run() {
    lowerToIdlePriority();
    // A huge picture's thumbnail gives up when the list is abandoned (leaving the browser,
    // closing the program) rather than keep them waiting for this thread.
    ImageLib_SetStopWord(&m_list.stopRequest, BrowserList::kStopAbandon);
    for (;;) {
        {
            std::unique_lock lock(m_wakeLock);
            m_wakeCv.wait(lock, [this] { return m_signalled; });
            m_signalled = false;
            if (!m_running)
                return;
        }
        // The wake lock is never held here: a wake() during the pass is kept for the
        // next round instead of blocking the user-interface thread.
        std::unique_lock listLock(m_list.lock());
        if (runPass(listLock)) {
            m_list.thumbnailsComplete.store(1);
            ReceiverRegistry::post(m_view, msg::BROWSER_RESORT);
        }
    }
}

bool ThumbnailWorker::runPass(std::unique_lock<std::mutex>& listLock) {
    for (;;) {
        // Pass A from the first visible item, so what is on screen fills first; pass B then
        // covers the items above it (those done already are skipped at once).
        Walk result = walk(listLock, std::max(0, m_list.firstVisible.load()));
        if (result == Walk::Finished)
            result = walk(listLock, 0);
        if (result != Walk::Restart)
            return result == Walk::Finished;
    }
}

ThumbnailWorker::Walk ThumbnailWorker::walk(std::unique_lock<std::mutex>& listLock, int from) {
    auto& items = m_list.items();
    const int n = static_cast<int>(items.size());
    for (int i = from; i < n; ++i) {
        const bool kept = process(listLock, *items[i], i);
        if (m_list.stopRequest.load() == BrowserList::kStopAbandon)
            return Walk::Abandoned;
        if (!kept)
            return Walk::Restart;
        std::int32_t restart = BrowserList::kStopRestart;
        if (m_list.stopRequest.compare_exchange_strong(restart, BrowserList::kStopRun))
            return Walk::Restart;
    }
    return Walk::Finished;
}

bool ThumbnailWorker::process(std::unique_lock<std::mutex>& listLock, BrowserItem& item,
                              int index) {
    if (item.thumbnailDone())
        return true;
    // Cache files and images are opened and read without the list lock, which is held only
    // to copy the item's names in and publish the results: a slow disk, a hung file system
    // or a decode never makes the user-interface thread wait. What was found is kept only
    // when the list did not change meanwhile.
    BrowserItem found(item.path, item.format, item.linkTarget);
    const std::uint64_t generation = m_list.generation();
    listLock.unlock();
    const bool cached = m_cache && m_cache->read(found);
    bool gaveUp = false;
    if (!cached) {
        m_maker(found);
        gaveUp = ImageLib_GaveUp() != 0;
        if (m_cache && (!found.large.empty() || !found.small.empty()))
            m_cache->write(found);
    }
    listLock.lock();
    if (m_list.generation() != generation)
        return false;
    // A thumbnail given up half-way is no verdict on the file: it is tried again next pass.
    if (gaveUp)
        return true;
    if (m_cache) {
        item.imageTime = found.imageTime;
        item.linkTime = found.linkTime;
    }
    item.imageWidth = found.imageWidth;
    item.imageHeight = found.imageHeight;
    item.bitsPerPixel = found.bitsPerPixel;
    item.large = std::move(found.large);
    item.small = std::move(found.small);
    // Last, with release order: the user-interface thread reads the thumbnails only after
    // seeing this bit. Set even when nothing was made, so a file that cannot be decoded is
    // not tried again on every pass.
    item.markThumbnailDone();
    if (m_cellDone)
        m_cellDone(index);
    return true;
}

} // namespace lanmira
