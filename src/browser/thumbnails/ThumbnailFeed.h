#pragma once

#include "platform/ReceiverRegistry.h"

#include <functional>
#include <memory>
#include <mutex>

namespace lanmira {

class BrowserList;
class ThumbnailCache;
class ThumbnailWorker;

// The grid's supply of thumbnails: the cache and the worker, and the rule every change of
// the list follows: the worker's pass is abandoned, the list changes under its lock, and a
// new pass starts from the first visible cell. GUI thread only.
class ThumbnailFeed {
public:
    enum class State { Idle, Running, Stopped };

    explicit ThumbnailFeed(BrowserList& list);
    ~ThumbnailFeed(); // stop()

    State state() const { return m_state; }
    // Makes the cache (when a folder for it exists) and starts the worker, which reports
    // each finished cell, on its own thread, to `cellDone`.
    void start(ReceiverToken view, std::function<void(int index)> cellDone);
    void stop();
    // Null when the browser runs without a cache.
    ThumbnailCache* cache() const { return m_cache.get(); }

    // Abandons the worker's pass and takes the list's lock.
    std::unique_lock<std::mutex> beginChange();
    // Releases the lock; the worker starts a new pass from `firstVisible`.
    void endChange(std::unique_lock<std::mutex>& lock, int firstVisible);
    // The view scrolled: a pass still running restarts at the first visible cell.
    void showFrom(int firstVisible);
    // Drops a random part of the cache's stale entries.
    void cleanCache();

private:
    void wake();

    BrowserList& m_list;
    State m_state = State::Idle;
    std::unique_ptr<ThumbnailCache> m_cache;
    std::unique_ptr<ThumbnailWorker> m_worker;
};

} // namespace lanmira
