#pragma once

#include "dscap/core/CameraSource.h"
#include "dscap/core/ControlValues.h"
#include "dscap/processing/AutoExposure.h"

#include <cstdint>
#include <optional>

namespace dscap {

// What auto exposure and one-push white balance set after a frame, from the frame and the
// values in force. It counts only the frames to skip while a change reaches the picture;
// the device reads and changes its values under its own lock and makes the calls back.
// Capture thread only.
class AutoAdjuster {
public:
    struct Balance {
        enum Kind {
            None,  // nothing measured: look again next frame
            Again, // set these, then look again once they show
            Done,  // set these; the balance is complete
        } kind = None;
        int temperature = 0;
        int tint = 0;
    };

    AutoAdjuster(std::uint32_t features, ValueRange<std::uint32_t> time,
                 ValueRange<std::uint16_t> gain);

    // Whether auto exposure looks at this frame: never without an exposure time to set, and
    // not while the last change is on its way to the picture.
    bool exposureDue();
    // The exposure to set after this frame; none when it stays.
    std::optional<Exposure> nextExposure(const SourceFrame& frame, const ControlValues& v) const;
    // A new exposure was set: the next frames were taken with the old one.
    void exposureSet();

    // Whether white balance looks at this frame.
    bool balanceDue();
    // Round counts the frames looked at for this balance, from 1.
    Balance balance(const SourceFrame& frame, const ControlValues& v, int round);

private:
    const std::uint32_t features_;
    const ValueRange<std::uint32_t> time_;
    const ValueRange<std::uint16_t> gain_;
    int settleFrames_ = 0; // frames to wait before measuring the exposure again
    int balanceWait_ = 0;
};

} // namespace dscap
