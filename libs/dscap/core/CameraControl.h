#pragma once

#include "dscap/ICameraControl.h"

#include <memory>

namespace dscap {

class Device;

// The control interface of one device. It outlives the device: once the device is gone
// every operation fails with kNotAvailable, so a panel holding a stale pointer is safe.
class CameraControl final : public ICameraControl {
public:
    explicit CameraControl(std::weak_ptr<Device> device) : device_(std::move(device)) {}
    ~CameraControl() = default;

    std::int32_t GetResolutionIndex(std::int32_t* index) override;
    std::int32_t AutoLevelRange() override;
    std::int32_t SetHistogramCallback(DSCAP_HISTOGRAM_CALLBACK cb, void* ctx) override;
    std::int32_t SetExposureCallback(DSCAP_EXPOSURE_CALLBACK cb, void* ctx) override;
    std::int32_t GetAutoExposure(std::int32_t* on) override;
    std::int32_t SetAutoExposure(std::int32_t on) override;
    std::int32_t GetAutoExposureTarget(std::uint16_t* target) override;
    std::int32_t SetAutoExposureTarget(std::uint16_t target) override;
    std::int32_t SetCameraOption(std::int32_t value) override;
    std::int32_t SetHue(std::int32_t hue) override;
    std::int32_t GetHue(std::int32_t* hue) override;
    std::int32_t SetSaturation(std::int32_t saturation) override;
    std::int32_t GetSaturation(std::int32_t* saturation) override;
    std::int32_t SetBrightness(std::int32_t brightness) override;
    std::int32_t GetBrightness(std::int32_t* brightness) override;
    std::int32_t GetExposureTime(std::uint32_t* microseconds) override;
    std::int32_t SetExposureTime(std::uint32_t microseconds) override;
    std::int32_t GetExposureGain(std::uint16_t* gain) override;
    std::int32_t SetExposureGain(std::uint16_t gain) override;
    std::int32_t SetLevelRange(const std::uint16_t low[4], const std::uint16_t high[4]) override;
    std::int32_t GetLevelRange(std::uint16_t low[4], std::uint16_t high[4]) override;
    std::int32_t GetContrast(std::int32_t* contrast) override;
    std::int32_t SetContrast(std::int32_t contrast) override;
    std::int32_t GetGamma(std::int32_t* gamma) override;
    std::int32_t SetGamma(std::int32_t gamma) override;
    std::int32_t GetMonochrome(std::int32_t* grey) override;
    std::int32_t SetMonochrome(std::int32_t grey) override;
    std::int32_t GetVerticalFlip(std::int32_t* flip) override;
    std::int32_t SetVerticalFlip(std::int32_t flip) override;
    std::int32_t GetHorizontalFlip(std::int32_t* flip) override;
    std::int32_t SetHorizontalFlip(std::int32_t flip) override;
    std::int32_t SetSpeed(std::uint8_t speed) override;
    std::int32_t GetSpeed(std::uint8_t* speed) override;
    std::int32_t GetMaxSpeed() override;
    std::int32_t SetLightSource(std::int32_t source) override;
    std::int32_t GetLightSource(std::int32_t* source) override;
    std::int32_t SetSamplingMode(std::int32_t mode) override;
    std::int32_t GetSamplingMode(std::int32_t* mode) override;
    std::int32_t SetNotifyCallback(DSCAP_NOTIFY_CALLBACK cb, void* ctx) override;
    std::int32_t GetExposureTimeRange(std::uint32_t* min, std::uint32_t* max,
                                      std::uint32_t* def) override;
    std::int32_t GetExposureGainRange(std::uint16_t* min, std::uint16_t* max,
                                      std::uint16_t* def) override;
    std::int32_t GetResolutionCount() override;
    std::int32_t GetResolution(std::int32_t index, std::int32_t* width,
                               std::int32_t* height) override;
    std::int32_t SetTempTint(std::int32_t temperature, std::int32_t tint) override;
    std::int32_t GetTempTint(std::int32_t* temperature, std::int32_t* tint) override;
    std::int32_t WhiteBalanceOnce(DSCAP_WHITEBALANCE_CALLBACK cb, void* ctx) override;
    std::int32_t SetWhiteBalanceRegion(std::int32_t left, std::int32_t top, std::int32_t right,
                                       std::int32_t bottom) override;
    std::int32_t GetWhiteBalanceRegion(std::int32_t* left, std::int32_t* top, std::int32_t* right,
                                       std::int32_t* bottom) override;
    std::int32_t SetAutoExposureRegion(std::int32_t left, std::int32_t top, std::int32_t right,
                                       std::int32_t bottom) override;
    std::int32_t GetAutoExposureRegion(std::int32_t* left, std::int32_t* top, std::int32_t* right,
                                       std::int32_t* bottom) override;
    std::int32_t IsColour() override;
    std::int32_t GetRealExposureTime(std::uint32_t* microseconds) override;

private:
    std::weak_ptr<Device> device_;
};

} // namespace dscap
