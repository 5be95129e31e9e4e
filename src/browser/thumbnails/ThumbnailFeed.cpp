#include "browser/thumbnails/ThumbnailFeed.h"

#include "browser/BrowserList.h"
#include "browser/thumbnails/ThumbnailCache.h"
#include "browser/thumbnails/ThumbnailWorker.h"

#include <QRandomGenerator>

namespace lanmira {

ThumbnailFeed::ThumbnailFeed(BrowserList& list) : m_list(list) {}

ThumbnailFeed::~ThumbnailFeed() {
    stop();
}

void ThumbnailFeed::start(ReceiverToken view, std::function<void(int index)> cellDone) {
    if (m_state != State::Idle)
        return;
    // Without a cache folder the browser runs without a cache.
    if (const QString root = ThumbnailCache::defaultRoot(); !root.isEmpty())
        m_cache = std::make_unique<ThumbnailCache>(root);
    m_worker = std::make_unique<ThumbnailWorker>(m_list, m_cache.get(), view, std::move(cellDone));
    m_worker->start();
    m_state = State::Running;
}

void ThumbnailFeed::stop() {
    if (m_state != State::Running)
        return;
    m_worker->stop();
    m_state = State::Stopped;
}

std::unique_lock<std::mutex> ThumbnailFeed::beginChange() {
    m_list.stopRequest.store(BrowserList::kStopAbandon);
    return std::unique_lock(m_list.lock());
}

void ThumbnailFeed::endChange(std::unique_lock<std::mutex>& lock, int firstVisible) {
    m_list.thumbnailsComplete.store(0);
    m_list.firstVisible.store(firstVisible);
    lock.unlock();
    m_list.stopRequest.store(BrowserList::kStopRun);
    wake();
}

void ThumbnailFeed::showFrom(int firstVisible) {
    if (m_list.thumbnailsComplete.load() != 0 || firstVisible == m_list.firstVisible.load())
        return;
    // The index first: the worker reads it as soon as it sees the restart.
    m_list.firstVisible.store(firstVisible);
    m_list.stopRequest.store(BrowserList::kStopRestart);
    wake();
}

void ThumbnailFeed::cleanCache() {
    if (m_cache)
        m_cache->clean(static_cast<int>(QRandomGenerator::global()->bounded(256)));
}

void ThumbnailFeed::wake() {
    if (m_state == State::Running)
        m_worker->wake();
}

} // namespace lanmira
