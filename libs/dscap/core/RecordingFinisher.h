#pragma once

#include <condition_variable>
#include <functional>
#include <list>
#include <memory>
#include <mutex>
#include <thread>

namespace dscap {

class VideoRecorder;

// Finishes recordings away from the caller's thread: closing a recorder drains its queue
// through the encoder and writes the end of the file, which takes a good part of a second
// at full size. The finisher waits for every job before it goes (the library's lives until
// process exit), so no file is left unfinished.
class RecordingFinisher {
public:
    RecordingFinisher() = default;
    ~RecordingFinisher();
    RecordingFinisher(const RecordingFinisher&) = delete;
    RecordingFinisher& operator=(const RecordingFinisher&) = delete;

    // Closes the recorder on a thread of its own and then calls done there (unless the
    // finisher has been silenced). When no thread can be started, does both here.
    void finish(std::unique_ptr<VideoRecorder> recorder, std::function<void()> done);
    // Returns once every file handed over so far is complete.
    void waitAll();
    // From now on jobs finish their files but call no done: at process exit nobody is left
    // to tell.
    void silence();

private:
    struct Job {
        std::thread thread;
        bool done = false; // guarded by the finisher's mutex_
    };
    void reapDone(); // joins finished jobs; under mutex_

    std::mutex mutex_; // guards jobs_ and silent_
    std::condition_variable finished_;
    std::list<Job> jobs_;
    bool silent_ = false;
};

} // namespace dscap
