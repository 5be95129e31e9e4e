#pragma once

#include "dscap/record/AvDeleter.h"

#include <cstdint>
#include <filesystem>
#include <memory>

struct AVIOContext;

namespace dscap {

// The recording's file, written through FFmpeg's I/O layer on a descriptor of our own, so
// that a recording that fails part-way can be cut back to its last complete fragment: a
// fragment broken off at the end makes some players refuse the whole file.
class OutputFile {
public:
    // nullptr with averror set (an AVERROR code) when the file cannot be created.
    static std::unique_ptr<OutputFile> create(const std::filesystem::path& path, int& averror);
    ~OutputFile();
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;

    AVIOContext* io() const { return io_.get(); }

    // Flushes what the muxer has written and notes that the file is complete up to here.
    // false when the flush failed.
    bool flushComplete();
    // Cuts off whatever follows the last complete point, then closes.
    void closeAtLastComplete();
    // Flushes and closes; an AVERROR code when that failed, else 0.
    int close();
    // Removes a file that never got anything worth keeping.
    void discard();

private:
    OutputFile(std::filesystem::path path, int fd);
    static int writeBytes(void* opaque, std::uint8_t* data, int size);
    static std::int64_t seekTo(void* opaque, std::int64_t offset, int whence);

    std::filesystem::path path_;
    int fd_;
    AvPtr<AVIOContext> io_;
    std::int64_t completeBytes_ = 0;
};

} // namespace dscap
