#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace dscap::v4l2 {

struct VideoNode {
    std::string path;       // /dev/videoN
    std::string stableName; // by-id link name, else by-path link name, else the path
};

enum class WaitResult { Ready, Timeout, Error };

// One open video node: the only calls that reach the kernel. Closing is destruction.
class V4l2Device {
public:
    virtual ~V4l2Device() = default;
    // Returns -1 and sets errno like the system call.
    virtual int ioctl(unsigned long request, void* arg) = 0;
    // nullptr with errno set on failure.
    virtual void* mmap(std::size_t length, std::uint32_t offset) = 0;
    virtual void munmap(void* address, std::size_t length) = 0;
    // Until a buffer can be dequeued; Error sets errno (ENODEV once the device is gone).
    virtual WaitResult wait(int timeoutMs) = 0;
    // The descriptor, for libraries that look the device up in sysfs; -1 when there is none.
    virtual int fd() const { return -1; }
};

// The video nodes of a system.
class V4l2System {
public:
    virtual ~V4l2System() = default;
    // In node-number order.
    virtual std::vector<VideoNode> nodes() = 0;
    // nullptr with error set to the errno of the failure.
    virtual std::unique_ptr<V4l2Device> open(const std::string& path, int& error) = 0;
};

} // namespace dscap::v4l2
