#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>

namespace dscap {

// Writes BGR frames to a video file on its own thread. MP4 (H.264) is written as fragments
// so that a crash leaves every finished fragment playable; ".mkv" writes Matroska.
class VideoRecorder {
public:
    struct Options {
        std::filesystem::path path;
        int width = 0;
        int height = 0;
        double fps = 30.0; // expected rate; timestamps come from the frames
    };

    // nullptr with error set when the file cannot be made or the encoder refuses.
    static std::unique_ptr<VideoRecorder> open(const Options& options, std::string& error);
    virtual ~VideoRecorder() = default;

    // Queues a copy of the frame and returns at once; false when the queue is full (the
    // frame is left out of the recording only) or the recorder has failed.
    virtual bool push(const std::uint8_t* bgr, int stride, std::int64_t timestampNs) = 0;
    // Set when writing failed (disk full, file gone); the recorder has stopped and closed the
    // file as far as it could.
    virtual bool failed() const = 0;
    virtual std::string error() const = 0;
    // Writes what is queued and finishes the file. Safe to call twice.
    virtual void close() = 0;

    virtual std::int64_t framesWritten() const = 0;
    virtual std::int64_t framesDropped() const = 0;
};

} // namespace dscap
