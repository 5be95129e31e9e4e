#include "dscap/v4l2/V4l2Provider.h"
#include "dscap/v4l2/V4l2System.h"

#include <sys/ioctl.h>
#include <sys/mman.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <fcntl.h>
#include <filesystem>
#include <map>
#include <poll.h>
#include <string_view>
#include <unistd.h>

namespace fs = std::filesystem;

namespace dscap::v4l2 {
namespace {

class LinuxV4l2Device final : public V4l2Device {
public:
    explicit LinuxV4l2Device(int fd) : fd_(fd) {}
    ~LinuxV4l2Device() override { ::close(fd_); }
    LinuxV4l2Device(const LinuxV4l2Device&) = delete;
    LinuxV4l2Device& operator=(const LinuxV4l2Device&) = delete;

    int ioctl(unsigned long request, void* arg) override {
        int r;
        do {
            r = ::ioctl(fd_, request, arg);
        } while (r == -1 && errno == EINTR);
        return r;
    }

    void* mmap(std::size_t length, std::uint32_t offset) override {
        void* p = ::mmap(nullptr, length, PROT_READ | PROT_WRITE, MAP_SHARED, fd_, offset);
        return p == MAP_FAILED ? nullptr : p;
    }

    void munmap(void* address, std::size_t length) override { ::munmap(address, length); }

    WaitResult wait(int timeoutMs) override {
        pollfd p{fd_, POLLIN, 0};
        int r;
        do {
            r = ::poll(&p, 1, timeoutMs);
        } while (r == -1 && errno == EINTR);
        if (r == 0)
            return WaitResult::Timeout;
        if (r < 0)
            return WaitResult::Error;
        if (p.revents & (POLLHUP | POLLNVAL)) {
            errno = ENODEV;
            return WaitResult::Error;
        }
        if (p.revents & POLLERR) {
            errno = EIO;
            return WaitResult::Error;
        }
        return WaitResult::Ready;
    }

    int fd() const override { return fd_; }

private:
    int fd_;
};

// Node number of "videoN", or -1.
int videoNumber(const std::string& name) {
    constexpr std::string_view prefix = "video";
    if (name.size() <= prefix.size() || name.compare(0, prefix.size(), prefix) != 0)
        return -1;
    int n = -1;
    const char* first = name.data() + prefix.size();
    const char* last = name.data() + name.size();
    auto [end, ec] = std::from_chars(first, last, n);
    return ec == std::errc{} && end == last ? n : -1;
}

// Link name by canonical target, the first name in sort order winning so the choice is stable.
std::map<std::string, std::string> linksIn(const fs::path& folder) {
    std::map<std::string, std::string> byTarget;
    std::error_code ec;
    for (const auto& entry : fs::directory_iterator(folder, ec)) {
        const fs::path target = fs::canonical(entry.path(), ec);
        if (ec)
            continue;
        const std::string name = entry.path().filename().string();
        auto [it, added] = byTarget.emplace(target.string(), name);
        if (!added && name < it->second)
            it->second = name;
    }
    return byTarget;
}

class LinuxV4l2System final : public V4l2System {
public:
    std::vector<VideoNode> nodes() override {
        std::vector<std::pair<int, std::string>> found;
        std::error_code ec;
        for (const auto& entry : fs::directory_iterator("/dev", ec)) {
            const int n = videoNumber(entry.path().filename().string());
            if (n >= 0)
                found.emplace_back(n, entry.path().string());
        }
        std::sort(found.begin(), found.end());

        const auto byId = linksIn("/dev/v4l/by-id");
        const auto byPath = linksIn("/dev/v4l/by-path");
        std::vector<VideoNode> result;
        for (const auto& [n, path] : found) {
            VideoNode node{path, path};
            std::error_code ignored;
            const std::string target = fs::canonical(path, ignored).string();
            if (auto it = byId.find(target); it != byId.end())
                node.stableName = it->second;
            else if (auto jt = byPath.find(target); jt != byPath.end())
                node.stableName = jt->second;
            result.push_back(std::move(node));
        }
        return result;
    }

    std::unique_ptr<V4l2Device> open(const std::string& path, int& error) override {
        const int fd = ::open(path.c_str(), O_RDWR | O_NONBLOCK | O_CLOEXEC);
        if (fd < 0) {
            error = errno;
            return nullptr;
        }
        error = 0;
        return std::make_unique<LinuxV4l2Device>(fd);
    }
};

} // namespace

std::shared_ptr<V4l2System> systemV4l2() {
    return std::make_shared<LinuxV4l2System>();
}

} // namespace dscap::v4l2
