#pragma once

#include "dscap/dscap.h"
#include "dscap/processing/Image.h"
#include "dscap/record/VideoRecorder.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>

namespace dscap {

class BackgroundJobs;

// The recording side of a device: the recorder and its file while the device records, and
// the finishing of the file when it stops. The device's state stays the device's: each call
// that starts or ends a recording runs the device's state change, under the device's lock
// taken after this one, and acts only when the change is made. So the recorder is set
// exactly while the device is Recording.
class DeviceRecording {
public:
    // Where the end of a recording is told. Copied into the job finishing the file: the
    // device may be gone when it is complete.
    struct News {
        dscap_post_fn post = nullptr;
        void* viewWindow = nullptr;  // gets "recording stopped"
        void* frameWindow = nullptr; // gets the event, if any
        unsigned recordingMessage = 0;
        unsigned eventMessage = 0;
    };
    // A recording taken off the device, for finish().
    struct Ended {
        std::unique_ptr<VideoRecorder> recorder; // none: nothing was recording
        std::string path;
    };
    enum class Start { Started, NotOpened, Refused };

    // jobs none: recordings are finished in place.
    DeviceRecording(std::mutex& deviceMutex, News news, std::shared_ptr<BackgroundJobs> jobs);
    DeviceRecording(const DeviceRecording&) = delete;
    DeviceRecording& operator=(const DeviceRecording&) = delete;

    // The file offered to the user: dated, in the Videos folder when there is one.
    static std::string suggestedPath();

    // Waits until the last recording's file is complete, so that the messages of the two
    // cannot cross, and until that file is no longer being finished elsewhere.
    void waitForFiles(const std::string& path);
    // Opens the file and, when `enter` agrees, records to it. Else takes the file back,
    // removing it unless it was there before. error is set when the file cannot be opened.
    Start start(const VideoRecorder::Options& options, std::string& error,
                const std::function<bool()>& enter);

    // None when `leave` refuses; else the recording under way, if any.
    template <typename F> std::optional<Ended> end(F&& leave);
    // Records the frame. When the recorder failed and `leave(recorder)` agrees, returns the
    // recording to finish.
    template <typename F> Ended push(const Image& picture, std::int64_t timestampNs, F&& leave);

    // Finishes the file in the background, then posts "recording stopped" and the event
    // (when not 0) to the frame, even when the device has been closed meanwhile.
    void finish(Ended ended, int event);

private:
    std::mutex& deviceMutex_;
    const News news_;
    const std::shared_ptr<BackgroundJobs> jobs_;

    std::mutex mutex_; // guards the fields below; taken before deviceMutex_
    std::unique_ptr<VideoRecorder> recorder_;
    std::string path_;
    std::string finishingKey_; // the background job of the last recording that ended
};

template <typename F> std::optional<DeviceRecording::Ended> DeviceRecording::end(F&& leave) {
    std::scoped_lock lock(mutex_, deviceMutex_);
    if (!leave())
        return std::nullopt;
    return Ended{std::move(recorder_), std::move(path_)};
}

template <typename F>
DeviceRecording::Ended DeviceRecording::push(const Image& picture, std::int64_t timestampNs,
                                             F&& leave) {
    std::lock_guard lock(mutex_);
    if (!recorder_)
        return {};
    recorder_->push(picture.data(), picture.stride(), timestampNs);
    if (!recorder_->failed())
        return {};
    Ended ended;
    {
        std::lock_guard stateLock(deviceMutex_);
        if (!leave(*recorder_))
            return {};
        ended.recorder = std::move(recorder_);
    }
    ended.path = std::move(path_);
    return ended;
}

} // namespace dscap
