#include "dscap/core/BackgroundJobs.h"

#include <pthread.h>
#include <system_error>

namespace dscap {

BackgroundJobs::~BackgroundJobs() {
    waitAll();
}

void BackgroundJobs::silence() {
    std::lock_guard lock(mutex_);
    silent_ = true;
}

void BackgroundJobs::reapEnded() {
    for (auto it = jobs_.begin(); it != jobs_.end();) {
        if (!it->ended) {
            ++it;
            continue;
        }
        // A job marks itself ended as its last act under the lock, so this join is at once.
        it->thread.join();
        it = jobs_.erase(it);
    }
}

void BackgroundJobs::run(std::string key, std::function<void()> work, std::function<void()> done) {
    auto body = [this, work = std::move(work), done = std::move(done)](Job* job) {
        if (work)
            work();
        std::lock_guard lock(mutex_);
        if (done && !silent_)
            done();
        if (job) {
            job->ended = true;
            ended_.notify_all();
        }
    };
    std::unique_lock lock(mutex_);
    reapEnded();
    // List nodes stay put, so the thread may keep a pointer to its job.
    Job* job = &jobs_.emplace_back();
    job->key = std::move(key);
    try {
        job->thread = std::thread([body, job] {
            pthread_setname_np(pthread_self(), "dscap-job");
            body(job);
        });
    } catch (const std::system_error&) {
        jobs_.pop_back();
        lock.unlock();
        body(nullptr); // no thread to be had: do it here rather than leave it undone
    }
}

void BackgroundJobs::waitUntil(const std::function<bool(const Job&)>& counts) {
    std::unique_lock lock(mutex_);
    ended_.wait(lock, [&] {
        for (const Job& job : jobs_) {
            if (!job.ended && counts(job))
                return false;
        }
        return true;
    });
    reapEnded();
}

void BackgroundJobs::waitFor(const std::string& key) {
    waitUntil([&](const Job& job) { return job.key == key; });
}

void BackgroundJobs::waitAll() {
    waitUntil([](const Job&) { return true; });
}

} // namespace dscap
