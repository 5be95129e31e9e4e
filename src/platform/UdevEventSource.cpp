#include "platform/UdevEventSource.h"

#include <cerrno>
#include <libudev.h>

namespace lanmira {

std::unique_ptr<UdevEventSource> UdevEventSource::open() {
    udev* context = udev_new();
    if (!context)
        return nullptr;
    udev_queue* queue = udev_queue_new(context);
    const bool daemonRuns = queue && udev_queue_get_udev_is_active(queue);
    udev_queue_unref(queue);
    udev_monitor* monitor = daemonRuns ? udev_monitor_new_from_netlink(context, "udev") : nullptr;
    if (!monitor ||
        udev_monitor_filter_add_match_subsystem_devtype(monitor, "video4linux", nullptr) < 0 ||
        udev_monitor_enable_receiving(monitor) < 0 || udev_monitor_get_fd(monitor) < 0) {
        udev_monitor_unref(monitor);
        udev_unref(context);
        return nullptr;
    }
    return std::unique_ptr<UdevEventSource>(new UdevEventSource(context, monitor));
}

UdevEventSource::UdevEventSource(udev* context, udev_monitor* monitor)
    : m_udev(context), m_monitor(monitor) {}

UdevEventSource::~UdevEventSource() {
    udev_monitor_unref(m_monitor);
    udev_unref(m_udev);
}

int UdevEventSource::fd() const {
    return udev_monitor_get_fd(m_monitor);
}

std::optional<DeviceEvent> UdevEventSource::receive() {
    if (m_failed)
        return std::nullopt;
    errno = 0;
    udev_device* dev = udev_monitor_receive_device(m_monitor);
    if (!dev) {
        // The socket is non-blocking; an overrun (ENOBUFS) loses notices but the socket
        // still works.
        if (errno != EAGAIN && errno != EWOULDBLOCK && errno != EINTR && errno != ENOBUFS &&
            errno != 0)
            m_failed = true;
        return std::nullopt;
    }
    DeviceEvent e;
    e.action = QString::fromUtf8(udev_device_get_action(dev));
    e.node = QString::fromUtf8(udev_device_get_devnode(dev));
    udev_device_unref(dev);
    return e;
}

} // namespace lanmira
