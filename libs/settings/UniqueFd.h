#pragma once

#include <unistd.h>
#include <utility>

namespace lanmira::settings {

// Owns a POSIX file descriptor; closes it once.
class UniqueFd {
public:
    UniqueFd() = default;
    explicit UniqueFd(int fd) : fd_(fd) {}
    UniqueFd(UniqueFd&& other) noexcept : fd_(std::exchange(other.fd_, -1)) {}
    UniqueFd& operator=(UniqueFd&& other) noexcept {
        if (this != &other) {
            reset();
            fd_ = std::exchange(other.fd_, -1);
        }
        return *this;
    }
    UniqueFd(const UniqueFd&) = delete;
    UniqueFd& operator=(const UniqueFd&) = delete;
    ~UniqueFd() { reset(); }

    int get() const { return fd_; }
    explicit operator bool() const { return fd_ >= 0; }

    // Returns close()'s result so callers can see late write errors (e.g. on NFS).
    int reset() {
        const int rc = fd_ >= 0 ? ::close(fd_) : 0;
        fd_ = -1;
        return rc;
    }

private:
    int fd_ = -1;
};

} // namespace lanmira::settings
