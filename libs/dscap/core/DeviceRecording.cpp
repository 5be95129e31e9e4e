#include "dscap/core/DeviceRecording.h"

#include "dscap/core/BackgroundJobs.h"

#include <cstdlib>
#include <ctime>
#include <filesystem>

namespace dscap {

namespace {

// The background jobs' key of a recording file, the same however the path was written.
std::string fileKey(const std::string& path) {
    std::error_code ec;
    const std::filesystem::path absolute = std::filesystem::absolute(path, ec);
    return "file:" + (ec ? std::filesystem::path(path) : absolute).lexically_normal().string();
}

} // namespace

DeviceRecording::DeviceRecording(std::mutex& deviceMutex, News news,
                                 std::shared_ptr<BackgroundJobs> jobs)
    : deviceMutex_(deviceMutex), news_(news), jobs_(std::move(jobs)) {}

std::string DeviceRecording::suggestedPath() {
    namespace fs = std::filesystem;
    fs::path folder;
    if (const char* home = std::getenv("HOME"); home && home[0] == '/') {
        folder = home;
        std::error_code ec;
        if (fs::is_directory(folder / "Videos", ec))
            folder /= "Videos";
    }
    const std::time_t now = std::time(nullptr);
    std::tm tm{};
    localtime_r(&now, &tm);
    char name[64];
    std::strftime(name, sizeof name, "Video %Y-%m-%d %H-%M-%S.mp4", &tm);
    return (folder / name).string();
}

void DeviceRecording::waitForFiles(const std::string& path) {
    if (!jobs_)
        return;
    std::string earlier;
    {
        std::lock_guard lock(mutex_);
        earlier = finishingKey_;
    }
    if (!earlier.empty())
        jobs_->waitFor(earlier);
    jobs_->waitFor(fileKey(path));
}

DeviceRecording::Start DeviceRecording::start(const VideoRecorder::Options& options,
                                              std::string& error,
                                              const std::function<bool()>& enter) {
    std::error_code ec;
    const bool existed = std::filesystem::exists(options.path, ec);
    std::unique_ptr<VideoRecorder> recorder = VideoRecorder::open(options, error);
    if (!recorder)
        return Start::NotOpened;
    {
        std::scoped_lock lock(mutex_, deviceMutex_);
        if (enter()) {
            recorder_ = std::move(recorder);
            path_ = options.path.string();
        }
    }
    if (recorder) {
        // Lost the race with the capture thread: take back the file this call made.
        recorder->close();
        if (!existed)
            std::filesystem::remove(options.path, ec);
        return Start::Refused;
    }
    return Start::Started;
}

void DeviceRecording::finish(Ended ended, int event) {
    auto done = [news = news_, event] {
        if (!news.post)
            return;
        if (news.recordingMessage != 0)
            news.post(news.viewWindow, news.recordingMessage, 0, 0);
        if (event != 0 && news.eventMessage != 0)
            news.post(news.frameWindow, news.eventMessage, static_cast<std::uintptr_t>(event), 0);
    };
    if (jobs_) {
        const std::string key = fileKey(ended.path);
        {
            std::lock_guard lock(mutex_);
            finishingKey_ = key;
        }
        jobs_->run(
            key,
            [file = std::shared_ptr<VideoRecorder>(std::move(ended.recorder))] { file->close(); },
            std::move(done));
    } else {
        ended.recorder->close();
        done();
    }
}

} // namespace dscap
