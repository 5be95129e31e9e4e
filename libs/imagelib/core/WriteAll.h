#pragma once

#include <cerrno>
#include <cstddef>
#include <unistd.h>

namespace imagelib {

// Writes every byte or reports failure (a full disk shows up here).
inline bool writeAll(int fd, const void* data, std::size_t size) {
    const auto* p = static_cast<const char*>(data);
    while (size > 0) {
        const ssize_t n = ::write(fd, p, size);
        if (n < 0 && errno == EINTR)
            continue;
        if (n <= 0)
            return false;
        p += n;
        size -= static_cast<std::size_t>(n);
    }
    return true;
}

} // namespace imagelib
