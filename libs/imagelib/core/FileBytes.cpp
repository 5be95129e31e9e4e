#include "imagelib/core/FileBytes.h"

#include <sys/stat.h>

#include <cerrno>
#include <fcntl.h>
#include <unistd.h>

namespace imagelib {
namespace {

constexpr std::int64_t kMaxFileBytes = std::int64_t{2} << 30;

struct Fd {
    int fd;
    ~Fd() {
        if (fd >= 0)
            ::close(fd);
    }
};

} // namespace

bool FileBytes::read(const char* path, std::string& error) {
    // O_NONBLOCK: a FIFO named like an image must not hang the caller.
    const Fd file{::open(path, O_RDONLY | O_CLOEXEC | O_NONBLOCK)};
    if (file.fd < 0) {
        error = errno == ENOENT ? "The file does not exist." : "The file could not be opened.";
        return false;
    }
    struct stat st {};
    if (::fstat(file.fd, &st) != 0 || !S_ISREG(st.st_mode)) {
        error = "The file could not be opened.";
        return false;
    }
    if (st.st_size <= 0) {
        error = "The file is empty.";
        return false;
    }
    if (st.st_size > kMaxFileBytes) {
        error = "The file is too large to open.";
        return false;
    }
    const auto size = static_cast<std::size_t>(st.st_size);
    // Not value-initialised: every byte is about to be overwritten by the read.
    m_data.reset(new (std::nothrow) std::uint8_t[size]);
    if (!m_data) {
        error = "There is not enough memory to open the image.";
        return false;
    }
    std::size_t done = 0;
    while (done < size) {
        const ssize_t got = ::read(file.fd, m_data.get() + done, size - done);
        if (got < 0 && errno == EINTR)
            continue;
        if (got <= 0)
            break; // shrank while being read: decode what arrived
        done += static_cast<std::size_t>(got);
    }
    m_size = done;
    if (m_size == 0) {
        error = "The file is empty.";
        return false;
    }
    return true;
}

} // namespace imagelib
