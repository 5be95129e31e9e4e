#include "dsm/DefaultSource.h"

#include <cstdlib>
#include <fstream>
#include <system_error>
#include <unistd.h>

namespace twaindsm {

namespace fs = std::filesystem;

fs::path DefaultSource::file() {
    fs::path base;
    if (const char* xdg = std::getenv("XDG_CONFIG_HOME"); xdg && *xdg == '/')
        base = xdg;
    else if (const char* home = std::getenv("HOME"); home && *home)
        base = fs::path(home) / ".config";
    else
        return {};
    return base / "twaindsm" / "default-source";
}

std::string DefaultSource::read() {
    const fs::path path = file();
    if (path.empty())
        return {};
    std::ifstream in(path);
    std::string name;
    std::getline(in, name);
    return name;
}

void DefaultSource::write(const std::string& productName) {
    const fs::path path = file();
    if (path.empty())
        return;
    std::error_code ec;
    fs::create_directories(path.parent_path(), ec);
    const fs::path temp = path.string() + ".tmp" + std::to_string(::getpid());
    {
        std::ofstream out(temp, std::ios::trunc);
        out << productName << '\n';
        if (!out.flush())
            return (void)fs::remove(temp, ec);
    }
    fs::rename(temp, path, ec);
    if (ec)
        fs::remove(temp, ec);
}

} // namespace twaindsm
