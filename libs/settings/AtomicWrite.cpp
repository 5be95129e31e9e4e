#include "settings/AtomicWrite.h"

#include "settings/UniqueFd.h"

#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <fcntl.h>
#include <string>
#include <unistd.h>

namespace lanmira::settings {

namespace fs = std::filesystem;

namespace {

class TempFileGuard {
public:
    explicit TempFileGuard(std::string path) : path_(std::move(path)) {}
    TempFileGuard(const TempFileGuard&) = delete;
    TempFileGuard& operator=(const TempFileGuard&) = delete;
    ~TempFileGuard() {
        if (!path_.empty())
            ::unlink(path_.c_str());
    }
    void release() { path_.clear(); }

private:
    std::string path_;
};

bool writeAll(int fd, std::string_view data) {
    while (!data.empty()) {
        const ssize_t n = ::write(fd, data.data(), data.size());
        if (n < 0) {
            if (errno == EINTR)
                continue;
            return false;
        }
        data.remove_prefix(static_cast<std::size_t>(n));
    }
    return true;
}

// A dotfiles manager may have made the settings file a symlink; renaming over the link
// would silently replace it with a plain file.
fs::path resolveTarget(const fs::path& file) {
    std::error_code ec;
    if (!fs::is_symlink(file, ec))
        return file;
    fs::path resolved = fs::weakly_canonical(file, ec);
    return ec ? file : resolved;
}

void syncDirectory(const fs::path& dir) {
    UniqueFd fd(::open(dir.empty() ? "." : dir.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (fd)
        ::fsync(fd.get());
}

} // namespace

bool writeFileAtomically(const fs::path& file, std::string_view data) {
    const fs::path target = resolveTarget(file);
    if (target.filename().empty())
        return false;
    const fs::path dir = target.parent_path();
    std::error_code ec;
    if (!dir.empty()) {
        fs::create_directories(dir, ec);
        if (ec)
            return false;
    }

    // Hidden, so a half-written file never looks like settings to anyone listing the folder;
    // shortened when need be, so the dot and suffix never take a long name past the limit.
    std::string leaf = target.filename().string();
    leaf.resize(std::min<std::size_t>(leaf.size(), NAME_MAX - 8));
    std::string temp = (dir / ("." + leaf + ".XXXXXX")).string();
    UniqueFd fd(::mkostemp(temp.data(), O_CLOEXEC));
    if (!fd)
        return false;
    TempFileGuard guard(temp);

    struct stat old {};
    if (::stat(target.c_str(), &old) == 0 && S_ISREG(old.st_mode))
        ::fchmod(fd.get(), old.st_mode & 07777);
    if (!writeAll(fd.get(), data) || ::fsync(fd.get()) != 0 || fd.reset() != 0)
        return false;
    if (::rename(temp.c_str(), target.c_str()) != 0)
        return false;
    guard.release();
    syncDirectory(dir);
    return true;
}

} // namespace lanmira::settings
