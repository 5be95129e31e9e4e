#include "dscap/record/VideoRecorder.h"

#include "dscap/record/BackgroundRecorder.h"
#include "dscap/record/VideoEncoder.h"

#include <new>
#include <system_error>

namespace dscap {

std::unique_ptr<VideoRecorder> VideoRecorder::open(const Options& options, std::string& error) {
    try {
        std::unique_ptr<VideoEncoder> encoder = VideoEncoder::open(options, error);
        if (!encoder)
            return nullptr;
        return std::make_unique<BackgroundRecorder>(std::move(encoder));
    } catch (const std::bad_alloc&) {
        error = "There is not enough memory to record a video.";
    } catch (const std::system_error&) {
        error = "The recording thread cannot be started.";
    }
    return nullptr;
}

} // namespace dscap
