#pragma once

#include <QString>

#include <optional>

namespace lanmira {

// One notice about a device: what happened ("add", "remove", "change", …) and its node.
struct DeviceEvent {
    QString action;
    QString node;
};

// Where device notices come from: a descriptor that turns readable when one waits.
class DeviceEventSource {
public:
    virtual ~DeviceEventSource() = default;

    virtual int fd() const = 0;
    // The next waiting notice, or nothing when none waits or the source broke; failed()
    // tells the two apart. Never blocks.
    virtual std::optional<DeviceEvent> receive() = 0;
    // True once the descriptor is closed or broken: it may stay readable for ever, so
    // nobody should listen to it any more.
    virtual bool failed() const = 0;
};

} // namespace lanmira
