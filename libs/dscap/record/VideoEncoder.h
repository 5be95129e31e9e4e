#pragma once

#include "dscap/record/AvDeleter.h"
#include "dscap/record/OutputFile.h"
#include "dscap/record/VideoRecorder.h"

#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>

struct AVStream;

namespace dscap {

// One video file being written: BGR pictures are converted to 4:2:0, encoded and muxed.
// Single-threaded; the recorder drives it from its own thread.
class VideoEncoder {
public:
    // nullptr with error set when no encoder takes the size or the file cannot be made.
    static std::unique_ptr<VideoEncoder> open(const VideoRecorder::Options& options,
                                              std::string& error);
    ~VideoEncoder();
    VideoEncoder(const VideoEncoder&) = delete;
    VideoEncoder& operator=(const VideoEncoder&) = delete;

    // The size in the file: the asked size rounded down to even numbers.
    int width() const { return width_; }
    int height() const { return height_; }
    const char* codecName() const;

    // Converts the top-left width() x height() pixels of a BGR picture for the next encode().
    bool convert(const std::uint8_t* bgr, int stride);
    // Encodes the converted picture and writes what the encoder gives back.
    bool encode(std::int64_t timestampNs);
    // Drains the encoder, writes the trailer and closes the file. Safe to call twice; after
    // a failure it only closes the file.
    bool finish();

    bool failed() const { return !error_.empty(); }
    const std::string& error() const { return error_; }
    std::int64_t framesWritten() const { return framesWritten_; }

private:
    VideoEncoder(std::filesystem::path path, int width, int height);
    bool openCodec(double fps, std::string& error);
    bool openFile(std::string& error);
    bool writePackets();
    bool failWrite(int averror);
    bool failEncoder(int averror);

    std::filesystem::path path_;
    int width_;
    int height_;
    std::unique_ptr<OutputFile> file_;
    AvPtr<AVFormatContext> format_; // its I/O is file_'s
    AvPtr<AVCodecContext> codec_;
    AvPtr<SwsContext> converter_;
    AvPtr<AVFrame> frame_;
    AvPtr<AVPacket> packet_;
    AVStream* stream_ = nullptr; // owned by format_
    bool headerWritten_ = false;
    bool writeFailed_ = false;
    bool finished_ = false;
    bool haveFirst_ = false;
    std::int64_t firstTimestampNs_ = 0;
    std::int64_t lastPts_ = 0;
    std::int64_t nextKeyPts_ = 0;
    std::int64_t framesWritten_ = 0;
    std::string error_;
};

} // namespace dscap
