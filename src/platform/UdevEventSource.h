#pragma once

#include "platform/DeviceEventSource.h"

#include <memory>

struct udev;
struct udev_monitor;

namespace lanmira {

// Notices about video4linux devices from the udev daemon, after it has set up the node.
class UdevEventSource final : public DeviceEventSource {
public:
    // Null when libudev has no context, cannot monitor, or no udev daemon runs (as in most
    // containers, where a monitor opens fine but never hears anything).
    static std::unique_ptr<UdevEventSource> open();
    ~UdevEventSource() override;
    UdevEventSource(const UdevEventSource&) = delete;
    UdevEventSource& operator=(const UdevEventSource&) = delete;

    int fd() const override;
    std::optional<DeviceEvent> receive() override;
    bool failed() const override { return m_failed; }

private:
    UdevEventSource(udev* context, udev_monitor* monitor);

    udev* m_udev;
    udev_monitor* m_monitor;
    bool m_failed = false;
};

} // namespace lanmira
