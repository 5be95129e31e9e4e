#pragma once

#include "dscap/ICameraControl.h"

#include <array>
#include <string>
#include <vector>

// A camera control interface that remembers every call and answers from plain fields, so
// the panels' order of calls and their reactions to failures can be checked.
class FakeCameraControl final : public ICameraControl {
public:
    std::vector<std::string> calls;
    bool colour = true;
    bool failReads = false; // every Get answers -1
    bool hasLightSource = true;

    std::int32_t resolutionIndex = 1;
    std::vector<std::pair<int, int>> resolutions{{640, 480}, {1296, 972}, {2592, 1944}};
    std::int32_t autoExposure = 0;
    std::uint16_t target = 100;
    std::uint32_t time = 20000, timeMin = 100, timeMax = 2000000, timeDefault = 10000;
    std::uint32_t realTime = 20000;
    std::uint16_t gain = 200, gainMin = 100, gainMax = 500, gainDefault = 100;
    std::int32_t hue = 5, saturation = 140, brightness = -3, contrast = 7, gamma = 120;
    std::int32_t monochrome = 0, vflip = 0, hflip = 1;
    std::uint8_t speed = 2;
    std::int32_t maxSpeed = 4, lightSource = 1, sampling = 1;
    std::int32_t temperature = 5000, tint = 900;
    std::array<std::uint16_t, 4> low{10, 20, 30, 40}, high{200, 210, 220, 230};

    DSCAP_HISTOGRAM_CALLBACK histogramCb = nullptr;
    DSCAP_EXPOSURE_CALLBACK exposureCb = nullptr;
    DSCAP_NOTIFY_CALLBACK notifyCb = nullptr;
    DSCAP_WHITEBALANCE_CALLBACK wbCb = nullptr;
    void* histogramCtx = nullptr;
    void* exposureCtx = nullptr;
    void* notifyCtx = nullptr;
    void* wbCtx = nullptr;

    bool anyCallback() const { return histogramCb || exposureCb || notifyCb; }
    int count(const std::string& name) const;
    void clear() { calls.clear(); }

    std::int32_t GetResolutionIndex(std::int32_t* index) override;
    std::int32_t AutoLevelRange() override;
    std::int32_t SetHistogramCallback(DSCAP_HISTOGRAM_CALLBACK cb, void* ctx) override;
    std::int32_t SetExposureCallback(DSCAP_EXPOSURE_CALLBACK cb, void* ctx) override;
    std::int32_t GetAutoExposure(std::int32_t* on) override;
    std::int32_t SetAutoExposure(std::int32_t on) override;
    std::int32_t GetAutoExposureTarget(std::uint16_t* t) override;
    std::int32_t SetAutoExposureTarget(std::uint16_t t) override;
    std::int32_t SetCameraOption(std::int32_t value) override;
    std::int32_t SetHue(std::int32_t v) override;
    std::int32_t GetHue(std::int32_t* v) override;
    std::int32_t SetSaturation(std::int32_t v) override;
    std::int32_t GetSaturation(std::int32_t* v) override;
    std::int32_t SetBrightness(std::int32_t v) override;
    std::int32_t GetBrightness(std::int32_t* v) override;
    std::int32_t GetExposureTime(std::uint32_t* us) override;
    std::int32_t SetExposureTime(std::uint32_t us) override;
    std::int32_t GetExposureGain(std::uint16_t* g) override;
    std::int32_t SetExposureGain(std::uint16_t g) override;
    std::int32_t SetLevelRange(const std::uint16_t lo[4], const std::uint16_t hi[4]) override;
    std::int32_t GetLevelRange(std::uint16_t lo[4], std::uint16_t hi[4]) override;
    std::int32_t GetContrast(std::int32_t* v) override;
    std::int32_t SetContrast(std::int32_t v) override;
    std::int32_t GetGamma(std::int32_t* v) override;
    std::int32_t SetGamma(std::int32_t v) override;
    std::int32_t GetMonochrome(std::int32_t* v) override;
    std::int32_t SetMonochrome(std::int32_t v) override;
    std::int32_t GetVerticalFlip(std::int32_t* v) override;
    std::int32_t SetVerticalFlip(std::int32_t v) override;
    std::int32_t GetHorizontalFlip(std::int32_t* v) override;
    std::int32_t SetHorizontalFlip(std::int32_t v) override;
    std::int32_t SetSpeed(std::uint8_t v) override;
    std::int32_t GetSpeed(std::uint8_t* v) override;
    std::int32_t GetMaxSpeed() override;
    std::int32_t SetLightSource(std::int32_t v) override;
    std::int32_t GetLightSource(std::int32_t* v) override;
    std::int32_t SetSamplingMode(std::int32_t v) override;
    std::int32_t GetSamplingMode(std::int32_t* v) override;
    std::int32_t SetNotifyCallback(DSCAP_NOTIFY_CALLBACK cb, void* ctx) override;
    std::int32_t GetExposureTimeRange(std::uint32_t* mn, std::uint32_t* mx,
                                      std::uint32_t* def) override;
    std::int32_t GetExposureGainRange(std::uint16_t* mn, std::uint16_t* mx,
                                      std::uint16_t* def) override;
    std::int32_t GetResolutionCount() override;
    std::int32_t GetResolution(std::int32_t index, std::int32_t* w, std::int32_t* h) override;
    std::int32_t SetTempTint(std::int32_t t, std::int32_t n) override;
    std::int32_t GetTempTint(std::int32_t* t, std::int32_t* n) override;
    std::int32_t WhiteBalanceOnce(DSCAP_WHITEBALANCE_CALLBACK cb, void* ctx) override;
    std::int32_t SetWhiteBalanceRegion(std::int32_t, std::int32_t, std::int32_t,
                                       std::int32_t) override;
    std::int32_t GetWhiteBalanceRegion(std::int32_t*, std::int32_t*, std::int32_t*,
                                       std::int32_t*) override;
    std::int32_t SetAutoExposureRegion(std::int32_t, std::int32_t, std::int32_t,
                                       std::int32_t) override;
    std::int32_t GetAutoExposureRegion(std::int32_t*, std::int32_t*, std::int32_t*,
                                       std::int32_t*) override;
    std::int32_t IsColour() override;
    std::int32_t GetRealExposureTime(std::uint32_t* us) override;
};
