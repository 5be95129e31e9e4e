#include "dscap/v4l2/V4l2Camera.h"

#include "dscap/v4l2/V4l2ErrorText.h"
#include "dscap/v4l2/V4l2System.h"

#include <algorithm>
#include <cerrno>
#include <ctime>

namespace dscap::v4l2 {
namespace {

constexpr std::uint32_t kBufferCount = 4;

std::int64_t nowNs() {
    timespec t{};
    clock_gettime(CLOCK_MONOTONIC, &t);
    return std::int64_t{t.tv_sec} * 1'000'000'000 + t.tv_nsec;
}

std::int64_t timestampOf(const v4l2_buffer& b) {
    const bool monotonic =
        (b.flags & V4L2_BUF_FLAG_TIMESTAMP_MASK) == V4L2_BUF_FLAG_TIMESTAMP_MONOTONIC;
    if (!monotonic || (b.timestamp.tv_sec == 0 && b.timestamp.tv_usec == 0))
        return nowNs();
    return std::int64_t{b.timestamp.tv_sec} * 1'000'000'000 +
           std::int64_t{b.timestamp.tv_usec} * 1'000;
}

v4l2_buffer mmapBuffer(std::uint32_t index) {
    v4l2_buffer b{};
    b.type = V4L2_BUF_TYPE_VIDEO_CAPTURE;
    b.memory = V4L2_MEMORY_MMAP;
    b.index = index;
    return b;
}

bool requestBuffers(V4l2Device& device, std::uint32_t& count) {
    v4l2_requestbuffers r{};
    r.count = count;
    r.type = V4L2_BUF_TYPE_VIDEO_CAPTURE;
    r.memory = V4L2_MEMORY_MMAP;
    if (device.ioctl(VIDIOC_REQBUFS, &r) != 0)
        return false;
    count = r.count;
    return true;
}

bool supportsFrameIntervals(V4l2Device& device) {
    v4l2_streamparm p{};
    p.type = V4L2_BUF_TYPE_VIDEO_CAPTURE;
    return device.ioctl(VIDIOC_G_PARM, &p) == 0 &&
           (p.parm.capture.capability & V4L2_CAP_TIMEPERFRAME) != 0;
}

} // namespace

V4l2Camera::V4l2Camera(std::unique_ptr<V4l2Device> device) : device_(std::move(device)) {}

std::unique_ptr<V4l2Camera> V4l2Camera::create(std::unique_ptr<V4l2Device> device,
                                               std::string& error) {
    std::unique_ptr<V4l2Camera> camera(new V4l2Camera(std::move(device)));
    V4l2Device& d = *camera->device_;
    camera->formats_.query(d);
    if (camera->formats_.empty()) {
        error = "The camera offers no picture format that this program can show.";
        return nullptr;
    }
    camera->controls_.query(d);
    camera->features_ = camera->controls_.features();
    if (camera->formats_.hasSpeeds() && supportsFrameIntervals(d))
        camera->features_ |= kFeatureSpeed;
    camera->colour_ = camera->formats_.isColour();
    camera->decoder_ = std::make_unique<FrameDecoder>(d);
    camera->current_ = camera->formats_.choose(0);
    if (camera->features_ & kFeatureSpeed)
        camera->maxSpeed_ = std::max(0, int(camera->current_->intervals.size()) - 1);
    camera->realExposure_ = camera->controls_.exposureRange().def;
    return camera;
}

V4l2Camera::~V4l2Camera() {
    releaseBuffers();
}

void V4l2Camera::setError(std::string text) {
    std::lock_guard lock(errorMutex_);
    error_ = std::move(text);
}

std::string V4l2Camera::lastError() const {
    std::lock_guard lock(errorMutex_);
    return error_;
}

bool V4l2Camera::failed(int error) {
    setError(errorText(error));
    if (error == ENODEV || error == ENXIO)
        lost_ = true;
    return false;
}

ReadStatus V4l2Camera::lose(int error) {
    setError(error == ENODEV || error == ENXIO ? "The camera was disconnected." : errorText(error));
    lost_ = true;
    return ReadStatus::Lost;
}

int V4l2Camera::clampSpeed(int speed) const {
    return std::clamp(speed, 0, maxSpeed_.load());
}

bool V4l2Camera::setInterval(int speed) {
    if (!(features_ & kFeatureSpeed) || !current_ || current_->intervals.empty())
        return true;
    v4l2_streamparm p{};
    p.type = V4L2_BUF_TYPE_VIDEO_CAPTURE;
    p.parm.capture.timeperframe = current_->intervals[std::size_t(clampSpeed(speed))];
    // A refused interval leaves the device's own; only a vanished device is an error.
    if (device_->ioctl(VIDIOC_S_PARM, &p) != 0) {
        const int error = errno;
        return error == ENODEV || error == ENXIO ? failed(error) : true;
    }
    appliedSpeed_ = clampSpeed(speed);
    return true;
}

bool V4l2Camera::mapBuffers() {
    std::uint32_t count = kBufferCount;
    if (!requestBuffers(*device_, count))
        return failed(errno);
    if (count < 2) {
        setError("The camera could not provide enough frame buffers.");
        return false;
    }
    for (std::uint32_t i = 0; i < count; ++i) {
        v4l2_buffer b = mmapBuffer(i);
        if (device_->ioctl(VIDIOC_QUERYBUF, &b) != 0)
            return failed(errno);
        void* address = device_->mmap(b.length, b.m.offset);
        if (!address)
            return failed(errno);
        buffers_.push_back({address, b.length});
    }
    return true;
}

bool V4l2Camera::queueAll() {
    for (std::uint32_t i = 0; i < buffers_.size(); ++i) {
        v4l2_buffer b = mmapBuffer(i);
        if (device_->ioctl(VIDIOC_QBUF, &b) != 0)
            return failed(errno);
    }
    int type = V4L2_BUF_TYPE_VIDEO_CAPTURE;
    if (device_->ioctl(VIDIOC_STREAMON, &type) != 0)
        return failed(errno);
    streaming_ = true;
    return true;
}

void V4l2Camera::releaseBuffers() {
    // Errors are ignored: a vanished device refuses these, yet the mappings must still go.
    if (streaming_) {
        int type = V4L2_BUF_TYPE_VIDEO_CAPTURE;
        device_->ioctl(VIDIOC_STREAMOFF, &type);
        streaming_ = false;
    }
    if (buffers_.empty())
        return;
    for (const Buffer& b : buffers_)
        device_->munmap(b.address, b.length);
    buffers_.clear();
    std::uint32_t none = 0;
    requestBuffers(*device_, none);
}

bool V4l2Camera::start(int resolutionIndex) {
    stop();
    if (lost_) {
        setError("The camera was disconnected.");
        return false;
    }
    auto choice = formats_.choose(resolutionIndex);
    if (!choice) {
        setError("The camera has no picture size with that number.");
        return false;
    }
    v4l2_format f{};
    f.type = V4L2_BUF_TYPE_VIDEO_CAPTURE;
    f.fmt.pix.width = static_cast<__u32>(choice->size.width);
    f.fmt.pix.height = static_cast<__u32>(choice->size.height);
    f.fmt.pix.pixelformat = choice->pixelFormat;
    f.fmt.pix.field = V4L2_FIELD_NONE;
    if (device_->ioctl(VIDIOC_S_FMT, &f) != 0)
        return failed(errno);
    if (f.fmt.pix.pixelformat != choice->pixelFormat) {
        setError("The camera refused the picture format.");
        return false;
    }
    if (!decoder_->setFormat(f.fmt.pix)) {
        setError(decoder_->lastError());
        return false;
    }
    current_ = std::move(choice);
    if (features_ & kFeatureSpeed)
        maxSpeed_ = std::max(0, int(current_->intervals.size()) - 1);
    if (!setInterval(wantedSpeed_))
        return false;
    if (!mapBuffers() || !queueAll()) {
        releaseBuffers();
        return false;
    }
    const std::size_t bytes = std::size_t(decoder_->width()) * decoder_->height() * 3;
    for (auto& b : bgr_)
        b.resize(bytes);
    next_ = 0;
    return true;
}

void V4l2Camera::stop() {
    releaseBuffers();
}

void V4l2Camera::apply(const SensorSettings& settings) {
    if (lost_)
        return;
    std::uint32_t real = realExposure_.load();
    if (const int error = controls_.apply(*device_, settings, real))
        failed(error);
    realExposure_ = real;
    wantedSpeed_ = settings.speed;
    if (lost_ || !(features_ & kFeatureSpeed) || clampSpeed(wantedSpeed_) == appliedSpeed_)
        return;
    if (!streaming_) {
        setInterval(wantedSpeed_);
        return;
    }
    // Drivers take a new frame interval only while the stream is off.
    int type = V4L2_BUF_TYPE_VIDEO_CAPTURE;
    if (device_->ioctl(VIDIOC_STREAMOFF, &type) != 0) {
        failed(errno);
        return;
    }
    streaming_ = false;
    if (!setInterval(wantedSpeed_) || !queueAll())
        releaseBuffers();
}

ReadStatus V4l2Camera::read(SourceFrame& frame, int timeoutMs) {
    if (lost_)
        return ReadStatus::Lost;
    if (!streaming_) {
        setError("The camera is not streaming.");
        return ReadStatus::Lost;
    }
    switch (device_->wait(timeoutMs)) {
    case WaitResult::Timeout:
        return ReadStatus::Timeout;
    case WaitResult::Error:
        return lose(errno);
    case WaitResult::Ready:
        break;
    }
    v4l2_buffer b = mmapBuffer(0);
    if (device_->ioctl(VIDIOC_DQBUF, &b) != 0) {
        const int error = errno;
        return error == EAGAIN ? ReadStatus::Timeout : lose(error);
    }
    if (b.index >= buffers_.size())
        return lose(EIO);
    const Buffer& buffer = buffers_[b.index];
    std::uint8_t* out = bgr_[next_].data();
    const bool whole = !(b.flags & V4L2_BUF_FLAG_ERROR) && b.bytesused > 0;
    const bool decoded =
        whole && decoder_->decode(static_cast<const std::uint8_t*>(buffer.address),
                                  std::min<std::size_t>(b.bytesused, buffer.length), out);
    const std::int64_t timestamp = timestampOf(b);
    if (device_->ioctl(VIDIOC_QBUF, &b) != 0)
        return lose(errno);
    if (!decoded) {
        setError(whole ? decoder_->lastError() : "The camera sent a damaged picture.");
        return ReadStatus::Skipped;
    }
    frame.bgr = out;
    frame.width = decoder_->width();
    frame.height = decoder_->height();
    frame.stride = frame.width * 3;
    frame.timestampNs = timestamp;
    next_ ^= 1;
    return ReadStatus::Frame;
}

std::vector<ExtraControl> V4l2Camera::extraControls() {
    if (lost_)
        return {};
    return controls_.extraControls(*device_);
}

bool V4l2Camera::setExtraControl(std::uint32_t id, std::int32_t value) {
    if (lost_)
        return false;
    const int error = controls_.setExtraControl(*device_, id, value);
    if (error != 0 && error != EINVAL)
        failed(error);
    return error == 0;
}

} // namespace dscap::v4l2
