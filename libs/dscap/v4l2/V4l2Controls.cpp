#include "dscap/v4l2/V4l2Controls.h"

#include "dscap/v4l2/V4l2System.h"

#include <linux/videodev2.h>

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstring>

namespace dscap::v4l2 {
namespace {

constexpr std::uint32_t kExposureUnitUs = 100;
constexpr int kGainFloor = 100;
constexpr int kGainCeiling = 65535;
constexpr int kMaxMenuEntries = 64;

// Controls the camera interface covers; the device's others are offered as extra controls.
constexpr std::uint32_t kMappedIds[] = {
    V4L2_CID_EXPOSURE_ABSOLUTE,
    V4L2_CID_EXPOSURE_AUTO,
    V4L2_CID_GAIN,
    V4L2_CID_HUE,
    V4L2_CID_SATURATION,
    V4L2_CID_BRIGHTNESS,
    V4L2_CID_CONTRAST,
    V4L2_CID_GAMMA,
    V4L2_CID_POWER_LINE_FREQUENCY,
    V4L2_CID_HFLIP,
    V4L2_CID_VFLIP,
    V4L2_CID_WHITE_BALANCE_TEMPERATURE,
};

std::int32_t clampToStep(double value, const ControlInfo& c) {
    const double step = std::max(1, c.step);
    const double steps = std::round((value - c.min) / step);
    const double snapped = c.min + steps * step;
    return static_cast<std::int32_t>(std::clamp<double>(snapped, c.min, c.max));
}

std::int32_t deviceDefault(const ControlInfo& c) {
    return std::clamp(c.def, c.min, c.max);
}

// The interface range low..high with its default mid, onto the device range so that the
// ends meet the ends and the defaults meet.
std::int32_t piecewise(int value, int low, int mid, int high, const ControlInfo& c) {
    value = std::clamp(value, low, high);
    const double def = deviceDefault(c);
    double d;
    if (value <= mid)
        d = mid == low ? def : c.min + (def - c.min) * (value - low) / double(mid - low);
    else
        d = def + (c.max - def) * (value - mid) / double(high - mid);
    return clampToStep(d, c);
}

// The gain is shown as a multiple of its minimum, so the minimum must not be 0: the device
// range starts at 100 and a short range is stretched to reach at least 200.
double gainSpan(const ControlInfo& c) {
    const double span = double(c.max) - c.min;
    if (span <= 0)
        return 0;
    const double stretched = span * std::max(1.0, std::floor(100.0 / span));
    return std::min<double>(stretched, kGainCeiling - kGainFloor);
}

std::uint16_t gainFromDevice(std::int32_t value, const ControlInfo& c) {
    const double span = double(c.max) - c.min;
    if (span <= 0)
        return kGainFloor;
    return static_cast<std::uint16_t>(kGainFloor +
                                      std::lround((value - c.min) * gainSpan(c) / span));
}

std::int32_t gainToDevice(std::uint16_t gain, const ControlInfo& c) {
    const double span = double(c.max) - c.min;
    if (span <= 0)
        return c.min;
    const double above = std::max(0, int(gain) - kGainFloor);
    return clampToStep(c.min + above * span / gainSpan(c), c);
}

std::int32_t exposureAutoMode(const ControlInfo& menu, bool nativeAuto) {
    if (nativeAuto) {
        if (menu.offers(V4L2_EXPOSURE_AUTO))
            return V4L2_EXPOSURE_AUTO;
        if (menu.offers(V4L2_EXPOSURE_APERTURE_PRIORITY))
            return V4L2_EXPOSURE_APERTURE_PRIORITY;
    }
    return V4L2_EXPOSURE_MANUAL;
}

std::int32_t powerLineValue(int lightSource) {
    switch (lightSource) {
    case kLightAc60Hz:
        return V4L2_CID_POWER_LINE_FREQUENCY_60HZ;
    case kLightAc50Hz:
        return V4L2_CID_POWER_LINE_FREQUENCY_50HZ;
    default:
        return V4L2_CID_POWER_LINE_FREQUENCY_DISABLED;
    }
}

bool isUsable(const v4l2_queryctrl& q) {
    if (q.flags & V4L2_CTRL_FLAG_DISABLED)
        return false;
    switch (q.type) {
    case V4L2_CTRL_TYPE_INTEGER:
    case V4L2_CTRL_TYPE_BOOLEAN:
    case V4L2_CTRL_TYPE_MENU:
    case V4L2_CTRL_TYPE_INTEGER_MENU:
    case V4L2_CTRL_TYPE_BUTTON:
        return true;
    default:
        return false;
    }
}

std::string fixedText(const __u8* text, std::size_t size) {
    const auto* chars = reinterpret_cast<const char*>(text);
    return std::string(chars, strnlen(chars, size));
}

ControlInfo describe(V4l2Device& device, const v4l2_queryctrl& q) {
    ControlInfo c;
    c.id = q.id;
    c.type = q.type;
    c.name = fixedText(q.name, sizeof q.name);
    c.min = q.minimum;
    c.max = std::max(q.minimum, q.maximum);
    c.step = std::max(1, q.step);
    c.def = q.default_value;
    c.flags = q.flags;
    if (q.type == V4L2_CTRL_TYPE_MENU || q.type == V4L2_CTRL_TYPE_INTEGER_MENU) {
        const std::int32_t last = std::min(c.max, c.min + kMaxMenuEntries - 1);
        for (std::int32_t i = std::max(0, c.min); i <= last; ++i) {
            v4l2_querymenu m{};
            m.id = q.id;
            m.index = static_cast<__u32>(i);
            if (device.ioctl(VIDIOC_QUERYMENU, &m) != 0)
                continue; // a gap: the entry is not offered
            c.menu.emplace_back(i, q.type == V4L2_CTRL_TYPE_MENU
                                       ? fixedText(m.name, sizeof m.name)
                                       : std::to_string(static_cast<long long>(m.value)));
        }
    }
    return c;
}

ExtraControl::Kind kindOf(std::uint32_t type) {
    switch (type) {
    case V4L2_CTRL_TYPE_BOOLEAN:
        return ExtraControl::Boolean;
    case V4L2_CTRL_TYPE_MENU:
    case V4L2_CTRL_TYPE_INTEGER_MENU:
        return ExtraControl::Menu;
    case V4L2_CTRL_TYPE_BUTTON:
        return ExtraControl::Button;
    default:
        return ExtraControl::Integer;
    }
}

} // namespace

bool ControlInfo::offers(std::int32_t value) const {
    if (type != V4L2_CTRL_TYPE_MENU && type != V4L2_CTRL_TYPE_INTEGER_MENU)
        return value >= min && value <= max;
    return std::any_of(menu.begin(), menu.end(), [&](const auto& e) { return e.first == value; });
}

void V4l2Controls::query(V4l2Device& device) {
    controls_.clear();
    written_.clear();
    v4l2_queryctrl q{};
    q.id = V4L2_CTRL_FLAG_NEXT_CTRL;
    if (device.ioctl(VIDIOC_QUERYCTRL, &q) == 0) {
        do {
            if (isUsable(q))
                controls_.push_back(describe(device, q));
            q.id |= V4L2_CTRL_FLAG_NEXT_CTRL;
        } while (device.ioctl(VIDIOC_QUERYCTRL, &q) == 0);
    } else {
        // Drivers without enumeration: ask for the user and camera controls one by one.
        auto scan = [&](std::uint32_t first, std::uint32_t last) {
            for (std::uint32_t id = first; id < last; ++id) {
                v4l2_queryctrl one{};
                one.id = id;
                if (device.ioctl(VIDIOC_QUERYCTRL, &one) == 0 && isUsable(one))
                    controls_.push_back(describe(device, one));
            }
        };
        scan(V4L2_CID_BASE, V4L2_CID_LASTP1);
        scan(V4L2_CID_CAMERA_CLASS_BASE, V4L2_CID_CAMERA_CLASS_BASE + 64);
    }

    features_ = 0;
    auto writable = [&](std::uint32_t id) {
        const ControlInfo* c = find(id);
        return c && !(c->flags & V4L2_CTRL_FLAG_READ_ONLY);
    };
    if (writable(V4L2_CID_EXPOSURE_ABSOLUTE))
        features_ |= kFeatureExposureTime;
    else if (writable(V4L2_CID_EXPOSURE_AUTO))
        features_ |= kFeatureNativeAutoExposure;
    const std::pair<std::uint32_t, std::uint32_t> simple[] = {
        {V4L2_CID_GAIN, kFeatureGain},
        {V4L2_CID_POWER_LINE_FREQUENCY, kFeatureLightSource},
        {V4L2_CID_HUE, kFeatureHue},
        {V4L2_CID_SATURATION, kFeatureSaturation},
        {V4L2_CID_BRIGHTNESS, kFeatureBrightness},
        {V4L2_CID_CONTRAST, kFeatureContrast},
        {V4L2_CID_GAMMA, kFeatureGamma},
        {V4L2_CID_HFLIP, kFeatureHorizontalFlip},
        {V4L2_CID_VFLIP, kFeatureVerticalFlip},
        {V4L2_CID_WHITE_BALANCE_TEMPERATURE, kFeatureWhiteBalanceTemperature},
    };
    for (const auto& [id, bit] : simple) {
        if (writable(id))
            features_ |= bit;
    }
}

const ControlInfo* V4l2Controls::find(std::uint32_t id) const {
    for (const ControlInfo& c : controls_) {
        if (c.id == id)
            return &c;
    }
    return nullptr;
}

ValueRange<std::uint32_t> V4l2Controls::exposureRange() const {
    const ControlInfo* c = find(V4L2_CID_EXPOSURE_ABSOLUTE);
    if (!c || !(features_ & kFeatureExposureTime))
        return {};
    auto us = [](std::int32_t units) {
        return static_cast<std::uint32_t>(std::max(0, units)) * kExposureUnitUs;
    };
    return {us(c->min), us(c->max), us(deviceDefault(*c))};
}

ValueRange<std::uint16_t> V4l2Controls::gainRange() const {
    const ControlInfo* c = find(V4L2_CID_GAIN);
    if (!c || !(features_ & kFeatureGain))
        return {};
    return {gainFromDevice(c->min, *c), gainFromDevice(c->max, *c),
            gainFromDevice(deviceDefault(*c), *c)};
}

bool V4l2Controls::write(V4l2Device& device, std::uint32_t id, std::int32_t value,
                         int& firstError) {
    auto it = written_.find(id);
    if (it != written_.end() && it->second == value)
        return true;
    // Remembered even when refused, so a control the device will not take is not retried
    // on every apply; a new value is tried again.
    written_[id] = value;
    v4l2_control control{id, value};
    if (device.ioctl(VIDIOC_S_CTRL, &control) == 0)
        return true;
    if (firstError == 0)
        firstError = errno;
    return false;
}

std::uint32_t V4l2Controls::expectedExposure(const SensorSettings& s) const {
    const ControlInfo* c =
        (features_ & kFeatureExposureTime) ? find(V4L2_CID_EXPOSURE_ABSOLUTE) : nullptr;
    if (!c)
        return 0;
    const std::int32_t units = clampToStep(double(s.exposureUs) / kExposureUnitUs, *c);
    return static_cast<std::uint32_t>(std::max(0, units)) * kExposureUnitUs;
}

int V4l2Controls::apply(V4l2Device& device, const SensorSettings& s, std::uint32_t& realExposure) {
    int error = 0;
    if (const ControlInfo* menu = find(V4L2_CID_EXPOSURE_AUTO)) {
        const bool nativeAuto = (features_ & kFeatureNativeAutoExposure) && s.nativeAutoExposure;
        const std::int32_t mode = exposureAutoMode(*menu, nativeAuto);
        if (menu->offers(mode))
            write(device, V4L2_CID_EXPOSURE_AUTO, mode, error);
    }
    if (features_ & kFeatureExposureTime) {
        const ControlInfo& c = *find(V4L2_CID_EXPOSURE_ABSOLUTE);
        const std::int32_t units = clampToStep(double(s.exposureUs) / kExposureUnitUs, c);
        const bool changed = !written_.contains(c.id) || written_[c.id] != units;
        if (write(device, c.id, units, error) && changed) {
            v4l2_control back{c.id, 0};
            realExposure =
                device.ioctl(VIDIOC_G_CTRL, &back) == 0
                    ? static_cast<std::uint32_t>(std::max(0, back.value)) * kExposureUnitUs
                    : static_cast<std::uint32_t>(units) * kExposureUnitUs;
        }
    } else {
        realExposure = s.exposureUs;
    }
    const bool deviceRunsExposure =
        (features_ & kFeatureNativeAutoExposure) && s.nativeAutoExposure;
    if ((features_ & kFeatureGain) && !deviceRunsExposure) {
        if (const ControlInfo* autoGain = find(V4L2_CID_AUTOGAIN))
            write(device, autoGain->id, 0, error);
        write(device, V4L2_CID_GAIN, gainToDevice(s.gain, *find(V4L2_CID_GAIN)), error);
    }
    if (features_ & kFeatureWhiteBalanceTemperature) {
        if (find(V4L2_CID_AUTO_WHITE_BALANCE))
            write(device, V4L2_CID_AUTO_WHITE_BALANCE, 0, error);
        const ControlInfo& c = *find(V4L2_CID_WHITE_BALANCE_TEMPERATURE);
        write(device, c.id, clampToStep(s.temperature, c), error);
    }
    struct Colour {
        std::uint32_t feature;
        std::uint32_t id;
        int value;
        int low;
        int mid;
        int high;
    };
    const Colour colours[] = {
        {kFeatureHue, V4L2_CID_HUE, s.hue, -180, 0, 180},
        {kFeatureSaturation, V4L2_CID_SATURATION, s.saturation, 0, 128, 255},
        {kFeatureBrightness, V4L2_CID_BRIGHTNESS, s.brightness, -64, 0, 64},
        {kFeatureContrast, V4L2_CID_CONTRAST, s.contrast, -100, 0, 100},
        {kFeatureGamma, V4L2_CID_GAMMA, s.gamma, 20, 100, 180},
    };
    for (const Colour& k : colours) {
        if (features_ & k.feature)
            write(device, k.id, piecewise(k.value, k.low, k.mid, k.high, *find(k.id)), error);
    }
    if (features_ & kFeatureLightSource) {
        const std::int32_t value = powerLineValue(s.lightSource);
        if (find(V4L2_CID_POWER_LINE_FREQUENCY)->offers(value))
            write(device, V4L2_CID_POWER_LINE_FREQUENCY, value, error);
    }
    if (features_ & kFeatureHorizontalFlip)
        write(device, V4L2_CID_HFLIP, s.horizontalFlip ? 1 : 0, error);
    if (features_ & kFeatureVerticalFlip)
        write(device, V4L2_CID_VFLIP, s.verticalFlip ? 1 : 0, error);
    return error;
}

bool V4l2Controls::isMapped(std::uint32_t id) const {
    // The automatic switches are ours only where we drive what they switch.
    if (id == V4L2_CID_AUTO_WHITE_BALANCE)
        return (features_ & kFeatureWhiteBalanceTemperature) != 0;
    if (id == V4L2_CID_AUTOGAIN)
        return (features_ & kFeatureGain) != 0;
    return std::find(std::begin(kMappedIds), std::end(kMappedIds), id) != std::end(kMappedIds);
}

std::vector<ExtraControl> V4l2Controls::extraControls(V4l2Device& device) const {
    std::vector<ExtraControl> result;
    for (const ControlInfo& c : controls_) {
        if (isMapped(c.id) || (c.flags & V4L2_CTRL_FLAG_READ_ONLY))
            continue;
        ExtraControl e;
        e.id = c.id;
        e.name = c.name;
        e.kind = kindOf(c.type);
        e.min = c.min;
        e.max = c.max;
        e.step = c.step;
        e.def = c.def;
        e.value = c.def;
        e.menu = c.menu;
        v4l2_control now{c.id, 0};
        if (e.kind != ExtraControl::Button && device.ioctl(VIDIOC_G_CTRL, &now) == 0)
            e.value = now.value;
        result.push_back(std::move(e));
    }
    return result;
}

int V4l2Controls::setExtraControl(V4l2Device& device, std::uint32_t id, std::int32_t value) {
    const ControlInfo* c = find(id);
    if (!c || isMapped(id) || (c->flags & V4L2_CTRL_FLAG_READ_ONLY))
        return EINVAL;
    if (c->type == V4L2_CTRL_TYPE_BUTTON)
        value = 1;
    else if (!c->offers(value))
        return EINVAL;
    v4l2_control control{id, value};
    return device.ioctl(VIDIOC_S_CTRL, &control) == 0 ? 0 : errno;
}

} // namespace dscap::v4l2
