#pragma once

#include "dscap/ICameraControl.h"
#include "dscap/core/AutoAdjuster.h"
#include "dscap/core/CameraSettings.h"
#include "dscap/core/CameraSource.h"
#include "dscap/core/ControlValues.h"
#include "dscap/core/DeviceCallbacks.h"
#include "dscap/core/DevicePicture.h"
#include "dscap/core/DeviceRecording.h"
#include "dscap/core/ValueMapping.h"
#include "dscap/dscap.h"
#include "dscap/processing/Histogram.h"

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <thread>

namespace dscap {

class BackgroundJobs;
class CameraControl;
class SourceTask;

// What a device needs from the library: where to post, what to post, where settings live,
// who runs the work its caller must not wait for (finishing a recording).
struct DeviceContext {
    dscap_messages messages{};
    dscap_hooks hooks{};
    std::shared_ptr<const CameraSettings> settings;
    std::shared_ptr<BackgroundJobs> jobs; // none: recordings are finished in place
};

// One opened camera: its state, its capture thread, the newest processed frame, the
// recorder and the values of the control interface. Every public call is safe in any
// state; calls in the wrong state fail.
//
// State changes, all made by setState, which refuses any other:
//
//   from         to          by
//   Opened       Previewing  start()
//   Previewing   Recording   startRecording(), once the file is open
//   Recording    Previewing  stopRecording(), or a write error (capture thread)
//   Previewing   Lost        the camera went away or its stream failed (capture thread)
//   Recording    Lost        the same; the recording is finished
//   Opened,
//   Previewing,
//   Recording,
//   Lost         Closed      close() (or stop()); final
//
// A recording leaving Recording is finished in the background (the file's end written);
// that is no state of the device, which may go on previewing, record again (after waiting
// for the file) or close meanwhile.
class Device : public std::enable_shared_from_this<Device> {
public:
    enum class State { Opened, Previewing, Recording, Lost, Closed };

    Device(dscap_handle handle, CameraInfo info, std::unique_ptr<CameraSource> source,
           void* frameWindow, void* viewWindow, DeviceContext context);
    ~Device();
    Device(const Device&) = delete;
    Device& operator=(const Device&) = delete;

    // Made once, after the device is owned by a shared_ptr.
    ICameraControl* control();
    std::shared_ptr<CameraControl> controlObject() const;

    bool start();
    // Closes the device for good at once: no callback and no message (but the end of a
    // recording, see stopRecording) comes after it returns. The capture thread ends by itself
    // within a frame; release() waits for that.
    void close();
    // After close(): waits for the capture thread, stops the stream and keeps the settings.
    // Once only.
    void release();
    // close() and release().
    void stop();
    State state() const;
    const std::string& id() const { return info_.id; }

    bool previewing() const;
    bool recording() const;
    bool hasSource() const;
    bool canGrab();
    bool videoSize(int& width, int& height);
    bool grab(void* dib);
    bool draw(dscap_draw_fn paint, void* context);
    int notify();
    void frameRates(double& camera, double& shown);
    bool setResolution(int index);
    // Asks for the file through the hook and records to it. Refuses when the device stopped
    // previewing while the hook ran, without touching a file that was there before.
    bool startRecording();
    // Ends the recording at once (recording() is false on return); the file is finished in
    // the background and the "recording stopped" message is posted when it is complete.
    bool stopRecording();
    std::vector<Resolution> resolutions() const { return resolutions_; }
    std::string lastError() const;

    // For the control interface.
    const CameraSource& source() const { return *source_; }
    bool isColour() const { return colour_; }
    ControlValues values() const;
    // Runs change(values) under the lock; a change that returns a negative status is
    // dropped, any other is applied to the camera.
    template <typename F> std::int32_t change(F&& change);
    // The exposure time in force for the current settings, from what is already known:
    // the camera's report once the settings reached it, else the source's prediction.
    std::uint32_t realExposureTime() const;
    const Histogram* lastHistogram(Histogram& copy) const;
    std::int32_t startWhiteBalance(DSCAP_WHITEBALANCE_CALLBACK cb, void* ctx);
    void setHistogramCallback(DSCAP_HISTOGRAM_CALLBACK cb, void* ctx);
    void setExposureCallback(DSCAP_EXPOSURE_CALLBACK cb, void* ctx);
    void setNotifyCallback(DSCAP_NOTIFY_CALLBACK cb, void* ctx);
    // The output changed shape or colour (grey, resolution): tell whoever listens.
    void outputChanged();

    // The camera's own extra controls, read and set where the source may be touched: on the
    // capture thread while it runs (waiting for it briefly), else here.
    std::vector<ExtraControl> extraControls();
    bool setExtraControl(std::uint32_t id, std::int32_t value);
    // Whether there are any, known from the opening: the menus ask on every update.
    bool hasExtraControls() const { return hasExtraControls_; }
    // Hands the property dialog of that command to the application's hook.
    bool showDialog(int command);

private:
    // Under mutex_: moves to `to` when the table above allows it.
    bool setState(State to);
    bool live() const { return state_ == State::Previewing || state_ == State::Recording; }
    // The capture thread, its stream started at the resolution of that index.
    void run(int streaming);
    // Runs the task with the source to itself; false when the device is gone or the
    // capture thread did not get to it in time.
    bool withSource(const std::function<void(CameraSource&)>& task);
    void runTasks(bool drop = false);
    void applyPending(std::uint64_t& appliedVersion, class FrameProcessor& processor);
    void autoExposureStep(const SourceFrame& frame);
    void whiteBalanceStep(const SourceFrame& frame);
    void deliverHistogram(const Histogram& histogram);
    void recordFrame(const Image& picture, std::int64_t timestampNs);
    void lose(int event, const std::string& error);
    void saveSettings();
    void setError(const std::string& error);

    const dscap_handle handle_;
    const CameraInfo info_;
    const std::unique_ptr<CameraSource> source_;
    void* const frameWindow_;
    void* const viewWindow_;
    const DeviceContext context_;
    const bool colour_;
    const std::uint32_t features_;
    const std::vector<Resolution> resolutions_;
    const bool hasExtraControls_;
    const ValueMapping mapping_;
    std::shared_ptr<CameraControl> control_;

    mutable std::mutex mutex_; // guards the fields below up to the next blank line
    State state_ = State::Opened;
    ControlValues values_;
    std::uint64_t version_ = 1; // bumped by every change of values_
    std::uint64_t appliedVersion_ = 0;
    bool whiteBalancePending_ = false; // only while live(); setState clears it
    int whiteBalanceRounds_ = 0;
    std::string error_;
    Histogram lastHistogram_;
    bool hasHistogram_ = false;
    std::deque<std::shared_ptr<SourceTask>> tasks_; // for the capture thread

    // Callbacks and posts run under a lock of their own, so removing them is final.
    DeviceCallbacks callbacks_;
    // Its lock is taken before mutex_ when both are needed.
    DeviceRecording recording_;

    std::atomic<std::uint32_t> realExposure_{0};
    AutoAdjuster adjuster_; // capture thread
    DevicePicture picture_;
    std::thread thread_;
    std::once_flag releaseOnce_;
};

template <typename F> std::int32_t Device::change(F&& change) {
    std::unique_lock lock(mutex_);
    if (state_ == State::Closed || state_ == State::Lost)
        return ICameraControl::kNotAvailable;
    ControlValues next = values_;
    const std::int32_t status = change(next);
    if (status < 0)
        return status;
    if (!(next == values_)) {
        values_ = next;
        ++version_;
    }
    return status;
}

} // namespace dscap
