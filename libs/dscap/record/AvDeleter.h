#pragma once

#include <memory>

struct AVCodecContext;
struct AVFormatContext;
struct AVFrame;
struct AVIOContext;
struct AVPacket;
struct SwsContext;

namespace dscap {

// Frees FFmpeg objects through their own release calls, so they can live in unique_ptrs
// without FFmpeg's headers leaking into ours.
struct AvDeleter {
    void operator()(AVCodecContext* context) const;
    void operator()(AVFormatContext* context) const;
    void operator()(AVFrame* frame) const;
    // Frees the buffer too, which FFmpeg may have replaced since it was handed over.
    void operator()(AVIOContext* context) const;
    void operator()(AVPacket* packet) const;
    void operator()(SwsContext* context) const;
};

template <typename T> using AvPtr = std::unique_ptr<T, AvDeleter>;

} // namespace dscap
