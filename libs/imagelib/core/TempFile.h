#pragma once

#include <filesystem>
#include <string>

namespace imagelib {

// A temporary file beside a target, renamed over it only once it is complete and on
// disk; dropped otherwise. So a failed or interrupted save never leaves a half-written
// file where a good one was.
class TempFile {
public:
    explicit TempFile(const std::filesystem::path& target);
    ~TempFile();
    TempFile(const TempFile&) = delete;
    TempFile& operator=(const TempFile&) = delete;

    bool ok() const { return m_fd >= 0; }
    int fd() const { return m_fd; }
    const std::filesystem::path& path() const { return m_path; }

    // Copies the target's current bytes in (for appending a page); true when there were
    // none to copy as well.
    bool copyTarget(std::string& error);
    // Flushes, gives the new file the old one's permissions (or the usual ones) and renames
    // it over the target.
    bool commit(std::string& error);

private:
    std::filesystem::path m_target;
    std::filesystem::path m_path;
    int m_fd = -1;
    bool m_committed = false;
};

} // namespace imagelib
