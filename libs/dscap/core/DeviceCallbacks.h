#pragma once

#include "dscap/ICameraControl.h"
#include "dscap/dscap.h"
#include "dscap/processing/Histogram.h"

#include <cstdint>
#include <mutex>

namespace dscap {

// The application's callbacks of one device and the messages it posts. All run under one
// lock, so that once silence() returns none runs again; the lock is recursive because a
// callback may set callbacks.
class DeviceCallbacks {
public:
    explicit DeviceCallbacks(dscap_post_fn postFn) : post_(postFn) {}

    void setHistogram(DSCAP_HISTOGRAM_CALLBACK cb, void* ctx);
    void setExposure(DSCAP_EXPOSURE_CALLBACK cb, void* ctx);
    void setNotify(DSCAP_NOTIFY_CALLBACK cb, void* ctx);
    // Called once, by whiteBalanceDone.
    void setWhiteBalance(DSCAP_WHITEBALANCE_CALLBACK cb, void* ctx);

    void histogram(const Histogram& counts);
    void exposureChanged();
    void whiteBalanceDone(int temperature, int tint);
    void outputChanged();
    // Nothing when the message is 0 or after silence().
    void post(void* window, unsigned message, std::uintptr_t wParam, std::intptr_t lParam) const;

    // Drops every callback and posts nothing more; waits for a callback or post under way.
    void silence();

private:
    const dscap_post_fn post_;

    mutable std::recursive_mutex mutex_; // guards the fields below
    DSCAP_HISTOGRAM_CALLBACK histogram_ = nullptr;
    void* histogramContext_ = nullptr;
    DSCAP_EXPOSURE_CALLBACK exposure_ = nullptr;
    void* exposureContext_ = nullptr;
    DSCAP_NOTIFY_CALLBACK notify_ = nullptr;
    void* notifyContext_ = nullptr;
    DSCAP_WHITEBALANCE_CALLBACK whiteBalance_ = nullptr;
    void* whiteBalanceContext_ = nullptr;
    bool quiet_ = false;
};

} // namespace dscap
