#include "dscap/core/Device.h"

#include "dscap/core/BackgroundJobs.h"
#include "dscap/core/CameraControl.h"
#include "dscap/processing/AutoExposure.h"
#include "dscap/processing/ColourTemperature.h"
#include "dscap/processing/FrameProcessor.h"
#include "dscap/processing/RegionStats.h"
#include "dscap/record/VideoRecorder.h"
#include "imagelib/core/DibHeader.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <filesystem>
#include <tuple>

namespace dscap {

namespace {

using Clock = std::chrono::steady_clock;

constexpr int kReadTimeoutMs = 20; // how long a setting or a stop may wait for the thread
constexpr auto kHistogramPeriod = std::chrono::milliseconds(100);
constexpr auto kSavePeriod = std::chrono::seconds(2);
constexpr std::uint32_t kMaxAutoExposureUs = 100000; // longer only with gain at its top
constexpr int kSettleFrames = 2;       // frames until a new exposure shows in the picture
constexpr int kWhiteBalanceRounds = 4; // for cameras that balance in the device

Region clampRegion(Region r, int width, int height) {
    r.left = std::clamp(r.left, 0, width);
    r.right = std::clamp(r.right, 0, width);
    r.top = std::clamp(r.top, 0, height);
    r.bottom = std::clamp(r.bottom, 0, height);
    if (r.right <= r.left || r.bottom <= r.top)
        return defaultRegion(width, height);
    return r;
}

Region scaleRegion(const Region& r, Resolution from, Resolution to) {
    if (from.width <= 0 || from.height <= 0)
        return {};
    auto sx = [&](int v) {
        return static_cast<int>(static_cast<long long>(v) * to.width / from.width);
    };
    auto sy = [&](int v) {
        return static_cast<int>(static_cast<long long>(v) * to.height / from.height);
    };
    return {sx(r.left), sy(r.top), sx(r.right), sy(r.bottom)};
}

std::string suggestedRecordingPath() {
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

// The background jobs' key of a recording file, the same however the path was written.
std::string fileKey(const std::string& path) {
    std::error_code ec;
    const std::filesystem::path absolute = std::filesystem::absolute(path, ec);
    return "file:" + (ec ? std::filesystem::path(path) : absolute).lexically_normal().string();
}

} // namespace

Device::Device(dscap_handle handle, CameraInfo info, std::unique_ptr<CameraSource> source,
               void* frameWindow, void* viewWindow, DeviceContext context)
    : handle_(handle), info_(std::move(info)), source_(std::move(source)),
      frameWindow_(frameWindow), viewWindow_(viewWindow), context_(std::move(context)),
      colour_(source_->isColour()), features_(source_->features()),
      resolutions_(source_->resolutions()), hasExtraControls_(!source_->extraControls().empty()) {
    ControlValues defaults;
    defaults.exposureUs = source_->exposureRange().def;
    defaults.gain = source_->gainRange().def;
    defaults.speed = source_->defaultSpeed();
    if (!(features_ & kFeatureExposureTime) && !(features_ & kFeatureNativeAutoExposure))
        defaults.autoExposure = false;
    values_ = defaults;
    if (context_.settings) {
        if (auto stored = context_.settings->load(info_.id, defaults))
            values_ = *stored;
    }
    clampToSource(values_);
}

Device::~Device() {
    stop();
}

ICameraControl* Device::control() {
    std::lock_guard lock(mutex_);
    if (!control_)
        control_ = std::make_shared<CameraControl>(weak_from_this());
    return control_.get();
}

std::shared_ptr<CameraControl> Device::controlObject() const {
    std::lock_guard lock(mutex_);
    return control_;
}

void Device::clampToSource(ControlValues& v) const {
    const int count = static_cast<int>(resolutions_.size());
    v.resolutionIndex = count > 0 ? std::clamp(v.resolutionIndex, 0, count - 1) : 0;
    const auto time = source_->exposureRange();
    const auto gain = source_->gainRange();
    if (features_ & kFeatureExposureTime)
        v.exposureUs = std::clamp(v.exposureUs, time.min, time.max);
    if (features_ & kFeatureGain)
        v.gain = std::clamp(v.gain, gain.min, gain.max);
    v.speed = std::clamp(v.speed, 0, std::max(0, source_->maxSpeed()));
    if (!colour_)
        v.monochrome = true;
    const Resolution size = count > 0 ? resolutions_[v.resolutionIndex] : Resolution{};
    v.whiteBalanceRegion = clampRegion(v.whiteBalanceRegion, size.width, size.height);
    v.exposureRegion = clampRegion(v.exposureRegion, size.width, size.height);
}

SensorSettings Device::sensorSettings(const ControlValues& v) const {
    SensorSettings s;
    s.exposureUs = v.exposureUs;
    s.gain = v.gain;
    s.nativeAutoExposure = v.autoExposure && !(features_ & kFeatureExposureTime) &&
                           (features_ & kFeatureNativeAutoExposure);
    s.lightSource = v.lightSource;
    s.sampling = v.sampling;
    s.speed = v.speed;
    s.hue = v.hue;
    s.saturation = v.saturation;
    s.brightness = v.brightness;
    s.contrast = v.contrast;
    s.gamma = v.gamma;
    s.horizontalFlip = v.horizontalFlip;
    s.verticalFlip = v.verticalFlip;
    s.temperature = v.temperature;
    return s;
}

ControlValues Device::values() const {
    std::lock_guard lock(mutex_);
    return values_;
}

Device::State Device::state() const {
    std::lock_guard lock(mutex_);
    return state_;
}

bool Device::setState(State to) {
    const State from = state_;
    bool allowed = false;
    switch (to) {
    case State::Opened:
        break;
    case State::Previewing:
        allowed = from == State::Opened || from == State::Recording;
        break;
    case State::Recording:
        allowed = from == State::Previewing;
        break;
    case State::Lost:
        allowed = from == State::Previewing || from == State::Recording;
        break;
    case State::Closed:
        allowed = from != State::Closed;
        break;
    }
    if (!allowed)
        return false;
    state_ = to;
    if (!live())
        whiteBalancePending_ = false;
    return true;
}

bool Device::hasSource() const {
    std::lock_guard lock(mutex_);
    return state_ != State::Closed && state_ != State::Lost;
}

bool Device::previewing() const {
    std::lock_guard lock(mutex_);
    return live();
}

bool Device::recording() const {
    std::lock_guard lock(mutex_);
    return state_ == State::Recording;
}

std::string Device::lastError() const {
    std::lock_guard lock(mutex_);
    return error_;
}

void Device::setError(const std::string& error) {
    std::lock_guard lock(mutex_);
    error_ = error;
}

void Device::post(void* window, unsigned message, std::uintptr_t wParam,
                  std::intptr_t lParam) const {
    if (!context_.hooks.post || message == 0)
        return;
    std::lock_guard lock(callbackMutex_);
    if (!quiet_)
        context_.hooks.post(window, message, wParam, lParam);
}

bool Device::start() {
    ControlValues v;
    {
        std::lock_guard lock(mutex_);
        if (state_ != State::Opened)
            return false;
        v = values_;
        appliedVersion_ = version_;
    }
    // No capture thread yet, so the source is ours on this thread.
    source_->apply(sensorSettings(v));
    realExposure_ = source_->realExposureTime();
    if (!source_->start(v.resolutionIndex)) {
        setError(source_->lastError());
        return false;
    }
    {
        std::lock_guard lock(mutex_);
        if (!setState(State::Previewing))
            return false;
    }
    try {
        thread_ = std::thread([this, index = v.resolutionIndex] { run(index); });
    } catch (const std::system_error&) {
        std::lock_guard lock(mutex_);
        error_ = "The capture thread cannot be started.";
        setState(State::Lost);
        return false;
    }
    return true;
}

void Device::close() {
    std::unique_ptr<VideoRecorder> recorder;
    std::string path;
    {
        std::scoped_lock lock(recordMutex_, mutex_);
        if (!setState(State::Closed))
            return;
        recorder = std::move(recorder_);
        path = std::move(recordingPath_);
    }
    {
        // Waits for a callback or post under way; none starts after.
        std::lock_guard lock(callbackMutex_);
        callbacks_ = {};
        quiet_ = true;
    }
    if (recorder)
        finishRecording(std::move(recorder), path, 0);
}

void Device::release() {
    std::call_once(releaseOnce_, [&] {
        // The thread ends at its next look at the state: within a read timeout and a frame.
        if (thread_.joinable())
            thread_.join();
        source_->stop();
        saveSettings();
    });
}

void Device::stop() {
    close();
    release();
}

void Device::saveSettings() {
    if (context_.settings)
        context_.settings->save(info_.id, values());
}

std::uint32_t Device::realExposureTime() const {
    std::lock_guard lock(mutex_);
    // Sliders ask on every step: never wait for the capture thread to apply the setting.
    if (appliedVersion_ == version_)
        return realExposure_;
    return source_->expectedExposureTime(sensorSettings(values_));
}

void Device::applyPending(std::uint64_t& appliedVersion, FrameProcessor& processor) {
    ControlValues v;
    std::uint64_t version;
    {
        std::lock_guard lock(mutex_);
        if (version_ == appliedVersion)
            return;
        v = values_;
        version = version_;
    }
    source_->apply(sensorSettings(v));
    realExposure_ = source_->realExposureTime();

    ProcessingParams p;
    const RgbGains gains = (features_ & kFeatureWhiteBalanceTemperature)
                               ? whiteBalanceGains(kTemperatureDefault, v.tint)
                               : whiteBalanceGains(v.temperature, v.tint);
    if (colour_) {
        p.gainB = gains.b;
        p.gainG = gains.g;
        p.gainR = gains.r;
        if (!(features_ & kFeatureHue))
            p.hue = v.hue;
        if (!(features_ & kFeatureSaturation))
            p.saturation = v.saturation;
    }
    if (!(features_ & kFeatureBrightness))
        p.brightness = v.brightness;
    if (!(features_ & kFeatureContrast))
        p.contrast = v.contrast;
    if (!(features_ & kFeatureGamma))
        p.gamma = v.gamma;
    p.low = v.low;
    p.high = v.high;
    p.monochrome = v.monochrome || !colour_;
    if (!(features_ & kFeatureHorizontalFlip))
        p.horizontalFlip = v.horizontalFlip;
    if (!(features_ & kFeatureVerticalFlip))
        p.verticalFlip = v.verticalFlip;
    processor.setParams(p);

    {
        std::lock_guard lock(mutex_);
        appliedVersion_ = version;
    }
    appliedVersion = version;
}

void Device::run(int streaming) {
    struct DropTasksAtExit {
        Device* device;
        ~DropTasksAtExit() { device->runTasks(true); }
    } dropTasks{this};
    FrameProcessor processor;
    Histogram histogram;
    std::uint64_t appliedVersion = 0;
    auto nextHistogram = Clock::now();
    auto nextSave = Clock::now() + kSavePeriod;
    std::uint64_t savedVersion = 0;
    int sentWidth = 0, sentHeight = 0;

    for (;;) {
        int index = 0;
        {
            std::lock_guard lock(mutex_);
            if (!live())
                return;
            index = values_.resolutionIndex;
        }
        if (index != streaming) {
            streaming = index;
            source_->stop();
            appliedVersion = 0; // a reopened stream takes every setting again
            applyPending(appliedVersion, processor);
            if (!source_->start(index)) {
                lose(DSCAP_EVENT_STREAM_FAILED, source_->lastError());
                return;
            }
        }
        applyPending(appliedVersion, processor);
        runTasks();

        SourceFrame frame;
        const ReadStatus status = source_->read(frame, kReadTimeoutMs);
        if (status == ReadStatus::Lost) {
            lose(DSCAP_EVENT_DEVICE_LOST, source_->lastError());
            return;
        }
        if (status != ReadStatus::Frame || !frame.bgr || frame.width <= 0 || frame.height <= 0)
            continue;

        cameraRate_.tick();
        autoExposureStep(frame);
        whiteBalanceStep(frame);

        const auto now = Clock::now();
        const bool wantHistogram = now >= nextHistogram;
        if (wantHistogram)
            nextHistogram = now + kHistogramPeriod;
        Image& picture = exchange_.back();
        processor.process(frame, picture, wantHistogram ? &histogram : nullptr);
        recordFrame(picture, frame.timestampNs);
        exchange_.publish();
        frameWidth_ = picture.width();
        frameHeight_ = picture.height();

        if (picture.width() != sentWidth || picture.height() != sentHeight) {
            const bool first = sentWidth == 0;
            sentWidth = picture.width();
            sentHeight = picture.height();
            post(viewWindow_, context_.messages.videoSize, static_cast<std::uintptr_t>(sentWidth),
                 sentHeight);
            if (!first)
                outputChanged();
        }
        if (!notifyPending_.exchange(true))
            post(viewWindow_, context_.messages.notify, 0, 0);
        if (wantHistogram)
            deliverHistogram(histogram);

        if (now >= nextSave) {
            nextSave = now + kSavePeriod;
            if (appliedVersion != savedVersion) {
                savedVersion = appliedVersion;
                saveSettings();
            }
        }
    }
}

void Device::autoExposureStep(const SourceFrame& frame) {
    if (!(features_ & kFeatureExposureTime))
        return;
    if (settleFrames_ > 0) {
        --settleFrames_;
        return;
    }
    ControlValues v = values();
    if (!v.autoExposure)
        return;
    const RegionMeans means =
        regionMeans(frame, clampRegion(v.exposureRegion, frame.width, frame.height));
    if (!means.valid)
        return;
    AutoExposure::Limits limits;
    limits.time = source_->exposureRange();
    limits.gain = (features_ & kFeatureGain) ? source_->gainRange()
                                             : ValueRange<std::uint16_t>{v.gain, v.gain, v.gain};
    limits.maxAutoTimeUs = std::min(kMaxAutoExposureUs, limits.time.max);
    limits.lightSource = (features_ & kFeatureLightSource) ? v.lightSource : kLightDc;
    const Exposure current{v.exposureUs, v.gain};
    const Exposure next = AutoExposure().step(means.luma, v.autoExposureTarget, current, limits);
    if (next == current)
        return;
    const std::int32_t status = change([&](ControlValues& values) {
        if (!values.autoExposure)
            return ICameraControl::kNotAvailable; // switched off meanwhile: keep the user's
        values.exposureUs = next.timeUs;
        values.gain = next.gain;
        return ICameraControl::kOk;
    });
    if (status < 0)
        return;
    settleFrames_ = kSettleFrames;
    std::lock_guard lock(callbackMutex_);
    if (callbacks_.exposure)
        callbacks_.exposure(callbacks_.exposureContext);
}

std::int32_t Device::startWhiteBalance(DSCAP_WHITEBALANCE_CALLBACK cb, void* ctx) {
    if (!colour_)
        return ICameraControl::kNotSupported;
    {
        std::lock_guard lock(mutex_);
        if (!live())
            return ICameraControl::kNotAvailable;
        whiteBalancePending_ = true;
        whiteBalanceRounds_ = 0;
    }
    std::lock_guard lock(callbackMutex_);
    callbacks_.whiteBalance = cb;
    callbacks_.whiteBalanceContext = ctx;
    return ICameraControl::kOk;
}

void Device::whiteBalanceStep(const SourceFrame& frame) {
    if (whiteBalanceWait_ > 0) {
        --whiteBalanceWait_;
        return;
    }
    ControlValues v;
    int round = 0;
    {
        std::lock_guard lock(mutex_);
        if (!whiteBalancePending_ || appliedVersion_ != version_)
            return;
        v = values_;
        round = ++whiteBalanceRounds_;
    }
    const RegionMeans means =
        regionMeans(frame, clampRegion(v.whiteBalanceRegion, frame.width, frame.height));
    if (!means.valid)
        return;
    int temperature = 0, tint = 0;
    if (features_ & kFeatureWhiteBalanceTemperature) {
        // The device applied its own balance for the current temperature: take it out to
        // get what the sensor saw, and look again after the new one has reached the picture.
        const double hi = std::max(means.b, means.r);
        const bool balanced = hi > 0 && std::abs(means.b - means.r) / hi < 0.02;
        const RgbGains in = whiteBalanceGains(v.temperature, kTintDefault);
        std::tie(temperature, tint) =
            tempTintForNeutral(means.b / in.b, means.g / in.g, means.r / in.r);
        if (balanced || round > kWhiteBalanceRounds) {
            temperature = v.temperature;
        } else {
            change([&](ControlValues& values) {
                values.temperature = temperature;
                values.tint = tint;
                return ICameraControl::kOk;
            });
            whiteBalanceWait_ = kSettleFrames;
            return;
        }
    } else {
        std::tie(temperature, tint) = tempTintForNeutral(means.b, means.g, means.r);
    }
    change([&](ControlValues& values) {
        values.temperature = temperature;
        values.tint = tint;
        return ICameraControl::kOk;
    });
    {
        std::lock_guard lock(mutex_);
        whiteBalancePending_ = false;
    }
    std::lock_guard lock(callbackMutex_);
    if (callbacks_.whiteBalance)
        callbacks_.whiteBalance(temperature, tint, callbacks_.whiteBalanceContext);
    callbacks_.whiteBalance = nullptr;
    callbacks_.whiteBalanceContext = nullptr;
}

void Device::deliverHistogram(const Histogram& histogram) {
    {
        std::lock_guard lock(mutex_);
        lastHistogram_ = histogram;
        hasHistogram_ = true;
    }
    std::lock_guard lock(callbackMutex_);
    if (callbacks_.histogram)
        callbacks_.histogram(histogram.bins[kBlue].data(), histogram.bins[kGreen].data(),
                             histogram.bins[kRed].data(), histogram.bins[kGrey].data(),
                             callbacks_.histogramContext);
}

const Histogram* Device::lastHistogram(Histogram& copy) const {
    std::lock_guard lock(mutex_);
    if (!hasHistogram_)
        return nullptr;
    copy = lastHistogram_;
    return &copy;
}

void Device::setHistogramCallback(DSCAP_HISTOGRAM_CALLBACK cb, void* ctx) {
    std::lock_guard lock(callbackMutex_);
    callbacks_.histogram = cb;
    callbacks_.histogramContext = cb ? ctx : nullptr;
}

void Device::setExposureCallback(DSCAP_EXPOSURE_CALLBACK cb, void* ctx) {
    std::lock_guard lock(callbackMutex_);
    callbacks_.exposure = cb;
    callbacks_.exposureContext = cb ? ctx : nullptr;
}

void Device::setNotifyCallback(DSCAP_NOTIFY_CALLBACK cb, void* ctx) {
    std::lock_guard lock(callbackMutex_);
    callbacks_.notify = cb;
    callbacks_.notifyContext = cb ? ctx : nullptr;
}

void Device::outputChanged() {
    std::lock_guard lock(callbackMutex_);
    if (callbacks_.notify)
        callbacks_.notify(callbacks_.notifyContext);
}

void Device::recordFrame(const Image& picture, std::int64_t timestampNs) {
    std::unique_lock lock(recordMutex_);
    if (!recorder_)
        return;
    recorder_->push(picture.data(), picture.stride(), timestampNs);
    if (!recorder_->failed())
        return;
    std::unique_ptr<VideoRecorder> recorder;
    {
        std::lock_guard stateLock(mutex_);
        if (state_ != State::Recording || !setState(State::Previewing))
            return;
        recorder = std::move(recorder_);
        error_ = recorder->error();
    }
    const std::string path = std::move(recordingPath_);
    lock.unlock();
    finishRecording(std::move(recorder), path, DSCAP_EVENT_RECORD_FAILED);
}

void Device::finishRecording(std::unique_ptr<VideoRecorder> recorder, const std::string& path,
                             int event) {
    // Copies only: the device may be gone when the file is complete.
    auto done = [post = context_.hooks.post, view = viewWindow_, frame = frameWindow_,
                 stopped = context_.messages.recording, eventMessage = context_.messages.event,
                 event] {
        if (!post)
            return;
        if (stopped != 0)
            post(view, stopped, 0, 0);
        if (event != 0 && eventMessage != 0)
            post(frame, eventMessage, static_cast<std::uintptr_t>(event), 0);
    };
    if (context_.jobs) {
        const std::string key = fileKey(path);
        {
            std::lock_guard lock(recordMutex_);
            finishingKey_ = key;
        }
        context_.jobs->run(
            key, [file = std::shared_ptr<VideoRecorder>(std::move(recorder))] { file->close(); },
            std::move(done));
    } else {
        recorder->close();
        done();
    }
}

void Device::lose(int event, const std::string& error) {
    std::unique_ptr<VideoRecorder> recorder;
    std::string path;
    {
        std::scoped_lock lock(recordMutex_, mutex_);
        if (!setState(State::Lost))
            return; // closed meanwhile: nobody is to be told
        error_ = error;
        recorder = std::move(recorder_);
        path = std::move(recordingPath_);
    }
    if (recorder) // the event follows the complete file
        finishRecording(std::move(recorder), path, event);
    else
        post(frameWindow_, context_.messages.event, static_cast<std::uintptr_t>(event), 0);
}

// Work for the capture thread from another thread. The caller waits until it has run or
// was dropped unrun, so the work may refer to the caller's locals.
struct SourceTask {
    std::function<void(CameraSource&)> work;
    std::mutex mutex;
    std::condition_variable changed;
    enum { Queued, Running, Done, Dropped } state = Queued;

    void set(decltype(state) next) {
        std::lock_guard lock(mutex);
        state = next;
        changed.notify_all();
    }
};

bool Device::withSource(const std::function<void(CameraSource&)>& work) {
    std::unique_lock lock(mutex_);
    if (state_ == State::Closed || state_ == State::Lost)
        return false;
    if (state_ == State::Opened) {
        lock.unlock();
        work(*source_);
        return true;
    }
    auto task = std::make_shared<SourceTask>();
    task->work = work;
    tasks_.push_back(task);
    lock.unlock();

    std::unique_lock taskLock(task->mutex);
    task->changed.wait_for(taskLock, std::chrono::seconds(2), [&] {
        return task->state == SourceTask::Done || task->state == SourceTask::Dropped;
    });
    if (task->state == SourceTask::Queued)
        task->state = SourceTask::Dropped; // too late: it must not run after we return
    task->changed.wait(taskLock, [&] { return task->state != SourceTask::Running; });
    return task->state == SourceTask::Done;
}

void Device::runTasks(bool drop) {
    std::deque<std::shared_ptr<SourceTask>> tasks;
    {
        std::lock_guard lock(mutex_);
        tasks.swap(tasks_);
    }
    for (const auto& task : tasks) {
        {
            std::lock_guard lock(task->mutex);
            if (task->state != SourceTask::Queued)
                continue;
            task->state = drop ? SourceTask::Dropped : SourceTask::Running;
            if (drop) {
                task->changed.notify_all();
                continue;
            }
        }
        task->work(*source_);
        task->set(SourceTask::Done);
    }
}

std::vector<ExtraControl> Device::extraControls() {
    std::vector<ExtraControl> controls;
    withSource([&](CameraSource& source) { controls = source.extraControls(); });
    return controls;
}

bool Device::setExtraControl(std::uint32_t id, std::int32_t value) {
    bool ok = false;
    return withSource([&](CameraSource& source) { ok = source.setExtraControl(id, value); }) && ok;
}

bool Device::showDialog(int command) {
    if (!context_.hooks.showDialog)
        return false;
    return context_.hooks.showDialog(frameWindow_, handle_, command) != 0;
}

bool Device::canGrab() {
    if (!hasSource())
        return false;
    return exchange_.peekNewest([](const Image&) {});
}

bool Device::videoSize(int& width, int& height) {
    if (!hasSource())
        return false;
    int w = 0, h = 0;
    if (!exchange_.peekNewest([&](const Image& picture) {
            w = picture.width();
            h = picture.height();
        })) {
        const ControlValues v = values();
        if (resolutions_.empty())
            return false;
        w = resolutions_[v.resolutionIndex].width;
        h = resolutions_[v.resolutionIndex].height;
    }
    if (w <= 0 || h <= 0)
        return false;
    width = reportedWidth_ = w;
    height = reportedHeight_ = h;
    return true;
}

bool Device::grab(void* dib) {
    if (!dib || !hasSource())
        return false;
    bool ok = false;
    exchange_.peekNewest([&](const Image& picture) {
        // The caller sized the block from the last dscap_video_size; a picture of another
        // size would not fit.
        if (picture.width() != reportedWidth_ || picture.height() != reportedHeight_)
            return;
        const int w = picture.width(), h = picture.height();
        const std::size_t stride = imagelib::dibStride(static_cast<std::uint64_t>(w), 24);
        imagelib::BitmapInfoHeader header{};
        header.size = sizeof header;
        header.width = w;
        header.height = h;
        header.planes = 1;
        header.bitCount = 24;
        header.compression = imagelib::kBiRgb;
        header.sizeImage = static_cast<std::uint32_t>(stride * h);
        auto* out = static_cast<std::uint8_t*>(dib);
        std::memcpy(out, &header, sizeof header);
        std::uint8_t* rows = out + sizeof header;
        const std::size_t used = static_cast<std::size_t>(w) * 3;
        for (int y = 0; y < h; ++y) {
            std::uint8_t* dst = rows + stride * static_cast<std::size_t>(h - 1 - y);
            std::memcpy(dst, picture.row(y), used);
            std::memset(dst + used, 0, stride - used);
        }
        ok = true;
    });
    return ok;
}

bool Device::draw(dscap_draw_fn paint, void* context) {
    if (!paint)
        return false;
    return exchange_.readNewest([&](const Image& picture, bool isNew) {
        if (isNew)
            shownRate_.tick();
        const dscap_image image{picture.data(), picture.width(), picture.height(),
                                picture.stride()};
        paint(context, &image);
    });
}

int Device::notify() {
    notifyPending_ = false;
    return DSCAP_NOTIFY_REPAINT;
}

void Device::frameRates(double& camera, double& shown) {
    camera = cameraRate_.perSecond();
    shown = shownRate_.perSecond();
}

bool Device::setResolution(int index) {
    std::lock_guard lock(mutex_);
    // No size change under a running recording; the capture thread sees the new index.
    if ((state_ != State::Opened && state_ != State::Previewing) || index < 0 ||
        index >= static_cast<int>(resolutions_.size()))
        return false;
    if (index == values_.resolutionIndex)
        return true;
    const Resolution from = resolutions_[values_.resolutionIndex];
    const Resolution to = resolutions_[index];
    values_.resolutionIndex = index;
    values_.whiteBalanceRegion =
        clampRegion(scaleRegion(values_.whiteBalanceRegion, from, to), to.width, to.height);
    values_.exposureRegion =
        clampRegion(scaleRegion(values_.exposureRegion, from, to), to.width, to.height);
    ++version_;
    return true;
}

bool Device::startRecording() {
    if (state() != State::Previewing)
        return false;
    if (frameWidth_ <= 0 || frameHeight_ <= 0) {
        setError("There is no picture to record yet.");
        return false;
    }
    if (!context_.hooks.recordFile)
        return false;
    char path[4096] = {};
    const std::string suggested = suggestedRecordingPath();
    if (!context_.hooks.recordFile(frameWindow_, suggested.c_str(), path, sizeof path) || !path[0])
        return false;
    // The hook ran the application's event loop: the camera may have been unplugged, closed
    // or set recording meanwhile, and its picture size may have changed.
    if (state() != State::Previewing) {
        setError("The camera stopped while the file was being chosen.");
        return false;
    }
    const int width = frameWidth_, height = frameHeight_;
    // The last recording's file must be complete first, so that the messages of the two
    // cannot cross; and the file chosen may be one still being finished elsewhere.
    if (context_.jobs) {
        std::string earlier;
        {
            std::lock_guard lock(recordMutex_);
            earlier = finishingKey_;
        }
        if (!earlier.empty())
            context_.jobs->waitFor(earlier);
        context_.jobs->waitFor(fileKey(path));
    }

    VideoRecorder::Options options;
    options.path = path;
    options.width = width;
    options.height = height;
    double camera = 0, shown = 0;
    frameRates(camera, shown);
    options.fps = camera > 0 ? camera : 30.0;
    std::error_code ec;
    const bool existed = std::filesystem::exists(options.path, ec);
    std::string error;
    std::unique_ptr<VideoRecorder> recorder = VideoRecorder::open(options, error);
    if (!recorder) {
        setError(error);
        return false;
    }
    {
        std::scoped_lock lock(recordMutex_, mutex_);
        if (setState(State::Recording)) {
            recorder_ = std::move(recorder);
            recordingPath_ = path;
        } else {
            error_ = "The camera stopped while the recording was being prepared.";
        }
    }
    if (recorder) {
        // Lost the race with the capture thread: take back the file this call made.
        recorder->close();
        if (!existed)
            std::filesystem::remove(options.path, ec);
        return false;
    }
    post(viewWindow_, context_.messages.recording, 1, 0);
    return true;
}

bool Device::stopRecording() {
    std::unique_ptr<VideoRecorder> recorder;
    std::string path;
    {
        std::scoped_lock lock(recordMutex_, mutex_);
        if (state_ != State::Recording || !setState(State::Previewing))
            return false;
        recorder = std::move(recorder_);
        path = std::move(recordingPath_);
    }
    finishRecording(std::move(recorder), path, 0);
    return true;
}

} // namespace dscap
