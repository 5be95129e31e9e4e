#pragma once

#include <condition_variable>
#include <functional>
#include <list>
#include <mutex>
#include <string>
#include <thread>

namespace dscap {

// Work the caller's thread must not wait for: finishing a recording (the encoder drains its
// queue and the file's end is written, a good part of a second at full size) and closing a
// camera (its capture thread ends within a frame). Each job runs on a thread of its own.
// Every job is waited for before the runner goes (the library's lives until process exit),
// so no file is left unfinished and no camera open.
class BackgroundJobs {
public:
    BackgroundJobs() = default;
    ~BackgroundJobs();
    BackgroundJobs(const BackgroundJobs&) = delete;
    BackgroundJobs& operator=(const BackgroundJobs&) = delete;

    // Runs work, then done (unless silenced meanwhile), on a new thread; both here when no
    // thread can be started. The key names what the job works on (a file, a camera).
    void run(std::string key, std::function<void()> work, std::function<void()> done = {});
    // Returns once no job on that key is under way.
    void waitFor(const std::string& key);
    // Returns once every job handed over so far has ended.
    void waitAll();
    // From now on jobs do their work but call no done: at process exit nobody is left to
    // tell.
    void silence();

private:
    struct Job {
        std::string key;
        std::thread thread;
        bool ended = false; // guarded by mutex_
    };
    void waitUntil(const std::function<bool(const Job&)>& counts);
    void reapEnded(); // joins ended jobs; under mutex_

    std::mutex mutex_; // guards jobs_ and silent_
    std::condition_variable ended_;
    std::list<Job> jobs_;
    bool silent_ = false;
};

} // namespace dscap
