#include "dscap/core/RecordingFinisher.h"

#include "dscap/record/VideoRecorder.h"

#include <pthread.h>
#include <system_error>

namespace dscap {

RecordingFinisher::~RecordingFinisher() {
    waitAll();
}

void RecordingFinisher::silence() {
    std::lock_guard lock(mutex_);
    silent_ = true;
}

void RecordingFinisher::reapDone() {
    for (auto it = jobs_.begin(); it != jobs_.end();) {
        if (!it->done) {
            ++it;
            continue;
        }
        // Done is set as the thread's last act under the lock, so this join is immediate.
        it->thread.join();
        it = jobs_.erase(it);
    }
}

void RecordingFinisher::finish(std::unique_ptr<VideoRecorder> recorder,
                               std::function<void()> done) {
    if (!recorder)
        return;
    std::unique_lock lock(mutex_);
    reapDone();
    auto body = [this, recorder = std::shared_ptr<VideoRecorder>(std::move(recorder)),
                 done = std::move(done)](Job* job) {
        recorder->close();
        std::lock_guard jobLock(mutex_);
        if (done && !silent_)
            done();
        if (job) {
            job->done = true;
            finished_.notify_all();
        }
    };
    // List nodes stay put, so the thread may keep a pointer to its job.
    Job* job = &jobs_.emplace_back();
    try {
        job->thread = std::thread([body, job] {
            pthread_setname_np(pthread_self(), "dscap-finish");
            body(job);
        });
    } catch (const std::system_error&) {
        jobs_.pop_back();
        lock.unlock();
        body(nullptr); // no thread to be had: finish here rather than leave the file open
    }
}

void RecordingFinisher::waitAll() {
    std::unique_lock lock(mutex_);
    finished_.wait(lock, [&] {
        for (const Job& job : jobs_) {
            if (!job.done)
                return false;
        }
        return true;
    });
    reapDone();
}

} // namespace dscap
