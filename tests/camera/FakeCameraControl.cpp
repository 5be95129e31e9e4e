#include "FakeCameraControl.h"

#include <algorithm>

namespace {
// A getter: logs, then answers -1 when reads fail, else copies the field out.
template <class T, class U>
std::int32_t get(FakeCameraControl& f, const char* name, T* out, const U& value) {
    f.calls.emplace_back(name);
    if (f.failReads)
        return -1;
    *out = static_cast<T>(value);
    return 0;
}
template <class T, class U>
std::int32_t set(FakeCameraControl& f, const char* name, T& field, U value) {
    f.calls.push_back(std::string(name) + "(" + std::to_string(value) + ")");
    field = static_cast<T>(value);
    return 0;
}
} // namespace

int FakeCameraControl::count(const std::string& name) const {
    return static_cast<int>(std::count_if(calls.begin(), calls.end(), [&](const std::string& c) {
        return c == name || c.rfind(name + "(", 0) == 0;
    }));
}

std::int32_t FakeCameraControl::GetResolutionIndex(std::int32_t* i) {
    return get(*this, "GetResolutionIndex", i, resolutionIndex);
}
std::int32_t FakeCameraControl::AutoLevelRange() {
    calls.emplace_back("AutoLevelRange");
    low = {50, 50, 50, 0};
    high = {180, 180, 180, 255};
    return 0;
}
std::int32_t FakeCameraControl::SetHistogramCallback(DSCAP_HISTOGRAM_CALLBACK cb, void* ctx) {
    calls.emplace_back(cb ? "SetHistogramCallback" : "SetHistogramCallback(0)");
    histogramCb = cb;
    histogramCtx = ctx;
    return 0;
}
std::int32_t FakeCameraControl::SetExposureCallback(DSCAP_EXPOSURE_CALLBACK cb, void* ctx) {
    calls.emplace_back(cb ? "SetExposureCallback" : "SetExposureCallback(0)");
    exposureCb = cb;
    exposureCtx = ctx;
    return 0;
}
std::int32_t FakeCameraControl::GetAutoExposure(std::int32_t* v) {
    return get(*this, "GetAutoExposure", v, autoExposure);
}
std::int32_t FakeCameraControl::SetAutoExposure(std::int32_t v) {
    return set(*this, "SetAutoExposure", autoExposure, v);
}
std::int32_t FakeCameraControl::GetAutoExposureTarget(std::uint16_t* v) {
    return get(*this, "GetAutoExposureTarget", v, target);
}
std::int32_t FakeCameraControl::SetAutoExposureTarget(std::uint16_t v) {
    return set(*this, "SetAutoExposureTarget", target, v);
}
std::int32_t FakeCameraControl::SetCameraOption(std::int32_t v) {
    calls.push_back("SetCameraOption(" + std::to_string(v) + ")");
    return 0;
}
std::int32_t FakeCameraControl::SetHue(std::int32_t v) {
    return set(*this, "SetHue", hue, v);
}
std::int32_t FakeCameraControl::GetHue(std::int32_t* v) {
    return get(*this, "GetHue", v, hue);
}
std::int32_t FakeCameraControl::SetSaturation(std::int32_t v) {
    return set(*this, "SetSaturation", saturation, v);
}
std::int32_t FakeCameraControl::GetSaturation(std::int32_t* v) {
    return get(*this, "GetSaturation", v, saturation);
}
std::int32_t FakeCameraControl::SetBrightness(std::int32_t v) {
    return set(*this, "SetBrightness", brightness, v);
}
std::int32_t FakeCameraControl::GetBrightness(std::int32_t* v) {
    return get(*this, "GetBrightness", v, brightness);
}
std::int32_t FakeCameraControl::GetExposureTime(std::uint32_t* v) {
    return get(*this, "GetExposureTime", v, time);
}
std::int32_t FakeCameraControl::SetExposureTime(std::uint32_t v) {
    realTime = v;
    return set(*this, "SetExposureTime", time, v);
}
std::int32_t FakeCameraControl::GetExposureGain(std::uint16_t* v) {
    return get(*this, "GetExposureGain", v, gain);
}
std::int32_t FakeCameraControl::SetExposureGain(std::uint16_t v) {
    return set(*this, "SetExposureGain", gain, v);
}
std::int32_t FakeCameraControl::SetLevelRange(const std::uint16_t lo[4],
                                              const std::uint16_t hi[4]) {
    calls.emplace_back("SetLevelRange");
    std::copy_n(lo, 4, low.begin());
    std::copy_n(hi, 4, high.begin());
    return 0;
}
std::int32_t FakeCameraControl::GetLevelRange(std::uint16_t lo[4], std::uint16_t hi[4]) {
    calls.emplace_back("GetLevelRange");
    if (failReads)
        return -1;
    std::copy_n(low.begin(), 4, lo);
    std::copy_n(high.begin(), 4, hi);
    return 0;
}
std::int32_t FakeCameraControl::GetContrast(std::int32_t* v) {
    return get(*this, "GetContrast", v, contrast);
}
std::int32_t FakeCameraControl::SetContrast(std::int32_t v) {
    return set(*this, "SetContrast", contrast, v);
}
std::int32_t FakeCameraControl::GetGamma(std::int32_t* v) {
    return get(*this, "GetGamma", v, gamma);
}
std::int32_t FakeCameraControl::SetGamma(std::int32_t v) {
    return set(*this, "SetGamma", gamma, v);
}
std::int32_t FakeCameraControl::GetMonochrome(std::int32_t* v) {
    return get(*this, "GetMonochrome", v, monochrome);
}
std::int32_t FakeCameraControl::SetMonochrome(std::int32_t v) {
    return set(*this, "SetMonochrome", monochrome, v);
}
std::int32_t FakeCameraControl::GetVerticalFlip(std::int32_t* v) {
    return get(*this, "GetVerticalFlip", v, vflip);
}
std::int32_t FakeCameraControl::SetVerticalFlip(std::int32_t v) {
    return set(*this, "SetVerticalFlip", vflip, v);
}
std::int32_t FakeCameraControl::GetHorizontalFlip(std::int32_t* v) {
    return get(*this, "GetHorizontalFlip", v, hflip);
}
std::int32_t FakeCameraControl::SetHorizontalFlip(std::int32_t v) {
    return set(*this, "SetHorizontalFlip", hflip, v);
}
std::int32_t FakeCameraControl::SetSpeed(std::uint8_t v) {
    return set(*this, "SetSpeed", speed, v);
}
std::int32_t FakeCameraControl::GetSpeed(std::uint8_t* v) {
    return get(*this, "GetSpeed", v, speed);
}
std::int32_t FakeCameraControl::GetMaxSpeed() {
    calls.emplace_back("GetMaxSpeed");
    return maxSpeed;
}
std::int32_t FakeCameraControl::SetLightSource(std::int32_t v) {
    return set(*this, "SetLightSource", lightSource, v);
}
std::int32_t FakeCameraControl::GetLightSource(std::int32_t* v) {
    if (!hasLightSource) {
        calls.emplace_back("GetLightSource");
        return kNotSupported;
    }
    return get(*this, "GetLightSource", v, lightSource);
}
std::int32_t FakeCameraControl::SetSamplingMode(std::int32_t v) {
    return set(*this, "SetSamplingMode", sampling, v);
}
std::int32_t FakeCameraControl::GetSamplingMode(std::int32_t* v) {
    return get(*this, "GetSamplingMode", v, sampling);
}
std::int32_t FakeCameraControl::SetNotifyCallback(DSCAP_NOTIFY_CALLBACK cb, void* ctx) {
    calls.emplace_back(cb ? "SetNotifyCallback" : "SetNotifyCallback(0)");
    notifyCb = cb;
    notifyCtx = ctx;
    return 0;
}
std::int32_t FakeCameraControl::GetExposureTimeRange(std::uint32_t* mn, std::uint32_t* mx,
                                                     std::uint32_t* def) {
    calls.emplace_back("GetExposureTimeRange");
    if (failReads)
        return -1;
    *mn = timeMin;
    *mx = timeMax;
    *def = timeDefault;
    return 0;
}
std::int32_t FakeCameraControl::GetExposureGainRange(std::uint16_t* mn, std::uint16_t* mx,
                                                     std::uint16_t* def) {
    calls.emplace_back("GetExposureGainRange");
    if (failReads)
        return -1;
    *mn = gainMin;
    *mx = gainMax;
    *def = gainDefault;
    return 0;
}
std::int32_t FakeCameraControl::GetResolutionCount() {
    calls.emplace_back("GetResolutionCount");
    return static_cast<std::int32_t>(resolutions.size());
}
std::int32_t FakeCameraControl::GetResolution(std::int32_t i, std::int32_t* w, std::int32_t* h) {
    calls.emplace_back("GetResolution");
    if (failReads || i < 0 || i >= static_cast<std::int32_t>(resolutions.size()))
        return -1;
    *w = resolutions[static_cast<std::size_t>(i)].first;
    *h = resolutions[static_cast<std::size_t>(i)].second;
    return 0;
}
std::int32_t FakeCameraControl::SetTempTint(std::int32_t t, std::int32_t n) {
    calls.push_back("SetTempTint(" + std::to_string(t) + "," + std::to_string(n) + ")");
    temperature = t;
    tint = n;
    return 0;
}
std::int32_t FakeCameraControl::GetTempTint(std::int32_t* t, std::int32_t* n) {
    calls.emplace_back("GetTempTint");
    if (failReads)
        return -1;
    *t = temperature;
    *n = tint;
    return 0;
}
std::int32_t FakeCameraControl::WhiteBalanceOnce(DSCAP_WHITEBALANCE_CALLBACK cb, void* ctx) {
    calls.emplace_back("WhiteBalanceOnce");
    wbCb = cb;
    wbCtx = ctx;
    return 0;
}
std::int32_t FakeCameraControl::SetWhiteBalanceRegion(std::int32_t, std::int32_t, std::int32_t,
                                                      std::int32_t) {
    return 0;
}
std::int32_t FakeCameraControl::GetWhiteBalanceRegion(std::int32_t*, std::int32_t*, std::int32_t*,
                                                      std::int32_t*) {
    return -1;
}
std::int32_t FakeCameraControl::SetAutoExposureRegion(std::int32_t, std::int32_t, std::int32_t,
                                                      std::int32_t) {
    return 0;
}
std::int32_t FakeCameraControl::GetAutoExposureRegion(std::int32_t*, std::int32_t*, std::int32_t*,
                                                      std::int32_t*) {
    return -1;
}
std::int32_t FakeCameraControl::IsColour() {
    calls.emplace_back("IsColour");
    return colour ? 1 : 0;
}
std::int32_t FakeCameraControl::GetRealExposureTime(std::uint32_t* us) {
    return get(*this, "GetRealExposureTime", us, realTime);
}
