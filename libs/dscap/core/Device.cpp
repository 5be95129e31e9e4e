#include "dscap/core/Device.h"

#include "dscap/core/CameraControl.h"
#include "dscap/core/SourceTask.h"
#include "dscap/processing/FrameProcessor.h"

#include <chrono>

namespace dscap {

namespace {

using Clock = std::chrono::steady_clock;

constexpr int kReadTimeoutMs = 20; // how long a setting or a stop may wait for the thread
constexpr auto kHistogramPeriod = std::chrono::milliseconds(100);
constexpr auto kSavePeriod = std::chrono::seconds(2);

} // namespace

Device::Device(dscap_handle handle, CameraInfo info, std::unique_ptr<CameraSource> source,
               void* frameWindow, void* viewWindow, DeviceContext context)
    : handle_(handle), info_(std::move(info)), source_(std::move(source)),
      frameWindow_(frameWindow), viewWindow_(viewWindow), context_(std::move(context)),
      colour_(source_->isColour()), features_(source_->features()),
      resolutions_(source_->resolutions()), hasExtraControls_(!source_->extraControls().empty()),
      mapping_(*source_), callbacks_(context_.hooks.post),
      recording_(mutex_,
                 {context_.hooks.post, viewWindow_, frameWindow_, context_.messages.recording,
                  context_.messages.event},
                 context_.jobs),
      adjuster_(features_, source_->exposureRange(), source_->gainRange()) {
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
    mapping_.clamp(values_);
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
    source_->apply(mapping_.sensorSettings(v));
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
    std::optional<DeviceRecording::Ended> ended =
        recording_.end([&] { return setState(State::Closed); });
    if (!ended)
        return;
    // Waits for a callback or post under way; none starts after.
    callbacks_.silence();
    if (ended->recorder)
        recording_.finish(std::move(*ended), 0);
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
    return source_->expectedExposureTime(mapping_.sensorSettings(values_));
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
    source_->apply(mapping_.sensorSettings(v));
    realExposure_ = source_->realExposureTime();
    processor.setParams(mapping_.processingParams(v));

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

        picture_.frameArrived();
        autoExposureStep(frame);
        whiteBalanceStep(frame);

        const auto now = Clock::now();
        const bool wantHistogram = now >= nextHistogram;
        if (wantHistogram)
            nextHistogram = now + kHistogramPeriod;
        Image& picture = picture_.back();
        processor.process(frame, picture, wantHistogram ? &histogram : nullptr);
        recordFrame(picture, frame.timestampNs);
        const DevicePicture::Size size = picture_.publish();

        if (size.changed) {
            callbacks_.post(viewWindow_, context_.messages.videoSize,
                            static_cast<std::uintptr_t>(size.width), size.height);
            if (!size.first)
                outputChanged();
        }
        if (picture_.notifyDue())
            callbacks_.post(viewWindow_, context_.messages.notify, 0, 0);
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
    if (!adjuster_.exposureDue())
        return;
    const std::optional<Exposure> next = adjuster_.nextExposure(frame, values());
    if (!next)
        return;
    const std::int32_t status = change([&](ControlValues& values) {
        if (!values.autoExposure)
            return ICameraControl::kNotAvailable; // switched off meanwhile: keep the user's
        values.exposureUs = next->timeUs;
        values.gain = next->gain;
        return ICameraControl::kOk;
    });
    if (status < 0)
        return;
    adjuster_.exposureSet();
    callbacks_.exposureChanged();
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
    callbacks_.setWhiteBalance(cb, ctx);
    return ICameraControl::kOk;
}

void Device::whiteBalanceStep(const SourceFrame& frame) {
    if (!adjuster_.balanceDue())
        return;
    ControlValues v;
    int round = 0;
    {
        std::lock_guard lock(mutex_);
        if (!whiteBalancePending_ || appliedVersion_ != version_)
            return;
        v = values_;
        round = ++whiteBalanceRounds_;
    }
    const AutoAdjuster::Balance balance = adjuster_.balance(frame, v, round);
    if (balance.kind == AutoAdjuster::Balance::None)
        return;
    change([&](ControlValues& values) {
        values.temperature = balance.temperature;
        values.tint = balance.tint;
        return ICameraControl::kOk;
    });
    if (balance.kind == AutoAdjuster::Balance::Again)
        return;
    {
        std::lock_guard lock(mutex_);
        whiteBalancePending_ = false;
    }
    callbacks_.whiteBalanceDone(balance.temperature, balance.tint);
}

void Device::deliverHistogram(const Histogram& histogram) {
    {
        std::lock_guard lock(mutex_);
        lastHistogram_ = histogram;
        hasHistogram_ = true;
    }
    callbacks_.histogram(histogram);
}

const Histogram* Device::lastHistogram(Histogram& copy) const {
    std::lock_guard lock(mutex_);
    if (!hasHistogram_)
        return nullptr;
    copy = lastHistogram_;
    return &copy;
}

void Device::setHistogramCallback(DSCAP_HISTOGRAM_CALLBACK cb, void* ctx) {
    callbacks_.setHistogram(cb, ctx);
}

void Device::setExposureCallback(DSCAP_EXPOSURE_CALLBACK cb, void* ctx) {
    callbacks_.setExposure(cb, ctx);
}

void Device::setNotifyCallback(DSCAP_NOTIFY_CALLBACK cb, void* ctx) {
    callbacks_.setNotify(cb, ctx);
}

void Device::outputChanged() {
    callbacks_.outputChanged();
}

void Device::recordFrame(const Image& picture, std::int64_t timestampNs) {
    DeviceRecording::Ended failed =
        recording_.push(picture, timestampNs, [&](const VideoRecorder& recorder) {
            if (state_ != State::Recording || !setState(State::Previewing))
                return false;
            error_ = recorder.error();
            return true;
        });
    if (failed.recorder)
        recording_.finish(std::move(failed), DSCAP_EVENT_RECORD_FAILED);
}

void Device::lose(int event, const std::string& error) {
    std::optional<DeviceRecording::Ended> ended = recording_.end([&] {
        if (!setState(State::Lost))
            return false;
        error_ = error;
        return true;
    });
    if (!ended)
        return;          // closed meanwhile: nobody is to be told
    if (ended->recorder) // the event follows the complete file
        recording_.finish(std::move(*ended), event);
    else
        callbacks_.post(frameWindow_, context_.messages.event, static_cast<std::uintptr_t>(event),
                        0);
}

bool Device::withSource(const std::function<void(CameraSource&)>& work) {
    std::unique_lock lock(mutex_);
    if (state_ == State::Closed || state_ == State::Lost)
        return false;
    if (state_ == State::Opened) {
        lock.unlock();
        work(*source_);
        return true;
    }
    auto task = std::make_shared<SourceTask>(work);
    tasks_.push_back(task);
    lock.unlock();
    return task->wait(std::chrono::seconds(2));
}

void Device::runTasks(bool drop) {
    std::deque<std::shared_ptr<SourceTask>> tasks;
    {
        std::lock_guard lock(mutex_);
        tasks.swap(tasks_);
    }
    for (const auto& task : tasks) {
        if (drop)
            task->drop();
        else
            task->run(*source_);
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
    return picture_.any();
}

bool Device::videoSize(int& width, int& height) {
    if (!hasSource())
        return false;
    int w = 0, h = 0;
    if (!picture_.newestSize(w, h)) {
        const ControlValues v = values();
        if (resolutions_.empty())
            return false;
        w = resolutions_[v.resolutionIndex].width;
        h = resolutions_[v.resolutionIndex].height;
    }
    if (w <= 0 || h <= 0)
        return false;
    picture_.reportSize(w, h);
    width = w;
    height = h;
    return true;
}

bool Device::grab(void* dib) {
    if (!dib || !hasSource())
        return false;
    return picture_.grab(dib);
}

bool Device::draw(dscap_draw_fn paint, void* context) {
    if (!paint)
        return false;
    return picture_.draw(paint, context);
}

int Device::notify() {
    return picture_.notify();
}

void Device::frameRates(double& camera, double& shown) {
    picture_.rates(camera, shown);
}

bool Device::setResolution(int index) {
    std::lock_guard lock(mutex_);
    // No size change under a running recording; the capture thread sees the new index.
    if ((state_ != State::Opened && state_ != State::Previewing) || index < 0 ||
        index >= static_cast<int>(resolutions_.size()))
        return false;
    if (index == values_.resolutionIndex)
        return true;
    mapping_.resize(values_, index);
    ++version_;
    return true;
}

bool Device::startRecording() {
    if (state() != State::Previewing)
        return false;
    if (picture_.width() <= 0 || picture_.height() <= 0) {
        setError("There is no picture to record yet.");
        return false;
    }
    if (!context_.hooks.recordFile)
        return false;
    char path[4096] = {};
    const std::string suggested = DeviceRecording::suggestedPath();
    if (!context_.hooks.recordFile(frameWindow_, suggested.c_str(), path, sizeof path) || !path[0])
        return false;
    // The hook ran the application's event loop: the camera may have been unplugged, closed
    // or set recording meanwhile, and its picture size may have changed.
    if (state() != State::Previewing) {
        setError("The camera stopped while the file was being chosen.");
        return false;
    }
    const int width = picture_.width(), height = picture_.height();
    recording_.waitForFiles(path);

    VideoRecorder::Options options;
    options.path = path;
    options.width = width;
    options.height = height;
    double camera = 0, shown = 0;
    frameRates(camera, shown);
    options.fps = camera > 0 ? camera : 30.0;
    std::string error;
    const DeviceRecording::Start started = recording_.start(options, error, [&] {
        if (setState(State::Recording))
            return true;
        error_ = "The camera stopped while the recording was being prepared.";
        return false;
    });
    if (started == DeviceRecording::Start::NotOpened)
        setError(error);
    if (started != DeviceRecording::Start::Started)
        return false;
    callbacks_.post(viewWindow_, context_.messages.recording, 1, 0);
    return true;
}

bool Device::stopRecording() {
    std::optional<DeviceRecording::Ended> ended =
        recording_.end([&] { return state_ == State::Recording && setState(State::Previewing); });
    if (!ended)
        return false;
    recording_.finish(std::move(*ended), 0);
    return true;
}

} // namespace dscap
