#pragma once

#include <cstdint>

// Callbacks run on a library thread; they must only hand the news on (post a message).
// The histogram blocks are 256 doubles each, in the order blue, green, red, grey.
typedef void (*DSCAP_HISTOGRAM_CALLBACK)(const double* blue, const double* green, const double* red,
                                         const double* grey, void* context);
typedef void (*DSCAP_EXPOSURE_CALLBACK)(void* context);
typedef void (*DSCAP_NOTIFY_CALLBACK)(void* context);
typedef void (*DSCAP_WHITEBALANCE_CALLBACK)(std::int32_t temperature, std::int32_t tint,
                                            void* context);

// The camera control interface. The operations stand in the order of their table slots;
// the reserved ones keep the numbering and always fail. Every operation returns a status:
// 0 success, negative failure (the value asked is out of range, the camera cannot do it,
// or the camera is gone). Level arrays are indexed blue, green, red, grey.
//
// Three operations return a value in place of the success status: IsColour, GetMaxSpeed
// and GetResolutionCount. Their answer is 0 or more, or a negative status on failure (a
// closed or unplugged camera gives kNotAvailable); callers must treat a negative answer as
// failure, never as a colour flag or a count.
//
// An interface outlives its camera: once the camera is closed (dscap_stop) or gone, every
// operation fails with kNotAvailable. No operation waits for the capture thread for long,
// so each may be called on every step of a slider.
class ICameraControl {
public:
    enum : std::int32_t {
        kOk = 0,
        kNotSupported = -1,    // the camera has no such control
        kInvalidArgument = -2, // a null pointer or a value outside the range
        kNotAvailable = -3,    // the camera is closed or gone
    };

    virtual std::int32_t Reserved0() { return kNotSupported; }
    virtual std::int32_t Reserved1() { return kNotSupported; }
    virtual std::int32_t Reserved2() { return kNotSupported; }
    virtual std::int32_t Reserved3() { return kNotSupported; }
    virtual std::int32_t Reserved4() { return kNotSupported; }
    virtual std::int32_t Reserved5() { return kNotSupported; }
    virtual std::int32_t GetResolutionIndex(std::int32_t* index) = 0;                      // 6
    virtual std::int32_t AutoLevelRange() = 0;                                             // 7
    virtual std::int32_t SetHistogramCallback(DSCAP_HISTOGRAM_CALLBACK cb, void* ctx) = 0; // 8
    virtual std::int32_t SetExposureCallback(DSCAP_EXPOSURE_CALLBACK cb, void* ctx) = 0;   // 9
    virtual std::int32_t GetAutoExposure(std::int32_t* on) = 0;                            // 10
    virtual std::int32_t SetAutoExposure(std::int32_t on) = 0;                             // 11
    virtual std::int32_t GetAutoExposureTarget(std::uint16_t* target) = 0;                 // 12
    virtual std::int32_t SetAutoExposureTarget(std::uint16_t target) = 0;                  // 13
    virtual std::int32_t Reserved14() { return kNotSupported; }
    virtual std::int32_t Reserved15() { return kNotSupported; }
    virtual std::int32_t Reserved16() { return kNotSupported; }
    virtual std::int32_t Reserved17() { return kNotSupported; }
    virtual std::int32_t Reserved18() { return kNotSupported; }
    virtual std::int32_t SetCameraOption(std::int32_t value) = 0; // 19
    virtual std::int32_t Reserved20() { return kNotSupported; }
    virtual std::int32_t Reserved21() { return kNotSupported; }
    virtual std::int32_t Reserved22() { return kNotSupported; }
    virtual std::int32_t Reserved23() { return kNotSupported; }
    virtual std::int32_t Reserved24() { return kNotSupported; }
    virtual std::int32_t Reserved25() { return kNotSupported; }
    virtual std::int32_t Reserved26() { return kNotSupported; }
    virtual std::int32_t SetHue(std::int32_t hue) = 0;                     // 27
    virtual std::int32_t GetHue(std::int32_t* hue) = 0;                    // 28
    virtual std::int32_t SetSaturation(std::int32_t saturation) = 0;       // 29
    virtual std::int32_t GetSaturation(std::int32_t* saturation) = 0;      // 30
    virtual std::int32_t SetBrightness(std::int32_t brightness) = 0;       // 31
    virtual std::int32_t GetBrightness(std::int32_t* brightness) = 0;      // 32
    virtual std::int32_t GetExposureTime(std::uint32_t* microseconds) = 0; // 33
    virtual std::int32_t SetExposureTime(std::uint32_t microseconds) = 0;  // 34
    virtual std::int32_t GetExposureGain(std::uint16_t* gain) = 0;         // 35
    virtual std::int32_t SetExposureGain(std::uint16_t gain) = 0;          // 36
    virtual std::int32_t SetLevelRange(const std::uint16_t low[4],
                                       const std::uint16_t high[4]) = 0;                 // 37
    virtual std::int32_t GetLevelRange(std::uint16_t low[4], std::uint16_t high[4]) = 0; // 38
    virtual std::int32_t GetContrast(std::int32_t* contrast) = 0;                        // 39
    virtual std::int32_t SetContrast(std::int32_t contrast) = 0;                         // 40
    virtual std::int32_t GetGamma(std::int32_t* gamma) = 0;                              // 41
    virtual std::int32_t SetGamma(std::int32_t gamma) = 0;                               // 42
    virtual std::int32_t GetMonochrome(std::int32_t* grey) = 0;                          // 43
    virtual std::int32_t SetMonochrome(std::int32_t grey) = 0;                           // 44
    virtual std::int32_t GetVerticalFlip(std::int32_t* flip) = 0;                        // 45
    virtual std::int32_t SetVerticalFlip(std::int32_t flip) = 0;                         // 46
    virtual std::int32_t GetHorizontalFlip(std::int32_t* flip) = 0;                      // 47
    virtual std::int32_t SetHorizontalFlip(std::int32_t flip) = 0;                       // 48
    virtual std::int32_t SetSpeed(std::uint8_t speed) = 0;                               // 49
    virtual std::int32_t GetSpeed(std::uint8_t* speed) = 0;                              // 50
    // The highest speed level, 0 when the camera has no speed control; negative on failure.
    virtual std::int32_t GetMaxSpeed() = 0;                                          // 51
    virtual std::int32_t SetLightSource(std::int32_t source) = 0;                    // 52
    virtual std::int32_t GetLightSource(std::int32_t* source) = 0;                   // 53
    virtual std::int32_t SetSamplingMode(std::int32_t mode) = 0;                     // 54
    virtual std::int32_t GetSamplingMode(std::int32_t* mode) = 0;                    // 55
    virtual std::int32_t SetNotifyCallback(DSCAP_NOTIFY_CALLBACK cb, void* ctx) = 0; // 56
    virtual std::int32_t GetExposureTimeRange(std::uint32_t* min, std::uint32_t* max,
                                              std::uint32_t* def) = 0; // 57
    virtual std::int32_t GetExposureGainRange(std::uint16_t* min, std::uint16_t* max,
                                              std::uint16_t* def) = 0; // 58
    // How many resolutions the camera offers (0 or more); negative on failure.
    virtual std::int32_t GetResolutionCount() = 0; // 59
    virtual std::int32_t GetResolution(std::int32_t index, std::int32_t* width,
                                       std::int32_t* height) = 0;                        // 60
    virtual std::int32_t SetTempTint(std::int32_t temperature, std::int32_t tint) = 0;   // 61
    virtual std::int32_t GetTempTint(std::int32_t* temperature, std::int32_t* tint) = 0; // 62
    virtual std::int32_t Reserved63() { return kNotSupported; }
    virtual std::int32_t Reserved64() { return kNotSupported; }
    virtual std::int32_t Reserved65() { return kNotSupported; }
    virtual std::int32_t Reserved66() { return kNotSupported; }
    virtual std::int32_t WhiteBalanceOnce(DSCAP_WHITEBALANCE_CALLBACK cb, void* ctx) = 0; // 67
    virtual std::int32_t SetWhiteBalanceRegion(std::int32_t left, std::int32_t top,
                                               std::int32_t right, std::int32_t bottom) = 0; // 68
    virtual std::int32_t GetWhiteBalanceRegion(std::int32_t* left, std::int32_t* top,
                                               std::int32_t* right,
                                               std::int32_t* bottom) = 0; // 69
    virtual std::int32_t SetAutoExposureRegion(std::int32_t left, std::int32_t top,
                                               std::int32_t right, std::int32_t bottom) = 0; // 70
    virtual std::int32_t GetAutoExposureRegion(std::int32_t* left, std::int32_t* top,
                                               std::int32_t* right,
                                               std::int32_t* bottom) = 0; // 71
    // 1 for a colour camera, 0 for a monochrome one; negative on failure.
    virtual std::int32_t IsColour() = 0; // 72
    virtual std::int32_t Reserved73() { return kNotSupported; }
    // The exposure time in force for the current settings (snapped to the mains period
    // under AC light, to the device's steps): known as soon as SetExposureTime returns.
    virtual std::int32_t GetRealExposureTime(std::uint32_t* microseconds) = 0; // 74

protected:
    // Owned by the library; callers never delete it.
    ~ICameraControl() = default;
};
