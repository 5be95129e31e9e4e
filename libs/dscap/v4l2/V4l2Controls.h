#pragma once

#include "dscap/core/CameraSource.h"

#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace dscap::v4l2 {

class V4l2Device;

struct ControlInfo {
    std::uint32_t id = 0;
    std::uint32_t type = 0;
    std::string name;
    std::int32_t min = 0;
    std::int32_t max = 0;
    std::int32_t step = 1;
    std::int32_t def = 0;
    std::uint32_t flags = 0;
    std::vector<std::pair<std::int32_t, std::string>> menu; // offered entries only
    bool offers(std::int32_t value) const;
};

// The device's own controls, queried once at open, and how the camera interface's settings
// map onto them: exposure in 100 us units, gain onto 100 and up, the colour controls
// piecewise so that the interface's default meets the device's, light source onto the
// power-line menu.
class V4l2Controls {
public:
    void query(V4l2Device& device);

    const ControlInfo* find(std::uint32_t id) const;
    // kFeature* bits the controls provide (speed and the rest are the camera's business).
    std::uint32_t features() const { return features_; }
    ValueRange<std::uint32_t> exposureRange() const;
    ValueRange<std::uint16_t> gainRange() const;

    // Writes the controls whose device value differs from the last one written; returns 0 or
    // the errno of the first write that failed. realExposure is set to the exposure the
    // device reports after a change of exposure.
    int apply(V4l2Device& device, const SensorSettings& settings, std::uint32_t& realExposure);
    // The exposure apply() would write for these settings, in microseconds; 0 without an
    // exposure control. Reads only what query() found, so any thread may ask.
    std::uint32_t expectedExposure(const SensorSettings& settings) const;

    std::vector<ExtraControl> extraControls(V4l2Device& device) const;
    // 0, EINVAL for a control that is not an extra one or a value it does not take, or the
    // device's errno.
    int setExtraControl(V4l2Device& device, std::uint32_t id, std::int32_t value);

private:
    bool isMapped(std::uint32_t id) const;
    // Writes unless the value was the last one written; false with errno set on failure.
    bool write(V4l2Device& device, std::uint32_t id, std::int32_t value, int& firstError);

    std::vector<ControlInfo> controls_;
    std::uint32_t features_ = 0;
    std::map<std::uint32_t, std::int32_t> written_;
};

} // namespace dscap::v4l2
