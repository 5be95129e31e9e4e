#include "dscap/core/DeviceCallbacks.h"

namespace dscap {

void DeviceCallbacks::setHistogram(DSCAP_HISTOGRAM_CALLBACK cb, void* ctx) {
    std::lock_guard lock(mutex_);
    histogram_ = cb;
    histogramContext_ = cb ? ctx : nullptr;
}

void DeviceCallbacks::setExposure(DSCAP_EXPOSURE_CALLBACK cb, void* ctx) {
    std::lock_guard lock(mutex_);
    exposure_ = cb;
    exposureContext_ = cb ? ctx : nullptr;
}

void DeviceCallbacks::setNotify(DSCAP_NOTIFY_CALLBACK cb, void* ctx) {
    std::lock_guard lock(mutex_);
    notify_ = cb;
    notifyContext_ = cb ? ctx : nullptr;
}

void DeviceCallbacks::setWhiteBalance(DSCAP_WHITEBALANCE_CALLBACK cb, void* ctx) {
    std::lock_guard lock(mutex_);
    whiteBalance_ = cb;
    whiteBalanceContext_ = ctx;
}

void DeviceCallbacks::histogram(const Histogram& counts) {
    std::lock_guard lock(mutex_);
    if (histogram_)
        histogram_(counts.bins[kBlue].data(), counts.bins[kGreen].data(), counts.bins[kRed].data(),
                   counts.bins[kGrey].data(), histogramContext_);
}

void DeviceCallbacks::exposureChanged() {
    std::lock_guard lock(mutex_);
    if (exposure_)
        exposure_(exposureContext_);
}

void DeviceCallbacks::whiteBalanceDone(int temperature, int tint) {
    std::lock_guard lock(mutex_);
    if (whiteBalance_)
        whiteBalance_(temperature, tint, whiteBalanceContext_);
    whiteBalance_ = nullptr;
    whiteBalanceContext_ = nullptr;
}

void DeviceCallbacks::outputChanged() {
    std::lock_guard lock(mutex_);
    if (notify_)
        notify_(notifyContext_);
}

void DeviceCallbacks::post(void* window, unsigned message, std::uintptr_t wParam,
                           std::intptr_t lParam) const {
    if (!post_ || message == 0)
        return;
    std::lock_guard lock(mutex_);
    if (!quiet_)
        post_(window, message, wParam, lParam);
}

void DeviceCallbacks::silence() {
    std::lock_guard lock(mutex_);
    histogram_ = nullptr;
    histogramContext_ = nullptr;
    exposure_ = nullptr;
    exposureContext_ = nullptr;
    notify_ = nullptr;
    notifyContext_ = nullptr;
    whiteBalance_ = nullptr;
    whiteBalanceContext_ = nullptr;
    quiet_ = true;
}

} // namespace dscap
