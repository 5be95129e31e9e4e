#include "imagelib/core/TempFile.h"

#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <fcntl.h>
#include <unistd.h>
#include <vector>

namespace imagelib {

TempFile::TempFile(const std::filesystem::path& target) : m_target(target) {
    // Saving through a link replaces the file it points to, not the link.
    std::error_code ec;
    if (std::filesystem::is_symlink(target, ec)) {
        const auto resolved = std::filesystem::weakly_canonical(target, ec);
        if (!ec)
            m_target = resolved;
    }
    const std::filesystem::path folder =
        m_target.has_parent_path() ? m_target.parent_path() : std::filesystem::path(".");
    // The dot and suffix must not push a long legal name past the file system's limit; the
    // temporary name only needs to be unique and hidden.
    std::string leaf = m_target.filename().string();
    leaf.resize(std::min<std::size_t>(leaf.size(), NAME_MAX - 8));
    std::string pattern = (folder / ("." + leaf + ".XXXXXX")).string();
    std::vector<char> buf(pattern.begin(), pattern.end());
    buf.push_back('\0');
    m_fd = ::mkostemp(buf.data(), O_CLOEXEC);
    if (m_fd >= 0)
        m_path = buf.data();
}

TempFile::~TempFile() {
    if (m_fd >= 0)
        ::close(m_fd);
    if (!m_committed && !m_path.empty())
        ::unlink(m_path.c_str());
}

bool TempFile::copyTarget(std::string& error) {
    const int in = ::open(m_target.c_str(), O_RDONLY | O_CLOEXEC);
    if (in < 0) {
        if (errno == ENOENT)
            return true;
        error = "The file to add a page to could not be opened.";
        return false;
    }
    std::vector<char> buf(1 << 16);
    bool good = true;
    for (;;) {
        const ssize_t got = ::read(in, buf.data(), buf.size());
        if (got < 0 && errno == EINTR)
            continue;
        if (got < 0) {
            good = false;
            break;
        }
        if (got == 0)
            break;
        for (ssize_t done = 0; done < got;) {
            const ssize_t put =
                ::write(m_fd, buf.data() + done, static_cast<std::size_t>(got - done));
            if (put < 0 && errno == EINTR)
                continue;
            if (put <= 0) {
                good = false;
                break;
            }
            done += put;
        }
        if (!good)
            break;
    }
    ::close(in);
    if (!good)
        error = "The file to add a page to could not be copied.";
    return good;
}

bool TempFile::commit(std::string& error) {
    struct stat st {};
    const mode_t mode = ::stat(m_target.c_str(), &st) == 0 ? (st.st_mode & 07777) : [] {
        const mode_t mask = ::umask(0);
        ::umask(mask);
        return static_cast<mode_t>(0666 & ~mask);
    }();
    if (::fchmod(m_fd, mode) != 0 || ::fsync(m_fd) != 0) {
        error = "The file could not be written (the disk may be full).";
        return false;
    }
    if (::rename(m_path.c_str(), m_target.c_str()) != 0) {
        error = "The file could not be written in its folder.";
        return false;
    }
    m_committed = true;
    return true;
}

} // namespace imagelib
